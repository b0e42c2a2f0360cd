// Exported H.264 macroblock reconstruction: argument checks, then one walk
// per macroblock shape, shared by the members through templates. Residual
// arithmetic is the transform family's (transform_kernels.h); prediction the
// intra family's.
#include "h264/residual/intra_edges.h"
#include "h264/residual/mbrecon_tables.h"
#include "h264/residual/transform_kernels.h"
#include "core/arith.h"
#include "kivvc.h"

namespace {

using namespace kivvc::h264;
using namespace kivvc::h264::mbrecon;
namespace in = kivvc::h264::intra;
namespace tr = kivvc::h264::transform;

bool bit(unsigned v, int b) { return (v >> b) & 1u; }

// Availability mask (prediction sense) of 4x4 block k under an edge mask.
unsigned block_mask(int k, unsigned edge) {
    const bool top = !(top_edge_tab16[k] && (edge & kEdgeAbove));
    const bool left = !(left_edge_tab16[k] && (edge & kEdgeLeft));
    const bool aboveLeft = k == 0 ? !(edge & kEdgeAboveLeft) : top && left;
    const bool aboveRight = !((!top && k != 5) || !above_right_avail_4x4[k] || (k == 5 && (edge & kEdgeAboveRight)));
    return (top ? in::kTop : 0) | (left ? in::kLeft : 0) | (aboveLeft ? in::kAboveLeft : 0) |
           (aboveRight ? in::kAboveRight : 0);
}

// Mask of a whole-block (16x16 or chroma) prediction under an edge mask.
unsigned whole_mask(unsigned edge) {
    return ((edge & kEdgeAbove) ? 0 : in::kTop) | ((edge & kEdgeLeft) ? 0 : in::kLeft) |
           ((edge & kEdgeAboveLeft) ? 0 : in::kAboveLeft);
}

// Flat scaling, 8-bit samples: the dequantise-transform-add rule with one QP.
struct Flat {
    const tr::Table& t;
    int qp;
    // A 4x4 block at p: coefficients c when ac, dc null (DC from c) or given.
    void add4x4(Kiv8u* p, int step, Kiv16s* c, const Kiv16s* dc, bool ac) const {
        t.dequant_residual_add(p, step, c, dc, p, step, qp, ac);
    }
    void luma_dc(Kiv16s* c) const { t.luma_dc_flat(c, qp); }
    void chroma_dc(Kiv16s* c) const { t.chroma_dc_flat(c, InvQuantTable[qp][0]); }
};

// Scaling-list scaling, 8-bit samples, with the transform bypass (flag set
// and QP 0): the coefficients are then the residual as they stand (a DC block
// is left untransformed and its element i becomes element 0 of block i).
struct Scaled {
    const tr::Table& t;
    int qp;
    const Kiv16s* ls;
    bool bypass;
    Scaled(const tr::Table& table, int q, const Kiv16s* levels, unsigned flag)
        : t(table), qp(q), ls(levels), bypass(flag && q == 0) {}
    void add4x4(Kiv8u* p, int step, Kiv16s* c, const Kiv16s* dc, bool ac) const {
        if (!bypass) {
            t.add_pred4x4(p, step, c, dc, p, step, qp, ac, ls);
            return;
        }
        for (int k = 0; k < 16; ++k) {
            const int r = (k == 0 && dc) ? *dc : ac ? c[k] : 0;
            Kiv8u& s = row(p, step, k >> 2)[k & 3];
            s = ClampTbl.v[s + kivvc::clip3(-256, 256, r) + 256];
        }
    }
    void luma_dc(Kiv16s* c) const {
        if (!bypass) t.luma_dc(c, h264_qp6[qp], ls[0]);
    }
    void chroma_dc(Kiv16s* c) const {
        if (!bypass) t.chroma_dc2x2(c, h264_qp6[qp], ls[0]);
    }
};

// The 4x4 luma walk over `blocks` blocks (16, or 8 for a half): prediction
// when modes are given, residual of block k when cbp bit k + bitBase is set.
// Returns -11 part-way for a mode above 8 (coefficient pointer not written).
template <class Res>
KivStatus luma4x4_walk(const Res& res, Kiv16s** ppCoeffs, Kiv8u* plane, int step, const Kiv32u* modes, unsigned cbp,
                       int bitBase, int blocks, unsigned edge) {
    const in::Table& it = in::table();
    Kiv16s* c = *ppCoeffs;
    bool warn = false;
    int x = 0, y = 0;
    for (int k = 0; k < blocks; ++k) {
        Kiv8u* p = row(plane, step, y) + x;
        if (modes) {
            if (modes[k] > 8) return kivStsOutOfRange;
            warn |= in::predict4x4(it, p, step, modes[k], block_mask(k, edge));
        }
        if (bit(cbp, k + bitBase)) {
            res.add4x4(p, step, c, nullptr, true);
            c += 16;
        }
        x += xyoff[k].dx;
        y += xyoff[k].dy;
    }
    *ppCoeffs = c;
    return warn ? kivStsWarnNeighbourMissing : kivStsOk;
}

// Whole-block prediction (16x16 luma, 8x8 chroma) with the rule of the
// exported predictors: -117 when a needed neighbour is missing.
template <int N>
KivStatus predict_whole(Kiv8u* p, int step, unsigned mask, in::PredFn fn, in::PredFn const (&dc)[4], bool isDc,
                        unsigned needs) {
    if ((mask & needs) != needs) return kivStsBadIntraPredMode;
    in::Edges<Kiv8u, N> e;
    in::gather(e, p, step, mask, 128);
    if (isDc) fn = dc[in::dc_index(mask & in::kTop, mask & in::kLeft)];
    fn(e.top(), e.left, p, step);
    return kivStsOk;
}

constexpr unsigned kNeedsAll = in::kTop | in::kLeft | in::kAboveLeft;

// Checks a whole-block mode (16x16 numbering when !chroma) without writing.
KivStatus check_whole(int mode, unsigned mask, bool chroma) {
    if (mode < 0 || mode > 3) return kivStsOutOfRange;
    const int luma = chroma ? (mode == 0 ? 2 : mode == 2 ? 0 : mode) : mode;
    const unsigned needs = luma == 0 ? in::kTop : luma == 1 ? in::kLeft : luma == 3 ? kNeedsAll : 0;
    return (mask & needs) == needs ? kivStsOk : kivStsBadIntraPredMode;
}

void predict16x16(Kiv8u* p, int step, int mode, unsigned mask) {
    const in::Table& t = in::table();
    predict_whole<16>(p, step, mask, t.pred16x16[mode], t.dc16x16, mode == 2, 0);
}

void predict_chroma(Kiv8u* p, int step, int mode, unsigned mask) {
    const in::Table& t = in::table();
    predict_whole<8>(p, step, mask, t.pred_chroma8x8[mode], t.dc_chroma8x8, mode == in::kChromaDc, 0);
}

// Intra 16x16 residual: the luma DC block (cbp bit 0), then each 4x4 block
// gets its DC and, when its bit is set, its AC.
template <class Res>
void luma16x16_residual(const Res& res, Kiv16s** ppCoeffs, Kiv8u* plane, int step, unsigned cbp) {
    if (!(cbp & 0x1FFFFu)) return;
    Kiv16s* c = *ppCoeffs;
    Kiv16s zero[16] = {};
    const Kiv16s* dc = zero;
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

// 4:2:0 chroma residual of both planes: both DC blocks first, then the AC
// blocks of U and of V.
template <class Res>
void chroma420_residual(const Res& resU, const Res& resV, Kiv16s** ppCoeffs, Kiv8u* u, Kiv8u* v, int step,
                        unsigned cbp) {
    if (!(cbp & (0x3FFu << 17))) return;
    Kiv16s* c = *ppCoeffs;
    Kiv16s dcs[2][4] = {};
    const Res* res[2] = {&resU, &resV};
    for (int pl = 0; pl < 2; ++pl)
        if (bit(cbp, 17 + pl)) {
            res[pl]->chroma_dc(c);
            for (int i = 0; i < 4; ++i) dcs[pl][i] = c[i];
            c += 4;
        }
    Kiv8u* planes[2] = {u, v};
    for (int pl = 0; pl < 2; ++pl)
        for (int i = 0; i < 4; ++i) {
            const bool ac = bit(cbp, 19 + 4 * pl + i);
            res[pl]->add4x4(row(planes[pl], step, 4 * (i >> 1)) + 4 * (i & 1), step, ac ? c : nullptr, &dcs[pl][i], ac);
            if (ac) c += 16;
        }
    *ppCoeffs = c;
}

// Chroma DC prediction of the upper and the lower half with their own masks.
void predict_chroma_halves(Kiv8u* p, int step, unsigned upper, unsigned lower) {
    predict_chroma(p, step, in::kChromaDc, upper);
    Kiv8u tmp[8 * 8];
    in::Edges<Kiv8u, 8> e;
    in::gather(e, p, step, lower, 128);
    in::table().dc_chroma8x8[in::dc_index(lower & in::kTop, lower & in::kLeft)](e.top(), e.left, tmp, 8);
    for (int y = 4; y < 8; ++y)
        for (int x = 0; x < 8; ++x) row(p, step, y)[x] = tmp[8 * y + x];
}

bool bad_luma_qp(Kiv32s qp) { return qp < 0 || qp > 51; }
bool bad_chroma_qp(Kiv32s qpU, Kiv32s qpV) { return qpU < 0 || qpU > 39 || qpV < 0 || qpV > 39; }

// Luma 4x4 members of the scaling-list generation (full and upper half).
KivStatus scaled_luma4x4(Kiv16s** pp, Kiv8u* plane, Kiv32u step, const Kiv32u* modes, Kiv32u cbp, Kiv32s qp,
                         Kiv8u edge, const Kiv16s* ls, Kiv8u bypass, bool half) {
    if (!pp || !plane || !modes || !*pp || !ls) return kivStsNullPointer;
    if (bad_luma_qp(qp)) return kivStsOutOfRange;
    return luma4x4_walk(Scaled(tr::table(), qp, ls, bypass), pp, plane, int(step), modes, cbp, half ? 0 : 1,
                        half ? 8 : 16, edge);
}

// Chroma members of the scaling-list generation; modes: -1 inter, else the
// chroma mode; halves: DC only with separate masks.
KivStatus scaled_chroma(Kiv16s** pp, Kiv8u* u, Kiv8u* v, Kiv32u step, Kiv32s mode, Kiv32u cbp, Kiv32s qpU,
                        Kiv32s qpV, unsigned edgeTop, unsigned edgeBottom, const Kiv16s* lsU, const Kiv16s* lsV,
                        Kiv8u bypass, bool intra, bool halves) {
    if (!pp || !u || !v || !*pp || !lsU || !lsV) return kivStsNullPointer;
    if (bad_chroma_qp(qpU, qpV)) return kivStsOutOfRange;
    const int s = int(step);
    if (halves) {
        if (mode != in::kChromaDc) return kivStsBadIntraPredMode;
        predict_chroma_halves(u, s, whole_mask(edgeTop), whole_mask(edgeBottom));
        predict_chroma_halves(v, s, whole_mask(edgeTop), whole_mask(edgeBottom));
    } else if (intra) {
        const unsigned mask = whole_mask(edgeTop);
        if (const KivStatus st = check_whole(mode, mask, true); st != kivStsOk) return st;
        predict_chroma(u, s, mode, mask);
        predict_chroma(v, s, mode, mask);
    }
    chroma420_residual(Scaled(tr::table(), qpU, lsU, bypass), Scaled(tr::table(), qpV, lsV, bypass), pp, u, v, s,
                       cbp);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviReconstructLumaIntraMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                            Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                            Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff || !pMBIntraTypes) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma4x4_walk(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, int(srcDstYStep), pMBIntraTypes, cbp4x4, 1,
                        16, edgeType);
}

KIV_API KivStatus kiviReconstructLumaIntraHalfMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                                Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                Kiv32u cbp4x2, Kiv32s QP, Kiv8u edgeType) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff || !pMBIntraTypes) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma4x4_walk(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, int(srcDstYStep), pMBIntraTypes, cbp4x2, 0,
                        8, edgeType);
}

