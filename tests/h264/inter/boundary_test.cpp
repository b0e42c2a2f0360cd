// The exported boundary readers and boundary prediction functions: every
// crossed-edge case against clamped reads, regions wider and taller than the
// picture, and the working record left as it was.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "h264/inter/interp_model.h"
#include "kivvc.h"

namespace {

using kivvc::test::chroma_model;
using kivvc::test::luma_model;
using kivvc::test::Picture;
using kivvc::test::Rng;

unsigned crossed(int x, int y, int w, int h, int pw, int ph) {
    return (x < 0 ? 1u : 0u) | (x + w > pw ? 2u : 0u) | (y < 0 ? 4u : 0u) | (y + h > ph ? 8u : 0u);
}

template <class T, class Fn>
void check_readers(Fn read) {
    Rng rng(71);
    const Picture<T> pic(13, 9, rng, sizeof(T) == 1 ? 255 : 65535);
    std::vector<unsigned> seen(16, 0);
    for (int i = 0; i < 4000; ++i) {
        const int w = rng.range(1, 21), h = rng.range(1, 21), x = rng.range(-30, 40), y = rng.range(-30, 36);
        const unsigned c = crossed(x, y, w, h, 13, 9);
        ++seen[c];
        std::vector<T> out(32 * 22, T(0x5A));
        KivInterpolationParams p{};
        p.pSrc = pic.data(), p.srcStep = 13, p.pDst = out.data(), p.dstStep = 32;
        p.regionX = x, p.regionY = y, p.regionWidth = w, p.regionHeight = h, p.pictureWidth = 13, p.pictureHeight = 9;
        ASSERT_EQ(read(c, &p), kivStsOk);
        for (int r = 0; r < 22; ++r)
            for (int col = 0; col < 32; ++col) {
                const bool inside = c != 0 && r < h && col < w;
                ASSERT_EQ(out[std::size_t(r) * 32 + col], inside ? pic.at(x + col, y + r) : T(0x5A))
                    << "case " << c << " region " << x << "," << y << " " << w << "x" << h;
            }
    }
    for (unsigned c = 0; c < 16; ++c) EXPECT_GT(seen[c], 0u) << "case " << c << " never drawn";
}

TEST(H264Boundary, ReadersGiveClampedReadsForEveryCase) {
    check_readers<Kiv8u>(kiviReadDataBlockThroughBoundary_8u);
    check_readers<Kiv16u>(kiviReadDataBlockThroughBoundary_16u);
}

TEST(H264Boundary, BoundaryFunctionsPredictFromTheRecordAndLeaveItUnchanged) {
    Rng rng(81);
    const Picture<Kiv8u> pic(24, 20, rng, 255), pic2(24, 20, rng, 255);
    const Picture<Kiv16u> pic16(24, 20, rng, 4095), pic16b(24, 20, rng, 4095);
    for (int i = 0; i < 300; ++i) {
        const int type = rng.range(0, 15), dx = type & 3, dy = type >> 2;
        const int bw = 4 << rng.range(0, 2), bh = 4 << rng.range(0, 2);
        const int ox = rng.range(-25, 30), oy = rng.range(-25, 26);
        std::vector<Kiv8u> out(16 * 16), cb(16 * 16), cr(16 * 16);
        std::vector<Kiv16u> out16(16 * 16), cb16(16 * 16), cr16(16 * 16);
        KivInterpolationParams p{};
        p.pSrc = pic.data(), p.srcStep = 24, p.pDst = out.data(), p.dstStep = 16, p.pictureWidth = 24;
        p.pictureHeight = 20, p.bitDepth = 12, p.blockWidth = bw, p.blockHeight = bh, p.kernelType = type;
        p.regionX = ox - (dx ? 2 : 0), p.regionY = oy - (dy ? 2 : 0);
        p.regionWidth = bw + (dx ? 5 : 0), p.regionHeight = bh + (dy ? 5 : 0);
        KivInterpolationParams before = p;
        ASSERT_EQ(kiviInterpolateBoundaryLumaBlock_H264_8u(
                      crossed(p.regionX, p.regionY, p.regionWidth, p.regionHeight, 24, 20), &p),
                  kivStsOk);
        ASSERT_EQ(std::memcmp(&p, &before, sizeof p), 0);
        p.pSrc = pic16.data();
        p.pDst = out16.data();
        ASSERT_EQ(kiviInterpolateBoundaryLumaBlock_H264_16u(0, &p), kivStsOk);

        // Chroma: both planes, region without margins.
        const int cx = rng.range(0, 7), cy = rng.range(0, 7);
        KivInterpolationParams c = p;
        c.pSrc = pic.data(), c.pSrc2 = pic2.data(), c.pDst = cb.data(), c.pDst2 = cr.data();
        c.xFrac = cx, c.yFrac = cy, c.blockWidth = bw / 2, c.kernelType = 2 * (cy != 0) + (cx != 0);
        c.regionX = ox, c.regionY = oy, c.regionWidth = bw / 2 + (cx != 0), c.regionHeight = bh + (cy != 0);
        before = c;
        ASSERT_EQ(kiviInterpolateBoundaryChromaBlock_H264_8u(15, &c), kivStsOk);
        ASSERT_EQ(std::memcmp(&c, &before, sizeof c), 0);
        c.pSrc = pic16.data(), c.pSrc2 = pic16b.data(), c.pDst = cb16.data(), c.pDst2 = cr16.data();
        ASSERT_EQ(kiviInterpolateBoundaryChromaBlock_H264_16u(15, &c), kivStsOk);
        for (int y = 0; y < bh; ++y)
            for (int x = 0; x < bw; ++x) {
                const std::size_t k = std::size_t(y) * 16 + x;
                ASSERT_EQ(out[k], luma_model(pic, ox + x, oy + y, dx, dy, 255));
                ASSERT_EQ(out16[k], luma_model(pic16, ox + x, oy + y, dx, dy, 4095));
                if (x >= bw / 2) continue;
                ASSERT_EQ(cb[k], chroma_model(pic, ox + x, oy + y, cx, cy));
                ASSERT_EQ(cr[k], chroma_model(pic2, ox + x, oy + y, cx, cy));
                ASSERT_EQ(cb16[k], chroma_model(pic16, ox + x, oy + y, cx, cy));
                ASSERT_EQ(cr16[k], chroma_model(pic16b, ox + x, oy + y, cx, cy));
            }
    }
}

}  // namespace
