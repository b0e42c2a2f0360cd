// SSE2 VC-1 kernels.
// Transforms: transpose, one butterfly pass on 16-bit lanes with pmaddwd
// (exact 32-bit sums), saturate the results back to 16 bits, transpose,
// second pass (whose results always fit). Smoothing pairs the two samples
// of each side (pmaddwd again), so the arithmetic stays exact for any 16-bit
// input. Deblocking works on 16-bit lanes, one line per lane, the third
// line's verdict broadcast over its segment. Interpolation widens to 16 bits.
#include <emmintrin.h>

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "core/arith.h"
#include "vc1/vc1_kernels.h"
#include "vc1/vc1_simd.h"

namespace kivvc::vc1 {
namespace {

// ---- inverse transforms ----------------------------------------------------

// One 8-point pass over lanes 0..3 (Hi false) or 4..7 of x[0..7], of which
// only x[0..NX-1] may be non-zero: y[i] = (sum + Bias (+ Extra on outputs
// 4..7)) >> Shift, 32-bit.
template <bool Hi, int NX, int Bias, int Extra, int Shift>
void pass8_half(const __m128i* x, __m128i* y) {
    const __m128i z = _mm_setzero_si128();
    const __m128i p04 = interleave16<Hi>(x[0], NX > 4 ? x[4] : z);
    const __m128i p13 = interleave16<Hi>(x[1], NX > 2 ? x[3] : z);
    const __m128i bias = _mm_set1_epi32(Bias);
    const __m128i t1 = _mm_add_epi32(madd(p04, 12, 12), bias);
    const __m128i t2 = NX > 4 ? _mm_add_epi32(madd(p04, 12, -12), bias) : t1;
    __m128i t3 = z, t4 = z;
    if constexpr (NX > 2) {
        const __m128i p26 = interleave16<Hi>(x[2], NX > 4 ? x[6] : z);
        t3 = madd(p26, 16, 6), t4 = madd(p26, 6, -16);
    }
    const __m128i e0 = _mm_add_epi32(t1, t3), e1 = _mm_add_epi32(t2, t4);
    const __m128i e2 = _mm_sub_epi32(t2, t4), e3 = _mm_sub_epi32(t1, t3);
    __m128i o0 = madd(p13, 16, 15), o1 = madd(p13, 15, -4), o2 = madd(p13, 9, -16), o3 = madd(p13, 4, -9);
    if constexpr (NX > 4) {
        const __m128i p57 = interleave16<Hi>(x[5], x[7]);
        o0 = _mm_add_epi32(o0, madd(p57, 9, 4)), o1 = _mm_add_epi32(o1, madd(p57, -16, -9));
        o2 = _mm_add_epi32(o2, madd(p57, 4, 15)), o3 = _mm_add_epi32(o3, madd(p57, 15, -16));
    }
    y[0] = _mm_srai_epi32(_mm_add_epi32(e0, o0), Shift);
    y[1] = _mm_srai_epi32(_mm_add_epi32(e1, o1), Shift);
    y[2] = _mm_srai_epi32(_mm_add_epi32(e2, o2), Shift);
    y[3] = _mm_srai_epi32(_mm_add_epi32(e3, o3), Shift);
    __m128i f0 = _mm_sub_epi32(e0, o0), f1 = _mm_sub_epi32(e1, o1), f2 = _mm_sub_epi32(e2, o2),
            f3 = _mm_sub_epi32(e3, o3);
    if constexpr (Extra != 0) {
        const __m128i extra = _mm_set1_epi32(Extra);
        f0 = _mm_add_epi32(f0, extra), f1 = _mm_add_epi32(f1, extra);
        f2 = _mm_add_epi32(f2, extra), f3 = _mm_add_epi32(f3, extra);
    }
    y[4] = _mm_srai_epi32(f3, Shift);
    y[5] = _mm_srai_epi32(f2, Shift);
    y[6] = _mm_srai_epi32(f1, Shift);
    y[7] = _mm_srai_epi32(f0, Shift);
}

template <bool Hi, int NX, int Bias, int Extra, int Shift>
void pass4_half(const __m128i* x, __m128i* y) {
    static_assert(Extra == 0);
    const __m128i z = _mm_setzero_si128();
    const __m128i p02 = interleave16<Hi>(x[0], NX > 2 ? x[2] : z), p13 = interleave16<Hi>(x[1], NX > 2 ? x[3] : z);
    const __m128i bias = _mm_set1_epi32(Bias);
    const __m128i t0 = _mm_add_epi32(madd(p02, 17, 17), bias);
    const __m128i t1 = NX > 2 ? _mm_add_epi32(madd(p02, 17, -17), bias) : t0;
    const __m128i u0 = madd(p13, 22, 10), u1 = madd(p13, 10, -22);
    y[0] = _mm_srai_epi32(_mm_add_epi32(t0, u0), Shift);
    y[1] = _mm_srai_epi32(_mm_add_epi32(t1, u1), Shift);
    y[2] = _mm_srai_epi32(_mm_sub_epi32(t1, u1), Shift);
    y[3] = _mm_srai_epi32(_mm_sub_epi32(t0, u0), Shift);
}

// Which lanes a pass computes: all eight, or 0..3 with lanes 4..7 repeating
// them or zero (rows whose coefficients are all zero give zero).
enum Lanes { kAllLanes, kLowRepeated, kLowZero };

// One N-point pass over x[0..NX-1] into y[0..N-1], saturated to 16 bits.
template <int N, int NX, Lanes L, int Bias, int Extra, int Shift>
void pass(const __m128i* x, __m128i* y) {
    __m128i lo[N], hi[N];
    if constexpr (N == 8) pass8_half<false, NX, Bias, Extra, Shift>(x, lo);
    else pass4_half<false, NX, Bias, Extra, Shift>(x, lo);
    if constexpr (L == kAllLanes) {
        if constexpr (N == 8) pass8_half<true, NX, Bias, Extra, Shift>(x, hi);
        else pass4_half<true, NX, Bias, Extra, Shift>(x, hi);
    }
    for (int i = 0; i < N; ++i)
        y[i] = _mm_packs_epi32(lo[i], L == kAllLanes ? hi[i] : L == kLowRepeated ? lo[i] : _mm_setzero_si128());
}

// 8x8 reading the NW x NH top-left coefficients.
template <int NW, int NH>
void transform8x8(const s16* src, int ss, s16* dst, int ds) {
    __m128i v[8], t[8];
    for (int r = 0; r < 8; ++r) v[r] = r < NH ? load<NW * 2>(row_at(src, ss, r)) : _mm_setzero_si128();
    transpose8(v);
    pass<8, NW, NH <= 4 ? kLowZero : kAllLanes, 4, 0, 3>(v, t);
    transpose8(t);
    pass<8, NH, kAllLanes, 64, 1, 7>(t, v);
    for (int r = 0; r < 8; ++r) store<16>(row_at(dst, ds, r), v[r]);
}

void transform8x4(const s16* src, int ss, s16* dst, int ds) {
    __m128i v[8], t[8];
    for (int r = 0; r < 8; ++r) v[r] = r < 4 ? load<16>(row_at(src, ss, r)) : _mm_setzero_si128();
    transpose8(v);
    pass<8, 8, kLowRepeated, 4, 0, 3>(v, t);  // lanes 4..7 are never used
    transpose8(t);
    pass<4, 4, kAllLanes, 64, 0, 7>(t, v);
    for (int r = 0; r < 4; ++r) store<16>(row_at(dst, ds, r), v[r]);
}

void transform4x8(const s16* src, int ss, s16* dst, int ds) {
    __m128i v[8], t[8];
    for (int r = 0; r < 8; ++r) v[r] = load<8>(row_at(src, ss, r));
    transpose8(v);
    pass<4, 4, kAllLanes, 4, 0, 3>(v, t);
    for (int i = 4; i < 8; ++i) t[i] = _mm_setzero_si128();
    transpose8(t);
    pass<8, 8, kLowRepeated, 64, 1, 7>(t, v);
    for (int r = 0; r < 8; ++r) store<8>(row_at(dst, ds, r), v[r]);
}

template <int NW, int NH>
void transform4x4(const s16* src, int ss, s16* dst, int ds) {
    __m128i v[4], t[4];
    for (int r = 0; r < 4; ++r) v[r] = r < NH ? load<NW * 2>(row_at(src, ss, r)) : _mm_setzero_si128();
    transpose4(v);
    pass<4, NW, kLowRepeated, 4, 0, 3>(v, t);
    transpose4(t);
    pass<4, NH, kLowRepeated, 64, 0, 7>(t, v);
    for (int r = 0; r < 4; ++r) store<8>(row_at(dst, ds, r), v[r]);
}

template <int W, int H>
void transform_dc(const s16* src, int, s16* dst, int ds) {
    constexpr int kRowGain = W == 8 ? 12 : 17, kColumnGain = H == 8 ? 12 : 17;
    const int t = sat_s16(shift_right_floor(kRowGain * src[0] + 4, 3));
    const __m128i v = _mm_set1_epi16(static_cast<short>(shift_right_floor(kColumnGain * t + 64, 7)));
    for (int r = 0; r < H; ++r) store<W * 2>(row_at(dst, ds, r), v);
}

// ---- overlap smoothing -------------------------------------------------------

// Rounding terms (r0, r1) of four consecutive lines starting at an even one.
template <int Rounding>
void rounding_pair(__m128i& r0, __m128i& r1) {
    if constexpr (Rounding == kRoundAlternate) {
        r0 = _mm_setr_epi32(4, 3, 4, 3), r1 = _mm_setr_epi32(3, 4, 3, 4);
    } else if constexpr (Rounding == kRoundEven) {
        r0 = _mm_set1_epi32(4), r1 = _mm_set1_epi32(3);
    } else {
        r0 = _mm_set1_epi32(3), r1 = _mm_set1_epi32(4);
    }
}

// The four 32-bit lanes of v, lane i to row i.
inline void scatter32(void* base, int step, __m128i v) {
    for (int i = 0; i < 4; ++i) {
        store<4>(row_at(static_cast<std::uint8_t*>(base), step, i), v);
        v = _mm_srli_si128(v, 4);
    }
}

template <int Rounding>
void smooth_ver8(s16* left, int ls, s16* right, int rs, u8* dst, int ds) {
    __m128i r0, r1;
    rounding_pair<Rounding>(r0, r1);
    for (int g = 0; g < 8; g += 4) {
        s16* l = row_at(left, ls, g);
        s16* r = row_at(right, rs, g);
        u8* d = row_at(dst, ds, g) - 2;
        // Lane i: the pair (x0, x1) of line i, and (x2, x3).
        __m128i pl[4], pr[4];
        for (int i = 0; i < 4; ++i) pl[i] = load<4>(row_at(l, ls, i)), pr[i] = load<4>(row_at(r, rs, i));
        const __m128i L = _mm_unpacklo_epi64(_mm_unpacklo_epi32(pl[0], pl[1]), _mm_unpacklo_epi32(pl[2], pl[3]));
        const __m128i R = _mm_unpacklo_epi64(_mm_unpacklo_epi32(pr[0], pr[1]), _mm_unpacklo_epi32(pr[2], pr[3]));
        const __m128i y0 = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(madd(L, 7, 0), madd(R, 0, 1)), r0), 3);
        const __m128i y1 = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(madd(L, -1, 7), madd(R, 1, 1)), r1), 3);
        const __m128i y2 = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(madd(L, 1, 1), madd(R, 7, -1)), r0), 3);
        const __m128i y3 = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(madd(L, 1, 0), madd(R, 0, 7)), r1), 3);
        const __m128i low16 = _mm_set1_epi32(0xFFFF);
        scatter32(l, ls, _mm_or_si128(_mm_and_si128(y0, low16), _mm_slli_epi32(y1, 16)));
        scatter32(r, rs, _mm_or_si128(_mm_and_si128(y2, low16), _mm_slli_epi32(y3, 16)));
        // Bytes y0 | y2 | y1 | y3 (four lines each), then line by line.
        const __m128i b = _mm_packus_epi16(_mm_packs_epi32(y0, y2), _mm_packs_epi32(y1, y3));
        const __m128i b01 = _mm_unpacklo_epi8(b, _mm_srli_si128(b, 8));
        scatter32(d, ds, _mm_unpacklo_epi16(b01, _mm_srli_si128(b01, 8)));
    }
}

