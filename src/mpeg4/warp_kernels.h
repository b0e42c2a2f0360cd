// Sprite warping and global motion: the prepared record and the per-sample
// sampling rules shared by the warp kernels.
#pragma once
#include <cstdint>

#include "core/cpu.h"
#include "kivvc.h"

namespace kivvc::warp {

// "QAMC" as a little-endian word.
inline constexpr std::uint32_t kWarpId = 0x434D4151u;
inline constexpr int kWarpSpecBytes = 328;

// The prepared record, placed at the first 16-byte boundary of the caller's
// memory. Positions are in 1/16 sample units unless a field says otherwise.
struct WarpSpec {
    std::int32_t increments[12];  // Q, Q, V, V, 2P, 2P, 2U, 2U, 0, P, 0, U
    std::int32_t rounding;        // 1 only for GMC with rounding type set
    std::int32_t quarter_sample;
    std::int32_t points;
    std::int32_t accuracy;  // 0..3: 1/2, 1/4, 1/8, 1/16 sample
    std::int32_t sprite_type;
    std::int32_t mv_min, mv_max;
    std::int32_t sprite_x, sprite_y, sprite_w, sprite_h;
    std::int32_t chroma_x, chroma_y, chroma_w, chroma_h;
    std::int32_t x0, y0;
    std::int32_t i0, j0, i1, j1, i2, j2;          // warped points
    std::int32_t i1v, j1v, i2v, j2v;              // virtual points
    std::int32_t chroma_dx, chroma_dy;            // one-point chroma translation
    std::int32_t w_pow, h_pow, alpha, beta;       // W', H' and their logarithms
    std::int32_t t;                               // bilinear rounding term
    std::int32_t two_sigma;                       // 2^sigma
    double a, b, c, d, e, f, g, h, d0, k;         // perspective coefficients
    std::uint32_t id;
    std::int32_t sum_offsets;  // 1920 * s
    std::int32_t affine_round;
    std::int32_t P, Q, U, V;
    std::int32_t gmv_shift;  // sigma + 3 - acc
    std::int32_t sigma;
};
static_assert(sizeof(WarpSpec) + 15 <= kWarpSpecBytes, "the record must fit the caller's memory at any alignment");

inline WarpSpec* spec_in(void* memory) {
    return reinterpret_cast<WarpSpec*>((reinterpret_cast<std::uintptr_t>(memory) + 15) & ~std::uintptr_t{15});
}
inline const WarpSpec* spec_in(const void* memory) { return spec_in(const_cast<void*>(memory)); }

// A reference plane: samples at ptr[y * step + x] for 0 <= x < width,
// 0 <= y < height; reads outside repeat the border.
struct Reference {
    const std::uint8_t* ptr;
    int step;
    int width, height;
};

// Block rectangle and destination.
struct Target {
    std::uint8_t* ptr;
    int step;
    int x, y, width, height;
};

// Warp of one block with the record's point count; luma and chroma differ only
// in the coordinate rules, chosen by `chroma`.
using WarpFn = void (*)(const WarpSpec& s, const Reference& ref, const Target& dst, bool chroma);

struct Table {
    WarpFn warp[5];  // by number of points
};

void init_warp(Table& t, CpuFlags cpu);
const Table& table();

}  // namespace kivvc::warp
