// Macroblock walk tables: block positions in decoding order and which
// neighbours of each block lie outside the macroblock.
#pragma once
#include <cstdint>

namespace kivvc::h264::mbrecon {

struct Step {
    std::int8_t dx, dy;
};

// From each 4x4 block (decoding order k) to the next; the last step returns
// to block 0.
inline constexpr Step xyoff[16] = {{4, 0}, {-4, 4}, {4, 0}, {4, -4}, {4, 0}, {-4, 4}, {4, 0}, {-12, 4},
                                   {4, 0}, {-4, 4}, {4, 0}, {4, -4}, {4, 0}, {-4, 4}, {4, 0}, {-12, -12}};
// The same through the four 8x8 blocks (raster order of the quadrants).
inline constexpr Step xyoff8[4] = {{8, 0}, {-8, 8}, {8, 0}, {-8, -8}};
// Decoding order k <-> raster index of the 4x4 block (its own inverse).
inline constexpr std::uint8_t block_subblock_mapping[16] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};
// 1 for blocks on the macroblock's top / left edge, by k.
inline constexpr std::uint8_t top_edge_tab16[16] = {1, 1, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
inline constexpr std::uint8_t left_edge_tab16[16] = {1, 0, 1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0};
// 0 where the above-right block is never available, by k.
inline constexpr std::uint8_t above_right_avail_4x4[16] = {1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0, 1, 0, 1, 0};
// The same for the four blocks of a 2x2 arrangement.
inline constexpr std::uint8_t top_edge_tab4[4] = {1, 1, 0, 0};
inline constexpr std::uint8_t left_edge_tab4[4] = {1, 0, 1, 0};

// Sample clamp looked up at prediction + residual + 256 (residual limited
// to -256..256): 0 below index 256, index - 256 up to 511, then 255.
inline constexpr auto ClampTbl = [] {
    struct {
        std::uint8_t v[768];
    } t{};
    for (int i = 0; i < 768; ++i) t.v[i] = std::uint8_t(i < 256 ? 0 : i < 512 ? i - 256 : 255);
    return t;
}();

// Edge mask bits: set = that neighbouring macroblock is not available.
inline constexpr unsigned kEdgeLeft = 1, kEdgeAbove = 4, kEdgeAboveLeft = 16, kEdgeAboveRight = 32;

}  // namespace kivvc::h264::mbrecon
