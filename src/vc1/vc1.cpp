// Exported VC-1 functions: argument checks, then the kernel calls.
#include <cstddef>
#include <type_traits>

#include "common/block_kernels.h"
#include "kivvc.h"
#include "vc1/vc1_kernels.h"

using namespace kivvc::vc1;

namespace {

template <class T>
T* advance(T* p, std::ptrdiff_t bytes) {
    using Byte = std::conditional_t<std::is_const_v<T>, const Kiv8u, Kiv8u>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(p) + bytes);
}

// Entry of a transform table: DC form, then the smaller region forms, then
// the full transform (the last entry).
template <std::size_t N>
TransformFn pick_transform(TransformFn const (&forms)[N], KiviSize nz) {
    if (nz.width <= 1 && nz.height <= 1) return forms[kFormDc];
    if constexpr (N >= 3) {
        if (nz.width <= 2 && nz.height <= 2) return forms[kForm2x2];
    }
    if constexpr (N == 4) {
        if (nz.width <= 4 && nz.height <= 4) return forms[kForm4x4];
    }
    return forms[N - 1];
}

template <auto Member>
KivStatus transform(const Kiv16s* src, Kiv32s srcStep, Kiv16s* dst, Kiv32s dstStep, KiviSize nz) {
    if (!src || !dst) return kivStsNullPointer;
    pick_transform(table().*Member, nz)(src, srcStep, dst, dstStep);
    return kivStsOk;
}

template <auto Member>
KivStatus transform_in_place(Kiv16s* block, Kiv32s step, KiviSize nz) {
    if (!block) return kivStsNullPointer;
    pick_transform(table().*Member, nz)(block, step, block, step);
    return kivStsOk;
}

KivStatus smooth_hor(const Kiv16s* upper, Kiv32s us, const Kiv16s* lower, Kiv32s ls, Kiv8u* dst, Kiv32s ds,
                     bool left, bool right) {
    if (!upper || !lower || !dst) return kivStsNullPointer;
    const SmoothHorFn fn = table().smooth_hor;
    if (left) fn(upper, us, lower, ls, dst, ds);
    if (right) fn(upper + 8, us, lower + 8, ls, dst + 8, ds);
    return kivStsOk;
}

template <DeblockFn Table::*Member>
KivStatus deblock(Kiv8u* p, Kiv32s pquant, Kiv32s step, Kiv32u flags) {
    if (!p) return kivStsNullPointer;
    (table().*Member)(p, step, pquant, static_cast<int>(flags & 15));
    return kivStsOk;
}

template <QuantInvFn Table::*Member>
KivStatus quant_inv(Kiv16s* block, Kiv32s step, Kiv32s q, KiviSize size, KiviSize* nz) {
    if (!block || !nz) return kivStsNullPointer;
    (table().*Member)(block, step, q, size.width >= 8 ? 8 : 4, size.height >= 8 ? 8 : 4, &nz->width,
                      &nz->height);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviTransform8x8Inv_VC1_16s_C1R(const Kiv16s* pSrc, Kiv32s srcStep, Kiv16s* pDst, Kiv32s dstStep,
                                                  KiviSize srcSizeNZ) {
    return transform<&Table::transform8x8>(pSrc, srcStep, pDst, dstStep, srcSizeNZ);
}
KIV_API KivStatus kiviTransform8x4Inv_VC1_16s_C1R(const Kiv16s* pSrc, Kiv32s srcStep, Kiv16s* pDst, Kiv32s dstStep,
                                                  KiviSize srcSizeNZ) {
    return transform<&Table::transform8x4>(pSrc, srcStep, pDst, dstStep, srcSizeNZ);
}
KIV_API KivStatus kiviTransform4x8Inv_VC1_16s_C1R(const Kiv16s* pSrc, Kiv32s srcStep, Kiv16s* pDst, Kiv32s dstStep,
                                                  KiviSize srcSizeNZ) {
    return transform<&Table::transform4x8>(pSrc, srcStep, pDst, dstStep, srcSizeNZ);
}
KIV_API KivStatus kiviTransform4x4Inv_VC1_16s_C1R(const Kiv16s* pSrc, Kiv32s srcStep, Kiv16s* pDst, Kiv32s dstStep,
                                                  KiviSize srcSizeNZ) {
    return transform<&Table::transform4x4>(pSrc, srcStep, pDst, dstStep, srcSizeNZ);
}
KIV_API KivStatus kiviTransform8x8Inv_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ) {
    return transform_in_place<&Table::transform8x8>(pSrcDst, srcDstStep, srcSizeNZ);
}
KIV_API KivStatus kiviTransform8x4Inv_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ) {
    return transform_in_place<&Table::transform8x4>(pSrcDst, srcDstStep, srcSizeNZ);
}
KIV_API KivStatus kiviTransform4x8Inv_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ) {
    return transform_in_place<&Table::transform4x8>(pSrcDst, srcDstStep, srcSizeNZ);
}
KIV_API KivStatus kiviTransform4x4Inv_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, KiviSize srcSizeNZ) {
    return transform_in_place<&Table::transform4x4>(pSrcDst, srcDstStep, srcSizeNZ);
}

