// Weighted prediction against its unidirectional and bidirectional
// equations written out per sample (negative weights and offsets, logWD 0, clamping at both ends, bit
// depths 9 to 14), the implicit and averaging forms, and the check orders.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

constexpr int kStep = 24;

template <class T>
std::vector<T> random_block(Rng& rng, int maxv) {
    std::vector<T> v(kStep * 16);
    for (auto& s : v) s = static_cast<T>(rng.chance(4) ? (rng.chance(2) ? 0 : maxv) : rng.range(0, maxv));
    return v;
}

int uni_equation(int s, int logWD, int w, int o, int maxv) {
    const int v = logWD >= 1 ? ((s * w + (1 << (logWD - 1))) >> logWD) + o : s * w + o;
    return std::clamp(v, 0, maxv);
}
int bi_equation(int s1, int s2, int logWD, int w1, int o1, int w2, int o2, int maxv) {
    return std::clamp(((s1 * w1 + s2 * w2 + (1 << logWD)) >> (logWD + 1)) + ((o1 + o2 + 1) >> 1), 0, maxv);
}

// Inside the w x h block, got[i] is want(i); outside, it is still before[i].
template <class T, class Want>
testing::AssertionResult block_is(const std::vector<T>& got, const std::vector<T>& before, int w, int h, Want want) {
    for (int i = 0; i < kStep * 16; ++i) {
        const int expected = i / kStep < h && i % kStep < w ? want(i) : before[i];
        if (got[i] != expected)
            return testing::AssertionFailure() << "sample " << i % kStep << "," << i / kStep << " is " << int(got[i])
                                               << ", not " << expected;
    }
    return testing::AssertionSuccess();
}

template <class T>
void check_depth(Rng& rng, int depth) {
    const int maxv = (1 << depth) - 1;
    const std::vector<T> sevens(kStep * 16, 7);
    for (int w : {2, 4, 8, 16})
        for (int h : {2, 4, 8, 16}) {
            SCOPED_TRACE(testing::Message() << "depth " << depth << " " << w << "x" << h);
            for (int logWD = 0; logWD <= 7; ++logWD) {
                const int weight = rng.range(-128, 127), offset = rng.range(-128, 127) << (depth - 8);
                auto block = random_block<T>(rng, maxv);
                const auto before = block;
                if constexpr (sizeof(T) == 1)
                    ASSERT_EQ(kiviUniDirWeightBlock_H264_8u_C1IR(block.data(), kStep, logWD, weight, offset, {w, h}), kivStsOk);
                else
                    ASSERT_EQ(kiviUnidirWeight_H264_16u_IP2P1R(block.data(), kStep, logWD, weight, offset, {w, h}, depth), kivStsOk);
                ASSERT_TRUE(block_is(block, before, w, h, [&](int i) { return uni_equation(before[i], logWD, weight, offset, maxv); }))
                    << "logWD " << logWD << " w " << weight << " o " << offset;
            }
            const int logWD = rng.range(0, 7), w1 = rng.range(-128, 127), w2 = rng.range(-128, 127);
            const int o1 = rng.range(-128, 127), o2 = rng.range(-128, 127);
            const int i1 = rng.range(-64, 128), i2 = 64 - i1;
            const auto a = random_block<T>(rng, maxv), b = random_block<T>(rng, maxv);
            auto e = sevens, im = sevens, third = sevens;
            const auto impl = [&](int i) { return bi_equation(a[i], b[i], 5, i1, 0, i2, 0, maxv); };
            if constexpr (sizeof(T) == 1) {
                auto wa = b;
                ASSERT_EQ(kiviBiDirWeightBlock_H264_8u_P2P1R(a.data(), b.data(), e.data(), kStep, kStep, logWD, w1, o1, w2, o2, w, h), kivStsOk);
                ASSERT_EQ(kiviBiDirWeightBlockImplicit_H264_8u_P2P1R(a.data(), b.data(), im.data(), kStep, kStep, i1, i2, w, h), kivStsOk);
                ASSERT_EQ(kiviBiDirWeightBlockImplicit_H264_8u_P3P1R(a.data(), b.data(), third.data(), kStep, kStep, kStep, i1, i2, w, h), kivStsOk);
                ASSERT_EQ(kiviWeightedAverage_H264_8u_C1IR(a.data(), wa.data(), kStep, w1, w2, logWD + 1, o1, w, h), kivStsOk);
                ASSERT_TRUE(block_is(third, sevens, w, h, impl));
                // The weighted average with offsets o1 = o2 is the explicit form.
                ASSERT_TRUE(block_is(wa, b, w, h, [&](int i) { return bi_equation(a[i], b[i], logWD, w1, o1, w2, o1, 255); }));
            } else {
                KivBidir_16u r{a.data(), kStep, b.data(), kStep, e.data(), kStep, w, h, depth};
                ASSERT_EQ(kiviBidirWeight_H264_16u_P2P1R(&r, logWD, w1, o1, w2, o2), kivStsOk);
                r.pDst = im.data();
                ASSERT_EQ(kiviBidirWeightImplicit_H264_16u_P2P1R(&r, i1, i2), kivStsOk);
                r.pDst = third.data();
                r.width = w - 1 + (w == 2);  // odd widths are accepted by the plain average
                ASSERT_EQ(kiviBidir_H264_16u_P2P1R(&r), kivStsOk);
                ASSERT_TRUE(block_is(third, sevens, r.width, h, [&](int i) { return (a[i] + b[i] + 1) >> 1; }));
            }
            ASSERT_TRUE(block_is(e, sevens, w, h, [&](int i) { return bi_equation(a[i], b[i], logWD, w1, o1, w2, o2, maxv); }));
            ASSERT_TRUE(block_is(im, sevens, w, h, impl));
        }
}

