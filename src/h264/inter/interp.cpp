// Exported plain interpolation functions and the bi-prediction average:
// argument checks, then one kernel call.
#include "h264/inter/boundary_internal.h"
#include "h264/inter/interp_kernels.h"
#include "kivvc.h"

using namespace kivvc::interp;

namespace {

KivStatus check_average(const void* a, const void* b, const void* d, Kiv32u width, Kiv32u height) {
    if (!a || !b || !d) return kivStsNullPointer;
    if (width - 2 > 14 || height - 2 > 14) return kivStsBadSize;
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviInterpolateLuma_H264_8u_C1R(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep,
                                                  Kiv32s dx, Kiv32s dy, KiviSize roi) {
    if (const KivStatus s = check_luma_8u(src, dst, dx, dy, roi); s != kivStsOk) return s;
    table().luma_8u[luma_kernel_type(dx, dy)](src, srcStep, dst, dstStep, roi.width, roi.height);
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateChroma_H264_8u_C1R(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep,
                                                    Kiv32s dx, Kiv32s dy, KiviSize roi) {
    if (const KivStatus s = check_chroma_8u(src, dst, dx, dy, roi); s != kivStsOk) return s;
    table().chroma_8u[chroma_kernel_type(dx, dy)](src, srcStep, dst, dstStep, dx, dy, roi.width, roi.height);
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateLuma_H264_16u_C1R(const KivInterpolate_16u* p) {
    if (const KivStatus s = check_luma_16u(p); s != kivStsOk) return s;
    table().luma_16u[luma_kernel_type(p->dx, p->dy)](p->pSrc, p->srcStep, p->pDst, p->dstStep, p->roiSize.width,
                                                     p->roiSize.height, max_sample(p->bitDepth));
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateChroma_H264_16u_C1R(const KivInterpolate_16u* p) {
    if (const KivStatus s = check_chroma_16u(p); s != kivStsOk) return s;
    table().chroma_16u[chroma_kernel_type(p->dx, p->dy)](p->pSrc, p->srcStep, p->pDst, p->dstStep, p->dx, p->dy,
                                                         p->roiSize.width, p->roiSize.height);
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateBlock_H264_8u_P2P1R(const Kiv8u* src1, const Kiv8u* src2, Kiv8u* dst, Kiv32u width,
                                                     Kiv32u height, Kiv32s step) {
    if (const KivStatus s = check_average(src1, src2, dst, width, height); s != kivStsOk) return s;
    table().average_8u(src1, step, src2, step, dst, step, int(width), int(height));
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateBlock_H264_8u_P3P1R(const Kiv8u* src1, const Kiv8u* src2, Kiv8u* dst, Kiv32u width,
                                                     Kiv32u height, Kiv32s src1Step, Kiv32s src2Step,
                                                     Kiv32s dstStep) {
    if (const KivStatus s = check_average(src1, src2, dst, width, height); s != kivStsOk) return s;
    table().average_8u(src1, src1Step, src2, src2Step, dst, dstStep, int(width), int(height));
    return kivStsOk;
}

}  // extern "C"
