// The fold of length M (2 to 64): for L residues at once, one per lane,
//   F(a) = sum_tau w[tau] e^{i pi (2a + 1) tau / M},  a = 0 .. M/2 - 1,
// with w[tau] the forward elements for tau < M/2 and 0 minus the backward
// elements above. c = Re F and s = Im F go to the work buffer.
//
// The transform splits like the plan's own splits, by two: with E and O the
// folds of the even and odd samples (length M/2) and t = e^{i pi (2a+1)/M},
//   F(a) = E(a) + t O(a),   F(M/2 - 1 - a) = conj(E(a) - t O(a)),
// since a fold of real data is conjugate-symmetric about its middle.
#pragma once

#include "exec_dft.h"

namespace dct4x {

// w at stride S, M values -> re, im of M/2 frequencies.
template <class X, int M, int S>
TQF_INLINE void FoldBody(const typename X::V* w, typename X::V* re, typename X::V* im) {
    typedef typename X::V V;
    if constexpr (M == 2) {
        re[0] = w[0];
        im[0] = w[S];
    } else {
        constexpr int Q = M / 2, H = M / 4;
        V er[H], ei[H], orr[H], oi[H];
        FoldBody<X, M / 2, 2 * S>(w, er, ei);
        FoldBody<X, M / 2, 2 * S>(w + S, orr, oi);
        constexpr auto t = FoldTwiddles<typename X::T, M>::w;
#pragma GCC unroll 16
        for (int a = 0; a < H; ++a) {
            V pr = orr[a], pi = oi[a];
            if (M == 4) {  // t = (1 + i) / sqrt 2
                const V h = X::set1(t.c[0]);
                pr = X::mul(X::sub(orr[a], oi[a]), h);
                pi = X::mul(X::add(orr[a], oi[a]), h);
            } else {
                Rotate<X>(pr, pi, X::set1(t.c[a]), X::set1(t.s[a]));
            }
            re[a] = X::add(er[a], pr);
            im[a] = X::add(ei[a], pi);
            re[Q - 1 - a] = X::sub(er[a], pr);
            im[Q - 1 - a] = X::sub(pi, ei[a]);
        }
    }
}

// One group of L residues: forward reads src[fwd + S tau], backward reads
// src[bwd - S (M - tau)] in descending lane order; c(a) goes to
// buf[wr + 2a ws] and s(a) to buf[wr + (2a + 1) ws], aligned.
template <class X, int M>
TQF_INLINE void FoldGroup(const typename X::T* src, int fwd, int bwd, int S,
                          typename X::T* buf, int wr, int ws) {
    typedef typename X::V V;
    V w[M], re[M / 2], im[M / 2];
#pragma GCC unroll 32
    for (int tau = 0; tau < M / 2; ++tau) w[tau] = X::loadu(src + fwd + S * tau);
    const V zero = X::zero();
#pragma GCC unroll 32
    for (int tau = 1; tau <= M / 2; ++tau)
        w[M - tau] = X::sub(zero, X::loadDown(src + bwd - S * (M - tau)));
    FoldBody<X, M, 1>(w, re, im);
#pragma GCC unroll 32
    for (int a = 0; a < M / 2; ++a) {
        X::store(buf + wr + 2 * a * ws, re[a]);
        X::store(buf + wr + (2 * a + 1) * ws, im[a]);
    }
}

// U neighbouring lane groups (residues L u .. L u + L - 1 further on, each
// at its own fwd + L u and bwd - L u), whole lines at every address: the
// reads go to a local copy and the writes come from one, and the arithmetic
// runs one group at a time, as in CombineLines.
template <class X, int M, int U>
TQF_INLINE void FoldLines(const typename X::T* src, int fwd, int bwd, int S, typename X::T* buf, int wr,
                          int ws) {
    typedef typename X::V V;
    constexpr int L = X::L;
    V w[U][M], re[U][M / 2], im[U][M / 2];
    const V zero = X::zero();
#pragma GCC unroll 32
    for (int tau = 0; tau < M / 2; ++tau)
#pragma GCC unroll 4
        for (int u = 0; u < U; ++u) w[u][tau] = X::loadu(src + fwd + S * tau + L * u);
#pragma GCC unroll 32
    for (int tau = 1; tau <= M / 2; ++tau)
#pragma GCC unroll 4
        for (int u = 0; u < U; ++u) w[u][M - tau] = X::sub(zero, X::loadDown(src + bwd - S * (M - tau) - L * u));
#pragma GCC unroll 1
    for (int u = 0; u < U; ++u) FoldBody<X, M, 1>(w[u], re[u], im[u]);
#pragma GCC unroll 32
    for (int a = 0; a < M / 2; ++a)
#pragma GCC unroll 4
        for (int u = 0; u < U; ++u) {
            X::store(buf + wr + 2 * a * ws + L * u, re[u][a]);
            X::store(buf + wr + (2 * a + 1) * ws + L * u, im[u][a]);
        }
}

}  // namespace dct4x
