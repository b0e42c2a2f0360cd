// Encoder side: the quantisers' arithmetic, and the
// writers against the test-side writer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "common/scan_tables.h"
#include "mpeg2/block_coding.h"

namespace {

using namespace kivvc::test::mpeg2;
using kivvc::bits::WordWriter;
using kivvc::test::Rng;

const Kiv32s* const kZigzag = kivvc::ownvc_Zigzag;

TEST(Mpeg2Encode, QuantiserArithmetic) {
    Kiv16s b[64] = {};
    Kiv32s n = -1;
    b[0] = b[1] = 100;
    EXPECT_EQ(kiviQuant_MPEG2_16s_C1I(b, 0, nullptr, &n), kivStsDivByZero);
    EXPECT_EQ(b[0], 100);
    EXPECT_EQ(n, -1);
    ASSERT_EQ(kiviQuant_MPEG2_16s_C1I(b, 8, nullptr, &n), kivStsOk);
    EXPECT_EQ(b[0], 12);  // 12.5 truncated
    EXPECT_EQ(n, 2);
    // Intra: DC untouched and not counted; default matrix weight 16 at
    // position 1: 100 * 16 / 2 / 16 = 50; weight 83 at 63: 1600 / 2 / 83 = 9.6;
    // weight 69 at 62: 80 / 2 / 69 = 0.58.
    std::memset(b, 0, sizeof b);
    b[0] = 999, b[1] = 100, b[62] = 5, b[63] = -100;
    ASSERT_EQ(kiviQuantIntra_MPEG2_16s_C1I(b, 2, nullptr, &n), kivStsOk);
    EXPECT_EQ((std::vector<int>{b[0], b[1], b[62], b[63], n}), (std::vector<int>{999, 50, 0, -9, 2}));
    // Limits.
    std::memset(b, 0, sizeof b);
    b[3] = 32767, b[4] = -32768;
    float m[64];
    std::fill(m, m + 64, 1.0f);
    ASSERT_EQ(kiviQuant_MPEG2_16s_C1I(b, 1, m, &n), kivStsOk);
    EXPECT_EQ(b[3], 2047);
    EXPECT_EQ(b[4], -2047);
    EXPECT_EQ(kiviQuant_MPEG2_16s_C1I(nullptr, 1, m, &n), kivStsNullPointer);
    EXPECT_EQ(kiviQuantIntra_MPEG2_16s_C1I(b, 1, m, nullptr), kivStsNullPointer);
}

// The test-side writer: a DC differential or a first "1s", table codes or
// escapes, end of block.
void put_block(WordWriter& w, const Kiv16s* levels, bool intra, bool table_one, Kiv32s& pred) {
    int prev = -1;
    if (intra) {
        put_dc(w, levels[0] - pred);
        pred = levels[0];
        prev = 0;
    }
    for (int i = prev + 1; i < 64; ++i) {
        const int v = levels[kZigzag[i]];
        if (!v) continue;
        if (i == 0 && (v == 1 || v == -1))
            w.put(v == 1 ? 2u : 3u, 2);
        else
            put_pair(w, CodeBook::get(table_one), Standard::Mpeg2, i - prev - 1, v);
        prev = i;
    }
    w.put(CodeBook::get(table_one).eob().bits, CodeBook::get(table_one).eob().length);
}

// Quantised random blocks, written in runs from random offsets, give the
// test-side writer's bits and cursor (a code whenever the table has one, the
// escape otherwise); the decoder tests read that writer's output.
TEST(Mpeg2Encode, WritersMatchAnIndependentWriter) {
    const auto& t = Tables::get();
    Rng rng(31337);
    for (int kind = 0; kind < 3; ++kind) {
        const bool intra = kind > 0, table_one = kind == 2;
        const Code eob = CodeBook::get(table_one).eob();
        for (int round = 0; round < 200; ++round) {
            const int start = rng.range(1, 32);
            std::vector<Kiv32u> got(64 * 24, 0), want(got.size(), 0);
            Kiv32u* p = got.data();
            Kiv32s off = start, pred = rng.range(0, 255), test_pred = pred;
            WordWriter w = WordWriter::load(want.data(), start);
            for (int block = 0; block < 8; ++block) {
                Kiv16s levels[64];
                float recip[64];
                for (auto& r : recip) r = 1.0f / float(rng.range(8, 80));
                // Sparse blocks reach the longest runs of the table and beyond.
                const int spread = rng.chance(4) ? 2047 : 200, q = rng.range(1, 40), one_in = rng.chance(2) ? 3 : 24;
                for (auto& l : levels) l = rng.chance(one_in) ? Kiv16s(rng.range(-spread, spread)) : 0;
                Kiv32s count = 0;
                if (intra) {
                    levels[0] = Kiv16s(rng.range(0, 255));
                    ASSERT_EQ(kiviQuantIntra_MPEG2_16s_C1I(levels, q, recip, &count), kivStsOk);
                } else {
                    ASSERT_EQ(kiviQuant_MPEG2_16s_C1I(levels, q, rng.chance(2) ? recip : nullptr, &count), kivStsOk);
                    if (count == 0) levels[0] = 1, count = 1;
                }
                ASSERT_EQ(intra ? kiviPutIntraBlock(&p, &off, levels, &pred, t.encode_dc,
                                                    table_one ? t.encode_one : t.encode_zero, kZigzag, eob.length,
                                                    Kiv32s(eob.bits), count)
                                : kiviPutNonIntraBlock(&p, &off, levels, t.encode_zero, kZigzag, eob.length,
                                                       Kiv32s(eob.bits), count),
                          kivStsOk);
                put_block(w, levels, intra, table_one, test_pred);
            }
            ASSERT_EQ(got, want) << "kind " << kind << " round " << round;
            EXPECT_EQ(p, got.data() + (w.word - want.data()));
            EXPECT_EQ(off, w.free_bits);
            EXPECT_EQ(pred, test_pred);
        }
    }
}

TEST(Mpeg2Encode, NullPointers) {
    const auto& t = Tables::get();
    Kiv32u* none = nullptr;
    Kiv32s off = 32, pred = 0;
    Kiv16s b[64] = {};
    EXPECT_EQ(kiviCreateRLEncodeTable(nullptr, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviPutIntraBlock(&none, &off, b, &pred, t.encode_dc, t.encode_zero, kZigzag, 2, 2, 0),
              kivStsNullPointer);
}

}  // namespace
