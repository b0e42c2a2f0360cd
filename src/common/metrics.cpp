// Exported block metrics: pointer (and range) checks, then one kernel call.
#include <cstdint>

#include "common/metrics_kernels.h"
#include "common/scan_tables.h"
#include "kivvc.h"

using namespace kivvc::metrics;

namespace {

// SAD and SSD at a half-sample position: only bits 2 and 3 of mcType count.
template <auto Entries, class T>
KivStatus hp_metric(const T* cur, Kiv32s cs, const T* ref, Kiv32s rs, Kiv32s* result, Kiv32s mcType) {
    if (!cur || !ref || !result) return kivStsNullPointer;
    *result = (table().*Entries)[position_of(mcType)](cur, cs, ref, rs);
    return kivStsOk;
}

template <GetDiffFn (Table::*Entries)[kGetDiffEntries]>
KivStatus get_diff(const Kiv8u* cur, Kiv32s cs, const Kiv8u* ref, Kiv32s rs, Kiv16s* diff, Kiv32s ds, Kiv16s* pred,
                   Kiv32s ps, Kiv32s mcType, Kiv32s rc) {
    if (!cur || !ref || !diff) return kivStsNullPointer;
    (table().*Entries)[get_diff_index(mcType, pred != nullptr)](cur, cs, ref, rs, diff, ds, pred, ps, rc & 1);
    return kivStsOk;
}

template <GetDiffBFn (Table::*Entries)[kGetDiffEntries]>
KivStatus get_diff_bidir(const Kiv8u* cur, Kiv32s cs, const Kiv8u* fwd, Kiv32s fs, Kiv32s mcTypeF, const Kiv8u* bwd,
                         Kiv32s bs, Kiv32s mcTypeB, Kiv16s* diff, Kiv32s ds, Kiv32s rc) {
    if (!cur || !fwd || !bwd || !diff) return kivStsNullPointer;
    (table().*Entries)[bidir_index(mcTypeF, mcTypeB)](cur, cs, fwd, fs, bwd, bs, diff, ds, rc & 1);
    return kivStsOk;
}

template <class T, class Fn>
KivStatus sub(Fn Table::*entry, const T* a, Kiv32s as, const T* b, Kiv32s bs, Kiv16s* dst, Kiv32s ds) {
    if (!a || !b || !dst) return kivStsNullPointer;
    (table().*entry)(a, as, b, bs, dst, ds);
    return kivStsOk;
}

// s and q rounded to single precision; q / 64 - (s / 64)^2 is then exact in
// double (both terms are multiples of 2^-12 below 2^31), so truncating it
// gives the same value as any wider evaluation.
Kiv32s variance8x8(Moments m) {
    const double s = static_cast<float>(m.sum);
    const double q = static_cast<float>(static_cast<Kiv32s>(m.squares));
    return static_cast<Kiv32s>(q * 0.015625 - (s * 0.015625) * (s * 0.015625));
}

template <class T, class Fn>
KivStatus var_mean(Fn Table::*entry, const T* src, Kiv32s step, Kiv32s* var, Kiv32s* sum) {
    if (!src || !var || !sum) return kivStsNullPointer;
    const Moments m = (table().*entry)(src, step);
    *var = variance8x8(m);
    *sum = m.sum;
    return kivStsOk;
}

template <int Blocks>
KivStatus var_mean_diff(VarMeanDiffFn (Table::*entries)[kPositions], const Kiv8u* cur, Kiv32s cs, const Kiv8u* ref,
                        Kiv32s rs, const Kiv32s* cur_sums, Kiv32s* var, Kiv32s* mean, Kiv32s mcType) {
    if (!cur || !ref || !cur_sums || !var || !mean) return kivStsNullPointer;
    Kiv32s squares[Blocks], pred_sums[Blocks];
    (table().*entries)[position_of(mcType)](cur, cs, ref, rs, squares, pred_sums);
    for (int i = 0; i < Blocks; ++i) {
        const std::int64_t m = (std::int64_t{cur_sums[i]} - pred_sums[i]) / 8;
        const std::int64_t excess = std::int64_t{squares[i]} - m * m;
        mean[i] = static_cast<Kiv32s>(m);
        var[i] = excess > 0 ? static_cast<Kiv32s>(excess / 64) : 0;
    }
    return kivStsOk;
}

template <class T, class R, class Fn>
KivStatus sad_blocks(Fn Table::*entry, const T* cur, Kiv32s cs, const T* ref, Kiv32s rs, R* sads) {
    if (!cur || !ref || !sads) return kivStsNullPointer;
    (table().*entry)(cur, cs, ref, rs, sads);
    return kivStsOk;
}

template <class T, class Fn>
KivStatus frame_field(Fn Table::*entry, const T* src, Kiv32s step, Kiv32s* frame, Kiv32s* field) {
    if (!src || !frame || !field) return kivStsNullPointer;
    (table().*entry)(src, step, frame, field);
    return kivStsOk;
}

KivStatus mean_abs_dev(MeanAbsDevFn Table::*entry, const Kiv8u* src, Kiv32s step, Kiv32s* result) {
    if (!src || !result) return kivStsNullPointer;
    *result = (table().*entry)(src, step);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviSAD16x16_8u32s(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                     Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SAD16x16HP_8u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSAD16x8_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                        Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SAD16x8HP_8u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSAD8x8_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                       Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SAD8x8HP_8u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSAD4x4_16u32s_C1R(const Kiv16u* pSrc, Kiv32s srcStep, const Kiv16u* pRef, Kiv32s refStep,
                                        Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SAD4x4HP_16u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSAD8x8_16u32s_C1R(const Kiv16u* pSrc, Kiv32s srcStep, const Kiv16u* pRef, Kiv32s refStep,
                                        Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SAD8x8HP_16u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSAD16x16_16u32s_C1R(const Kiv16u* pSrc, Kiv32s srcStep, const Kiv16u* pRef, Kiv32s refStep,
                                          Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SAD16x16HP_16u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSSD8x8_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                       Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SSD8x8HP_8u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSSD4x4_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                       Kiv32s* pResult, Kiv32s mcType) {
    return hp_metric<&Table::ownvc_SSD4x4HP_8u32s_C1R>(pSrc, srcStep, pRef, refStep, pResult, mcType);
}

KIV_API KivStatus kiviSAD4x4_8u32s(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                   Kiv32s* pResult) {
    if (!pSrc || !pRef || !pResult) return kivStsNullPointer;
    *pResult = table().sad4x4(pSrc, srcStep, pRef, refStep);
    return kivStsOk;
}

KIV_API KivStatus kiviSqrDiff16x16_8u32s(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                         Kiv32s mcType, Kiv32s* pResult) {
    if (!pSrc || !pRef || !pResult) return kivStsNullPointer;
    if (mcType != 0 && mcType != 4 && mcType != 8 && mcType != 12) return kivStsOk;
    *pResult = table().sqr_diff16x16[position_of(mcType)](pSrc, srcStep, pRef, refStep);
    return kivStsOk;
}

KIV_API KivStatus kiviSqrDiff16x16B_8u32s(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRefF, Kiv32s refFStep,
                                          Kiv32s mcTypeF, const Kiv8u* pRefB, Kiv32s refBStep, Kiv32s mcTypeB,
                                          Kiv32s* pResult) {
    if (!pSrc || !pRefF || !pRefB || !pResult) return kivStsNullPointer;
    *pResult =
        table().sqr_diff16x16_bidir[bidir_index(mcTypeF, mcTypeB)](pSrc, srcStep, pRefF, refFStep, pRefB, refBStep);
    return kivStsOk;
}

KIV_API KivStatus kiviGetDiff16x16_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                            Kiv16s* pDst, Kiv32s dstStep, Kiv16s* pPred, Kiv32s predStep, Kiv32s mcType,
                                            Kiv32s roundControl) {
    return get_diff<&Table::GetDiff16x16FnTbl>(pSrc, srcStep, pRef, refStep, pDst, dstStep, pPred, predStep, mcType,
                                               roundControl);
}

KIV_API KivStatus kiviGetDiff16x8_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                           Kiv16s* pDst, Kiv32s dstStep, Kiv16s* pPred, Kiv32s predStep, Kiv32s mcType,
                                           Kiv32s roundControl) {
    return get_diff<&Table::GetDiff16x8FnTbl>(pSrc, srcStep, pRef, refStep, pDst, dstStep, pPred, predStep, mcType,
                                              roundControl);
}

KIV_API KivStatus kiviGetDiff8x16_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                           Kiv16s* pDst, Kiv32s dstStep, Kiv16s* pPred, Kiv32s predStep, Kiv32s mcType,
                                           Kiv32s roundControl) {
    return get_diff<&Table::GetDiff8x16FnTbl>(pSrc, srcStep, pRef, refStep, pDst, dstStep, pPred, predStep, mcType,
                                              roundControl);
}

KIV_API KivStatus kiviGetDiff8x8_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                          Kiv16s* pDst, Kiv32s dstStep, Kiv16s* pPred, Kiv32s predStep, Kiv32s mcType,
                                          Kiv32s roundControl) {
    return get_diff<&Table::GetDiff8x8FnTbl>(pSrc, srcStep, pRef, refStep, pDst, dstStep, pPred, predStep, mcType,
                                             roundControl);
}

KIV_API KivStatus kiviGetDiff8x4_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                          Kiv16s* pDst, Kiv32s dstStep, Kiv16s* pPred, Kiv32s predStep, Kiv32s mcType,
                                          Kiv32s roundControl) {
    return get_diff<&Table::GetDiff8x4FnTbl>(pSrc, srcStep, pRef, refStep, pDst, dstStep, pPred, predStep, mcType,
                                             roundControl);
}

