// Exported sprite-warping, global-motion and brightness functions.
#include <cstring>

#include "core/arith.h"
#include "kivvc.h"
#include "mpeg4/warp_kernels.h"

using namespace kivvc::warp;

namespace {

// n // d: division with halves away from zero (d > 0).
std::int64_t div_round_away(std::int64_t n, std::int64_t d) {
    const std::int64_t half = d >> 1;
    return (n >= 0 ? n + half : n - half) / d;
}

// Smallest power of two not below v (1 below 2), and its logarithm.
void power_of_two_at_least(int v, std::int32_t* pow, std::int32_t* log) {
    int p = 1, l = 0;
    while (p < v) {
        p <<= 1;
        ++l;
    }
    *pow = p;
    *log = l;
}

void init_affine(WarpSpec& s, int points, int W, int H) {
    using i64 = std::int64_t;
    const int x0 = s.x0, y0 = s.y0, Wp = s.w_pow, Hp = s.h_pow;
    s.i1v = static_cast<std::int32_t>(16 * i64(x0 + Wp) +
                                      div_round_away(i64(W - Wp) * (s.i0 - 16 * x0) + i64(Wp) * (s.i1 - 16 * (x0 + W)), W));
    s.j1v = static_cast<std::int32_t>(16 * i64(y0) +
                                      div_round_away(i64(W - Wp) * (s.j0 - 16 * y0) + i64(Wp) * (s.j1 - 16 * y0), W));
    if (points == 3) {
        s.i2v = static_cast<std::int32_t>(16 * i64(x0) +
                                          div_round_away(i64(H - Hp) * (s.i0 - 16 * x0) + i64(Hp) * (s.i2 - 16 * x0), H));
        s.j2v = static_cast<std::int32_t>(
            16 * i64(y0 + Hp) + div_round_away(i64(H - Hp) * (s.j0 - 16 * y0) + i64(Hp) * (s.j2 - 16 * (y0 + H)), H));
    }
    int sigma;
    if (points == 2) {
        s.P = s.i1v - s.i0;
        s.U = s.j1v - s.j0;
        s.Q = s.j0 - s.j1v;
        s.V = s.i1v - s.i0;
        sigma = s.alpha;
    } else if (s.alpha >= s.beta) {
        s.P = s.i1v - s.i0;
        s.U = s.j1v - s.j0;
        s.Q = kivvc::shift_left(s.i2v - s.i0, s.alpha - s.beta);
        s.V = kivvc::shift_left(s.j2v - s.j0, s.alpha - s.beta);
        sigma = s.alpha;
    } else {
        s.P = kivvc::shift_left(s.i1v - s.i0, s.beta - s.alpha);
        s.U = kivvc::shift_left(s.j1v - s.j0, s.beta - s.alpha);
        s.Q = s.i2v - s.i0;
        s.V = s.j2v - s.j0;
        sigma = s.beta;
    }
    s.sigma = sigma;
    s.two_sigma = 1 << sigma;
    // Half of one 1/s step at the scale of the numerators; none when that is
    // below one unit.
    const int e = sigma + 2 - s.accuracy;
    s.affine_round = e >= 0 ? 1 << e : 0;
    s.gmv_shift = sigma + 3 - s.accuracy;
    const std::int32_t inc[12] = {s.Q, s.Q, s.V, s.V, 2 * s.P, 2 * s.P, 2 * s.U, 2 * s.U, 0, s.P, 0, s.U};
    std::memcpy(s.increments, inc, sizeof inc);
}

void init_perspective(WarpSpec& s, const int* du, const int* dv, int W, int H) {
    const int acc = s.accuracy, x0 = s.x0, y0 = s.y0;
    const int i0 = (du[0] + 2 * x0) << acc, j0 = (dv[0] + 2 * y0) << acc;
    const int i1 = (du[0] + du[1] + 2 * (x0 + W)) << acc, j1 = (dv[0] + dv[1] + 2 * y0) << acc;
    const int i2 = (du[0] + du[2] + 2 * x0) << acc, j2 = (dv[0] + dv[2] + 2 * (y0 + H)) << acc;
    const int i3 = (du[0] + du[1] + du[2] + du[3] + 2 * (x0 + W)) << acc;
    const int j3 = (dv[0] + dv[1] + dv[2] + dv[3] + 2 * (y0 + H)) << acc;
    // 32-bit integer terms (64-bit here, equal wherever 32 bits suffice).
    using i64 = std::int64_t;
    const i64 dX = i64(i0) - i1 + i3 - i2, dY = i64(j0) - j1 + j3 - j2;
    const i64 g = (dX * (j2 - j3) - i64(i2 - i3) * dY) * H;
    const i64 h = (i64(i1 - i3) * dY - dX * (j1 - j3)) * W;
    const i64 d0 = i64(i1 - i3) * (j2 - j3) - i64(i2 - i3) * (j1 - j3);
    const double G = double(g), Hh = double(h), D0 = double(d0), dW = W, dH = H;
    s.g = G;
    s.h = Hh;
    s.d0 = D0;
    s.a = i1 * G + (i1 - i0) * D0 * dH;
    s.b = i2 * Hh + (i2 - i0) * D0 * dW;
    s.c = i0 * D0 * dW * dH;
    s.d = j1 * G + (j1 - j0) * D0 * dH;
    s.e = j2 * Hh + (j2 - j0) * D0 * dW;
    s.f = j0 * D0 * dW * dH;
    s.k = D0 * dW * dH;
}

const WarpSpec* checked(const KiviWarpSpec_MPEG4* spec) {
    const WarpSpec* s = spec_in(spec);
    return s->id == kWarpId ? s : nullptr;
}

}  // namespace

