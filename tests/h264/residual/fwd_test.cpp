// H.264 encoder side: the quantisation factors against the norms of the
// transform bases, the forward transforms against the matrix products, the
// quantisers checked through the decoder's dequantisation and inverse
// transforms, the rounding rules, the level bound, the scaling-list
// generators, the sums of differences and the statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>

#include "h264/residual/fwd_kernels.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using namespace kivvc::h264;
using kivvc::test::Rng;

// Quantiser step of H.264 for a QP.
double qstep(int qp) {
    constexpr double kBase[6] = {0.625, 0.6875, 0.8125, 0.875, 1.0, 1.125};
    return kBase[qp % 6] * double(1 << (qp / 6));
}

const Kiv16s kRasterScan[16] = {0, 1, 5, 6, 2, 4, 7, 12, 3, 8, 11, 13, 9, 10, 14, 15};  // zigzag positions

// The count convention: the non-zero levels, negated when level 0 is
// non-zero; the last position: the largest scan position among them.
template <class Level>
void expect_counts(const Level* levels, int n, const Kiv16s* scan, int count, int last) {
    int nonZero = 0, highest = 0;
    for (int k = 0; k < n; ++k)
        if (levels[k]) ++nonZero, highest = std::max<int>(highest, scan[k]);
    EXPECT_EQ(count, levels[0] ? -nonZero : nonZero);
    EXPECT_EQ(last, highest);
}

TEST(H264FwdTables, FactorsMatchTheNormsOfTheTransformBases) {
    // Forward factor x normAdjust x the basis-row norms is 2^21 (4x4: squared
    // norms 4 and 10 forward, 4 and 5/2 inverse) and 2^24 (8x8: squared norms
    // of the forward rows 8, 5, 289/32).
    const auto norm4 = [](int i) { return i % 2 ? 5.0 : 4.0; };
    const auto norm8 = [](int i) { return i % 4 == 0 ? 8.0 : i % 2 == 0 ? 5.0 : 289.0 / 32.0; };
    for (int m = 0; m < 6; ++m) {
        for (int k = 0; k < 16; ++k) {
            const double product = double(FwdQuantTable_16s[m][k]) * InvQuantTable_def[m][k] * norm4(k >> 2) * norm4(k & 3);
            EXPECT_NEAR(product / 2097152.0, 1.0, 5e-4) << m << " " << k;
        }
        for (int k = 0; k < 64; ++k) {
            const double product = double(LevelScale_8x8_default[m][k]) * InvLevelScale_8x8_default[m][k] *
                                   norm8(k >> 3) * norm8(k & 7);
            EXPECT_NEAR(product / 16777216.0, 1.0, 2e-3) << m << " " << k;
        }
    }
}

TEST(H264FwdTransform, CoreTransformsEqualTheMatrixProducts) {
    const int c4[4][4] = {{1, 1, 1, 1}, {2, 1, -1, -2}, {1, -1, -1, 1}, {1, -2, 2, -1}};
    Rng rng(7);
    for (int run = 0; run < 200; ++run) {
        Kiv16s x[16], t[16], viaPrediction[16];
        Kiv8u pred[16];
        Kiv32s wide[16];
        for (int k = 0; k < 16; ++k) pred[k] = Kiv8u(rng.range(0, 255)), x[k] = pred[k];
        fwd::table().transform4x4(x, t);
        fwd::table().transform4x4_wide(x, wide);
        ASSERT_EQ(kiviTransformPrediction_H264_8u16s_C1(pred, 4, viaPrediction), kivStsOk);
        for (int k = 0; k < 16; ++k) {
            int want = 0;
            for (int a = 0; a < 4; ++a)
                for (int b = 0; b < 4; ++b) want += c4[k >> 2][a] * x[4 * a + b] * c4[k & 3][b];
            ASSERT_TRUE(t[k] == want && wide[k] == want && viaPrediction[k] == want) << k;
        }
    }
    // 8x8: in place, separate and 32-bit against the forward butterfly written
    // out (rows, then columns; inputs small enough for 16 bits).
    const auto butterfly = [](int* v, int s) {
        const int a0 = v[0] + v[7 * s], a1 = v[s] + v[6 * s], a2 = v[2 * s] + v[5 * s], a3 = v[3 * s] + v[4 * s];
        const int d0 = v[0] - v[7 * s], d1 = v[s] - v[6 * s], d2 = v[2 * s] - v[5 * s], d3 = v[3 * s] - v[4 * s];
        const int b0 = a0 + a3, b1 = a1 + a2, b2 = a0 - a3, b3 = a1 - a2;
        const int b4 = d1 + d2 + d0 + (d0 >> 1), b5 = d0 - d3 - d2 - (d2 >> 1);
        const int b6 = d0 + d3 - d1 - (d1 >> 1), b7 = d1 - d2 + d3 + (d3 >> 1);
        const int y[8] = {b0 + b1, b4 + (b7 >> 2), b2 + (b3 >> 1), b5 + (b6 >> 2),
                          b0 - b1, b6 - (b5 >> 2), (b2 >> 1) - b3, (b4 >> 2) - b7};
        for (int i = 0; i < 8; ++i) v[i * s] = y[i];
    };
    for (int run = 0; run < 200; ++run) {
        Kiv16s block[64], copy[64], out[64];
        Kiv32s out32[64];
        int want[64];
        for (int k = 0; k < 64; ++k) want[k] = block[k] = copy[k] = Kiv16s(rng.range(-100, 100));
        for (int i = 0; i < 8; ++i) butterfly(want + 8 * i, 1);
        for (int i = 0; i < 8; ++i) butterfly(want + i, 8);
        ASSERT_EQ(kiviTransformFwdLuma8x8_H264_16s_C1(block, out), kivStsOk);
        ASSERT_EQ(kiviTransformFwdLuma8x8_H264_16s32s_C1(block, out32), kivStsOk);
        ASSERT_EQ(kiviTransformLuma8x8Fwd_H264_16s_C1I(copy), kivStsOk);
        for (int k = 0; k < 64; ++k) ASSERT_TRUE(out[k] == want[k] && copy[k] == want[k] && out32[k] == want[k]) << k;
    }
}

