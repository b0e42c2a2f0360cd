// The edge filters against their per-line equations, through the exported
// functions, on random pictures in both directions.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

constexpr int kStrength[32] = {0, 1, 1, 2, 2, 3, 3, 4, 4, 4, 5, 5, 6, 6, 7, 7,
                               7, 8, 8, 8, 9, 9, 9, 10, 10, 10, 11, 11, 11, 12, 12, 12};

int clip255(int v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

// One line A, B, C, D; strength 0 means unlimited. The ramp is written as its
// three pieces.
std::array<int, 4> deblocked(std::array<int, 4> s, int strength) {
    const int d = (s[0] - 4 * s[1] + 4 * s[2] - s[3]) / 8;
    const int m = std::abs(d);
    int d1 = d;
    if (strength && m > strength) d1 = m >= 2 * strength ? 0 : (d < 0 ? -(2 * strength - m) : 2 * strength - m);
    int d2 = (s[0] - s[3]) / 4;
    const int lim = std::abs(d1) / 2;
    d2 = d2 > lim ? lim : (d2 < -lim ? -lim : d2);
    return {s[0] - d2, clip255(s[1] + d1), clip255(s[2] - d1), s[3] + d2};
}

struct Picture {
    static constexpr int kStep = 40;
    std::vector<Kiv8u> px = std::vector<Kiv8u>(kStep * 40);
    Kiv8u* at(int x, int y) { return px.data() + y * kStep + x; }
};

enum class Kind { Deblock8, Deblock16, Boundary };

// Filters one edge at (16, 16) with the exported function and checks every
// sample of the picture against the equations.
void check_edge(kivvc::test::Rng& rng, Kind kind, bool horizontal, int qp, int flatness) {
    Picture pic;
    const int base = rng.range(0, 255);
    for (auto& v : pic.px) v = static_cast<Kiv8u>(clip255(base + rng.range(-flatness, flatness)));
    Picture want = pic;
    const int lines = kind == Kind::Deblock8 ? 8 : 16;
    for (int i = 0; i < lines; ++i) {
        auto sample = [&](Picture& p, int k) -> Kiv8u& { return horizontal ? *p.at(16 + i, 16 + k) : *p.at(16 + k, 16 + i); };
        if (kind == Kind::Boundary) {
            const int a = sample(pic, -1), b = sample(pic, 0);
            sample(want, -1) = static_cast<Kiv8u>((3 * a + b + 2) >> 2);
            sample(want, 0) = static_cast<Kiv8u>((a + 3 * b + 2) >> 2);
            continue;
        }
        const auto out = deblocked({sample(pic, -2), sample(pic, -1), sample(pic, 0), sample(pic, 1)},
                                   kind == Kind::Deblock8 ? kStrength[qp] : 0);
        for (int k = 0; k < 4; ++k) sample(want, k - 2) = static_cast<Kiv8u>(out[k]);
    }
    Kiv8u* p = pic.at(16, 16);
    KivStatus st = kivStsOk;
    switch (kind) {
        case Kind::Deblock8:
            st = horizontal ? kiviFilterDeblocking8x8HorEdge_H263_8u_C1IR(p, Picture::kStep, qp)
                            : kiviFilterDeblocking8x8VerEdge_H263_8u_C1IR(p, Picture::kStep, qp);
            break;
        case Kind::Deblock16:
            st = horizontal ? kiviFilterDeblocking16x16HorEdge_H263_8u_C1IR(p, Picture::kStep)
                            : kiviFilterDeblocking16x16VerEdge_H263_8u_C1IR(p, Picture::kStep);
            break;
        case Kind::Boundary:
            st = horizontal ? kiviFilterBlockBoundaryHorEdge_H263_8u_C1IR(p, Picture::kStep)
                            : kiviFilterBlockBoundaryVerEdge_H263_8u_C1IR(p, Picture::kStep);
            break;
    }
    ASSERT_EQ(st, kivStsOk);
    ASSERT_EQ(pic.px, want.px) << "kind " << int(kind) << " horizontal " << horizontal << " qp " << qp;
}

TEST(H263EdgeFilters, MatchLineEquationsOnRandomPictures) {
    kivvc::test::Rng rng(12);
    for (int round = 0; round < 400; ++round) {
        const int flatness = round % 4 == 0 ? 0 : (round % 4 == 1 ? 255 : rng.range(1, 40));
        for (Kind kind : {Kind::Deblock8, Kind::Deblock16, Kind::Boundary})
            for (bool horizontal : {true, false}) check_edge(rng, kind, horizontal, rng.range(1, 31), flatness);
    }
}

TEST(H263EdgeFilters, QuantiserAndPointerChecks) {
    std::vector<Kiv8u> steep(4 * 16);
    for (int i = 0; i < 64; ++i) steep[i] = static_cast<Kiv8u>(i < 32 ? 0 : 40);
    const auto before = steep;
    EXPECT_EQ(kiviFilterDeblocking8x8HorEdge_H263_8u_C1IR(steep.data() + 32, 16, 0), kivStsBadQp);
    EXPECT_EQ(kiviFilterDeblocking8x8VerEdge_H263_8u_C1IR(steep.data() + 34, 16, 32), kivStsBadQp);
    EXPECT_EQ(steep, before);
    EXPECT_EQ(kiviFilterDeblocking8x8HorEdge_H263_8u_C1IR(nullptr, 16, 0), kivStsNullPointer);
    EXPECT_EQ(kiviFilterBlockBoundaryVerEdge_H263_8u_C1IR(nullptr, 16), kivStsNullPointer);
}

}  // namespace
