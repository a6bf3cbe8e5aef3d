// Complex DFT of a fixed length K (1 to 32) with the positive exponent,
// y[k] = sum_j x[j] e^{2 pi i j k / K}, on planar vectors: one vector of real
// parts and one of imaginary parts per point, every lane its own transform.
// Radix-2 decimation in time; the trivial twiddles (1, i, (1 + i)/sqrt 2 and
// (-1 + i)/sqrt 2) take their short forms, and all loops unroll at compile time.
#pragma once

#include "exec_consts.h"
#include "exec_simd.h"

namespace dct4x {

// (re, im) *= (c, s).
template <class X>
TQF_INLINE void Rotate(typename X::V& re, typename X::V& im, typename X::V c, typename X::V s) {
    const typename X::V r = X::sub(X::mul(re, c), X::mul(im, s));
    im = X::add(X::mul(re, s), X::mul(im, c));
    re = r;
}

// y = x at stride S, transformed; y may not alias x.
template <class X, int K, int S>
TQF_INLINE void Dft(const typename X::V* xr, const typename X::V* xi, typename X::V* yr, typename X::V* yi) {
    typedef typename X::V V;
    typedef typename X::T T;
    if constexpr (K == 1) {
        yr[0] = xr[0];
        yi[0] = xi[0];
    } else if constexpr (K == 2) {
        yr[0] = X::add(xr[0], xr[S]);
        yi[0] = X::add(xi[0], xi[S]);
        yr[1] = X::sub(xr[0], xr[S]);
        yi[1] = X::sub(xi[0], xi[S]);
    } else {
        constexpr int H = K / 2;
        Dft<X, H, 2 * S>(xr, xi, yr, yi);
        Dft<X, H, 2 * S>(xr + S, xi + S, yr + H, yi + H);
        constexpr auto w = DftTwiddles<T, K>::w;
#pragma GCC unroll 32
        for (int k = 0; k < H; ++k) {
            V tr = yr[H + k], ti = yi[H + k];
            if (k == 0) {
            } else if (4 * k == K) {  // i
                const V r = X::neg(ti);
                ti = tr;
                tr = r;
            } else if (8 * k == K) {  // (1 + i) / sqrt 2
                const V h = X::set1(w.c[k]);
                const V r = X::mul(X::sub(tr, ti), h);
                ti = X::mul(X::add(tr, ti), h);
                tr = r;
            } else if (8 * k == 3 * K) {  // (-1 + i) / sqrt 2
                const V h = X::set1(w.s[k]);
                const V r = X::mul(X::add(tr, ti), h);
                ti = X::mul(X::sub(tr, ti), h);
                tr = X::neg(r);
            } else {
                Rotate<X>(tr, ti, X::set1(w.c[k]), X::set1(w.s[k]));
            }
            const V er = yr[k], ei = yi[k];
            yr[k] = X::add(er, tr);
            yi[k] = X::add(ei, ti);
            yr[H + k] = X::sub(er, tr);
            yi[H + k] = X::sub(ei, ti);
        }
    }
}

}  // namespace dct4x
