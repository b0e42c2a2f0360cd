// Sprite warping, global motion and brightness: check orders, copy,
// translation and affine positions against the warped points and the bilinear
// sampler, perspective against affine, global-motion rounding.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

struct Record {
    alignas(16) unsigned char mem[328 + 1];
    KiviWarpSpec_MPEG4* spec() { return reinterpret_cast<KiviWarpSpec_MPEG4*>(mem + 1); }  // deliberately misaligned
};

struct Sprite {
    int w, h;
    std::vector<Kiv8u> px;
    Sprite(int w, int h, kivvc::test::Rng& rng) : w(w), h(h), px(std::size_t(w) * h) {
        for (auto& v : px) v = static_cast<Kiv8u>(rng.next());
    }
};

KivStatus init(Record& r, std::vector<int> du, std::vector<int> dv, int points, int type, int acc, int rounding,
               int qpel, int fcode, KiviRect sprite, KiviRect vop) {
    du.resize(4);
    dv.resize(4);
    return kiviWarpInit_MPEG4(r.spec(), du.data(), dv.data(), points, type, acc, rounding, qpel, fcode, &sprite, &vop);
}

TEST(MPEG4Warp, InitChecksInOrderAndFailedRecordsAreRefused) {
    Record r;
    int size = 0;
    EXPECT_EQ(kiviWarpGetSize_MPEG4(nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviWarpGetSize_MPEG4(&size), kivStsOk);
    EXPECT_EQ(size, 328);
    const KiviRect rect{0, 0, 64, 48}, empty{0, 0, 0, 48};
    int du[4] = {}, dv[4] = {};
    EXPECT_EQ(kiviWarpInit_MPEG4(nullptr, du, dv, 1, 0, 0, 0, 0, 1, &rect, &rect), kivStsNullPointer);
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), du, dv, 5, 1, 0, 0, 0, 1, &rect, &rect), kivStsOutOfRange);
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), du, dv, 4, 0, 0, 0, 0, 1, &rect, &rect), kivStsOutOfRange);
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), du, dv, 4, 1, 0, 0, 0, 1, &rect, &rect), kivStsOk);
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), du, dv, 1, 0, 4, 0, 0, 1, &rect, &rect), kivStsOutOfRange);
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), du, dv, 1, 0, 0, 0, 0, 8, &rect, &rect), kivStsOutOfRange);
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), du, dv, 1, 0, 0, 0, 0, 1, &empty, &rect), kivStsBadSize);
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), nullptr, dv, 0, 0, 0, 0, 0, 1, &rect, &rect), kivStsOk);  // not read
    EXPECT_EQ(kiviWarpInit_MPEG4(r.spec(), nullptr, dv, 2, 0, 0, 0, 0, 1, &rect, &rect), kivStsNullPointer);
    Kiv8u plane[64 * 48] = {}, out[256];
    const KiviRect block{0, 0, 16, 16};
    KivMotionVector mv;
    EXPECT_EQ(kiviWarpLuma_MPEG4_8u_C1R(plane, 64, out, 16, &block, r.spec()), kivStsContextMismatch);
    EXPECT_EQ(kiviCalcGlobalMV_MPEG4(0, 0, &mv, r.spec()), kivStsContextMismatch);
    EXPECT_EQ(kiviWarpLuma_MPEG4_8u_C1R(plane, 64, nullptr, 16, &block, r.spec()), kivStsNullPointer);
    EXPECT_EQ(kiviWarpChroma_MPEG4_8u_P2R(plane, 64, plane, 64, out, 8, nullptr, 8, &block, r.spec()),
              kivStsNullPointer);
}

// The bilinear sampler with the border repeated, written from its definition.
int sample(const Sprite& sp, int X, int Y, int t) {
    const int ix = X >> 4, iy = Y >> 4, fx = X & 15, fy = Y & 15;
    auto col = [&](int i, int k) { return i < 0 ? 0 : (i >= sp.w - 1 ? sp.w - 1 : i + k); };
    auto row = [&](int i, int k) { return i < 0 ? 0 : (i >= sp.h - 1 ? sp.h - 1 : i + k); };
    auto px = [&](int cx, int ry) { return int(sp.px[std::size_t(ry) * sp.w + cx]); };
    const int p00 = px(col(ix, 0), row(iy, 0)), p01 = px(col(ix, 1), row(iy, 0));
    const int p10 = px(col(ix, 0), row(iy, 1)), p11 = px(col(ix, 1), row(iy, 1));
    const double top = p00 * (16 - fx) + p01 * fx, bottom = p10 * (16 - fx) + p11 * fx;
    return static_cast<int>(std::floor((top * (16 - fy) + bottom * fy + t) / 256.0));
}

