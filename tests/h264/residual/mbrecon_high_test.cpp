// H.264 macroblock reconstruction with 8x8 blocks and through parameter
// records (9..14-bit samples, 4:2:2 chroma): whole macroblocks against a
// composition of the exported single-block dequantise/transform functions,
// with every prediction taken from the equations of the standard; the
// coefficient pointers' advance; statuses and check order.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <vector>

#include "h264/residual/intra_model.h"
#include "kivvc.h"
#include "support/kernel_case.h"

namespace {

using kivvc::test::Rng;
using namespace kivvc::test::intra_model;

// A picture of 48x48 samples with the macroblock at (16, 16).
template <class T>
struct Pic {
    static constexpr int kWidth = 48, kStep = kWidth * int(sizeof(T));
    std::vector<T> mem = std::vector<T>(kWidth * kWidth);
    T* mb() { return mem.data() + 16 * kWidth + 16; }
    T& at(int x, int y) { return mem[(16 + y) * kWidth + 16 + x]; }
    void fill(Rng& rng, int depth) {
        for (auto& v : mem) v = T(rng.range(0, (1 << depth) - 1));
    }
};

template <class T>
using Coeff = std::conditional_t<sizeof(T) == 1, Kiv16s, Kiv32s>;

template <class C>
std::vector<C> coefficients(Rng& rng, int n, int range) {
    std::vector<C> c(n);
    for (auto& v : c) v = C(rng.chance(3) ? rng.range(-range, range) : 0);
    return c;
}

// The single-block functions of each sample type.
void add4(Kiv8u* p, Kiv16s* c, const Kiv16s* dc, int qp, bool ac, const Kiv16s* ls, int) {
    ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(p, Pic<Kiv8u>::kStep, c, dc, p, Pic<Kiv8u>::kStep, qp, ac,
                                                             ls),
              kivStsOk);
}
void add4(Kiv16u* p, Kiv32s* c, const Kiv32s* dc, int qp, bool ac, const Kiv16s* ls, int depth) {
    ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(p, Pic<Kiv16u>::kStep, c, dc, p, Pic<Kiv16u>::kStep, qp,
                                                             ac, depth, ls),
              kivStsOk);
}
void add8(Kiv8u* p, Kiv16s* c, int qp, const Kiv16s* ls, int) {
    ASSERT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(c, qp / 6, ls), kivStsOk);
    ASSERT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(p, Pic<Kiv8u>::kStep, c, p, Pic<Kiv8u>::kStep), kivStsOk);
}
void add8(Kiv16u* p, Kiv32s* c, int qp, const Kiv16s* ls, int depth) {
    ASSERT_EQ(kiviQuantInvLuma8x8_H264_32s_C1I(c, qp / 6, ls), kivStsOk);
    ASSERT_EQ(kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(p, Pic<Kiv16u>::kStep, c, p, Pic<Kiv16u>::kStep, depth),
              kivStsOk);
}
void luma_dc(Kiv16s* c, int qp, const Kiv16s* ls) { kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(c, qp, ls); }
void luma_dc(Kiv32s* c, int qp, const Kiv16s* ls) { kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(c, qp, ls); }
void chroma_dc(Kiv16s* c, int n, int qp, const Kiv16s* ls) {
    ASSERT_EQ(n == 4 ? kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(c, qp, ls)
                     : kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(c, qp, ls),
              kivStsOk);
}
void chroma_dc(Kiv32s* c, int n, int qp, const Kiv16s* ls) {
    ASSERT_EQ(n == 4 ? kiviTransformQuantInvChromaDC2x2_H264_32s_C1I(c, qp, ls)
                     : kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(c, qp, ls),
              kivStsOk);
}

// Transform bypass: the coefficients are the residual (element 0 replaced by
// the DC when one is given).
template <class T, class C>
void add_raw(T* p, int n, const C* c, const C* dc, int depth) {
    for (int k = 0; k < n * n; ++k) {
        const long long r = (k == 0 && dc) ? *dc : c ? c[k] : 0;
        T& s = p[(k / n) * Pic<T>::kWidth + k % n];
        s = T(std::clamp<long long>(s + r, 0, (1 << depth) - 1));
    }
}

