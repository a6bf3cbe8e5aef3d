// The transform of a real sequence over the split algebra (any register
// type, scalar float with widening included): a real-input transform that
// forms only the bins it cannot take as conjugates of others. It follows a
// factor tree; a block whose outputs mirror those of another block (k and
// A - k) is not formed at all. The way back from a Hermitian spectrum is its
// transpose (half_spectrum_sum in rader_real.h, the inverse real programs).
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "algebra.h"
#include "compose.h"
#include "walk.h"

namespace tqfcdft {

// Which member of each conjugate pair a real-input transform forms: a choice
// of signs only (which outputs the graph holds negated), the values and the
// operation counts are the same. The complex family's Rader chains form the
// lower columns of every node, with the Ruritanian maps. The real families
// form, of columns k1 and A - k1, the one whose bin 0 is a harmonic below
// N/2 (at Cooley-Tukey nodes that is the lower column), take the middle
// column of a Cooley-Tukey node from its even bins, the odd ones as
// conjugates, and index the first stage of a Good-Thomas node with an odd
// first factor by residue (real_family_node).
enum class Mirrors { Lower, RealFamilies };

// How a Good-Thomas node of the real families reads its first stage and
// which member of each conjugate pair of columns it forms.
struct RealFamilyNode {
    GoodThomasMap map = GoodThomasMap::Ruritanian;
    int stride = 1;              // of a residue map
    bool lower_columns = false;  // form column k1 < A/2 of every pair
};

// A node's stated map "<rur>", "<res>", "<neg>", a residue read at a
// stride ("<res2>"), each optionally with ",lower".
inline RealFamilyNode stated_node(const std::string& text) {
    RealFamilyNode n;
    std::string map = text;
    const size_t comma = text.find(',');
    if (comma != std::string::npos) {
        if (text.substr(comma + 1) != "lower") throw std::runtime_error("unknown column choice in index map <" + text + ">");
        n.lower_columns = true;
        map = text.substr(0, comma);
    }
    const std::string kind = map.substr(0, 3);
    if (kind == "rur" && map.size() == 3) n.map = GoodThomasMap::Ruritanian;
    else if (kind == "res") n.map = GoodThomasMap::Residue;
    else if (kind == "neg") n.map = GoodThomasMap::NegatedResidue;
    else throw std::runtime_error("unknown index map <" + text + ">");
    if (map.size() > 3) n.stride = std::stoi(map.substr(3));
    return n;
}

// A Good-Thomas node that states its map in the tree takes that, in either
// family (a Rader inner transform may state one: its map decides which bin
// of a block feeds which bin of the kernel, and so which paths meet). The
// other nodes of the real families: Ruritanian for an even first factor,
// and for an odd one element i of a first-stage block is the input whose
// index is i mod A, negated unless the factor holds a seven- or
// eleven-point block; those of the complex family's chains are Ruritanian.
inline RealFamilyNode real_family_node(const Tree& t, Mirrors mirrors) {
    RealFamilyNode n;
    if (t.op != 'G') return n;
    if (!t.map.empty()) return stated_node(t.map);
    if (mirrors != Mirrors::RealFamilies) return n;
    const int A = t.left->size;
    if (A % 2 == 1) n.map = A % 7 == 0 || A % 11 == 0 ? GoodThomasMap::Residue : GoodThomasMap::NegatedResidue;
    return n;
}

// X[k] = sum_n x[n] exp(dir 2 pi i nk/n) of a real x (imaginary parts zero);
// the bins above n/2 are conjugates of the lower ones.
inline std::vector<tqfgen::Cx> real_input_dft(tqfgen::SplitAlg& a, const Tree& t, const std::vector<tqfgen::Cx>& x, int dir,
                                              Mirrors mirrors = Mirrors::Lower) {
    const int N = t.size;
    std::vector<tqfgen::Cx> X(N);
    std::vector<bool> set(N, false);
    if (t.leaf()) {
        X = eval_tree(a, t, x, dir);
        for (int k = 0; k <= N / 2; ++k) set[k] = true;
    } else {
        const RealFamilyNode node = real_family_node(t, mirrors);
        const NodeWalk w(t, node.map, node.stride);
        std::vector<std::vector<tqfgen::Cx>> Y(w.B);
        for (int b = 0; b < w.B; ++b) {
            std::vector<tqfgen::Cx> in;
            for (int i = 0; i < w.A; ++i) in.push_back(x[w.input(b, i)]);
            Y[b] = real_input_dft(a, first_stage_block(t, b), in, dir, mirrors);
        }
        // Of blocks k1 and A - k1 only one is formed: the other's bins are
        // the conjugates of its own.
        const bool real_family_gt = mirrors == Mirrors::RealFamilies && !w.twiddled;
        for (int j = 0; 2 * j <= w.A; ++j) {
            const bool mirror = real_family_gt && !node.lower_columns && 2 * w.output(j, 0) > w.N;
            const int k1 = mirror ? w.A - j : j;
            std::vector<tqfgen::Cx> in;
            for (int b = 0; b < w.B; ++b)
                in.push_back(w.twiddled ? tqfgen::twiddle(a, Y[b][k1], w.twiddle(b, k1, dir)) : Y[b][k1]);
            // Column 0, and the middle column of a node without twiddles, hold
            // real values: transforms of real data again.
            const bool real_column = k1 == 0 || (2 * k1 == w.A && !w.twiddled);
            const std::vector<tqfgen::Cx> Z =
                real_column ? real_input_dft(a, *t.right, in, dir, mirrors) : eval_tree(a, *t.right, in, dir);
            // The middle column of a twiddled node holds pairs k2, B - 1 - k2.
            const bool even_bins = mirrors == Mirrors::RealFamilies && w.twiddled && 2 * k1 == w.A && w.B % 2 == 0;
            for (int k2 = 0; k2 < w.B; ++k2) {
                if (k1 == 0 && 2 * k2 > w.B) continue;  // conjugates of the block's own lower bins
                if (even_bins && k2 % 2 == 1) continue;
                const int k = w.output(k1, k2);
                X[k] = Z[k2];
                set[k] = true;
            }
        }
    }
    for (int k = 0; k < N; ++k)
        if (!set[k]) {
            if (!set[(N - k) % N]) throw std::logic_error("real_input_dft: bin not formed");
            X[k] = a.conj(X[(N - k) % N]);
        }
    return X;
}

}  // namespace tqfcdft
