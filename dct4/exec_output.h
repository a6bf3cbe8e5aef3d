// The fixed output transform of length 2f. For one frequency a per lane, with
// Z(i) = P(i) + i Q(i) the rotated pairs, the outputs are
//   y[m t + a]     = Re sum_i Z(i) e^{ i pi t (2i + 1) / (2f)},  t = 0 .. f-1
//   y[m t - 1 - a] = Re sum_i Z(i) e^{-i pi t (2i + 1) / (2f)},  t = 1 .. f.
// They come from one complex DFT of length f: take v[p] = Z(2p) and
// v[f - 1 - p] = conj Z(2p + 1), V = DFT(v) with the positive exponent, and
// A(k) = e^{i pi k / (2f)} V(k); then Re A(k) is y[m k + a] and Im A(k) is
// y[m (f - k) - 1 - a]. Every output is one half of one A.
#pragma once

#include "exec_dft.h"

namespace dct4x {

// P, Q by residue -> Ar, Ai by k.
template <class X, int F>
TQF_INLINE void OutputBody(const typename X::V* P, const typename X::V* Q, typename X::V* Ar,
                           typename X::V* Ai) {
    typedef typename X::V V;
    V vr[F], vi[F];
    if constexpr (F == 1) {
        vr[0] = P[0];
        vi[0] = Q[0];
    } else {
#pragma GCC unroll 16
        for (int p = 0; p < F / 2; ++p) {
            vr[p] = P[2 * p];
            vi[p] = Q[2 * p];
            vr[F - 1 - p] = P[2 * p + 1];
            vi[F - 1 - p] = X::neg(Q[2 * p + 1]);
        }
    }
    Dft<X, F, 1>(vr, vi, Ar, Ai);
    constexpr auto z = OutputTwiddles<typename X::T, F>::w;
#pragma GCC unroll 32
    for (int k = 1; k < F; ++k) Rotate<X>(Ar[k], Ai[k], X::set1(z.c[k]), X::set1(z.s[k]));
}

// P = c cos psi - s sin psi, Q = c sin psi + s cos psi.
template <class X>
TQF_INLINE void RotatePsi(typename X::V c, typename X::V s, typename X::V cp, typename X::V sp,
                          typename X::V& P, typename X::V& Q) {
    P = X::sub(X::mul(c, cp), X::mul(s, sp));
    Q = X::add(X::mul(c, sp), X::mul(s, cp));
}

// The table's order of residues: pairs (i, f - 1 - i), with the pair order
// of the planner.
constexpr int TableResidue(int f, int pair) {
    return f != 32 ? pair : 16 * (pair % 2) + 4 * ((pair / 2) % 4) + pair / 8;
}

// The rotated pairs P, Q of lane block A: buf rows c(., a) and s(., a) are
// read with aligned loads and transposed to lanes over a, then rotated by
// the table's entries for that block.
template <class X, int F>
TQF_INLINE void OutputRotated(const typename X::T* buf, const typename X::T* table, int A, typename X::V* P,
                              typename X::V* Q) {
    typedef typename X::V V;
    typedef typename X::T T;
    constexpr int L = X::L;
    const int a0 = L * A;
    V c[F], s[F];
    if constexpr (F % L == 0) {
#pragma GCC unroll 8
        for (int i0 = 0; i0 < F; i0 += L) {
            V rc[L], rs[L];
#pragma GCC unroll 4
            for (int l = 0; l < L; ++l) {
                rc[l] = X::load(buf + 2 * (a0 + l) * F + i0);
                rs[l] = X::load(buf + (2 * (a0 + l) + 1) * F + i0);
            }
            X::transpose(rc);
            X::transpose(rs);
#pragma GCC unroll 4
            for (int l = 0; l < L; ++l) {
                c[i0 + l] = rc[l];
                s[i0 + l] = rs[l];
            }
        }
    } else {  // fewer residues than lanes: gather by element
        alignas(16) T tc[L], ts[L];
        for (int i = 0; i < F; ++i) {
            for (int l = 0; l < L; ++l) {
                tc[l] = buf[2 * (a0 + l) * F + i];
                ts[l] = buf[(2 * (a0 + l) + 1) * F + i];
            }
            c[i] = X::load(tc);
            s[i] = X::load(ts);
        }
    }
    const T* e = table + A * 2 * F * L;
    if constexpr (F == 1) {
        RotatePsi<X>(c[0], s[0], X::load(e), X::load(e + L), P[0], Q[0]);
    } else {
#pragma GCC unroll 16
        for (int p = 0; p < F / 2; ++p) {
            const int i = TableResidue(F, p), j = F - 1 - i;
            RotatePsi<X>(c[i], s[i], X::load(e + 4 * L * p), X::load(e + 4 * L * p + L), P[i], Q[i]);
            RotatePsi<X>(c[j], s[j], X::load(e + 4 * L * p + 2 * L), X::load(e + 4 * L * p + 3 * L), P[j],
                         Q[j]);
        }
    }
}

// Output of the frequencies a = L A .. L A + L - 1: dst is written by
// element groups, ascending at m k + a and descending at top - m (f + k) - a
// (that is m (f - k) - 1 - a when n = f m).
template <class X, int F>
TQF_INLINE void OutputStore(const typename X::V* Ar, const typename X::V* Ai, typename X::T* dst, int a0, int m,
                            int top) {
#pragma GCC unroll 32
    for (int k = 0; k < F; ++k) {
        X::storeu(dst + m * k + a0, Ar[k]);
        X::storeDown(dst + top - m * (F + k) - a0, Ai[k]);
    }
}

template <class X, int F>
TQF_INLINE void OutputBlock(const typename X::T* buf, const typename X::T* table, typename X::T* dst,
                            int A, int m, int top) {
    typename X::V P[F], Q[F], Ar[F], Ai[F];
    OutputRotated<X, F>(buf, table, A, P, Q);
    OutputBody<X, F>(P, Q, Ar, Ai);
    OutputStore<X, F>(Ar, Ai, dst, X::L * A, m, top);
}

// U neighbouring lane blocks, each computed alone, their outputs kept until
// all are done and then stored together, so that each strided group of dst
// is written as a whole 64-byte line while it is still in the cache.
template <class X, class W, int F>
TQF_INLINE void OutputBlocksWide(const typename X::T* buf, const typename X::T* table, typename X::T* dst,
                                 int A, int m, int top) {
    constexpr int U = W::L / X::L;
    typename W::V Ar[F], Ai[F];
#pragma GCC unroll 1
    for (int u = 0; u < U; ++u) {
        typename X::V P[F], Q[F], ar[F], ai[F];
        OutputRotated<X, F>(buf, table, A + u, P, Q);
        OutputBody<X, F>(P, Q, ar, ai);
#pragma GCC unroll 32
        for (int k = 0; k < F; ++k) {
            Ar[k].g[u] = ar[k];
            Ai[k].g[u] = ai[k];
        }
    }
    OutputStore<W, F>(Ar, Ai, dst, X::L * A, m, top);
}

}  // namespace dct4x
