/* The spectrum of a real signal in each packed layout (CCS, Pack, Perm), and
 * back to the signal through the inverse real kernel of the same layout
 * (tqfgDFTInv_CCSToR, _PackToR, _PermToR).
 *
 * How to read a layout, with H = N/2 rounded down, Rk = Re X[k], Ik = Im X[k]:
 *
 *   CCS   R0, 0, R1, I1, ..., RH, IH     N+2 elements (even N: IH is the zero
 *                                        Im X[N/2]) or N+1 (odd N)
 *   Pack  R0, R1, I1, ..., R(N/2)        N elements; at odd N it ends RH, IH
 *   Perm  R0, R(N/2), R1, I1, ...        N elements; at odd N it is Pack
 *
 * The harmonics above H are the mirror X[N-k] = conj X[k]. The inverse CCS
 * kernel never reads the two zero slots (slot 1, and slot N+1 at even N), so
 * this program puts NaN there before going back. Returns 1 if a harmonic or
 * a round trip is wrong. */
#include <math.h>
#include <stdio.h>

#include "tqfgen.h"

enum Layout { CCS, PACK, PERM };
static const char* const kLayoutName[] = {"CCS", "Pack", "Perm"};

/* Elements of the packed array: CCS keeps the zero imaginary parts of X[0]
 * (and of X[N/2] for even N), Pack and Perm drop them. */
static int packed_length(enum Layout layout, int n) {
    if (layout != CCS) return n;
    return n % 2 == 0 ? n + 2 : n + 1;
}

/* Harmonic k (0 <= k <= N/2) read out of a packed spectrum, as the table
 * above says. */
static tqf64fc harmonic(enum Layout layout, int n, const tqf64f* p, int k) {
    tqf64fc x = {0.0, 0.0};
    const int nyquist = n % 2 == 0 && k == n / 2;
    if (k == 0) {
        x.re = p[0];
    } else if (layout == CCS) {
        x.re = p[2 * k]; /* Nyquist too: slot N */
        if (!nyquist) x.im = p[2 * k + 1];
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

static tqfStatus forward(enum Layout layout, const tqf64f* x, tqf64f* packed, int n, int flag) {
    switch (layout) {
    case CCS: return tqfgDFTFwd_RToCCS_64f(x, packed, n, flag);
    case PACK: return tqfgDFTFwd_RToPack_64f(x, packed, n, flag);
    default: return tqfgDFTFwd_RToPerm_64f(x, packed, n, flag);
    }
}

static tqfStatus inverse(enum Layout layout, const tqf64f* packed, tqf64f* x, int n, int flag) {
    switch (layout) {
    case CCS: return tqfgDFTInv_CCSToR_64f(packed, x, n, flag);
    case PACK: return tqfgDFTInv_PackToR_64f(packed, x, n, flag);
    default: return tqfgDFTInv_PermToR_64f(packed, x, n, flag);
    }
}

static void print_packed(enum Layout layout, int n, const tqf64f* p) {
    printf("  %-4s", kLayoutName[layout]);
    /* Rounding residue of the zero bins printed as 0. */
    for (int i = 0; i < packed_length(layout, n); ++i) printf(" % 8.4f", fabs(p[i]) < 1e-12 ? 0.0 : p[i]);
    printf("\n");
}

/* Forward into `layout` unscaled, back through the inverse of the same layout
 * divided by N (flag tqfDivInvByN): the round trip is the identity. Both
 * through the generic entries, which take the length as an argument. */
static int round_trip(enum Layout layout, int n, const tqf64f* x, int verbose) {
    tqf64f packed[66], back[64];
    if (forward(layout, x, packed, n, tqfNoDivByAny) != tqfStsNoError) return 1;
    if (verbose) print_packed(layout, n, packed);
    if (layout == CCS) {
        packed[1] = NAN; /* Im X[0]: never read */
        if (n % 2 == 0) packed[n + 1] = NAN; /* Im X[N/2]: never read */
    }
    if (inverse(layout, packed, back, n, tqfDivInvByN) != tqfStsNoError) return 1;
    for (int i = 0; i < n; ++i) {
        if (!(fabs(back[i] - x[i]) <= 1e-12)) {
            printf("  %s, N = %d: element %d came back as %g, not %g\n", kLayoutName[layout], n, i, back[i], x[i]);
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
        const tqf64fc x0 = harmonic(layouts[l], 8, packed[l], 0), x1 = harmonic(layouts[l], 8, packed[l], 1),
                      x3 = harmonic(layouts[l], 8, packed[l], 3);
        if (fabs(x0.re - 8) > 1e-12 || fabs(x1.re - 4) > 1e-12 || fabs(x3.im + 2) > 1e-12) {
            printf("  %s: unexpected harmonics\n", kLayoutName[layouts[l]]);
            ++failures;
        }
    }

    /* Back with the fixed-length inverse kernels. A forward kernel and an
     * inverse kernel with the same flag 1, 2 or 4 make a round trip; here
     * both divide by sqrt(8). The CCS one runs in place: the buffer holds the
     * CCS array (10 elements) and receives the 8 values in front. */
    tqf64f back_pack[8], back_perm[8];
    tqfgDFTFwd_RToCCS_8_64f(x, ccs, tqfDivBySqrtN);
    tqfgDFTFwd_RToPack_8_64f(x, pack, tqfDivBySqrtN);
    tqfgDFTFwd_RToPerm_8_64f(x, perm, tqfDivBySqrtN);
    if (tqfgDFTInv_CCSToR_8_64f(ccs, ccs, tqfDivBySqrtN) != tqfStsNoError ||
        tqfgDFTInv_PackToR_8_64f(pack, back_pack, tqfDivBySqrtN) != tqfStsNoError ||
        tqfgDFTInv_PermToR_8_64f(perm, back_perm, tqfDivBySqrtN) != tqfStsNoError)
        return 1;
    for (int n = 0; n < 8; ++n)
        if (fabs(ccs[n] - x[n]) > 1e-12 || fabs(back_pack[n] - x[n]) > 1e-12 || fabs(back_perm[n] - x[n]) > 1e-12) {
            printf("  N = 8: element %d did not come back\n", n);
            ++failures;
            break;
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

    printf(failures ? "real_spectrum: %d check(s) failed\n" : "real_spectrum: every layout and length comes back to 1e-12\n",
           failures);
    return failures != 0;
}
