// Scalar H.261 loop filter.
#include <cstddef>

#include "h263/h261_kernels.h"

namespace kivvc::h263 {
namespace {

void filter8x8(const std::uint8_t* src, int src_step, std::uint8_t* dst, int dst_step) {
    int h[8][8];  // horizontal pass, at most 4 * 255
    for (int y = 0; y < 8; ++y) {
        const std::uint8_t* s = src + std::ptrdiff_t{y} * src_step;
        h[y][0] = 4 * s[0];
        h[y][7] = 4 * s[7];
        for (int x = 1; x < 7; ++x) h[y][x] = s[x - 1] + 2 * s[x] + s[x + 1];
    }
    for (int y = 0; y < 8; ++y) {
        std::uint8_t* d = dst + std::ptrdiff_t{y} * dst_step;
        for (int x = 0; x < 8; ++x) {
            const int v = (y == 0 || y == 7) ? (h[y][x] + 2) >> 2 : (h[y - 1][x] + 2 * h[y][x] + h[y + 1][x] + 8) >> 4;
            d[x] = static_cast<std::uint8_t>(v);
        }
    }
}

}  // namespace

void init_h261(H261Table& t, CpuFlags cpu) {
    t.filter8x8 = &filter8x8;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_h261_sse2(t);
#else
    (void)cpu;
#endif
}

const H261Table& h261_table() {
    static const H261Table t = [] {
        H261Table x{};
        init_h261(x, active_flags());
        return x;
    }();
    return t;
}

}  // namespace kivvc::h263
