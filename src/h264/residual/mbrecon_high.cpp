// Exported H.264 macroblock reconstruction of the High generation: the
// arguments come in parameter records (one for luma, a U/V pair for chroma);
// 16s8u records describe 8-bit pictures, 32s16u records pictures of up to 14
// bits. Checks, then the walks shared with the 8-bit members.
#include <type_traits>

#include "h264/residual/mbrecon_walk.h"

namespace {

using namespace kivvc::h264;
using namespace kivvc::h264::mbrecon;

template <class R>
using SampleOf = std::remove_pointer_t<decltype(R::pSrcDstPlane)>;

// Bit depth of a record's samples: 16s8u records are 8-bit whatever their
// field says.
int depth_of(const KivReconstructHighParams_16s8u&) { return 8; }
int depth_of(const KivReconstructHighParams_32s16u& r) { return r.bitDepth; }

template <class R>
bool null_fields(const R& r) {
    return !r.ppSrcDstCoeff || !*r.ppSrcDstCoeff || !r.pSrcDstPlane || !r.pQuantTable;
}

// Value checks of n records (1 luma, 2 chroma): every step, then every bit
// depth and QP (luma up to 6 x depth + 3, chroma 12 lower: 51 and 39 at 8
// bits).
template <class R>
KivStatus check_values(const R* r, int n) {
    for (int i = 0; i < n; ++i)
        if (r[i].srcDstStep < 1) return kivStsBadStep;
    const int maxOffset = n == 1 ? 3 : -9;
    for (int i = 0; i < n; ++i) {
        const int depth = depth_of(r[i]);
        if (depth < 8 || depth > 14 || r[i].qp < 0 || r[i].qp > 6 * depth + maxOffset) return kivStsOutOfRange;
    }
    return kivStsOk;
}

template <class R>
Scaled<SampleOf<R>> residual(const R& r) {
    return Scaled<SampleOf<R>>(tr::table(), r.qp, r.pQuantTable, r.bypassFlag, depth_of(r));
}

enum LumaKind { kIntra4x4, kIntraHalf4x4, kIntra8x8, kIntraHalf8x8, kIntra16x16, kInter4x4, kInter8x8 };

template <class R>
KivStatus luma(const R* r, LumaKind kind, const Kiv32u* modes, Kiv32s mode16x16, unsigned edge) {
    if (!r || null_fields(*r)) return kivStsNullPointer;
    if (kind <= kIntraHalf8x8 && !modes) return kivStsNullPointer;
    if (const KivStatus st = check_values(r, 1); st != kivStsOk) return st;
    const auto res = residual(*r);
    const int step = r->srcDstStep, depth = depth_of(*r);
    auto* const plane = r->pSrcDstPlane;
    auto** const pp = r->ppSrcDstCoeff;
    switch (kind) {
    case kIntra4x4: return luma_walk<4>(res, pp, plane, step, modes, r->cbp, 1, 16, edge, depth);
    case kIntraHalf4x4: return luma_walk<4>(res, pp, plane, step, modes, r->cbp, 0, 8, edge, depth);
    case kInter4x4: return luma_walk<4>(res, pp, plane, step, nullptr, r->cbp, 1, 16, 0, depth);
    case kIntra8x8: return luma_walk<8>(res, pp, plane, step, modes, r->cbp, 0, 4, edge, depth);
    case kIntraHalf8x8: return luma_walk<8>(res, pp, plane, step, modes, r->cbp, 0, 2, edge, depth);
    case kInter8x8: return luma_walk<8>(res, pp, plane, step, nullptr, r->cbp, 0, 4, 0, depth);
    case kIntra16x16: break;
    }
    const unsigned mask = whole_mask(edge);
    if (const KivStatus st = check_whole(mode16x16, mask, false); st != kivStsOk) return st;
    predict_whole<kLuma16x16>(plane, step, plane, step, mode16x16, mask, depth);
    luma16x16_residual(res, pp, plane, step, r->cbp);
    return kivStsOk;
}

// Chroma of both planes (records U, V): prediction when intra, then each
// plane's residual from its own buffer: its DC block (cbp bit 0), then its
// AC blocks (bits 1..n).
template <Whole S, class R>
KivStatus chroma(const R* r, bool intra, bool halves, Kiv32s mode, unsigned edgeTop, unsigned edgeBottom,
                 const Kiv32s (&dcLs)[2]) {
    if (!r || null_fields(r[0]) || null_fields(r[1])) return kivStsNullPointer;
    if (const KivStatus st = check_values(r, 2); st != kivStsOk) return st;
    if (intra) {
        if (const KivStatus st = check_chroma(mode, edgeTop, halves); st != kivStsOk) return st;
        for (int pl = 0; pl < 2; ++pl)
            predict_chroma<S>(r[pl].pSrcDstPlane, r[pl].srcDstStep, mode, edgeTop, edgeBottom, halves,
                              depth_of(r[pl]));
    }
    constexpr int n = S == kChroma8x8 ? 4 : 8;
    for (int pl = 0; pl < 2; ++pl) {
        const R& p = r[pl];
        if (!(p.cbp & ((2u << n) - 1))) continue;
        const auto res = residual(p);
        auto* c = *p.ppSrcDstCoeff;
        std::remove_reference_t<decltype(*c)> dcs[n] = {};
        take_chroma_dc(res, c, p.cbp & 1, dcs, n, dcLs[pl]);
        add_chroma_ac(res, c, p.pSrcDstPlane, p.srcDstStep, dcs, n, p.cbp >> 1);
        *p.ppSrcDstCoeff = c;
    }
    return kivStsOk;
}

constexpr Kiv32s kNoDcLs[2] = {0, 0};


}  // namespace

