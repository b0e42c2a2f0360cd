// Block copy, average and add through the exported functions: the table
// order behind acc/rounding, the rounding rules, saturation and null checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "common/block_kernels.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

constexpr int kStep = 40;  // bytes per row of every block; residual rows hold 40 elements

// The half-sample prediction written straight from its definition.
int predict(const Kiv8u* s, int x, int acc, int rounding) {
    const int r = rounding & 1;
    switch (acc & 3) {
        case 0: return s[x];
        case 1: return (s[x] + s[x + 1] + 1 - r) / 2;
        case 2: return (s[x] + s[x + kStep] + 1 - r) / 2;
        default: return (s[x] + s[x + 1] + s[x + kStep] + s[x + kStep + 1] + 2 - r) / 4;
    }
}

// The residual sums: formed in 16 bits (wrapping), then saturated.
int add_saturate(int p, int residual) { return std::clamp(int(Kiv16s(p + residual)), 0, 255); }

// One exported function: `call` runs it with source s, residuals res and
// destination d; `want` gives sample x of a row from the source row, the
// residual row and the destination's former value.
struct BlockFunction {
    const char* name;
    int w, h;
    KivStatus (*call)(const Kiv8u* s, const Kiv16s* res, Kiv8u* d, int acc, int rounding);
    int (*want)(const Kiv8u* s, const Kiv16s* res, int before, int x, int acc, int rounding);
};

// Callers and models of the rows below.
template <auto F>
KivStatus hp(const Kiv8u* s, const Kiv16s*, Kiv8u* d, int acc, int r) { return F(s, kStep, d, kStep, acc, r); }
template <auto F>
KivStatus plain(const Kiv8u* s, const Kiv16s*, Kiv8u* d, int, int) { return F(s, kStep, d, kStep); }
template <auto F>
KivStatus two_sources(const Kiv8u* s, const Kiv16s*, Kiv8u* d, int, int) { return F(s, kStep, s + kStep, kStep, d, kStep); }
KivStatus add(const Kiv8u*, const Kiv16s* r, Kiv8u* d, int, int) { return kiviAdd8x8_16s8u_C1IRS(r, 2 * kStep, d, kStep); }
KivStatus add_const(const Kiv8u*, const Kiv16s* r, Kiv8u* d, int, int) { return kiviAddC8x8_16s8u_C1IR(r[-1], d, kStep); }
KivStatus add_hp(const Kiv8u* s, const Kiv16s* r, Kiv8u* d, int acc, int rd) {
    return kiviAdd8x8HP_16s8u_C1RS(r, 2 * kStep, s, kStep, d, kStep, acc, rd);
}
int hp_want(const Kiv8u* s, const Kiv16s*, int, int x, int acc, int r) { return predict(s, x, acc, r); }
int hp_average_want(const Kiv8u* s, const Kiv16s*, int before, int x, int acc, int r) {
    return (before + predict(s, x, acc, r) + 1) / 2;
}
int copy_want(const Kiv8u* s, const Kiv16s*, int, int x, int, int) { return s[x]; }
int average_want(const Kiv8u* s, const Kiv16s*, int before, int x, int, int) { return (before + s[x] + 1) >> 1; }
int average2_want(const Kiv8u* s, const Kiv16s*, int, int x, int, int) { return (s[x] + s[x + kStep] + 1) >> 1; }
int add_want(const Kiv8u*, const Kiv16s* r, int before, int x, int, int) { return add_saturate(before, r[x]); }
int add_const_want(const Kiv8u*, const Kiv16s* r, int before, int, int, int) { return add_saturate(before, r[-1]); }
int add_hp_want(const Kiv8u* s, const Kiv16s* r, int, int x, int acc, int rd) {
    return add_saturate(predict(s, x, acc, rd), r[x]);
}

const BlockFunction kFunctions[] = {
    {"Copy8x4HP", 8, 4, hp<kiviCopy8x4HP_8u_C1R>, hp_want},
    {"Copy8x8HP", 8, 8, hp<kiviCopy8x8HP_8u_C1R>, hp_want},
    {"Copy16x8HP", 16, 8, hp<kiviCopy16x8HP_8u_C1R>, hp_want},
    {"Copy16x16HP", 16, 16, hp<kiviCopy16x16HP_8u_C1R>, hp_want},
    {"InterpolateAverage8x4", 8, 4, hp<kiviInterpolateAverage8x4_8u_C1IR>, hp_average_want},
    {"InterpolateAverage8x8", 8, 8, hp<kiviInterpolateAverage8x8_8u_C1IR>, hp_average_want},
    {"InterpolateAverage16x8", 16, 8, hp<kiviInterpolateAverage16x8_8u_C1IR>, hp_average_want},
    {"InterpolateAverage16x16", 16, 16, hp<kiviInterpolateAverage16x16_8u_C1IR>, hp_average_want},
    {"Copy8x8", 8, 8, plain<kiviCopy8x8_8u_C1R>, copy_want},
    {"Copy16x16", 16, 16, plain<kiviCopy16x16_8u_C1R>, copy_want},
    {"Average8x8 in place", 8, 8, plain<kiviAverage8x8_8u_C1IR>, average_want},
    {"Average16x16 in place", 16, 16, plain<kiviAverage16x16_8u_C1IR>, average_want},
    {"Average8x8", 8, 8, two_sources<kiviAverage8x8_8u_C1R>, average2_want},
    {"Average16x16", 16, 16, two_sources<kiviAverage16x16_8u_C1R>, average2_want},
    {"Add8x8", 8, 8, add, add_want},
    {"AddC8x8", 8, 8, add_const, add_const_want},
    {"Add8x8HP", 8, 8, add_hp, add_hp_want},
};

