// SSE2 helpers shared by SIMD kernel files (include only from files built
// with an x86 SIMD target flag). Internal linkage: every file keeps its own
// copy, compiled with its own flags.
#pragma once
#include <emmintrin.h>

#include <cstring>

namespace kivvc::sse2 {
namespace {

// Loads and stores of W bytes (4, 8 or 16).
template <int W>
inline __m128i load(const void* p) {
    if constexpr (W == 16) {
        return _mm_loadu_si128(static_cast<const __m128i*>(p));
    } else if constexpr (W == 8) {
        return _mm_loadl_epi64(static_cast<const __m128i*>(p));
    } else {
        int v;
        std::memcpy(&v, p, 4);
        return _mm_cvtsi32_si128(v);
    }
}
template <int W>
inline void store(void* p, __m128i v) {
    if constexpr (W == 16) {
        _mm_storeu_si128(static_cast<__m128i*>(p), v);
    } else if constexpr (W == 8) {
        _mm_storel_epi64(static_cast<__m128i*>(p), v);
    } else {
        const int x = _mm_cvtsi128_si32(v);
        std::memcpy(p, &x, 4);
    }
}

inline int sum_epi32(__m128i v) {
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(v);
}
// The two 64-bit halves of a psadbw accumulator.
inline int sum_halves(__m128i v) { return _mm_cvtsi128_si32(_mm_add_epi32(v, _mm_unpackhi_epi64(v, v))); }

template <int Rc>
inline __m128i average2(__m128i a, __m128i b) {
    const __m128i up = _mm_avg_epu8(a, b);
    if constexpr (Rc == 0) return up;
    return _mm_sub_epi8(up, _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi8(1)));
}

// Transposes eight rows of eight 16-bit values in place.
inline void transpose8x8_epi16(__m128i* r) {
    const __m128i a0 = _mm_unpacklo_epi16(r[0], r[1]), a1 = _mm_unpackhi_epi16(r[0], r[1]);
    const __m128i a2 = _mm_unpacklo_epi16(r[2], r[3]), a3 = _mm_unpackhi_epi16(r[2], r[3]);
    const __m128i a4 = _mm_unpacklo_epi16(r[4], r[5]), a5 = _mm_unpackhi_epi16(r[4], r[5]);
    const __m128i a6 = _mm_unpacklo_epi16(r[6], r[7]), a7 = _mm_unpackhi_epi16(r[6], r[7]);
    const __m128i b0 = _mm_unpacklo_epi32(a0, a2), b1 = _mm_unpackhi_epi32(a0, a2);
    const __m128i b2 = _mm_unpacklo_epi32(a1, a3), b3 = _mm_unpackhi_epi32(a1, a3);
    const __m128i b4 = _mm_unpacklo_epi32(a4, a6), b5 = _mm_unpackhi_epi32(a4, a6);
    const __m128i b6 = _mm_unpacklo_epi32(a5, a7), b7 = _mm_unpackhi_epi32(a5, a7);
    r[0] = _mm_unpacklo_epi64(b0, b4);
    r[1] = _mm_unpackhi_epi64(b0, b4);
    r[2] = _mm_unpacklo_epi64(b1, b5);
    r[3] = _mm_unpackhi_epi64(b1, b5);
    r[4] = _mm_unpacklo_epi64(b2, b6);
    r[5] = _mm_unpackhi_epi64(b2, b6);
    r[6] = _mm_unpacklo_epi64(b3, b7);
    r[7] = _mm_unpackhi_epi64(b3, b7);
}

}  // namespace
}  // namespace kivvc::sse2
