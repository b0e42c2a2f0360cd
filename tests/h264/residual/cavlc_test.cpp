// CAVLC: the code tables checked mechanically; a CAVLC writer here codes
// random blocks of every kind, which the decoders must read back and whose
// symbols, as the symbol analysis finds them, must give the same bits; the
// escape levels, the cursor after each kind of invalid code, the statuses,
// Exp-Golomb.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "h264/residual/cavlc_code_tables.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::test::cavlc_codes;
using kivvc::test::Rng;

const Kiv32s** arr(const Kiv32s* const* p) { return const_cast<const Kiv32s**>(p); }

const BuiltTables& tables() {
    static const BuiltTables t;
    return t;
}

// The 16-bit or the 32-bit member of a pair.
template <class T, class F16, class F32>
auto pick(F16 f16, F32 f32) {
    if constexpr (sizeof(T) == 2) return f16;
    else return f32;
}

// ---- the code tables ------------------------------------------------------

TEST(H264CavlcTables, CodesArePrefixFreeWithTheRightCountsAndKraftSums) {
    struct Facts {
        const char* name;
        Entries entries;
        std::size_t count;
        bool complete;  // Kraft sum exactly 1
    };
    std::vector<Facts> all = {
        {"coeff_token 0..1", token_entries(kCoeffTokenNc0), 62, false},
        {"coeff_token 2..3", token_entries(kCoeffTokenNc2), 62, false},
        {"coeff_token 4..7", token_entries(kCoeffTokenNc4), 62, false},
        {"coeff_token -1", token_entries(kCoeffTokenChroma420), 14, true},
        {"coeff_token -2", token_entries(kCoeffTokenChroma422), 30, false},
    };
    for (int tc = 1; tc <= 15; ++tc)
        all.push_back({"total_zeros 4x4", value_entries(kTotalZeros4x4[tc]), std::size_t(17 - tc), tc > 1});
    for (int tc = 1; tc <= 3; ++tc)
        all.push_back({"total_zeros 4:2:0", value_entries(kTotalZeros420[tc]), std::size_t(5 - tc), true});
    for (int tc = 1; tc <= 7; ++tc)
        all.push_back({"total_zeros 4:2:2", value_entries(kTotalZeros422[tc]), std::size_t(9 - tc), true});
    for (int z = 1; z <= 6; ++z) all.push_back({"run_before", value_entries(kRunBefore[z]), std::size_t(z + 1), true});
    all.push_back({"run_before > 6", value_entries(kRunBefore[7]), 15, false});
    for (const auto& t : all) {
        SCOPED_TRACE(t.name);
        EXPECT_EQ(t.entries.size(), t.count);
        double kraft = 0;
        std::vector<int> values;
        for (const auto& [value, bits] : t.entries) {
            kraft += 1.0 / double(1u << bits.size());
            values.push_back(value);
            // TrailingOnes <= min(3, TotalCoeff) in the coeff_token tables.
            EXPECT_TRUE(t.count <= 16 || (value & 0xFF) <= std::min(3, value >> 8));
            for (const auto& [other_value, other] : t.entries)
                EXPECT_TRUE(other_value == value || other.rfind(bits, 0) != 0) << bits << " prefixes " << other;
        }
        std::sort(values.begin(), values.end());
        EXPECT_TRUE(std::adjacent_find(values.begin(), values.end()) == values.end()) << "duplicate value";
        if (t.complete) EXPECT_DOUBLE_EQ(kraft, 1.0);
        else EXPECT_LT(kraft, 1.0);
    }
}

// ---- a CAVLC writer -----------------------------------------------------------

enum class Kind { Block4x4, Chroma420, Chroma422 };
int size_of(Kind k) { return k == Kind::Block4x4 ? 16 : k == Kind::Chroma420 ? 4 : 8; }

