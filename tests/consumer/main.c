#include <string.h>

#include "kivvc.h"

int main(void) {
    return strcmp(kivvcGetLibVersion()->versionText, "5.2") != 0;
}
