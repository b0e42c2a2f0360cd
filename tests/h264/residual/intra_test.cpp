// H.264 intra prediction: every mode under every availability combination
// against the prediction equations evaluated sample by sample, the
// substitutions for missing neighbours, statuses and check order, and the
// 9..14-bit kernels against the same equations.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "h264/residual/intra_kernels.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;
using Neighbour = std::function<int(int, int)>;  // p(x, y) for x == -1 or y == -1

int f2(int a, int b) { return (a + b + 1) >> 1; }
int f3(int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; }

int expect4x4(int mode, const Neighbour& p, bool top, bool left, int x, int y, int bitDepth) {
    switch (mode) {
    case 0: return p(x, -1);
    case 1: return p(-1, y);
    case 2: {
        int st = 0, sl = 0;
        for (int i = 0; i < 4; ++i) st += p(i, -1), sl += p(-1, i);
        if (top && left) return (st + sl + 4) >> 3;
        if (top) return (st + 2) >> 2;
        if (left) return (sl + 2) >> 2;
        return 1 << (bitDepth - 1);
    }
    case 3:
        if (x == 3 && y == 3) return (p(6, -1) + 3 * p(7, -1) + 2) >> 2;
        return f3(p(x + y, -1), p(x + y + 1, -1), p(x + y + 2, -1));
    case 4:
        if (x > y) return f3(p(x - y - 2, -1), p(x - y - 1, -1), p(x - y, -1));
        if (x < y) return f3(p(-1, y - x - 2), p(-1, y - x - 1), p(-1, y - x));
        return f3(p(0, -1), p(-1, -1), p(-1, 0));
    case 5: {
        const int z = 2 * x - y;
        if (z >= 0 && !(z & 1)) return f2(p(x - (y >> 1) - 1, -1), p(x - (y >> 1), -1));
        if (z >= 0) return f3(p(x - (y >> 1) - 2, -1), p(x - (y >> 1) - 1, -1), p(x - (y >> 1), -1));
        if (z == -1) return f3(p(-1, 0), p(-1, -1), p(0, -1));
        return f3(p(-1, y - 1), p(-1, y - 2), p(-1, y - 3));
    }
    case 6: {
        const int z = 2 * y - x;
        if (z >= 0 && !(z & 1)) return f2(p(-1, y - (x >> 1) - 1), p(-1, y - (x >> 1)));
        if (z >= 0) return f3(p(-1, y - (x >> 1) - 2), p(-1, y - (x >> 1) - 1), p(-1, y - (x >> 1)));
        if (z == -1) return f3(p(-1, 0), p(-1, -1), p(0, -1));
        return f3(p(x - 1, -1), p(x - 2, -1), p(x - 3, -1));
    }
    case 7:
        if (y == 0 || y == 2) return f2(p(x + (y >> 1), -1), p(x + (y >> 1) + 1, -1));
        return f3(p(x + (y >> 1), -1), p(x + (y >> 1) + 1, -1), p(x + (y >> 1) + 2, -1));
    default: {
        const int z = x + 2 * y;
        if (z > 5) return p(-1, 3);
        if (z == 5) return (p(-1, 2) + 3 * p(-1, 3) + 2) >> 2;
        if (!(z & 1)) return f2(p(-1, y + (x >> 1)), p(-1, y + (x >> 1) + 1));
        return f3(p(-1, y + (x >> 1)), p(-1, y + (x >> 1) + 1), p(-1, y + (x >> 1) + 2));
    }
    }
}

int clip(int v, int bitDepth) { return std::clamp(v, 0, (1 << bitDepth) - 1); }

