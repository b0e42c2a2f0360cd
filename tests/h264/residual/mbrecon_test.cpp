// H.264 macroblock reconstruction (flat scaling): whole macroblocks against a
// block-by-block composition of the exported single-block functions, with
// neighbour availability worked out from block geometry; the coefficient
// pointer's advance for random coded-block patterns; statuses.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <vector>

#include "h264/residual/mbrecon_tables.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;

constexpr int kStep = 48;

// A picture with a macroblock at (16, 16) and random surroundings.
struct Pic {
    std::vector<Kiv8u> mem = std::vector<Kiv8u>(kStep * 48);
    Kiv8u* mb() { return mem.data() + 16 * kStep + 16; }
    void fill(Rng& rng) {
        for (auto& v : mem) v = Kiv8u(rng.range(0, 255));
    }
};

std::vector<Kiv16s> coefficients(Rng& rng, int n) {
    std::vector<Kiv16s> c(n);
    for (auto& v : c) v = Kiv16s(rng.chance(3) ? rng.range(-300, 300) : 0);
    return c;
}

// Decoding index of the 4x4 block at (x, y) of the macroblock.
int decoding_index(int x, int y) { return ((y / 8) * 2 + x / 8) * 4 + ((y % 8) / 4) * 2 + (x % 8) / 4; }

// Availability (prediction sense) of the 4x4 block at (x, y) from geometry.
unsigned geometric_mask(int x, int y, unsigned edge) {
    const bool top = y > 0 || !(edge & 4), left = x > 0 || !(edge & 1);
    const bool aboveLeft = (x == 0 && y == 0) ? !(edge & 16) : (y > 0 || !(edge & 4)) && (x > 0 || !(edge & 1));
    bool aboveRight;
    if (y == 0) aboveRight = x + 4 < 16 ? !(edge & 4) : !(edge & 32);
    else aboveRight = x + 4 < 16 && decoding_index(x + 4, y - 4) < decoding_index(x, y);
    return (top ? 1u : 0u) | (left ? 2u : 0u) | (aboveLeft ? 32u : 0u) | (aboveRight ? 64u : 0u);
}

unsigned whole_mask(unsigned edge) { return (edge & 4 ? 0u : 1u) | (edge & 1 ? 0u : 2u) | (edge & 16 ? 0u : 32u); }

TEST(H264MbRecon, TablesMatchBlockGeometry) {
    namespace mb = kivvc::h264::mbrecon;
    int x = 0, y = 0;
    for (int k = 0; k < 16; ++k) {
        EXPECT_EQ(decoding_index(x, y), k);
        EXPECT_EQ(mb::block_subblock_mapping[k], (y / 4) * 4 + x / 4);
        EXPECT_EQ(mb::block_subblock_mapping[mb::block_subblock_mapping[k]], k);
        EXPECT_EQ(mb::top_edge_tab16[k], y == 0);
        EXPECT_EQ(mb::left_edge_tab16[k], x == 0);
        EXPECT_EQ(mb::above_right_avail_4x4[k], (geometric_mask(x, y, 0) & 64) != 0) << k;
        x += mb::xyoff[k].dx;
        y += mb::xyoff[k].dy;
    }
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    EXPECT_EQ(sizeof(mb::ClampTbl.v), 768u);
    for (int pred = 0; pred < 256; pred += 15)
        for (int r = -256; r <= 256; ++r) ASSERT_EQ(mb::ClampTbl.v[pred + r + 256], std::clamp(pred + r, 0, 255));
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(mb::top_edge_tab4[k], k < 2);
        EXPECT_EQ(mb::left_edge_tab4[k], !(k & 1));
    }
}

// Residual of one 4x4 block as the single-block functions give it: flat, or
// scaling list `ls` (null: flat).
KivStatus add_block(Kiv8u* p, Kiv16s* c, const Kiv16s* dc, int qp, bool ac, const Kiv16s* ls) {
    return ls ? kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(p, kStep, c, dc, p, kStep, qp, ac, ls)
              : kiviDequantTransformResidualAndAdd_H264_16s_C1I(p, c, dc, p, kStep, kStep, qp, ac);
}

std::vector<Kiv16s> level_scale(Rng& rng) {
    std::vector<Kiv16s> ls(16);
    for (auto& v : ls) v = Kiv16s(rng.range(4, 255));
    return ls;
}

