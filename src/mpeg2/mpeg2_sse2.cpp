// SSE2 MPEG-1/2 kernels.
//
// Inverse DCT: both passes run the same butterfly on eight vectors of eight
// 16-bit lanes, first across the columns of the input, then (after an 8x8
// transpose) across the rows of the intermediate block. Products need the
// 32-bit wrap of the definition: a weight g above 32767 is split as
// (g - 65536) + 65536, the first part through pmaddwd, the second as the
// 16-bit (wrapping) sum of the inputs moved into the high half of each
// 32-bit lane; both are exact modulo 2^32.
#include <emmintrin.h>

#include <cstring>

#include "core/sse2_helpers.h"
#include "mpeg2/mc_fill.h"
#include "mpeg2/mpeg2_kernels.h"

namespace kivvc::mpeg2 {
namespace {

// ---- inverse DCT --------------------------------------------------------------

constexpr int kG1 = 64276 - 65536, kG2 = 60547 - 65536, kG3 = 54491 - 65536, kG4 = 46340 - 65536, kG5 = 36409 - 65536,
              kG6 = 25079, kG7 = 12785;

inline __m128i pair(int a, int b) {
    return _mm_set1_epi32(static_cast<int>((static_cast<unsigned>(b) << 16) | (static_cast<unsigned>(a) & 0xFFFF)));
}

// The eight 32-bit sums of one half (lanes 0..3 or 4..7) in row order.
struct Sums {
    __m128i r[8];
};

template <bool High>
inline __m128i unpack(__m128i a, __m128i b) {
    return High ? _mm_unpackhi_epi16(a, b) : _mm_unpacklo_epi16(a, b);
}

// v << 16 in 32-bit lanes, from 16-bit lanes (the wrap of v is harmless).
template <bool High>
inline __m128i shifted(__m128i v) {
    return unpack<High>(_mm_setzero_si128(), v);
}

// UpperZero: x[4..7] are known to be zero (the reduced transform).
template <bool High, bool UpperZero = false>
inline Sums butterfly_half(const __m128i (&x)[8]) {
    const __m128i z = _mm_setzero_si128();
    __m128i e[4], o[4];
    if constexpr (UpperZero) {
        const __m128i p0 = unpack<High>(x[0], z), p2 = unpack<High>(x[2], z), p13 = unpack<High>(x[1], x[3]);
        const __m128i a = _mm_add_epi32(_mm_madd_epi16(p0, pair(kG4, 0)), shifted<High>(x[0]));
        const __m128i b0 = _mm_add_epi32(_mm_madd_epi16(p2, pair(kG2, 0)), shifted<High>(x[2]));
        const __m128i b1 = _mm_madd_epi16(p2, pair(kG6, 0));
        e[0] = _mm_add_epi32(a, b0);
        e[1] = _mm_add_epi32(a, b1);
        e[2] = _mm_sub_epi32(a, b1);
        e[3] = _mm_sub_epi32(a, b0);
        o[0] = _mm_add_epi32(_mm_madd_epi16(p13, pair(kG1, kG3)), shifted<High>(_mm_add_epi16(x[1], x[3])));
        o[1] = _mm_add_epi32(_mm_madd_epi16(p13, pair(kG3, -kG7)), shifted<High>(x[1]));
        o[2] = _mm_add_epi32(_mm_madd_epi16(p13, pair(kG5, -kG1)), shifted<High>(_mm_sub_epi16(x[1], x[3])));
        o[3] = _mm_sub_epi32(_mm_madd_epi16(p13, pair(kG7, -kG5)), shifted<High>(x[3]));
    } else {
        const __m128i p04 = unpack<High>(x[0], x[4]), p26 = unpack<High>(x[2], x[6]);
        const __m128i p13 = unpack<High>(x[1], x[3]), p57 = unpack<High>(x[5], x[7]);
        const __m128i a0 = _mm_add_epi32(_mm_madd_epi16(p04, pair(kG4, kG4)), shifted<High>(_mm_add_epi16(x[0], x[4])));
        const __m128i a1 =
            _mm_add_epi32(_mm_madd_epi16(p04, pair(kG4, -kG4)), shifted<High>(_mm_sub_epi16(x[0], x[4])));
        const __m128i b0 = _mm_add_epi32(_mm_madd_epi16(p26, pair(kG2, kG6)), shifted<High>(x[2]));
        const __m128i b1 = _mm_sub_epi32(_mm_madd_epi16(p26, pair(kG6, -kG2)), shifted<High>(x[6]));
        e[0] = _mm_add_epi32(a0, b0);
        e[1] = _mm_add_epi32(a1, b1);
        e[2] = _mm_sub_epi32(a1, b1);
        e[3] = _mm_sub_epi32(a0, b0);
        const __m128i x135 = _mm_add_epi16(_mm_add_epi16(x[1], x[3]), x[5]);
        const __m128i x157 = _mm_sub_epi16(_mm_sub_epi16(x[1], x[5]), x[7]);
        const __m128i x137 = _mm_add_epi16(_mm_sub_epi16(x[1], x[3]), x[7]);
        const __m128i x357 = _mm_sub_epi16(_mm_sub_epi16(x[5], x[3]), x[7]);
        o[0] = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(p13, pair(kG1, kG3)), _mm_madd_epi16(p57, pair(kG5, kG7))),
                             shifted<High>(x135));
        o[1] = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(p13, pair(kG3, -kG7)), _mm_madd_epi16(p57, pair(-kG1, -kG5))),
                             shifted<High>(x157));
        o[2] = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(p13, pair(kG5, -kG1)), _mm_madd_epi16(p57, pair(kG7, kG3))),
                             shifted<High>(x137));
        o[3] = _mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(p13, pair(kG7, -kG5)), _mm_madd_epi16(p57, pair(kG3, -kG1))),
                             shifted<High>(x357));
    }
    Sums s;
    for (int i = 0; i < 4; ++i) {
        s.r[i] = _mm_add_epi32(e[i], o[i]);
        s.r[7 - i] = _mm_sub_epi32(e[i], o[i]);
    }
    return s;
}

