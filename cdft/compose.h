// Composition of blocks by a factor tree, every lane running the same
// transform: index maps of Good-Thomas and Cooley-Tukey nodes, twiddles
// uniform over the lanes (so their special forms apply).
#pragma once

#include "algebra.h"
#include "blocks.h"
#include "tree.h"

namespace tqfcdft {

// Good-Thomas input index of element a of block b, for N = A * B.
inline int gt_input(int a, int b, int A, int B) { return (B * a + A * b) % (A * B); }
// Good-Thomas output index of bin k1 of the A-blocks and bin k2 of the B-blocks.
inline int gt_output(int k1, int k2, int A, int B) {
    for (int k = 0; k < A * B; ++k)
        if (k % A == k1 && k % B == k2) return k;
    return -1;
}

template <class A>
Vec<A> eval_tree(A& a, const Tree& t, const Vec<A>& x, int dir) {
    if (t.leaf()) return block(a, t.block, x, dir);
    const int NA = t.left->size, NB = t.right->size, N = t.size;
    const bool gt = t.op == 'G';
    std::vector<Vec<A>> Y(NB);
    for (int b = 0; b < NB; ++b) {
        Vec<A> in;
        for (int i = 0; i < NA; ++i) in.push_back(x[gt ? gt_input(i, b, NA, NB) : NB * i + b]);
        Y[b] = eval_tree(a, *t.left, in, dir);
        if (!gt)
            for (int k1 = 0; k1 < NA; ++k1)
                Y[b][k1] = a.twiddle(Y[b][k1], tqfgen::unit_root(static_cast<long>(b) * k1, N, dir));
    }
    Vec<A> X(N);
    for (int k1 = 0; k1 < NA; ++k1) {
        Vec<A> in;
        for (int b = 0; b < NB; ++b) in.push_back(Y[b][k1]);
        const Vec<A> Z = eval_tree(a, *t.right, in, dir);
        for (int k2 = 0; k2 < NB; ++k2) X[gt ? gt_output(k1, k2, NA, NB) : k1 + NA * k2] = Z[k2];
    }
    return X;
}

}  // namespace tqfcdft
