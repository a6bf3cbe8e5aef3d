// One complex double per register, [re, im]. A rotation by -i or +i is a
// lane swap and one sign flip, unless it can be folded into a constant or an
// addsub.
#pragma once

#include <cmath>
#include <utility>

#include "roots.h"

namespace tqfgen {

class PairAlg {
public:
    using C = Handle;
    explicit PairAlg(Graph& g) : g_(g) {}

    Graph& graph() { return g_; }

    C add(C a, C b) { return g_.add(a, b); }
    C sub(C a, C b) { return g_.sub(a, b); }
    C neg(C a) { return -a; }
    // -i x = [x1, -x0];  +i x = [-x1, x0]
    C mul_i(C a, int s) { return g_.flip(g_.swap_pair(a), s < 0 ? 2u : 1u); }
    C mul_real(C a, long double c) { return g_.mul(a, g_.splat(Ty::V2D, static_cast<double>(c))); }
    C rot_scale(C a, long double c, int s) {
        const double v = static_cast<double>(c);
        const C k = g_.constant(Ty::V2D, {s < 0 ? v : -v, s < 0 ? -v : v});
        return g_.mul(g_.swap_pair(a), k);
    }
    C settle(C a) { return a; }
    // a + (s i) b with the rotation folded into one addsub, no flip:
    // a - i b = swap(addsub(swap a, b)),  a + i b = addsub(a, swap b).
    C rot_add(C a, C b, int s) {
        return s < 0 ? g_.swap_pair(g_.addsub(g_.swap_pair(a), b)) : g_.addsub(a, g_.swap_pair(b));
    }
    // A swap and one flip shared by both outputs, or, with fold_rotations,
    // two addsubs and no flip.
    std::pair<C, C> rot_butterfly(C x, C y, int s) {
        if (fold_rotations) return {rot_add(x, y, s), rot_add(x, y, -s)};
        const C r = mul_i(y, s);
        return {add(x, r), sub(x, r)};
    }
    // x (1 + s i)/sqrt2 without a flip, from one addsub:
    // s = -1: [x0 + x1, x1 - x0];  s = +1: [x0 - x1, x1 + x0].
    C eighth(C x, int s) {
        if (s < 0) return mul_real(g_.swap_pair(g_.addsub(g_.swap_pair(x), x)), std::sqrt(0.5L));
        return mul_real(g_.addsub(x, g_.swap_pair(x)), std::sqrt(0.5L));
    }
    // General root: x*wr and swap(x)*wi joined by one addsub, or by a flip
    // and an addition in front of a single block of a factor tree (the
    // block's first additions then share the flipped products, and the chain
    // is one level longer, as in the tabled programs).
    C cmul(C x, Root w, bool into_leaf = false) {
        const double wr = static_cast<double>(w.real()), wi = static_cast<double>(w.imag());
        const Handle cr = g_.constant(Ty::V2D, {wr, wr}, true), ci = g_.constant(Ty::V2D, {wi, wi}, true);
        const Handle swapped = g_.mul(g_.swap_pair(x), ci);
        if (into_leaf && flip_join_into_leaf) {
            const Handle flipped = g_.flip(swapped, 1u);
            return g_.add(g_.mul(x, cr), flipped);
        }
        return g_.addsub(g_.mul(x, cr), swapped);
    }
    // Set for factor-tree kernels: see cmul.
    bool flip_join_into_leaf = false;
    // Rotations folded into addsub: set while a factor tree's first stage
    // feeds a nested tree rather than a single block.
    bool fold_rotations = false;

private:
    Graph& g_;
};

}  // namespace tqfgen
