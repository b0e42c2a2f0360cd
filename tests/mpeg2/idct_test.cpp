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

// Both plain outputs of one block.
void idct(const Kiv16s* s, int count, Kiv16s* o16, Kiv8u* o8) {
    ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s_C1R(s, o16, 16, count), kivStsOk);
    ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, o8, 8, count), kivStsOk);
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
        idct(s, 64, out16, out8);
        for (int i = 0; i < 64; ++i) {
            ASSERT_LE(std::fabs(out16[i] - std::fmax(-256, std::fmin(255, ref[i]))), 1.0) << round << " at " << i;
            ASSERT_LE(std::fabs(out8[i] - std::fmax(0, std::fmin(255, ref[i]))), 1.0) << round << " at " << i;
        }
    }
}

TEST(Mpeg2Idct, CountPaths) {
    // (DC, count, 16-bit and 8-bit results everywhere): DC only truncates, the
    // full arithmetic rounds; a negative count zeroes 16-bit outputs and takes
    // the DC path for 8-bit ones; the DC path limits.
    const int rows[][4] = {{100, 0, 12, 12},    {100, 1, 13, 13}, {100, -1, 0, 12},
                           {-2001, 0, -250, 0}, {4000, 0, 255, 255}};
    for (const auto& r : rows) {
        Kiv16s s[64] = {}, o16[64];
        Kiv8u o8[64];
        s[0] = Kiv16s(r[0]);
        idct(s, r[1], o16, o8);
        for (int i = 0; i < 64; ++i) ASSERT_TRUE(o16[i] == r[2] && o8[i] == r[3]) << r[0] << " count " << r[1];
    }
    // The reduced path reads only the top-left quadrant and equals the full one.
    Rng rng(11);
    for (int round = 0; round < 200; ++round) {
        Kiv16s q[64], quad[64] = {}, a[64], b[64];
        for (auto& v : q) v = Kiv16s(rng.range(-32768, 32767));  // outside the quadrant: ignored
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) quad[8 * r + c] = q[8 * r + c] = Kiv16s(rng.range(-2048, 2047));
        Kiv8u a8[64], b8[64];
        idct(q, rng.range(1, 9), a, a8);
        idct(quad, rng.chance(2) ? 64 : 10, b, b8);
        ASSERT_EQ(std::memcmp(a, b, sizeof a), 0);
        ASSERT_EQ(std::memcmp(a8, b8, sizeof a8), 0);
    }
}

TEST(Mpeg2Idct, InterleavedOutputsAreTwoPlainTransforms) {
    Rng rng(3);
    const int counts[] = {-1, 0, 5, 9, 10, 64};
    for (int round = 0; round < 100; ++round) {
        Kiv16s u[64], v[64];
        for (int i = 0; i < 64; ++i) u[i] = Kiv16s(rng.range(-600, 600)), v[i] = Kiv16s(rng.range(-600, 600));
        const int cu = counts[rng.range(0, 5)], cv = counts[rng.range(0, 5)];
        Kiv16s pu[64], pv[64], uv[8 * 20];
        Kiv8u pu8[64], pv8[64], uv8[8 * 20];
        idct(u, cu, pu, pu8);
        idct(v, cv, pv, pv8);
        ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s_P2C2R(u, v, uv, 40, cu, cv), kivStsOk);
        ASSERT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_P2C2R(u, v, uv8, 20, cu, cv), kivStsOk);
        for (int r = 0; r < 8; ++r)
            for (int c = 0; c < 8; ++c) {
                const int i = 8 * r + c, k = 20 * r + 2 * c;
                ASSERT_TRUE(uv[k] == pu[i] && uv[k + 1] == pv[i] && uv8[k] == pu8[i] && uv8[k + 1] == pv8[i]) << i;
            }
    }
}

TEST(Mpeg2Idct, ArgumentChecks) {
    Kiv16s s[64] = {}, d[128];
    Kiv8u d8[128];
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_C1R(s, d, 0, 64), kivStsBadStep);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_C1R(nullptr, d, 0, 64), kivStsNullPointer);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_C1R(s, d8, -8, 64), kivStsBadStep);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_P2C2R(s, nullptr, d, 32, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s_P2C2R(s, s, d, 0, 0, 0), kivStsBadStep);
    EXPECT_EQ(kiviDCT8x8Inv_AANTransposed_16s8u_P2C2R(s, s, d8, 0, 0, 0), kivStsBadStep);
}

}  // namespace