KIV_API KivStatus kiviReconstructLumaInterMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                            Kiv32u srcDstYStep, Kiv32u cbp4x4, Kiv32s QP) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma4x4_walk(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, int(srcDstYStep), nullptr, cbp4x4, 1, 16, 0);
}

KIV_API KivStatus kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                                 Kiv32u srcDstYStep, Kiv32s intraLumaMode,
                                                                 Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    const unsigned mask = whole_mask(edgeType);
    if (const KivStatus st = check_whole(intraLumaMode, mask, false); st != kivStsOk) return st;
    predict16x16(pSrcDstYPlane, int(srcDstYStep), intraLumaMode, mask);
    luma16x16_residual(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, int(srcDstYStep), cbp4x4);
    return kivStsOk;
}

KIV_API KivStatus kiviReconstructChromaInterMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                              Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                              Kiv32u cbp4x4, Kiv32s chromaQP) {
    if (!ppSrcCoeff || !pSrcDstUPlane || !pSrcDstVPlane || !*ppSrcCoeff) return kivStsNullPointer;
    if (chromaQP < 0 || chromaQP > 39) return kivStsOutOfRange;
    const Flat res{tr::table(), chromaQP};
    chroma420_residual(res, res, ppSrcCoeff, pSrcDstUPlane, pSrcDstVPlane, int(srcDstUVStep), cbp4x4);
    return kivStsOk;
}

