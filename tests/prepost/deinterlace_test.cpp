// Deinterlacing through the exported functions: which lines are copied,
// filtered or left alone for every field and border setting, the per-sample
// rules against a direct statement of them, and the checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

// A plane with one readable line above and below the region, as the filters
// may read them without the border flag.
struct Picture {
    int w, h, step;
    std::vector<Kiv8u> mem;
    Picture(int w_, int h_, kivvc::test::Rng& rng, int lo = 0, int hi = 255) : w(w_), h(h_), step(w_ + 5) {
        mem.resize(std::size_t(step) * (h + 2));
        for (auto& v : mem) v = static_cast<Kiv8u>(rng.range(lo, hi));
    }
    Kiv8u* origin() { return mem.data() + step; }
    int at(int y, int x) const { return mem[std::size_t(y + 1) * step + x]; }
};

int median_of(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

TEST(DeinterlaceMedian, LinesAndSamplesFollowTheRules) {
    kivvc::test::Rng rng(11);
    for (int h : {2, 3, 4, 7, 8}) {
        for (int w : {1, 5, 16, 37}) {
            for (int field : {0, 1, 2}) {
                for (int border : {0, 1}) {
                    for (int threshold : {-1, 0, 1, 30, 255, 256}) {
                        Picture src(w, h, rng), dst(w, h, rng);
                        const Picture before = dst;
                        ASSERT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(src.origin(), src.step, dst.origin(), dst.step,
                                                                        w, h, threshold, field, border),
                                  kivStsOk);
                        const int start = field == 1 ? 1 : (border ? 2 : 0), end = border ? h - 1 : h;
                        for (int y = -1; y <= h; ++y)
                            for (int x = 0; x < dst.step; ++x) {
                                int want = before.at(y, x);
                                const bool inside = y >= 0 && y < h && x < w;
                                const bool kept = y < 2 * (h / 2) && (y % 2 == 0) == (field == 1);
                                const bool filtered = y >= start && y < end && (y - start) % 2 == 0;
                                if (inside && (kept || (border && (y == 0 || y == h - 1)))) {
                                    want = src.at(y, x);
                                } else if (inside && filtered) {
                                    const int c = src.at(y, x);
                                    const int m = median_of(src.at(y - 1, x), c, src.at(y + 1, x));
                                    want = std::abs(m - c) < threshold ? c : m;
                                }
                                ASSERT_EQ(dst.at(y, x), want) << "h " << h << " w " << w << " field " << field
                                                              << " border " << border << " thr " << threshold
                                                              << " at " << y << "," << x;
                            }
                    }
                }
            }
        }
    }
}

TEST(DeinterlaceMedian, KnownColumn) {
    // a = 10, c = 200, b = 20, threshold 50: the median 20 is 180 away, so 20.
    Kiv8u src[3] = {10, 200, 20}, dst[3] = {0, 0, 0};
    ASSERT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(src, 1, dst, 1, 1, 3, 50, 1, 0), kivStsOk);
    EXPECT_EQ(dst[1], 20);
}

TEST(DeinterlaceMedian, InPlaceEqualsOutOfPlace) {
    kivvc::test::Rng rng(13);
    for (int field : {0, 1}) {
        Picture src(45, 9, rng), dst(45, 9, rng);
        Picture same = src;
        ASSERT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(src.origin(), src.step, dst.origin(), dst.step, 45, 9, 20,
                                                        field, 1),
                  kivStsOk);
        ASSERT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(same.origin(), same.step, same.origin(), same.step, 45, 9, 20,
                                                        field, 1),
                  kivStsOk);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 45; ++x) ASSERT_EQ(same.at(y, x), dst.at(y, x)) << y << "," << x;
    }
}

TEST(DeinterlaceEdge, LinesAndSamplesFollowTheRules) {
    kivvc::test::Rng rng(12);
    for (int h : {1, 2, 5}) {
        for (int w : {1, 2, 3, 18, 40}) {
            for (int field : {0, 1, 5}) {
                for (int border : {0, 1}) {
                    for (int spread : {255, 8}) {  // narrow ranges make ties common
                        Picture src(w, h, rng, 100, 100 + spread), dst(w, h, rng);
                        const Picture before = dst;
                        ASSERT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(src.origin(), src.step, dst.origin(), dst.step, w,
                                                                   h, field, border),
                                  kivStsOk);
                        const int f = field != 0;
                        for (int y = -1; y <= h; ++y)
                            for (int x = 0; x < dst.step; ++x) {
                                int want = before.at(y, x);
                                const bool inside = y >= 0 && y < h && x < w;
                                const int first = border ? 1 - f : 0, end = h - (border ? f : 0);
                                if (inside && border && y == (f ? h - 1 : 0)) {
                                    want = src.at(y, x);
                                } else if (inside && y >= first && y < end) {
                                    const int ur = y + f - 1, lr = y + f;
                                    auto u = [&](int i) { return src.at(ur, i); };
                                    auto l = [&](int i) { return src.at(lr, i); };
                                    if (x == 0 || x == w - 1) {
                                        want = src.at(y, x);
                                    } else {
                                        const int d1 = std::abs(u(x - 1) - l(x + 1));
                                        const int d2 = std::abs(u(x + 1) - l(x - 1));
                                        const int dv = std::abs(u(x) - l(x));
                                        const int best = std::min(d1, std::min(d2, dv));
                                        if (dv == best) want = (u(x) + l(x) + 1) / 2;
                                        else if (d2 == best) want = (u(x + 1) + l(x - 1) + 1) / 2;
                                        else want = (u(x - 1) + l(x + 1) + 1) / 2;
                                    }
                                }
                                ASSERT_EQ(dst.at(y, x), want) << "h " << h << " w " << w << " field " << field
                                                              << " border " << border << " at " << y << "," << x;
                            }
                    }
                }
            }
        }
    }
}

TEST(Deinterlace, Checks) {
    Kiv8u buf[64] = {};
    EXPECT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(nullptr, 8, buf, 8, 0, 0, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(buf, 8, nullptr, 8, 0, 0, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(buf, 8, buf + 32, 8, 0, 2, 0, 0, 1), kivStsBadSize);
    EXPECT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(buf, 8, buf + 32, 8, 4, 1, 0, 0, 1), kivStsBadSize);
    EXPECT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(nullptr, 8, buf, 8, 0, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(buf, 8, nullptr, 8, 0, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(buf, 8, buf + 32, 8, 0, 1, 0, 1), kivStsBadSize);
    EXPECT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(buf, 8, buf + 32, 8, 4, 0, 0, 1), kivStsBadSize);
}

}  // namespace