TEST(H264MbRecon, LumaIntraAndInterAgainstComposition) {
    Rng rng(11);
    for (int trial = 0; trial < 600; ++trial) {
        const int variant = trial % 3;  // 0 intra, 1 half, 2 inter
        const bool scaled = trial % 2;
        const int blocks = variant == 1 ? 8 : 16;
        Pic pic;
        pic.fill(rng);
        Pic want = pic;
        Kiv32u modes[16];
        for (auto& m : modes) m = Kiv32u(rng.range(0, 8));
        const unsigned edge = unsigned(rng.range(0, 255));
        const int qp = rng.range(1, 51);
        const Kiv32u cbp = Kiv32u(rng.next());
        const auto ls = level_scale(rng);
        auto coeffs = coefficients(rng, 16 * 16);
        auto reference = coeffs;
        Kiv16s* c = coeffs.data();
        const Kiv8u e = Kiv8u(edge), bypass = Kiv8u(rng.range(0, 1));
        KivStatus st;
        if (!scaled)
            st = variant == 0   ? kiviReconstructLumaIntraMB_H264_16s8u_C1R(&c, pic.mb(), kStep, modes, cbp, qp, e)
                 : variant == 1 ? kiviReconstructLumaIntraHalfMB_H264_16s8u_C1R(&c, pic.mb(), kStep, modes, cbp, qp, e)
                                : kiviReconstructLumaInterMB_H264_16s8u_C1R(&c, pic.mb(), kStep, cbp, qp);
        else
            st = variant == 0 ? kiviReconstructLumaIntra4x4MB_H264_16s8u_C1R(&c, pic.mb(), kStep, modes, cbp, qp, e,
                                                                              ls.data(), bypass)
                 : variant == 1 ? kiviReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(&c, pic.mb(), kStep, modes, cbp, qp,
                                                                                   e, ls.data(), bypass)
                                : kiviReconstructLumaInter4x4MB_H264_16s8u_C1R(&c, pic.mb(), kStep, cbp, qp, ls.data(),
                                                                               bypass);
        // Composition.
        Kiv16s* r = reference.data();
        bool warn = false;
        for (int k = 0; k < blocks; ++k) {
            int x = 0, y = 0;
            for (int j = 0; j < 16; ++j)
                if (decoding_index(4 * (j & 3), 4 * (j >> 2)) == k) x = 4 * (j & 3), y = 4 * (j >> 2);
            Kiv8u* p = want.mb() + y * kStep + x;
            if (variant != 2)
                warn |= kiviPredictIntra_4x4_H264_8u_C1IR(p, kStep, modes[k], geometric_mask(x, y, edge)) ==
                        kivStsWarnNeighbourMissing;
            if ((cbp >> (variant == 1 ? k : k + 1)) & 1) {
                ASSERT_EQ(add_block(p, r, nullptr, qp, true, scaled ? ls.data() : nullptr), kivStsOk);
                r += 16;
            }
        }
        ASSERT_EQ(st, warn ? kivStsWarnNeighbourMissing : kivStsOk) << trial;
        ASSERT_EQ(c - coeffs.data(), r - reference.data()) << trial;
        const unsigned bits = variant == 1 ? cbp & 0xFF : cbp & 0x1FFFE;
        ASSERT_EQ(c - coeffs.data(), 16 * std::popcount(bits));
        ASSERT_EQ(pic.mem, want.mem) << "trial " << trial;
    }
}

TEST(H264MbRecon, BypassAddsCoefficientsAtQpZeroOnly) {
    Rng rng(21);
    const auto ls = level_scale(rng);
    for (const int qp : {0, 1}) {
        Pic a, b;
        a.fill(rng);
        b = a;
        auto coeffs = coefficients(rng, 256);
        auto copy = coeffs;
        const auto original = coeffs;
        Kiv16s* c = coeffs.data();
        Kiv16s* d = copy.data();
        const Pic before = a;
        ASSERT_EQ(kiviReconstructLumaInter4x4MB_H264_16s8u_C1R(&c, a.mb(), kStep, 0x1FFFE, qp, ls.data(), 1), kivStsOk);
        ASSERT_EQ(kiviReconstructLumaInter4x4MB_H264_16s8u_C1R(&d, b.mb(), kStep, 0x1FFFE, qp, ls.data(), 0), kivStsOk);
        if (qp == 1) {
            EXPECT_EQ(a.mem, b.mem);
            continue;
        }
        for (int k = 0; k < 16; ++k) {
            const int x0 = 4 * (kivvc::h264::mbrecon::block_subblock_mapping[k] & 3);
            const int y0 = 4 * (kivvc::h264::mbrecon::block_subblock_mapping[k] >> 2);
            for (int i = 0; i < 16; ++i) {
                const int at = (16 + y0 + i / 4) * kStep + 16 + x0 + i % 4;
                ASSERT_EQ(a.mem[at], std::clamp(before.mem[at] + original[16 * k + i], 0, 255));
            }
        }
    }
}