// Reconstruction of random residuals through the decoder side: the RMS error
// stays within the quantiser's dead zone, (1 - rounding) x step, plus the
// inverse transform's rounding, and no sample is off by more than the sum
// of the basis amplitudes squared times that.
struct ErrorStats {
    double sumSq = 0;
    int n = 0, worst = 0;
    void add(int e) { sumSq += double(e) * e, ++n, worst = std::max(worst, std::abs(e)); }
    void check(double step, double roundFraction, double amplitude) const {
        const double bound = (1 - roundFraction) * step;
        EXPECT_LE(std::sqrt(sumSq / n), bound + 1.0);
        EXPECT_LE(worst, amplitude * amplitude * bound + 1.5);
    }
};

TEST(H264FwdQuant, BlocksRoundTripWithinTheQuantiserStep) {
    Rng rng(11);
    Kiv8u pred[64];
    std::fill(pred, pred + 64, Kiv8u(128));
    Kiv16s scan8[64];
    for (int k = 0; k < 64; ++k) scan8[k] = Kiv16s(63 - k);
    for (int qp = 0; qp <= 51; qp += 3)
        for (int intra = 0; intra < 2; ++intra)
            for (int scaled = 0; scaled < 2; ++scaled) {
                SCOPED_TRACE("qp " + std::to_string(qp) + " intra " + std::to_string(intra) + " scaled " +
                             std::to_string(scaled));
                Kiv8u weights[64];
                Kiv16s inv4[16], fwd4[16], inv8[64], fwd8[64];
                const int w = scaled ? rng.range(8, 40) : 16;
                std::fill(weights, weights + 64, Kiv8u(w));
                ASSERT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv4, fwd4, qp % 6), kivStsOk);
                ASSERT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(weights, 8, inv8, fwd8, qp % 6), kivStsOk);
                ErrorStats stats4, stats8;
                for (int run = 0; run < 100; ++run) {
                    // 4x4: flat or scaled, 16- and 32-bit levels.
                    Kiv16s residual[64], levels[64], coeffs[64];
                    Kiv32s wide[64], coeffs32[64], count, last, count32, last32;
                    Kiv8u dst[64];
                    for (Kiv16s& v : residual) v = Kiv16s(rng.range(-120, 120));
                    const Kiv16s* scale = scaled ? fwd4 : nullptr;
                    ASSERT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(residual, levels, qp, &count, intra, kRasterScan, &last, scale),
                              kivStsOk);
                    ASSERT_EQ(kiviTransformQuantFwd4x4_H264_16s32s_C1(residual, wide, qp, &count32, intra, kRasterScan,
                                                                     &last32, scale),
                              kivStsOk);
                    ASSERT_TRUE(std::equal(levels, levels + 16, wide) && count32 == count && last32 == last);
                    expect_counts(levels, 16, kRasterScan, count, last);
                    ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(pred, 4, levels, nullptr, dst, 4, qp, 1,
                                                                           scaled ? inv4 : nullptr),
                              kivStsOk);
                    for (int k = 0; k < 16; ++k) stats4.add(dst[k] - 128 - residual[k]);

                    // 8x8: always with a scale, 16- and 32-bit levels.
                    ASSERT_EQ(kiviTransformFwdLuma8x8_H264_16s_C1(residual, coeffs), kivStsOk);
                    ASSERT_EQ(kiviQuantLuma8x8_H264_16s_C1(coeffs, levels, Kiv32u(qp / 6), intra, scan8, fwd8, &count, &last),
                              kivStsOk);
                    std::copy(coeffs, coeffs + 64, coeffs32);
                    ASSERT_EQ(kiviQuantLuma8x8_H264_32s_C1(coeffs32, wide, Kiv32u(qp / 6), intra, scan8, fwd8, &count32,
                                                          &last32),
                              kivStsOk);
                    ASSERT_TRUE(std::equal(levels, levels + 64, wide) && count32 == count && last32 == last);
                    expect_counts(levels, 64, scan8, count, last);
                    ASSERT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(levels, qp / 6, inv8), kivStsOk);
                    ASSERT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred, 8, levels, dst, 8), kivStsOk);
                    for (int k = 0; k < 64; ++k) stats8.add(dst[k] - 128 - residual[k]);
                }
                const double round = intra ? 1.0 / 3 : 1.0 / 6;
                stats4.check(qstep(qp) * w / 16.0, round, 2.31);
                stats8.check(qstep(qp) * w / 16.0, round, 3.7);
            }
}