// Raster index of each scan position of a 4x4 block (a field-like scan, not
// the identity) and of the 4:2:2 chroma DC block (2 wide, 4 high).
const Kiv32s kScan[16] = {0, 4, 1, 8, 12, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
const int kChroma422Raster[8] = {0, 2, 1, 4, 6, 3, 5, 7};

// The symbols of one block. Levels are those that are not trailing ones, and
// runs[i] the zeros before coefficient i, both highest frequency first.
struct Symbols {
    int trailing = 0, signs = 0, total = 0, zeros = 0;  // signs: the first trailing one in the highest bit
    int levels[16] = {}, runs[16] = {};
};

// The symbols of coefficients given in coding order.
Symbols symbols_of(const std::vector<int>& coeffs) {
    std::vector<int> pos;
    for (int k = int(coeffs.size()) - 1; k >= 0; --k)
        if (coeffs[std::size_t(k)]) pos.push_back(k);
    const auto at = [&](int i) { return coeffs[std::size_t(pos[std::size_t(i)])]; };
    Symbols s;
    s.total = int(pos.size());
    for (; s.trailing < std::min(3, s.total) && std::abs(at(s.trailing)) == 1; ++s.trailing)
        s.signs = (s.signs << 1) | (at(s.trailing) < 0);
    for (int i = s.trailing; i < s.total; ++i) s.levels[i - s.trailing] = at(i);
    for (int i = 0; i + 1 < s.total; ++i) s.runs[i] = pos[std::size_t(i)] - pos[std::size_t(i) + 1] - 1;
    s.zeros = s.total ? pos[0] + 1 - s.total : int(coeffs.size());
    return s;
}

void put_bits(std::string& w, int v, int n) {
    while (n-- > 0) w += (v >> n) & 1 ? '1' : '0';
}
void put_prefix(std::string& w, int zeros) { w += std::string(std::size_t(zeros), '0') + '1'; }

// One level_prefix and level_suffix; returns the next suffixLength.
int put_level(std::string& w, int level, int suffixLength, bool lowered) {
    const int code = (level > 0 ? 2 * level - 2 : -2 * level - 1) - (lowered ? 2 : 0);
    if (suffixLength == 0 && code < 14) {
        put_prefix(w, code);
    } else if (suffixLength == 0 && code < 30) {
        put_prefix(w, 14), put_bits(w, code - 14, 4);
    } else if (suffixLength > 0 && code < (15 << suffixLength)) {
        put_prefix(w, code >> suffixLength), put_bits(w, code, suffixLength);
    } else {
        // Escapes: level_prefix 15 carries 12 suffix bits, each further one a bit more.
        const int rest = code - (15 << suffixLength) - (suffixLength == 0 ? 15 : 0);
        int prefix = 15;
        while (rest + 4096 >= (1 << (prefix - 2))) ++prefix;
        put_prefix(w, prefix), put_bits(w, rest + 4096 - (1 << (prefix - 3)), prefix - 3);
    }
    if (suffixLength == 0) suffixLength = 1;
    if (std::abs(level) > (3 << (suffixLength - 1)) && suffixLength < 6) ++suffixLength;
    return suffixLength;
}

std::string token_code(Kind kind, int nC, int total, int trailing) {
    const auto find = [&](const auto& table) -> std::string {
        for (const auto& c : table)
            if (c.total == total && c.trailing == trailing) return c.bits;
        return "?";  // never a valid code: the decoder test fails
    };
    if (kind == Kind::Chroma420) return find(kCoeffTokenChroma420);
    if (kind == Kind::Chroma422) return find(kCoeffTokenChroma422);
    if (nC >= 8) {
        std::string w;
        put_bits(w, total ? ((total - 1) << 2) | trailing : 3, 6);
        return w;
    }
    return nC < 2 ? find(kCoeffTokenNc0) : nC < 4 ? find(kCoeffTokenNc2) : find(kCoeffTokenNc4);
}

// The bits of one block as '0' and '1' characters; maxCoeff is the number of
// coefficients coded (16 or 15 for 4x4 blocks).
std::string cavlc_bits(Kind kind, int nC, int maxCoeff, const Symbols& s) {
    std::string w = token_code(kind, nC, s.total, s.trailing);
    if (!s.total) return w;
    put_bits(w, s.signs, s.trailing);
    int suffixLength = s.total > 10 && s.trailing < 3 ? 1 : 0;
    for (int i = 0; i < s.total - s.trailing; ++i)
        suffixLength = put_level(w, s.levels[i], suffixLength, i == 0 && s.trailing < 3);
    const auto& zeros = kind == Kind::Block4x4 ? kTotalZeros4x4 : kind == Kind::Chroma420 ? kTotalZeros420 : kTotalZeros422;
    if (s.total < maxCoeff) w += zeros[std::size_t(s.total)][std::size_t(s.zeros)];
    for (int i = 0, left = s.zeros; i + 1 < s.total && left > 0; left -= s.runs[i++])
        w += kRunBefore[std::size_t(std::min(left, 7))][std::size_t(s.runs[i])];
    return w;
}

// Decoder words, first bit in bit 31, with two words of zeros after the bits.
std::vector<Kiv32u> to_words(const std::string& bits) {
    std::vector<Kiv32u> w((bits.size() + 31) / 32 + 2, 0);
    for (std::size_t i = 0; i < bits.size(); ++i)
        if (bits[i] == '1') w[i / 32] |= 1u << (31 - i % 32);
    return w;
}

// A block with coefficients in coding order, its count (16 or 15 for 4x4
// blocks) and the nC it is coded with.
struct Block {
    Kind kind;
    int nC, count;
    std::vector<int> coeffs;

    std::vector<int> raster_coeffs() const {
        std::vector<int> r(std::size_t(size_of(kind)), 0);
        for (int k = 0; k < count; ++k)
            r[std::size_t(kind == Kind::Block4x4 ? kScan[16 - count + k] : kind == Kind::Chroma422 ? kChroma422Raster[k] : k)] =
                coeffs[std::size_t(k)];
        return r;
    }
    std::string bits() const { return cavlc_bits(kind, nC, count, symbols_of(coeffs)); }
};

// Mostly trailing ones and small levels, some escapes up to the 16-bit limits.
Block random_block(Rng& rng, Kind kind) {
    Block b{kind, rng.range(0, 12), kind == Kind::Block4x4 && rng.chance(2) ? 15 : size_of(kind), {}};
    b.coeffs.assign(std::size_t(b.count), 0);
    const int density = rng.range(0, 4);
    for (int& c : b.coeffs) {
        if (density < 4 && rng.range(0, 3) >= density) continue;
        int magnitude = 1;
        switch (rng.range(0, 9)) {
            case 0: magnitude = rng.chance(8) ? 32768 : rng.range(1, 32767); break;
            case 1: magnitude = rng.range(1, 3000); break;
            case 2: case 3: magnitude = rng.range(1, 40); break;
        }
        c = rng.chance(2) ? -magnitude : std::min(magnitude, 32767);
    }
    return b;
}

// Decodes one block with the decoder for its kind and coefficient type.
template <class Coeff>
KivStatus decode(const Block& b, Kiv32u** word, Kiv32s* offset, Kiv16s* count, Coeff** out,
                 const Kiv32s* const* zeros4x4 = tables().zeros4x4) {
    const auto& t = tables();
    if (b.kind == Kind::Block4x4)
        return pick<Coeff>(kiviDecodeCAVLCCoeffs_H264_1u16s, kiviDecodeCAVLCCoeffs_H264_1u32s)(
            word, offset, count, out, b.nC, Kiv16s(b.count), arr(t.token4x4), arr(zeros4x4), arr(t.runs), kScan);
    if (b.kind == Kind::Chroma420) {
        // The 16-bit decoder reads the codes starting 1 or 01 without tables.
        const auto s = symbols_of(b.coeffs);
        const bool bare = sizeof(Coeff) == 2 && (s.total == 0 || (s.total == 1 && s.trailing == 1));
        return pick<Coeff>(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s, kiviDecodeCAVLCChromaDcCoeffs_H264_1u32s)(
            word, offset, count, out, bare ? nullptr : t.token420, bare ? nullptr : arr(t.zeros420),
            bare ? nullptr : arr(t.runs));
    }
    return pick<Coeff>(kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s, kiviDecodeCAVLCChroma422DcCoeffs_H264_1u32s)(
        word, offset, count, out, t.token422, arr(t.zeros422), arr(t.runs));
}

// ---- valid streams ----------------------------------------------------------

// Decodes blocks written one after the other from bit `start` of the first
// word: each gives its coefficients at their raster positions, leaves the
// cursor after its last bit and advances the coefficient pointer only when it
// has coefficients; nothing is written beyond the last block.
template <class Coeff>
void check_stream(const std::vector<Block>& blocks, int start) {
    std::string bits(std::size_t(start), '0');
    std::vector<std::size_t> ends;
    for (const Block& b : blocks) ends.push_back((bits += b.bits()).size());
    auto words = to_words(bits);
    Kiv32u* word = words.data();
    Kiv32s offset = 31 - start;
    std::vector<Coeff> buffer(blocks.size() * 16 + 1, Coeff(0x5555));
    Coeff* out = buffer.data();
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        SCOPED_TRACE("block " + std::to_string(i) + " of " + std::to_string(blocks.size()));
        const auto want = blocks[i].raster_coeffs();
        const auto total = std::count_if(want.begin(), want.end(), [](int c) { return c != 0; });
        Coeff* before = out;
        Kiv16s count = -1;
        ASSERT_EQ(decode(blocks[i], &word, &offset, &count, &out), kivStsOk);
        ASSERT_EQ(std::size_t(word - words.data()) * 32 + std::size_t(31 - offset), ends[i]) << "cursor";
        ASSERT_EQ(count, total);
        ASSERT_EQ(out, before + (total ? want.size() : 0));
        ASSERT_EQ(std::vector<Coeff>(before, out), std::vector<Coeff>(want.begin(), want.begin() + (out - before)));
    }
    ASSERT_EQ(out[0], Coeff(0x5555));
}