TEST(H264MbRecon, Intra16x16AgainstComposition) {
    Rng rng(12);
    for (int trial = 0; trial < 400; ++trial) {
        const bool scaled = trial % 2;
        const auto ls = level_scale(rng);
        Pic pic;
        pic.fill(rng);
        Pic want = pic;
        const int mode = rng.range(0, 3);
        const unsigned edge = unsigned(rng.range(0, 63));
        const int qp = rng.range(0, 51);
        Kiv32u cbp = Kiv32u(rng.next()) & 0x1FFFF;
        if (trial % 5 == 0) cbp &= 1;  // DC only
        if (trial % 7 == 0) cbp = 0;
        auto coeffs = coefficients(rng, 17 * 16);
        auto reference = coeffs;
        Kiv16s* c = coeffs.data();
        const KivStatus st =
            scaled ? kiviReconstructLumaIntra_16x16MB_H264_16s8u_C1R(&c, pic.mb(), kStep, mode, cbp, qp, Kiv8u(edge),
                                                                     ls.data(), 0)
                   : kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(&c, pic.mb(), kStep, mode, cbp, qp, Kiv8u(edge));
        const KivStatus pst = kiviPredictIntra_16x16_H264_8u_C1IR(want.mb(), kStep, mode, whole_mask(edge));
        ASSERT_EQ(st, pst);
        if (st != kivStsOk) {
            ASSERT_EQ(c, coeffs.data());
            ASSERT_EQ(pic.mem, want.mem);
            continue;
        }
        Kiv16s* r = reference.data();
        Kiv16s dc[16] = {};
        if (cbp & 1) {
            if (scaled) kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(r, qp, ls.data());
            else kiviTransformDequantLumaDC_H264_16s_C1I(r, qp);
            std::copy(r, r + 16, dc);
            r += 16;
        }
        // AC blocks are taken in decoding order: walk k.
        if (cbp)
            for (int k = 0; k < 16; ++k) {
                int x = 0, y = 0;
                for (int j = 0; j < 16; ++j)
                    if (decoding_index(4 * (j & 3), 4 * (j >> 2)) == k) x = 4 * (j & 3), y = 4 * (j >> 2);
                Kiv8u* p = want.mb() + y * kStep + x;
                Kiv16s scratch[16] = {};
                const bool ac = (cbp >> (k + 1)) & 1;
                ASSERT_EQ(add_block(p, ac ? r : scratch, &dc[(y / 4) * 4 + x / 4], qp, ac, scaled ? ls.data() : nullptr),
                          kivStsOk);
                if (ac) r += 16;
            }
        ASSERT_EQ(c - coeffs.data(), r - reference.data());
        ASSERT_EQ(pic.mem, want.mem) << trial;
    }
}

