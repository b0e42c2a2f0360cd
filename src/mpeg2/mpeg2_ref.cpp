// Scalar references of the MPEG-1/2 kernels and the table fill.
#include <cstring>
#include <utility>

#include "core/arith.h"
#include "mpeg2/mpeg2_kernels.h"
#include "mpeg2/dequant.h"
#include "mpeg2/mc_fill.h"

namespace kivvc::mpeg2 {
namespace {

// ---- inverse DCT ----------------------------------------------------------

// The sums wrap in 32 bits, as the transform is defined; unsigned arithmetic
// keeps that free of undefined behaviour.
using u32 = std::uint32_t;
constexpr u32 kCos[8] = {65536, 64276, 60547, 54491, 46340, 36409, 25079, 12785};

// One 8-point butterfly: x[0..7] in, the eight sums out in row order.
void butterfly(const s32 (&x)[8], s32 (&out)[8]) {
    auto m = [](s32 v, int k) { return static_cast<u32>(v) * kCos[k]; };
    const u32 a0 = (static_cast<u32>(x[0]) + static_cast<u32>(x[4])) * kCos[4];
    const u32 a1 = (static_cast<u32>(x[0]) - static_cast<u32>(x[4])) * kCos[4];
    const u32 b0 = m(x[2], 2) + m(x[6], 6);
    const u32 b1 = m(x[2], 6) - m(x[6], 2);
    const u32 e[4] = {a0 + b0, a1 + b1, a1 - b1, a0 - b0};
    const u32 o[4] = {
        m(x[1], 1) + m(x[3], 3) + m(x[5], 5) + m(x[7], 7), m(x[1], 3) - m(x[3], 7) - m(x[5], 1) - m(x[7], 5),
        m(x[1], 5) - m(x[3], 1) + m(x[5], 7) + m(x[7], 3), m(x[1], 7) - m(x[3], 5) + m(x[5], 3) - m(x[7], 1)};
    for (int i = 0; i < 4; ++i) {
        out[i] = static_cast<s32>(e[i] + o[i]);
        out[7 - i] = static_cast<s32>(e[i] - o[i]);
    }
}

// (v + bias) >> shift with the addition wrapping in 32 bits.
constexpr s32 round_shift(s32 v, u32 bias, int shift) { return static_cast<s32>(static_cast<u32>(v) + bias) >> shift; }

// The full transform into out[r * 8 + n], before limiting.
void idct_values(const s16* src, s32 (&out)[64]) {
    s32 t[8][8];  // t[n][c]: pass-one results, within -32768..32767
    for (int c = 0; c < 8; ++c) {
        s32 x[8], r[8];
        for (int k = 0; k < 8; ++k) x[k] = src[8 * k + c];
        butterfly(x, r);
        for (int n = 0; n < 8; ++n) t[n][c] = round_shift(r[n], 32768, 16);
    }
    for (int n = 0; n < 8; ++n) {
        s32 r[8];
        butterfly(t[n], r);
        for (int row = 0; row < 8; ++row) out[row * 8 + n] = round_shift(r[row], 163840, 18);
    }
}

template <class T>
T* row_at(T* base, int step, int r) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(base) + std::ptrdiff_t(r) * step);
}

s16 limit16(s32 v) { return static_cast<s16>(clip3(-256, 255, v)); }

template <class T>
T limit(s32 v) {
    if constexpr (sizeof(T) == 1) {
        return clip_u8(v);
    } else {
        return limit16(v);
    }
}

template <class T>
void idct_full(const s16* src, T* dst, int step) {
    s32 v[64];
    idct_values(src, v);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c) row_at(dst, step, r)[c] = limit<T>(v[r * 8 + c]);
}

// Only the top-left 4x4 is read; the rest counts as zero.
template <class T>
void idct_reduced(const s16* src, T* dst, int step) {
    s16 quadrant[64] = {};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) quadrant[8 * r + c] = src[8 * r + c];
    idct_full(quadrant, dst, step);
}

template <class T>
void idct_dc(const s16* src, T* dst, int step) {
    const T v = limit<T>(src[0] / 8);
    for (int r = 0; r < 8; ++r)
        for (int c = 0; c < 8; ++c) row_at(dst, step, r)[c] = v;
}

void idct_zero(const s16*, s16* dst, int step) {
    for (int r = 0; r < 8; ++r) std::memset(row_at(dst, step, r), 0, 16);
}

template <class T>
void interleave(const s16* a, const s16* b, T* dst, int step) {
    for (int r = 0; r < 8; ++r) {
        T* d = row_at(dst, step, r);
        for (int c = 0; c < 8; ++c) {
            d[2 * c] = limit<T>(a[8 * r + c]);
            d[2 * c + 1] = limit<T>(b[8 * r + c]);
        }
    }
}

// ---- dequantisation ---------------------------------------------------------

template <bool Intra>
void quant_inv(s16* block, s32 q, const s16* matrix) {
    for (int i = Intra ? 1 : 0; i < 64; ++i)
        block[i] = static_cast<s16>(dequantise_mpeg2<Intra>(block[i], matrix ? matrix[i] : 16, q));
    mismatch_control(block);
}