KIV_API KivStatus kiviSmoothingLuma_VerEdge_VC1_16s8u_C1R(Kiv16s* pSrcLeft, Kiv32s srcLeftStep, Kiv16s* pSrcRight,
                                                          Kiv32s srcRightStep, Kiv8u* pDst, Kiv32s dstStep,
                                                          Kiv32s fieldMode, Kiv32u edgeFlags) {
    if (!pSrcLeft || !pSrcRight || !pDst) return kivStsNullPointer;
    if (edgeFlags == 0 || fieldMode < 0 || fieldMode > 3) return kivStsOk;
    const auto& fn = table().smooth_ver;
    const int ls = srcLeftStep, rs = srcRightStep, ds = dstStep;
    // A field-ordered block holds the even picture rows in rows 0..7 and the
    // odd ones in rows 8..15; each field mode becomes two passes of 8 lines.
    switch (fieldMode) {
        case 0:
            if (edgeFlags & 3) fn[kRoundAlternate](pSrcLeft, ls, pSrcRight, rs, pDst, ds);
            if (edgeFlags & 12)
                fn[kRoundAlternate](advance(pSrcLeft, 8 * std::ptrdiff_t(ls)), ls,
                                    advance(pSrcRight, 8 * std::ptrdiff_t(rs)), rs, pDst + 8 * std::ptrdiff_t(ds),
                                    ds);
            break;
        case 1:
            fn[kRoundEven](pSrcLeft, 2 * ls, pSrcRight, rs, pDst, 2 * ds);
            fn[kRoundOdd](advance(pSrcLeft, ls), 2 * ls, advance(pSrcRight, 8 * std::ptrdiff_t(rs)), rs, pDst + ds,
                          2 * ds);
            break;
        case 2:
            fn[kRoundEven](pSrcLeft, ls, pSrcRight, 2 * rs, pDst, 2 * ds);
            fn[kRoundOdd](advance(pSrcLeft, 8 * std::ptrdiff_t(ls)), ls, advance(pSrcRight, rs), 2 * rs, pDst + ds,
                          2 * ds);
            break;
        default:
            fn[kRoundEven](pSrcLeft, ls, pSrcRight, rs, pDst, 2 * ds);
            fn[kRoundOdd](advance(pSrcLeft, 8 * std::ptrdiff_t(ls)), ls, advance(pSrcRight, 8 * std::ptrdiff_t(rs)),
                          rs, pDst + ds, 2 * ds);
            break;
    }
    return kivStsOk;
}

KIV_API KivStatus kiviSmoothingLuma_HorEdge_VC1_16s8u_C1R(const Kiv16s* pSrcUpper, Kiv32s srcUpperStep,
                                                          const Kiv16s* pSrcLower, Kiv32s srcLowerStep, Kiv8u* pDst,
                                                          Kiv32s dstStep, Kiv8u edgeFlags) {
    return smooth_hor(pSrcUpper, srcUpperStep, pSrcLower, srcLowerStep, pDst, dstStep, (edgeFlags & 3) != 0,
                      (edgeFlags & 12) != 0);
}

