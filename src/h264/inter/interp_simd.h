// Vector interpolation kernels shared by the SSE2 and AVX2 files. Everything
// here has internal linkage (anonymous namespace), so each instruction set
// keeps its own copy. A kernel runs strip by strip over the block; a lane
// policy says how many columns a strip has and how samples are loaded into
// lanes (R), narrowed to clipped output values (Out), averaged and stored.
//
// 8-bit ranges: a 6-tap sum lies in -2550..10710 and fits 16-bit lanes; the
// centre's second pass adds three pairs of those (each pair within
// -5100..21420) and completes the sum in 32 bits. 16-bit samples run in
// 32-bit lanes throughout (sums below 2^27).
#pragma once
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "h264/inter/interp_kernels.h"

namespace kivvc::interp {
namespace {

using std::ptrdiff_t;
using s16 = std::int16_t;

// Register of a width in bits.
template <int Bits>
struct Reg {
    using type = __m128i;
};
#ifdef __AVX2__
template <>
struct Reg<256> {
    using type = __m256i;
};
#endif

// 16-bit lane arithmetic, overloaded on the register width. to_bytes packs
// the lanes, clipped to 0..255 and in order, into the low bytes of a 128-bit
// register; centre16 is (a - 5b + 20c + 512) >> 10 per lane, summed in 32
// bits and packed back to 16-bit lanes in order.
inline __m128i add16(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
inline __m128i sub16(__m128i a, __m128i b) { return _mm_sub_epi16(a, b); }
inline __m128i shl16_2(__m128i a) { return _mm_slli_epi16(a, 2); }
inline __m128i half16(__m128i a) { return _mm_srai_epi16(_mm_add_epi16(a, _mm_set1_epi16(16)), 5); }
inline __m128i to_bytes(__m128i v) { return _mm_packus_epi16(v, v); }
inline __m128i centre16(__m128i a, __m128i b, __m128i c) {
    const __m128i k = _mm_set1_epi32(std::int32_t(0xFFFB0001));  // pairs (1, -5)
    const __m128i ten = _mm_set1_epi16(10), r = _mm_set1_epi32(512);
    const __m128i lo = _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(a, b), k), _mm_madd_epi16(_mm_unpacklo_epi16(c, c), ten));
    const __m128i hi = _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(a, b), k), _mm_madd_epi16(_mm_unpackhi_epi16(c, c), ten));
    return _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(lo, r), 10), _mm_srai_epi32(_mm_add_epi32(hi, r), 10));
}
#ifdef __AVX2__
inline __m256i add16(__m256i a, __m256i b) { return _mm256_add_epi16(a, b); }
inline __m256i sub16(__m256i a, __m256i b) { return _mm256_sub_epi16(a, b); }
inline __m256i shl16_2(__m256i a) { return _mm256_slli_epi16(a, 2); }
inline __m256i half16(__m256i a) { return _mm256_srai_epi16(_mm256_add_epi16(a, _mm256_set1_epi16(16)), 5); }
inline __m128i to_bytes(__m256i v) { return _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)); }
// unpack and pack work within each 128-bit half, so the lane order is kept.
inline __m256i centre16(__m256i a, __m256i b, __m256i c) {
    const __m256i k = _mm256_set1_epi32(std::int32_t(0xFFFB0001));
    const __m256i ten = _mm256_set1_epi16(10), r = _mm256_set1_epi32(512);
    const __m256i lo = _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), k),
                                        _mm256_madd_epi16(_mm256_unpacklo_epi16(c, c), ten));
    const __m256i hi = _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), k),
                                        _mm256_madd_epi16(_mm256_unpackhi_epi16(c, c), ten));
    return _mm256_packs_epi32(_mm256_srai_epi32(_mm256_add_epi32(lo, r), 10), _mm256_srai_epi32(_mm256_add_epi32(hi, r), 10));
}
#endif

// 8-bit samples, Lanes (16, 8, 4 or 2) columns per strip in 16-bit lanes of
// a Bits-wide register (the upper lanes of a narrow strip carry nothing the
// result keeps); Out is the clipped results as bytes.
template <int Bits, int Lanes>
struct Bytes {
    using T = u8;
    using R = typename Reg<Bits>::type;
    using Out = __m128i;
    using Tmp = s16;
    static constexpr int kLanes = Lanes;
    explicit Bytes(int = 255) {}
    static int maxv_or_default() { return 255; }
    static __m128i bytes(const u8* p) {
        if constexpr (Lanes == 16) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        } else if constexpr (Lanes == 8) {
            return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        } else {
            std::uint32_t v = 0;
            std::memcpy(&v, p, Lanes);
            return _mm_cvtsi32_si128(int(v));
        }
    }
    static void store(u8* p, Out v) {
        if constexpr (Lanes == 16) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
        } else if constexpr (Lanes == 8) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
        } else {
            const int x = _mm_cvtsi128_si32(v);
            std::memcpy(p, &x, Lanes);
        }
    }
    static R widen(const u8* p) {
        if constexpr (Bits == 256) return _mm256_cvtepu8_epi16(bytes(p));
        else return _mm_unpacklo_epi8(bytes(p), _mm_setzero_si128());
    }
    static Out sample(const u8* p) { return bytes(p); }
    static R load_tmp(const s16* p) {
        if constexpr (Bits == 256) return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        else return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    }
    static void store_tmp(s16* p, R v) {
        if constexpr (Bits == 256) _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
        else _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
    }
    static R add(R a, R b) { return add16(a, b); }
    static R sub(R a, R b) { return sub16(a, b); }
    static R shl2(R a) { return shl16_2(a); }
    static Out narrow(R v) { return to_bytes(v); }
    static Out half(R sum) { return to_bytes(half16(sum)); }
    static Out avg(Out a, Out b) { return _mm_avg_epu8(a, b); }
    static Out centre(R a, R b, R c) { return to_bytes(centre16(a, b, c)); }
};