KIV_API KivStatus kiviGetDiff16x16B_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRefF, Kiv32s refFStep,
                                             Kiv32s mcTypeF, const Kiv8u* pRefB, Kiv32s refBStep, Kiv32s mcTypeB,
                                             Kiv16s* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return get_diff_bidir<&Table::GetDiff16x16BFnTbl>(pSrc, srcStep, pRefF, refFStep, mcTypeF, pRefB, refBStep, mcTypeB,
                                                      pDst, dstStep, roundControl);
}

KIV_API KivStatus kiviGetDiff16x8B_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRefF, Kiv32s refFStep,
                                            Kiv32s mcTypeF, const Kiv8u* pRefB, Kiv32s refBStep, Kiv32s mcTypeB,
                                            Kiv16s* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return get_diff_bidir<&Table::GetDiff16x8BFnTbl>(pSrc, srcStep, pRefF, refFStep, mcTypeF, pRefB, refBStep, mcTypeB,
                                                     pDst, dstStep, roundControl);
}

KIV_API KivStatus kiviGetDiff8x16B_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRefF, Kiv32s refFStep,
                                            Kiv32s mcTypeF, const Kiv8u* pRefB, Kiv32s refBStep, Kiv32s mcTypeB,
                                            Kiv16s* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return get_diff_bidir<&Table::GetDiff8x16BFnTbl>(pSrc, srcStep, pRefF, refFStep, mcTypeF, pRefB, refBStep, mcTypeB,
                                                     pDst, dstStep, roundControl);
}