KIV_API KivStatus kiviSmoothingChroma_VerEdge_VC1_16s8u_C1R(Kiv16s* pSrcLeft, Kiv32s srcLeftStep, Kiv16s* pSrcRight,
                                                            Kiv32s srcRightStep, Kiv8u* pDst, Kiv32s dstStep) {
    if (!pSrcLeft || !pSrcRight || !pDst) return kivStsNullPointer;
    table().smooth_ver[kRoundAlternate](pSrcLeft, srcLeftStep, pSrcRight, srcRightStep, pDst, dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviSmoothingChroma_HorEdge_VC1_16s8u_C1R(const Kiv16s* pSrcUpper, Kiv32s srcUpperStep,
                                                            const Kiv16s* pSrcLower, Kiv32s srcLowerStep,
                                                            Kiv8u* pDst, Kiv32s dstStep) {
    return smooth_hor(pSrcUpper, srcUpperStep, pSrcLower, srcLowerStep, pDst, dstStep, true, false);
}

KIV_API KivStatus kiviInterpolateQPBilinear_VC1_8u_C1R(const KivInterpolate_8u* p) {
    if (!p || !p->pSrc || !p->pDst) return kivStsNullPointer;
    const int dx = p->dx & 3, dy = p->dy & 3, rc = p->roundControl & 1;
    const int w = p->roiSize.width, h = p->roiSize.height;
    const int size = w == 16 ? kBilinear16x16 : w == 8 ? (h == 8 ? kBilinear8x8 : kBilinear8x4) : kBilinear4x4;
    if ((dx | dy) & 1) {
        table().bilinear[size][4 * dx + dy](p->pSrc, p->srcStep, p->pDst, p->dstStep, rc);
        return kivStsOk;
    }
    // Both fractions 0 or 2: the half-sample copy, vertical flag in bit 0.
    const auto& b = kivvc::block::table();
    const kivvc::block::CopyFn* copies[4] = {b.copy4x4_vertical_first, b.copy8x4_vertical_first,
                                             b.copy8x8_vertical_first, b.copy16x16_vertical_first};
    copies[size][2 * dx + dy + rc](p->pSrc, p->srcStep, p->pDst, p->dstStep);
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateQPBicubic_VC1_8u_C1R(const KivInterpolate_8u* p) {
    if (!p || !p->pSrc || !p->pDst) return kivStsNullPointer;
    const int dx = p->dx & 3, dy = p->dy & 3, rc = p->roundControl & 1;
    const int w = p->roiSize.width, h = p->roiSize.height;
    if (w < 1 || w > 16 || h < 1 || h > 16) return kivStsBadSize;
    const int kernel = (w == 8 && h == 8) ? 0 : (w == 16 && h == 8) ? 1 : (w == 16 && h == 16) ? 2 : -1;
    if (kernel < 0) {
        table().bicubic_any(p->pSrc, p->srcStep, p->pDst, p->dstStep, w, h, dx, dy, rc);
    } else if (dx == 0 && dy == 0) {
        const auto& b = kivvc::block::table();
        const kivvc::block::CopyFn copies[3] = {b.ownvc_Copy8x8HP_8u_C1R[0], b.ownvc_Copy16x8HP_8u_C1R[0],
                                                b.ownvc_Copy16x16HP_8u_C1R[0]};
        copies[kernel](p->pSrc, p->srcStep, p->pDst, p->dstStep);
    } else {
        table().bicubic[kernel][4 * dx + dy](p->pSrc, p->srcStep, p->pDst, p->dstStep, rc);
    }
    return kivStsOk;
}

KIV_API KivStatus kiviFilterDeblockingLuma_HorEdge_VC1_8u_C1IR(Kiv8u* pSrcDst, Kiv32s pquant, Kiv32s srcDstStep,
                                                               Kiv32u edgeDisableFlags) {
    return deblock<&Table::deblock_luma_hor>(pSrcDst, pquant, srcDstStep, edgeDisableFlags);
}
KIV_API KivStatus kiviFilterDeblockingLuma_VerEdge_VC1_8u_C1IR(Kiv8u* pSrcDst, Kiv32s pquant, Kiv32s srcDstStep,
                                                               Kiv32u edgeDisableFlags) {
    return deblock<&Table::deblock_luma_ver>(pSrcDst, pquant, srcDstStep, edgeDisableFlags);
}
KIV_API KivStatus kiviFilterDeblockingChroma_HorEdge_VC1_8u_C1IR(Kiv8u* pSrcDst, Kiv32s pquant, Kiv32s srcDstStep,
                                                                 Kiv32u edgeDisableFlags) {
    return deblock<&Table::deblock_chroma_hor>(pSrcDst, pquant, srcDstStep, edgeDisableFlags);
}
KIV_API KivStatus kiviFilterDeblockingChroma_VerEdge_VC1_8u_C1IR(Kiv8u* pSrcDst, Kiv32s pquant, Kiv32s srcDstStep,
                                                                 Kiv32u edgeDisableFlags) {
    return deblock<&Table::deblock_chroma_ver>(pSrcDst, pquant, srcDstStep, edgeDisableFlags);
}

KIV_API KivStatus kiviQuantInvIntraUniform_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant,
                                                        KiviSize* pDstSizeNZ) {
    return quant_inv<&Table::quant_intra_uniform>(pSrcDst, srcDstStep, doubleQuant, KiviSize{8, 8}, pDstSizeNZ);
}
KIV_API KivStatus kiviQuantInvIntraNonuniform_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant,
                                                           KiviSize* pDstSizeNZ) {
    return quant_inv<&Table::quant_intra_nonuniform>(pSrcDst, srcDstStep, doubleQuant, KiviSize{8, 8}, pDstSizeNZ);
}
KIV_API KivStatus kiviQuantInvInterUniform_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant,
                                                        KiviSize roiSize, KiviSize* pDstSizeNZ) {
    return quant_inv<&Table::quant_inter_uniform>(pSrcDst, srcDstStep, doubleQuant, roiSize, pDstSizeNZ);
}
KIV_API KivStatus kiviQuantInvInterNonuniform_VC1_16s_C1IR(Kiv16s* pSrcDst, Kiv32s srcDstStep, Kiv32s doubleQuant,
                                                           KiviSize roiSize, KiviSize* pDstSizeNZ) {
    return quant_inv<&Table::quant_inter_nonuniform>(pSrcDst, srcDstStep, doubleQuant, roiSize, pDstSizeNZ);
}

KIV_API KivStatus kiviRangeMapping_VC1_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep,
                                              Kiv32s width, Kiv32s height, Kiv32s rangeMapValue) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (rangeMapValue < 0 || rangeMapValue > 7) return kivStsOutOfRange;
    if (height < 1 || width < 1) return kivStsOk;
    table().range_map(pSrc, srcStep, pDst, dstStep, width, height, rangeMapValue);
    return kivStsOk;
}

}  // extern "C"
