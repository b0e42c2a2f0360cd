// SSSE3 H.264 diagonal intra modes (4x4 and 8x8 at 8 bits, 4x4 at 9..14
// bits): the edge line's two- and three-tap means in registers, then byte
// shuffles whose masks come from diagonal_tap.
#include <tmmintrin.h>

#include <cstdint>
#include <cstring>
#include <utility>

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
    alignas(16) u8 rows[16];
    _mm_store_si128(reinterpret_cast<__m128i*>(rows), out);
    for (int y = 0; y < 4; ++y) std::memcpy(row(dst, step, y), rows + 4 * y, 4);
}

// 8x8: the line from seven samples below e(0), in two registers per mean
// (bytes 0..15 and 16..31); each pair of output rows gathers from all four.
struct Masks8 {
    std::int8_t m[4][4][16];  // [row pair][two lo, two hi, three lo, three hi][byte]
};
constexpr Masks8 masks8_for(int mode) {
    Masks8 m{};
    for (int pair = 0; pair < 4; ++pair)
        for (int b = 0; b < 16; ++b) {
            const DiagonalTap tap = diagonal_tap(8, mode, b & 7, 2 * pair + (b >> 3));
            const int at = 7 + tap.index, reg = (tap.three ? 2 : 0) + (at >= 16 ? 1 : 0);
            for (int r = 0; r < 4; ++r) m.m[pair][r][b] = std::int8_t(r == reg ? at & 15 : -128);
        }
    return m;
}
template <int Mode>
constexpr Masks8 kMasks8 = masks8_for(Mode);

template <int Mode>
void diagonal8x8(const u8* top, const u8* left, u8* dst, int step) {
    // line: left[7] seven times, left[7..0], top[-1] (bytes 0..15), top[0..15]
    // (16..31), then top[15].
    const __m128i lefts = _mm_shuffle_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(left)),
                                           _mm_setr_epi8(7, 7, 7, 7, 7, 7, 7, 7, 6, 5, 4, 3, 2, 1, 0, -128));
    const __m128i lo = _mm_or_si128(lefts, _mm_slli_si128(_mm_cvtsi32_si128(top[-1]), 15));
    const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(top));
    const __m128i pad = _mm_set1_epi8(static_cast<char>(top[15]));
    const __m128i lo1 = _mm_alignr_epi8(hi, lo, 1), hi1 = _mm_alignr_epi8(pad, hi, 1);
    const __m128i lo2 = _mm_alignr_epi8(hi, lo, 2), hi2 = _mm_alignr_epi8(pad, hi, 2);
    const __m128i one = _mm_set1_epi8(1);
    const auto three = [one](__m128i a, __m128i b, __m128i c) {
        return _mm_avg_epu8(_mm_sub_epi8(_mm_avg_epu8(a, c), _mm_and_si128(_mm_xor_si128(a, c), one)), b);
    };
    const __m128i regs[4] = {_mm_avg_epu8(lo, lo1), _mm_avg_epu8(hi, hi1), three(lo, lo1, lo2), three(hi, hi1, hi2)};
    for (int pair = 0; pair < 4; ++pair) {
        __m128i out = _mm_setzero_si128();
        for (int r = 0; r < 4; ++r) out = _mm_or_si128(out, _mm_shuffle_epi8(regs[r], load_mask(kMasks8<Mode>.m[pair][r])));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row(dst, step, 2 * pair)), out);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row(dst, step, 2 * pair + 1)), _mm_srli_si128(out, 8));
    }
}

// 4x4 at 9..14 bits: the line in 16-bit lanes, three samples below e(0)
// as above; each mean in two registers (line elements 0..7 and 8..15), each
// output register (two rows) gathered from all four.
struct Masks16 {
    std::int8_t m[2][4][16];  // [row pair][two lo, two hi, three lo, three hi][byte]
};
constexpr Masks16 masks16_for(int mode) {
    Masks16 m{};
    for (int pair = 0; pair < 2; ++pair)
        for (int e = 0; e < 8; ++e) {
            const DiagonalTap tap = diagonal_tap(4, mode, e & 3, 2 * pair + (e >> 2));
            const int at = kOrigin + tap.index, reg = (tap.three ? 2 : 0) + (at >= 8 ? 1 : 0);
            for (int r = 0; r < 4; ++r) {
                m.m[pair][r][2 * e] = std::int8_t(r == reg ? 2 * (at & 7) : -128);
                m.m[pair][r][2 * e + 1] = std::int8_t(r == reg ? 2 * (at & 7) + 1 : -128);
            }
        }
    return m;
}
template <int Mode>
constexpr Masks16 kMasks16 = masks16_for(Mode);

template <int Mode>
void diagonal4x4_16(const u16* top, const u16* left, u16* dst, int step, int) {
    // line: left[3] three times, left[3..0], top[-1] (elements 0..7),
    // top[0..7] (8..15), then top[7].
    const __m128i lefts = _mm_shuffle_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(left)),
                                           _mm_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 4, 5, 2, 3, 0, 1, -128, -128));
    const __m128i lo = _mm_insert_epi16(lefts, top[-1], 7);
    const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(top));
    const __m128i pad = _mm_set1_epi16(static_cast<short>(top[7]));
    const __m128i lo1 = _mm_alignr_epi8(hi, lo, 2), hi1 = _mm_alignr_epi8(pad, hi, 2);
    const __m128i lo2 = _mm_alignr_epi8(hi, lo, 4), hi2 = _mm_alignr_epi8(pad, hi, 4);
    const __m128i one = _mm_set1_epi16(1);
    const auto three = [one](__m128i a, __m128i b, __m128i c) {
        return _mm_avg_epu16(_mm_sub_epi16(_mm_avg_epu16(a, c), _mm_and_si128(_mm_xor_si128(a, c), one)), b);
    };
    const __m128i regs[4] = {_mm_avg_epu16(lo, lo1), _mm_avg_epu16(hi, hi1), three(lo, lo1, lo2),
                             three(hi, hi1, hi2)};
    for (int pair = 0; pair < 2; ++pair) {
        __m128i out = _mm_setzero_si128();
        for (int r = 0; r < 4; ++r)
            out = _mm_or_si128(out, _mm_shuffle_epi8(regs[r], load_mask(kMasks16<Mode>.m[pair][r])));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row(dst, step, 2 * pair)), out);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row(dst, step, 2 * pair + 1)), _mm_srli_si128(out, 8));
    }
}

template <int... M>
void fill(Table& t, std::integer_sequence<int, M...>) {
    ((t.pred4x4[M] = &diagonal4x4<M>), ...);
    ((t.pred8x8[M] = &diagonal8x8<M>), ...);
    ((t.pred4x4_hbd[M] = &diagonal4x4_16<M>), ...);
}

}  // namespace

void init_intra_ssse3(Table& t) { fill(t, std::integer_sequence<int, 3, 4, 5, 6, 7, 8>{}); }

}  // namespace kivvc::h264::intra