// DC-only blocks: each 4x4 block is flat, so its transformed DC is 16 x its
// value and every AC coefficient is zero; the DC path alone reconstructs it.
// The 32-bit quantisers give the same levels.
TEST(H264FwdQuant, DcBlocksRoundTripWithinTheQuantiserStep) {
    Rng rng(13);
    Kiv16s scan[16];
    for (int k = 0; k < 16; ++k) scan[k] = Kiv16s(k);
    for (int qp = 0; qp <= 51; ++qp) {
        SCOPED_TRACE("qp " + std::to_string(qp));
        ErrorStats luma, chroma420, chroma422;
        for (int run = 0; run < 50; ++run) {
            Kiv16s value[16], dc[16], t[16];
            Kiv32s dc32[16], t32[16], count, last, count32, last32;
            const auto load = [&](int n) {
                for (int b = 0; b < n; ++b) dc[b] = Kiv16s(16 * value[b]), dc32[b] = dc[b];
            };
            const auto same_levels = [&](int n) { return std::equal(dc, dc + n, dc32) && count == count32; };
            for (int b = 0; b < 16; ++b) value[b] = Kiv16s(rng.range(-120, 120));
            load(16);
            ASSERT_EQ(kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(dc, t, qp, &count, 1, scan, &last, nullptr), kivStsOk);
            ASSERT_EQ(kiviTransformQuantFwdLumaDC4x4_H264_32s_C1I(dc32, t32, qp, &count32, 1, scan, &last32, nullptr), kivStsOk);
            ASSERT_TRUE(same_levels(16) && last == last32);
            ASSERT_EQ(kiviTransformDequantLumaDC_H264_16s_C1I(dc, qp), kivStsOk);
            for (int b = 0; b < 16; ++b) luma.add(((dc[b] + 32) >> 6) - value[b]);
            if (qp > 39) continue;
            for (int intra = 0; intra < 2; ++intra) {
                load(4);
                ASSERT_EQ(kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I(dc, t, qp, &count, intra, 1, nullptr), kivStsOk);
                ASSERT_EQ(kiviTransformQuantFwdChromaDC2x2_H264_32s_C1I(dc32, t32, qp, &count32, intra, 1, nullptr), kivStsOk);
                ASSERT_TRUE(same_levels(4));
                ASSERT_EQ(kiviTransformDequantChromaDC_H264_16s_C1I(dc, qp), kivStsOk);
                for (int b = 0; b < 4; ++b) chroma420.add(((dc[b] + 32) >> 6) - value[b]);
                load(8);
                ASSERT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(dc, t, qp, &count, intra, 1, nullptr), kivStsOk);
                ASSERT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_32s_C1I(dc32, t32, qp, &count32, intra, 1, nullptr), kivStsOk);
                ASSERT_TRUE(same_levels(8));
                ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(dc, qp, nullptr), kivStsOk);
                for (int b = 0; b < 8; ++b) chroma422.add(((dc[b] + 32) >> 6) - value[b]);
            }
        }
        // The DC transforms are orthogonal up to a scale, so the per-block
        // step is the quantiser step of the QP (4:2:2 chroma: of QP + 3).
        luma.check(qstep(qp), 1.0 / 3, 1.0);
        if (qp > 39) continue;
        chroma420.check(qstep(qp), 1.0 / 6, 1.0);
        chroma422.check(qstep(qp + 3), 1.0 / 6, std::sqrt(2.0));
    }
}

