// H.264 macroblock reconstruction, every member: whole macroblocks against a
// composition of the exported single-block dequantise/transform functions,
// with every prediction taken from the equations of the standard and every
// neighbour's availability from block geometry; the coefficient pointers'
// advance for random coded-block patterns; 8-bit and 9, 10 and 14-bit
// samples; statuses and check order.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

#include "h264/residual/intra_model.h"
#include "h264/residual/mbrecon_tables.h"
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

// Top-left corner of 4x4 block k (decoding order) or 8x8 block k.
int block_x(int n, int k) { return n == 8 ? 8 * (k & 1) : 4 * ((k & 1) + 2 * ((k >> 2) & 1)); }
int block_y(int n, int k) { return n == 8 ? 8 * (k >> 1) : 4 * (((k >> 1) & 1) + 2 * (k >> 3)); }

TEST(H264MbRecon, TablesMatchBlockGeometry) {
    namespace mb = kivvc::h264::mbrecon;
    int x = 0, y = 0;
    for (int k = 0; k < 16; ++k) {
        EXPECT_EQ(x, block_x(4, k));
        EXPECT_EQ(y, block_y(4, k));
        EXPECT_EQ(mb::block_subblock_mapping[k], (y / 4) * 4 + x / 4);
        EXPECT_EQ(mb::block_subblock_mapping[mb::block_subblock_mapping[k]], k);
        EXPECT_EQ(mb::top_edge_tab16[k], y == 0);
        EXPECT_EQ(mb::left_edge_tab16[k], x == 0);
        // Above-right available: in the row above the macroblock, or inside
        // its width and decoded earlier.
        bool earlier = false;
        for (int j = 0; j < k; ++j) earlier |= block_x(4, j) == x + 4 && block_y(4, j) == y - 4;
        EXPECT_EQ(mb::above_right_avail_4x4[k] != 0, y == 0 || earlier) << k;
        x += mb::xyoff[k].dx;
        y += mb::xyoff[k].dy;
    }
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(x, block_x(8, k));
        EXPECT_EQ(y, block_y(8, k));
        EXPECT_EQ(mb::top_edge_tab4[k], k < 2);
        EXPECT_EQ(mb::left_edge_tab4[k], !(k & 1));
        x += mb::xyoff8[k].dx;
        y += mb::xyoff8[k].dy;
    }
    EXPECT_EQ(sizeof(mb::ClampTbl.v), 768u);
    for (int pred = 0; pred < 256; pred += 15)
        for (int r = -256; r <= 256; ++r) ASSERT_EQ(mb::ClampTbl.v[pred + r + 256], std::clamp(pred + r, 0, 255));
}

// ---- the composition --------------------------------------------------------

enum Gen { kFlat, kScaled, kHigh };

struct Block {  // residual parameters of one plane
    Gen gen;
    int qp, depth;
    const Kiv16s* ls;
    bool bypass;
    bool raw() const { return gen != kFlat && bypass && qp == 0; }
};

