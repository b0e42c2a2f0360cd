// Deinterlacing through the exported functions: which lines are copied,
// filtered or left alone for every field and border setting, the per-sample
// rules against a direct statement of them, in place, and the checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

// A plane with one readable line above and below the region, as the filters
// may read them without the border flag.
struct Picture {
    int w, h, step;
    std::vector<Kiv8u> mem;
    Picture(int w_, int h_, Rng& rng, int lo = 0, int hi = 255) : w(w_), h(h_), step(w_ + 5) {
        mem.resize(std::size_t(step) * (h + 2));
        for (auto& v : mem) v = static_cast<Kiv8u>(rng.range(lo, hi));
    }
    Kiv8u* origin() { return mem.data() + step; }
    int at(int y, int x) const { return mem[std::size_t(y + 1) * step + x]; }
};

// Compares every sample of dst (region, margins, readable lines) with
// want(y, x); samples outside the region or where want is -1 keep `before`.
template <class Want>
void expect_plane(const Picture& dst, const Picture& before, Want want) {
    for (int y = -1; y <= dst.h; ++y)
        for (int x = 0; x < dst.step; ++x) {
            const int v = y >= 0 && y < dst.h && x < dst.w ? want(y, x) : -1;
            ASSERT_EQ(dst.at(y, x), v < 0 ? before.at(y, x) : v) << "at " << y << "," << x;
        }
}

int median_of(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

TEST(DeinterlaceMedian, LinesAndSamplesFollowTheRules) {
    Rng rng(11);
    for (int h : {2, 3, 4, 7, 8})
        for (int w : {1, 5, 16, 37})
            for (int field : {0, 1, 2})
                for (int border : {0, 1})
                    for (int threshold : {-1, 0, 1, 30, 255, 256}) {
                        SCOPED_TRACE(testing::Message() << "h " << h << " w " << w << " field " << field << " border "
                                                        << border << " threshold " << threshold);
                        Picture src(w, h, rng), dst(w, h, rng);
                        const Picture before = dst;
                        ASSERT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(src.origin(), src.step, dst.origin(), dst.step,
                                                                        w, h, threshold, field, border),
                                  kivStsOk);
                        const int start = field == 1 ? 1 : (border ? 2 : 0), end = border ? h - 1 : h;
                        const auto rule = [&](int y, int x) {
                            const bool kept = y < 2 * (h / 2) && (y % 2 == 0) == (field == 1);
                            if (kept || (border && (y == 0 || y == h - 1))) return src.at(y, x);
                            if (y < start || y >= end || (y - start) % 2) return -1;
                            const int c = src.at(y, x), m = median_of(src.at(y - 1, x), c, src.at(y + 1, x));
                            return std::abs(m - c) < threshold ? c : m;
                        };
                        expect_plane(dst, before, rule);
                        // In place: each filtered line reads the source lines, not the ones just written.
                        Picture same = src;
                        ASSERT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(same.origin(), same.step, same.origin(),
                                                                        same.step, w, h, threshold, field, border),
                                  kivStsOk);
                        expect_plane(same, src, rule);
                    }
}

TEST(DeinterlaceEdge, LinesAndSamplesFollowTheRules) {
    Rng rng(12);
    for (int h : {1, 2, 5})
        for (int w : {1, 2, 3, 18, 40})
            for (int field : {0, 1, 5})
                for (int border : {0, 1})
                    for (int spread : {255, 8}) {  // narrow ranges make ties common
                        SCOPED_TRACE(testing::Message()
                                     << "h " << h << " w " << w << " field " << field << " border " << border);
                        Picture src(w, h, rng, 100, 100 + spread), dst(w, h, rng);
                        const Picture before = dst;
                        ASSERT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(src.origin(), src.step, dst.origin(), dst.step, w,
                                                                   h, field, border),
                                  kivStsOk);
                        const int f = field != 0, first = border ? 1 - f : 0, end = h - (border ? f : 0);
                        expect_plane(dst, before, [&](int y, int x) {
                            if (border && y == (f ? h - 1 : 0)) return src.at(y, x);
                            if (y < first || y >= end) return -1;
                            if (x == 0 || x == w - 1) return src.at(y, x);
                            const auto u = [&](int i) { return src.at(y + f - 1, i); };
                            const auto l = [&](int i) { return src.at(y + f, i); };
                            const int d1 = std::abs(u(x - 1) - l(x + 1)), d2 = std::abs(u(x + 1) - l(x - 1));
                            const int dv = std::abs(u(x) - l(x)), best = std::min({d1, d2, dv});
                            if (dv == best) return (u(x) + l(x) + 1) / 2;
                            if (d2 == best) return (u(x + 1) + l(x - 1) + 1) / 2;
                            return (u(x - 1) + l(x + 1) + 1) / 2;
                        });
                    }
}

TEST(Deinterlace, Checks) {
    Kiv8u buf[64] = {};
    for (int i = 0; i < 2; ++i) {
        const Kiv8u* src = i ? buf : nullptr;
        Kiv8u* dst = i ? nullptr : buf;
        EXPECT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(src, 8, dst, 8, 0, 0, 0, 0, 0), kivStsNullPointer);
        EXPECT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(src, 8, dst, 8, 0, 0, 0, 0), kivStsNullPointer);
    }
    EXPECT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(buf, 8, buf + 32, 8, 0, 2, 0, 0, 1), kivStsBadSize);
    EXPECT_EQ(kiviDeinterlaceMedianThreshold_8u_C1R(buf, 8, buf + 32, 8, 4, 1, 0, 0, 1), kivStsBadSize);
    EXPECT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(buf, 8, buf + 32, 8, 0, 1, 0, 1), kivStsBadSize);
    EXPECT_EQ(kiviDeinterlaceEdgeDetect_8u_C1R(buf, 8, buf + 32, 8, 4, 0, 0, 1), kivStsBadSize);
}

}  // namespace
