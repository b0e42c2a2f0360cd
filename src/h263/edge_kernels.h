// In-loop edge filters: the deblocking filter over 8- and 16-sample edges and
// the block-boundary filter of the reduced-resolution update mode.
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::h263 {

// Deblocking strength per QP 1..31 (entry 0 unused).
extern const std::int32_t h263_Deblock_QPStrength[32];

// Strength that never limits the correction: |d| <= 1275 / 8 < 255.
inline constexpr int kUnlimitedStrength = 255;

// p addresses the first sample after the edge; the deblocking kernels read
// and write lines -2..+1 across it, the block-boundary kernels lines -1..0.
// Preconditions: strength in 1..255.
using DeblockFn = void (*)(std::uint8_t* p, int step, int strength);
using BoundaryFn = void (*)(std::uint8_t* p, int step);

// Index 0: horizontal edge (between rows), 1: vertical edge (between columns).
struct EdgeTable {
    DeblockFn deblock8[2];   // 8 lines
    DeblockFn deblock16[2];  // 16 lines
    BoundaryFn boundary[2];  // 16 lines
};

void init_edge(EdgeTable& t, CpuFlags cpu);
void init_edge_sse2(EdgeTable& t);
const EdgeTable& edge_table();

}  // namespace kivvc::h263
