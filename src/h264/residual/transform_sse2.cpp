// SSE2 H.264 inverse transforms with 16-bit lanes: the flat add function
// (saturating butterflies, as its definition says), the scaling-list 4x4 and
// the 8x8 transform with add (wrapping 16-bit arithmetic), and the DC blocks.
//
// A rounding shift (x + 32) >> 6 of a 16-bit x is taken as
// ((x >> 1) + 16) >> 5, which is equal and cannot overflow 16 bits.
#include <emmintrin.h>

#include <cstring>
#include <utility>

#include "core/sse2_helpers.h"
#include "h264/residual/rows.h"
#include "h264/residual/transform_kernels.h"

namespace kivvc::h264::transform {
namespace {


__m128i round6(__m128i x) { return _mm_srai_epi16(_mm_add_epi16(_mm_srai_epi16(x, 1), _mm_set1_epi16(16)), 5); }

// A 4x4 block in two registers of two rows each: lo = rows (or columns) 0
// and 1, hi = 2 and 3. transpose4 turns rows into columns and back.
struct Block4 {
    __m128i lo, hi;
};
Block4 transpose4(Block4 b) {
    const __m128i t0 = _mm_unpacklo_epi16(b.lo, b.hi), t1 = _mm_unpackhi_epi16(b.lo, b.hi);
    return {_mm_unpacklo_epi16(t0, t1), _mm_unpackhi_epi16(t0, t1)};
}
// [x.lo | y.hi]
__m128i low_high(__m128i x, __m128i y) {
    return _mm_castpd_si128(_mm_move_sd(_mm_castsi128_pd(y), _mm_castsi128_pd(x)));
}

// One 4-point inverse butterfly over e = {[e0|e1], [e2|e3]}; returns
// {[o0|o1], [o3|o2]}.
template <bool Saturate>
Block4 inverse4(Block4 e) {
    const auto add = [](__m128i a, __m128i b) { return Saturate ? _mm_adds_epi16(a, b) : _mm_add_epi16(a, b); };
    const auto sub = [](__m128i a, __m128i b) { return Saturate ? _mm_subs_epi16(a, b) : _mm_sub_epi16(a, b); };
    const __m128i ad = add(e.lo, low_high(e.hi, _mm_srai_epi16(e.hi, 1)));  // [e0 + e2 | e1 + (e3 >> 1)]
    const __m128i bc = sub(low_high(e.lo, _mm_srai_epi16(e.lo, 1)), e.hi);  // [e0 - e2 | (e1 >> 1) - e3]
    const __m128i ab = _mm_unpacklo_epi64(ad, bc), dc = _mm_unpackhi_epi64(ad, bc);
    return {add(ab, dc), sub(ab, dc)};
}

// Rows, then columns. Input rows {[r0|r1], [r2|r3]}; output rows
// {[r0|r1], [r3|r2]}.
template <bool Saturate>
Block4 inverse4x4(Block4 rows) {
    Block4 x = inverse4<Saturate>(transpose4(rows));  // row pass on columns
    x.hi = _mm_shuffle_epi32(x.hi, 0x4E);               // [o3|o2] -> [o2|o3]
    return inverse4<Saturate>(transpose4(x));
}

__m128i load2x4(const u8* a, const u8* b) {
    int x, y;
    std::memcpy(&x, a, 4);
    std::memcpy(&y, b, 4);
    return _mm_unpacklo_epi32(_mm_cvtsi32_si128(x), _mm_cvtsi32_si128(y));
}
void store2x4(u8* a, u8* b, __m128i v) {
    const int x = _mm_cvtsi128_si32(v), y = _mm_cvtsi128_si32(_mm_srli_si128(v, 4));
    std::memcpy(a, &x, 4);
    std::memcpy(b, &y, 4);
}
// Rows ya and yb of dst = clamp(pred + residual [ya|yb]).
void add_two_rows(const u8* pred, int predStep, u8* dst, int dstStep, int ya, int yb, __m128i res) {
    const __m128i p = _mm_unpacklo_epi8(load2x4(row(pred, predStep, ya), row(pred, predStep, yb)), _mm_setzero_si128());
    store2x4(row(dst, dstStep, ya), row(dst, dstStep, yb), _mm_packus_epi16(_mm_adds_epi16(p, res), p));
}
// Adds the residual rows {[r0|r1], [r3|r2]} and stores them to coeffs.
void finish4x4(const u8* pred, int predStep, s16* coeffs, u8* dst, int dstStep, Block4 r) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(coeffs), r.lo);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(coeffs + 8), _mm_shuffle_epi32(r.hi, 0x4E));
    add_two_rows(pred, predStep, dst, dstStep, 0, 1, r.lo);
    add_two_rows(pred, predStep, dst, dstStep, 3, 2, r.hi);
}
void add_flat(const u8* pred, int predStep, u8* dst, int dstStep, __m128i v) {
    add_two_rows(pred, predStep, dst, dstStep, 0, 1, v);
    add_two_rows(pred, predStep, dst, dstStep, 2, 3, v);
}

