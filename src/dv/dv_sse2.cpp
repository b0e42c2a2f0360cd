// SSE2 DV inverse quantisers, eight coefficients per step.
#include <emmintrin.h>

#include "dv/quant_simd.h"

namespace kivvc::dv {
namespace {

struct Sse2 {
    using Reg = __m128i;
    static constexpr int kLanes = 8;
    static Reg load(const s16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static void store(s16* p, Reg v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    static Reg splat(s16 v) { return _mm_set1_epi16(v); }
    static Reg with_first_lane_one(Reg v) { return _mm_insert_epi16(v, 1, 0); }
    static Reg mulhi(Reg a, Reg b) { return _mm_mulhi_epi16(a, b); }
    static Reg mullo(Reg a, Reg b) { return _mm_mullo_epi16(a, b); }
    static Reg add(Reg a, Reg b) { return _mm_add_epi16(a, b); }
    static Reg bit_and(Reg a, Reg b) { return _mm_and_si128(a, b); }
    static Reg shl2(Reg a) { return _mm_slli_epi16(a, 2); }
    static Reg sar3(Reg a) { return _mm_srai_epi16(a, 3); }
    static Reg sign_mask(Reg a) { return _mm_srai_epi16(a, 15); }
};

}  // namespace

void init_dv_sse2(Table& t) {
    t.quant_inv = &quant_inv_simd<Sse2>;
    t.quant_weight = &quant_weight_simd<Sse2>;
    t.quant_weight_dv100 = &quant_weight_dv100_simd<Sse2>;
}

}  // namespace kivvc::dv
