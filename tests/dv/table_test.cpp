// The DV lookup-table builder and the shipped code: entry layout, overlap
// and masking rules, statuses; the code itself is checked mechanically
// (entry counts, prefix-free, complete) and against a few known codes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "dv/dv_vlc_source.h"
#include "dv/segment_writer.h"
#include "kivvc.h"

namespace {

using namespace kivvc::test::dv;

TEST(DvCode, CountsPrefixFreeAndComplete) {
    // 37 signed pairs up to 9 bits; beyond, 45 signed pairs and 2 + 4 + 64 zero runs.
    EXPECT_EQ(level_codes(kivDvCodeFirstLevel, 0, 0).size(), 74u);
    EXPECT_EQ(level_codes(kivDvCodeSecondLevel, 0xF, 4).size(), 2u * 45 + 70);
    // With end of block and the 512 amplitude escapes.
    auto all = shipped_codes();
    all.push_back({0x6, 4, 0, 0});
    for (std::uint32_t v = 0; v < 512; ++v) all.push_back({0x7F << 9 | v, 16, 0, 0});
    double kraft = 0;
    for (const auto& c : all) kraft += std::ldexp(1.0, -c.length);
    EXPECT_DOUBLE_EQ(kraft, 1.0);
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = 0; j < all.size(); ++j) {
            if (i == j || all[i].length > all[j].length) continue;
            ASSERT_NE(all[j].bits >> (all[j].length - all[i].length), all[i].bits)
                << "code " << i << " is a prefix of code " << j;
        }
}

TEST(DvCode, KnownCodes) {
    Kiv32u* t = nullptr;
    ASSERT_EQ(kiviInitAllocHuffmanTable_DV_32u(kivDvCodeFirstLevel, kivDvCodeSecondLevel, &t), kivStsOk);
    auto entry = [](int length, int run, int amp) {
        return Kiv32u(length) | Kiv32u(run) << 8 | (Kiv32u(amp * 64) & 0xFFFF) << 16;
    };
    EXPECT_EQ(t[0b001000000], entry(3, 0, -1));       // 00 1
    EXPECT_EQ(t[0b110011100], entry(7, 0, -8));       // 110011 1
    EXPECT_EQ(t[0b011000000], 0xFFu);                 // end of block: left to the decoder
    EXPECT_EQ(t[0b111100000], 0xFFu);                 // long codes go to the second level
    const Kiv32u* second = t + 512;
    EXPECT_EQ(second[0b010111000], entry(10, 0, -18));  // 1111 01011 1
    EXPECT_EQ(second[0b101011100], entry(12, 4, 0));    // 1111 10101110
    EXPECT_EQ(second[0b110000101], entry(13, 5, 0));    // 1111 110 000101
    EXPECT_EQ(second[0b101111111], entry(13, 1, -17));  // 1111 1011111 1
    EXPECT_EQ(second[0b111000000], 0xFFu);              // escape: left to the decoder
    EXPECT_EQ(kiviFreeHuffmanTable_DV_32u(t), kivStsOk);
}

TEST(DvTable, LayoutOverlapAndMasking) {
    // Level 1 with 3 index bits: a 1-bit code, then a 2-bit code inside it
    // (overwrites half), a code with stray high bits, a 10-bit amplitude.
    static const Kiv32s first[] = {3, 99, 99, 1, 0, 7, 300, 1, 0x5, 2, -1, 0, 0};
    static const Kiv32s second[] = {2, 0, 0, 0, 1, 0x3, 1, 0x201};
    Kiv32u* t = nullptr;
    ASSERT_EQ(kiviInitAllocHuffmanTable_DV_32u(first, second, &t), kivStsOk);
    ASSERT_NE(t, nullptr);
    // 300 keeps its low 10 bits (300 - 1024 = -724 as a 10-bit value is not it: 300 < 512).
    const Kiv32u zero_code = 1 | 7 << 8 | Kiv32u((300 << 6) & 0xFFFF) << 16;
    const Kiv32u one_code = 2 | 2 << 8 | 0xFFC0u << 16;  // code 0x5 & 3 = 01, amplitude -1
    EXPECT_EQ(t[0], zero_code);
    EXPECT_EQ(t[1], zero_code);
    EXPECT_EQ(t[2], one_code);
    EXPECT_EQ(t[3], one_code);
    for (int i = 4; i < 8; ++i) EXPECT_EQ(t[i], 0xFFu);
    // Level 2: length + 4, amplitude 0x201 -> -511 in 10 bits.
    EXPECT_EQ(t[8], 0xFFu);
    EXPECT_EQ(t[8 + 3], Kiv32u(6 | 1 << 8) | Kiv32u((-511 * 64) & 0xFFFF) << 16);
    kiviFreeHuffmanTable_DV_32u(t);
}

void* failing_malloc(size_t) { return nullptr; }

TEST(DvTable, Statuses) {
    Kiv32u* t = reinterpret_cast<Kiv32u*>(&t);
    EXPECT_EQ(kiviInitAllocHuffmanTable_DV_32u(nullptr, kivDvCodeSecondLevel, &t), kivStsNullPointer);
    EXPECT_EQ(kiviInitAllocHuffmanTable_DV_32u(kivDvCodeFirstLevel, kivDvCodeSecondLevel, nullptr), kivStsNullPointer);
    const auto saved = i_malloc;
    i_malloc = failing_malloc;
    const KivStatus s = kiviInitAllocHuffmanTable_DV_32u(kivDvCodeFirstLevel, kivDvCodeSecondLevel, &t);
    i_malloc = saved;
    EXPECT_EQ(s, kivStsNoMemory);
    EXPECT_EQ(t, nullptr);
    static const Kiv32s huge[] = {31, 0, 0};
    t = reinterpret_cast<Kiv32u*>(&t);
    EXPECT_EQ(kiviInitAllocHuffmanTable_DV_32u(huge, kivDvCodeSecondLevel, &t), kivStsNoMemory);
    EXPECT_EQ(t, nullptr);
    EXPECT_EQ(kiviFreeHuffmanTable_DV_32u(nullptr), kivStsNullPointer);
}

}  // namespace
