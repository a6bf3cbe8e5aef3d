// The straight-line kernels of the root, lengths 2 to 32, one element at a
// time. Lengths 2 and 4 are given rotations in a fixed operation order;
// 8, 16 and 32 are the plan's decomposition (fold, rotation, output
// transform) unrolled with f = 2, 4, 2, and every constant a literal.
#pragma once

#include "exec_fold.h"
#include "exec_output.h"

namespace dct4x {

template <class T>
TQF_INLINE void Short2(const T* x, T* y) {
    constexpr SinCos r = SinCosPi(1, 8);
    const T c = static_cast<T>(r.c), s = static_cast<T>(r.s);
    const T x0 = x[0], x1 = x[1];
    y[0] = x0 * c + x1 * s;
    y[1] = x0 * s - x1 * c;
}

// Two rotations, by 7 pi / 16 and 5 pi / 16, each in three lifting steps,
// then a butterfly.
template <class T>
TQF_INLINE void Short4(const T* x, T* y) {
    constexpr T A = static_cast<T>(SinCosPi(7, 32).s / SinCosPi(7, 32).c);
    constexpr T B = static_cast<T>(SinCosPi(7, 16).s);
    constexpr T C = static_cast<T>(SinCosPi(5, 32).s / SinCosPi(5, 32).c);
    constexpr T D = static_cast<T>(SinCosPi(5, 16).s);
    constexpr T r = static_cast<T>(SinCosPi(1, 4).c);
    const T x0 = x[0], x1 = x[1], x2 = x[2], x3 = x[3];
    const T p = x0 - A * x3;
    const T t = x1 - C * x2;
    const T u = x3 + B * p;
    const T v = x2 + D * t;
    const T p2 = p - A * u;
    const T t2 = t - C * v;
    y[0] = u + v;
    y[3] = p2 - t2;
    const T e = r * (u - v);
    const T g = r * (p2 + t2);
    y[1] = e + g;
    y[2] = e - g;
}

// psi(a, i) = (2a + 1)(2i + 1) pi / (4n), a < m / 2, i < f.
template <class T, int N, int F>
struct ShortPsi {
    static constexpr Rotations<T, N / 2> Make() {
        Rotations<T, N / 2> r{};
        for (int a = 0; a < N / (2 * F); ++a)
            for (int i = 0; i < F; ++i) {
                const SinCos v = SinCosPi((2 * a + 1) * (2 * i + 1), 4 * N);
                r.c[a * F + i] = static_cast<T>(v.c);
                r.s[a * F + i] = static_cast<T>(v.s);
            }
        return r;
    }
    static constexpr Rotations<T, N / 2> psi = Make();
};

template <class T, int N, int F>
TQF_INLINE void ShortTree(const T* x, T* y) {
    typedef LanesScalar<T> X;
    constexpr int M = N / F;
    T buf[N];
#pragma GCC unroll 4
    for (int i = 0; i < F; ++i) FoldGroup<X, M>(x, i, 2 * N - 1 - i, 2 * F, buf, i, F);
    constexpr auto psi = ShortPsi<T, N, F>::psi;
#pragma GCC unroll 8
    for (int a = 0; a < M / 2; ++a) {
        T P[F], Q[F], Ar[F], Ai[F];
#pragma GCC unroll 4
        for (int i = 0; i < F; ++i)
            RotatePsi<X>(buf[2 * a * F + i], buf[(2 * a + 1) * F + i], psi.c[a * F + i], psi.s[a * F + i], P[i],
                         Q[i]);
        OutputBody<X, F>(P, Q, Ar, Ai);
#pragma GCC unroll 4
        for (int k = 0; k < F; ++k) {
            y[M * k + a] = Ar[k];
            y[M * (F - k) - 1 - a] = Ai[k];
        }
    }
}

}  // namespace dct4x
