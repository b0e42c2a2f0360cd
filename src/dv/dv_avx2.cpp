// AVX2 DV weighting, sixteen coefficients per step. The other two inverse
// quantisers are a multiply and a shift per lane: on 64 coefficients the
// wider registers measured no faster than SSE2, so they keep the SSE2 kernels.
#include <immintrin.h>

#include "dv/quant_simd.h"

namespace kivvc::dv {
namespace {

struct Avx2 {
    using Reg = __m256i;
    static constexpr int kLanes = 16;
    static Reg load(const s16* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static void store(s16* p, Reg v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
    static Reg mulhi(Reg a, Reg b) { return _mm256_mulhi_epi16(a, b); }
    static Reg mullo(Reg a, Reg b) { return _mm256_mullo_epi16(a, b); }
    static Reg add(Reg a, Reg b) { return _mm256_add_epi16(a, b); }
    static Reg bit_and(Reg a, Reg b) { return _mm256_and_si256(a, b); }
    static Reg sar3(Reg a) { return _mm256_srai_epi16(a, 3); }
    static Reg sign_mask(Reg a) { return _mm256_srai_epi16(a, 15); }
};

}  // namespace

void init_dv_avx2(Table& t) {
    t.quant_weight = &quant_weight_simd<Avx2>;
}

}  // namespace kivvc::dv
