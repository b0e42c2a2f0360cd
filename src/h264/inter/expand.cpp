// Exported plane expansion: argument checks, then the kernel.
#include "h264/inter/weight_kernels.h"
#include "kivvc.h"

extern "C" KIV_API KivStatus kiviExpandPlane_H264_8u_C1R(Kiv8u* plane, Kiv32s width, Kiv32s height, Kiv32s step,
                                                         Kiv32s expansion, Kiv32s mode) {
    if (!plane) return kivStsNullPointer;
    if ((height & 1) || height < 2 || width == 0) return kivStsBadSize;
    if (expansion == 0) return kivStsOk;
    if (Kiv32u(mode) > 2) return kivStsBadArgument;
    if (width < 0 || expansion < 0) return kivStsOk;
    kivvc::weight::table().expand_8u(plane, width, height, step, expansion, mode);
    return kivStsOk;
}
