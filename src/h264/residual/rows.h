// Row addressing with byte steps. Internal linkage, so that every
// translation unit (SIMD-flagged ones included) has its own copy.
#pragma once
#include <cstddef>
#include <cstdint>

namespace kivvc::h264 {
namespace {

template <class T>
const T* row(const T* p, int step, int y) {
    return reinterpret_cast<const T*>(reinterpret_cast<const std::uint8_t*>(p) + std::ptrdiff_t(y) * step);
}
template <class T>
T* row(T* p, int step, int y) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uint8_t*>(p) + std::ptrdiff_t(y) * step);
}

}  // namespace
}  // namespace kivvc::h264
