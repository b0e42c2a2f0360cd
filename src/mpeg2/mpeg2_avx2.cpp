// AVX2 MPEG-1/2 kernels: the in-place dequantisers, sixteen coefficients at
// a time. Same magnitude scheme as the SSE2 version (see there): clamped
// operands where the result saturates anyway, truncation as a shift of the
// magnitude, the sign applied last. The unpack/pack pairs work within each
// 128-bit lane, so element order is kept.
#include <immintrin.h>

#include <cstdint>

#include "mpeg2/mpeg2_kernels.h"

namespace kivvc::mpeg2 {
namespace {

inline __m256i abs16(__m256i v, __m256i sign) { return _mm256_sub_epi16(_mm256_xor_si256(v, sign), sign); }

template <bool Intra>
void quant_inv(s16* block, s32 q, const s16* matrix) {
    const s16 first = block[0];
    const std::int64_t q_abs = q < 0 ? -std::int64_t{q} : q;
    const __m256i scale = _mm256_set1_epi16(static_cast<short>(q_abs > 32768 ? 32768 : q_abs));
    const __m256i q_sign = _mm256_set1_epi16(q < 0 ? -1 : 0);
    const __m256i m_limit = _mm256_set1_epi32(32768), c_limit = _mm256_set1_epi32(2048);
    const __m256i zero = _mm256_setzero_si256();
    __m256i parity = zero;
    for (int i = 0; i < 64; i += 16) {
        __m256i* p = reinterpret_cast<__m256i*>(block + i);
        const __m256i level = _mm256_loadu_si256(p);
        const __m256i w = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(matrix + i));
        const __m256i level_sign = _mm256_srai_epi16(level, 15), w_sign = _mm256_srai_epi16(w, 15);
        const __m256i w_abs = abs16(w, w_sign);
        const __m256i ml = _mm256_mullo_epi16(w_abs, scale), mh = _mm256_mulhi_epu16(w_abs, scale);
        const __m256i m_lo = _mm256_min_epi32(_mm256_unpacklo_epi16(ml, mh), m_limit);
        const __m256i m_hi = _mm256_min_epi32(_mm256_unpackhi_epi16(ml, mh), m_limit);
        const __m256i m =
            _mm256_add_epi16(_mm256_packs_epi32(_mm256_sub_epi32(m_lo, m_limit), _mm256_sub_epi32(m_hi, m_limit)),
                             _mm256_set1_epi16(-32768));
        const __m256i level_abs = abs16(level, level_sign);
        const __m256i xl = _mm256_mullo_epi16(level_abs, m), xh = _mm256_mulhi_epu16(level_abs, m);
        __m256i x_lo = _mm256_slli_epi32(_mm256_unpacklo_epi16(xl, xh), 1);
        __m256i x_hi = _mm256_slli_epi32(_mm256_unpackhi_epi16(xl, xh), 1);
        if constexpr (!Intra) {
            const __m256i extra = _mm256_andnot_si256(_mm256_cmpeq_epi16(level, zero), m);
            x_lo = _mm256_add_epi32(x_lo, _mm256_unpacklo_epi16(extra, zero));
            x_hi = _mm256_add_epi32(x_hi, _mm256_unpackhi_epi16(extra, zero));
        }
        const __m256i mag = _mm256_packs_epi32(_mm256_min_epi32(_mm256_srli_epi32(x_lo, 5), c_limit),
                                               _mm256_min_epi32(_mm256_srli_epi32(x_hi, 5), c_limit));
        const __m256i sign = _mm256_xor_si256(_mm256_xor_si256(level_sign, w_sign), q_sign);
        const __m256i c = _mm256_min_epi16(abs16(mag, sign), _mm256_set1_epi16(2047));
        _mm256_storeu_si256(p, c);
        parity = _mm256_xor_si256(parity, c);
    }
    __m128i fold = _mm_xor_si128(_mm256_castsi256_si128(parity), _mm256_extracti128_si256(parity, 1));
    if constexpr (Intra) {
        // The first coefficient stays; swap its contribution to the parity.
        fold = _mm_xor_si128(fold, _mm_cvtsi32_si128(static_cast<std::uint16_t>(block[0] ^ first)));
        block[0] = first;
    }
    fold = _mm_xor_si128(fold, _mm_srli_si128(fold, 8));
    fold = _mm_xor_si128(fold, _mm_srli_si128(fold, 4));
    fold = _mm_xor_si128(fold, _mm_srli_si128(fold, 2));
    if (!(_mm_cvtsi128_si32(fold) & 1)) block[63] = static_cast<s16>(block[63] ^ 1);
}

}  // namespace

void init_mpeg2_avx2(Table& t) {
    t.quant_inv_intra = &quant_inv<true>;
    t.quant_inv = &quant_inv<false>;
}

}  // namespace kivvc::mpeg2