// Adds one 4x4 block's residual at p: coefficients c when ac, DC from *dc
// when given, through the single-block functions (or as they stand under
// the transform bypass).
template <class T, class C>
void add_raw(T* p, int n, const C* c, const C* dc, int depth) {
    for (int k = 0; k < n * n; ++k) {
        const long long r = (k == 0 && dc) ? *dc : c ? c[k] : 0;
        T& s = p[(k / n) * Pic<T>::kWidth + k % n];
        s = T(std::clamp<long long>(s + r, 0, (1 << depth) - 1));
    }
}
void add4(const Block& b, Kiv8u* p, Kiv16s* c, const Kiv16s* dc, bool ac) {
    constexpr int s = Pic<Kiv8u>::kStep;
    Kiv16s zero[16] = {};
    if (b.raw()) return add_raw(p, 4, ac ? c : nullptr, dc, 8);
    ASSERT_EQ(b.gen == kFlat ? kiviDequantTransformResidualAndAdd_H264_16s_C1I(p, ac ? c : zero, dc, p, s, s, b.qp, ac)
                             : kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(p, s, ac ? c : zero, dc, p, s, b.qp, ac, b.ls),
              kivStsOk);
}
void add4(const Block& b, Kiv16u* p, Kiv32s* c, const Kiv32s* dc, bool ac) {
    constexpr int s = Pic<Kiv16u>::kStep;
    Kiv32s zero[16] = {};
    if (b.raw()) return add_raw(p, 4, ac ? c : nullptr, dc, b.depth);
    ASSERT_EQ(kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(p, s, ac ? c : zero, dc, p, s, b.qp, ac, b.depth, b.ls),
              kivStsOk);
}
void add8(const Block& b, Kiv8u* p, Kiv16s* c) {
    if (b.raw()) return add_raw(p, 8, c, static_cast<const Kiv16s*>(nullptr), 8);
    ASSERT_EQ(kiviQuantLuma8x8Inv_H264_16s_C1I(c, b.qp / 6, b.ls), kivStsOk);
    ASSERT_EQ(kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(p, Pic<Kiv8u>::kStep, c, p, Pic<Kiv8u>::kStep), kivStsOk);
}
void add8(const Block& b, Kiv16u* p, Kiv32s* c) {
    constexpr int s = Pic<Kiv16u>::kStep;
    if (b.raw()) return add_raw(p, 8, c, static_cast<const Kiv32s*>(nullptr), b.depth);
    ASSERT_EQ(kiviQuantInvLuma8x8_H264_32s_C1I(c, b.qp / 6, b.ls), kivStsOk);
    ASSERT_EQ(kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(p, s, c, p, s, b.depth), kivStsOk);
}
// DC blocks: luma (n = 16), chroma 2x2 (4) and 2x4 (8, level scale dcLs).
void dc_block(const Block& b, Kiv16s* c, int n, const Kiv16s* dcLs) {
    if (b.raw()) return;
    if (b.gen == kFlat)
        ASSERT_EQ(n == 16 ? kiviTransformDequantLumaDC_H264_16s_C1I(c, b.qp) : kiviTransformDequantChromaDC_H264_16s_C1I(c, b.qp),
                  kivStsOk);
    else if (n == 16) ASSERT_EQ(kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(c, b.qp, b.ls), kivStsOk);
    else if (n == 4) ASSERT_EQ(kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(c, b.qp, b.ls), kivStsOk);
    else ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(c, b.qp, dcLs), kivStsOk);
}
void dc_block(const Block& b, Kiv32s* c, int n, const Kiv16s* dcLs) {
    if (b.raw()) return;
    if (n == 16) ASSERT_EQ(kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(c, b.qp, b.ls), kivStsOk);
    else if (n == 4) ASSERT_EQ(kiviTransformQuantInvChromaDC2x2_H264_32s_C1I(c, b.qp, b.ls), kivStsOk);
    else ASSERT_EQ(kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(c, b.qp, dcLs), kivStsOk);
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
constexpr unsigned kNeeds[9] = {1, 2, 0, 1, 35, 35, 35, 1, 2};
constexpr unsigned kNeeds16[4] = {1, 2, 0, 35};

template <class T>
Neighbour around(Pic<T>& pic, int x0, int y0) {
    return [&pic, x0, y0](int x, int y) { return int(pic.at(x0 + x, y0 + y)); };
}

// Predicts the n x n luma block at (x0, y0); true when a needed neighbour
// was missing.
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

// Predicts rows y0..y1 of a whole w x h block (16x16 mode numbering).
template <class T>
void predict_whole(Pic<T>& pic, int lumaMode, int w, int h, unsigned edge, int depth, int y0, int y1) {
    const unsigned mask = whole_mask(edge);
    Pic<T> src = pic;
    for (int y = y0; y < y1; ++y)
        for (int x = 0; x < w; ++x)
            pic.at(x, y) = T(expect_block(lumaMode, w, h, around(src, 0, 0), mask & 1, mask & 2, x, y, depth));
}

// ---- luma -------------------------------------------------------------------

struct Luma {
    int shape;  // 4 or 8: NxN blocks; 16: Intra_16x16
    bool half, intra;
    const Kiv32u* modes;
    int mode16;
    unsigned cbp, edge;
    Block res;
};

template <class T>
KivStatus compose_luma(Pic<T>& pic, const Luma& m, Coeff<T>*& r) {
    const int depth = m.res.depth;
    if (m.shape == 16) {
        if ((whole_mask(m.edge) & kNeeds16[m.mode16]) != kNeeds16[m.mode16]) return kivStsBadIntraPredMode;
        predict_whole(pic, m.mode16, 16, 16, m.edge, depth, 0, 16);
        Coeff<T> dc[16] = {};
        if (m.cbp & 1) {
            dc_block(m.res, r, 16, nullptr);
            std::copy(r, r + 16, dc);
            r += 16;
        }
        for (int k = 0; k < 16; ++k) {
            const int x = block_x(4, k), y = block_y(4, k);
            const bool ac = (m.cbp >> (k + 1)) & 1;
            add4(m.res, &pic.at(x, y), r, &dc[(y / 4) * 4 + x / 4], ac);
            if (ac) r += 16;
        }
        return kivStsOk;
    }
    const int n = m.shape, blocks = (n == 4 ? 16 : 4) / (m.half ? 2 : 1);
    bool warn = false;
    for (int k = 0; k < blocks; ++k) {
        const int x = block_x(n, k), y = block_y(n, k);
        if (m.intra) warn |= predict_nxn(pic, n, x, y, m.modes[k], m.edge, depth);
        if ((m.cbp >> (n == 8 || m.half ? k : k + 1)) & 1) {
            if (n == 4) add4(m.res, &pic.at(x, y), r, static_cast<const Coeff<T>*>(nullptr), true);
            else add8(m.res, &pic.at(x, y), r);
            r += n * n;
        }
    }
    return warn ? kivStsWarnNeighbourMissing : kivStsOk;
}

template <class T>
using LumaFn = std::function<KivStatus(Pic<T>&, const Luma&, Coeff<T>**)>;
template <class T>
struct LumaMember {
    const char* name;
    Gen gen;
    int shape;
    bool half, intra;
    LumaFn<T> call;
};

const LumaMember<Kiv8u> kLuma8[] = {
    {"flat intra", kFlat, 4, false, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntraMB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.modes, m.cbp, m.res.qp, Kiv8u(m.edge));
     }},
    {"flat half", kFlat, 4, true, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntraHalfMB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.modes, m.cbp, m.res.qp, Kiv8u(m.edge));
     }},
    {"flat inter", kFlat, 4, false, false, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaInterMB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.cbp, m.res.qp);
     }},
    {"flat 16x16", kFlat, 16, false, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.mode16, m.cbp, m.res.qp, Kiv8u(m.edge));
     }},
    {"4x4", kScaled, 4, false, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntra4x4MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.modes, m.cbp, Kiv32u(m.res.qp),
                                                             Kiv8u(m.edge), m.res.ls, m.res.bypass);
     }},
    {"half 4x4", kScaled, 4, true, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.modes, m.cbp, m.res.qp,
                                                                 Kiv8u(m.edge), m.res.ls, m.res.bypass);
     }},
    {"inter 4x4", kScaled, 4, false, false, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaInter4x4MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.cbp, m.res.qp, m.res.ls, m.res.bypass);
     }},
    {"8x8", kScaled, 8, false, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.modes, m.cbp, Kiv32u(m.res.qp),
                                                             Kiv8u(m.edge), m.res.ls, m.res.bypass);
     }},
    {"half 8x8", kScaled, 8, true, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.modes, m.cbp, m.res.qp,
                                                                 Kiv8u(m.edge), m.res.ls, m.res.bypass);
     }},
    {"inter 8x8", kScaled, 8, false, false, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaInter8x8MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.cbp, m.res.qp, m.res.ls, m.res.bypass);
     }},
    {"16x16", kScaled, 16, false, true, [](Pic<Kiv8u>& p, const Luma& m, Kiv16s** c) {
         return kiviReconstructLumaIntra_16x16MB_H264_16s8u_C1R(c, p.mb(), p.kStep, m.mode16, m.cbp, m.res.qp,
                                                                Kiv8u(m.edge), m.res.ls, m.res.bypass);
     }},
};

