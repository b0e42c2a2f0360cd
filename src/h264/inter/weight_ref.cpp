// Scalar references of weighted prediction and plane expansion.
#include <cstring>

#include "core/arith.h"
#include "h264/inter/weight_kernels.h"

namespace kivvc::weight {
namespace {

template <class T>
void uni(const T* a, int aStep, T* d, int dStep, int width, int height, const Weights& k) {
    for (int y = 0; y < height; ++y, a += aStep, d += dStep)
        for (int x = 0; x < width; ++x) d[x] = static_cast<T>(weigh(a[x], 0, k));
}

template <class T>
void bi(const T* a, int aStep, const T* b, int bStep, T* d, int dStep, int width, int height, const Weights& k) {
    for (int y = 0; y < height; ++y, a += aStep, b += bStep, d += dStep)
        for (int x = 0; x < width; ++x) d[x] = static_cast<T>(weigh(a[x], b[x], k));
}

void average16(const u16* a, int aStep, const u16* b, int bStep, u16* d, int dStep, int width, int height) {
    for (int y = 0; y < height; ++y, a += aStep, b += bStep, d += dStep)
        for (int x = 0; x < width; ++x) d[x] = static_cast<u16>(avg_round_up(a[x], b[x]));
}

// Bottom rows, then the sides of every row down to the last bottom row, then
// the top rows (which thereby carry their side margins).
void expand(u8* plane, int width, int height, int step, int e, int mode) {
    const ExpandRows f = expand_rows(height, e, mode);
    const auto row = [&](int i) { return plane + std::ptrdiff_t(f.first + i * f.stride) * step; };
    for (int i = 0; i < f.below; ++i) std::memcpy(row(f.rows + i), row(f.rows - 1), std::size_t(width));
    for (int i = 0; i < f.rows + f.below; ++i) {
        u8* r = row(i);
        std::memset(r - e, r[0], std::size_t(e));
        std::memset(r + width, r[width - 1], std::size_t(e));
    }
    for (int i = 1; i <= f.above; ++i) std::memcpy(row(-i) - e, row(0) - e, std::size_t(width) + 2 * std::size_t(e));
}

}  // namespace

void init_weight(Table& t, CpuFlags cpu) {
    t.uni_8u = &uni<u8>;
    t.bi_8u = &bi<u8>;
    t.uni_16u = &uni<u16>;
    t.bi_16u = &bi<u16>;
    t.average_16u = &average16;
    t.expand_8u = &expand;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_weight_sse2(t);
    if (!(cpu & kSse41)) return;
    init_weight_sse41(t);
    if (!(cpu & kAvx2)) return;
    init_weight_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_weight>(); }

}  // namespace kivvc::weight
