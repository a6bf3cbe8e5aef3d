// The straight-line kernels of the root, lengths 2 to 32, one element at a
// time. Lengths 2 and 4 are given rotations in a fixed operation order;
// 8, 16 and 32 are the plan's decomposition unrolled with f = 2, 4, 2: a fold
// of length m = n / f per residue, the rotation by psi, and the output
// transform of length 2f per frequency, every constant a literal.
//
// Each kernel is written over a value type V and a constant type T. The
// library runs them with V = T; a test runs them with a V that counts the
// operations, so the counts below are those of this very code:
//   n     add  sub  mul
//   2       1    1    4
//   4       5    7    8
//   8      16   16   24
//   16     44   44   64
//   32    108  108  144
// Negations never cost an operation: a negated element of the fold flips
// the sign of the sum it enters, and a conjugated output swaps the operands
// of its subtraction. All inputs are loaded before the first store, so the
// kernels work in place.
#pragma once

#include "exec_consts.h"

namespace dct4x {
namespace shortk {

template <class T> constexpr T CosPi(long long num, long long den) { return static_cast<T>(SinCosPi(num, den).c); }
template <class T> constexpr T SinPi(long long num, long long den) { return static_cast<T>(SinCosPi(num, den).s); }

template <class V>
struct Cx {
    V re, im;
};

// z (c + i s): 4 mul, 1 add, 1 sub.
template <class V, class T>
inline Cx<V> Rot(const Cx<V>& z, T c, T s) {
    return {z.re * c - z.im * s, z.re * s + z.im * c};
}

// The kernels' rotation constants, as compile-time tables.
// psi(a, i) = (2a + 1)(2i + 1) pi / (4n) at a f + i.
template <class T, int N, int F>
struct PsiTable {
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
    static constexpr Rotations<T, N / 2> w = Make();
};
// e^{i pi (2i + 1) / (2f)}, i < f / 2: the odd half of the output transform.
template <class T, int F>
struct OddHalfTable {
    static constexpr Rotations<T, F / 2> w = MakeRotations<T, F / 2>(2, 1, 2 * F);
};
// e^{i pi (2b + 1) tau / 16} at 4 b + tau: the twiddles of the length-32 fold.
template <class T>
struct Fold16Table {
    static constexpr Rotations<T, 8> Make() {
        Rotations<T, 8> r{};
        for (int b = 0; b < 2; ++b)
            for (int tau = 0; tau < 4; ++tau) {
                const SinCos v = SinCosPi((2 * b + 1) * tau, 16);
                r.c[4 * b + tau] = static_cast<T>(v.c);
                r.s[4 * b + tau] = static_cast<T>(v.s);
            }
        return r;
    }
    static constexpr Rotations<T, 8> w = Make();
};

// Fold of length 4 of w = (f0, f1, -b2, -b1): F(a) = sum_tau w[tau]
// e^{i pi (2a + 1) tau / 4} for a = 0, 1. 3 add, 3 sub, 2 mul.
template <class T, class V>
inline void Fold4(V f0, V f1, V b2, V b1, Cx<V>& F0, Cx<V>& F1) {
    constexpr T r = CosPi<T>(1, 4);
    const V d = (f1 + b1) * r;  // r (w1 - w3)
    const V e = (f1 - b1) * r;  // r (w1 + w3)
    F0 = {f0 + d, e - b2};
    F1 = {f0 - d, e + b2};
}

// The output transform of length 2f for one frequency. With z(i) = P + i Q
// and Y(t) = Re sum_i z(i) e^{i pi t (2i + 1) / (2f)}:
//   pos[t] = Y(t), t = 0 .. f-1,   neg[t] = Y(-t), t = 1 .. f.
// Pairs (i, f-1-i) split Y by the parity of t: even t is the transform of
// half the length on z(i) + conj z(f-1-i); odd t the same on
// (z(i) - conj z(f-1-i)) e^{i pi (2i + 1) / (2f)}.
// f = 2: 3 add, 3 sub, 2 mul; f = 4: 12 add, 12 sub, 12 mul.
template <class T, int F, class V>
inline void Output(const Cx<V>* z, V* pos, V* neg) {
    if constexpr (F == 1) {
        pos[0] = z[0].re;
        neg[1] = z[0].im;
    } else {
        constexpr int H = F / 2;
        Cx<V> ev[H], od[H];
#pragma GCC unroll 32
        for (int i = 0; i < H; ++i) {
            const Cx<V>& u = z[i];
            const Cx<V>& v = z[F - 1 - i];
            ev[i] = {u.re + v.re, u.im - v.im};
            od[i] = {u.re - v.re, u.im + v.im};
        }
        if constexpr (F == 2) {  // e^{i pi / 4}: (re - im, re + im) / sqrt 2
            constexpr T r = CosPi<T>(1, 4);
            od[0] = {(od[0].re - od[0].im) * r, (od[0].re + od[0].im) * r};
        } else {
            constexpr auto w = OddHalfTable<T, F>::w;
#pragma GCC unroll 16
            for (int i = 0; i < H; ++i) od[i] = Rot(od[i], w.c[i], w.s[i]);
        }
        V ep[H], en[H + 1], op[H], on[H + 1];
        Output<T, H>(ev, ep, en);
        Output<T, H>(od, op, on);
#pragma GCC unroll 32
        for (int s = 0; s < H; ++s) {
            pos[2 * s] = ep[s];
            pos[2 * s + 1] = op[s];
        }
#pragma GCC unroll 32
        for (int s = 1; s <= H; ++s) {
            neg[2 * s] = en[s];      // Y(-2s)
            neg[2 * s - 1] = on[s];  // Y(1 - 2s)
        }
    }
}

// Rotation of the fold results by psi(a, i) = (2a + 1)(2i + 1) pi / (4n) and
// the output transform for each of the m / 2 frequencies a; F[i][a] is the
// fold of residue i.
template <class T, int N, int F, class V>
inline void RotateAndOutput(const Cx<V> (*fold)[N / F / 2], V* y) {
    constexpr int M = N / F;
    constexpr auto psi = PsiTable<T, N, F>::w;
#pragma GCC unroll 16
    for (int a = 0; a < M / 2; ++a) {
        Cx<V> z[F];
#pragma GCC unroll 16
        for (int i = 0; i < F; ++i) z[i] = Rot(fold[i][a], psi.c[a * F + i], psi.s[a * F + i]);
        V pos[F], neg[F + 1];
        Output<T, F>(z, pos, neg);
#pragma GCC unroll 32
        for (int t = 0; t < F; ++t) y[M * t + a] = pos[t];
#pragma GCC unroll 32
        for (int t = 1; t <= F; ++t) y[M * t - 1 - a] = neg[t];
    }
}

template <class T, class V>
inline void Short2(const V* x, V* y) {
    constexpr T c = CosPi<T>(1, 8), s = SinPi<T>(1, 8);
    const V x0 = x[0], x1 = x[1];
    y[0] = x0 * c + x1 * s;
    y[1] = x0 * s - x1 * c;
}

// Two rotations, by 7 pi / 16 and 5 pi / 16, each in three lifting steps,
// then a butterfly.
template <class T, class V>
inline void Short4(const V* x, V* y) {
    constexpr T A = static_cast<T>(SinCosPi(7, 32).s / SinCosPi(7, 32).c);
    constexpr T B = SinPi<T>(7, 16);
    constexpr T C = static_cast<T>(SinCosPi(5, 32).s / SinCosPi(5, 32).c);
    constexpr T D = SinPi<T>(5, 16);
    constexpr T r = CosPi<T>(1, 4);
    const V x0 = x[0], x1 = x[1], x2 = x[2], x3 = x[3];
    const V p = x0 - A * x3;
    const V t = x1 - C * x2;
    const V u = x3 + B * p;
    const V v = x2 + D * t;
    const V p2 = p - A * u;
    const V t2 = t - C * v;
    y[0] = u + v;
    y[3] = p2 - t2;
    const V e = r * (u - v);
    const V g = r * (p2 + t2);
    y[1] = e + g;
    y[2] = e - g;
}

// Lengths 8 (f = 2) and 16 (f = 4): folds of length 4. Residue i reads
// x[i], x[2f + i] forward and x[n - 1 - i], x[2f - 1 - i] backward.
template <class T, int N, int F, class V>
inline void ShortFold4(const V* x, V* y) {
    V in[N];
#pragma GCC unroll 32
    for (int j = 0; j < N; ++j) in[j] = x[j];
    Cx<V> fold[F][2];
#pragma GCC unroll 32
    for (int i = 0; i < F; ++i)
        Fold4<T>(in[i], in[2 * F + i], in[N - 1 - i], in[2 * F - 1 - i], fold[i][0], fold[i][1]);
    RotateAndOutput<T, N, F>(fold, y);
}

// Length 32 (f = 2, m = 16): the fold of each residue radix 4 by
// tau, tau + 4, tau + 8, tau + 12. Each of the four subsequences is a fold of
// length 4, G(tau, b); then for b = 0, 1 the twiddles e^{i pi (2b + 1) tau / 16}
// and a DFT of length 4 over tau give F(b), F(b + 4) and, conjugated,
// F(3 - b), F(7 - b).
template <class T, class V>
inline void Short32(const V* x, V* y) {
    V in[32];
#pragma GCC unroll 32
    for (int j = 0; j < 32; ++j) in[j] = x[j];
    constexpr auto tw = Fold16Table<T>::w;
    Cx<V> fold[2][8];
#pragma GCC unroll 2
    for (int i = 0; i < 2; ++i) {
        Cx<V> g[4][2];
#pragma GCC unroll 32
        for (int tau = 0; tau < 4; ++tau)
            Fold4<T>(in[4 * tau + i], in[16 + 4 * tau + i], in[31 - 4 * tau - i], in[15 - 4 * tau - i],
                     g[tau][0], g[tau][1]);
#pragma GCC unroll 32
        for (int b = 0; b < 2; ++b) {
            Cx<V> h[4];
            h[0] = g[0][b];
#pragma GCC unroll 4
            for (int tau = 1; tau < 4; ++tau)
                h[tau] = Rot(g[tau][b], tw.c[4 * b + tau], tw.s[4 * b + tau]);
            const Cx<V> s02 = {h[0].re + h[2].re, h[0].im + h[2].im};
            const Cx<V> d02 = {h[0].re - h[2].re, h[0].im - h[2].im};
            const Cx<V> s13 = {h[1].re + h[3].re, h[1].im + h[3].im};
            const Cx<V> d13 = {h[1].re - h[3].re, h[1].im - h[3].im};
            fold[i][b] = {s02.re + s13.re, s02.im + s13.im};
            fold[i][b + 4] = {d02.re - d13.im, d02.im + d13.re};
            fold[i][3 - b] = {d02.re + d13.im, d13.re - d02.im};
            fold[i][7 - b] = {s02.re - s13.re, s13.im - s02.im};
        }
    }
    RotateAndOutput<T, 32, 2>(fold, y);
}

}  // namespace shortk

// The root's straight-line kernel of kind 1 to 5 (n = 2 .. 32).
template <class T, class V = T>
inline void ShortKernel(int kind, const V* x, V* y) {
    switch (kind) {
        case 1: shortk::Short2<T>(x, y); break;
        case 2: shortk::Short4<T>(x, y); break;
        case 3: shortk::ShortFold4<T, 8, 2>(x, y); break;
        case 4: shortk::ShortFold4<T, 16, 4>(x, y); break;
        case 5: shortk::Short32<T>(x, y); break;
        default: break;
    }
}

}  // namespace dct4x
