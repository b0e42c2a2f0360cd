// 8-bit weighting kernels shared by the SSE2 and AVX2 files (internal
// linkage in each). Unidirectional weighting with the weights, offsets and
// shifts H.264 allows runs in 16-bit lanes (|s * w| + round <= 32449 and the
// offset sum within -32768..32512); two-source weighting multiplies and adds
// sample pairs into 32-bit lanes (exact for 16-bit weights, wrapping as the
// reference does). Anything else goes through the plain loop. `Wide` runs
// the widest strips first and returns the first column it left.
#pragma once
#include <emmintrin.h>

#include <cstring>

#include "core/arith.h"
#include "h264/inter/weight_kernels.h"

namespace kivvc::weight {
namespace {

using std::ptrdiff_t;

// Columns [x, width) of every row, one sample at a time.
void bi_tail(const u8* a, ptrdiff_t as, const u8* b, ptrdiff_t bs, u8* d, ptrdiff_t ds, int x, int width, int height,
             const Weights& k) {
    for (int y = 0; y < height; ++y)
        for (int i = x; i < width; ++i) d[y * ds + i] = static_cast<u8>(weigh(a[y * as + i], b[y * bs + i], k));
}

__m128i load8(const u8* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
__m128i load4(const u8* p) {
    int v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}
void store4(u8* p, __m128i v) {
    const int x = _mm_cvtsi128_si32(v);
    std::memcpy(p, &x, 4);
}
__m128i load2(const u8* p) {
    std::uint16_t v;
    std::memcpy(&v, p, 2);
    return _mm_cvtsi32_si128(v);
}
void store2(u8* p, __m128i v) {
    const auto x = static_cast<std::uint16_t>(_mm_cvtsi128_si32(v));
    std::memcpy(p, &x, 2);
}

bool fits16(std::int32_t v) { return v >= -32768 && v <= 32767; }

// Preconditions of the 16-bit-lane path.
bool uni_fits16(const Weights& k) {
    return k.w1 >= -128 && k.w1 <= 127 && k.offset >= -128 && k.offset <= 127 && k.shift <= 7 && k.round <= 64;
}

template <class Wide>
void uni(const u8* a, int aStep, u8* d, int dStep, int width, int height, const Weights& k) {
    if (!uni_fits16(k)) {
        bi_tail(a, aStep, a, aStep, d, dStep, 0, width, height, k);
        return;
    }
    const __m128i z = _mm_setzero_si128(), w = _mm_set1_epi16(short(k.w1));
    const __m128i r = _mm_set1_epi16(short(k.round)), o = _mm_set1_epi16(short(k.offset));
    const __m128i n = _mm_cvtsi32_si128(k.shift);
    const auto weigh8 = [&](__m128i s) {
        return _mm_add_epi16(_mm_sra_epi16(_mm_add_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(s, z), w), r), n), o);
    };
    int x = Wide::uni(a, aStep, d, dStep, width, height, k);
    for (; x + 16 <= width; x += 16)
        for (int y = 0; y < height; ++y) {
            const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + ptrdiff_t(y) * aStep + x));
            const __m128i lo = weigh8(s), hi = weigh8(_mm_srli_si128(s, 8));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + ptrdiff_t(y) * dStep + x), _mm_packus_epi16(lo, hi));
        }
    for (; x + 8 <= width; x += 8)
        for (int y = 0; y < height; ++y) {
            const __m128i v = weigh8(load8(a + ptrdiff_t(y) * aStep + x));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(d + ptrdiff_t(y) * dStep + x), _mm_packus_epi16(v, v));
        }
    for (; x + 4 <= width; x += 4)
        for (int y = 0; y < height; ++y) {
            const __m128i v = weigh8(load4(a + ptrdiff_t(y) * aStep + x));
            store4(d + ptrdiff_t(y) * dStep + x, _mm_packus_epi16(v, v));
        }
    for (; x + 2 <= width; x += 2)
        for (int y = 0; y < height; ++y) {
            const __m128i v = weigh8(load2(a + ptrdiff_t(y) * aStep + x));
            store2(d + ptrdiff_t(y) * dStep + x, _mm_packus_epi16(v, v));
        }
    bi_tail(a, aStep, a, aStep, d, dStep, x, width, height, k);
}

template <class Wide>
void bi(const u8* a, int aStep, const u8* b, int bStep, u8* d, int dStep, int width, int height, const Weights& k) {
    if (!fits16(k.w1) || !fits16(k.w2)) {
        bi_tail(a, aStep, b, bStep, d, dStep, 0, width, height, k);
        return;
    }
    const __m128i z = _mm_setzero_si128();
    const __m128i w = _mm_set1_epi32(std::int32_t((std::uint32_t(k.w2) << 16) | (std::uint32_t(k.w1) & 0xFFFF)));
    const __m128i r = _mm_set1_epi32(k.round), o = _mm_set1_epi32(k.offset), n = _mm_cvtsi32_si128(k.shift);
    const auto weigh4 = [&](__m128i pairs) {
        return _mm_add_epi32(_mm_sra_epi32(_mm_add_epi32(_mm_madd_epi16(pairs, w), r), n), o);
    };
    // Eight samples of each source, interleaved a0 b0 a1 b1 ..., to 8 words.
    const auto weigh8 = [&](__m128i s, __m128i t) {
        const __m128i pairs = _mm_unpacklo_epi8(s, t);
        const __m128i lo = weigh4(_mm_unpacklo_epi8(pairs, z)), hi = weigh4(_mm_unpackhi_epi8(pairs, z));
        return _mm_packs_epi32(lo, hi);
    };
    int x = Wide::bi(a, aStep, b, bStep, d, dStep, width, height, k);
    for (; x + 16 <= width; x += 16)
        for (int y = 0; y < height; ++y) {
            const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + ptrdiff_t(y) * aStep + x));
            const __m128i t = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + ptrdiff_t(y) * bStep + x));
            const __m128i lo = weigh8(s, t), hi = weigh8(_mm_srli_si128(s, 8), _mm_srli_si128(t, 8));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + ptrdiff_t(y) * dStep + x), _mm_packus_epi16(lo, hi));
        }
    for (; x + 8 <= width; x += 8)
        for (int y = 0; y < height; ++y) {
            const __m128i v = weigh8(load8(a + ptrdiff_t(y) * aStep + x), load8(b + ptrdiff_t(y) * bStep + x));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(d + ptrdiff_t(y) * dStep + x), _mm_packus_epi16(v, v));
        }
    for (; x + 4 <= width; x += 4)
        for (int y = 0; y < height; ++y) {
            const __m128i v = weigh8(load4(a + ptrdiff_t(y) * aStep + x), load4(b + ptrdiff_t(y) * bStep + x));
            store4(d + ptrdiff_t(y) * dStep + x, _mm_packus_epi16(v, v));
        }
    for (; x + 2 <= width; x += 2)
        for (int y = 0; y < height; ++y) {
            const __m128i v = weigh8(load2(a + ptrdiff_t(y) * aStep + x), load2(b + ptrdiff_t(y) * bStep + x));
            store2(d + ptrdiff_t(y) * dStep + x, _mm_packus_epi16(v, v));
        }
    bi_tail(a, aStep, b, bStep, d, dStep, x, width, height, k);
}

// No wider strips.
struct NoWide {
    static int uni(const u8*, int, u8*, int, int, int, const Weights&) { return 0; }
    static int bi(const u8*, int, const u8*, int, u8*, int, int, int, const Weights&) { return 0; }
};

}  // namespace
}  // namespace kivvc::weight
