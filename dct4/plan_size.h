// The size rule: how many bytes a plan of length n may take, or why the
// length is refused. Computed in signed 32-bit arithmetic that wraps; only
// the sign tests of the rule look at the sign.
#pragma once

#include <cstdint>

#include "plan_classes.h"

// Arena charges that the rule sums, each made of class charges. They count
// cells and stage objects more generously than the builder uses them (each
// shell is counted twice, and so is a split's combining step), so a plan
// ends short of its block; on i386 they come to the fixed sizes that 32-bit callers allocate by.
struct PlanSizeCharges {
    static constexpr int32_t cell = PlanCharge<PlanList>();
    // The root and its three list heads: all a plan of length 2 to 32 has.
    static constexpr int32_t shortPlan = PlanCharge<PlanRoot>() + 3 * cell;
    // Added to the output table: the stage and its owned head.
    static constexpr int32_t outputStage = PlanCharge<OutputStage>() + cell;
    // The shell, both generators and three cells.
    static constexpr int32_t outputShell = PlanCharge<OutputShell>() + PlanCharge<TwiddleGen>() +
                                           PlanCharge<LaneTwiddleGen>() + 3 * cell;
    // A fold that one kernel does: the stage and its two heads.
    static constexpr int32_t outerLeaf = PlanCharge<FoldStage>() + 2 * cell;
    static constexpr int32_t innerLeaf = PlanCharge<SplitFold>() + 2 * cell;
    // A fold that splits: the stage and four cells.
    static constexpr int32_t outerSplit = PlanCharge<FoldStage>() + 4 * cell;
    static constexpr int32_t innerSplit = PlanCharge<SplitFold>() + 4 * cell;
    // Added to a split table: the combining step and its owned head.
    static constexpr int32_t splitCombine = PlanCharge<SplitCombine>() + cell;
    // The split, its generator, the combining step again and five cells.
    static constexpr int32_t split = PlanCharge<SplitStage>() + PlanCharge<HalfStepGen>() +
                                     PlanCharge<SplitCombine>() + 5 * cell;
    // The fold shell and four cells.
    static constexpr int32_t foldShell = PlanCharge<FoldShell>() + 4 * cell;
    // The root with its heads, both shells again and three cells.
    static constexpr int32_t root = shortPlan + PlanCharge<OutputShell>() +
                                    PlanCharge<FoldShell>() + 3 * cell;
};

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(PlanSizeCharges::shortPlan == 160 && PlanSizeCharges::outputStage == 96 &&
              PlanSizeCharges::outputShell == 256 && PlanSizeCharges::outerLeaf == 128 &&
              PlanSizeCharges::innerLeaf == 160 && PlanSizeCharges::outerSplit == 192 &&
              PlanSizeCharges::innerSplit == 224 && PlanSizeCharges::splitCombine == 128 &&
              PlanSizeCharges::split == 352 && PlanSizeCharges::foldShell == 192 &&
              PlanSizeCharges::root == 384,
              "i386 charges of the size rule");
#endif

// Plan bytes of n (without the arena's lead-in), or a negative value when
// the length is refused: -6, or a sum that went negative.
template <class P> int32_t PlanBytes(int32_t n);

// Bytes of a block for a plan of n: plan bytes plus the two lead-in units.
// Returns tqfStsBadSize for any negative plan bytes.
template <class P> int32_t PlanGetSize(int32_t n, int32_t* size);
