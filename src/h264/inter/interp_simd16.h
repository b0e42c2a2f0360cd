// 16-bit interpolation kernels shared by the SSE4.1 and AVX2 files (internal
// linkage in each). Samples are widened to 32-bit lanes, so every 16-bit
// value gives the reference result: 6-tap sums stay below 2^23, the centre's
// below 2^27, chroma products below 2^23. Registers are 128 bits wide, or
// 256 bits in the file built for AVX2.
#pragma once
#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "h264/inter/interp_simd.h"

namespace kivvc::interp {
namespace {

// 32-bit lane arithmetic, overloaded on the register width.
inline __m128i add32(__m128i a, __m128i b) { return _mm_add_epi32(a, b); }
inline __m128i sub32(__m128i a, __m128i b) { return _mm_sub_epi32(a, b); }
inline __m128i mul32(__m128i a, int k) { return _mm_mullo_epi32(a, _mm_set1_epi32(k)); }
inline __m128i plus32(__m128i a, int k) { return _mm_add_epi32(a, _mm_set1_epi32(k)); }
inline __m128i clip32(__m128i v, __m128i maxv) { return _mm_min_epi32(_mm_max_epi32(v, _mm_setzero_si128()), maxv); }
template <int N>
__m128i shl32(__m128i a) { return _mm_slli_epi32(a, N); }
template <int N>
__m128i sar32(__m128i a) { return _mm_srai_epi32(a, N); }
template <int N>
__m128i shr32(__m128i a) { return _mm_srli_epi32(a, N); }
#ifdef __AVX2__
inline __m256i add32(__m256i a, __m256i b) { return _mm256_add_epi32(a, b); }
inline __m256i sub32(__m256i a, __m256i b) { return _mm256_sub_epi32(a, b); }
inline __m256i mul32(__m256i a, int k) { return _mm256_mullo_epi32(a, _mm256_set1_epi32(k)); }
inline __m256i plus32(__m256i a, int k) { return _mm256_add_epi32(a, _mm256_set1_epi32(k)); }
inline __m256i clip32(__m256i v, __m256i maxv) { return _mm256_min_epi32(_mm256_max_epi32(v, _mm256_setzero_si256()), maxv); }
template <int N>
__m256i shl32(__m256i a) { return _mm256_slli_epi32(a, N); }
template <int N>
__m256i sar32(__m256i a) { return _mm256_srai_epi32(a, N); }
template <int N>
__m256i shr32(__m256i a) { return _mm256_srli_epi32(a, N); }
#endif

template <int Bits>
typename Reg<Bits>::type splat32(int v) {
    if constexpr (Bits == 256) return _mm256_set1_epi32(v);
    else return _mm_set1_epi32(v);
}

// Lanes (8, 4 or 2) 16-bit samples in 32-bit lanes of R.
template <int Bits, int Lanes>
struct Wide {
    using T = u16;
    using R = typename Reg<Bits>::type;
    using Out = R;
    using Tmp = std::int32_t;
    static constexpr int kLanes = Lanes;
    int max_int;
    R maxv;
    explicit Wide(int m) : max_int(m), maxv(splat32<Bits>(m)) {}
    int maxv_or_default() const { return max_int; }
    static R widen(const u16* p) {
        if constexpr (Lanes == 8) {
            return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
        } else if constexpr (Lanes == 4) {
            return _mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
        } else {
            int v;
            std::memcpy(&v, p, 4);
            return _mm_cvtepu16_epi32(_mm_cvtsi32_si128(v));
        }
    }
    // Values are already within 0..65535: the saturating pack only narrows.
    static void store(u16* p, Out v) {
        if constexpr (Lanes == 8) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p),
                             _mm_packus_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)));
        } else if constexpr (Lanes == 4) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi32(v, v));
        } else {
            const int x = _mm_cvtsi128_si32(_mm_packus_epi32(v, v));
            std::memcpy(p, &x, 4);
        }
    }
    static Out sample(const u16* p) { return widen(p); }
    static R load_tmp(const std::int32_t* p) {
        if constexpr (Bits == 256) return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        else return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    }
    static void store_tmp(std::int32_t* p, R v) {
        if constexpr (Bits == 256) _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
        else _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
    }
    static R add(R a, R b) { return add32(a, b); }
    static R sub(R a, R b) { return sub32(a, b); }
    static R shl2(R a) { return shl32<2>(a); }
    Out half(R sum) const { return clip32(sar32<5>(plus32(sum, 16)), maxv); }
    static Out avg(Out a, Out b) { return shr32<1>(plus32(add32(a, b), 1)); }
    Out centre(R a, R b, R c) const {
        const R x = sub(shl2(c), b);
        const R j1 = add(a, add(x, shl2(x)));
        return clip32(sar32<10>(plus32(j1, 512)), maxv);
    }
};

