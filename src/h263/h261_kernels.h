// The H.261 loop filter kernel and its table.
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::h263 {

// Separable 1/4, 1/2, 1/4 filter of an 8x8 block (identity across the outer
// rows and columns); source and destination must not overlap.
using LoopFilterFn = void (*)(const std::uint8_t* src, int src_step, std::uint8_t* dst, int dst_step);

struct H261Table {
    LoopFilterFn filter8x8;
};

void init_h261(H261Table& t, CpuFlags cpu);
void init_h261_sse2(H261Table& t);
const H261Table& h261_table();

}  // namespace kivvc::h263
