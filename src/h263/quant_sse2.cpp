// SSE2 H.263 quantisers: eight coefficients per register; magnitudes are
// handled as unsigned 16-bit values (|-32768| = 32768) and the division by
// 2 QP is the high half of the product with R(QP).
#include <emmintrin.h>

#include <cstdint>

#include "h263/quant_kernels.h"

namespace kivvc::h263 {
namespace {

inline __m128i load(const std::int16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void store(std::int16_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
// (v ^ s) - s: v with the sign of the mask s (all ones for negative).
inline __m128i apply_sign(__m128i v, __m128i s) { return _mm_sub_epi16(_mm_xor_si128(v, s), s); }

template <QuantMode M, bool Clip>
int quant(std::int16_t* block, int qp) {
    const __m128i r = _mm_set1_epi16(static_cast<short>(mpeg4::_p_QuantInv[qp]));
    const __m128i half = _mm_set1_epi16(static_cast<short>(qp >> 1));
    const __m128i offset = _mm_set1_epi16(static_cast<short>((3 * qp) >> 2));
    const __m128i top = _mm_set1_epi16(32767);
    const __m128i zero = _mm_setzero_si128();
    __m128i zeros = zero;
    for (int i = 0; i < 64; i += 8) {
        const __m128i c = load(block + i);
        const __m128i s = _mm_srai_epi16(c, 15);
        __m128i m = apply_sign(c, s);  // unsigned magnitude
        if constexpr (M == QuantMode::Inter) m = _mm_subs_epu16(m, half);
        if constexpr (M == QuantMode::AdvIntra) {
            m = _mm_adds_epu16(m, offset);
            m = _mm_sub_epi16(m, _mm_subs_epu16(m, top));  // min(m, 32767)
        }
        __m128i level = _mm_mulhi_epu16(m, r);  // at most 16384
        if constexpr (Clip) level = _mm_min_epi16(level, _mm_set1_epi16(127));
        zeros = _mm_sub_epi16(zeros, _mm_cmpeq_epi16(level, zero));
        store(block + i, apply_sign(level, s));
    }
    zeros = _mm_add_epi16(zeros, _mm_srli_si128(zeros, 8));
    zeros = _mm_add_epi16(zeros, _mm_srli_si128(zeros, 4));
    zeros = _mm_add_epi16(zeros, _mm_srli_si128(zeros, 2));
    return 64 - (_mm_cvtsi128_si32(zeros) & 0xFFFF);
}

template <InvMode M>
void quant_inv(std::int16_t* block, int last, int qp) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i step = _mm_set1_epi16(static_cast<short>(2 * qp));
    const __m128i odd = _mm_set1_epi32((qp & 1) ? qp : qp - 1);
    const __m128i lane = _mm_set_epi16(7, 6, 5, 4, 3, 2, 1, 0);
    for (int i = 0; i <= last; i += 8) {
        const __m128i l = load(block + i);
        __m128i rec;
        if constexpr (M == InvMode::AdvIntra) {
            rec = _mm_mullo_epi16(l, step);
        } else {
            const __m128i s = _mm_srai_epi16(l, 15);
            const __m128i m = apply_sign(l, s);
            const __m128i lo = _mm_mullo_epi16(m, step), hi = _mm_mulhi_epu16(m, step);
            const __m128i s0 = _mm_unpacklo_epi16(s, s), s1 = _mm_unpackhi_epi16(s, s);
            __m128i v0 = _mm_add_epi32(_mm_unpacklo_epi16(lo, hi), odd);
            __m128i v1 = _mm_add_epi32(_mm_unpackhi_epi16(lo, hi), odd);
            v0 = _mm_sub_epi32(_mm_xor_si128(v0, s0), s0);
            v1 = _mm_sub_epi32(_mm_xor_si128(v1, s1), s1);
            rec = _mm_packs_epi32(v0, v1);
            if constexpr (M == InvMode::Ordinary)
                rec = _mm_min_epi16(_mm_max_epi16(rec, _mm_set1_epi16(-2048)), _mm_set1_epi16(2047));
            rec = _mm_andnot_si128(_mm_cmpeq_epi16(l, zero), rec);
        }
        // Lanes past `last` keep their input.
        const __m128i beyond = _mm_cmpgt_epi16(_mm_add_epi16(lane, _mm_set1_epi16(static_cast<short>(i))), _mm_set1_epi16(static_cast<short>(last)));
        store(block + i, _mm_or_si128(_mm_and_si128(beyond, l), _mm_andnot_si128(beyond, rec)));
    }
}

}  // namespace

void init_quant_sse2(QuantTable& t) {
    t.ownph263_QuantIntra_16s_I = &quant<QuantMode::Intra, true>;
    t.ownph263_QuantIntraNoClip_16s_I = &quant<QuantMode::Intra, false>;
    t.ownph263_QuantInter_16s_I = &quant<QuantMode::Inter, true>;
    t.ownph263_QuantInterNoClip_16s_I = &quant<QuantMode::Inter, false>;
    t.ownph263_QuantAdvIntra_16s_I = &quant<QuantMode::AdvIntra, true>;
    t.ownph263_QuantAdvIntraNoClip_16s_I = &quant<QuantMode::AdvIntra, false>;
    t.ownph263_QuantInv_16s_I = &quant_inv<InvMode::Ordinary>;
    t.ownph263_QuantInv_ModQ_16s_I = &quant_inv<InvMode::ModQ>;
    t.ownph263_QuantInv_AdvIntra_16s_I = &quant_inv<InvMode::AdvIntra>;
}

}  // namespace kivvc::h263
