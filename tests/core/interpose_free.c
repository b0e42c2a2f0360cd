/* An application that defines its own kivsFree: kiviFree must reach it. */
#include <stdio.h>
#include <stdlib.h>

#include "kivvc.h"

static int calls;

void kivsFree(void *block) {
    (void)block;
    ++calls;
}

int main(void) {
    Kiv8u *p = kivsMalloc_8u(16);
    if (!p) return 2;
    kiviFree(p); /* leaks on purpose: our kivsFree only counts */
    if (calls != 1) {
        fprintf(stderr, "kiviFree did not go through the exported kivsFree\n");
        return 1;
    }
    return 0;
}
