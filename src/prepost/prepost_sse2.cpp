// SSE2 deinterlacing line filters, 16 samples per step.
#include <emmintrin.h>

#include "prepost/line_filters_simd.h"

namespace kivvc::prepost {
namespace {

struct Sse2 {
    using Reg = __m128i;
    static constexpr int kLanes = 16;
    static Reg load(const u8* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static void store(u8* p, Reg v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    static Reg splat_u8(int v) { return _mm_set1_epi8(static_cast<char>(v)); }
    static Reg bit_or(Reg a, Reg b) { return _mm_or_si128(a, b); }
    static Reg bit_and(Reg a, Reg b) { return _mm_and_si128(a, b); }
    static Reg and_not(Reg a, Reg b) { return _mm_andnot_si128(a, b); }
    static Reg subs_u8(Reg a, Reg b) { return _mm_subs_epu8(a, b); }
    static Reg equal_u8(Reg a, Reg b) { return _mm_cmpeq_epi8(a, b); }
    static Reg min_u8(Reg a, Reg b) { return _mm_min_epu8(a, b); }
    static Reg max_u8(Reg a, Reg b) { return _mm_max_epu8(a, b); }
    static Reg avg_u8(Reg a, Reg b) { return _mm_avg_epu8(a, b); }
};

}  // namespace

void init_prepost_sse2(Table& t) {
    t.median_line = &median_line_simd<Sse2>;
    t.edge_line = &edge_line_simd<Sse2>;
}

}  // namespace kivvc::prepost
