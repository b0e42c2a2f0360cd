// Mechanical checks of the typed code tables (a round trip through a wrong
// table would still pass): entry counts, prefix-freeness, Kraft sums, the
// run/level limits against the code tables, and the lookup structures
// against the rows.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "mpeg4/bit_text.h"
#include "mpeg4/coeff_tables.h"

namespace {

using namespace kivvc::mpeg4;
using kivvc::test::strip;
using kivvc::test::value_of;

bool prefix_free(const std::vector<std::string>& codes) { return kivvc::test::check_codes(codes, 16).prefix_free; }
// Kraft sum in units of 2^-16.
long kraft(const std::vector<std::string>& codes) { return long(kivvc::test::check_codes(codes, 16).kraft); }

std::vector<std::string> reversed(std::vector<std::string> codes) {
    for (auto& c : codes) c = std::string(c.rbegin(), c.rend());
    return codes;
}

struct TcoefCase {
    const char* name;
    const TcoefRow* rows;
    const TcoefTable* table;
    const RunLevelLimits* limits;
    const EncodeTable* encode;
    int max_run[2];
};

TEST(Mpeg4Tables, TcoefTablesAreCompleteAndAgreeWithTheirLimits) {
    const TcoefCase cases[] = {{"intra", kIntraTcoefRows, &kIntraTcoef, &kIntraLimits, &kIntraTcoefCodes, {14, 20}},
                               {"inter", kInterTcoefRows, &kInterTcoef, &kInterLimits, &kInterTcoefCodes, {26, 40}}};
    for (const auto& tc : cases) {
        SCOPED_TRACE(tc.name);
        std::vector<std::string> codes{strip(kTcoefEscapeBits)};
        std::set<std::tuple<int, int, int>> meanings;
        int lmax[2][64] = {}, rmax[2][64];
        for (auto& r : rmax)
            for (auto& v : r) v = -1;
        for (int i = 0; i < kTcoefRows; ++i) {
            const TcoefRow& r = tc.rows[i];
            codes.push_back(strip(r.bits));
            EXPECT_TRUE(meanings.insert({r.last, r.run, r.level}).second) << i;
            lmax[r.last][r.run] = std::max(lmax[r.last][r.run], int{r.level});
            rmax[r.last][r.level] = std::max(rmax[r.last][r.level], int{r.run});
        }
        EXPECT_EQ(meanings.size(), 102u);
        EXPECT_TRUE(prefix_free(codes));
        // Complete but for the codes starting with nine zeros.
        EXPECT_EQ(kraft(codes), 65536 - 128);
        for (int last = 0; last < 2; ++last) {
            EXPECT_EQ(tc.limits->runs[last], tc.max_run[last] + 1);
            for (int run = 0; run < 64; ++run) {
                EXPECT_EQ(tc.limits->lmax_of(last, run), lmax[last][run]) << last << " " << run;
                // Every level up to LMAX has a code.
                for (int level = 1; level <= lmax[last][run]; ++level)
                    EXPECT_TRUE(meanings.count({last, run, level})) << last << " " << run << " " << level;
            }
            for (int level = 1; level < 64; ++level)
                EXPECT_EQ(tc.limits->rmax_plus1_of(last, level), rmax[last][level] + 1) << last << " " << level;
        }
        // Lookup and encode tables give back every row.
        for (int i = 0; i < kTcoefRows; ++i) {
            const TcoefRow& r = tc.rows[i];
            const std::string c = strip(r.bits);
            const std::uint32_t index = value_of(c) << (12 - c.size()) | ((i * 37u) & ((1u << (12 - c.size())) - 1));
            const Code got = tc.table->code[index];
            EXPECT_EQ(std::tuple(got.last, got.run, got.level, got.length),
                      std::tuple(r.last, r.run, r.level, std::uint8_t(c.size())));
            const Vlc v = tc.encode->find(r.last, r.run, r.level);
            EXPECT_EQ(v.length, c.size());
            EXPECT_EQ(v.bits, value_of(c));
        }
        EXPECT_EQ(tc.table->code[0x060].level, kEscape);
        EXPECT_EQ(tc.table->code[7].length, 0);
    }
}

TEST(Mpeg4Tables, ReversibleCodesAreReversibleAndLookUpBothWays) {
    std::vector<std::string> codes;
    std::set<std::tuple<int, int, int>> intra, inter;
    for (int i = 0; i < kRvlcRows; ++i) {
        const RvlcRow& r = kRvlcRowsAll[i];
        codes.push_back(strip(r.bits));
        EXPECT_TRUE(intra.insert({r.intra.last, r.intra.run, r.intra.level}).second) << i;
        EXPECT_TRUE(inter.insert({r.inter.last, r.inter.run, r.inter.level}).second) << i;
        // '0000' at either end belongs to the escape.
        EXPECT_NE(codes.back().substr(0, 4), "0000");
        EXPECT_TRUE(codes.back().size() < 4 || codes.back().substr(codes.back().size() - 4) != "0000");
        EXPECT_GE(codes.back().size(), 3u);
        EXPECT_LE(codes.back().size(), 15u);
    }
    EXPECT_EQ(intra.size(), 169u);
    EXPECT_EQ(inter.size(), 169u);
    EXPECT_TRUE(prefix_free(codes));
    EXPECT_TRUE(prefix_free(reversed(codes)));
    // With the escape prefix '00001' the code space is not overfull.
    EXPECT_LE(kraft(codes) + (1L << 11), 65536);
    // Levels of each run are contiguous from 1 in both meanings.
    for (const auto* set : {&intra, &inter})
        for (auto [last, run, level] : *set)
            if (level > 1) {
                EXPECT_TRUE(set->count({last, run, level - 1})) << last << " " << run << " " << level;
            }

    const struct {
        const RvlcTable* table;
        bool backward, intra;
        const EncodeTable* encode;
    } tables[] = {{&tableB23_Forw_Intra, false, true, &kIntraRvlcCodes},
                  {&tableB23_Forw_Inter, false, false, &kInterRvlcCodes},
                  {&tableB23_Back_Intra, true, true, nullptr},
                  {&tableB23_Back_Inter, true, false, nullptr}};
    for (const auto& t : tables) {
        for (int i = 0; i < kRvlcRows; ++i) {
            const RvlcRow& r = kRvlcRowsAll[i];
            const RunLevel want = t.intra ? r.intra : r.inter;
            std::string c = strip(r.bits);
            if (t.backward) c = std::string(c.rbegin(), c.rend());
            const std::string padded = (c + "101010101010101").substr(0, 15);
            Code got = t.table->first[value_of(padded.substr(0, 8))];
            if (got.length == kLink) got = t.table->second[got.run][value_of(padded.substr(8))];
            EXPECT_EQ(std::tuple(got.last, got.run, got.level, got.length),
                      std::tuple(want.last, want.run, want.level, std::uint8_t(c.size())))
                << i << (t.backward ? " backward" : " forward");
            if (t.encode) {
                EXPECT_EQ(t.encode->find(want.last, want.run, want.level).bits, value_of(c));
            }
        }
    }
}

TEST(Mpeg4Tables, DcSizeCodes) {
    for (const auto* table : {kDcSizeLuma, kDcSizeChroma}) {
        std::vector<std::string> codes;
        for (int s = 0; s < 13; ++s) {
            std::string c;
            for (int b = table[s].length - 1; b >= 0; --b) c += char('0' + ((table[s].bits >> b) & 1));
            codes.push_back(c);
        }
        EXPECT_TRUE(prefix_free(codes));
        // Complete but for eleven (luminance) or twelve (chrominance) zeros.
        EXPECT_EQ(kraft(codes), 65536 - (table == kDcSizeLuma ? 32 : 16));
    }
}

}  // namespace
