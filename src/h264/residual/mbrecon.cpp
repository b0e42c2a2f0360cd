// Exported H.264 macroblock reconstruction of 8-bit pictures (flat and
// scaling-list members): argument checks, then one of the shared walks.
#include "h264/residual/mbrecon_walk.h"

namespace {

using namespace kivvc::h264;
using namespace kivvc::h264::mbrecon;

bool bad_luma_qp(Kiv32s qp) { return qp < 0 || qp > 51; }
bool bad_chroma_qp(Kiv32s qpU, Kiv32s qpV) { return qpU < 0 || qpU > 39 || qpV < 0 || qpV > 39; }

// Intra luma members of the scaling-list generation (4x4 or 8x8 blocks, full
// or upper half).
KivStatus scaled_luma(Kiv16s** pp, Kiv8u* plane, Kiv32u step, const Kiv32u* modes, Kiv32u cbp, Kiv32s qp,
                      Kiv8u edge, const Kiv16s* ls, Kiv8u bypass, bool blocks8x8, bool half) {
    if (!pp || !plane || !modes || !*pp || !ls) return kivStsNullPointer;
    if (bad_luma_qp(qp)) return kivStsOutOfRange;
    const Scaled<Kiv8u> res(tr::table(), qp, ls, bypass);
    if (blocks8x8) return luma_walk<8>(res, pp, plane, int(step), modes, cbp, 0, half ? 2 : 4, edge);
    return luma_walk<4>(res, pp, plane, int(step), modes, cbp, half ? 0 : 1, half ? 8 : 16, edge);
}

// 4:2:0 chroma prediction of both planes (when intra), then the residual.
template <class Res>
KivStatus chroma420(const Res& resU, const Res& resV, Kiv16s** pp, Kiv8u* u, Kiv8u* v, Kiv32u step, Kiv32s mode,
                    Kiv32u cbp, unsigned edgeTop, unsigned edgeBottom, bool intra, bool halves) {
    const int s = int(step);
    if (intra) {
        if (const KivStatus st = check_chroma(mode, edgeTop, halves); st != kivStsOk) return st;
        predict_chroma<kChroma8x8>(u, s, mode, edgeTop, edgeBottom, halves, 8);
        predict_chroma<kChroma8x8>(v, s, mode, edgeTop, edgeBottom, halves, 8);
    }
    chroma420_residual(resU, resV, pp, u, v, s, cbp);
    return kivStsOk;
}

// Chroma members of the scaling-list generation.
KivStatus scaled_chroma(Kiv16s** pp, Kiv8u* u, Kiv8u* v, Kiv32u step, Kiv32s mode, Kiv32u cbp, Kiv32s qpU,
                        Kiv32s qpV, unsigned edgeTop, unsigned edgeBottom, const Kiv16s* lsU, const Kiv16s* lsV,
                        Kiv8u bypass, bool intra, bool halves) {
    if (!pp || !u || !v || !*pp || !lsU || !lsV) return kivStsNullPointer;
    if (bad_chroma_qp(qpU, qpV)) return kivStsOutOfRange;
    return chroma420(Scaled<Kiv8u>(tr::table(), qpU, lsU, bypass), Scaled<Kiv8u>(tr::table(), qpV, lsV, bypass), pp,
                     u, v, step, mode, cbp, edgeTop, edgeBottom, intra, halves);
}

// Flat chroma members: one QP for both planes.
KivStatus flat_chroma(Kiv16s** pp, Kiv8u* u, Kiv8u* v, Kiv32u step, Kiv32s mode, Kiv32u cbp, Kiv32s qp, int maxQp,
                      unsigned edgeTop, unsigned edgeBottom, bool intra, bool halves) {
    if (!pp || !u || !v || !*pp) return kivStsNullPointer;
    if (qp < 0 || qp > maxQp) return kivStsOutOfRange;
    const Flat res{tr::table(), qp};
    return chroma420(res, res, pp, u, v, step, mode, cbp, edgeTop, edgeBottom, intra, halves);
}

// Intra 16x16: the mode is checked before anything is written.
template <class Res>
KivStatus intra16x16(const Res& res, Kiv16s** pp, Kiv8u* plane, Kiv32u step, Kiv32s mode, Kiv32u cbp, Kiv8u edge) {
    const unsigned mask = whole_mask(edge);
    if (const KivStatus st = check_whole(mode, mask, false); st != kivStsOk) return st;
    predict_whole<kLuma16x16>(plane, int(step), plane, int(step), mode, mask, 8);
    luma16x16_residual(res, pp, plane, int(step), cbp);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviReconstructLumaIntraMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                            Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                            Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff || !pMBIntraTypes) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma_walk<4>(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, int(srcDstYStep), pMBIntraTypes, cbp4x4, 1,
                        16, edgeType);
}

KIV_API KivStatus kiviReconstructLumaIntraHalfMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                                Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                Kiv32u cbp4x2, Kiv32s QP, Kiv8u edgeType) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff || !pMBIntraTypes) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma_walk<4>(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, int(srcDstYStep), pMBIntraTypes, cbp4x2, 0,
                        8, edgeType);
}

KIV_API KivStatus kiviReconstructLumaInterMB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                            Kiv32u srcDstYStep, Kiv32u cbp4x4, Kiv32s QP) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma_walk<4>(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, int(srcDstYStep), nullptr, cbp4x4, 1, 16, 0);
}

