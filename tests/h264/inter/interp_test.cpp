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
    // Every sample outside the w x h block still holds the guard.
    bool guards_intact(int w, int h) const {
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < kStep; ++x) {
                const bool inside = y >= 4 && y < 4 + h && x >= 4 && x < 4 + w;
                if (!inside && mem[std::size_t(y) * kStep + x] != T(kGuard)) return false;
            }
        return true;
    }
};

// Integer block origin and fraction to a motion vector for a block at `pos`.
int vector_for(int origin, int pos, int frac, int bits) { return (origin - pos) * (1 << bits) + frac; }

TEST(H264Interpolate, PlainLumaAndChromaFollowTheEquationsAtEveryPositionAndWidth) {
    Rng rng(11);
    const Picture<Kiv8u> pic(48, 44, rng, 255);
    for (int dy = 0; dy < 4; ++dy)
        for (int dx = 0; dx < 4; ++dx)
            for (int w : {4, 8, 12, 16, 20, 24, 28})
                for (int h : {4, 8, 16}) {
                    Dest<Kiv8u> d;
                    ASSERT_EQ(kiviInterpolateLuma_H264_8u_C1R(pic.data() + 8 * 48 + 8, 48, d.at(0, 0), d.kStep, dx, dy,
                                                              {w, h}),
                              kivStsOk);
                    for (int y = 0; y < h; ++y)
                        for (int x = 0; x < w; ++x)
                            ASSERT_EQ(*d.at(x, y), luma_model(pic, 8 + x, 8 + y, dx, dy, 255))
                                << "luma " << dx << "," << dy << " " << w << "x" << h << " at " << x << "," << y;
                    ASSERT_TRUE(d.guards_intact(w, h));
                }
    for (int dy = 0; dy < 8; ++dy)
        for (int dx = 0; dx < 8; ++dx)
            for (int w : {2, 4, 6, 8, 10, 12, 14})
                for (int h : {2, 4, 8, 16}) {
                    Dest<Kiv8u> d;
                    ASSERT_EQ(kiviInterpolateChroma_H264_8u_C1R(pic.data() + 48 + 1, 48, d.at(0, 0), d.kStep, dx, dy,
                                                                {w, h}),
                              kivStsOk);
                    for (int y = 0; y < h; ++y)
                        for (int x = 0; x < w; ++x)
                            ASSERT_EQ(*d.at(x, y), chroma_model(pic, 1 + x, 1 + y, dx, dy))
                                << "chroma " << dx << "," << dy << " " << w << "x" << h;
                    ASSERT_TRUE(d.guards_intact(w, h));
                }
}

// Block origins that put the region inside, across each edge and corner and
// wholly outside a picture of pw x ph.
std::vector<std::array<int, 2>> origins(int pw, int ph, int bw, int bh) {
    std::vector<std::array<int, 2>> o;
    for (int x : {-bw - 9, -bw + 1, -3, 0, 2, pw / 2 - bw / 2, pw - bw - 2, pw - bw + 1, pw - 2, pw + 7})
        for (int y : {-bh - 9, -2, 0, 3, ph - bh, ph - bh + 2, ph + 5}) o.push_back({x, y});
    return o;
}

