// DV: inverse quantiser kernels and the family table.
#pragma once
#include <cstdint>

#include "core/cpu.h"

namespace kivvc::dv {

using u8 = std::uint8_t;
using s16 = std::int16_t;
using u32 = std::uint32_t;

// c = ((c * t) >> 16) << 2 over 64 coefficients, kept to 16 bits.
using QuantInvFn = void (*)(s16* block, const s16* table);
// c = ((c >> 3) * a * b) >> 16 in wrapping 32-bit arithmetic, kept to 16 bits.
using QuantWeightFn = void (*)(s16* block, const s16* a, const s16* b);
// c[0] = (c[0] * w[0]) >> 16; c[i] = ((c[i] * w[i]) >> 16) * step for i >= 1,
// each kept to 16 bits.
using QuantWeightStepFn = void (*)(s16* block, const s16* weights, s16 step);

struct Table {
    QuantInvFn quant_inv;
    QuantWeightFn quant_weight;
    QuantWeightStepFn quant_weight_dv100;
};

void init_dv(Table& t, CpuFlags cpu);
void init_dv_sse2(Table& t);
void init_dv_avx2(Table& t);

// The process-wide table, built once from the active CPU flags.
const Table& table();

}  // namespace kivvc::dv
