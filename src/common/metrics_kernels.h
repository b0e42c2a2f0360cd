// Block metrics: kernel signatures and the family table.
#pragma once
#include <cstddef>
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::metrics {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using s16 = std::int16_t;
using s32 = std::int32_t;
using u32 = std::uint32_t;

// Half-sample positions as kernel-table indices: (mcType >> 2) & 3.
// 0 FF, 1 FH (vertical half), 2 HF (horizontal half), 3 HH.
inline constexpr int kPositions = 4;
inline constexpr int position_of(int mcType) { return (mcType >> 2) & 3; }

// Every kernel: steps in bytes (also for 16-bit samples); the reference is
// readable over the block plus one column (HF, HH) and one row (FH, HH).
// Metric predictions round up.

// Sum of abs or squared differences between cur and the prediction from ref.
using SadFn = s32 (*)(const u8* cur, int curStep, const u8* ref, int refStep);
using Sad16uFn = s32 (*)(const u16* cur, int curStep, const u16* ref, int refStep);
// Sum of squared differences to ((predF + predB + 1) >> 1).
using SqrDiffBFn = s32 (*)(const u8* cur, int curStep, const u8* fwd, int fwdStep, const u8* bwd, int bwdStep);
// diff = cur - pred; pred stored too when `pred` is not null. rc: 0 rounds
// the prediction up, 1 down.
using GetDiffFn = void (*)(const u8* cur, int curStep, const u8* ref, int refStep, s16* diff, int diffStep, s16* pred,
                           int predStep, int rc);
// diff = cur - ((predF + predB + 1) >> 1), both predictions with rc.
using GetDiffBFn = void (*)(const u8* cur, int curStep, const u8* fwd, int fwdStep, const u8* bwd, int bwdStep,
                            s16* diff, int diffStep, int rc);
// dst = a - b (16-bit samples: wraps modulo 2^16).
using SubFn = void (*)(const u8* a, int aStep, const u8* b, int bStep, s16* dst, int dstStep);
using Sub16uFn = void (*)(const u16* a, int aStep, const u16* b, int bStep, s16* dst, int dstStep);
// dst = a - b, returns sum of abs(a - b).
using SubSadFn = s32 (*)(const u8* a, int aStep, const u8* b, int bStep, s16* dst, int dstStep);

// Sum and sum of squares of a block, the latter modulo 2^32.
struct Moments {
    s32 sum;
    u32 squares;
};
using MomentsFn = Moments (*)(const u8* src, int step);
using Moments16sFn = Moments (*)(const s16* src, int step);

// Per 8x8 block of the residual d = cur - pred: squares[i] = sum of d^2,
// pred_sums[i] = sum of pred (blocks in raster order).
using VarMeanDiffFn = void (*)(const u8* cur, int curStep, const u8* ref, int refStep, s32* squares, s32* pred_sums);
using MeanAbsDevFn = s32 (*)(const u8* src, int step);
using FrameFieldFn = void (*)(const u8* src, int step, s32* frame, s32* field);
using FrameField16sFn = void (*)(const s16* src, int step, s32* frame, s32* field);
// SAD of each sub-block of 16x16, raster order (full position).
using BlocksFn = void (*)(const u8* cur, int curStep, const u8* ref, int refStep, u16* sads);
using Blocks16uFn = void (*)(const u16* cur, int curStep, const u16* ref, int refStep, u32* sads);
// 1 when the edge count exceeds countThreshold after some row, else 0.
using EdgesFn = u8 (*)(const u8* src, int step, int diffThreshold, int countThreshold);
using CountZerosFn = u32 (*)(const s16* coefs);
// Forward scan: count in 1..64. Inverse scan: last in 0..63.
using ScanFn = void (*)(const s16* src, s16* dst, int countOrLast, const std::int32_t* scan);

// GetDiff tables: index (mcType & 12) + (predictor != null); the four
// entries of a position hold one kernel. Bidirectional tables: index
// position(fwd) + 4 * position(bwd).
inline constexpr int kGetDiffEntries = 16;
inline constexpr int get_diff_index(int mcType, bool pred) { return (mcType & 12) + (pred ? 1 : 0); }
inline constexpr int bidir_index(int mcTypeF, int mcTypeB) { return position_of(mcTypeF) + 4 * position_of(mcTypeB); }

struct Table {
    SadFn ownvc_SAD16x16HP_8u32s_C1R[kPositions];
    SadFn ownvc_SAD16x8HP_8u32s_C1R[kPositions];
    SadFn ownvc_SAD8x8HP_8u32s_C1R[kPositions];
    Sad16uFn ownvc_SAD4x4HP_16u32s_C1R[kPositions];
    Sad16uFn ownvc_SAD8x8HP_16u32s_C1R[kPositions];
    Sad16uFn ownvc_SAD16x16HP_16u32s_C1R[kPositions];
    SadFn ownvc_SSD8x8HP_8u32s_C1R[kPositions];
    SadFn ownvc_SSD4x4HP_8u32s_C1R[kPositions];
    SadFn sad4x4;
    SadFn sqr_diff16x16[kPositions];
    SqrDiffBFn sqr_diff16x16_bidir[kGetDiffEntries];

    GetDiffFn GetDiff16x16FnTbl[kGetDiffEntries];
    GetDiffFn GetDiff16x8FnTbl[kGetDiffEntries];
    GetDiffFn GetDiff8x16FnTbl[kGetDiffEntries];
    GetDiffFn GetDiff8x8FnTbl[kGetDiffEntries];
    GetDiffFn GetDiff8x4FnTbl[kGetDiffEntries];
    GetDiffBFn GetDiff16x16BFnTbl[kGetDiffEntries];
    GetDiffBFn GetDiff16x8BFnTbl[kGetDiffEntries];
    GetDiffBFn GetDiff8x16BFnTbl[kGetDiffEntries];
    GetDiffBFn GetDiff8x8BFnTbl[kGetDiffEntries];
    GetDiffBFn GetDiff8x4BFnTbl[kGetDiffEntries];

    SubFn sub4x4, sub8x8, sub16x16;  // sub4x4 is also the 4x4 full-position GetDiff
    Sub16uFn sub4x4_16u, sub8x8_16u;
    SubSadFn sub_sad8x8;

    MomentsFn moments16x16, moments8x8;
    Moments16sFn moments8x8_16s;
    VarMeanDiffFn var_mean_diff16x16[kPositions];
    VarMeanDiffFn var_mean_diff16x8[kPositions];
    MeanAbsDevFn mean_abs_dev8x8, mean_abs_dev16x16;
    FrameFieldFn frame_field_sad;
    FrameField16sFn frame_field_sad_16s;
    BlocksFn sad_blocks8x8, sad_blocks4x4;
    Blocks16uFn sad_blocks8x8_16u, sad_blocks4x4_16u;
    EdgesFn edges_detect;
    CountZerosFn count_zeros;
    ScanFn scan_fwd, scan_inv;
};

void init_metrics(Table& t, CpuFlags cpu);
void init_metrics_sse2(Table& t);
void init_metrics_avx2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::metrics