// 16x16 luma modes (n = 16) and 4:2:0 chroma modes in luma numbering (n = 8).
int expect_block(int lumaMode, int n, const Neighbour& p, bool top, bool left, int x, int y, int bitDepth) {
    switch (lumaMode) {
    case 0: return p(x, -1);
    case 1: return p(-1, y);
    case 2: {
        if (n == 16) {
            int st = 0, sl = 0;
            for (int i = 0; i < 16; ++i) st += p(i, -1), sl += p(-1, i);
            if (top && left) return (st + sl + 16) >> 5;
            if (top) return (st + 8) >> 4;
            if (left) return (sl + 8) >> 4;
            return 1 << (bitDepth - 1);
        }
        const int xo = x & 4, yo = y & 4;
        int st = 0, sl = 0;
        for (int i = 0; i < 4; ++i) st += p(xo + i, -1), sl += p(-1, yo + i);
        const bool diagonal = xo == yo;
        if (top && left && diagonal) return (st + sl + 4) >> 3;
        if (top && left) return xo ? (st + 2) >> 2 : (sl + 2) >> 2;
        if (top) return (st + 2) >> 2;
        if (left) return (sl + 2) >> 2;
        return 1 << (bitDepth - 1);
    }
    default: {
        const int h0 = n / 2;
        int H = 0, V = 0;
        for (int k = 0; k < h0; ++k) {
            H += (k + 1) * (p(h0 + k, -1) - p(h0 - 2 - k, -1));
            V += (k + 1) * (p(-1, h0 + k) - p(-1, h0 - 2 - k));
        }
        const int a = 16 * (p(-1, n - 1) + p(n - 1, -1));
        const int b = n == 16 ? (5 * H + 32) >> 6 : (17 * H + 16) >> 5;
        const int c = n == 16 ? (5 * V + 32) >> 6 : (17 * V + 16) >> 5;
        return clip((a + b * (x - (h0 - 1)) + c * (y - (h0 - 1)) + 16) >> 5, bitDepth);
    }
    }
}

constexpr int kChromaToLuma[4] = {2, 1, 0, 3};

// A plane with the block at (8, 8); neighbours and block filled at random.
struct Picture {
    static constexpr int kStep = 40;
    std::vector<Kiv8u> mem = std::vector<Kiv8u>(kStep * 32);
    Kiv8u* block() { return mem.data() + 8 * kStep + 8; }
    int at(int x, int y) const { return mem[(8 + y) * kStep + 8 + x]; }
    void fill(Rng& rng, bool extremes) {
        for (auto& v : mem) v = Kiv8u(extremes ? (rng.chance(2) ? 255 : 0) : rng.range(0, 255));
    }
};

// The neighbour values a 4x4 prediction must see under `mask`.
Neighbour substituted4x4(const Picture& pic, unsigned mask) {
    return [&pic, mask](int x, int y) {
        if (x == -1 && y == -1) return (mask & 32) ? pic.at(-1, -1) : 128;
        if (x == -1) return (mask & 2) ? pic.at(-1, y) : 128;
        if (x < 4) return (mask & 1) ? pic.at(x, -1) : 128;
        if (mask & 64) return pic.at(x, -1);
        return (mask & 1) ? pic.at(3, -1) : 128;
    };
}

// Every value of the block and of the plane around it, after a call.
void expect_plane(const Picture& before, const Picture& after, int n, const std::function<int(int, int)>& block) {
    for (int y = -8; y < 24; ++y)
        for (int x = -8; x < 32; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < n && y < n;
            ASSERT_EQ(after.at(x, y), inside ? block(x, y) : before.at(x, y)) << "x " << x << " y " << y;
        }
}

TEST(H264Intra, Predict4x4EveryModeAndMask) {
    Rng rng(41);
    constexpr unsigned kNeeds[9] = {1, 2, 0, 1, 35, 35, 35, 1, 2};
    for (int mode = 0; mode < 9; ++mode)
        for (unsigned combo = 0; combo < 16; ++combo)
            for (int trial = 0; trial < 6; ++trial) {
                const unsigned mask = (combo & 3) | ((combo & 4) << 3) | ((combo & 8) << 3) | (trial & 1 ? 0x90 : 0);
                Picture pic;
                pic.fill(rng, trial >= 4);
                const Picture before = pic;
                const KivStatus st = kiviPredictIntra_4x4_H264_8u_C1IR(pic.block(), Picture::kStep, mode, mask);
                EXPECT_EQ(st, (mask & kNeeds[mode]) == kNeeds[mode] ? kivStsOk : kivStsWarnNeighbourMissing)
                    << "mode " << mode << " mask " << mask;
                const Neighbour p = substituted4x4(before, mask);
                expect_plane(before, pic, 4, [&](int x, int y) {
                    return expect4x4(mode, p, mask & 1, mask & 2, x, y, 8);
                });
            }
}