__m128i load8(const s16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

void dequant_residual_add(const u8* pred, int predStep, s16* coeffs, const s16* dc, u8* dst, int dstStep, int qp,
                          bool ac) {
    const s16* iq = inv_quant_table[qp].data();
    if (!ac) {
        const int d = dc ? *dc : static_cast<s16>(static_cast<u16>(coeffs[0] * iq[0]));
        add_flat(pred, predStep, dst, dstStep, _mm_set1_epi16(static_cast<s16>((d + 32 > 32767 ? 32767 : d + 32) >> 6)));
        return;
    }
    Block4 c{_mm_mullo_epi16(load8(coeffs), load8(iq)), _mm_mullo_epi16(load8(coeffs + 8), load8(iq + 8))};
    if (dc) c.lo = _mm_insert_epi16(c.lo, *dc, 0);
    Block4 r = inverse4x4<true>(c);
    const __m128i round = _mm_set1_epi16(32);
    r.lo = _mm_srai_epi16(_mm_adds_epi16(r.lo, round), 6);
    r.hi = _mm_srai_epi16(_mm_adds_epi16(r.hi, round), 6);
    finish4x4(pred, predStep, coeffs, dst, dstStep, r);
}

// (a * b + round) >> shift for 8 16-bit lanes, the product and sum at 32
// bits, the result kept to its low 16 bits.
__m128i mul_round_shift(__m128i a, __m128i b, int round, int shift) {
    const __m128i lo = _mm_mullo_epi16(a, b), hi = _mm_mulhi_epi16(a, b);
    const __m128i rv = _mm_set1_epi32(round), sh = _mm_cvtsi32_si128(shift);
    __m128i x = _mm_sra_epi32(_mm_add_epi32(_mm_unpacklo_epi16(lo, hi), rv), sh);
    __m128i y = _mm_sra_epi32(_mm_add_epi32(_mm_unpackhi_epi16(lo, hi), rv), sh);
    x = _mm_srai_epi32(_mm_slli_epi32(x, 16), 16);
    y = _mm_srai_epi32(_mm_slli_epi32(y, 16), 16);
    return _mm_packs_epi32(x, y);
}

// Scaling-list scaling of 8 coefficients at 16 bits (q = QP / 6 <= 8).
__m128i scale8(__m128i c, __m128i ls, int q) {
    if (q >= 4) return _mm_sll_epi16(_mm_mullo_epi16(c, ls), _mm_cvtsi32_si128(q - 4));
    return mul_round_shift(c, ls, 1 << (3 - q), 4 - q);
}

// 8x8 scaling at 16 bits: q < 6: (c * ls + 2^(5-q)) >> (6-q), else (c * ls) << (q-6).
void quant8x8(s16* coeffs, int q, const s16* ls) {
    for (int i = 0; i < 64; i += 8) {
        const __m128i c = load8(coeffs + i), l = load8(ls + i);
        const __m128i v = q >= 6 ? _mm_sll_epi16(_mm_mullo_epi16(c, l), _mm_cvtsi32_si128(q - 6))
                                 : mul_round_shift(c, l, 1 << (5 - q), 6 - q);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(coeffs + i), v);
    }
}

