// The inverse 2-4-8 DCT against its defining formula evaluated in double
// precision, over sparse, dense and extreme (saturating) coefficients.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

// Sample (line y, column x) of the inverse transform of X, exactly.
double exact_sample(const Kiv16s* X, int y, int x) {
    const double pi = std::acos(-1.0);
    const int z = y / 2;
    const double sign = (y % 2 == 0) ? 1.0 : -1.0;
    double s = 0;
    for (int v = 0; v < 4; ++v)
        for (int h = 0; h < 8; ++h) {
            const double cv = v == 0 ? std::sqrt(0.5) : 1.0, ch = h == 0 ? std::sqrt(0.5) : 1.0;
            s += cv * ch / 4 * (X[v * 8 + h] + sign * X[(v + 4) * 8 + h]) * std::cos(pi * v * (2 * z + 1) / 8) *
                 std::cos(pi * h * (2 * x + 1) / 16);
        }
    return s;
}

TEST(Dct2x4x8Inv, WithinOneOfTheFormula) {
    kivvc::test::Rng rng(248);
    for (int run = 0; run < 3000; ++run) {
        // Sparse low-amplitude blocks, dense ones, and the 16-bit extremes.
        const int kind = run % 3;
        Kiv16s block[64], in[64];
        for (int i = 0; i < 64; ++i) {
            int v;
            if (kind == 0) v = rng.chance(4) ? rng.range(-256, 255) : 0;
            else if (kind == 1) v = rng.range(-2048, 2047);
            else v = rng.chance(2) ? -32768 : 32767;
            block[i] = in[i] = static_cast<Kiv16s>(v);
        }
        ASSERT_EQ(kiviDCT2x4x8Inv_16s_C1I(block), kivStsOk);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const double want = std::clamp(exact_sample(in, y, x), -32768.0, 32767.0);
                ASSERT_LE(std::fabs(block[y * 8 + x] - want), 1.0) << "run " << run << " at " << y << "," << x;
            }
    }
    EXPECT_EQ(kiviDCT2x4x8Inv_16s_C1I(nullptr), kivStsNullPointer);
}

}  // namespace
