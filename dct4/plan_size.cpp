#include "plan_size.h"

#include "plan_factor.h"
#include "plan_precision.h"
#include "tqfgen.h"

namespace {

typedef PlanSizeCharges C;

bool IsKernelFold(int32_t m) {
    return m == 2 || m == 4 || m == 8 || m == 16 || m == 32 || m == 64;
}

// Fold bytes of m, at the top (outer) or inside a split (inner). Every split
// holds a buffer for the full plan length n, whatever its own m.
template <class P>
int32_t FoldBytes(int32_t m, int32_t n, bool inner) {
    if (IsKernelFold(m)) return inner ? C::innerLeaf : C::outerLeaf;
    const int32_t g = PlanChooseFactor(m / 2);
    if (g < 0) return tqfStsBadSize;
    const int32_t q2 = m / (2 * g);
    int32_t t = PlanAdd(PlanAlign32s(PlanMul(PlanMul(q2, 32), g - 1)), C::splitCombine);
    if (t < 0) return t;
    const int32_t y = FoldBytes<P>(m / g, n, true);
    if (y < 0) return y;
    t = PlanAdd(PlanAdd(PlanAdd(t, y), PlanAlign32s(PlanElementBytes<P>(n))), C::split);
    if (t < 0) return t;
    return PlanAdd(t, inner ? C::innerSplit : C::outerSplit);
}

}  // namespace

template <class P>
int32_t PlanBytes(int32_t n) {
    if (n == 2 || n == 4 || n == 8 || n == 16 || n == 32) return C::shortPlan;
    const int32_t f = PlanChooseFactor(n / 2);
    if (f < 0) return tqfStsBadSize;
    const int32_t q = n / (2 * f);
    if (q % P::lanes != 0) return tqfStsBadSize;
    const int32_t t = PlanAdd(PlanAlign32s(PlanMul(PlanMul(q / P::lanes, 32), f)), C::outputStage);
    if (t < 0) return t;
    const int32_t u = PlanAdd(t, C::outputShell);
    if (u < 0) return u;
    if (f % P::lanes != 0) return tqfStsBadSize;
    int32_t v = FoldBytes<P>(n / f, n, false);
    if (v >= 0) v = PlanAdd(v, C::foldShell);
    if (v < 0) return v;
    return PlanAdd(PlanAdd(PlanAdd(u, v), PlanAlign32s(PlanElementBytes<P>(n))), C::root);
}

template <class P>
int32_t PlanGetSize(int32_t n, int32_t* size) {
    const int32_t bytes = PlanBytes<P>(n);
    if (bytes < 0) return tqfStsBadSize;
    *size = PlanAdd(bytes, static_cast<int32_t>(2 * PlanAlign32(1)));
    return tqfStsNoError;
}

template int32_t PlanBytes<PlanF32>(int32_t);
template int32_t PlanBytes<PlanF64>(int32_t);
template int32_t PlanGetSize<PlanF32>(int32_t, int32_t*);
template int32_t PlanGetSize<PlanF64>(int32_t, int32_t*);
