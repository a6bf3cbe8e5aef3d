/* A DCT-IV plan's life cycle, both ways:
 *
 *   1. GetSize, then a block of your own, then Init in it. The planner places
 *      its objects on 32-byte boundaries inside the block, and the reported
 *      size has room for that from any start on x86-64. On i386 a block in the
 *      upper half of the address space needs up to 32 bytes more unless it is
 *      32-byte aligned, so the block here is 32-byte aligned. When you are done
 *      you stop using the plan and release the block yourself: no Free.
 *   2. InitAlloc, which takes a block from the library's allocator, and Free,
 *      which gives it back.
 *
 * Both plans transform the same signal; the result is checked against the
 * direct sum y[k] = sum_j x[j] cos(pi (j + 1/2)(k + 1/2) / n) and the two
 * plans must give the same bits. Returns 1 on a mismatch. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tqfgen.h"

enum { LENGTH = 256 };

static int check_against_sum(const char* how, const float* x, const float* y) {
    const double pi = 3.14159265358979323846;
    double err = 0.0, peak = 0.0;
    for (int k = 0; k < LENGTH; ++k) {
        double s = 0.0;
        for (int j = 0; j < LENGTH; ++j) s += x[j] * cos(pi * (j + 0.5) * (k + 0.5) / LENGTH);
        err = fmax(err, fabs(y[k] - s));
        peak = fmax(peak, fabs(s));
    }
    printf("%s: largest error %.3g of a largest output %.3g\n", how, err, peak);
    return err > 1e-5 * peak;
}

int main(void) {
    float x[LENGTH], y_own[LENGTH], y_alloc[LENGTH];
    for (int j = 0; j < LENGTH; ++j) x[j] = (float)(sin(0.05 * j * j) + 0.001 * j);
    int failures = 0;

    /* 1. Your own block. */
    int bytes = 0;
    if (tqfgDCT4GetSize_32f(LENGTH, &bytes) != tqfStsNoError) return 1;
    void* block = aligned_alloc(32, ((size_t)bytes + 31) / 32 * 32);
    if (!block) return 1;
    tqfgDCT4Spec_32f* plan = NULL;
    if (tqfgDCT4Init_32f(&plan, LENGTH, block) != tqfStsNoError) return 1;
    printf("plan of %d points in a block of %d bytes\n", LENGTH, bytes);
    if (tqfgDCT4_32f(x, y_own, plan) != tqfStsNoError) return 1;
    failures += check_against_sum("own block", x, y_own);
    free(block); /* the plan lived entirely in the block; nothing else to end */

    /* 2. The library's allocator. */
    tqfgDCT4Spec_32f* owned = NULL;
    if (tqfgDCT4InitAlloc_32f(&owned, LENGTH) != tqfStsNoError) return 1;
    if (tqfgDCT4_32f(x, y_alloc, owned) != tqfStsNoError) return 1;
    failures += check_against_sum("InitAlloc", x, y_alloc);
    if (memcmp(y_own, y_alloc, sizeof y_own) != 0) {
        printf("the two plans disagree\n");
        ++failures;
    }

    /* The transform is unscaled: applied twice it gives n/2 times the input.
     * In place (src == dst) is allowed. */
    if (tqfgDCT4_32f(y_alloc, y_alloc, owned) != tqfStsNoError) return 1;
    for (int j = 0; j < LENGTH; ++j)
        if (fabsf(y_alloc[j] / (LENGTH / 2) - x[j]) > 1e-5f) {
            printf("twice: element %d is %g, not %g\n", j, y_alloc[j] / (LENGTH / 2), x[j]);
            ++failures;
            break;
        }
    if (tqfgDCT4Free_32f(owned) != tqfStsNoError) return 1;

    /* A length that is not a power of two is refused. */
    if (tqfgDCT4GetSize_32f(100, &bytes) != tqfStsBadSize) ++failures;

    printf(failures ? "dct4_plan: %d failures\n" : "dct4_plan: both plans match the direct sum\n", failures);
    return failures != 0;
}
