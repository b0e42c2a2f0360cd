/* A 10-bit H.264 Intra4x4 macroblock reconstructed through a parameter
 * record: at the picture's top-left corner (no neighbouring macroblock),
 * every block predicted with DC, one coded block carrying a DC level. */
#include <stdio.h>

#include "kivvc.h"

int main(void) {
    enum { kWidth = 16 };
    /* Flat level scale for QP % 6 = 0: 16 x normAdjust4x4. */
    static const Kiv16s flatScale[16] = {160, 208, 160, 208, 208, 256, 208, 256,
                                         160, 208, 160, 208, 208, 256, 208, 256};
    Kiv16u plane[16 * kWidth] = {0};
    Kiv32s coeffs[16] = {10}; /* block 0: DC level 10, no AC */
    Kiv32s* cursor = coeffs;
    Kiv32u modes[16];
    KivReconstructHighParams_32s16u rec;
    KivStatus status;
    int k;
    for (k = 0; k < 16; ++k) modes[k] = 2; /* DC */
    rec.ppSrcDstCoeff = &cursor;
    rec.pSrcDstPlane = plane;
    rec.srcDstStep = kWidth * (Kiv32s)sizeof(Kiv16u);
    rec.cbp = 1u << 1; /* bit k + 1: 4x4 block k (decoding order) is coded */
    rec.qp = 24;       /* QP + 6 x (10 - 8) */
    rec.pQuantTable = flatScale;
    rec.bypassFlag = 0;
    rec.bitDepth = 10;
    /* Edge mask: the left (1), above (4), above-left (16) and above-right
     * (32) macroblocks are not available. */
    status = kiviReconstructLumaIntra4x4_H264High_32s16u_IP1R(&rec, modes, 1 | 4 | 16 | 32);
    printf("status %d, first sample %d, %d coefficients taken\n", (int)status, plane[0], (int)(cursor - coeffs));
    /* DC prediction 512 (the 10-bit mid value) plus the residual: the level
     * scaled by 160 (QP / 6 = 4 keeps it as it is), (1600 + 32) >> 6 = 25. */
    return status == kivStsOk && plane[0] == 537 && cursor == coeffs + 16 ? 0 : 1;
}
