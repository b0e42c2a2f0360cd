// CAVLC symbol analysis: the symbols of random blocks are written as a CAVLC
// stream by a small writer here and read back with the CAVLC decoder, which
// must give the original block; plus the trailing-ones limit, windows of scan
// positions and the statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cavlc_code_tables.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::test::cavlc_codes;
using kivvc::test::Rng;

enum class Kind { Block4x4, Chroma420, Chroma422 };

template <class Level>
struct Symbols {
    Kiv8u trailing = 0, signs = 0, total = 0, zeros = 0;
    Level levels[16] = {};
    Kiv8u runs[16] = {};
};

// Bits as '0'/'1' characters, turned into the decoder's 32-bit words.
struct Writer {
    std::string bits;
    void put(const std::string& b) { bits += b; }
    void put(unsigned v, int n) {
        while (n-- > 0) bits += (v >> n) & 1 ? '1' : '0';
    }
    void zeros_then_one(int n) { bits += std::string(std::size_t(n), '0') + "1"; }
    std::vector<Kiv32u> words() const {
        std::vector<Kiv32u> w(bits.size() / 32 + 3, 0);
        for (std::size_t i = 0; i < bits.size(); ++i)
            if (bits[i] == '1') w[i / 32] |= 1u << (31 - i % 32);
        return w;
    }
};

template <std::size_t N>
std::string token(const TokenCode (&table)[N], int total, int trailing) {
    for (const auto& c : table)
        if (c.total == total && c.trailing == trailing) return c.bits;
    ADD_FAILURE() << "no coeff_token " << total << "/" << trailing;
    return "";
}

// One level_prefix / level_suffix pair (magnitudes up to 2063, so the 12-bit
// escape always suffices); returns the next suffixLength.
int put_level(Writer& w, int level, int suffixLength, bool lowered) {
    int code = level > 0 ? 2 * level - 2 : -2 * level - 1;
    if (lowered) code -= 2;
    if (suffixLength == 0 && code < 14) {
        w.zeros_then_one(code);
    } else if (suffixLength == 0 && code < 30) {
        w.zeros_then_one(14), w.put(unsigned(code - 14), 4);
    } else if (suffixLength > 0 && code < (15 << suffixLength)) {
        w.zeros_then_one(code >> suffixLength), w.put(unsigned(code), suffixLength);
    } else {
        w.zeros_then_one(15), w.put(unsigned(code - (suffixLength ? 15 << suffixLength : 30)), 12);
    }
    if (suffixLength == 0) suffixLength = 1;
    if (std::abs(level) > (3 << (suffixLength - 1)) && suffixLength < 6) ++suffixLength;
    return suffixLength;
}

template <class Level>
void put_block(Writer& w, Kind kind, int nC, int maxCoeff, const Symbols<Level>& s) {
    if (kind == Kind::Chroma420) w.put(token(kCoeffTokenChroma420, s.total, s.trailing));
    else if (kind == Kind::Chroma422) w.put(token(kCoeffTokenChroma422, s.total, s.trailing));
    else if (nC < 2) w.put(token(kCoeffTokenNc0, s.total, s.trailing));
    else if (nC < 4) w.put(token(kCoeffTokenNc2, s.total, s.trailing));
    else if (nC < 8) w.put(token(kCoeffTokenNc4, s.total, s.trailing));
    else w.put(s.total ? unsigned(((s.total - 1) << 2) | s.trailing) : 3u, 6);
    if (!s.total) return;
    w.put(s.signs, s.trailing);
    int suffixLength = s.total > 10 && s.trailing < 3 ? 1 : 0;
    for (int i = 0; i < s.total - s.trailing; ++i)
        suffixLength = put_level(w, int(s.levels[i]), suffixLength, i == 0 && s.trailing < 3);
    if (s.total < maxCoeff) {
        const auto& tz = kind == Kind::Block4x4 ? kTotalZeros4x4 : kind == Kind::Chroma420 ? kTotalZeros420 : kTotalZeros422;
        w.put(tz[s.total][s.zeros]);
    }
    for (int i = 0, left = s.zeros; i + 1 < s.total && left > 0; left -= s.runs[i++])
        w.put(kRunBefore[std::size_t(std::min(left, 7))][s.runs[i]]);
}

