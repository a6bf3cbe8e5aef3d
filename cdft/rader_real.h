// Rader's algorithm for a real sequence of prime length p, in the form that
// the real families and the two-lane double complex blocks share.
//
// The elements x[g^n], n = 0..p-2, go through a real-input transform of
// length N = p - 1 (the inner tree). Its bins are multiplied by the kernel of
// the convolution, each interior bin by twice its value (its conjugate
// partner's share folded in). Since cos(2 pi g^n / p) has period m = N/2 and
// sin(2 pi g^n / p) changes sign after m, the even bins carry the cosine
// convolution and the odd bins the sine one, and each returns to the index n
// through a transform of length m:
//  - the cosine branch through the transpose of a real-input transform of
//    length m (the cosine tree), its bin 0 being x[0] - S/N;
//  - the sine branch, for odd m, the same way (a transform of length m over
//    the odd bins, reindexed; every other output negated);
//  - for even m, through one complex transform of length m/2 (the sine
//    tree) of the bins q = 1 mod 4. When m/2 is odd the two factors 4 and
//    m/2 are coprime and the outputs are real and imaginary parts of its
//    results as they stand; otherwise each pair of outputs t, t + m/2 is one
//    rotation by t/N of a turn;
//  - or, for even m, by halves: a sine tree "X T 2" (of length m, or m/2
//    when X is a CRT tree of length m/4) takes the bins q and q + m through
//    a 2-point step into the even and the odd outputs, turns the odd
//    outputs' branch by q/N of a turn (twiddles of order N), and returns
//    each branch by the sine of length m/2 over X: by halves again, the CRT
//    form, or at odd m/2 the transpose of a real-input transform; or
//    "{X0 | X1} T 2", a sine tree for each branch.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra.h"
#include "real_lane.h"
#include "tree.h"

namespace tqfcdft {

struct RaderForm {
    std::shared_ptr<const Tree> inner;   // length p - 1
    std::shared_ptr<const Tree> cosine;  // length m
    std::shared_ptr<const Tree> sine;    // length m (m odd) or m/2 (m even)
    // The sine branch formed negated ("-" before the sine tree): the kernel
    // of the odd bins takes the factor +i instead of -i. Only the signs the
    // graph holds, and so which parts are stored as 0.0 - t, change.
    bool negated_sine = false;
    // The ways back fold a bin's single product at even m too (they do at
    // odd m in any case; see half_spectrum_sum).
    bool fold_bins = false;
    // The primitive root whose powers order the elements ("g10: ..." before
    // the trees); 0: the smallest. Which root only permutes the bins, so it
    // changes which imaginary parts the graph holds negated, nothing else.
    int root = 0;
    // "tan:" before the trees: in a sine by halves, the odd branch's
    // rotation by 150 degrees (bin q = 5m/6, which a 3-point stage of the
    // branch takes) forms its imaginary part from its real part, Im = tan Re
    // + Im Y / cos. Since 150 degrees and a third of a turn make three
    // quarters of a turn, the stage's sine product, folded into these two,
    // is the half product of Re that the stage already forms and a unit one
    // of Im Y: two products fewer, the additions unchanged. The values do
    // not change.
    bool tangent_150 = false;
    // "shallow-sine:": the sine way back sums the contributions to each value
    // shallowest first (SplitAlg::shallow_sums). That reassociates its long
    // sums and no more: the same additions, products and values, with the
    // imaginary parts, those the graph holds negated among them, as early as
    // this order makes them.
    bool shallow_sine = false;
    // "sine-kept-at-80:": in the transposes this program goes through (its
    // ways back, and an inverse's transpose of it), a 3-point stage's sine
    // ahead of a twiddle by 80 degrees (2/9 of a turn) keeps its product
    // instead of going into the twiddle's two (Graph::sines_kept_at_80):
    // one product more for each such twiddle, the additions, the depth and
    // the values' rounding unchanged.
    bool sine_kept_at_80 = false;
};

// "inner / cosine / sine", three factor trees (the sine one may start with
// "-"), after optional "g<root>:", "tan:", "shallow-sine:" and
// "sine-kept-at-80:".
RaderForm parse_rader_form(const std::string& text);

Halves rader_halves(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Handle>& x, const RaderForm& form);

// t = 0..n-1 of Re sum_{k=0..n/2} F[k] exp(+2 pi i kt/n): the transpose of
// the real-input transform over the tree, whose stages then act in the
// opposite order. With its interior harmonics doubled, F is the half of a
// Hermitian spectrum and the result its real sequence. `fold`: a product by a
// constant that is all the use of a value of F formed by two products goes
// into those two (gen/transpose.h); the ways back of odd length m do so, those
// of even length keep the product. `fold_rotations`: a product whose whole
// adjoint is a twiddle's component goes into the twiddle.
std::vector<tqfgen::Handle> half_spectrum_sum(tqfgen::SplitAlg& a, const Tree& t, const std::vector<tqfgen::Cx>& F,
                                             bool fold = true, bool fold_rotations = true);

}  // namespace tqfcdft
