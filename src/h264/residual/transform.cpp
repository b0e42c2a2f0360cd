// Exported H.264 dequantisation and inverse-transform functions: argument
// checks in the documented order, then one kernel call.
#include "core/arith.h"
#include "h264/residual/transform_kernels.h"
#include "kivvc.h"

using namespace kivvc::h264;
using kivvc::h264::transform::table;

namespace {

// The caller's level scale, or the flat row for qp % 6.
const s16* level_scale(const s16* ls, int qp) { return ls ? ls : InvLevelScale_4x4_default[h264_qp_rem[qp]].data(); }

bool outside(Kiv32s v, int lo, int hi) { return v < lo || v > hi; }

// Shared body of the scaling-list DC functions; `bias` is added to QP before
// the shift class and the default row are taken.
template <class Coeff, class Fn>
KivStatus dc_call(Coeff* block, Kiv32s qp, const Kiv16s* ls, int maxQp, int bias, Fn fn) {
    if (!block) return kivStsNullPointer;
    if (outside(qp, 0, maxQp)) return kivStsOutOfRange;
    const int q = qp + bias;
    fn(block, h264_qp6[q], ls ? ls[0] : InvLevelScale_4x4_default[h264_qp_rem[q]][0]);
    return kivStsOk;
}

template <class Coeff, class Fn>
KivStatus quant8x8_call(Coeff* coeffs, Kiv32s qp6, const Kiv16s* ls, int maxQp6, Fn fn) {
    if (!coeffs || !ls) return kivStsNullPointer;
    if (outside(qp6, 0, maxQp6)) return kivStsBadQp;
    fn(coeffs, qp6, ls);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviDequantTransformResidual_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s step, const Kiv16s* pDC,
                                                           Kiv32u AC, Kiv32s QP) {
    if (!pSrcDst) return kivStsNullPointer;
    if (outside(QP, 0, 51)) return kivStsOutOfRange;
    if (step < 8) return kivStsBadStep;
    table().dequant_residual(pSrcDst, step, pDC, AC != 0, QP);
    return kivStsOk;
}

KIV_API KivStatus kiviDequantTransformResidualAndAdd_H264_16s_C1I(const Kiv8u* pPred, Kiv16s* pSrcDst,
                                                                 const Kiv16s* pDC, Kiv8u* pDst, Kiv32s PredStep,
                                                                 Kiv32s DstStep, Kiv32s QP, Kiv32u AC) {
    if (!pPred || !pDst) return kivStsNullPointer;
    if (outside(QP, 0, 51)) return kivStsOutOfRange;
    if (!pSrcDst && (!pDC || AC)) return kivStsNullPointer;
    table().dequant_residual_add(pPred, PredStep, pSrcDst, pDC, pDst, DstStep, QP, AC != 0);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformDequantLumaDC_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP) {
    if (!pSrcDst) return kivStsNullPointer;
    if (outside(QP, 0, 51)) return kivStsOutOfRange;
    table().luma_dc_flat(pSrcDst, QP);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformDequantChromaDC_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP) {
    if (!pSrcDst) return kivStsNullPointer;
    if (outside(QP, 0, 51)) return kivStsOutOfRange;
    table().chroma_dc_flat(pSrcDst, InvQuantTable[QP][0]);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformPrediction_H264_8u16s_C1(const Kiv8u* pSrc, Kiv32s step, Kiv16s* pDst) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (step < 1) return kivStsBadStep;
    table().transform_prediction(pSrc, step, pDst);
    return kivStsOk;
}

KIV_API KivStatus kiviDequantTransformResidual_SISP_H264_16s_C1I(Kiv16s* pSrcDst, const Kiv16s* pPredictBlock,
                                                                const Kiv16s* pDC, Kiv32u AC, Kiv32u qp, Kiv32s qs,
                                                                Kiv32u Switch) {
    if (!pSrcDst || !pPredictBlock) return kivStsNullPointer;
    const int q = qp > 51 ? 51 : int(qp);
    table().sisp(pSrcDst, pPredictBlock, pDC, AC != 0, q, kivvc::clip3(0, 51, qs), Switch != 0);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformDequantChromaDC_SISP_H264_16s_C1I(Kiv16s* pSrcDst, const Kiv16s* pDCPredict,
                                                                Kiv32s qp, Kiv32s qs, Kiv32u Switch) {
    if (!pSrcDst || !pDCPredict) return kivStsNullPointer;
    table().sisp_chroma_dc(pSrcDst, pDCPredict, kivvc::clip3(0, 51, qp), kivvc::clip3(0, 51, qs), Switch != 0);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformQuantInvAddPred4x4_H264_16s_C1IR(const Kiv8u* pPred, Kiv32s predStep,
                                                               Kiv16s* pSrcDst, const Kiv16s* pDC, Kiv8u* pDst,
                                                               Kiv32s dstStep, Kiv32s QP, Kiv32u AC,
                                                               const Kiv16s* pScaleLevels) {
    if (!pPred || !pDst || !pSrcDst) return kivStsNullPointer;
    if (outside(QP, 0, 51)) return kivStsOutOfRange;
    table().add_pred4x4(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC != 0, level_scale(pScaleLevels, QP));
    return kivStsOk;
}

KIV_API KivStatus kiviTransformQuantInvAddPred4x4_H264_32s_C1IR(const Kiv16u* pPred, Kiv32s predStep,
                                                               Kiv32s* pSrcDst, const Kiv32s* pDC, Kiv16u* pDst,
                                                               Kiv32s dstStep, Kiv32s QP, Kiv32u AC, Kiv32s bitDepth,
                                                               const Kiv16s* pScaleLevels) {
    if (!pPred || !pSrcDst || !pDst) return kivStsNullPointer;
    if (outside(QP, 0, 87) || outside(bitDepth, 9, 14)) return kivStsOutOfRange;
    table().add_pred4x4_hbd(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC != 0, bitDepth,
                            level_scale(pScaleLevels, QP));
    return kivStsOk;
}

KIV_API KivStatus kiviTransformQuantInvLumaDC4x4_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP, const Kiv16s* pScaleLevels) {
    return dc_call(pSrcDst, QP, pScaleLevels, 51, 0, table().luma_dc);
}

KIV_API KivStatus kiviTransformQuantInvLumaDC4x4_H264_32s_C1I(Kiv32s* pSrcDst, Kiv32s QP, const Kiv16s* pScaleLevels) {
    return dc_call(pSrcDst, QP, pScaleLevels, 87, 0, table().luma_dc_hbd);
}

KIV_API KivStatus kiviTransformQuantInvChromaDC2x2_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP,
                                                               const Kiv16s* pScaleLevels) {
    return dc_call(pSrcDst, QP, pScaleLevels, 39, 0, table().chroma_dc2x2);
}

KIV_API KivStatus kiviTransformQuantInvChromaDC2x2_H264_32s_C1I(Kiv32s* pSrcDst, Kiv32s QP,
                                                               const Kiv16s* pScaleLevels) {
    return dc_call(pSrcDst, QP, pScaleLevels, 75, 0, table().chroma_dc2x2_hbd);
}

KIV_API KivStatus kiviTransformQuantInvChromaDC2x4_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP,
                                                               const Kiv16s* pScaleLevels) {
    return dc_call(pSrcDst, QP, pScaleLevels, 39, 3, table().chroma_dc2x4);
}

