// The word and byte cursors: the boundary cases of each shape and random
// write-then-read round trips that straddle words and bytes.
#include <gtest/gtest.h>

#include <vector>

#include "core/bitstream.h"
#include "support/kernel_case.h"

namespace {

using kivvc::bits::ByteReader;
using kivvc::bits::ByteWriter;
using kivvc::bits::WordReader;
using kivvc::bits::WordWriter;

TEST(WordCursor, ReadsAtWordBoundaries) {
    const std::uint32_t words[3] = {0x80000001u, 0xFFFFFFFFu, 0};
    // n bits at offset n - 1 take the rest of the word and nothing of the next.
    auto r = WordReader::load(words, 7);
    EXPECT_EQ(r.read(8), 0x01u);
    EXPECT_EQ(r.word, words + 1);
    EXPECT_EQ(r.offset, 31);
    // One bit at offset 0.
    r = WordReader::load(words, 0);
    EXPECT_EQ(r.read(1), 1u);
    EXPECT_EQ(r.word, words + 1);
    EXPECT_EQ(r.offset, 31);
    // A straddling read.
    r = WordReader::load(words, 3);
    EXPECT_EQ(r.read(8), 0x1Fu);
    EXPECT_EQ(r.offset, 27);
    // Giving back across the boundary moves the pointer back.
    r.give_back(8);
    EXPECT_EQ(r.word, words);
    EXPECT_EQ(r.offset, 3);
    r = WordReader::load(words, 31);
    EXPECT_EQ(r.read(32), 0x80000001u);
    EXPECT_EQ(r.leading_zeros(), 0);
}

TEST(WordCursor, ExactFillAdvancesWithoutTouchingTheNextWord) {
    std::uint32_t words[2] = {0, 0xDEADBEEF};
    auto w = WordWriter::load(words, 32);
    w.put(0xABCD, 16);
    w.put(0x1234, 16);
    EXPECT_EQ(words[0], 0xABCD1234u);
    EXPECT_EQ(w.word, words + 1);
    EXPECT_EQ(w.free_bits, 32);
    EXPECT_EQ(words[1], 0xDEADBEEFu);
    // A straddling code stores (clears) the new word.
    std::uint32_t out[2] = {0, 0xFFFFFFFF};
    w = WordWriter::load(out, 4);
    w.put(0x3F, 6);
    EXPECT_EQ(out[0], 0xFu);
    EXPECT_EQ(out[1], 0xC0000000u);
    EXPECT_EQ(w.free_bits, 30);
}

TEST(ByteCursor, WriteKeepsLeadingBitsAndZeroesTheRest) {
    std::uint8_t buf[4] = {0xFF, 0xFF, 0xFF, 0xFF};
    auto w = ByteWriter::load(buf, 3);
    w.put(0, 2);
    std::uint8_t* p;
    int off;
    w.finish(&p, &off);
    EXPECT_EQ(buf[0], 0xE0);  // top three bits kept, two zeros written, rest zero
    EXPECT_EQ(p, buf);
    EXPECT_EQ(off, 5);
    w = ByteWriter::load(buf, 5);
    w.put(0x7, 3);
    w.finish(&p, &off);
    EXPECT_EQ(buf[0], 0xE7);
    EXPECT_EQ(p, buf + 1);
    EXPECT_EQ(off, 0);
    EXPECT_EQ(buf[1], 0xFF);  // nothing written there
}

TEST(Cursors, RandomCodesRoundTrip) {
    kivvc::test::Rng rng(42);
    for (int trial = 0; trial < 200; ++trial) {
        std::vector<std::pair<std::uint32_t, int>> codes;
        for (int i = 0; i < 300; ++i) {
            const int n = rng.range(1, 32);
            codes.push_back({static_cast<std::uint32_t>(rng.next()) & (n == 32 ? ~0u : (1u << n) - 1), n});
        }
        // Word cursor, starting part-way into a word.
        std::vector<std::uint32_t> words(400, 0);
        const int start_free = rng.range(1, 32);
        auto w = WordWriter::load(words.data(), start_free);
        for (auto [c, n] : codes) w.put(c, n);
        auto r = WordReader::load(words.data(), start_free - 1);
        for (auto [c, n] : codes) ASSERT_EQ(r.read(n), c);
        EXPECT_EQ(r.word, w.word);
        EXPECT_EQ(r.offset, (w.free_bits - 1) & 31);

        // Byte cursor, codes up to 25 bits through peek(), longer through peek_long().
        std::vector<std::uint8_t> bytes(1300, 0);
        const int start_off = rng.range(0, 7);
        bytes[0] = 0xFF;
        auto bw = ByteWriter::load(bytes.data(), start_off);
        for (auto [c, n] : codes) bw.put(c, n);
        std::uint8_t* end;
        int end_off;
        bw.finish(&end, &end_off);
        ByteReader br{bytes.data(), start_off};
        for (auto [c, n] : codes) ASSERT_EQ(n <= 25 ? br.read(n) : br.read_long(n), c);
        EXPECT_EQ(br.byte, end);
        EXPECT_EQ(br.offset, end_off);
        if (start_off) {
            EXPECT_EQ(bytes[0] >> (8 - start_off), 0xFF >> (8 - start_off));
        }
    }
}

}  // namespace