void smooth_hor8(const s16* upper, int us, const s16* lower, int ls, u8* dst, int ds) {
    const __m128i u0 = load<16>(upper), u1 = load<16>(row_at(upper, us, 1));
    const __m128i l0 = load<16>(lower), l1 = load<16>(row_at(lower, ls, 1));
    const __m128i r0 = _mm_setr_epi32(4, 3, 4, 3), r1 = _mm_setr_epi32(3, 4, 3, 4);
    __m128i y[2][4];
    for (int h = 0; h < 2; ++h) {
        const __m128i p03 = h ? interleave16<true>(u0, l1) : interleave16<false>(u0, l1);
        const __m128i p12 = h ? interleave16<true>(u1, l0) : interleave16<false>(u1, l0);
        y[h][0] = _mm_srai_epi32(_mm_add_epi32(madd(p03, 7, 1), r0), 3);
        y[h][1] = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(madd(p03, -1, 1), madd(p12, 7, 1)), r1), 3);
        y[h][2] = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(madd(p03, 1, -1), madd(p12, 1, 7)), r0), 3);
        y[h][3] = _mm_srai_epi32(_mm_add_epi32(madd(p03, 1, 7), r1), 3);
    }
    for (int k = 0; k < 4; ++k) {
        const __m128i w = _mm_packs_epi32(y[0][k], y[1][k]);
        store<8>(row_at(dst, ds, k - 2), _mm_packus_epi16(w, w));
    }
}

