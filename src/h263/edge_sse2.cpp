// SSE2 edge filters: eight lines per register in 16-bit lanes. Vertical
// edges gather the four (or two) samples of each row and transpose them.
#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "h263/edge_kernels.h"

namespace kivvc::h263 {
namespace {

using u8 = std::uint8_t;

inline __m128i load8(const u8* p) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)); }
inline void store8(u8* p, __m128i v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v); }
inline __m128i load4(const u8* p) {
    std::int32_t v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}
inline void store4(u8* p, __m128i v) {
    const std::int32_t x = _mm_cvtsi128_si32(v);
    std::memcpy(p, &x, 4);
}
inline __m128i abs16(__m128i x) { return _mm_max_epi16(x, _mm_sub_epi16(_mm_setzero_si128(), x)); }
// x / 2^s truncated toward zero: negative values get 2^s - 1 added first.
template <int S>
inline __m128i div_trunc(__m128i x) {
    const __m128i bias = _mm_srli_epi16(_mm_srai_epi16(x, 15), 16 - S);
    return _mm_srai_epi16(_mm_add_epi16(x, bias), S);
}

// One deblocking step on eight lines: a, b, c, d as 16-bit lanes in,
// filtered values out (in 0..255).
inline void deblock_lanes(__m128i& a, __m128i& b, __m128i& c, __m128i& d, __m128i strength) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i x = _mm_add_epi16(_mm_sub_epi16(a, d), _mm_slli_epi16(_mm_sub_epi16(c, b), 2));
    const __m128i dv = div_trunc<3>(x);
    const __m128i sign = _mm_srai_epi16(dv, 15);
    const __m128i mag = abs16(dv);  // at most 159
    const __m128i over = _mm_max_epi16(zero, _mm_slli_epi16(_mm_sub_epi16(mag, strength), 1));
    const __m128i ramp = _mm_max_epi16(zero, _mm_sub_epi16(mag, over));
    const __m128i d1 = _mm_sub_epi16(_mm_xor_si128(ramp, sign), sign);
    const __m128i lim = _mm_srli_epi16(ramp, 1);
    const __m128i d2 = _mm_min_epi16(_mm_max_epi16(div_trunc<2>(_mm_sub_epi16(a, d)), _mm_sub_epi16(zero, lim)), lim);
    b = _mm_add_epi16(b, d1);
    c = _mm_sub_epi16(c, d1);
    a = _mm_sub_epi16(a, d2);
    d = _mm_add_epi16(d, d2);
}

