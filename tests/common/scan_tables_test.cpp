// The typed scan tables, checked mechanically: each is a permutation of the
// 64 positions, the zigzag walks anti-diagonals in alternating directions,
// the alternate-horizontal scan is the transpose of the alternate-vertical
// one, and the selector falls back to the zigzag.
#include <gtest/gtest.h>

#include <set>

#include "common/scan_tables.h"

namespace {

TEST(ScanTables, ArePermutationsRelatedAsTheyShouldBe) {
    for (const std::int32_t* t : {kivvc::ownvc_Zigzag, kivvc::ownvc_AltScanV, kivvc::ownvc_AltScanH}) {
        const std::set<int> seen(t, t + 64);
        EXPECT_EQ(seen.size(), 64u);
        EXPECT_EQ(*seen.begin(), 0);
        EXPECT_EQ(*seen.rbegin(), 63);
    }
    for (int i = 0; i < 64; ++i) {
        const int v = kivvc::ownvc_AltScanV[i];
        EXPECT_EQ(kivvc::ownvc_AltScanH[i], (v % 8) * 8 + v / 8) << i;
    }
    EXPECT_EQ(kivvc::scan_for(1), kivvc::ownvc_AltScanV);
    EXPECT_EQ(kivvc::scan_for(2), kivvc::ownvc_AltScanH);
    for (int other : {0, 3, -7}) EXPECT_EQ(kivvc::scan_for(other), kivvc::ownvc_Zigzag);
}

TEST(ScanTables, ZigzagFollowsTheAntiDiagonals) {
    // Generated independently: diagonal d = x + y, odd diagonals run
    // down-left (x decreasing), even ones up-right.
    int n = 0;
    for (int d = 0; d < 15; ++d)
        for (int i = 0; i <= d; ++i) {
            const int x = (d & 1) ? d - i : i, y = d - x;
            if (x > 7 || y > 7) continue;
            ASSERT_EQ(kivvc::ownvc_Zigzag[n], y * 8 + x) << n;
            ++n;
        }
    EXPECT_EQ(n, 64);
}

}  // namespace
