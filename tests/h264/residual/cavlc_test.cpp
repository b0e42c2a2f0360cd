// CAVLC decoding: the code tables checked mechanically, random blocks of
// every kind written by a CAVLC writer and decoded back, the escape levels,
// the cursor after each kind of invalid code, the statuses, Exp-Golomb.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "h264/residual/cavlc_code_tables.h"
#include "h264/residual/cavlc_tables.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::test::cavlc_codes;
using kivvc::test::Rng;

// ---- the code tables ------------------------------------------------------

struct TableFacts {
    const char* name;
    Entries entries;
    std::size_t count;
    bool complete;  // Kraft sum exactly 1
};

std::vector<TableFacts> all_tables() {
    std::vector<TableFacts> t = {
        {"coeff_token 0..1", token_entries(kCoeffTokenNc0), 62, false},
        {"coeff_token 2..3", token_entries(kCoeffTokenNc2), 62, false},
        {"coeff_token 4..7", token_entries(kCoeffTokenNc4), 62, false},
        {"coeff_token -1", token_entries(kCoeffTokenChroma420), 14, true},
        {"coeff_token -2", token_entries(kCoeffTokenChroma422), 30, false},
    };
    for (int tc = 1; tc <= 15; ++tc)
        t.push_back({"total_zeros 4x4", value_entries(kTotalZeros4x4[tc]), std::size_t(17 - tc), tc > 1});
    for (int tc = 1; tc <= 3; ++tc)
        t.push_back({"total_zeros 4:2:0", value_entries(kTotalZeros420[tc]), std::size_t(5 - tc), true});
    for (int tc = 1; tc <= 7; ++tc)
        t.push_back({"total_zeros 4:2:2", value_entries(kTotalZeros422[tc]), std::size_t(9 - tc), true});
    for (int z = 1; z <= 6; ++z) t.push_back({"run_before", value_entries(kRunBefore[z]), std::size_t(z + 1), true});
    t.push_back({"run_before > 6", value_entries(kRunBefore[7]), 15, false});
    return t;
}

TEST(H264CavlcTables, CodesArePrefixFreeWithTheRightCountsAndKraftSums) {
    for (const auto& t : all_tables()) {
        EXPECT_EQ(t.entries.size(), t.count) << t.name;
        double kraft = 0;
        std::vector<int> values;
        for (const auto& [value, bits] : t.entries) {
            kraft += 1.0 / double(1u << bits.size());
            values.push_back(value);
            for (const auto& [other_value, other] : t.entries) {
                if (other_value == value) continue;
                EXPECT_NE(other.rfind(bits, 0), 0u) << t.name << ": " << bits << " prefixes " << other;
            }
        }
        std::sort(values.begin(), values.end());
        EXPECT_TRUE(std::adjacent_find(values.begin(), values.end()) == values.end()) << t.name << ": duplicate value";
        if (t.complete) EXPECT_DOUBLE_EQ(kraft, 1.0) << t.name;
        else EXPECT_LT(kraft, 1.0) << t.name;
    }
    // Every (TotalCoeff, TrailingOnes) pair with TrailingOnes <= min(3, TotalCoeff) is coded once.
    for (const auto& t : {token_entries(kCoeffTokenNc0), token_entries(kCoeffTokenChroma422)})
        for (const auto& e : t) EXPECT_LE(e.first & 0xFF, std::min(3, e.first >> 8));
}

// ---- a CAVLC writer ---------------------------------------------------------

class BitWriter {
public:
    explicit BitWriter(int skip) : bits_(std::string(std::size_t(skip), '0')) {}
    void put(const std::string& b) { bits_ += b; }
    void put(std::uint32_t v, int n) {
        for (int i = n - 1; i >= 0; --i) bits_ += ((v >> i) & 1) ? '1' : '0';
    }
    std::size_t size() const { return bits_.size(); }
    // Words, first bit in bit 31, plus `pad` words of zeros.
    std::vector<Kiv32u> words(int pad = 2) const {
        std::vector<Kiv32u> w((bits_.size() + 31) / 32 + std::size_t(pad), 0);
        for (std::size_t i = 0; i < bits_.size(); ++i)
            if (bits_[i] == '1') w[i / 32] |= 1u << (31 - i % 32);
        return w;
    }

private:
    std::string bits_;
};

enum class Kind { Block4x4, Chroma420, Chroma422 };