TEST(H264Intra, Predict4x4Substitutions) {
    Picture pic;
    Rng rng(5);
    pic.fill(rng, false);
    // Vertical without the row above: sixteen 128s and the warning.
    EXPECT_EQ(kiviPredictIntra_4x4_H264_8u_C1IR(pic.block(), Picture::kStep, 0, 2 | 32 | 64), kivStsWarnNeighbourMissing);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(pic.at(x, y), 128);
    // Diagonal down-left without above-right: p[3, -1] repeated, no warning.
    for (int x = 0; x < 8; ++x) pic.mem[7 * Picture::kStep + 8 + x] = Kiv8u(x < 4 ? 0 : 200);
    pic.mem[7 * Picture::kStep + 11] = 100;
    EXPECT_EQ(kiviPredictIntra_4x4_H264_8u_C1IR(pic.block(), Picture::kStep, 3, 1), kivStsOk);
    EXPECT_EQ(pic.at(3, 3), 100);
    EXPECT_EQ(pic.at(0, 0), (0 + 0 + 0 + 2) >> 2);
    EXPECT_EQ(pic.at(2, 0), (0 + 200 + 100 + 2) >> 2);
    // DC with nothing available: 128 and no warning.
    EXPECT_EQ(kiviPredictIntra_4x4_H264_8u_C1IR(pic.block(), Picture::kStep, 2, 0), kivStsOk);
    EXPECT_EQ(pic.at(2, 2), 128);
}

TEST(H264Intra, Predict16x16AndChromaEveryModeAndMask) {
    Rng rng(77);
    using Fn = KivStatus (*)(Kiv8u*, Kiv32s, Kiv32u, Kiv32u);
    struct Case {
        Fn fn;
        int n;
        bool chroma;
    };
    for (const Case& c : {Case{kiviPredictIntra_16x16_H264_8u_C1IR, 16, false},
                          Case{kiviPredictIntraChroma8x8_H264_8u_C1IR, 8, true}})
        for (int mode = 0; mode < 4; ++mode)
            for (unsigned combo = 0; combo < 8; ++combo)
                for (int trial = 0; trial < 6; ++trial) {
                    const unsigned mask = (combo & 3) | ((combo & 4) << 3) | (trial & 1 ? 0xC4 : 0);
                    const int luma = c.chroma ? kChromaToLuma[mode] : mode;
                    constexpr unsigned kNeeds[4] = {1, 2, 0, 35};
                    Picture pic;
                    pic.fill(rng, trial >= 4);
                    const Picture before = pic;
                    const KivStatus st = c.fn(pic.block(), Picture::kStep, mode, mask);
                    const bool ok = (mask & kNeeds[luma]) == kNeeds[luma];
                    ASSERT_EQ(st, ok ? kivStsOk : kivStsBadIntraPredMode) << c.n << " mode " << mode << " " << mask;
                    const Neighbour p = [&before](int x, int y) { return before.at(x, y); };
                    expect_plane(before, pic, c.n, [&](int x, int y) {
                        return ok ? expect_block(luma, c.n, p, mask & 1, mask & 2, x, y, 8) : before.at(x, y);
                    });
                }
}

TEST(H264Intra, ChromaDcLeftOnlyRepeatsAcross) {
    Picture pic;
    Rng rng(9);
    pic.fill(rng, false);
    ASSERT_EQ(kiviPredictIntraChroma8x8_H264_8u_C1IR(pic.block(), Picture::kStep, 0, 2), kivStsOk);
    EXPECT_EQ(pic.at(5, 1), pic.at(1, 1));
    EXPECT_EQ(pic.at(6, 6), pic.at(2, 6));
}

