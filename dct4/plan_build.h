// The builders of the plan tree. Each fills its object from its parent's
// data and calls the next builder directly; the same tests as the size rule
// run in the same order, and a failed test returns tqfStsBadSize at once,
// leaving every object built so far on its lists for the teardown.
#pragma once

#include "plan_classes.h"

// Decides the root's kind and, for a tree, builds it under the root, whose
// header, lists and length are already set. Returns 0 or tqfStsBadSize.
template <class P> int32_t PlanBuildRoot(PlanRoot* root);

// 1 to 6 for a fold of length 2 to 64 (one kernel), 7 for a split.
int32_t PlanFoldKind(int32_t m);
