// Block decoders against an independent encoder and the dequantisation
// formulas; the decoders' error states; the in-place dequantisers.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "mpeg2/block_coding.h"

namespace {

using namespace kivvc::test::mpeg2;
using kivvc::bits::WordWriter;
using kivvc::test::Rng;

struct Case {
    Standard s;
    bool intra;
    bool table_one;  // MPEG-2 intra blocks may use the alternative table
};

struct Expected {
    Kiv16s block[64];
    Kiv32s size;
    Kiv16s predictor;
};

// Draws one block, writes it and returns what decoding must give. A null
// matrix stands for the flat weight 16 (MPEG-2 non-intra only).
Expected write_random_block(Rng& rng, const Case& c, WordWriter& w, const std::vector<Kiv32s>& scan,
                            const Kiv16s* matrix, int q, Kiv16s predictor, int dc_shift) {
    Expected e{};
    const int max_level = c.s == Standard::Mpeg2 ? 2047 : 255;
    int index = -1;
    if (c.intra) {
        const int d = rng.range(-2047, 2047);
        put_dc(w, d);
        e.predictor = Kiv16s(predictor + (c.s == Standard::Mpeg1 ? 8 * d : d));
        e.block[0] = c.s == Standard::Mpeg1 ? e.predictor : Kiv16s(e.predictor * (1 << dc_shift));
        index = 0;
    }
    const int count = rng.range(c.intra ? 0 : 1, rng.chance(4) ? 63 : 8);
    for (int n = 0; n < count && index < 63; ++n) {
        const int run = rng.chance(3) ? rng.range(0, 63 - index - 1) : rng.range(0, 2);
        const int i = index + 1 + (run > 62 - index ? 62 - index : run);
        int level = rng.chance(4) ? rng.range(1, max_level) : rng.range(1, 3);
        if (rng.chance(2)) level = -level;
        if (!c.intra && index < 0 && i == 0 && (level == 1 || level == -1))
            w.put(level == 1 ? 2u : 3u, 2);  // "1s"
        else
            put_pair(w, CodeBook::get(c.table_one), c.s, i - index - 1, level);
        e.block[scan[i]] = Kiv16s(dequant(c.s, c.intra, level, matrix ? matrix[scan[i]] : 16, q));
        index = i;
    }
    const Code& eob = CodeBook::get(c.table_one).eob();
    w.put(eob.bits, eob.length);
    if (c.s == Standard::Mpeg2) mismatch(e.block);
    e.size = c.s == Standard::Mpeg2 && !c.intra && index == 0 ? 1 : index;
    return e;
}

TEST(Mpeg2BlockDecoder, MatchesAnIndependentEncoderForRandomBlocks) {
    const Case cases[] = {{Standard::Mpeg1, false, false},
                          {Standard::Mpeg1, true, false},
                          {Standard::Mpeg2, false, false},
                          {Standard::Mpeg2, true, false},
                          {Standard::Mpeg2, true, true}};
    Rng rng(2024);
    for (const Case& c : cases) {
        for (int round = 0; round < 60; ++round) {
            auto scan = random_scan(rng);
            Kiv16s matrix[64];
            for (auto& m : matrix) m = Kiv16s(rng.range(1, 255));
            Kiv16s* m = c.s == Standard::Mpeg2 && !c.intra && rng.chance(4) ? nullptr : matrix;
            const int q = rng.range(1, 112), dc_shift = rng.range(0, 3), start = rng.range(1, 32);
            std::vector<Kiv32u> words(64 * 40 + 2, 0);
            WordWriter w = WordWriter::load(words.data(), start);
            std::vector<Expected> expect;
            Kiv16s predictor = Kiv16s(rng.range(-2048, 2047)), pred = predictor;
            for (int b = 0; b < 40; ++b) {
                expect.push_back(write_random_block(rng, c, w, scan, m, q, pred, dc_shift));
                pred = expect.back().predictor;
            }
            Kiv32u* p = words.data();
            Kiv32s off = start - 1;
            pred = predictor;
            for (const Expected& e : expect) {
                Kiv16s block[64];
                Kiv32s size = -7;
                ASSERT_EQ(decode_block(c.s, c.intra, c.table_one, &p, &off, scan.data(), q, m, &pred, dc_shift, block,
                                       &size),
                          kivStsOk);
                ASSERT_EQ(std::memcmp(block, e.block, sizeof block), 0)
                    << "standard " << int(c.s) << " intra " << c.intra << " matrix " << (m != nullptr);
                ASSERT_EQ(size, e.size);
                if (c.intra) {
                    ASSERT_EQ(pred, e.predictor);
                }
            }
            EXPECT_EQ(p, w.word);
            EXPECT_EQ(off, w.free_bits - 1);
        }
    }
}

// Bits given as a string in a fresh buffer.
struct Stream {
    Kiv32u words[8] = {};
    Kiv32u* p = words;
    Kiv32s off = 31;
    explicit Stream(const char* bits) {
        WordWriter w = WordWriter::load(words, 32);
        for (const char* b = bits; *b; ++b)
            if (*b != ' ') w.put(*b == '1', 1);
    }
    int consumed() const { return int(p - words) * 32 + 31 - off; }
};

TEST(Mpeg2BlockDecoder, ErrorsLeaveTheDocumentedState) {
    const auto& t = Tables::get();
    Kiv32s scan[64];
    for (int i = 0; i < 64; ++i) scan[i] = i;
    Kiv16s flat[64], block[64];
    for (auto& f : flat) f = 16;
    Kiv32s size = -5;
    // "1s", then an escape with run 63: index 64. The size stays unwritten.
    Stream a("10 000001 111111 000000000001");
    EXPECT_EQ(kiviReconstructDCTBlock_MPEG2_32s(&a.p, &a.off, t.zero, t.zero, scan, 2, flat, block, &size),
              kivStsBadVlcCode);
    EXPECT_EQ(a.consumed(), 2 + 24);
    EXPECT_EQ(block[0], 3);
    EXPECT_EQ(size, -5);
    // An empty entry (twelve zero bits) ends in the index check.
    Stream b("0000 0000 0000 0000");
    EXPECT_EQ(kiviReconstructDCTBlock_MPEG1_32s(&b.p, &b.off, t.zero, t.zero, scan, 2, flat, block, &size),
              kivStsBadVlcCode);
    EXPECT_EQ(size, -5);
    // Invalid DC size code: the cursor stays after the lookup bits (no
    // give-back); the block is zeroed, the predictor untouched.
    Kiv32s one_level[] = {0, 1, 4, 0, 1, 1, 3, -1};  // only "01" is a code
    Kiv32s* dc = nullptr;
    ASSERT_EQ(kiviHuffmanTableInitAlloc_32s(one_level, &dc), kivStsOk);
    Stream c("1111");
    Kiv16s pred = 9;
    block[5] = 1;
    EXPECT_EQ(kiviReconstructDCTBlockIntra_MPEG1_32s(&c.p, &c.off, dc, t.zero, scan, 2, flat, &pred, block, &size),
              kivStsBadVlcCode);
    EXPECT_EQ(c.consumed(), 4);
    EXPECT_EQ(pred, 9);
    EXPECT_EQ(block[5], 0);
    kiviHuffmanTableFree_32s(dc);
    // An error after the DC: the predictor is already updated.
    Stream d("00 1 000001 111111 00000001");  // size 1, d = 1; escape run 63 -> index 64
    EXPECT_EQ(kiviReconstructDCTBlockIntra_MPEG1_32s(&d.p, &d.off, t.dc_luma, t.zero, scan, 2, flat, &pred, block,
                                                     &size),
              kivStsBadVlcCode);
    EXPECT_EQ(pred, 17);
    EXPECT_EQ(block[0], 17);
}

TEST(Mpeg2BlockDecoder, NullPointers) {
    const auto& t = Tables::get();
    Kiv32s scan[64] = {}, size;
    Kiv16s m[64] = {}, block[64], pred = 0;
    Kiv32u* none = nullptr;
    Kiv32s off = 31;
    // The matrix of MPEG-1 is required; the current word is tested after the
    // direct pointers.
    EXPECT_EQ(kiviReconstructDCTBlock_MPEG1_32s(&none, &off, t.zero, t.zero, scan, 1, nullptr, block, &size),
              kivStsNullPointer);
    EXPECT_EQ(
        kiviReconstructDCTBlockIntra_MPEG2_32s(&none, &off, t.dc_luma, t.zero, scan, 1, m, &pred, 0, block, &size),
        kivStsNullPointer);
}

TEST(Mpeg2QuantInv, MatchesTheFormulasIncludingExtremeOperands) {
    Rng rng(99);
    const Kiv32s qs[] = {1, 2, 31, 112, 32767, 65536, 1 << 30, 2147483647, -5, -2147483647 - 1};
    for (int round = 0; round < 400; ++round) {
        Kiv16s block[64], matrix[64], expect[64];
        const bool extreme = rng.chance(2);
        for (int i = 0; i < 64; ++i) {
            block[i] = Kiv16s(extreme ? rng.range(-32768, 32767) : rng.range(-20, 20));
            matrix[i] = Kiv16s(extreme ? rng.range(-32768, 32767) : rng.range(1, 255));
        }
        const bool intra = rng.chance(2);
        const bool no_matrix = !intra && rng.chance(3);
        const Kiv32s q = extreme ? qs[rng.range(0, 9)] : rng.range(1, 112);
        for (int i = 0; i < 64; ++i)
            expect[i] = intra && i == 0
                            ? block[0]
                            : Kiv16s(dequant(Standard::Mpeg2, intra, block[i], no_matrix ? 16 : matrix[i], q));
        mismatch(expect);
        const KivStatus st = intra ? kiviQuantInvIntra_MPEG2_16s_C1I(block, q, matrix)
                                   : kiviQuantInv_MPEG2_16s_C1I(block, q, no_matrix ? nullptr : matrix);
        ASSERT_EQ(st, kivStsOk);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(block[i], expect[i]) << "round " << round << " at " << i << " q " << q;
    }
    Kiv16s b[64] = {};
    EXPECT_EQ(kiviQuantInvIntra_MPEG2_16s_C1I(b, 1, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInv_MPEG2_16s_C1I(nullptr, 1, nullptr), kivStsNullPointer);
}

}  // namespace