// Up to three points against the affine map: the point i0' moves with the
// column and row by (i1' - i0') / W and (i2' - i0') / H, evaluated in exact
// rational arithmetic for pictures whose sizes are powers of two. No points
// copy, one point translates by half samples (the half-sample averages are
// the bilinear sampler on that grid); 16x16 blocks inside take the fast
// paths, positions outside the sprite repeat its border.
TEST(MPEG4Warp, AffinePositionsFollowTheWarpedPoints) {
    kivvc::test::Rng rng(3);
    Sprite sp(80, 72, rng);
    for (int trial = 0; trial < 400; ++trial) {
        const int points = rng.range(0, 3), acc = rng.range(0, 3), type = rng.range(0, 1), rounding = rng.range(0, 1);
        const int W = 1 << rng.range(4, 6), H = points == 3 ? 1 << rng.range(4, 6) : W;
        const int x0 = rng.range(0, 8), y0 = rng.range(0, 8), n = rng.chance(2) ? 16 : 8;
        std::vector<int> du = {rng.range(-20, 20), rng.range(-20, 20), rng.range(-20, 20)};
        std::vector<int> dv = {rng.range(-20, 20), rng.range(-20, 20), rng.range(-20, 20)};
        if (points < 2) du[1] = dv[1] = du[2] = dv[2] = 0;  // a translation (or none)
        if (points == 0) du[0] = dv[0] = 0;
        if (points == 2) {  // rotation and zoom: the third point follows from the second
            du[2] = -dv[1] * H / W;
            dv[2] = du[1] * H / W;
        }
        Record r;
        const KiviRect sprite{rng.range(-4, 0), rng.range(-4, 0), sp.w, sp.h};
        ASSERT_EQ(init(r, du, dv, points, type, acc, rounding, 0, 3, sprite, KiviRect{x0, y0, W, H}), kivStsOk);
        const KiviRect b{x0 + rng.range(-4, W - n + 4), y0 + rng.range(-4, H - n + 4), n, n};
        Kiv8u out[256];
        ASSERT_EQ(kiviWarpLuma_MPEG4_8u_C1R(sp.px.data(), sp.w, out, 16, &b, r.spec()), kivStsOk);
        const int rf = type == 1 ? 0 : rounding, t = 128 - (rf << (3 - acc));  // static sprites never round down
        const int step16 = 1 << (3 - acc);  // one 1/s step in 1/16 units
        // Warped points in 1/16 sample units.
        const double i0 = 8.0 * (du[0] + 2 * x0), j0 = 8.0 * (dv[0] + 2 * y0);
        const double i1 = 8.0 * (du[0] + du[1] + 2 * (x0 + W)), j1 = 8.0 * (dv[0] + dv[1] + 2 * y0);
        const double i2 = 8.0 * (du[0] + du[2] + 2 * x0), j2 = 8.0 * (dv[0] + dv[2] + 2 * (y0 + H));
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n; ++x) {
                const double di = b.x + x - x0, dj = b.y + y - y0;
                double X = i0 + (i1 - i0) * di / W, Y = j0 + (j1 - j0) * di / W;
                if (points == 3) {
                    X += (i2 - i0) * dj / H;
                    Y += (j2 - j0) * dj / H;
                } else {
                    X += (j0 - j1) * dj / W;
                    Y += (i1 - i0) * dj / W;
                }
                // Nearest 1/s position, halves up, in 1/16 units, relative to the sprite.
                const int Xs = int(std::floor(X / step16 + 0.5)) * step16 - 16 * sprite.x;
                const int Ys = int(std::floor(Y / step16 + 0.5)) * step16 - 16 * sprite.y;
                ASSERT_EQ(out[y * 16 + x], sample(sp, Xs, Ys, t))
                    << "trial " << trial << " points " << points << " acc " << acc << " at " << x << "," << y;
            }
    }
}