TEST(H264MbRecon, ChromaAgainstComposition) {
    Rng rng(13);
    for (int trial = 0; trial < 600; ++trial) {
        const int variant = trial % 3;  // 0 intra, 1 inter, 2 halfs
        const bool scaled = (trial / 3) % 2;
        const auto lsU = level_scale(rng), lsV = level_scale(rng);
        const Kiv16s* ls[2] = {scaled ? lsU.data() : nullptr, scaled ? lsV.data() : nullptr};
        Pic u, v;
        u.fill(rng);
        v.fill(rng);
        Pic wu = u, wv = v;
        const int mode = variant == 2 && trial % 2 ? 0 : rng.range(0, 3);
        const unsigned edge = unsigned(rng.range(0, 63)), lower = trial % 4 ? edge : unsigned(rng.range(0, 63));
        const int qp = rng.range(1, 39), qpV = scaled ? rng.range(1, 39) : qp;
        const int qps[2] = {qp, qpV};
        const Kiv32u cbp = Kiv32u(rng.next()) & (trial % 7 ? 0x7FE0000u : 0u);
        auto coeffs = coefficients(rng, 8 + 8 * 16);
        auto reference = coeffs;
        Kiv16s* c = coeffs.data();
        KivStatus st;
        if (scaled)
            st = variant == 0 ? kiviReconstructChromaIntra4x4MB_H264_16s8u_P2R(&c, u.mb(), v.mb(), kStep, mode, cbp, qp, qpV,
                                                                               Kiv8u(edge), ls[0], ls[1], 0)
                 : variant == 1 ? kiviReconstructChromaInter4x4MB_H264_16s8u_P2R(&c, u.mb(), v.mb(), kStep, cbp, qp, qpV,
                                                                                 ls[0], ls[1], 0)
                                : kiviReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(
                                      &c, u.mb(), v.mb(), kStep, mode, cbp, qp, qpV, Kiv8u(edge), Kiv8u(lower), ls[0], ls[1], 0);
        else st = variant == 0   ? kiviReconstructChromaIntraMB_H264_16s8u_P2R(&c, u.mb(), v.mb(), kStep, mode, cbp, qp, Kiv8u(edge))
                       : variant == 1 ? kiviReconstructChromaInterMB_H264_16s8u_P2R(&c, u.mb(), v.mb(), kStep, cbp, qp)
                                      : kiviReconstructChromaIntraHalvesMB_H264_16s8u_P2R(&c, u.mb(), v.mb(), kStep, mode, cbp, qp,
                                                                                          Kiv8u(edge), Kiv8u(lower));
        KivStatus want = kivStsOk;
        if (variant == 2 && mode != 0) want = kivStsBadIntraPredMode;
        for (Pic* w : {&wu, &wv}) {
            if (variant == 0) want = kiviPredictIntraChroma8x8_H264_8u_C1IR(w->mb(), kStep, mode, whole_mask(edge));
            if (variant == 2 && mode == 0) {
                Pic low = *w;
                kiviPredictIntraChroma8x8_H264_8u_C1IR(w->mb(), kStep, 0, whole_mask(edge));
                kiviPredictIntraChroma8x8_H264_8u_C1IR(low.mb(), kStep, 0, whole_mask(lower));
                for (int y = 4; y < 8; ++y)
                    for (int x = 0; x < 8; ++x) w->mb()[y * kStep + x] = low.mb()[y * kStep + x];
            }
        }
        ASSERT_EQ(st, want) << trial;
        if (st != kivStsOk) {
            ASSERT_EQ(c, coeffs.data());
            ASSERT_EQ(u.mem, Pic(u).mem);
            continue;
        }
        Kiv16s* r = reference.data();
        Kiv16s dc[2][4] = {};
        for (int pl = 0; pl < 2; ++pl)
            if ((cbp >> (17 + pl)) & 1) {
                if (scaled) kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(r, qps[pl], ls[pl]);
                else kiviTransformDequantChromaDC_H264_16s_C1I(r, qp);
                std::copy(r, r + 4, dc[pl]);
                r += 4;
            }
        if (cbp)
            for (int pl = 0; pl < 2; ++pl)
                for (int i = 0; i < 4; ++i) {
                    Kiv8u* p = (pl ? wv : wu).mb() + 4 * (i >> 1) * kStep + 4 * (i & 1);
                    Kiv16s scratch[16] = {};
                    const bool ac = (cbp >> (19 + 4 * pl + i)) & 1;
                    add_block(p, ac ? r : scratch, &dc[pl][i], qps[pl], ac, ls[pl]);
                    if (ac) r += 16;
                }
        ASSERT_EQ(c - coeffs.data(), r - reference.data());
        ASSERT_EQ(u.mem, wu.mem) << trial;
        ASSERT_EQ(v.mem, wv.mem) << trial;
    }
}

TEST(H264MbRecon, StatusesAndCheckOrder) {
    Pic pic;
    Kiv16s block[64];
    for (auto& v : block) v = 40;
    Kiv16s* c = block;
    Kiv16s* none = nullptr;
    Kiv32u modes[16] = {};
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(nullptr, pic.mb(), kStep, modes, 0, 99, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(&none, pic.mb(), kStep, modes, 0, 99, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(&c, pic.mb(), kStep, nullptr, 0, 99, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(&c, pic.mb(), kStep, modes, 0, 52, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructLumaInterMB_H264_16s8u_C1R(&c, pic.mb(), kStep, 0, -1), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructChromaInterMB_H264_16s8u_P2R(&c, pic.mb(), nullptr, kStep, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructChromaInterMB_H264_16s8u_P2R(&c, pic.mb(), pic.mb(), kStep, 0, 40), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&c, pic.mb(), pic.mb(), kStep, 0, 0, 51, 0, 0), kivStsOk);
    EXPECT_EQ(kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(&c, pic.mb(), kStep, 4, 0, 0, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(&c, pic.mb(), kStep, 3, 0, 0, 16), kivStsBadIntraPredMode);
    // A mode above 8 stops the walk part-way; the pointer is not written back.
    modes[3] = 9;
    Pic before = pic;
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(&c, pic.mb(), kStep, modes, 0x1FFFE, 0, 0), kivStsOutOfRange);
    EXPECT_EQ(c, block);
    EXPECT_NE(pic.mem, before.mem);
    // cbp 0 on an inter member consumes nothing and changes nothing.
    before = pic;
    EXPECT_EQ(kiviReconstructLumaInterMB_H264_16s8u_C1R(&c, pic.mb(), kStep, 0, 20), kivStsOk);
    EXPECT_EQ(c, block);
    EXPECT_EQ(pic.mem, before.mem);
}

}  // namespace