const Kiv32s kScan[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};

template <class Level>
KivStatus analyse(Kind kind, const Level* block, int first, Symbols<Level>& s) {
    if constexpr (sizeof(Level) == 2) {
        if (kind == Kind::Block4x4)
            return kiviEncodeCoeffsCAVLC_H264_16s(block, Kiv8u(first), kScan, 15, &s.trailing, &s.signs, &s.total,
                                                  &s.zeros, s.levels, s.runs);
        if (kind == Kind::Chroma420)
            return kiviEncodeChromaDcCoeffsCAVLC_H264_16s(block, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels, s.runs);
        return kiviEncodeCoeffsCAVLCChromaDC2x4_H264_16s(block, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels, s.runs);
    } else {
        if (kind == Kind::Block4x4)
            return kiviEncodeCoeffsCAVLC_H264_32s(block, Kiv8u(first), kScan, 15, &s.trailing, &s.signs, &s.total,
                                                  &s.zeros, s.levels, s.runs);
        if (kind == Kind::Chroma420)
            return kiviEncodeCoeffsCAVLCChromaDC2x2_H264_32s(block, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels,
                                                             s.runs);
        return kiviEncodeCoeffsCAVLCChromaDC2x4_H264_32s(block, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels, s.runs);
    }
}

template <class Level>
KivStatus decode(Kind kind, int nC, int maxCoeff, Kiv32u** word, Kiv32s* offset, Kiv16s* count, Level** out) {
    static const BuiltTables t;
    const auto runs = const_cast<const Kiv32s**>(t.runs);
    if constexpr (sizeof(Level) == 2) {
        if (kind == Kind::Block4x4)
            return kiviDecodeCAVLCCoeffs_H264_1u16s(word, offset, count, out, nC, Kiv16s(maxCoeff),
                                                    const_cast<const Kiv32s**>(t.token4x4),
                                                    const_cast<const Kiv32s**>(t.zeros4x4), runs, kScan);
        if (kind == Kind::Chroma420)
            return kiviDecodeCAVLCChromaDcCoeffs_H264_1u16s(word, offset, count, out, t.token420,
                                                            const_cast<const Kiv32s**>(t.zeros420), runs);
        return kiviDecodeCAVLCChroma422DcCoeffs_H264_1u16s(word, offset, count, out, t.token422,
                                                           const_cast<const Kiv32s**>(t.zeros422), runs);
    } else {
        if (kind == Kind::Block4x4)
            return kiviDecodeCAVLCCoeffs_H264_1u32s(word, offset, count, out, nC, Kiv16s(maxCoeff),
                                                    const_cast<const Kiv32s**>(t.token4x4),
                                                    const_cast<const Kiv32s**>(t.zeros4x4), runs, kScan);
        if (kind == Kind::Chroma420)
            return kiviDecodeCAVLCChromaDcCoeffs_H264_1u32s(word, offset, count, out, t.token420,
                                                            const_cast<const Kiv32s**>(t.zeros420), runs);
        return kiviDecodeCAVLCChroma422DcCoeffs_H264_1u32s(word, offset, count, out, t.token422,
                                                           const_cast<const Kiv32s**>(t.zeros422), runs);
    }
}