using Wide4 = Wide<128, 4>;
using Wide2 = Wide<128, 2>;

// Chroma in one or two directions; no clip is needed.
template <class V, int Type>
void chroma16_strip(const u16* src, ptrdiff_t ss, u16* dst, ptrdiff_t ds, int dx, int dy, int height) {
    using R = typename V::Out;
    const V v(0);
    if constexpr (Type == 0) {
        for (int y = 0; y < height; ++y, src += ss, dst += ds) v.store(dst, v.widen(src));
    } else if constexpr (Type == 1) {
        for (int y = 0; y < height; ++y, src += ss, dst += ds)
            v.store(dst, shr32<3>(plus32(add32(mul32(v.widen(src), 8 - dx), mul32(v.widen(src + 1), dx)), 4)));
    } else if constexpr (Type == 2) {
        R cur = v.widen(src);
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            const R next = v.widen(src + ss);
            v.store(dst, shr32<3>(plus32(add32(mul32(cur, 8 - dy), mul32(next, dy)), 4)));
            cur = next;
        }
    } else {
        const int a = (8 - dx) * (8 - dy), b = dx * (8 - dy), c = (8 - dx) * dy, d = dx * dy;
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            const R top = add32(mul32(v.widen(src), a), mul32(v.widen(src + 1), b));
            const R bottom = add32(mul32(v.widen(src + ss), c), mul32(v.widen(src + ss + 1), d));
            v.store(dst, shr32<6>(plus32(add32(top, bottom), 32)));
        }
    }
}

// Strips of Wide8 when the file provides it, then of four and two columns.
template <class Widest, int Type>
void chroma16(const u16* src, int srcStep, u16* dst, int dstStep, int dx, int dy, int width, int height) {
    int x = 0;
    for (; x + Widest::kLanes <= width; x += Widest::kLanes)
        chroma16_strip<Widest, Type>(src + x, srcStep, dst + x, dstStep, dx, dy, height);
    if (x + 4 <= width) {
        chroma16_strip<Wide4, Type>(src + x, srcStep, dst + x, dstStep, dx, dy, height);
        x += 4;
    }
    if (x + 2 <= width) chroma16_strip<Wide2, Type>(src + x, srcStep, dst + x, dstStep, dx, dy, height);
}

template <class Widest, int Type>
void luma16(const u16* src, int srcStep, u16* dst, int dstStep, int width, int height, int maxValue) {
    int x = 0;
    const Widest w(maxValue);
    for (; x + Widest::kLanes <= width; x += Widest::kLanes)
        strip<Widest, Type>(w, src + x, srcStep, dst + x, dstStep, height);
    if (x + 4 <= width) strip<Wide4, Type>(Wide4(maxValue), src + x, srcStep, dst + x, dstStep, height);
}

template <class Widest, int... I>
void fill16(Table& t, std::integer_sequence<int, I...>) {
    ((t.luma_16u[I] = &luma16<Widest, I>), ...);
    t.chroma_16u[0] = &chroma16<Widest, 0>;
    t.chroma_16u[1] = &chroma16<Widest, 1>;
    t.chroma_16u[2] = &chroma16<Widest, 2>;
    t.chroma_16u[3] = &chroma16<Widest, 3>;
}

}  // namespace
}  // namespace kivvc::interp