// Availability (prediction sense) of the n x n block at (x, y) from geometry.
unsigned geometric_mask(int n, int x, int y, unsigned edge) {
    const auto order = [n](int bx, int by) {
        return n == 8 ? (by / 8) * 2 + bx / 8 : ((by / 8) * 2 + bx / 8) * 4 + ((by % 8) / 4) * 2 + (bx % 8) / 4;
    };
    const bool top = y > 0 || !(edge & 4), left = x > 0 || !(edge & 1);
    const bool aboveLeft = (x == 0 && y == 0) ? !(edge & 16) : top && left;
    const bool aboveRight = y == 0 ? (x + n < 16 ? !(edge & 4) : !(edge & 32))
                                   : x + n < 16 && order(x + n, y - n) < order(x, y);
    return (top ? 1u : 0u) | (left ? 2u : 0u) | (aboveLeft ? 32u : 0u) | (aboveRight ? 64u : 0u);
}

unsigned whole_mask(unsigned edge) { return (edge & 4 ? 0u : 1u) | (edge & 1 ? 0u : 2u) | (edge & 16 ? 0u : 32u); }

// Neighbours of the block at (x0, y0) as the picture holds them now.
template <class T>
Neighbour around(Pic<T>& pic, int x0, int y0) {
    return [&pic, x0, y0](int x, int y) { return int(pic.at(x0 + x, y0 + y)); };
}

constexpr unsigned kNeeds[9] = {1, 2, 0, 1, 35, 35, 35, 1, 2};

// Predicts the n x n luma block at (x0, y0) of `pic` from the equations.
// Returns true when the prediction needed a missing neighbour.
template <class T>
bool predict_nxn(Pic<T>& pic, int n, int x0, int y0, int mode, unsigned edge, int depth) {
    const unsigned mask = geometric_mask(n, x0, y0, edge);
    Neighbour p = substituted(around(pic, x0, y0), n, mask, depth);
    if (n == 8) p = filtered8x8(p, mask, depth);
    std::vector<int> v(n * n);
    for (int k = 0; k < n * n; ++k) v[k] = expect_nxn(n, mode, p, mask & 1, mask & 2, k % n, k / n, depth);
    for (int k = 0; k < n * n; ++k) pic.at(x0 + k % n, y0 + k / n) = T(v[k]);
    return (mask & kNeeds[mode]) != kNeeds[mode];
}

// Predicts a whole w x h block (16x16 numbering) rows y0..y1 of it.
template <class T>
void predict_whole(Pic<T>& pic, int lumaMode, int w, int h, unsigned edge, int depth, int y0, int y1) {
    const unsigned mask = whole_mask(edge);
    Pic<T> src = pic;
    for (int y = y0; y < y1; ++y)
        for (int x = 0; x < w; ++x)
            pic.at(x, y) = T(expect_block(lumaMode, w, h, around(src, 0, 0), mask & 1, mask & 2, x, y, depth));
}

// One luma macroblock as the composition reconstructs it: shape 4 or 8
// (NxN blocks, half: the upper half only), or 16 (Intra_16x16).
struct LumaCall {
    int shape;
    bool half, intra;
    const Kiv32u* modes;
    int mode16;
    unsigned cbp, edge;
    int qp, depth;
    const Kiv16s* ls;
    bool bypass;
};