KIV_API KivStatus kiviGetDiff8x8B_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRefF, Kiv32s refFStep,
                                           Kiv32s mcTypeF, const Kiv8u* pRefB, Kiv32s refBStep, Kiv32s mcTypeB,
                                           Kiv16s* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return get_diff_bidir<&Table::GetDiff8x8BFnTbl>(pSrc, srcStep, pRefF, refFStep, mcTypeF, pRefB, refBStep, mcTypeB,
                                                    pDst, dstStep, roundControl);
}

KIV_API KivStatus kiviGetDiff8x4B_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRefF, Kiv32s refFStep,
                                           Kiv32s mcTypeF, const Kiv8u* pRefB, Kiv32s refBStep, Kiv32s mcTypeB,
                                           Kiv16s* pDst, Kiv32s dstStep, Kiv32s roundControl) {
    return get_diff_bidir<&Table::GetDiff8x4BFnTbl>(pSrc, srcStep, pRefF, refFStep, mcTypeF, pRefB, refBStep, mcTypeB,
                                                    pDst, dstStep, roundControl);
}

KIV_API KivStatus kiviGetDiff4x4_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                          Kiv16s* pDst, Kiv32s dstStep) {
    return sub(&Table::sub4x4, pSrc, srcStep, pRef, refStep, pDst, dstStep);
}

