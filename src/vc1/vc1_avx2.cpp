// AVX2 VC-1 kernels: the 8x8 inverse transform with both halves of each
// butterfly pass in one register (rows or columns 0..3 in the low lane, 4..7
// in the high lane); the transposes stay 128-bit.
#include <immintrin.h>

#include "vc1/vc1_kernels.h"
#include "vc1/vc1_simd.h"

namespace kivvc::vc1 {
namespace {

// Pairs (a, b) of all eight lanes: lanes 0..3 low, 4..7 high.
inline __m256i pairs(__m128i a, __m128i b) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_unpacklo_epi16(a, b)), _mm_unpackhi_epi16(a, b), 1);
}
inline __m256i madd(__m256i v, int a, int b) {
    return _mm256_madd_epi16(v, _mm256_broadcastsi128_si256(pair(a, b)));
}

// One 8-point pass over x[0..NX-1] (the rest zero) into y[0..7], saturated
// to 16 bits: y[i] = (sum + Bias (+ Extra on outputs 4..7)) >> Shift.
template <int NX, int Bias, int Extra, int Shift>
void pass8(const __m128i* x, __m128i* y) {
    const __m128i z = _mm_setzero_si128();
    const __m256i zero = _mm256_setzero_si256();
    const __m256i p04 = pairs(x[0], NX > 4 ? x[4] : z), p13 = pairs(x[1], NX > 2 ? x[3] : z);
    const __m256i bias = _mm256_set1_epi32(Bias);
    const __m256i t1 = _mm256_add_epi32(madd(p04, 12, 12), bias);
    const __m256i t2 = NX > 4 ? _mm256_add_epi32(madd(p04, 12, -12), bias) : t1;
    __m256i t3 = zero, t4 = zero;
    if constexpr (NX > 2) {
        const __m256i p26 = pairs(x[2], NX > 4 ? x[6] : z);
        t3 = madd(p26, 16, 6), t4 = madd(p26, 6, -16);
    }
    const __m256i e[4] = {_mm256_add_epi32(t1, t3), _mm256_add_epi32(t2, t4), _mm256_sub_epi32(t2, t4),
                          _mm256_sub_epi32(t1, t3)};
    __m256i o[4] = {madd(p13, 16, 15), madd(p13, 15, -4), madd(p13, 9, -16), madd(p13, 4, -9)};
    if constexpr (NX > 4) {
        const __m256i p57 = pairs(x[5], x[7]);
        o[0] = _mm256_add_epi32(o[0], madd(p57, 9, 4)), o[1] = _mm256_add_epi32(o[1], madd(p57, -16, -9));
        o[2] = _mm256_add_epi32(o[2], madd(p57, 4, 15)), o[3] = _mm256_add_epi32(o[3], madd(p57, 15, -16));
    }
    const __m256i extra = _mm256_set1_epi32(Extra);
    __m256i r[8];
    for (int i = 0; i < 4; ++i) {
        r[i] = _mm256_srai_epi32(_mm256_add_epi32(e[i], o[i]), Shift);
        __m256i lower = _mm256_sub_epi32(e[i], o[i]);
        if constexpr (Extra != 0) lower = _mm256_add_epi32(lower, extra);
        r[7 - i] = _mm256_srai_epi32(lower, Shift);
    }
    // packs works per lane: [i 0..3, j 0..3 | i 4..7, j 4..7]; the qword
    // permute restores [i | j].
    for (int i = 0; i < 8; i += 2) {
        const __m256i p = _mm256_permute4x64_epi64(_mm256_packs_epi32(r[i], r[i + 1]), 0xD8);
        y[i] = _mm256_castsi256_si128(p);
        y[i + 1] = _mm256_extracti128_si256(p, 1);
    }
}

template <int NW, int NH>
void transform8x8(const s16* src, int ss, s16* dst, int ds) {
    __m128i v[8], t[8];
    for (int r = 0; r < 8; ++r) v[r] = r < NH ? load<NW * 2>(row_at(src, ss, r)) : _mm_setzero_si128();
    transpose8(v);
    pass8<NW, 4, 0, 3>(v, t);
    transpose8(t);
    pass8<NH, 64, 1, 7>(t, v);
    for (int r = 0; r < 8; ++r) store<16>(row_at(dst, ds, r), v[r]);
}

}  // namespace

void init_vc1_avx2(Table& t) {
    t.transform8x8[kForm2x2] = &transform8x8<2, 2>;
    t.transform8x8[kForm4x4] = &transform8x8<4, 4>;
    t.transform8x8[3] = &transform8x8<8, 8>;
}

}  // namespace kivvc::vc1
