// Exported motion-compensation functions: pointer checks, then one kernel
// call chosen by position and rounding.
#include "kivvc.h"
#include "mpeg2/mpeg2_kernels.h"

using namespace kivvc::mpeg2;

namespace {

// Single-reference tables: (rc & 1) + ((mcType & 12) >> 1).
int mc_index(int mcType, int rc) { return (rc & 1) + ((mcType & 12) >> 1); }
// Two-reference tables: rounding fastest, then forward, then backward.
int mc_b_index(int fwd, int bwd, int rc) { return (rc & 1) + ((fwd & 12) >> 1) + (bwd & 12) * 2; }
// Small-block tables: four copies of each position; forward position fastest.
int mc_small_index(int mcType) { return mcType & 12; }
int mc_small_b_index(int fwd, int bwd) { return ((fwd & 12) >> 2) + (bwd & 12); }

template <McFn (Table::*Entries)[8], int Height>
KivStatus mc(const Kiv8u* ref, Kiv32s refStep, const Kiv16s* res, Kiv32s resStep, Kiv8u* dst, Kiv32s dstStep,
             Kiv32s mcType, Kiv32s rc) {
    if (!ref || !res || !dst) return kivStsNullPointer;
    (table().*Entries)[mc_index(mcType, rc)](ref, refStep, res, resStep, dst, dstStep, Height);
    return kivStsOk;
}

template <McBFn (Table::*Entries)[32], int Height>
KivStatus mc_b(const Kiv8u* refF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u* refB, Kiv32s refBStep, Kiv32s mcTypeB,
               const Kiv16s* res, Kiv32s resStep, Kiv8u* dst, Kiv32s dstStep, Kiv32s rc) {
    if (!refF || !refB || !res || !dst) return kivStsNullPointer;
    (table().*Entries)[mc_b_index(mcTypeF, mcTypeB, rc)](refF, refFStep, refB, refBStep, res, resStep, dst, dstStep,
                                                         Height);
    return kivStsOk;
}

template <McSmallFn (Table::*Entries)[16]>
KivStatus mc_small(const Kiv8u* ref, Kiv32s refStep, const Kiv16s* res, Kiv32s resStep, Kiv8u* dst, Kiv32s dstStep,
                   Kiv32s mcType, Kiv32s rc) {
    if (!ref || !res || !dst) return kivStsNullPointer;
    (table().*Entries)[mc_small_index(mcType)](ref, refStep, res, resStep, dst, dstStep, rc);
    return kivStsOk;
}

template <McSmallBFn (Table::*Entries)[16]>
KivStatus mc_small_b(const Kiv8u* refF, Kiv32s refFStep, Kiv32s mcTypeF, const Kiv8u* refB, Kiv32s refBStep,
                     Kiv32s mcTypeB, const Kiv16s* res, Kiv32s resStep, Kiv8u* dst, Kiv32s dstStep, Kiv32s rc) {
    if (!refF || !refB || !res || !dst) return kivStsNullPointer;
    (table().*Entries)[mc_small_b_index(mcTypeF, mcTypeB)](refF, refFStep, refB, refBStep, res, resStep, dst, dstStep,
                                                           rc);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviMC16x16_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                    Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc<&Table::MC16xHFunctionTable_mmp, 16>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType,
                                                   roundControl);
}
KIV_API KivStatus kiviMC16x8_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc<&Table::MC16xHFunctionTable_mmp, 8>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType,
                                                  roundControl);
}
KIV_API KivStatus kiviMC16x8UV_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                     Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc<&Table::MC16xHUVFunctionTable_mmp, 8>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType,
                                                    roundControl);
}
KIV_API KivStatus kiviMC16x4_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc<&Table::MC16xHUVFunctionTable_mmp, 4>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType,
                                                    roundControl);
}
KIV_API KivStatus kiviMC8x16_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc<&Table::MC8xHFunctionTable_mmp, 16>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType,
                                                  roundControl);
}
KIV_API KivStatus kiviMC8x8_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                  Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc<&Table::MC8xHFunctionTable_mmp, 8>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType,
                                                 roundControl);
}
KIV_API KivStatus kiviMC8x4_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                  Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc<&Table::MC8xHFunctionTable_mmp, 4>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType,
                                                 roundControl);
}
KIV_API KivStatus kiviMC4x8_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                  Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc_small<&Table::MC4x8FnTbl>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType, roundControl);
}
KIV_API KivStatus kiviMC4x4_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                  Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc_small<&Table::MC4x4FnTbl>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType, roundControl);
}
KIV_API KivStatus kiviMC4x2_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                  Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc_small<&Table::MC4x2FnTbl>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType, roundControl);
}
KIV_API KivStatus kiviMC2x4_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                  Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc_small<&Table::MC2x4FnTbl>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType, roundControl);
}
KIV_API KivStatus kiviMC2x2_8u_C1(const Kiv8u* pSrcRef, Kiv32s srcStep, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                  Kiv8u* pDst, Kiv32s dstStep, Kiv32s mcType, Kiv32s roundControl) {
    return mc_small<&Table::MC2x2FnTbl>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType, roundControl);
}

KIV_API KivStatus kiviMC16x16B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                     Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                     Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_b<&Table::MC16xHBFunctionTable_mmp, 16>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB,
                                                      pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC16x8B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                    Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                    Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_b<&Table::MC16xHBFunctionTable_mmp, 8>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB,
                                                     pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC16x8BUV_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                      Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                      Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_b<&Table::MC16xHUVBFunctionTable_mmp, 8>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB,
                                                       pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC16x4B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                    Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                    Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_b<&Table::MC16xHUVBFunctionTable_mmp, 4>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB,
                                                       pSrcYData, srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC8x8B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                   Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_b<&Table::MC8xHBFunctionTable_mmp, 8>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,
                                                    srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC8x4B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                   Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_b<&Table::MC8xHBFunctionTable_mmp, 4>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,
                                                    srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC4x8B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                   Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_small_b<&Table::MC4x8BFnTbl>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,
                                           srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC4x4B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                   Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_small_b<&Table::MC4x4BFnTbl>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,
                                           srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC4x2B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                   Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_small_b<&Table::MC4x2BFnTbl>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,
                                           srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC2x4B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                   Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_small_b<&Table::MC2x4BFnTbl>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,
                                           srcYDataStep, pDst, dstStep, roundControl);
}
KIV_API KivStatus kiviMC2x2B_8u_C1(const Kiv8u* pSrcRefF, Kiv32s srcStepF, Kiv32s mcTypeF, const Kiv8u* pSrcRefB,
                                   Kiv32s srcStepB, Kiv32s mcTypeB, const Kiv16s* pSrcYData, Kiv32s srcYDataStep,
                                   Kiv8u* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return mc_small_b<&Table::MC2x2BFnTbl>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,
                                           srcYDataStep, pDst, dstStep, roundControl);
}

}  // extern "C"
