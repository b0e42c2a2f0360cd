// AVX2 weighting: sixteen 8-bit samples of a row per step, the narrower
// remainder with the shared 128-bit kernels.
#include <immintrin.h>

#include "h264/inter/weight_simd.h"

namespace kivvc::weight {
namespace {

__m128i narrow(__m256i v) { return _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)); }
__m128i load16(const u8* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
void store16(u8* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// True when a * w1 + b * w2 + round, shifted and offset, stays within 16-bit
// lanes for every pair of 8-bit samples, with both weights bytes: then a
// byte-pair multiply-add (which saturates only outside that range) is exact.
bool bi_fits_bytes(const Weights& k) {
    if (k.w1 < -128 || k.w1 > 127 || k.w2 < -128 || k.w2 > 127) return false;
    if (k.round < 0 || k.round > 32767 || k.shift > 15 || k.offset < -32768 || k.offset > 32767) return false;
    const std::int64_t hi = 255 * (std::int64_t(k.w1 > 0 ? k.w1 : 0) + (k.w2 > 0 ? k.w2 : 0)) + k.round;
    const std::int64_t lo = 255 * (std::int64_t(k.w1 < 0 ? k.w1 : 0) + (k.w2 < 0 ? k.w2 : 0));
    return hi <= 32767 && lo >= -32768 && (hi >> k.shift) + k.offset <= 32767 && (lo >> k.shift) + k.offset >= -32768;
}

int bi_bytes(const u8* a, int aStep, const u8* b, int bStep, u8* d, int dStep, int width, int height,
             const Weights& k) {
    const __m256i w = _mm256_set1_epi16(short((std::uint32_t(std::uint8_t(k.w2)) << 8) | std::uint8_t(k.w1)));
    const __m256i r = _mm256_set1_epi16(short(k.round)), o = _mm256_set1_epi16(short(k.offset));
    const __m128i n = _mm_cvtsi32_si128(k.shift);
    int x = 0;
    for (; x + 16 <= width; x += 16)
        for (int y = 0; y < height; ++y) {
            const __m128i s = load16(a + ptrdiff_t(y) * aStep + x), t = load16(b + ptrdiff_t(y) * bStep + x);
            const __m256i pairs = _mm256_set_m128i(_mm_unpackhi_epi8(s, t), _mm_unpacklo_epi8(s, t));
            const __m256i v = _mm256_add_epi16(_mm256_sra_epi16(_mm256_add_epi16(_mm256_maddubs_epi16(pairs, w), r), n), o);
            store16(d + ptrdiff_t(y) * dStep + x, narrow(v));
        }
    return x;
}

struct Wide16 {
    // Columns in steps of sixteen while the parameters allow the vector
    // paths; returns the first column left.
    static int uni(const u8* a, int aStep, u8* d, int dStep, int width, int height, const Weights& k) {
        if (width < 16 || !uni_fits16(k)) return 0;
        const __m256i w = _mm256_set1_epi16(short(k.w1)), r = _mm256_set1_epi16(short(k.round));
        const __m256i o = _mm256_set1_epi16(short(k.offset));
        const __m128i n = _mm_cvtsi32_si128(k.shift);
        int x = 0;
        for (; x + 16 <= width; x += 16)
            for (int y = 0; y < height; ++y) {
                const __m256i s = _mm256_cvtepu8_epi16(load16(a + ptrdiff_t(y) * aStep + x));
                const __m256i v = _mm256_add_epi16(_mm256_sra_epi16(_mm256_add_epi16(_mm256_mullo_epi16(s, w), r), n), o);
                store16(d + ptrdiff_t(y) * dStep + x, narrow(v));
            }
        return x;
    }
    static int bi(const u8* a, int aStep, const u8* b, int bStep, u8* d, int dStep, int width, int height,
                  const Weights& k) {
        if (width < 16) return 0;
        if (bi_fits_bytes(k)) return bi_bytes(a, aStep, b, bStep, d, dStep, width, height, k);
        if (!fits16(k.w1) || !fits16(k.w2)) return 0;
        const __m256i w = _mm256_set1_epi32(std::int32_t((std::uint32_t(k.w2) << 16) | (std::uint32_t(k.w1) & 0xFFFF)));
        const __m256i r = _mm256_set1_epi32(k.round), o = _mm256_set1_epi32(k.offset);
        const __m128i n = _mm_cvtsi32_si128(k.shift);
        const auto weigh8 = [&](__m128i pairs) {
            return _mm256_add_epi32(_mm256_sra_epi32(_mm256_add_epi32(_mm256_madd_epi16(_mm256_cvtepu8_epi16(pairs), w), r), n), o);
        };
        int x = 0;
        for (; x + 16 <= width; x += 16)
            for (int y = 0; y < height; ++y) {
                const __m128i s = load16(a + ptrdiff_t(y) * aStep + x), t = load16(b + ptrdiff_t(y) * bStep + x);
                const __m256i lo = weigh8(_mm_unpacklo_epi8(s, t)), hi = weigh8(_mm_unpackhi_epi8(s, t));
                // packs works within halves: samples 0-3 8-11 | 4-7 12-15, reordered to 0-15.
                const __m256i v = _mm256_permute4x64_epi64(_mm256_packs_epi32(lo, hi), 0xD8);
                store16(d + ptrdiff_t(y) * dStep + x, narrow(v));
            }
        return x;
    }
};

}  // namespace

void init_weight_avx2(Table& t) {
    t.uni_8u = &uni<Wide16>;
    t.bi_8u = &bi<Wide16>;
}

}  // namespace kivvc::weight