// ---- deblocking --------------------------------------------------------------

inline __m128i abs16(__m128i v) { return _mm_max_epi16(v, _mm_sub_epi16(_mm_setzero_si128(), v)); }

// (2 (a - d) - 5 (b - c) + 4) >> 3 per 16-bit lane.
inline __m128i edge_measure(__m128i a, __m128i b, __m128i c, __m128i d) {
    const __m128i outer = _mm_slli_epi16(_mm_sub_epi16(a, d), 1);
    const __m128i inner = _mm_sub_epi16(b, c);
    const __m128i five = _mm_add_epi16(_mm_slli_epi16(inner, 2), inner);
    return _mm_srai_epi16(_mm_add_epi16(_mm_sub_epi16(outer, five), _mm_set1_epi16(4)), 3);
}

// Filters eight lines (one per lane, two segments) of P1..P8 held in p[0..7];
// `enabled` is all ones in the lanes of enabled segments. Returns false,
// leaving p alone, when no line passes.
bool deblock8(__m128i* p, __m128i pquant, __m128i enabled) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i d45 = _mm_sub_epi16(p[3], p[4]);
    const __m128i clip = _mm_srai_epi16(_mm_add_epi16(d45, _mm_srli_epi16(d45, 15)), 1);  // toward zero
    const __m128i a0 = edge_measure(p[2], p[3], p[4], p[5]);
    const __m128i a1 = edge_measure(p[0], p[1], p[2], p[3]);
    const __m128i a2 = edge_measure(p[4], p[5], p[6], p[7]);
    const __m128i abs_a0 = abs16(a0), a3 = _mm_min_epi16(abs16(a1), abs16(a2));
    __m128i pass = _mm_andnot_si128(_mm_cmpeq_epi16(clip, zero), _mm_cmplt_epi16(abs_a0, pquant));
    pass = _mm_and_si128(pass, _mm_cmplt_epi16(a3, abs_a0));
    // The third line of each segment (lanes 2 and 6) decides for all four.
    const __m128i third = _mm_shufflehi_epi16(_mm_shufflelo_epi16(pass, 0xAA), 0xAA);
    pass = _mm_and_si128(_mm_and_si128(pass, third), enabled);
    if (_mm_movemask_epi8(pass) == 0) return false;
    // On a passing line a0 != 0 and |d| = (5 (|a0| - a3)) >> 3 with the sign
    // opposite to a0's; it survives only when that is clip's sign, limited to |clip|.
    const __m128i diff = _mm_sub_epi16(abs_a0, a3);
    const __m128i dmag = _mm_srai_epi16(_mm_add_epi16(_mm_slli_epi16(diff, 2), diff), 3);
    const __m128i opposite = _mm_cmplt_epi16(_mm_xor_si128(a0, clip), zero);
    const __m128i m = _mm_and_si128(_mm_min_epi16(dmag, abs16(clip)), _mm_and_si128(pass, opposite));
    const __m128i s = _mm_srai_epi16(clip, 15);
    const __m128i d = _mm_sub_epi16(_mm_xor_si128(m, s), s);
    p[3] = _mm_sub_epi16(p[3], d);
    p[4] = _mm_add_epi16(p[4], d);
    return true;
}

