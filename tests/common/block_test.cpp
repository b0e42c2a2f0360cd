// Block copy, average and add through the exported functions: the table
// order behind acc/rounding, the rounding rules, saturation and null checks.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "common/block_kernels.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using HpCopy = KivStatus (*)(const Kiv8u*, Kiv32s, Kiv8u*, Kiv32s, Kiv32s, Kiv32s);

// The half-sample prediction written straight from its definition.
int predict(const Kiv8u* s, int step, int x, int acc, int rounding) {
    const int r = rounding & 1;
    switch (acc & 3) {
        case 0: return s[x];
        case 1: return (s[x] + s[x + 1] + 1 - r) / 2;
        case 2: return (s[x] + s[x + step] + 1 - r) / 2;
        default: return (s[x] + s[x + 1] + s[x + step] + s[x + step + 1] + 2 - r) / 4;
    }
}

struct HpFunction {
    const char* name;
    HpCopy fn;
    int w, h;
    bool average;
};

const HpFunction kHpFunctions[] = {
    {"Copy8x4HP", kiviCopy8x4HP_8u_C1R, 8, 4, false},
    {"Copy8x8HP", kiviCopy8x8HP_8u_C1R, 8, 8, false},
    {"Copy16x8HP", kiviCopy16x8HP_8u_C1R, 16, 8, false},
    {"Copy16x16HP", kiviCopy16x16HP_8u_C1R, 16, 16, false},
    {"InterpolateAverage8x4", kiviInterpolateAverage8x4_8u_C1IR, 8, 4, true},
    {"InterpolateAverage8x8", kiviInterpolateAverage8x8_8u_C1IR, 8, 8, true},
    {"InterpolateAverage16x8", kiviInterpolateAverage16x8_8u_C1IR, 16, 8, true},
    {"InterpolateAverage16x16", kiviInterpolateAverage16x16_8u_C1IR, 16, 16, true},
};

TEST(BlockCopy, EveryPositionAndRoundingFollowsTheDefinition) {
    kivvc::test::Rng rng(7);
    constexpr int kStep = 40;
    std::vector<Kiv8u> src(kStep * 18), dst(kStep * 16), before;
    for (const auto& f : kHpFunctions) {
        // acc and rounding beyond their low bits must be ignored.
        for (int acc = 0; acc < 8; ++acc) {
            for (int rounding = 0; rounding < 4; ++rounding) {
                for (auto& v : src) v = static_cast<Kiv8u>(rng.next());
                for (auto& v : dst) v = static_cast<Kiv8u>(rng.next());
                before = dst;
                ASSERT_EQ(f.fn(src.data(), kStep, dst.data(), kStep, acc, rounding), kivStsOk);
                for (int y = 0; y < 16; ++y)
                    for (int x = 0; x < kStep; ++x) {
                        const std::size_t i = std::size_t(y) * kStep + x;
                        int want = before[i];
                        if (y < f.h && x < f.w) {
                            const int p = predict(&src[std::size_t(y) * kStep], kStep, x, acc, rounding);
                            want = f.average ? (before[i] + p + 1) / 2 : p;
                        }
                        ASSERT_EQ(dst[i], want) << f.name << " acc " << acc << " rounding " << rounding << " at "
                                                << x << "," << y;
                    }
            }
        }
    }
}

TEST(BlockCopy, RoundingExamples) {
    // HF over 0, 255, 0, 255...: 128 rounding up, 127 rounding down.
    std::array<Kiv8u, 9 * 9> src{};
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x) src[y * 9 + x] = (x & 1) ? 255 : 0;
    std::array<Kiv8u, 64> dst{};
    ASSERT_EQ(kiviCopy8x8HP_8u_C1R(src.data(), 9, dst.data(), 8, 1, 0), kivStsOk);
    for (Kiv8u v : dst) EXPECT_EQ(v, 128);
    ASSERT_EQ(kiviCopy8x8HP_8u_C1R(src.data(), 9, dst.data(), 8, 5, 1), kivStsOk);  // acc 5 acts as HF
    for (Kiv8u v : dst) EXPECT_EQ(v, 127);

    // HH over 1,1 / 1,2: sum 5 gives 1 both ways; over 1,2 / 2,2: sum 7 gives 2 both ways.
    const Kiv8u a[] = {1, 1, 1, 2}, b[] = {1, 2, 2, 2};
    std::array<Kiv8u, 9 * 9> hh{};
    for (const auto* quad : {a, b}) {
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 9; ++x) hh[y * 9 + x] = quad[(y & 1) * 2 + (x & 1)];
        for (int r = 0; r < 2; ++r) {
            ASSERT_EQ(kiviCopy8x8HP_8u_C1R(hh.data(), 9, dst.data(), 8, 3, r), kivStsOk);
            EXPECT_EQ(dst[0], quad == a ? 1 : 2) << "rounding " << r;
        }
    }
}

