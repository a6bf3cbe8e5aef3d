/* A program that uses tqfgen the way an outside project does: through the
 * public headers and the library set of an installed prefix (or of a tree
 * added with add_subdirectory). It calls a few entries, checks their results
 * against direct sums and their statuses, and exits non-zero on any failure.
 *
 *   tqfgen_consumer [<library folder>]
 *
 * With a folder, it also checks that the transform library and the allocator
 * it runs with were loaded from that folder (and not, say, from a build tree). */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <limits.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tqfcore.h"
#include "tqfgen.h"

static int failures = 0;

static void check(int ok, const char* what) {
    if (!ok) {
        fprintf(stderr, "FAILED: %s\n", what);
        ++failures;
    }
}

static const double pi = 3.14159265358979323846;

/* Input values made by integer arithmetic, so every run sees the same data. */
static double sample(int n, int salt) { return (double)((n * 7 + salt * 3) % 11) - 5.0; }

static void complex_dft(void) {
    enum { N = 12 };
    tqf32fc x[N], fixed[N], generic[N];
    for (int n = 0; n < N; ++n) {
        x[n].re = (float)sample(n, 1);
        x[n].im = (float)sample(n, 2);
    }
    check(tqfgDFTFwd_CToC_12_32fc(x, fixed, tqfNoDivByAny) == tqfStsNoError, "tqfgDFTFwd_CToC_12_32fc status");
    check(tqfgDFTFwd_CToC_32fc(x, generic, N, tqfNoDivByAny) == tqfStsNoError, "tqfgDFTFwd_CToC_32fc status");
    double worst = 0.0;
    for (int k = 0; k < N; ++k) {
        double re = 0.0, im = 0.0;
        for (int n = 0; n < N; ++n) {
            const double a = -2.0 * pi * (double)(n * k % N) / N;
            re += x[n].re * cos(a) - x[n].im * sin(a);
            im += x[n].re * sin(a) + x[n].im * cos(a);
        }
        worst = fmax(worst, fmax(fabs(fixed[k].re - re), fabs(fixed[k].im - im)));
    }
    check(worst < 1e-4, "complex DFT of 12 points differs from the direct sum");
    check(memcmp(fixed, generic, sizeof fixed) == 0, "generic complex entry differs from the fixed kernel");
    check(tqfgDFTFwd_CToC_12_32fc(x, fixed, 3) == tqfStsBadFlag, "flag 3 is not tqfStsBadFlag");
    check(tqfgDFTFwd_CToC_32fc(x, generic, 65, tqfNoDivByAny) == tqfStsBadSize, "length 65 is not tqfStsBadSize");
}

static void real_dft(void) {
    enum { N = 8 };
    tqf64f x[N], ccs[N + 2];
    for (int n = 0; n < N; ++n) x[n] = sample(n, 4);
    check(tqfgDFTFwd_RToCCS_8_64f(x, ccs, tqfDivFwdByN) == tqfStsNoError, "tqfgDFTFwd_RToCCS_8_64f status");
    double worst = 0.0;
    for (int k = 0; k <= N / 2; ++k) {
        double re = 0.0, im = 0.0;
        for (int n = 0; n < N; ++n) {
            const double a = -2.0 * pi * (double)(n * k % N) / N;
            re += x[n] * cos(a);
            im += x[n] * sin(a);
        }
        /* CCS: Re X[k], Im X[k] for k = 0..N/2, scaled by 1/N. */
        worst = fmax(worst, fmax(fabs(ccs[2 * k] - re / N), fabs(ccs[2 * k + 1] - im / N)));
    }
    check(worst < 1e-13, "real DFT of 8 points into CCS differs from the direct sum");
    check(tqfgDFTFwd_RToCCS_8_64f(NULL, ccs, tqfDivFwdByN) == tqfStsNullPointer, "null src is not tqfStsNullPointer");
}

/* A DCT-IV plan in a block from the allocator library, released by the caller. */
static void dct4_in_allocated_block(void) {
    enum { N = 16 };
    int size = 0;
    check(tqfgDCT4GetSize_64f(N, &size) == tqfStsNoError && size > 0, "tqfgDCT4GetSize_64f");
    void* block = tqfMalloc(size);
    check(block != NULL && (uintptr_t)block % 16 == 0, "tqfMalloc gives no 16-byte aligned block");
    if (block == NULL) return;
    tqfgDCT4Spec_64f* plan = NULL;
    check(tqfgDCT4Init_64f(&plan, N, block) == tqfStsNoError, "tqfgDCT4Init_64f status");
    tqf64f x[N], y[N];
    for (int j = 0; j < N; ++j) x[j] = sample(j, 5);
    check(tqfgDCT4_64f(x, y, plan) == tqfStsNoError, "tqfgDCT4_64f status");
    double worst = 0.0;
    for (int k = 0; k < N; ++k) {
        double s = 0.0;
        for (int j = 0; j < N; ++j) s += x[j] * cos(pi * (j + 0.5) * (k + 0.5) / N);
        worst = fmax(worst, fabs(y[k] - s));
    }
    check(worst < 1e-12, "DCT-IV of 16 points differs from the direct sum");
    tqfFree(block);
}

static void version(void) {
    const tqfLibVersion* v = tqfgenGetLibVersion();
    check(v != NULL && v == tqfgenGetLibVersion(), "tqfgenGetLibVersion is not one constant record");
    if (v != NULL) check(v->versionMajor == 7, "the loaded library is not of major version 7");
}

/* The folder, resolved, of the loaded object that holds `address`. */
static int loaded_from(const void* address, const char* folder) {
    Dl_info info;
    if (address == NULL || dladdr(address, &info) == 0 || info.dli_fname == NULL) return 0;
    char object[PATH_MAX], expected[PATH_MAX];
    if (realpath(info.dli_fname, object) == NULL || realpath(folder, expected) == NULL) return 0;
    char* slash = strrchr(object, '/');
    if (slash == NULL) return 0;
    *slash = '\0';
    if (strcmp(object, expected) != 0) {
        fprintf(stderr, "loaded %s, expected it from %s\n", info.dli_fname, expected);
        return 0;
    }
    return 1;
}

int main(int argc, char** argv) {
    version();
    complex_dft();
    real_dft();
    dct4_in_allocated_block();
    if (argc > 1) {
        /* The version record lives in libtqfgenv8; tqfMalloc as the process resolves it. */
        check(loaded_from(tqfgenGetLibVersion(), argv[1]), "libtqfgenv8 is not loaded from the given folder");
        check(loaded_from(dlsym(RTLD_DEFAULT, "tqfMalloc"), argv[1]), "libtqfcore is not loaded from the given folder");
    }
    if (failures != 0) {
        fprintf(stderr, "%d check(s) failed\n", failures);
        return 1;
    }
    printf("tqfgen consumer: all checks passed\n");
    return 0;
}