KIV_API KivStatus kiviReconstructChromaIntraMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                              Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                              Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                              Kiv32s chromaQP, Kiv8u edgeType) {
    if (!ppSrcCoeff || !pSrcDstUPlane || !pSrcDstVPlane || !*ppSrcCoeff) return kivStsNullPointer;
    if (chromaQP < 0 || chromaQP > 39) return kivStsOutOfRange;
    const unsigned mask = whole_mask(edgeType);
    if (const KivStatus st = check_whole(intraChromaMode, mask, true); st != kivStsOk) return st;
    predict_chroma(pSrcDstUPlane, int(srcDstUVStep), intraChromaMode, mask);
    predict_chroma(pSrcDstVPlane, int(srcDstUVStep), intraChromaMode, mask);
    const Flat res{tr::table(), chromaQP};
    chroma420_residual(res, res, ppSrcCoeff, pSrcDstUPlane, pSrcDstVPlane, int(srcDstUVStep), cbp4x4);
    return kivStsOk;
}

KIV_API KivStatus kiviReconstructChromaIntraHalfsMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                                   Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                   Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                                   Kiv32s chromaQP, Kiv8u edgeTypeTop,
                                                                   Kiv8u edgeTypeBottom) {
    if (!ppSrcCoeff || !pSrcDstUPlane || !pSrcDstVPlane || !*ppSrcCoeff) return kivStsNullPointer;
    if (chromaQP < 0 || chromaQP > 51) return kivStsOutOfRange;
    if (intraChromaMode != in::kChromaDc) return kivStsBadIntraPredMode;
    const int step = int(srcDstUVStep);
    predict_chroma_halves(pSrcDstUPlane, step, whole_mask(edgeTypeTop), whole_mask(edgeTypeBottom));
    predict_chroma_halves(pSrcDstVPlane, step, whole_mask(edgeTypeTop), whole_mask(edgeTypeBottom));
    const Flat res{tr::table(), chromaQP};
    chroma420_residual(res, res, ppSrcCoeff, pSrcDstUPlane, pSrcDstVPlane, step, cbp4x4);
    return kivStsOk;
}