// All ones in the lanes (four per segment) of the two segments from
// first_segment on that the disable flags leave enabled.
inline __m128i segment_mask(int flags, int first_segment) {
    const __m128i bits = _mm_and_si128(_mm_set1_epi16(static_cast<short>(flags >> first_segment)),
                                       _mm_setr_epi16(1, 1, 1, 1, 2, 2, 2, 2));
    return _mm_cmpeq_epi16(bits, _mm_setzero_si128());
}

inline __m128i pquant_vector(int pquant) { return _mm_set1_epi16(static_cast<short>(clip3(0, 32767, pquant))); }

// Lines are columns: rows -4..3 around the edge, Lines bytes each.
template <int Lines>
void deblock_hor(u8* p, int step, int pquant, int flags) {
    if ((flags & ((1 << (Lines / 4)) - 1)) == (1 << (Lines / 4)) - 1) return;  // every segment disabled
    const __m128i zero = _mm_setzero_si128(), pq = pquant_vector(pquant);
    __m128i raw[8];
    for (int k = 0; k < 8; ++k) raw[k] = load<Lines>(row_at(p, step, k - 4));
    bool changed = false;
    __m128i out4[2], out5[2];
    for (int h = 0; h < Lines / 8; ++h) {
        __m128i v[8];
        for (int k = 0; k < 8; ++k) v[k] = h ? _mm_unpackhi_epi8(raw[k], zero) : _mm_unpacklo_epi8(raw[k], zero);
        changed |= deblock8(v, pq, segment_mask(flags, 2 * h));
        out4[h] = v[3], out5[h] = v[4];
    }
    if (!changed) return;
    store<Lines>(row_at(p, step, -1), _mm_packus_epi16(out4[0], out4[Lines / 8 - 1]));
    store<Lines>(p, _mm_packus_epi16(out5[0], out5[Lines / 8 - 1]));
}

