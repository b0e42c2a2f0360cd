// SSE2 H.264 intra predictors: the 16x16 and chroma modes and the vertical,
// horizontal and DC 4x4 modes. Plane prediction runs in 16-bit lanes: with
// 8-bit samples |a + b(x - x0) + c(y - y0) + 16| stays below 20000.
#include <emmintrin.h>

#include <cstring>

#include "h264/residual/intra_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::intra {
namespace {

template <int N>
void store_row(u8* d, __m128i v) {
    if constexpr (N == 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), v);
    } else if constexpr (N == 8) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(d), v);
    } else {
        const int w = _mm_cvtsi128_si32(v);
        std::memcpy(d, &w, 4);
    }
}

template <int N>
__m128i load_row(const u8* s) {
    if constexpr (N == 16) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
    } else if constexpr (N == 8) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s));
    } else {
        int w;
        std::memcpy(&w, s, 4);
        return _mm_cvtsi32_si128(w);
    }
}

template <int N>
void vertical(const u8* top, const u8*, u8* dst, int step) {
    const __m128i v = load_row<N>(top);
    for (int y = 0; y < N; ++y) store_row<N>(row(dst, step, y), v);
}

template <int N>
void horizontal(const u8*, const u8* left, u8* dst, int step) {
    for (int y = 0; y < N; ++y) store_row<N>(row(dst, step, y), _mm_set1_epi8(static_cast<char>(left[y])));
}

// Sum of N (4, 8 or 16) samples.
template <int N>
int sum(const u8* s) {
    const __m128i v = _mm_sad_epu8(load_row<N>(s), _mm_setzero_si128());
    return _mm_cvtsi128_si32(v) + (N == 16 ? _mm_cvtsi128_si32(_mm_srli_si128(v, 8)) : 0);
}

template <int N, int Avail>
int dc_value(const u8* top, const u8* left) {
    constexpr int log2n = N == 16 ? 4 : N == 8 ? 3 : 2;
    if constexpr (Avail == 3) return (sum<N>(top) + sum<N>(left) + N) >> (log2n + 1);
    if constexpr (Avail == 1) return (sum<N>(top) + N / 2) >> log2n;
    if constexpr (Avail == 2) return (sum<N>(left) + N / 2) >> log2n;
    return 128;
}

template <int N, int Avail>
void dc(const u8* top, const u8* left, u8* dst, int step) {
    const __m128i v = _mm_set1_epi8(static_cast<char>(dc_value<N, Avail>(top, left)));
    for (int y = 0; y < N; ++y) store_row<N>(row(dst, step, y), v);
}

// Chroma DC: the four quarter values as two rows of 8 bytes.
template <int Avail>
void chroma_dc(const u8* top, const u8* left, u8* dst, int step) {
    int q[4];  // top-left, top-right, bottom-left, bottom-right
    if constexpr (Avail == 3) {
        q[0] = dc_value<4, 3>(top, left);
        q[1] = dc_value<4, 1>(top + 4, nullptr);
        q[2] = dc_value<4, 2>(nullptr, left + 4);
        q[3] = dc_value<4, 3>(top + 4, left + 4);
    } else if constexpr (Avail == 1) {
        q[0] = q[2] = dc_value<4, 1>(top, nullptr);
        q[1] = q[3] = dc_value<4, 1>(top + 4, nullptr);
    } else if constexpr (Avail == 2) {
        q[0] = q[1] = dc_value<4, 2>(nullptr, left);
        q[2] = q[3] = dc_value<4, 2>(nullptr, left + 4);
    } else {
        q[0] = q[1] = q[2] = q[3] = 128;
    }
    const __m128i upper = _mm_unpacklo_epi32(_mm_set1_epi8(static_cast<char>(q[0])),
                                             _mm_set1_epi8(static_cast<char>(q[1])));
    const __m128i lower = _mm_unpacklo_epi32(_mm_set1_epi8(static_cast<char>(q[2])),
                                             _mm_set1_epi8(static_cast<char>(q[3])));
    for (int y = 0; y < 8; ++y) store_row<8>(row(dst, step, y), y < 4 ? upper : lower);
}

template <int N>
void plane(const u8* top, const u8* left, u8* dst, int step) {
    constexpr int half = N / 2, m = N == 16 ? 5 : 34;
    int h = 0, v = 0;
    for (int k = 0; k < half; ++k) {
        const int l_lo = half - 2 - k < 0 ? top[-1] : left[half - 2 - k];
        h += (k + 1) * (top[half + k] - top[half - 2 - k]);
        v += (k + 1) * (left[half + k] - l_lo);
    }
    const int a = 16 * (left[N - 1] + top[N - 1]);
    const int b = (m * h + 32) >> 6, c = (m * v + 32) >> 6;
    const __m128i ramp_lo = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    const __m128i ramp_hi = _mm_setr_epi16(8, 9, 10, 11, 12, 13, 14, 15);
    const __m128i bv = _mm_set1_epi16(static_cast<short>(b));
    const __m128i base = _mm_set1_epi16(static_cast<short>(a - b * (half - 1) - c * (half - 1) + 16));
    __m128i lo = _mm_add_epi16(base, _mm_mullo_epi16(bv, ramp_lo));
    __m128i hi = _mm_add_epi16(base, _mm_mullo_epi16(bv, ramp_hi));
    const __m128i cv = _mm_set1_epi16(static_cast<short>(c));
    for (int y = 0; y < N; ++y) {
        store_row<N>(row(dst, step, y), _mm_packus_epi16(_mm_srai_epi16(lo, 5), _mm_srai_epi16(hi, 5)));
        lo = _mm_add_epi16(lo, cv);
        hi = _mm_add_epi16(hi, cv);
    }
}

}  // namespace

void init_intra_sse2(Table& t) {
    t.pred4x4[0] = &vertical<4>;
    t.pred4x4[1] = &horizontal<4>;
    t.pred4x4[2] = &dc<4, 3>;
    t.dc4x4[0] = &dc<4, 0>;
    t.dc4x4[1] = &dc<4, 1>;
    t.dc4x4[2] = &dc<4, 2>;
    t.dc4x4[3] = &dc<4, 3>;
    t.pred16x16[0] = &vertical<16>;
    t.pred16x16[1] = &horizontal<16>;
    t.pred16x16[2] = &dc<16, 3>;
    t.pred16x16[3] = &plane<16>;
    t.dc16x16[0] = &dc<16, 0>;
    t.dc16x16[1] = &dc<16, 1>;
    t.dc16x16[2] = &dc<16, 2>;
    t.dc16x16[3] = &dc<16, 3>;
    t.pred_chroma8x8[kChromaDc] = &chroma_dc<3>;
    t.pred_chroma8x8[kChromaHorizontal] = &horizontal<8>;
    t.pred_chroma8x8[kChromaVertical] = &vertical<8>;
    t.pred_chroma8x8[kChromaPlane] = &plane<8>;
    t.dc_chroma8x8[0] = &chroma_dc<0>;
    t.dc_chroma8x8[1] = &chroma_dc<1>;
    t.dc_chroma8x8[2] = &chroma_dc<2>;
    t.dc_chroma8x8[3] = &chroma_dc<3>;
}

}  // namespace kivvc::h264::intra
