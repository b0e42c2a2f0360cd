// Dequantisation and inverse transforms against the defining equations,
// evaluated directly in 64-bit arithmetic on conforming coefficient ranges;
// SP/SI reconstruction; the statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstdint>
#include <string>
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

// A coefficient scaled by a level scale: shifted by QP / 6 - base, rounded
// when shifted right (base 4 for 4x4 blocks, 6 for DC and 8x8 blocks).
s64 scale(s64 c, s64 ls, int qp, int base) {
    const int q = qp / 6;
    if (q >= base) return (c * ls) << (q - base);
    return (c * ls + (s64{1} << (base - 1 - q))) >> (base - q);
}

// The 4- and 8-point inverse transforms of one row or column (stride s).
void inverse4(s64* d, int s) {
    const s64 e0 = d[0] + d[2 * s], e1 = d[0] - d[2 * s], e2 = (d[s] >> 1) - d[3 * s], e3 = d[s] + (d[3 * s] >> 1);
    d[0] = e0 + e3, d[s] = e1 + e2, d[2 * s] = e1 - e2, d[3 * s] = e0 - e3;
}
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
// Rows, then columns of an n x n block; unrounded.
template <std::size_t N>
void inverse2d(std::array<s64, N>& d, int n) {
    for (int i = 0; i < n; ++i) (n == 4 ? inverse4 : inverse8)(&d[std::size_t(n * i)], 1);
    for (int j = 0; j < n; ++j) (n == 4 ? inverse4 : inverse8)(&d[std::size_t(j)], n);
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

// ---- 4x4 ----------------------------------------------------------------------

// Every 4x4 member at every QP: scaling list or flat, with AC or DC only (the
// AC input then ignored and left alone), the DC given (already dequantised)
// or scaled from c0. The 32-bit member runs at depths 9..14, QP raised to match.
TEST(H264Transform, Add4x4MatchesTheEquationsAtEveryQp) {
    Rng rng(11);
    for (int qp = 0; qp <= 51; ++qp) {
        for (int run = 0; run < 48; ++run) {
            SCOPED_TRACE("qp " + std::to_string(qp) + " run " + std::to_string(run));
            const bool flat = run % 2, ac = run % 8 < 6;
            const int depth = 9 + run % 6, qp_hbd = qp + 6 * (depth - 8);
            const s16 dc = s16(64 * rng.range(-46, 46) + (rng.chance(2) ? 32 : rng.range(-32, 31)));  // ties half the time
            const s32 dc32 = dc;
            const bool given_dc = run % 3 == 0;
            std::array<s16, 16> ls;
            for (int k = 0; k < 16; ++k)
                ls[k] = s16(norm_adjust4(qp % 6, k / 4, k % 4) * (flat ? 16 : rng.range(4, 64)));
            const auto levels = draw_levels(rng, 16, run % 4 ? 29000 : 3000,
                                            [&](int k) { return std::abs(scale(1, ls[k], qp, 4)) + 1; });
            const auto reference = [&](int q) {
                std::array<s64, 16> d{};
                for (int k = 0; k < (ac ? 16 : 1); ++k) d[k] = scale(levels[k], ls[k], q, 4);
                if (given_dc) d[0] = dc;
                inverse2d(d, 4);
                for (s64& v : d) v = (v + 32) >> 6;
                return d;
            };
            const auto r = reference(qp), r32 = reference(qp_hbd);
            std::array<s16, 16> c;
            std::array<s32, 16> c32;
            std::array<std::uint8_t, 16 * 3> pred, dst{};  // rows 12 apart
            std::array<std::uint16_t, 16> pred16, dst16;
            for (int k = 0; k < 16; ++k) c[k] = s16(c32[k] = levels[k]), pred16[k] = std::uint16_t(rng.range(0, (1 << depth) - 1));
            for (auto& p : pred) p = std::uint8_t(rng.range(0, 255));
            auto c16 = c;
            ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(pred.data(), 12, c16.data(), given_dc ? &dc : nullptr,
                                                                   dst.data(), 12, qp, ac, flat ? nullptr : ls.data()),
                      kivStsOk);
            ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(pred16.data(), 8, c32.data(), given_dc ? &dc32 : nullptr,
                                                                   dst16.data(), 8, qp_hbd, ac, depth,
                                                                   flat ? nullptr : ls.data()),
                      kivStsOk);
            for (int k = 0; k < 16; ++k) {
                const int at = 12 * (k / 4) + k % 4;
                ASSERT_EQ(c16[k], ac ? r[k] : levels[k]) << k;
                ASSERT_EQ(dst[at], clamp(pred[at] + r[k], 255)) << k;
                ASSERT_EQ(c32[k], ac ? r32[k] : levels[k]) << k;
                ASSERT_EQ(dst16[k], clamp(pred16[k] + r32[k], (1 << depth) - 1)) << k;
            }
            if (!flat) continue;
            // The flat members: the same results.
            auto flat_coeffs = c;
            std::array<std::uint8_t, 16 * 3> dst2{};
            std::array<s16, 32> strided{};  // rows 16 bytes apart
            for (int k = 0; k < 16; ++k) strided[8 * (k / 4) + k % 4] = c[k];
            ASSERT_EQ(kiviDequantTransformResidualAndAdd_H264_16s_C1I(pred.data(), flat_coeffs.data(), given_dc ? &dc : nullptr,
                                                                      dst2.data(), 12, 12, qp, ac),
                      kivStsOk);
            ASSERT_EQ(kiviDequantTransformResidual_H264_16s_C1I(strided.data(), 16, given_dc ? &dc : nullptr, ac, qp), kivStsOk);
            EXPECT_EQ(flat_coeffs, c16);
            EXPECT_EQ(dst2, dst);
            for (int k = 0; k < 16; ++k) ASSERT_EQ(strided[8 * (k / 4) + k % 4], r[k]) << k;
        }
    }
}

