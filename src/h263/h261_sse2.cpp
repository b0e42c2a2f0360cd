// SSE2 H.261 loop filter: one row of eight samples per register in 16-bit
// lanes, the vertical pass over the eight horizontal results.
#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

#include "h263/h261_kernels.h"

namespace kivvc::h263 {
namespace {

void filter8x8(const std::uint8_t* src, int src_step, std::uint8_t* dst, int dst_step) {
    const __m128i zero = _mm_setzero_si128();
    // Lanes 0 and 7 keep 4 p; the others take p[i-1] + 2 p[i] + p[i+1].
    const __m128i outer = _mm_set_epi16(-1, 0, 0, 0, 0, 0, 0, -1);
    __m128i h[8];
    for (int y = 0; y < 8; ++y) {
        const __m128i row = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + std::ptrdiff_t{y} * src_step));
        const __m128i s = _mm_unpacklo_epi8(row, zero);
        const __m128i twice = _mm_add_epi16(s, s);
        const __m128i taps = _mm_add_epi16(_mm_add_epi16(_mm_slli_si128(s, 2), _mm_srli_si128(s, 2)), twice);
        const __m128i four = _mm_add_epi16(twice, twice);
        h[y] = _mm_or_si128(_mm_and_si128(outer, four), _mm_andnot_si128(outer, taps));
    }
    auto store = [&](int y, __m128i v) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + std::ptrdiff_t{y} * dst_step), _mm_packus_epi16(v, v));
    };
    const __m128i two = _mm_set1_epi16(2), eight = _mm_set1_epi16(8);
    store(0, _mm_srli_epi16(_mm_add_epi16(h[0], two), 2));
    store(7, _mm_srli_epi16(_mm_add_epi16(h[7], two), 2));
    for (int y = 1; y < 7; ++y) {
        // At most 16 * 255 + 8: fits unsigned 16-bit lanes.
        const __m128i sum = _mm_add_epi16(_mm_add_epi16(h[y - 1], h[y + 1]), _mm_add_epi16(h[y], h[y]));
        store(y, _mm_srli_epi16(_mm_add_epi16(sum, eight), 4));
    }
}

}  // namespace

void init_h261_sse2(H261Table& t) { t.filter8x8 = &filter8x8; }

}  // namespace kivvc::h263