// (sum + bias) >> shift for both halves, packed back to 16 bits (the results
// of both passes fit).
template <int Bias, int Shift>
inline void round_pack(const Sums& lo, const Sums& hi, __m128i (&out)[8]) {
    const __m128i bias = _mm_set1_epi32(Bias);
    for (int i = 0; i < 8; ++i)
        out[i] = _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(lo.r[i], bias), Shift),
                                 _mm_srai_epi32(_mm_add_epi32(hi.r[i], bias), Shift));
}


// The transform up to the unlimited output rows (16-bit, within -8192..8191).
// Reduced: only the top-left 4x4 is read; columns 4..7 of the intermediate
// block are then zero and their half of pass one is skipped.
template <bool Reduced>
inline void idct_rows(const s16* src, __m128i (&v)[8]) {
    if constexpr (Reduced) {
        for (int k = 0; k < 4; ++k) v[k] = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + 8 * k));
        for (int k = 4; k < 8; ++k) v[k] = _mm_setzero_si128();
        const Sums lo = butterfly_half<false, true>(v);
        const __m128i bias = _mm_set1_epi32(32768);
        for (int i = 0; i < 8; ++i)
            v[i] = _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(lo.r[i], bias), 16), _mm_setzero_si128());
    } else {
        for (int k = 0; k < 8; ++k) v[k] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 8 * k));
        round_pack<32768, 16>(butterfly_half<false>(v), butterfly_half<true>(v), v);
    }
    sse2::transpose8x8_epi16(v);
    round_pack<163840, 18>(butterfly_half<false, Reduced>(v), butterfly_half<true, Reduced>(v), v);
}

template <class T>
T* row_at(T* base, int step, int r) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(base) + std::ptrdiff_t(r) * step);
}

template <bool Reduced>
void idct16(const s16* src, s16* dst, int step) {
    __m128i v[8];
    idct_rows<Reduced>(src, v);
    const __m128i lo = _mm_set1_epi16(-256), hi = _mm_set1_epi16(255);
    for (int r = 0; r < 8; ++r)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(row_at(dst, step, r)), _mm_min_epi16(_mm_max_epi16(v[r], lo), hi));
}