void add_pred4x4(const u8* pred, int predStep, s16* coeffs, const s16* dc, u8* dst, int dstStep, int qp, bool ac,
                 const s16* ls) {
    const int q = h264_qp6[qp];
    if (!ac) {
        const __m128i d = dc ? _mm_set1_epi16(*dc)
                             : _mm_shufflelo_epi16(scale8(_mm_cvtsi32_si128(coeffs[0]), _mm_cvtsi32_si128(ls[0]), q), 0);
        add_flat(pred, predStep, dst, dstStep, round6(_mm_unpacklo_epi64(d, d)));
        return;
    }
    Block4 c{scale8(load8(coeffs), load8(ls), q), scale8(load8(coeffs + 8), load8(ls + 8), q)};
    if (dc) c.lo = _mm_insert_epi16(c.lo, *dc, 0);
    Block4 r = inverse4x4<false>(c);
    r.lo = round6(r.lo);
    r.hi = round6(r.hi);
    finish4x4(pred, predStep, coeffs, dst, dstStep, r);
}

// ---- 8x8 ------------------------------------------------------------------

inline void transpose8(__m128i (&r)[8]) { kivvc::sse2::transpose8x8_epi16(r); }

// Lane arithmetic of the 8-point transform: 16-bit lanes (8-bit pictures)
// or 32-bit lanes (high bit depth), both wrapping.
struct Lanes16 {
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi16(a, b); }
    template <int N>
    static __m128i sra(__m128i a) { return _mm_srai_epi16(a, N); }
};
struct Lanes32 {
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi32(a, b); }
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi32(a, b); }
    template <int N>
    static __m128i sra(__m128i a) { return _mm_srai_epi32(a, N); }
};

// The 8-point inverse transform across d[0..7] (lane-wise).
template <class L>
void inverse8(__m128i* d, int s) {
    const auto half = [](__m128i v) { return L::template sra<1>(v); };
    const auto quarter = [](__m128i v) { return L::template sra<2>(v); };
    const __m128i d0 = d[0], d1 = d[s], d2 = d[2 * s], d3 = d[3 * s];
    const __m128i d4 = d[4 * s], d5 = d[5 * s], d6 = d[6 * s], d7 = d[7 * s];
    const __m128i a0 = L::add(d0, d4), a4 = L::sub(d0, d4);
    const __m128i a2 = L::sub(half(d2), d6), a6 = L::add(d2, half(d6));
    const __m128i b0 = L::add(a0, a6), b2 = L::add(a4, a2);
    const __m128i b4 = L::sub(a4, a2), b6 = L::sub(a0, a6);
    const __m128i a1 = L::sub(L::sub(L::sub(d5, d3), d7), half(d7));
    const __m128i a3 = L::sub(L::sub(L::add(d1, d7), d3), half(d3));
    const __m128i a5 = L::add(L::add(L::sub(d7, d1), d5), half(d5));
    const __m128i a7 = L::add(L::add(L::add(d3, d5), d1), half(d1));
    const __m128i b1 = L::add(a1, quarter(a7)), b7 = L::sub(a7, quarter(a1));
    const __m128i b3 = L::add(a3, quarter(a5)), b5 = L::sub(quarter(a3), a5);
    d[0] = L::add(b0, b7);
    d[s] = L::add(b2, b5);
    d[2 * s] = L::add(b4, b3);
    d[3 * s] = L::add(b6, b1);
    d[4 * s] = L::sub(b6, b1);
    d[5 * s] = L::sub(b4, b3);
    d[6 * s] = L::sub(b2, b5);
    d[7 * s] = L::sub(b0, b7);
}