TEST(H264Cavlc, RandomStreamsRoundTrip) {
    Rng rng(1);
    for (Kind kind : {Kind::Block4x4, Kind::Chroma420, Kind::Chroma422})
        for (int run = 0; run < 600; ++run) {
            SCOPED_TRACE("kind " + std::to_string(int(kind)) + " run " + std::to_string(run));
            std::vector<Block> blocks;
            for (int i = rng.range(1, 6); i > 0; --i) blocks.push_back(random_block(rng, kind));
            const int start = rng.range(0, 31);
            if (run % 2) check_stream<Kiv16s>(blocks, start);
            else check_stream<Kiv32s>(blocks, start);
            if (HasFatalFailure()) return;
        }
}

// ---- symbol analysis ----------------------------------------------------------

// Analyses a raster block; 4x4 blocks over scan positions first..last of kScan.
template <class Level>
KivStatus analyse(Kind kind, const std::vector<int>& raster, int first, int last, Symbols& s) {
    Level block[16] = {}, levels[16] = {};
    std::copy(raster.begin(), raster.end(), block);
    Kiv8u trailing = 0, signs = 0, total = 0, zeros = 0, runs[16] = {};
    const auto chroma = [&](auto fn) { return fn(block, &trailing, &signs, &total, &zeros, levels, runs); };
    const KivStatus status =
        kind == Kind::Block4x4
            ? pick<Level>(kiviEncodeCoeffsCAVLC_H264_16s, kiviEncodeCoeffsCAVLC_H264_32s)(
                  block, Kiv8u(first), kScan, Kiv8u(last), &trailing, &signs, &total, &zeros, levels, runs)
        : kind == Kind::Chroma420
            ? chroma(pick<Level>(kiviEncodeChromaDcCoeffsCAVLC_H264_16s, kiviEncodeCoeffsCAVLCChromaDC2x2_H264_32s))
            : chroma(pick<Level>(kiviEncodeCoeffsCAVLCChromaDC2x4_H264_16s, kiviEncodeCoeffsCAVLCChromaDC2x4_H264_32s));
    s.trailing = trailing, s.signs = signs, s.total = total, s.zeros = zeros;
    for (int i = 0; i < 16; ++i) s.levels[i] = int(levels[i]), s.runs[i] = runs[i];
    return status;
}

