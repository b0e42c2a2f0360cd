// SSE2 deblocking post-filter: the eight lines of a segment in the eight
// 16-bit lanes of a register, both modes computed for every lane and chosen
// by mask. Vertical edges go through 8x8 transposes.
#include <emmintrin.h>

#include <cstdint>

#include "core/sse2_helpers.h"
#include "mpeg4/postfilter_kernels.h"

namespace kivvc::postfilter {
namespace {

using u8 = std::uint8_t;

inline __m128i abs16(__m128i x) { return _mm_max_epi16(x, _mm_sub_epi16(_mm_setzero_si128(), x)); }
inline __m128i select(__m128i mask, __m128i a, __m128i b) {
    return _mm_or_si128(_mm_and_si128(mask, a), _mm_andnot_si128(mask, b));
}
// x // 8, halves away from zero: (x + 4 - (x < 0)) >> 3.
inline __m128i div8_away(__m128i x) {
    const __m128i negative = _mm_cmplt_epi16(x, _mm_setzero_si128());
    return _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(x, _mm_set1_epi16(4)), negative), 3);
}
inline __m128i widen(__m128i bytes) { return _mm_unpacklo_epi8(bytes, _mm_setzero_si128()); }

// s[0..9] in, s[1..8] replaced by the filtered values.
void filter(__m128i* s, int qp, int thr1, int thr2) {
    // Equivalent thresholds within 16 bits: differences are 0..255, counts 0..9.
    thr1 = thr1 < -1 ? -1 : (thr1 > 255 ? 255 : thr1);
    thr2 = thr2 < 0 ? 0 : (thr2 > 10 ? 10 : thr2);
    const __m128i vthr1 = _mm_set1_epi16(static_cast<short>(thr1));
    const __m128i vqp = _mm_set1_epi16(static_cast<short>(qp));

    __m128i count = _mm_setzero_si128();
    for (int i = 0; i < 9; ++i)
        count = _mm_sub_epi16(count, _mm_cmpgt_epi16(_mm_add_epi16(vthr1, _mm_set1_epi16(1)), abs16(_mm_sub_epi16(s[i], s[i + 1]))));
    const __m128i dc_mode = _mm_cmpgt_epi16(count, _mm_set1_epi16(static_cast<short>(thr2 - 1)));

    // DC offset mode.
    __m128i mx = s[1], mn = s[1];
    for (int k = 2; k <= 8; ++k) {
        mx = _mm_max_epi16(mx, s[k]);
        mn = _mm_min_epi16(mn, s[k]);
    }
    const __m128i flat = _mm_cmpgt_epi16(_mm_add_epi16(vqp, vqp), _mm_sub_epi16(mx, mn));
    const __m128i p0 = select(_mm_cmpgt_epi16(vqp, abs16(_mm_sub_epi16(s[1], s[0]))), s[0], s[1]);
    const __m128i p9 = select(_mm_cmpgt_epi16(vqp, abs16(_mm_sub_epi16(s[8], s[9]))), s[9], s[8]);
    __m128i q[17];  // q[k + 4] for k = -4..12
    for (int k = -4; k <= 12; ++k) q[k + 4] = k < 1 ? p0 : (k > 8 ? p9 : s[k]);
    __m128i smooth[9];
    for (int n = 1; n <= 8; ++n) {
        const __m128i* w = q + n;  // w[j] = q(n - 4 + j)
        __m128i twice = _mm_add_epi16(_mm_add_epi16(w[2], w[3]), _mm_add_epi16(w[5], w[6]));
        __m128i sum = _mm_add_epi16(_mm_add_epi16(w[0], w[1]), _mm_add_epi16(w[7], w[8]));
        sum = _mm_add_epi16(sum, _mm_add_epi16(twice, twice));
        sum = _mm_add_epi16(sum, _mm_slli_epi16(w[4], 2));
        smooth[n] = _mm_srai_epi16(_mm_add_epi16(sum, _mm_set1_epi16(8)), 4);
    }

    // Default mode.
    auto activity = [&](int i) {  // 2*s[i] - 5*s[i+1] + 5*s[i+2] - 2*s[i+3]
        const __m128i outer = _mm_sub_epi16(s[i], s[i + 3]);
        const __m128i inner = _mm_sub_epi16(s[i + 2], s[i + 1]);
        return div8_away(_mm_add_epi16(_mm_add_epi16(outer, outer), _mm_add_epi16(_mm_slli_epi16(inner, 2), inner)));
    };
    const __m128i a0 = activity(3), a1 = activity(1), a2 = activity(5);
    const __m128i m = _mm_min_epi16(_mm_min_epi16(abs16(a0), abs16(a1)), abs16(a2));
    const __m128i a0_negative = _mm_cmplt_epi16(a0, _mm_setzero_si128());
    const __m128i a0p = _mm_sub_epi16(_mm_xor_si128(m, a0_negative), a0_negative);
    const __m128i correct = _mm_andnot_si128(_mm_cmpeq_epi16(a0p, a0), _mm_cmpgt_epi16(vqp, abs16(a0)));
    const __m128i diff = _mm_sub_epi16(a0p, a0);
    const __m128i t = div8_away(_mm_add_epi16(_mm_slli_epi16(diff, 2), diff));
    const __m128i rising = _mm_cmplt_epi16(s[4], s[5]);
    const __m128i half = _mm_srai_epi16(abs16(_mm_sub_epi16(s[4], s[5])), 1);
    const __m128i lo = _mm_and_si128(rising, _mm_sub_epi16(_mm_setzero_si128(), half));
    const __m128i hi = _mm_andnot_si128(rising, half);
    const __m128i d = _mm_and_si128(correct, _mm_min_epi16(_mm_max_epi16(t, lo), hi));

    const __m128i use_smooth = _mm_and_si128(dc_mode, flat);
    for (int n = 1; n <= 8; ++n) {
        __m128i v = s[n];
        if (n == 4) v = _mm_sub_epi16(v, _mm_andnot_si128(dc_mode, d));
        if (n == 5) v = _mm_add_epi16(v, _mm_andnot_si128(dc_mode, d));
        s[n] = select(use_smooth, smooth[n], v);
    }
}