KIV_API KivStatus kiviReconstructChromaIntraHalvesMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                                    Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                    Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                                    Kiv32s chromaQP, Kiv8u edgeTypeTop,
                                                                    Kiv8u edgeTypeBottom) {
    return kiviReconstructChromaIntraHalfsMB_H264_16s8u_P2R(ppSrcCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstUVStep,
                                                            intraChromaMode, cbp4x4, chromaQP, edgeTypeTop,
                                                            edgeTypeBottom);
}

KIV_API KivStatus kiviReconstructLumaIntra4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                               Kiv32u cbp4x4, Kiv32u QP, Kiv8u edgeType,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    if (!ppSrcDstCoeff || !pSrcDstYPlane || !pMBIntraTypes || !*ppSrcDstCoeff || !pQuantTable)
        return kivStsNullPointer;
    if (QP > 51) return kivStsOutOfRange;
    return scaled_luma4x4(ppSrcDstCoeff, pSrcDstYPlane, srcDstYStep, pMBIntraTypes, cbp4x4, Kiv32s(QP), edgeType,
                          pQuantTable, bypassFlag, false);
}

KIV_API KivStatus kiviReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                   Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                   Kiv32u cbp4x2, Kiv32s QP, Kiv8u edgeType,
                                                                   const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    return scaled_luma4x4(ppSrcDstCoeff, pSrcDstYPlane, srcDstYStep, pMBIntraTypes, cbp4x2, QP, edgeType,
                          pQuantTable, bypassFlag, true);
}