template <class Level>
void round_trip(Kind kind, std::uint64_t seed) {
    Rng rng(seed);
    const int size = kind == Kind::Block4x4 ? 16 : kind == Kind::Chroma420 ? 4 : 8;
    for (int run = 0; run < 2000; ++run) {
        Level block[16] = {};
        const int first = kind == Kind::Block4x4 ? rng.range(0, 1) : 0;
        const int density = rng.range(0, 4);
        for (int i = first; i < size; ++i) {
            const int pos = kind == Kind::Block4x4 ? kScan[i] : i;
            if (density == 4 || rng.range(0, 3) < density)
                block[pos] = Level(rng.chance(2) ? (rng.chance(2) ? 1 : -1) : rng.range(-2063, 2063));
        }
        Symbols<Level> s;
        ASSERT_EQ(analyse(kind, block, first, s), kivStsOk);
        const int nC = rng.range(0, 10), maxCoeff = size - first;
        Writer w;
        put_block(w, kind, nC, maxCoeff, s);
        auto words = w.words();
        Kiv32u* word = words.data();
        Kiv32s offset = 31;
        Kiv16s count = -1;
        std::vector<Level> out(16, Level(0));
        Level* cursor = out.data();
        ASSERT_EQ(decode(kind, nC, maxCoeff, &word, &offset, &count, &cursor), kivStsOk) << "run " << run;
        ASSERT_EQ(count, s.total) << "run " << run;
        ASSERT_EQ(std::size_t(word - words.data()) * 32 + std::size_t(31 - offset), w.bits.size()) << "run " << run;
        for (int k = 0; k < size; ++k) ASSERT_EQ(out[std::size_t(k)], block[k]) << "run " << run << " position " << k;
    }
}

TEST(H264EncodeCavlc, SymbolsDecodeToTheSameBlock) {
    round_trip<Kiv16s>(Kind::Block4x4, 1);
    round_trip<Kiv32s>(Kind::Block4x4, 2);
    round_trip<Kiv16s>(Kind::Chroma420, 3);
    round_trip<Kiv32s>(Kind::Chroma420, 4);
    round_trip<Kiv16s>(Kind::Chroma422, 5);
    round_trip<Kiv32s>(Kind::Chroma422, 6);
}

TEST(H264EncodeCavlc, TrailingOnesWindowsAndStatuses) {
    const Kiv32s identity[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    Symbols<Kiv16s> s;
    Kiv16s block[16] = {};
    block[12] = 1, block[13] = -1, block[14] = 1, block[15] = -1;
    ASSERT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 0, identity, 15, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels,
                                             s.runs),
              kivStsOk);
    EXPECT_EQ(s.trailing, 3);
    EXPECT_EQ(s.signs, 0b101);  // -1 at 15 first, in the highest bit
    EXPECT_EQ(s.total, 4);
    EXPECT_EQ(s.levels[0], 1);
    EXPECT_EQ(s.zeros, 12);
    EXPECT_TRUE(s.runs[0] == 0 && s.runs[1] == 0 && s.runs[2] == 0);
    // Only positions 3..10 are scanned: zeros above 10 do not count, an empty
    // window has total_zeros equal to its length.
    std::fill(block, block + 16, Kiv16s(0));
    block[2] = 7, block[11] = 9;
    ASSERT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 3, identity, 10, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels,
                                             s.runs),
              kivStsOk);
    EXPECT_EQ(s.total, 0);
    EXPECT_EQ(s.zeros, 8);
    block[5] = -2, block[8] = 1;
    ASSERT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 3, identity, 10, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels,
                                             s.runs),
              kivStsOk);
    EXPECT_TRUE(s.total == 2 && s.trailing == 1 && s.signs == 0 && s.levels[0] == -2);
    EXPECT_EQ(s.runs[0], 2);
    EXPECT_EQ(s.zeros, 4);
    EXPECT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 0, identity, 16, &s.trailing, &s.signs, &s.total, &s.zeros,
                                             s.levels, s.runs),
              kivStsOutOfRange);
    EXPECT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 5, identity, 4, &s.trailing, &s.signs, &s.total, &s.zeros,
                                             s.levels, s.runs),
              kivStsOutOfRange);
    EXPECT_EQ(kiviEncodeCoeffsCAVLC_H264_16s(block, 5, nullptr, 16, &s.trailing, &s.signs, &s.total, &s.zeros,
                                             s.levels, s.runs),
              kivStsNullPointer);
    EXPECT_EQ(kiviEncodeCoeffsCAVLCChromaDC2x4_H264_16s(block, &s.trailing, &s.signs, &s.total, &s.zeros, s.levels,
                                                        nullptr),
              kivStsNullPointer);
}

}  // namespace