template <class T>
KivStatus compose_luma(Pic<T>& pic, const LumaCall& m, Coeff<T>*& r) {
    const bool bypass = m.bypass && m.qp == 0;
    if (m.shape == 16) {
        constexpr unsigned kNeeds16[4] = {1, 2, 0, 35};
        if ((whole_mask(m.edge) & kNeeds16[m.mode16]) != kNeeds16[m.mode16]) return kivStsBadIntraPredMode;
        predict_whole(pic, m.mode16, 16, 16, m.edge, m.depth, 0, 16);
        if (!(m.cbp & 0x1FFFF)) return kivStsOk;
        Coeff<T> dc[16] = {};
        if (m.cbp & 1) {
            if (!bypass) luma_dc(r, m.qp, m.ls);
            std::copy(r, r + 16, dc);
            r += 16;
        }
        for (int k = 0; k < 16; ++k) {  // decoding order
            const int x = 4 * ((k & 1) + 2 * ((k >> 2) & 1)), y = 4 * (((k >> 1) & 1) + 2 * (k >> 3));
            const bool ac = (m.cbp >> (k + 1)) & 1;
            Coeff<T> zero[16] = {};
            const Coeff<T>* d = &dc[(y / 4) * 4 + x / 4];
            if (bypass) add_raw(&pic.at(x, y), 4, ac ? r : nullptr, d, m.depth);
            else add4(&pic.at(x, y), ac ? r : zero, d, m.qp, ac, m.ls, m.depth);
            if (ac) r += 16;
        }
        return kivStsOk;
    }
    const int n = m.shape, blocks = (n == 4 ? 16 : 4) / (m.half ? 2 : 1);
    bool warn = false;
    for (int k = 0; k < blocks; ++k) {
        const int x = n == 8 ? 8 * (k & 1) : 4 * ((k & 1) + 2 * ((k >> 2) & 1));
        const int y = n == 8 ? 8 * (k >> 1) : 4 * (((k >> 1) & 1) + 2 * (k >> 3));
        if (m.intra) warn |= predict_nxn(pic, n, x, y, m.modes[k], m.edge, m.depth);
        if ((m.cbp >> (n == 8 || m.half ? k : k + 1)) & 1) {
            if (bypass) add_raw(&pic.at(x, y), n, r, static_cast<const Coeff<T>*>(nullptr), m.depth);
            else if (n == 4) add4(&pic.at(x, y), r, nullptr, m.qp, true, m.ls, m.depth);
            else add8(&pic.at(x, y), r, m.qp, m.ls, m.depth);
            r += n * n;
        }
    }
    return warn ? kivStsWarnNeighbourMissing : kivStsOk;
}

KivStatus call_luma(Pic<Kiv8u>& pic, const LumaCall& m, Kiv16s** c) {
    const Kiv8u e = Kiv8u(m.edge), b = Kiv8u(m.bypass);
    if (m.intra)
        return m.half ? kiviReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(c, pic.mb(), pic.kStep, m.modes, m.cbp, m.qp,
                                                                           e, m.ls, b)
                      : kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(c, pic.mb(), pic.kStep, m.modes, m.cbp,
                                                                       Kiv32u(m.qp), e, m.ls, b);
    return kiviReconstructLumaInter8x8MB_H264_16s8u_C1R(c, pic.mb(), pic.kStep, m.cbp, m.qp, m.ls, b);
}

KivStatus call_luma(Pic<Kiv16u>& pic, const LumaCall& m, Kiv32s** c) {
    const KivReconstructHighParams_32s16u r{c, pic.mb(), pic.kStep, m.cbp, m.qp, m.ls, m.bypass, m.depth};
    const Kiv8u e = Kiv8u(m.edge);
    if (m.shape == 16) return kiviReconstructLumaIntra16x16_H264High_32s16u_IP1R(&r, m.mode16, e);
    if (!m.intra)
        return m.shape == 4 ? kiviReconstructLumaInter4x4_H264High_32s16u_IP1R(&r)
                            : kiviReconstructLumaInter8x8_H264High_32s16u_IP1R(&r);
    if (m.shape == 4)
        return m.half ? kiviReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(&r, m.modes, e)
                      : kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(&r, m.modes, e);
    return m.half ? kiviReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(&r, m.modes, e)
                  : kiviReconstructLumaIntra8x8_H264High_32s16u_IP1R(&r, m.modes, e);
}

