// The deblocking post-filter against its per-line equations written out.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using Line = std::array<int, 10>;

int away8(int x) { return x >= 0 ? (x + 4) / 8 : -((-x + 4) / 8); }

// One line, with the smoothing taps written out sample by sample.
Line expected(const Line& s, int qp, int thr1, int thr2) {
    int eq = 0;
    for (int i = 0; i < 9; ++i) eq += std::abs(s[i] - s[i + 1]) <= thr1;
    Line o = s;
    if (eq >= thr2) {
        const int mx = *std::max_element(s.begin() + 1, s.begin() + 9);
        const int mn = *std::min_element(s.begin() + 1, s.begin() + 9);
        if (mx - mn >= 2 * qp) return o;
        const int p0 = std::abs(s[1] - s[0]) < qp ? s[0] : s[1];
        const int p9 = std::abs(s[8] - s[9]) < qp ? s[9] : s[8];
        o[1] = (6 * p0 + 4 * s[1] + 2 * s[2] + 2 * s[3] + s[4] + s[5] + 8) >> 4;
        o[2] = (4 * p0 + 2 * s[1] + 4 * s[2] + 2 * s[3] + 2 * s[4] + s[5] + s[6] + 8) >> 4;
        o[3] = (2 * p0 + 2 * s[1] + 2 * s[2] + 4 * s[3] + 2 * s[4] + 2 * s[5] + s[6] + s[7] + 8) >> 4;
        o[4] = (p0 + s[1] + 2 * s[2] + 2 * s[3] + 4 * s[4] + 2 * s[5] + 2 * s[6] + s[7] + s[8] + 8) >> 4;
        o[5] = (s[1] + s[2] + 2 * s[3] + 2 * s[4] + 4 * s[5] + 2 * s[6] + 2 * s[7] + s[8] + p9 + 8) >> 4;
        o[6] = (s[2] + s[3] + 2 * s[4] + 2 * s[5] + 4 * s[6] + 2 * s[7] + 2 * s[8] + 2 * p9 + 8) >> 4;
        o[7] = (s[3] + s[4] + 2 * s[5] + 2 * s[6] + 4 * s[7] + 2 * s[8] + 4 * p9 + 8) >> 4;
        o[8] = (s[4] + s[5] + 2 * s[6] + 2 * s[7] + 4 * s[8] + 6 * p9 + 8) >> 4;
        return o;
    }
    const int a0 = away8(2 * s[3] - 5 * s[4] + 5 * s[5] - 2 * s[6]);
    const int a1 = away8(2 * s[1] - 5 * s[2] + 5 * s[3] - 2 * s[4]);
    const int a2 = away8(2 * s[5] - 5 * s[6] + 5 * s[7] - 2 * s[8]);
    const int m = std::min({std::abs(a0), std::abs(a1), std::abs(a2)});
    const int a0p = a0 < 0 ? -m : m;
    if (a0p != a0 && std::abs(a0) < qp) {
        const int t = away8(5 * (a0p - a0));
        const int d = s[4] < s[5] ? std::clamp(t, -((s[5] - s[4]) / 2), 0) : std::clamp(t, 0, (s[4] - s[5]) / 2);
        o[4] = s[4] - d;
        o[5] = s[5] + d;
    }
    return o;
}

// Runs one direction over a 18x18 area whose edge lies between rows (or
// columns) 8 and 9 of the area, columns (rows) 5..12.
void check_direction(bool horizontal, kivvc::test::Rng& rng, int runs) {
    for (int run = 0; run < runs; ++run) {
        std::vector<Kiv8u> area(18 * 18);
        const int base = rng.range(0, 255), spread = rng.range(0, 3) == 0 ? 255 : rng.range(0, 12);
        for (auto& v : area) v = static_cast<Kiv8u>(std::clamp(base + rng.range(-spread, spread), 0, 255));
        if (rng.chance(3))  // a step across the edge
            for (int i = 0; i < 18 * 18; ++i)
                if ((horizontal ? i / 18 : i % 18) >= 9) area[i] = static_cast<Kiv8u>(std::clamp(area[i] + 10, 0, 255));
        const std::vector<Kiv8u> before = area;
        const int qp = rng.range(1, 31), thr1 = rng.range(0, 6), thr2 = rng.range(0, 10);
        Kiv8u* edge = horizontal ? &area[9 * 18 + 5] : &area[5 * 18 + 9];
        const KivStatus st = horizontal ? kiviFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(edge, 18, qp, thr1, thr2)
                                        : kiviFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(edge, 18, qp, thr1, thr2);
        ASSERT_EQ(st, kivStsOk);
        std::vector<Kiv8u> want = before;
        for (int line = 0; line < 8; ++line) {
            auto at = [&](int k) { return horizontal ? (4 + k) * 18 + 5 + line : (5 + line) * 18 + 4 + k; };
            Line s;
            for (int k = 0; k < 10; ++k) s[k] = before[at(k)];
            const Line o = expected(s, qp, thr1, thr2);
            for (int k = 0; k < 10; ++k) want[at(k)] = static_cast<Kiv8u>(o[k]);
        }
        ASSERT_EQ(area, want) << (horizontal ? "horizontal" : "vertical") << " run " << run << " qp " << qp
                              << " thr " << thr1 << "," << thr2;
    }
}

TEST(MPEG4PostFilter, BothDirectionsFollowTheLineEquations) {
    kivvc::test::Rng rng(606);
    check_direction(true, rng, 3000);
    check_direction(false, rng, 3000);
}

TEST(MPEG4PostFilter, QuantiserIsCheckedBeforeTouchingThePicture) {
    std::vector<Kiv8u> area(18 * 18, 7);
    EXPECT_EQ(kiviFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(nullptr, 18, 8, 2, 6), kivStsNullPointer);
    EXPECT_EQ(kiviFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(&area[9 * 18], 18, 0, 2, 6), kivStsBadQp);
    EXPECT_EQ(kiviFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(&area[9], 18, 32, 2, 6), kivStsBadQp);
}

}  // namespace
