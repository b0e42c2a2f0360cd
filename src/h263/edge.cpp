// Exported deblocking and block-boundary filters.
#include "h263/edge_kernels.h"
#include "kivvc.h"

using namespace kivvc::h263;

namespace {

KivStatus deblock8(Kiv8u* p, Kiv32s step, Kiv32s qp, int direction) {
    if (!p) return kivStsNullPointer;
    if (qp < 1 || qp > 31) return kivStsBadQp;
    edge_table().deblock8[direction](p, step, h263_Deblock_QPStrength[qp]);
    return kivStsOk;
}

KivStatus deblock16(Kiv8u* p, Kiv32s step, int direction) {
    if (!p) return kivStsNullPointer;
    edge_table().deblock16[direction](p, step, kUnlimitedStrength);
    return kivStsOk;
}

KivStatus boundary(Kiv8u* p, Kiv32s step, int direction) {
    if (!p) return kivStsNullPointer;
    edge_table().boundary[direction](p, step);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviFilterDeblocking8x8HorEdge_H263_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcdstStep, Kiv32s QP) {
    return deblock8(pSrcDst, srcdstStep, QP, 0);
}
KIV_API KivStatus kiviFilterDeblocking8x8VerEdge_H263_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcdstStep, Kiv32s QP) {
    return deblock8(pSrcDst, srcdstStep, QP, 1);
}
KIV_API KivStatus kiviFilterDeblocking16x16HorEdge_H263_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcdstStep) {
    return deblock16(pSrcDst, srcdstStep, 0);
}
KIV_API KivStatus kiviFilterDeblocking16x16VerEdge_H263_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcdstStep) {
    return deblock16(pSrcDst, srcdstStep, 1);
}
KIV_API KivStatus kiviFilterBlockBoundaryHorEdge_H263_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcdstStep) {
    return boundary(pSrcDst, srcdstStep, 0);
}
KIV_API KivStatus kiviFilterBlockBoundaryVerEdge_H263_8u_C1IR(Kiv8u* pSrcDst, Kiv32s srcdstStep) {
    return boundary(pSrcDst, srcdstStep, 1);
}

}  // extern "C"
