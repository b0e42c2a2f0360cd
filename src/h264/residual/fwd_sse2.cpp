// SSE2 kernels of the H.264 forward transforms, quantisers and sums of
// differences.
#include <emmintrin.h>

#include <cstring>

#include "h264/residual/fwd_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::fwd {
namespace {

// ---- forward 4x4 ----------------------------------------------------------

// Every operation of the 4x4 transform is an addition, subtraction or
// doubling, so 16-bit lanes give the wrapped result of either pass order.
void butterfly4(__m128i& x0, __m128i& x1, __m128i& x2, __m128i& x3) {
    const __m128i a = _mm_add_epi16(x0, x3), b = _mm_add_epi16(x1, x2);
    const __m128i c = _mm_sub_epi16(x1, x2), d = _mm_sub_epi16(x0, x3);
    x0 = _mm_add_epi16(a, b);
    x1 = _mm_add_epi16(c, _mm_add_epi16(d, d));
    x2 = _mm_sub_epi16(a, b);
    x3 = _mm_sub_epi16(d, _mm_add_epi16(c, c));
}

// Transposes four rows of 4 values held in the low halves.
void transpose4(__m128i& r0, __m128i& r1, __m128i& r2, __m128i& r3) {
    const __m128i t0 = _mm_unpacklo_epi16(r0, r1), t1 = _mm_unpacklo_epi16(r2, r3);
    const __m128i u0 = _mm_unpacklo_epi32(t0, t1), u1 = _mm_unpackhi_epi32(t0, t1);
    r0 = u0, r1 = _mm_unpackhi_epi64(u0, u0), r2 = u1, r3 = _mm_unpackhi_epi64(u1, u1);
}

void transform4x4(const s16* src, s16* dst) {
    __m128i r0 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src));
    __m128i r1 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + 4));
    __m128i r2 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + 8));
    __m128i r3 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + 12));
    butterfly4(r0, r1, r2, r3);  // columns
    transpose4(r0, r1, r2, r3);
    butterfly4(r0, r1, r2, r3);  // rows
    transpose4(r0, r1, r2, r3);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_unpacklo_epi64(r0, r1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 8), _mm_unpacklo_epi64(r2, r3));
}

// ---- forward 8x8 ----------------------------------------------------------

void transpose8(__m128i (&r)[8]) {
    __m128i a[8], b[8];
    for (int i = 0; i < 4; ++i) {
        a[i] = _mm_unpacklo_epi16(r[2 * i], r[2 * i + 1]);
        a[i + 4] = _mm_unpackhi_epi16(r[2 * i], r[2 * i + 1]);
    }
    for (int h = 0; h < 2; ++h)
        for (int i = 0; i < 2; ++i) {
            b[4 * h + 2 * i] = _mm_unpacklo_epi32(a[4 * h + 2 * i], a[4 * h + 2 * i + 1]);
            b[4 * h + 2 * i + 1] = _mm_unpackhi_epi32(a[4 * h + 2 * i], a[4 * h + 2 * i + 1]);
        }
    // b: h = 0 holds columns 0..3, h = 1 columns 4..7, in pairs.
    for (int h = 0; h < 2; ++h) {
        r[4 * h + 0] = _mm_unpacklo_epi64(b[4 * h + 0], b[4 * h + 2]);
        r[4 * h + 1] = _mm_unpackhi_epi64(b[4 * h + 0], b[4 * h + 2]);
        r[4 * h + 2] = _mm_unpacklo_epi64(b[4 * h + 1], b[4 * h + 3]);
        r[4 * h + 3] = _mm_unpackhi_epi64(b[4 * h + 1], b[4 * h + 3]);
    }
}

