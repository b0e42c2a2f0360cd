// Dequantisation and inverse transforms against the defining equations,
// evaluated directly in 64-bit arithmetic on conforming coefficient ranges,
// plus the statuses and the DC-only and no-AC paths.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstdint>
#include <vector>

#include "h264/residual/transform_kernels.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;
using s64 = std::int64_t;
using kivvc::h264::s16;
using kivvc::h264::s32;

// ---- the defining equations ------------------------------------------------

constexpr int kV[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
int norm_adjust4(int m, int i, int j) { return (i % 2 == 0 && j % 2 == 0) ? kV[m][0] : (i % 2 && j % 2) ? kV[m][1] : kV[m][2]; }

// Scaling of one 4x4 coefficient (weight 16 gives the flat matrix).
s64 scale4(s64 c, s64 ls, int qp) {
    if (qp >= 24) return (c * ls) << (qp / 6 - 4);
    return (c * ls + (s64{1} << (3 - qp / 6))) >> (4 - qp / 6);
}

// The 4x4 inverse transform: rows (e, f), then columns (g, h), then rounding.
std::array<s64, 16> inverse4x4(const std::array<s64, 16>& d) {
    s64 f[4][4], r[4][4];
    for (int i = 0; i < 4; ++i) {
        const s64* di = &d[4 * i];
        const s64 e0 = di[0] + di[2], e1 = di[0] - di[2], e2 = (di[1] >> 1) - di[3], e3 = di[1] + (di[3] >> 1);
        f[i][0] = e0 + e3, f[i][1] = e1 + e2, f[i][2] = e1 - e2, f[i][3] = e0 - e3;
    }
    for (int j = 0; j < 4; ++j) {
        const s64 g0 = f[0][j] + f[2][j], g1 = f[0][j] - f[2][j];
        const s64 g2 = (f[1][j] >> 1) - f[3][j], g3 = f[1][j] + (f[3][j] >> 1);
        r[0][j] = g0 + g3, r[1][j] = g1 + g2, r[2][j] = g1 - g2, r[3][j] = g0 - g3;
    }
    std::array<s64, 16> out;
    for (int k = 0; k < 16; ++k) out[k] = (r[k / 4][k % 4] + 32) >> 6;
    return out;
}

// The 8-point inverse transform of one row or column.
void inverse8(s64* d, int s) {
    s64 x[8];
    for (int i = 0; i < 8; ++i) x[i] = d[i * s];
    const s64 e0 = x[0] + x[4], e1 = -x[3] + x[5] - x[7] - (x[7] >> 1), e2 = x[0] - x[4], e3 = x[1] + x[7] - x[3] - (x[3] >> 1);
    const s64 e4 = (x[2] >> 1) - x[6], e5 = -x[1] + x[7] + x[5] + (x[5] >> 1), e6 = x[2] + (x[6] >> 1), e7 = x[3] + x[5] + x[1] + (x[1] >> 1);
    const s64 f0 = e0 + e6, f1 = e1 + (e7 >> 2), f2 = e2 + e4, f3 = e3 + (e5 >> 2);
    const s64 f4 = e2 - e4, f5 = (e3 >> 2) - e5, f6 = e0 - e6, f7 = e7 - (e1 >> 2);
    const s64 g[8] = {f0 + f7, f2 + f5, f4 + f3, f6 + f1, f6 - f1, f4 - f3, f2 - f5, f0 - f7};
    for (int i = 0; i < 8; ++i) d[i * s] = g[i];
}

s64 hadamard4(const std::array<s64, 16>& c, int i, int j) {
    static const int H[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
    s64 sum = 0;
    for (int a = 0; a < 4; ++a)
        for (int b = 0; b < 4; ++b) sum += H[i][a] * c[4 * a + b] * H[b][j];
    return sum;
}

s64 luma_dc_scale(s64 f, s64 ls0, int qp) {
    if (qp >= 36) return (f * ls0) << (qp / 6 - 6);
    return (f * ls0 + (s64{1} << (5 - qp / 6))) >> (6 - qp / 6);
}

int clamp(s64 v, int maxv) { return int(v < 0 ? 0 : v > maxv ? maxv : v); }

// Levels whose scaled values (unit(k) per step) sum in magnitude to at most
// `budget`: with basis entries of at most 1 (4x4) or 2.25 (8x8), no 16-bit
// intermediate can overflow, as in a conforming stream.
template <class Unit>
std::vector<int> draw_levels(Rng& rng, int n, s64 budget, Unit unit) {
    std::vector<int> c(n, 0);
    const int start = rng.range(0, n - 1);
    for (int i = 0; i < n; ++i) {
        const int k = (start + i * 7) % n;  // 7 is prime to 16 and 64
        const s64 u = std::max<s64>(1, unit(k));
        const s64 top = std::min<s64>(budget / u, 3 * budget / (u * n) + 1);
        const int v = top > 0 ? rng.range(-int(top), int(top)) : 0;
        c[k] = v;
        budget -= std::abs(v) * u;
    }
    return c;
}

// ---- flat and scaling-list 4x4 ---------------------------------------------

TEST(H264Transform, Add4x4MatchesTheEquationsAtEveryQp) {
    Rng rng(11);
    for (int qp = 0; qp <= 51; ++qp) {
        for (int run = 0; run < 40; ++run) {
            std::array<s16, 16> ls;
            const bool flat = run % 2;
            for (int k = 0; k < 16; ++k)
                ls[k] = s16(norm_adjust4(qp % 6, k / 4, k % 4) * (flat ? 16 : rng.range(4, 64)));
            const auto levels = draw_levels(rng, 16, run % 4 ? 32000 : 3000,
                                            [&](int k) { return std::abs(scale4(1, ls[k], qp)) + 1; });
            std::array<s16, 16> c{};
            std::array<s64, 16> d{};
            for (int k = 0; k < 16; ++k) {
                c[k] = s16(levels[k]);
                d[k] = scale4(c[k], ls[k], qp);
            }
            std::array<std::uint8_t, 16 * 3> pred, dst;
            for (auto& p : pred) p = std::uint8_t(rng.range(0, 255));
            const auto r = inverse4x4(d);

            auto coeffs = c;
            ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 12, coeffs.data(), nullptr, dst.data(),
                                                                   12, qp, 1, flat ? nullptr : ls.data()),
                      kivStsOk);
            for (int k = 0; k < 16; ++k) {
                ASSERT_EQ(coeffs[k], r[k]) << "qp " << qp << " k " << k;
                ASSERT_EQ(dst[12 * (k / 4) + k % 4], clamp(pred[12 * (k / 4) + k % 4] + r[k], 255)) << qp;
            }

            // The 32-bit member at 10 bits, QP raised by 12.
            std::array<std::uint16_t, 16> pred16, dst16;
            std::array<s32, 16> c32;
            for (int k = 0; k < 16; ++k) pred16[k] = std::uint16_t(rng.range(0, 1023)), c32[k] = c[k];
            ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(pred16.data(), 8, c32.data(), nullptr, dst16.data(),
                                                                   8, qp + 12, 1, 10, flat ? nullptr : ls.data()),
                      kivStsOk);
            std::array<s64, 16> d32;
            for (int k = 0; k < 16; ++k) d32[k] = scale4(c[k], ls[k], qp + 12);
            const auto r32 = inverse4x4(d32);
            for (int k = 0; k < 16; ++k) {
                ASSERT_EQ(c32[k], r32[k]) << qp;
                ASSERT_EQ(dst16[k], clamp(pred16[k] + r32[k], 1023)) << qp;
            }

            if (!flat) continue;
            // Flat members: the same result from both generations.
            auto flat_coeffs = c;
            std::array<std::uint8_t, 16 * 3> dst2;
            ASSERT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), flat_coeffs.data(), nullptr,
                                                                      dst2.data(), 12, 12, qp, 1),
                      kivStsOk);
            std::array<s16, 32> strided{};
            for (int k = 0; k < 16; ++k) strided[8 * (k / 4) + k % 4] = c[k];
            ASSERT_EQ(kiviDequantTransformResidual_H264_16s_C1I(strided.data(), 16, nullptr, 1, qp), kivStsOk);
            for (int k = 0; k < 16; ++k) {
                ASSERT_EQ(flat_coeffs[k], r[k]) << qp;
                ASSERT_EQ(dst2[12 * (k / 4) + k % 4], dst[12 * (k / 4) + k % 4]) << qp;
                ASSERT_EQ(strided[8 * (k / 4) + k % 4], r[k]) << qp;
            }
        }
    }
}

