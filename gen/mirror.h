// A pass over a finished scalar kernel: a difference b - a of values whose
// difference a - b the program already forms is that node negated, not a
// node of its own (IEEE subtraction is exactly antisymmetric). Only the live
// program counts: the pass rebuilds the graph from the nodes that reach a
// store, in their order of creation, so a difference that some block formed
// but no output uses cannot decide the sign of one that is used. A value
// that ends up held negated is stored as 0.0 - (t * scale), and one stored
// that way whose t ends up negated is stored plainly.
#pragma once

#include "kernel.h"

namespace tqfgen {

void merge_mirrored_differences(Kernel& k);

}  // namespace tqfgen
