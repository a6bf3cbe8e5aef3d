/* The discrete Hartley transform is its own inverse up to N: two calls that
 * each divide by sqrt(N) (flag tqfDivBySqrtN) give the input back. This
 * program does that at every length, in single and double precision, checks
 * one transform against the defining sum
 *     H[k] = sum_n x[n] (cos(2 pi n k/N) + sin(2 pi n k/N)),
 * and returns 1 on a mismatch. The output is N values in natural order (no
 * packed layout). */
#include <math.h>
#include <stdio.h>

#include "tqfgen.h"

/* Largest |H[k] - sum| over the largest |sum|, at flag tqfNoDivByAny. */
static double error_against_sum(const double* x, const double* h, int n) {
    const double pi = 3.14159265358979323846;
    double err = 0.0, peak = 0.0;
    for (int k = 0; k < n; ++k) {
        double s = 0.0;
        for (int j = 0; j < n; ++j) {
            const double a = 2 * pi * (j * k % n) / n;
            s += x[j] * (cos(a) + sin(a));
        }
        err = fmax(err, fabs(h[k] - s));
        peak = fmax(peak, fabs(s));
    }
    return err / peak;
}

int main(void) {
    int failures = 0;

    /* N = 8 with the fixed-length kernel: a unit impulse has the flat
     * transform 1/sqrt(8) at flag 4, and a second call gives it back. */
    double impulse[8] = {1, 0, 0, 0, 0, 0, 0, 0}, h[8], back[8];
    if (tqfgHartley_8_64f(impulse, h, tqfDivBySqrtN) != tqfStsNoError ||
        tqfgHartley_8_64f(h, back, tqfDivBySqrtN) != tqfStsNoError)
        return 1;
    printf("N = 8, impulse: H = %.6f ... %.6f, twice: %g %g ... %g\n", h[0], h[7], back[0], back[1], back[7]);

    /* Every length through the generic entries (the length as an argument). */
    for (int n = 2; n <= 64; ++n) {
        double x[64], y[64], z[64];
        float xf[64], yf[64];
        for (int i = 0; i < n; ++i) {
            x[i] = sin(0.7 * i * i + n) + 0.25 * i;
            xf[i] = (float)x[i];
        }
        /* Twice with flag 4: the input. */
        if (tqfgHartley_64f(x, y, n, tqfDivBySqrtN) != tqfStsNoError ||
            tqfgHartley_64f(y, z, n, tqfDivBySqrtN) != tqfStsNoError)
            return 1;
        /* In place (src == dst) is allowed: N elements in, N out. */
        if (tqfgHartley_32f(xf, yf, n, tqfDivBySqrtN) != tqfStsNoError ||
            tqfgHartley_32f(yf, yf, n, tqfDivBySqrtN) != tqfStsNoError)
            return 1;
        for (int i = 0; i < n; ++i)
            if (fabs(z[i] - x[i]) > 1e-13 || fabsf(yf[i] - xf[i]) > 1e-5f) {
                printf("  N = %d: twice gives element %d as %g (double), %g (float), not %g\n", n, i, z[i], yf[i],
                       x[i]);
                ++failures;
                break;
            }
        /* Once, unscaled, against the sum. */
        if (tqfgHartley_64f(x, y, n, tqfNoDivByAny) != tqfStsNoError) return 1;
        const double err = error_against_sum(x, y, n);
        if (err > 1e-14) {
            printf("  N = %d: error %.3g against the sum\n", n, err);
            ++failures;
        }
    }

    printf(failures ? "hartley: %d mismatches\n" : "hartley: matches the sum, and twice with flag 4 is the identity\n",
           failures);
    return failures != 0;
}