extern "C" {

KIV_API KivStatus kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(const KivReconstructHighParams_32s16u* pReconInfo,
                                                                   const Kiv32u* pMBIntraTypes, Kiv8u edgeType) {
    return luma(pReconInfo, kIntra4x4, pMBIntraTypes, 0, edgeType);
}

KIV_API KivStatus kiviReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo, const Kiv32u* pMBIntraTypes, Kiv8u edgeType) {
    return luma(pReconInfo, kIntraHalf4x4, pMBIntraTypes, 0, edgeType);
}

KIV_API KivStatus kiviReconstructLumaIntra8x8_H264High_32s16u_IP1R(const KivReconstructHighParams_32s16u* pReconInfo,
                                                                   const Kiv32u* pMBIntraTypes, Kiv8u edgeType) {
    return luma(pReconInfo, kIntra8x8, pMBIntraTypes, 0, edgeType);
}

KIV_API KivStatus kiviReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo, const Kiv32u* pMBIntraTypes, Kiv8u edgeType) {
    return luma(pReconInfo, kIntraHalf8x8, pMBIntraTypes, 0, edgeType);
}

KIV_API KivStatus kiviReconstructLumaIntra16x16_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraLumaMode, Kiv8u edgeType) {
    return luma(pReconInfo, kIntra16x16, nullptr, intraLumaMode, edgeType);
}

KIV_API KivStatus kiviReconstructLumaInter4x4_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo) {
    return luma(pReconInfo, kInter4x4, nullptr, 0, 0);
}

KIV_API KivStatus kiviReconstructLumaInter8x8_H264High_32s16u_IP1R(
    const KivReconstructHighParams_32s16u* pReconInfo) {
    return luma(pReconInfo, kInter8x8, nullptr, 0, 0);
}

KIV_API KivStatus kiviReconstructChromaIntra4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeType) {
    return chroma<kChroma8x8>(pReconInfo, true, false, intraChromaMode, edgeType, edgeType, kNoDcLs);
}

KIV_API KivStatus kiviReconstructChromaInter4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo) {
    return chroma<kChroma8x8>(pReconInfo, false, false, 0, 0, 0, kNoDcLs);
}

KIV_API KivStatus kiviReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeTypeTop,
    Kiv8u edgeTypeBottom) {
    return chroma<kChroma8x8>(pReconInfo, true, true, intraChromaMode, edgeTypeTop, edgeTypeBottom, kNoDcLs);
}

KIV_API KivStatus kiviReconstructChroma422Intra4x4_H264High_16s8u_IP2R(
    const KivReconstructHighParams_16s8u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeType,
    Kiv32s levelScaleDCU, Kiv32s levelScaleDCV) {
    return chroma<kChroma8x16>(pReconInfo, true, false, intraChromaMode, edgeType, edgeType,
                               {levelScaleDCU, levelScaleDCV});
}

KIV_API KivStatus kiviReconstructChroma422Inter4x4_H264High_16s8u_IP2R(
    const KivReconstructHighParams_16s8u* pReconInfo, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV) {
    return chroma<kChroma8x16>(pReconInfo, false, false, 0, 0, 0, {levelScaleDCU, levelScaleDCV});
}

KIV_API KivStatus kiviReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(
    const KivReconstructHighParams_16s8u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeTypeTop,
    Kiv8u edgeTypeBottom, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV) {
    return chroma<kChroma8x16>(pReconInfo, true, true, intraChromaMode, edgeTypeTop, edgeTypeBottom,
                               {levelScaleDCU, levelScaleDCV});
}

KIV_API KivStatus kiviReconstructChroma422Intra4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeType,
    Kiv32s levelScaleDCU, Kiv32s levelScaleDCV) {
    return chroma<kChroma8x16>(pReconInfo, true, false, intraChromaMode, edgeType, edgeType,
                               {levelScaleDCU, levelScaleDCV});
}

KIV_API KivStatus kiviReconstructChroma422Inter4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV) {
    return chroma<kChroma8x16>(pReconInfo, false, false, 0, 0, 0, {levelScaleDCU, levelScaleDCV});
}

KIV_API KivStatus kiviReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(
    const KivReconstructHighParams_32s16u* pReconInfo, Kiv32s intraChromaMode, Kiv8u edgeTypeTop,
    Kiv8u edgeTypeBottom, Kiv32s levelScaleDCU, Kiv32s levelScaleDCV) {
    return chroma<kChroma8x16>(pReconInfo, true, true, intraChromaMode, edgeTypeTop, edgeTypeBottom,
                               {levelScaleDCU, levelScaleDCV});
}

}  // extern "C"
