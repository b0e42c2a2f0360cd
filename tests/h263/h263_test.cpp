// H.263: the alternative INTRA table, quantisers against their rules, round
// trips of random blocks in every mode and scan, and the error paths.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <vector>

#include "common/scan_tables.h"
#include "h263/bit_string.h"
#include "h263/h263_tables.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::test::h263;
using Block = std::array<Kiv16s, 64>;

TEST(H263Tables, AlternativeIntraTableIsTheOrdinaryCodeSetReassigned) {
    std::vector<std::string> adv = {strip(kivvc::mpeg4::kTcoefEscapeBits)}, ordinary = adv;
    std::map<std::array<int, 2>, std::vector<int>> levels;
    for (const auto& r : kivvc::h263::kAdvIntraTcoefRows) {
        adv.push_back(strip(r.bits));
        levels[{r.last, r.run}].push_back(r.level);
    }
    for (const auto& r : kivvc::mpeg4::kInterTcoefRows) ordinary.push_back(strip(r.bits));
    const auto c = check_codes(adv, 13);
    EXPECT_TRUE(c.prefix_free);
    EXPECT_EQ(c.kraft, (1u << 13) - (1u << 4));  // all but the values with nine leading zeros
    std::sort(adv.begin(), adv.end());
    std::sort(ordinary.begin(), ordinary.end());
    EXPECT_EQ(adv, ordinary);
    // Levels of each (last, run) run 1..n without gaps, so |level| lookups are dense.
    for (auto& [key, l] : levels) {
        std::sort(l.begin(), l.end());
        for (std::size_t i = 0; i < l.size(); ++i) EXPECT_EQ(l[i], int(i) + 1) << key[0] << "/" << key[1];
    }
    EXPECT_EQ(levels.size(), 38u);  // last 0: runs 0..13, last 1: runs 0..23
}