// The symbols found in random blocks, and in windows of scan positions, give
// the bits of the coefficients' own symbols, which the decoders read back.
TEST(H264EncodeCavlc, SymbolsGiveTheBitsOfTheCoefficients) {
    Rng rng(1);
    for (int run = 0; run < 6000; ++run) {
        SCOPED_TRACE("run " + std::to_string(run));
        const Kind kind = Kind(run % 3);
        const Block b = random_block(rng, kind);
        const auto raster = b.raster_coeffs();
        // 4x4: the block's own positions, or any window; positions outside it are ignored.
        int first = 16 - b.count, last = 15;
        if (kind == Kind::Block4x4 && rng.chance(3)) first = rng.range(0, 15), last = rng.range(first, 15);
        std::vector<int> coded = b.coeffs;
        if (kind == Kind::Block4x4) {
            coded.clear();
            for (int k = first; k <= last; ++k) coded.push_back(raster[std::size_t(kScan[k])]);
        }
        Symbols s;
        ASSERT_EQ(run % 2 ? analyse<Kiv16s>(kind, raster, first, last, s) : analyse<Kiv32s>(kind, raster, first, last, s),
                  kivStsOk);
        const int n = int(coded.size());
        ASSERT_EQ(cavlc_bits(kind, b.nC, n, s), cavlc_bits(kind, b.nC, n, symbols_of(coded)));
    }
}

