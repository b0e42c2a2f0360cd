// VC-1 inverse transforms, overlap smoothing, quarter-sample interpolation,
// deblocking, inverse quantisation and range mapping: kernel signatures, the
// filter tables and the family table.
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::vc1 {

using u8 = std::uint8_t;
using s16 = std::int16_t;

// Inverse transform of one block. Reads every coefficient it uses before it
// writes, so dst may be src with the same step (the in-place functions).
// Steps in bytes. Row results are saturated to 16 bits (they only reach it
// for coefficients beyond +-2912); the outputs then always fit in 16 bits.
using TransformFn = void (*)(const s16* src, int srcStep, s16* dst, int dstStep);

// Overlap smoothing of 8 lines across a vertical edge. left points at the
// second-last column of the left block, right at the first column of the
// right block, dst at the picture sample of the right block's first column;
// writes dst columns -2..1 and the smoothed values back into both blocks.
using SmoothVerFn = void (*)(s16* left, int leftStep, s16* right, int rightStep, u8* dst, int dstStep);
// Overlap smoothing of 8 columns across a horizontal edge (upper at the
// upper block's second-last row); writes dst rows -2..1 only.
using SmoothHorFn = void (*)(const s16* upper, int upperStep, const s16* lower, int lowerStep, u8* dst,
                             int dstStep);

// Quarter-sample prediction of a fixed-size block at a fixed position; rc is
// the rounding control (0 or 1). Bilinear kernels read one column past the
// block when dx != 0 and one row when dy != 0; bicubic kernels one column
// before and two after when dx != 0, likewise rows when dy != 0.
using InterpFn = void (*)(const u8* src, int srcStep, u8* dst, int dstStep, int rc);
// Bicubic prediction of any w x h block (1..16 each) at any position 0..3.
using InterpAnyFn = void (*)(const u8* src, int srcStep, u8* dst, int dstStep, int w, int h, int dx, int dy,
                             int rc);

// In-loop deblocking of one edge; p is the first sample after the edge,
// flags the segment-disable bits (0..15). May rewrite unchanged samples of
// the four lines on either side with their own values.
using DeblockFn = void (*)(u8* p, int step, int pquant, int flags);

// Inverse quantisation in place of a w x h block with double quantiser q;
// stores the non-zero region. Intra kernels work on 8x8 and ignore w and h.
using QuantInvFn = void (*)(s16* block, int step, int q, int w, int h, int* nzWidth, int* nzHeight);

// Range mapping of a width x height region with range-map value r (0..7).
using RangeMapFn = void (*)(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height, int r);

// Transform shortcut entries by non-zero region.
enum TransformForm { kFormDc = 0, kForm2x2 = 1, kForm4x4 = 2 };
// Rounding patterns of the vertical-edge smoothing kernels: alternating from
// an even line, every line even, every line odd.
enum SmoothRounding { kRoundAlternate = 0, kRoundEven = 1, kRoundOdd = 2 };
// Bilinear block sizes.
enum BilinearSize { kBilinear4x4 = 0, kBilinear8x4 = 1, kBilinear8x8 = 2, kBilinear16x16 = 3 };

// Bicubic taps by fraction (row 0 unused), at offsets -1, 0, +1, +2.
inline constexpr int BicubicFilterParams[4][4] = {
    {0, 0, 0, 0},
    {-4, 53, 18, -3},
    {-1, 9, 9, -1},
    {-3, 18, 53, -4},
};
// Shifts of the two passes, indexed [dx][dy]; 0 where the pass does not run.
inline constexpr int BicubicVertFilterShift[4][4] = {
    {0, 6, 4, 6},
    {0, 5, 3, 5},
    {0, 3, 1, 3},
    {0, 5, 3, 5},
};
inline constexpr int BicubicHorizFilterShift[4][4] = {
    {0, 0, 0, 0},
    {6, 7, 7, 7},
    {4, 7, 7, 7},
    {6, 7, 7, 7},
};

struct Table {
    TransformFn transform8x8[4];  // DC, 2x2, 4x4, full
    TransformFn transform4x4[3];  // DC, 2x2, full
    TransformFn transform8x4[2];  // DC, full
    TransformFn transform4x8[2];  // DC, full
    SmoothVerFn smooth_ver[3];    // by SmoothRounding
    SmoothHorFn smooth_hor;
    InterpFn bilinear[4][16];     // by BilinearSize, then 4 dx + dy; odd positions only
    InterpFn bicubic[3][16];      // 8x8, 16x8, 16x16, then 4 dx + dy; entry 0 unused (copy)
    InterpAnyFn bicubic_any;
    DeblockFn deblock_luma_hor, deblock_luma_ver, deblock_chroma_hor, deblock_chroma_ver;
    QuantInvFn quant_intra_uniform, quant_intra_nonuniform, quant_inter_uniform, quant_inter_nonuniform;
    RangeMapFn range_map;
};

void init_vc1(Table& t, CpuFlags cpu);
void init_vc1_sse2(Table& t);
void init_vc1_avx2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::vc1