KivReconstructHighParams_32s16u record(Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
    return {c, p.mb(), p.kStep, m.cbp, m.res.qp, m.res.ls, m.res.bypass, m.res.depth};
}

// Every High luma member through one record.
template <auto F, class... A>
KivStatus high(Pic<Kiv16u>& p, const Luma& m, Kiv32s** c, A... args) {
    const auto r = record(p, m, c);
    return F(&r, args...);
}

const LumaMember<Kiv16u> kLuma16[] = {
    {"high 4x4", kHigh, 4, false, true, [](Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
         return high<kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R>(p, m, c, m.modes, Kiv8u(m.edge));
     }},
    {"high half 4x4", kHigh, 4, true, true, [](Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
         return high<kiviReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R>(p, m, c, m.modes, Kiv8u(m.edge));
     }},
    {"high inter 4x4", kHigh, 4, false, false, [](Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
         return high<kiviReconstructLumaInter4x4_H264High_32s16u_IP1R>(p, m, c);
     }},
    {"high 8x8", kHigh, 8, false, true, [](Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
         return high<kiviReconstructLumaIntra8x8_H264High_32s16u_IP1R>(p, m, c, m.modes, Kiv8u(m.edge));
     }},
    {"high half 8x8", kHigh, 8, true, true, [](Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
         return high<kiviReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R>(p, m, c, m.modes, Kiv8u(m.edge));
     }},
    {"high inter 8x8", kHigh, 8, false, false, [](Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
         return high<kiviReconstructLumaInter8x8_H264High_32s16u_IP1R>(p, m, c);
     }},
    {"high 16x16", kHigh, 16, false, true, [](Pic<Kiv16u>& p, const Luma& m, Kiv32s** c) {
         return high<kiviReconstructLumaIntra16x16_H264High_32s16u_IP1R>(p, m, c, m.mode16, Kiv8u(m.edge));
     }},
};