TEST(H264Transform, DcOnlyBlocks) {
    // Without AC every residual is (DC + 32) >> 6 and the add functions leave
    // the coefficients alone; a given DC replaces c0 in every member.
    std::array<std::uint8_t, 16> pred, dst;
    for (int k = 0; k < 16; ++k) pred[k] = std::uint8_t(16 * k);
    const s16 dc = -200;  // (DC + 32) >> 6 = -3
    std::array<s16, 16> coeffs;
    coeffs.fill(77);
    const auto untouched = coeffs;
    ASSERT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), nullptr, &dc, dst.data(), 4, 4, 30, 0), kivStsOk);
    for (int k = 0; k < 16; ++k) EXPECT_EQ(dst[k], clamp(pred[k] - 3, 255));
    ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 4, coeffs.data(), &dc, dst.data(), 4, 30, 0, nullptr), kivStsOk);
    EXPECT_EQ(coeffs, untouched);
    for (int k = 0; k < 16; ++k) EXPECT_EQ(dst[k], clamp(pred[k] - 3, 255));
    std::array<s16, 16> block;
    block.fill(5);
    ASSERT_EQ(kiviDequantTransformResidual_H264_16s_C1I(block.data(), 8, &dc, 0, 20), kivStsOk);
    for (s16 v : block) EXPECT_EQ(v, -3);
    // Without a DC pointer the DC is c0 scaled: 3 * 10 << 2 = 120 at QP 12 -> 2.
    coeffs.fill(0);
    coeffs[0] = 3;
    ASSERT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), coeffs.data(), nullptr, dst.data(), 4, 4, 12, 0), kivStsOk);
    for (int k = 0; k < 16; ++k) EXPECT_EQ(dst[k], clamp(pred[k] + 2, 255));
}