template <bool Reduced>
void idct8(const s16* src, u8* dst, int step) {
    __m128i v[8];
    idct_rows<Reduced>(src, v);
    for (int r = 0; r < 8; ++r)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row_at(dst, step, r)), _mm_packus_epi16(v[r], v[r]));
}

void idct16_dc(const s16* src, s16* dst, int step) {
    const int v = src[0] / 8;
    const __m128i fill = _mm_set1_epi16(static_cast<short>(v < -256 ? -256 : v > 255 ? 255 : v));
    for (int r = 0; r < 8; ++r) _mm_storeu_si128(reinterpret_cast<__m128i*>(row_at(dst, step, r)), fill);
}

void idct8_dc(const s16* src, u8* dst, int step) {
    const int v = src[0] / 8;
    const __m128i fill = _mm_set1_epi8(static_cast<char>(v < 0 ? 0 : v > 255 ? 255 : v));
    for (int r = 0; r < 8; ++r) _mm_storel_epi64(reinterpret_cast<__m128i*>(row_at(dst, step, r)), fill);
}

void idct16_zero(const s16*, s16* dst, int step) {
    for (int r = 0; r < 8; ++r) _mm_storeu_si128(reinterpret_cast<__m128i*>(row_at(dst, step, r)), _mm_setzero_si128());
}

void interleave16(const s16* a, const s16* b, s16* dst, int step) {
    for (int r = 0; r < 8; ++r) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 8 * r));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + 8 * r));
        __m128i* d = reinterpret_cast<__m128i*>(row_at(dst, step, r));
        _mm_storeu_si128(d, _mm_unpacklo_epi16(x, y));
        _mm_storeu_si128(d + 1, _mm_unpackhi_epi16(x, y));
    }
}

void interleave8(const s16* a, const s16* b, u8* dst, int step) {
    for (int r = 0; r < 8; ++r) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 8 * r));
        const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + 8 * r));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(row_at(dst, step, r)),
                         _mm_unpacklo_epi8(_mm_packus_epi16(x, x), _mm_packus_epi16(y, y)));
    }
}

// ---- in-place dequantisation ----------------------------------------------------
// Works on magnitudes, so that truncation toward zero is a plain shift and
// the sign is applied last (sign of level x weight x scale). Operands are
// clamped where the result saturates anyway: a nonzero level contributes a
// factor of at least 2, so |W| * |q| >= 32768 already gives |c| >= 2048.
//   M = min(|W| * min(|q|, 32768), 32768)    fits 16 unsigned bits
//   P = 2 |level| M (+ M for non-intra)      below 2^31 + 2^15, unsigned
//   |c| = min(P >> 5, 2048)

inline __m128i abs16(__m128i v, __m128i sign) { return _mm_sub_epi16(_mm_xor_si128(v, sign), sign); }

// a * b of unsigned 16-bit lanes as 32-bit lanes (lo: lanes 0..3, hi: 4..7).
inline void mul_u16(__m128i a, __m128i b, __m128i& lo, __m128i& hi) {
    const __m128i l = _mm_mullo_epi16(a, b), h = _mm_mulhi_epu16(a, b);
    lo = _mm_unpacklo_epi16(l, h);
    hi = _mm_unpackhi_epi16(l, h);
}

inline __m128i min32(__m128i v, __m128i limit) {
    const __m128i over = _mm_cmpgt_epi32(v, limit);
    return _mm_or_si128(_mm_and_si128(over, limit), _mm_andnot_si128(over, v));
}