extern "C" {

KIV_API KivStatus kiviWarpGetSize_MPEG4(int* pSpecSize) {
    if (!pSpecSize) return kivStsNullPointer;
    *pSpecSize = kWarpSpecBytes;
    return kivStsOk;
}

KIV_API KivStatus kiviWarpInit_MPEG4(KiviWarpSpec_MPEG4* pSpec, const int* pDU, const int* pDV, int numWarpingPoints,
                                     int spriteType, int warpingAccuracy, int roundingType, int quarterSample,
                                     int fcode, const KiviRect* spriteRect, const KiviRect* vopRect) {
    if (!pSpec) return kivStsNullPointer;
    if (numWarpingPoints < 0 || numWarpingPoints > 4) return kivStsOutOfRange;
    if (numWarpingPoints == 4 && spriteType != 1) return kivStsOutOfRange;
    if (warpingAccuracy < 0 || warpingAccuracy > 3 || fcode < 1 || fcode > 7) return kivStsOutOfRange;
    if (!spriteRect || !vopRect) return kivStsNullPointer;  // required; refused rather than read
    if (spriteRect->width < 1 || spriteRect->height < 1 || vopRect->width < 1 || vopRect->height < 1)
        return kivStsBadSize;

    WarpSpec& s = *spec_in(pSpec);
    std::memset(&s, 0, sizeof s);  // also clears any earlier identifier
    const int acc = warpingAccuracy;
    s.rounding = (spriteType != 1 && roundingType) ? 1 : 0;
    s.quarter_sample = quarterSample ? 1 : 0;
    s.points = numWarpingPoints;
    s.accuracy = acc;
    s.sprite_type = spriteType;
    s.mv_min = -(16 << fcode);
    s.mv_max = (16 << fcode) - 1;
    s.sprite_x = spriteRect->x;
    s.sprite_y = spriteRect->y;
    s.sprite_w = spriteRect->width;
    s.sprite_h = spriteRect->height;
    s.chroma_x = spriteRect->x / 2;
    s.chroma_y = spriteRect->y / 2;
    s.chroma_w = (spriteRect->width + 1) >> 1;
    s.chroma_h = (spriteRect->height + 1) >> 1;
    s.x0 = vopRect->x;
    s.y0 = vopRect->y;
    const int W = vopRect->width, H = vopRect->height;
    power_of_two_at_least(W, &s.w_pow, &s.alpha);
    power_of_two_at_least(H, &s.h_pow, &s.beta);
    s.t = 128 - (s.rounding << (3 - acc));
    s.sum_offsets = 1920 * (2 << acc);
    if (numWarpingPoints == 0) {
        s.id = kWarpId;
        return kivStsOk;
    }
    if (!pDU || !pDV) return kivStsNullPointer;

    s.i0 = 8 * (pDU[0] + 2 * s.x0);
    s.j0 = 8 * (pDV[0] + 2 * s.y0);
    if (numWarpingPoints > 1) {
        s.i1 = 8 * (pDU[0] + pDU[1] + 2 * (s.x0 + W));
        s.j1 = 8 * (pDV[0] + pDV[1] + 2 * s.y0);
    }
    if (numWarpingPoints > 2) {
        s.i2 = 8 * (pDU[0] + pDU[2] + 2 * s.x0);
        s.j2 = 8 * (pDV[0] + pDV[2] + 2 * (s.y0 + H));
    }
    if (numWarpingPoints == 1) {
        // Chroma translation on the 1/s grid, kept in 1/16 units.
        const int down = 3 - acc;
        const int cx = s.i0 >> down, cy = s.j0 >> down;
        const bool sprite = spriteType == 1;
        s.chroma_dx = kivvc::shift_left(sprite ? (cx + 1) >> 1 : (cx >> 1) | (cx & 1), down);
        s.chroma_dy = kivvc::shift_left(sprite ? (cy + 1) >> 1 : (cy >> 1) | (cy & 1), down);
    } else if (numWarpingPoints < 4) {
        init_affine(s, numWarpingPoints, W, H);
    } else {
        init_perspective(s, pDU, pDV, W, H);
    }
    s.id = kWarpId;
    return kivStsOk;
}

KIV_API KivStatus kiviWarpLuma_MPEG4_8u_C1R(const Kiv8u* pSrcY, int srcStepY, Kiv8u* pDstY, int dstStepY,
                                            const KiviRect* dstRect, const KiviWarpSpec_MPEG4* pSpec) {
    if (!pSpec || !pSrcY || !pDstY) return kivStsNullPointer;
    const WarpSpec* s = checked(pSpec);
    if (!s) return kivStsContextMismatch;
    if (!dstRect) return kivStsNullPointer;
    if (dstRect->width < 1 || dstRect->height < 1) return kivStsOk;
    const Reference ref{pSrcY, srcStepY, s->sprite_w, s->sprite_h};
    const Target dst{pDstY, dstStepY, dstRect->x, dstRect->y, dstRect->width, dstRect->height};
    table().warp[s->points](*s, ref, dst, false);
    return kivStsOk;
}

KIV_API KivStatus kiviWarpChroma_MPEG4_8u_P2R(const Kiv8u* pSrcCb, int srcStepCb, const Kiv8u* pSrcCr, int srcStepCr,
                                              Kiv8u* pDstCb, int dstStepCb, Kiv8u* pDstCr, int dstStepCr,
                                              const KiviRect* dstRect, const KiviWarpSpec_MPEG4* pSpec) {
    if (!pSpec || !pSrcCb || !pDstCb || !pSrcCr || !pDstCr) return kivStsNullPointer;
    const WarpSpec* s = checked(pSpec);
    if (!s) return kivStsContextMismatch;
    if (!dstRect) return kivStsNullPointer;
    if (dstRect->width < 1 || dstRect->height < 1) return kivStsOk;
    const auto warp = table().warp[s->points];
    warp(*s, Reference{pSrcCb, srcStepCb, s->chroma_w, s->chroma_h},
         Target{pDstCb, dstStepCb, dstRect->x, dstRect->y, dstRect->width, dstRect->height}, true);
    warp(*s, Reference{pSrcCr, srcStepCr, s->chroma_w, s->chroma_h},
         Target{pDstCr, dstStepCr, dstRect->x, dstRect->y, dstRect->width, dstRect->height}, true);
    return kivStsOk;
}

KIV_API KivStatus kiviCalcGlobalMV_MPEG4(int xOffset, int yOffset, KivMotionVector* pGMV,
                                         const KiviWarpSpec_MPEG4* pSpec) {
    if (!pSpec || !pGMV) return kivStsNullPointer;
    const WarpSpec* s = checked(pSpec);
    if (!s) return kivStsContextMismatch;
    int mx = 0, my = 0;
    if (s->points == 1) {
        const int down = 3 - s->quarter_sample;
        mx = static_cast<Kiv16s>(s->i0 >> down);
        my = static_cast<Kiv16s>(s->j0 >> down);
    } else if (s->points == 2 || s->points == 3) {
        using i64 = std::int64_t;
        const int acc = s->accuracy, step = 2 << acc;
        i64 sx = 0, sy = 0;
        for (int rw = 0; rw < 16; ++rw)
            for (int c = 0; c < 16; ++c) {
                const i64 i = xOffset + c, j = yOffset + rw;
                const i64 fs = (s->i0 >> (3 - acc)) + ((s->P * i + s->Q * j + s->affine_round) >> s->gmv_shift);
                const i64 gs = (s->j0 >> (3 - acc)) + ((s->U * i + s->V * j + s->affine_round) >> s->gmv_shift);
                sx += fs - step * i;
                sy += gs - step * j;
            }
        const int k = acc + 8 - s->quarter_sample;
        const i64 half = i64{1} << (k - 1);
        mx = static_cast<int>((sx - (sx < 0) + half) >> k);
        my = static_cast<int>((sy - (sy < 0) + half) >> k);
    }
    // Four points (static sprites only): no global motion, (0, 0).
    pGMV->dx = static_cast<Kiv16s>(kivvc::clip3(s->mv_min, s->mv_max, mx));
    pGMV->dy = static_cast<Kiv16s>(kivvc::clip3(s->mv_min, s->mv_max, my));
    return kivStsOk;
}

KIV_API KivStatus kiviChangeSpriteBrightness_MPEG4_8u_C1IR(Kiv8u* pSrcDst, int srcDstStep, int width, int height,
                                                           int brightnessChangeFactor) {
    if (!pSrcDst) return kivStsNullPointer;
    if (brightnessChangeFactor < -112 || brightnessChangeFactor > 1648) return kivStsOutOfRange;
    if (brightnessChangeFactor == 0) return kivStsOk;
    const int f = brightnessChangeFactor;
    const int m = (f * 1024 + (f < 0 ? -50 : 50)) / 100 + 1024;
    for (int y = 0; y < height; ++y) {
        Kiv8u* row = pSrcDst + std::ptrdiff_t(y) * srcDstStep;
        for (int x = 0; x < width; ++x) row[x] = kivvc::clip_u8((row[x] * m + 520) >> 10);
    }
    return kivStsOk;
}

}  // extern "C"
