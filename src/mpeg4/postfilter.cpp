// Exported deblocking post-filter functions.
#include "kivvc.h"
#include "mpeg4/postfilter_kernels.h"

using namespace kivvc::postfilter;

extern "C" {

KIV_API KivStatus kiviFilterDeblocking8x8HorEdge_MPEG4_8u_C1IR(Kiv8u* pSrcDst, int step, int QP, int THR1, int THR2) {
    if (!pSrcDst) return kivStsNullPointer;
    if (QP < 1 || QP > 31) return kivStsBadQp;
    table().horizontal_edge(pSrcDst, step, QP, THR1, THR2);
    return kivStsOk;
}

KIV_API KivStatus kiviFilterDeblocking8x8VerEdge_MPEG4_8u_C1IR(Kiv8u* pSrcDst, int step, int QP, int THR1, int THR2) {
    if (!pSrcDst) return kivStsNullPointer;
    if (QP < 1 || QP > 31) return kivStsBadQp;
    table().vertical_edge(pSrcDst, step, QP, THR1, THR2);
    return kivStsOk;
}

}  // extern "C"