template <class T, std::size_t K>
void luma_against_composition(const LumaMember<T> (&members)[K], Rng& rng, int depth, int trials) {
    for (const LumaMember<T>& member : members)
        for (int trial = 0; trial < trials; ++trial) {
            SCOPED_TRACE(::testing::Message() << member.name << ", depth " << depth << ", trial " << trial);
            Kiv32u modes[16];
            for (auto& v : modes) v = Kiv32u(rng.range(0, 8));
            std::vector<Kiv16s> ls(64);
            for (auto& v : ls) v = Kiv16s(rng.range(4, 400));
            const int maxQp = member.gen == kFlat || depth == 8 ? 51 : 6 * depth + 3;
            Luma m{member.shape, member.half, member.intra, modes, rng.range(0, 3),
                   Kiv32u(rng.next()) & (trial % 9 ? ~0u : 0u), unsigned(rng.range(0, 63)),
                   Block{member.gen, trial % 4 ? rng.range(0, maxQp) : 0, depth, ls.data(), rng.chance(2)}};
            if (m.shape == 16 && trial % 5 == 0) m.cbp &= 1;  // DC only
            Pic<T> pic;
            pic.fill(rng, depth);
            Pic<T> want = pic;
            std::vector<Coeff<T>> coeffs(17 * 16);
            for (auto& v : coeffs) v = Coeff<T>(rng.chance(3) ? rng.range(-4000, 4000) >> (sizeof(T) == 1 ? 3 : 0) : 0);
            auto reference = coeffs;
            Coeff<T>* c = coeffs.data();
            Coeff<T>* r = reference.data();
            ASSERT_EQ(member.call(pic, m, &c), compose_luma(want, m, r));
            ASSERT_EQ(c - coeffs.data(), r - reference.data());
            ASSERT_EQ(pic.mem, want.mem);
        }
}

TEST(H264MbRecon, LumaAgainstComposition) {
    Rng rng(31);
    luma_against_composition(kLuma8, rng, 8, 120);
    for (const int depth : {9, 10, 14}) luma_against_composition(kLuma16, rng, depth, 100);
}

// ---- chroma -----------------------------------------------------------------

struct Chroma {
    int mode;
    unsigned edge, lower;
    bool dc[2];          // per plane: DC block coded
    unsigned ac[2];      // per plane: AC blocks coded, bit i = block i
    Block res[2];
    Kiv16s dcLs[2];      // 4:2:2 DC level scales
    unsigned cbp420() const {  // the one pattern of the 8-bit members
        return (dc[0] ? 1u << 17 : 0) | (dc[1] ? 1u << 18 : 0) | (ac[0] & 15) << 19 | (ac[1] & 15) << 23;
    }
    Kiv32u cbp(int pl) const { return (dc[pl] ? 1u : 0u) | ac[pl] << 1; }
};

