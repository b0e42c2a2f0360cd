// Arithmetic idioms shared by the scalar references. Everything here has
// internal linkage so that no SIMD-flagged translation unit can donate its
// copy to the others.
#pragma once
#include <cstdint>

namespace kivvc {
namespace {

constexpr int clip3(int lo, int hi, int v) { return v < lo ? lo : (v > hi ? hi : v); }
constexpr std::uint8_t clip_u8(int v) { return static_cast<std::uint8_t>(clip3(0, 255, v)); }
constexpr std::int16_t sat_s16(int v) { return static_cast<std::int16_t>(clip3(-32768, 32767, v)); }
// Pixel clamp to 0..(2^bits - 1).
constexpr int clip_pixel(int v, int bits) { return clip3(0, (1 << bits) - 1, v); }
// (a + b + 1) >> 1: the rounding-up average.
constexpr int avg_round_up(int a, int b) { return (a + b + 1) >> 1; }
// Arithmetic right shift of a possibly negative value, as an explicit floor division.
constexpr std::int32_t shift_right_floor(std::int32_t v, int s) { return v >> s; }
// Left shift of a possibly negative value without undefined behaviour.
constexpr std::int32_t shift_left(std::int32_t v, int s) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(v) << s);
}
// 16-bit wrap-around, as a 16-bit register addition would give.
constexpr std::int16_t wrap_s16(int v) { return static_cast<std::int16_t>(static_cast<std::uint16_t>(v)); }

}  // namespace
}  // namespace kivvc
