// Operation counts of an emitted kernel, taken from its graph.
#pragma once

#include <vector>

#include "kernel.h"

namespace tqfgen {

struct Counts {
    long adds = 0;          // real additions and subtractions, per live lane
    long muls = 0;          // real multiplications by constants (scale excluded)
    long trivial_muls = 0;  // of those, by 0.0, 1.0 or -1.0
    long sign_flips = 0;    // lanes negated by a sign-bit step of their own
    int depth = 0;          // longest dependent chain, load to store, scale included
    long constants = 0;     // distinct stored values other than 0 and +-1
    long zero_sub_stores = 0;  // outputs stored as 0.0 - (t * scale)
    long doublings = 0;        // of muls, by exactly 2.0 (the sign rides on the handle)
    long double_adds = 0;      // of adds, done in double in a float kernel
    long double_scales = 0;    // scale multiplications done in double in a float kernel
};

// Nodes that reach an output, in creation (topological) order.
std::vector<int> live_nodes(const Kernel& k);
Counts count_operations(const Kernel& k);

}  // namespace tqfgen
