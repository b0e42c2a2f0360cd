// H.264 intra prediction: every mode under every availability combination
// against the prediction equations evaluated sample by sample, the
// substitutions for missing neighbours, statuses and check order, and the
// 9..14-bit kernels against the same equations.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "h264/residual/intra_edges.h"
#include "h264/residual/intra_model.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;
using namespace kivvc::test::intra_model;
namespace in = kivvc::h264::intra;

int expect4x4(int mode, const Neighbour& p, bool top, bool left, int x, int y, int bitDepth) {
    return expect_nxn(4, mode, p, top, left, x, y, bitDepth);
}

// A plane with the block at (8, 8); neighbours and block filled at random.
template <class T = Kiv8u>
struct Picture {
    static constexpr int kWidth = 40, kStep = kWidth * int(sizeof(T));
    std::vector<T> mem = std::vector<T>(kWidth * 32);
    T* block() { return mem.data() + 8 * kWidth + 8; }
    int at(int x, int y) const { return mem[(8 + y) * kWidth + 8 + x]; }
    void fill(Rng& rng, bool extremes, int bitDepth = 8) {
        const int hi = (1 << bitDepth) - 1;
        for (auto& v : mem) v = T(extremes ? (rng.chance(2) ? hi : 0) : rng.range(0, hi));
    }
};

// Every value of the block and of the plane around it, after a call.
template <class T>
void expect_plane(const Picture<T>& before, const Picture<T>& after, int w, int h,
                  const std::function<int(int, int)>& block) {
    for (int y = -8; y < 24; ++y)
        for (int x = -8; x < 32; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < w && y < h;
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
                Picture<> pic;
                pic.fill(rng, trial >= 4);
                const Picture<> before = pic;
                const KivStatus st = kiviPredictIntra_4x4_H264_8u_C1IR(pic.block(), pic.kStep, mode, mask);
                EXPECT_EQ(st, (mask & kNeeds[mode]) == kNeeds[mode] ? kivStsOk : kivStsWarnNeighbourMissing)
                    << "mode " << mode << " mask " << mask;
                const Neighbour p = substituted([&](int x, int y) { return before.at(x, y); }, 4, mask, 8);
                expect_plane(before, pic, 4, 4, [&](int x, int y) {
                    return expect4x4(mode, p, mask & 1, mask & 2, x, y, 8);
                });
            }
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
                    Picture<> pic;
                    pic.fill(rng, trial >= 4);
                    const Picture<> before = pic;
                    const KivStatus st = c.fn(pic.block(), Picture<>::kStep, mode, mask);
                    const bool ok = (mask & kNeeds[luma]) == kNeeds[luma];
                    ASSERT_EQ(st, ok ? kivStsOk : kivStsBadIntraPredMode) << c.n << " mode " << mode << " " << mask;
                    const Neighbour p = [&before](int x, int y) { return before.at(x, y); };
                    expect_plane(before, pic, c.n, c.n, [&](int x, int y) {
                        return ok ? expect_block(luma, c.n, c.n, p, mask & 1, mask & 2, x, y, 8) : before.at(x, y);
                    });
                }
}

TEST(H264Intra, ArgumentChecksInOrder) {
    Picture<> pic;
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

// 8x8 luma prediction with reference filtering, at 8 bits and above: every
// mode under every availability combination, substitutions and warning.
template <class T>
void check8x8(int depth, Rng& rng) {
    constexpr unsigned kNeeds[9] = {1, 2, 0, 1, 35, 35, 35, 1, 2};
    for (int mode = 0; mode < 9; ++mode)
        for (unsigned combo = 0; combo < 16; ++combo)
            for (int trial = 0; trial < 3; ++trial) {
                const unsigned mask = (combo & 3) | ((combo & 12) << 3);
                Picture<T> pic;
                pic.fill(rng, trial == 2, depth);
                const Picture<T> before = pic;
                const bool warn = in::predict8x8(in::table(), pic.block(), pic.kStep, mode, mask, depth);
                ASSERT_EQ(warn, (mask & kNeeds[mode]) != kNeeds[mode]) << mode << " " << mask;
                const Neighbour raw = [&before](int x, int y) { return before.at(x, y); };
                const Neighbour p = filtered8x8(substituted(raw, 8, mask, depth), mask, depth);
                expect_plane(before, pic, 8, 8, [&](int x, int y) {
                    return expect_nxn(8, mode, p, mask & 1, mask & 2, x, y, depth);
                });
            }
}

TEST(H264Intra, Predict8x8EveryModeMaskAndDepth) {
    Rng rng(88);
    check8x8<Kiv8u>(8, rng);
    for (const int depth : {9, 10, 14}) check8x8<Kiv16u>(depth, rng);
}

// The kernels without an exported single-block function: 9..14-bit 4x4,
// 16x16 and 4:2:0 chroma, and 4:2:2 chroma (8x16) at every depth, from
// gathered neighbour arrays.
template <class T>
void check_kernels(int depth, Rng& rng) {
    const in::Table& t = in::table();
    const int hi = (1 << depth) - 1;
    for (int trial = 0; trial < 40; ++trial) {
        T above[1 + 16], left[16], out[16 * 16];
        for (auto* v : {above + 0, left + 0})
            for (int i = 0; i < 16; ++i) v[i] = T(trial & 1 ? rng.range(0, hi) : (rng.chance(2) ? hi : 0));
        above[16] = T(rng.range(0, hi));
        const Neighbour p = [&](int x, int y) { return y == -1 && x >= 0 ? above[1 + x] : x == -1 && y >= 0 ? left[y] : above[0]; };
        const bool top = trial & 2, lft = trial & 4;
        const int dc = in::dc_index(top, lft);
        const auto check = [&](auto fn, int w, int h, const std::function<int(int, int)>& want) {
            in::run(fn, above + 1, left, out, int(16 * sizeof(T)), depth);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) ASSERT_EQ(out[y * 16 + x], want(x, y)) << depth << " " << w << "x" << h;
        };
        for (int mode = 0; mode < 4; ++mode) {
            const int luma = kChromaToLuma[mode];
            const auto want422 = [&](int x, int y) { return expect_block(luma, 8, 16, p, top, lft, x, y, depth); };
            if constexpr (sizeof(T) == 1) {
                check(mode == 0 ? t.dc_chroma8x16[dc] : t.pred_chroma8x16[mode], 8, 16, want422);
            } else {
                check(mode == 0 ? t.dc_chroma8x16_hbd[dc] : t.pred_chroma8x16_hbd[mode], 8, 16, want422);
                check(mode == 2 ? t.dc16x16_hbd[dc] : t.pred16x16_hbd[mode], 16, 16,
                      [&](int x, int y) { return expect_block(mode, 16, 16, p, top, lft, x, y, depth); });
                check(mode == 0 ? t.dc_chroma8x8_hbd[dc] : t.pred_chroma8x8_hbd[mode], 8, 8,
                      [&](int x, int y) { return expect_block(luma, 8, 8, p, top, lft, x, y, depth); });
            }
        }
        if constexpr (sizeof(T) == 2)
            for (int mode = 0; mode < 9; ++mode)
                check(mode == 2 ? t.dc4x4_hbd[dc] : t.pred4x4_hbd[mode], 4, 4,
                      [&](int x, int y) { return expect4x4(mode, p, top, lft, x, y, depth); });
    }
}

TEST(H264Intra, KernelsWithoutSingleBlockFunctions) {
    Rng rng(3);
    check_kernels<Kiv8u>(8, rng);
    for (const int depth : {9, 10, 14}) check_kernels<Kiv16u>(depth, rng);
}

}  // namespace
