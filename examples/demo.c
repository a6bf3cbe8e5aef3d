/* Demo: the version record, then a test signal through a few kernels. */
#include <math.h>
#include <stdio.h>

#include "tqfgen.h"

int main(void) {
    const tqfLibVersion* v = tqfgenGetLibVersion();
    printf("%s %d.%d.%d.%d (%s), %s\n", v->fileName, v->versionMajor, v->versionMinor,
           v->buildSeries, v->buildNumber, v->cpuTag, v->versionText);
    return 0;
}
