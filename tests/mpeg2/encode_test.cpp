// Encoder side: the quantisers' arithmetic, the encode table layout, the
// writers' bit patterns, and round trips quantise -> write -> decode.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "mpeg2/block_coding.h"

namespace {

using namespace kivvc::test::mpeg2;
using kivvc::bits::WordWriter;
using kivvc::test::Rng;

struct EncodeTables {
    Kiv32s* zero = nullptr;
    Kiv32s* one = nullptr;
    Kiv32s dc[2 * 12];
    EncodeTables() {
        kiviCreateRLEncodeTable(table_zero_source().data(), &zero);
        kiviCreateRLEncodeTable(table_one_source().data(), &one);
        for (int s = 0; s < 12; ++s) {
            const Code c = parse(kDcLuma[s]);
            dc[2 * s] = Kiv32s(c.bits);
            dc[2 * s + 1] = c.length;
        }
    }
    ~EncodeTables() {
        kivsFree(zero);
        kivsFree(one);
    }
    static const EncodeTables& get() {
        static const EncodeTables t;
        return t;
    }
};

const Kiv32s kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
                            41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
                            30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

TEST(Mpeg2Encode, EncodeTableLayout) {
    const auto src = table_zero_source();
    const Kiv32s* t = EncodeTables::get().zero;
    const int max_run = 31;
    EXPECT_EQ(t[0], 22 | (34 << 10) | (max_run << 20));  // escape 000001, end of block 10
    std::vector<int> per_run(32, 0), largest(32, 0);
    const auto codes = table_zero_codes();
    for (const auto& c : codes)
        if (c.run < 254) {
            ++per_run[c.run];
            largest[c.run] = std::max(largest[c.run], std::abs(c.level));
        }
    int centre = (per_run[0] / 2 + max_run) * 4 + 8;
    for (int r = 0; r <= max_run; ++r) {
        if (r) centre += (per_run[r - 1] / 2 + per_run[r] / 2 + 1) * 4;
        ASSERT_EQ(t[1 + r], centre) << "run " << r;
        ASSERT_EQ(t[centre / 4], largest[r]);
    }
    for (const auto& c : codes)
        if (c.run < 254) {
            ASSERT_EQ(t[t[1 + c.run] / 4 + c.level], Kiv32s((c.bits << 16) | Kiv32u(c.length)));
        }
    // Last centre + m + 1 is where the sections end: two words before the end.
    EXPECT_EQ(t[1 + max_run] / 4 + largest[max_run] + 1, 224 + 2 * max_run + 3 - 2);
}

// Bits written by one call, as a string.
template <class F>
std::string written(F call, int start = 32) {
    Kiv32u words[8] = {};
    Kiv32u* p = words;
    Kiv32s off = start;
    EXPECT_EQ(call(&p, &off), kivStsOk);
    const int n = int(p - words) * 32 + (32 - off) - (32 - start);
    std::string s;
    for (int i = 0; i < n; ++i) {
        const int bit = i + 32 - start;
        s += char('0' + ((words[bit / 32] >> (31 - bit % 32)) & 1));
    }
    return s;
}

TEST(Mpeg2Encode, WriterBitPatterns) {
    const auto& t = EncodeTables::get();
    Kiv16s block[64] = {};
    // Non-intra: first coefficient -1 is "11", then run 40 level 1 (beyond R
    // of run... 40 > 31): escape; level 41 at run 0 beyond the table's 40:
    // escape; end of block.
    block[0] = -1;
    block[kZigzag[41]] = 1;
    block[kZigzag[42]] = 41;
    auto bits =
        written([&](Kiv32u** p, Kiv32s* o) { return kiviPutNonIntraBlock(p, o, block, t.zero, kZigzag, 2, 2, 3); });
    EXPECT_EQ(bits,
              "11"
              "000001"
              "101000"
              "000000000001"
              "000001"
              "000000"
              "000000101001"
              "10");
    // A zero first coefficient starts the run at 1: level 2 at scan index 1 is
    // (1, 2) = "0001 10" + sign.
    std::memset(block, 0, sizeof block);
    block[kZigzag[1]] = 2;
    bits =
        written([&](Kiv32u** p, Kiv32s* o) { return kiviPutNonIntraBlock(p, o, block, t.zero, kZigzag, 2, 2, 1); }, 5);
    EXPECT_EQ(bits,
              "0001100"
              "10");
    // Intra: DC differential -3 against predictor 10 (size 2 "01", bits "00").
    std::memset(block, 0, sizeof block);
    block[0] = 7;
    Kiv32s pred = 10;
    bits = written(
        [&](Kiv32u** p, Kiv32s* o) { return kiviPutIntraBlock(p, o, block, &pred, t.dc, t.zero, kZigzag, 2, 2, 0); });
    EXPECT_EQ(bits,
              "0100"
              "10");
    EXPECT_EQ(pred, 7);
}

TEST(Mpeg2Encode, QuantiserArithmetic) {
    Kiv16s b[64] = {};
    Kiv32s n = -1;
    b[0] = 100;
    b[1] = 100;
    EXPECT_EQ(kiviQuant_MPEG2_16s_C1I(b, 0, nullptr, &n), kivStsDivByZero);
    EXPECT_EQ(b[0], 100);
    EXPECT_EQ(n, -1);
    ASSERT_EQ(kiviQuant_MPEG2_16s_C1I(b, 8, nullptr, &n), kivStsOk);
    EXPECT_EQ(b[0], 12);  // 12.5 truncated
    EXPECT_EQ(n, 2);
    // Intra: DC untouched and not counted; default matrix weight 16 at
    // position 1: 100 * 16 / 2 / 16 = 50; weight 83 at 63: 1600 / 2 / 83 = 9.6.
    std::memset(b, 0, sizeof b);
    b[0] = 999;
    b[1] = 100;
    b[63] = -100;
    b[62] = 5;  // 80 / 2 / 69 = 0.58: 0
    ASSERT_EQ(kiviQuantIntra_MPEG2_16s_C1I(b, 2, nullptr, &n), kivStsOk);
    EXPECT_EQ(b[0], 999);
    EXPECT_EQ(b[1], 50);
    EXPECT_EQ(b[63], -9);
    EXPECT_EQ(b[62], 0);
    EXPECT_EQ(n, 2);
    // Limits.
    std::memset(b, 0, sizeof b);
    b[3] = 32767;
    b[4] = -32768;
    float m[64];
    for (auto& v : m) v = 1.0f;
    ASSERT_EQ(kiviQuant_MPEG2_16s_C1I(b, 1, m, &n), kivStsOk);
    EXPECT_EQ(b[3], 2047);
    EXPECT_EQ(b[4], -2047);
    EXPECT_EQ(kiviQuant_MPEG2_16s_C1I(nullptr, 1, m, &n), kivStsNullPointer);
    EXPECT_EQ(kiviQuantIntra_MPEG2_16s_C1I(b, 1, m, nullptr), kivStsNullPointer);
}

// Quantise random blocks, write them, decode them, compare with the formulas.
TEST(Mpeg2Encode, RoundTripThroughTheDecoders) {
    const auto& et = EncodeTables::get();
    const auto& dt = Tables::get();
    Rng rng(31337);
    for (int standard = 0; standard < 2; ++standard) {
        const Standard s = standard ? Standard::Mpeg2 : Standard::Mpeg1;
        for (int kind = 0; kind < 3; ++kind) {
            const bool intra = kind > 0, alt_table = kind == 2 && s == Standard::Mpeg2;
            std::vector<Kiv32u> words(64000, 0);
            WordWriter tw = WordWriter::load(words.data(), 32);  // test-side writer (MPEG-1 escapes)
            Kiv32u* wp = words.data();
            Kiv32s woff = 32;
            struct Sent {
                Kiv16s levels[64];
                int q;
                Kiv16s matrix[64];
            };
            std::vector<Sent> sent(1000);
            Kiv32s pred = 0;
            for (auto& b : sent) {
                b.q = rng.range(1, 40);
                float recip[64];
                for (int i = 0; i < 64; ++i) {
                    b.matrix[i] = Kiv16s(rng.range(8, 80));
                    recip[i] = 1.0f / float(b.matrix[i]);
                }
                const int spread = rng.chance(4) ? 2047 : 200;
                for (int i = 0; i < 64; ++i) b.levels[i] = rng.chance(3) ? Kiv16s(rng.range(-spread, spread)) : 0;
                if (intra) b.levels[0] = Kiv16s(rng.range(0, 255));
                Kiv32s count = 0;
                if (intra)
                    kiviQuantIntra_MPEG2_16s_C1I(b.levels, b.q, recip, &count);
                else
                    kiviQuant_MPEG2_16s_C1I(b.levels, b.q, rng.chance(2) ? recip : nullptr, &count);
                if (s == Standard::Mpeg1)
                    for (int i = intra ? 1 : 0; i < 64; ++i)
                        b.levels[i] = Kiv16s(std::max(-255, std::min(255, int(b.levels[i]))));
                if (!intra && count == 0) {
                    b.levels[0] = 1;
                    count = 1;
                }
                const Kiv32s* table = alt_table ? et.one : et.zero;
                const Code eob = alt_table ? book_one().eob() : book_zero().eob();
                if (s == Standard::Mpeg2) {
                    const KivStatus st = intra ? kiviPutIntraBlock(&wp, &woff, b.levels, &pred, et.dc, table, kZigzag,
                                                                   eob.length, Kiv32s(eob.bits), count)
                                               : kiviPutNonIntraBlock(&wp, &woff, b.levels, table, kZigzag, eob.length,
                                                                      Kiv32s(eob.bits), count);
                    ASSERT_EQ(st, kivStsOk);
                } else {
                    // MPEG-1 escapes differ: the test-side writer codes this stream.
                    int prev = -1;
                    if (intra) {
                        put_dc(tw, b.levels[0] - pred);
                        pred = b.levels[0];
                        prev = 0;
                    }
                    for (int i = intra ? 1 : 0; i < 64; ++i) {
                        const int v = b.levels[kZigzag[i]];
                        if (!v) continue;
                        if (prev < 0 && i == 0 && (v == 1 || v == -1))
                            tw.put(v == 1 ? 2u : 3u, 2);
                        else
                            put_pair(tw, book_zero(), s, i - prev - 1, v);
                        prev = i;
                    }
                    tw.put(eob.bits, eob.length);
                }
            }
            Kiv32u* rp = words.data();
            Kiv32s roff = 31;
            Kiv16s dpred = 0;
            for (auto& b : sent) {
                Kiv16s expect[64] = {}, got[64];
                int last = 0;
                for (int i = 0; i < 64; ++i) {
                    const int p = kZigzag[i];
                    if (intra && i == 0) {
                        expect[0] = Kiv16s(s == Standard::Mpeg1 ? 8 * b.levels[0] : b.levels[0]);
                    } else if (b.levels[p]) {
                        expect[p] = Kiv16s(dequant(s, intra, b.levels[p], b.matrix[p], b.q));
                        last = i;
                    }
                }
                if (s == Standard::Mpeg2) mismatch(expect);
                Kiv32s size = -1;
                Kiv32s* scan = const_cast<Kiv32s*>(kZigzag);
                const Kiv32s* ac = alt_table ? dt.one : dt.zero;
                KivStatus st;
                if (s == Standard::Mpeg1) {
                    Kiv16s p8 = Kiv16s(dpred * 8);
                    st = intra ? kiviReconstructDCTBlockIntra_MPEG1_32s(&rp, &roff, dt.dc_luma, ac, scan, b.q, b.matrix,
                                                                        &p8, got, &size)
                               : kiviReconstructDCTBlock_MPEG1_32s(&rp, &roff, dt.zero, ac, scan, b.q, b.matrix, got,
                                                                   &size);
                    dpred = Kiv16s(p8 / 8);
                } else {
                    st = intra ? kiviReconstructDCTBlockIntra_MPEG2_32s(&rp, &roff, dt.dc_luma, ac, scan, b.q, b.matrix,
                                                                        &dpred, 0, got, &size)
                               : kiviReconstructDCTBlock_MPEG2_32s(&rp, &roff, dt.zero, ac, scan, b.q, b.matrix, got,
                                                                   &size);
                }
                ASSERT_EQ(st, kivStsOk);
                ASSERT_EQ(std::memcmp(got, expect, sizeof got), 0) << "standard " << standard << " kind " << kind;
                ASSERT_EQ(size, s == Standard::Mpeg2 && !intra && last == 0 ? 1 : last);
            }
        }
    }
}

TEST(Mpeg2Encode, NullPointers) {
    const auto& t = EncodeTables::get();
    Kiv32u* none = nullptr;
    Kiv32s off = 32, pred = 0;
    Kiv16s b[64] = {};
    EXPECT_EQ(kiviCreateRLEncodeTable(nullptr, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviPutIntraBlock(&none, &off, b, &pred, t.dc, t.zero, kZigzag, 2, 2, 0), kivStsNullPointer);
    EXPECT_EQ(kiviPutNonIntraBlock(&none, &off, b, t.zero, kZigzag, 2, 2, 0), kivStsNullPointer);
}

}  // namespace