template <class T>
void luma_against_composition(Rng& rng, int depth, int trials) {
    for (int trial = 0; trial < trials; ++trial) {
        // 8-bit: the 8x8 members; above: every High luma member.
        const int variant = trial % (sizeof(T) == 1 ? 3 : 7);
        constexpr int kShape[7] = {8, 8, 8, 4, 4, 4, 16};
        LumaCall m{};
        m.shape = kShape[variant];
        m.half = variant == 1 || variant == 4;
        m.intra = variant != 2 && variant != 5;
        Kiv32u modes[16];
        for (auto& v : modes) v = Kiv32u(rng.range(0, 8));
        m.modes = modes;
        m.mode16 = rng.range(0, 3);
        m.cbp = Kiv32u(rng.next()) & (trial % 9 ? ~0u : 0u);
        if (m.shape == 16 && trial % 5 == 0) m.cbp &= 1;
        m.edge = unsigned(rng.range(0, 63));
        m.depth = depth;
        m.bypass = rng.chance(2);
        m.qp = trial % 4 == 0 ? 0 : rng.range(0, 6 * depth + 3);
        std::vector<Kiv16s> ls(64);
        for (auto& v : ls) v = Kiv16s(rng.range(4, 400));
        m.ls = ls.data();
        Pic<T> pic;
        pic.fill(rng, depth);
        Pic<T> want = pic;
        auto coeffs = coefficients<Coeff<T>>(rng, 17 * 16 + 64, sizeof(T) == 1 ? 300 : 4000);
        auto reference = coeffs;
        Coeff<T>* c = coeffs.data();
        Coeff<T>* r = reference.data();
        const KivStatus st = call_luma(pic, m, &c);
        const KivStatus expected = compose_luma(want, m, r);
        ASSERT_EQ(st, expected) << "trial " << trial << " depth " << depth;
        ASSERT_EQ(c - coeffs.data(), r - reference.data()) << "trial " << trial;
        ASSERT_EQ(pic.mem, want.mem) << "trial " << trial << " depth " << depth;
    }
}

TEST(H264MbReconHigh, LumaAgainstComposition) {
    Rng rng(31);
    luma_against_composition<Kiv8u>(rng, 8, 300);
    for (const int depth : {9, 10, 14}) luma_against_composition<Kiv16u>(rng, depth, 350);
}