TEST(H264EncodeCavlc, Statuses) {
    Kiv16s block[16] = {}, levels[16];
    Kiv8u t, g, n, z, runs[16];
    EXPECT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 0, kScan, 16, &t, &g, &n, &z, levels, runs), kivStsOutOfRange);
    EXPECT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 5, kScan, 4, &t, &g, &n, &z, levels, runs), kivStsOutOfRange);
    EXPECT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 5, nullptr, 16, &t, &g, &n, &z, levels, runs), kivStsNullPointer);
    EXPECT_EQ(kiviEncodeCoeffsCAVLCChromaDC2x4_H264_16s(block, &t, &g, &n, &z, levels, nullptr), kivStsNullPointer);
}

// ---- invalid codes ------------------------------------------------------------

TEST(H264Cavlc, CursorAfterInvalidCodes) {
    std::vector<Kiv32s*> owned;
    // A total_zeros table that has only the code "1".
    const Kiv32s* partial = BuiltTables::build(value_entries({"1"}), {3}, &owned);
    const Kiv32s* zeros_partial[16], *zeros_null[16] = {};
    std::fill(zeros_partial, zeros_partial + 16, partial);
    // The bits a 4x4 decoder at nC 0 has consumed at each outcome; the 16-bit
    // one restores the cursor on every error.
    struct Case {
        const char* what;
        std::string bits;
        const Kiv32s* const* zeros;
        int maxCoeff;
        KivStatus status16, status32;
        int consumed16, consumed32;
    };
    const Case cases[] = {
        {"no coeff_token", std::string(16, '0') + "1", tables().zeros4x4, 16, kivStsBadVlcCode, kivStsBadVlcCode, 0, 0},
        // TotalCoeff 1 (one trailing one), +1, then total_zeros bits the table lacks: after the 3-bit lookup.
        {"no total_zeros code", "010", zeros_partial, 16, kivStsBadVlcCode, kivStsBadVlcCode, 0, 6},
        {"null total_zeros table", "010", zeros_null, 16, kivStsNullPointer, kivStsNullPointer, 0, 3},
        // TotalCoeff 1, no trailing ones, a level_prefix of 27 zeros: at the start of the level.
        {"level_prefix 27", "000101" + std::string(27, '0') + "1", tables().zeros4x4, 16, kivStsBadVlcCode,
         kivStsBadVlcCode, 0, 6},
        // TotalCoeff 1, +1, total_zeros 15: fits 16 coefficients, not 15.
        {"total_zeros beyond the block", "010" "000000001", tables().zeros4x4, 15, kivStsBadVlcCode, kivStsBadVlcCode,
         0, 12},
        // TotalCoeff 2 (two trailing ones), +1 +1, total_zeros 8, run_before 13 (the > 6 column).
        {"run_before above zerosLeft", "001" "00" "0010" "0000000001", tables().zeros4x4, 16, kivStsOk,
         kivStsBadVlcCode, 19, 19},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto run = [&](auto* out, KivStatus status, int consumed) {
            auto words = to_words(c.bits);
            Kiv32u* word = words.data();
            Kiv32s offset = 31;
            Kiv16s count;
            auto* p = out;
            EXPECT_EQ(decode(Block{Kind::Block4x4, 0, c.maxCoeff, {}}, &word, &offset, &count, &p, c.zeros), status);
            EXPECT_EQ((word - words.data()) * 32 + 31 - offset, consumed);
            EXPECT_TRUE(status == kivStsOk || p == out) << "pointer advanced";
        };
        std::array<Kiv16s, 16> out16{};
        std::array<Kiv32s, 16> out32{};
        run(out16.data(), c.status16, c.consumed16);
        run(out32.data(), c.status32, c.consumed32);
        // The 16-bit decoder keeps zerosLeft at 8: the levels sit at scan positions 9 and 8.
        EXPECT_TRUE(c.status16 != kivStsOk || (out16[kScan[9]] == 1 && out16[kScan[8]] == 1));
    }
    for (Kiv32s* t : owned) kiviHuffmanTableFree_32s(t);
}