// ---- DC blocks --------------------------------------------------------------

TEST(H264Transform, DcBlocksMatchTheEquations) {
    Rng rng(5);
    for (int qp = 0; qp <= 51; ++qp) {
        for (int run = 0; run < 20; ++run) {
            std::array<s64, 16> c;
            std::array<s16, 16> luma, luma_flat;
            std::array<s32, 16> luma32;
            const int ls0 = run % 2 ? 16 * kV[qp % 6][0] : rng.range(40, 400);
            const s64 dc_unit = std::max(ls0, 16 * kV[qp % 6][0]) * (s64{1} << (qp / 6)) / 64 + 1;
            const auto levels = draw_levels(rng, 16, 32000, [&](int) { return dc_unit; });
            for (int k = 0; k < 16; ++k) luma[k] = luma_flat[k] = s16(c[k] = levels[k]), luma32[k] = s32(c[k]);
            const s16 lsv[1] = {s16(ls0)};
            ASSERT_EQ(kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(luma.data(), qp, lsv), kivStsOk);
            ASSERT_EQ(kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(luma32.data(), qp + 24, lsv), kivStsOk);
            ASSERT_EQ(kiviTransformDequantLumaDC_H264_16s_C1I(luma_flat.data(), qp), kivStsOk);
            for (int k = 0; k < 16; ++k) {
                const s64 f = hadamard4(c, k / 4, k % 4);
                ASSERT_EQ(luma[k], luma_dc_scale(f, ls0, qp)) << qp;
                ASSERT_EQ(luma32[k], luma_dc_scale(f, ls0, qp + 24)) << qp;
                ASSERT_EQ(luma_flat[k], luma_dc_scale(f, 16 * kV[qp % 6][0], qp)) << qp;
            }
            if (qp > 39) continue;
            // 4:2:0: ((f * ls0) << (QP / 6)) >> 5; flat ls0 = 16 * normAdjust.
            std::array<s16, 4> ch, ch_flat;
            std::array<s64, 4> cc;
            const auto lv4 = draw_levels(rng, 4, 32000, [&](int) { return 2 * dc_unit; });
            for (int k = 0; k < 4; ++k) ch[k] = ch_flat[k] = s16(cc[k] = lv4[k]);
            ASSERT_EQ(kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(ch.data(), qp, lsv), kivStsOk);
            ASSERT_EQ(kiviTransformDequantChromaDC_H264_16s_C1I(ch_flat.data(), qp), kivStsOk);
            const s64 f[4] = {cc[0] + cc[1] + cc[2] + cc[3], cc[0] - cc[1] + cc[2] - cc[3], cc[0] + cc[1] - cc[2] - cc[3],
                              cc[0] - cc[1] - cc[2] + cc[3]};
            for (int k = 0; k < 4; ++k) {
                ASSERT_EQ(ch[k], ((f[k] * ls0) << (qp / 6)) >> 5) << qp;
                ASSERT_EQ(ch_flat[k], ((f[k] * 16 * kV[qp % 6][0]) << (qp / 6)) >> 5) << qp;
            }
            // 4:2:2: c as 4 rows of 2, QP + 3.
            std::array<s16, 8> c8;
            std::array<s32, 8> c8w;
            std::array<s64, 8> x;
            const auto lv8 = draw_levels(rng, 8, 32000, [&](int) { return 2 * dc_unit; });
            for (int k = 0; k < 8; ++k) c8[k] = s16(x[k] = lv8[k]), c8w[k] = s32(x[k]);
            ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), qp, lsv), kivStsOk);
            ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(c8w.data(), qp + 36, lsv), kivStsOk);
            static const int A4[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
            for (int i = 0; i < 4; ++i)
                for (int j = 0; j < 2; ++j) {
                    s64 fv = 0;
                    for (int a = 0; a < 4; ++a) fv += A4[i][a] * (x[2 * a] + (j ? -x[2 * a + 1] : x[2 * a + 1]));
                    ASSERT_EQ(c8[2 * i + j], luma_dc_scale(fv, ls0, qp + 3)) << qp;
                    ASSERT_EQ(c8w[2 * i + j], luma_dc_scale(fv, ls0, qp + 39)) << qp;
                }
        }
    }
}

