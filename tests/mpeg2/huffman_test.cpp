// Code-table builders and the generic decoders: the built layout, decoding
// round trips over word boundaries and table depths, invalid codes, and
// allocation failure. Also checks the typed MPEG-1/2 code tables.
#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "core/bitstream.h"
#include "kivvc.h"
#include "mpeg2/code_tables.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::test::mpeg2;
using kivvc::bits::WordWriter;
using kivvc::test::Rng;

struct Built {
    Kiv32s* t = nullptr;
    ~Built() {
        if (t) kiviHuffmanTableFree_32s(t);
    }
};

// Mechanical checks of the typed tables: a round trip through a wrong table
// would still pass.
void expect_prefix_free(const std::vector<Code>& codes, double expected_kraft, std::size_t expected_count) {
    EXPECT_EQ(codes.size(), expected_count);
    double kraft = 0;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        kraft += 1.0 / double(1u << codes[i].length);
        for (std::size_t j = 0; j < codes.size(); ++j) {
            if (i == j || codes[j].length < codes[i].length) continue;
            const std::uint32_t top = codes[j].bits >> (codes[j].length - codes[i].length);
            EXPECT_NE(top, codes[i].bits) << "code " << i << " is a prefix of code " << j;
        }
    }
    EXPECT_DOUBLE_EQ(kraft, expected_kraft);
}

TEST(Mpeg2CodeTables, ArePrefixFreeWithTheExpectedSizes) {
    expect_prefix_free(codes_of(kDcLuma), 1.0, 12);
    expect_prefix_free(codes_of(kDcChroma), 1.0, 12);
    // 111 run/level pairs (both signs), end of block and escape. Table zero
    // leaves only the 12-zero prefix unused.
    const auto zero = coefficient_codes(false), one = coefficient_codes(true);
    expect_prefix_free(zero, 1.0 - 1.0 / 4096, 224);
    double kraft = 0;
    for (const auto& c : one) kraft += 1.0 / double(1u << c.length);
    expect_prefix_free(one, kraft, 224);
    EXPECT_LT(kraft, 1.0);
    // Same (run, level) set in both tables.
    for (const auto& a : zero) {
        int found = 0;
        for (const auto& b : one) found += a.run == b.run && a.level == b.level;
        EXPECT_EQ(found, 1) << a.run << "," << a.level;
    }
}

TEST(Mpeg2Huffman, BuiltLayoutIsExact) {
    // Two levels of width 2: "1" -> 5, "01" -> 6, "001" -> 7, "0001" -> 8.
    const Kiv32s src[] = {0, 2, 2, 2, 1, 1, 5, 1, 1, 6, 1, 1, 7, 1, 1, 8, -1};
    Built b;
    ASSERT_EQ(kiviHuffmanTableInitAlloc_32s(src, &b.t), kivStsOk);
    const std::vector<Kiv32s> expect = {2, (5 << 8) | 0x80 /* link to word 5 */, 6 << 8, (5 << 8) | 1, (5 << 8) | 1,
                                        2, 0x00F0F101, 8 << 8, (7 << 8) | 1, (7 << 8) | 1};
    EXPECT_EQ(std::vector<Kiv32s>(b.t, b.t + 10), expect);

    // Run/level entries; codes longer than the sum of the widths are skipped.
    const Kiv32s rl[] = {0, 1, 3, 0, 1, 2, 7, -300, 0, 0, 0, 0, 0, 0, 1, 0, 1, 1, -1};
    Built d;
    ASSERT_EQ(kiviHuffmanRunLevelTableInitAlloc_32s(rl, &d.t), kivStsOk);
    EXPECT_EQ(d.t[1 + 4], static_cast<Kiv32s>((static_cast<Kiv32u>(-300) << 16) | (7 << 8) | 1));
    EXPECT_EQ(d.t[1 + 0], 0x00F0F101);
}

