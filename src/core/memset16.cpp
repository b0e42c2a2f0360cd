#include "core/memset16.h"

namespace kivvc {
void memset_16u(std::uint16_t* dst, int value, int count) {
    const auto v = static_cast<std::uint16_t>(value);
    for (int i = 0; i < count; ++i) dst[i] = v;
}
}  // namespace kivvc
