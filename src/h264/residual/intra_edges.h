// Gathering of intra neighbours from a picture plane into the arrays the
// prediction kernels read. Plain (non-SIMD) files only.
#pragma once
#include "h264/residual/intra_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::intra {
namespace {

// Neighbours of an N wide, H high block: above-left, N above plus Extra
// above-right, H to the left.
template <class T, int N, int Extra = 0, int H = N>
struct Edges {
    T above[1 + N + Extra];
    T left[H];
    const T* top() const { return above + 1; }
};

// Reads the groups whose bit is set in `mask` from the plane around the block
// at p (step in bytes); every sample of a missing group becomes `missing`.
// Above-right samples (Extra > 0) are read when kAboveRight is set and
// otherwise repeat the last sample above.
template <class T, int N, int Extra, int H>
void gather(Edges<T, N, Extra, H>& e, const T* p, int step, unsigned mask, int missing) {
    const T* up = row(p, step, -1);
    for (int x = 0; x < N; ++x) e.above[1 + x] = (mask & kTop) ? up[x] : T(missing);
    for (int x = N; x < N + Extra; ++x) e.above[1 + x] = (mask & kAboveRight) ? up[x] : e.above[N];
    e.above[0] = (mask & kAboveLeft) ? up[-1] : T(missing);
    for (int y = 0; y < H; ++y) e.left[y] = (mask & kLeft) ? row(p, step, y)[-1] : T(missing);
}

// Neighbour groups each 4x4 (and 8x8) mode reads; a missing one is substituted and
// makes the prediction a warning.
constexpr unsigned kNeeds4x4[9] = {kTop,
                                   kLeft,
                                   0,
                                   kTop,
                                   kTop | kLeft | kAboveLeft,
                                   kTop | kLeft | kAboveLeft,
                                   kTop | kLeft | kAboveLeft,
                                   kTop,
                                   kLeft};

// The table entries of a sample type: 8-bit kernels drop the bit depth.
inline void run(PredFn fn, const u8* top, const u8* left, u8* dst, int step, int) { fn(top, left, dst, step); }
inline void run(PredHbdFn fn, const u16* top, const u16* left, u16* dst, int step, int bitDepth) {
    fn(top, left, dst, step, bitDepth);
}
inline auto& modes4x4(const Table& t, u8*) { return t.pred4x4; }
inline auto& modes4x4(const Table& t, u16*) { return t.pred4x4_hbd; }
inline auto& dcs4x4(const Table& t, u8*) { return t.dc4x4; }
inline auto& dcs4x4(const Table& t, u16*) { return t.dc4x4_hbd; }
inline auto& modes8x8(const Table& t, u8*) { return t.pred8x8; }
inline auto& modes8x8(const Table& t, u16*) { return t.pred8x8_hbd; }
inline auto& dcs8x8(const Table& t, u8*) { return t.dc8x8; }
inline auto& dcs8x8(const Table& t, u16*) { return t.dc8x8_hbd; }

// Predicts the 4x4 block at p with an availability mask (mode 0..8), missing
// samples taken as the mid value (128 at 8 bits). Returns true when a group
// the mode needs was missing.
template <class T>
bool predict4x4(const Table& t, T* p, int step, unsigned mode, unsigned mask, int bitDepth = 8) {
    Edges<T, 4, 4> e;
    gather(e, p, step, mask, 1 << (bitDepth - 1));
    const int dc = dc_index(mask & kTop, mask & kLeft);
    run(mode == 2 ? dcs4x4(t, p)[dc] : modes4x4(t, p)[mode], e.top(), e.left, p, step, bitDepth);
    return (mask & kNeeds4x4[mode]) != kNeeds4x4[mode];
}

// Reference-sample filtering of an 8x8 luma block's neighbours (H.264
// 8.3.2.2.1): every available group is smoothed with the (1, 2, 1) filter,
// its ends leaning on the above-left sample when that is available and on
// themselves otherwise. Missing groups stay at the mid value they were
// gathered with, and without the row above the samples above-right count as
// missing too. Missing above-right samples were already replaced by the last
// sample above, as the filter expects.
template <class T>
void filter8x8(const Edges<T, 8, 8>& in, Edges<T, 8, 8>& out, unsigned mask) {
    const T* t = in.top();
    const T* l = in.left;
    const T al = t[-1];
    const bool top = mask & kTop, left = mask & kLeft, aboveLeft = mask & kAboveLeft;
    const auto f3 = [](int a, int b, int c) { return T((a + 2 * b + c + 2) >> 2); };
    const auto f2 = [](int a, int b) { return T((3 * a + b + 2) >> 2); };
    out = in;
    T* ot = out.above + 1;
    if (top) {
        ot[0] = aboveLeft ? f3(al, t[0], t[1]) : f2(t[0], t[1]);
        for (int x = 1; x < 15; ++x) ot[x] = f3(t[x - 1], t[x], t[x + 1]);
        ot[15] = f2(t[15], t[14]);
    } else {
        for (int x = 8; x < 16; ++x) ot[x] = t[0];  // no row above: nothing above-right either
    }
    if (aboveLeft) {
        if (top && left) ot[-1] = f3(t[0], al, l[0]);
        else if (top) ot[-1] = f2(al, t[0]);
        else if (left) ot[-1] = f2(al, l[0]);
    }
    if (left) {
        out.left[0] = aboveLeft ? f3(al, l[0], l[1]) : f2(l[0], l[1]);
        for (int y = 1; y < 7; ++y) out.left[y] = f3(l[y - 1], l[y], l[y + 1]);
        out.left[7] = f2(l[7], l[6]);
    }
}

// Predicts the 8x8 luma block at p (mode 0..8) from its filtered neighbours;
// missing groups are taken as the mid value as in the 4x4 case. Returns true
// when a group the mode needs was missing.
template <class T>
bool predict8x8(const Table& t, T* p, int step, unsigned mode, unsigned mask, int bitDepth = 8) {
    Edges<T, 8, 8> raw, e;
    gather(raw, p, step, mask, 1 << (bitDepth - 1));
    filter8x8(raw, e, mask);
    const int dc = dc_index(mask & kTop, mask & kLeft);
    run(mode == 2 ? dcs8x8(t, p)[dc] : modes8x8(t, p)[mode], e.top(), e.left, p, step, bitDepth);
    return (mask & kNeeds4x4[mode]) != kNeeds4x4[mode];
}

}  // namespace
}  // namespace kivvc::h264::intra