// Lines are rows: columns -4..3 of eight rows at a time, transposed as bytes.
template <int Lines>
void deblock_ver(u8* p, int step, int pquant, int flags) {
    const __m128i zero = _mm_setzero_si128(), pq = pquant_vector(pquant);
    for (int g = 0; g < Lines; g += 8) {
        if (((flags >> (g / 4)) & 3) == 3) continue;  // both segments disabled
        u8* base = row_at(p, step, g) - 4;
        __m128i r[8];
        for (int i = 0; i < 8; ++i) r[i] = load<8>(row_at(base, step, i));
        const __m128i a0 = _mm_unpacklo_epi8(r[0], r[1]), a1 = _mm_unpacklo_epi8(r[2], r[3]);
        const __m128i a2 = _mm_unpacklo_epi8(r[4], r[5]), a3 = _mm_unpacklo_epi8(r[6], r[7]);
        const __m128i b0 = _mm_unpacklo_epi16(a0, a1), b1 = _mm_unpackhi_epi16(a0, a1);
        const __m128i b2 = _mm_unpacklo_epi16(a2, a3), b3 = _mm_unpackhi_epi16(a2, a3);
        // Two columns (eight lines each) per register.
        const __m128i c[4] = {_mm_unpacklo_epi32(b0, b2), _mm_unpackhi_epi32(b0, b2), _mm_unpacklo_epi32(b1, b3),
                              _mm_unpackhi_epi32(b1, b3)};
        __m128i v[8];
        for (int k = 0; k < 4; ++k) v[2 * k] = _mm_unpacklo_epi8(c[k], zero), v[2 * k + 1] = _mm_unpackhi_epi8(c[k], zero);
        if (!deblock8(v, pq, segment_mask(flags, g / 4))) continue;
        // Back to rows, stored whole: a later load of these rows then meets
        // stores of its own size.
        __m128i t[4];
        for (int k = 0; k < 4; ++k) {
            const __m128i cols = _mm_packus_epi16(v[2 * k], v[2 * k + 1]);
            t[k] = _mm_unpacklo_epi8(cols, _mm_srli_si128(cols, 8));
        }
        const __m128i e0 = _mm_unpacklo_epi16(t[0], t[1]), e1 = _mm_unpackhi_epi16(t[0], t[1]);
        const __m128i e2 = _mm_unpacklo_epi16(t[2], t[3]), e3 = _mm_unpackhi_epi16(t[2], t[3]);
        const __m128i rows[4] = {_mm_unpacklo_epi32(e0, e2), _mm_unpackhi_epi32(e0, e2), _mm_unpacklo_epi32(e1, e3),
                                 _mm_unpackhi_epi32(e1, e3)};
        for (int k = 0; k < 4; ++k) {
            store<8>(row_at(base, step, 2 * k), rows[k]);
            store<8>(row_at(base, step, 2 * k + 1), _mm_unpackhi_epi64(rows[k], rows[k]));
        }
    }
}

// ---- range mapping -----------------------------------------------------------

