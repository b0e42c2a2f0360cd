// Reading reference regions through the picture boundary, and the exported
// functions that predict from a whole plane (Block, boundary) or with edge
// rows replaced (Top, Bottom).
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "h264/inter/boundary_internal.h"
#include "h264/inter/interp_kernels.h"
#include "kivvc.h"

namespace kivvc::interp {
namespace {

using std::int64_t;
using std::ptrdiff_t;

template <class T>
void fill(T* p, int n, T v) {
    for (int i = 0; i < n; ++i) p[i] = v;
}

// The region as if every sample were read at clamped coordinates, for the
// edges named by Case (the others are trusted). Each distinct source row is
// built once (inside part copied, outside parts filled with the edge sample);
// repeated rows above and below are copies of the finished row.
template <class T, unsigned Case>
void read_through_boundary(const KivInterpolationParams* w) {
    if constexpr (Case == 0) {
        (void)w;
    } else {
        constexpr bool kLeft = Case & 1, kRight = Case & 2, kTop = Case & 4, kBottom = Case & 8;
        const T* plane = static_cast<const T*>(w->pSrc);
        T* out = static_cast<T*>(w->pDst);
        const int64_t x = w->regionX, y = w->regionY, pw = w->pictureWidth, ph = w->pictureHeight;
        const int width = w->regionWidth, height = w->regionHeight;
        if (width <= 0 || height <= 0) return;
        // Output columns [first, end) come from the row's samples x + first ..
        const int first = kLeft ? int(std::clamp<int64_t>(-x, 0, width)) : 0;
        const int end = kRight ? int(std::clamp<int64_t>(pw - x, 0, width)) : width;
        const T* previous = nullptr;
        int64_t previous_row = -1;
        for (int r = 0; r < height; ++r) {
            T* o = out + ptrdiff_t(r) * w->dstStep;
            int64_t sy = y + r;
            if (kTop) sy = std::max<int64_t>(sy, 0);
            if (kBottom) sy = std::min<int64_t>(sy, ph - 1);
            if (previous && sy == previous_row) {
                std::memcpy(o, previous, std::size_t(width) * sizeof(T));
                continue;
            }
            const T* row = plane + sy * w->srcStep;
            if (first < end) {
                std::memcpy(o + first, row + x + first, std::size_t(end - first) * sizeof(T));
                if (kLeft) fill(o, first, row[0]);
                if (kRight) fill(o + end, width - end, row[pw - 1]);
            } else {
                // Wholly outside on one side: one edge sample across the row.
                fill(o, width, (kRight && x >= pw) ? row[pw - 1] : row[0]);
            }
            previous = o;
            previous_row = sy;
        }
    }
}

template <class T, std::size_t... C>
void fill_readers(ReaderFn (&t)[kBoundaryCases], std::index_sequence<C...>) {
    ((t[C] = &read_through_boundary<T, unsigned(C)>), ...);
}

// Kernel calls in the shape the tile walkers expect.
struct Luma8 {
    LumaFn fn;
    void operator()(const u8* s, int ss, u8* d, int ds, int w, int h) const { fn(s, ss, d, ds, w, h); }
};
struct Luma16 {
    Luma16Fn fn;
    int maxv;
    void operator()(const u16* s, int ss, u16* d, int ds, int w, int h) const { fn(s, ss, d, ds, w, h, maxv); }
};
template <class T, class Fn>
struct Chroma {
    Fn fn;
    int dx, dy;
    void operator()(const T* s, int ss, T* d, int ds, int w, int h) const { fn(s, ss, d, ds, dx, dy, w, h); }
};

Luma8 luma_run(const Table& t, int type, const u8*) { return {t.luma_8u[type]}; }
Luma16 luma_run(const Table& t, int type, const u16*, int maxv) { return {t.luma_16u[type], maxv}; }
Chroma<u8, ChromaFn> chroma_run(const Table& t, int dx, int dy, const u8*) {
    return {t.chroma_8u[chroma_kernel_type(dx, dy)], dx, dy};
}
Chroma<u16, Chroma16Fn> chroma_run(const Table& t, int dx, int dy, const u16*) {
    return {t.chroma_16u[chroma_kernel_type(dx, dy)], dx, dy};
}

template <class T>
const ReaderFn* readers_for(const Table& t) {
    if constexpr (sizeof(T) == 1) return t.read_boundary_8u;
    else return t.read_boundary_16u;
}

// One motion vector component: fraction and integer part.
struct Component {
    int frac, whole;
};
Component split(int v, int bits) { return {v & ((1 << bits) - 1), v >> bits}; }

// Block functions. `Record` is KivInterpolateBlock_8u or _16u.
template <class T, class Record, class Run>
void luma_block(const Record& p, Run run) {
    const T* plane = p.pSrc1;
    const int step = p.srcStep;
    const Component cx = split(p.mv.x, 2), cy = split(p.mv.y, 2);
    const Margins m = luma_margins(luma_kernel_type(cx.frac, cy.frac));
    const int64_t rx = int64_t(p.blockPos.x) + cx.whole - m.left;
    const int64_t ry = int64_t(p.blockPos.y) + cy.whole - m.top;
    const int bw = p.blockSize.width, bh = p.blockSize.height;
    if (boundary_case(rx, ry, int64_t(bw) + m.width, int64_t(bh) + m.height, p.pictureSize.width,
                      p.pictureSize.height) == 0) {
        run(plane + (ry + m.top) * step + rx + m.left, step, p.pDst1, p.dstStep, bw, bh);
        return;
    }
    if (p.pictureSize.width < 1 || p.pictureSize.height < 1) return;
    predict_through_boundary(plane, step, p.pictureSize.width, p.pictureSize.height, rx, ry, m, p.pDst1, p.dstStep,
                             bw, bh, readers_for<T>(table()), run);
}

template <class T, class Record, class RunFor>
void chroma_block(const Record& p, RunFor run_for) {
    const Component cx = split(p.mv.x, 3), cy = split(p.mv.y, 3);
    const auto run = run_for(cx.frac, cy.frac);
    const Margins m = chroma_margins(cx.frac, cy.frac);
    const int64_t rx = int64_t(p.blockPos.x) + cx.whole, ry = int64_t(p.blockPos.y) + cy.whole;
    const int bw = p.blockSize.width, bh = p.blockSize.height;
    const int pw = p.pictureSize.width, ph = p.pictureSize.height;
    const T* planes[2] = {p.pSrc1, p.pSrc2};
    T* dsts[2] = {p.pDst1, p.pDst2};
    const bool zero_vector = p.mv.x == 0 && p.mv.y == 0;
    const bool inside =
        zero_vector || boundary_case(rx, ry, int64_t(bw) + m.width, int64_t(bh) + m.height, pw, ph) == 0;
    if (!inside && (pw < 1 || ph < 1)) return;
    for (int i = 0; i < 2; ++i) {
        if (inside)
            run(planes[i] + ry * p.srcStep + rx, p.srcStep, dsts[i], p.dstStep, bw, bh);
        else
            predict_through_boundary(planes[i], p.srcStep, pw, ph, rx, ry, m, dsts[i], p.dstStep, bw, bh,
                                     readers_for<T>(table()), run);
    }
}

template <class T>
void boundary_luma(const KivInterpolationParams& w, int maxv) {
    const Table& t = table();
    const int type = w.kernelType & 15;
    const T* plane = static_cast<const T*>(w.pSrc);
    if (w.pictureWidth < 1 || w.pictureHeight < 1) return;
    const auto go = [&](auto run) {
        predict_through_boundary(plane, w.srcStep, w.pictureWidth, w.pictureHeight, w.regionX, w.regionY,
                                 luma_margins(type), static_cast<T*>(w.pDst), w.dstStep, w.blockWidth,
                                 w.blockHeight, readers_for<T>(t), run);
    };
    if constexpr (sizeof(T) == 1) {
        (void)maxv;
        go(luma_run(t, type, plane));
    } else {
        go(luma_run(t, type, plane, maxv));
    }
}

template <class T>
void boundary_chroma(const KivInterpolationParams& w) {
    const Table& t = table();
    const int dx = w.xFrac & 7, dy = w.yFrac & 7;
    if (w.pictureWidth < 1 || w.pictureHeight < 1) return;
    const auto run = chroma_run(t, dx, dy, static_cast<const T*>(nullptr));
    const T* planes[2] = {static_cast<const T*>(w.pSrc), static_cast<const T*>(w.pSrc2)};
    T* dsts[2] = {static_cast<T*>(w.pDst), static_cast<T*>(w.pDst2)};
    for (int i = 0; i < 2; ++i)
        predict_through_boundary(planes[i], w.srcStep, w.pictureWidth, w.pictureHeight, w.regionX, w.regionY,
                                 chroma_margins(dx, dy), dsts[i], w.dstStep, w.blockWidth, w.blockHeight,
                                 readers_for<T>(t), run);
}

}  // namespace

void init_boundary_readers(Table& t) {
    fill_readers<u8>(t.read_boundary_8u, std::make_index_sequence<kBoundaryCases>{});
    fill_readers<u16>(t.read_boundary_16u, std::make_index_sequence<kBoundaryCases>{});
}

namespace {

template <bool Top>
KivStatus luma_edge_8u(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy,
                       Kiv32s outPixels, KiviSize roi) {
    if (const KivStatus s = check_luma_8u(src, dst, dx, dy, roi); s != kivStsOk) return s;
    const int type = luma_kernel_type(dx, dy);
    const int edge = Top ? outPixels : roi.height - 1 - outPixels;
    predict_edge_rows<u8, Top>(src, srcStep, dst, dstStep, roi.width, roi.height, edge, luma_margins(type),
                               luma_run(table(), type, src));
    return kivStsOk;
}

template <bool Top>
KivStatus chroma_edge_8u(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep, Kiv32s dx, Kiv32s dy,
                         Kiv32s outPixels, KiviSize roi) {
    if (const KivStatus s = check_chroma_8u(src, dst, dx, dy, roi); s != kivStsOk) return s;
    const int edge = Top ? outPixels : roi.height - 1 - outPixels;
    predict_edge_rows<u8, Top>(src, srcStep, dst, dstStep, roi.width, roi.height, edge, chroma_margins(dx, dy),
                               chroma_run(table(), dx, dy, src));
    return kivStsOk;
}

template <bool Top>
KivStatus luma_edge_16u(const KivInterpolate_16u* p, Kiv32s outPixels) {
    if (const KivStatus s = check_luma_16u(p); s != kivStsOk) return s;
    const int type = luma_kernel_type(p->dx, p->dy);
    const int h = p->roiSize.height;
    predict_edge_rows<u16, Top>(p->pSrc, p->srcStep, p->pDst, p->dstStep, p->roiSize.width, h,
                                Top ? outPixels : h - 1 - outPixels, luma_margins(type),
                                luma_run(table(), type, p->pSrc, max_sample(p->bitDepth)));
    return kivStsOk;
}

template <bool Top>
KivStatus chroma_edge_16u(const KivInterpolate_16u* p, Kiv32s outPixels) {
    if (const KivStatus s = check_chroma_16u(p); s != kivStsOk) return s;
    const int h = p->roiSize.height;
    predict_edge_rows<u16, Top>(p->pSrc, p->srcStep, p->pDst, p->dstStep, p->roiSize.width, h,
                                Top ? outPixels : h - 1 - outPixels, chroma_margins(p->dx, p->dy),
                                chroma_run(table(), p->dx, p->dy, p->pSrc));
    return kivStsOk;
}

template <class Record>
KivStatus check_luma_block(const Record* p) {
    if (!p || !p->pSrc1 || !p->pDst1) return kivStsNullPointer;
    if ((p->blockSize.height & 3) || (p->blockSize.width & ~28)) return kivStsBadSize;
    return kivStsOk;
}
template <class Record>
KivStatus check_chroma_block(const Record* p) {
    if (!p || !p->pSrc1 || !p->pSrc2 || !p->pDst1 || !p->pDst2) return kivStsNullPointer;
    if ((p->blockSize.height & 1) || (p->blockSize.width & ~14)) return kivStsBadSize;
    return kivStsOk;
}

}  // namespace
}  // namespace kivvc::interp

