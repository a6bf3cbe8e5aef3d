// Composition of blocks by a factor tree, every lane running the same
// transform: the node's index maps from the walker, twiddles uniform over
// the lanes (so their special forms apply).
#pragma once

#include <string>
#include <type_traits>

#include "algebra.h"
#include "blocks.h"
#include "tree.h"
#include "walk.h"

namespace tqfcdft {

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
using In = Input<typename A::C>;
template <class A>
using Out = Output<typename A::C>;

template <class A>
void eval_tree(A& a, const Tree& t, const In<A>& x, const Out<A>& X, int dir, int instance = 0);

// The first stage of a node. In two-lane double factor trees its rotations
// are folded into addsub when the stage feeds a nested tree (they stay a
// flip in front of a single block, like the twiddles).
template <class A>
void eval_left_stage(A& a, const Tree& t, int b, const In<A>& x, const Out<A>& Y, int dir) {
    if constexpr (std::is_same_v<A, tqfgen::PairAlg>) {
        if (a.flip_join_into_leaf) {
            const bool saved = a.fold_rotations;
            a.fold_rotations = !t.right->leaf();
            eval_tree(a, first_stage_block(t, b), x, Y, dir);
            a.fold_rotations = saved;
            return;
        }
    }
    eval_tree(a, first_stage_block(t, b), x, Y, dir);
}

// A leaf is one block; a node runs its first stage, the twiddles (T nodes;
// free columns left out), and its second stage, which reads each column of
// the first stage's bins and whose bin k2 may come from a rotated block bin.
template <class A>
void eval_tree(A& a, const Tree& t, const In<A>& x, const Out<A>& X, int dir, int instance) {
    if (t.leaf()) {
        Vec<A> in;
        for (int i = 0; i < t.size; ++i) in.push_back(x(i));
        const Vec<A> y = block(a, stage_block(t.block, instance), in, dir);
        for (int k = 0; k < t.size; ++k) X(k, y[k]);
        return;
    }
    const NodeWalk w(t);
    std::vector<Vec<A>> Y(w.B, Vec<A>(w.A));
    for (int b = 0; b < w.B; ++b) {
        eval_left_stage(a, t, b, w.block_input(x, b), write_to(Y[b]), dir);
        for (int k1 = 0; k1 < w.A; ++k1)
            if (w.twiddled && !free_column(k1, w.N, w.B).free)
                Y[b][k1] = tqfgen::twiddle(a, Y[b][k1], w.twiddle(b, k1, dir), t.right->leaf());
    }
    for (int k1 = 0; k1 < w.A; ++k1) {
        const FreeColumn f = w.twiddled ? free_column(k1, w.N, w.B) : FreeColumn{};
        const In<A> column = [&](int b) { return f.alternate && b % 2 ? a.neg(Y[b][k1]) : Y[b][k1]; };
        const Out<A> out = w.block_output(X, k1);
        eval_tree(a, *t.right, column, [&](int k2, const typename A::C& v) { out((k2 + w.B - f.shift) % w.B, v); },
                  dir, k1);
    }
}

// The same over vectors.
template <class A>
Vec<A> eval_tree(A& a, const Tree& t, const Vec<A>& x, int dir) {
    Vec<A> X(t.size);
    eval_tree(a, t, read_from(x), write_to(X), dir);
    return X;
}

}  // namespace tqfcdft
