// Scalar references of the VC-1 kernels.
#include <cstddef>
#include <algorithm>
#include <cstdlib>
#include <type_traits>
#include <utility>

#include "core/arith.h"
#include "vc1/vc1_kernels.h"

namespace kivvc::vc1 {
namespace {

template <class T>
T* row_at(T* base, int step, int y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + std::ptrdiff_t(y) * step);
}

// ---- inverse transforms ----------------------------------------------------

// 8-point inverse before rounding.
void inverse8(const int* x, int* y) {
    const int t1 = 12 * (x[0] + x[4]), t2 = 12 * (x[0] - x[4]);
    const int t3 = 16 * x[2] + 6 * x[6], t4 = 6 * x[2] - 16 * x[6];
    const int e0 = t1 + t3, e1 = t2 + t4, e2 = t2 - t4, e3 = t1 - t3;
    const int o0 = 16 * x[1] + 15 * x[3] + 9 * x[5] + 4 * x[7];
    const int o1 = 15 * x[1] - 4 * x[3] - 16 * x[5] - 9 * x[7];
    const int o2 = 9 * x[1] - 16 * x[3] + 4 * x[5] + 15 * x[7];
    const int o3 = 4 * x[1] - 9 * x[3] + 15 * x[5] - 16 * x[7];
    y[0] = e0 + o0, y[1] = e1 + o1, y[2] = e2 + o2, y[3] = e3 + o3;
    y[4] = e3 - o3, y[5] = e2 - o2, y[6] = e1 - o1, y[7] = e0 - o0;
}

// 4-point inverse before rounding.
void inverse4(const int* x, int* y) {
    const int t0 = 17 * (x[0] + x[2]), t1 = 17 * (x[0] - x[2]);
    const int u0 = 22 * x[1] + 10 * x[3], u1 = 10 * x[1] - 22 * x[3];
    y[0] = t0 + u0, y[1] = t1 + u1, y[2] = t1 - u1, y[3] = t0 - u0;
}

template <int N>
void inverse(const int* x, int* y) {
    if constexpr (N == 8) inverse8(x, y);
    else inverse4(x, y);
}

// Second-stage rounding: rows 4..7 of an 8-point column transform get one more.
template <int H>
constexpr int column_bias(int r) {
    return 64 + (H == 8 && r >= 4 ? 1 : 0);
}

// W x H inverse reading only the NW x NH top-left coefficients. Row results
// are saturated to 16 bits (|result| <= 23040 for coefficients within
// +-2048, so this never acts on real data); from 16-bit row results the
// column results always fit: |y| <= 90 * 32768, >> 7 gives at most 23040.
template <int W, int H, int NW, int NH>
void transform(const s16* src, int ss, s16* dst, int ds) {
    s16 rows[H][W] = {};  // rows past NH transform zeros: (0 + 4) >> 3 = 0
    for (int r = 0; r < NH; ++r) {
        int x[W] = {}, y[W];
        const s16* s = row_at(src, ss, r);
        for (int c = 0; c < NW; ++c) x[c] = s[c];
        inverse<W>(x, y);
        for (int c = 0; c < W; ++c) rows[r][c] = sat_s16(shift_right_floor(y[c] + 4, 3));
    }
    for (int c = 0; c < W; ++c) {
        int x[H], y[H];
        for (int r = 0; r < H; ++r) x[r] = rows[r][c];
        inverse<H>(x, y);
        for (int r = 0; r < H; ++r) row_at(dst, ds, r)[c] = static_cast<s16>(shift_right_floor(y[r] + column_bias<H>(r), 7));
    }
}

// Only the DC coefficient: every output is the DC gain of both passes.
template <int W, int H>
void transform_dc(const s16* src, int ss, s16* dst, int ds) {
    constexpr int kRowGain = W == 8 ? 12 : 17, kColumnGain = H == 8 ? 12 : 17;
    const int t = sat_s16(shift_right_floor(kRowGain * src[0] + 4, 3));
    (void)ss;
    const s16 v = static_cast<s16>(shift_right_floor(kColumnGain * t + 64, 7));
    for (int r = 0; r < H; ++r) {
        s16* d = row_at(dst, ds, r);
        for (int c = 0; c < W; ++c) d[c] = v;
    }
}

// ---- overlap smoothing -------------------------------------------------------

// Smooths x0 x1 | x2 x3 across the edge between x1 and x2.
struct Smoothed {
    int y[4];
};
Smoothed smooth4(int x0, int x1, int x2, int x3, bool odd) {
    const int r0 = odd ? 3 : 4, r1 = odd ? 4 : 3;
    return {{shift_right_floor(7 * x0 + x3 + r0, 3), shift_right_floor(-x0 + 7 * x1 + x2 + x3 + r1, 3),
             shift_right_floor(x0 + x1 + 7 * x2 - x3 + r0, 3), shift_right_floor(x0 + 7 * x3 + r1, 3)}};
}

template <int Rounding>
bool line_is_odd(int i) {
    if constexpr (Rounding == kRoundAlternate) return (i & 1) != 0;
    return Rounding == kRoundOdd;
}

template <int Rounding>
void smooth_ver8(s16* left, int ls, s16* right, int rs, u8* dst, int ds) {
    for (int i = 0; i < 8; ++i) {
        s16* l = row_at(left, ls, i);
        s16* r = row_at(right, rs, i);
        u8* d = row_at(dst, ds, i);
        const Smoothed s = smooth4(l[0], l[1], r[0], r[1], line_is_odd<Rounding>(i));
        l[0] = wrap_s16(s.y[0]), l[1] = wrap_s16(s.y[1]), r[0] = wrap_s16(s.y[2]), r[1] = wrap_s16(s.y[3]);
        for (int k = 0; k < 4; ++k) d[k - 2] = clip_u8(s.y[k]);
    }
}

void smooth_hor8(const s16* upper, int us, const s16* lower, int ls, u8* dst, int ds) {
    const s16* u1 = row_at(upper, us, 1);
    const s16* l1 = row_at(lower, ls, 1);
    for (int c = 0; c < 8; ++c) {
        const Smoothed s = smooth4(upper[c], u1[c], lower[c], l1[c], (c & 1) != 0);
        for (int k = 0; k < 4; ++k) row_at(dst, ds, k - 2)[c] = clip_u8(s.y[k]);
    }
}

// ---- interpolation -----------------------------------------------------------

// ((4 - dx)(4 - dy)A + dx(4 - dy)B + (4 - dx)dy C + dx dy D + 8 - rc) >> 4;
// B, C, D are read only where their weight is non-zero.
template <int W, int H, int DX, int DY>
void bilinear(const u8* src, int ss, u8* dst, int ds, int rc) {
    for (int y = 0; y < H; ++y) {
        const u8* a = row_at(src, ss, y);
        const u8* c = row_at(src, ss, y + 1);
        u8* d = row_at(dst, ds, y);
        for (int x = 0; x < W; ++x) {
            int v = (4 - DX) * (4 - DY) * a[x] + 8 - rc;
            if constexpr (DX != 0) v += DX * (4 - DY) * a[x + 1];
            if constexpr (DY != 0) v += (4 - DX) * DY * c[x];
            if constexpr (DX != 0 && DY != 0) v += DX * DY * c[x + 1];
            d[x] = static_cast<u8>(v >> 4);
        }
    }
}

// Four-tap sum of the samples at offsets -1..+2 of `p` spaced `step` bytes.
template <class T>
int taps4(const T* p, std::ptrdiff_t step, const int* taps) {
    auto at = [&](int k) { return int(*reinterpret_cast<const T*>(reinterpret_cast<const u8*>(p) + k * step)); };
    return taps[0] * at(-1) + taps[1] * at(0) + taps[2] * at(1) + taps[3] * at(2);
}

// The bicubic prediction from its definition, for any size up to 16 x 16.
void bicubic_any(const u8* src, int ss, u8* dst, int ds, int w, int h, int dx, int dy, int rc) {
    const int* tx = BicubicFilterParams[dx];
    const int* ty = BicubicFilterParams[dy];
    const int sv = BicubicVertFilterShift[dx][dy], sh = BicubicHorizFilterShift[dx][dy];
    for (int y = 0; y < h; ++y) {
        const u8* s = row_at(src, ss, y);
        u8* d = row_at(dst, ds, y);
        if (dx == 0 && dy == 0) {
            for (int x = 0; x < w; ++x) d[x] = s[x];
        } else if (dx == 0) {
            for (int x = 0; x < w; ++x)
                d[x] = clip_u8(shift_right_floor(taps4(s + x, ss, ty) + (1 << (sv - 1)) - 1 + rc, sv));
        } else if (dy == 0) {
            for (int x = 0; x < w; ++x)
                d[x] = clip_u8(shift_right_floor(taps4(s + x, 1, tx) + (1 << (sh - 1)) - rc, sh));
        } else {
            // Vertical pass over columns -1 .. w + 1; fits in 16 bits: -255..2295.
            s16 t[16 + 3];
            for (int i = 0; i < w + 3; ++i)
                t[i] = static_cast<s16>(shift_right_floor(taps4(s + i - 1, ss, ty) + (1 << (sv - 1)) - 1 + rc, sv));
            for (int x = 0; x < w; ++x)
                d[x] = clip_u8(shift_right_floor(taps4(t + x + 1, sizeof(s16), tx) + 64 - rc, 7));
        }
    }
}

template <int W, int H, int DX, int DY>
void bicubic(const u8* src, int ss, u8* dst, int ds, int rc) {
    bicubic_any(src, ss, dst, ds, W, H, DX, DY, rc);
}

// ---- deblocking ------------------------------------------------------------

constexpr int sign(int v) { return (v > 0) - (v < 0); }

// Tests and filters one line; p at P5, `across` bytes between its samples.
// Returns false when a test leaves the line unfiltered.
bool filter_line(u8* p, std::ptrdiff_t across, int pquant) {
    auto P = [&](int k) -> u8& { return p[(k - 5) * across]; };
    const int clip = (P(4) - P(5)) / 2;
    if (clip == 0) return false;
    const int a0 = shift_right_floor(2 * (P(3) - P(6)) - 5 * (P(4) - P(5)) + 4, 3);
    if (std::abs(a0) >= pquant) return false;
    const int a1 = shift_right_floor(2 * (P(1) - P(4)) - 5 * (P(2) - P(3)) + 4, 3);
    const int a2 = shift_right_floor(2 * (P(5) - P(8)) - 5 * (P(6) - P(7)) + 4, 3);
    const int a3 = std::min(std::abs(a1), std::abs(a2));
    if (a3 >= std::abs(a0)) return false;
    int d = 5 * (sign(a0) * a3 - a0) / 8;
    if (sign(clip) == sign(d)) {
        if (std::abs(d) > std::abs(clip)) d = clip;
    } else {
        d = 0;
    }
    P(4) = static_cast<u8>(P(4) - d);
    P(5) = static_cast<u8>(P(5) + d);
    return true;
}

// Lines of 4 per segment; the third line decides for its segment.
template <int Lines, bool Vertical>
void deblock(u8* p, int step, int pquant, int flags) {
    const std::ptrdiff_t across = Vertical ? 1 : step, along = Vertical ? step : 1;
    for (int seg = 0; seg < Lines / 4; ++seg) {
        if (flags & (1 << seg)) continue;
        u8* l = p + seg * 4 * along;
        if (!filter_line(l + 2 * along, across, pquant)) continue;
        filter_line(l, across, pquant);
        filter_line(l + along, across, pquant);
        filter_line(l + 3 * along, across, pquant);
    }
}

// ---- inverse quantisation --------------------------------------------------

// c * q (+ sign(c) * (q >> 1)), kept to 16 bits; formed in unsigned
// arithmetic so that any q wraps instead of overflowing.
template <bool Nonuniform>
s16 dequantise(int c, int q) {
    std::uint32_t v = std::uint32_t(c) * std::uint32_t(q);
    if constexpr (Nonuniform) v += std::uint32_t(sign(c)) * std::uint32_t(q >> 1);
    return wrap_s16(int(v & 0xFFFF));
}

template <bool Intra, bool Nonuniform>
void quant_inv(s16* block, int step, int q, int w, int h, int* nzWidth, int* nzHeight) {
    if constexpr (Intra) w = h = 8;
    int lastColumn = Intra ? 0 : -1, lastRow = Intra ? 0 : -1;
    for (int r = 0; r < h; ++r) {
        s16* b = row_at(block, step, r);
        for (int c = (Intra && r == 0) ? 1 : 0; c < w; ++c) {
            b[c] = dequantise<Nonuniform>(b[c], q);
            if (b[c] != 0) {
                lastColumn = std::max(lastColumn, c);
                lastRow = r;
            }
        }
    }
    *nzWidth = lastColumn + 1;
    *nzHeight = lastRow + 1;
}

// ---- range mapping -----------------------------------------------------------

void range_map(const u8* src, int ss, u8* dst, int ds, int width, int height, int r) {
    for (int y = 0; y < height; ++y) {
        const u8* s = row_at(src, ss, y);
        u8* d = row_at(dst, ds, y);
        for (int x = 0; x < width; ++x) d[x] = clip_u8(shift_right_floor((s[x] - 128) * (r + 9) + 4, 3) + 128);
    }
}

// ---- table filling -----------------------------------------------------------

template <int W, int H, std::size_t... I>
void fill_bilinear(InterpFn (&t)[16], std::index_sequence<I...>) {
    ((t[I] = ((I >> 2) | I) & 1 ? &bilinear<W, H, int(I >> 2), int(I & 3)> : nullptr), ...);
}

template <int W, int H, std::size_t... I>
void fill_bicubic(InterpFn (&t)[16], std::index_sequence<I...>) {
    ((t[I] = I == 0 ? nullptr : &bicubic<W, H, int(I >> 2), int(I & 3)>), ...);
}

}  // namespace