TEST(H263Quant, ForwardRulesAndLimits) {
    Block b{};
    int count = -1;
    b[0] = 2;
    ASSERT_EQ(kiviQuantIntra_H263_16s_C1I(b.data(), 10, &count, 0, 0), kivStsOk);
    EXPECT_EQ(b[0], 1);  // (2 + 4) >> 3 = 0, replaced by 1
    EXPECT_EQ(count, 1);
    b = {};
    b[0] = 2040;
    b[5] = -300;
    ASSERT_EQ(kiviQuantIntra_H263_16s_C1I(b.data(), 7, &count, 0, 0), kivStsOk);
    EXPECT_EQ(b[0], 254);
    EXPECT_EQ(b[5], -21);  // 300 / 14
    EXPECT_EQ(count, 2);
    b = {};
    b[3] = 4000;
    b[4] = -4000;
    ASSERT_EQ(kiviQuantInter_H263_16s_C1I(b.data(), 7, &count, 0), kivStsOk);
    EXPECT_EQ(b[3], 127);
    EXPECT_EQ(b[4], -127);
    b[3] = 4000;
    ASSERT_EQ(kiviQuantInter_H263_16s_C1I(b.data(), 7, &count, 1), kivStsOk);
    EXPECT_EQ(b[3], (4000 - 3) * 4682 >> 16);  // R(7) = 4682, not limited
    // Advanced intra coding: DC included, offset 3 QP / 4, limit at any QP without modq.
    b = {};
    b[0] = 100;
    b[63] = -32768;
    ASSERT_EQ(kiviQuantIntra_H263_16s_C1I(b.data(), 4, &count, 1, 0), kivStsOk);
    EXPECT_EQ(b[0], (103 * 8193) >> 16);
    EXPECT_EQ(b[63], -127);
    EXPECT_EQ(count, 2);
    b[63] = -32768;
    ASSERT_EQ(kiviQuantIntra_H263_16s_C1I(b.data(), 20, &count, 1, 1), kivStsOk);
    EXPECT_EQ(b[63], -((32767 * 1639) >> 16));
    // QP 1 halves, truncating toward zero.
    b = {};
    b[1] = -7;
    b[2] = 7;
    ASSERT_EQ(kiviQuantIntra_H263_16s_C1I(b.data(), 1, nullptr, 0, 0), kivStsOk);
    EXPECT_EQ(b[1], -3);
    EXPECT_EQ(b[2], 3);
    EXPECT_EQ(kiviQuantIntra_H263_16s_C1I(nullptr, 0, &count, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInter_H263_16s_C1I(b.data(), 32, &count, 0), kivStsBadQp);
}

TEST(H263Quant, InverseRules) {
    Block b{};
    b[0] = 100;
    b[1] = -100;
    b[2] = 3;
    b[3] = 5;  // beyond the last index: untouched
    ASSERT_EQ(kiviQuantInvInter_H263_16s_C1I(b.data(), 2, 31, 0), kivStsOk);
    EXPECT_EQ(b[0], 2047);  // 6231 limited
    EXPECT_EQ(b[1], -2048);
    EXPECT_EQ(b[2], 2 * 31 * 3 + 31);
    EXPECT_EQ(b[3], 5);
    b = {};
    b[0] = 100;
    b[7] = -1000;
    ASSERT_EQ(kiviQuantInvInter_H263_16s_C1I(b.data(), 7, 31, 1), kivStsOk);
    EXPECT_EQ(b[0], 6231);
    EXPECT_EQ(b[7], -32768);
    // Intra: element 0 is 8 times its level; AC untouched when last is 0.
    b = {};
    b[0] = 50;
    b[1] = 2;
    ASSERT_EQ(kiviQuantInvIntra_H263_16s_C1I(b.data(), 0, 8, 0, 0), kivStsOk);
    EXPECT_EQ(b[0], 400);
    EXPECT_EQ(b[1], 2);
    ASSERT_EQ(kiviQuantInvIntra_H263_16s_C1I(b.data(), 1, 8, 0, 0), kivStsOk);
    EXPECT_EQ(b[1], 2 * 8 * 2 + 7);
    // Advanced intra: 2 QP L, no offset, DC included.
    b = {};
    b[0] = -5;
    b[9] = 3;
    ASSERT_EQ(kiviQuantInvIntra_H263_16s_C1I(b.data(), 9, 6, 1, 0), kivStsOk);
    EXPECT_EQ(b[0], -60);
    EXPECT_EQ(b[9], 36);
    EXPECT_EQ(kiviQuantInvIntra_H263_16s_C1I(nullptr, 0, 6, 1, 0), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInvIntra_H263_16s_C1I(b.data(), -1, 0, 1, 0), kivStsBadQp);
    EXPECT_EQ(kiviQuantInvIntra_H263_16s_C1I(b.data(), -1, 6, 1, 0), kivStsOutOfRange);
}

// Random levels: limited to -127..127, or to -1023..1023 with modified
// quantisation (then some beyond 127 to take the extended escape).
Block random_levels(kivvc::test::Rng& rng, bool modq, int first, int* count) {
    Block b{};
    const int density = rng.range(1, 64);
    *count = 0;
    for (int i = first; i < 64; ++i) {
        if (rng.range(0, 63) >= density) continue;
        const int big = modq ? 1023 : 127;
        int v = rng.chance(5) ? rng.range(-big, big) : rng.range(-4, 4);
        b[i] = static_cast<Kiv16s>(v);
        *count += v != 0;
    }
    return b;
}

struct Encoded {
    std::vector<Kiv8u> buf = std::vector<Kiv8u>(64 * 5 + 8, 0);
    int offset = 0;
    const Kiv8u* end = nullptr;
    int end_offset = 0;
};

TEST(H263Coding, RandomBlocksRoundTripInEveryModeAndScan) {
    kivvc::test::Rng rng(263);
    for (int round = 0; round < 4000; ++round) {
        const int kind = round % 3;  // 0 inter, 1 intra, 2 advanced intra
        const bool modq = (round / 3) & 1;
        const int scan = (round / 6) % 4;
        const bool intra = kind != 0, adv = kind == 2;
        int count = 0;
        Block levels = random_levels(rng, modq, intra && !adv ? 1 : 0, &count);
        if (count == 0) continue;
        Encoded e;
        e.offset = rng.range(0, 7);
        Kiv8u* p = e.buf.data();
        int o = e.offset;
        const Kiv16s dc = static_cast<Kiv16s>(rng.range(1, 254));
        if (intra && !adv) {
            ASSERT_EQ(kiviEncodeDCIntra_H263_16s1u(dc, &p, &o), kivStsOk);
        }
        const Kiv8u* coeffs = p;
        const int coeffs_offset = o;
        ASSERT_EQ(intra ? kiviEncodeCoeffsIntra_H263_16s1u(levels.data(), &p, &o, count, adv, modq, scan)
                        : kiviEncodeCoeffsInter_H263_16s1u(levels.data(), &p, &o, count, modq, scan),
                  kivStsOk);
        e.end = p;
        e.end_offset = o;

        // Plain decode with the caller's DC kept.
        Block got{};
        got[0] = 77;
        int last = -5;
        p = const_cast<Kiv8u*>(coeffs);
        o = coeffs_offset;
        ASSERT_EQ(intra ? kiviDecodeCoeffsIntra_H263_1u16s(&p, &o, got.data(), &last, adv, modq, scan)
                        : kiviDecodeCoeffsInter_H263_1u16s(&p, &o, got.data(), &last, modq, scan),
                  kivStsOk);
        Block want_levels = levels;
        if (intra && !adv) want_levels[0] = 77;
        const std::int32_t* order = scan <= 2 ? kivvc::scan_for(scan) : nullptr;
        int want_last = -1;
        for (int k = 0; k < 64; ++k)
            if (levels[order ? order[k] : k]) want_last = k;
        ASSERT_EQ(got, want_levels) << "round " << round;
        ASSERT_EQ(last, want_last);
        ASSERT_EQ(p, e.end);
        ASSERT_EQ(o, e.end_offset);

        // Combined reconstruction: encode again in the scan it reads.
        if (adv ? scan == 3 : scan != 0) continue;  // streams in an order the reconstruction cannot read
        const int rscan = scan;
        const int qp = rng.range(1, 31);
        p = e.buf.data();
        o = e.offset;
        Block rec{};
        ASSERT_EQ(kind == 0 ? kiviReconstructCoeffsInter_H263_1u16s(&p, &o, rec.data(), &last, qp, modq)
                            : kiviReconstructCoeffsIntra_H263_1u16s(&p, &o, rec.data(), &last, 1, qp, adv, rscan, modq),
                  kivStsOk);
        ASSERT_EQ(p, e.end);
        for (int i = 0; i < 64; ++i) {
            const int l = levels[i];
            int want;
            if (adv) {
                want = static_cast<Kiv16s>(2 * qp * l);
            } else {
                want = l == 0 ? 0 : (2 * qp * std::abs(l) + ((qp & 1) ? qp : qp - 1)) * (l < 0 ? -1 : 1);
                if (!modq) want = want < -2048 ? -2048 : (want > 2047 ? 2047 : want);
                want = static_cast<Kiv16s>(want);
                if (intra && i == 0) want = 8 * dc;
            }
            ASSERT_EQ(rec[i], want) << "round " << round << " element " << i;
        }
    }
}

KivStatus decode_text(const std::string& text, bool modq, Block& b, int* last, int* used) {
    auto s = stream_of(text);
    Kiv8u* p = s.data();
    int o = 0;
    const KivStatus st = kiviDecodeCoeffsInter_H263_1u16s(&p, &o, b.data(), last, modq, 3);
    *used = static_cast<int>(p - s.data()) * 8 + o;
    return st;
}

TEST(H263Coding, EscapesIntradcAndErrorPaths) {
    Block b{};
    int last = 0, used = 0;
    // Escape LEVEL 0 fails in both modes; -128 fails without modq.
    for (bool modq : {false, true}) EXPECT_EQ(decode_text("0000011 1 000000 00000000", modq, b, &last, &used), kivStsBadBitstreamCode);
    EXPECT_EQ(decode_text("0000011 1 000010 10000000 01000 000110", false, b, &last, &used), kivStsBadBitstreamCode);
    EXPECT_EQ(used, 0);
    // With modq: 5 low bits 01000, 6 high bits 000110: 6 * 32 + 8 = 200 at position 2.
    ASSERT_EQ(decode_text("0000011 1 000010 10000000 01000 000110", true, b, &last, &used), kivStsOk);
    EXPECT_EQ(b[2], 200);
    EXPECT_EQ(last, 2);
    EXPECT_EQ(used, 33);
    // Negative extended level: -200 = 11100111000 (5 low bits 11000, 6 high 111001).
    ASSERT_EQ(decode_text("0000011 1 000000 10000000 11000 111001", true, b, &last, &used), kivStsOk);
    EXPECT_EQ(b[0], -200);
    // Encoding 200 with modq writes that extended escape.
    Block levels{};
    levels[2] = 200;
    std::vector<Kiv8u> out(8, 0);
    Kiv8u* p = out.data();
    int o = 0;
    ASSERT_EQ(kiviEncodeCoeffsInter_H263_16s1u(levels.data(), &p, &o, 1, 1, 3), kivStsOk);
    EXPECT_EQ(out, stream_of("0000011 1 000010 10000000 01000 000110", 0, 3));
    // A run past 63 fails and reports the position reached.
    EXPECT_EQ(decode_text("0000011 0 111111 00000001 0000011 1 000000 00000001", false, b, &last, &used), kivStsBadBitstreamCode);
    EXPECT_EQ(last, 63);
    EXPECT_EQ(decode_text("0000 0000 0000 0", false, b, &last, &used), kivStsBadBitstreamCode);
    EXPECT_EQ(last, -1);

    // INTRADC.
    for (const char* bad : {"00000000", "10000000"}) {
        auto s = stream_of(bad);
        p = s.data();
        o = 0;
        Kiv16s dc = 5;
        EXPECT_EQ(kiviDecodeDCIntra_H263_1u16s(&p, &o, &dc), kivStsBadBitstreamCode);
        EXPECT_EQ(p, s.data());
        EXPECT_EQ(dc, 5);
    }
    auto s = stream_of("1111 1111", 3);
    p = s.data();
    o = 3;
    Kiv16s dc = 0;
    ASSERT_EQ(kiviDecodeDCIntra_H263_1u16s(&p, &o, &dc), kivStsOk);
    EXPECT_EQ(dc, 128);
    EXPECT_EQ(p, s.data() + 1);
    EXPECT_EQ(o, 3);
    std::vector<Kiv8u> dc_out(2, 0);
    p = dc_out.data();
    o = 0;
    ASSERT_EQ(kiviEncodeDCIntra_H263_16s1u(128, &p, &o), kivStsOk);
    EXPECT_EQ(dc_out[0], 0xFF);

    // Reconstruction with the coded flag 0: last 0, only element 0 written.
    Block rec;
    rec.fill(9);
    auto r = stream_of("1111 1111");
    p = r.data();
    o = 0;
    ASSERT_EQ(kiviReconstructCoeffsIntra_H263_1u16s(&p, &o, rec.data(), &last, 0, 5, 0, 0, 0), kivStsOk);
    EXPECT_EQ(last, 0);
    EXPECT_EQ(rec[0], 1024);
    EXPECT_EQ(rec[1], 9);
    EXPECT_EQ(p, r.data() + 1);
    // An invalid INTRADC: last -1, nothing consumed; an AC error: cursor past the INTRADC.
    auto bad = stream_of("10000000");
    p = bad.data();
    EXPECT_EQ(kiviReconstructCoeffsIntra_H263_1u16s(&p, &o, rec.data(), &last, 1, 5, 0, 0, 0), kivStsBadBitstreamCode);
    EXPECT_EQ(last, -1);
    EXPECT_EQ(p, bad.data());
    auto ac = stream_of("0000 0011 0000 0000 0000 0");
    p = ac.data();
    EXPECT_EQ(kiviReconstructCoeffsIntra_H263_1u16s(&p, &o, rec.data(), &last, 1, 5, 0, 0, 0), kivStsBadBitstreamCode);
    EXPECT_EQ(p, ac.data() + 1);
    EXPECT_EQ(rec[0], 24);
    // Argument order.
    Kiv8u* null_byte = nullptr;
    EXPECT_EQ(kiviReconstructCoeffsInter_H263_1u16s(&null_byte, &o, rec.data(), &last, 0, 0), kivStsNullPointer);
    o = 9;
    EXPECT_EQ(kiviReconstructCoeffsInter_H263_1u16s(&p, &o, rec.data(), &last, 0, 0), kivStsBadBitOffset);
    o = 0;
    EXPECT_EQ(kiviReconstructCoeffsInter_H263_1u16s(&p, &o, rec.data(), &last, 0, 0), kivStsBadQp);
    EXPECT_EQ(kiviEncodeCoeffsInter_H263_16s1u(levels.data(), &p, &o, 65, 0, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviEncodeCoeffsInter_H263_16s1u(nullptr, &p, &o, 65, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviDecodeCoeffsIntra_H263_1u16s(&p, &o, rec.data(), nullptr, 0, 0, 0), kivStsNullPointer);
}

}  // namespace