KIV_API KivStatus kiviSub4x4_8u16s_C1R(const Kiv8u* pSrc1, Kiv32s src1Step, const Kiv8u* pSrc2, Kiv32s src2Step,
                                       Kiv16s* pDst, Kiv32s dstStep) {
    return sub(&Table::sub4x4, pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
}

KIV_API KivStatus kiviSub8x8_8u16s_C1R(const Kiv8u* pSrc1, Kiv32s src1Step, const Kiv8u* pSrc2, Kiv32s src2Step,
                                       Kiv16s* pDst, Kiv32s dstStep) {
    return sub(&Table::sub8x8, pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
}

KIV_API KivStatus kiviSub16x16_8u16s_C1R(const Kiv8u* pSrc1, Kiv32s src1Step, const Kiv8u* pSrc2, Kiv32s src2Step,
                                         Kiv16s* pDst, Kiv32s dstStep) {
    return sub(&Table::sub16x16, pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
}

KIV_API KivStatus kiviSub4x4_16u16s_C1R(const Kiv16u* pSrc1, Kiv32s src1Step, const Kiv16u* pSrc2, Kiv32s src2Step,
                                        Kiv16s* pDst, Kiv32s dstStep) {
    return sub(&Table::sub4x4_16u, pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
}

KIV_API KivStatus kiviSub8x8_16u16s_C1R(const Kiv16u* pSrc1, Kiv32s src1Step, const Kiv16u* pSrc2, Kiv32s src2Step,
                                        Kiv16s* pDst, Kiv32s dstStep) {
    return sub(&Table::sub8x8_16u, pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
}

KIV_API KivStatus kiviSubSAD8x8_8u16s_C1R(const Kiv8u* pSrc1, Kiv32s src1Step, const Kiv8u* pSrc2, Kiv32s src2Step,
                                          Kiv16s* pDst, Kiv32s dstStep, Kiv32s* pSAD) {
    if (!pSrc1 || !pSrc2 || !pDst || !pSAD) return kivStsNullPointer;
    *pSAD = table().sub_sad8x8(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviVariance16x16_8u32s(const Kiv8u* pSrc, Kiv32s srcStep, Kiv32s* pVar) {
    if (!pSrc || !pVar) return kivStsNullPointer;
    const Moments m = table().moments16x16(pSrc, srcStep);
    // s * s reaches 65280^2, beyond 32 bits.
    const std::int64_t s = m.sum;
    *pVar = static_cast<Kiv32s>(std::int64_t{m.squares} - s * s / 256);
    return kivStsOk;
}

KIV_API KivStatus kiviVarMean8x8_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv32s* pVar, Kiv32s* pMean) {
    return var_mean(&Table::moments8x8, pSrc, srcStep, pVar, pMean);
}

KIV_API KivStatus kiviVarSum8x8_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv32s* pVar, Kiv32s* pSum) {
    return var_mean(&Table::moments8x8, pSrc, srcStep, pVar, pSum);
}

KIV_API KivStatus kiviVarMean8x8_16s32s_C1R(const Kiv16s* pSrc, Kiv32s srcStep, Kiv32s* pVar, Kiv32s* pMean) {
    return var_mean(&Table::moments8x8_16s, pSrc, srcStep, pVar, pMean);
}

KIV_API KivStatus kiviVarSum8x8_16s32s_C1R(const Kiv16s* pSrc, Kiv32s srcStep, Kiv32s* pVar, Kiv32s* pSum) {
    return var_mean(&Table::moments8x8_16s, pSrc, srcStep, pVar, pSum);
}

KIV_API KivStatus kiviVarMeanDiff16x16_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                                 const Kiv32s* pSrcSum, Kiv32s* pVar, Kiv32s* pMean, Kiv32s mcType) {
    return var_mean_diff<4>(&Table::var_mean_diff16x16, pSrc, srcStep, pRef, refStep, pSrcSum, pVar, pMean, mcType);
}

KIV_API KivStatus kiviVarMeanDiff16x8_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                                const Kiv32s* pSrcSum, Kiv32s* pVar, Kiv32s* pMean, Kiv32s mcType) {
    return var_mean_diff<2>(&Table::var_mean_diff16x8, pSrc, srcStep, pRef, refStep, pSrcSum, pVar, pMean, mcType);
}

KIV_API KivStatus kiviMeanAbsDev8x8_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv32s* pResult) {
    return mean_abs_dev(&Table::mean_abs_dev8x8, pSrc, srcStep, pResult);
}

KIV_API KivStatus kiviMeanAbsDev16x16_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv32s* pResult) {
    return mean_abs_dev(&Table::mean_abs_dev16x16, pSrc, srcStep, pResult);
}

KIV_API KivStatus kiviFrameFieldSAD16x16_8u32s_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv32s* pFrame, Kiv32s* pField) {
    return frame_field(&Table::frame_field_sad, pSrc, srcStep, pFrame, pField);
}