TEST(H264Cavlc, StatusesInCheckOrder) {
    const auto& t = tables();
    const auto tokens = arr(t.token4x4), zeros = arr(t.zeros4x4), runs = arr(t.runs);
    std::vector<Kiv32u> words = {0, 0};
    Kiv32u* word = words.data();
    Kiv32u* null_word = nullptr;
    Kiv32s offset = 31;
    Kiv16s count;
    std::array<Kiv16s, 16> out;
    Kiv16s* p = out.data();
    Kiv16s* null_p = nullptr;
    Kiv32s* p32 = nullptr;
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p, 0, 16, tokens, zeros, runs, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&null_word, &offset, &count, &p, -1, 14, tokens, zeros, runs, kScan), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &null_p, -1, 14, tokens, zeros, runs, kScan), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p, -1, 14, tokens, zeros, runs, kScan), kivStsOutOfRange);
    EXPECT_EQ(kiviDecodeCAVLCCoeffs_H264_1u16s(&word, &offset, &count, &p, -1, 15, tokens, zeros, runs, kScan), kivStsOutOfRange);
    // 4:2:0 16-bit: with a leading 1 bit only the coefficient pointer is needed;
    // with 01 nothing is.
    words[0] = 0x80000000u;
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, nullptr, nullptr, nullptr, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, &p, nullptr, nullptr, nullptr), kivStsOk);
    words[0] = 0x0;
    offset = 31;
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(&word, &offset, &count, &p, t.token420, nullptr, runs), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCChromaDcCoeffs_H264_1u32s(&word, &offset, &count, &p32, t.token420, zeros, runs), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s(&null_word, &offset, &count, &p, t.token422, zeros, runs), kivStsNullPointer);
}

// ---- Exp-Golomb ---------------------------------------------------------------

TEST(H264Cavlc, ExpGolomb) {
    // Random ue or se codes one after the other from a random bit, with
    // prefixes of 0 to 31 zeros (63 bits across three words); values are
    // stored as their low 16 bits.
    Rng rng(4);
    for (int run = 0; run < 200; ++run) {
        const Kiv8u se = Kiv8u(run % 2);
        const int start = rng.range(0, 31);
        std::string bits(std::size_t(start), '1');
        std::vector<std::uint32_t> codes;
        for (int i = 0; i < 16; ++i) {
            const int n = rng.chance(4) ? rng.range(0, 31) : rng.range(0, 4);
            const std::uint64_t v = (std::uint64_t{1} << n) + (rng.next() & ((std::uint64_t{1} << n) - 1));  // codeNum + 1
            codes.push_back(std::uint32_t(v - 1));
            bits += std::string(std::size_t(n), '0');
            for (int b = n; b >= 0; --b) bits += (v >> b) & 1 ? '1' : '0';
        }
        auto words = to_words(bits);
        Kiv32u* word = words.data();
        Kiv32s offset = 31 - start;
        for (const std::uint32_t code : codes) {
            Kiv16s v;
            ASSERT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&word, &offset, &v, se), kivStsOk);
            const std::int64_t half = code / 2;
            ASSERT_EQ(v, Kiv16s(se ? (code % 2 ? half + 1 : -half) : std::int64_t(code))) << code;
        }
        ASSERT_EQ(std::size_t(word - words.data()) * 32 + std::size_t(31 - offset), bits.size());
    }
    // Statuses; 32 zeros are no code and leave the cursor alone.
    Kiv16s v;
    std::vector<Kiv32u> words = {0, 0, 0};
    Kiv32u* word = words.data();
    Kiv32u* null_word = nullptr;
    Kiv32s offset = 32;
    EXPECT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&word, &offset, &v, 0), kivStsBadArgument);
    EXPECT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&null_word, &offset, &v, 0), kivStsNullPointer);
    offset = 31;
    EXPECT_EQ(kiviDecodeExpGolombOne_H264_1u16s(&word, &offset, &v, 0), kivStsBadVlcCode);
    EXPECT_EQ(offset, 31);
}

}  // namespace
