// Interpolation through the exported functions, against the per-sample
// model: plain functions at every position and width, Block functions with
// the block inside, across every edge and corner and wholly outside (the
// picture buffers are exactly the picture, so any read outside it faults
// under the sanitizers), Top/Bottom edge rows, 16-bit depths, the average.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "h264/inter/interp_model.h"
#include "kivvc.h"

namespace {

using kivvc::test::chroma_model;
using kivvc::test::luma_model;
using kivvc::test::Picture;
using kivvc::test::Rng;

constexpr Kiv8u kGuard = 0xA5;

// A destination with guard samples around the block.
template <class T>
struct Dest {
    static constexpr int kStep = 40;
    std::vector<T> mem = std::vector<T>(kStep * 40, T(kGuard));
    T* at(int x, int y) { return mem.data() + (y + 4) * kStep + 4 + x; }
    // The w x h block holds want(x, y) and every sample around it the guard.
    template <class Want>
    testing::AssertionResult holds(int w, int h, Want want) const {
        for (int y = -4; y < 36; ++y)
            for (int x = -4; x < kStep - 4; ++x) {
                const int got = mem[std::size_t(y + 4) * kStep + x + 4];
                const int expected = y >= 0 && y < h && x >= 0 && x < w ? want(x, y) : T(kGuard);
                if (got != expected)
                    return testing::AssertionFailure() << "sample " << x << "," << y << " is " << got << ", not " << expected;
            }
        return testing::AssertionSuccess();
    }
};

// The plain (edge 0), Top (1) and Bottom (2) functions of either depth behind one signature.
KivStatus predict(bool luma, int edge, const Kiv8u* src, int ss, Dest<Kiv8u>& d, int dx, int dy, KiviSize roi, int,
                  int out = 0) {
    if (edge == 0)
        return (luma ? kiviInterpolateLuma_H264_8u_C1R : kiviInterpolateChroma_H264_8u_C1R)(src, ss, d.at(0, 0), d.kStep,
                                                                                             dx, dy, roi);
    const auto f = luma ? (edge == 1 ? kiviInterpolateLumaTop_H264_8u_C1R : kiviInterpolateLumaBottom_H264_8u_C1R)
                        : (edge == 1 ? kiviInterpolateChromaTop_H264_8u_C1R : kiviInterpolateChromaBottom_H264_8u_C1R);
    return f(src, ss, d.at(0, 0), d.kStep, dx, dy, out, roi);
}
KivStatus predict(bool luma, int edge, const Kiv16u* src, int ss, Dest<Kiv16u>& d, int dx, int dy, KiviSize roi,
                  int depth, int out = 0) {
    const KivInterpolate_16u r{src, ss, d.at(0, 0), d.kStep, dx, dy, roi, depth};
    if (edge == 0) return (luma ? kiviInterpolateLuma_H264_16u_C1R : kiviInterpolateChroma_H264_16u_C1R)(&r);
    const auto f = luma ? (edge == 1 ? kiviInterpolateLumaTop_H264_16u_C1R : kiviInterpolateLumaBottom_H264_16u_C1R)
                        : (edge == 1 ? kiviInterpolateChromaTop_H264_16u_C1R : kiviInterpolateChromaBottom_H264_16u_C1R);
    return f(&r, out);
}

// Integer block origin and fraction to a motion vector for a block at `pos`.
int vector_for(int origin, int pos, int frac, int bits) { return (origin - pos) * (1 << bits) + frac; }

// Every position and size of the plain functions; alternating extremes in
// every third sample drive the 6-tap filter past both clip ends.
template <class T>
void check_plain(int depth) {
    Rng rng(11 + depth);
    const int maxv = (1 << depth) - 1;
    Picture<T> pic(48, 44, rng, maxv);
    for (int y = 0; y < 44; ++y)
        for (int x = 0; x < 48; ++x)
            if ((x + y) % 3 == 0) pic.samples[std::size_t(y) * 48 + x] = T(((x / 2 + y) & 1) ? maxv : 0);
    const T* src = pic.data() + 8 * 48 + 8;
    // 16-bit luma: widths 4, 8, 16 and not 16x4 or 4x16; 16-bit chroma: powers of two.
    const bool wide = sizeof(T) == 1;
    for (bool luma : {true, false})
        for (int frac = 0; frac < (luma ? 16 : 64); ++frac)
            for (int w = 2; w <= 28; w += 2)
                for (int h : {2, 4, 8, 16}) {
                    if (luma ? w % 4 || h == 2 || (!wide && (w % 12 == 0 || w > 16 || (w * h == 64 && w != h)))
                             : w > 16 || (wide ? w == 16 : (w & (w - 1)) != 0))
                        continue;
                    const int bits = luma ? 2 : 3, dx = frac & ((1 << bits) - 1), dy = frac >> bits;
                    Dest<T> d;
                    ASSERT_EQ(predict(luma, 0, src, 48, d, dx, dy, {w, h}, depth), kivStsOk);
                    ASSERT_TRUE(d.holds(w, h, [&](int x, int y) {
                        return luma ? luma_model(pic, 8 + x, 8 + y, dx, dy, maxv) : chroma_model(pic, 8 + x, 8 + y, dx, dy);
                    })) << (luma ? "luma " : "chroma ") << dx << "," << dy << " " << w << "x" << h << " depth " << depth;
                }
}

TEST(H264Interpolate, PlainLumaAndChromaFollowTheEquationsAtEveryPositionAndSize) {
    check_plain<Kiv8u>(8);
    for (int depth = 9; depth <= 14; ++depth) check_plain<Kiv16u>(depth);
}

// Block origins that put the region inside, across each edge and corner and
// wholly outside a picture of pw x ph.
std::vector<std::array<int, 2>> origins(int pw, int ph, int bw, int bh) {
    std::vector<std::array<int, 2>> o;
    for (int x : {-bw - 9, -bw + 1, -3, 0, 2, pw / 2 - bw / 2, pw - bw - 2, pw - bw + 1, pw - 2, pw + 7})
        for (int y : {-bh - 9, -2, 0, 3, ph - bh, ph - bh + 2, ph + 5}) o.push_back({x, y});
    return o;
}

// The Block functions at every fraction (chroma: a sample of them) and
// origin; luma predicts into the first destination only.
template <class T, class Record>
void check_block(bool luma, int depth, KivStatus (*fn)(const Record*)) {
    Rng rng(21 + depth + luma * 16);
    const int maxv = (1 << depth) - 1, pw = luma ? 32 : 16, ph = luma ? 24 : 12, bits = luma ? 2 : 3;
    const Picture<T> p1(pw, ph, rng, maxv), p2(pw, ph, rng, maxv);
    const std::vector<std::array<int, 2>> sizes =
        luma ? std::vector<std::array<int, 2>>{{4, 4}, {8, 4}, {4, 8}, {8, 8}, {16, 8}, {8, 16}, {16, 16}, {28, 20}, {12, 4}}
             : std::vector<std::array<int, 2>>{{2, 2}, {4, 2}, {2, 4}, {8, 8}, {14, 18}, {4, 4}};
    for (const auto& [bw, bh] : sizes)
        for (int frac = 0; frac < (4 << bits); frac += (luma || bw == 8 ? 1 : 5))
            for (const auto& origin : origins(pw, ph, bw, bh)) {
                const int ox = origin[0], oy = origin[1];  // plain names: lambdas capture them
                const int dx = frac & ((1 << bits) - 1), dy = frac >> bits;
                Dest<T> d1, d2;
                Record r{};
                r.pSrc1 = p1.data(), r.pSrc2 = p2.data(), r.pDst1 = d1.at(0, 0), r.pDst2 = d2.at(0, 0);
                r.srcStep = pw, r.dstStep = d1.kStep, r.pictureSize = {pw, ph}, r.blockSize = {bw, bh};
                r.blockPos = {2, 1}, r.mv = {vector_for(ox, 2, dx, bits), vector_for(oy, 1, dy, bits)};
                if constexpr (sizeof(T) == 2) r.bitDepth = depth;
                if (r.mv.x == 0 && r.mv.y == 0) continue;  // copied without edge handling: see below
                ASSERT_EQ(fn(&r), kivStsOk);
                SCOPED_TRACE(testing::Message() << (luma ? "luma " : "chroma ") << dx << "," << dy << " block " << bw
                                                << "x" << bh << " at " << ox << "," << oy << " depth " << depth);
                const auto model = [&](const Picture<T>& p) {
                    return [&](int x, int y) {
                        return luma ? luma_model(p, ox + x, oy + y, dx, dy, maxv) : chroma_model(p, ox + x, oy + y, dx, dy);
                    };
                };
                ASSERT_TRUE(d1.holds(bw, bh, model(p1)));
                ASSERT_TRUE(d2.holds(luma ? 0 : bw, bh, model(p2)));
            }
}

TEST(H264Interpolate, BlockFunctionsReadThroughEveryEdgeAsClampedCoordinates) {
    check_block<Kiv8u>(true, 8, kiviInterpolateLumaBlock_H264_8u_P1R);
    check_block<Kiv8u>(false, 8, kiviInterpolateChromaBlock_H264_8u_P2R);
    for (int depth = 9; depth <= 14; ++depth) {
        check_block<Kiv16u>(true, depth, kiviInterpolateLumaBlock_H264_16u_P1R);
        check_block<Kiv16u>(false, depth, kiviInterpolateChromaBlock_H264_16u_P2R);
    }
}

TEST(H264Interpolate, ZeroVectorCopiesWithoutEdgeTest) {
    // The declared picture is 8x8, the memory 32x32: a zero vector copies
    // from the block position even far outside the declared picture.
    Rng rng(5);
    const Picture<Kiv8u> mem(32, 32, rng, 255);
    Dest<Kiv8u> d;
    KivInterpolateBlock_8u r{mem.data(), mem.data(), 32, d.at(0, 0), d.at(0, 20), d.kStep, {8, 8}, {4, 4}, {20, 24}, {0, 0}};
    ASSERT_EQ(kiviInterpolateLumaBlock_H264_8u_P1R(&r), kivStsOk);
    ASSERT_TRUE(d.holds(4, 4, [&](int x, int y) { return mem.at(20 + x, 24 + y); }));
    r.blockSize = {4, 2};
    ASSERT_EQ(kiviInterpolateChromaBlock_H264_8u_P2R(&r), kivStsOk);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) ASSERT_EQ(*d.at(x, 20 + y), mem.at(20 + x, 24 + y));  // Cr; Cb went over the luma
}

