// H.261: the TCOEFF table, the loop filter against its equations, round
// trips of random blocks and the bitstream error paths.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "common/scan_tables.h"
#include "h263/h261_tables.h"
#include "kivvc.h"
#include "mpeg2/code_tables.h"
#include "mpeg4/bit_text.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::test;
using kivvc::h263::kH261TcoeffRows;

TEST(H261Tables, CompletePrefixFreeAndAgreeWithTheMpegTable) {
    std::vector<std::string> codes = {strip(kivvc::h263::kH261EndOfBlockBits), strip(kivvc::h263::kH261EscapeBits)};
    for (const auto& r : kH261TcoeffRows) codes.push_back(strip(r.bits));
    const auto c = check_codes(codes, 13);
    EXPECT_TRUE(c.prefix_free);
    // Complete except the values with nine leading zeros, which start no code.
    EXPECT_EQ(c.kraft, (1u << 13) - (1u << 4));
    // The rows shared with the MPEG-1 coefficient table (as far as the test
    // copy of that table goes) have the same meaning there.
    int shared = 0;
    for (const auto& r : kH261TcoeffRows)
        for (const auto& m : kivvc::test::mpeg2::kCoeffTableZero)
            if (strip(m.bits) == strip(r.bits)) {
                ++shared;
                EXPECT_EQ(m.run, r.run) << r.bits;
                EXPECT_EQ(m.level, r.level) << r.bits;
            }
    EXPECT_GE(shared, 40);
}

TEST(H261Tables, DecodeAndEncodeTablesFollowTheRows) {
    const auto& d = kivvc::h263::kH261Decode;
    for (std::uint32_t v = 32; v < 16384; ++v) {
        if (v >= 256 && v < 512) continue;
        const auto e = v >= 512 ? d.h261_coefTab0[v >> 5] : (v >= 128 ? d.h261_coefTab1[v >> 3] : d.h261_coefTab2[v]);
        if (v >= 0x2000 && v < 0x3000) {
            EXPECT_EQ(e.run, kivvc::h263::kH261EndOfBlockRun);
            continue;
        }
        int matches = 0;
        for (const auto& r : kH261TcoeffRows) {
            const std::string s = strip(r.bits);
            if ((v >> (14 - s.size())) == std::stoul(s, nullptr, 2)) {
                ++matches;
                EXPECT_EQ(e.run, r.run);
                EXPECT_EQ(e.level, r.level);
                EXPECT_EQ(e.length, s.size() + 1);
            }
        }
        EXPECT_EQ(matches, 1) << v;
    }
    for (const auto& r : kH261TcoeffRows) {
        const auto c = kivvc::h263::kH261Encode.find(r.run, r.level);
        EXPECT_EQ(c.length, strip(r.bits).size() + 1);
        EXPECT_EQ(c.code >> 1, std::stoul(strip(r.bits), nullptr, 2));
    }
}

TEST(H261LoopFilter, MatchesSeparableEquations) {
    kivvc::test::Rng rng(261);
    for (int round = 0; round < 200; ++round) {
        std::array<Kiv8u, 8 * 12> src{};
        std::array<Kiv8u, 8 * 10> dst{};
        for (auto& v : src) v = static_cast<Kiv8u>(round % 3 ? rng.range(0, 255) : (rng.chance(2) ? 0 : 255));
        ASSERT_EQ(kiviFilter8x8_H261_8u_C1R(src.data(), 12, dst.data(), 10), kivStsOk);
        auto s = [&](int y, int x) { return int{src[y * 12 + x]}; };
        auto h = [&](int y, int x) { return (x == 0 || x == 7) ? 4 * s(y, x) : s(y, x - 1) + 2 * s(y, x) + s(y, x + 1); };
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const int want = (y == 0 || y == 7) ? (h(y, x) + 2) / 4 : (h(y - 1, x) + 2 * h(y, x) + h(y + 1, x) + 8) / 16;
                ASSERT_EQ(dst[y * 10 + x], want) << y << "," << x;
            }
    }
    std::array<Kiv8u, 64> out{};
    EXPECT_EQ(kiviFilter8x8_H261_8u_C1R(nullptr, 8, out.data(), 8), kivStsNullPointer);
    EXPECT_EQ(kiviFilter8x8_H261_8u_C1R(out.data(), 8, nullptr, 8), kivStsNullPointer);
}

