// H.264 encoder side: tables, forward transforms and quantisers checked
// through the decoder's dequantisation and inverse transforms, the rounding
// rules, the level bound, the scaling-list generators and the statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "h264/residual/cavlc_tables.h"
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

TEST(H264FwdTables, FactorsMatchTheNormsOfTheForwardBasis) {
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 16; ++k) {
            EXPECT_EQ(FwdQuantTable_16s[m][k], QuantCoef[m][k]);
            EXPECT_EQ(InvQuantTable_def[m][k] * 16, InvLevelScale_4x4_default[m][k]);
        }
    // Squared norms of the 8-point forward basis rows: 8 (rows 0, 4), 5 (rows
    // 2, 6), 289/32 (odd rows). factor x normAdjust x both norms is 2^24.
    const auto norm = [](int i) { return i % 4 == 0 ? 8.0 : i % 2 == 0 ? 5.0 : 289.0 / 32.0; };
    for (int m = 0; m < 6; ++m)
        for (int k = 0; k < 64; ++k) {
            const double product = double(LevelScale_8x8_default[m][k]) * InvLevelScale_8x8_default[m][k] *
                                   norm(k >> 3) * norm(k & 7);
            EXPECT_NEAR(product / 16777216.0, 1.0, 2e-3) << m << " " << k;
        }
    const Kiv16s row0[8] = {20, 19, 25, 19, 20, 19, 25, 19};
    EXPECT_TRUE(std::equal(row0, row0 + 8, InvLevelScale_8x8_default[0].begin()));
    EXPECT_EQ(dt[0], 0);
    EXPECT_EQ(dt[1], 65535);
    for (int w = 2; w < 256; ++w) EXPECT_EQ(dt[w], 65536 / w);
    int pos = 0;
    for (int i = 0; i < 8; ++i) EXPECT_EQ(pos += scan_chroma2x4[i], cavlc::ChromaDC422RasterScan[i]);
}

TEST(H264FwdTransform, CoreTransformsEqualTheMatrixProducts) {
    const int c4[4][4] = {{1, 1, 1, 1}, {2, 1, -1, -2}, {1, -1, -1, 1}, {1, -2, 2, -1}};
    Rng rng(7);
    for (int run = 0; run < 200; ++run) {
        Kiv16s x[16];
        Kiv8u pred[16];
        for (int k = 0; k < 16; ++k) pred[k] = Kiv8u(rng.range(0, 255)), x[k] = pred[k];
        Kiv16s t[16], viaPrediction[16];
        Kiv32s wide[16];
        fwd::table().transform4x4(x, t);
        fwd::table().transform4x4_wide(x, wide);
        ASSERT_EQ(kiviTransformPrediction_H264_8u16s_C1(pred, 4, viaPrediction), kivStsOk);
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                int want = 0;
                for (int a = 0; a < 4; ++a)
                    for (int b = 0; b < 4; ++b) want += c4[i][a] * x[4 * a + b] * c4[j][b];
                ASSERT_EQ(t[4 * i + j], want);
                ASSERT_EQ(wide[4 * i + j], want);
                ASSERT_EQ(viaPrediction[4 * i + j], want);
            }
    }
    // 8x8: in place, separate and 32-bit agree; the DC is 64 x the mean.
    Kiv16s block[64], copy[64], out[64];
    Kiv32s out32[64];
    for (int k = 0; k < 64; ++k) block[k] = Kiv16s(rng.range(-255, 255));
    std::memcpy(copy, block, sizeof block);
    int sum = 0;
    for (Kiv16s v : block) sum += v;
    ASSERT_EQ(kiviTransformFwdLuma8x8_H264_16s_C1(block, out), kivStsOk);
    ASSERT_EQ(kiviTransformFwdLuma8x8_H264_16s32s_C1(block, out32), kivStsOk);
    ASSERT_EQ(kiviTransformLuma8x8Fwd_H264_16s_C1I(copy), kivStsOk);
    EXPECT_EQ(out[0], sum);
    for (int k = 0; k < 64; ++k) EXPECT_TRUE(out[k] == copy[k] && out[k] == out32[k]) << k;
}