TEST(H264Transform, DefaultLevelScaleFollowsQpOfTheRule) {
    // The 4:2:2 DC takes its default row at QP + 3: QP 3 uses row 0 (160).
    std::array<s16, 8> a{}, b{};
    a[0] = b[0] = 1;
    const s16 ls160[1] = {160};
    ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(a.data(), 3, nullptr), kivStsOk);
    ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(b.data(), 3, ls160), kivStsOk);
    EXPECT_EQ(a, b);
    EXPECT_EQ(a[0], (160 * 1 + 16) >> 5);
}

// ---- 8x8 -------------------------------------------------------------------

TEST(H264Transform, Luma8x8MatchesTheEquations) {
    Rng rng(8);
    for (int qp = 0; qp <= 51; ++qp) {
        std::array<s16, 64> ls;
        for (auto& v : ls) v = s16(rng.range(100, 600));
        std::array<s16, 64> c;
        std::array<s64, 64> d;
        const auto levels = draw_levels(rng, 64, 14000, [&](int k) { return ((s64(ls[k]) << (qp / 6)) >> 6) + 1; });
        for (int k = 0; k < 64; ++k) {
            c[k] = s16(levels[k]);
            d[k] = qp >= 36 ? (s64(c[k]) * ls[k]) << (qp / 6 - 6) : (s64(c[k]) * ls[k] + (s64{1} << (5 - qp / 6))) >> (6 - qp / 6);
        }
        std::array<s32, 64> c32;
        for (int k = 0; k < 64; ++k) c32[k] = c[k];
        ASSERT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(c.data(), qp / 6, ls.data()), kivStsOk);
        ASSERT_EQ(kiviQuantInvLuma8x8_H264_32s_C1I(c32.data(), qp / 6, ls.data()), kivStsOk);
        for (int k = 0; k < 64; ++k) {
            ASSERT_EQ(c[k], d[k]);
            ASSERT_EQ(c32[k], d[k]);
        }

        for (int i = 0; i < 8; ++i) inverse8(&d[8 * i], 1);
        for (int j = 0; j < 8; ++j) inverse8(&d[j], 8);
        std::array<std::uint8_t, 64> pred, dst;
        std::array<std::uint16_t, 64> pred16, dst16;
        for (int k = 0; k < 64; ++k) pred[k] = std::uint8_t(rng.range(0, 255)), pred16[k] = std::uint16_t(rng.range(0, 4095));
        ASSERT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred.data(), 8, c.data(), dst.data(), 8), kivStsOk);
        ASSERT_EQ(kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(pred16.data(), 16, c32.data(), dst16.data(), 16, 12), kivStsOk);
        for (int k = 0; k < 64; ++k) {
            ASSERT_EQ(c[k], d[k]) << qp;  // unrounded
            ASSERT_EQ(c32[k], d[k]) << qp;
            ASSERT_EQ(dst[k], clamp(pred[k] + ((d[k] + 32) >> 6), 255)) << qp << " " << k;
            ASSERT_EQ(dst16[k], clamp(pred16[k] + ((d[k] + 32) >> 6), 4095)) << qp;
        }
    }
}

