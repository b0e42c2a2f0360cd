// Gathering of intra neighbours from a picture plane into the arrays the
// prediction kernels read. Plain (non-SIMD) files only.
#pragma once
#include "h264/residual/intra_kernels.h"
#include "h264/residual/rows.h"

namespace kivvc::h264::intra {
namespace {

// Neighbours of an N x N block: above-left, N above plus Extra above-right,
// N to the left.
template <class T, int N, int Extra = 0>
struct Edges {
    T above[1 + N + Extra];
    T left[N];
    const T* top() const { return above + 1; }
};

// Reads the groups whose bit is set in `mask` from the plane around the block
// at p (step in bytes); every sample of a missing group becomes `missing`.
// Above-right samples (Extra > 0) are read when kAboveRight is set and
// otherwise repeat the last sample above.
template <class T, int N, int Extra>
void gather(Edges<T, N, Extra>& e, const T* p, int step, unsigned mask, int missing) {
    const T* up = row(p, step, -1);
    for (int x = 0; x < N; ++x) e.above[1 + x] = (mask & kTop) ? up[x] : T(missing);
    for (int x = N; x < N + Extra; ++x) e.above[1 + x] = (mask & kAboveRight) ? up[x] : e.above[N];
    e.above[0] = (mask & kAboveLeft) ? up[-1] : T(missing);
    for (int y = 0; y < N; ++y) e.left[y] = (mask & kLeft) ? row(p, step, y)[-1] : T(missing);
}

// Neighbour groups each 4x4 mode reads; a missing one is substituted and
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

// Predicts the 4x4 block at p with an availability mask (mode 0..8), missing
// samples taken as 128. Returns true when a group the mode needs was missing.
inline bool predict4x4(const Table& t, u8* p, int step, unsigned mode, unsigned mask) {
    Edges<u8, 4, 4> e;
    gather(e, p, step, mask, 128);
    const PredFn fn = mode == 2 ? t.dc4x4[dc_index(mask & kTop, mask & kLeft)] : t.pred4x4[mode];
    fn(e.top(), e.left, p, step);
    return (mask & kNeeds4x4[mode]) != kNeeds4x4[mode];
}

}  // namespace
}  // namespace kivvc::h264::intra