KIV_API KivStatus kiviReconstructLumaInter4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, Kiv32u cbp4x4, Kiv32s QP,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    if (!ppSrcDstCoeff || !pSrcDstYPlane || !*ppSrcDstCoeff || !pQuantTable) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma4x4_walk(Scaled(tr::table(), QP, pQuantTable, bypassFlag), ppSrcDstCoeff, pSrcDstYPlane,
                        int(srcDstYStep), nullptr, cbp4x4, 1, 16, 0);
}

KIV_API KivStatus kiviReconstructLumaIntra_16x16MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                  Kiv32u srcDstYStep, Kiv32s intraLumaMode,
                                                                  Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType,
                                                                  const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    if (!ppSrcDstCoeff || !pSrcDstYPlane || !*ppSrcDstCoeff || !pQuantTable) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    const unsigned mask = whole_mask(edgeType);
    if (const KivStatus st = check_whole(intraLumaMode, mask, false); st != kivStsOk) return st;
    predict16x16(pSrcDstYPlane, int(srcDstYStep), intraLumaMode, mask);
    luma16x16_residual(Scaled(tr::table(), QP, pQuantTable, bypassFlag), ppSrcDstCoeff, pSrcDstYPlane,
                       int(srcDstYStep), cbp4x4);
    return kivStsOk;
}

KIV_API KivStatus kiviReconstructChromaInter4x4MB_H264_16s8u_P2R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane,
                                                                 Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                 Kiv32u cbp4x4, Kiv32s chromaQPU, Kiv32s chromaQPV,
                                                                 const Kiv16s* pQuantTableU,
                                                                 const Kiv16s* pQuantTableV, Kiv8u bypassFlag) {
    return scaled_chroma(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstUVStep, 0, cbp4x4, chromaQPU, chromaQPV,
                         0, 0, pQuantTableU, pQuantTableV, bypassFlag, false, false);
}

KIV_API KivStatus kiviReconstructChromaIntra4x4MB_H264_16s8u_P2R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane,
                                                                 Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                 Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                                 Kiv32s chromaQPU, Kiv32s chromaQPV, Kiv8u edgeType,
                                                                 const Kiv16s* pQuantTableU,
                                                                 const Kiv16s* pQuantTableV, Kiv8u bypassFlag) {
    return scaled_chroma(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstUVStep, intraChromaMode, cbp4x4,
                         chromaQPU, chromaQPV, edgeType, edgeType, pQuantTableU, pQuantTableV, bypassFlag, true,
                         false);
}

KIV_API KivStatus kiviReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(
    Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane, Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep, Kiv32s intraChromaMode,
    Kiv32u cbp4x4, Kiv32s chromaQPU, Kiv32s chromaQPV, Kiv8u edgeTypeTop, Kiv8u edgeTypeBottom,
    const Kiv16s* pQuantTableU, const Kiv16s* pQuantTableV, Kiv8u bypassFlag) {
    return scaled_chroma(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstUVStep, intraChromaMode, cbp4x4,
                         chromaQPU, chromaQPV, edgeTypeTop, edgeTypeBottom, pQuantTableU, pQuantTableV, bypassFlag,
                         true, true);
}

KIV_API KivStatus kiviReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(
    Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstUPlane, Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep, Kiv32s intraChromaMode,
    Kiv32u cbp4x4, Kiv32s chromaQPU, Kiv32s chromaQPV, Kiv8u edgeTypeTop, Kiv8u edgeTypeBottom,
    const Kiv16s* pQuantTableU, const Kiv16s* pQuantTableV, Kiv8u bypassFlag) {
    return kiviReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane,
                                                               srcDstUVStep, intraChromaMode, cbp4x4, chromaQPU,
                                                               chromaQPV, edgeTypeTop, edgeTypeBottom, pQuantTableU,
                                                               pQuantTableV, bypassFlag);
}

}  // extern "C"