// Writes random codes at a random starting offset and decodes them again.
void round_trip(const std::vector<Code>& codes, const std::vector<std::int32_t>& source, bool run_level, Rng& rng) {
    Built b;
    ASSERT_EQ((run_level ? kiviHuffmanRunLevelTableInitAlloc_32s : kiviHuffmanTableInitAlloc_32s)(source.data(), &b.t),
              kivStsOk);
    std::vector<Kiv32u> words(200, 0);
    const int start = rng.range(1, 32);
    auto w = WordWriter::load(words.data(), start);
    std::vector<const Code*> sent;
    for (int i = 0; i < 150; ++i) {
        sent.push_back(&codes[rng.range(0, int(codes.size()) - 1)]);
        w.put(sent.back()->bits, sent.back()->length);
    }
    Kiv32u* p = words.data();
    Kiv32s off = start - 1;
    std::size_t consumed = 0;
    for (const Code* c : sent) {
        if (run_level) {
            Kiv8u run = 0;
            Kiv16s level = 0;
            ASSERT_EQ(kiviDecodeHuffmanPair_1u16s(&p, &off, b.t, &run, &level), kivStsOk);
            EXPECT_EQ(run, c->run);
            EXPECT_EQ(level, c->level);
        } else {
            Kiv32s v = -1;
            ASSERT_EQ(kiviDecodeHuffmanOne_1u32s(&p, &off, &v, b.t), kivStsOk);
            EXPECT_EQ(v, c->run);
        }
        consumed += std::size_t(c->length);
        const std::size_t at = std::size_t(p - words.data()) * 32 + std::size_t(31 - off) - std::size_t(32 - start);
        ASSERT_EQ(at, consumed);
    }
}

TEST(Mpeg2Huffman, DecodesWhatWasWrittenAtEveryDepth) {
    Rng rng(7);
    const std::vector<std::vector<int>> layouts = {{17}, {9, 8}, {8, 5, 4}, {4, 4, 4, 4, 4}, {2, 3, 2, 5, 1, 6}};
    for (const auto& widths : layouts) {
        for (bool table_one : {false, true})
            round_trip(coefficient_codes(table_one), coefficient_source(table_one, widths), true, rng);
        if (widths.size() > 1 || widths[0] <= 12)
            for (const auto& dc : {codes_of(kDcLuma), codes_of(kDcChroma)})
                round_trip(dc, source_table(dc, widths, false), false, rng);
    }
}

TEST(Mpeg2Huffman, InvalidCodeLeavesCursorAsEachDecoderDefines) {
    // "1" -> 3 in a table of widths 2, 2: "00" leads to an empty sub-table entry.
    const Kiv32s single[] = {0, 2, 2, 2, 1, 1, 3, 0, 0, 1, 1, 9, -1};
    const Kiv32s pair[] = {0, 2, 2, 2, 1, 1, 3, 4, 0, 0, 1, 1, 9, 9, -1};
    Built s, r;
    ASSERT_EQ(kiviHuffmanTableInitAlloc_32s(single, &s.t), kivStsOk);
    ASSERT_EQ(kiviHuffmanRunLevelTableInitAlloc_32s(pair, &r.t), kivStsOk);
    // Stream: bits at offset 1 of word 0: "00" then "00" into word 1.
    Kiv32u words[3] = {0xFFFFFFFC, 0x3FFFFFFF, 0};
    Kiv32u* p = words;
    Kiv32s off = 1;
    Kiv32s v = 0;
    EXPECT_EQ(kiviDecodeHuffmanOne_1u32s(&p, &off, &v, s.t), kivStsBadVlcCode);
    EXPECT_EQ(v, 0xF0F1);
    EXPECT_EQ(p, words + 1);  // after the four lookup bits, nothing given back
    EXPECT_EQ(off, 29);
    p = words;
    off = 1;
    Kiv8u run = 77;
    Kiv16s level = 77;
    EXPECT_EQ(kiviDecodeHuffmanPair_1u16s(&p, &off, r.t, &run, &level), kivStsBadVlcCode);
    EXPECT_EQ(p, words);
    EXPECT_EQ(off, 1);
    EXPECT_EQ(run, 77);
    EXPECT_EQ(level, 77);
    // A give-back that re-enters the previous word: code "1" looked up with
    // 4 bits from offset 1.
    const Kiv32s wide[] = {0, 1, 4, 1, 1, 3, -1};
    Built w;
    ASSERT_EQ(kiviHuffmanTableInitAlloc_32s(wide, &w.t), kivStsOk);
    Kiv32u w2[3] = {0x2, 0x0, 0};
    p = w2;
    off = 1;
    ASSERT_EQ(kiviDecodeHuffmanOne_1u32s(&p, &off, &v, w.t), kivStsOk);
    EXPECT_EQ(v, 3);
    EXPECT_EQ(p, w2);
    EXPECT_EQ(off, 0);
}