struct Block {
    Kind kind;
    int nC;                   // 4x4 only
    int count;                // coded coefficients: 16, 15, 4 or 8
    std::vector<int> coeffs;  // by scan position (0..count-1)
};

const std::string& token_code(const Block& b, int total, int trailing) {
    const TokenCode* table;
    std::size_t n;
    if (b.kind == Kind::Chroma420) table = kCoeffTokenChroma420, n = std::size(kCoeffTokenChroma420);
    else if (b.kind == Kind::Chroma422) table = kCoeffTokenChroma422, n = std::size(kCoeffTokenChroma422);
    else if (b.nC < 2) table = kCoeffTokenNc0, n = std::size(kCoeffTokenNc0);
    else if (b.nC < 4) table = kCoeffTokenNc2, n = std::size(kCoeffTokenNc2);
    else table = kCoeffTokenNc4, n = std::size(kCoeffTokenNc4);
    static thread_local std::string code;
    for (std::size_t i = 0; i < n; ++i)
        if (table[i].total == total && table[i].trailing == trailing) return code = table[i].bits;
    ADD_FAILURE() << "no coeff_token for " << total << "/" << trailing;
    return code = "";
}

// Writes one level with the decoder's suffixLength rules; returns the new suffixLength.
int put_level(BitWriter& w, int level, int suffix, bool first, int trailing) {
    int code = level > 0 ? 2 * level - 2 : -2 * level - 1;
    if (first && trailing < 3) code -= 2;
    if (suffix == 0 && code < 14) {
        w.put(std::string(std::size_t(code), '0') + "1");
    } else if (suffix == 0 && code < 30) {
        w.put(std::string(14, '0') + "1");
        w.put(std::uint32_t(code - 14), 4);
    } else if (suffix > 0 && code < (15 << suffix)) {
        w.put(std::string(std::size_t(code >> suffix), '0') + "1");
        w.put(std::uint32_t(code & ((1 << suffix) - 1)), suffix);
    } else {
        const int rest = code - (15 << suffix) - (suffix == 0 ? 15 : 0);
        if (rest < 4096) {
            w.put(std::string(15, '0') + "1");
            w.put(std::uint32_t(rest), 12);
        } else {
            int prefix = 16;
            while (rest + 4096 >= (1 << (prefix - 2))) ++prefix;
            w.put(std::string(std::size_t(prefix), '0') + "1");
            w.put(std::uint32_t(rest + 4096 - (1 << (prefix - 3))), prefix - 3);
        }
    }
    const int magnitude = level < 0 ? -level : level;
    if (first) return magnitude > 3 ? 2 : std::max(suffix, 1);
    if (suffix < 6 && magnitude > kivvc::h264::cavlc::vlc_inc[suffix]) return suffix + 1;
    return suffix;
}

void put_block(BitWriter& w, const Block& b) {
    std::vector<int> levels, positions;  // highest frequency first
    for (int k = b.count - 1; k >= 0; --k)
        if (b.coeffs[k]) levels.push_back(b.coeffs[k]), positions.push_back(k);
    const int total = int(levels.size());
    int trailing = 0;
    while (trailing < total && trailing < 3 && (levels[trailing] == 1 || levels[trailing] == -1)) ++trailing;
    if (b.kind == Kind::Block4x4 && b.nC >= 8) {
        w.put(total == 0 ? 3u : std::uint32_t(((total - 1) << 2) | trailing), 6);
    } else {
        w.put(token_code(b, total, trailing));
    }
    if (total == 0) return;
    for (int i = 0; i < trailing; ++i) w.put(levels[i] < 0 ? "1" : "0");
    int suffix = (total > 10 && trailing < 3) ? 1 : 0;
    for (int i = trailing; i < total; ++i) suffix = put_level(w, levels[i], suffix, i == trailing, trailing);
    int zeros = total < b.count ? positions[0] + 1 - total : 0;
    if (total < b.count) {
        const auto& tz = b.kind == Kind::Block4x4 ? kTotalZeros4x4 : b.kind == Kind::Chroma420 ? kTotalZeros420 : kTotalZeros422;
        w.put(tz[std::size_t(total)][std::size_t(zeros)]);
    }
    for (int i = 0; i + 1 < total && zeros > 0; ++i) {
        const int run = positions[i] - positions[i + 1] - 1;
        w.put(kRunBefore[std::size_t(std::min(zeros, 7))][std::size_t(run)]);
        zeros -= run;
    }
}

