// Exported H.264 deblocking functions: argument checks in the documented
// order, then one kernel call.
#include "h264/inter/deblock_kernels.h"
#include "kivvc.h"

using namespace kivvc::deblock;

namespace {

// Largest sample value of a bit depth; depths outside 0..16 count as the
// nearest end.
int max_sample(Kiv32s bitDepth) {
    if (bitDepth <= 0) return 0;
    if (bitDepth >= 16) return 65535;
    return (1 << bitDepth) - 1;
}

bool all_zero(const Kiv8u* bs) { return (bs[0] | bs[1] | bs[2] | bs[3]) == 0; }

// Beyond these, the 8-bit decisions no longer change: |p0 - q0| < alpha and
// < (alpha >> 2) + 2 always hold from 1020 on, |x| < beta from 256 on.
int limit_alpha(Kiv32u alpha) { return alpha > 1024 ? 1024 : static_cast<int>(alpha); }
int limit_beta(Kiv32u beta) { return beta > 256 ? 256 : static_cast<int>(beta); }

KivStatus separate8(Edges8Fn Table::*entry, Kiv8u* p, Kiv32s step, const Kiv8u* alpha, const Kiv8u* beta,
                    const Kiv8u* tc0, const Kiv8u* bs) {
    if (!p || !alpha || !beta || !tc0 || !bs) return kivStsNullPointer;
    (table().*entry)(p, step, alpha, beta, tc0, bs);
    return kivStsOk;
}

KivStatus mbaff8(Mbaff8Fn Table::*entry, Kiv8u* p, Kiv32s step, Kiv32u alpha, Kiv32u beta, const Kiv8u* tc0,
                 const Kiv8u* bs) {
    if (!p || !tc0 || !bs) return kivStsNullPointer;
    if (alpha == 0 || all_zero(bs)) return kivStsOk;
    (table().*entry)(p, step, limit_alpha(alpha), limit_beta(beta), tc0, bs);
    return kivStsOk;
}

KivStatus record8(Edges8Fn Table::*entry, const KivDeblockingParams_8u* r) {
    if (!r || !r->pSrcDstPlane || !r->pAlpha || !r->pBeta || !r->pThresholds || !r->pBs) return kivStsNullPointer;
    (table().*entry)(r->pSrcDstPlane, r->srcDstStep, r->pAlpha, r->pBeta, r->pThresholds, r->pBs);
    return kivStsOk;
}

bool null16(const KivDeblockingParams_16u* r) {
    return !r || !r->pSrcDstPlane || !r->pAlpha || !r->pBeta || !r->pThresholds || !r->pBs;
}

KivStatus record16(Edges16Fn Table::*entry, const KivDeblockingParams_16u* r) {
    if (null16(r)) return kivStsNullPointer;
    if (r->srcDstStep < 1) return kivStsBadStep;
    (table().*entry)(r->pSrcDstPlane, r->srcDstStep, r->pAlpha, r->pBeta, r->pThresholds, r->pBs,
                     max_sample(r->bitDepth));
    return kivStsOk;
}

void mbaff16(Mbaff16Fn Table::*entry, const KivDeblockingParams_16u* r) {
    (table().*entry)(r->pSrcDstPlane, r->srcDstStep, r->pAlpha[0], r->pBeta[0], r->pThresholds, r->pBs,
                     max_sample(r->bitDepth));
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep,
                                                                const Kiv8u* pAlpha, const Kiv8u* pBeta,
                                                                const Kiv8u* pThresholds, const Kiv8u* pBs) {
    return separate8(&Table::luma_ver, pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

KIV_API KivStatus kiviFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep,
                                                                const Kiv8u* pAlpha, const Kiv8u* pBeta,
                                                                const Kiv8u* pThresholds, const Kiv8u* pBs) {
    return separate8(&Table::luma_hor, pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

KIV_API KivStatus kiviFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep,
                                                                  const Kiv8u* pAlpha, const Kiv8u* pBeta,
                                                                  const Kiv8u* pThresholds, const Kiv8u* pBs) {
    return separate8(&Table::chroma_ver, pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

KIV_API KivStatus kiviFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep,
                                                                  const Kiv8u* pAlpha, const Kiv8u* pBeta,
                                                                  const Kiv8u* pThresholds, const Kiv8u* pBs) {
    return separate8(&Table::chroma_hor, pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBs);
}

KIV_API KivStatus kiviFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep,
                                                                      Kiv32u alpha, Kiv32u beta,
                                                                      const Kiv8u* pThresholds, const Kiv8u* pBs) {
    return mbaff8(&Table::luma_ver_mbaff, pSrcDst, srcDstStep, alpha, beta, pThresholds, pBs);
}

KIV_API KivStatus kiviFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep,
                                                                        Kiv32u alpha, Kiv32u beta,
                                                                        const Kiv8u* pThresholds, const Kiv8u* pBs) {
    return mbaff8(&Table::chroma_ver_mbaff, pSrcDst, srcDstStep, alpha, beta, pThresholds, pBs);
}

KIV_API KivStatus kiviFilterDeblockingChroma422VerEdge_H264_8u_C1IR(const KivDeblockingParams_8u* pDeblockInfo) {
    return record8(&Table::chroma422_ver, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingChroma422HorEdge_H264_8u_C1IR(const KivDeblockingParams_8u* pDeblockInfo) {
    return record8(&Table::chroma422_hor, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR(const KivDeblockingParams_8u*) {
    return kivStsNotImplemented;
}

KIV_API KivStatus kiviFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR(const KivDeblockingParams_16u*) {
    return kivStsNotImplemented;
}

KIV_API KivStatus kiviFilterDeblockingLumaVerEdge_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    return record16(&Table::luma_ver16, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingLumaHorEdge_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    return record16(&Table::luma_hor16, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingChromaVerEdge_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    return record16(&Table::chroma_ver16, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingChromaHorEdge_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    return record16(&Table::chroma_hor16, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingChroma422VerEdge_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    return record16(&Table::chroma422_ver16, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingChroma422HorEdge_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    return record16(&Table::chroma422_hor16, pDeblockInfo);
}

KIV_API KivStatus kiviFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    const KivDeblockingParams_16u* r = pDeblockInfo;
    if (null16(r)) return kivStsNullPointer;
    if (r->srcDstStep < 1) return kivStsBadStep;
    if (r->pAlpha[0] == 0 || all_zero(r->pBs)) return kivStsOk;
    mbaff16(&Table::luma_ver_mbaff16, r);
    return kivStsOk;
}

KIV_API KivStatus kiviFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(const KivDeblockingParams_16u* pDeblockInfo) {
    const KivDeblockingParams_16u* r = pDeblockInfo;
    if (!r || !r->pSrcDstPlane || !r->pThresholds || !r->pBs || !r->pAlpha || !r->pBeta) return kivStsNullPointer;
    if (r->pAlpha[0] == 0 || all_zero(r->pBs)) return kivStsOk;
    mbaff16(&Table::chroma_ver_mbaff16, r);
    return kivStsOk;
}

}  // extern "C"