TEST(Mpeg2Huffman, ArgumentChecks) {
    const Kiv32s src[] = {0, 1, 2, 1, 1, 1, -1};
    const Kiv32s no_levels[] = {0, 0, -1}, too_wide[] = {0, 2, 8, 21, -1};
    Kiv32s* t = nullptr;
    EXPECT_EQ(kiviHuffmanTableInitAlloc_32s(src, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviHuffmanTableFree_32s(nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviHuffmanTableInitAlloc_32s(no_levels, &t), kivStsBadArgument);
    EXPECT_EQ(kiviHuffmanRunLevelTableInitAlloc_32s(too_wide, &t), kivStsBadArgument);
    EXPECT_EQ(t, nullptr);
    Built b;
    ASSERT_EQ(kiviHuffmanTableInitAlloc_32s(src, &b.t), kivStsOk);
    Kiv32u* null_word = nullptr;
    Kiv32s off = 31, v = 0;
    Kiv8u run;
    EXPECT_EQ(kiviDecodeHuffmanOne_1u32s(&null_word, &off, &v, b.t), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeHuffmanPair_1u16s(&null_word, &off, b.t, &run, nullptr), kivStsNullPointer);
}

// Allocation hook that fails on call number `fail_at` and counts what is live.
int g_calls, g_fail_at, g_live;
void* counting_malloc(size_t n) {
    if (++g_calls == g_fail_at) return nullptr;
    ++g_live;
    return std::malloc(n);
}
void counting_free(void* p) {
    if (p) --g_live;
    std::free(p);
}

TEST(Mpeg2Huffman, AllocationFailureLeaksNothing) {
    const auto src = coefficient_source(false);
    void* (*saved_malloc)(size_t) = i_malloc;
    void (*saved_free)(void*) = i_free;
    i_malloc = counting_malloc;
    i_free = counting_free;
    for (int fail_at = 1; fail_at <= 2; ++fail_at) {
        g_calls = 0;
        g_live = 0;
        g_fail_at = fail_at;
        Kiv32s* t = reinterpret_cast<Kiv32s*>(0x1);
        EXPECT_EQ(kiviHuffmanRunLevelTableInitAlloc_32s(src.data(), &t), kivStsNoMemory);
        EXPECT_EQ(t, reinterpret_cast<Kiv32s*>(0x1));
        EXPECT_EQ(g_live, 0);
        EXPECT_EQ(g_calls, fail_at);
    }
    g_calls = 0;
    g_fail_at = 0;
    Kiv32s* t = nullptr;
    EXPECT_EQ(kiviHuffmanRunLevelTableInitAlloc_32s(src.data(), &t), kivStsOk);
    EXPECT_EQ(g_live, 1);
    EXPECT_EQ(kiviHuffmanTableFree_32s(t), kivStsOk);
    EXPECT_EQ(g_live, 0);
    i_malloc = saved_malloc;
    i_free = saved_free;
}

}  // namespace
