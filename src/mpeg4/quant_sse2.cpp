// SSE2 MPEG-4 quantisers for bits <= 8 (QP <= 31, reconstructed range
// within +-2048). Every value is formed exactly: inputs are first limited to
// magnitudes beyond which the result is saturated anyway, so that the 16-bit
// (or 32-bit) intermediates cannot overflow.
#include <emmintrin.h>

#include "mpeg4/quant_kernels.h"

namespace kivvc::mpeg4 {
namespace {

inline __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

// Lanes whose element index (base + lane) lies in first..last.
inline __m128i lanes_between(int base, int first, int last) {
    const __m128i idx = _mm_add_epi16(_mm_set1_epi16(static_cast<short>(base)), _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7));
    return _mm_andnot_si128(_mm_cmpgt_epi16(_mm_set1_epi16(static_cast<short>(first)), idx),
                            _mm_cmpgt_epi16(_mm_set1_epi16(static_cast<short>(last + 1)), idx));
}

// (x ^ s) - s: x negated where s is all ones.
inline __m128i apply_sign(__m128i x, __m128i s) { return _mm_sub_epi16(_mm_xor_si128(x, s), s); }
// Unsigned 16-bit minimum.
inline __m128i min_u16(__m128i a, __m128i b) { return _mm_sub_epi16(a, _mm_subs_epu16(a, b)); }
inline __m128i select(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}
inline int parity_of_sum(__m128i acc) {
    acc = _mm_xor_si128(acc, _mm_srli_si128(acc, 8));
    acc = _mm_xor_si128(acc, _mm_srli_si128(acc, 4));
    acc = _mm_xor_si128(acc, _mm_srli_si128(acc, 2));
    return _mm_cvtsi128_si32(acc) & 1;
}

// H.263 forward: |c| as unsigned 16 bits (32768 for -32768), then the
// dead-zone offset and the high half of |c| * R(QP).
template <bool Intra>
int quant_h263(s16* c, const QuantRecord&, int qp) {
    const __m128i r = _mm_set1_epi16(static_cast<short>(_p_QuantInv[qp]));
    const __m128i offset = _mm_set1_epi16(static_cast<short>(Intra ? 0 : qp >> 1));
    const __m128i zero = _mm_setzero_si128();
    int zeros = 0;
    for (int i = 0; i < 64; i += 8) {
        const __m128i x = load(c + i);
        const __m128i s = _mm_srai_epi16(x, 15);
        const __m128i a = apply_sign(x, s);
        __m128i level = qp == 1 ? _mm_srli_epi16(a, 1) : _mm_mulhi_epu16(_mm_subs_epu16(a, offset), r);
        if (Intra && i == 0) level = _mm_andnot_si128(lanes_between(0, 0, 0), level);
        __m128i y = apply_sign(level, s);
        if (Intra && i == 0) y = select(lanes_between(0, 0, 0), x, y);
        store(c + i, y);
        zeros += __builtin_popcount(static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(level, zero))));
    }
    return 64 - zeros / 2;
}

// H.263 inverse: |L| limited to 1024 (beyond it 2 QP |L| + q exceeds every
// bound), so 2 QP |L| + q <= 63519 fits unsigned 16 bits.
void quant_inv_h263(s16* c, int last, const QuantInvRecord& rec, int qp, int) {
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    const __m128i two_qp = _mm_set1_epi16(static_cast<short>(2 * qp));
    const __m128i q = _mm_set1_epi16(static_cast<short>(h263_offset(qp)));
    const __m128i hi = _mm_set1_epi16(1024), lo = _mm_set1_epi16(-1024);
    const __m128i bound = _mm_set1_epi16(static_cast<short>(v - 1));
    const __m128i zero = _mm_setzero_si128();
    for (int i = 0; i <= last; i += 8) {
        const __m128i x = load(c + i);
        const __m128i s = _mm_srai_epi16(x, 15);
        const __m128i a = apply_sign(_mm_max_epi16(_mm_min_epi16(x, hi), lo), s);
        __m128i m = _mm_add_epi16(_mm_mullo_epi16(a, two_qp), q);
        m = min_u16(m, _mm_sub_epi16(bound, s));  // v - 1, or v for negative levels
        m = _mm_andnot_si128(_mm_cmpeq_epi16(x, zero), apply_sign(m, s));
        store(c + i, select(lanes_between(i, 0, last), m, x));
    }
}

// MPEG inverse: |L| limited to 16384 (beyond it every result saturates), so
// m = |L| or 2|L| + 1 fits 16 bits and m W QP < 2^29 is formed in 32 bits.
template <bool Intra>
void quant_inv_mpeg(s16* c, int last, const QuantInvRecord& rec, int qp, int dc) {
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    const __m128i qpv = _mm_set1_epi16(static_cast<short>(qp));
    const __m128i hi = _mm_set1_epi16(16384), lo = _mm_set1_epi16(-16384);
    const __m128i bound = _mm_set1_epi16(static_cast<short>(v - 1));
    const __m128i zero = _mm_setzero_si128(), one = _mm_set1_epi16(1);
    __m128i parity = zero;
    for (int i = 0; i <= last; i += 8) {
        const __m128i x = load(c + i);
        const __m128i s = _mm_srai_epi16(x, 15);
        const __m128i a = apply_sign(_mm_max_epi16(_mm_min_epi16(x, hi), lo), s);
        const __m128i m = Intra ? a : _mm_add_epi16(_mm_add_epi16(a, a), one);
        const __m128i wq = _mm_mullo_epi16(load(rec.weights + i), qpv);
        const __m128i pl = _mm_mullo_epi16(m, wq), ph = _mm_mulhi_epu16(m, wq);
        const __m128i p0 = _mm_srli_epi32(_mm_unpacklo_epi16(pl, ph), Intra ? 3 : 4);
        const __m128i p1 = _mm_srli_epi32(_mm_unpackhi_epi16(pl, ph), Intra ? 3 : 4);
        __m128i r = _mm_min_epi16(_mm_packs_epi32(p0, p1), _mm_sub_epi16(bound, s));
        r = _mm_andnot_si128(_mm_cmpeq_epi16(x, zero), apply_sign(r, s));
        const __m128i keep = lanes_between(i, Intra ? 1 : 0, last);
        r = _mm_and_si128(keep, r);
        parity = _mm_xor_si128(parity, r);
        store(c + i, _mm_or_si128(r, _mm_andnot_si128(keep, x)));
    }
    if ((parity_of_sum(parity) ^ (Intra ? dc & 1 : 0)) == 0) c[63] = static_cast<s16>(c[63] ^ 1);
}

}  // namespace

void init_quant_sse2(Table& t) {
    t.ownpmp4_QuantIntra0_16s_I[0] = &quant_h263<true>;
    t.ownpmp4_QuantInter0_16s_I[0] = &quant_h263<false>;
    t.ownpmp4_QuantInv_16s_I[0] = &quant_inv_h263;
    t.ownpmp4_QuantInvIntra_16s_I[0] = &quant_inv_mpeg<true>;
    t.ownpmp4_QuantInvInter_16s_I[0] = &quant_inv_mpeg<false>;
}

}  // namespace kivvc::mpeg4
