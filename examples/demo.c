/* Demo: the version record, then a test signal through a few kernels. */
#include <math.h>
#include <stdio.h>

#include "tqfgen.h"

static void show(const char* title, const tqf32fc* v, int n) {
    printf("%s\n", title);
    for (int k = 0; k < n; ++k) printf("  [%2d] % .6f % .6fi\n", k, v[k].re, v[k].im);
}

int main(void) {
    const tqfLibVersion* v = tqfgenGetLibVersion();
    printf("%s %d.%d.%d.%d (%s), %s\n\n", v->fileName, v->versionMajor, v->versionMinor, v->buildSeries,
           v->buildNumber, v->cpuTag, v->versionText);

    /* A cosine of frequency 1 plus a sine of frequency 3, sampled 8 times. */
    const double pi = 3.14159265358979323846;
    tqf32fc x[8], X[8];
    for (int n = 0; n < 8; ++n) {
        x[n].re = (float)(cos(2 * pi * n / 8) + 0.5 * sin(2 * pi * 3 * n / 8));
        x[n].im = 0.0f;
    }
    show("signal:", x, 8);
    if (tqfgDFTFwd_CToC_8_32fc(x, X, tqfDivFwdByN) != tqfStsNoError) return 1;
    show("tqfgDFTFwd_CToC_8_32fc, divided by N (bins 1 and 7: 0.5; bins 3 and 5: -+0.25i):", X, 8);

    /* The same in double precision, and a status for a bad flag. */
    tqf64fc xd[4] = {{1, 0}, {1, 0}, {1, 0}, {1, 0}}, Xd[4];
    tqfgDFTFwd_CToC_4_64fc(xd, Xd, tqfNoDivByAny);
    printf("\ntqfgDFTFwd_CToC_4_64fc of a constant: %g %g %g %g\n", Xd[0].re, Xd[1].re, Xd[2].re, Xd[3].re);
    printf("flag 3 gives status %d (tqfStsBadFlag)\n", tqfgDFTFwd_CToC_4_64fc(xd, Xd, 3));
    return 0;
}