void range_map(const u8* src, int ss, u8* dst, int ds, int width, int height, int r) {
    const __m128i gain = _mm_set1_epi16(static_cast<short>(r + 9)), centre = _mm_set1_epi16(128),
                  four = _mm_set1_epi16(4), zero = _mm_setzero_si128();
    // (s - 128) (r + 9) + 4 lies within -2048..2036.
    auto map8 = [&](__m128i s16) {
        const __m128i v = _mm_mullo_epi16(_mm_sub_epi16(s16, centre), gain);
        return _mm_add_epi16(_mm_srai_epi16(_mm_add_epi16(v, four), 3), centre);
    };
    for (int y = 0; y < height; ++y) {
        const u8* s = row_at(src, ss, y);
        u8* d = row_at(dst, ds, y);
        int x = 0;
        for (; x + 16 <= width; x += 16) {
            const __m128i v = load<16>(s + x);
            store<16>(d + x, _mm_packus_epi16(map8(_mm_unpacklo_epi8(v, zero)), map8(_mm_unpackhi_epi8(v, zero))));
        }
        if (x + 8 <= width) {
            const __m128i m = map8(_mm_unpacklo_epi8(load<8>(s + x), zero));
            store<8>(d + x, _mm_packus_epi16(m, m));
            x += 8;
        }
        for (; x < width; ++x) d[x] = clip_u8(shift_right_floor((s[x] - 128) * (r + 9) + 4, 3) + 128);
    }
}

// ---- bilinear interpolation ----------------------------------------------------

// (4 - DX) s[x] + DX s[x + 1] of one row, widened: lo columns 0..7, hi 8..15.
template <int W, int DX>
struct HorizontalSum {
    __m128i lo, hi;
    static HorizontalSum of(const u8* s) {
        const __m128i z = _mm_setzero_si128();
        const __m128i a = load<W>(s);
        HorizontalSum h;
        h.lo = _mm_unpacklo_epi8(a, z);
        h.hi = _mm_unpackhi_epi8(a, z);
        if constexpr (DX != 0) {
            const __m128i b = load<W>(s + 1);
            const __m128i wa = _mm_set1_epi16(4 - DX), wb = _mm_set1_epi16(DX);
            h.lo = _mm_add_epi16(_mm_mullo_epi16(h.lo, wa), _mm_mullo_epi16(_mm_unpacklo_epi8(b, z), wb));
            if constexpr (W == 16)
                h.hi = _mm_add_epi16(_mm_mullo_epi16(h.hi, wa), _mm_mullo_epi16(_mm_unpackhi_epi8(b, z), wb));
        } else {
            h.lo = _mm_slli_epi16(h.lo, 2), h.hi = _mm_slli_epi16(h.hi, 2);
        }
        return h;
    }
};

// ((4 - DY) h(y) + DY h(y + 1) + 8 - rc) >> 4; every sum is at most 4088.
template <int W, int H, int DX, int DY>
void bilinear(const u8* src, int ss, u8* dst, int ds, int rc) {
    using Sum = HorizontalSum<W, DX>;
    const __m128i bias = _mm_set1_epi16(static_cast<short>(8 - rc));
    const __m128i wt = _mm_set1_epi16(4 - DY), wb = _mm_set1_epi16(DY);
    Sum cur = Sum::of(src);
    for (int y = 0; y < H; ++y) {
        __m128i lo = cur.lo, hi = cur.hi;
        if constexpr (DY != 0) {
            const Sum next = Sum::of(row_at(src, ss, y + 1));
            lo = _mm_add_epi16(_mm_mullo_epi16(lo, wt), _mm_mullo_epi16(next.lo, wb));
            if constexpr (W == 16) hi = _mm_add_epi16(_mm_mullo_epi16(hi, wt), _mm_mullo_epi16(next.hi, wb));
            cur = next;
        } else {
            lo = _mm_slli_epi16(lo, 2), hi = _mm_slli_epi16(hi, 2);
            if (y + 1 < H) cur = Sum::of(row_at(src, ss, y + 1));
        }
        lo = _mm_srli_epi16(_mm_add_epi16(lo, bias), 4);
        hi = W == 16 ? _mm_srli_epi16(_mm_add_epi16(hi, bias), 4) : lo;
        store<W>(row_at(dst, ds, y), _mm_packus_epi16(lo, hi));
    }
}

// ---- bicubic interpolation -----------------------------------------------------

inline __m128i widen8(const u8* p) { return _mm_unpacklo_epi8(load<8>(p), _mm_setzero_si128()); }

// Four-tap sum in 16 bits: 8-bit samples give -1785..18105.
template <int Fraction>
__m128i taps16(const __m128i* v) {
    constexpr const int* t = BicubicFilterParams[Fraction];
    __m128i sum = _mm_mullo_epi16(v[0], _mm_set1_epi16(t[0]));
    for (int k = 1; k < 4; ++k) sum = _mm_add_epi16(sum, _mm_mullo_epi16(v[k], _mm_set1_epi16(t[k])));
    return sum;
}

inline __m128i clamp_u8(__m128i v16) { return _mm_packus_epi16(v16, v16); }

