// The transpose of a linear program: the program that maps the outputs'
// weights back to the inputs, y = M x becoming x' = M^T y'. An inverse real
// transform is, up to the doubling of its interior harmonics, the transpose
// of a forward real transform whose stages come in the opposite order.
//
// The source program is a graph of loads, additions, subtractions and
// products by constants (built without widening). The transpose is built
// anew through the target algebra, so that its own precision rule holds:
// every product by a constant goes through SplitAlg::mul_r, every sum
// through add_r, and each finished value (the adjoint of a source node, all
// its contributions summed) is settled once. The contributions to a value
// are summed in the reverse of the order in which its users were formed in
// the source, latest first: the source's order of formation is the
// transpose's order of accumulation.
//
// Sums of kept values are single, as in the forward programs, with the
// exceptions that AdjointRounding states (transpose_rounding.h): the
// transposed counterparts of the forward's Rader bins in double, and the
// sums the inverse and Hartley programs keep in double as they are counted.
//
// A product is saved wherever its constant can go into products that exist
// anyway: a product whose whole adjoint is one rotation's component (its two
// products by a cosine and a sine), and a product whose whole adjoint is a
// value formed by two products and handed on nowhere else (only with
// `fold_single_use`; the first only with `fold_rotations`). The folded
// constants are formed from the exact ones and rounded once.
#pragma once

#include <vector>

#include "split_alg.h"

namespace tqfgen {

// The weight of one source output: a target value, doubled or not. A
// doubled weight is multiplied by 2.0 in its own precision, unless its only
// use is one product by a constant, which then takes the factor instead.
struct Weight {
    Handle value;  // invalid: zero
    bool doubled = false;
};

// y: the source outputs (handles into `source`, possibly negated or
// invalid), one weight each. Returns one target handle per source input, by
// the load's flat offset 0..inputs-1 (invalid where no output depends on it).
std::vector<Handle> transpose(const Graph& source, const std::vector<Handle>& y, SplitAlg& target,
                              const std::vector<Weight>& weights, int inputs, bool fold_single_use = true,
                              bool fold_rotations = true);

// The transpose of a real-input program whose outputs are the half spectrum
// X[0..n/2] (an imaginary part at the interior harmonics only), each output
// weighted by the matching part of F: the real sequence of length n that F
// gives. `doubled`: the interior harmonics' weights are doubled.
std::vector<Handle> transpose_half_spectrum(const Graph& source, const std::vector<Cx>& X, SplitAlg& target,
                                            const std::vector<Cx>& F, int n, bool doubled,
                                            bool fold_single_use = true, bool fold_rotations = true);

}  // namespace tqfgen
