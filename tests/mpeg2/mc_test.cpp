// Motion compensation: every exported shape against the prediction formulas,
// for all positions, rounding controls and stray mcType bits.
#include <gtest/gtest.h>

#include <vector>

#include "core/arith.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

using Single = KivStatus (*)(const Kiv8u*, Kiv32s, const Kiv16s*, Kiv32s, Kiv8u*, Kiv32s, Kiv32s, Kiv32s);
using Double = KivStatus (*)(const Kiv8u*, Kiv32s, Kiv32s, const Kiv8u*, Kiv32s, Kiv32s, const Kiv16s*, Kiv32s, Kiv8u*,
                             Kiv32s, Kiv32s);

struct Shape {
    const char* name;
    Single one;
    Double two;  // may be null
    int w, h;
    int right;  // distance of the horizontal half-sample neighbour
};

const Shape kShapes[] = {
    {"16x16", kiviMC16x16_8u_C1, kiviMC16x16B_8u_C1, 16, 16, 1},
    {"16x8", kiviMC16x8_8u_C1, kiviMC16x8B_8u_C1, 16, 8, 1},
    {"16x8UV", kiviMC16x8UV_8u_C1, kiviMC16x8BUV_8u_C1, 16, 8, 2},
    {"16x4", kiviMC16x4_8u_C1, kiviMC16x4B_8u_C1, 16, 4, 2},
    {"8x16", kiviMC8x16_8u_C1, nullptr, 8, 16, 1},
    {"8x8", kiviMC8x8_8u_C1, kiviMC8x8B_8u_C1, 8, 8, 1},
    {"8x4", kiviMC8x4_8u_C1, kiviMC8x4B_8u_C1, 8, 4, 1},
    {"4x8", kiviMC4x8_8u_C1, kiviMC4x8B_8u_C1, 4, 8, 1},
    {"4x4", kiviMC4x4_8u_C1, kiviMC4x4B_8u_C1, 4, 4, 1},
    {"4x2", kiviMC4x2_8u_C1, kiviMC4x2B_8u_C1, 4, 2, 1},
    {"2x4", kiviMC2x4_8u_C1, kiviMC2x4B_8u_C1, 2, 4, 1},
    {"2x2", kiviMC2x2_8u_C1, kiviMC2x2B_8u_C1, 2, 2, 1},
};

struct Ref {
    std::vector<Kiv8u> mem;
    int step;
    const Kiv8u* at(int x, int y) const { return mem.data() + y * step + x; }
};

Ref random_ref(Rng& rng, int w, int h, bool flat) {
    Ref r{std::vector<Kiv8u>(std::size_t((w + 3) * (h + 1))), w + 3};
    const int base = rng.range(0, 255);
    for (auto& v : r.mem) v = Kiv8u(flat ? kivvc::clip3(0, 255, base + rng.range(-1, 1)) : rng.range(0, 255));
    return r;
}

int predict(const Ref& r, int x, int y, int mcType, int rc, int right) {
    const int v = (mcType & 4) != 0, h = (mcType & 8) != 0;
    rc &= 1;
    const int a = *r.at(x, y), b = *r.at(x + right, y), c = *r.at(x, y + 1), d = *r.at(x + right, y + 1);
    if (!v && !h) return a;
    if (v && !h) return (a + c + 1 - rc) >> 1;
    if (!v) return (a + b + 1 - rc) >> 1;
    return (a + b + c + d + 2 - rc) >> 2;
}

TEST(Mpeg2MotionCompensation, EveryShapeMatchesTheFormulas) {
    Rng rng(17);
    for (const Shape& s : kShapes) {
        for (int round = 0; round < 64; ++round) {
            const Ref f = random_ref(rng, s.w, s.h, round % 4 == 3), b = random_ref(rng, s.w, s.h, false);
            std::vector<Kiv16s> res(std::size_t(s.w * s.h));
            for (auto& v : res) v = Kiv16s(rng.chance(4) ? rng.range(-32768, 32767) : rng.range(-40, 40));
            const int mf = rng.range(0, 15), mb = rng.range(0, 15), rc = rng.range(0, 3);
            std::vector<Kiv8u> out(std::size_t(s.w * s.h)), out2(out.size());
            ASSERT_EQ(s.one(f.mem.data(), f.step, res.data(), s.w * 2, out.data(), s.w, mf, rc), kivStsOk);
            if (s.two) {
                ASSERT_EQ(s.two(f.mem.data(), f.step, mf, b.mem.data(), b.step, mb, res.data(), s.w * 2, out2.data(),
                                s.w, rc),
                          kivStsOk);
            }
            for (int y = 0; y < s.h; ++y)
                for (int x = 0; x < s.w; ++x) {
                    const int r = res[std::size_t(y * s.w + x)];
                    const int pf = predict(f, x, y, mf, rc, s.right);
                    ASSERT_EQ(out[std::size_t(y * s.w + x)], kivvc::clip_u8(pf + r))
                        << s.name << " mcType " << mf << " rc " << rc << " at " << x << "," << y;
                    if (!s.two) continue;
                    const int p = (pf + predict(b, x, y, mb, rc, s.right) + 1) >> 1;
                    ASSERT_EQ(out2[std::size_t(y * s.w + x)], kivvc::clip_u8(p + r))
                        << s.name << "B " << mf << "/" << mb << " rc " << rc << " at " << x << "," << y;
                }
        }
    }
}

TEST(Mpeg2MotionCompensation, NullPointers) {
    const Kiv8u ref[64] = {};
    const Kiv16s zero[64] = {};
    Kiv8u out[64];
    EXPECT_EQ(kiviMC16x16_8u_C1(nullptr, 16, zero, 32, out, 16, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviMC4x4B_8u_C1(ref, 16, 0, nullptr, 16, 0, zero, 8, out, 4, 0), kivStsNullPointer);
    EXPECT_EQ(kiviMC16x8B_8u_C1(ref, 16, 0, ref, 16, 0, zero, 8, nullptr, 4, 0), kivStsNullPointer);
}

}  // namespace
