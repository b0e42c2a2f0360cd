// Deblocking post-filter over one 8-sample edge segment.
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::postfilter {

// p addresses the first sample after the edge (row below a horizontal edge,
// column right of a vertical one); each of the 8 lines reads the five samples
// before and the five from p on, and writes the inner eight.
// Preconditions: qp in 1..31.
using EdgeFn = void (*)(std::uint8_t* p, int step, int qp, int thr1, int thr2);

struct Table {
    EdgeFn horizontal_edge;
    EdgeFn vertical_edge;
};

void init_postfilter(Table& t, CpuFlags cpu);
void init_postfilter_sse2(Table& t);
const Table& table();

}  // namespace kivvc::postfilter
