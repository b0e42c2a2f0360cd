// Transposed inverse DCTs: accuracy against a floating-point transform, the
// count paths, interleaved outputs and argument checks.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

// out[r][n] = 1/4 sum C(k) C(c) S[k][c] cos((2n+1) k pi/16) cos((2r+1) c pi/16):
// k is the horizontal frequency (array row), c the vertical one.
void reference_idct(const Kiv16s* s, double (&out)[64]) {
    const double pi = 3.14159265358979323846;
    for (int r = 0; r < 8; ++r)
        for (int n = 0; n < 8; ++n) {
            double sum = 0;
            for (int k = 0; k < 8; ++k)
                for (int c = 0; c < 8; ++c)
                    sum += (k ? 1 : std::sqrt(0.5)) * (c ? 1 : std::sqrt(0.5)) * s[8 * k + c] *
                           std::cos((2 * n + 1) * k * pi / 16) * std::cos((2 * r + 1) * c * pi / 16);
            out[8 * r + n] = sum / 4;
        }
}

TEST(Mpeg2Idct, FullTransformIsAccurateAndTransposed) {
    Rng rng(5);
    for (int round = 0; round < 300; ++round) {
        Kiv16s s[64] = {};
        const int n = rng.range(1, 64);
        for (int i = 0; i < n; ++i) s[rng.range(0, 63)] = Kiv16s(rng.range(-300, 300));
        double ref[64];
        reference_idct(s, ref);
        Kiv16s out16[64];
        Kiv8u out8[64];
        ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s_C1R(s, out16, 16, 64), kivStsOk);
        ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, out8, 8, 64), kivStsOk);
        for (int i = 0; i < 64; ++i) {
            const double v16 = std::fmax(-256, std::fmin(255, ref[i]));
            const double v8 = std::fmax(0, std::fmin(255, ref[i]));
            ASSERT_LE(std::fabs(out16[i] - v16), 1.0) << "round " << round << " at " << i;
            ASSERT_LE(std::fabs(out8[i] - v8), 1.0) << "round " << round << " at " << i;
        }
    }
}

TEST(Mpeg2Idct, CountPaths) {
    Kiv16s s[64] = {};
    s[0] = 100;
    Kiv16s o16[64];
    Kiv8u o8[64];
    // DC only truncates (12), the full arithmetic rounds (13).
    kiviDCT8x8Inv_AANTransposed_16s_C1R(s, o16, 16, 0);
    kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, o8, 8, 0);
    for (int i = 0; i < 64; ++i) EXPECT_TRUE(o16[i] == 12 && o8[i] == 12);
    kiviDCT8x8Inv_AANTransposed_16s_C1R(s, o16, 16, 1);
    kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, o8, 8, 1);
    for (int i = 0; i < 64; ++i) EXPECT_TRUE(o16[i] == 13 && o8[i] == 13);
    // Negative count: zero for 16-bit outputs, DC only for 8-bit ones.
    kiviDCT8x8Inv_AANTransposed_16s_C1R(s, o16, 16, -1);
    kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, o8, 8, -1);
    for (int i = 0; i < 64; ++i) EXPECT_TRUE(o16[i] == 0 && o8[i] == 12);
    // DC only limits: -2000 / 8 = -250 (16-bit), 0 (8-bit); 4000 / 8 -> 255.
    s[0] = -2001;
    kiviDCT8x8Inv_AANTransposed_16s_C1R(s, o16, 16, 0);
    kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, o8, 8, 0);
    EXPECT_EQ(o16[9], -250);
    EXPECT_EQ(o8[9], 0);
    s[0] = 4000;
    kiviDCT8x8Inv_AANTransposed_16s_C1R(s, o16, 16, 0);
    EXPECT_EQ(o16[63], 255);

    // The reduced path reads only the top-left quadrant and equals the full one.
    Rng rng(11);
    for (int round = 0; round < 200; ++round) {
        Kiv16s q[64];
        for (auto& v : q) v = Kiv16s(rng.range(-32768, 32767));  // outside the quadrant: ignored
        Kiv16s quad[64] = {};
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) quad[8 * r + c] = q[8 * r + c] = Kiv16s(rng.range(-2048, 2047));
        Kiv16s a[64], b[64];
        Kiv8u a8[64], b8[64];
        kiviDCT8x8Inv_AANTransposed_16s_C1R(q, a, 16, rng.range(1, 9));
        kiviDCT8x8Inv_AANTransposed_16s_C1R(quad, b, 16, 64);
        kiviDCT8x8Inv_AANTransposed_16s8u_C1R(q, a8, 8, rng.range(1, 9));
        kiviDCT8x8Inv_AANTransposed_16s8u_C1R(quad, b8, 8, 10);
        ASSERT_EQ(std::memcmp(a, b, sizeof a), 0);
        ASSERT_EQ(std::memcmp(a8, b8, sizeof a8), 0);
    }
}

TEST(Mpeg2Idct, InterleavedOutputsAreTwoPlainTransforms) {
    Rng rng(3);
    const int counts[] = {-1, 0, 5, 9, 10, 64};
    for (int round = 0; round < 100; ++round) {
        Kiv16s u[64], v[64];
        for (int i = 0; i < 64; ++i) {
            u[i] = Kiv16s(rng.range(-600, 600));
            v[i] = Kiv16s(rng.range(-600, 600));
        }
        const int cu = counts[rng.range(0, 5)], cv = counts[rng.range(0, 5)];
        Kiv16s pu[64], pv[64], uv[8 * 20];
        Kiv8u pu8[64], pv8[64], uv8[8 * 20];
        kiviDCT8x8Inv_AANTransposed_16s_C1R(u, pu, 16, cu);
        kiviDCT8x8Inv_AANTransposed_16s_C1R(v, pv, 16, cv);
        kiviDCT8x8Inv_AANTransposed_16s8u_C1R(u, pu8, 8, cu);
        kiviDCT8x8Inv_AANTransposed_16s8u_C1R(v, pv8, 8, cv);
        ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s_P2C2R(u, v, uv, 40, cu, cv), kivStsOk);
        ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_P2C2R(u, v, uv8, 20, cu, cv), kivStsOk);
        for (int r = 0; r < 8; ++r)
            for (int c = 0; c < 8; ++c) {
                ASSERT_EQ(uv[20 * r + 2 * c], pu[8 * r + c]);
                ASSERT_EQ(uv[20 * r + 2 * c + 1], pv[8 * r + c]);
                ASSERT_EQ(uv8[20 * r + 2 * c], pu8[8 * r + c]);
                ASSERT_EQ(uv8[20 * r + 2 * c + 1], pv8[8 * r + c]);
            }
    }
}

TEST(Mpeg2Idct, ArgumentChecks) {
    Kiv16s s[64] = {}, d[128];
    Kiv8u d8[128];
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_C1R(s, d, 0, 64), kivStsBadStep);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_C1R(nullptr, d, 0, 64), kivStsNullPointer);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, nullptr, 8, 64), kivStsNullPointer);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, d8, -8, 64), kivStsBadStep);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_P2C2R(s, nullptr, d, 32, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_P2C2R(s, s, d, 0, 0, 0), kivStsBadStep);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_P2C2R(s, s, nullptr, 16, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_P2C2R(s, s, d8, 0, 0, 0), kivStsBadStep);
}

}  // namespace
