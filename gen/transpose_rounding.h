// Which sums of a transpose stay in double in a single-precision program.
//
// A transpose sums the contributions to each value's adjoint; as in the
// forward programs, a sum of kept values is single. The exceptions are the
// transposed counterparts of the forward programs' rounding (the Rader bins
// formed in double, cdft/rader_real.cpp) and the places where the inverse
// and Hartley programs, as they are counted, keep a sum in double: see the
// rules in transpose_rounding.cpp. transpose() asks, node by node, how the
// contributions are to be summed, and reports each sum it formed.
#pragma once

#include <map>
#include <set>
#include <vector>

#include "graph.h"
#include "split_alg.h"

namespace tqfgen {

class AdjointRounding {
public:
    // `doubled_harmonics`: the program an inverse real transform runs (its
    // interior harmonics doubled).
    AdjointRounding(const Graph& source, SplitAlg& target, bool doubled_harmonics);

    // How the adjoint of source node id sums its contributions: some of them
    // replaced in `terms` by their unrounded values; `widen_first`: the sum
    // starts from its first term widened (if single), in double.
    struct Plan {
        bool widen_first = false;
        bool hand_on_unrounded = false;  // the sum is handed on still in double
        bool block_first_input = false;  // a 5- or 7-point block's first input
    };
    Plan prepare(int id, std::vector<Handle>& terms);

    // Source product id took the factor 2 of a doubled harmonic (a fold);
    // told before the adjoints of the product's operands are prepared.
    void folded(int id) { folds_.insert(id); }

    // The sum z that prepare's plan formed.
    void formed(const Plan& plan, Handle z);

private:
    bool untwiddled_sine_row(int id);
    void mark_odd_harmonics();
    bool odd_harmonics_block_first_input(int id) const;
    bool nyquist_difference_into_fold(int id) const;

    const Graph& source_;
    SplitAlg& target_;
    const bool doubled_harmonics_;
    std::map<int, std::vector<int>> sum_users_;
    std::vector<int> users_;  // how many operations take each source node
    // The source nodes formed from the differences x[j] - x[j + n/2] alone:
    // the block on the odd harmonics behind a first 2-point stage.
    std::vector<bool> odd_harmonics_;
    std::set<int> folds_;  // source products that took a doubling's factor 2
    std::set<int> handed_unrounded_;  // target ids of the adjoints of steps in double
    // The adjoints of the first inputs of 5- and 7-point blocks: where
    // products joined them unrounded, still in double before rounding.
    std::set<int> first_inputs_in_double_;
};

}  // namespace tqfgen