template <bool Intra>
void quant_inv(s16* block, s32 q, const s16* matrix) {
    const s16 first = block[0];
    const std::int64_t q_abs = q < 0 ? -std::int64_t{q} : q;
    const __m128i scale = _mm_set1_epi16(static_cast<short>(q_abs > 32768 ? 32768 : q_abs));
    const __m128i q_sign = _mm_set1_epi16(q < 0 ? -1 : 0);
    const __m128i m_limit = _mm_set1_epi32(32768), c_limit = _mm_set1_epi32(2048);
    __m128i parity = _mm_setzero_si128();
    for (int i = 0; i < 64; i += 8) {
        __m128i* p = reinterpret_cast<__m128i*>(block + i);
        const __m128i level = _mm_loadu_si128(p);
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(matrix + i));
        const __m128i level_sign = _mm_srai_epi16(level, 15), w_sign = _mm_srai_epi16(w, 15);
        const __m128i level_abs = abs16(level, level_sign);
        __m128i m_lo, m_hi;
        mul_u16(abs16(w, w_sign), scale, m_lo, m_hi);
        m_lo = min32(m_lo, m_limit);
        m_hi = min32(m_hi, m_limit);
        const __m128i bias = _mm_set1_epi32(32768);
        const __m128i m = _mm_add_epi16(_mm_packs_epi32(_mm_sub_epi32(m_lo, bias), _mm_sub_epi32(m_hi, bias)),
                                        _mm_set1_epi16(-32768));
        __m128i x_lo, x_hi;
        mul_u16(level_abs, m, x_lo, x_hi);
        x_lo = _mm_add_epi32(x_lo, x_lo);
        x_hi = _mm_add_epi32(x_hi, x_hi);
        if constexpr (!Intra) {
            const __m128i nonzero = _mm_xor_si128(_mm_cmpeq_epi16(level, _mm_setzero_si128()), _mm_set1_epi16(-1));
            const __m128i extra = _mm_and_si128(m, nonzero);
            x_lo = _mm_add_epi32(x_lo, _mm_unpacklo_epi16(extra, _mm_setzero_si128()));
            x_hi = _mm_add_epi32(x_hi, _mm_unpackhi_epi16(extra, _mm_setzero_si128()));
        }
        const __m128i mag =
            _mm_packs_epi32(min32(_mm_srli_epi32(x_lo, 5), c_limit), min32(_mm_srli_epi32(x_hi, 5), c_limit));
        const __m128i sign = _mm_xor_si128(_mm_xor_si128(level_sign, w_sign), q_sign);
        const __m128i c = _mm_min_epi16(abs16(mag, sign), _mm_set1_epi16(2047));
        _mm_storeu_si128(p, c);
        parity = _mm_xor_si128(parity, c);
    }
    if constexpr (Intra) {
        // The first coefficient stays; swap its contribution to the parity.
        parity = _mm_xor_si128(parity, _mm_cvtsi32_si128(static_cast<std::uint16_t>(block[0] ^ first)));
        block[0] = first;
    }
    parity = _mm_xor_si128(parity, _mm_srli_si128(parity, 8));
    parity = _mm_xor_si128(parity, _mm_srli_si128(parity, 4));
    parity = _mm_xor_si128(parity, _mm_srli_si128(parity, 2));
    if (!(_mm_cvtsi128_si32(parity) & 1)) block[63] = static_cast<s16>(block[63] ^ 1);
}

// ---- motion compensation ------------------------------------------------------
// Rows of W bytes (16, 8, 4 or 2) in the low bytes of a vector.

// W = 2 here; the wider rows come from the shared helpers.
template <int W>
inline __m128i load(const u8* p) {
    if constexpr (W == 2) {
        std::uint16_t v;
        std::memcpy(&v, p, 2);
        return _mm_cvtsi32_si128(v);
    } else {
        return sse2::load<W>(p);
    }
}

template <int W>
inline void store(u8* p, __m128i v) {
    if constexpr (W == 2) {
        const auto x = static_cast<std::uint16_t>(_mm_cvtsi128_si32(v));
        std::memcpy(p, &x, 2);
    } else {
        sse2::store<W>(p, v);
    }
}

// Residual lanes 0..7 of a row (W samples, no more read).
template <int W>
inline __m128i load_residual(const s16* r) {
    if constexpr (W >= 8) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(r));
    } else if constexpr (W == 4) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(r));
    } else {
        int v;
        std::memcpy(&v, r, 4);
        return _mm_cvtsi32_si128(v);
    }
}

