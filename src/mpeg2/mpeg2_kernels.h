// MPEG-1/2 kernels: inverse DCT, in-place dequantisation, motion
// compensation. Signatures and the family table.
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::mpeg2 {

using u8 = std::uint8_t;
using s16 = std::int16_t;
using s32 = std::int32_t;

// ---- inverse DCT ----------------------------------------------------------
// The input is the coefficient block transposed (row k of the array holds
// horizontal frequency k). Output rows at dst + r * dstStep (bytes).
// Paths: zero (16-bit output, negative count), DC only (count 0), reduced
// (count 1..9: only the top-left 4x4 is read), full.
enum IdctPath : int { kIdctZero = 0, kIdctDc = 1, kIdctReduced = 2, kIdctFull = 3, kIdctPaths = 4 };
// Limited to -256..255.
using Idct16Fn = void (*)(const s16* src, s16* dst, int dstStep);
// Limited to 0..255.
using Idct8Fn = void (*)(const s16* src, u8* dst, int dstStep);
// Two 8x8 blocks of 16-bit values (contiguous, already limited to
// -256..255) interleaved into one destination: a to even, b to odd elements.
using Interleave16Fn = void (*)(const s16* a, const s16* b, s16* dst, int dstStep);
// Same, limited to 0..255 into bytes.
using Interleave8Fn = void (*)(const s16* a, const s16* b, u8* dst, int dstStep);

// ---- in-place MPEG-2 dequantisation ---------------------------------------
// c = (2 * level + sign(level)) * W * q / 32 (non-intra) or 2 * level * W * q
// / 32 (intra, coefficient 0 kept), truncated toward zero, saturated to
// -2048..2047, then the mismatch control over all 64 values. q in 1..
// (any 32-bit value: products are formed in 64 bits).
using QuantInvFn = void (*)(s16* block, s32 q, const s16* matrix);

// ---- motion compensation ------------------------------------------------------
// dst = sat(p(ref) + res), res rows at res + y * resStep bytes. The 16- and
// 8-wide kernels run `height` rows; the small-block kernels have a fixed
// shape and take the rounding control.
using McFn = void (*)(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int height);
using McBFn = void (*)(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep, u8* dst,
                       int dstStep, int height);
using McSmallFn = void (*)(const u8* ref, int refStep, const s16* res, int resStep, u8* dst, int dstStep, int rc);
using McSmallBFn = void (*)(const u8* refF, int refFStep, const u8* refB, int refBStep, const s16* res, int resStep,
                            u8* dst, int dstStep, int rc);

// Kernel positions: 0 FF, 1 FH (vertical half), 2 HF (horizontal half), 3 HH.
// Table indices are computed in mpeg2/mc.cpp.

// The flat weighting matrix (16 everywhere) used when a non-intra MPEG-2
// call has none.
extern const s16 Qmatrix[64];

struct Table {
    Idct16Fn idct16s[kIdctPaths];
    Idct8Fn idct8u[kIdctPaths];  // the zero entry is the DC-only kernel
    Interleave16Fn interleave16s;
    Interleave8Fn interleave8u;
    QuantInvFn quant_inv_intra;
    QuantInvFn quant_inv;

    McFn MC16xHFunctionTable_mmp[8];
    McFn MC16xHUVFunctionTable_mmp[8];
    McFn MC8xHFunctionTable_mmp[8];
    McBFn MC16xHBFunctionTable_mmp[32];
    McBFn MC16xHUVBFunctionTable_mmp[32];
    McBFn MC8xHBFunctionTable_mmp[32];
    McSmallFn MC2x2FnTbl[16];
    McSmallFn MC2x4FnTbl[16];
    McSmallFn MC4x2FnTbl[16];
    McSmallFn MC4x4FnTbl[16];
    McSmallFn MC4x8FnTbl[16];
    McSmallBFn MC2x2BFnTbl[16];
    McSmallBFn MC2x4BFnTbl[16];
    McSmallBFn MC4x2BFnTbl[16];
    McSmallBFn MC4x4BFnTbl[16];
    McSmallBFn MC4x8BFnTbl[16];
};

void init_mpeg2(Table& t, CpuFlags cpu);
void init_mpeg2_sse2(Table& t);
void init_mpeg2_avx2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::mpeg2
