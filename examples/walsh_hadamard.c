/* A Walsh-Hadamard transform of order 10 (1024 points) through a work buffer
 * that the caller provides: ask for its size, allocate it 16-byte aligned (the
 * kernels use aligned vector moves on it and do not test its alignment), run,
 * and check the result against the defining sum. Returns 1 on a mismatch. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "tqfgen.h"

enum { ORDER = 10, N = 1 << ORDER };

/* dst[i] = sum_j src[j] (-1)^popcount(i & j): natural Hadamard order. */
static double hadamard_sum(const float* src, int i) {
    double s = 0.0;
    for (int j = 0; j < N; ++j) s += __builtin_popcount((unsigned)(i & j)) % 2 ? -src[j] : src[j];
    return s;
}

int main(void) {
    int bytes = 0;
    if (tqfgWHTGetBufferSize_32f(ORDER, &bytes) != tqfStsNoError) return 1;
    printf("order %d: work buffer of %d bytes\n", ORDER, bytes);

    /* aligned_alloc wants a size that is a multiple of the alignment. */
    unsigned char* buffer = aligned_alloc(16, ((size_t)bytes + 15) / 16 * 16);
    float* x = malloc(N * sizeof *x);
    float* y = malloc(N * sizeof *y);
    float* z = malloc(N * sizeof *z);
    if (!buffer || !x || !y || !z) return 1;
    for (int i = 0; i < N; ++i) x[i] = (float)((i * 37 % 101) - 50) / 16.0f;

    int failures = 0;
    if (tqfgWHT_10_32f(x, y, tqfNoDivByAny, buffer) != tqfStsNoError) return 1;
    for (int i = 0; i < N; ++i) {
        const double want = hadamard_sum(x, i);
        /* Inputs are multiples of 1/16 below 4 in size: every partial sum is
         * exact in float, so the kernel must match the sum exactly. */
        if ((double)y[i] != want) {
            if (failures < 5) printf("  y[%d] = %g, the sum gives %g\n", i, y[i], want);
            ++failures;
        }
    }
    printf("y[0..3] = %g %g %g %g\n", y[0], y[1], y[2], y[3]);

    /* The transform is its own inverse up to N; dividing by sqrt(N) on both
     * passes (32 here, exactly) gives the input back. The generic entry takes
     * the order as an argument and makes the same call. */
    if (tqfgWHT_32f(x, y, ORDER, tqfDivBySqrtN, buffer) != tqfStsNoError ||
        tqfgWHT_32f(y, z, ORDER, tqfDivBySqrtN, buffer) != tqfStsNoError)
        return 1;
    for (int i = 0; i < N; ++i)
        if (fabsf(z[i] - x[i]) > 1e-5f) {
            if (failures < 5) printf("  twice: z[%d] = %g, not %g\n", i, z[i], x[i]);
            ++failures;
        }

    free(buffer);
    free(x);
    free(y);
    free(z);
    printf(failures ? "walsh_hadamard: %d mismatches\n" : "walsh_hadamard: matches the sum, and twice is the identity\n",
           failures);
    return failures != 0;
}
