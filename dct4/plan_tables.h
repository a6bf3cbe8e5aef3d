// The two rotation tables of a plan, laid out so that the stage kernels read
// them in sequence with aligned vector loads: 32 bytes per entry, L cosines
// then L sines.
#pragma once

#include "plan_classes.h"

// (q / L) * 32 * f: n elements.
inline int32_t PlanOutputTableBytes(int32_t laneBlocks, int32_t factor) {
    return static_cast<int32_t>(static_cast<uint32_t>(laneBlocks) * 32u * static_cast<uint32_t>(factor));
}
// q' * 32 * (g - 1): one 32-byte entry per twiddle.
inline int32_t PlanSplitTableBytes(int32_t frequencies, int32_t factor) {
    return static_cast<int32_t>(static_cast<uint32_t>(frequencies) * 32u *
                                static_cast<uint32_t>(factor - 1));
}

// The residue of pair p in the output table: p itself, except for f = 32,
// whose pairs run in the order the 32-point output kernel consumes them.
int32_t PlanOutputResidue(int32_t factor, int32_t pair);

// Allocates the stage's table from its arena and fills it.
template <class P> void PlanBuildOutputTable(OutputStage* stage);
template <class P> void PlanBuildSplitTable(SplitCombine* combine);