// Reconstruction of random residuals through the decoder side: the RMS error
// stays within the quantiser's dead zone, (1 - rounding) x step, plus the
// inverse transform's rounding, and no sample is off by more than the sum
// of the basis amplitudes squared times that.
struct ErrorStats {
    double sumSq = 0;
    int n = 0, worst = 0;
    void add(int e) { sumSq += double(e) * e, ++n, worst = std::max(worst, std::abs(e)); }
    void check(double step, double roundFraction, double amplitude, const char* what, int qp) const {
        const double bound = (1 - roundFraction) * step;
        EXPECT_LE(std::sqrt(sumSq / n), bound + 1.0) << what << " QP " << qp;
        EXPECT_LE(worst, amplitude * amplitude * bound + 1.5) << what << " QP " << qp;
    }
};

TEST(H264FwdQuant, Residual4x4RoundTripsWithinTheQuantiserStep) {
    Rng rng(11);
    Kiv8u pred[16];
    std::fill(pred, pred + 16, Kiv8u(128));
    for (int qp = 0; qp <= 51; qp += 3)
        for (int intra = 0; intra < 2; ++intra)
            for (int scaled = 0; scaled < 2; ++scaled) {
                ErrorStats stats;
                Kiv8u weights[16];
                Kiv16s inv[16], fwd[16];
                double weightScale = 1;
                if (scaled) {
                    const int w = rng.range(8, 40);
                    std::fill(weights, weights + 16, Kiv8u(w));
                    weightScale = w / 16.0;
                    ASSERT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv, fwd, qp % 6), kivStsOk);
                }
                for (int run = 0; run < 200; ++run) {
                    Kiv16s residual[16], levels[16];
                    Kiv32s wide[16], count, last;
                    for (Kiv16s& v : residual) v = Kiv16s(rng.range(-120, 120));
                    ASSERT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(residual, levels, qp, &count, intra, kRasterScan,
                                                                  &last, scaled ? fwd : nullptr),
                              kivStsOk);
                    ASSERT_EQ(kiviTransformQuantFwd4x4_H264_16s32s_C1(residual, wide, qp, &count, intra, kRasterScan,
                                                                     &last, scaled ? fwd : nullptr),
                              kivStsOk);
                    int nonZero = 0, highest = 0;
                    for (int k = 0; k < 16; ++k) {
                        ASSERT_EQ(wide[k], levels[k]);
                        if (levels[k]) ++nonZero, highest = std::max<int>(highest, kRasterScan[k]);
                    }
                    ASSERT_EQ(count, levels[0] ? -nonZero : nonZero);
                    ASSERT_EQ(last, highest);
                    Kiv8u dst[16];
                    ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(pred, 4, levels, nullptr, dst, 4, qp, 1,
                                                                           scaled ? inv : nullptr),
                              kivStsOk);
                    for (int k = 0; k < 16; ++k) stats.add(dst[k] - 128 - residual[k]);
                }
                stats.check(qstep(qp) * weightScale, intra ? 1.0 / 3 : 1.0 / 6, 2.31, "4x4", qp);
            }
}

TEST(H264FwdQuant, Luma8x8RoundTripsWithinTheQuantiserStep) {
    Rng rng(12);
    Kiv8u pred[64], weights[64];
    std::fill(pred, pred + 64, Kiv8u(128));
    Kiv16s scan[64];
    for (int k = 0; k < 64; ++k) scan[k] = Kiv16s(63 - k);
    for (int qp = 0; qp <= 51; qp += 3)
        for (int intra = 0; intra < 2; ++intra) {
            const int w = rng.range(10, 30);
            std::fill(weights, weights + 64, Kiv8u(w));
            Kiv16s inv[64], fwd[64];
            ASSERT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(weights, 8, inv, fwd, qp % 6), kivStsOk);
            ErrorStats stats;
            for (int run = 0; run < 100; ++run) {
                Kiv16s residual[64], coeffs[64], levels[64];
                Kiv32s coeffs32[64], levels32[64], count, last, count32, last32;
                for (Kiv16s& v : residual) v = Kiv16s(rng.range(-100, 100));
                ASSERT_EQ(kiviTransformFwdLuma8x8_H264_16s_C1(residual, coeffs), kivStsOk);
                ASSERT_EQ(kiviQuantLuma8x8_H264_16s_C1(coeffs, levels, Kiv32u(qp / 6), intra, scan, fwd, &count, &last),
                          kivStsOk);
                for (int k = 0; k < 64; ++k) coeffs32[k] = coeffs[k];
                ASSERT_EQ(kiviQuantLuma8x8_H264_32s_C1(coeffs32, levels32, Kiv32u(qp / 6), intra, scan, fwd, &count32,
                                                      &last32),
                          kivStsOk);
                int nonZero = 0, highest = 0;
                for (int k = 0; k < 64; ++k) {
                    ASSERT_EQ(levels32[k], levels[k]);
                    if (levels[k]) ++nonZero, highest = std::max<int>(highest, scan[k]);
                }
                ASSERT_EQ(count, levels[0] ? -nonZero : nonZero);
                ASSERT_TRUE(count32 == count && last32 == last && last == highest);
                ASSERT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(levels, qp / 6, inv), kivStsOk);
                Kiv8u dst[64];
                ASSERT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred, 8, levels, dst, 8), kivStsOk);
                for (int k = 0; k < 64; ++k) stats.add(dst[k] - 128 - residual[k]);
            }
            stats.check(qstep(qp) * w / 16.0, intra ? 1.0 / 3 : 1.0 / 6, 3.7, "8x8", qp);
        }
}

