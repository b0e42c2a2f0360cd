// H.263: the alternative INTRA table, quantisers against their rules, round
// trips of random blocks in every mode and scan, and the error paths.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <vector>

#include "common/scan_tables.h"
#include "h263/h263_tables.h"
#include "kivvc.h"
#include "mpeg4/bit_text.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::test;
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

// Quantiser rules and limits. Each row starts from a zero block holding
// `in`; `out` lists the elements that change.
TEST(H263Quant, RulesAndLimits) {
    enum class Op { Intra, Inter, InvIntra, InvInter };
    const struct {
        Op op;
        int qp, last, adv, modq;  // last: inverse only
        Entries in, out;
        int count;  // forward only; -1: no count pointer
    } rows[] = {
        {Op::Intra, 10, 0, 0, 0, {{0, 2}}, {{0, 1}}, 1},  // (2 + 4) >> 3 = 0, replaced by 1
        {Op::Intra, 7, 0, 0, 0, {{0, 2040}, {5, -300}}, {{0, 254}, {5, -21}}, 2},  // 300 / 14
        {Op::Inter, 7, 0, 0, 0, {{3, 4000}, {4, -4000}}, {{3, 127}, {4, -127}}, 2},
        {Op::Inter, 7, 0, 0, 1, {{3, 4000}}, {{3, (4000 - 3) * 4682 >> 16}}, 1},  // R(7) = 4682, not limited
        // Advanced intra coding: DC included, offset 3 QP / 4, limit at any QP without modq.
        {Op::Intra, 4, 0, 1, 0, {{0, 100}, {63, -32768}}, {{0, (103 * 8193) >> 16}, {63, -127}}, 2},
        {Op::Intra, 20, 0, 1, 1, {{63, -32768}}, {{63, -((32767 * 1639) >> 16)}}, 1},
        {Op::Intra, 1, 0, 0, 0, {{1, -7}, {2, 7}}, {{0, 1}, {1, -3}, {2, 3}}, -1},  // QP 1 halves toward zero
        // Inverse: limited to 12 bits without modq; nothing beyond the last index.
        {Op::InvInter, 31, 2, 0, 0, {{0, 100}, {1, -100}, {2, 3}, {3, 5}},
         {{0, 2047}, {1, -2048}, {2, 2 * 31 * 3 + 31}}, 0},
        {Op::InvInter, 31, 7, 0, 1, {{0, 100}, {7, -1000}}, {{0, 6231}, {7, -32768}}, 0},
        // Intra: element 0 is 8 times its level; AC untouched when last is 0.
        {Op::InvIntra, 8, 0, 0, 0, {{0, 50}, {1, 2}}, {{0, 400}}, 0},
        {Op::InvIntra, 8, 1, 0, 0, {{1, 2}}, {{1, 2 * 8 * 2 + 7}}, 0},
        // Advanced intra: 2 QP L, no offset, DC included.
        {Op::InvIntra, 6, 9, 1, 0, {{0, -5}, {9, 3}}, {{0, -60}, {9, 36}}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << (&row - rows));
        Block b = block_of(row.in), want = block_of(row.in, row.out);
        int count = 0;
        int* pc = row.count < 0 ? nullptr : &count;
        const KivStatus st =
            row.op == Op::Intra      ? kiviQuantIntra_H263_16s_C1I(b.data(), row.qp, pc, row.adv, row.modq)
            : row.op == Op::Inter    ? kiviQuantInter_H263_16s_C1I(b.data(), row.qp, pc, row.modq)
            : row.op == Op::InvIntra ? kiviQuantInvIntra_H263_16s_C1I(b.data(), row.last, row.qp, row.adv, row.modq)
                                     : kiviQuantInvInter_H263_16s_C1I(b.data(), row.last, row.qp, row.modq);
        ASSERT_EQ(st, kivStsOk);
        EXPECT_EQ(b, want);
        EXPECT_EQ(count, std::max(row.count, 0));
    }
    Block b{};
    int count = 0;
    EXPECT_EQ(kiviQuantIntra_H263_16s_C1I(nullptr, 0, &count, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInter_H263_16s_C1I(b.data(), 32, &count, 0), kivStsBadQp);
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
        std::vector<Kiv8u> buf(64 * 5 + 8, 0);
        const int offset = rng.range(0, 7);
        Kiv8u* p = buf.data();
        int o = offset;
        const Kiv16s dc = static_cast<Kiv16s>(rng.range(1, 254));
        if (intra && !adv) {
            ASSERT_EQ(kiviEncodeDCIntra_H263_16s1u(dc, &p, &o), kivStsOk);
        }
        Kiv8u* const coeffs = p;
        const int coeffs_offset = o;
        ASSERT_EQ(intra ? kiviEncodeCoeffsIntra_H263_16s1u(levels.data(), &p, &o, count, adv, modq, scan)
                        : kiviEncodeCoeffsInter_H263_16s1u(levels.data(), &p, &o, count, modq, scan),
                  kivStsOk);
        const Kiv8u* const end = p;
        const int end_offset = o;

        // Plain decode with the caller's DC kept.
        Block got{};
        got[0] = 77;
        int last = -5;
        p = coeffs;
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
        ASSERT_EQ(p, end);
        ASSERT_EQ(o, end_offset);

        // Combined reconstruction: encode again in the scan it reads.
        if (adv ? scan == 3 : scan != 0) continue;  // streams in an order the reconstruction cannot read
        const int qp = rng.range(1, 31);
        p = buf.data();
        o = offset;
        Block rec{};
        ASSERT_EQ(kind == 0 ? kiviReconstructCoeffsInter_H263_1u16s(&p, &o, rec.data(), &last, qp, modq)
                            : kiviReconstructCoeffsIntra_H263_1u16s(&p, &o, rec.data(), &last, 1, qp, adv, scan, modq),
                  kivStsOk);
        ASSERT_EQ(p, end);
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

TEST(H263Coding, EscapesIntradcAndErrorPaths) {
    const KivStatus bad = kivStsBadBitstreamCode;
    Block b{};
    int last = 0;
    auto inter = [&](bool modq) {
        return [&, modq](Kiv8u** p, int* o) { return kiviDecodeCoeffsInter_H263_1u16s(p, o, b.data(), &last, modq, 3); };
    };
    // Escape LEVEL 0 fails in both modes; -128 fails without modq.
    for (bool modq : {false, true}) EXPECT_EQ(read_text("0000011 1 000000 00000000", inter(modq)).status, bad);
    const char* extended = "0000011 1 000010 10000000 01000 000110";
    EXPECT_EQ(read_text(extended, inter(false)), (Outcome{bad, 0}));
    // With modq: 5 low bits 01000, 6 high bits 000110: 6 * 32 + 8 = 200 at position 2.
    EXPECT_EQ(read_text(extended, inter(true)), (Outcome{kivStsOk, 33}));
    EXPECT_EQ(b[2], 200);
    EXPECT_EQ(last, 2);
    // Negative extended level: -200 = 11100111000 (5 low bits 11000, 6 high 111001).
    EXPECT_EQ(read_text("0000011 1 000000 10000000 11000 111001", inter(true)).status, kivStsOk);
    EXPECT_EQ(b[0], -200);
    // Encoding 200 with modq writes that extended escape.
    Block levels{};
    levels[2] = 200;
    std::vector<Kiv8u> out(8, 0);
    Kiv8u* p = out.data();
    int o = 0;
    ASSERT_EQ(kiviEncodeCoeffsInter_H263_16s1u(levels.data(), &p, &o, 1, 1, 3), kivStsOk);
    EXPECT_EQ(out, stream_of(extended, 0, 3));
    // A run past 63 fails and reports the position reached; so does no code.
    EXPECT_EQ(read_text("0000011 0 111111 00000001 0000011 1 000000 00000001", inter(false)).status, bad);
    EXPECT_EQ(last, 63);
    EXPECT_EQ(read_text("0000 0000 0000 0", inter(false)).status, bad);
    EXPECT_EQ(last, -1);

    // INTRADC: 0 and 128 are refused, cursor and value kept; 255 is 128.
    Kiv16s dc = 5;
    auto intradc = [&](Kiv8u** q, int* r) { return kiviDecodeDCIntra_H263_1u16s(q, r, &dc); };
    for (const char* text : {"00000000", "10000000"}) EXPECT_EQ(read_text(text, intradc), (Outcome{bad, 0}));
    EXPECT_EQ(dc, 5);
    EXPECT_EQ(read_text("1111 1111", intradc, 3), (Outcome{kivStsOk, 11}));
    EXPECT_EQ(dc, 128);
    std::vector<Kiv8u> dc_out(2, 0);
    p = dc_out.data();
    o = 0;
    ASSERT_EQ(kiviEncodeDCIntra_H263_16s1u(128, &p, &o), kivStsOk);
    EXPECT_EQ(dc_out[0], 0xFF);

    // Reconstruction with the coded flag 0: last 0, only element 0 written.
    // An invalid INTRADC: last -1, nothing consumed; an AC error: cursor past the INTRADC.
    Block rec;
    rec.fill(9);
    auto intra = [&](int coded) {
        return [&, coded](Kiv8u** q, int* r) {
            return kiviReconstructCoeffsIntra_H263_1u16s(q, r, rec.data(), &last, coded, 5, 0, 0, 0);
        };
    };
    EXPECT_EQ(read_text("1111 1111", intra(0)), (Outcome{kivStsOk, 8}));
    EXPECT_EQ(last, 0);
    EXPECT_EQ(rec[0], 1024);
    EXPECT_EQ(rec[1], 9);
    EXPECT_EQ(read_text("10000000", intra(1)), (Outcome{bad, 0}));
    EXPECT_EQ(last, -1);
    EXPECT_EQ(read_text("0000 0011 0000 0000 0000 0", intra(1)), (Outcome{bad, 8}));
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