// A random block of levels: mostly small, some beyond the table, none -128.
std::array<Kiv16s, 64> random_levels(kivvc::test::Rng& rng, bool intra, int* count) {
    std::array<Kiv16s, 64> b{};
    const int density = rng.range(1, 64);
    for (int i = 0; i < 64; ++i) {
        if (rng.range(0, 63) >= density) continue;
        int v = rng.chance(4) ? rng.range(-127, 127) : rng.range(-3, 3);
        b[i] = static_cast<Kiv16s>(v);
    }
    if (intra) {
        const int dc = rng.range(1, 254);
        b[0] = static_cast<Kiv16s>(dc == 128 ? 128 : dc);  // 128 travels as 255
    }
    *count = 0;
    for (auto v : b) *count += v != 0;
    return b;
}

TEST(H261Coding, RandomBlocksRoundTripThroughDecodeAndReconstruct) {
    kivvc::test::Rng rng(2610);
    for (int round = 0; round < 3000; ++round) {
        const bool intra = round & 1;
        const int scan = (round & 2) ? -1 : 0;
        int count = 0;
        const auto levels = random_levels(rng, intra, &count);
        if (count == 0) continue;
        std::vector<Kiv8u> buf(64 * 3 + 8, 0);
        const int offset = rng.range(0, 7);
        Kiv8u* p = buf.data();
        int o = offset;
        ASSERT_EQ((intra ? kiviEncodeCoeffsIntra_H261_16s1u : kiviEncodeCoeffsInter_H261_16s1u)(levels.data(), &p, &o, count, scan), kivStsOk);
        const Kiv8u* end = p;
        const int end_offset = o;

        std::array<Kiv16s, 64> got{};
        int last = -2;
        p = buf.data();
        o = offset;
        ASSERT_EQ((intra ? kiviDecodeCoeffsIntra_H261_1u16s : kiviDecodeCoeffsInter_H261_1u16s)(&p, &o, got.data(), &last, scan), kivStsOk);
        ASSERT_EQ(got, levels) << "round " << round;
        ASSERT_EQ(p, end);
        ASSERT_EQ(o, end_offset);
        const std::int32_t* order = scan == -1 ? nullptr : kivvc::ownvc_Zigzag;
        int want_last = intra ? 0 : -1;
        for (int k = 0; k < 64; ++k)
            if (levels[order ? order[k] : k]) want_last = k;
        ASSERT_EQ(last, want_last);

        if (scan != 0) continue;
        const int quant = rng.range(1, 31);
        p = buf.data();
        o = offset;
        ASSERT_EQ((intra ? kiviReconstructCoeffsIntra_H261_1u16s : kiviReconstructCoeffsInter_H261_1u16s)(&p, &o, got.data(), &last, quant), kivStsOk);
        ASSERT_EQ(p, end);
        for (int i = 0; i < 64; ++i) {
            const int l = levels[i];
            int want = l == 0 ? 0 : (2 * quant * std::abs(l) + ((quant & 1) ? quant : quant - 1)) * (l < 0 ? -1 : 1);
            want = want < -2048 ? -2048 : (want > 2047 ? 2047 : want);
            if (intra && i == 0) want = 8 * l;
            ASSERT_EQ(got[i], want) << "round " << round << " element " << i;
        }
    }
}