// DC-only blocks: each 4x4 block is flat, so its transformed DC is 16 x its
// value and every AC coefficient is zero; the DC path alone reconstructs it.
TEST(H264FwdQuant, DcBlocksRoundTripWithinTheQuantiserStep) {
    Rng rng(13);
    Kiv16s scan[16];
    for (int k = 0; k < 16; ++k) scan[k] = Kiv16s(k);
    for (int qp = 0; qp <= 51; ++qp) {
        ErrorStats luma, chroma420, chroma422;
        for (int run = 0; run < 50; ++run) {
            Kiv16s value[16], dc[16], t[16];
            for (int b = 0; b < 16; ++b) value[b] = Kiv16s(rng.range(-120, 120)), dc[b] = Kiv16s(16 * value[b]);
            Kiv32s count, last;
            ASSERT_EQ(kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(dc, t, qp, &count, 1, scan, &last, nullptr), kivStsOk);
            ASSERT_EQ(kiviTransformDequantLumaDC_H264_16s_C1I(dc, qp), kivStsOk);
            for (int b = 0; b < 16; ++b) luma.add(((dc[b] + 32) >> 6) - value[b]);
            if (qp > 39) continue;
            for (int intra = 0; intra < 2; ++intra) {
                for (int b = 0; b < 8; ++b) dc[b] = Kiv16s(16 * value[b]);
                ASSERT_EQ(kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I(dc, t, qp, &count, intra, 1, nullptr), kivStsOk);
                ASSERT_EQ(kiviTransformDequantChromaDC_H264_16s_C1I(dc, qp), kivStsOk);
                for (int b = 0; b < 4; ++b) chroma420.add(((dc[b] + 32) >> 6) - value[b]);
                for (int b = 0; b < 8; ++b) dc[b] = Kiv16s(16 * value[b]);
                ASSERT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(dc, t, qp, &count, intra, 1, nullptr), kivStsOk);
                ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(dc, qp, nullptr), kivStsOk);
                for (int b = 0; b < 8; ++b) chroma422.add(((dc[b] + 32) >> 6) - value[b]);
            }
        }
        // The DC transforms are orthogonal up to a scale, so the per-block
        // step is the quantiser step of the QP (4:2:2 chroma: of QP + 3).
        luma.check(qstep(qp), 1.0 / 3, 1.0, "luma DC", qp);
        if (qp > 39) continue;
        chroma420.check(qstep(qp), 1.0 / 6, 1.0, "chroma DC 2x2", qp);
        chroma422.check(qstep(qp + 3), 1.0 / 6, std::sqrt(2.0), "chroma DC 2x4", qp);
    }
}

