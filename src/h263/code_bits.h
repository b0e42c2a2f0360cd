// Code strings as printed ("0010 1", spaces ignored) turned into values at
// compile time, for the table builders.
#pragma once
#include <cstdint>

namespace kivvc::h263 {
namespace {

struct Bits {
    std::uint32_t value;
    int length;
};
constexpr Bits parse(const char* s) {
    Bits b{0, 0};
    for (; *s; ++s)
        if (*s == '0' || *s == '1') b = {(b.value << 1) | std::uint32_t(*s - '0'), b.length + 1};
    return b;
}

}  // namespace
}  // namespace kivvc::h263