TEST(H261Coding, FirstCoefficientEscapesAndErrors) {
    const KivStatus bad = kivStsBadBitstreamCode;
    Kiv16s b[64];
    int last = 0;
    auto decode = [&](bool intra) {
        return [&, intra](Kiv8u** p, int* o) {
            return (intra ? kiviDecodeCoeffsIntra_H261_1u16s : kiviDecodeCoeffsInter_H261_1u16s)(p, o, b, &last, -1);
        };
    };
    // '11' first is -1; later '11' is an ordinary run 0 level 1 with sign bit.
    EXPECT_EQ(read_text("11 110 10", decode(false)), (Outcome{kivStsOk, 7}));
    EXPECT_EQ(b[0], -1);
    EXPECT_EQ(b[1], 1);
    EXPECT_EQ(last, 1);
    // Escape with run 5, level -100.
    EXPECT_EQ(read_text("0000 01 000101 10011100 10", decode(false)).status, kivStsOk);
    EXPECT_EQ(b[5], -100);
    EXPECT_EQ(last, 5);
    // Forbidden escape levels; a run past 63 (reporting the position reached);
    // no code: the cursor stays.
    for (const char* text : {"0000 01 000000 00000000 10", "0000 01 000000 10000000 10", "0000 0000 0000 00",
                             "0000 01 111111 00000001 0000 01 000001 00000001 10"})
        EXPECT_EQ(read_text(text, decode(false)), (Outcome{bad, 0})) << text;
    EXPECT_EQ(last, 63);
    // INTRADC: 0 and 128 refused before anything is read; 255 is 128. An AC
    // error leaves the cursor just past the INTRADC.
    for (const char* dc : {"00000000 10", "10000000 10"}) {
        EXPECT_EQ(read_text(dc, decode(true)), (Outcome{bad, 0}));
        EXPECT_EQ(last, -1);
    }
    EXPECT_EQ(read_text("11111111 10", decode(true)).status, kivStsOk);
    EXPECT_EQ(b[0], 128);
    EXPECT_EQ(last, 0);
    EXPECT_EQ(read_text("00000011 0000 01 000000 00000000", decode(true)), (Outcome{bad, 8}));
    EXPECT_EQ(b[0], 3);
}

TEST(H261Coding, ReconstructionValuesAndArgumentChecks) {
    // An AC error leaves the cursor where it was on entry (the INTRADC is
    // still reconstructed).
    Kiv16s b[64];
    int last = 0;
    EXPECT_EQ(read_text("00000011 0000 0000 0000 00",
                        [&](Kiv8u** p, int* o) { return kiviReconstructCoeffsIntra_H261_1u16s(p, o, b, &last, 4); }),
              (Outcome{kivStsBadBitstreamCode, 0}));
    EXPECT_EQ(b[0], 24);
    auto s = stream_of("");
    Kiv8u* p = s.data();
    int o = 0;
    // Check order: pointers, offset, QUANT.
    o = 8;
    EXPECT_EQ(kiviReconstructCoeffsIntra_H261_1u16s(&p, &o, b, &last, 0), kivStsBadBitOffset);
    o = 0;
    EXPECT_EQ(kiviReconstructCoeffsIntra_H261_1u16s(&p, &o, b, &last, 32), kivStsBadQp);
    EXPECT_EQ(kiviReconstructCoeffsIntra_H261_1u16s(&p, &o, nullptr, &last, 32), kivStsNullPointer);
    Kiv8u* null_byte = nullptr;
    EXPECT_EQ(kiviDecodeCoeffsInter_H261_1u16s(&null_byte, &o, b, &last, 0), kivStsNullPointer);
    // Encoding: n = 1 writes the INTRADC and end of block only; n outside 1..64.
    Kiv16s levels[64] = {128};
    std::vector<Kiv8u> out(8, 0);
    p = out.data();
    o = 0;
    EXPECT_EQ(kiviEncodeCoeffsIntra_H261_16s1u(levels, &p, &o, 0, 0), kivStsOutOfRange);
    ASSERT_EQ(kiviEncodeCoeffsIntra_H261_16s1u(levels, &p, &o, 1, 0), kivStsOk);
    EXPECT_EQ(out[0], 0xFF);
    EXPECT_EQ(out[1], 0x80);
    EXPECT_EQ(p, out.data() + 1);
    EXPECT_EQ(o, 2);
    o = -1;
    EXPECT_EQ(kiviEncodeCoeffsInter_H261_16s1u(levels, &p, &o, 1, 0), kivStsBadBitOffset);
    EXPECT_EQ(kiviEncodeCoeffsInter_H261_16s1u(nullptr, &p, &o, 1, 0), kivStsNullPointer);
}

}  // namespace