// A four-point (perspective) transform whose points form a parallelogram is
// affine, and must agree with the three-point path.
TEST(MPEG4Warp, AffinePerspectiveAgreesWithThreePoints) {
    kivvc::test::Rng rng(4);
    Sprite sp(96, 96, rng);
    for (int trial = 0; trial < 60; ++trial) {
        const int acc = rng.range(0, 3), W = 32, H = 32;
        // Scales that keep every position on the 1/s grid: no rounding ties.
        const std::vector<int> du = {rng.range(-8, 8), W * rng.range(-1, 1), 0, 0};
        const std::vector<int> dv = {rng.range(-8, 8), 0, H * rng.range(-1, 1), 0};
        Record three, four;
        const KiviRect sprite{0, 0, sp.w, sp.h}, vop{16, 16, W, H};
        ASSERT_EQ(init(three, du, dv, 3, 1, acc, 0, 0, 1, sprite, vop), kivStsOk);
        ASSERT_EQ(init(four, du, dv, 4, 1, acc, 0, 0, 1, sprite, vop), kivStsOk);
        for (const KiviRect b : {KiviRect{16, 16, 16, 16}, KiviRect{32, 40, 16, 8}}) {
            // Luma, then both chroma planes of the matching chroma block.
            std::vector<Kiv8u> out[2];
            const KiviRect c{b.x / 2, b.y / 2, b.width / 2, b.height / 2};
            for (int k = 0; k < 2; ++k) {
                out[k].assign(3 * 256, 0);
                Kiv8u* o = out[k].data();
                const KiviWarpSpec_MPEG4* spec = k ? four.spec() : three.spec();
                ASSERT_EQ(kiviWarpLuma_MPEG4_8u_C1R(sp.px.data(), sp.w, o, 16, &b, spec), kivStsOk);
                ASSERT_EQ(kiviWarpChroma_MPEG4_8u_P2R(sp.px.data(), sp.w, sp.px.data() + 1, sp.w, o + 256, 8, o + 512,
                                                      8, &c, spec),
                          kivStsOk);
            }
            ASSERT_EQ(out[0], out[1]) << "trial " << trial;
        }
    }
}

// One point, chroma: the luma translation halved on the 1/s grid (up for
// static sprites, to the odd neighbour for GMC), through the 8x8 half-sample
// copy inside and bilinear sampling elsewhere; Cb and Cr alike.
TEST(MPEG4Warp, OnePointChromaFollowsTheHalvedTranslation) {
    kivvc::test::Rng rng(6);
    Sprite cb(40, 40, rng), cr(40, 40, rng);
    for (int trial = 0; trial < 200; ++trial) {
        const int type = rng.range(0, 1), acc = rng.range(0, 3), rounding = rng.range(0, 1);
        const int du = rng.range(-15, 15), dv = rng.range(-15, 15);
        Record r;
        ASSERT_EQ(init(r, {du}, {dv}, 1, type, acc, rounding, 0, 2, KiviRect{0, 0, 80, 80}, KiviRect{0, 0, 80, 80}),
                  kivStsOk);
        auto halve = [&](int luma_half_samples) {  // chroma position in 1/16 units
            const int v = luma_half_samples << acc;  // 1/s units
            const int c = type == 1 ? (v + 1) >> 1 : (v >> 1) | (v & 1);
            return c * (1 << (3 - acc));
        };
        const int X = halve(du), Y = halve(dv);
        const int rf = type == 1 ? 0 : rounding, t = 128 - (rf << (3 - acc));
        const KiviRect b{8 * rng.range(0, 4), 8 * rng.range(0, 4), 8, 8};
        Kiv8u ob[64], orr[64];
        ASSERT_EQ(kiviWarpChroma_MPEG4_8u_P2R(cb.px.data(), 40, cr.px.data(), 40, ob, 8, orr, 8, &b, r.spec()), kivStsOk);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const int sx = 16 * (b.x + x) + X, sy = 16 * (b.y + y) + Y;
                // On the half-sample grid inside the plane the half-sample copy applies.
                ASSERT_EQ(ob[y * 8 + x], sample(cb, sx, sy, t)) << "trial " << trial;
                ASSERT_EQ(orr[y * 8 + x], sample(cr, sx, sy, t)) << "trial " << trial;
            }
    }
}

