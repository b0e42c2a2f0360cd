// SSE4.1 16-bit weighting and averaging. Samples are widened to 32-bit lanes
// and multiplied with pmulld, whose low 32 bits are the reference's wrapping
// product, so every weight and sample value gives the reference result.
#include <smmintrin.h>

#include <cstring>

#include "h264/inter/weight_kernels.h"

namespace kivvc::weight {
namespace {

using std::ptrdiff_t;

// Four samples of a row at a time; widths are 2, 4, 8 or 16 (weighting) or
// 2..16 (the average), so a two-sample or one-sample tail may remain.
template <class Op>
void rows16(int width, int height, Op op) {
    for (int y = 0; y < height; ++y) {
        int x = 0;
        for (; x + 4 <= width; x += 4) op.template at<4>(y, x);
        if (x + 2 <= width) {
            op.template at<2>(y, x);
            x += 2;
        }
        if (x < width) op.template at<1>(y, x);
    }
}

template <int N>
__m128i load(const u16* p) {
    if constexpr (N == 4) return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    else if constexpr (N == 2) {
        int v;
        std::memcpy(&v, p, 4);
        return _mm_cvtsi32_si128(v);
    } else {
        return _mm_cvtsi32_si128(*p);
    }
}
template <int N>
void store(u16* p, __m128i v) {
    if constexpr (N == 4) _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
    else if constexpr (N == 2) {
        const int x = _mm_cvtsi128_si32(v);
        std::memcpy(p, &x, 4);
    } else {
        *p = static_cast<u16>(_mm_cvtsi128_si32(v));
    }
}

struct Weigher {
    __m128i w1, w2, round, offset, maxv, shift;
    explicit Weigher(const Weights& k)
        : w1(_mm_set1_epi32(k.w1)), w2(_mm_set1_epi32(k.w2)), round(_mm_set1_epi32(k.round)),
          offset(_mm_set1_epi32(k.offset)), maxv(_mm_set1_epi16(short(k.maxValue))), shift(_mm_cvtsi32_si128(k.shift)) {}
    // clamp(((a * w1 + b * w2 + round) >> shift) + offset, 0, max) as 16-bit lanes.
    __m128i operator()(__m128i a, __m128i b) const {
        const __m128i sum = _mm_add_epi32(_mm_add_epi32(_mm_mullo_epi32(_mm_cvtepu16_epi32(a), w1),
                                                        _mm_mullo_epi32(_mm_cvtepu16_epi32(b), w2)),
                                          round);
        const __m128i v = _mm_add_epi32(_mm_sra_epi32(sum, shift), offset);
        return _mm_min_epu16(_mm_packus_epi32(v, v), maxv);
    }
};

struct UniOp {
    const u16* a;
    ptrdiff_t as;
    u16* d;
    ptrdiff_t ds;
    Weigher k;
    template <int N>
    void at(int y, int x) const {
        store<N>(d + y * ds + x, k(load<N>(a + y * as + x), _mm_setzero_si128()));
    }
};
struct BiOp {
    const u16 *a, *b;
    ptrdiff_t as, bs;
    u16* d;
    ptrdiff_t ds;
    Weigher k;
    template <int N>
    void at(int y, int x) const {
        store<N>(d + y * ds + x, k(load<N>(a + y * as + x), load<N>(b + y * bs + x)));
    }
};
struct AverageOp {
    const u16 *a, *b;
    ptrdiff_t as, bs;
    u16* d;
    ptrdiff_t ds;
    template <int N>
    void at(int y, int x) const {
        store<N>(d + y * ds + x, _mm_avg_epu16(load<N>(a + y * as + x), load<N>(b + y * bs + x)));
    }
};

void uni16(const u16* a, int aStep, u16* d, int dStep, int width, int height, const Weights& k) {
    rows16(width, height, UniOp{a, aStep, d, dStep, Weigher(k)});
}
void bi16(const u16* a, int aStep, const u16* b, int bStep, u16* d, int dStep, int width, int height,
          const Weights& k) {
    rows16(width, height, BiOp{a, b, aStep, bStep, d, dStep, Weigher(k)});
}
void average16(const u16* a, int aStep, const u16* b, int bStep, u16* d, int dStep, int width, int height) {
    rows16(width, height, AverageOp{a, b, aStep, bStep, d, dStep});
}

}  // namespace

void init_weight_sse41(Table& t) {
    t.uni_16u = &uni16;
    t.bi_16u = &bi16;
    t.average_16u = &average16;
}

}  // namespace kivvc::weight
