// H.264 encoder side: forward transforms, quantisers and sums of
// differences; the encoder's tables; the kernel signatures and the family
// table.
//
// Conventions of every kernel: blocks are raster order; steps are in bytes;
// kernels trust their arguments. The 16-bit forward transforms store every
// pass to 16 bits (wrapping), as the inverse side does, so each input has one
// defined result. Quantisers read their factors as unsigned 16-bit values and
// form |t| x m + r exactly; level magnitudes saturate to the level type
// (32767, or 2^31 - 1), so a non-zero level never wraps to zero.
#pragma once
#include <array>
#include <cstdint>

#include "h264/residual/transform_kernels.h"

namespace kivvc::h264 {

namespace tables {

// normAdjust8x8 by QP % 6 and the six 8x8 position classes below.
inline constexpr int kNormAdjust8x8[6][6] = {{20, 18, 32, 19, 25, 24}, {22, 19, 35, 21, 28, 26},
                                             {26, 23, 42, 24, 33, 31}, {28, 25, 45, 26, 35, 33},
                                             {32, 28, 51, 30, 40, 38}, {36, 32, 58, 34, 46, 43}};
// Forward 8x8 quantisation factors by QP % 6 and class: each times its
// normAdjust8x8 and the squared norms of the two forward basis rows is 2^24.
inline constexpr int kQuantFactor8x8[6][6] = {{13107, 11428, 20972, 12222, 16777, 15481},
                                              {11916, 10826, 19174, 11058, 14980, 14290},
                                              {10082, 8943, 15978, 9675, 12710, 11985},
                                              {9362, 8228, 14913, 8931, 11984, 11259},
                                              {8192, 7346, 13159, 7740, 10486, 9777},
                                              {7282, 6428, 11570, 6830, 9118, 8640}};

// Class of raster position k of an 8x8 block: 0 both rows = 0 mod 4, 1 both
// odd, 2 both = 2 mod 4, 3 one = 0 mod 4 and one odd, 4 one = 0 and one = 2
// mod 4, 5 one odd and one = 2 mod 4.
consteval int position_class8x8(int k) {
    const int i = k >> 3, j = k & 7;
    if (i % 4 == 0 && j % 4 == 0) return 0;
    if (i % 2 == 1 && j % 2 == 1) return 1;
    if (i % 4 == 2 && j % 4 == 2) return 2;
    if ((i % 4 == 0 && j % 2 == 1) || (i % 2 == 1 && j % 4 == 0)) return 3;
    if ((i % 4 == 0 && j % 4 == 2) || (i % 4 == 2 && j % 4 == 0)) return 4;
    return 5;
}

}  // namespace tables

// Forward quantisation factors by QP % 6 and raster position (QuantCoef).
inline constexpr auto FwdQuantTable_16s = tables::generate<std::array<s16, 16>, 6>([](int m) consteval {
    std::array<s16, 16> row{};
    for (int k = 0; k < 16; ++k) row[k] = s16(tables::kQuantFactor[m][tables::position_class(k)]);
    return row;
});
// normAdjust4x4 by QP % 6 and raster position.
inline constexpr auto InvQuantTable_def = tables::generate<std::array<s16, 16>, 6>([](int m) consteval {
    std::array<s16, 16> row{};
    for (int k = 0; k < 16; ++k) row[k] = s16(tables::kNormAdjust[m][tables::position_class(k)]);
    return row;
});
// Forward 8x8 quantisation factors by QP % 6 and raster position.
inline constexpr auto LevelScale_8x8_default = tables::generate<std::array<s16, 64>, 6>([](int m) consteval {
    std::array<s16, 64> row{};
    for (int k = 0; k < 64; ++k) row[k] = s16(tables::kQuantFactor8x8[m][tables::position_class8x8(k)]);
    return row;
});
// normAdjust8x8 by QP % 6 and raster position.
inline constexpr auto InvLevelScale_8x8_default = tables::generate<std::array<s16, 64>, 6>([](int m) consteval {
    std::array<s16, 64> row{};
    for (int k = 0; k < 64; ++k) row[k] = s16(tables::kNormAdjust8x8[m][tables::position_class8x8(k)]);
    return row;
});
// Reciprocals of the weights: floor(65536 / w), with 65535 for w = 1 and 0
// for w = 0.
inline constexpr auto dt = tables::generate<u16, 256>([](int w) consteval {
    return u16(w == 0 ? 0 : w == 1 ? 65535 : 65536 / w);
});
// Steps walking the 4:2:2 chroma DC block in coding order 0, 2, 1, 4, 6, 3, 5, 7.
inline constexpr s32 scan_chroma2x4[8] = {0, 2, -1, 3, 2, -3, 2, 2};

namespace fwd {

// Forward core transform of a 4x4 block (src may equal dst).
using Transform4x4Fn = void (*)(const s16* src, s16* dst);
using Transform4x4WideFn = void (*)(const s16* src, s32* dst);
// Forward 8x8 transform (src may equal dst).
using Transform8x8Fn = void (*)(const s16* src, s16* dst);
using Transform8x8WideFn = void (*)(const s16* src, s32* dst);
// Quantises N values: dst[k] = sign(t) x ((|t| x u16(m[k]) + round) >> shift)
// with sign(0) = +1; returns the number of non-zero levels and stores into
// *last the largest scan[k] among them (0 when none, never below 0). src may
// equal dst. shift 11..27, round < 2^shift.
using QuantFn = int (*)(const s16* src, s16* dst, const s16* m, int shift, std::uint32_t round, const s16* scan,
                        s32* last);
using QuantWideFn = int (*)(const s32* src, s32* dst, const s16* m, int shift, std::uint32_t round, const s16* scan,
                            s32* last);
// Per 4x4 block of a square area (16x16 or 8x8), in raster order of the
// blocks: the sum of src - pred; diff (or null) receives the 16 differences
// of each block, block after block.
using SumsDiffFn = void (*)(const u8* src, int srcStep, const u8* pred, int predStep, s16* sums, s16* diff);
using SumsDiffHbdFn = void (*)(const u16* src, int srcStep, const u16* pred, int predStep, s32* sums, s16* diff);

// Quantiser sizes: index 0 for 4 values, 1 for 8, 2 for 16, 3 for 64.
inline constexpr int kQuantSizes[4] = {4, 8, 16, 64};

struct Table {
    Transform4x4Fn transform4x4;
    Transform4x4WideFn transform4x4_wide;
    Transform8x8Fn transform8x8;
    Transform8x8WideFn transform8x8_wide;
    QuantFn quant[4];
    QuantWideFn quant_wide[4];
    SumsDiffFn sums_diff[2];  // 16x16, 8x8
    SumsDiffHbdFn sums_diff_hbd[2];
};

void init_fwd(Table& t, CpuFlags cpu);
void init_fwd_sse2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace fwd
}  // namespace kivvc::h264