// ---- prediction transform and SP/SI ----------------------------------------

TEST(H264Transform, TransformPredictionIsTheForwardCoreTransform) {
    static const int C[4][4] = {{1, 1, 1, 1}, {2, 1, -1, -2}, {1, -1, -1, 1}, {1, -2, 2, -1}};
    Rng rng(3);
    std::array<std::uint8_t, 40> pred;
    for (auto& p : pred) p = std::uint8_t(rng.range(0, 255));
    std::array<s16, 16> out;
    ASSERT_EQ(kiviTransformPrediction_H264_8u16s_C1(pred.data(), 10, out.data()), kivStsOk);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            s64 sum = 0;
            for (int a = 0; a < 4; ++a)
                for (int b = 0; b < 4; ++b) sum += C[i][a] * pred[10 * a + b] * C[j][b];
            EXPECT_EQ(out[4 * i + j], sum);
        }
}

TEST(H264Transform, SpReconstructionReproducesAFlatPrediction) {
    // Zero levels over a flat prediction: requantisation at a fine QS keeps
    // the prediction, so the samples come back within one.
    std::array<std::uint8_t, 16> flat;
    flat.fill(100);
    std::array<s16, 16> p;
    ASSERT_EQ(kiviTransformPrediction_H264_8u16s_C1(flat.data(), 4, p.data()), kivStsOk);
    for (Kiv32u sw = 0; sw < 2; ++sw) {
        std::array<s16, 16> c{};
        ASSERT_EQ(kiviDequantTransformResidual_SISP_H264_16s_C1I(c.data(), p.data(), nullptr, 1, 28, 4, sw), kivStsOk);
        for (s16 v : c) EXPECT_NEAR(v, 100, 1);
    }
    // Zero prediction and zero levels requantise to zero.
    std::array<s16, 16> z{}, c{};
    ASSERT_EQ(kiviDequantTransformResidual_SISP_H264_16s_C1I(c.data(), z.data(), nullptr, 1, 30, 30, 0), kivStsOk);
    for (s16 v : c) EXPECT_EQ(v, 0);
    std::array<s16, 4> dc{}, pdc{};
    ASSERT_EQ(kiviTransformDequantChromaDC_SISP_H264_16s_C1I(dc.data(), pdc.data(), 30, 30, 1), kivStsOk);
    for (s16 v : dc) EXPECT_EQ(v, 0);
    // A flat chroma prediction DC survives a fine QS: the output DCs pass
    // through the DC dequantisation of the 4x4 function unchanged.
    pdc.fill(p[0]);
    ASSERT_EQ(kiviTransformDequantChromaDC_SISP_H264_16s_C1I(dc.data(), pdc.data(), 30, 0, 0), kivStsOk);
    std::array<s16, 16> c2{};
    ASSERT_EQ(kiviDequantTransformResidual_SISP_H264_16s_C1I(c2.data(), p.data(), &dc[0], 0, 30, 0, 0), kivStsOk);
    for (s16 v : c2) EXPECT_NEAR(v, 100, 1);
}