enum Shape { kIntra, kInter, kHalves };

// Both planes: prediction, then both DC blocks, then the AC blocks (each
// plane reads its own cursor; for the 8-bit members both are one).
template <class T>
KivStatus compose_chroma(Pic<T> (&w)[2], const Chroma& m, Shape shape, int h, Coeff<T>** const (&cursor)[2]) {
    const int n = h / 2, luma = kChromaToLuma[m.mode];
    if (shape == kHalves && m.mode != 0) return kivStsBadIntraPredMode;
    if (shape == kIntra && (whole_mask(m.edge) & kNeeds16[luma]) != kNeeds16[luma]) return kivStsBadIntraPredMode;
    Coeff<T> dcs[2][8] = {};
    for (int pl = 0; pl < 2; ++pl) {
        const int depth = m.res[pl].depth;
        if (shape == kIntra) predict_whole(w[pl], luma, 8, h, m.edge, depth, 0, h);
        if (shape == kHalves) {
            predict_whole(w[pl], 2, 8, h, m.edge, depth, 0, h / 2);
            predict_whole(w[pl], 2, 8, h, m.lower, depth, h / 2, h);
        }
    }
    for (int pl = 0; pl < 2; ++pl)
        if (m.dc[pl]) {
            Coeff<T>*& r = *cursor[pl];
            dc_block(m.res[pl], r, n, &m.dcLs[pl]);
            std::copy(r, r + n, dcs[pl]);
            r += n;
        }
    for (int pl = 0; pl < 2; ++pl)
        for (int i = 0; i < n; ++i) {
            Coeff<T>*& r = *cursor[pl];
            const bool ac = (m.ac[pl] >> i) & 1;
            add4(m.res[pl], &w[pl].at(4 * (i & 1), 4 * (i >> 1)), r, &dcs[pl][i], ac);
            if (ac) r += 16;
        }
    return kivStsOk;
}

template <class T>
using ChromaFn = std::function<KivStatus(Pic<T> (&)[2], const Chroma&, Coeff<T>* (&)[2])>;
template <class T>
struct ChromaMember {
    const char* name;
    Gen gen;
    Shape shape;
    int h;
    bool shared;  // one coefficient cursor and one pattern for both planes
    ChromaFn<T> call;
};

// The U/V record pair of a High chroma member.
template <class R, class T, class C>
std::array<R, 2> records(Pic<T> (&p)[2], const Chroma& m, C* (&c)[2]) {
    std::array<R, 2> r;
    for (int pl = 0; pl < 2; ++pl)
        r[pl] = R{&c[pl], p[pl].mb(), p[pl].kStep, m.cbp(pl), m.res[pl].qp, m.res[pl].ls, m.res[pl].bypass,
                  m.res[pl].depth};
    return r;
}

