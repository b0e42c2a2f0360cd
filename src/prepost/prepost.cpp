// Exported deinterlacing filters and the inverse 2-4-8 DCT: checks, then the
// line walk that decides which lines are copied and which are filtered.
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "kivvc.h"
#include "prepost/prepost_kernels.h"

using namespace kivvc::prepost;

namespace {

template <class T>
T* line_at(T* plane, Kiv32s step, int y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const Kiv8u, Kiv8u>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(plane) + std::ptrdiff_t(y) * step);
}

void copy_line(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep, int y, int width) {
    std::memmove(line_at(dst, dstStep, y), line_at(src, srcStep, y), std::size_t(width));
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviDeinterlaceMedianThreshold_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst,
                                                        Kiv32s dstStep, Kiv32s width, Kiv32s height,
                                                        Kiv32s threshold, Kiv32s fieldNum, Kiv32s bCopyBorder) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (width < 1 || height < 2) return kivStsBadSize;
    const bool first = fieldNum == 1;
    const bool border = bCopyBorder != 0;
    const int kept = height / 2;
    for (int i = 0; i < kept; ++i) copy_line(pSrc, srcStep, pDst, dstStep, 2 * i + (first ? 0 : 1), width);
    if (border) {
        copy_line(pSrc, srcStep, pDst, dstStep, 0, width);
        copy_line(pSrc, srcStep, pDst, dstStep, height - 1, width);
    }
    const auto filter = table().median_line;
    const int end = border ? height - 1 : height;
    for (int r = first ? 1 : (border ? 2 : 0); r < end; r += 2)
        filter(line_at(pSrc, srcStep, r - 1), line_at(pSrc, srcStep, r), line_at(pSrc, srcStep, r + 1),
               line_at(pDst, dstStep, r), width, threshold);
    return kivStsOk;
}

KIV_API KivStatus kiviDeinterlaceEdgeDetect_8u_C1R(const Kiv8u* pSrc, Kiv32s srcStep, Kiv8u* pDst, Kiv32s dstStep,
                                                   Kiv32s width, Kiv32s height, Kiv32s fieldNum,
                                                   Kiv32s bCopyBorder) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    if (width < 1 || height < 1) return kivStsBadSize;
    const int f = fieldNum != 0 ? 1 : 0;
    const bool border = bCopyBorder != 0;
    if (border) copy_line(pSrc, srcStep, pDst, dstStep, f ? height - 1 : 0, width);
    const auto filter = table().edge_line;
    const int end = height - (border ? f : 0);
    for (int r = border ? 1 - f : 0; r < end; ++r) {
        const Kiv8u* upper = line_at(pSrc, srcStep, r + f - 1);
        const Kiv8u* lower = line_at(pSrc, srcStep, r + f);
        filter(upper, lower, f ? upper : lower, line_at(pDst, dstStep, r), width);
    }
    return kivStsOk;
}

KIV_API KivStatus kiviDCT2x4x8Inv_16s_C1I(Kiv16s* pSrcDst) {
    if (!pSrcDst) return kivStsNullPointer;
    table().dct2x4x8_inv(pSrcDst);
    return kivStsOk;
}

}  // extern "C"