KIV_API KivStatus kiviFrameFieldSAD16x16_16s32s_C1R(const Kiv16s* pSrc, Kiv32s srcStep, Kiv32s* pFrame,
                                                    Kiv32s* pField) {
    return frame_field(&Table::frame_field_sad_16s, pSrc, srcStep, pFrame, pField);
}

KIV_API KivStatus kiviSAD16x16Blocks8x8_8u16u(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                              Kiv16u* pDstSAD) {
    return sad_blocks(&Table::sad_blocks8x8, pSrc, srcStep, pRef, refStep, pDstSAD);
}

KIV_API KivStatus kiviSAD16x16Blocks4x4_8u16u(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pRef, Kiv32s refStep,
                                              Kiv16u* pDstSAD) {
    return sad_blocks(&Table::sad_blocks4x4, pSrc, srcStep, pRef, refStep, pDstSAD);
}

KIV_API KivStatus kiviSAD16x16Blocks8x8_16u32u_C1R(const Kiv16u* pSrc, Kiv32s srcStep, const Kiv16u* pRef,
                                                   Kiv32s refStep, Kiv32u* pDstSAD) {
    return sad_blocks(&Table::sad_blocks8x8_16u, pSrc, srcStep, pRef, refStep, pDstSAD);
}

KIV_API KivStatus kiviSAD16x16Blocks4x4_16u32u_C1R(const Kiv16u* pSrc, Kiv32s srcStep, const Kiv16u* pRef,
                                                   Kiv32s refStep, Kiv32u* pDstSAD) {
    return sad_blocks(&Table::sad_blocks4x4_16u, pSrc, srcStep, pRef, refStep, pDstSAD);
}

KIV_API KivStatus kiviEdgesDetect16x16_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u diffThreshold,
                                              Kiv8u countThreshold, Kiv8u* pRes) {
    if (!pSrc || !pRes) return kivStsNullPointer;
    *pRes = table().edges_detect(pSrc, srcStep, diffThreshold, countThreshold);
    return kivStsOk;
}

KIV_API KivStatus kiviCountZeros8x8_16s_C1(const Kiv16s* pSrc, Kiv32u* pCount) {
    if (!pCount || !pSrc) return kivStsNullPointer;
    *pCount = table().count_zeros(pSrc);
    return kivStsOk;
}

KIV_API KivStatus kiviScanFwd_16s_C1(const Kiv16s* pSrc, Kiv16s* pDst, Kiv32s countNonZero, Kiv32s scan) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (countNonZero < 1 || countNonZero > 64) return kivStsOutOfRange;
    table().scan_fwd(pSrc, pDst, countNonZero, kivvc::scan_for(scan));
    return kivStsOk;
}

KIV_API KivStatus kiviScanInv_16s_C1(const Kiv16s* pSrc, Kiv16s* pDst, Kiv32s indxLastNonZero, Kiv32s scan) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (indxLastNonZero < 0 || indxLastNonZero > 63) return kivStsOutOfRange;
    table().scan_inv(pSrc, pDst, indxLastNonZero, kivvc::scan_for(scan));
    return kivStsOk;
}

}  // extern "C"