// ---- motion compensation ---------------------------------------------------
// Pos: 0 FF, 1 FH, 2 HF, 3 HH. Right: distance of the horizontal neighbour.
template <int Pos, int Right>
int predict(const u8* s, int step, int x, int rc) {
    if constexpr (Pos == 0) {
        return s[x];
    } else if constexpr (Pos == 1) {
        return (s[x] + s[x + step] + 1 - rc) >> 1;
    } else if constexpr (Pos == 2) {
        return (s[x] + s[x + Right] + 1 - rc) >> 1;
    } else {
        return (s[x] + s[x + Right] + s[x + step] + s[x + step + Right] + 2 - rc) >> 2;
    }
}

const s16* res_row(const s16* res, int step, int y) {
    return reinterpret_cast<const s16*>(reinterpret_cast<const std::uint8_t*>(res) + std::ptrdiff_t(y) * step);
}

template <int W, int Pos, int Right>
void mc_rows(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int height, int rc) {
    for (int y = 0; y < height; ++y, ref += refStep, dst += dstStep) {
        const s16* r = res_row(res, resStep, y);
        for (int x = 0; x < W; ++x) dst[x] = clip_u8(predict<Pos, Right>(ref, refStep, x, rc) + r[x]);
    }
}

template <int W, int PosF, int PosB, int Right>
void mc_b_rows(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep, u8* dst,
               int dstStep, int height, int rc) {
    for (int y = 0; y < height; ++y, refF += refFStep, refB += refBStep, dst += dstStep) {
        const s16* r = res_row(res, resStep, y);
        for (int x = 0; x < W; ++x) {
            const int p =
                avg_round_up(predict<PosF, Right>(refF, refFStep, x, rc), predict<PosB, Right>(refB, refBStep, x, rc));
            dst[x] = clip_u8(p + r[x]);
        }
    }
}

template <int W, int Right, int Pos, int Rc>
void mc(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int height) {
    mc_rows<W, Pos, Right>(ref, refStep, res, resStep, dst, dstStep, height, Rc);
}
template <int W, int Right, int PosF, int PosB, int Rc>
void mc_b(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep, u8* dst, int dstStep,
          int height) {
    mc_b_rows<W, PosF, PosB, Right>(refF, refFStep, refB, refBStep, res, resStep, dst, dstStep, height, Rc);
}
template <int W, int H, int Pos>
void mc_small(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int rc) {
    mc_rows<W, Pos, 1>(ref, refStep, res, resStep, dst, dstStep, H, rc & 1);
}
template <int W, int H, int PosF, int PosB>
void mc_small_b(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep, u8* dst,
                int dstStep, int rc) {
    mc_b_rows<W, PosF, PosB, 1>(refF, refFStep, refB, refBStep, res, resStep, dst, dstStep, H, rc & 1);
}

template <int W, int Right>
struct McK {
    template <int Pos, int Rc>
    static constexpr McFn fn = &mc<W, Right, Pos, Rc>;
    template <int PosF, int PosB, int Rc>
    static constexpr McBFn fn_b = &mc_b<W, Right, PosF, PosB, Rc>;
};
template <int W, int H>
struct McSmallK {
    template <int Pos>
    static constexpr McSmallFn fn = &mc_small<W, H, Pos>;
    template <int PosF, int PosB>
    static constexpr McSmallBFn fn_b = &mc_small_b<W, H, PosF, PosB>;
};

}  // namespace

void init_mpeg2(Table& t, CpuFlags cpu) {
    t.idct16s[kIdctZero] = &idct_zero;
    t.idct16s[kIdctDc] = &idct_dc<s16>;
    t.idct16s[kIdctReduced] = &idct_reduced<s16>;
    t.idct16s[kIdctFull] = &idct_full<s16>;
    t.idct8u[kIdctZero] = &idct_dc<u8>;
    t.idct8u[kIdctDc] = &idct_dc<u8>;
    t.idct8u[kIdctReduced] = &idct_reduced<u8>;
    t.idct8u[kIdctFull] = &idct_full<u8>;
    t.interleave16s = &interleave<s16>;
    t.interleave8u = &interleave<u8>;
    t.quant_inv_intra = &quant_inv<true>;
    t.quant_inv = &quant_inv<false>;

    fill_mc_tables<McK<16, 1>>(t.MC16xHFunctionTable_mmp, t.MC16xHBFunctionTable_mmp);
    fill_mc_tables<McK<16, 2>>(t.MC16xHUVFunctionTable_mmp, t.MC16xHUVBFunctionTable_mmp);
    fill_mc_tables<McK<8, 1>>(t.MC8xHFunctionTable_mmp, t.MC8xHBFunctionTable_mmp);
    fill_mc_small_tables<McSmallK<2, 2>>(t.MC2x2FnTbl, t.MC2x2BFnTbl);
    fill_mc_small_tables<McSmallK<2, 4>>(t.MC2x4FnTbl, t.MC2x4BFnTbl);
    fill_mc_small_tables<McSmallK<4, 2>>(t.MC4x2FnTbl, t.MC4x2BFnTbl);
    fill_mc_small_tables<McSmallK<4, 4>>(t.MC4x4FnTbl, t.MC4x4BFnTbl);
    fill_mc_small_tables<McSmallK<4, 8>>(t.MC4x8FnTbl, t.MC4x8BFnTbl);

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_mpeg2_sse2(t);
    if (!(cpu & kAvx2)) return;
    init_mpeg2_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_mpeg2>(); }

}  // namespace kivvc::mpeg2
