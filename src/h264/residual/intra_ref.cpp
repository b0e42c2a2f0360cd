// Scalar references of the H.264 intra predictors, for 8-bit and 9..14-bit
// samples from one set of templates.
//
// The 4x4 directional modes read one edge line e(0..12): the left column
// bottom to top (e(0) = left[3] .. e(3) = left[0]), the above-left sample
// e(4), then the row above and above-right (e(5) = top[0] .. e(12) = top[7]).
// A diagonal through the block meets that line at one index, so every mode
// is a two- or three-tap filter at an index computed from x and y.
#include <algorithm>

#include "core/arith.h"
#include "h264/residual/intra_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::intra {
namespace {

int tap2(int a, int b) { return (a + b + 1) >> 1; }
int tap3(int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; }

template <int N, class T, class G>
void fill(T* dst, int step, G value) {
    for (int y = 0; y < N; ++y) {
        T* d = row(dst, step, y);
        for (int x = 0; x < N; ++x) d[x] = static_cast<T>(value(x, y));
    }
}

template <int Mode, class T>
void pred4x4(const T* top, const T* left, T* dst, int step, int) {
    const auto e = [&](int i) { return i < 4 ? int(left[3 - i]) : int(top[i - 5]); };
    const auto t = [&](int i) { return int(top[std::min(i, 7)]); };
    const auto l = [&](int j) { return int(left[std::min(j, 3)]); };
    fill<4>(dst, step, [&](int x, int y) {
        if constexpr (Mode == 0) {
            return t(x);
        } else if constexpr (Mode == 1) {
            return l(y);
        } else if constexpr (Mode == 3) {  // diagonal down-left
            const int i = x + y;
            return tap3(t(i), t(i + 1), t(i + 2));
        } else if constexpr (Mode == 4) {  // diagonal down-right
            const int k = 4 + x - y;
            return tap3(e(k - 1), e(k), e(k + 1));
        } else if constexpr (Mode == 5) {  // vertical-right
            const int i = x - (y >> 1);
            if (2 * x - y < -1) return tap3(e(4 - y), e(5 - y), e(6 - y));
            return (y & 1) ? tap3(e(3 + i), e(4 + i), e(5 + i)) : tap2(e(4 + i), e(5 + i));
        } else if constexpr (Mode == 6) {  // horizontal-down
            const int j = y - (x >> 1);
            if (2 * y - x < -1) return tap3(e(2 + x), e(3 + x), e(4 + x));
            return (x & 1) ? tap3(e(3 - j), e(4 - j), e(5 - j)) : tap2(e(3 - j), e(4 - j));
        } else if constexpr (Mode == 7) {  // vertical-left
            const int i = x + (y >> 1);
            return (y & 1) ? tap3(t(i), t(i + 1), t(i + 2)) : tap2(t(i), t(i + 1));
        } else {  // 8, horizontal-up: the left column continues with left[3]
            const int j = y + (x >> 1);
            return (x & 1) ? tap3(l(j), l(j + 1), l(j + 2)) : tap2(l(j), l(j + 1));
        }
    });
}

// Mean of the available groups of n samples each, or the mid value.
template <int N, class T>
int dc_value(const T* top, const T* left, int avail, int bitDepth) {
    int sum = 0, count = 0;
    if (avail & 1)
        for (int i = 0; i < N; ++i, ++count) sum += top[i];
    if (avail & 2)
        for (int i = 0; i < N; ++i, ++count) sum += left[i];
    return count ? (sum + count / 2) / count : 1 << (bitDepth - 1);
}

template <int N, int Avail, class T>
void pred_dc(const T* top, const T* left, T* dst, int step, int bitDepth) {
    const int v = dc_value<N>(top, left, Avail, bitDepth);
    fill<N>(dst, step, [v](int, int) { return v; });
}

template <int N, class T>
void pred_vertical(const T* top, const T*, T* dst, int step, int) {
    fill<N>(dst, step, [top](int x, int) { return top[x]; });
}

template <int N, class T>
void pred_horizontal(const T*, const T* left, T* dst, int step, int) {
    fill<N>(dst, step, [left](int, int y) { return left[y]; });
}

// Plane prediction of a 16x16 (gradient factor 5) or 8x8 chroma block
// (factor 34): both are (m * H + 32) >> 6.
template <int N, class T>
void pred_plane(const T* top, const T* left, T* dst, int step, int bitDepth) {
    constexpr int half = N / 2, m = N == 16 ? 5 : 34;
    const auto l = [&](int j) { return j < 0 ? int(top[-1]) : int(left[j]); };
    int h = 0, v = 0;
    for (int k = 0; k < half; ++k) {
        h += (k + 1) * (top[half + k] - top[half - 2 - k]);
        v += (k + 1) * (l(half + k) - l(half - 2 - k));
    }
    const int a = 16 * (left[N - 1] + top[N - 1]);
    const int b = (m * h + 32) >> 6, c = (m * v + 32) >> 6;
    fill<N>(dst, step, [&](int x, int y) {
        return clip_pixel((a + b * (x - (half - 1)) + c * (y - (half - 1)) + 16) >> 5, bitDepth);
    });
}

// Chroma DC: each 4x4 quarter averages the neighbour groups of its own
// position that H.264 assigns to it.
template <int Avail, class T>
void pred_chroma_dc(const T* top, const T* left, T* dst, int step, int bitDepth) {
    int v[2][2];
    for (int qy = 0; qy < 2; ++qy)
        for (int qx = 0; qx < 2; ++qx) {
            int avail = Avail;
            if (Avail == 3 && qx != qy) avail = qx ? 1 : 2;  // off-diagonal quarters use one side
            v[qy][qx] = dc_value<4>(top + 4 * qx, left + 4 * qy, avail, bitDepth);
        }
    fill<8>(dst, step, [&v](int x, int y) { return v[y >> 2][x >> 2]; });
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

template <class T, template <auto> class W, class Fn>
void fill_entries(Fn (&p4)[9], Fn (&dc4)[4], Fn (&p16)[4], Fn (&dc16)[4], Fn (&pc)[4], Fn (&dcc)[4]) {
    p4[0] = W<&pred4x4<0, T>>::fn;
    p4[1] = W<&pred4x4<1, T>>::fn;
    p4[2] = W<&pred_dc<4, 3, T>>::fn;
    p4[3] = W<&pred4x4<3, T>>::fn;
    p4[4] = W<&pred4x4<4, T>>::fn;
    p4[5] = W<&pred4x4<5, T>>::fn;
    p4[6] = W<&pred4x4<6, T>>::fn;
    p4[7] = W<&pred4x4<7, T>>::fn;
    p4[8] = W<&pred4x4<8, T>>::fn;
    dc4[0] = W<&pred_dc<4, 0, T>>::fn;
    dc4[1] = W<&pred_dc<4, 1, T>>::fn;
    dc4[2] = W<&pred_dc<4, 2, T>>::fn;
    dc4[3] = W<&pred_dc<4, 3, T>>::fn;
    p16[0] = W<&pred_vertical<16, T>>::fn;
    p16[1] = W<&pred_horizontal<16, T>>::fn;
    p16[2] = W<&pred_dc<16, 3, T>>::fn;
    p16[3] = W<&pred_plane<16, T>>::fn;
    dc16[0] = W<&pred_dc<16, 0, T>>::fn;
    dc16[1] = W<&pred_dc<16, 1, T>>::fn;
    dc16[2] = W<&pred_dc<16, 2, T>>::fn;
    dc16[3] = W<&pred_dc<16, 3, T>>::fn;
    pc[kChromaDc] = W<&pred_chroma_dc<3, T>>::fn;
    pc[kChromaHorizontal] = W<&pred_horizontal<8, T>>::fn;
    pc[kChromaVertical] = W<&pred_vertical<8, T>>::fn;
    pc[kChromaPlane] = W<&pred_plane<8, T>>::fn;
    dcc[0] = W<&pred_chroma_dc<0, T>>::fn;
    dcc[1] = W<&pred_chroma_dc<1, T>>::fn;
    dcc[2] = W<&pred_chroma_dc<2, T>>::fn;
    dcc[3] = W<&pred_chroma_dc<3, T>>::fn;
}

}  // namespace

void init_intra(Table& t, CpuFlags cpu) {
    fill_entries<u8, Drop>(t.pred4x4, t.dc4x4, t.pred16x16, t.dc16x16, t.pred_chroma8x8, t.dc_chroma8x8);
    fill_entries<u16, Keep>(t.pred4x4_hbd, t.dc4x4_hbd, t.pred16x16_hbd, t.dc16x16_hbd, t.pred_chroma8x8_hbd,
                            t.dc_chroma8x8_hbd);

#if KIVVC_X86
    if (!(cpu & kSse2)) return;
    init_intra_sse2(t);
#else
    (void)cpu;
#endif
}

const Table& table() { return process_table<Table, init_intra>(); }

}  // namespace kivvc::h264::intra