void transform8x8_add(const u8* pred, int predStep, s16* coeffs, u8* dst, int dstStep) {
    __m128i r[8];
    for (int i = 0; i < 8; ++i) r[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(coeffs + 8 * i));
    transpose8(r);
    inverse8<Lanes16>(r, 1);
    transpose8(r);
    inverse8<Lanes16>(r, 1);
    const __m128i z = _mm_setzero_si128();
    for (int y = 0; y < 8; ++y) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(coeffs + 8 * y), r[y]);
        const __m128i p = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(row(pred, predStep, y))), z);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row(dst, dstStep, y)),
                         _mm_packus_epi16(_mm_add_epi16(p, round6(r[y])), z));
    }
}

// ---- high bit depth (32-bit lanes) ----------------------------------------

// Transposes the 4x4 block of 32-bit values in r[0], r[s], r[2s], r[3s].
void transpose4x32(__m128i* r, int s) {
    const __m128i t0 = _mm_unpacklo_epi32(r[0], r[s]), t1 = _mm_unpackhi_epi32(r[0], r[s]);
    const __m128i t2 = _mm_unpacklo_epi32(r[2 * s], r[3 * s]), t3 = _mm_unpackhi_epi32(r[2 * s], r[3 * s]);
    r[0] = _mm_unpacklo_epi64(t0, t2);
    r[s] = _mm_unpackhi_epi64(t0, t2);
    r[2 * s] = _mm_unpacklo_epi64(t1, t3);
    r[3 * s] = _mm_unpackhi_epi64(t1, t3);
}

// The low 32 bits of a * b in each lane (SSE2 has no pmulld).
__m128i mullo32(__m128i a, __m128i b) {
    const __m128i even = _mm_mul_epu32(a, b);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, 0x08), _mm_shuffle_epi32(odd, 0x08));
}

// v clamped to 0..maxv (maxv < 2^15), packed to 16 bits in the low half.
__m128i clamp_pack(__m128i v, __m128i maxv) {
    v = _mm_and_si128(v, _mm_cmpgt_epi32(v, _mm_setzero_si128()));
    const __m128i over = _mm_cmpgt_epi32(v, maxv);
    v = _mm_or_si128(_mm_andnot_si128(over, v), _mm_and_si128(over, maxv));
    return _mm_packs_epi32(v, v);
}