TEST(H264Interpolate, FarVectorsReadTheNearestEdgeOrCorner) {
    Rng rng(6);
    const Picture<Kiv8u> pic(16, 16, rng, 255);
    for (const auto& mv : {std::array<int, 2>{1 << 29, 3}, {-(1 << 29) + 1, -(1 << 29) + 2}, {5, (1 << 29) + 3}}) {
        Dest<Kiv8u> d;
        KivInterpolateBlock_8u r{pic.data(), pic.data(), 16, d.at(0, 0), d.at(0, 20), d.kStep, {16, 16}, {16, 16}, {0, 0}, {mv[0], mv[1]}};
        ASSERT_EQ(kiviInterpolateLumaBlock_H264_8u_P1R(&r), kivStsOk);
        const int ox = mv[0] >> 2, oy = mv[1] >> 2;
        ASSERT_TRUE(d.holds(16, 16, [&](int x, int y) { return luma_model(pic, ox + x, oy + y, mv[0] & 3, mv[1] & 3, 255); }));
    }
}

// Source rows as the Top/Bottom functions see them: block row k reads row
// max(k, edge) or min(k, edge); columns as they are.
struct EdgeRows {
    const Picture<Kiv16u>* pic;
    int x0, y0, edge;
    bool top;
    int at(int x, int k) const { return pic->at(x0 + x, y0 + (top ? std::max(k, edge) : std::min(k, edge))); }
};