// Raster index of each scan position (a field-like scan, not the identity).
const Kiv32s kScan[16] = {0, 4, 1, 8, 12, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};

int raster_of(const Block& b, int k) {
    if (b.kind == Kind::Block4x4) return kScan[16 - b.count + k];
    if (b.kind == Kind::Chroma422) return kivvc::h264::cavlc::ChromaDC422RasterScan[k];
    return k;
}

int size_of(Kind k) { return k == Kind::Block4x4 ? 16 : k == Kind::Chroma420 ? 4 : 8; }

int random_level(Rng& rng) {
    switch (rng.range(0, 9)) {
        case 0: return rng.range(-32768, 32767) | 1;
        case 1: return rng.range(-3000, 3000) | 1;
        case 2: case 3: return rng.range(-40, 40) | 1;
        default: return rng.chance(2) ? 1 : -1;
    }
}

Block random_block(Rng& rng, Kind kind) {
    Block b{kind, rng.range(0, 12), 0, {}};
    b.count = kind == Kind::Block4x4 ? (rng.chance(2) ? 16 : 15) : size_of(kind);
    b.coeffs.assign(std::size_t(b.count), 0);
    const int density = rng.range(0, 4);
    for (int& c : b.coeffs)
        if (density == 4 || rng.range(0, 3) < density) c = random_level(rng);
    return b;
}

// Decodes one block with the function under test.
template <class Coeff>
KivStatus decode(const Block& b, const BuiltTables& t, Kiv32u** word, Kiv32s* offset, Kiv16s* count, Coeff** out) {
    auto zeros = const_cast<const Kiv32s**>(b.kind == Kind::Block4x4 ? t.zeros4x4 : b.kind == Kind::Chroma420 ? t.zeros420 : t.zeros422);
    auto runs = const_cast<const Kiv32s**>(t.runs);
    auto tokens = const_cast<const Kiv32s**>(t.token4x4);
    if constexpr (sizeof(Coeff) == 2) {
        if (b.kind == Kind::Block4x4)
            return kiviDecodeCAVLCCoeffs_H264_1u16s(word, offset, count, out, b.nC, Kiv16s(b.count), tokens, zeros, runs, kScan);
        if (b.kind == Kind::Chroma420) return kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(word, offset, count, out, t.token420, zeros, runs);
        return kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s(word, offset, count, out, t.token422, zeros, runs);
    } else {
        if (b.kind == Kind::Block4x4)
            return kiviDecodeCAVLCCoeffs_H264_1u32s(word, offset, count, out, b.nC, Kiv16s(b.count), tokens, zeros, runs, kScan);
        if (b.kind == Kind::Chroma420) return kiviDecodeCAVLCChromaDcCoeffs_H264_1u32s(word, offset, count, out, t.token420, zeros, runs);
        return kiviDecodeCAVLCChroma422DcCoeffs_H264_1u32s(word, offset, count, out, t.token422, zeros, runs);
    }
}

template <class Coeff>
void round_trip(Kind kind, std::uint64_t seed) {
    static const BuiltTables tables;
    Rng rng(seed);
    for (int run = 0; run < 300; ++run) {
        const int start = rng.range(0, 31);
        BitWriter w(start);
        std::vector<Block> blocks;
        std::vector<std::size_t> ends;
        for (int i = rng.range(1, 6); i > 0; --i) {
            blocks.push_back(random_block(rng, kind));
            put_block(w, blocks.back());
            ends.push_back(w.size());
        }
        auto words = w.words();
        Kiv32u* word = words.data();
        Kiv32s offset = 31 - start;
        std::vector<Coeff> buffer(blocks.size() * 16 + 4, Coeff(0x5555));
        Coeff* out = buffer.data();
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            const Block& b = blocks[i];
            Kiv16s count = -1;
            Coeff* before = out;
            ASSERT_EQ(decode(b, tables, &word, &offset, &count, &out), kivStsOk) << "run " << run << " block " << i;
            const int total = int(std::count_if(b.coeffs.begin(), b.coeffs.end(), [](int c) { return c != 0; }));
            ASSERT_EQ(count, total);
            ASSERT_EQ(std::size_t(word - words.data()) * 32 + std::size_t(31 - offset), ends[i]) << "cursor, run " << run;
            if (total == 0) {
                ASSERT_EQ(out, before);
                continue;
            }
            ASSERT_EQ(out, before + size_of(kind));
            std::vector<Coeff> want(std::size_t(size_of(kind)), 0);
            for (int k = 0; k < b.count; ++k) want[std::size_t(raster_of(b, k))] = Coeff(b.coeffs[std::size_t(k)]);
            ASSERT_EQ(std::vector<Coeff>(before, out), want) << "run " << run << " block " << i;
        }
        ASSERT_EQ(out[0], Coeff(0x5555));  // nothing beyond the last block
    }
}

