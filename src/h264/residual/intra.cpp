// Exported H.264 intra predictors: argument checks, neighbour gathering with
// the substitutions of each function, then one kernel call.
#include "h264/residual/intra_edges.h"
#include "h264/residual/intra_kernels.h"
#include "kivvc.h"

using namespace kivvc::h264::intra;

namespace {

constexpr int kMid = 128;

// The 16x16 and chroma functions: a mode whose neighbours are missing fails
// and leaves the block untouched; DC picks its variant by availability.
template <int N>
KivStatus predict_block(Kiv8u* p, Kiv32s step, unsigned mask, PredFn fn, PredFn const (&dc)[4], bool isDc,
                        unsigned needs) {
    if ((mask & needs) != needs) return kivStsBadIntraPredMode;
    Edges<Kiv8u, N> e;
    gather(e, p, step, mask, kMid);
    if (isDc) fn = dc[dc_index(mask & kTop, mask & kLeft)];
    fn(e.top(), e.left, p, step);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviPredictIntra_4x4_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep, Kiv32u mode,
                                                    Kiv32u availability) {
    if (!pSrcDst) return kivStsNullPointer;
    if (srcDstStep < 4) return kivStsBadStep;
    if (mode > 8) return kivStsOutOfRange;
    return predict4x4(table(), pSrcDst, srcDstStep, mode, availability) ? kivStsWarnNeighbourMissing : kivStsOk;
}

KIV_API KivStatus kiviPredictIntra_16x16_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep, Kiv32u mode,
                                                      Kiv32u availability) {
    if (!pSrcDst) return kivStsNullPointer;
    if (srcDstStep < 16) return kivStsBadStep;
    const Table& t = table();
    switch (mode) {
    case 0: return predict_block<16>(pSrcDst, srcDstStep, availability, t.pred16x16[0], t.dc16x16, false, kTop);
    case 1: return predict_block<16>(pSrcDst, srcDstStep, availability, t.pred16x16[1], t.dc16x16, false, kLeft);
    case 2: return predict_block<16>(pSrcDst, srcDstStep, availability, nullptr, t.dc16x16, true, 0);
    case 3:
        return predict_block<16>(pSrcDst, srcDstStep, availability, t.pred16x16[3], t.dc16x16, false,
                                 kTop | kLeft | kAboveLeft);
    default: return kivStsOutOfRange;
    }
}

KIV_API KivStatus kiviPredictIntraChroma8x8_H264_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcDstStep, Kiv32u mode,
                                                         Kiv32u availability) {
    if (!pSrcDst) return kivStsNullPointer;
    if (srcDstStep < 8) return kivStsBadStep;
    const Table& t = table();
    const auto& c = t.pred_chroma8x8;
    switch (mode) {
    case kChromaDc: return predict_block<8>(pSrcDst, srcDstStep, availability, nullptr, t.dc_chroma8x8, true, 0);
    case kChromaHorizontal:
        return predict_block<8>(pSrcDst, srcDstStep, availability, c[1], t.dc_chroma8x8, false, kLeft);
    case kChromaVertical:
        return predict_block<8>(pSrcDst, srcDstStep, availability, c[2], t.dc_chroma8x8, false, kTop);
    case kChromaPlane:
        return predict_block<8>(pSrcDst, srcDstStep, availability, c[3], t.dc_chroma8x8, false,
                                kTop | kLeft | kAboveLeft);
    default: return kivStsOutOfRange;
    }
}

}  // extern "C"