using C8 = Coeff<Kiv8u>*;
const ChromaMember<Kiv8u> kChroma8[] = {
    {"flat intra", kFlat, kIntra, 8, true, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         return kiviReconstructChromaIntraMB_H264_16s8u_P2R(&c[0], p[0].mb(), p[1].mb(), p[0].kStep, m.mode, m.cbp420(),
                                                            m.res[0].qp, Kiv8u(m.edge));
     }},
    {"flat inter", kFlat, kInter, 8, true, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         return kiviReconstructChromaInterMB_H264_16s8u_P2R(&c[0], p[0].mb(), p[1].mb(), p[0].kStep, m.cbp420(), m.res[0].qp);
     }},
    {"flat halves", kFlat, kHalves, 8, true, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         return kiviReconstructChromaIntraHalvesMB_H264_16s8u_P2R(&c[0], p[0].mb(), p[1].mb(), p[0].kStep, m.mode,
                                                                  m.cbp420(), m.res[0].qp, Kiv8u(m.edge), Kiv8u(m.lower));
     }},
    {"intra", kScaled, kIntra, 8, true, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         return kiviReconstructChromaIntra4x4MB_H264_16s8u_P2R(&c[0], p[0].mb(), p[1].mb(), p[0].kStep, m.mode, m.cbp420(),
                                                               m.res[0].qp, m.res[1].qp, Kiv8u(m.edge), m.res[0].ls,
                                                               m.res[1].ls, m.res[0].bypass);
     }},
    {"inter", kScaled, kInter, 8, true, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         return kiviReconstructChromaInter4x4MB_H264_16s8u_P2R(&c[0], p[0].mb(), p[1].mb(), p[0].kStep, m.cbp420(),
                                                               m.res[0].qp, m.res[1].qp, m.res[0].ls, m.res[1].ls,
                                                               m.res[0].bypass);
     }},
    {"halfs", kScaled, kHalves, 8, true, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         return kiviReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(
             &c[0], p[0].mb(), p[1].mb(), p[0].kStep, m.mode, m.cbp420(), m.res[0].qp, m.res[1].qp, Kiv8u(m.edge),
             Kiv8u(m.lower), m.res[0].ls, m.res[1].ls, m.res[0].bypass);
     }},
    {"422 intra", kHigh, kIntra, 16, false, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         const auto r = records<KivReconstructHighParams_16s8u>(p, m, c);
         return kiviReconstructChroma422Intra4x4_H264High_16s8u_IP2R(r.data(), m.mode, Kiv8u(m.edge), m.dcLs[0], m.dcLs[1]);
     }},
    {"422 inter", kHigh, kInter, 16, false, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         const auto r = records<KivReconstructHighParams_16s8u>(p, m, c);
         return kiviReconstructChroma422Inter4x4_H264High_16s8u_IP2R(r.data(), m.dcLs[0], m.dcLs[1]);
     }},
    {"422 halves", kHigh, kHalves, 16, false, [](Pic<Kiv8u> (&p)[2], const Chroma& m, C8 (&c)[2]) {
         const auto r = records<KivReconstructHighParams_16s8u>(p, m, c);
         return kiviReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(r.data(), m.mode, Kiv8u(m.edge), Kiv8u(m.lower),
                                                                         m.dcLs[0], m.dcLs[1]);
     }},
};

using C16 = Coeff<Kiv16u>*;
using R32 = KivReconstructHighParams_32s16u;
const ChromaMember<Kiv16u> kChroma16[] = {
    {"high intra", kHigh, kIntra, 8, false, [](Pic<Kiv16u> (&p)[2], const Chroma& m, C16 (&c)[2]) {
         return kiviReconstructChromaIntra4x4_H264High_32s16u_IP2R(records<R32>(p, m, c).data(), m.mode, Kiv8u(m.edge));
     }},
    {"high inter", kHigh, kInter, 8, false, [](Pic<Kiv16u> (&p)[2], const Chroma& m, C16 (&c)[2]) {
         return kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(records<R32>(p, m, c).data());
     }},
    {"high halves", kHigh, kHalves, 8, false, [](Pic<Kiv16u> (&p)[2], const Chroma& m, C16 (&c)[2]) {
         return kiviReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(records<R32>(p, m, c).data(), m.mode,
                                                                       Kiv8u(m.edge), Kiv8u(m.lower));
     }},
    {"high 422 intra", kHigh, kIntra, 16, false, [](Pic<Kiv16u> (&p)[2], const Chroma& m, C16 (&c)[2]) {
         return kiviReconstructChroma422Intra4x4_H264High_32s16u_IP2R(records<R32>(p, m, c).data(), m.mode,
                                                                      Kiv8u(m.edge), m.dcLs[0], m.dcLs[1]);
     }},
    {"high 422 inter", kHigh, kInter, 16, false, [](Pic<Kiv16u> (&p)[2], const Chroma& m, C16 (&c)[2]) {
         return kiviReconstructChroma422Inter4x4_H264High_32s16u_IP2R(records<R32>(p, m, c).data(), m.dcLs[0],
                                                                      m.dcLs[1]);
     }},
    {"high 422 halves", kHigh, kHalves, 16, false, [](Pic<Kiv16u> (&p)[2], const Chroma& m, C16 (&c)[2]) {
         return kiviReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(
             records<R32>(p, m, c).data(), m.mode, Kiv8u(m.edge), Kiv8u(m.lower), m.dcLs[0], m.dcLs[1]);
     }},
};

