// Edge handling shared by the Block, boundary and Top/Bottom functions: the
// block is cut into tiles of at most 16 x 16 so that every tile's reference
// region fits the fixed stack buffer, whatever the block size.
#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "h264/inter/interp_kernels.h"

namespace kivvc::interp {

inline constexpr int kTile = 16;
inline constexpr int kBufferStep = 32;                   // samples
inline constexpr int kBufferRows = kTile + 5;            // 21
inline constexpr std::int64_t kFarOutside = 64;

// Reference region geometry: margins before the block (left, top) and the
// extra columns and rows the filter reads in all.
struct Margins {
    int left, top, width, height;
};
inline Margins luma_margins(int type) {
    const bool fx = (type & 3) != 0, fy = (type >> 2) != 0;
    return {fx ? 2 : 0, fy ? 2 : 0, fx ? 5 : 0, fy ? 5 : 0};
}
inline Margins chroma_margins(int dx, int dy) { return {0, 0, dx != 0 ? 1 : 0, dy != 0 ? 1 : 0}; }

inline unsigned boundary_case(std::int64_t x, std::int64_t y, std::int64_t w, std::int64_t h, std::int64_t pw,
                              std::int64_t ph) {
    return (x < 0 ? 1u : 0u) | (pw < x + w ? 2u : 0u) | (y < 0 ? 4u : 0u) | (ph < y + h ? 8u : 0u);
}

// Runs `run(src, srcStep, dst, dstStep, width, height)` over the block,
// reading every tile's region (at regionX + tile x, regionY + tile y) with
// edge replication where it leaves the picture. Precondition: pw, ph >= 1.
template <class T, class Run>
void predict_through_boundary(const T* plane, int step, int pw, int ph, std::int64_t regionX, std::int64_t regionY,
                              Margins m, T* dst, int dstStep, int bw, int bh, const ReaderFn* readers, Run run) {
    // A region this far outside reads the same edge samples wherever it is;
    // the clamp keeps every tile's coordinates within 32 bits.
    regionX = std::clamp<std::int64_t>(regionX, -(kFarOutside + bw), std::int64_t(pw) + kFarOutside);
    regionY = std::clamp<std::int64_t>(regionY, -(kFarOutside + bh), std::int64_t(ph) + kFarOutside);
    alignas(64) T buffer[kBufferStep * kBufferRows];
    for (int ty = 0; ty < bh; ty += kTile) {
        const int th = std::min(kTile, bh - ty);
        for (int tx = 0; tx < bw; tx += kTile) {
            const int tw = std::min(kTile, bw - tx);
            const std::int64_t rx = regionX + tx, ry = regionY + ty;
            const int rw = tw + m.width, rh = th + m.height;
            T* d = dst + std::ptrdiff_t(ty) * dstStep + tx;
            const unsigned c = boundary_case(rx, ry, rw, rh, pw, ph);
            if (c == 0) {
                run(plane + (ry + m.top) * step + rx + m.left, step, d, dstStep, tw, th);
                continue;
            }
            const int bufStep = (rw + 15) & ~15;
            KivInterpolationParams w{};
            w.pSrc = plane;
            w.srcStep = step;
            w.pDst = buffer;
            w.dstStep = bufStep;
            w.regionX = int(rx);
            w.regionY = int(ry);
            w.regionWidth = rw;
            w.regionHeight = rh;
            w.pictureWidth = pw;
            w.pictureHeight = ph;
            readers[c](&w);
            run(buffer + m.top * bufStep + m.left, bufStep, d, dstStep, tw, th);
        }
    }
}

// Top/Bottom: block row k reads source row max(k, edge) (Top) or min(k, edge)
// (Bottom); columns are read as they are.
template <class T, bool Top, class Run>
void predict_edge_rows(const T* src, int step, T* dst, int dstStep, int bw, int bh, int edge, Margins m, Run run) {
    alignas(64) T buffer[kBufferStep * kBufferRows];
    for (int ty = 0; ty < bh; ty += kTile) {
        const int th = std::min(kTile, bh - ty);
        for (int tx = 0; tx < bw; tx += kTile) {
            const int tw = std::min(kTile, bw - tx);
            const int cols = tw + m.width;
            for (int r = 0; r < th + m.height; ++r) {
                const int k = ty + r - m.top;
                const int row = Top ? std::max(k, edge) : std::min(k, edge);
                std::memcpy(buffer + r * kBufferStep, src + std::ptrdiff_t(row) * step + tx - m.left,
                            std::size_t(cols) * sizeof(T));
            }
            run(buffer + m.top * kBufferStep + m.left, kBufferStep, dst + std::ptrdiff_t(ty) * dstStep + tx, dstStep,
                tw, th);
        }
    }
}

// Argument checks shared by the plain and Top/Bottom functions.
inline KivStatus check_luma_8u(const void* src, const void* dst, Kiv32s dx, Kiv32s dy, KiviSize roi) {
    if (!src || !dst) return kivStsNullPointer;
    if (Kiv32u(dx) > 3 || Kiv32u(dy) > 3) return kivStsBadArgument;
    if ((roi.height & 3) || (roi.width & ~28)) return kivStsBadSize;
    return kivStsOk;
}
inline KivStatus check_chroma_8u(const void* src, const void* dst, Kiv32s dx, Kiv32s dy, KiviSize roi) {
    if (!src || !dst) return kivStsNullPointer;
    if (Kiv32u(dx) > 7 || Kiv32u(dy) > 7) return kivStsBadArgument;
    if ((roi.height & 1) || (roi.width & ~14)) return kivStsBadSize;
    return kivStsOk;
}
inline bool one_of_sizes(int v, bool with2) { return v == 4 || v == 8 || v == 16 || (with2 && v == 2); }

inline KivStatus check_luma_16u(const KivInterpolate_16u* p) {
    if (!p || !p->pSrc || !p->pDst) return kivStsNullPointer;
    const int w = p->roiSize.width, h = p->roiSize.height;
    if (p->srcStep < w || w > p->dstStep) return kivStsBadStep;
    if (Kiv32u(p->dx) > 3 || Kiv32u(p->dy) > 3) return kivStsBadArgument;
    if (!one_of_sizes(h, false) || !one_of_sizes(w, false) || w + h == 20) return kivStsBadSize;
    return kivStsOk;
}
inline KivStatus check_chroma_16u(const KivInterpolate_16u* p) {
    if (!p || !p->pSrc || !p->pDst) return kivStsNullPointer;
    if (p->srcStep < 8 || p->dstStep < 8) return kivStsBadStep;
    if (Kiv32u(p->dx) > 7 || Kiv32u(p->dy) > 7) return kivStsBadArgument;
    if (!one_of_sizes(p->roiSize.height, true) || !one_of_sizes(p->roiSize.width, true)) return kivStsBadSize;
    return kivStsOk;
}

}  // namespace kivvc::interp