TEST(H264FwdQuant, RoundingTerms) {
    Kiv16s residual[16], levels[16], scale4[16], t[16] = {1}, dc[16];
    Kiv32s count, last;
    // 4x4 blocks of one value v (DC 16 v): flat m = 13107 (QP 0) or 11916
    // (QP 1), s = 15, r = 2^15 / 3 (intra) or / 6; with a scale m at QP 0,
    // s = 11, r = 682 or 341.
    struct Row4 {
        Kiv16s qp, v, intra, scale;  // scale 0: none
        int want;
    };
    for (const Row4& row : {Row4{0, 5, 1, 0, 32}, Row4{0, 2, 1, 0, 13}, Row4{0, 2, 0, 0, 12}, Row4{1, 1, 0, 0, 5},
                            Row4{0, 2, 1, 43, 1}, Row4{0, 2, 0, 52, 0}}) {
        std::fill(residual, residual + 16, row.v);
        std::fill(scale4, scale4 + 16, row.scale);
        ASSERT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(residual, levels, row.qp, &count, row.intra, kRasterScan, &last,
                                                      row.scale ? scale4 : nullptr),
                  kivStsOk);
        EXPECT_EQ(levels[0], row.want) << row.qp << " " << row.v << " " << row.intra << " " << row.scale;
    }
    // DC blocks at QP 0 with a scale: s = 12, r = 682 << 1 (not 4096 / 3), or
    // 342 << 1 (inter 4:2:2 chroma; luma is always intra). Without one, 4:2:2
    // chroma: m = 9362 (the factor of QP 3), s = 16, r = 21824; luma: m =
    // 13107, s = 16, r = 2^16 / 3.
    struct RowDc {
        Kiv16s t0, scale, intra;
        int want422, wantLuma;
    };
    for (const RowDc& row : {RowDc{1, 2731, 1, 0, 0}, RowDc{1, 2732, 1, 1, 1}, RowDc{1, 3411, 0, 0, 1},
                             RowDc{1, 3412, 0, 1, 1}, RowDc{5, 0, 1, 1, 1}, RowDc{4, 0, 1, 0, 1}}) {
        t[0] = row.t0;  // 5 x 9362 + 21824 = 68634 -> 1
        const Kiv16s* scale = row.scale ? &row.scale : nullptr;
        ASSERT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(dc, t, 0, &count, row.intra, 0, scale), kivStsOk);
        EXPECT_EQ(dc[0], row.want422) << row.t0 << " " << row.scale;
        EXPECT_EQ(count, -row.want422);
        ASSERT_EQ(kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(dc, t, 0, &count, 0, kRasterScan, &last, scale), kivStsOk);
        EXPECT_EQ(dc[0], row.wantLuma) << row.t0 << " " << row.scale;
    }
    // 8x8: r = 682 << (q + 1) intra, 342 << (q + 1) inter, s = q + 12.
    Kiv16s src[64] = {1}, out[64], scale8[64], scan[64] = {};
    for (const auto& [m, intra, want] : {std::array<int, 3>{2731, 1, 0}, {2732, 1, 1}, {3411, 0, 0}, {3412, 0, 1}}) {
        std::fill(scale8, scale8 + 64, Kiv16s(m));
        ASSERT_EQ(kiviQuantLuma8x8_H264_16s_C1(src, out, 0, intra, scan, scale8, &count, &last), kivStsOk);
        EXPECT_EQ(out[0], want) << m;
    }
    // Saturated 16-bit levels keep their sign.
    src[0] = -32768;
    std::fill(scale8, scale8 + 64, Kiv16s(-1));  // read as 65535
    ASSERT_EQ(kiviQuantLuma8x8_H264_16s_C1(src, out, 0, 1, scan, scale8, &count, &last), kivStsOk);
    EXPECT_EQ(out[0], -32767);
}