// The 8-point butterfly across eight registers of 32-bit lanes (exact: the
// inputs are 16-bit, every intermediate stays below 2^20).
void butterfly8(__m128i (&x)[8]) {
    const __m128i a0 = _mm_add_epi32(x[0], x[7]), a1 = _mm_add_epi32(x[1], x[6]);
    const __m128i a2 = _mm_add_epi32(x[2], x[5]), a3 = _mm_add_epi32(x[3], x[4]);
    const __m128i b0 = _mm_add_epi32(a0, a3), b1 = _mm_add_epi32(a1, a2);
    const __m128i b2 = _mm_sub_epi32(a0, a3), b3 = _mm_sub_epi32(a1, a2);
    const __m128i d0 = _mm_sub_epi32(x[0], x[7]), d1 = _mm_sub_epi32(x[1], x[6]);
    const __m128i d2 = _mm_sub_epi32(x[2], x[5]), d3 = _mm_sub_epi32(x[3], x[4]);
    const __m128i b4 = _mm_add_epi32(_mm_add_epi32(d1, d2), _mm_add_epi32(d0, _mm_srai_epi32(d0, 1)));
    const __m128i b5 = _mm_sub_epi32(_mm_sub_epi32(d0, d3), _mm_add_epi32(d2, _mm_srai_epi32(d2, 1)));
    const __m128i b6 = _mm_sub_epi32(_mm_add_epi32(d0, d3), _mm_add_epi32(d1, _mm_srai_epi32(d1, 1)));
    const __m128i b7 = _mm_add_epi32(_mm_sub_epi32(d1, d2), _mm_add_epi32(d3, _mm_srai_epi32(d3, 1)));
    x[0] = _mm_add_epi32(b0, b1);
    x[2] = _mm_add_epi32(b2, _mm_srai_epi32(b3, 1));
    x[4] = _mm_sub_epi32(b0, b1);
    x[6] = _mm_sub_epi32(_mm_srai_epi32(b2, 1), b3);
    x[1] = _mm_add_epi32(b4, _mm_srai_epi32(b7, 2));
    x[3] = _mm_add_epi32(b5, _mm_srai_epi32(b6, 2));
    x[5] = _mm_sub_epi32(b6, _mm_srai_epi32(b5, 2));
    x[7] = _mm_sub_epi32(_mm_srai_epi32(b4, 2), b7);
}

// Low 16 bits of each 32-bit lane, sign-extended (the wrap to 16 bits).
__m128i wrap16(__m128i v) { return _mm_srai_epi32(_mm_slli_epi32(v, 16), 16); }

// The butterfly across the eight registers of 16-bit lanes, results wrapped.
void pass8(__m128i (&r)[8]) {
    __m128i lo[8], hi[8];
    for (int i = 0; i < 8; ++i) {
        lo[i] = _mm_srai_epi32(_mm_unpacklo_epi16(r[i], r[i]), 16);
        hi[i] = _mm_srai_epi32(_mm_unpackhi_epi16(r[i], r[i]), 16);
    }
    butterfly8(lo);
    butterfly8(hi);
    for (int i = 0; i < 8; ++i) r[i] = _mm_packs_epi32(wrap16(lo[i]), wrap16(hi[i]));
}

void transform8x8(const s16* src, s16* dst) {
    __m128i r[8];
    for (int i = 0; i < 8; ++i) r[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 8 * i));
    transpose8(r);  // register j: element j of every row
    pass8(r);       // rows
    transpose8(r);  // register i: row i
    pass8(r);       // columns
    for (int i = 0; i < 8; ++i) _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 8 * i), r[i]);
}

// ---- quantisers -----------------------------------------------------------