void init_vc1(Table& t, CpuFlags cpu) {
    t.transform8x8[kFormDc] = &transform_dc<8, 8>;
    t.transform8x8[kForm2x2] = &transform<8, 8, 2, 2>;
    t.transform8x8[kForm4x4] = &transform<8, 8, 4, 4>;
    t.transform8x8[3] = &transform<8, 8, 8, 8>;
    t.transform4x4[kFormDc] = &transform_dc<4, 4>;
    t.transform4x4[kForm2x2] = &transform<4, 4, 2, 2>;
    t.transform4x4[2] = &transform<4, 4, 4, 4>;
    t.transform8x4[kFormDc] = &transform_dc<8, 4>;
    t.transform8x4[1] = &transform<8, 4, 8, 4>;
    t.transform4x8[kFormDc] = &transform_dc<4, 8>;
    t.transform4x8[1] = &transform<4, 8, 4, 8>;

    t.smooth_ver[kRoundAlternate] = &smooth_ver8<kRoundAlternate>;
    t.smooth_ver[kRoundEven] = &smooth_ver8<kRoundEven>;
    t.smooth_ver[kRoundOdd] = &smooth_ver8<kRoundOdd>;
    t.smooth_hor = &smooth_hor8;

    const auto positions = std::make_index_sequence<16>{};
    fill_bilinear<4, 4>(t.bilinear[kBilinear4x4], positions);
    fill_bilinear<8, 4>(t.bilinear[kBilinear8x4], positions);
    fill_bilinear<8, 8>(t.bilinear[kBilinear8x8], positions);
    fill_bilinear<16, 16>(t.bilinear[kBilinear16x16], positions);
    fill_bicubic<8, 8>(t.bicubic[0], positions);
    fill_bicubic<16, 8>(t.bicubic[1], positions);
    fill_bicubic<16, 16>(t.bicubic[2], positions);
    t.bicubic_any = &bicubic_any;

    t.deblock_luma_hor = &deblock<16, false>;
    t.deblock_luma_ver = &deblock<16, true>;
    t.deblock_chroma_hor = &deblock<8, false>;
    t.deblock_chroma_ver = &deblock<8, true>;

    t.quant_intra_uniform = &quant_inv<true, false>;
    t.quant_intra_nonuniform = &quant_inv<true, true>;
    t.quant_inter_uniform = &quant_inv<false, false>;
    t.quant_inter_nonuniform = &quant_inv<false, true>;

    t.range_map = &range_map;

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_vc1_sse2(t);
    if (!(cpu & kAvx2)) return;
    init_vc1_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_vc1>(); }

}  // namespace kivvc::vc1
