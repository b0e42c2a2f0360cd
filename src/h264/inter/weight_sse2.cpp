// SSE2 8-bit weighting (the shared kernels in 128-bit registers) and plane
// expansion with broadcast stores for the side margins.
#include "h264/inter/weight_simd.h"

namespace kivvc::weight {
namespace {

// n >= 1 copies of v at p, in overlapping 16-byte stores when n >= 16.
void fill(u8* p, int n, u8 v) {
    if (n < 16) {
        std::memset(p, v, std::size_t(n));
        return;
    }
    const __m128i b = _mm_set1_epi8(static_cast<char>(v));
    for (int i = 0; i + 16 < n; i += 16) _mm_storeu_si128(reinterpret_cast<__m128i*>(p + i), b);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + n - 16), b);
}

// The frame or one field of it, as the reference: bottom rows, then the
// sides of every field row down to the last bottom row, then the top rows.
void expand(u8* plane, int width, int height, int step, int e, int mode) {
    const ExpandRows f = expand_rows(height, e, mode);
    const auto row = [&](int i) { return plane + ptrdiff_t(f.first + i * f.stride) * step; };
    for (int i = 0; i < f.below; ++i) std::memcpy(row(f.rows + i), row(f.rows - 1), std::size_t(width));
    for (int i = 0; i < f.rows + f.below; ++i) {
        u8* r = row(i);
        fill(r - e, e, r[0]);
        fill(r + width, e, r[width - 1]);
    }
    for (int i = 1; i <= f.above; ++i) std::memcpy(row(-i) - e, row(0) - e, std::size_t(width) + 2 * std::size_t(e));
}

}  // namespace

void init_weight_sse2(Table& t) {
    t.uni_8u = &uni<NoWide>;
    t.bi_8u = &bi<NoWide>;
    t.expand_8u = &expand;
}

}  // namespace kivvc::weight
