// Exported inverse DCTs and in-place MPEG-2 dequantisers.
#include <cstdint>

#include "kivvc.h"
#include "mpeg2/mpeg2_kernels.h"

using namespace kivvc::mpeg2;

namespace {

int idct_path(int count) {
    return count < 0 ? kIdctZero : count == 0 ? kIdctDc : count <= 9 ? kIdctReduced : kIdctFull;
}

// Both blocks through the 16-bit kernels into contiguous scratch, then one
// interleaving store. An 8-bit output takes the DC-only path for a negative
// count.
template <class T>
KivStatus idct_pair(const Kiv16s* a, const Kiv16s* b, T* dst, Kiv32s step, Kiv32s count_a, Kiv32s count_b) {
    if (!a || !b || !dst) return kivStsNullPointer;
    if (step < 1) return kivStsBadStep;
    const Table& t = table();
    alignas(16) s16 ta[64], tb[64];
    const int lowest = sizeof(T) == 1 ? kIdctDc : kIdctZero;
    const int pa = idct_path(count_a), pb = idct_path(count_b);
    t.idct16s[pa < lowest ? lowest : pa](a, ta, 16);
    t.idct16s[pb < lowest ? lowest : pb](b, tb, 16);
    if constexpr (sizeof(T) == 1) {
        t.interleave8u(ta, tb, dst, step);
    } else {
        t.interleave16s(ta, tb, dst, step);
    }
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s_C1R(const Kiv16s* pSrc, Kiv16s* pDst, Kiv32s dstStep, Kiv32s count) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (dstStep < 1) return kivStsBadStep;
    table().idct16s[idct_path(count)](pSrc, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s8u_C1R(const Kiv16s* pSrc, Kiv8u* pDst, Kiv32s dstStep, Kiv32s count) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (dstStep < 1) return kivStsBadStep;
    table().idct8u[idct_path(count)](pSrc, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s_P2C2R(const Kiv16s* pSrcU, const Kiv16s* pSrcV, Kiv16s* pDstUV,
                                                        Kiv32s dstStep, Kiv32s countU, Kiv32s countV) {
    return idct_pair(pSrcU, pSrcV, pDstUV, dstStep, countU, countV);
}

KIV_API KivStatus kiviDCT8x8Inv_AANTransposed_16s8u_P2C2R(const Kiv16s* pSrcU, const Kiv16s* pSrcV, Kiv8u* pDstUV,
                                                          Kiv32s dstStep, Kiv32s countU, Kiv32s countV) {
    return idct_pair(pSrcU, pSrcV, pDstUV, dstStep, countU, countV);
}

KIV_API KivStatus kiviQuantInvIntra_MPEG2_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP, Kiv16s* pQPMatrix) {
    if (!pSrcDst || !pQPMatrix) return kivStsNullPointer;
    table().quant_inv_intra(pSrcDst, QP, pQPMatrix);
    return kivStsOk;
}

KIV_API KivStatus kiviQuantInv_MPEG2_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP, Kiv16s* pQPMatrix) {
    if (!pSrcDst) return kivStsNullPointer;
    table().quant_inv(pSrcDst, QP, pQPMatrix ? pQPMatrix : Qmatrix);
    return kivStsOk;
}

}  // extern "C"