TEST(BlockCopy, EveryFunctionPositionAndRoundingFollowsTheDefinition) {
    kivvc::test::Rng rng(7);
    std::vector<Kiv8u> src(kStep * 18), dst(kStep * 16), before;
    std::vector<Kiv16s> res(kStep * 16 + 1);  // rows from element 1; the element before each row is the AddC value
    for (const auto& f : kFunctions) {
        // acc and rounding beyond their low bits must be ignored.
        for (int acc = 0; acc < 8; ++acc)
            for (int rounding = 0; rounding < 4; ++rounding) {
                for (auto& v : src) v = static_cast<Kiv8u>(rng.next());
                for (auto& v : dst) v = static_cast<Kiv8u>(rng.next());
                // Residuals in the decoder's range, and now and then any 16-bit value.
                const bool wide = rng.chance(4);
                for (auto& v : res) v = static_cast<Kiv16s>(wide ? rng.range(-32768, 32767) : rng.range(-2048, 2047));
                if (rng.chance(2)) res[0] = static_cast<Kiv16s>(32767 - rng.range(0, 400));  // sums that wrap
                for (int y = 1; y < 16; ++y) res[std::size_t(y) * kStep] = res[0];
                before = dst;
                ASSERT_EQ(f.call(src.data(), res.data() + 1, dst.data(), acc, rounding), kivStsOk);
                for (int y = 0; y < 16; ++y)
                    for (int x = 0; x < kStep; ++x) {
                        const std::size_t i = std::size_t(y) * kStep + x;
                        const int want = y < f.h && x < f.w ? f.want(&src[i - x], &res[i - x + 1], before[i], x, acc, rounding)
                                                            : before[i];
                        ASSERT_EQ(dst[i], want) << f.name << " acc " << acc << " rounding " << rounding << " at " << x
                                                << "," << y;
                    }
            }
    }
}

TEST(BlockCopy, NullPointersAreRefusedInOrder) {
    Kiv8u buf[17 * 17] = {};
    Kiv16s res[64] = {};
    EXPECT_EQ(kiviCopy16x16HP_8u_C1R(nullptr, 17, buf, 16, 3, 0), kivStsNullPointer);
    EXPECT_EQ(kiviAverage8x8_8u_C1R(buf, 8, nullptr, 8, buf, 8), kivStsNullPointer);
    EXPECT_EQ(kiviAdd8x8HP_16s8u_C1RS(res, 16, nullptr, 9, buf, 8, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviAddC8x8_16s8u_C1IR(5, nullptr, 8), kivStsNullPointer);
}

TEST(BlockCopy, VerticalFirstTablesTakeTheVerticalFlagInBitZero) {
    const auto& t = kivvc::block::table();
    const kivvc::block::CopyFn* tables[] = {t.copy4x4_vertical_first, t.copy8x4_vertical_first,
                                            t.copy8x8_vertical_first, t.copy16x16_vertical_first};
    const int sizes[][2] = {{4, 4}, {8, 4}, {8, 8}, {16, 16}};
    Kiv8u src[kStep * 17], dst[16 * 16];
    for (int i = 0; i < kStep * 17; ++i) src[i] = static_cast<Kiv8u>(i * 37 + (i >> 3));
    for (int k = 0; k < 4; ++k)
        for (int index = 0; index < 8; ++index) {
            const int vertical = (index >> 1) & 1, horizontal = (index >> 2) & 1, rounding = index & 1;
            tables[k][index](src, kStep, dst, 16);
            for (int y = 0; y < sizes[k][1]; ++y)
                for (int x = 0; x < sizes[k][0]; ++x)
                    ASSERT_EQ(dst[y * 16 + x], predict(src + y * kStep, x, horizontal | vertical << 1, rounding))
                        << "size " << k << " index " << index;
        }
}

}  // namespace