// Columns -1 .. W + 1 of one source row, widened: 8 wide, v[0] holds
// columns -1..6 and v[1] 2..9; 16 wide, v[0] -1..6, v[1] 7..14 and v[2]
// 10..17. Reads exactly columns -1 .. W + 1.
template <int W>
struct Span {
    static constexpr int N = W == 8 ? 2 : 3;
    __m128i v[N];
    static Span of(const u8* s) {
        Span r;
        if constexpr (W == 8) {
            r.v[0] = widen8(s - 1), r.v[1] = widen8(s + 2);
        } else {
            const __m128i z = _mm_setzero_si128(), raw = load<16>(s - 1);
            r.v[0] = _mm_unpacklo_epi8(raw, z), r.v[1] = _mm_unpackhi_epi8(raw, z), r.v[2] = widen8(s + 10);
        }
        return r;
    }
};

// t at columns x - 1 .. x + 2 for eight x, from a (columns x - 1 ..) and b
// (three columns further on): lanes that both hold are equal, so OR merges.
inline void windows_apart3(__m128i a, __m128i b, __m128i* w) {
    w[0] = a;
    w[1] = _mm_or_si128(_mm_srli_si128(a, 2), _mm_slli_si128(b, 4));
    w[2] = _mm_or_si128(_mm_srli_si128(a, 4), _mm_slli_si128(b, 2));
    w[3] = b;
}
// The same from a and b eight columns apart.
inline void windows_apart8(__m128i a, __m128i b, __m128i* w) {
    w[0] = a;
    w[1] = _mm_or_si128(_mm_srli_si128(a, 2), _mm_slli_si128(b, 14));
    w[2] = _mm_or_si128(_mm_srli_si128(a, 4), _mm_slli_si128(b, 12));
    w[3] = _mm_or_si128(_mm_srli_si128(a, 6), _mm_slli_si128(b, 10));
}

// Horizontal pass of eight outputs from t at columns x - 1 .. x + 2. The sums
// lie within -9180..41820 for every position: offset by 72 * 128 they fit an
// unsigned 16-bit lane, so wrapping 16-bit arithmetic is exact and the offset
// leaves after the shift.
template <int DX>
__m128i horizontal_pass(const __m128i* t, int rc) {
    const __m128i sum = _mm_add_epi16(taps16<DX>(t), _mm_set1_epi16(static_cast<short>(72 * 128 + 64 - rc)));
    return _mm_sub_epi16(_mm_srli_epi16(sum, 7), _mm_set1_epi16(72));
}

// Both fractions non-zero: the vertical pass in 16 bits (t within
// -255..2295) over columns -1 .. W + 1, then the horizontal pass.
template <int W, int H, int DX, int DY>
void bicubic_2d(const u8* src, int ss, u8* dst, int ds, int rc) {
    constexpr int kShift = BicubicVertFilterShift[DX][DY];
    constexpr int N = Span<W>::N;
    const __m128i vround = _mm_set1_epi16(static_cast<short>((1 << (kShift - 1)) - 1 + rc));
    Span<W> r[4] = {Span<W>::of(row_at(src, ss, -1)), Span<W>::of(src), Span<W>::of(row_at(src, ss, 1)), {}};
    for (int y = 0; y < H; ++y) {
        r[3] = Span<W>::of(row_at(src, ss, y + 2));
        __m128i t[N];
        for (int n = 0; n < N; ++n) {
            const __m128i rows[4] = {r[0].v[n], r[1].v[n], r[2].v[n], r[3].v[n]};
            t[n] = _mm_srai_epi16(_mm_add_epi16(taps16<DY>(rows), vround), kShift);
        }
        __m128i w[4];
        if constexpr (W == 8) {
            windows_apart3(t[0], t[1], w);
            store<8>(row_at(dst, ds, y), clamp_u8(horizontal_pass<DX>(w, rc)));
        } else {
            windows_apart8(t[0], t[1], w);
            const __m128i left = horizontal_pass<DX>(w, rc);
            windows_apart3(t[1], t[2], w);
            store<16>(row_at(dst, ds, y), _mm_packus_epi16(left, horizontal_pass<DX>(w, rc)));
        }
        r[0] = r[1], r[1] = r[2], r[2] = r[3];
    }
}

