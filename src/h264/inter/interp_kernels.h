// H.264 inter prediction: interpolation kernel signatures, the boundary
// readers and the family table.
#pragma once
#include <cstddef>
#include <cstdint>

#include "core/cpu.h"
#include "kivvc.h"

namespace kivvc::interp {

using u8 = std::uint8_t;
using u16 = std::uint16_t;

// Steps count samples for both depths. Luma kernels read two columns left and
// three right of the block when the horizontal fraction is not zero, two rows
// above and three below when the vertical one is not; width is 4, 8, 12, ...,
// 28 (any sum of 4, 8 and 16), height any count (none when <= 0).
using LumaFn = void (*)(const u8* src, int srcStep, u8* dst, int dstStep, int width, int height);
// Chroma kernels read one column more (dx != 0) and one row more (dy != 0);
// dx, dy in 0..7, and the table entry must match them (2 * (dy != 0) + (dx != 0)).
using ChromaFn = void (*)(const u8* src, int srcStep, u8* dst, int dstStep, int dx, int dy, int width, int height);
// 16-bit twins; `maxValue` is the largest sample value (results clamp to it).
using Luma16Fn = void (*)(const u16* src, int srcStep, u16* dst, int dstStep, int width, int height, int maxValue);
using Chroma16Fn = void (*)(const u16* src, int srcStep, u16* dst, int dstStep, int dx, int dy, int width,
                            int height);
// dst <- (a + b + 1) >> 1 over width x height, any sizes.
using AverageFn = void (*)(const u8* a, int aStep, const u8* b, int bStep, u8* dst, int dstStep, int width,
                           int height);
// Edge-replicating region readers, one per set of crossed edges.
using ReaderFn = void (*)(const KivInterpolationParams* w);

inline constexpr int kLumaKernels = 16;
inline constexpr int kChromaKernels = 4;
inline constexpr int kBoundaryCases = 16;

constexpr int luma_kernel_type(int dx, int dy) { return 4 * dy + dx; }
constexpr int chroma_kernel_type(int dx, int dy) { return 2 * (dy != 0) + (dx != 0); }

struct Table {
    LumaFn luma_8u[kLumaKernels];        // G a b c d e f g h i j k n p q r
    ChromaFn chroma_8u[kChromaKernels];  // copy, horizontal, vertical, both
    Luma16Fn luma_16u[kLumaKernels];
    Chroma16Fn chroma_16u[kChromaKernels];
    AverageFn average_8u;
    ReaderFn read_boundary_8u[kBoundaryCases];  // none, left, right, left_right, top, ...
    ReaderFn read_boundary_16u[kBoundaryCases];
};

void init_interp(Table& t, CpuFlags cpu);
void init_interp_sse2(Table& t);
void init_interp_sse41(Table& t);
void init_interp_avx2(Table& t);
// Fills the readers (boundary_readers.cpp).
void init_boundary_readers(Table& t);

const Table& table();

// Largest sample value of a bit depth; depths above 16 clamp to 65535, below
// 1 to 0.
constexpr int max_sample(int bitDepth) {
    return bitDepth >= 16 ? 0xFFFF : (bitDepth <= 0 ? 0 : (1 << bitDepth) - 1);
}

}  // namespace kivvc::interp
