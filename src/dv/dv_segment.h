// DV segment layout and the segment decoders (scalar only).
#pragma once
#include <cstdint>

namespace kivvc::dv {

using u8 = std::uint8_t;
using s16 = std::int16_t;
using u32 = std::uint32_t;

// Block area lengths in bytes, in block order within a macroblock of 80
// bytes (the areas start at byte 4).
inline constexpr int nDVSD_BitSequenceLengths[6] = {14, 14, 14, 14, 10, 10};
inline constexpr int nDV100_BitSequenceLengths[8] = {10, 10, 10, 10, 10, 10, 8, 8};
inline constexpr int kMacroblocks = 5;
inline constexpr int kMacroblockBytes = 80;
inline constexpr int kSegmentBytes = kMacroblocks * kMacroblockBytes;

enum class Form { Sd, Dv100 };

// Decodes a whole segment with the redistribution of spare bits; returns 0,
// or -191 when a block passes 63 coefficients or meets a code without an
// entry. Reads only the segment's 400 bytes. Pointers are not checked.
int decode_segment(Form form, const u8* stream, const u32* zigzag, const u32* table, s16* blocks, u32* params);
// Decodes each block within its own area only, up to `limit` scan positions.
void decode_segment_one_pass(Form form, const u8* stream, const u32* zigzag, const u32* table, s16* blocks,
                             u32* params, int limit);

}  // namespace kivvc::dv
