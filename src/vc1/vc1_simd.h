// Helpers shared by the SIMD kernel files of the VC-1 family. Everything
// here has internal linkage (each SIMD file gets its own copy, compiled with
// its own target flags), and needs no more than SSE2.
#pragma once
#include <emmintrin.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "vc1/vc1_kernels.h"

namespace kivvc::vc1 {
namespace {

template <class T>
T* row_at(T* base, int step, int y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + std::ptrdiff_t(y) * step);
}

// Bytes loaded from / stored to memory, zero-extended.
template <int Bytes>
__m128i load(const void* p) {
    if constexpr (Bytes == 16) {
        return _mm_loadu_si128(static_cast<const __m128i*>(p));
    } else if constexpr (Bytes == 8) {
        return _mm_loadl_epi64(static_cast<const __m128i*>(p));
    } else {
        static_assert(Bytes == 4);
        int v;
        std::memcpy(&v, p, 4);
        return _mm_cvtsi32_si128(v);
    }
}

template <int Bytes>
void store(void* p, __m128i v) {
    if constexpr (Bytes == 16) {
        _mm_storeu_si128(static_cast<__m128i*>(p), v);
    } else if constexpr (Bytes == 8) {
        _mm_storel_epi64(static_cast<__m128i*>(p), v);
    } else {
        static_assert(Bytes == 4);
        const int x = _mm_cvtsi128_si32(v);
        std::memcpy(p, &x, 4);
    }
}

// pmaddwd coefficient pair (a for the even lane, b for the odd one).
inline __m128i pair(int a, int b) {
    return _mm_set1_epi32(static_cast<int>((static_cast<unsigned>(b) << 16) | (static_cast<unsigned>(a) & 0xFFFF)));
}
inline __m128i madd(__m128i v, int a, int b) { return _mm_madd_epi16(v, pair(a, b)); }

template <bool Hi>
__m128i interleave16(__m128i a, __m128i b) {
    return Hi ? _mm_unpackhi_epi16(a, b) : _mm_unpacklo_epi16(a, b);
}

inline void transpose8(__m128i* v) {
    const __m128i a0 = _mm_unpacklo_epi16(v[0], v[1]), a1 = _mm_unpackhi_epi16(v[0], v[1]);
    const __m128i a2 = _mm_unpacklo_epi16(v[2], v[3]), a3 = _mm_unpackhi_epi16(v[2], v[3]);
    const __m128i a4 = _mm_unpacklo_epi16(v[4], v[5]), a5 = _mm_unpackhi_epi16(v[4], v[5]);
    const __m128i a6 = _mm_unpacklo_epi16(v[6], v[7]), a7 = _mm_unpackhi_epi16(v[6], v[7]);
    const __m128i b0 = _mm_unpacklo_epi32(a0, a2), b1 = _mm_unpackhi_epi32(a0, a2);
    const __m128i b2 = _mm_unpacklo_epi32(a1, a3), b3 = _mm_unpackhi_epi32(a1, a3);
    const __m128i b4 = _mm_unpacklo_epi32(a4, a6), b5 = _mm_unpackhi_epi32(a4, a6);
    const __m128i b6 = _mm_unpacklo_epi32(a5, a7), b7 = _mm_unpackhi_epi32(a5, a7);
    v[0] = _mm_unpacklo_epi64(b0, b4), v[1] = _mm_unpackhi_epi64(b0, b4);
    v[2] = _mm_unpacklo_epi64(b1, b5), v[3] = _mm_unpackhi_epi64(b1, b5);
    v[4] = _mm_unpacklo_epi64(b2, b6), v[5] = _mm_unpackhi_epi64(b2, b6);
    v[6] = _mm_unpacklo_epi64(b3, b7), v[7] = _mm_unpackhi_epi64(b3, b7);
}

// Transposes the 4 x 4 held in the low halves of v[0..3].
inline void transpose4(__m128i* v) {
    const __m128i a = _mm_unpacklo_epi16(v[0], v[1]), b = _mm_unpacklo_epi16(v[2], v[3]);
    const __m128i lo = _mm_unpacklo_epi32(a, b), hi = _mm_unpackhi_epi32(a, b);
    v[0] = lo, v[1] = _mm_unpackhi_epi64(lo, lo), v[2] = hi, v[3] = _mm_unpackhi_epi64(hi, hi);
}

}  // namespace
}  // namespace kivvc::vc1
