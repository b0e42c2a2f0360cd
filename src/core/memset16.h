// memset_16u: the low 16 bits of `value` into `count` consecutive elements;
// a count of 0 or less does nothing.
#pragma once
#include <cstdint>

namespace kivvc {
void memset_16u(std::uint16_t* dst, int value, int count);
}
