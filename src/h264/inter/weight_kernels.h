// H.264 weighted prediction and plane expansion: kernel signatures and the
// family table.
#pragma once
#include <cstdint>

#include "core/arith.h"
#include "core/cpu.h"

namespace kivvc::weight {

using u8 = std::uint8_t;
using u16 = std::uint16_t;

// Every weighting formula is d = clamp(((a * w1 + b * w2 + round) >> shift)
// + offset, 0, maxValue) in wrapping 32-bit arithmetic; the entry points
// reduce their parameters to this form (shift in 0..31).
struct Weights {
    std::int32_t w1, w2, round, shift, offset, maxValue;
};

// Unidirectional, in place when a == d (b unused, w2 ignored). Steps in samples.
using UniFn = void (*)(const u8* a, int aStep, u8* d, int dStep, int width, int height, const Weights& k);
// Two sources; d may alias b (the in-place weighted average).
using BiFn = void (*)(const u8* a, int aStep, const u8* b, int bStep, u8* d, int dStep, int width, int height,
                      const Weights& k);
using Uni16Fn = void (*)(const u16* a, int aStep, u16* d, int dStep, int width, int height, const Weights& k);
using Bi16Fn = void (*)(const u16* a, int aStep, const u16* b, int bStep, u16* d, int dStep, int width, int height,
                        const Weights& k);
// d = (a + b + 1) >> 1.
using Average16Fn = void (*)(const u16* a, int aStep, const u16* b, int bStep, u16* d, int dStep, int width,
                             int height);
// Plane expansion; mode 0 frame, 1 even field, 2 odd field. Preconditions:
// width >= 1, height >= 2 even, expansion >= 1, margins present.
using ExpandFn = void (*)(u8* plane, int width, int height, int step, int expansion, int mode);

// Internal linkage: every kernel file keeps its own copy.
namespace {

// The weighting formula, per sample, in wrapping 32-bit arithmetic.
constexpr int weigh(std::uint32_t a, std::uint32_t b, const Weights& k) {
    const auto sum = static_cast<std::int32_t>(a * std::uint32_t(k.w1) + b * std::uint32_t(k.w2) +
                                               std::uint32_t(k.round));
    return clip3(0, k.maxValue,
                 static_cast<std::int32_t>(std::uint32_t(shift_right_floor(sum, k.shift)) + std::uint32_t(k.offset)));
}

// The rows plane expansion works on: the frame (mode 0) or the field of even
// (1) or odd (2) rows. Field row i is frame row first + i * stride; `rows`
// picture rows, then `below` rows padded below and `above` above.
struct ExpandRows {
    int first, stride, rows, below, above;
};
constexpr ExpandRows expand_rows(int height, int e, int mode) {
    if (mode == 0) return {0, 1, height, e, e};
    return mode == 1 ? ExpandRows{0, 2, height / 2, (e + 1) / 2, e / 2} : ExpandRows{1, 2, height / 2, e / 2, (e + 1) / 2};
}

}  // namespace

struct Table {
    UniFn uni_8u;
    BiFn bi_8u;
    Uni16Fn uni_16u;
    Bi16Fn bi_16u;
    Average16Fn average_16u;
    ExpandFn expand_8u;
};

void init_weight(Table& t, CpuFlags cpu);
void init_weight_sse2(Table& t);
void init_weight_sse41(Table& t);
void init_weight_avx2(Table& t);

const Table& table();

}  // namespace kivvc::weight
