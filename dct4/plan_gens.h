// Value generators: the objects whose act slot is an evaluation function,
// the only act slots that are ever called through the slot.
#pragma once

#include "plan_precision.h"

template <class P> using PlanTwiddleAct = typename P::T (*)(const TwiddleGen*, int32_t row, int32_t column);
template <class P> using PlanLaneAct = typename P::T (*)(const LaneTwiddleGen*, int32_t block, int32_t lane, int32_t column);
template <class P> using PlanHalfStepAct = typename P::T (*)(const HalfStepGen*, int32_t k);

// Generators own nothing: one shared destroy that returns at once.
void PlanDestroyNothing(PlanNode* node);

// Column 2i of a row gives cos psi(row, i), column 2i + 1 gives sin psi(row, i),
// with psi(a, i) = (2a + 1)(2i + 1) pi / (4n).
template <class P> typename P::T PlanTwiddleValue(const TwiddleGen* gen, int32_t row, int32_t column);
// The inner TwiddleGen at row = lane + block * L, called through its slot.
template <class P> typename P::T PlanLaneTwiddleValue(const LaneTwiddleGen* gen, int32_t block, int32_t lane, int32_t column);
// (k + 0.5) / (m / g) in element precision.
template <class P> typename P::T PlanHalfStepValue(const HalfStepGen* gen, int32_t k);

// Evaluations through the act slots, as the table builders make them.
template <class P>
typename P::T PlanEvalLane(const LaneTwiddleGen* gen, int32_t block, int32_t lane, int32_t column) {
    return reinterpret_cast<PlanLaneAct<P>>(gen->node.act)(gen, block, lane, column);
}
template <class P>
typename P::T PlanEvalHalfStep(const HalfStepGen* gen, int32_t k) {
    return reinterpret_cast<PlanHalfStepAct<P>>(gen->node.act)(gen, k);
}
