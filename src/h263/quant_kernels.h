// H.263 forward and inverse quantisation kernels and their table.
#pragma once
#include <cstdint>

#include "core/cpu.h"
#include "mpeg4/quant_shared.h"

namespace kivvc::h263 {

// Forward kernels quantise all 64 elements in place and return the number of
// nonzero levels; the sign of each level is that of its coefficient.
//   intra:     |L| = (|c| R(qp)) >> 16
//   inter:     |L| = (max(|c| - qp / 2, 0) R(qp)) >> 16
//   adv intra: |L| = (min(|c| + 3 qp / 4, 32767) R(qp)) >> 16
// The clipping forms limit |L| to 127. Precondition: qp in 1..31.
using QuantFn = int (*)(std::int16_t* block, int qp);

// Inverse kernels reconstruct elements 0..last in place (zero stays zero) and
// leave the others alone:
//   ordinary: sign(L) (2 qp |L| + q) limited to -2048..2047
//   modq:     the same saturated to -32768..32767
//   adv:      2 qp L wrapped to 16 bits
// q = qp for odd qp, qp - 1 for even. Preconditions: qp in 1..31, last in 0..63.
using QuantInvFn = void (*)(std::int16_t* block, int last, int qp);

struct QuantTable {
    QuantFn ownph263_QuantIntra_16s_I;
    QuantFn ownph263_QuantIntraNoClip_16s_I;
    QuantFn ownph263_QuantInter_16s_I;
    QuantFn ownph263_QuantInterNoClip_16s_I;
    QuantFn ownph263_QuantAdvIntra_16s_I;
    QuantFn ownph263_QuantAdvIntraNoClip_16s_I;
    QuantInvFn ownph263_QuantInv_16s_I;
    QuantInvFn ownph263_QuantInv_ModQ_16s_I;
    QuantInvFn ownph263_QuantInv_AdvIntra_16s_I;
};

void init_quant(QuantTable& t, CpuFlags cpu);
void init_quant_sse2(QuantTable& t);
const QuantTable& quant_table();

namespace {
enum class QuantMode { Intra, Inter, AdvIntra };
enum class InvMode { Ordinary, ModQ, AdvIntra };
}  // namespace

}  // namespace kivvc::h263
