// The macroblock walks shared by every reconstruction member, templated on
// the sample type (8-bit samples with 16-bit coefficients, 9..14-bit samples
// with 32-bit ones) and on a residual policy (flat or scaling-list scaling).
// Block geometry comes from the walk tables, prediction from the intra
// family, residual arithmetic from the transform family. Plain files only.
#pragma once
#include "core/arith.h"
#include "h264/residual/intra_edges.h"
#include "h264/residual/mbrecon_tables.h"
#include "h264/residual/transform_kernels.h"
#include "kivvc.h"

namespace kivvc::h264::mbrecon {
namespace {

namespace in = kivvc::h264::intra;
namespace tr = kivvc::h264::transform;

template <class T>
struct Traits;
template <>
struct Traits<u8> {
    using Coeff = s16;
};
template <>
struct Traits<u16> {
    using Coeff = s32;
};
template <class T>
using Coeff = typename Traits<T>::Coeff;

inline bool bit(unsigned v, int b) { return (v >> b) & 1u; }

// Availability mask (prediction sense) of block k of a walk under an edge
// mask: the top / left neighbours are missing only on the macroblock's own
// edges, the above-left one with either of them (block 0: its own bit), the
// above-right one where the block to the upper right is outside the picture
// or not yet decoded; the one block whose above-right lies in the macroblock
// above-right (`arBlock`) depends on edge bit 32 alone.
inline unsigned walk_mask(bool onTop, bool onLeft, bool arInside, int k, int arBlock, unsigned edge) {
    const bool top = !(onTop && (edge & kEdgeAbove));
    const bool left = !(onLeft && (edge & kEdgeLeft));
    const bool aboveLeft = k == 0 ? !(edge & kEdgeAboveLeft) : top && left;
    const bool aboveRight = !((!top && k != arBlock) || !arInside || (k == arBlock && (edge & kEdgeAboveRight)));
    return (top ? in::kTop : 0) | (left ? in::kLeft : 0) | (aboveLeft ? in::kAboveLeft : 0) |
           (aboveRight ? in::kAboveRight : 0);
}

inline unsigned block_mask4x4(int k, unsigned edge) {
    return walk_mask(top_edge_tab16[k], left_edge_tab16[k], above_right_avail_4x4[k], k, 5, edge);
}

// 8x8 blocks: block 1's above-right is the macroblock above-right, block 2's
// is block 1, block 3's is never decoded in time.
inline unsigned block_mask8x8(int b, unsigned edge) {
    return walk_mask(top_edge_tab4[b], left_edge_tab4[b], b != 3, b, 1, edge);
}

// Mask of a whole-block (16x16 or chroma) prediction under an edge mask.
inline unsigned whole_mask(unsigned edge) {
    return ((edge & kEdgeAbove) ? 0 : in::kTop) | ((edge & kEdgeLeft) ? 0 : in::kLeft) |
           ((edge & kEdgeAboveLeft) ? 0 : in::kAboveLeft);
}

// Adds a residual sample with clamping to the sample range: through ClampTbl
// at 8 bits, directly above.
inline void add_clamped(u8& s, s32 r, int) { s = ClampTbl.v[s + clip3(-256, 256, r) + 256]; }
inline void add_clamped(u16& s, s32 r, int bitDepth) {
    const std::int64_t v = std::int64_t(s) + r, hi = (1 << bitDepth) - 1;
    s = u16(v < 0 ? 0 : v > hi ? hi : v);
}

// Transform bypass: the n x n coefficients are the residual as they stand
// (element 0 replaced by *dc when given; nothing but the DC without ac).
template <int N, class T, class C>
void add_bypass(T* p, int step, const C* c, const C* dc, bool ac, int bitDepth) {
    for (int k = 0; k < N * N; ++k) {
        const s32 r = (k == 0 && dc) ? s32(*dc) : ac ? s32(c[k]) : 0;
        add_clamped(row(p, step, k / N)[k % N], r, bitDepth);
    }
}

// Flat scaling, 8-bit samples: the dequantise-transform-add rule with one QP.
struct Flat {
    const tr::Table& t;
    int qp;
    // A 4x4 block at p: coefficients c when ac, dc null (DC from c) or given.
    void add4x4(u8* p, int step, s16* c, const s16* dc, bool ac) const {
        t.dequant_residual_add(p, step, c, dc, p, step, qp, ac);
    }
    void luma_dc(s16* c) const { t.luma_dc_flat(c, qp); }
    void chroma_dc(s16* c, int, int) const { t.chroma_dc_flat(c, InvQuantTable[qp][0]); }
};

// The scaling-list kernels of each sample type.
inline void add_pred4x4(const tr::Table& t, u8* p, int step, s16* c, const s16* dc, int qp, bool ac, int,
                        const s16* ls) {
    t.add_pred4x4(p, step, c, dc, p, step, qp, ac, ls);
}
inline void add_pred4x4(const tr::Table& t, u16* p, int step, s32* c, const s32* dc, int qp, bool ac, int bitDepth,
                        const s16* ls) {
    t.add_pred4x4_hbd(p, step, c, dc, p, step, qp, ac, bitDepth, ls);
}
inline void add_pred8x8(const tr::Table& t, u8* p, int step, s16* c, int q, int, const s16* ls) {
    t.quant8x8(c, q, ls);
    t.transform8x8_add(p, step, c, p, step);
}
inline void add_pred8x8(const tr::Table& t, u16* p, int step, s32* c, int q, int bitDepth, const s16* ls) {
    t.quant8x8_hbd(c, q, ls);
    t.transform8x8_add_hbd(p, step, c, p, step, bitDepth);
}
inline auto dc_kernels(const tr::Table& t, s16*) {
    struct K {
        tr::DcScaleFn luma, chroma2x2, chroma2x4;
    };
    return K{t.luma_dc, t.chroma_dc2x2, t.chroma_dc2x4};
}
inline auto dc_kernels(const tr::Table& t, s32*) {
    struct K {
        tr::DcScaleHbdFn luma, chroma2x2, chroma2x4;
    };
    return K{t.luma_dc_hbd, t.chroma_dc2x2_hbd, t.chroma_dc2x4_hbd};
}

// Scaling-list scaling with the transform bypass (flag set and QP 0): the
// coefficients are then the residual as they stand (a DC block is left
// untransformed and its element i becomes element 0 of block i).
template <class T>
struct Scaled {
    using C = Coeff<T>;
    const tr::Table& t;
    int qp;
    const Kiv16s* ls;
    bool bypass;
    int bitDepth;
    Scaled(const tr::Table& table, int q, const Kiv16s* levels, unsigned flag, int depth = 8)
        : t(table), qp(q), ls(levels), bypass(flag && q == 0), bitDepth(depth) {}
    void add4x4(T* p, int step, C* c, const C* dc, bool ac) const {
        if (bypass) add_bypass<4>(p, step, c, dc, ac, bitDepth);
        else add_pred4x4(t, p, step, c, dc, qp, ac, bitDepth, ls);
    }
    void add8x8(T* p, int step, C* c) const {
        if (bypass) add_bypass<8>(p, step, c, static_cast<const C*>(nullptr), true, bitDepth);
        else add_pred8x8(t, p, step, c, qp / 6, bitDepth, ls);
    }
    void luma_dc(C* c) const {
        if (!bypass) dc_kernels(t, c).luma(c, qp / 6, ls[0]);
    }
    // A chroma DC block of n = 4 (2x2) or 8 (2x4, QP raised by 3 and its own
    // level scale dcLs) coefficients.
    void chroma_dc(C* c, int n, int dcLs) const {
        if (bypass) return;
        if (n == 4) dc_kernels(t, c).chroma2x2(c, qp / 6, ls[0]);
        else dc_kernels(t, c).chroma2x4(c, (qp + 3) / 6, dcLs);
    }
};

// The luma walk over `blocks` N x N blocks in decoding order (4x4: 16, or 8
// for a half; 8x8: 4, or 2 for a half): prediction when modes are given,
// residual of block k when cbp bit k + bitBase is set. Returns -11 part-way
// for a mode above 8 (coefficient pointer not written back).
template <int N, class T, class Res>
KivStatus luma_walk(const Res& res, Coeff<T>** ppCoeffs, T* plane, int step, const Kiv32u* modes, unsigned cbp,
                    int bitBase, int blocks, unsigned edge, int bitDepth = 8) {
    const in::Table& it = in::table();
    const Step* steps = N == 4 ? xyoff : xyoff8;
    Coeff<T>* c = *ppCoeffs;
    bool warn = false;
    int x = 0, y = 0;
    for (int k = 0; k < blocks; ++k) {
        T* p = row(plane, step, y) + x;
        if (modes) {
            if (modes[k] > 8) return kivStsOutOfRange;
            if constexpr (N == 4) warn |= in::predict4x4(it, p, step, modes[k], block_mask4x4(k, edge), bitDepth);
            else warn |= in::predict8x8(it, p, step, modes[k], block_mask8x8(k, edge), bitDepth);
        }
        if (bit(cbp, k + bitBase)) {
            if constexpr (N == 4) res.add4x4(p, step, c, nullptr, true);
            else res.add8x8(p, step, c);
            c += N * N;
        }
        x += steps[k].dx;
        y += steps[k].dy;
    }
    *ppCoeffs = c;
    return warn ? kivStsWarnNeighbourMissing : kivStsOk;
}

// Whole-block predictions: 16x16 luma (its own mode numbers), 8x8 (4:2:0) and
// 8x16 (4:2:2) chroma (chroma mode numbers).
enum Whole { kLuma16x16, kChroma8x8, kChroma8x16 };

inline auto whole_kernels(const in::Table& t, Whole w, u8*) {
    struct K {
        const in::PredFn *pred, *dc;
    };
    return w == kLuma16x16 ? K{t.pred16x16, t.dc16x16}
           : w == kChroma8x8 ? K{t.pred_chroma8x8, t.dc_chroma8x8}
                             : K{t.pred_chroma8x16, t.dc_chroma8x16};
}
inline auto whole_kernels(const in::Table& t, Whole w, u16*) {
    struct K {
        const in::PredHbdFn *pred, *dc;
    };
    return w == kLuma16x16 ? K{t.pred16x16_hbd, t.dc16x16_hbd}
           : w == kChroma8x8 ? K{t.pred_chroma8x8_hbd, t.dc_chroma8x8_hbd}
                             : K{t.pred_chroma8x16_hbd, t.dc_chroma8x16_hbd};
}

// Predicts the block whose neighbours surround p into dst (usually p itself);
// the mode has been checked against the mask.
template <Whole S, class T>
void predict_whole(const T* p, int step, T* dst, int dstStep, int mode, unsigned mask, int bitDepth) {
    constexpr int W = S == kLuma16x16 ? 16 : 8, H = S == kChroma8x8 ? 8 : 16;
    in::Edges<T, W, 0, H> e;
    in::gather(e, p, step, mask, 1 << (bitDepth - 1));
    const auto k = whole_kernels(in::table(), S, dst);
    const bool dc = S == kLuma16x16 ? mode == 2 : mode == in::kChromaDc;
    in::run(dc ? k.dc[in::dc_index(mask & in::kTop, mask & in::kLeft)] : k.pred[mode], e.top(), e.left, dst, dstStep,
            bitDepth);
}

constexpr unsigned kNeedsAll = in::kTop | in::kLeft | in::kAboveLeft;

// Checks a whole-block mode (16x16 numbering when !chroma) without writing:
// -11 out of range, -117 when a neighbour the mode needs is missing.
inline KivStatus check_whole(int mode, unsigned mask, bool chroma) {
    if (mode < 0 || mode > 3) return kivStsOutOfRange;
    const int luma = chroma ? (mode == 0 ? 2 : mode == 2 ? 0 : mode) : mode;
    const unsigned needs = luma == 0 ? in::kTop : luma == 1 ? in::kLeft : luma == 3 ? kNeedsAll : 0;
    return (mask & needs) == needs ? kivStsOk : kivStsBadIntraPredMode;
}

// Chroma DC prediction of a plane whose upper and lower halves have their own
// edge masks: each half is the corresponding half of the whole-block DC
// prediction under its own mask.
template <Whole S, class T>
void predict_chroma_halves(T* p, int step, unsigned upperEdge, unsigned lowerEdge, int bitDepth) {
    constexpr int H = S == kChroma8x8 ? 8 : 16;
    predict_whole<S>(p, step, p, step, in::kChromaDc, whole_mask(upperEdge), bitDepth);
    T tmp[8 * H];
    predict_whole<S>(p, step, tmp, int(8 * sizeof(T)), in::kChromaDc, whole_mask(lowerEdge), bitDepth);
    for (int y = H / 2; y < H; ++y)
        for (int x = 0; x < 8; ++x) row(p, step, y)[x] = tmp[8 * y + x];
}

// Chroma prediction of a member: checked for both planes before anything is
// written (-11 / -117; the halves members take DC only), then each plane.
inline KivStatus check_chroma(int mode, unsigned edge, bool halves) {
    if (halves) return mode == in::kChromaDc ? kivStsOk : kivStsBadIntraPredMode;
    return check_whole(mode, whole_mask(edge), true);
}
template <Whole S, class T>
void predict_chroma(T* p, int step, int mode, unsigned edge, unsigned lowerEdge, bool halves, int bitDepth) {
    if (halves) predict_chroma_halves<S>(p, step, edge, lowerEdge, bitDepth);
    else predict_whole<S>(p, step, p, step, mode, whole_mask(edge), bitDepth);
}

// Intra 16x16 residual: the luma DC block (cbp bit 0), then each 4x4 block
// gets its DC and, when its bit is set, its AC.
template <class T, class Res>
void luma16x16_residual(const Res& res, Coeff<T>** ppCoeffs, T* plane, int step, unsigned cbp) {
    if (!(cbp & 0x1FFFFu)) return;
    Coeff<T>* c = *ppCoeffs;
    Coeff<T> zero[16] = {};
    const Coeff<T>* dc = zero;
    if (cbp & 1) {
        res.luma_dc(c);
        dc = c;
        c += 16;
    }
    int x = 0, y = 0;
    for (int k = 0; k < 16; ++k) {
        const bool ac = bit(cbp, k + 1);
        res.add4x4(row(plane, step, y) + x, step, ac ? c : nullptr, dc + block_subblock_mapping[k], ac);
        if (ac) c += 16;
        x += xyoff[k].dx;
        y += xyoff[k].dy;
    }
    *ppCoeffs = c;
}

// A chroma plane's DC block of n (4 or 8) coefficients, taken when present
// (dcs otherwise stays zero).
template <class Res, class C>
void take_chroma_dc(const Res& res, C*& c, bool present, C* dcs, int n, int dcLs) {
    if (!present) return;
    res.chroma_dc(c, n, dcLs);
    for (int i = 0; i < n; ++i) dcs[i] = c[i];
    c += n;
}

// A chroma plane's n AC blocks (raster order, two per row): block i takes
// the next 16 coefficients when bit i of acBits is set, and its DC dcs[i].
template <class Res, class C, class T>
void add_chroma_ac(const Res& res, C*& c, T* plane, int step, const C* dcs, int n, unsigned acBits) {
    for (int i = 0; i < n; ++i) {
        const bool ac = bit(acBits, i);
        res.add4x4(row(plane, step, 4 * (i >> 1)) + 4 * (i & 1), step, ac ? c : nullptr, &dcs[i], ac);
        if (ac) c += 16;
    }
}

// 4:2:0 chroma residual of both planes from one buffer and one pattern (bits
// 17..26): both DC blocks first, then the AC blocks of U and of V.
template <class Res>
void chroma420_residual(const Res& resU, const Res& resV, Kiv16s** ppCoeffs, Kiv8u* u, Kiv8u* v, int step,
                        unsigned cbp) {
    if (!(cbp & (0x3FFu << 17))) return;
    Kiv16s* c = *ppCoeffs;
    Kiv16s dcU[4] = {}, dcV[4] = {};
    take_chroma_dc(resU, c, bit(cbp, 17), dcU, 4, 0);
    take_chroma_dc(resV, c, bit(cbp, 18), dcV, 4, 0);
    add_chroma_ac(resU, c, u, step, dcU, 4, cbp >> 19);
    add_chroma_ac(resV, c, v, step, dcV, 4, cbp >> 23);
    *ppCoeffs = c;
}

}  // namespace
}  // namespace kivvc::h264::mbrecon