// sat(p + residual): 16-bit saturating sum, then 0..255.
template <int W>
inline __m128i add_residual(__m128i p, const s16* r) {
    const __m128i z = _mm_setzero_si128();
    const __m128i lo = _mm_adds_epi16(_mm_unpacklo_epi8(p, z), load_residual<W>(r));
    if constexpr (W == 16) {
        const __m128i hi =
            _mm_adds_epi16(_mm_unpackhi_epi8(p, z), _mm_loadu_si128(reinterpret_cast<const __m128i*>(r + 8)));
        return _mm_packus_epi16(lo, hi);
    } else {
        return _mm_packus_epi16(lo, lo);
    }
}

// Rounding control fixed at compile time (the 16- and 8-wide tables) or
// given at run time (the small-block kernels).
template <int Rc>
struct FixedRound {
    __m128i average2(__m128i a, __m128i b) const { return sse2::average2<Rc>(a, b); }
    __m128i bias4() const { return _mm_set1_epi16(2 - Rc); }
};
struct RuntimeRound {
    __m128i low_bit, bias;
    explicit RuntimeRound(int rc)
        : low_bit(_mm_set1_epi8(static_cast<char>(rc & 1))), bias(_mm_set1_epi16(static_cast<short>(2 - (rc & 1)))) {}
    __m128i average2(__m128i a, __m128i b) const {
        return _mm_sub_epi8(_mm_avg_epu8(a, b), _mm_and_si128(_mm_xor_si128(a, b), low_bit));
    }
    __m128i bias4() const { return bias; }
};

// Horizontal pair sums of a row, widened: lo holds columns 0..7, hi 8..15.
template <int W, int Right>
struct PairSum {
    __m128i lo, hi;
    static PairSum of(const u8* p) {
        const __m128i z = _mm_setzero_si128();
        const __m128i a = load<W>(p), b = load<W>(p + Right);
        PairSum s;
        s.lo = _mm_add_epi16(_mm_unpacklo_epi8(a, z), _mm_unpacklo_epi8(b, z));
        s.hi = W == 16 ? _mm_add_epi16(_mm_unpackhi_epi8(a, z), _mm_unpackhi_epi8(b, z)) : s.lo;
        return s;
    }
};

// The prediction of one row after another, at position Pos (0 FF, 1 FH,
// 2 HF, 3 HH); keeps what the next row can reuse.
template <int W, int Right, int Pos>
struct Predictor {
    const u8* s;
    int step;
    __m128i above;           // FH: the current row
    PairSum<W, Right> sums;  // HH: pair sums of the current row

    Predictor(const u8* src, int st) : s(src), step(st) {
        if constexpr (Pos == 1) above = load<W>(s);
        if constexpr (Pos == 3) sums = PairSum<W, Right>::of(s);
    }
    template <class Rd>
    __m128i next(const Rd& rd) {
        __m128i p;
        if constexpr (Pos == 0) {
            p = load<W>(s);
        } else if constexpr (Pos == 1) {
            const __m128i below = load<W>(s + step);
            p = rd.average2(above, below);
            above = below;
        } else if constexpr (Pos == 2) {
            p = rd.average2(load<W>(s), load<W>(s + Right));
        } else {
            const auto below = PairSum<W, Right>::of(s + step);
            const __m128i lo = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(sums.lo, below.lo), rd.bias4()), 2);
            const __m128i hi =
                W == 16 ? _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(sums.hi, below.hi), rd.bias4()), 2) : lo;
            p = _mm_packus_epi16(lo, hi);
            sums = below;
        }
        s += step;
        return p;
    }
};

inline const s16* next_row(const s16* r, int step) {
    return reinterpret_cast<const s16*>(reinterpret_cast<const std::uint8_t*>(r) + step);
}

template <int W, int Right, int Pos, class Rd>
inline void mc_rows(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int height, Rd rd) {
    Predictor<W, Right, Pos> pr(ref, refStep);
    for (int y = 0; y < height; ++y, res = next_row(res, resStep), dst += dstStep)
        store<W>(dst, add_residual<W>(pr.next(rd), res));
}

