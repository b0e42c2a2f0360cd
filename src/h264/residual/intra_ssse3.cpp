// SSSE3 H.264 diagonal 4x4 intra modes: the edge line's two- and three-tap
// means in two registers, then one byte shuffle from each per mode.
#include <tmmintrin.h>

#include <cstdint>
#include <cstring>

#include "h264/residual/intra_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::intra {
namespace {

// The line is held from three samples below e(0): byte b = e(b - 3).
constexpr int kOrigin = 3;

// Per output sample (raster order) the byte of the two-tap or of the
// three-tap register that gives it; -128 zeroes the other register's lane.
struct Masks {
    std::int8_t two[16], three[16];
};
constexpr Masks masks_for(int mode) {
    Masks m{};
    for (int k = 0; k < 16; ++k) {
        const DiagonalTap tap = diagonal_tap(4, mode, k & 3, k >> 2);
        const auto at = static_cast<std::int8_t>(kOrigin + tap.index);
        m.two[k] = tap.three ? std::int8_t(-128) : at;
        m.three[k] = tap.three ? at : std::int8_t(-128);
    }
    return m;
}
template <int Mode>
constexpr Masks kMasks = masks_for(Mode);

__m128i load_mask(const std::int8_t* m) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(m)); }

template <int Mode>
void diagonal4x4(const u8* top, const u8* left, u8* dst, int step) {
    // line: left[3] three times, left[3..0], top[-1], top[0..7], then top[7].
    int l;
    std::memcpy(&l, left, 4);
    const __m128i lefts = _mm_shuffle_epi8(_mm_cvtsi32_si128(l), _mm_setr_epi8(3, 3, 3, 3, 2, 1, 0, -128, -128, -128,
                                                                               -128, -128, -128, -128, -128, -128));
    const __m128i tops = _mm_slli_si128(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(top - 1)), 7);
    const __m128i last = _mm_set1_epi8(static_cast<char>(top[7]));
    const __m128i byte15 = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1);
    const __m128i bytes14 = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1, -1);
    const __m128i l0 = _mm_or_si128(_mm_or_si128(lefts, tops), _mm_and_si128(last, byte15));
    const __m128i l1 = _mm_or_si128(_mm_srli_si128(l0, 1), _mm_and_si128(last, byte15));
    const __m128i l2 = _mm_or_si128(_mm_srli_si128(l0, 2), _mm_and_si128(last, bytes14));
    // (a + 2b + c + 2) >> 2 == avg(b, (a + c) >> 1), the inner mean rounded down.
    const __m128i outer = _mm_sub_epi8(_mm_avg_epu8(l0, l2), _mm_and_si128(_mm_xor_si128(l0, l2), _mm_set1_epi8(1)));
    const __m128i two = _mm_avg_epu8(l0, l1), three = _mm_avg_epu8(outer, l1);
    const __m128i out = _mm_or_si128(_mm_shuffle_epi8(two, load_mask(kMasks<Mode>.two)),
                                     _mm_shuffle_epi8(three, load_mask(kMasks<Mode>.three)));
    for (int y = 0; y < 4; ++y) {
        const int v = _mm_cvtsi128_si32(_mm_srli_si128(out, 4 * y));
        std::memcpy(row(dst, step, y), &v, 4);
    }
}

}  // namespace

void init_intra_ssse3(Table& t) {
    t.pred4x4[3] = &diagonal4x4<3>;
    t.pred4x4[4] = &diagonal4x4<4>;
    t.pred4x4[5] = &diagonal4x4<5>;
    t.pred4x4[6] = &diagonal4x4<6>;
    t.pred4x4[7] = &diagonal4x4<7>;
    t.pred4x4[8] = &diagonal4x4<8>;
}

}  // namespace kivvc::h264::intra
