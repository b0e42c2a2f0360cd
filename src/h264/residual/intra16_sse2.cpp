// SSE2 H.264 intra predictors for 9..14-bit samples: vertical, horizontal,
// DC and plane of 16x16 and chroma blocks, vertical, horizontal and DC of
// 4x4 and 8x8 blocks. The plane prediction runs in 32-bit lanes (at 14 bits
// a + b(x - x0) + c(y - y0) reaches about 1.3 million) and clamps after a
// signed pack, which saturates beyond the 16-bit range the clamp then cuts.
#include <emmintrin.h>

#include "h264/residual/intra_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::intra {
namespace {

// A row of W samples (4, 8 or 16) in one or two registers.
struct Row {
    __m128i lo, hi;
};

template <int W>
Row load(const u16* s) {
    const auto* p = reinterpret_cast<const __m128i*>(s);
    if constexpr (W == 4) return {_mm_loadl_epi64(p), _mm_setzero_si128()};
    if constexpr (W == 8) return {_mm_loadu_si128(p), _mm_setzero_si128()};
    return {_mm_loadu_si128(p), _mm_loadu_si128(p + 1)};
}

template <int W>
void store(u16* d, Row r) {
    auto* p = reinterpret_cast<__m128i*>(d);
    if constexpr (W == 4) {
        _mm_storel_epi64(p, r.lo);
    } else {
        _mm_storeu_si128(p, r.lo);
        if constexpr (W == 16) _mm_storeu_si128(p + 1, r.hi);
    }
}

Row splat(int v) {
    const __m128i x = _mm_set1_epi16(static_cast<short>(v));
    return {x, x};
}

template <int W, int H = W>
void vertical(const u16* top, const u16*, u16* dst, int step, int) {
    const Row r = load<W>(top);
    for (int y = 0; y < H; ++y) store<W>(row(dst, step, y), r);
}

template <int W, int H = W>
void horizontal(const u16*, const u16* left, u16* dst, int step, int) {
    for (int y = 0; y < H; ++y) store<W>(row(dst, step, y), splat(left[y]));
}

template <int N, int Avail>
void dc(const u16* top, const u16* left, u16* dst, int step, int bitDepth) {
    const Row r = splat(dc_value<N>(top, left, Avail, bitDepth));
    for (int y = 0; y < N; ++y) store<N>(row(dst, step, y), r);
}

// Chroma DC, 8 wide and H high, band by band of four rows (see the 8-bit
// kernels for which groups each 4x4 block averages).
template <int H, int Avail>
void chroma_dc(const u16* top, const u16* left, u16* dst, int step, int bitDepth) {
    for (int band = 0; band < H / 4; ++band) {
        const u16* l = left + 4 * band;
        int q0, q1;
        if constexpr (Avail == 3) {
            q0 = band == 0 ? dc_value<4>(top, l, 3, bitDepth) : dc_value<4>(top, l, 2, bitDepth);
            q1 = band == 0 ? dc_value<4>(top + 4, l, 1, bitDepth) : dc_value<4>(top + 4, l, 3, bitDepth);
        } else {
            q0 = dc_value<4>(top, l, Avail, bitDepth);
            q1 = dc_value<4>(top + 4, l, Avail, bitDepth);
        }
        const Row r{_mm_unpacklo_epi64(_mm_set1_epi16(static_cast<short>(q0)), _mm_set1_epi16(static_cast<short>(q1))),
                    _mm_setzero_si128()};
        for (int y = 4 * band; y < 4 * band + 4; ++y) store<8>(row(dst, step, y), r);
    }
}

// W is 8 or 16.
template <int W, int H>
void plane(const u16* top, const u16* left, u16* dst, int step, int bitDepth) {
    constexpr int hw = W / 2, hh = H / 2, mx = W == 16 ? 5 : 34, my = H == 16 ? 5 : 34;
    int h = 0, v = 0;
    for (int k = 0; k < hw; ++k) h += (k + 1) * (top[hw + k] - top[hw - 2 - k]);
    for (int k = 0; k < hh; ++k) v += (k + 1) * (left[hh + k] - (hh - 2 - k < 0 ? top[-1] : left[hh - 2 - k]));
    const int a = 16 * (left[H - 1] + top[W - 1]);
    const int b = (mx * h + 32) >> 6, c = (my * v + 32) >> 6;
    // Row 0, four samples a register.
    __m128i acc[W / 4];
    for (int i = 0; i < W / 4; ++i) {
        const int x = 4 * i - (hw - 1), base = a + c * (-(hh - 1)) + 16;
        acc[i] = _mm_setr_epi32(base + b * x, base + b * (x + 1), base + b * (x + 2), base + b * (x + 3));
    }
    const __m128i cv = _mm_set1_epi32(c), maxv = _mm_set1_epi16(static_cast<short>((1 << bitDepth) - 1));
    const __m128i zero = _mm_setzero_si128();
    const auto clamp = [&](__m128i x, __m128i y) {
        const __m128i p = _mm_packs_epi32(_mm_srai_epi32(x, 5), _mm_srai_epi32(y, 5));
        return _mm_min_epi16(_mm_max_epi16(p, zero), maxv);
    };
    for (int y = 0; y < H; ++y) {
        Row r{clamp(acc[0], acc[1]), _mm_setzero_si128()};
        if constexpr (W == 16) r.hi = clamp(acc[2], acc[3]);
        store<W>(row(dst, step, y), r);
        for (__m128i& x : acc) x = _mm_add_epi32(x, cv);
    }
}

template <int H>
void fill_chroma(PredHbdFn (&pred)[4], PredHbdFn (&dcs)[4]) {
    dcs[0] = &chroma_dc<H, 0>;
    dcs[1] = &chroma_dc<H, 1>;
    dcs[2] = &chroma_dc<H, 2>;
    dcs[3] = &chroma_dc<H, 3>;
    pred[kChromaDc] = dcs[3];
    pred[kChromaHorizontal] = &horizontal<8, H>;
    pred[kChromaVertical] = &vertical<8, H>;
    pred[kChromaPlane] = &plane<8, H>;
}

// Vertical, horizontal and DC of a square N x N block (luma mode numbers).
template <int N, std::size_t K>
void fill_square(PredHbdFn (&pred)[K], PredHbdFn (&dcs)[4]) {
    dcs[0] = &dc<N, 0>;
    dcs[1] = &dc<N, 1>;
    dcs[2] = &dc<N, 2>;
    dcs[3] = &dc<N, 3>;
    pred[0] = &vertical<N>;
    pred[1] = &horizontal<N>;
    pred[2] = dcs[3];
}

}  // namespace

void init_intra16_sse2(Table& t) {
    fill_square<4>(t.pred4x4_hbd, t.dc4x4_hbd);
    fill_square<8>(t.pred8x8_hbd, t.dc8x8_hbd);
    fill_square<16>(t.pred16x16_hbd, t.dc16x16_hbd);
    t.pred16x16_hbd[3] = &plane<16, 16>;
    fill_chroma<8>(t.pred_chroma8x8_hbd, t.dc_chroma8x8_hbd);
    fill_chroma<16>(t.pred_chroma8x16_hbd, t.dc_chroma8x16_hbd);
}

}  // namespace kivvc::h264::intra
