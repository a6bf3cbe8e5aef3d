// A value times a root of unity that is the same in every lane, written once
// for all algebras. The eight eighth turns take special forms: 1, +-i and -1
// cost no multiplication, (1 -+ i)/sqrt2 two; any other root is the
// algebra's full complex product. An algebra that has a cheaper form of the
// (1 -+ i)/sqrt2 product supplies it as `eighth(x, s)`; otherwise it is
// (x + s i x) sqrt(1/2).
#pragma once

#include <cmath>

#include "roots.h"

namespace tqfgen {

// x (1 + s i) / sqrt2, s = +1 or -1.
template <class A>
typename A::C eighth_product(A& a, typename A::C x, int s) {
    if constexpr (requires { a.eighth(x, s); }) return a.eighth(x, s);
    else return a.mul_real(a.add(x, a.mul_i(x, s)), std::sqrt(0.5L));
}

// An eighth-turn product is two lone products, not rows: an algebra that
// tells the two apart (SplitAlg::keep) rounds it as a kept value.
template <class A>
typename A::C eighth_settled(A& a, typename A::C p) {
    if constexpr (requires { a.keep(p); }) return a.keep(p);
    else return a.settle(p);
}

// x times w. `into_leaf`: the product goes straight into a single block (an
// algebra's cmul may join it differently there). The result is a finished
// linear combination: an algebra that widens rounds it once here.
template <class A>
typename A::C twiddle(A& a, typename A::C x, Root w, bool into_leaf = false) {
    switch (eighth_turn(w)) {
    case 0: return x;
    case 2: return a.mul_i(x, +1);
    case 4: return a.neg(x);
    case 6: return a.mul_i(x, -1);
    case 7: return eighth_settled(a, eighth_product(a, x, -1));
    case 1: return eighth_settled(a, eighth_product(a, x, +1));
    case 3: return eighth_settled(a, a.neg(eighth_product(a, x, -1)));
    case 5: return eighth_settled(a, a.neg(eighth_product(a, x, +1)));
    default: return a.settle(a.cmul(x, w, into_leaf));
    }
}

}  // namespace tqfgen