inline __m128i lo16(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i hi16(__m128i v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// Horizontal edge, 8 or 16 columns: rows -2..+1 loaded whole.
template <int Lines>
void deblock_hor(u8* p, int step, int strength) {
    const __m128i s = _mm_set1_epi16(static_cast<short>(strength));
    u8* r[4] = {p - 2 * std::ptrdiff_t{step}, p - step, p, p + step};
    if constexpr (Lines == 8) {
        __m128i a = lo16(load8(r[0])), b = lo16(load8(r[1])), c = lo16(load8(r[2])), d = lo16(load8(r[3]));
        deblock_lanes(a, b, c, d, s);
        store8(r[0], _mm_packus_epi16(a, a));
        store8(r[1], _mm_packus_epi16(b, b));
        store8(r[2], _mm_packus_epi16(c, c));
        store8(r[3], _mm_packus_epi16(d, d));
    } else {
        __m128i v[4];
        for (int i = 0; i < 4; ++i) v[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(r[i]));
        __m128i a0 = lo16(v[0]), b0 = lo16(v[1]), c0 = lo16(v[2]), d0 = lo16(v[3]);
        __m128i a1 = hi16(v[0]), b1 = hi16(v[1]), c1 = hi16(v[2]), d1 = hi16(v[3]);
        deblock_lanes(a0, b0, c0, d0, s);
        deblock_lanes(a1, b1, c1, d1, s);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r[0]), _mm_packus_epi16(a0, a1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r[1]), _mm_packus_epi16(b0, b1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r[2]), _mm_packus_epi16(c0, c1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(r[3]), _mm_packus_epi16(d0, d1));
    }
}

// Vertical edge, eight rows: columns -2..+1 of each row gathered and
// transposed into A0..A7 B0..B7 | C0..C7 D0..D7.
void deblock_ver8(u8* p, int step, __m128i s) {
    __m128i row[8];
    for (int i = 0; i < 8; ++i) row[i] = load4(p + std::ptrdiff_t{i} * step - 2);
    const __m128i x = _mm_unpacklo_epi64(_mm_unpacklo_epi32(row[0], row[1]), _mm_unpacklo_epi32(row[2], row[3]));
    const __m128i y = _mm_unpacklo_epi64(_mm_unpacklo_epi32(row[4], row[5]), _mm_unpacklo_epi32(row[6], row[7]));
    const __m128i t0 = _mm_unpacklo_epi8(x, y), t1 = _mm_unpackhi_epi8(x, y);
    const __m128i u0 = _mm_unpacklo_epi8(t0, t1), u1 = _mm_unpackhi_epi8(t0, t1);
    const __m128i ab = _mm_unpacklo_epi8(u0, u1), cd = _mm_unpackhi_epi8(u0, u1);
    __m128i a = lo16(ab), b = hi16(ab), c = lo16(cd), d = hi16(cd);
    deblock_lanes(a, b, c, d, s);
    const __m128i w0 = _mm_unpacklo_epi8(_mm_packus_epi16(a, b), _mm_packus_epi16(c, d));  // A0 C0 A1 C1 ..
    const __m128i w1 = _mm_unpackhi_epi8(_mm_packus_epi16(a, b), _mm_packus_epi16(c, d));  // B0 D0 B1 D1 ..
    __m128i rows03 = _mm_unpacklo_epi8(w0, w1), rows47 = _mm_unpackhi_epi8(w0, w1);
    for (int i = 0; i < 4; ++i) {
        store4(p + std::ptrdiff_t{i} * step - 2, rows03);
        store4(p + std::ptrdiff_t{i + 4} * step - 2, rows47);
        rows03 = _mm_srli_si128(rows03, 4);
        rows47 = _mm_srli_si128(rows47, 4);
    }
}

template <int Lines>
void deblock_ver(u8* p, int step, int strength) {
    const __m128i s = _mm_set1_epi16(static_cast<short>(strength));
    for (int i = 0; i < Lines; i += 8) deblock_ver8(p + std::ptrdiff_t{i} * step, step, s);
}

// (3a + b + 2) >> 2 and (a + 3b + 2) >> 2 on 16-bit lanes.
inline void boundary_lanes(__m128i& a, __m128i& b) {
    const __m128i two = _mm_set1_epi16(2);
    const __m128i sum = _mm_add_epi16(_mm_add_epi16(a, b), two);
    const __m128i na = _mm_srli_epi16(_mm_add_epi16(sum, _mm_add_epi16(a, a)), 2);
    b = _mm_srli_epi16(_mm_add_epi16(sum, _mm_add_epi16(b, b)), 2);
    a = na;
}

void boundary_hor(u8* p, int step) {
    u8* above = p - step;
    const __m128i va = _mm_loadu_si128(reinterpret_cast<const __m128i*>(above));
    const __m128i vb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    __m128i a0 = lo16(va), a1 = hi16(va), b0 = lo16(vb), b1 = hi16(vb);
    boundary_lanes(a0, b0);
    boundary_lanes(a1, b1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(above), _mm_packus_epi16(a0, a1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_packus_epi16(b0, b1));
}

// Vertical edge: the pair (column -1, column 0) of each row as one 16-bit
// lane, low byte the sample left of the edge.
void boundary_ver(u8* p, int step) {
    const __m128i low = _mm_set1_epi16(0xFF);
    for (int half = 0; half < 16; half += 8) {
        u8* q = p + std::ptrdiff_t{half} * step - 1;
        std::uint16_t pair[8];
        for (int i = 0; i < 8; ++i) std::memcpy(&pair[i], q + std::ptrdiff_t{i} * step, 2);
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pair));
        __m128i a = _mm_and_si128(v, low), b = _mm_srli_epi16(v, 8);
        boundary_lanes(a, b);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pair), _mm_or_si128(a, _mm_slli_epi16(b, 8)));
        for (int i = 0; i < 8; ++i) std::memcpy(q + std::ptrdiff_t{i} * step, &pair[i], 2);
    }
}

}  // namespace

void init_edge_sse2(EdgeTable& t) {
    t.deblock8[0] = &deblock_hor<8>;
    t.deblock8[1] = &deblock_ver<8>;
    t.deblock16[0] = &deblock_hor<16>;
    t.deblock16[1] = &deblock_ver<16>;
    t.boundary[0] = &boundary_hor;
    t.boundary[1] = &boundary_ver;
}

}  // namespace kivvc::h263
