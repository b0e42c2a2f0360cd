// SSE2 H.264 intra predictors: the 16x16 and chroma (4:2:0 and 4:2:2) modes
// and the vertical, horizontal and DC modes of 4x4 and 8x8 blocks.
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

template <int N, int H = N>
void vertical(const u8* top, const u8*, u8* dst, int step) {
    const __m128i v = load_row<N>(top);
    for (int y = 0; y < H; ++y) store_row<N>(row(dst, step, y), v);
}

template <int N, int H = N>
void horizontal(const u8*, const u8* left, u8* dst, int step) {
    for (int y = 0; y < H; ++y) store_row<N>(row(dst, step, y), _mm_set1_epi8(static_cast<char>(left[y])));
}

// Sum of N (4, 8 or 16) samples.
template <int N>
int sum(const u8* s) {
    const __m128i v = _mm_sad_epu8(load_row<N>(s), _mm_setzero_si128());
    return _mm_cvtsi128_si32(v) + (N == 16 ? _mm_cvtsi128_si32(_mm_srli_si128(v, 8)) : 0);
}

template <int N, int Avail>
int dc_of(const u8* top, const u8* left) {
    constexpr int log2n = N == 16 ? 4 : N == 8 ? 3 : 2;
    if constexpr (Avail == 3) return (sum<N>(top) + sum<N>(left) + N) >> (log2n + 1);
    if constexpr (Avail == 1) return (sum<N>(top) + N / 2) >> log2n;
    if constexpr (Avail == 2) return (sum<N>(left) + N / 2) >> log2n;
    return 128;
}

template <int N, int Avail>
void dc(const u8* top, const u8* left, u8* dst, int step) {
    const __m128i v = _mm_set1_epi8(static_cast<char>(dc_of<N, Avail>(top, left)));
    for (int y = 0; y < N; ++y) store_row<N>(row(dst, step, y), v);
}

// Chroma DC, 8 wide and H high: each band of four rows is two 4x4 values.
// The first band's left block and the other bands' right blocks average both
// neighbour groups; the others prefer the group beside them.
template <int H, int Avail>
void chroma_dc(const u8* top, const u8* left, u8* dst, int step) {
    for (int band = 0; band < H / 4; ++band) {
        const u8* l = left + 4 * band;
        int q0 = 128, q1 = 128;
        if constexpr (Avail == 3) {
            q0 = band == 0 ? dc_of<4, 3>(top, l) : dc_of<4, 2>(nullptr, l);
            q1 = band == 0 ? dc_of<4, 1>(top + 4, nullptr) : dc_of<4, 3>(top + 4, l);
        } else if constexpr (Avail == 1) {
            q0 = dc_of<4, 1>(top, nullptr);
            q1 = dc_of<4, 1>(top + 4, nullptr);
        } else if constexpr (Avail == 2) {
            q0 = q1 = dc_of<4, 2>(nullptr, l);
        }
        const __m128i v = _mm_unpacklo_epi32(_mm_set1_epi8(static_cast<char>(q0)), _mm_set1_epi8(static_cast<char>(q1)));
        for (int y = 4 * band; y < 4 * band + 4; ++y) store_row<8>(row(dst, step, y), v);
    }
}

// Plane prediction of an N x H block in 16-bit lanes: with 8-bit samples
// |a + b(x - x0) + c(y - y0) + 16| stays below 20000 for every shape.
template <int N, int H = N>
void plane(const u8* top, const u8* left, u8* dst, int step) {
    constexpr int hw = N / 2, hh = H / 2, mx = N == 16 ? 5 : 34, my = H == 16 ? 5 : 34;
    int h = 0, v = 0;
    for (int k = 0; k < hw; ++k) h += (k + 1) * (top[hw + k] - top[hw - 2 - k]);
    for (int k = 0; k < hh; ++k) v += (k + 1) * (left[hh + k] - (hh - 2 - k < 0 ? top[-1] : left[hh - 2 - k]));
    const int a = 16 * (left[H - 1] + top[N - 1]);
    const int b = (mx * h + 32) >> 6, c = (my * v + 32) >> 6;
    const __m128i ramp_lo = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    const __m128i ramp_hi = _mm_setr_epi16(8, 9, 10, 11, 12, 13, 14, 15);
    const __m128i bv = _mm_set1_epi16(static_cast<short>(b));
    const __m128i base = _mm_set1_epi16(static_cast<short>(a - b * (hw - 1) - c * (hh - 1) + 16));
    __m128i lo = _mm_add_epi16(base, _mm_mullo_epi16(bv, ramp_lo));
    __m128i hi = _mm_add_epi16(base, _mm_mullo_epi16(bv, ramp_hi));
    const __m128i cv = _mm_set1_epi16(static_cast<short>(c));
    for (int y = 0; y < H; ++y) {
        store_row<N>(row(dst, step, y), _mm_packus_epi16(_mm_srai_epi16(lo, 5), _mm_srai_epi16(hi, 5)));
        lo = _mm_add_epi16(lo, cv);
        hi = _mm_add_epi16(hi, cv);
    }
}

template <int H>
void fill_chroma(PredFn (&pred)[4], PredFn (&dc)[4]) {
    dc[0] = &chroma_dc<H, 0>;
    dc[1] = &chroma_dc<H, 1>;
    dc[2] = &chroma_dc<H, 2>;
    dc[3] = &chroma_dc<H, 3>;
    pred[kChromaDc] = dc[3];
    pred[kChromaHorizontal] = &horizontal<8, H>;
    pred[kChromaVertical] = &vertical<8, H>;
    pred[kChromaPlane] = &plane<8, H>;
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
    fill_chroma<8>(t.pred_chroma8x8, t.dc_chroma8x8);
    fill_chroma<16>(t.pred_chroma8x16, t.dc_chroma8x16);
    t.pred8x8[0] = &vertical<8>;
    t.pred8x8[1] = &horizontal<8>;
    t.pred8x8[2] = &dc<8, 3>;
    t.dc8x8[0] = &dc<8, 0>;
    t.dc8x8[1] = &dc<8, 1>;
    t.dc8x8[2] = &dc<8, 2>;
    t.dc8x8[3] = &dc<8, 3>;
}

}  // namespace kivvc::h264::intra
