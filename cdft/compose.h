// Composition of blocks by a factor tree, every lane running the same
// transform: index maps of Good-Thomas and Cooley-Tukey nodes, twiddles
// uniform over the lanes (so their special forms apply).
#pragma once

#include <string>
#include <type_traits>

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

// A twiddle column w^b (w = exp(dir 2 pi i k1 / N)) in front of a B-point
// transform costs nothing when w is plus or minus a B-th root of unity: the
// transform of the (sign-alternated) column, read from a rotated bin. Eighth
// turns keep their own special forms.
struct FreeColumn {
    bool free = false;
    bool alternate = false;  // w^B = -1: odd rows change sign
    int shift = 0;           // bin k2 is read from bin (k2 + shift) mod B
};

inline FreeColumn free_column(int k1, int N, int B) {
    FreeColumn f;
    if (k1 == 0 || (8L * k1) % N == 0) return f;
    if ((static_cast<long>(B) * k1) % N == 0) {
        f.free = true;
        f.shift = static_cast<int>((static_cast<long>(B) * k1 / N) % B);
    } else if ((2L * B * k1) % N == 0 && B % 2 == 1) {
        const int j = static_cast<int>(2L * B * k1 / N);
        f.free = f.alternate = true;
        f.shift = ((j + B) / 2) % B;
    }
    return f;
}

// A leaf named with a trailing 'v' ("5v", "7v") is a stage of blocks in two
// forms: the block fed by the first stage's zero bins, whose inputs are
// ready earliest, takes the variant with fewer multiplications and one more
// level ("5w"; "7r", Rader), the others the direct form.
inline std::string stage_block(const std::string& name, int instance) {
    if (name.empty() || name.back() != 'v') return name;
    const std::string base = name.substr(0, name.size() - 1);
    if (instance != 0) return base;
    return base == "5" ? "5w" : base + "r";
}

template <class A>
Vec<A> eval_tree(A& a, const Tree& t, const Vec<A>& x, int dir, int instance = 0);

// The first stage of a node. In two-lane double factor trees its rotations
// are folded into addsub when the stage feeds a nested tree (they stay a
// flip in front of a single block, like the twiddles).
template <class A>
Vec<A> eval_left_stage(A& a, const Tree& t, const Vec<A>& in, int dir) {
    if constexpr (std::is_same_v<A, tqfgen::PairAlg>) {
        if (a.flip_join_into_leaf) {
            const bool saved = a.fold_rotations;
            a.fold_rotations = !t.right->leaf();
            Vec<A> out = eval_tree(a, *t.left, in, dir);
            a.fold_rotations = saved;
            return out;
        }
    }
    return eval_tree(a, *t.left, in, dir);
}

template <class A>
Vec<A> eval_tree(A& a, const Tree& t, const Vec<A>& x, int dir, int instance) {
    if (t.leaf()) return block(a, stage_block(t.block, instance), x, dir);
    const int NA = t.left->size, NB = t.right->size, N = t.size;
    const bool gt = t.op == 'G';
    std::vector<Vec<A>> Y(NB);
    for (int b = 0; b < NB; ++b) {
        Vec<A> in;
        for (int i = 0; i < NA; ++i) in.push_back(x[gt ? gt_input(i, b, NA, NB) : NB * i + b]);
        Y[b] = eval_left_stage(a, t, in, dir);
        if (!gt)
            for (int k1 = 0; k1 < NA; ++k1)
                if (!free_column(k1, N, NB).free)
                    Y[b][k1] = tqfgen::twiddle(a, Y[b][k1], tqfgen::unit_root(static_cast<long>(b) * k1, N, dir),
                                         t.right->leaf());
    }
    Vec<A> X(N);
    for (int k1 = 0; k1 < NA; ++k1) {
        const FreeColumn f = gt ? FreeColumn{} : free_column(k1, N, NB);
        Vec<A> in;
        for (int b = 0; b < NB; ++b) in.push_back(f.alternate && b % 2 ? a.neg(Y[b][k1]) : Y[b][k1]);
        const Vec<A> Z = eval_tree(a, *t.right, in, dir, k1);
        for (int k2 = 0; k2 < NB; ++k2) X[gt ? gt_output(k1, k2, NA, NB) : k1 + NA * k2] = Z[(k2 + f.shift) % NB];
    }
    return X;
}

}  // namespace tqfcdft