template <int N>
int quant(const s16* src, s16* dst, const s16* m, int shift, std::uint32_t round, const s16* scan, s32* last) {
    const __m128i rounding = _mm_set1_epi32(int(round));
    const __m128i count = _mm_cvtsi32_si128(shift);
    const __m128i zero = _mm_setzero_si128();
    __m128i highest = zero;
    int nonZero = 0;
    for (int k = 0; k < N; k += 8) {
        const __m128i t = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + k));
        const __m128i f = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m + k));
        const __m128i sign = _mm_srai_epi16(t, 15);
        const __m128i magnitude = _mm_sub_epi16(_mm_xor_si128(t, sign), sign);  // 32768 as unsigned
        const __m128i low = _mm_mullo_epi16(magnitude, f), high = _mm_mulhi_epu16(magnitude, f);
        // |t| x m + r < 2^32: logical shifts; the results are below 2^21.
        const __m128i p0 = _mm_srl_epi32(_mm_add_epi32(_mm_unpacklo_epi16(low, high), rounding), count);
        const __m128i p1 = _mm_srl_epi32(_mm_add_epi32(_mm_unpackhi_epi16(low, high), rounding), count);
        const __m128i levels = _mm_packs_epi32(p0, p1);  // saturates to 32767
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k), _mm_sub_epi16(_mm_xor_si128(levels, sign), sign));
        const __m128i isZero = _mm_cmpeq_epi16(levels, zero);
        nonZero += 8 - __builtin_popcount(unsigned(_mm_movemask_epi8(isZero))) / 2;
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(scan + k));
        highest = _mm_max_epi16(highest, _mm_andnot_si128(isZero, s));
    }
    highest = _mm_max_epi16(highest, _mm_srli_si128(highest, 8));
    highest = _mm_max_epi16(highest, _mm_srli_si128(highest, 4));
    highest = _mm_max_epi16(highest, _mm_srli_si128(highest, 2));
    *last = s16(_mm_cvtsi128_si32(highest));
    return nonZero;
}

// ---- sums of differences --------------------------------------------------

// Blocks per row: 4 (16x16) or 2 (8x8).
template <int PerRow>
void sums_diff(const u8* src, int srcStep, const u8* pred, int predStep, s16* sums, s16* diff) {
    const __m128i zero = _mm_setzero_si128(), ones = _mm_set1_epi16(1);
    for (int band = 0; band < PerRow; ++band) {
        __m128i acc[2] = {zero, zero};
        for (int y = 0; y < 4; ++y) {
            const u8* s = row(src, srcStep, 4 * band + y);
            const u8* p = row(pred, predStep, 4 * band + y);
            __m128i vs, vp;
            if constexpr (PerRow == 4) {
                vs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
                vp = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            } else {
                vs = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s));
                vp = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
            }
            for (int h = 0; h < PerRow / 2; ++h) {
                const __m128i d = h == 0 ? _mm_sub_epi16(_mm_unpacklo_epi8(vs, zero), _mm_unpacklo_epi8(vp, zero))
                                         : _mm_sub_epi16(_mm_unpackhi_epi8(vs, zero), _mm_unpackhi_epi8(vp, zero));
                acc[h] = _mm_add_epi16(acc[h], d);
                if (diff) {
                    s16* out = diff + 16 * (band * PerRow + 2 * h) + 4 * y;
                    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), d);
                    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm_unpackhi_epi64(d, d));
                }
            }
        }
        // Pairwise sums, then the two pairs of each block: lanes 0 and 2.
        __m128i total[2];
        for (int h = 0; h < PerRow / 2; ++h) {
            const __m128i pairs = _mm_madd_epi16(acc[h], ones);
            const __m128i quads = _mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, _MM_SHUFFLE(2, 3, 0, 1)));
            total[h] = _mm_shuffle_epi32(quads, _MM_SHUFFLE(3, 1, 2, 0));
        }
        if constexpr (PerRow == 4) {
            const __m128i four = _mm_unpacklo_epi64(total[0], total[1]);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(sums + 4 * band), _mm_packs_epi32(four, four));
        } else {
            const int two = _mm_cvtsi128_si32(_mm_packs_epi32(total[0], total[0]));
            std::memcpy(sums + 2 * band, &two, sizeof two);
        }
    }
}

}  // namespace

void init_fwd_sse2(Table& t) {
    t.transform4x4 = &transform4x4;
    t.transform8x8 = &transform8x8;
    t.quant[2] = &quant<16>;
    t.quant[3] = &quant<64>;
    t.sums_diff[0] = &sums_diff<4>;
    t.sums_diff[1] = &sums_diff<2>;
}

}  // namespace kivvc::h264::fwd