TEST(H264Intra, ArgumentChecksInOrder) {
    Picture pic;
    Kiv8u* b = pic.block();
    EXPECT_EQ(kiviPredictIntra_4x4_H264_8u_C1IR(nullptr, 2, 9, 0), kivStsNullPointer);
    EXPECT_EQ(kiviPredictIntra_4x4_H264_8u_C1IR(b, 3, 9, 0), kivStsBadStep);
    EXPECT_EQ(kiviPredictIntra_4x4_H264_8u_C1IR(b, 4, 9, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviPredictIntra_16x16_H264_8u_C1IR(nullptr, 2, 9, 0), kivStsNullPointer);
    EXPECT_EQ(kiviPredictIntra_16x16_H264_8u_C1IR(b, 15, 9, 0), kivStsBadStep);
    EXPECT_EQ(kiviPredictIntra_16x16_H264_8u_C1IR(b, 16, 4, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviPredictIntra_16x16_H264_8u_C1IR(b, 16, 3, 3), kivStsBadIntraPredMode);
    EXPECT_EQ(kiviPredictIntraChroma8x8_H264_8u_C1IR(nullptr, 2, 9, 0), kivStsNullPointer);
    EXPECT_EQ(kiviPredictIntraChroma8x8_H264_8u_C1IR(b, 7, 9, 0), kivStsBadStep);
    EXPECT_EQ(kiviPredictIntraChroma8x8_H264_8u_C1IR(b, 8, 4, 0), kivStsOutOfRange);
    for (const Kiv8u v : pic.mem) EXPECT_EQ(v, 0);
}

// The 9..14-bit kernels, from gathered neighbour arrays.
TEST(H264Intra, HighBitDepthKernels) {
    namespace in = kivvc::h264::intra;
    const in::Table& t = in::table();
    Rng rng(3);
    for (const int depth : {9, 10, 14})
        for (int trial = 0; trial < 40; ++trial) {
            const int hi = (1 << depth) - 1;
            std::uint16_t above[1 + 16], left[16], out[16 * 16];
            for (auto& v : above) v = std::uint16_t(trial & 1 ? rng.range(0, hi) : (rng.chance(2) ? hi : 0));
            for (auto& v : left) v = std::uint16_t(trial & 1 ? rng.range(0, hi) : (rng.chance(2) ? hi : 0));
            const Neighbour p = [&](int x, int y) { return y == -1 ? above[1 + x] : x == -1 ? left[y] : 0; };
            const Neighbour p4 = [&](int x, int y) { return y == -1 && x >= 0 ? above[1 + x] : x == -1 && y >= 0 ? left[y] : above[0]; };
            const bool top = trial & 2, lft = trial & 4;
            const auto check = [&](int n, const std::function<int(int, int)>& want) {
                for (int y = 0; y < n; ++y)
                    for (int x = 0; x < n; ++x) ASSERT_EQ(out[y * 16 + x], want(x, y)) << depth << " " << n;
            };
            for (int mode = 0; mode < 9; ++mode) {
                (mode == 2 ? t.dc4x4_hbd[in::dc_index(top, lft)] : t.pred4x4_hbd[mode])(above + 1, left, out, 32, depth);
                check(4, [&](int x, int y) { return expect4x4(mode, p4, top, lft, x, y, depth); });
            }
            for (int mode = 0; mode < 4; ++mode) {
                (mode == 2 ? t.dc16x16_hbd[in::dc_index(top, lft)] : t.pred16x16_hbd[mode])(above + 1, left, out, 32, depth);
                check(16, [&](int x, int y) { return expect_block(mode, 16, p4, top, lft, x, y, depth); });
                (mode == 0 ? t.dc_chroma8x8_hbd[in::dc_index(top, lft)] : t.pred_chroma8x8_hbd[mode])(above + 1, left, out,
                                                                                                       32, depth);
                check(8, [&](int x, int y) { return expect_block(kChromaToLuma[mode], 8, p4, top, lft, x, y, depth); });
            }
            (void)p;
        }
}

}  // namespace
