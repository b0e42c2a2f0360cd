// AVX2 block kernels where the wider registers pay: the 16-wide four-sample
// averages, which widen a whole row into one register.
#include <immintrin.h>

#include "common/block_kernels.h"

namespace kivvc::block {
namespace {

inline __m256i row_sum(const u8* p) {
    const __m256i a = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    const __m256i b = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 1)));
    return _mm256_add_epi16(a, b);
}

template <int Round>
inline __m128i average4(__m256i top, __m256i bottom) {
    const __m256i v = _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(top, bottom), _mm256_set1_epi16(2 - Round)), 2);
    return _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
}

template <int H, int Round, bool Average>
void hh16(const u8* src, int ss, u8* dst, int ds) {
    __m256i prev = row_sum(src);
    for (int y = 0; y < H; ++y, dst += ds) {
        src += ss;
        const __m256i next = row_sum(src);
        __m128i p = average4<Round>(prev, next);
        if constexpr (Average) p = _mm_avg_epu8(p, _mm_loadu_si128(reinterpret_cast<const __m128i*>(dst)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), p);
        prev = next;
    }
}

}  // namespace

void init_block_avx2(Table& t) {
    t.ownvc_Copy16x8HP_8u_C1R[6] = &hh16<8, 0, false>;
    t.ownvc_Copy16x8HP_8u_C1R[7] = &hh16<8, 1, false>;
    t.ownvc_Copy16x16HP_8u_C1R[6] = &hh16<16, 0, false>;
    t.ownvc_Copy16x16HP_8u_C1R[7] = &hh16<16, 1, false>;
    t.ownvc_InterpolateAverage16x8HP_8u_C1IR[6] = &hh16<8, 0, true>;
    t.ownvc_InterpolateAverage16x8HP_8u_C1IR[7] = &hh16<8, 1, true>;
    t.ownvc_InterpolateAverage16x16HP_8u_C1IR[6] = &hh16<16, 0, true>;
    t.ownvc_InterpolateAverage16x16HP_8u_C1IR[7] = &hh16<16, 1, true>;
}

}  // namespace kivvc::block