KIV_API KivStatus kiviReconstructLumaIntra16x16MB_H264_16s8u_C1R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstYPlane,
                                                                 Kiv32u srcDstYStep, Kiv32s intraLumaMode,
                                                                 Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType) {
    if (!ppSrcCoeff || !pSrcDstYPlane || !*ppSrcCoeff) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return intra16x16(Flat{tr::table(), QP}, ppSrcCoeff, pSrcDstYPlane, srcDstYStep, intraLumaMode, cbp4x4,
                      edgeType);
}

KIV_API KivStatus kiviReconstructChromaInterMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                              Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                              Kiv32u cbp4x4, Kiv32s chromaQP) {
    return flat_chroma(ppSrcCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstUVStep, 0, cbp4x4, chromaQP, 39, 0, 0, false,
                       false);
}

KIV_API KivStatus kiviReconstructChromaIntraMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                              Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                              Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                              Kiv32s chromaQP, Kiv8u edgeType) {
    return flat_chroma(ppSrcCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstUVStep, intraChromaMode, cbp4x4, chromaQP, 39,
                       edgeType, edgeType, true, false);
}

KIV_API KivStatus kiviReconstructChromaIntraHalfsMB_H264_16s8u_P2R(Kiv16s** ppSrcCoeff, Kiv8u* pSrcDstUPlane,
                                                                   Kiv8u* pSrcDstVPlane, Kiv32u srcDstUVStep,
                                                                   Kiv32s intraChromaMode, Kiv32u cbp4x4,
                                                                   Kiv32s chromaQP, Kiv8u edgeTypeTop,
                                                                   Kiv8u edgeTypeBottom) {
    return flat_chroma(ppSrcCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstUVStep, intraChromaMode, cbp4x4, chromaQP, 51,
                       edgeTypeTop, edgeTypeBottom, true, true);
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
    return scaled_luma(ppSrcDstCoeff, pSrcDstYPlane, srcDstYStep, pMBIntraTypes, cbp4x4, Kiv32s(QP), edgeType,
                       pQuantTable, bypassFlag, false, false);
}

KIV_API KivStatus kiviReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                   Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                   Kiv32u cbp4x2, Kiv32s QP, Kiv8u edgeType,
                                                                   const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    return scaled_luma(ppSrcDstCoeff, pSrcDstYPlane, srcDstYStep, pMBIntraTypes, cbp4x2, QP, edgeType, pQuantTable,
                       bypassFlag, false, true);
}

KIV_API KivStatus kiviReconstructLumaIntra8x8MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                               Kiv32u cbp8x8, Kiv32u QP, Kiv8u edgeType,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    if (!ppSrcDstCoeff || !pSrcDstYPlane || !pMBIntraTypes || !*ppSrcDstCoeff || !pQuantTable)
        return kivStsNullPointer;
    if (QP > 51) return kivStsOutOfRange;
    return scaled_luma(ppSrcDstCoeff, pSrcDstYPlane, srcDstYStep, pMBIntraTypes, cbp8x8, Kiv32s(QP), edgeType,
                       pQuantTable, bypassFlag, true, false);
}

KIV_API KivStatus kiviReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                   Kiv32u srcDstYStep, const Kiv32u* pMBIntraTypes,
                                                                   Kiv32u cbp8x2, Kiv32s QP, Kiv8u edgeType,
                                                                   const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    return scaled_luma(ppSrcDstCoeff, pSrcDstYPlane, srcDstYStep, pMBIntraTypes, cbp8x2, QP, edgeType, pQuantTable,
                       bypassFlag, true, true);
}

KIV_API KivStatus kiviReconstructLumaInter4x4MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, Kiv32u cbp4x4, Kiv32s QP,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    if (!ppSrcDstCoeff || !pSrcDstYPlane || !*ppSrcDstCoeff || !pQuantTable) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma_walk<4>(Scaled<Kiv8u>(tr::table(), QP, pQuantTable, bypassFlag), ppSrcDstCoeff, pSrcDstYPlane,
                        int(srcDstYStep), nullptr, cbp4x4, 1, 16, 0);
}

KIV_API KivStatus kiviReconstructLumaInter8x8MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                               Kiv32u srcDstYStep, Kiv32u cbp8x8, Kiv32s QP,
                                                               const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    if (!ppSrcDstCoeff || !pSrcDstYPlane || !*ppSrcDstCoeff || !pQuantTable) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return luma_walk<8>(Scaled<Kiv8u>(tr::table(), QP, pQuantTable, bypassFlag), ppSrcDstCoeff, pSrcDstYPlane,
                        int(srcDstYStep), nullptr, cbp8x8, 0, 4, 0);
}

KIV_API KivStatus kiviReconstructLumaIntra_16x16MB_H264_16s8u_C1R(Kiv16s** ppSrcDstCoeff, Kiv8u* pSrcDstYPlane,
                                                                  Kiv32u srcDstYStep, Kiv32s intraLumaMode,
                                                                  Kiv32u cbp4x4, Kiv32s QP, Kiv8u edgeType,
                                                                  const Kiv16s* pQuantTable, Kiv8u bypassFlag) {
    if (!ppSrcDstCoeff || !pSrcDstYPlane || !*ppSrcDstCoeff || !pQuantTable) return kivStsNullPointer;
    if (bad_luma_qp(QP)) return kivStsOutOfRange;
    return intra16x16(Scaled<Kiv8u>(tr::table(), QP, pQuantTable, bypassFlag), ppSrcDstCoeff, pSrcDstYPlane,
                      srcDstYStep, intraLumaMode, cbp4x4, edgeType);
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
