// SSE2 deblocking kernels for 8-bit samples, 8 lines per register (16-bit
// lanes). Horizontal edges load whole rows; vertical edges go through a
// transpose (luma: the whole macroblock into a scratch block and back, since
// its edges overlap; chroma: each group of 8 rows once, since its edges do
// not). Edges whose four bS bytes are zero are skipped before anything is
// loaded, halves of an edge with zero bS and groups of lines the decision
// rejects are left as they are, and the strong-filter sums run only when some
// line needs them.
#include <emmintrin.h>

#include "h264/inter/deblock_simd.h"

namespace kivvc::deblock {
namespace {

using V = __m128i;

struct Ops {
    using V = __m128i;
    static V zero() { return _mm_setzero_si128(); }
    static V set1(int v) { return _mm_set1_epi16(static_cast<short>(v)); }
    static V add(V a, V b) { return _mm_add_epi16(a, b); }
    static V sub(V a, V b) { return _mm_sub_epi16(a, b); }
    static V min(V a, V b) { return _mm_min_epi16(a, b); }
    static V max(V a, V b) { return _mm_max_epi16(a, b); }
    static V avg(V a, V b) { return _mm_avg_epu16(a, b); }
    static V cmpgt(V a, V b) { return _mm_cmpgt_epi16(a, b); }
    static V cmpeq(V a, V b) { return _mm_cmpeq_epi16(a, b); }
    static V bit_and(V a, V b) { return _mm_and_si128(a, b); }
    static V bit_or(V a, V b) { return _mm_or_si128(a, b); }
    static V andnot(V a, V b) { return _mm_andnot_si128(a, b); }
    template <int N>
    static V slli(V a) { return _mm_slli_epi16(a, N); }
    template <int N>
    static V srli(V a) { return _mm_srli_epi16(a, N); }
    template <int N>
    static V srai(V a) { return _mm_srai_epi16(a, N); }
    static bool any(V m) { return _mm_movemask_epi8(m) != 0; }
};

inline V widen_lo(V v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline V widen_hi(V v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// Four bytes as 16-bit lanes, each repeated twice: b0 b0 b1 b1 b2 b2 b3 b3.
inline V spread2(const u8* b) {
    const V v = widen_lo(_mm_cvtsi32_si128(static_cast<int>(load_u32(b))));
    return _mm_unpacklo_epi16(v, v);
}
// Two of four bytes (b[2h], b[2h + 1]) as 16-bit lanes, each repeated four times.
inline V spread4(const u8* b, int h) {
    const V v = spread2(b);
    return h ? _mm_unpackhi_epi32(v, v) : _mm_unpacklo_epi32(v, v);
}

// One 16-line luma edge in two halves of 8 lines.
struct LumaEdge {
    static bool filter(V (&r)[8], int alpha, int beta, const u8* bs4, const u8* tc4) {
        const V va = Ops::set1(alpha), vb = Ops::set1(beta);
        V half[2][8];
        bool changed = false;
        for (int h = 0; h < 2; ++h) {
            for (int k = 0; k < 8; ++k) half[h][k] = h ? widen_hi(r[k]) : widen_lo(r[k]);
            if ((bs4[2 * h] | bs4[2 * h + 1]) == 0) continue;
            changed |= luma_lines<Ops>(half[h], va, vb, spread4(bs4, h), spread4(tc4, h));
        }
        if (!changed) return false;
        for (int k = 1; k < 7; ++k) r[k] = _mm_packus_epi16(half[0][k], half[1][k]);
        return true;
    }
};

// One chroma edge of 8 lines given as bytes (low 8 lanes of each row
// register); bs and tc0 per lane.
template <Choice C>
inline bool chroma_edge(V p1, V& p0, V& q0, V q1, int alpha, int beta, V bs, const u8* bs4, V tc0) {
    V strong, normal;
    chroma_masks<C, Ops>(bs, bs4, strong, normal);
    V w0 = widen_lo(p0), w1 = widen_lo(q0);
    if (!chroma_lines<Ops>(widen_lo(p1), w0, w1, widen_lo(q1), Ops::set1(alpha), Ops::set1(beta), strong, normal,
                           tc0))
        return false;
    p0 = _mm_packus_epi16(w0, w0);
    q0 = _mm_packus_epi16(w1, w1);
    return true;
}

// Horizontal chroma edges, 8 samples long, 4 rows apart. Edge c uses bS from
// bs + c * BsStride (entries repeated twice along the edge) and tC0 from
// tc0 + 4c.
template <int Edges, int BsStride, Choice C>
void chroma_hor(u8* p, int step, const u8* alpha, const u8* beta, const u8* tc0, const u8* bs) {
    const std::ptrdiff_t s = step;
    for (int c = 0; c < Edges; ++c) {
        const u8* b = bs + c * BsStride;
        if (edge_off(b)) continue;
        u8* q0row = p + 4 * c * s;
        V p0 = load8(q0row - s), q0 = load8(q0row);
        if (chroma_edge<C>(load8(q0row - 2 * s), p0, q0, load8(q0row + s), alpha[c ? 1 : 0], beta[c ? 1 : 0],
                           spread2(b), b, spread2(tc0 + 4 * c))) {
            store8(q0row - s, p0);
            store8(q0row, q0);
        }
    }
}

// Both vertical chroma edges over 8 rows (the edges at columns 0 and 4 do
// not overlap). Line i of the group uses the per-lane bS and tC0 of edge c
// given by bs_lanes(c) / tc_lanes(c); bs4(c) points at the edge's entries.
template <class Lanes>
void chroma_ver8(u8* p, std::ptrdiff_t s, const u8* alpha, const u8* beta, const Lanes& lanes) {
    const bool left = !edge_off(lanes.bs4(0)), right = !edge_off(lanes.bs4(1));
    if (!left && !right) return;
    // Columns -2..5 when edge 0 is filtered, else 0..7: edge c's p1 is then
    // column `first[c]` of the transposed group.
    const int origin = left ? -2 : 0;
    V pairs[8], col[8];
    for (int i = 0; i < 4; ++i)
        pairs[i] = _mm_unpacklo_epi8(load8(p + 2 * i * s + origin), load8(p + (2 * i + 1) * s + origin));
    for (int i = 4; i < 8; ++i) pairs[i] = _mm_setzero_si128();
    transpose_pairs(pairs, col);
    alignas(16) u8 out[2][16];
    bool changed[2] = {false, false};
    for (int c = 0; c < 2; ++c) {
        if (c == 0 ? !left : !right) continue;
        const int f = 4 * c - 2 - origin;
        V p0 = col[f + 1], q0 = col[f + 2];
        changed[c] = chroma_edge<Choice::PerLine>(col[f], p0, q0, col[f + 3], alpha[c], beta[c], lanes.bs(c),
                                                  lanes.bs4(c), lanes.tc(c));
        store16(out[c], _mm_unpacklo_epi8(p0, q0));
    }
    for (int c = 0; c < 2; ++c)
        if (changed[c])
            for (int y = 0; y < 8; ++y) std::memcpy(p + y * s + 4 * c - 1, out[c] + 2 * y, 2);
}

// 4:2:0: bS entries 8c.., tC0 4c.., each entry for two lines.
struct Lanes420 {
    const u8 *bs_, *tc_;
    const u8* bs4(int c) const { return bs_ + 8 * c; }
    V bs(int c) const { return spread2(bs_ + 8 * c); }
    V tc(int c) const { return spread2(tc_ + 4 * c); }
};
// 4:2:2 vertical, half h of 16 lines: entries 2h, 2h + 1 of each edge, each
// for four lines.
struct Lanes422 {
    const u8 *bs_, *tc_;
    int h;
    const u8* bs4(int c) const { return bs_ + 8 * c; }
    V bs(int c) const { return spread4(bs_ + 8 * c, h); }
    V tc(int c) const { return spread4(tc_ + 4 * c, h); }
};

void chroma_ver(u8* p, int step, const u8* alpha, const u8* beta, const u8* tc0, const u8* bs) {
    chroma_ver8(p, step, alpha, beta, Lanes420{bs, tc0});
}

void chroma422_ver(u8* p, int step, const u8* alpha, const u8* beta, const u8* tc0, const u8* bs) {
    const std::ptrdiff_t s = step;
    chroma_ver8(p, s, alpha, beta, Lanes422{bs, tc0, 0});
    chroma_ver8(p + 8 * s, s, alpha, beta, Lanes422{bs, tc0, 1});
}

}  // namespace

void init_deblock_sse2(Table& t) {
    t.luma_ver = &luma_ver<LumaEdge>;
    t.luma_hor = &luma_hor<LumaEdge>;
    t.chroma_ver = &chroma_ver;
    t.chroma_hor = &chroma_hor<2, 8, Choice::AllFour>;
    t.chroma422_ver = &chroma422_ver;
    t.chroma422_hor = &chroma_hor<4, 4, Choice::FirstEntry>;
}

}  // namespace kivvc::deblock