// Chroma through a record pair: 4:2:0 (h = 8) at high bit depth, 4:2:2
// (h = 16) at 8 bits and above.
template <class T, class Record>
void chroma_against_composition(Rng& rng, int depth, int h, int trials) {
    const int n = h / 2;  // AC blocks (and DC coefficients) per plane
    for (int trial = 0; trial < trials; ++trial) {
        const int variant = trial % 3;  // 0 intra, 1 inter, 2 halves
        const int mode = variant == 2 && trial % 2 ? 0 : rng.range(0, 3);
        const unsigned edge = unsigned(rng.range(0, 63)), lower = trial % 4 ? edge : unsigned(rng.range(0, 63));
        Pic<T> pics[2], want[2];
        std::vector<Coeff<T>> coeffs[2], reference[2];
        Coeff<T>* c[2];
        std::vector<Kiv16s> ls[2];
        Kiv16s dcLs[2];
        Record rec[2];
        for (int pl = 0; pl < 2; ++pl) {
            pics[pl].fill(rng, depth);
            want[pl] = pics[pl];
            coeffs[pl] = reference[pl] = coefficients<Coeff<T>>(rng, 8 + 8 * 16, sizeof(T) == 1 ? 300 : 4000);
            c[pl] = coeffs[pl].data();
            ls[pl].resize(16);
            for (auto& v : ls[pl]) v = Kiv16s(rng.range(4, 400));
            dcLs[pl] = Kiv16s(rng.range(4, 400));
            const int qp = trial % 5 == 0 ? 0 : rng.range(0, 6 * depth - 9);
            const Kiv32u cbp = trial % 7 ? Kiv32u(rng.next()) : 0;
            rec[pl] = Record{&c[pl], pics[pl].mb(), pics[pl].kStep, cbp, qp, ls[pl].data(), Kiv32u(trial & 8), depth};
        }
        KivStatus st;
        if constexpr (sizeof(T) == 1)
            st = variant == 0 ? kiviReconstructChroma422Intra4x4_H264High_16s8u_IP2R(rec, mode, Kiv8u(edge), dcLs[0],
                                                                                      dcLs[1])
                 : variant == 1 ? kiviReconstructChroma422Inter4x4_H264High_16s8u_IP2R(rec, dcLs[0], dcLs[1])
                                : kiviReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(
                                      rec, mode, Kiv8u(edge), Kiv8u(lower), dcLs[0], dcLs[1]);
        else if (h == 8)
            st = variant == 0   ? kiviReconstructChromaIntra4x4_H264High_32s16u_IP2R(rec, mode, Kiv8u(edge))
                 : variant == 1 ? kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(rec)
                                : kiviReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(rec, mode, Kiv8u(edge),
                                                                                         Kiv8u(lower));
        else
            st = variant == 0 ? kiviReconstructChroma422Intra4x4_H264High_32s16u_IP2R(rec, mode, Kiv8u(edge), dcLs[0],
                                                                                       dcLs[1])
                 : variant == 1 ? kiviReconstructChroma422Inter4x4_H264High_32s16u_IP2R(rec, dcLs[0], dcLs[1])
                                : kiviReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(
                                      rec, mode, Kiv8u(edge), Kiv8u(lower), dcLs[0], dcLs[1]);
        // Composition.
        const int luma = kChromaToLuma[mode];
        constexpr unsigned kNeeds16[4] = {1, 2, 0, 35};
        KivStatus expected = kivStsOk;
        if (variant == 2 && mode != 0) expected = kivStsBadIntraPredMode;
        if (variant == 0 && (whole_mask(edge) & kNeeds16[luma]) != kNeeds16[luma]) expected = kivStsBadIntraPredMode;
        ASSERT_EQ(st, expected) << trial;
        if (st != kivStsOk) {
            for (int pl = 0; pl < 2; ++pl) {
                ASSERT_EQ(c[pl], coeffs[pl].data());
                ASSERT_EQ(pics[pl].mem, want[pl].mem);
            }
            continue;
        }
        for (int pl = 0; pl < 2; ++pl) {
            Pic<T>& w = want[pl];
            if (variant == 0) predict_whole(w, luma, 8, h, edge, depth, 0, h);
            if (variant == 2) {
                predict_whole(w, 2, 8, h, edge, depth, 0, h / 2);
                predict_whole(w, 2, 8, h, lower, depth, h / 2, h);
            }
            const Record& p = rec[pl];
            Coeff<T>* r = reference[pl].data();
            const bool bypass = p.bypassFlag && p.qp == 0;
            if (p.cbp & ((2u << n) - 1)) {
                Coeff<T> dc[8] = {};
                if (p.cbp & 1) {
                    if (!bypass) chroma_dc(r, n, p.qp, n == 4 ? ls[pl].data() : &dcLs[pl]);
                    std::copy(r, r + n, dc);
                    r += n;
                }
                for (int i = 0; i < n; ++i) {
                    T* blk = &w.at(4 * (i & 1), 4 * (i >> 1));
                    const bool ac = (p.cbp >> (i + 1)) & 1;
                    Coeff<T> zero[16] = {};
                    if (bypass) add_raw(blk, 4, ac ? r : nullptr, &dc[i], depth);
                    else add4(blk, ac ? r : zero, &dc[i], p.qp, ac, ls[pl].data(), depth);
                    if (ac) r += 16;
                }
            }
            ASSERT_EQ(c[pl] - coeffs[pl].data(), r - reference[pl].data()) << trial;
            ASSERT_EQ(pics[pl].mem, w.mem) << "trial " << trial << " plane " << pl << " depth " << depth;
        }
    }
}