TEST(H264Cavlc, RandomBlocksRoundTrip) {
    round_trip<Kiv16s>(Kind::Block4x4, 1);
    round_trip<Kiv32s>(Kind::Block4x4, 2);
    round_trip<Kiv16s>(Kind::Chroma420, 3);
    round_trip<Kiv32s>(Kind::Chroma420, 4);
    round_trip<Kiv16s>(Kind::Chroma422, 5);
    round_trip<Kiv32s>(Kind::Chroma422, 6);
}

TEST(H264Cavlc, EscapeLevels) {
    // level_prefix 14 (suffixLength 0, 4 suffix bits), 15 (12 bits) and 16+.
    static const BuiltTables tables;
    for (int level : {8, -9, 15, -16, 17, 2063, -2064, 2065, 4000, -32768, 32767}) {
        for (int first : {0, 1}) {
            Block b{Kind::Block4x4, 0, 16, std::vector<int>(16, 0)};
            b.coeffs[0] = first ? level : 5;
            b.coeffs[3] = first ? 2 : level;
            BitWriter w(0);
            put_block(w, b);
            auto words = w.words();
            Kiv32u* word = words.data();
            Kiv32s offset = 31;
            std::array<Kiv16s, 16> out16{};
            std::array<Kiv32s, 16> out32{};
            Kiv16s* p16 = out16.data();
            Kiv32s* p32 = out32.data();
            Kiv16s count;
            ASSERT_EQ(decode(b, tables, &word, &offset, &count, &p16), kivStsOk) << level;
            word = words.data(), offset = 31;
            ASSERT_EQ(decode(b, tables, &word, &offset, &count, &p32), kivStsOk) << level;
            EXPECT_EQ(out16[kScan[0]], Kiv16s(b.coeffs[0])) << level;
            EXPECT_EQ(out16[kScan[3]], Kiv16s(b.coeffs[3])) << level;
            EXPECT_EQ(out32[kScan[3]], b.coeffs[3]) << level;
        }
    }
}

TEST(H264Cavlc, SixBitTokenAndEmptyBlocks) {
    static const BuiltTables tables;
    // nC >= 8: 000011 is TotalCoeff 0; the count is written, nothing else.
    std::vector<Kiv32u> words = {0x0C000000u, 0};
    Kiv32u* word = words.data();
    Kiv32s offset = 31;
    Kiv16s count = 9;
    std::array<Kiv16s, 16> out;
    out.fill(7);
    Kiv16s* p = out.data();
    ASSERT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p, 8, 16, const_cast<const Kiv32s**>(tables.token4x4),
                                               const_cast<const Kiv32s**>(tables.zeros4x4), const_cast<const Kiv32s**>(tables.runs), kScan),
              kivStsOk);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(offset, 25);
    EXPECT_EQ(p, out.data());
    EXPECT_EQ(out[0], 7);
    // 4:2:0 fast path: 01 is TotalCoeff 0 (2 bits); 1 s xxx is one level.
    words = {0x74000000u, 0};  // 01, then 1 1 01(0): -1 at raster 1 (total_zeros 1), 4 bits
    word = words.data(), offset = 31;
    ASSERT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, &p, nullptr, nullptr, nullptr), kivStsOk);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(offset, 29);
    ASSERT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, &p, nullptr, nullptr, nullptr), kivStsOk);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(offset, 25);
    EXPECT_EQ(p, out.data() + 4);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], -1);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[3], 0);
}

// ---- invalid codes ------------------------------------------------------------