TEST(MPEG4Warp, GlobalMotionRoundsHalvesAwayFromZeroAndIsLimited) {
    kivvc::test::Rng rng(5);
    KivMotionVector mv;
    Record r;
    // One point: the translation itself, limited by fcode.
    ASSERT_EQ(init(r, {7}, {-3}, 1, 0, 0, 0, 1, 1, KiviRect{0, 0, 64, 64}, KiviRect{0, 0, 64, 64}), kivStsOk);
    ASSERT_EQ(kiviCalcGlobalMV_MPEG4(0, 0, &mv, r.spec()), kivStsOk);
    EXPECT_EQ(mv.dx, 14);  // quarter-sample units
    EXPECT_EQ(mv.dy, -6);
    ASSERT_EQ(init(r, {900}, {-900}, 1, 0, 0, 0, 0, 1, KiviRect{0, 0, 64, 64}, KiviRect{0, 0, 64, 64}), kivStsOk);
    ASSERT_EQ(kiviCalcGlobalMV_MPEG4(0, 0, &mv, r.spec()), kivStsOk);
    EXPECT_EQ(mv.dx, 31);
    EXPECT_EQ(mv.dy, -32);
    // Zooms and rotations: the mean displacement, rounded half away from zero.
    int ties = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const int acc = rng.range(0, 3), q = rng.range(0, 1), W = 64;
        const int du0 = rng.range(-6, 6), dv0 = rng.range(-6, 6), du1 = rng.range(-12, 12), dv1 = rng.range(-12, 12);
        ASSERT_EQ(init(r, {du0, du1}, {dv0, dv1}, 2, 0, acc, 0, q, 7, KiviRect{0, 0, W, W}, KiviRect{0, 0, W, W}),
                  kivStsOk);
        const int mbx = 16 * rng.range(0, 3), mby = 16 * rng.range(0, 3);
        ASSERT_EQ(kiviCalcGlobalMV_MPEG4(mbx, mby, &mv, r.spec()), kivStsOk);
        // Sum of the warped displacements in 1/s units, as exact rationals.
        const int s = 2 << acc;
        double sx = 0, sy = 0;
        for (int rw = 0; rw < 16; ++rw)
            for (int c = 0; c < 16; ++c) {
                const int i = mbx + c, j = mby + rw;
                // Positions in 1/s units: F = i0/ (16/s) + floor((P i + Q j + round) / 2^(sigma + 3 - acc)).
                const long P = 16L * W + 8L * du1, Q = -8L * dv1, U = 8L * dv1, V = P;
                const long i0 = 8L * du0, j0 = 8L * dv0;
                const long shift = 1L << (6 + 3 - acc), round = 1L << (6 + 2 - acc);
                const double F = double(i0 >> (3 - acc)) + std::floor(double(P * i + Q * j + round) / shift);
                const double G = double(j0 >> (3 - acc)) + std::floor(double(U * i + V * j + round) / shift);
                sx += F - s * i;
                sy += G - s * j;
            }
        const double k = std::ldexp(1.0, acc + 8 - q);
        ties += std::fabs(std::fmod(sx / k, 1.0)) == 0.5 || std::fabs(std::fmod(sy / k, 1.0)) == 0.5;
        EXPECT_EQ(mv.dx, std::round(sx / k)) << "trial " << trial;
        EXPECT_EQ(mv.dy, std::round(sy / k)) << "trial " << trial;
    }
    EXPECT_GT(ties, 0) << "no exact halves were exercised";
}

TEST(MPEG4Warp, SpriteBrightness) {
    Kiv8u plane[3 * 5] = {0, 10, 100, 127, 128, 200, 255, 1, 2, 3, 50, 60, 70, 80, 90};
    Kiv8u copy[15];
    std::copy(plane, plane + 15, copy);
    EXPECT_EQ(kiviChangeSpriteBrightness_MPEG4_8u_C1IR(nullptr, 5, 5, 3, 10), kivStsNullPointer);
    EXPECT_EQ(kiviChangeSpriteBrightness_MPEG4_8u_C1IR(plane, 5, 5, 3, -113), kivStsOutOfRange);
    EXPECT_EQ(kiviChangeSpriteBrightness_MPEG4_8u_C1IR(plane, 5, 5, 3, 1649), kivStsOutOfRange);
    EXPECT_EQ(kiviChangeSpriteBrightness_MPEG4_8u_C1IR(plane, 5, 5, 3, 0), kivStsOk);
    EXPECT_TRUE(std::equal(plane, plane + 15, copy));
    EXPECT_EQ(kiviChangeSpriteBrightness_MPEG4_8u_C1IR(plane, 5, 4, 2, 100), kivStsOk);  // m = 2048
    EXPECT_EQ(plane[1], 20);
    EXPECT_EQ(plane[3], 254);
    EXPECT_EQ(plane[5], 255);
    EXPECT_EQ(plane[4], 128);  // outside the 4-wide region
    EXPECT_EQ(plane[10], 50);  // outside the 2-high region
    Kiv8u v[2] = {100, 100};  // the extreme changes: -112 % and +1648 %
    EXPECT_EQ(kiviChangeSpriteBrightness_MPEG4_8u_C1IR(v, 1, 1, 1, -112), kivStsOk);
    EXPECT_EQ(kiviChangeSpriteBrightness_MPEG4_8u_C1IR(v + 1, 1, 1, 1, 1648), kivStsOk);
    EXPECT_EQ(v[0], 0);
    EXPECT_EQ(v[1], 255);
}

}  // namespace
