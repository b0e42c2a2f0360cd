/* An application that defines its own kivsFree: kiviFree must reach it. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "kivvc.h"

static int calls;

/* Releases the block as the library does: the raw address sits in the
 * pointer-sized slot just below it. */
void kivsFree(void *block) {
    void *raw;
    ++calls;
    if (!block) return;
    memcpy(&raw, (Kiv8u *)block - sizeof(void *), sizeof raw);
    i_free(raw);
}

int main(void) {
    Kiv8u *p = kivsMalloc_8u(16);
    if (!p) return 2;
    kiviFree(p);
    if (calls != 1) {
        fprintf(stderr, "kiviFree did not go through the exported kivsFree\n");
        return 1;
    }
    return 0;
}
