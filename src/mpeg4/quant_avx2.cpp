// AVX2 MPEG-4 quantisers for bits <= 8 (QP <= 31, reconstructed range within
// +-2048): the SSE2 schemes on 16 lanes, and the MPEG-method forward
// quantisers on 32-bit lanes. As there, inputs are first limited to
// magnitudes beyond which the result saturates, so no intermediate overflows.
#include <immintrin.h>

#include "mpeg4/quant_kernels.h"

namespace kivvc::mpeg4 {
namespace {

inline __m256i load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
inline void store(void* p, __m256i v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }

inline __m256i lanes_between(int base, int first, int last) {
    const __m256i idx = _mm256_add_epi16(_mm256_set1_epi16(static_cast<short>(base)),
                                         _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    return _mm256_andnot_si256(_mm256_cmpgt_epi16(_mm256_set1_epi16(static_cast<short>(first)), idx),
                               _mm256_cmpgt_epi16(_mm256_set1_epi16(static_cast<short>(last + 1)), idx));
}

inline int parity_of_sum(__m256i acc) {
    __m128i v = _mm_xor_si128(_mm256_castsi256_si128(acc), _mm256_extracti128_si256(acc, 1));
    v = _mm_xor_si128(v, _mm_srli_si128(v, 8));
    v = _mm_xor_si128(v, _mm_srli_si128(v, 4));
    v = _mm_xor_si128(v, _mm_srli_si128(v, 2));
    return _mm_cvtsi128_si32(v) & 1;
}

inline int count_nonzero(__m256i levels) {
    const unsigned zero = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi16(levels, _mm256_setzero_si256())));
    return 16 - __builtin_popcount(zero) / 2;
}

// H.263 forward: see the SSE2 kernel.
template <bool Intra>
int quant_h263(s16* c, const QuantRecord&, int qp) {
    const __m256i r = _mm256_set1_epi16(static_cast<short>(_p_QuantInv[qp]));
    const __m256i offset = _mm256_set1_epi16(static_cast<short>(Intra ? 0 : qp >> 1));
    const __m256i dc_lane = lanes_between(0, 0, 0);
    int nonzero = 0;
    for (int i = 0; i < 64; i += 16) {
        const __m256i x = load(c + i);
        const __m256i a = _mm256_abs_epi16(x);  // 32768 for -32768, read as unsigned
        __m256i level = qp == 1 ? _mm256_srli_epi16(a, 1) : _mm256_mulhi_epu16(_mm256_subs_epu16(a, offset), r);
        __m256i y = _mm256_sign_epi16(level, x);
        if (Intra && i == 0) {
            level = _mm256_andnot_si256(dc_lane, level);
            y = _mm256_blendv_epi8(y, x, dc_lane);
        }
        store(c + i, y);
        nonzero += count_nonzero(level);
    }
    return nonzero;
}

void quant_inv_h263(s16* c, int last, const QuantInvRecord& rec, int qp, int) {
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    const __m256i two_qp = _mm256_set1_epi16(static_cast<short>(2 * qp));
    const __m256i q = _mm256_set1_epi16(static_cast<short>(h263_offset(qp)));
    const __m256i hi = _mm256_set1_epi16(1024), lo = _mm256_set1_epi16(-1024);
    const __m256i bound = _mm256_set1_epi16(static_cast<short>(v - 1));
    for (int i = 0; i <= last; i += 16) {
        const __m256i x = load(c + i);
        const __m256i s = _mm256_srai_epi16(x, 15);
        const __m256i a = _mm256_abs_epi16(_mm256_max_epi16(_mm256_min_epi16(x, hi), lo));
        __m256i m = _mm256_add_epi16(_mm256_mullo_epi16(a, two_qp), q);  // <= 63519, unsigned
        m = _mm256_min_epu16(m, _mm256_sub_epi16(bound, s));
        m = _mm256_sign_epi16(m, x);
        store(c + i, _mm256_blendv_epi8(x, m, lanes_between(i, 0, last)));
    }
}

template <bool Intra>
void quant_inv_mpeg(s16* c, int last, const QuantInvRecord& rec, int qp, int dc) {
    const int v = _p_QuantInvClip[rec.bits - kMinBits];
    const __m256i qpv = _mm256_set1_epi16(static_cast<short>(qp));
    const __m256i hi = _mm256_set1_epi16(16384), lo = _mm256_set1_epi16(-16384);
    const __m256i bound = _mm256_set1_epi16(static_cast<short>(v - 1));
    const __m256i one = _mm256_set1_epi16(1);
    __m256i parity = _mm256_setzero_si256();
    for (int i = 0; i <= last; i += 16) {
        const __m256i x = load(c + i);
        const __m256i s = _mm256_srai_epi16(x, 15);
        const __m256i a = _mm256_abs_epi16(_mm256_max_epi16(_mm256_min_epi16(x, hi), lo));
        const __m256i m = Intra ? a : _mm256_add_epi16(_mm256_add_epi16(a, a), one);
        const __m256i wq = _mm256_mullo_epi16(load(rec.weights + i), qpv);
        const __m256i pl = _mm256_mullo_epi16(m, wq), ph = _mm256_mulhi_epu16(m, wq);
        const __m256i p0 = _mm256_srli_epi32(_mm256_unpacklo_epi16(pl, ph), Intra ? 3 : 4);
        const __m256i p1 = _mm256_srli_epi32(_mm256_unpackhi_epi16(pl, ph), Intra ? 3 : 4);
        __m256i r = _mm256_min_epi16(_mm256_packs_epi32(p0, p1), _mm256_sub_epi16(bound, s));
        r = _mm256_sign_epi16(r, x);
        const __m256i keep = lanes_between(i, Intra ? 1 : 0, last);
        r = _mm256_and_si256(keep, r);
        parity = _mm256_xor_si256(parity, r);
        store(c + i, _mm256_blendv_epi8(x, r, keep));
    }
    if ((parity_of_sum(parity) ^ (Intra ? dc & 1 : 0)) == 0) c[63] = static_cast<s16>(c[63] ^ 1);
}

// MPEG forward on 32-bit lanes. t = 16|c| + h < 2^20 and r <= 65537 =
// rh 2^16 + rl: (t r) >> 16 = rh t + (t >> 16) rl + (((t & 65535) rl) >> 16),
// each product below 2^32. The level stage limits a + round to the smallest
// value whose level reaches 2047, so that its product with R(QP) stays below
// 2^31.
template <bool Intra>
int quant_mpeg(s16* c, const QuantRecord& rec, int qp) {
    const int big_r = _p_QuantInv[qp];
    const int saturating = static_cast<int>((2047LL * 65536 + big_r - 1) / big_r);
    const __m256i rv = _mm256_set1_epi32(big_r);
    const __m256i round = _mm256_set1_epi32(Intra ? (3 * qp + 2) >> 2 : 0);
    const __m256i limit = _mm256_set1_epi32(saturating), top = _mm256_set1_epi32(2047);
    const __m256i low16 = _mm256_set1_epi32(0xFFFF);
    int nonzero = 0;
    for (int i = 0; i < 64; i += 8) {
        const __m128i x16 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(c + i));
        const __m256i x = _mm256_cvtepi16_epi32(x16);
        const __m256i h = _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(rec.weights + i)));
        const __m256i r = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rec.reciprocals + i));
        const __m256i t = _mm256_add_epi32(_mm256_slli_epi32(_mm256_abs_epi32(x), 4), h);
        const __m256i rl = _mm256_and_si256(r, low16);
        const __m256i rh = _mm256_srli_epi32(r, 16);  // 0 or 1
        __m256i scaled = _mm256_srli_epi32(_mm256_mullo_epi32(_mm256_and_si256(t, low16), rl), 16);
        scaled = _mm256_add_epi32(scaled, _mm256_mullo_epi32(_mm256_srli_epi32(t, 16), rl));
        scaled = _mm256_add_epi32(scaled, _mm256_and_si256(t, _mm256_sub_epi32(_mm256_setzero_si256(), rh)));
        const __m256i u = _mm256_min_epi32(_mm256_add_epi32(scaled, round), limit);
        const __m256i level = _mm256_min_epi32(_mm256_srli_epi32(_mm256_mullo_epi32(u, rv), 16), top);
        const __m256i y32 = _mm256_sign_epi32(level, x);
        __m128i y = _mm_packs_epi32(_mm256_castsi256_si128(y32), _mm256_extracti128_si256(y32, 1));
        __m128i l16 = _mm_packs_epi32(_mm256_castsi256_si128(level), _mm256_extracti128_si256(level, 1));
        if (Intra && i == 0) {
            const __m128i dc_lane = _mm_setr_epi16(-1, 0, 0, 0, 0, 0, 0, 0);
            y = _mm_blendv_epi8(y, x16, dc_lane);
            l16 = _mm_andnot_si128(dc_lane, l16);
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(c + i), y);
        const unsigned zero = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(l16, _mm_setzero_si128())));
        nonzero += 8 - __builtin_popcount(zero) / 2;
    }
    return nonzero;
}

}  // namespace

void init_quant_avx2(Table& t) {
    t.ownpmp4_QuantIntra0_16s_I[0] = &quant_h263<true>;
    t.ownpmp4_QuantInter0_16s_I[0] = &quant_h263<false>;
    t.ownpmp4_QuantIntra1_16s_I[0] = &quant_mpeg<true>;
    t.ownpmp4_QuantInter1_16s_I[0] = &quant_mpeg<false>;
    t.ownpmp4_QuantInv_16s_I[0] = &quant_inv_h263;
    t.ownpmp4_QuantInvIntra_16s_I[0] = &quant_inv_mpeg<true>;
    t.ownpmp4_QuantInvInter_16s_I[0] = &quant_inv_mpeg<false>;
}

}  // namespace kivvc::mpeg4
