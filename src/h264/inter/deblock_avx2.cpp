// AVX2 deblocking kernels where the wider registers pay. 8-bit luma: a
// 16-line edge fits one register of 16-bit lanes, so each edge runs the
// filter once instead of twice (the 8-line chroma edges keep SSE2). 16-bit
// samples: 8 lines per register in 32-bit lanes, which hold every sum and
// threshold of the full 16-bit range; vertical edges go through 8x8
// transposes of 16-bit samples, one group of 8 rows at a time.
#include <immintrin.h>

#include "h264/inter/deblock_simd.h"

namespace kivvc::deblock {
namespace {

struct Ops {
    using V = __m256i;
    static V zero() { return _mm256_setzero_si256(); }
    static V set1(int v) { return _mm256_set1_epi16(static_cast<short>(v)); }
    static V add(V a, V b) { return _mm256_add_epi16(a, b); }
    static V sub(V a, V b) { return _mm256_sub_epi16(a, b); }
    static V min(V a, V b) { return _mm256_min_epi16(a, b); }
    static V max(V a, V b) { return _mm256_max_epi16(a, b); }
    static V avg(V a, V b) { return _mm256_avg_epu16(a, b); }
    static V cmpgt(V a, V b) { return _mm256_cmpgt_epi16(a, b); }
    static V cmpeq(V a, V b) { return _mm256_cmpeq_epi16(a, b); }
    static V bit_and(V a, V b) { return _mm256_and_si256(a, b); }
    static V bit_or(V a, V b) { return _mm256_or_si256(a, b); }
    static V andnot(V a, V b) { return _mm256_andnot_si256(a, b); }
    template <int N>
    static V slli(V a) { return _mm256_slli_epi16(a, N); }
    template <int N>
    static V srli(V a) { return _mm256_srli_epi16(a, N); }
    template <int N>
    static V srai(V a) { return _mm256_srai_epi16(a, N); }
    static bool any(V m) { return _mm256_movemask_epi8(m) != 0; }
};

// Four bytes as 16 16-bit lanes, each repeated four times.
inline __m256i spread4(const u8* b) {
    __m128i v = _mm_cvtsi32_si128(static_cast<int>(load_u32(b)));
    v = _mm_unpacklo_epi8(v, v);
    return _mm256_cvtepu8_epi16(_mm_unpacklo_epi16(v, v));
}

struct LumaEdge {
    static bool filter(__m128i (&r)[8], int alpha, int beta, const u8* bs4, const u8* tc4) {
        __m256i w[8];
        for (int k = 0; k < 8; ++k) w[k] = _mm256_cvtepu8_epi16(r[k]);
        if (!luma_lines<Ops>(w, Ops::set1(alpha), Ops::set1(beta), spread4(bs4), spread4(tc4))) return false;
        for (int k = 1; k < 7; ++k)
            r[k] = _mm_packus_epi16(_mm256_castsi256_si128(w[k]), _mm256_extracti128_si256(w[k], 1));
        return true;
    }
};


// ---- 16-bit samples ----------------------------------------------------------

struct Ops32 {
    using V = __m256i;
    static V zero() { return _mm256_setzero_si256(); }
    static V set1(int v) { return _mm256_set1_epi32(v); }
    static V add(V a, V b) { return _mm256_add_epi32(a, b); }
    static V sub(V a, V b) { return _mm256_sub_epi32(a, b); }
    static V min(V a, V b) { return _mm256_min_epi32(a, b); }
    static V max(V a, V b) { return _mm256_max_epi32(a, b); }
    static V avg(V a, V b) { return _mm256_srli_epi32(_mm256_add_epi32(_mm256_add_epi32(a, b), set1(1)), 1); }
    static V cmpgt(V a, V b) { return _mm256_cmpgt_epi32(a, b); }
    static V cmpeq(V a, V b) { return _mm256_cmpeq_epi32(a, b); }
    static V bit_and(V a, V b) { return _mm256_and_si256(a, b); }
    static V bit_or(V a, V b) { return _mm256_or_si256(a, b); }
    static V andnot(V a, V b) { return _mm256_andnot_si256(a, b); }
    template <int N>
    static V slli(V a) { return _mm256_slli_epi32(a, N); }
    template <int N>
    static V srli(V a) { return _mm256_srli_epi32(a, N); }
    template <int N>
    static V srai(V a) { return _mm256_srai_epi32(a, N); }
    static bool any(V m) { return _mm256_movemask_epi8(m) != 0; }
};

struct ClipTo {
    __m256i max;
    __m256i operator()(__m256i v) const { return _mm256_min_epi32(_mm256_max_epi32(v, _mm256_setzero_si256()), max); }
};

inline __m256i widen(__m128i v) { return _mm256_cvtepu16_epi32(v); }
// Eight 32-bit lanes (each 0..65535) back to 16-bit samples.
inline __m128i narrow(__m256i v) {
    return _mm_packus_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
}
inline __m128i load_row(const u16* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void store_row(u16* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// Per-lane entries: e[2h] and e[2h + 1] four times each, or e[0..3] twice each.
template <class T>
inline __m256i lanes4(const T* e, int h) {
    const int a = e[2 * h], b = e[2 * h + 1];
    return _mm256_setr_epi32(a, a, a, a, b, b, b, b);
}
template <class T>
inline __m256i lanes2(const T* e) {
    return _mm256_setr_epi32(e[0], e[0], e[1], e[1], e[2], e[2], e[3], e[3]);
}

// 8x8 transpose of 16-bit samples (its own inverse).
inline void transpose8(const __m128i (&r)[8], __m128i (&c)[8]) {
    __m128i a[8], b[8];
    for (int i = 0; i < 4; ++i) {
        a[2 * i] = _mm_unpacklo_epi16(r[2 * i], r[2 * i + 1]);
        a[2 * i + 1] = _mm_unpackhi_epi16(r[2 * i], r[2 * i + 1]);
    }
    for (int j = 0; j < 2; ++j) {
        b[4 * j + 0] = _mm_unpacklo_epi32(a[4 * j], a[4 * j + 2]);
        b[4 * j + 1] = _mm_unpackhi_epi32(a[4 * j], a[4 * j + 2]);
        b[4 * j + 2] = _mm_unpacklo_epi32(a[4 * j + 1], a[4 * j + 3]);
        b[4 * j + 3] = _mm_unpackhi_epi32(a[4 * j + 1], a[4 * j + 3]);
    }
    for (int i = 0; i < 4; ++i) {
        c[2 * i] = _mm_unpacklo_epi64(b[i], b[4 + i]);
        c[2 * i + 1] = _mm_unpackhi_epi64(b[i], b[4 + i]);
    }
}

// Eight luma lines of 16-bit samples: x = p3 .. q3 (lane = line).
inline bool luma_lines16(__m128i (&x)[8], int alpha, int beta, __m256i bs, __m256i tc0, ClipTo clip) {
    __m256i w[8];
    for (int k = 0; k < 8; ++k) w[k] = widen(x[k]);
    if (!luma_lines<Ops32>(w, Ops32::set1(alpha), Ops32::set1(beta), bs, tc0, clip)) return false;
    for (int k = 1; k < 7; ++k) x[k] = narrow(w[k]);
    return true;
}

void luma_hor16(u16* p, int step, const u16* alpha, const u16* beta, const u16* tc0, const u8* bs, int max) {
    const std::ptrdiff_t s = step;
    const ClipTo clip{Ops32::set1(max)};
    for (int e = 0; e < 4; ++e) {
        const u8* b = bs + 4 * e;
        for (int h = 0; h < 2; ++h) {
            if ((b[2 * h] | b[2 * h + 1]) == 0) continue;
            u16* q0 = p + 4 * e * s + 8 * h;
            __m128i x[8];
            for (int k = 0; k < 8; ++k) x[k] = load_row(q0 + (k - 4) * s);
            if (!luma_lines16(x, alpha[e ? 1 : 0], beta[e ? 1 : 0], lanes4(b, h), lanes4(tc0 + 4 * e, h), clip))
                continue;
            for (int k = 1; k < 7; ++k) store_row(q0 + (k - 4) * s, x[k]);
        }
    }
}

// Vertical edges, 8 rows at a time: p3 .. q3 of each row transposed into
// lanes, filtered, transposed back; p2 .. q2 (12 bytes) stored per row.
void luma_ver16(u16* p, int step, const u16* alpha, const u16* beta, const u16* tc0, const u8* bs, int max) {
    const std::ptrdiff_t s = step;
    const ClipTo clip{Ops32::set1(max)};
    for (int e = 0; e < 4; ++e) {
        const u8* b = bs + 4 * e;
        for (int h = 0; h < 2; ++h) {
            if ((b[2 * h] | b[2 * h + 1]) == 0) continue;
            u16* row0 = p + 8 * h * s + 4 * e - 4;
            __m128i r[8], x[8];
            for (int y = 0; y < 8; ++y) r[y] = load_row(row0 + y * s);
            transpose8(r, x);
            if (!luma_lines16(x, alpha[e ? 1 : 0], beta[e ? 1 : 0], lanes4(b, h), lanes4(tc0 + 4 * e, h), clip))
                continue;
            transpose8(x, r);
            for (int y = 0; y < 8; ++y) {
                const __m128i v = _mm_srli_si128(r[y], 2);  // p2 .. q3
                _mm_storel_epi64(reinterpret_cast<__m128i*>(row0 + y * s + 1), v);
                const int tail = _mm_cvtsi128_si32(_mm_srli_si128(v, 8));  // q1, q2
                std::memcpy(row0 + y * s + 5, &tail, 4);
            }
        }
    }
}

// Eight chroma lines of 16-bit samples.
template <Choice C>
inline bool chroma_lines16(__m128i p1, __m128i& p0, __m128i& q0, __m128i q1, int alpha, int beta, __m256i bs,
                           const u8* bs4, __m256i tc0, ClipTo clip) {
    __m256i strong, normal;
    chroma_masks<C, Ops32>(bs, bs4, strong, normal);
    __m256i w0 = widen(p0), w1 = widen(q0);
    if (!chroma_lines<Ops32>(widen(p1), w0, w1, widen(q1), Ops32::set1(alpha), Ops32::set1(beta), strong, normal,
                             tc0, clip))
        return false;
    p0 = narrow(w0);
    q0 = narrow(w1);
    return true;
}

// Horizontal chroma edges of 8 samples, 4 rows apart; edge c's bS entries at
// bs + c * BsStride, each for two samples; strong on the whole edge when its
// first entry is 4.
template <int Edges, int BsStride>
void chroma_hor16(u16* p, int step, const u16* alpha, const u16* beta, const u16* tc0, const u8* bs, int max) {
    const std::ptrdiff_t s = step;
    const ClipTo clip{Ops32::set1(max)};
    for (int c = 0; c < Edges; ++c) {
        const u8* b = bs + c * BsStride;
        if (edge_off(b)) continue;
        u16* q0row = p + 4 * c * s;
        __m128i p0 = load_row(q0row - s), q0 = load_row(q0row);
        if (!chroma_lines16<Choice::FirstEntry>(load_row(q0row - 2 * s), p0, q0, load_row(q0row + s),
                                                alpha[c ? 1 : 0], beta[c ? 1 : 0], lanes2(b), b,
                                                lanes2(tc0 + 4 * c), clip))
            continue;
        store_row(q0row - s, p0);
        store_row(q0row, q0);
    }
}

// Vertical chroma edges at columns 0 and 4 over `Rows` rows, 8 at a time;
// edge c's bS entries at bs + 8c, each for Rows / 4 lines.
template <int Rows>
void chroma_ver16(u16* p, int step, const u16* alpha, const u16* beta, const u16* tc0, const u8* bs, int max) {
    const std::ptrdiff_t s = step;
    const ClipTo clip{Ops32::set1(max)};
    for (int c = 0; c < 2; ++c) {
        const u8* b = bs + 8 * c;
        if (edge_off(b)) continue;
        for (int g = 0; g < Rows / 8; ++g) {
            u16* row0 = p + 8 * g * s + 4 * c - 2;
            __m128i r[8], x[8];
            for (int y = 0; y < 8; ++y) r[y] = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row0 + y * s));
            transpose8(r, x);  // x[0..3] = p1, p0, q0, q1
            const __m256i bl = Rows == 8 ? lanes2(b) : lanes4(b, g);
            const __m256i tl = Rows == 8 ? lanes2(tc0 + 4 * c) : lanes4(tc0 + 4 * c, g);
            if (!chroma_lines16<Choice::PerLine>(x[0], x[1], x[2], x[3], alpha[c], beta[c], bl, b, tl, clip))
                continue;
            alignas(16) u16 out[16];
            store_row(out, _mm_unpacklo_epi16(x[1], x[2]));
            store_row(out + 8, _mm_unpackhi_epi16(x[1], x[2]));
            for (int y = 0; y < 8; ++y) std::memcpy(row0 + y * s + 1, out + 2 * y, 4);
        }
    }
}
}  // namespace

void init_deblock_avx2(Table& t) {
    t.luma_ver = &luma_ver<LumaEdge>;
    t.luma_hor = &luma_hor<LumaEdge>;
    t.luma_ver16 = &luma_ver16;
    t.luma_hor16 = &luma_hor16;
    t.chroma_ver16 = &chroma_ver16<8>;
    t.chroma_hor16 = &chroma_hor16<2, 8>;
    t.chroma422_ver16 = &chroma_ver16<16>;
    t.chroma422_hor16 = &chroma_hor16<4, 4>;
}

}  // namespace kivvc::deblock
