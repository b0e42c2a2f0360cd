// Exported block copy, average and add functions: pointer checks, then one
// kernel call.
#include "common/block_kernels.h"
#include "kivvc.h"

using namespace kivvc::block;

namespace {

template <const CopyFn (Table::*Entries)[kHpEntries]>
KivStatus hp_call(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding) {
    if (!src || !dst) return kivStsNullPointer;
    (table().*Entries)[hp_index(acc, rounding)](src, srcStep, dst, dstStep);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviCopy8x8_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    table().ownvc_Copy8x8HP_8u_C1R[0](pSrc, srcStep, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviCopy16x16_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    table().ownvc_Copy16x16HP_8u_C1R[0](pSrc, srcStep, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviCopy8x4HP_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep, Kiv32s acc,
                                       Kiv32s rounding) {
    return hp_call<&Table::ownvc_Copy8x4HP_8u_C1R>(pSrc, srcStep, pDst, dstStep, acc, rounding);
}

KIV_API KivStatus kiviCopy8x8HP_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep, Kiv32s acc,
                                       Kiv32s rounding) {
    return hp_call<&Table::ownvc_Copy8x8HP_8u_C1R>(pSrc, srcStep, pDst, dstStep, acc, rounding);
}

KIV_API KivStatus kiviCopy16x8HP_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep, Kiv32s acc,
                                        Kiv32s rounding) {
    return hp_call<&Table::ownvc_Copy16x8HP_8u_C1R>(pSrc, srcStep, pDst, dstStep, acc, rounding);
}

KIV_API KivStatus kiviCopy16x16HP_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep, Kiv32s acc,
                                         Kiv32s rounding) {
    return hp_call<&Table::ownvc_Copy16x16HP_8u_C1R>(pSrc, srcStep, pDst, dstStep, acc, rounding);
}

KIV_API KivStatus kiviAverage8x8_8u_C1IR(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pSrcDst, Kiv32s srcDstStep) {
    if (!pSrcDst || !pSrc) return kivStsNullPointer;
    table().average8x8(pSrcDst, srcDstStep, pSrc, srcStep, pSrcDst, srcDstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviAverage16x16_8u_C1IR(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pSrcDst, Kiv32s srcDstStep) {
    if (!pSrcDst || !pSrc) return kivStsNullPointer;
    table().average16x16(pSrcDst, srcDstStep, pSrc, srcStep, pSrcDst, srcDstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviAverage8x8_8u_C1R(const Kiv8u* pSrc1, Kiv32s src1Step, const Kiv8u* pSrc2, Kiv32s src2Step,
                                        Kiv8u* pDst, Kiv32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return kivStsNullPointer;
    table().average8x8(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviAverage16x16_8u_C1R(const Kiv8u* pSrc1, Kiv32s src1Step, const Kiv8u* pSrc2, Kiv32s src2Step,
                                          Kiv8u* pDst, Kiv32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return kivStsNullPointer;
    table().average16x16(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateAverage8x4_8u_C1IR(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pSrcDst,
                                                    Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding) {
    return hp_call<&Table::ownvc_InterpolateAverage8x4HP_8u_C1IR>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

KIV_API KivStatus kiviInterpolateAverage8x8_8u_C1IR(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pSrcDst,
                                                    Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding) {
    return hp_call<&Table::ownvc_InterpolateAverage8x8HP_8u_C1IR>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

KIV_API KivStatus kiviInterpolateAverage16x8_8u_C1IR(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pSrcDst,
                                                     Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding) {
    return hp_call<&Table::ownvc_InterpolateAverage16x8HP_8u_C1IR>(pSrc, srcStep, pSrcDst, srcDstStep, acc, rounding);
}

KIV_API KivStatus kiviInterpolateAverage16x16_8u_C1IR(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pSrcDst,
                                                      Kiv32s srcDstStep, Kiv32s acc, Kiv32s rounding) {
    return hp_call<&Table::ownvc_InterpolateAverage16x16HP_8u_C1IR>(pSrc, srcStep, pSrcDst, srcDstStep, acc,
                                                                    rounding);
}

KIV_API KivStatus kiviAdd8x8_16s8u_C1IRS(const Kiv16s* pResidual, Kiv32s residualStep, Kiv8u* pSrcDst,
                                         Kiv32s srcDstStep) {
    if (!pResidual || !pSrcDst) return kivStsNullPointer;
    table().add8x8(pResidual, residualStep, pSrcDst, srcDstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviAdd8x8HP_16s8u_C1RS(const Kiv16s* pResidual, Kiv32s residualStep, const Kiv8u* pRef,
                                          Kiv32s refStep, Kiv8u* pDst, Kiv32s dstStep, Kiv32s acc, Kiv32s rounding) {
    if (!pResidual || !pRef || !pDst) return kivStsNullPointer;
    table().ownvc_Add8x8HP_16s8u_C1RS[hp_index(acc, rounding)](pResidual, residualStep, pRef, refStep, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviAddC8x8_16s8u_C1IR(Kiv16s value, Kiv8u* pSrcDst, Kiv32s srcDstStep) {
    if (!pSrcDst) return kivStsNullPointer;
    table().add_const8x8(value, pSrcDst, srcDstStep);
    return kivStsOk;
}

}  // extern "C"