TEST(H264FwdQuant, CountConventionAndRoundingTerms) {
    Kiv16s residual[16], levels[16], t[16], dc[16];
    std::fill(residual, residual + 16, Kiv16s(5));
    Kiv32s count = 0, last = -1;
    ASSERT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(residual, levels, 0, &count, 1, kRasterScan, &last, nullptr), kivStsOk);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(last, 0);
    EXPECT_EQ(levels[0], (80 * 13107 + 32768 / 3) >> 15);
    // A third against a sixth of 2^s: intra levels are never smaller and
    // differ somewhere.
    Rng rng(3);
    bool differ = false;
    for (int run = 0; run < 50; ++run) {
        Kiv16s intraLevels[16], interLevels[16];
        for (Kiv16s& v : residual) v = Kiv16s(rng.range(-60, 60));
        kiviTransformQuantFwd4x4_H264_16s_C1(residual, intraLevels, 20, &count, 1, kRasterScan, &last, nullptr);
        kiviTransformQuantFwd4x4_H264_16s_C1(residual, interLevels, 20, &count, 0, kRasterScan, &last, nullptr);
        for (int k = 0; k < 16; ++k) {
            ASSERT_GE(std::abs(intraLevels[k]), std::abs(interLevels[k]));
            differ |= intraLevels[k] != interLevels[k];
        }
    }
    EXPECT_TRUE(differ);
    // 4:2:2 chroma DC at QP 0 with a scale: s = 12, r = 682 << 1 (not 4096 / 3).
    const Kiv16s scale[1] = {2731};
    t[0] = 1;
    std::fill(t + 1, t + 8, Kiv16s(0));
    ASSERT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(dc, t, 0, &count, 1, 0, scale), kivStsOk);
    EXPECT_EQ(dc[0], 0);
    EXPECT_EQ(count, 0);
    const Kiv16s scale2[1] = {2732};
    ASSERT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(dc, t, 0, &count, 1, 0, scale2), kivStsOk);
    EXPECT_EQ(dc[0], 1);
    EXPECT_EQ(count, -1);
    // Without a scale at QP 0 intra: m = 9362 (factor of QP 3), s = 16, r = 21824.
    t[0] = 5;  // 5 x 9362 + 21824 = 68634 -> 1
    ASSERT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(dc, t, 0, &count, 1, 0, nullptr), kivStsOk);
    EXPECT_EQ(dc[0], 1);
    // 8x8: r = 682 << (q + 1) intra, 342 << (q + 1) inter, s = q + 12.
    Kiv16s src[64] = {}, out[64], scale8[64];
    Kiv16s scan[64] = {};
    src[0] = 1;
    for (const auto& [m, intra, want] : {std::array<int, 3>{2731, 1, 0}, {2732, 1, 1}, {3411, 0, 0}, {3412, 0, 1}}) {
        std::fill(scale8, scale8 + 64, Kiv16s(m));
        ASSERT_EQ(kiviQuantLuma8x8_H264_16s_C1(src, out, 0, intra, scan, scale8, &count, &last), kivStsOk);
        EXPECT_EQ(out[0], want) << m;
        EXPECT_EQ(count, -want);
    }
    // Saturated 16-bit levels keep their sign; 32-bit ones are exact.
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
        ASSERT_TRUE(std::equal(levels, levels + 16, block));
        ASSERT_TRUE(count8 == count && last8 == last);
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
    Kiv8u weights[16];
    Kiv16s inv[16], fwd[16];
    for (int m = 0; m < 6; ++m)
        for (int w = 1; w < 256; ++w) {
            std::fill(weights, weights + 16, Kiv8u(w));
            ASSERT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv, fwd, m), kivStsOk);
            for (int k = 0; k < 16; ++k) {
                ASSERT_EQ(fwd[k], FwdQuantTable_16s[m][k] / w) << m << " " << w;
                ASSERT_EQ(inv[k], InvQuantTable_def[m][k] * w);
            }
            if (w == 16) {
                EXPECT_TRUE(std::equal(inv, inv + 16, InvLevelScale_4x4_default[m].begin()));
            }
        }
    // 8x8: weights read row by row with their step; the flat matrix gives
    // 16 x normAdjust8x8.
    Kiv8u rows[8 * 11];
    std::fill(rows, rows + 8 * 11, Kiv8u(0));
    for (int k = 0; k < 64; ++k) rows[(k >> 3) * 11 + (k & 7)] = Kiv8u(k == 9 ? 32 : 16);
    Kiv16s inv8[64], fwd8[64];
    ASSERT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(rows, 11, inv8, fwd8, 4), kivStsOk);
    for (int k = 0; k < 64; ++k) {
        const int w = k == 9 ? 32 : 16;
        EXPECT_EQ(inv8[k], InvLevelScale_8x8_default[4][k] * w);
        EXPECT_EQ(fwd8[k], LevelScale_8x8_default[4][k] / w);
    }
    // Zero weights and bad QP % 6: nothing written.
    std::fill(inv8, inv8 + 64, Kiv16s(-5));
    EXPECT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(rows, 10, inv8, fwd8, 0), kivStsDivByZero);
    EXPECT_EQ(kiviGenScaleLevel8x8_H264_8u16s_D2(rows, 11, inv8, fwd8, 6), kivStsBadQp);
    EXPECT_EQ(inv8[0], -5);
    weights[3] = 0;
    EXPECT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv8, fwd8, 0), kivStsDivByZero);
    EXPECT_EQ(kiviGenScaleLevel4x4_H264_8u16s_C1(weights, inv8, fwd8, 6), kivStsOutOfRange);
    EXPECT_EQ(inv8[0], -5);
}

