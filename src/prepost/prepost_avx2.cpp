// AVX2 deinterlacing line filters, 32 samples per step.
#include <immintrin.h>

#include "prepost/line_filters_simd.h"

namespace kivvc::prepost {
namespace {

struct Avx2 {
    using Reg = __m256i;
    static constexpr int kLanes = 32;
    static Reg load(const u8* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static void store(u8* p, Reg v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
    static Reg splat_u8(int v) { return _mm256_set1_epi8(static_cast<char>(v)); }
    static Reg bit_or(Reg a, Reg b) { return _mm256_or_si256(a, b); }
    static Reg bit_and(Reg a, Reg b) { return _mm256_and_si256(a, b); }
    static Reg and_not(Reg a, Reg b) { return _mm256_andnot_si256(a, b); }
    static Reg subs_u8(Reg a, Reg b) { return _mm256_subs_epu8(a, b); }
    static Reg equal_u8(Reg a, Reg b) { return _mm256_cmpeq_epi8(a, b); }
    static Reg min_u8(Reg a, Reg b) { return _mm256_min_epu8(a, b); }
    static Reg max_u8(Reg a, Reg b) { return _mm256_max_epu8(a, b); }
    static Reg avg_u8(Reg a, Reg b) { return _mm256_avg_epu8(a, b); }
};

}  // namespace

void init_prepost_avx2(Table& t) {
    t.median_line = &median_line_simd<Avx2>;
    t.edge_line = &edge_line_simd<Avx2>;
}

}  // namespace kivvc::prepost
