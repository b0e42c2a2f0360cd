// Vector deblocking pieces shared by the SSE2 and AVX2 kernels. Everything
// here has internal linkage: each SIMD file compiles its own copy with its
// own target flags.
//
// Every line of an edge sits in one lane, so the filter arithmetic is the
// scalar one without overflow tricks: 16-bit lanes for 8-bit samples (sums
// stay below 2300, the normal delta below 1280 before its clip; packus
// supplies the 0..255 clamp), 32-bit lanes for 16-bit samples. The cores are
// templates over an operations struct O (register width and lane size).
#pragma once
#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "h264/inter/deblock_kernels.h"

namespace kivvc::deblock {
namespace {

// ---- bytes -----------------------------------------------------------------

inline __m128i load8(const u8* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
inline __m128i load16(const u8* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void store8(u8* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
inline void store16(u8* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
inline std::uint32_t load_u32(const u8* p) {
    std::uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline bool edge_off(const u8* bs4) { return load_u32(bs4) == 0; }

// Stages 2..4 of a byte transpose of 16 rows: t[i] interleaves rows 2i and
// 2i + 1 (column pairs 0..7); out[c] receives column c, lane = row.
inline void transpose_pairs(const __m128i (&t)[8], __m128i* out) {
    __m128i u[8], v[8];
    for (int i = 0; i < 4; ++i) {
        u[2 * i] = _mm_unpacklo_epi16(t[2 * i], t[2 * i + 1]);      // columns 0..3 of 4 rows
        u[2 * i + 1] = _mm_unpackhi_epi16(t[2 * i], t[2 * i + 1]);  // columns 4..7
    }
    for (int j = 0; j < 2; ++j) {  // rows 0..7, then 8..15
        const __m128i* a = u + 4 * j;
        v[4 * j + 0] = _mm_unpacklo_epi32(a[0], a[2]);  // columns 0, 1
        v[4 * j + 1] = _mm_unpackhi_epi32(a[0], a[2]);  // 2, 3
        v[4 * j + 2] = _mm_unpacklo_epi32(a[1], a[3]);  // 4, 5
        v[4 * j + 3] = _mm_unpackhi_epi32(a[1], a[3]);  // 6, 7
    }
    for (int i = 0; i < 4; ++i) {
        out[2 * i] = _mm_unpacklo_epi64(v[i], v[4 + i]);
        out[2 * i + 1] = _mm_unpackhi_epi64(v[i], v[4 + i]);
    }
}

// 16x16 byte transpose: out[c] lane r = in[r] byte c.
inline void transpose16(const __m128i (&in)[16], __m128i (&out)[16]) {
    __m128i lo[8], hi[8];
    for (int i = 0; i < 8; ++i) {
        lo[i] = _mm_unpacklo_epi8(in[2 * i], in[2 * i + 1]);
        hi[i] = _mm_unpackhi_epi8(in[2 * i], in[2 * i + 1]);
    }
    transpose_pairs(lo, out);
    transpose_pairs(hi, out + 8);
}

// ---- filter cores ------------------------------------------------------------

template <class O>
inline typename O::V absdiff(typename O::V a, typename O::V b) {
    return O::max(O::sub(a, b), O::sub(b, a));
}
template <class O>
inline typename O::V less(typename O::V a, typename O::V b) {
    return O::cmpgt(b, a);
}
template <class O>
inline typename O::V select(typename O::V m, typename O::V a, typename O::V b) {
    return O::bit_or(O::bit_and(m, a), O::andnot(m, b));
}
template <class O>
inline typename O::V clamp_pm(typename O::V v, typename O::V lim) {
    return O::max(O::min(v, lim), O::sub(O::zero(), lim));
}

// The "filter this line" decision, as a lane mask.
template <class O, class V = typename O::V>
inline V decision(V p1, V p0, V q0, V q1, V alpha, V beta) {
    return O::bit_and(O::bit_and(less<O>(absdiff<O>(p0, q0), alpha), less<O>(absdiff<O>(p1, p0), beta)),
                      less<O>(absdiff<O>(q1, q0), beta));
}

// clip3(-tc, tc, (4 (q0 - p0) + (p1 - q1) + 4) >> 3).
template <class O, class V = typename O::V>
inline V normal_delta(V p1, V p0, V q0, V q1, V tc) {
    const V d = O::add(O::template slli<2>(O::sub(q0, p0)), O::sub(p1, q1));
    return clamp_pm<O>(O::template srai<3>(O::add(d, O::set1(4))), tc);
}

// Sample clamps of the normal filter's p0', q0': none for 8-bit samples in
// 16-bit lanes (the packus back to bytes clamps), 0..max for wider samples.
struct NoClip {
    template <class V>
    V operator()(V v) const { return v; }
};

// Luma lines, one per lane: w = p3 p2 p1 p0 q0 q1 q2 q3, bs and tc0 per
// lane. Replaces w[1..6]; false when no line is filtered.
template <class O, class Clip = NoClip, class V = typename O::V>
inline bool luma_lines(V (&w)[8], V alpha, V beta, V bs, V tc0, Clip clip = {}) {
    const V p3 = w[0], p2 = w[1], p1 = w[2], p0 = w[3], q0 = w[4], q1 = w[5], q2 = w[6], q3 = w[7];
    const V on = O::andnot(O::cmpeq(bs, O::zero()), decision<O>(p1, p0, q0, q1, alpha, beta));
    if (!O::any(on)) return false;
    const V ap = less<O>(absdiff<O>(p2, p0), beta), aq = less<O>(absdiff<O>(q2, q0), beta);
    const V strong = O::bit_and(O::cmpeq(bs, O::set1(4)), on);
    const V normal = O::andnot(strong, on);
    V np2 = p2, np1 = p1, np0 = p0, nq0 = q0, nq1 = q1, nq2 = q2;
    if (O::any(normal)) {
        // ap, aq are -1 where set: subtracting them adds one each.
        const V delta = normal_delta<O>(p1, p0, q0, q1, O::sub(O::sub(tc0, ap), aq));
        np0 = select<O>(normal, clip(O::add(p0, delta)), p0);
        nq0 = select<O>(normal, clip(O::sub(q0, delta)), q0);
        const V avg = O::avg(p0, q0);
        const V dp = clamp_pm<O>(O::template srai<1>(O::sub(O::add(p2, avg), O::template slli<1>(p1))), tc0);
        const V dq = clamp_pm<O>(O::template srai<1>(O::sub(O::add(q2, avg), O::template slli<1>(q1))), tc0);
        np1 = select<O>(O::bit_and(normal, ap), O::add(p1, dp), p1);
        nq1 = select<O>(O::bit_and(normal, aq), O::add(q1, dq), q1);
    }
    if (O::any(strong)) {
        const V two = O::set1(2), four = O::set1(4);
        const V near = less<O>(absdiff<O>(p0, q0), O::add(O::template srli<2>(alpha), two));
        const V full_p = O::bit_and(O::bit_and(ap, near), strong);
        const V full_q = O::bit_and(O::bit_and(aq, near), strong);
        const V centre = O::add(p0, q0);
        const V mid2 = O::template slli<1>(O::add(centre, O::add(p1, q1)));  // 2 (p1 + p0 + q0 + q1)
        // p0' = (p2 + 2 p1 + 2 p0 + 2 q0 + q1 + 4) >> 3
        const V p0f = O::template srli<3>(O::add(O::sub(O::add(p2, mid2), q1), four));
        const V q0f = O::template srli<3>(O::add(O::sub(O::add(q2, mid2), p1), four));
        // p1' = (p2 + p1 + p0 + q0 + 2) >> 2
        const V p1f = O::template srli<2>(O::add(O::add(p2, p1), O::add(centre, two)));
        const V q1f = O::template srli<2>(O::add(O::add(q2, q1), O::add(centre, two)));
        // p2' = (2 p3 + 3 p2 + p1 + p0 + q0 + 4) >> 3
        const V p2f = O::template srli<3>(
            O::add(O::add(O::template slli<1>(O::add(p3, p2)), O::add(p2, p1)), O::add(centre, four)));
        const V q2f = O::template srli<3>(
            O::add(O::add(O::template slli<1>(O::add(q3, q2)), O::add(q2, q1)), O::add(centre, four)));
        // The 3-tap forms: (2 p1 + p0 + q1 + 2) >> 2.
        const V p0w = O::template srli<2>(O::add(O::add(O::template slli<1>(p1), p0), O::add(q1, two)));
        const V q0w = O::template srli<2>(O::add(O::add(O::template slli<1>(q1), q0), O::add(p1, two)));
        np0 = select<O>(full_p, p0f, select<O>(strong, p0w, np0));
        nq0 = select<O>(full_q, q0f, select<O>(strong, q0w, nq0));
        np1 = select<O>(full_p, p1f, np1);
        nq1 = select<O>(full_q, q1f, nq1);
        np2 = select<O>(full_p, p2f, p2);
        nq2 = select<O>(full_q, q2f, q2);
    }
    w[1] = np2, w[2] = np1, w[3] = np0, w[4] = nq0, w[5] = nq1, w[6] = nq2;
    return true;
}

// How a chroma edge chooses between the strong and the normal filter.
enum class Choice { PerLine, FirstEntry, AllFour };

// Lane masks of the strong and the normal filter for the lines of a chroma
// edge; bs per lane, bs4 the edge's four entries.
template <Choice C, class O, class V = typename O::V>
inline void chroma_masks(V bs, const u8* bs4, V& strong, V& normal) {
    const V zero = O::zero(), ones = O::cmpeq(zero, zero);
    const V nonzero = O::andnot(O::cmpeq(bs, zero), ones);
    bool edge_strong = false;
    if constexpr (C == Choice::FirstEntry) edge_strong = bs4[0] == 4;
    if constexpr (C == Choice::AllFour) edge_strong = load_u32(bs4) == 0x04040404u;
    if constexpr (C == Choice::PerLine) {
        strong = O::cmpeq(bs, O::set1(4));
        normal = O::andnot(strong, nonzero);
    } else if (edge_strong) {
        strong = ones;
        normal = zero;
    } else {
        strong = zero;
        normal = nonzero;
    }
}

// Chroma lines, one per lane; replaces p0 and q0. strong/normal: lane masks
// of the filter each line would get. False when no line is filtered.
template <class O, class Clip = NoClip, class V = typename O::V>
inline bool chroma_lines(V p1, V& p0, V& q0, V q1, V alpha, V beta, V strong, V normal, V tc0, Clip clip = {}) {
    const V on = decision<O>(p1, p0, q0, q1, alpha, beta);
    const V fs = O::bit_and(on, strong), fn = O::bit_and(on, normal);
    if (!O::any(O::bit_or(fs, fn))) return false;
    const V two = O::set1(2);
    const V ps = O::template srli<2>(O::add(O::add(O::template slli<1>(p1), p0), O::add(q1, two)));
    const V qs = O::template srli<2>(O::add(O::add(O::template slli<1>(q1), q0), O::add(p1, two)));
    const V delta = normal_delta<O>(p1, p0, q0, q1, O::add(tc0, O::set1(1)));
    p0 = select<O>(fs, ps, select<O>(fn, clip(O::add(p0, delta)), p0));
    q0 = select<O>(fs, qs, select<O>(fn, clip(O::sub(q0, delta)), q0));
    return true;
}

// ---- luma drivers --------------------------------------------------------------
// E::filter(r, alpha, beta, bs4, tc4) filters one 16-line luma edge held as
// byte rows r = p3 .. q3 (lane i = line i, line i uses entry i >> 2 of bs4
// and tc4), replacing r[1..6]; false when nothing changed.

template <class E>
void luma_hor(u8* p, int step, const u8* alpha, const u8* beta, const u8* tc0, const u8* bs) {
    const std::ptrdiff_t s = step;
    for (int e = 0; e < 4; ++e) {
        if (edge_off(bs + 4 * e)) continue;
        u8* q0 = p + 4 * e * s;
        __m128i r[8];
        for (int k = 0; k < 8; ++k) r[k] = load16(q0 + (k - 4) * s);
        if (!E::filter(r, alpha[e ? 1 : 0], beta[e ? 1 : 0], bs + 4 * e, tc0 + 4 * e)) continue;
        for (int k = 1; k < 7; ++k) store16(q0 + (k - 4) * s, r[k]);
    }
}

// Vertical luma edges: the 16 rows (and the 4 columns left of the block when
// edge 0 is filtered) are transposed into t, where column c is entry c + 4,
// filtered there as horizontal edges (the edges overlap, so each sees the
// previous one's result), and transposed back.
template <class E>
void luma_ver(u8* p, int step, const u8* alpha, const u8* beta, const u8* tc0, const u8* bs) {
    if ((load_u32(bs) | load_u32(bs + 4) | load_u32(bs + 8) | load_u32(bs + 12)) == 0) return;
    const std::ptrdiff_t s = step;
    const bool left = !edge_off(bs);
    __m128i t[20];
    {
        __m128i rows[16], cols[16];
        for (int y = 0; y < 16; ++y) rows[y] = load16(p + y * s);
        transpose16(rows, cols);
        for (int c = 0; c < 16; ++c) t[4 + c] = cols[c];
    }
    if (left) {
        __m128i pairs[8], cols[8];
        for (int i = 0; i < 8; ++i)
            pairs[i] = _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(load_u32(p + 2 * i * s - 4))),
                                         _mm_cvtsi32_si128(static_cast<int>(load_u32(p + (2 * i + 1) * s - 4))));
        transpose_pairs(pairs, cols);
        for (int c = 0; c < 4; ++c) t[c] = cols[c];
    }
    bool changed = false;
    for (int e = left ? 0 : 1; e < 4; ++e) {
        if (edge_off(bs + 4 * e)) continue;
        __m128i r[8];
        for (int k = 0; k < 8; ++k) r[k] = t[4 * e + k];
        if (!E::filter(r, alpha[e ? 1 : 0], beta[e ? 1 : 0], bs + 4 * e, tc0 + 4 * e)) continue;
        for (int k = 1; k < 7; ++k) t[4 * e + k] = r[k];
        changed = true;
    }
    if (!changed) return;
    {
        __m128i cols[16], rows[16];
        for (int c = 0; c < 16; ++c) cols[c] = t[4 + c];
        transpose16(cols, rows);
        for (int y = 0; y < 16; ++y) store16(p + y * s, rows[y]);
    }
    if (left) {
        // Columns -4..-1 back to rows of four bytes; column -4 is never written.
        const __m128i a0 = _mm_unpacklo_epi8(t[0], t[1]), a1 = _mm_unpackhi_epi8(t[0], t[1]);
        const __m128i b0 = _mm_unpacklo_epi8(t[2], t[3]), b1 = _mm_unpackhi_epi8(t[2], t[3]);
        alignas(16) u8 bytes[64];
        store16(bytes, _mm_unpacklo_epi16(a0, b0));
        store16(bytes + 16, _mm_unpackhi_epi16(a0, b0));
        store16(bytes + 32, _mm_unpacklo_epi16(a1, b1));
        store16(bytes + 48, _mm_unpackhi_epi16(a1, b1));
        for (int y = 0; y < 16; ++y) std::memcpy(p + y * s - 3, bytes + 4 * y + 1, 3);
    }
}

}  // namespace
}  // namespace kivvc::deblock