__m128i load4x16(const u16* p) { return _mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128()); }
void store4x16(u16* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
__m128i load4x32(const s32* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
void store4x32(s32* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// The 4-point inverse butterfly across e[0..3] at 32 bits.
void inverse4x32(__m128i* e) {
    const __m128i a = _mm_add_epi32(e[0], e[2]), b = _mm_sub_epi32(e[0], e[2]);
    const __m128i c = _mm_sub_epi32(_mm_srai_epi32(e[1], 1), e[3]), d = _mm_add_epi32(e[1], _mm_srai_epi32(e[3], 1));
    e[0] = _mm_add_epi32(a, d);
    e[1] = _mm_add_epi32(b, c);
    e[2] = _mm_sub_epi32(b, c);
    e[3] = _mm_sub_epi32(a, d);
}

void add_pred4x4_hbd(const u16* pred, int predStep, s32* coeffs, const s32* dc, u16* dst, int dstStep, int qp,
                     bool ac, int bitDepth, const s16* ls) {
    const int q = h264_qp6[qp];
    const __m128i maxv = _mm_set1_epi32((1 << bitDepth) - 1);
    const auto scale = [q](__m128i c, const s16* l) {
        const __m128i p = mullo32(c, _mm_srai_epi32(_mm_unpacklo_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(l)), _mm_loadl_epi64(reinterpret_cast<const __m128i*>(l))), 16));
        if (q >= 4) return _mm_sll_epi32(p, _mm_cvtsi32_si128(q - 4));
        return _mm_sra_epi32(_mm_add_epi32(p, _mm_set1_epi32(1 << (3 - q))), _mm_cvtsi32_si128(4 - q));
    };
    __m128i r[4];
    if (ac) {
        for (int i = 0; i < 4; ++i) r[i] = scale(load4x32(coeffs + 4 * i), ls + 4 * i);
        if (dc) r[0] = _mm_or_si128(_mm_and_si128(r[0], _mm_setr_epi32(0, -1, -1, -1)), _mm_cvtsi32_si128(*dc));
        transpose4x32(r, 1);
        inverse4x32(r);
        transpose4x32(r, 1);
        inverse4x32(r);
        for (int i = 0; i < 4; ++i) {
            r[i] = _mm_srai_epi32(_mm_add_epi32(r[i], _mm_set1_epi32(32)), 6);
            store4x32(coeffs + 4 * i, r[i]);
        }
    } else {
        const __m128i d = dc ? _mm_set1_epi32(*dc) : _mm_shuffle_epi32(scale(load4x32(coeffs), ls), 0);
        r[0] = r[1] = r[2] = r[3] = _mm_srai_epi32(_mm_add_epi32(d, _mm_set1_epi32(32)), 6);
    }
    for (int y = 0; y < 4; ++y)
        store4x16(row(dst, dstStep, y), clamp_pack(_mm_add_epi32(load4x16(row(pred, predStep, y)), r[y]), maxv));
}

// 8x8 scaling at 32 bits: four coefficients a step, the products wrapped to
// 32 bits as the reference wraps them.
void quant8x8_hbd(s32* coeffs, int q, const s16* ls) {
    const __m128i shift = _mm_cvtsi32_si128(q >= 6 ? q - 6 : 6 - q);
    const __m128i round = _mm_set1_epi32(q >= 6 ? 0 : 1 << (5 - q));
    for (int i = 0; i < 64; i += 4) {
        const __m128i l4 = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(ls + i));
        const __m128i p = mullo32(load4x32(coeffs + i), _mm_srai_epi32(_mm_unpacklo_epi16(l4, l4), 16));
        store4x32(coeffs + i, q >= 6 ? _mm_sll_epi32(p, shift) : _mm_sra_epi32(_mm_add_epi32(p, round), shift));
    }
}

void transform8x8_add_hbd(const u16* pred, int predStep, s32* coeffs, u16* dst, int dstStep, int bitDepth) {
    __m128i r[16];  // row y, half h at r[2y + h]
    for (int k = 0; k < 16; ++k) r[k] = load4x32(coeffs + 4 * k);
    const auto transpose8 = [&r] {
        transpose4x32(r, 2);          // rows 0..3, columns 0..3
        transpose4x32(r + 9, 2);      // rows 4..7, columns 4..7
        transpose4x32(r + 1, 2);      // rows 0..3, columns 4..7
        transpose4x32(r + 8, 2);      // rows 4..7, columns 0..3
        for (int i = 0; i < 4; ++i) std::swap(r[2 * i + 1], r[2 * i + 8]);
    };
    transpose8();
    inverse8<Lanes32>(r, 2);
    inverse8<Lanes32>(r + 1, 2);
    transpose8();
    inverse8<Lanes32>(r, 2);
    inverse8<Lanes32>(r + 1, 2);
    const __m128i maxv = _mm_set1_epi32((1 << bitDepth) - 1), round = _mm_set1_epi32(32);
    for (int y = 0; y < 8; ++y)
        for (int h = 0; h < 2; ++h) {
            const __m128i v = r[2 * y + h];
            store4x32(coeffs + 8 * y + 4 * h, v);
            const __m128i p = _mm_slli_epi32(load4x16(row(pred, predStep, y) + 4 * h), 6);
            const __m128i x = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(v, p), round), 6);
            store4x16(row(dst, dstStep, y) + 4 * h, clamp_pack(x, maxv));
        }
}

// ---- DC blocks ------------------------------------------------------------

