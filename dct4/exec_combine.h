// The combining step of a split of factor g. Subsequence j of the fold gave
// G(j, b), b = 0 .. q' - 1; then for each b
//   F(b + m' t) = sum_j T(b, j) G(j, b) e^{2 pi i j t / g},  T(b, j) = e^{i pi (2b+1) j / m},
// outputs t < g/2 directly and, for the upper half, F(m' - 1 - b + m' t) as the
// conjugate of output g - 1 - t. Lanes run over residues, so every lane sees
// the same twiddle; the table holds it as L cosines then L sines.
// For g = 16 and 32 the DFT runs radix 4 by g / 4: a DFT of length g / 4 over
// j = 4 j1 + j2 for each j2 with the twiddles T(b, 4 j1) of the inner section,
// then per t < g / 4 the twiddles T(b + m' t, j2) of the outer section and a
// DFT of length 4 whose output s lands at t + (g / 4) s.
#pragma once

#include "exec_dft.h"

namespace dct4x {

template <class X>
TQF_INLINE void RotateByEntry(typename X::V& re, typename X::V& im, const typename X::T* e) {
    Rotate<X>(re, im, X::loadEntry(e), X::loadEntry(e + X::E));
}

// Twiddles and DFT of one lane group at frequency b: get(j, re, im) gives
// G(j, b), and y receives the g outputs.
template <class X, int G, class Get>
TQF_INLINE void CombineBody(Get get, const typename X::T* table, int b, int frequencies, typename X::V* yr,
                            typename X::V* yi) {
    typedef typename X::V V;
    typedef typename X::T T;
    constexpr int E = 2 * X::E;  // elements per table entry
    V gr[G], gi[G];
    if constexpr (G <= 8) {
#pragma GCC unroll 8
        for (int j = 0; j < G; ++j) get(j, gr[j], gi[j]);
        const T* e = table + b * (G - 1) * E;
#pragma GCC unroll 8
        for (int j = 1; j < G; ++j) RotateByEntry<X>(gr[j], gi[j], e + (j - 1) * E);
        Dft<X, G, 1>(gr, gi, yr, yi);
    } else {
        constexpr int K = G / 4;
        // The double 32-point table keeps the inner section first.
        constexpr bool innerFirst = sizeof(T) == 8 && G == 32;
        const int outerBase = innerFirst ? frequencies * (K - 1) : 0;
        const int innerBase = innerFirst ? 0 : frequencies * 3 * K;
        const T* ein = table + (innerBase + b * (K - 1)) * E;
        const T* eout = table + (outerBase + b * 3 * K) * E;
        V hr[4][K], hi[4][K];
#pragma GCC unroll 4
        for (int j2 = 0; j2 < 4; ++j2) {
            // Each quarter is loaded where it is used, which keeps fewer
            // values alive at once.
#pragma GCC unroll 8
            for (int j1 = 0; j1 < K; ++j1) get(4 * j1 + j2, gr[4 * j1 + j2], gi[4 * j1 + j2]);
#pragma GCC unroll 8
            for (int j1 = 1; j1 < K; ++j1) RotateByEntry<X>(gr[4 * j1 + j2], gi[4 * j1 + j2], ein + (j1 - 1) * E);
            Dft<X, K, 4>(gr + j2, gi + j2, hr[j2], hi[j2]);
        }
#pragma GCC unroll 8
        for (int t = 0; t < K; ++t) {
            V ur[4], ui[4], vr[4], vi[4];
            ur[0] = hr[0][t];
            ui[0] = hi[0][t];
#pragma GCC unroll 3
            for (int j2 = 1; j2 < 4; ++j2) {
                ur[j2] = hr[j2][t];
                ui[j2] = hi[j2][t];
                RotateByEntry<X>(ur[j2], ui[j2], eout + (3 * t + j2 - 1) * E);
            }
            Dft<X, 4, 1>(ur, ui, vr, vi);
#pragma GCC unroll 4
            for (int s = 0; s < 4; ++s) {
                yr[t + K * s] = vr[s];
                yi[t + K * s] = vi[s];
            }
        }
    }
}

// Output t of the DFT is F(b + m' t), the conjugate of output g - 1 - t is
// F(m' - 1 - b + m' t); F(x) goes to rows 2 x (re) and 2 x + 1 (im).
// put(row, k, imag, negate) stores part `imag` of output k, negated or not.
template <int G, class Put>
TQF_INLINE void CombinePut(Put put, int b, int inner) {
#pragma GCC unroll 16
    for (int t = 0; t < G / 2; ++t) {
        const int lo = b + inner * t, hi = inner - 1 - b + inner * t;
        put(2 * lo, t, false, false);
        put(2 * lo + 1, t, true, false);
        put(2 * hi, G - 1 - t, false, false);
        put(2 * hi + 1, G - 1 - t, true, true);
    }
}

// U neighbouring lane groups at wr, wr + L, ...: G(j, b) is read from rows
// 2 b g + j (re) and (2 b + 1) g + j (im), U groups of each row at once into
// a local copy, and the outputs are written U groups at a time from one,
// while the arithmetic runs one group at a time (all U at once would not fit
// the registers and spill far more than the copies cost). The next call
// reads `next` elements further on (0: no next call).
template <class X, int G, int U>
TQF_INLINE void CombineLines(const typename X::T* buf, const typename X::T* table, typename X::T* dst, int wr,
                             int ws, int b, int frequencies, int inner, int next) {
    typedef typename X::V V;
    typedef typename X::T T;
    constexpr int L = X::L;
    V gr[G][U], gi[G][U], yr[U][G], yi[U][G];
    const T* re = buf + wr + 2 * b * G * ws;
    const T* im = re + G * ws;
#pragma GCC unroll 32
    for (int j = 0; j < G; ++j)
#pragma GCC unroll 4
        for (int u = 0; u < U; ++u) {
            gr[j][u] = X::load(re + j * ws + L * u);
            gi[j][u] = X::load(im + j * ws + L * u);
        }
#pragma GCC unroll 1
    for (int u = 0; u < U; ++u) {
        // A share of the next call's rows is fetched while this group
        // computes: the rows lie too far apart for the hardware to see them
        // coming, and fetching them all at once would stall on the misses.
        if (next != 0) {
            constexpr int R = 2 * G, P = (U * L * sizeof(T) + 63) / 64;
            for (int j = u * R / U; j < (u + 1) * R / U; ++j)
#pragma GCC unroll 4
                for (int l = 0; l < P; ++l) Prefetch(re + next + j * ws + l * (64 / sizeof(T)));
        }
        CombineBody<X, G>(
            [&](int j, V& r, V& i) __attribute__((always_inline)) {
                r = gr[j][u];
                i = gi[j][u];
            },
            table, b, frequencies, yr[u], yi[u]);
    }
    CombinePut<G>(
        [&](int row, int k, bool imag, bool negate) __attribute__((always_inline)) {
#pragma GCC unroll 4
            for (int u = 0; u < U; ++u) {
                const V v = imag ? yi[u][k] : yr[u][k];
                X::store(dst + wr + row * ws + L * u, negate ? X::neg(v) : v);
            }
        },
        b, inner);
}

}  // namespace dct4x
