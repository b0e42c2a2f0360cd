// Exported weighted-prediction functions: argument checks, reduction of the
// parameters to the kernels' common form, one kernel call.
#include "core/arith.h"
#include "h264/inter/interp_kernels.h"
#include "h264/inter/weight_kernels.h"
#include "kivvc.h"

using namespace kivvc::weight;
using kivvc::interp::max_sample;

namespace {

bool block_size_ok(int width, int height) {
    const auto ok = [](int v) { return v == 2 || v == 4 || v == 8 || v == 16; };
    return ok(height) && ok(width);
}

std::int32_t wrap_sum(std::int32_t a, std::int32_t b, std::int32_t c) {
    return static_cast<std::int32_t>(std::uint32_t(a) + std::uint32_t(b) + std::uint32_t(c));
}

// Shift counts are taken modulo 32.
Weights unidirectional(Kiv32u logWD, Kiv32s weight, Kiv32s offset, int maxValue) {
    const int n = int(logWD & 31);
    return {weight, 0, n ? std::int32_t(1u << (n - 1)) : 0, n, offset, maxValue};
}
Weights explicit_bidirectional(Kiv32s logWD, Kiv32s w1, Kiv32s o1, Kiv32s w2, Kiv32s o2, int maxValue) {
    const std::uint32_t n = std::uint32_t(logWD);
    return {w1, w2, std::int32_t(1u << (n & 31)), std::int32_t((n + 1) & 31),
            kivvc::shift_right_floor(wrap_sum(o1, o2, 1), 1), maxValue};
}
Weights implicit_bidirectional(Kiv32s w1, Kiv32s w2, int maxValue) { return {w1, w2, 32, 6, 0, maxValue}; }

KivStatus check_bidir_16u(const KivBidir_16u* p) {
    if (!p || !p->pSrc1 || !p->pSrc2 || !p->pDst) return kivStsNullPointer;
    if (p->src1Step < p->width || p->src2Step < p->width || p->dstStep < p->width) return kivStsBadStep;
    if (!block_size_ok(p->width, p->height)) return kivStsBadSize;
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviUniDirWeightBlock_H264_8u_C1R(Kiv8u* pSrcDst, Kiv32s step, Kiv32u logWD, Kiv32s weight,
                                                    Kiv32s offset, KiviSize roi) {
    if (!pSrcDst) return kivStsNullPointer;
    if (step < roi.width) return kivStsBadStep;
    if (!block_size_ok(roi.width, roi.height)) return kivStsBadSize;
    table().uni_8u(pSrcDst, step, pSrcDst, step, roi.width, roi.height, unidirectional(logWD, weight, offset, 255));
    return kivStsOk;
}

KIV_API KivStatus kiviUniDirWeightBlock_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s step, Kiv32u logWD, Kiv32s weight,
                                                     Kiv32s offset, KiviSize roi) {
    return kiviUniDirWeightBlock_H264_8u_C1R(pSrcDst, step, logWD, weight, offset, roi);
}

KIV_API KivStatus kiviUnidirWeight_H264_16u_IP2P1R(Kiv16u* pSrcDst, Kiv32s step, Kiv32u logWD, Kiv32s weight,
                                                   Kiv32s offset, KiviSize roi, Kiv32s bitDepth) {
    if (!pSrcDst) return kivStsNullPointer;
    if (step < roi.width) return kivStsBadStep;
    if (!block_size_ok(roi.width, roi.height)) return kivStsBadSize;
    table().uni_16u(pSrcDst, step, pSrcDst, step, roi.width, roi.height,
                    unidirectional(logWD, weight, offset, max_sample(bitDepth)));
    return kivStsOk;
}

KIV_API KivStatus kiviBiDirWeightBlock_H264_8u_P2P1R(const Kiv8u* pSrc1, const Kiv8u* pSrc2, Kiv8u* pDst,
                                                     Kiv32s srcStep, Kiv32s dstStep, Kiv32s logWD, Kiv32s weight1,
                                                     Kiv32s offset1, Kiv32s weight2, Kiv32s offset2, Kiv32s width,
                                                     Kiv32s height) {
    return kiviBiDirWeightBlock_H264_8u_P3P1R(pSrc1, pSrc2, pDst, srcStep, srcStep, dstStep, logWD, weight1, offset1,
                                              weight2, offset2, width, height);
}

KIV_API KivStatus kiviBiDirWeightBlock_H264_8u_P3P1R(const Kiv8u* pSrc1, const Kiv8u* pSrc2, Kiv8u* pDst,
                                                     Kiv32s src1Step, Kiv32s src2Step, Kiv32s dstStep, Kiv32s logWD,
                                                     Kiv32s weight1, Kiv32s offset1, Kiv32s weight2, Kiv32s offset2,
                                                     Kiv32s width, Kiv32s height) {
    if (!pSrc1 || !pSrc2 || !pDst) return kivStsNullPointer;
    if (src1Step < width || src2Step < width || dstStep < width) return kivStsBadStep;
    if (!block_size_ok(width, height)) return kivStsBadSize;
    table().bi_8u(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, width, height,
                  explicit_bidirectional(logWD, weight1, offset1, weight2, offset2, 255));
    return kivStsOk;
}

KIV_API KivStatus kiviBiDirWeightBlockImplicit_H264_8u_P2P1R(const Kiv8u* pSrc1, const Kiv8u* pSrc2, Kiv8u* pDst,
                                                             Kiv32s srcStep, Kiv32s dstStep, Kiv32s weight1,
                                                             Kiv32s weight2, Kiv32s width, Kiv32s height) {
    if (!pSrc1 || !pSrc2 || !pDst) return kivStsNullPointer;
    if (srcStep < width || dstStep < width) return kivStsBadStep;
    if (!block_size_ok(width, height)) return kivStsBadSize;
    table().bi_8u(pSrc1, srcStep, pSrc2, srcStep, pDst, dstStep, width, height,
                  implicit_bidirectional(weight1, weight2, 255));
    return kivStsOk;
}

KIV_API KivStatus kiviBiDirWeightBlockImplicit_H264_8u_P3P1R(const Kiv8u* pSrc1, const Kiv8u* pSrc2, Kiv8u* pDst,
                                                             Kiv32s src1Step, Kiv32s src2Step, Kiv32s dstStep,
                                                             Kiv32s weight1, Kiv32s weight2, Kiv32s width,
                                                             Kiv32s height) {
    if (!pSrc1 || !pSrc2 || !pDst) return kivStsNullPointer;
    table().bi_8u(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, width, height,
                  implicit_bidirectional(weight1, weight2, 255));
    return kivStsOk;
}

KIV_API KivStatus kiviBidirWeight_H264_16u_P2P1R(const KivBidir_16u* p, Kiv32s logWD, Kiv32s weight1, Kiv32s offset1,
                                                 Kiv32s weight2, Kiv32s offset2) {
    if (const KivStatus s = check_bidir_16u(p); s != kivStsOk) return s;
    table().bi_16u(p->pSrc1, p->src1Step, p->pSrc2, p->src2Step, p->pDst, p->dstStep, p->width, p->height,
                   explicit_bidirectional(logWD, weight1, offset1, weight2, offset2, max_sample(p->bitDepth)));
    return kivStsOk;
}

KIV_API KivStatus kiviBidirWeightImplicit_H264_16u_P2P1R(const KivBidir_16u* p, Kiv32s weight1, Kiv32s weight2) {
    if (const KivStatus s = check_bidir_16u(p); s != kivStsOk) return s;
    table().bi_16u(p->pSrc1, p->src1Step, p->pSrc2, p->src2Step, p->pDst, p->dstStep, p->width, p->height,
                   implicit_bidirectional(weight1, weight2, max_sample(p->bitDepth)));
    return kivStsOk;
}

KIV_API KivStatus kiviBidir_H264_16u_P2P1R(const KivBidir_16u* p) {
    if (!p || !p->pSrc1 || !p->pSrc2 || !p->pDst) return kivStsNullPointer;
    if (Kiv32u(p->width) - 2 > 14 || Kiv32u(p->height) - 2 > 14) return kivStsBadSize;
    table().average_16u(p->pSrc1, p->src1Step, p->pSrc2, p->src2Step, p->pDst, p->dstStep, p->width, p->height);
    return kivStsOk;
}

KIV_API KivStatus kiviWeightedAverage_H264_8u_C1IR(const Kiv8u* pSrc1, Kiv8u* pSrcDst, Kiv32s step, Kiv32s weight1,
                                                   Kiv32s weight2, Kiv32s shift, Kiv32s offset, Kiv32s width,
                                                   Kiv32s height) {
    if (!pSrc1 || !pSrcDst) return kivStsNullPointer;
    if (step < width) return kivStsBadStep;
    if (!block_size_ok(width, height)) return kivStsBadSize;
    const int n = shift & 31;
    table().bi_8u(pSrc1, step, pSrcDst, step, pSrcDst, step, width, height,
                  Weights{weight1, weight2, n ? std::int32_t(1u << (n - 1)) : 0, n, offset, 255});
    return kivStsOk;
}

}  // extern "C"