TEST(H264FwdQuant, FlatQuantisersBoundTheLevels) {
    Rng rng(5);
    for (int run = 0; run < 300; ++run) {
        const int qp = rng.range(0, 51);
        const Kiv8u intra = Kiv8u(rng.range(0, 1));
        Kiv16s residual[16], block[16], levels[16];
        for (Kiv16s& v : residual) v = Kiv16s(rng.range(-255, 255));
        std::memcpy(block, residual, sizeof block);
        Kiv32s count, last;
        Kiv8s count8 = 99;
        Kiv8u last8 = 99;
        kiviTransformQuantFwd4x4_H264_16s_C1(residual, levels, qp, &count, intra, kRasterScan, &last, nullptr);
        ASSERT_EQ(kiviTransformQuantResidual_H264_16s_C1I(block, qp, &count8, intra, kRasterScan, &last8), kivStsOk);
        ASSERT_TRUE(std::equal(levels, levels + 16, block) && count8 == count && last8 == last);
        // Flat DC quantisers follow the scaled ones without a scale.
        Kiv16s dc[16], dcFlat[16], t[16], tFlat[16];
        for (int b = 0; b < 16; ++b) dc[b] = dcFlat[b] = Kiv16s(rng.range(-2000, 2000));
        kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(dc, t, qp, &count, 1, kRasterScan, &last, nullptr);
        const KivStatus st = kiviTransformQuantLumaDC_H264_16s_C1I(dcFlat, tFlat, qp, &count8, 1, kRasterScan, &last8);
        ASSERT_TRUE(std::equal(t, t + 16, tFlat));
        if (std::any_of(dc, dc + 16, [](int v) { return std::abs(v) > 2063; })) {
            ASSERT_EQ(st, kivStsLevelOutOfRange);
        } else {
            ASSERT_EQ(st, kivStsOk);
            ASSERT_TRUE(std::equal(dc, dc + 16, dcFlat) && count8 == count && last8 == last);
        }
        if (qp > 39) continue;
        for (int b = 0; b < 4; ++b) dc[b] = dcFlat[b] = Kiv16s(rng.range(-1000, 1000));
        kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I(dc, t, qp, &count, intra, 1, nullptr);
        ASSERT_EQ(kiviTransformQuantChromaDC_H264_16s_C1I(dcFlat, tFlat, qp, &count8, intra, 1), kivStsOk);
        ASSERT_TRUE(std::equal(dc, dc + 4, dcFlat) && count8 == count);
    }
    // Beyond 2063: the levels before the offending position are stored, the
    // rest keeps the transformed values, the counts are untouched.
    Kiv16s block[16];
    for (int k = 0; k < 16; ++k) block[k] = Kiv16s((k & 3) < 2 ? 400 : -400);  // only coefficient 1 is non-zero
    Kiv8s count8 = 99;
    Kiv8u last8 = 99;
    ASSERT_EQ(kiviTransformQuantResidual_H264_16s_C1I(block, 0, &count8, 1, kRasterScan, &last8), kivStsLevelOutOfRange);
    EXPECT_EQ(block[0], 0);
    EXPECT_EQ(block[1], 4 * 3 * 800);
    EXPECT_TRUE(count8 == 99 && last8 == 99);
    Kiv16s dc[4] = {16000, 0, 0, 0}, t[4];
    EXPECT_EQ(kiviTransformQuantChromaDC_H264_16s_C1I(dc, t, 0, &count8, 1, 1), kivStsLevelOutOfRange);
}

TEST(H264FwdScaleLevels, GeneratorsGiveTheLevelScalesOfTheWeights) {
    // Every weight at every position; 8x8 weights rows 11 bytes apart.
    Kiv8u weights[16], rows[8 * 11] = {};
    Kiv16s inv[64], fwd[64];
    for (int m = 0; m < 6; ++m)
        for (int w = 0; w < 255; ++w) {
            const auto weight = [&](int k) { return 1 + (w + 7 * k) % 255; };
            for (int k = 0; k < 64; ++k) rows[(k >> 3) * 11 + (k & 7)] = Kiv8u(weight(k));
            for (int k = 0; k < 16; ++k) weights[k] = Kiv8u(weight(k));
            ASSERT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv, fwd, m), kivStsOk);
            for (int k = 0; k < 16; ++k)
                ASSERT_TRUE(fwd[k] == FwdQuantTable_16s[m][k] / weight(k) && inv[k] == InvQuantTable_def[m][k] * weight(k))
                    << m << " " << w << " " << k;
            ASSERT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(rows, 11, inv, fwd, m), kivStsOk);
            for (int k = 0; k < 64; ++k)
                ASSERT_TRUE(fwd[k] == LevelScale_8x8_default[m][k] / weight(k) &&
                            inv[k] == InvLevelScale_8x8_default[m][k] * weight(k))
                    << m << " " << w << " " << k;
        }
    // Zero weights and bad QP % 6: nothing written.
    std::fill(inv, inv + 64, Kiv16s(-5));
    EXPECT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(rows, 10, inv, fwd, 0), kivStsDivByZero);
    EXPECT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(rows, 11, inv, fwd, 6), kivStsBadQp);
    weights[3] = 0;
    EXPECT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv, fwd, 0), kivStsDivByZero);
    EXPECT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv, fwd, 6), kivStsOutOfRange);
    EXPECT_EQ(inv[0], -5);
}

