// DV inverse quantisers and the 2-4-8 to 4x4 reduction through the exported
// functions, against their formulas in 64-bit arithmetic (wrap and sign of
// the shifts included), on random and extreme values.
#include <gtest/gtest.h>

#include <cstdint>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

Kiv16s low16(std::int64_t v) { return static_cast<Kiv16s>(static_cast<std::uint16_t>(v & 0xFFFF)); }
std::int64_t floor_shift(std::int64_t v, int s) { return v >= 0 ? v >> s : -((-v + (std::int64_t{1} << s) - 1) >> s); }

void fill(Rng& rng, Kiv16s* v, int run) {
    for (int i = 0; i < 64; ++i)
        v[i] = static_cast<Kiv16s>(run % 3 == 0 ? (rng.chance(2) ? -32768 : 32767) : rng.range(-32768, 32767));
}

TEST(DvQuant, FormulasOnRandomAndExtremeValues) {
    Rng rng(31);
    for (int run = 0; run < 2000; ++run) {
        Kiv16s c[64], a[64], b[64], out[64];
        fill(rng, c, run);
        fill(rng, a, run + 1);
        fill(rng, b, run + 2);
        const Kiv16s step = static_cast<Kiv16s>(rng.range(-32768, 32767));

        std::copy(c, c + 64, out);
        ASSERT_EQ(kiviQuantInv_DV_16s_C1I(out, a), kivStsOk);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(out[i], low16(floor_shift(std::int64_t{c[i]} * a[i], 16) * 4)) << i;

        std::copy(c, c + 64, out);
        ASSERT_EQ(kiviQuantWeightBlockInv_DV_16s_C1I(out, a, b), kivStsOk);
        for (int i = 0; i < 64; ++i) {
            const std::int64_t product = floor_shift(c[i], 3) * a[i] * b[i];
            const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(product & 0xFFFFFFFF));
            ASSERT_EQ(out[i], low16(floor_shift(wrapped, 16))) << i;
        }

        std::copy(c, c + 64, out);
        ASSERT_EQ(kiviQuantWeightBlockInv_DV100_16s_C1I(out, a, step), kivStsOk);
        ASSERT_EQ(out[0], low16(floor_shift(std::int64_t{c[0]} * a[0], 16)));
        for (int i = 1; i < 64; ++i) ASSERT_EQ(out[i], low16(floor_shift(std::int64_t{c[i]} * a[i], 16) * step)) << i;
    }
    Kiv16s block[64] = {};
    EXPECT_EQ(kiviQuantInv_DV_16s_C1I(block, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantWeightBlockInv_DV_16s_C1I(block, block, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantWeightBlockInv_DV100_16s_C1I(nullptr, block, 1), kivStsNullPointer);
}

TEST(DvReduce, MeansOfTheInverse248Truncated) {
    Rng rng(32);
    for (int run = 0; run < 500; ++run) {
        Kiv16s block[64], samples[64];
        for (int i = 0; i < 64; ++i) block[i] = samples[i] = static_cast<Kiv16s>(rng.range(-600, 600));
        ASSERT_EQ(kiviDCT2x4x8Inv_16s_C1I(samples), kivStsOk);
        ASSERT_EQ(kiviDCT8x4x2To4x4Inv_DV_16s_C1I(block), kivStsOk);
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) {
                const int sum = samples[16 * r + 2 * c] + samples[16 * r + 2 * c + 1] + samples[16 * r + 8 + 2 * c] +
                                samples[16 * r + 8 + 2 * c + 1];
                ASSERT_EQ(block[4 * r + c], sum / 4) << r << "," << c;  // C++ division truncates toward zero
            }
    }
    EXPECT_EQ(kiviDCT8x4x2To4x4Inv_DV_16s_C1I(nullptr), kivStsNullPointer);
}

}  // namespace
