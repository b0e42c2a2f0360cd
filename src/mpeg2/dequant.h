// MPEG-2 dequantisation of one coefficient and the mismatch control, shared
// by the block decoders and the in-place dequantisers. Internal linkage.
#pragma once
#include <cstdint>

#include "core/arith.h"

namespace kivvc::mpeg2 {
namespace {

constexpr int sign_of(std::int64_t v) { return (v > 0) - (v < 0); }

// (2 * level + sign(level)) * w * q / 32 (non-intra) or 2 * level * w * q / 32
// (intra), truncated toward zero, saturated to -2048..2047. The product is
// formed in 64 bits: at most 65537 * 32768 * 2^31 < 2^63, so it never wraps.
template <bool Intra>
constexpr int dequantise_mpeg2(int level, int w, std::int32_t q) {
    const std::int64_t l = Intra ? 2 * std::int64_t{level} : 2 * std::int64_t{level} + sign_of(level);
    const std::int64_t c = l * w * q / 32;
    return c < -2048 ? -2048 : (c > 2047 ? 2047 : static_cast<int>(c));
}

// When the sum of the 64 values is even, toggles the lowest bit of the last
// one (odd values step down, even values up).
inline void mismatch_control(std::int16_t* block) {
    int parity = 0;
    for (int i = 0; i < 64; ++i) parity ^= block[i];
    if (!(parity & 1)) block[63] = static_cast<std::int16_t>(block[63] ^ 1);
}

}  // namespace
}  // namespace kivvc::mpeg2