TEST(H264FwdSums, SumsAndDifferencesPerBlockInRasterOrder) {
    Rng rng(9);
    Kiv8u src[256], pred[256];
    Kiv16u src16[256], pred16[256];
    for (int i = 0; i < 256; ++i) {
        src[i] = Kiv8u(rng.range(0, 255)), pred[i] = Kiv8u(rng.range(0, 255));
        src16[i] = Kiv16u(rng.range(0, 65535)), pred16[i] = Kiv16u(rng.range(0, 65535));
    }
    for (int size : {16, 8}) {
        SCOPED_TRACE(size);
        const int across = size / 4;
        Kiv16s sums[16], diff[256], diff16[256];
        Kiv32s sums32[16];
        // The 8-bit 8x8 call without differences.
        ASSERT_EQ((size == 16 ? kiviSumsDiff16x16Blocks4x4_8u16s_C1 : kiviSumsDiff8x8Blocks4x4_8u16s_C1)(
                      src, 16, pred, 16, sums, size == 16 ? diff : nullptr),
                  kivStsOk);
        ASSERT_EQ((size == 16 ? kiviSumsDiff16x16Blocks4x4_16u32s_C1R : kiviSumsDiff8x8Blocks4x4_16u32s_C1R)(
                      src16, 32, pred16, 32, sums32, diff16),
                  kivStsOk);
        for (int b = 0; b < across * across; ++b) {
            int want = 0, want32 = 0;
            for (int k = 0; k < 16; ++k) {
                const int i = ((b / across) * 4 + (k >> 2)) * 16 + (b % across) * 4 + (k & 3);
                want += src[i] - pred[i], want32 += src16[i] - pred16[i];
                ASSERT_TRUE(size == 8 || diff[16 * b + k] == src[i] - pred[i]);
                ASSERT_EQ(diff16[16 * b + k], Kiv16s(src16[i] - pred16[i]));
            }
            ASSERT_EQ(sums[b], want);
            ASSERT_EQ(sums32[b], want32);
        }
    }
    Kiv16s sums[4];
    EXPECT_EQ(kiviSumsDiff8x8Blocks4x4_8u16s_C1(src, 16, nullptr, 16, sums, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviSumsDiff16x16Blocks4x4_16u32s_C1R(src16, 32, pred16, 32, nullptr, nullptr), kivStsNullPointer);
}

TEST(H264FwdStatus, ChecksInTheDocumentedOrder) {
    Kiv16s b[64] = {}, t[64] = {};
    Kiv32s n, last;
    Kiv8s n8;
    EXPECT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(b, t, 52, &n, 0, nullptr, &last, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(b, t, -1, &n, 0, b, &last, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(b, t, 52, &n, 1, b, nullptr, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I(b, t, 40, &n, 1, 1, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(b, nullptr, 40, &n, 1, 1, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantLuma8x8_H264_16s_C1(b, t, 9, 1, b, b, &n, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantLuma8x8_H264_16s_C1(b, t, 9, 1, b, b, &n, &last), kivStsBadQp);
    EXPECT_EQ(kiviQuantLuma8x8_H264_16s_C1(b, t, 8, 1, b, b, &n, &last), kivStsOk);
    EXPECT_EQ(kiviTransformQuantResidual_H264_16s_C1I(b, 52, &n8, 1, b, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantLumaDC_H264_16s_C1I(b, t, 52, &n8, 1, b, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantChromaDC_H264_16s_C1I(b, t, 40, &n8, 1, 1), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformLuma8x8Fwd_H264_16s_C1I(nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformFwdLuma8x8_H264_16s32s_C1(b, nullptr), kivStsNullPointer);
}

}  // namespace
