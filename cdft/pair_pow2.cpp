#include "pair_pow2.h"

#include <cmath>
#include <stdexcept>

#include "walk.h"

namespace tqfcdft {

using tqfgen::Handle;
using tqfgen::PairAlg;
using V = std::vector<Handle>;

namespace {

const long double kPi = 3.141592653589793238462643383279502884L;

// A rotation by (dir i) in a butterfly is either a lane swap with a sign
// flip, shared by both outputs, or -- in blocks whose outputs go on into a
// twiddle multiplication -- folded into the two additions as addsubs, which
// takes the flip off the longest chain.
struct Rotation {
    PairAlg& a;
    int dir;
    bool fold;
    // {x + (dir i) y, x - (dir i) y}
    std::pair<Handle, Handle> butterfly(Handle x, Handle y) const {
        if (fold) return {a.rot_add(x, y, dir), a.rot_add(x, y, -dir)};
        const Handle r = a.mul_i(y, dir);
        return {a.add(x, r), a.sub(x, r)};
    }
};

V dft4(PairAlg& a, const V& x, int dir, bool fold) {
    const Handle s0 = a.add(x[0], x[2]), d0 = a.sub(x[0], x[2]);
    const Handle s1 = a.add(x[1], x[3]), d1 = a.sub(x[1], x[3]);
    const auto [x1, x3] = Rotation{a, dir, fold}.butterfly(d0, d1);
    return {a.add(s0, s1), x1, a.sub(s0, s1), x3};
}

// Eight points: radix-2 first level, the two eighth-root products taken on
// the differences t1 and t3 themselves (4 multiplications in all).
V eight_form(PairAlg& a, const V& y, int dir, bool fold_last) {
    V s(4), t(4);
    for (int n = 0; n < 4; ++n) {
        s[n] = a.add(y[n], y[n + 4]);
        t[n] = a.sub(y[n], y[n + 4]);
    }
    const V even = dft4(a, s, dir, fold_last);
    const Rotation inner{a, dir, false}, last{a, dir, fold_last};
    const auto [A, B] = inner.butterfly(t[0], t[2]);
    const long double c = std::sqrt(0.5L);
    const Handle ct1 = a.mul_real(t[1], c), ct3 = a.mul_real(t[3], c);
    const Handle P = a.sub(ct1, ct3), Q = a.add(ct1, ct3);
    // C = P + (dir i) Q and -(dir i) D = (dir i) Q - P
    const auto [C, negMD] = last.butterfly(P, Q);  // negMD = P - (dir i) Q
    const Handle MD = a.neg(negMD);
    V X(8);
    for (int k = 0; k < 4; ++k) X[2 * k] = even[k];
    X[1] = a.add(A, C);
    X[5] = a.sub(A, C);
    X[3] = a.add(B, MD);
    X[7] = a.sub(B, MD);
    return X;
}

// Sixteen points: radix-2 first level; the even bins are the eight-point form
// of the sums; the odd bins come from the differences d[n], whose products by
// cos(pi/8) and sin(pi/8) (n odd) or by sqrt(1/2) (n = 2, 6) are joined into
// twiddled pairs by additions alone, then two four-point blocks.
V sixteen_form(PairAlg& a, const V& x, int dir, bool fold_last, bool fold_w8) {
    V s(8), d(8);
    for (int n = 0; n < 8; ++n) {
        s[n] = a.add(x[n], x[n + 8]);
        d[n] = a.sub(x[n], x[n + 8]);
    }
    const V even = eight_form(a, s, dir, fold_last);
    const Rotation plain{a, dir, false};
    const long double c8 = cosl(kPi / 8), s8 = sinl(kPi / 8), r2 = std::sqrt(0.5L);
    V f(4), g(4);
    // n = 0: d0 -+ i d4
    std::tie(f[0], g[0]) = plain.butterfly(d[0], d[4]);
    // n = 2: W8 (d2 + (dir i) d6) and W8^3 (d2 - (dir i) d6) from c d2, c d6
    {
        const Handle cd2 = a.mul_real(d[2], r2), cd6 = a.mul_real(d[6], r2);
        const Handle P = a.sub(cd2, cd6), Q = a.add(cd2, cd6);
        const auto [f2, negg2] = Rotation{a, dir, fold_w8}.butterfly(P, Q);
        f[2] = f2;
        g[2] = a.neg(negg2);  // -(P - (dir i) Q)
    }
    // n = 1, 3: U + (dir i) V and V + (dir i) U from the cos/sin products
    {
        const Handle c1 = a.mul_real(d[1], c8), s1 = a.mul_real(d[1], s8);
        const Handle c5 = a.mul_real(d[5], c8), s5 = a.mul_real(d[5], s8);
        const Handle U = a.sub(c1, s5), W = a.add(s1, c5);
        f[1] = a.rot_add(U, W, dir);
        g[1] = a.rot_add(W, U, dir);
        const Handle c3 = a.mul_real(d[3], c8), s3 = a.mul_real(d[3], s8);
        const Handle c7 = a.mul_real(d[7], c8), s7 = a.mul_real(d[7], s8);
        const Handle U3 = a.sub(s3, c7), W3 = a.add(c3, s7);
        f[3] = a.rot_add(U3, W3, dir);
        g[3] = a.neg(a.rot_add(W3, U3, dir));
    }
    const V F = dft4(a, f, dir, fold_last), G = dft4(a, g, dir, fold_last);
    V X(16);
    for (int k = 0; k < 8; ++k) X[2 * k] = even[k];
    for (int j = 0; j < 4; ++j) {
        X[4 * j + 1] = F[j];
        X[4 * j + 3] = G[j];
    }
    return X;
}

// B first-stage blocks over stride B, twiddles, then four-point blocks.
// Blocks 1..3 feed the twiddles: their last-level rotations are folded; the
// odd ones, which reach the rotated pair of the closing four-point blocks,
// fold their inner eighth-root rotation too.
V blocks_then_four(PairAlg& a, const V& x, int dir) {
    const NodeWalk w(static_cast<int>(x.size()) / 4, 4, true);
    const int A = w.A;
    std::vector<V> Y(4);
    for (int b = 0; b < 4; ++b) {
        V in;
        for (int i = 0; i < A; ++i) in.push_back(x[w.input(b, i)]);
        Y[b] = A == 8 ? eight_form(a, in, dir, b > 0) : sixteen_form(a, in, dir, b > 0, b % 2 == 1);
        for (int k1 = 0; k1 < A; ++k1) Y[b][k1] = tqfgen::twiddle(a, Y[b][k1], w.twiddle(b, k1, dir));
    }
    V X(w.N);
    for (int k1 = 0; k1 < A; ++k1) {
        const V Z = dft4(a, {Y[0][k1], Y[1][k1], Y[2][k1], Y[3][k1]}, dir, false);
        for (int k2 = 0; k2 < 4; ++k2) X[w.output(k1, k2)] = Z[k2];
    }
    return X;
}

}  // namespace

V pair_pow2(PairAlg& a, const V& x, int dir) {
    switch (x.size()) {
    case 8: return eight_form(a, x, dir, false);
    case 16: return sixteen_form(a, x, dir, false, false);
    case 32:
    case 64: return blocks_then_four(a, x, dir);
    default: throw std::runtime_error("no two-lane power-of-two program for this length");
    }
}

}  // namespace tqfcdft