// ---- DC blocks --------------------------------------------------------------

// Luma, 4:2:0 and 4:2:2 chroma DC, 16- and 32-bit, flat and scaled; without a
// scaling list ls0 is the flat one of the QP each rule uses (4:2:2: QP + 3).
TEST(H264Transform, DcBlocksMatchTheEquations) {
    Rng rng(5);
    static const int H[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
    for (int qp = 0; qp <= 51; ++qp) {
        for (int run = 0; run < 20; ++run) {
            SCOPED_TRACE("qp " + std::to_string(qp) + " run " + std::to_string(run));
            const bool defaults = run % 2;
            const int ls0 = defaults ? 16 * kV[qp % 6][0] : rng.range(40, 400);
            const int ls0_422 = defaults ? 16 * kV[(qp + 3) % 6][0] : ls0;
            const s16 lsv[1] = {s16(ls0)};
            const s16* ls = defaults ? nullptr : lsv;
            const s64 dc_unit = std::max(ls0, 16 * kV[qp % 6][0]) * (s64{1} << (qp / 6)) / 64 + 1;
            const auto c = draw_levels(rng, 16, 32000, [&](int) { return dc_unit; });
            std::array<s16, 16> luma, luma_flat;
            std::array<s32, 16> luma32;
            for (int k = 0; k < 16; ++k) luma[k] = luma_flat[k] = s16(luma32[k] = c[k]);
            ASSERT_EQ(kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(luma.data(), qp, ls), kivStsOk);
            ASSERT_EQ(kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(luma32.data(), qp + 24, ls), kivStsOk);
            ASSERT_EQ(kiviTransformDequantLumaDC_H264_16s_C1I(luma_flat.data(), qp), kivStsOk);
            for (int k = 0; k < 16; ++k) {
                s64 f = 0;
                for (int a = 0; a < 4; ++a)
                    for (int b = 0; b < 4; ++b) f += H[k / 4][a] * c[4 * a + b] * H[b][k % 4];
                ASSERT_EQ(luma[k], scale(f, ls0, qp, 6));
                ASSERT_EQ(luma32[k], scale(f, ls0, qp + 24, 6));
                ASSERT_EQ(luma_flat[k], scale(f, 16 * kV[qp % 6][0], qp, 6));
            }
            if (qp > 39) continue;
            // 4:2:0: ((f * ls0) << (QP / 6)) >> 5.
            const auto c4 = draw_levels(rng, 4, 32000, [&](int) { return 2 * dc_unit; });
            std::array<s16, 4> ch, ch_flat;
            std::array<s32, 4> ch32;
            for (int k = 0; k < 4; ++k) ch[k] = ch_flat[k] = s16(ch32[k] = c4[k]);
            ASSERT_EQ(kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(ch.data(), qp, ls), kivStsOk);
            ASSERT_EQ(kiviTransformQuantInvChromaDC2x2_H264_32s_C1I(ch32.data(), qp + 36, ls), kivStsOk);
            ASSERT_EQ(kiviTransformDequantChromaDC_H264_16s_C1I(ch_flat.data(), qp), kivStsOk);
            const s64 f4[4] = {c4[0] + c4[1] + c4[2] + c4[3], c4[0] - c4[1] + c4[2] - c4[3],
                               c4[0] + c4[1] - c4[2] - c4[3], c4[0] - c4[1] - c4[2] + c4[3]};
            for (int k = 0; k < 4; ++k) {
                const s64 f = f4[k];
                ASSERT_EQ(ch[k], ((f * ls0) << (qp / 6)) >> 5);
                ASSERT_EQ(ch32[k], ((f * ls0) << (qp / 6 + 6)) >> 5);
                ASSERT_EQ(ch_flat[k], ((f * 16 * kV[qp % 6][0]) << (qp / 6)) >> 5);
            }
            // 4:2:2: c as 4 rows of 2, QP + 3.
            const auto x = draw_levels(rng, 8, 32000, [&](int) { return 2 * dc_unit; });
            std::array<s16, 8> c8;
            std::array<s32, 8> c8w;
            for (int k = 0; k < 8; ++k) c8[k] = s16(c8w[k] = x[k]);
            ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(c8.data(), qp, ls), kivStsOk);
            ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(c8w.data(), qp + 36, ls), kivStsOk);
            for (int i = 0; i < 4; ++i)
                for (int j = 0; j < 2; ++j) {
                    s64 f = 0;
                    for (int a = 0; a < 4; ++a) f += H[i][a] * (x[2 * a] + (j ? -x[2 * a + 1] : x[2 * a + 1]));
                    ASSERT_EQ(c8[2 * i + j], scale(f, ls0_422, qp + 3, 6));
                    ASSERT_EQ(c8w[2 * i + j], scale(f, ls0_422, qp + 39, 6));
                }
        }
    }
}

