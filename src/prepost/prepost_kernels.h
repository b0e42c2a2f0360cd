// Pre- and post-processing: kernel signatures and the family table.
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::prepost {

using u8 = std::uint8_t;
using s16 = std::int16_t;

// One filtered line of the median deinterlacer: for x in 0..width-1,
// m = median(above[x], line[x], below[x]); dst[x] = line[x] when
// |m - line[x]| < threshold, else m. Preconditions: width >= 1; dst may be
// `line` itself but must not overlap `above` or `below`.
using MedianLineFn = void (*)(const u8* above, const u8* line, const u8* below, u8* dst, int width, int threshold);

// One output line of the edge-directed interpolator from the upper line U
// and the lower line L: columns 1..width-2 take the average along the
// direction (two diagonals or vertical) with the smallest difference; columns
// 0 and width-1 are copied from `on` (U or L). Preconditions: width >= 1; dst
// overlaps none of the inputs.
using EdgeLineFn = void (*)(const u8* upper, const u8* lower, const u8* on, u8* dst, int width);

// Inverse 2-4-8 DCT of 64 coefficients in place (see kiviDCT2x4x8Inv_16s_C1I).
using Dct248Fn = void (*)(s16* block);

// Scalar column ranges [from, to) of the two line filters (columns 1..width-2
// for the interpolator); the SIMD kernels finish their lines with them.
void median_columns(const u8* above, const u8* line, const u8* below, u8* dst, int from, int to, int threshold);
void edge_columns(const u8* upper, const u8* lower, u8* dst, int from, int to);

struct Table {
    MedianLineFn median_line;
    EdgeLineFn edge_line;
    Dct248Fn dct2x4x8_inv;
};

void init_prepost(Table& t, CpuFlags cpu);
void init_prepost_sse2(Table& t);
void init_prepost_avx2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::prepost