template <class T, std::size_t K>
void chroma_against_composition(const ChromaMember<T> (&members)[K], Rng& rng, int depth, int trials) {
    for (const ChromaMember<T>& member : members)
        for (int trial = 0; trial < trials; ++trial) {
            SCOPED_TRACE(::testing::Message() << member.name << ", depth " << depth << ", trial " << trial);
            const bool flat = member.gen == kFlat;
            // Chroma QP: 0..39 at 8 bits (0..51 for the flat halves), 12 below luma above.
            const int maxQp = flat && member.shape == kHalves ? 51 : 6 * depth - 9;
            Chroma m{};
            m.mode = member.shape == kHalves && trial % 2 ? 0 : rng.range(0, 3);
            m.edge = unsigned(rng.range(0, 63));
            m.lower = trial % 4 ? m.edge : unsigned(rng.range(0, 63));
            std::vector<Kiv16s> ls[2];
            const bool bypass = rng.chance(2);
            for (int pl = 0; pl < 2; ++pl) {
                ls[pl].resize(16);
                for (auto& v : ls[pl]) v = Kiv16s(rng.range(4, 400));
                m.dcLs[pl] = Kiv16s(rng.range(4, 400));
                const bool coded = trial % 7 != 0;
                m.dc[pl] = coded && rng.chance(2);
                m.ac[pl] = coded ? unsigned(rng.next()) & ((1u << member.h / 2) - 1) : 0;
                const int qp = trial % 5 ? rng.range(0, maxQp) : 0;
                m.res[pl] = Block{member.gen, flat && pl ? m.res[0].qp : qp, depth, ls[pl].data(), bypass};
            }
            Pic<T> pics[2], want[2];
            std::vector<Coeff<T>> coeffs[2], reference[2];
            Coeff<T>* c[2];
            Coeff<T>* r[2];
            for (int pl = 0; pl < 2; ++pl) {
                pics[pl].fill(rng, depth);
                want[pl] = pics[pl];
                coeffs[pl].resize(16 + 8 * 16 + 8 * 16);
                for (auto& v : coeffs[pl])
                    v = Coeff<T>(rng.chance(3) ? rng.range(-4000, 4000) >> (sizeof(T) == 1 ? 3 : 0) : 0);
                reference[pl] = coeffs[pl];
                c[pl] = coeffs[pl].data();
                r[pl] = reference[pl].data();
            }
            Coeff<T>** const cursors[2] = {&r[0], member.shared ? &r[0] : &r[1]};
            const KivStatus st = member.call(pics, m, c);
            ASSERT_EQ(st, compose_chroma(want, m, member.shape, member.h, cursors));
            for (int pl = 0; pl < (member.shared ? 1 : 2); ++pl)
                ASSERT_EQ(c[pl] - coeffs[pl].data(), r[pl] - reference[pl].data());
            ASSERT_EQ(pics[0].mem, want[0].mem);
            ASSERT_EQ(pics[1].mem, want[1].mem);
        }
}

TEST(H264MbRecon, ChromaAgainstComposition) {
    Rng rng(32);
    chroma_against_composition(kChroma8, rng, 8, 120);
    for (const int depth : {9, 10, 14}) chroma_against_composition(kChroma16, rng, depth, 80);
}