template <class T, class Record>
void check_luma_block(int bitDepth, KivStatus (*fn)(const Record*)) {
    Rng rng(21 + bitDepth);
    const int maxv = (1 << bitDepth) - 1;
    const Picture<T> pic(32, 24, rng, maxv);
    const std::array<std::array<int, 2>, 9> sizes{{{4, 4}, {8, 4}, {4, 8}, {8, 8}, {16, 8}, {8, 16}, {16, 16}, {28, 20}, {12, 4}}};
    for (const auto& [bw, bh] : sizes)
        for (int type = 0; type < 16; ++type)
            for (const auto& [ox, oy] : origins(32, 24, bw, bh)) {
                const int dx = type & 3, dy = type >> 2;
                Dest<T> d;
                Record r{};
                r.pSrc1 = pic.data();
                r.srcStep = 32;
                r.pDst1 = d.at(0, 0);
                r.dstStep = d.kStep;
                r.pictureSize = {32, 24};
                r.blockSize = {bw, bh};
                r.blockPos = {2, 1};
                r.mv = {vector_for(ox, 2, dx, 2), vector_for(oy, 1, dy, 2)};
                if constexpr (sizeof(T) == 2) r.bitDepth = bitDepth;
                if (r.mv.x == 0 && r.mv.y == 0) continue;  // copied without edge handling: see below
                ASSERT_EQ(fn(&r), kivStsOk);
                for (int y = 0; y < bh; ++y)
                    for (int x = 0; x < bw; ++x)
                        ASSERT_EQ(*d.at(x, y), luma_model(pic, ox + x, oy + y, dx, dy, maxv))
                            << "position " << type << " block " << bw << "x" << bh << " at " << ox << "," << oy
                            << " sample " << x << "," << y << " depth " << bitDepth;
                ASSERT_TRUE(d.guards_intact(bw, bh));
            }
}

TEST(H264Interpolate, LumaBlockReadsThroughEveryEdgeAsClampedCoordinates) {
    check_luma_block<Kiv8u>(8, kiviInterpolateLumaBlock_H264_8u_P1R);
    for (int depth = 9; depth <= 14; ++depth) check_luma_block<Kiv16u>(depth, kiviInterpolateLumaBlock_H264_16u_P1R);
}

template <class T, class Record>
void check_chroma_block(int bitDepth, KivStatus (*fn)(const Record*)) {
    Rng rng(31 + bitDepth);
    const int maxv = (1 << bitDepth) - 1;
    const Picture<T> cb(16, 12, rng, maxv), cr(16, 12, rng, maxv);
    const std::array<std::array<int, 2>, 6> sizes{{{2, 2}, {4, 2}, {2, 4}, {8, 8}, {14, 18}, {4, 4}}};
    for (const auto& [bw, bh] : sizes)
        for (int frac = 0; frac < 64; frac += (bw == 8 ? 1 : 5))
            for (const auto& [ox, oy] : origins(16, 12, bw, bh)) {
                const int dx = frac & 7, dy = frac >> 3;
                Dest<T> d1, d2;
                Record r{};
                r.pSrc1 = cb.data();
                r.pSrc2 = cr.data();
                r.srcStep = 16;
                r.pDst1 = d1.at(0, 0);
                r.pDst2 = d2.at(0, 0);
                r.dstStep = d1.kStep;
                r.pictureSize = {16, 12};
                r.blockSize = {bw, bh};
                r.blockPos = {1, 0};
                r.mv = {vector_for(ox, 1, dx, 3), vector_for(oy, 0, dy, 3)};
                if constexpr (sizeof(T) == 2) r.bitDepth = bitDepth;
                if (r.mv.x == 0 && r.mv.y == 0) continue;
                ASSERT_EQ(fn(&r), kivStsOk);
                for (int y = 0; y < bh; ++y)
                    for (int x = 0; x < bw; ++x) {
                        ASSERT_EQ(*d1.at(x, y), chroma_model(cb, ox + x, oy + y, dx, dy))
                            << "Cb " << dx << "," << dy << " block " << bw << "x" << bh << " at " << ox << "," << oy;
                        ASSERT_EQ(*d2.at(x, y), chroma_model(cr, ox + x, oy + y, dx, dy));
                    }
                ASSERT_TRUE(d1.guards_intact(bw, bh));
                ASSERT_TRUE(d2.guards_intact(bw, bh));
            }
}

TEST(H264Interpolate, ChromaBlockReadsBothPlanesThroughEveryEdge) {
    check_chroma_block<Kiv8u>(8, kiviInterpolateChromaBlock_H264_8u_P2R);
    for (int depth : {9, 10, 12, 14}) check_chroma_block<Kiv16u>(depth, kiviInterpolateChromaBlock_H264_16u_P2R);
}

