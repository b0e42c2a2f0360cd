// Timing of one kernel case at one CPU level, shared by the speed tool.
#pragma once
#include "support/kernel_case.h"

namespace kivvc::test {

// Nanoseconds per call of `fn` through `c`'s exercise: the best of several
// timed stretches of about `budget_us` microseconds each.
double time_case(const KernelCase& c, const void* fn, int budget_us = 2000, int repeats = 5);

}  // namespace kivvc::test
