// H.264 intra prediction: kernel signatures and the family table.
//
// Every kernel predicts one block from neighbour values already gathered
// (and substituted) by its caller into small arrays:
//   top[-1]      the sample above-left,
//   top[0..W-1]  the row above, and for 4x4 and 8x8 luma the W samples
//                above-right after it (top[4..7], top[8..15]),
//   left[0..H-1] the column to the left, top to bottom.
// The 8x8 luma kernels take the neighbours after reference-sample filtering.
// Kernels never read the picture around the block, never check and never
// return a status; they write exactly the N x N block at dst (step in bytes).
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::h264::intra {

using u8 = std::uint8_t;
using u16 = std::uint16_t;

using PredFn = void (*)(const u8* top, const u8* left, u8* dst, int step);
// 9..14-bit samples; bitDepth bounds the plane prediction's clamp.
using PredHbdFn = void (*)(const u16* top, const u16* left, u16* dst, int step, int bitDepth);

// Neighbour groups (the bits of the exported availability mask).
inline constexpr unsigned kTop = 1, kLeft = 2, kAboveLeft = 32, kAboveRight = 64;

// Helpers with internal linkage, so that every translation unit (SIMD-flagged
// ones included) has its own copy.
namespace {

// Index of a DC table entry: bit 0 = row above present, bit 1 = left column.
constexpr int dc_index(bool top, bool left) { return (top ? 1 : 0) | (left ? 2 : 0); }

// Mean of the available groups of N samples each (avail: bit 0 above, bit 1
// left), or the mid value.
template <int N, class T>
int dc_value(const T* top, const T* left, int avail, int bitDepth) {
    int sum = 0, count = 0;
    if (avail & 1)
        for (int i = 0; i < N; ++i, ++count) sum += top[i];
    if (avail & 2)
        for (int i = 0; i < N; ++i, ++count) sum += left[i];
    return count ? (sum + count / 2) / count : 1 << (bitDepth - 1);
}

// Chroma mode numbers differ from the 16x16 luma ones.
enum ChromaMode { kChromaDc = 0, kChromaHorizontal = 1, kChromaVertical = 2, kChromaPlane = 3 };

// The diagonal 4x4 and 8x8 modes (3..8) read one edge line e(0..3N) of an
// N x N block: the left column bottom to top (e(0) = left[N-1] ..
// e(N-1) = left[0]), the above-left sample e(N), then the row above and
// above-right (e(N+1) = top[0] .. e(3N) = top[2N-1]), continued by left[N-1]
// below e(0) and by top[2N-1] past e(3N). A diagonal through the block meets
// that line at one place, so every sample is one of the line's means: the
// three-tap (e(i) + 2e(i+1) + e(i+2) + 2) >> 2 or the two-tap
// (e(i) + e(i+1) + 1) >> 1, at an index i this function gives (at least
// -N + 1 and at most 3N - 2).
struct DiagonalTap {
    bool three;
    int index;
};
constexpr DiagonalTap diagonal_tap(int n, int mode, int x, int y) {
    switch (mode) {
    case 3: return {true, n + 1 + x + y};  // diagonal down-left
    case 4: return {true, n - 1 + x - y};  // diagonal down-right
    case 5: {                              // vertical-right
        const int z = 2 * x - y, i = x - (y >> 1);
        return z < 0 ? DiagonalTap{true, n + z} : (z & 1) ? DiagonalTap{true, n - 1 + i} : DiagonalTap{false, n + i};
    }
    case 6: {  // horizontal-down
        const int z = 2 * y - x, j = y - (x >> 1);
        return z < 0 ? DiagonalTap{true, n - 2 - z} : DiagonalTap{(z & 1) != 0, n - 1 - j};
    }
    case 7: {  // vertical-left
        const int i = x + (y >> 1);
        return {(y & 1) != 0, n + 1 + i};
    }
    default: {  // 8, horizontal-up
        const int j = y + (x >> 1);
        return (x & 1) ? DiagonalTap{true, n - 3 - j} : DiagonalTap{false, n - 2 - j};
    }
    }
}

}  // namespace

struct Table {
    PredFn pred4x4[9];        // by 4x4 mode; [2] is DC with both neighbours
    PredFn dc4x4[4];          // by dc_index
    PredFn pred16x16[4];      // by 16x16 mode; [2] is DC with both
    PredFn dc16x16[4];        // by dc_index
    PredFn pred_chroma8x8[4]; // by chroma mode; [0] is DC with both
    PredFn dc_chroma8x8[4];   // by dc_index
    PredFn pred8x8[9];        // 8x8 luma by mode, filtered neighbours; [2] DC with both
    PredFn dc8x8[4];          // by dc_index
    PredFn pred_chroma8x16[4]; // 4:2:2 chroma (8 wide, 16 high) by chroma mode
    PredFn dc_chroma8x16[4];  // by dc_index
    PredHbdFn pred4x4_hbd[9];
    PredHbdFn dc4x4_hbd[4];
    PredHbdFn pred16x16_hbd[4];
    PredHbdFn dc16x16_hbd[4];
    PredHbdFn pred_chroma8x8_hbd[4];
    PredHbdFn dc_chroma8x8_hbd[4];
    PredHbdFn pred8x8_hbd[9];
    PredHbdFn dc8x8_hbd[4];
    PredHbdFn pred_chroma8x16_hbd[4];
    PredHbdFn dc_chroma8x16_hbd[4];
};

void init_intra(Table& t, CpuFlags cpu);
void init_intra_sse2(Table& t);
void init_intra16_sse2(Table& t);  // 9..14-bit samples
void init_intra_ssse3(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::h264::intra
