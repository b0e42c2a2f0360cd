// H.264 dequantisation and inverse transforms: the shared tables, the kernel
// signatures and the family table. Macroblock reconstruction and the encoder
// side call these kernels through table(); they do not repeat the arithmetic.
//
// Conventions of every kernel: steps are in bytes; blocks are raster order;
// kernels trust their arguments (QP already range-checked, level-scale
// pointers already resolved to a row, never null). "16-bit" kernels wrap
// every stored value to 16 bits; the 32-bit ones wrap at 32 bits, so every
// input has one defined result and SIMD and scalar agree bit for bit.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::h264 {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using s16 = std::int16_t;
using s32 = std::int32_t;

namespace tables {

// normAdjust4x4 by QP % 6 and position class (both even, both odd, mixed).
inline constexpr int kNormAdjust[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16},
                                          {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
// Forward quantisation factors by QS % 6 and class.
inline constexpr int kQuantFactor[6][3] = {{13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
                                           {9362, 3647, 5825},  {8192, 3355, 5243},  {7282, 2893, 4559}};

consteval int position_class(int k) {
    const int row = k >> 2, col = k & 3;
    if (!(row & 1) && !(col & 1)) return 0;
    return (row & 1) && (col & 1) ? 1 : 2;
}

template <class T, std::size_t N, class F>
consteval std::array<T, N> generate(F f) {
    std::array<T, N> a{};
    for (std::size_t i = 0; i < N; ++i) a[i] = f(int(i));
    return a;
}

}  // namespace tables

// QP / 6 and QP % 6 for QP 0..89.
inline constexpr auto h264_qp6 = tables::generate<u8, 90>([](int qp) consteval { return u8(qp / 6); });
inline constexpr auto h264_qp_rem = tables::generate<u8, 90>([](int qp) consteval { return u8(qp % 6); });
// Position class of each raster position of a 4x4 block: 0 both even, 1 both
// odd, 2 otherwise.
inline constexpr auto QuantIndex = tables::generate<s32, 16>([](int k) consteval { return tables::position_class(k); });
// normAdjust4x4(QP % 6, class) << (QP / 6).
inline constexpr auto InvQuantTable = tables::generate<std::array<s32, 3>, 52>([](int qp) consteval {
    std::array<s32, 3> row{};
    for (int c = 0; c < 3; ++c) row[c] = tables::kNormAdjust[qp % 6][c] << (qp / 6);
    return row;
});
// InvQuantTable spread over the 16 raster positions (at most 5888).
inline constexpr auto inv_quant_table = tables::generate<std::array<s16, 16>, 52>([](int qp) consteval {
    std::array<s16, 16> row{};
    for (int k = 0; k < 16; ++k) row[k] = s16(tables::kNormAdjust[qp % 6][tables::position_class(k)] << (qp / 6));
    return row;
});
// Flat luma DC scale: normAdjust(QP % 6, 0), shifted by QP / 6 - 2 from QP 12 on.
inline constexpr auto InvQuantLuma16x16DCTable = tables::generate<s32, 52>([](int qp) consteval {
    const int v = tables::kNormAdjust[qp % 6][0];
    return qp < 12 ? v : v << (qp / 6 - 2);
});
// 16 x normAdjust4x4(QP % 6, position): the flat level scale.
inline constexpr auto InvLevelScale_4x4_default = tables::generate<std::array<s16, 16>, 6>([](int m) consteval {
    std::array<s16, 16> row{};
    for (int k = 0; k < 16; ++k) row[k] = s16(16 * tables::kNormAdjust[m][tables::position_class(k)]);
    return row;
});
// Forward quantisation factors by QS % 6 and raster position.
inline constexpr auto QuantCoef = tables::generate<std::array<s32, 16>, 6>([](int m) consteval {
    std::array<s32, 16> row{};
    for (int k = 0; k < 16; ++k) row[k] = tables::kQuantFactor[m][tables::position_class(k)];
    return row;
});
// SP weighting matrix: 16, 25, 20 for classes 0, 1, 2.
inline constexpr auto MATR = tables::generate<s32, 16>([](int k) consteval {
    constexpr int kWeight[3] = {16, 25, 20};
    return kWeight[tables::position_class(k)];
});

namespace transform {

// Flat 4x4 dequantisation and inverse transform in place; `step` >= 8 bytes
// between rows of the block. dc: dequantised DC or null; ac: AC present.
using DequantResidualFn = void (*)(s16* block, int step, const s16* dc, bool ac, int qp);
// The 16-bit-lane form: dst = clamp(pred + residual); the coefficients (16,
// contiguous) receive the residual when ac is set and are not read otherwise
// (they may be null then, when dc is given). qp 0..51.
using DequantResidualAddFn = void (*)(const u8* pred, int predStep, s16* coeffs, const s16* dc, u8* dst, int dstStep,
                                      int qp, bool ac);
// Flat luma DC (16 values, qp 0..51) and 4:2:0 chroma DC (4 values, scale =
// InvQuantTable[QPc][0]).
using LumaDcFlatFn = void (*)(s16* block, int qp);
using ChromaDcFlatFn = void (*)(s16* block, int scale);
// Forward core transform of a 4x4 prediction block.
using TransformPredictionFn = void (*)(const u8* pred, int step, s16* out);
// SP/SI reconstruction. qp, qs in 0..51.
using SispFn = void (*)(s16* coeffs, const s16* pred, const s16* dc, bool ac, int qp, int qs, bool switching);
using SispChromaDcFn = void (*)(s16* coeffs, const s16* predDc, int qp, int qs, bool switching);

// Scaling-list 4x4 with add: qp 0..51 (8-bit) or 0..87 (high bit depth),
// ls = 16 level-scale values for qp % 6.
using AddPred4x4Fn = void (*)(const u8* pred, int predStep, s16* coeffs, const s16* dc, u8* dst, int dstStep, int qp,
                              bool ac, const s16* ls);
using AddPred4x4HbdFn = void (*)(const u16* pred, int predStep, s32* coeffs, const s32* dc, u16* dst, int dstStep,
                                 int qp, bool ac, int bitDepth, const s16* ls);
// Scaling-list DC blocks: q is the shift class of the rule (QP / 6; for 4:2:2
// chroma DC (QP + 3) / 6), ls0 the DC level scale.
using DcScaleFn = void (*)(s16* block, int q, int ls0);
using DcScaleHbdFn = void (*)(s32* block, int q, int ls0);
// 8x8 scaling of all 64 coefficients, q = QP / 6.
using Quant8x8Fn = void (*)(s16* coeffs, int q, const s16* ls);
using Quant8x8HbdFn = void (*)(s32* coeffs, int q, const s16* ls);
// Inverse 8x8 transform: coeffs receive the unrounded result, dst =
// clamp((r + 64 * pred + 32) >> 6).
using Transform8x8AddFn = void (*)(const u8* pred, int predStep, s16* coeffs, u8* dst, int dstStep);
using Transform8x8AddHbdFn = void (*)(const u16* pred, int predStep, s32* coeffs, u16* dst, int dstStep,
                                      int bitDepth);

struct Table {
    DequantResidualFn dequant_residual;
    DequantResidualAddFn dequant_residual_add;
    LumaDcFlatFn luma_dc_flat;
    ChromaDcFlatFn chroma_dc_flat;
    TransformPredictionFn transform_prediction;
    SispFn sisp;
    SispChromaDcFn sisp_chroma_dc;
    AddPred4x4Fn add_pred4x4;
    AddPred4x4HbdFn add_pred4x4_hbd;
    DcScaleFn luma_dc;
    DcScaleHbdFn luma_dc_hbd;
    DcScaleFn chroma_dc2x2;
    DcScaleHbdFn chroma_dc2x2_hbd;
    DcScaleFn chroma_dc2x4;
    DcScaleHbdFn chroma_dc2x4_hbd;
    Quant8x8Fn quant8x8;
    Quant8x8HbdFn quant8x8_hbd;
    Transform8x8AddFn transform8x8_add;
    Transform8x8AddHbdFn transform8x8_add_hbd;
};

void init_transform(Table& t, CpuFlags cpu);
void init_transform_sse2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace transform
}  // namespace kivvc::h264
