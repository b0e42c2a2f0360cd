// Plane expansion in frame and both field modes, odd and even expansions:
// every margin sample against the clamped sample of its frame or field, and
// nothing outside the margins (or in the other field) touched.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

TEST(H264ExpandPlane, FrameAndFieldsReplicateTheirEdges) {
    kivvc::test::Rng rng(121);
    const int w = 11, h = 10;
    for (int mode = 0; mode < 3; ++mode)
        for (int e : {1, 2, 3, 5, 8}) {
            const int step = w + 2 * e + 3, rows = h + 2 * e + 2;
            std::vector<Kiv8u> mem(std::size_t(step) * rows);
            for (auto& v : mem) v = static_cast<Kiv8u>(rng.next());
            const auto before = mem;
            const auto at = [&](const std::vector<Kiv8u>& m, int x, int y) { return int(m[std::size_t(y + e + 1) * step + x + e]); };
            ASSERT_EQ(kiviExpandPlane_H264_8u_C1R(mem.data() + std::size_t(e + 1) * step + e, w, h, step, e, mode), kivStsOk);
            // Rows each mode pads: its field's rows from `lo` to `hi`.
            const int below = mode == 0 ? e : mode == 1 ? (e + 1) / 2 : e / 2;
            const int above = mode == 0 ? e : mode == 1 ? e / 2 : (e + 1) / 2;
            const int stride = mode == 0 ? 1 : 2, first = mode == 2 ? 1 : 0, last = mode == 0 ? h - 1 : h - 2 + first;
            for (int y = -e - 1; y < h + e + 1; ++y)
                for (int x = -e; x < w + e + 3; ++x) {
                    const bool in_field = ((y - first) % stride + stride) % stride == 0;
                    const bool padded = in_field && y >= first - above * stride && y <= last + below * stride &&
                                        x < w + e && !(y >= 0 && y < h && x >= 0 && x < w);
                    const int want = padded ? at(before, std::clamp(x, 0, w - 1), std::clamp(y, first, last)) : at(before, x, y);
                    ASSERT_EQ(at(mem, x, y), want) << "mode " << mode << " e " << e << " at " << x << "," << y;
                }
        }
}

TEST(H264ExpandPlane, StatusesInCheckOrder) {
    Kiv8u b[64] = {};
    EXPECT_EQ(kiviExpandPlane_H264_8u_C1R(nullptr, 4, 3, 8, 1, 9), kivStsNullPointer);
    EXPECT_EQ(kiviExpandPlane_H264_8u_C1R(b, 4, 3, 8, 0, 9), kivStsBadSize);
    EXPECT_EQ(kiviExpandPlane_H264_8u_C1R(b, 4, 0, 8, 0, 9), kivStsBadSize);
    EXPECT_EQ(kiviExpandPlane_H264_8u_C1R(b, 0, 2, 8, 0, 9), kivStsBadSize);
    EXPECT_EQ(kiviExpandPlane_H264_8u_C1R(b, 4, 2, 8, 0, 9), kivStsOk);  // expansion 0 before the mode
    EXPECT_EQ(kiviExpandPlane_H264_8u_C1R(b, 4, 2, 8, 1, 3), kivStsBadArgument);
    EXPECT_TRUE(std::all_of(b, b + 64, [](Kiv8u v) { return v == 0; }));
}

}  // namespace