TEST(H264MbRecon, StatusesAndCheckOrder) {
    Pic<Kiv8u> pic;
    std::vector<Kiv16s> ls(64, 16), block(256, 40);
    Kiv16s* c = block.data();
    Kiv16s* none = nullptr;
    Kiv32u modes[16] = {};
    Kiv8u* mb = pic.mb();
    constexpr int s = Pic<Kiv8u>::kStep;
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(nullptr, mb, s, modes, 0, 99, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(&none, mb, s, modes, 0, 99, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(&c, mb, s, nullptr, 0, 99, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntraMB_H264_16s8u_C1R(&c, mb, s, modes, 0, 52, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructLumaIntra4x4MB_H264_16s8u_C1R(&c, mb, s, nullptr, 0, 99, 0, nullptr, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(&c, mb, s, modes, 0, 52, 0, ls.data(), 0), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructLumaInterMB_H264_16s8u_C1R(&c, mb, s, 0, -1), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructChromaInterMB_H264_16s8u_P2R(&c, mb, nullptr, s, 0, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructChromaInterMB_H264_16s8u_P2R(&c, mb, mb, s, 0, 40), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructChromaIntraHalfsMB_H264_16s8u_P2R(&c, mb, mb, s, 0, 0, 51, 0, 0), kivStsOk);
    EXPECT_EQ(kiviReconstructChromaIntraMB_H264_16s8u_P2R(&c, mb, mb, s, 4, 0, 0, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(&c, mb, s, 4, 0, 0, 0), kivStsOutOfRange);
    EXPECT_EQ(kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(&c, mb, s, 3, 0, 0, 16), kivStsBadIntraPredMode);
    // A mode above 8 stops a walk part-way; the pointer is not written back.
    for (const bool blocks8x8 : {false, true}) {
        modes[1] = 9;
        const Pic<Kiv8u> before = pic;
        EXPECT_EQ(blocks8x8 ? kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(&c, mb, s, modes, 15, 0, 0, ls.data(), 0)
                            : kiviReconstructLumaIntraMB_H264_16s8u_C1R(&c, mb, s, modes, 0x1FFFE, 0, 0),
                  kivStsOutOfRange);
        EXPECT_EQ(c, block.data());
        EXPECT_NE(pic.mem, before.mem);
    }

    // High records: the record, its pointer fields, then the modes; steps;
    // bit depth and QP (chroma QPc 12 below luma); a 16s8u record is 8-bit
    // whatever its bitDepth says.
    Pic<Kiv16u> hp;
    std::vector<Kiv32s> hb(64, 0);
    Kiv32s* hc = hb.data();
    Kiv32s* hnone = nullptr;
    using R = KivReconstructHighParams_32s16u;
    const R good{&hc, hp.mb(), hp.kStep, 0, 0, ls.data(), 0, 10};
    const auto luma = [&](R r) { return kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(&r, modes, 0); };
    const auto changed = [&](auto edit) {
        R r = good;
        edit(r);
        return luma(r);
    };
    modes[1] = 0;
    EXPECT_EQ(kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(nullptr, modes, 0), kivStsNullPointer);
    EXPECT_EQ(kiviReconstructLumaIntra8x8_H264High_32s16u_IP1R(&good, nullptr, 0), kivStsNullPointer);
    EXPECT_EQ(changed([&](R& r) { r.ppSrcDstCoeff = &hnone, r.srcDstStep = 0; }), kivStsNullPointer);
    EXPECT_EQ(changed([](R& r) { r.pQuantTable = nullptr, r.qp = -1; }), kivStsNullPointer);
    EXPECT_EQ(changed([](R& r) { r.srcDstStep = 0, r.qp = -1; }), kivStsBadStep);
    EXPECT_EQ(changed([](R& r) { r.qp = 63; }), kivStsOk);
    EXPECT_EQ(changed([](R& r) { r.qp = 64; }), kivStsOutOfRange);
    EXPECT_EQ(changed([](R& r) { r.bitDepth = 7; }), kivStsOutOfRange);
    EXPECT_EQ(changed([](R& r) { r.bitDepth = 15; }), kivStsOutOfRange);
    R pair[2] = {good, good};
    pair[1].pSrcDstPlane = nullptr;
    EXPECT_EQ(kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(pair), kivStsNullPointer);
    pair[1] = good;
    pair[1].qp = 52;
    EXPECT_EQ(kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(pair), kivStsOutOfRange);
    pair[1].qp = 51;
    EXPECT_EQ(kiviReconstructChroma422Inter4x4_H264High_32s16u_IP2R(pair, 16, 16), kivStsOk);
    EXPECT_EQ(kiviReconstructChromaIntra4x4_H264High_32s16u_IP2R(pair, 4, 0), kivStsOutOfRange);
    Kiv16s* q = block.data();
    const KivReconstructHighParams_16s8u s8{&q, mb, s, 0, 40, ls.data(), 0, 14};
    const KivReconstructHighParams_16s8u s8pair[2] = {s8, s8};
    EXPECT_EQ(kiviReconstructChroma422Inter4x4_H264High_16s8u_IP2R(s8pair, 16, 16), kivStsOutOfRange);
}

}  // namespace
