// SSE2-level helpers of the metrics kernel files (include only from files
// built with an x86 SIMD target flag). Declared into the files' own unnamed
// namespace, so that their wider overloads join the same overload sets.
#pragma once
#include "core/sse2_helpers.h"

namespace kivvc::metrics {
namespace {
using kivvc::sse2::average2;
using kivvc::sse2::load;
using kivvc::sse2::store;
using kivvc::sse2::sum_epi32;
using kivvc::sse2::sum_halves;
}  // namespace
}  // namespace kivvc::metrics
