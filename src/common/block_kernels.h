// Block copy, average and add: kernel signatures and the family table.
#pragma once
#include <cstdint>
#include <utility>

#include "core/cpu.h"

namespace kivvc::block {

using u8 = std::uint8_t;
using s16 = std::int16_t;

// dst <- p(src), or dst <- (dst + p(src) + 1) >> 1 for the interpolate-average
// kernels. Preconditions: src readable over the block plus one column (HF, HH)
// and one row (FH, HH); steps in bytes.
using CopyFn = void (*)(const u8* src, int srcStep, u8* dst, int dstStep);
// dst <- (a + b + 1) >> 1; dst may alias a or b.
using AverageFn = void (*)(const u8* a, int aStep, const u8* b, int bStep, u8* dst, int dstStep);
// dst <- sat(wrap16(p(ref) + r)); residual step in bytes.
using AddHpFn = void (*)(const s16* res, int resStep, const u8* ref, int refStep, u8* dst, int dstStep);
// dst <- sat(wrap16(dst + r)).
using AddFn = void (*)(const s16* res, int resStep, u8* dst, int dstStep);
// dst <- sat(wrap16(dst + value)).
using AddConstFn = void (*)(s16 value, u8* dst, int dstStep);

// Half-sample tables are indexed (acc & 3) * 2 + (rounding & 1):
// full, full, HF0, HF1, FH0, FH1, HH0, HH1.
inline constexpr int kHpEntries = 8;
inline constexpr int hp_index(int acc, int rounding) { return (acc & 3) * 2 + (rounding & 1); }

// Fills a half-sample table from a kernel family K<Acc, Round>::fn, both
// full-position entries taking the rounding-0 kernel. Internal linkage, so
// each file (whatever its target flags) keeps its own copy.
namespace {
template <template <int, int> class K, class Fn, std::size_t... I>
void fill_hp_table(Fn (&t)[kHpEntries], std::index_sequence<I...>) {
    ((t[I] = K<(I / 2), (I / 2 == 0 ? 0 : I % 2)>::fn), ...);
}
template <template <int, int> class K, class Fn>
void fill_hp_table(Fn (&t)[kHpEntries]) {
    fill_hp_table<K>(t, std::make_index_sequence<kHpEntries>{});
}
}  // namespace

struct Table {
    CopyFn ownvc_Copy8x4HP_8u_C1R[kHpEntries];
    CopyFn ownvc_Copy8x8HP_8u_C1R[kHpEntries];
    CopyFn ownvc_Copy16x8HP_8u_C1R[kHpEntries];
    CopyFn ownvc_Copy16x16HP_8u_C1R[kHpEntries];
    CopyFn ownvc_Copy4x8HP_8u_C1R[kHpEntries];
    CopyFn copy4x4_hp[kHpEntries];
    AddHpFn ownvc_Add8x8HP_16s8u_C1RS[kHpEntries];
    CopyFn ownvc_InterpolateAverage8x4HP_8u_C1IR[kHpEntries];
    CopyFn ownvc_InterpolateAverage8x8HP_8u_C1IR[kHpEntries];
    CopyFn ownvc_InterpolateAverage16x8HP_8u_C1IR[kHpEntries];
    CopyFn ownvc_InterpolateAverage16x16HP_8u_C1IR[kHpEntries];
    // The same copy kernels with the vertical flag in bit 0 of the index:
    // full, full, FH0, FH1, HF0, HF1, HH0, HH1 (VC-1 bilinear prediction).
    CopyFn copy4x4_vertical_first[kHpEntries];
    CopyFn copy8x4_vertical_first[kHpEntries];
    CopyFn copy8x8_vertical_first[kHpEntries];
    CopyFn copy16x16_vertical_first[kHpEntries];
    AverageFn average8x8;
    AverageFn average16x16;
    AddFn add8x8;
    AddConstFn add_const8x8;
};

void init_block(Table& t, CpuFlags cpu);
void init_block_sse2(Table& t);
void init_block_avx2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::block