using Sse8 = Bytes<128, 8>;
using Sse4 = Bytes<128, 4>;
using Sse2w = Bytes<128, 2>;

// The vertical pass of a strip runs in chunks of this policy.
template <class V>
struct ChunkOf {
    using type = V;
};
template <>
struct ChunkOf<Sse4> {
    using type = Sse8;
};

template <class V>
inline typename V::R tap6(const V& v, typename V::R m2, typename V::R m1, typename V::R z0, typename V::R p1,
                          typename V::R p2, typename V::R p3) {
    // a - 5b + 20c = a + 5(4c - b).
    const auto a = v.add(m2, p3), b = v.add(m1, p2), c = v.add(z0, p1);
    const auto x = v.sub(v.shl2(c), b);
    return v.add(a, v.add(x, v.shl2(x)));
}

// Horizontal 6-tap sum between p[0] and p[1] for the strip's columns.
template <class V>
inline typename V::R horizontal(const V& v, const typename V::T* p) {
    return tap6(v, v.widen(p - 2), v.widen(p - 1), v.widen(p), v.widen(p + 1), v.widen(p + 2), v.widen(p + 3));
}

// Vertical 6-tap sums of one column strip, rows rolling down.
template <class V>
struct Column {
    const V& v;
    typename V::R r[6];
    const typename V::T* p;
    ptrdiff_t step;
    Column(const V& pol, const typename V::T* top, ptrdiff_t s) : v(pol), p(top), step(s) {
        for (int k = 0; k < 5; ++k) r[k] = v.widen(p + (k - 2) * step);
    }
    // The sum for the current row; then moves one row down.
    typename V::R next() {
        r[5] = v.widen(p + 3 * step);
        const auto s = tap6(v, r[0], r[1], r[2], r[3], r[4], r[5]);
        for (int k = 0; k < 5; ++k) r[k] = r[k + 1];
        p += step;
        return s;
    }
};

// The centre's vertical pass: 6-tap sums for columns -2 .. lanes + 2 of
// `rows` rows into tmp, in chunks (the last one overlapping).
inline constexpr int kTmpStep = 40;

template <class V>
void vertical_pass(const V& v, const typename V::T* src, ptrdiff_t step, typename V::Tmp* tmp, int rows) {
    using C = typename ChunkOf<V>::type;
    const C c(v.maxv_or_default());
    constexpr int kCols = V::kLanes + 5;
    for (int next = 0;; next += C::kLanes) {
        const int start = next < kCols - C::kLanes ? next : kCols - C::kLanes;  // the last chunk overlaps
        Column<C> col(c, src - 2 + start, step);
        for (int y = 0; y < rows; ++y) c.store_tmp(tmp + y * kTmpStep + start, col.next());
        if (start == kCols - C::kLanes) break;
    }
}

template <class V, int Type>
void strip(const V& v, const typename V::T* src, ptrdiff_t ss, typename V::T* dst, ptrdiff_t ds, int height) {
    constexpr int fx = Type & 3, fy = Type >> 2;
    if constexpr (Type == 0) {
        for (int y = 0; y < height; ++y, src += ss, dst += ds) v.store(dst, v.sample(src));
    } else if constexpr (fy == 0) {
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            auto b = v.half(horizontal(v, src));
            if constexpr (fx == 1) b = v.avg(b, v.sample(src));
            if constexpr (fx == 3) b = v.avg(b, v.sample(src + 1));
            v.store(dst, b);
        }
    } else if constexpr (fx == 0) {
        Column<V> col(v, src, ss);
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            auto h = v.half(col.next());
            if constexpr (fy == 1) h = v.avg(h, v.sample(src));
            if constexpr (fy == 3) h = v.avg(h, v.sample(src + ss));
            v.store(dst, h);
        }
    } else if constexpr (fx != 2 && fy != 2) {
        // e, g, p, r: b of this row or the next, h of this column or the next.
        Column<V> col(v, src + (fx == 3 ? 1 : 0), ss);
        for (int y = 0; y < height; ++y, src += ss, dst += ds) {
            const auto h = v.half(col.next());
            const auto b = v.half(horizontal(v, src + (fy == 3 ? ss : 0)));
            v.store(dst, v.avg(b, h));
        }
    } else {
        // f, i, j, k, q: the centre, averaged with b, h, m or s.
        alignas(32) typename V::Tmp tmp[16 * kTmpStep];
        for (int y0 = 0; y0 < height; y0 += 16) {
            const int rows = height - y0 < 16 ? height - y0 : 16;
            vertical_pass(v, src, ss, tmp, rows);
            for (int y = 0; y < rows; ++y, src += ss, dst += ds) {
                const typename V::Tmp* t = tmp + y * kTmpStep;
                const auto a = v.add(v.load_tmp(t), v.load_tmp(t + 5));
                const auto b = v.add(v.load_tmp(t + 1), v.load_tmp(t + 4));
                const auto c = v.add(v.load_tmp(t + 2), v.load_tmp(t + 3));
                auto j = v.centre(a, b, c);
                if constexpr (Type == 6) j = v.avg(j, v.half(horizontal(v, src)));
                if constexpr (Type == 14) j = v.avg(j, v.half(horizontal(v, src + ss)));
                if constexpr (Type == 9) j = v.avg(j, v.half(v.load_tmp(t + 2)));
                if constexpr (Type == 11) j = v.avg(j, v.half(v.load_tmp(t + 3)));
                v.store(dst, j);
            }
        }
    }
}

}  // namespace
}  // namespace kivvc::interp