TEST(H264FwdSums, SumsAndDifferencesPerBlockInRasterOrder) {
    Kiv8u src[16 * 16], pred[16 * 16];
    Kiv16u src16[16 * 16], pred16[16 * 16];
    for (int i = 0; i < 256; ++i) {
        src[i] = Kiv8u(i), pred[i] = Kiv8u(255 - i);
        src16[i] = Kiv16u(64 * i), pred16[i] = Kiv16u(1000);
    }
    Kiv16s sums[16], diff[256];
    Kiv32s sums32[16];
    Kiv16s diff16[256];
    ASSERT_EQ(kiviSumsDiff16x16Blocks4x4_8u16s_C1(src, 16, pred, 16, sums, diff), kivStsOk);
    ASSERT_EQ(kiviSumsDiff16x16Blocks4x4_16u32s_C1R(src16, 32, pred16, 32, sums32, diff16), kivStsOk);
    for (int b = 0; b < 16; ++b) {
        int want = 0, want32 = 0;
        for (int k = 0; k < 16; ++k) {
            const int i = ((b >> 2) * 4 + (k >> 2)) * 16 + (b & 3) * 4 + (k & 3);
            want += src[i] - pred[i], want32 += src16[i] - pred16[i];
            ASSERT_EQ(diff[16 * b + k], src[i] - pred[i]);
            ASSERT_EQ(diff16[16 * b + k], Kiv16s(src16[i] - pred16[i]));
        }
        ASSERT_EQ(sums[b], want);
        ASSERT_EQ(sums32[b], want32);
    }
    // 8x8 over the top-left corner of the same rows, without differences.
    ASSERT_EQ(kiviSumsDiff8x8Blocks4x4_8u16s_C1(src, 16, pred, 16, sums, nullptr), kivStsOk);
    ASSERT_EQ(kiviSumsDiff8x8Blocks4x4_16u32s_C1R(src16, 32, pred16, 32, sums32, nullptr), kivStsOk);
    const Kiv16s full[16] = {sums[0], sums[1], sums[2], sums[3]};
    ASSERT_EQ(kiviSumsDiff16x16Blocks4x4_8u16s_C1(src, 16, pred, 16, sums, nullptr), kivStsOk);
    for (int b = 0; b < 4; ++b) EXPECT_EQ(full[b], sums[(b >> 1) * 4 + (b & 1)]);
    EXPECT_EQ(kiviSumsDiff8x8Blocks4x4_8u16s_C1(src, 16, nullptr, 16, sums, diff), kivStsNullPointer);
    EXPECT_EQ(kiviSumsDiff16x16Blocks4x4_16u32s_C1R(src16, 32, pred16, 32, nullptr, diff16), kivStsNullPointer);
}

TEST(H264FwdStatus, ChecksInTheDocumentedOrder) {
    Kiv16s b[64] = {}, t[64] = {};
    Kiv32s n, last;
    Kiv8s n8;
    Kiv8u last8;
    EXPECT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(b, t, 52, &n, 0, nullptr, &last, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(b, t, 52, &n, 0, b, &last, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantFwd4x4_H264_16s_C1(b, t, -1, &n, 0, b, &last, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(b, t, 52, &n, 1, b, nullptr, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(b, t, 52, &n, 1, b, &last, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I(b, t, 40, &n, 1, 1, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(b, nullptr, 40, &n, 1, 1, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(b, t, 40, &n, 1, 1, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviQuantLuma8x8_H264_16s_C1(b, t, 9, 1, b, b, &n, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantLuma8x8_H264_16s_C1(b, t, 9, 1, b, b, &n, &last), kivStsBadQp);
    EXPECT_EQ(kiviQuantLuma8x8_H264_16s_C1(b, t, 8, 1, b, b, &n, &last), kivStsOk);
    EXPECT_EQ(kiviTransformQuantResidual_H264_16s_C1I(b, 52, &n8, 1, b, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantResidual_H264_16s_C1I(b, 52, &n8, 1, b, &last8), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantLumaDC_H264_16s_C1I(b, t, 52, &n8, 1, b, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantLumaDC_H264_16s_C1I(b, t, 52, &n8, 1, b, &last8), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantChromaDC_H264_16s_C1I(b, t, 40, &n8, 1, 1), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformLuma8x8Fwd_H264_16s_C1I(nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformFwdLuma8x8_H264_16s32s_C1(b, nullptr), kivStsNullPointer);
}

}  // namespace