TEST(H264Interpolate, TopAndBottomReplaceTheRowsBeyondTheEdge) {
    Rng rng(41);
    const Picture<Kiv8u> pic8(48, 64, rng, 255);
    Picture<Kiv16u> pic16(48, 64, rng, 1023);
    for (std::size_t i = 0; i < pic16.samples.size(); ++i) pic16.samples[i] = pic8.samples[i];
    const int x0 = 8, y0 = 24, step = 48;
    const Kiv8u* src8 = pic8.data() + y0 * step + x0;
    const Kiv16u* src16 = pic16.data() + y0 * step + x0;
    for (int edge : {1, 2})
        for (int h : {4, 8, 16})
            for (int out = -3; out <= h + 1; ++out) {
                const EdgeRows rows{&pic16, x0, y0, edge == 1 ? out : h - 1 - out, edge == 1};
                SCOPED_TRACE(testing::Message() << (edge == 1 ? "top" : "bottom") << " height " << h << " out " << out);
                for (int type = 0; type < 16; ++type) {
                    const int dx = type & 3, dy = type >> 2, w = type % 3 == 0 ? 16 : (type % 3 == 1 ? 8 : 4);
                    const int pw = w + h == 20 ? 8 : w;  // 16-bit luma refuses 16x4 and 4x16
                    Dest<Kiv8u> d8;
                    Dest<Kiv16u> d16;
                    ASSERT_EQ(predict(true, edge, src8, step, d8, dx, dy, {w, h}, 8, out), kivStsOk);
                    ASSERT_EQ(predict(true, edge, src16, step, d16, dx, dy, {pw, h}, 10, out), kivStsOk);
                    ASSERT_TRUE(d8.holds(w, h, [&](int x, int y) { return luma_model(rows, x, y, dx, dy, 255); }));
                    ASSERT_TRUE(d16.holds(pw, h, [&](int x, int y) { return luma_model(rows, x, y, dx, dy, 1023); }));
                }
                for (int frac = 0; frac < 64; frac += 3) {
                    const int dx = frac & 7, dy = frac >> 3, w = frac % 2 ? 8 : 2;
                    const auto want = [&](int x, int y) { return chroma_model(rows, x, y, dx, dy); };
                    Dest<Kiv8u> d8;
                    Dest<Kiv16u> d16;
                    ASSERT_EQ(predict(false, edge, src8, step, d8, dx, dy, {w, h}, 8, out), kivStsOk);
                    ASSERT_EQ(predict(false, edge, src16, step, d16, dx, dy, {w, h}, 10, out), kivStsOk);
                    ASSERT_TRUE(d8.holds(w, h, want));
                    ASSERT_TRUE(d16.holds(w, h, want));
                }
            }
}