template <int W, int Right, int PosF, int PosB, class Rd>
inline void mc_b_rows(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep, u8* dst,
                      int dstStep, int height, Rd rd) {
    Predictor<W, Right, PosF> f(refF, refFStep);
    Predictor<W, Right, PosB> b(refB, refBStep);
    for (int y = 0; y < height; ++y, res = next_row(res, resStep), dst += dstStep) {
        const __m128i pf = f.next(rd);
        store<W>(dst, add_residual<W>(_mm_avg_epu8(pf, b.next(rd)), res));
    }
}

template <int W, int Right, int Pos, int Rc>
void mc(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int height) {
    mc_rows<W, Right, Pos>(ref, refStep, res, resStep, dst, dstStep, height, FixedRound<Rc>{});
}
template <int W, int Right, int PosF, int PosB, int Rc>
void mc_b(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep, u8* dst, int dstStep,
          int height) {
    mc_b_rows<W, Right, PosF, PosB>(refF, refFStep, refB, refBStep, res, resStep, dst, dstStep, height,
                                    FixedRound<Rc>{});
}
template <int W, int H, int Pos>
void mc_small(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int rc) {
    mc_rows<W, 1, Pos>(ref, refStep, res, resStep, dst, dstStep, H, RuntimeRound(rc));
}
template <int W, int H, int PosF, int PosB>
void mc_small_b(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep, u8* dst,
                int dstStep, int rc) {
    mc_b_rows<W, 1, PosF, PosB>(refF, refFStep, refB, refBStep, res, resStep, dst, dstStep, H, RuntimeRound(rc));
}

template <int W, int Right>
struct McK {
    template <int Pos, int Rc>
    static constexpr McFn fn = &mc<W, Right, Pos, Rc>;
    template <int PosF, int PosB, int Rc>
    static constexpr McBFn fn_b = &mc_b<W, Right, PosF, PosB, Rc>;
};
template <int W, int H>
struct McSmallK {
    template <int Pos>
    static constexpr McSmallFn fn = &mc_small<W, H, Pos>;
    template <int PosF, int PosB>
    static constexpr McSmallBFn fn_b = &mc_small_b<W, H, PosF, PosB>;
};

}  // namespace

void init_mpeg2_sse2(Table& t) {
    t.idct16s[kIdctZero] = &idct16_zero;
    t.idct16s[kIdctDc] = &idct16_dc;
    t.idct16s[kIdctReduced] = &idct16<true>;
    t.idct16s[kIdctFull] = &idct16<false>;
    t.idct8u[kIdctZero] = &idct8_dc;
    t.idct8u[kIdctDc] = &idct8_dc;
    t.idct8u[kIdctReduced] = &idct8<true>;
    t.idct8u[kIdctFull] = &idct8<false>;
    t.interleave16s = &interleave16;
    t.interleave8u = &interleave8;
    t.quant_inv_intra = &quant_inv<true>;
    t.quant_inv = &quant_inv<false>;
    fill_mc_tables<McK<16, 1>>(t.MC16xHFunctionTable_mmp, t.MC16xHBFunctionTable_mmp);
    fill_mc_tables<McK<16, 2>>(t.MC16xHUVFunctionTable_mmp, t.MC16xHUVBFunctionTable_mmp);
    fill_mc_tables<McK<8, 1>>(t.MC8xHFunctionTable_mmp, t.MC8xHBFunctionTable_mmp);
    fill_mc_small_tables<McSmallK<2, 2>>(t.MC2x2FnTbl, t.MC2x2BFnTbl);
    fill_mc_small_tables<McSmallK<2, 4>>(t.MC2x4FnTbl, t.MC2x4BFnTbl);
    fill_mc_small_tables<McSmallK<4, 2>>(t.MC4x2FnTbl, t.MC4x2BFnTbl);
    fill_mc_small_tables<McSmallK<4, 4>>(t.MC4x4FnTbl, t.MC4x4BFnTbl);
    fill_mc_small_tables<McSmallK<4, 8>>(t.MC4x8FnTbl, t.MC4x8BFnTbl);
}

}  // namespace kivvc::mpeg2
