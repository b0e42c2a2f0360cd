// Bodies of the vector DV inverse quantisers, written once over a
// vector-operations struct V (16-bit lanes, V::kLanes per register) that each
// SIMD file supplies. Internal linkage only: every SIMD file compiles its own
// copy with its own target flags.
//
// mulhi gives (c * t) >> 16 exactly. The weighting's wrapped 32-bit product
// p * b, p = (c >> 3) * a = H:L, has bits 16..31 equal to
// lo16(H * b) + hi16(L * b), plus b when L is negative as a signed lane.
#pragma once
#include "dv/dv_kernels.h"

namespace kivvc::dv {
namespace {

template <class V>
void quant_inv_simd(s16* block, const s16* table) {
    for (int i = 0; i < 64; i += V::kLanes)
        V::store(block + i, V::shl2(V::mulhi(V::load(block + i), V::load(table + i))));
}

template <class V>
void quant_weight_simd(s16* block, const s16* a, const s16* b) {
    for (int i = 0; i < 64; i += V::kLanes) {
        const auto c = V::sar3(V::load(block + i));
        const auto va = V::load(a + i), vb = V::load(b + i);
        const auto high = V::mulhi(c, va), low = V::mullo(c, va);
        const auto carry = V::bit_and(vb, V::sign_mask(low));
        V::store(block + i, V::add(V::add(V::mullo(high, vb), V::mulhi(low, vb)), carry));
    }
}

// The DC lane takes the step 1, which leaves (c[0] * w[0]) >> 16 as it is.
template <class V>
void quant_weight_dv100_simd(s16* block, const s16* weights, s16 step) {
    const auto rest = V::splat(step);
    const auto first = V::with_first_lane_one(rest);
    for (int i = 0; i < 64; i += V::kLanes)
        V::store(block + i, V::mullo(V::mulhi(V::load(block + i), V::load(weights + i)), i == 0 ? first : rest));
}

}  // namespace
}  // namespace kivvc::dv