TEST(BlockCopy, AveragesAndAddsSaturate) {
    std::array<Kiv8u, 256> one{}, zero{}, out{};
    one.fill(1);
    ASSERT_EQ(kiviAverage8x8_8u_C1IR(zero.data(), 8, one.data(), 8), kivStsOk);
    EXPECT_EQ(one[0], 1);  // (0 + 1 + 1) >> 1
    one.fill(255);
    ASSERT_EQ(kiviAverage16x16_8u_C1R(one.data(), 16, zero.data(), 16, out.data(), 16), kivStsOk);
    EXPECT_EQ(out[255], 128);

    std::array<Kiv8u, 64> px{};
    px.fill(100);
    ASSERT_EQ(kiviAddC8x8_16s8u_C1IR(-300, px.data(), 8), kivStsOk);
    for (Kiv8u v : px) EXPECT_EQ(v, 0);
    ASSERT_EQ(kiviAddC8x8_16s8u_C1IR(300, px.data(), 8), kivStsOk);
    for (Kiv8u v : px) EXPECT_EQ(v, 255);

    // Residual rows use their own byte step; extreme residuals saturate.
    std::array<Kiv16s, 8 * 12> res{};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) res[y * 12 + x] = static_cast<Kiv16s>((x + y) & 1 ? 2047 : -2048);
    px.fill(77);
    ASSERT_EQ(kiviAdd8x8_16s8u_C1IRS(res.data(), 24, px.data(), 8), kivStsOk);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(px[i], ((i / 8 + i % 8) & 1) ? 255 : 0);

    // Prediction plus residual at HH with rounding down.
    std::array<Kiv8u, 9 * 9> ref{};
    for (int i = 0; i < 81; ++i) ref[i] = static_cast<Kiv8u>(i);
    std::array<Kiv16s, 64> small{};
    small.fill(-1);
    ASSERT_EQ(kiviAdd8x8HP_16s8u_C1RS(small.data(), 16, ref.data(), 9, px.data(), 8, 3, 1), kivStsOk);
    EXPECT_EQ(px[0], ((0 + 1 + 9 + 10 + 1) >> 2) - 1);
}

TEST(BlockCopy, NullPointersAreRefusedInOrder) {
    Kiv8u buf[17 * 17] = {};
    Kiv16s res[64] = {};
    EXPECT_EQ(kiviCopy8x8_8u_C1R(nullptr, 8, buf, 8), kivStsNullPointer);
    EXPECT_EQ(kiviCopy16x16_8u_C1R(buf, 16, nullptr, 16), kivStsNullPointer);
    EXPECT_EQ(kiviCopy16x16HP_8u_C1R(nullptr, 17, buf, 16, 3, 0), kivStsNullPointer);
    EXPECT_EQ(kiviAverage8x8_8u_C1IR(nullptr, 8, buf, 8), kivStsNullPointer);
    EXPECT_EQ(kiviAverage8x8_8u_C1R(buf, 8, nullptr, 8, buf, 8), kivStsNullPointer);
    EXPECT_EQ(kiviInterpolateAverage8x4_8u_C1IR(buf, 8, nullptr, 8, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviAdd8x8_16s8u_C1IRS(res, 16, nullptr, 8), kivStsNullPointer);
    EXPECT_EQ(kiviAdd8x8HP_16s8u_C1RS(res, 16, nullptr, 9, buf, 8, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviAddC8x8_16s8u_C1IR(5, nullptr, 8), kivStsNullPointer);
}

TEST(BlockCopy, VerticalFirstTablesTakeTheVerticalFlagInBitZero) {
    const auto& t = kivvc::block::table();
    const kivvc::block::CopyFn* tables[] = {t.copy4x4_vertical_first, t.copy8x4_vertical_first,
                                            t.copy8x8_vertical_first, t.copy16x16_vertical_first};
    const int sizes[][2] = {{4, 4}, {8, 4}, {8, 8}, {16, 16}};
    Kiv8u src[17 * 17], dst[16 * 16];
    for (int i = 0; i < 17 * 17; ++i) src[i] = static_cast<Kiv8u>(i * 37 + (i >> 3));
    for (int k = 0; k < 4; ++k)
        for (int index = 0; index < 8; ++index) {
            const int vertical = (index >> 1) & 1, horizontal = (index >> 2) & 1, rounding = index & 1;
            tables[k][index](src, 17, dst, 16);
            for (int y = 0; y < sizes[k][1]; ++y)
                for (int x = 0; x < sizes[k][0]; ++x)
                    ASSERT_EQ(dst[y * 16 + x], predict(src + y * 17, 17, x, horizontal | vertical << 1, rounding))
                        << "size " << k << " index " << index;
        }
}

}  // namespace
