/* Compiled as strict C99: the public header must be valid C. */
#include "kivvc.h"

int kivvc_header_is_c99(void) {
    KiviSize s = {8, 8};
    KiviRect r = {0, 0, 8, 8};
    KiviPoint p = {1, 2};
    return s.width + r.height + p.y + (int)sizeof(KivVersion) > 0 ? kivStsOk : kivStsBadSize;
}
