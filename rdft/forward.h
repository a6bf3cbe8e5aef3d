// The forward real programs: one per length, the same graph in both
// precisions and all three layouts.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "algebra.h"

namespace tqfrdft {

// X[k] = sum_n x[n] exp(-2 pi i n k / n), k = 0..n/2, of the real sequence x
// (n loads). An imaginary part that is exactly zero (DC, Nyquist) is an
// invalid handle; one that the graph holds negated carries the pending
// negation, and the store turns it into 0.0 - (t * scale).
std::vector<tqfgen::Cx> forward_real(tqfgen::SplitAlg& a, int n, const std::vector<tqfgen::Handle>& x);

// The program of one shape over x (its length is x's): "direct" (an odd
// prime in the direct form), "rader" (a prime by Rader's algorithm in this
// family's form), a Rader form of its own ("inner / cosine / sine", see
// cdft/rader_real.h), or a factor tree.
std::vector<tqfgen::Cx> forward_real_shape(tqfgen::SplitAlg& a, const std::string& shape,
                                           const std::vector<tqfgen::Handle>& x);

// Whether a shape is a Rader form: three trees separated by '/' outside the
// brackets of a nested block's own form.
bool is_rader_form(const std::string& shape);

// The Rader form ("inner / cosine / sine") of each prime from 11 that the
// forward family runs by Rader's algorithm.
const std::map<int, std::string>& forward_rader_forms();

// The factor tree of each composite length, factors in order of action
// ("5d", "7d", "11d": the odd prime blocks in the direct form of the real
// families, without reduction).
const std::map<int, std::string>& forward_real_trees();

}  // namespace tqfrdft