// ---- 8x8 -------------------------------------------------------------------

TEST(H264Transform, Luma8x8MatchesTheEquations) {
    Rng rng(8);
    for (int qp = 0; qp <= 51; ++qp) {
        SCOPED_TRACE("qp " + std::to_string(qp));
        const int depth = 9 + qp % 6;
        std::array<s16, 64> ls, c;
        std::array<s32, 64> c32;
        std::array<s64, 64> d;
        for (auto& v : ls) v = s16(rng.range(100, 600));
        const auto levels = draw_levels(rng, 64, 14000, [&](int k) { return ((s64(ls[k]) << (qp / 6)) >> 6) + 1; });
        for (int k = 0; k < 64; ++k) c[k] = s16(c32[k] = levels[k]), d[k] = scale(levels[k], ls[k], qp, 6);
        ASSERT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(c.data(), qp / 6, ls.data()), kivStsOk);
        ASSERT_EQ(kiviQuantInvLuma8x8_H264_32s_C1I(c32.data(), qp / 6, ls.data()), kivStsOk);
        for (int k = 0; k < 64; ++k) ASSERT_TRUE(c[k] == d[k] && c32[k] == d[k]) << k;

        inverse2d(d, 8);
        std::array<std::uint8_t, 64> pred, dst;
        std::array<std::uint16_t, 64> pred16, dst16;
        for (int k = 0; k < 64; ++k) pred[k] = std::uint8_t(rng.range(0, 255)), pred16[k] = std::uint16_t(rng.range(0, (1 << depth) - 1));
        ASSERT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(pred.data(), 8, c.data(), dst.data(), 8), kivStsOk);
        ASSERT_EQ(kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(pred16.data(), 16, c32.data(), dst16.data(), 16, depth), kivStsOk);
        for (int k = 0; k < 64; ++k) {
            ASSERT_TRUE(c[k] == d[k] && c32[k] == d[k]) << k;  // unrounded
            ASSERT_EQ(dst[k], clamp(pred[k] + ((d[k] + 32) >> 6), 255)) << k;
            ASSERT_EQ(dst16[k], clamp(pred16[k] + ((d[k] + 32) >> 6), (1 << depth) - 1)) << k;
        }
    }
}

// ---- SP/SI ------------------------------------------------------------------

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
    EXPECT_EQ(kiviTransformPrediction_H264_8u16s_C1(px.data(), 0, c.data()), kivStsBadStep);
    EXPECT_EQ(kiviDequantTransformResidual_SISP_H264_16s_C1I(c.data(), nullptr, nullptr, 0, 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviTransformDequantChromaDC_SISP_H264_16s_C1I(nullptr, c.data(), 0, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(px.data(), 4, nullptr, &dc, px.data(), 4, 0, 0, nullptr), kivStsNullPointer);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(px.data(), 4, c.data(), &dc, px.data(), 4, 52, 0, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(px16.data(), 8, c32.data(), nullptr, px16.data(), 8, 88, 0, 10, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(px16.data(), 8, c32.data(), nullptr, px16.data(), 8, 0, 0, 8, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(px16.data(), 8, c32.data(), nullptr, px16.data(), 8, 0, 0, 15, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(c32.data(), 88, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(c.data(), 40, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvChromaDC2x2_H264_32s_C1I(c32.data(), 76, nullptr), kivStsOutOfRange);
    EXPECT_EQ(kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(c32.data(), 75, nullptr), kivStsOk);
    EXPECT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(c.data(), 9, c.data()), kivStsBadQp);
    EXPECT_EQ(kiviQuantInvLuma8x8_H264_32s_C1I(c32.data(), 15, c.data()), kivStsBadQp);
    EXPECT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(px.data(), 8, nullptr, px.data(), 8), kivStsNullPointer);
    EXPECT_EQ(kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(px16.data(), 16, c32.data(), nullptr, 16, 10), kivStsNullPointer);
}

}  // namespace