inline __m128i load8(const u8* p) { return widen(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))); }
inline void store8(u8* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(v, v)); }

void horizontal_edge(u8* p, int step, int qp, int thr1, int thr2) {
    __m128i s[10];
    for (int k = 0; k < 10; ++k) s[k] = load8(p + std::ptrdiff_t(k - 5) * step);
    filter(s, qp, thr1, thr2);
    for (int k = 1; k <= 8; ++k) store8(p + std::ptrdiff_t(k - 5) * step, s[k]);
}

void vertical_edge(u8* p, int step, int qp, int thr1, int thr2) {
    __m128i a[8], b[8];
    for (int r = 0; r < 8; ++r) {
        const u8* row = p + std::ptrdiff_t(r) * step;
        a[r] = load8(row - 5);  // s0..s7
        b[r] = load8(row - 3);  // s2..s9
    }
    kivvc::sse2::transpose8x8_epi16(a);
    kivvc::sse2::transpose8x8_epi16(b);
    __m128i s[10] = {a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], b[6], b[7]};
    filter(s, qp, thr1, thr2);
    __m128i out[8] = {s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8]};
    kivvc::sse2::transpose8x8_epi16(out);
    for (int r = 0; r < 8; ++r) store8(p + std::ptrdiff_t(r) * step - 4, out[r]);
}

}  // namespace

void init_postfilter_sse2(Table& t) {
    t.horizontal_edge = &horizontal_edge;
    t.vertical_edge = &vertical_edge;
}

}  // namespace kivvc::postfilter
