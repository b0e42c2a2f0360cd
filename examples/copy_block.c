/* Half-sample prediction of an 8x8 block, then a residual added to it. */
#include <stdio.h>

#include "kivvc.h"

int main(void) {
    Kiv8u ref[9 * 9], pred[8 * 8];
    Kiv16s residual[8 * 8];
    for (int i = 0; i < 81; ++i) ref[i] = (Kiv8u)(i * 3);
    for (int i = 0; i < 64; ++i) residual[i] = (Kiv16s)(i - 32);
    /* acc 3: half-sample in both directions; rounding 0: round halves up. */
    if (kiviCopy8x8HP_8u_C1R(ref, 9, pred, 8, 3, 0) != kivStsOk) return 1;
    if (kiviAdd8x8_16s8u_C1IRS(residual, 8 * sizeof(Kiv16s), pred, 8) != kivStsOk) return 1;
    printf("%s %s: first sample %d\n", kivvcGetLibVersion()->libraryName, kivvcGetLibVersion()->versionText, pred[0]);
    return pred[0] == 0 ? 0 : 1; /* (0 + 3 + 27 + 30 + 2) >> 2 = 15, plus -32, saturates to 0 */
}
