/* The spectrum of a real signal in each packed layout (CCS, Pack, Perm), and
 * back to the signal.
 *
 * The forward real kernels write the harmonics 0..N/2 of a real sequence; the
 * rest of the spectrum is their mirror, X[N-k] = conj X[k]. To go back, this
 * program reads each layout slot by slot into a full complex spectrum of N
 * bins and runs the complex inverse DFT on it. Returns 1 if a round trip does
 * not give the signal back. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "tqfgen.h"

enum Layout { CCS, PACK, PERM };
static const char* const kLayoutName[] = {"CCS", "Pack", "Perm"};

/* Elements a forward kernel writes: CCS keeps the zero imaginary parts of
 * X[0] (and of X[N/2] for even N), Pack and Perm drop them. */
static int packed_length(enum Layout layout, int n) {
    if (layout != CCS) return n;
    return n % 2 == 0 ? n + 2 : n + 1;
}

/* Reads harmonic k (0 <= k <= N/2) out of a packed spectrum. */
static tqf64fc harmonic(enum Layout layout, int n, const tqf64f* p, int k) {
    tqf64fc x = {0.0, 0.0};
    const int nyquist = n % 2 == 0 && k == n / 2;
    if (k == 0) {
        x.re = p[0]; /* CCS slot 1 holds Im X[0] = 0 */
    } else if (layout == CCS) {
        x.re = p[2 * k]; /* also Nyquist: slot N, its zero in slot N+1 */
        x.im = p[2 * k + 1];
    } else if (nyquist) {
        x.re = layout == PACK ? p[n - 1] : p[1]; /* Perm moves Re X[N/2] beside X[0] */
    } else if (layout == PERM && n % 2 == 0) {
        x.re = p[2 * k]; /* even N: the CCS slots of X[k] */
        x.im = p[2 * k + 1];
    } else {
        x.re = p[2 * k - 1]; /* Pack, and Perm of odd N */
        x.im = p[2 * k];
    }
    return x;
}

/* The full N-bin spectrum: harmonics 0..N/2 from the layout, the others as
 * their conjugate mirror. */
static void expand(enum Layout layout, int n, const tqf64f* packed, tqf64fc* spectrum) {
    for (int k = 0; k <= n / 2; ++k) spectrum[k] = harmonic(layout, n, packed, k);
    for (int k = n / 2 + 1; k < n; ++k) {
        spectrum[k].re = spectrum[n - k].re;
        spectrum[k].im = -spectrum[n - k].im;
    }
}

static void print_packed(enum Layout layout, int n, const tqf64f* p) {
    printf("  %-4s", kLayoutName[layout]);
    /* Rounding residue of the zero bins printed as 0. */
    for (int i = 0; i < packed_length(layout, n); ++i) printf(" % 8.4f", fabs(p[i]) < 1e-12 ? 0.0 : p[i]);
    printf("\n");
}

/* Forward into `layout` through the generic entry (the length as an
 * argument), expand, inverse through the complex kernel, compare. */
static int round_trip(enum Layout layout, int n, const tqf64f* x, int verbose) {
    tqf64f packed[66];
    tqf64fc spectrum[64], back[64];
    tqfStatus st;
    switch (layout) {
    case CCS: st = tqfgDFTFwd_RToCCS_64f(x, packed, n, tqfNoDivByAny); break;
    case PACK: st = tqfgDFTFwd_RToPack_64f(x, packed, n, tqfNoDivByAny); break;
    default: st = tqfgDFTFwd_RToPerm_64f(x, packed, n, tqfNoDivByAny); break;
    }
    if (st != tqfStsNoError) return 1;
    if (verbose) print_packed(layout, n, packed);

    expand(layout, n, packed, spectrum);
    /* Unscaled forward, inverse divided by N: the round trip is the identity. */
    if (tqfgDFTInv_CToC_64fc(spectrum, back, n, tqfDivInvByN) != tqfStsNoError) return 1;
    for (int i = 0; i < n; ++i) {
        if (fabs(back[i].re - x[i]) > 1e-12 || fabs(back[i].im) > 1e-12) {
            printf("  %s, N = %d: element %d came back as %g%+gi, not %g\n", kLayoutName[layout], n, i,
                   back[i].re, back[i].im, x[i]);
            return 1;
        }
    }
    return 0;
}

int main(void) {
    int failures = 0;

    /* N = 8 with the fixed-length kernels: 1 + cos(2 pi n/8) + 0.5 sin(2 pi 3n/8)
     * has X[0] = 8, X[1] = 4 and X[3] = -2i (and their mirrors). */
    const double pi = 3.14159265358979323846;
    tqf64f x[8], ccs[10], pack[8], perm[8];
    for (int n = 0; n < 8; ++n) x[n] = 1.0 + cos(2 * pi * n / 8) + 0.5 * sin(2 * pi * 3 * n / 8);
    if (tqfgDFTFwd_RToCCS_8_64f(x, ccs, tqfNoDivByAny) != tqfStsNoError ||
        tqfgDFTFwd_RToPack_8_64f(x, pack, tqfNoDivByAny) != tqfStsNoError ||
        tqfgDFTFwd_RToPerm_8_64f(x, perm, tqfNoDivByAny) != tqfStsNoError)
        return 1;
    printf("N = 8, packed spectra (unscaled):\n");
    print_packed(CCS, 8, ccs);
    print_packed(PACK, 8, pack);
    print_packed(PERM, 8, perm);

    const enum Layout layouts[] = {CCS, PACK, PERM};
    const tqf64f* const packed[] = {ccs, pack, perm};
    for (int l = 0; l < 3; ++l) {
        tqf64fc spectrum[8], back[8];
        expand(layouts[l], 8, packed[l], spectrum);
        if (fabs(spectrum[1].re - 4) > 1e-12 || fabs(spectrum[3].im + 2) > 1e-12 ||
            fabs(spectrum[5].im - 2) > 1e-12) {
            printf("  %s: unexpected harmonics\n", kLayoutName[layouts[l]]);
            ++failures;
        }
        if (tqfgDFTInv_CToC_8_64fc(spectrum, back, tqfDivInvByN) != tqfStsNoError) return 1;
        for (int n = 0; n < 8; ++n)
            if (fabs(back[n].re - x[n]) > 1e-12 || fabs(back[n].im) > 1e-12) {
                printf("  %s: element %d did not come back\n", kLayoutName[layouts[l]], n);
                ++failures;
                break;
            }
    }

    /* Every length, every layout, through the generic entries; the odd and
     * the short lengths show how the layouts differ. */
    for (int n = 2; n <= 64; ++n) {
        tqf64f signal[64];
        for (int i = 0; i < n; ++i) signal[i] = sin(0.7 * i * i + n) + 0.25 * i;
        const int verbose = n == 4 || n == 9;
        if (verbose) printf("N = %d:\n", n);
        for (int l = 0; l < 3; ++l) failures += round_trip(layouts[l], n, signal, verbose);
    }

    printf(failures ? "real_spectrum: %d round trip(s) failed\n" : "real_spectrum: all round trips exact to 1e-12\n",
           failures);
    return failures != 0;
}