TEST(H264MbReconHigh, ChromaAgainstComposition) {
    Rng rng(32);
    chroma_against_composition<Kiv8u, KivReconstructHighParams_16s8u>(rng, 8, 16, 300);
    for (const int depth : {9, 10, 14}) {
        chroma_against_composition<Kiv16u, KivReconstructHighParams_32s16u>(rng, depth, 8, 200);
        chroma_against_composition<Kiv16u, KivReconstructHighParams_32s16u>(rng, depth, 16, 200);
    }
}

TEST(H264MbReconHigh, StatusesAndCheckOrder) {
    Pic<Kiv16u> pic;
    std::vector<Kiv32s> block(64, 0);
    std::vector<Kiv16s> ls(64, 16);
    Kiv32s* c = block.data();
    Kiv32s* none = nullptr;
    Kiv32u modes[16] = {};
    using R = KivReconstructHighParams_32s16u;
    const R good{&c, pic.mb(), pic.kStep, 0, 0, ls.data(), 0, 10};
    const auto luma = [&](R r) { return kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(&r, modes, 0); };
    EXPECT_EQ(kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(nullptr, modes, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntra8x8_H264High_32s16u_IP1R(&good, nullptr, 0), kivStsNullPointer);
    R r = good;
    r.ppSrcDstCoeff = &none;
    r.srcDstStep = 0;
    EXPECT_EQ(luma(r), kivStsNullPointer);
    r = good;
    r.pQuantTable = nullptr;
    r.qp = -1;
    EXPECT_EQ(luma(r), kivStsNullPointer);
    r = good;
    r.srcDstStep = 0;
    r.qp = -1;
    EXPECT_EQ(luma(r), kivStsBadStep);
    r = good;
    r.qp = 63;
    EXPECT_EQ(luma(r), kivStsOk);
    r.qp = 64;
    EXPECT_EQ(luma(r), kivStsOutOfRange);
    r.qp = 0;
    for (const int depth : {7, 15}) {
        r.bitDepth = depth;
        EXPECT_EQ(luma(r), kivStsOutOfRange) << depth;
    }
    // Chroma: both records are checked; QPc tops out 12 below luma QP.
    R pair[2] = {good, good};
    pair[1].pSrcDstPlane = nullptr;
    EXPECT_EQ(kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(pair), kivStsNullPointer);
    pair[1] = good;
    pair[1].qp = 52;
    EXPECT_EQ(kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(pair), kivStsOutOfRange);
    pair[1].qp = 51;
    EXPECT_EQ(kiviReconstructChroma422Inter4x4_H264High_32s16u_IP2R(pair, 16, 16), kivStsOk);
    EXPECT_EQ(kiviReconstructChromaIntra4x4_H264High_32s16u_IP2R(pair, 4, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(pair, 1, 0, 0), kivStsBadIntraPredMode);
    // A 16s8u record is 8-bit whatever its bitDepth says.
    Pic<Kiv8u> p8;
    Kiv16s c16[16] = {};
    Kiv16s* q = c16;
    const KivReconstructHighParams_16s8u s8{&q, p8.mb(), p8.kStep, 0, 40, ls.data(), 0, 14};
    const KivReconstructHighParams_16s8u s8pair[2] = {s8, s8};
    EXPECT_EQ(kiviReconstructChroma422Inter4x4_H264High_16s8u_IP2R(s8pair, 16, 16), kivStsOutOfRange);
    // 8x8 walk: a mode above 8 stops part-way without writing the pointer back.
    Pic<Kiv8u> pic8;
    modes[1] = 9;
    std::vector<Kiv16s> c8(256, 7);
    Kiv16s* p = c8.data();
    EXPECT_EQ(kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(&p, pic8.mb(), pic8.kStep, modes, 15, 0, 0, ls.data(), 0),
              kivStsOutOfRange);
    EXPECT_EQ(p, c8.data());
    EXPECT_EQ(kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(&p, pic8.mb(), pic8.kStep, modes, 15, 52, 0, ls.data(), 0),
              kivStsOutOfRange);
}

}  // namespace