TEST(H264Interpolate, AverageOfTwoBlocksAtEverySize) {
    Rng rng(61);
    const Picture<Kiv8u> a(20, 20, rng, 255), b(20, 20, rng, 255);
    for (Kiv32u w = 2; w <= 16; ++w)
        for (Kiv32u h = 2; h <= 16; ++h) {
            Dest<Kiv8u> d;
            std::vector<Kiv8u> same(20 * 20, 0);
            ASSERT_EQ(kiviInterpolateBlock_H264_8u_P3P1R(a.data(), b.data(), d.at(0, 0), w, h, 20, 20, d.kStep), kivStsOk);
            ASSERT_EQ(kiviInterpolateBlock_H264_8u_P2P1R(a.data(), b.data(), same.data(), w, h, 20), kivStsOk);
            ASSERT_TRUE(d.holds(int(w), int(h), [&](int x, int y) { return (a.at(x, y) + b.at(x, y) + 1) >> 1; }));
            for (int y = 0; y < int(h); ++y)
                for (int x = 0; x < int(w); ++x) ASSERT_EQ(same[std::size_t(y) * 20 + x], *d.at(x, y));
        }
}

TEST(H264Interpolate, StatusesInCheckOrder) {
    Kiv8u buf[64 * 64] = {};
    Kiv8u* p = buf + 2 * 64 + 2;
    EXPECT_EQ(kiviInterpolateLuma_H264_8u_C1R(nullptr, 64, p, 64, 9, 0, {5, 4}), kivStsNullPointer);
    EXPECT_EQ(kiviInterpolateLuma_H264_8u_C1R(p, 64, p, 64, -1, 0, {5, 4}), kivStsBadArgument);
    EXPECT_EQ(kiviInterpolateLuma_H264_8u_C1R(p, 64, p, 64, 0, 4, {4, 4}), kivStsBadArgument);
    EXPECT_EQ(kiviInterpolateLuma_H264_8u_C1R(p, 64, p, 64, 0, 0, {4, 6}), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateLuma_H264_8u_C1R(p, 64, p, 64, 0, 0, {2, 4}), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateLuma_H264_8u_C1R(p, 64, p, 64, 0, 0, {32, 4}), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateChroma_H264_8u_C1R(p, 64, p, 64, 8, 0, {1, 1}), kivStsBadArgument);
    EXPECT_EQ(kiviInterpolateChroma_H264_8u_C1R(p, 64, p, 64, 7, 7, {16, 2}), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateChroma_H264_8u_C1R(p, 64, p, 64, 7, 7, {2, 3}), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateChromaBottom_H264_8u_C1R(p, 64, p, 64, 0, 0, 0, {3, 2}), kivStsBadSize);

    Kiv16u b16[64 * 64] = {};
    KivInterpolate_16u r{b16 + 2 * 64 + 2, 4, b16, 64, 5, 9, {8, 16}, 10};
    EXPECT_EQ(kiviInterpolateLuma_H264_16u_C1R(nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviInterpolateLuma_H264_16u_C1R(&r), kivStsBadStep);
    r.srcStep = 64;
    EXPECT_EQ(kiviInterpolateLuma_H264_16u_C1R(&r), kivStsBadArgument);
    r.dx = 3;
    EXPECT_EQ(kiviInterpolateLuma_H264_16u_C1R(&r), kivStsBadArgument);
    r.dy = 3;
    r.roiSize = {2, 12};
    EXPECT_EQ(kiviInterpolateLuma_H264_16u_C1R(&r), kivStsBadSize);
    for (KiviSize s : {KiviSize{4, 16}, KiviSize{16, 4}}) {
        r.roiSize = s;
        EXPECT_EQ(kiviInterpolateLuma_H264_16u_C1R(&r), kivStsBadSize);
        EXPECT_EQ(kiviInterpolateLumaTop_H264_16u_C1R(&r, 0), kivStsBadSize);
    }
    r.roiSize = {16, 8};
    EXPECT_EQ(kiviInterpolateLuma_H264_16u_C1R(&r), kivStsOk);
    r.srcStep = 7;
    r.dx = 8;
    EXPECT_EQ(kiviInterpolateChroma_H264_16u_C1R(&r), kivStsBadStep);
    r.srcStep = 64;
    EXPECT_EQ(kiviInterpolateChroma_H264_16u_C1R(&r), kivStsBadArgument);
    r.dx = 7;
    r.roiSize = {3, 2};
    EXPECT_EQ(kiviInterpolateChroma_H264_16u_C1R(&r), kivStsBadSize);
    r.roiSize = {2, 16};
    EXPECT_EQ(kiviInterpolateChromaBottom_H264_16u_C1R(&r, 1), kivStsOk);

    KivInterpolateBlock_8u blk{buf, nullptr, 64, buf, buf, 64, {64, 64}, {4, 6}, {0, 0}, {1, 1}};
    EXPECT_EQ(kiviInterpolateLumaBlock_H264_8u_P1R(&blk), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateChromaBlock_H264_8u_P2R(&blk), kivStsNullPointer);
    blk.pSrc2 = buf;
    blk.blockSize = {16, 4};
    EXPECT_EQ(kiviInterpolateChromaBlock_H264_8u_P2R(&blk), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateBlock_H264_8u_P2P1R(buf, buf, nullptr, 4, 4, 64), kivStsNullPointer);
    EXPECT_EQ(kiviInterpolateBlock_H264_8u_P2P1R(buf, buf, buf, 1, 4, 64), kivStsBadSize);
    EXPECT_EQ(kiviInterpolateBlock_H264_8u_P3P1R(buf, buf, buf, 4, 17, 64, 64, 64), kivStsBadSize);
}

}  // namespace