using namespace kivvc::interp;

extern "C" {

KIV_API KivStatus kiviInterpolateLumaTop_H264_8u_C1R(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep,
                                                     Kiv32s dx, Kiv32s dy, Kiv32s outPixels, KiviSize roi) {
    return luma_edge_8u<true>(src, srcStep, dst, dstStep, dx, dy, outPixels, roi);
}
KIV_API KivStatus kiviInterpolateLumaBottom_H264_8u_C1R(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep,
                                                        Kiv32s dx, Kiv32s dy, Kiv32s outPixels, KiviSize roi) {
    return luma_edge_8u<false>(src, srcStep, dst, dstStep, dx, dy, outPixels, roi);
}
KIV_API KivStatus kiviInterpolateChromaTop_H264_8u_C1R(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst, Kiv32s dstStep,
                                                       Kiv32s dx, Kiv32s dy, Kiv32s outPixels, KiviSize roi) {
    return chroma_edge_8u<true>(src, srcStep, dst, dstStep, dx, dy, outPixels, roi);
}
KIV_API KivStatus kiviInterpolateChromaBottom_H264_8u_C1R(const Kiv8u* src, Kiv32s srcStep, Kiv8u* dst,
                                                          Kiv32s dstStep, Kiv32s dx, Kiv32s dy, Kiv32s outPixels,
                                                          KiviSize roi) {
    return chroma_edge_8u<false>(src, srcStep, dst, dstStep, dx, dy, outPixels, roi);
}
KIV_API KivStatus kiviInterpolateLumaTop_H264_16u_C1R(const KivInterpolate_16u* p, Kiv32s outPixels) {
    return luma_edge_16u<true>(p, outPixels);
}
KIV_API KivStatus kiviInterpolateLumaBottom_H264_16u_C1R(const KivInterpolate_16u* p, Kiv32s outPixels) {
    return luma_edge_16u<false>(p, outPixels);
}
KIV_API KivStatus kiviInterpolateChromaTop_H264_16u_C1R(const KivInterpolate_16u* p, Kiv32s outPixels) {
    return chroma_edge_16u<true>(p, outPixels);
}
KIV_API KivStatus kiviInterpolateChromaBottom_H264_16u_C1R(const KivInterpolate_16u* p, Kiv32s outPixels) {
    return chroma_edge_16u<false>(p, outPixels);
}

KIV_API KivStatus kiviInterpolateLumaBlock_H264_8u_P1R(const KivInterpolateBlock_8u* p) {
    if (const KivStatus s = check_luma_block(p); s != kivStsOk) return s;
    const int type = luma_kernel_type(p->mv.x & 3, p->mv.y & 3);
    if (p->mv.x == 0 && p->mv.y == 0) {
        table().luma_8u[0](p->pSrc1 + std::ptrdiff_t(p->blockPos.y) * p->srcStep + p->blockPos.x, p->srcStep,
                           p->pDst1, p->dstStep, p->blockSize.width, p->blockSize.height);
        return kivStsOk;
    }
    luma_block<Kiv8u>(*p, Luma8{table().luma_8u[type]});
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateLumaBlock_H264_16u_P1R(const KivInterpolateBlock_16u* p) {
    if (const KivStatus s = check_luma_block(p); s != kivStsOk) return s;
    const int type = luma_kernel_type(p->mv.x & 3, p->mv.y & 3);
    if (p->mv.x == 0 && p->mv.y == 0) {
        table().luma_16u[0](p->pSrc1 + std::ptrdiff_t(p->blockPos.y) * p->srcStep + p->blockPos.x, p->srcStep,
                            p->pDst1, p->dstStep, p->blockSize.width, p->blockSize.height, 0xFFFF);
        return kivStsOk;
    }
    luma_block<Kiv16u>(*p, Luma16{table().luma_16u[type], max_sample(p->bitDepth)});
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateChromaBlock_H264_8u_P2R(const KivInterpolateBlock_8u* p) {
    if (const KivStatus s = check_chroma_block(p); s != kivStsOk) return s;
    chroma_block<Kiv8u>(*p, [](int dx, int dy) { return chroma_run(table(), dx, dy, static_cast<const u8*>(nullptr)); });
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateChromaBlock_H264_16u_P2R(const KivInterpolateBlock_16u* p) {
    if (const KivStatus s = check_chroma_block(p); s != kivStsOk) return s;
    chroma_block<Kiv16u>(*p,
                         [](int dx, int dy) { return chroma_run(table(), dx, dy, static_cast<const u16*>(nullptr)); });
    return kivStsOk;
}

KIV_API KivStatus kiviInterpolateBoundaryLumaBlock_H264_8u(Kiv32u, KivInterpolationParams* w) {
    if (w) boundary_luma<Kiv8u>(*w, 255);
    return kivStsOk;
}
KIV_API KivStatus kiviInterpolateBoundaryChromaBlock_H264_8u(Kiv32u, KivInterpolationParams* w) {
    if (w) boundary_chroma<Kiv8u>(*w);
    return kivStsOk;
}
KIV_API KivStatus kiviInterpolateBoundaryLumaBlock_H264_16u(Kiv32u, KivInterpolationParams* w) {
    if (w) boundary_luma<Kiv16u>(*w, max_sample(w->bitDepth));
    return kivStsOk;
}
KIV_API KivStatus kiviInterpolateBoundaryChromaBlock_H264_16u(Kiv32u, KivInterpolationParams* w) {
    if (w) boundary_chroma<Kiv16u>(*w);
    return kivStsOk;
}
KIV_API KivStatus kiviReadDataBlockThroughBoundary_8u(Kiv32u boundaryCase, KivInterpolationParams* w) {
    if (w) table().read_boundary_8u[boundaryCase & 15](w);
    return kivStsOk;
}
KIV_API KivStatus kiviReadDataBlockThroughBoundary_16u(Kiv32u boundaryCase, KivInterpolationParams* w) {
    if (w) table().read_boundary_16u[boundaryCase & 15](w);
    return kivStsOk;
}

}  // extern "C"
