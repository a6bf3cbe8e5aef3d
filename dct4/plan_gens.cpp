#include "plan_gens.h"

void PlanDestroyNothing(PlanNode*) {}

template <class P>
typename P::T PlanTwiddleValue(const TwiddleGen* gen, int32_t row, int32_t column) {
    const int32_t t = PlanAdd(PlanMul(row, gen->rowLength), column);
    const int32_t h = t / 2;
    const int32_t a = h / gen->factor;
    const int32_t r = h % gen->factor;
    // (4a + 2)(2r + 1) / 8n is (2a + 1)(2r + 1) / 4n.
    const typename P::T x = P::Ratio(PlanMul(4 * a + 2, 2 * r + 1), gen->denominator);
    return (t & 1) ? P::SinPi(x) : P::CosPi(x);
}

template <class P>
typename P::T PlanLaneTwiddleValue(const LaneTwiddleGen* gen, int32_t block, int32_t lane, int32_t column) {
    const TwiddleGen* inner = gen->inner;
    return reinterpret_cast<PlanTwiddleAct<P>>(inner->node.act)(inner, lane + block * P::lanes, column);
}

template <class P>
typename P::T PlanHalfStepValue(const HalfStepGen* gen, int32_t k) {
    typedef typename P::T T;
    return (static_cast<T>(k) + static_cast<T>(0.5)) / static_cast<T>(gen->length / gen->factor);
}

#define PLAN_GENS(P)                                                                         \
    template P::T PlanTwiddleValue<P>(const TwiddleGen*, int32_t, int32_t);                  \
    template P::T PlanLaneTwiddleValue<P>(const LaneTwiddleGen*, int32_t, int32_t, int32_t); \
    template P::T PlanHalfStepValue<P>(const HalfStepGen*, int32_t);
PLAN_GENS(PlanF32)
PLAN_GENS(PlanF64)