TEST(H264Cavlc, CursorAfterInvalidCodes) {
    static const BuiltTables tables;
    const auto tokens = const_cast<const Kiv32s**>(tables.token4x4);
    const auto zeros = const_cast<const Kiv32s**>(tables.zeros4x4);
    const auto runs = const_cast<const Kiv32s**>(tables.runs);
    std::array<Kiv16s, 16> out16;
    std::array<Kiv32s, 16> out32;
    Kiv16s count;

    // Sixteen zero bits are no coeff_token at nC 0: every decoder restores the cursor.
    std::vector<Kiv32u> words = {0x00001234u, 0x0, 0};
    for (int which = 0; which < 2; ++which) {
        Kiv32u* word = words.data();
        Kiv32s offset = 31;
        Kiv16s* p16 = out16.data();
        Kiv32s* p32 = out32.data();
        const KivStatus s = which ? kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 16, tokens, zeros, runs, kScan)
                                  : kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p16, 0, 16, tokens, zeros, runs, kScan);
        EXPECT_EQ(s, kivStsBadVlcCode);
        EXPECT_EQ(word, words.data());
        EXPECT_EQ(offset, 31);
    }

    // A total_zeros table without a code for the bits that follow: the 16-bit
    // 4x4 decoder restores the cursor, the 32-bit one stops after the lookup.
    // Block: coeff_token "01" (TotalCoeff 1, one trailing one), sign "0",
    // then total_zeros bits "0..." that the one-code table {"1"} lacks.
    std::vector<Kiv32s*> owned;
    const Kiv32s* partial = BuiltTables::build(value_entries({"1"}), {3}, &owned);
    const Kiv32s* zeros_partial[16];
    for (auto& z : zeros_partial) z = partial;
    words = {0x40000000u, 0, 0};  // 01 0 000...
    {
        Kiv32u* word = words.data();
        Kiv32s offset = 31;
        Kiv16s* p16 = out16.data();
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p16, 0, 16, tokens, zeros_partial, runs, kScan), kivStsBadVlcCode);
        EXPECT_EQ(offset, 31);
        EXPECT_EQ(p16, out16.data());
        Kiv32s* p32 = out32.data();
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 16, tokens, zeros_partial, runs, kScan), kivStsBadVlcCode);
        EXPECT_EQ(offset, 31 - 3 - 3);  // token, sign, then the 3-bit lookup
        EXPECT_EQ(count, 1);
        EXPECT_EQ(p32, out32.data());
        // A null total_zeros entry: -8 from the 32-bit decoder, cursor past the sign.
        const Kiv32s* zeros_null[16] = {};
        word = words.data(), offset = 31;
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 16, tokens, zeros_null, runs, kScan), kivStsNullPointer);
        EXPECT_EQ(offset, 28);
    }
    for (Kiv32s* t : owned) kiviHuffmanTableFree_32s(t);

    // A level_prefix of 27 zeros is corrupt.
    {
        BitWriter v(0);
        v.put("000101");  // TotalCoeff 1, no trailing ones
        v.put(std::string(27, '0') + "1");
        words = v.words();
        Kiv32u* word = words.data();
        Kiv32s offset = 31;
        Kiv16s* p16 = out16.data();
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p16, 0, 16, tokens, zeros, runs, kScan), kivStsBadVlcCode);
        EXPECT_EQ(offset, 31);
        Kiv32s* p32 = out32.data();
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 16, tokens, zeros, runs, kScan), kivStsBadVlcCode);
        EXPECT_EQ(offset, 31 - 6);  // left at the start of the level
    }

    // total_zeros + TotalCoeff beyond a 15-coefficient block: TotalCoeff 1 and
    // total_zeros 15 fit 16 coefficients but not 15.
    {
        BitWriter w(0);
        w.put("01");         // TotalCoeff 1, one trailing one
        w.put("0");          // +1
        w.put("000000001");  // total_zeros 15
        words = w.words();
        Kiv32u* word = words.data();
        Kiv32s offset = 31;
        Kiv32s* p32 = out32.data();
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 15, tokens, zeros, runs, kScan), kivStsBadVlcCode);
        word = words.data(), offset = 31;
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 16, tokens, zeros, runs, kScan), kivStsOk);
        EXPECT_EQ(out32[kScan[15]], 1);
    }

    // run_before above zerosLeft (zerosLeft 7 reads the > 6 column, which holds
    // runs up to 14): the 16-bit decoder keeps zerosLeft, the others refuse.
    {
        BitWriter w(0);
        w.put("001");        // TotalCoeff 2, two trailing ones
        w.put("00");         // +1, +1
        w.put("0010");       // total_zeros 8
        w.put("0000000001"); // run_before 13 with zerosLeft 8
        words = w.words();
        Kiv32u* word = words.data();
        Kiv32s offset = 31;
        Kiv16s* p16 = out16.data();
        ASSERT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p16, 0, 16, tokens, zeros, runs, kScan), kivStsOk);
        // zerosLeft stays 8: the levels sit at scan positions 9 and 8.
        EXPECT_EQ(out16[kScan[9]], 1);
        EXPECT_EQ(out16[kScan[8]], 1);
        word = words.data(), offset = 31;
        Kiv32s* p32 = out32.data();
        EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 16, tokens, zeros, runs, kScan), kivStsBadVlcCode);
        EXPECT_EQ(offset, 31 - 3 - 2 - 4 - 10);
    }
}

