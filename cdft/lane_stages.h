// Transforms whose every stage spreads its like blocks across the four float
// lanes (the prime kernels of single precision): each value sits in one lane
// of a planar register pair; a stage gathers the inputs of four blocks into
// registers (lane moves, free of arithmetic), applies the pending twiddles as
// full complex products on all lanes (trivial lanes included), and runs the
// block once for the four lanes.
#pragma once

#include <vector>

#include "algebra.h"
#include "tree.h"

namespace tqfcdft {

struct LaneVal {
    tqfgen::Cx reg;                // register pair holding the value, or zero
    int lane = 0;
    int elem = -1;                 // >= 0: input element, loaded when gathered
    tqfgen::Root tw{1, 0};         // twiddle still to be applied
    bool is_zero() const { return elem < 0 && !reg.re.valid() && !reg.im.valid(); }
};

// Up to four values side by side in one register pair (lane i from value i),
// pending twiddles applied.
tqfgen::Cx gather_lanes(tqfgen::SplitAlg& a, const std::vector<LaneVal>& v);

// Full complex product of a register pair by per-lane constants.
tqfgen::Cx lane_cmul(tqfgen::SplitAlg& a, tqfgen::Cx x, const std::vector<tqfgen::Root>& w);

// Several transforms of one tree at once: instances[i] is the input of the
// i-th. The top node's two stages share the lanes among their like blocks,
// with lane-varying twiddles between them; nested nodes run inside the lanes
// with uniform twiddles (as the composite kernels do).
std::vector<std::vector<LaneVal>> run_stages(tqfgen::SplitAlg& a, const Tree& t,
                                             const std::vector<std::vector<LaneVal>>& instances, int dir,
                                             bool spread = true);

// Multiplies every register that holds values of `v` by per-lane constants
// (value i by w[i]), one full complex product per register.
std::vector<LaneVal> multiply_in_place(tqfgen::SplitAlg& a, const std::vector<LaneVal>& v, const std::vector<tqfgen::Root>& w);

}  // namespace tqfcdft
