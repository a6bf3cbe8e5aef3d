// The version record: a constant of the library, valid from load on.
#include "tqfgen.h"

static const tqfLibVersion tqfLibraryVersion = {
    7, 0, 205, 570,
    {'v', '8', '\0', '\0'},
    "tqfgenv8-7.0.dll",
    "7.0 build 205.85",
    "Nov 26 2011",
};

extern "C" const tqfLibVersion* tqfgenGetLibVersion(void) { return &tqfLibraryVersion; }
