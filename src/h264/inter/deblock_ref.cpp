// Scalar references of the H.264 deblocking kernels: one per-line filter for
// each plane kind, walked along an edge by one driver that takes the sample
// distances across and along the edge, so that vertical and horizontal edges
// and both sample widths share the same code.
#include <cstddef>
#include <cstdlib>

#include "core/arith.h"
#include "h264/inter/deblock_kernels.h"

namespace kivvc::deblock {
namespace {

// How bS and tC0 entries map onto the lines of a plane kind. Edge e starts
// at bS entry e * bs_per_edge and tC0 entry 4e; line i of an edge uses its
// entry i >> line_shift.
struct LumaLayout {
    static constexpr int edges = 4, lines = 16, bs_per_edge = 4, line_shift = 2;
};
struct Chroma420Layout {  // the luma edges 0 and 2
    static constexpr int edges = 2, lines = 8, bs_per_edge = 8, line_shift = 1;
};
struct Chroma422VerLayout {
    static constexpr int edges = 2, lines = 16, bs_per_edge = 8, line_shift = 2;
};
struct Chroma422HorLayout {
    static constexpr int edges = 4, lines = 8, bs_per_edge = 4, line_shift = 1;
};
struct LumaMbaffLayout {
    static constexpr int edges = 1, lines = 8, bs_per_edge = 4, line_shift = 1;
};
struct ChromaMbaffLayout {
    static constexpr int edges = 1, lines = 4, bs_per_edge = 4, line_shift = 0;
};

// Chroma strong-or-normal choice: per line from its own bS, or once per edge
// (strong everywhere when the edge's first entry is 4, or when all four are).
enum class Choice { PerLine, FirstEntry, AllFour };

// The line decision: the step across the edge looks like a coding artefact.
template <class T>
bool line_filtered(const T* s, std::ptrdiff_t x, int alpha, int beta) {
    const int p0 = s[-x], p1 = s[-2 * x], q0 = s[0], q1 = s[x];
    return std::abs(p0 - q0) < alpha && std::abs(p1 - p0) < beta && std::abs(q1 - q0) < beta;
}

// delta of the normal filter; |delta| <= tc.
inline int normal_delta(int p1, int p0, int q0, int q1, int tc) {
    return clip3(-tc, tc, shift_right_floor(4 * (q0 - p0) + (p1 - q1) + 4, 3));
}

// One luma line: s points at q0, x is the distance to q1.
template <class T>
void luma_line(T* s, std::ptrdiff_t x, int alpha, int beta, int bs, int tc0, int max) {
    if (!line_filtered(s, x, alpha, beta)) return;
    const int p0 = s[-x], p1 = s[-2 * x], p2 = s[-3 * x];
    const int q0 = s[0], q1 = s[x], q2 = s[2 * x];
    const bool ap = std::abs(p2 - p0) < beta, aq = std::abs(q2 - q0) < beta;
    if (bs == 4) {
        const bool small_gap = std::abs(p0 - q0) < (alpha >> 2) + 2;
        if (ap && small_gap) {
            const int p3 = s[-4 * x];
            s[-x] = static_cast<T>((p2 + 2 * p1 + 2 * p0 + 2 * q0 + q1 + 4) >> 3);
            s[-2 * x] = static_cast<T>((p2 + p1 + p0 + q0 + 2) >> 2);
            s[-3 * x] = static_cast<T>((2 * p3 + 3 * p2 + p1 + p0 + q0 + 4) >> 3);
        } else {
            s[-x] = static_cast<T>((2 * p1 + p0 + q1 + 2) >> 2);
        }
        if (aq && small_gap) {
            const int q3 = s[3 * x];
            s[0] = static_cast<T>((p1 + 2 * p0 + 2 * q0 + 2 * q1 + q2 + 4) >> 3);
            s[x] = static_cast<T>((p0 + q0 + q1 + q2 + 2) >> 2);
            s[2 * x] = static_cast<T>((2 * q3 + 3 * q2 + q1 + q0 + p0 + 4) >> 3);
        } else {
            s[0] = static_cast<T>((2 * q1 + q0 + p1 + 2) >> 2);
        }
        return;
    }
    const int delta = normal_delta(p1, p0, q0, q1, tc0 + ap + aq);
    s[-x] = static_cast<T>(clip3(0, max, p0 + delta));
    s[0] = static_cast<T>(clip3(0, max, q0 - delta));
    // p1' and q1' lie between p1 (q1) and (p2 + avg) >> 1: no clamp needed.
    const int avg = (p0 + q0 + 1) >> 1;
    if (ap) s[-2 * x] = static_cast<T>(p1 + clip3(-tc0, tc0, shift_right_floor(p2 + avg - 2 * p1, 1)));
    if (aq) s[x] = static_cast<T>(q1 + clip3(-tc0, tc0, shift_right_floor(q2 + avg - 2 * q1, 1)));
}

// One chroma line: only p0 and q0 change.
template <class T>
void chroma_line(T* s, std::ptrdiff_t x, int alpha, int beta, bool strong, int tc0, int max) {
    if (!line_filtered(s, x, alpha, beta)) return;
    const int p0 = s[-x], p1 = s[-2 * x], q0 = s[0], q1 = s[x];
    if (strong) {
        s[-x] = static_cast<T>((2 * p1 + p0 + q1 + 2) >> 2);
        s[0] = static_cast<T>((2 * q1 + q0 + p1 + 2) >> 2);
        return;
    }
    const int delta = normal_delta(p1, p0, q0, q1, tc0 + 1);
    s[-x] = static_cast<T>(clip3(0, max, p0 + delta));
    s[0] = static_cast<T>(clip3(0, max, q0 - delta));
}

// Every edge of one direction. across: distance between the samples of a
// line; along: distance between lines.
template <class L, bool Luma, Choice C, class T, class Tc>
void filter_edges(T* p, std::ptrdiff_t across, std::ptrdiff_t along, const int (&alpha)[2], const int (&beta)[2],
                  const Tc* tc0, const u8* bs, int max) {
    for (int e = 0; e < L::edges; ++e) {
        const u8* b = bs + e * L::bs_per_edge;
        if ((b[0] | b[1] | b[2] | b[3]) == 0) continue;
        const int a = alpha[e ? 1 : 0], bt = beta[e ? 1 : 0];
        bool strong_edge = false;
        if constexpr (C == Choice::FirstEntry) strong_edge = b[0] == 4;
        if constexpr (C == Choice::AllFour) strong_edge = b[0] == 4 && b[1] == 4 && b[2] == 4 && b[3] == 4;
        T* edge = p + 4 * e * across;
        for (int i = 0; i < L::lines; ++i) {
            const int seg = i >> L::line_shift;
            const int strength = b[seg];
            T* s = edge + i * along;
            const int tc = tc0[4 * e + seg];
            if constexpr (Luma) {
                if (strength) luma_line(s, across, a, bt, strength, tc, max);
            } else {
                if (strong_edge) chroma_line(s, across, a, bt, true, tc, max);
                else if (strength) chroma_line(s, across, a, bt, C == Choice::PerLine && strength == 4, tc, max);
            }
        }
    }
}

template <bool Vertical>
constexpr std::ptrdiff_t across_of(int step) { return Vertical ? 1 : step; }
template <bool Vertical>
constexpr std::ptrdiff_t along_of(int step) { return Vertical ? step : 1; }

template <class L, bool Luma, Choice C, bool Vertical>
void edges8(u8* p, int step, const u8* alpha, const u8* beta, const u8* tc0, const u8* bs) {
    const int a[2] = {alpha[0], alpha[1]}, b[2] = {beta[0], beta[1]};
    filter_edges<L, Luma, C>(p, across_of<Vertical>(step), along_of<Vertical>(step), a, b, tc0, bs, 255);
}

template <class L, bool Luma, Choice C, bool Vertical>
void edges16(u16* p, int step, const u16* alpha, const u16* beta, const u16* tc0, const u8* bs, int max) {
    const int a[2] = {alpha[0], alpha[1]}, b[2] = {beta[0], beta[1]};
    filter_edges<L, Luma, C>(p, across_of<Vertical>(step), along_of<Vertical>(step), a, b, tc0, bs, max);
}

template <class L, bool Luma>
void mbaff8(u8* p, int step, int alpha, int beta, const u8* tc0, const u8* bs) {
    const int a[2] = {alpha, alpha}, b[2] = {beta, beta};
    filter_edges<L, Luma, Choice::PerLine>(p, 1, step, a, b, tc0, bs, 255);
}

template <class L, bool Luma>
void mbaff16(u16* p, int step, int alpha, int beta, const u16* tc0, const u8* bs, int max) {
    const int a[2] = {alpha, alpha}, b[2] = {beta, beta};
    filter_edges<L, Luma, Choice::PerLine>(p, 1, step, a, b, tc0, bs, max);
}

}  // namespace

void init_deblock(Table& t, CpuFlags cpu) {
    t.luma_ver = &edges8<LumaLayout, true, Choice::PerLine, true>;
    t.luma_hor = &edges8<LumaLayout, true, Choice::PerLine, false>;
    t.chroma_ver = &edges8<Chroma420Layout, false, Choice::PerLine, true>;
    t.chroma_hor = &edges8<Chroma420Layout, false, Choice::AllFour, false>;
    t.chroma422_ver = &edges8<Chroma422VerLayout, false, Choice::PerLine, true>;
    t.chroma422_hor = &edges8<Chroma422HorLayout, false, Choice::FirstEntry, false>;
    t.luma_ver_mbaff = &mbaff8<LumaMbaffLayout, true>;
    t.chroma_ver_mbaff = &mbaff8<ChromaMbaffLayout, false>;
    t.luma_ver16 = &edges16<LumaLayout, true, Choice::PerLine, true>;
    t.luma_hor16 = &edges16<LumaLayout, true, Choice::PerLine, false>;
    t.chroma_ver16 = &edges16<Chroma420Layout, false, Choice::PerLine, true>;
    t.chroma_hor16 = &edges16<Chroma420Layout, false, Choice::FirstEntry, false>;
    t.chroma422_ver16 = &edges16<Chroma422VerLayout, false, Choice::PerLine, true>;
    t.chroma422_hor16 = &edges16<Chroma422HorLayout, false, Choice::FirstEntry, false>;
    t.luma_ver_mbaff16 = &mbaff16<LumaMbaffLayout, true>;
    t.chroma_ver_mbaff16 = &mbaff16<ChromaMbaffLayout, false>;

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_deblock_sse2(t);
    if (!(cpu & kAvx2)) return;
    init_deblock_avx2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_deblock>(); }

}  // namespace kivvc::deblock
