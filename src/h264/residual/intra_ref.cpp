// Scalar references of the H.264 intra predictors, for 8-bit and 9..14-bit
// samples from one set of templates.
//
// The diagonal modes follow diagonal_tap (intra_kernels.h).
#include <algorithm>
#include <utility>

#include "core/arith.h"
#include "h264/residual/intra_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::intra {
namespace {

int tap2(int a, int b) { return (a + b + 1) >> 1; }
int tap3(int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; }

template <int W, int H = W, class T, class G>
void fill(T* dst, int step, G value) {
    for (int y = 0; y < H; ++y) {
        T* d = row(dst, step, y);
        for (int x = 0; x < W; ++x) d[x] = static_cast<T>(value(x, y));
    }
}

// Both tap tables of the edge line are built once per block.
template <int N, int Mode, class T>
void pred_diagonal(const T* top, const T* left, T* dst, int step, int) {
    static_assert(Mode >= 3 && Mode <= 8);
    constexpr int o = N - 1, n = o + 3 * N + 3;  // e(i) = line[o + i]
    int line[n];
    for (int i = 0; i < o; ++i) line[i] = left[N - 1];
    for (int i = 0; i < N; ++i) line[o + i] = left[N - 1 - i];
    for (int i = -1; i < 2 * N; ++i) line[o + N + 1 + i] = top[i];
    for (int i = o + 3 * N + 1; i < n; ++i) line[i] = top[2 * N - 1];
    int t2[n - 1], t3[n - 2];
    for (int i = 0; i < n - 1; ++i) t2[i] = tap2(line[i], line[i + 1]);
    for (int i = 0; i < n - 2; ++i) t3[i] = tap3(line[i], line[i + 1], line[i + 2]);
    fill<N>(dst, step, [&](int x, int y) {
        const DiagonalTap tap = diagonal_tap(N, Mode, x, y);
        return tap.three ? t3[o + tap.index] : t2[o + tap.index];
    });
}

template <int N, int Avail, class T>
void pred_dc(const T* top, const T* left, T* dst, int step, int bitDepth) {
    const int v = dc_value<N>(top, left, Avail, bitDepth);
    fill<N>(dst, step, [v](int, int) { return v; });
}

template <int W, int H, class T>
void pred_vertical(const T* top, const T*, T* dst, int step, int) {
    fill<W, H>(dst, step, [top](int x, int) { return top[x]; });
}

template <int W, int H, class T>
void pred_horizontal(const T*, const T* left, T* dst, int step, int) {
    fill<W, H>(dst, step, [left](int, int y) { return left[y]; });
}

// Plane prediction of a W x H block: the gradient along a side of 16 samples
// is (5 * G + 32) >> 6, along a side of 8 (34 * G + 32) >> 6.
template <int W, int H, class T>
void pred_plane(const T* top, const T* left, T* dst, int step, int bitDepth) {
    constexpr int hw = W / 2, hh = H / 2, mx = W == 16 ? 5 : 34, my = H == 16 ? 5 : 34;
    const auto l = [&](int j) { return j < 0 ? int(top[-1]) : int(left[j]); };
    int h = 0, v = 0;
    for (int k = 0; k < hw; ++k) h += (k + 1) * (top[hw + k] - top[hw - 2 - k]);
    for (int k = 0; k < hh; ++k) v += (k + 1) * (l(hh + k) - l(hh - 2 - k));
    const int a = 16 * (left[H - 1] + top[W - 1]);
    const int b = (mx * h + 32) >> 6, c = (my * v + 32) >> 6;
    fill<W, H>(dst, step, [&](int x, int y) {
        return clip_pixel((a + b * (x - (hw - 1)) + c * (y - (hh - 1)) + 16) >> 5, bitDepth);
    });
}

// Chroma DC (8 wide, H high): each 4x4 block averages the neighbour groups
// H.264 assigns to its position: blocks of the left column other than the
// first prefer the left group, blocks of the top row other than the first
// the top group, the others take both.
template <int H, int Avail, class T>
void pred_chroma_dc(const T* top, const T* left, T* dst, int step, int bitDepth) {
    int v[H / 4][2];
    for (int qy = 0; qy < H / 4; ++qy)
        for (int qx = 0; qx < 2; ++qx) {
            int avail = Avail;
            if (Avail == 3 && qx == 0 && qy > 0) avail = 2;
            if (Avail == 3 && qx > 0 && qy == 0) avail = 1;
            v[qy][qx] = dc_value<4>(top + 4 * qx, left + 4 * qy, avail, bitDepth);
        }
    fill<8, H>(dst, step, [&v](int x, int y) { return v[y >> 2][x >> 2]; });
}

template <auto F>
void at8(const u8* top, const u8* left, u8* dst, int step) {
    F(top, left, dst, step, 8);
}
// Table entries: the 8-bit table drops the bit-depth argument, the 16-bit
// one takes the templates as they are.
template <auto F>
struct Drop {
    static constexpr PredFn fn = &at8<F>;
};
template <auto F>
struct Keep {
    static constexpr PredHbdFn fn = F;
};

using Diagonals = std::integer_sequence<int, 3, 4, 5, 6, 7, 8>;
using Avails = std::make_integer_sequence<int, 4>;  // dc_index values

template <template <auto> class W, class T, class Fn, int... M>
void fill_diagonals(Fn (&p4)[9], Fn (&p8)[9], std::integer_sequence<int, M...>) {
    ((p4[M] = W<&pred_diagonal<4, M, T>>::fn), ...);
    ((p8[M] = W<&pred_diagonal<8, M, T>>::fn), ...);
}

template <template <auto> class W, class T, class Fn, int... A>
void fill_dc(Fn (&dc4)[4], Fn (&dc8)[4], Fn (&dc16)[4], Fn (&dcc)[4], Fn (&dcc16)[4], std::integer_sequence<int, A...>) {
    ((dc4[A] = W<&pred_dc<4, A, T>>::fn), ...);
    ((dc8[A] = W<&pred_dc<8, A, T>>::fn), ...);
    ((dc16[A] = W<&pred_dc<16, A, T>>::fn), ...);
    ((dcc[A] = W<&pred_chroma_dc<8, A, T>>::fn), ...);
    ((dcc16[A] = W<&pred_chroma_dc<16, A, T>>::fn), ...);
}

// Vertical and horizontal at any size come from the two plain templates; the
// 8x8 luma ones read the filtered neighbours like every 8x8 mode.
template <class T, template <auto> class W, class Fn>
void fill_entries(Fn (&p4)[9], Fn (&dc4)[4], Fn (&p16)[4], Fn (&dc16)[4], Fn (&pc)[4], Fn (&dcc)[4], Fn (&p8)[9],
                  Fn (&dc8)[4], Fn (&pc16)[4], Fn (&dcc16)[4]) {
    fill_diagonals<W, T>(p4, p8, Diagonals{});
    fill_dc<W, T>(dc4, dc8, dc16, dcc, dcc16, Avails{});
    p4[0] = W<&pred_vertical<4, 4, T>>::fn;
    p4[1] = W<&pred_horizontal<4, 4, T>>::fn;
    p8[0] = W<&pred_vertical<8, 8, T>>::fn;
    p8[1] = W<&pred_horizontal<8, 8, T>>::fn;
    p16[0] = W<&pred_vertical<16, 16, T>>::fn;
    p16[1] = W<&pred_horizontal<16, 16, T>>::fn;
    p16[3] = W<&pred_plane<16, 16, T>>::fn;
    pc[kChromaHorizontal] = W<&pred_horizontal<8, 8, T>>::fn;
    pc[kChromaVertical] = W<&pred_vertical<8, 8, T>>::fn;
    pc[kChromaPlane] = W<&pred_plane<8, 8, T>>::fn;
    pc16[kChromaHorizontal] = W<&pred_horizontal<8, 16, T>>::fn;
    pc16[kChromaVertical] = W<&pred_vertical<8, 16, T>>::fn;
    pc16[kChromaPlane] = W<&pred_plane<8, 16, T>>::fn;
    p4[2] = dc4[3];
    p8[2] = dc8[3];
    p16[2] = dc16[3];
    pc[kChromaDc] = dcc[3];
    pc16[kChromaDc] = dcc16[3];
}

}  // namespace

void init_intra(Table& t, CpuFlags cpu) {
    fill_entries<u8, Drop>(t.pred4x4, t.dc4x4, t.pred16x16, t.dc16x16, t.pred_chroma8x8, t.dc_chroma8x8, t.pred8x8,
                           t.dc8x8, t.pred_chroma8x16, t.dc_chroma8x16);
    fill_entries<u16, Keep>(t.pred4x4_hbd, t.dc4x4_hbd, t.pred16x16_hbd, t.dc16x16_hbd, t.pred_chroma8x8_hbd,
                            t.dc_chroma8x8_hbd, t.pred8x8_hbd, t.dc8x8_hbd, t.pred_chroma8x16_hbd,
                            t.dc_chroma8x16_hbd);

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_intra_sse2(t);
    init_intra16_sse2(t);
    if (!(cpu & kSsse3)) return;
    init_intra_ssse3(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_intra>(); }

}  // namespace kivvc::h264::intra