KIV_API KivStatus kiviTransformQuantInvChromaDC2x4_H264_32s_C1I(Kiv32s* pSrcDst, Kiv32s QP,
                                                               const Kiv16s* pScaleLevels) {
    return dc_call(pSrcDst, QP, pScaleLevels, 75, 3, table().chroma_dc2x4_hbd);
}

KIV_API KivStatus kiviQuantLuma8x8Inv_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s Qp6, const Kiv16s* pScaleLevels) {
    return quant8x8_call(pSrcDst, Qp6, pScaleLevels, 8, table().quant8x8);
}

KIV_API KivStatus kiviQuantInvLuma8x8_H264_32s_C1I(Kiv32s* pSrcDst, Kiv32s Qp6, const Kiv16s* pScaleLevels) {
    return quant8x8_call(pSrcDst, Qp6, pScaleLevels, 14, table().quant8x8_hbd);
}

KIV_API KivStatus kiviTransformLuma8x8InvAddPred_H264_16s8u_C1R(const Kiv8u* pPred, Kiv32s predStep,
                                                               Kiv16s* pSrcDst, Kiv8u* pDst, Kiv32s dstStep) {
    if (!pPred || !pSrcDst || !pDst) return kivStsNullPointer;
    table().transform8x8_add(pPred, predStep, pSrcDst, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformInvAddPredLuma8x8_H264_32s16u_C1R(const Kiv16u* pPred, Kiv32s predStep,
                                                                Kiv32s* pSrcDst, Kiv16u* pDst, Kiv32s dstStep,
                                                                Kiv32s bitDepth) {
    if (!pPred || !pSrcDst || !pDst) return kivStsNullPointer;
    table().transform8x8_add_hbd(pPred, predStep, pSrcDst, pDst, dstStep, kivvc::clip3(1, 16, bitDepth));
    return kivStsOk;
}

}  // extern "C"