TEST(H264Weight, EveryFormFollowsItsEquationAtEveryDepthAndSize) {
    Rng rng(91);
    check_depth<Kiv8u>(rng, 8);
    for (int depth = 9; depth <= 14; ++depth) check_depth<Kiv16u>(rng, depth);
}

TEST(H264Weight, ImplicitP3P1RAcceptsAnySize) {
    Rng rng(111);
    const auto a = random_block<Kiv8u>(rng, 255), b = random_block<Kiv8u>(rng, 255);
    const std::vector<Kiv8u> sevens(kStep * 16, 7);
    auto d = sevens;
    const auto want = [&](int i) { return bi_equation(a[i], b[i], 5, 40, 0, 24, 0, 255); };
    ASSERT_EQ(kiviBiDirWeightBlockImplicit_H264_8u_P3P1R(a.data(), b.data(), d.data(), kStep, kStep, kStep, 40, 24, 21, 3), kivStsOk);
    ASSERT_TRUE(block_is(d, sevens, 21, 3, want));
    // Empty blocks write nothing.
    ASSERT_EQ(kiviBiDirWeightBlockImplicit_H264_8u_P3P1R(a.data(), b.data(), d.data(), 4, 4, 4, 32, 32, 0, 5), kivStsOk);
    ASSERT_EQ(kiviBiDirWeightBlockImplicit_H264_8u_P3P1R(a.data(), b.data(), d.data(), 4, 4, 4, 32, 32, 5, -1), kivStsOk);
    ASSERT_TRUE(block_is(d, sevens, 21, 3, want));
}

TEST(H264Weight, StatusesInCheckOrder) {
    Kiv8u b[16 * 16] = {};
    Kiv16u s[16 * 16] = {};
    EXPECT_EQ(kiviUniDirWeightBlock_H264_8u_C1R(nullptr, 1, 0, 1, 0, {3, 3}), kivStsNullPointer);
    EXPECT_EQ(kiviUniDirWeightBlock_H264_8u_C1R(b, 7, 0, 1, 0, {8, 3}), kivStsBadStep);
    EXPECT_EQ(kiviUniDirWeightBlock_H264_8u_C1R(b, 16, 0, 1, 0, {8, 3}), kivStsBadSize);
    EXPECT_EQ(kiviUniDirWeightBlock_H264_8u_C1IR(b, 16, 0, 1, 0, {1, 2}), kivStsBadSize);
    EXPECT_EQ(kiviUnidirWeight_H264_16u_IP2P1R(s, 3, 0, 1, 0, {4, 2}, 10), kivStsBadStep);
    EXPECT_EQ(kiviBiDirWeightBlock_H264_8u_P2P1R(b, b, nullptr, 1, 1, 0, 1, 0, 1, 0, 3, 3), kivStsNullPointer);
    EXPECT_EQ(kiviBiDirWeightBlock_H264_8u_P2P1R(b, b, b, 16, 8, 0, 1, 0, 1, 0, 16, 3), kivStsBadStep);
    EXPECT_EQ(kiviBiDirWeightBlock_H264_8u_P3P1R(b, b, b, 16, 16, 16, 0, 1, 0, 1, 0, 8, 32), kivStsBadSize);
    EXPECT_EQ(kiviBiDirWeightBlockImplicit_H264_8u_P2P1R(b, b, b, 16, 16, 32, 32, 4, 3), kivStsBadSize);
    EXPECT_EQ(kiviBiDirWeightBlockImplicit_H264_8u_P3P1R(nullptr, b, b, 1, 1, 1, 32, 32, 4, 3), kivStsNullPointer);
    KivBidir_16u r{s, 4, s, 2, nullptr, 1, 4, 3, 10};
    EXPECT_EQ(kiviBidirWeight_H264_16u_P2P1R(nullptr, 0, 1, 0, 1, 0), kivStsNullPointer);
    EXPECT_EQ(kiviBidirWeight_H264_16u_P2P1R(&r, 0, 1, 0, 1, 0), kivStsNullPointer);
    r.pDst = s;
    EXPECT_EQ(kiviBidirWeightImplicit_H264_16u_P2P1R(&r, 32, 32), kivStsBadStep);
    r.src2Step = 4;
    EXPECT_EQ(kiviBidirWeight_H264_16u_P2P1R(&r, 0, 1, 0, 1, 0), kivStsBadStep);
    r.dstStep = 4;
    EXPECT_EQ(kiviBidirWeight_H264_16u_P2P1R(&r, 0, 1, 0, 1, 0), kivStsBadSize);
    EXPECT_EQ(kiviBidir_H264_16u_P2P1R(&r), kivStsOk);  // 4x3: odd sizes allowed
    r.width = 17;
    EXPECT_EQ(kiviBidir_H264_16u_P2P1R(&r), kivStsBadSize);
    EXPECT_EQ(kiviWeightedAverage_H264_8u_C1IR(b, nullptr, 16, 1, 1, 1, 0, 4, 4), kivStsNullPointer);
    EXPECT_EQ(kiviWeightedAverage_H264_8u_C1IR(b, b, 3, 1, 1, 1, 0, 4, 4), kivStsBadStep);
    EXPECT_EQ(kiviWeightedAverage_H264_8u_C1IR(b, b, 16, 1, 1, 1, 0, 4, 6), kivStsBadSize);
}

}  // namespace
