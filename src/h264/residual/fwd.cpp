// Exported H.264 forward transforms, quantisers, scaling-list generators and
// sums of differences: argument checks in the documented order, then the
// kernels of the family table.
#include <cstring>

#include "h264/residual/fwd_kernels.h"
#include "kivvc.h"

using namespace kivvc::h264;
using kivvc::h264::fwd::table;

namespace {

using u32 = std::uint32_t;
using s64 = std::int64_t;

bool outside(Kiv32s v, int lo, int hi) { return v < lo || v > hi; }

// Largest level magnitude the flat quantisers accept (what a CAVLC level
// code can carry in every profile).
constexpr int kMaxFlatLevel = 2063;

// Quantiser parameters: factors (one per position), shift and rounding term.
struct QuantParams {
    const s16* m;
    int shift;
    u32 round;
};

// A third (intra) or a sixth (inter) of 2^shift.
u32 fraction(int shift, bool intra) { return (u32{1} << shift) / (intra ? 3u : 6u); }

// Stores v at the width of the level type.
template <class T>
T store(s64 v) {
    if constexpr (sizeof(T) == 2) return static_cast<s16>(static_cast<u16>(v));
    else return static_cast<s32>(static_cast<u32>(v));
}

template <class T>
int quantise(int sizeIndex, const T* src, T* dst, const QuantParams& p, const s16* scan, s32* last) {
    if constexpr (sizeof(T) == 2) return table().quant[sizeIndex](src, dst, p.m, p.shift, p.round, scan, last);
    else return table().quant_wide[sizeIndex](src, dst, p.m, p.shift, p.round, scan, last);
}

// Luma DC: 4x4 Hadamard of dc, every value halved, into t.
template <class T>
void luma_dc_hadamard(const T* dc, T* t) {
    s64 x[16];
    for (int i = 0; i < 4; ++i) {
        const s64 a = s64{dc[4 * i]} + dc[4 * i + 1], b = s64{dc[4 * i + 2]} + dc[4 * i + 3];
        const s64 c = s64{dc[4 * i]} - dc[4 * i + 1], d = s64{dc[4 * i + 2]} - dc[4 * i + 3];
        x[4 * i] = a + b, x[4 * i + 1] = a - b, x[4 * i + 2] = c - d, x[4 * i + 3] = c + d;
    }
    for (int j = 0; j < 4; ++j) {
        const s64 a = x[j] + x[4 + j], b = x[8 + j] + x[12 + j];
        const s64 c = x[j] - x[4 + j], d = x[8 + j] - x[12 + j];
        t[j] = store<T>((a + b) >> 1), t[4 + j] = store<T>((a - b) >> 1);
        t[8 + j] = store<T>((c - d) >> 1), t[12 + j] = store<T>((c + d) >> 1);
    }
}

// 4:2:0 chroma DC: the 2x2 Hadamard of dc into t.
template <class T>
void chroma_dc2x2_hadamard(const T* c, T* t) {
    const s64 c0 = c[0], c1 = c[1], c2 = c[2], c3 = c[3];
    t[0] = store<T>(c0 + c1 + c2 + c3), t[1] = store<T>(c0 - c1 + c2 - c3);
    t[2] = store<T>(c0 + c1 - c2 - c3), t[3] = store<T>(c0 - c1 - c2 + c3);
}

// 4:2:2 chroma DC: A4 x c x A2 with c as 4 rows of 2.
template <class T>
void chroma_dc2x4_transform(const T* c, T* t) {
    s64 x[8];
    for (int j = 0; j < 2; ++j) {
        const s64 a = s64{c[j]} + c[2 + j], b = s64{c[4 + j]} + c[6 + j];
        const s64 d = s64{c[j]} - c[2 + j], e = s64{c[4 + j]} - c[6 + j];
        x[j] = a + b, x[2 + j] = a - b, x[4 + j] = d - e, x[6 + j] = d + e;
    }
    for (int i = 0; i < 4; ++i) t[2 * i] = store<T>(x[2 * i] + x[2 * i + 1]), t[2 * i + 1] = store<T>(x[2 * i] - x[2 * i + 1]);
}

// Count convention: negated when the DC is non-zero.
Kiv32s signed_count(int n, bool dcNonZero) { return dcNonZero ? -n : n; }

template <class T>
KivStatus fwd4x4(const Kiv16s* src, T* dst, Kiv32s qp, Kiv32s* count, Kiv32s intra, const Kiv16s* scan, Kiv32s* last,
                 const Kiv16s* scale) {
    if (!src || !dst || !count || !scan || !last) return kivStsNullPointer;
    if (outside(qp, 0, 51)) return kivStsOutOfRange;
    const int shift = h264_qp6[qp] + (scale ? 11 : 15);
    const QuantParams p{scale ? scale : FwdQuantTable_16s[h264_qp_rem[qp]].data(), shift, fraction(shift, intra != 0)};
    if constexpr (sizeof(T) == 2) table().transform4x4(src, dst);
    else table().transform4x4_wide(src, dst);
    const int n = quantise<T>(2, dst, dst, p, scan, last);
    *count = signed_count(n, dst[0] != 0);
    return kivStsOk;
}

// Luma DC rule; returns the level count (before the sign convention).
template <class T>
int luma_dc(T* dc, T* t, int qp, bool transform, const Kiv16s* scan, Kiv32s* last, const Kiv16s* scale) {
    if (transform) luma_dc_hadamard(dc, t);
    const int q = h264_qp6[qp];
    s16 m[16];
    const s16 m0 = scale ? scale[0] : FwdQuantTable_16s[h264_qp_rem[qp]][0];
    for (s16& v : m) v = m0;
    const int shift = q + (scale ? 12 : 16);
    const QuantParams p{m, shift, scale ? u32{682} << (q + 1) : fraction(shift, true)};
    return quantise<T>(2, t, dc, p, scan, last);
}

template <class T>
KivStatus luma_dc_call(T* dc, T* t, Kiv32s qp, Kiv32s* count, Kiv32u transform, const Kiv16s* scan, Kiv32s* last,
                       const Kiv16s* scale) {
    if (!dc || !t || !count || !scan || !last) return kivStsNullPointer;
    if (outside(qp, 0, 51)) return kivStsOutOfRange;
    const int n = luma_dc(dc, t, qp, transform != 0, scan, last, scale);
    *count = signed_count(n, t[0] != 0);
    return kivStsOk;
}

// Chroma DC rule over 4 (2x2) or 8 (2x4) values; returns the level count.
template <class T, int N>
int chroma_dc(T* dc, T* t, int qp, bool intra, bool transform, const Kiv16s* scale) {
    static constexpr s16 kNoScan[8] = {};
    s32 last = 0;
    if constexpr (N == 4) {
        if (transform) chroma_dc2x2_hadamard(dc, t);
        const int shift = h264_qp6[qp] + (scale ? 12 : 16);
        const s16 m0 = scale ? scale[0] : FwdQuantTable_16s[h264_qp_rem[qp]][0];
        const s16 m[4] = {m0, m0, m0, m0};
        return quantise<T>(0, t, dc, QuantParams{m, shift, fraction(shift, intra)}, kNoScan, &last);
    } else {
        if (transform) chroma_dc2x4_transform(dc, t);
        const int shift = h264_qp6[qp + 3] + (scale ? 12 : 16);
        const s16 m0 = scale ? scale[0] : FwdQuantTable_16s[h264_qp_rem[qp + 3]][0];
        const s16 m[8] = {m0, m0, m0, m0, m0, m0, m0, m0};
        const u32 round = u32{intra ? 682u : 342u} << (shift - 11);
        return quantise<T>(1, t, dc, QuantParams{m, shift, round}, kNoScan, &last);
    }
}

template <class T, int N>
KivStatus chroma_dc_call(T* dc, T* t, Kiv32s qp, Kiv32s* count, Kiv32s intra, Kiv32u transform, const Kiv16s* scale) {
    if (!dc || !t || !count) return kivStsNullPointer;
    if (outside(qp, 0, 39)) return kivStsOutOfRange;
    const int n = chroma_dc<T, N>(dc, t, qp, intra != 0, transform != 0, scale);
    *count = signed_count(n, dc[0] != 0);
    return kivStsOk;
}

template <class T>
KivStatus quant8x8_call(const T* src, T* dst, Kiv32u qp6, Kiv32s intra, const Kiv16s* scan, const Kiv16s* scale,
                        Kiv32s* count, Kiv32s* last) {
    if (!src || !dst || !scan || !scale || !count || !last) return kivStsNullPointer;
    if (qp6 > 8) return kivStsBadQp;
    const int q = int(qp6);
    const QuantParams p{scale, q + 12, u32{intra ? 682u : 342u} << (q + 1)};
    const int n = quantise<T>(3, src, dst, p, scan, last);
    *count = signed_count(n, dst[0] != 0);
    return kivStsOk;
}

// The flat quantisers' level bound: levels[k] for k below the first level
// beyond kMaxFlatLevel are copied into dst; returns false when there is one.
bool copy_bounded(const s16* levels, s16* dst, int n) {
    for (int k = 0; k < n; ++k) {
        if (levels[k] > kMaxFlatLevel || levels[k] < -kMaxFlatLevel) return false;
        dst[k] = levels[k];
    }
    return true;
}

// Count (signed byte, negated when the DC is non-zero) and last position
// limited to 7 bits.
void store_flat_counts(int n, bool dcNonZero, s32 last, Kiv8s* count, Kiv8u* lastOut) {
    *count = Kiv8s(dcNonZero ? -n : n);
    if (lastOut) *lastOut = Kiv8u(last & 0x7F);
}

// Sums of differences: the checks, then the kernel.
template <class Sample, class Sum, class Fn>
KivStatus sums_call(Fn fn, const Sample* src, Kiv32s srcStep, const Sample* pred, Kiv32s predStep, Sum* sums,
                    Kiv16s* diff) {
    if (!src || !pred || !sums) return kivStsNullPointer;
    fn(src, srcStep, pred, predStep, sums, diff);
    return kivStsOk;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviTransformQuantFwd4x4_H264_16s_C1(const Kiv16s* pSrc, Kiv16s* pDst, Kiv32s QP, Kiv32s* pNumLevels,
                                                      Kiv32s intra, const Kiv16s* pScanMatrix, Kiv32s* pLastCoeff,
                                                      const Kiv16s* pScaleLevels) {
    return fwd4x4(pSrc, pDst, QP, pNumLevels, intra, pScanMatrix, pLastCoeff, pScaleLevels);
}

KIV_API KivStatus kiviTransformQuantFwd4x4_H264_16s32s_C1(const Kiv16s* pSrc, Kiv32s* pDst, Kiv32s QP,
                                                         Kiv32s* pNumLevels, Kiv32s intra, const Kiv16s* pScanMatrix,
                                                         Kiv32s* pLastCoeff, const Kiv16s* pScaleLevels) {
    return fwd4x4(pSrc, pDst, QP, pNumLevels, intra, pScanMatrix, pLastCoeff, pScaleLevels);
}

KIV_API KivStatus kiviTransformQuantFwdLumaDC4x4_H264_16s_C1I(Kiv16s* pDCBuf, Kiv16s* pTBuf, Kiv32s QP,
                                                             Kiv32s* pNumLevels, Kiv32u needTransform,
                                                             const Kiv16s* pScanMatrix, Kiv32s* pLastCoeff,
                                                             const Kiv16s* pScaleLevels) {
    return luma_dc_call(pDCBuf, pTBuf, QP, pNumLevels, needTransform, pScanMatrix, pLastCoeff, pScaleLevels);
}

KIV_API KivStatus kiviTransformQuantFwdLumaDC4x4_H264_32s_C1I(Kiv32s* pDCBuf, Kiv32s* pTBuf, Kiv32s QP,
                                                             Kiv32s* pNumLevels, Kiv32u needTransform,
                                                             const Kiv16s* pScanMatrix, Kiv32s* pLastCoeff,
                                                             const Kiv16s* pScaleLevels) {
    return luma_dc_call(pDCBuf, pTBuf, QP, pNumLevels, needTransform, pScanMatrix, pLastCoeff, pScaleLevels);
}

KIV_API KivStatus kiviTransformQuantFwdChromaDC2x2_H264_16s_C1I(Kiv16s* pDCBuf, Kiv16s* pTBuf, Kiv32s QP,
                                                               Kiv32s* pNumLevels, Kiv32s intra, Kiv32u needTransform,
                                                               const Kiv16s* pScaleLevels) {
    return chroma_dc_call<Kiv16s, 4>(pDCBuf, pTBuf, QP, pNumLevels, intra, needTransform, pScaleLevels);
}

KIV_API KivStatus kiviTransformQuantFwdChromaDC2x2_H264_32s_C1I(Kiv32s* pDCBuf, Kiv32s* pTBuf, Kiv32s QP,
                                                               Kiv32s* pNumLevels, Kiv32s intra, Kiv32u needTransform,
                                                               const Kiv16s* pScaleLevels) {
    return chroma_dc_call<Kiv32s, 4>(pDCBuf, pTBuf, QP, pNumLevels, intra, needTransform, pScaleLevels);
}

KIV_API KivStatus kiviTransformQuantFwdChromaDC2x4_H264_16s_C1I(Kiv16s* pDCBuf, Kiv16s* pTBuf, Kiv32s QP,
                                                               Kiv32s* pNumLevels, Kiv32s intra, Kiv32u needTransform,
                                                               const Kiv16s* pScaleLevels) {
    return chroma_dc_call<Kiv16s, 8>(pDCBuf, pTBuf, QP, pNumLevels, intra, needTransform, pScaleLevels);
}

KIV_API KivStatus kiviTransformQuantFwdChromaDC2x4_H264_32s_C1I(Kiv32s* pDCBuf, Kiv32s* pTBuf, Kiv32s QP,
                                                               Kiv32s* pNumLevels, Kiv32s intra, Kiv32u needTransform,
                                                               const Kiv16s* pScaleLevels) {
    return chroma_dc_call<Kiv32s, 8>(pDCBuf, pTBuf, QP, pNumLevels, intra, needTransform, pScaleLevels);
}

KIV_API KivStatus kiviQuantLuma8x8_H264_16s_C1(const Kiv16s* pSrc, Kiv16s* pDst, Kiv32u Qp6, Kiv32s intra,
                                              const Kiv16s* pScanMatrix, const Kiv16s* pScaleLevels,
                                              Kiv32s* pNumLevels, Kiv32s* pLastCoeff) {
    return quant8x8_call(pSrc, pDst, Qp6, intra, pScanMatrix, pScaleLevels, pNumLevels, pLastCoeff);
}

KIV_API KivStatus kiviQuantLuma8x8_H264_32s_C1(const Kiv32s* pSrc, Kiv32s* pDst, Kiv32u Qp6, Kiv32s intra,
                                              const Kiv16s* pScanMatrix, const Kiv16s* pScaleLevels,
                                              Kiv32s* pNumLevels, Kiv32s* pLastCoeff) {
    return quant8x8_call(pSrc, pDst, Qp6, intra, pScanMatrix, pScaleLevels, pNumLevels, pLastCoeff);
}

KIV_API KivStatus kiviTransformLuma8x8Fwd_H264_16s_C1I(Kiv16s* pSrcDst) {
    if (!pSrcDst) return kivStsNullPointer;
    table().transform8x8(pSrcDst, pSrcDst);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformFwdLuma8x8_H264_16s_C1(const Kiv16s* pSrc, Kiv16s* pDst) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    table().transform8x8(pSrc, pDst);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformFwdLuma8x8_H264_16s32s_C1(const Kiv16s* pSrc, Kiv32s* pDst) {
    if (!pSrc || !pDst) return kivStsNullPointer;
    table().transform8x8_wide(pSrc, pDst);
    return kivStsOk;
}

KIV_API KivStatus kiviGenScaleLevel4x4_H264_8u16s_C1(const Kiv8u* pWeights, Kiv16s* pInvLevelScale,
                                                    Kiv16s* pFwdLevelScale, Kiv32s qpRem) {
    if (!pWeights || !pInvLevelScale || !pFwdLevelScale) return kivStsNullPointer;
    if (outside(qpRem, 0, 5)) return kivStsOutOfRange;
    for (int k = 0; k < 16; ++k)
        if (!pWeights[k]) return kivStsDivByZero;
    for (int k = 0; k < 16; ++k) {
        const u32 w = pWeights[k], f = u32(FwdQuantTable_16s[qpRem][k]);
        u32 e = (u32{dt[w]} * f) >> 16;
        if (w * e + w <= f) ++e;  // w x e <= F - w, without going below zero
        pInvLevelScale[k] = s16(InvQuantTable_def[qpRem][k] * int(w));
        pFwdLevelScale[k] = s16(e);
    }
    return kivStsOk;
}

KIV_API KivStatus kiviGenScaleLevel8x8_H264_8u16s_D2(const Kiv8u* pWeights, Kiv32s weightStep, Kiv16s* pInvLevelScale,
                                                    Kiv16s* pFwdLevelScale, Kiv32s qpRem) {
    if (!pWeights || !pInvLevelScale || !pFwdLevelScale) return kivStsNullPointer;
    if (outside(qpRem, 0, 5)) return kivStsBadQp;
    const auto weight = [&](int k) { return int(pWeights[std::ptrdiff_t(k >> 3) * weightStep + (k & 7)]); };
    for (int k = 0; k < 64; ++k)
        if (!weight(k)) return kivStsDivByZero;
    for (int k = 0; k < 64; ++k) {
        const int w = weight(k);
        pInvLevelScale[k] = s16(InvLevelScale_8x8_default[qpRem][k] * w);
        pFwdLevelScale[k] = s16(LevelScale_8x8_default[qpRem][k] / w);
    }
    return kivStsOk;
}

KIV_API KivStatus kiviTransformQuantResidual_H264_16s_C1I(Kiv16s* pSrcDst, Kiv32s QP, Kiv8s* pNumLevels, Kiv8u intra,
                                                         const Kiv16s* pScanMatrix, Kiv8u* pLastCoeff) {
    if (!pSrcDst || !pNumLevels || !pScanMatrix || !pLastCoeff) return kivStsNullPointer;
    if (outside(QP, 0, 51)) return kivStsOutOfRange;
    const int shift = h264_qp6[QP] + 15;
    const QuantParams p{FwdQuantTable_16s[h264_qp_rem[QP]].data(), shift, fraction(shift, intra != 0)};
    table().transform4x4(pSrcDst, pSrcDst);
    s16 levels[16];
    s32 last = 0;
    const int n = quantise<s16>(2, pSrcDst, levels, p, pScanMatrix, &last);
    if (!copy_bounded(levels, pSrcDst, 16)) return kivStsLevelOutOfRange;
    store_flat_counts(n, levels[0] != 0, last, pNumLevels, pLastCoeff);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformQuantLumaDC_H264_16s_C1I(Kiv16s* pDCBuf, Kiv16s* pTBuf, Kiv32s QP, Kiv8s* pNumLevels,
                                                       Kiv8u needTransform, const Kiv16s* pScanMatrix,
                                                       Kiv8u* pLastCoeff) {
    if (!pDCBuf || !pTBuf || !pNumLevels || !pScanMatrix || !pLastCoeff) return kivStsNullPointer;
    if (outside(QP, 0, 51)) return kivStsOutOfRange;
    s16 levels[16];
    std::memcpy(levels, pDCBuf, sizeof levels);
    s32 last = 0;
    const int n = luma_dc(levels, pTBuf, QP, needTransform != 0, pScanMatrix, &last, nullptr);
    if (!copy_bounded(levels, pDCBuf, 16)) return kivStsLevelOutOfRange;
    store_flat_counts(n, pTBuf[0] != 0, last, pNumLevels, pLastCoeff);
    return kivStsOk;
}

KIV_API KivStatus kiviTransformQuantChromaDC_H264_16s_C1I(Kiv16s* pDCBuf, Kiv16s* pTBuf, Kiv32s QP, Kiv8s* pNumLevels,
                                                         Kiv8u intra, Kiv8u needTransform) {
    if (!pDCBuf || !pTBuf || !pNumLevels) return kivStsNullPointer;
    if (outside(QP, 0, 39)) return kivStsOutOfRange;
    s16 levels[4];
    std::memcpy(levels, pDCBuf, sizeof levels);
    const int n = chroma_dc<s16, 4>(levels, pTBuf, QP, intra != 0, needTransform != 0, nullptr);
    if (!copy_bounded(levels, pDCBuf, 4)) return kivStsLevelOutOfRange;
    store_flat_counts(n, levels[0] != 0, 0, pNumLevels, nullptr);
    return kivStsOk;
}

KIV_API KivStatus kiviSumsDiff16x16Blocks4x4_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pPred,
                                                     Kiv32s predStep, Kiv16s* pSums, Kiv16s* pDiff) {
    return sums_call(table().sums_diff[0], pSrc, srcStep, pPred, predStep, pSums, pDiff);
}

KIV_API KivStatus kiviSumsDiff8x8Blocks4x4_8u16s_C1(const Kiv8u* pSrc, Kiv32s srcStep, const Kiv8u* pPred,
                                                   Kiv32s predStep, Kiv16s* pSums, Kiv16s* pDiff) {
    return sums_call(table().sums_diff[1], pSrc, srcStep, pPred, predStep, pSums, pDiff);
}

KIV_API KivStatus kiviSumsDiff16x16Blocks4x4_16u32s_C1R(const Kiv16u* pSrc, Kiv32s srcStep, const Kiv16u* pPred,
                                                       Kiv32s predStep, Kiv32s* pSums, Kiv16s* pDiff) {
    return sums_call(table().sums_diff_hbd[0], pSrc, srcStep, pPred, predStep, pSums, pDiff);
}

KIV_API KivStatus kiviSumsDiff8x8Blocks4x4_16u32s_C1R(const Kiv16u* pSrc, Kiv32s srcStep, const Kiv16u* pPred,
                                                     Kiv32s predStep, Kiv32s* pSums, Kiv16s* pDiff) {
    return sums_call(table().sums_diff_hbd[1], pSrc, srcStep, pPred, predStep, pSums, pDiff);
}

}  // extern "C"