TEST(H264Cavlc, StatusesInCheckOrder) {
    static const BuiltTables tables;
    const auto tokens = const_cast<const Kiv32s**>(tables.token4x4);
    const auto zeros = const_cast<const Kiv32s**>(tables.zeros4x4);
    const auto runs = const_cast<const Kiv32s**>(tables.runs);
    std::vector<Kiv32u> words = {0, 0};
    Kiv32u* word = words.data();
    Kiv32u* null_word = nullptr;
    Kiv32s offset = 31;
    Kiv16s count;
    std::array<Kiv16s, 16> out;
    Kiv16s* p = out.data();
    Kiv16s* null_p = nullptr;
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p, 0, 16, tokens, zeros, runs, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&null_word, &offset, &count, &p, -1, 14, tokens, zeros, runs, kScan), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &null_p, -1, 14, tokens, zeros, runs, kScan), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p, -1, 14, tokens, zeros, runs, kScan), kivStsOutOfRange);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p, -1, 15, tokens, zeros, runs, kScan), kivStsOutOfRange);
    Kiv32s* p32 = nullptr;
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u32s(&word, &offset, &count, &p32, 0, 16, tokens, zeros, runs, kScan), kivStsNullPointer);
    // 4:2:0 16-bit: with a leading 1 bit only the coefficient pointer is needed;
    // with 01 nothing is.
    words[0] = 0x80000000u;
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, nullptr, nullptr, nullptr, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, &p, nullptr, nullptr, nullptr), kivStsOk);
    words[0] = 0x0;
    offset = 31;
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, &p, tables.token420, nullptr, runs), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u32s(&word, &offset, &count, &p32, tables.token420, zeros, runs), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s(&null_word, &offset, &count, &p, tables.token422, zeros, runs), kivStsNullPointer);
}

// ---- Exp-Golomb ---------------------------------------------------------------

TEST(H264Cavlc, ExpGolomb) {
    Kiv16s v;
    // 1 | 010 | 011 | 00100: ue 0, 1, 2, 3; se 0, 1, -1, 2.
    for (Kiv8u se : {Kiv8u(0), Kiv8u(1)}) {
        std::vector<Kiv32u> words = {0xA6400000u, 0};
        Kiv32u* word = words.data();
        Kiv32s offset = 31;
        const int want[2][4] = {{0, 1, 2, 3}, {0, 1, -1, 2}};
        for (int i = 0; i < 4; ++i) {
            ASSERT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&word, &offset, &v, se), kivStsOk);
            EXPECT_EQ(v, want[se][i]);
        }
        EXPECT_EQ(offset, 31 - 12);
    }
    // A 31-zero prefix spans three words: 2 * 31 + 1 bits from offset 3.
    std::vector<Kiv32u> words = {0, 0, 0x40000000u, 0};
    Kiv32u* word = words.data();
    Kiv32s offset = 3;       // the last 4 bits of word 0
    words[1] = 0x00000010u;  // then 27 zeros and the terminating 1
    ASSERT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&word, &offset, &v, 0), kivStsOk);
    EXPECT_EQ(word, words.data() + 2);
    EXPECT_EQ(offset, 31 - (63 - 36));
    EXPECT_EQ(v, Kiv16s(0xFFFF));  // codeNum 2^31 - 1, low 16 bits
    // Statuses.
    offset = 32;
    EXPECT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&word, &offset, &v, 0), kivStsBadArgument);
    Kiv32u* null_word = nullptr;
    EXPECT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&null_word, &offset, &v, 0), kivStsNullPointer);
    words = {0, 0, 0};
    word = words.data(), offset = 31;
    EXPECT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&word, &offset, &v, 0), kivStsBadVlcCode);
    EXPECT_EQ(offset, 31);
}

}  // namespace
