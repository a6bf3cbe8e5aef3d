// The walker of a factor tree: the index maps of one node, "A G B"
// (Good-Thomas) or "A T B" (Cooley-Tukey), N = A B. The node is B
// first-stage blocks of A points, then (twiddles at T nodes) A second-stage
// blocks of B points. Every interpreter of trees takes its maps from here.
//
// An algorithm is a function from an input accessor (element n) to an output
// accessor (bin k, value). Accessors only look values up: nodes are created
// by the algorithms, in their own order, never by an accessor.
#pragma once

#include <functional>
#include <stdexcept>
#include <vector>

#include "roots.h"
#include "tree.h"

namespace tqfcdft {

template <class V>
using Input = std::function<V(int)>;
template <class V>
using Output = std::function<void(int, const V&)>;

// The index maps of a Good-Thomas node. All of them give first-stage blocks
// that are plain A-point DFTs; they differ in which input is element i of
// block b, and so in which differences the blocks form and which imaginary
// parts end up held negated:
//   Ruritanian      n = B i + A b,        k = k1 eA + k2 eB
//   Residue         n = i eA + A b,       k = (B k1 mod A) eA + k2 eB
//                   (element i is the input with n = i mod A)
//   NegatedResidue  n and k of Residue, negated mod N
// The residue maps may read a block at a stride s prime to A: element i is
// then the input with n = s i mod A, and bin k1 the harmonic of B k1 / s.
enum class GoodThomasMap { Ruritanian, Residue, NegatedResidue };

class NodeWalk {
public:
    explicit NodeWalk(const Tree& t, GoodThomasMap map = GoodThomasMap::Ruritanian, int stride = 1)
        : NodeWalk(t.left->size, t.right->size, t.op == 'T', map, stride) {}
    NodeWalk(int a, int b, bool twiddles, GoodThomasMap map = GoodThomasMap::Ruritanian, int stride = 1)
        : A(a), B(b), N(a * b), twiddled(twiddles), map_(twiddles ? GoodThomasMap::Ruritanian : map), stride_(stride) {
        // Good-Thomas output: k = k1 mod A, k2 mod B, by the Chinese remainder
        // theorem: k = k1 eA + k2 eB with eA = 1 mod A, 0 mod B, and eB alike.
        for (int k = 0; k < N; ++k) {
            if (k % A == 1 % A && k % B == 0) eA_ = k;
            if (k % A == 0 && k % B == 1 % B) eB_ = k;
        }
        for (int q = 0; q < A; ++q)
            if ((stride_ * q) % A == 1 % A) unstride_ = q;
        if (unstride_ == 0 && A > 1) throw std::logic_error("NodeWalk: a stride must be prime to the block length");
    }

    const int A, B, N;
    const bool twiddled;  // T node

    // Element of the node's input read as element i of first-stage block b.
    int input(int b, int i) const {
        if (twiddled) return B * i + b;
        if (map_ == GoodThomasMap::Ruritanian) return (B * i + A * b) % N;
        return signed_index(((stride_ * i) % A * eA_ + A * b) % N);
    }
    // Exponent e of the twiddle exp(dir 2 pi i e / N) on bin k1 of
    // first-stage block b; G nodes have none (0).
    long exponent(int b, int k1) const { return twiddled ? static_cast<long>(b) * k1 : 0; }
    tqfgen::Root twiddle(int b, int k1, int dir) const { return tqfgen::unit_root(exponent(b, k1), N, dir); }
    // Element of the node's output written by bin k2 of second-stage block k1.
    int output(int k1, int k2) const {
        if (twiddled) return k1 + A * k2;
        if (map_ == GoodThomasMap::Ruritanian) return (k1 * eA_ + k2 * eB_) % N;
        return signed_index(((B * k1 * unstride_) % A * eA_ + k2 * eB_) % N);
    }

    // The input of first-stage block b, read from the node's input.
    template <class V>
    Input<V> block_input(const Input<V>& x, int b) const {
        const NodeWalk w = *this;
        return [x, w, b](int i) { return x(w.input(b, i)); };
    }
    // The output of second-stage block k1, written to the node's output.
    template <class V>
    Output<V> block_output(const Output<V>& X, int k1) const {
        const NodeWalk w = *this;
        return [X, w, k1](int k2, const V& v) { X(w.output(k1, k2), v); };
    }

private:
    int signed_index(int n) const { return map_ == GoodThomasMap::NegatedResidue ? (N - n) % N : n; }

    GoodThomasMap map_;
    int stride_ = 1, unstride_ = 0;  // s and 1/s mod A
    int eA_ = 0, eB_ = 0;
};

// Accessors over a vector.
template <class V>
Input<V> read_from(const std::vector<V>& v) {
    return [&v](int i) { return v[i]; };
}
template <class V>
Output<V> write_to(std::vector<V>& v) {
    return [&v](int k, const V& x) { v[k] = x; };
}

}  // namespace tqfcdft