TEST(H264Interpolate, ZeroVectorCopiesWithoutEdgeTest) {
    // The declared picture is 8x8, the memory 32x32: a zero vector copies
    // from the block position even far outside the declared picture.
    Rng rng(5);
    const Picture<Kiv8u> mem(32, 32, rng, 255);
    Dest<Kiv8u> d;
    KivInterpolateBlock_8u r{mem.data(), mem.data(), 32, d.at(0, 0), d.at(0, 20), d.kStep, {8, 8}, {4, 4}, {20, 24}, {0, 0}};
    ASSERT_EQ(kiviInterpolateLumaBlock_H264_8u_P1R(&r), kivStsOk);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) ASSERT_EQ(*d.at(x, y), mem.at(20 + x, 24 + y));
    r.blockSize = {4, 2};
    ASSERT_EQ(kiviInterpolateChromaBlock_H264_8u_P2R(&r), kivStsOk);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) ASSERT_EQ(*d.at(x, 20 + y), mem.at(20 + x, 24 + y));
}

TEST(H264Interpolate, FarVectorsReadTheNearestEdgeOrCorner) {
    Rng rng(6);
    const Picture<Kiv8u> pic(16, 16, rng, 255);
    for (const auto& mv : {std::array<int, 2>{1 << 29, 3}, {-(1 << 29) + 1, -(1 << 29) + 2}, {5, (1 << 29) + 3}}) {
        Dest<Kiv8u> d;
        KivInterpolateBlock_8u r{pic.data(), pic.data(), 16, d.at(0, 0), d.at(0, 20), d.kStep, {16, 16}, {16, 16}, {0, 0}, {mv[0], mv[1]}};
        ASSERT_EQ(kiviInterpolateLumaBlock_H264_8u_P1R(&r), kivStsOk);
        const int ox = mv[0] >> 2, oy = mv[1] >> 2;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                ASSERT_EQ(*d.at(x, y), luma_model(pic, ox + x, oy + y, mv[0] & 3, mv[1] & 3, 255));
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
    for (bool top : {true, false})
        for (int h : {4, 8, 16})
            for (int out = -3; out <= h + 1; ++out) {
                const int edge = top ? out : h - 1 - out;
                const EdgeRows rows{&pic16, x0, y0, edge, top};
                for (int type = 0; type < 16; ++type) {
                    const int dx = type & 3, dy = type >> 2, w = type % 3 == 0 ? 16 : (type % 3 == 1 ? 8 : 4);
                    const int pw = w + h == 20 ? 8 : w;  // 16-bit luma refuses 16x4 and 4x16
                    Dest<Kiv8u> d8;
                    Dest<Kiv16u> d16;
                    const auto f8 = top ? kiviInterpolateLumaTop_H264_8u_C1R : kiviInterpolateLumaBottom_H264_8u_C1R;
                    const auto f16 = top ? kiviInterpolateLumaTop_H264_16u_C1R : kiviInterpolateLumaBottom_H264_16u_C1R;
                    ASSERT_EQ(f8(pic8.data() + y0 * step + x0, step, d8.at(0, 0), d8.kStep, dx, dy, out, {w, h}), kivStsOk);
                    const KivInterpolate_16u r{pic16.data() + y0 * step + x0, step, d16.at(0, 0), d16.kStep, dx, dy, {pw, h}, 10};
                    ASSERT_EQ(f16(&r, out), kivStsOk);
                    for (int y = 0; y < h; ++y)
                        for (int x = 0; x < w; ++x) {
                            const int want = luma_model(rows, x, y, dx, dy, 255);
                            ASSERT_EQ(*d8.at(x, y), want) << (top ? "top" : "bottom") << " out " << out << " type " << type;
                            if (x < pw) {
                                ASSERT_EQ(*d16.at(x, y), luma_model(rows, x, y, dx, dy, 1023));
                            }
                        }
                    ASSERT_TRUE(d8.guards_intact(w, h));
                    ASSERT_TRUE(d16.guards_intact(pw, h));
                }
                for (int frac = 0; frac < 64; frac += 3) {
                    const int dx = frac & 7, dy = frac >> 3, w = frac % 2 ? 8 : 2;
                    Dest<Kiv8u> d8;
                    Dest<Kiv16u> d16;
                    const auto f8 = top ? kiviInterpolateChromaTop_H264_8u_C1R : kiviInterpolateChromaBottom_H264_8u_C1R;
                    const auto f16 =
                        top ? kiviInterpolateChromaTop_H264_16u_C1R : kiviInterpolateChromaBottom_H264_16u_C1R;
                    ASSERT_EQ(f8(pic8.data() + y0 * step + x0, step, d8.at(0, 0), d8.kStep, dx, dy, out, {w, h}), kivStsOk);
                    const KivInterpolate_16u r{pic16.data() + y0 * step + x0, step, d16.at(0, 0), d16.kStep, dx, dy, {w, h}, 10};
                    ASSERT_EQ(f16(&r, out), kivStsOk);
                    for (int y = 0; y < h; ++y)
                        for (int x = 0; x < w; ++x) {
                            ASSERT_EQ(*d8.at(x, y), chroma_model(rows, x, y, dx, dy));
                            ASSERT_EQ(*d16.at(x, y), chroma_model(rows, x, y, dx, dy));
                        }
                }
            }
}

TEST(H264Interpolate, SixteenBitPlainFunctionsStayInRange) {
    Rng rng(51);
    for (int depth = 9; depth <= 14; ++depth) {
        const int maxv = (1 << depth) - 1;
        Picture<Kiv16u> pic(40, 40, rng, maxv);
        // Alternating extremes drive the 6-tap filter past both clip ends.
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                if ((x + y) % 3 == 0) pic.samples[std::size_t(y) * 40 + x] = Kiv16u(((x / 2 + y) & 1) ? maxv : 0);
        for (int type = 0; type < 16; ++type) {
            Dest<Kiv16u> d;
            const KivInterpolate_16u r{pic.data() + 8 * 40 + 8, 40, d.at(0, 0), d.kStep, type & 3, type >> 2, {16, 16}, depth};
            ASSERT_EQ(kiviInterpolateLuma_H264_16u_C1R(&r), kivStsOk);
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < 16; ++x) {
                    ASSERT_LE(*d.at(x, y), maxv);
                    ASSERT_EQ(*d.at(x, y), luma_model(pic, 8 + x, 8 + y, type & 3, type >> 2, maxv));
                }
        }
        for (int frac = 0; frac < 64; ++frac) {
            Dest<Kiv16u> d;
            const KivInterpolate_16u r{pic.data() + 8 * 40 + 8, 40, d.at(0, 0), d.kStep, frac & 7, frac >> 3, {16, 16}, depth};
            ASSERT_EQ(kiviInterpolateChroma_H264_16u_C1R(&r), kivStsOk);
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < 16; ++x) ASSERT_EQ(*d.at(x, y), chroma_model(pic, 8 + x, 8 + y, frac & 7, frac >> 3));
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
            for (int y = 0; y < int(h); ++y)
                for (int x = 0; x < int(w); ++x) {
                    ASSERT_EQ(*d.at(x, y), (a.at(x, y) + b.at(x, y) + 1) >> 1);
                    ASSERT_EQ(same[std::size_t(y) * 20 + x], *d.at(x, y));
                }
            ASSERT_TRUE(d.guards_intact(int(w), int(h)));
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
    EXPECT_EQ(kiviInterpolateLumaTop_H264_8u_C1R(p, 64, nullptr, 64, 0, 0, 0, {4, 4}), kivStsNullPointer);
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
    EXPECT_EQ(kiviInterpolateBlock_H264_8u_P3P1R(buf, buf, buf, Kiv32u(-4), 4, 64, 64, 64), kivStsBadSize);
}

}  // namespace