// The 4x4 Hadamard (H x c x H) of 16 values at 16 bits: rows {[r0|r1],
// [r2|r3]} in, rows {[r0|r1], [r2|r3]} out.
Block4 hadamard4x4(Block4 b) {
    for (int pass = 0; pass < 2; ++pass) {
        b = transpose4(b);  // {[e0|e1], [e2|e3]}
        const __m128i s = _mm_add_epi16(b.lo, b.hi), d = _mm_sub_epi16(b.lo, b.hi);  // [e0+e2|e1+e3], [e0-e2|e1-e3]
        const __m128i s2 = _mm_shuffle_epi32(s, 0x4E), d2 = _mm_shuffle_epi32(d, 0x4E);
        // out0 = (e0+e2)+(e1+e3), out1 = (e0-e2)+(e1-e3), out2 = (e0-e2)-(e1-e3), out3 = (e0+e2)-(e1+e3)
        b = {_mm_unpacklo_epi64(_mm_add_epi16(s, s2), _mm_add_epi16(d, d2)),
             _mm_unpacklo_epi64(_mm_sub_epi16(d, d2), _mm_sub_epi16(s, s2))};
    }
    return b;
}

void luma_dc_flat(s16* block, int qp) {
    const Block4 f = hadamard4x4({load8(block), load8(block + 8)});
    const int s = InvQuantLuma16x16DCTable[qp];  // at most 896: fits a signed 16-bit factor
    const int shift = qp < 6 ? 2 : qp < 12 ? 1 : 0;
    const int round = shift ? 1 << (shift - 1) : 0;
    const __m128i sv = _mm_set1_epi16(static_cast<s16>(s));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(block), mul_round_shift(f.lo, sv, round, shift));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(block + 8), mul_round_shift(f.hi, sv, round, shift));
}


// Scaling-list luma DC at 32 bits: f = H x c x H, then (f * ls0 + 2^(5-q))
// >> (6-q), or (f * ls0) << (q-6) from q = 6 on; the 16-bit member keeps the
// low 16 bits.
template <class Coeff>
void luma_dc(Coeff* block, int q, int ls0) {
    __m128i r[4];
    for (int i = 0; i < 4; ++i) {
        if constexpr (sizeof(Coeff) == 2) {
            const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(block + 4 * i));
            r[i] = _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16);
        } else {
            r[i] = load4x32(block + 4 * i);
        }
    }
    for (int pass = 0; pass < 2; ++pass) {
        transpose4x32(r, 1);
        const __m128i a = _mm_add_epi32(r[0], r[1]), b = _mm_sub_epi32(r[0], r[1]);
        const __m128i c = _mm_add_epi32(r[2], r[3]), d = _mm_sub_epi32(r[2], r[3]);
        r[0] = _mm_add_epi32(a, c);
        r[1] = _mm_sub_epi32(a, c);
        r[2] = _mm_sub_epi32(b, d);
        r[3] = _mm_add_epi32(b, d);
    }
    const __m128i scale = _mm_set1_epi32(ls0);
    for (int i = 0; i < 4; ++i) {
        __m128i v = mullo32(r[i], scale);
        if (q >= 6) v = _mm_sll_epi32(v, _mm_cvtsi32_si128(q - 6));
        else v = _mm_sra_epi32(_mm_add_epi32(v, _mm_set1_epi32(1 << (5 - q))), _mm_cvtsi32_si128(6 - q));
        if constexpr (sizeof(Coeff) == 2) {
            v = _mm_srai_epi32(_mm_slli_epi32(v, 16), 16);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(block + 4 * i), _mm_packs_epi32(v, v));
        } else {
            store4x32(block + 4 * i, v);
        }
    }
}

}  // namespace

void init_transform_sse2(Table& t) {
    t.dequant_residual_add = &dequant_residual_add;
    t.add_pred4x4 = &add_pred4x4;
    t.transform8x8_add = &transform8x8_add;
    t.luma_dc_flat = &luma_dc_flat;
    t.add_pred4x4_hbd = &add_pred4x4_hbd;
    t.transform8x8_add_hbd = &transform8x8_add_hbd;
    t.quant8x8 = &quant8x8;
    t.quant8x8_hbd = &quant8x8_hbd;
    t.luma_dc = &luma_dc<s16>;
    t.luma_dc_hbd = &luma_dc<s32>;
}

}  // namespace kivvc::h264::transform