// ---- statuses ---------------------------------------------------------------

TEST(H264Transform, StatusesInCheckOrder) {
    std::array<s16, 64> c{};
    std::array<s32, 64> c32{};
    std::array<std::uint8_t, 64> px{};
    std::array<std::uint16_t, 64> px16{};
    const s16 dc = 0;
    EXPECT_EQ(kiviDequantTransformResidual_H264_16s_C1I(nullptr, 4, nullptr, 1, 99), kivStsNullPointer);
    EXPECT_EQ(kiviDequantTransformResidual_H264_16s_C1I(c.data(), 4, nullptr, 1, 52), kivStsOutOfRange);
    EXPECT_EQ(kiviDequantTransformResidual_H264_16s_C1I(c.data(), 6, nullptr, 1, 51), kivStsBadStep);
    EXPECT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(nullptr, nullptr, nullptr, px.data(), 4, 4, -1, 1), kivStsNullPointer);
    EXPECT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(px.data(), nullptr, nullptr, px.data(), 4, 4, -1, 1), kivStsOutOfRange);
    EXPECT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(px.data(), nullptr, &dc, px.data(), 4, 4, 0, 1), kivStsNullPointer);
    EXPECT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(px.data(), nullptr, nullptr, px.data(), 4, 4, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviTransformDequantLumaDC_H264_16s_C1I(c.data(), 52), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformDequantChromaDC_H264_16s_C1I(nullptr, 0), kivStsNullPointer);
    EXPECT_EQ(kiviTransformPrediction_H264_8u16s_C1(px.data(), 0, c.data()), kivStsBadStep);
    EXPECT_EQ(kiviDequantTransformResidual_SISP_H264_16s_C1I(c.data(), nullptr, nullptr, 0, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviTransformDequantChromaDC_SISP_H264_16s_C1I(nullptr, c.data(), 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(px.data(), 4, nullptr, &dc, px.data(), 4, 0, 0, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(px.data(), 4, c.data(), &dc, px.data(), 4, 52, 0, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(px16.data(), 8, c32.data(), nullptr, px16.data(), 8, 88, 0, 10, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(px16.data(), 8, c32.data(), nullptr, px16.data(), 8, 0, 0, 8, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(px16.data(), 8, c32.data(), nullptr, px16.data(), 8, 0, 0, 15, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(c.data(), 52, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(c32.data(), 88, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(c32.data(), 87, nullptr), kivStsOk);
    EXPECT_EQ(kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(c.data(), 40, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvChromaDC2x2_H264_32s_C1I(c32.data(), 76, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(nullptr, 40, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(c32.data(), 75, nullptr), kivStsOk);
    EXPECT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(c.data(), 9, c.data()), kivStsBadQp);
    EXPECT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(c.data(), 0, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviQuantInvLuma8x8_H264_32s_C1I(c32.data(), 15, c.data()), kivStsBadQp);
    EXPECT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(px.data(), 8, nullptr, px.data(), 8), kivStsNullPointer);
    EXPECT_EQ(kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(px16.data(), 16, c32.data(), nullptr, 16, 10), kivStsNullPointer);
}

TEST(H264Transform, HighBitDepthClipsToTheDepth) {
    std::array<std::uint16_t, 16> pred, dst;
    pred.fill(1000);
    std::array<s32, 16> c{};
    const s32 dc = 64 * 100;
    ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(pred.data(), 8, c.data(), &dc, dst.data(), 8, 0, 0, 10, nullptr), kivStsOk);
    for (auto v : dst) EXPECT_EQ(v, 1023);
}

}  // namespace
