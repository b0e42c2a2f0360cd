// Scalar references of the DV inverse quantisers.
#include "core/arith.h"
#include "dv/dv_kernels.h"

namespace kivvc::dv {
namespace {

void quant_inv(s16* block, const s16* table) {
    for (int i = 0; i < 64; ++i) block[i] = wrap_s16(shift_left(shift_right_floor(block[i] * table[i], 16), 2));
}

// The 32-bit product may wrap (|c >> 3| * |a| * |b| reaches 2^42): it is
// formed modulo 2^32, as 32-bit registers would.
void quant_weight(s16* block, const s16* a, const s16* b) {
    for (int i = 0; i < 64; ++i) {
        const std::int32_t c = shift_right_floor(block[i], 3);
        const auto product = static_cast<std::int32_t>(static_cast<u32>(c * a[i]) * static_cast<u32>(b[i]));
        block[i] = wrap_s16(shift_right_floor(product, 16));
    }
}

// (c * w) >> 16 fits 15 bits, so its product with the step fits 32 bits.
void quant_weight_dv100(s16* block, const s16* weights, s16 step) {
    block[0] = wrap_s16(shift_right_floor(block[0] * weights[0], 16));
    for (int i = 1; i < 64; ++i) block[i] = wrap_s16(shift_right_floor(block[i] * weights[i], 16) * step);
}

}  // namespace

void init_dv(Table& t, CpuFlags cpu) {
    t.quant_inv = &quant_inv;
    t.quant_weight = &quant_weight;
    t.quant_weight_dv100 = &quant_weight_dv100;
#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_dv_sse2(t);
    if (!(cpu & kAvx2)) return;
    init_dv_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_dv>(); }

}  // namespace kivvc::dv