// One fraction non-zero: a single four-tap pass in 16 bits (-1785..18105),
// along the columns (Vertical) or the rows, eight outputs at a time.
template <int W, int H, int Fraction, bool Vertical>
void bicubic_1d(const u8* src, int ss, u8* dst, int ds, int rc) {
    constexpr int kShift = Vertical ? BicubicVertFilterShift[0][Fraction] : BicubicHorizFilterShift[Fraction][0];
    const int bias = (1 << (kShift - 1)) + (Vertical ? rc - 1 : -rc);
    const __m128i round = _mm_set1_epi16(static_cast<short>(bias));
    for (int g = 0; g < W; g += 8) {
        const u8* s = src + g;
        __m128i r[4] = {};
        if constexpr (Vertical) r[0] = widen8(row_at(s, ss, -1)), r[1] = widen8(s), r[2] = widen8(row_at(s, ss, 1));
        for (int y = 0; y < H; ++y) {
            if constexpr (Vertical) {
                r[3] = widen8(row_at(s, ss, y + 2));
            } else {
                const u8* line = row_at(s, ss, y);
                r[0] = widen8(line - 1), r[1] = widen8(line), r[2] = widen8(line + 1), r[3] = widen8(line + 2);
            }
            const __m128i v = _mm_srai_epi16(_mm_add_epi16(taps16<Fraction>(r), round), kShift);
            store<8>(row_at(dst, ds, y) + g, clamp_u8(v));
            if constexpr (Vertical) r[0] = r[1], r[1] = r[2], r[2] = r[3];
        }
    }
}

template <int W, int H, int DX, int DY>
void bicubic(const u8* src, int ss, u8* dst, int ds, int rc) {
    if constexpr (DX == 0) bicubic_1d<W, H, DY, true>(src, ss, dst, ds, rc);
    else if constexpr (DY == 0) bicubic_1d<W, H, DX, false>(src, ss, dst, ds, rc);
    else bicubic_2d<W, H, DX, DY>(src, ss, dst, ds, rc);
}

template <int W, int H, int I>
InterpFn bicubic_entry(InterpFn current) {
    if constexpr (I == 0) return current;  // the copy
    else return &bicubic<W, H, (I >> 2), (I & 3)>;
}

template <int W, int H, std::size_t... I>
void fill_bicubic(InterpFn (&t)[16], std::index_sequence<I...>) {
    ((t[I] = bicubic_entry<W, H, int(I)>(t[I])), ...);
}

template <int W, int H, std::size_t... I>
void fill_bilinear(InterpFn (&t)[16], std::index_sequence<I...>) {
    ((t[I] = ((I >> 2) | I) & 1 ? &bilinear<W, H, int(I >> 2), int(I & 3)> : t[I]), ...);
}

}  // namespace

void init_vc1_sse2(Table& t) {
    t.transform8x8[kFormDc] = &transform_dc<8, 8>;
    t.transform8x8[kForm2x2] = &transform8x8<2, 2>;
    t.transform8x8[kForm4x4] = &transform8x8<4, 4>;
    t.transform8x8[3] = &transform8x8<8, 8>;
    t.transform4x4[kFormDc] = &transform_dc<4, 4>;
    t.transform4x4[kForm2x2] = &transform4x4<2, 2>;
    t.transform4x4[2] = &transform4x4<4, 4>;
    t.transform8x4[kFormDc] = &transform_dc<8, 4>;
    t.transform8x4[1] = &transform8x4;
    t.transform4x8[kFormDc] = &transform_dc<4, 8>;
    t.transform4x8[1] = &transform4x8;

    t.smooth_ver[kRoundAlternate] = &smooth_ver8<kRoundAlternate>;
    t.smooth_ver[kRoundEven] = &smooth_ver8<kRoundEven>;
    t.smooth_ver[kRoundOdd] = &smooth_ver8<kRoundOdd>;
    t.smooth_hor = &smooth_hor8;

    t.deblock_luma_hor = &deblock_hor<16>;
    t.deblock_luma_ver = &deblock_ver<16>;
    t.deblock_chroma_hor = &deblock_hor<8>;
    t.deblock_chroma_ver = &deblock_ver<8>;

    t.range_map = &range_map;

    const auto positions = std::make_index_sequence<16>{};
    fill_bilinear<4, 4>(t.bilinear[kBilinear4x4], positions);
    fill_bilinear<8, 4>(t.bilinear[kBilinear8x4], positions);
    fill_bilinear<8, 8>(t.bilinear[kBilinear8x8], positions);
    fill_bilinear<16, 16>(t.bilinear[kBilinear16x16], positions);
    fill_bicubic<8, 8>(t.bicubic[0], positions);
    fill_bicubic<16, 8>(t.bicubic[1], positions);
    fill_bicubic<16, 16>(t.bicubic[2], positions);
}

}  // namespace kivvc::vc1
