// Value algebras: what a complex operation of a block becomes in each form.
//
// Blocks are written once, as templates over an algebra `A` with a value type
// `A::C` and these operations:
//   add, sub             complex sum and difference
//   mul_i(x, s)          x times -i (s = -1) or +i (s = +1)
//   mul_real(x, c)       x times a real constant
//   rot_butterfly(x,y,s) {x + (s i) y, x - (s i) y}
//   rot_scale(x, c, s)   x times c times (s i): the rotation folded into the
//                        constant where the form allows it
//   settle(x)            end of a linear combination (rounds widened values)
//   twiddle(x, w, leaf)  x times a complex root, uniform over all lanes;
//                        leaf: the product goes straight into a single block
#pragma once

#include <cmath>
#include <complex>

#include "graph.h"

namespace tqfgen {

using Root = std::complex<long double>;

// A complex value held as two registers (or scalars): real and imaginary part.
struct Cx {
    Handle re, im;
};

// exp(sign * 2 pi i k / n), computed in long double after an exact reduction
// of k, so that quarter and eighth turns come out exact.
Root unit_root(long k, long n, int sign);

// j when w = exp(2 pi i j / 8) exactly, or -1 for any other root.
int eighth_turn(Root w);

// Components one after the other in scalar registers (float or double), or
// in four-lane float registers (planar form). With widening, products with
// constants and the sums that finish them are done in double and rounded
// once by settle().
class SplitAlg {
public:
    using C = Cx;
    SplitAlg(Graph& g, Ty data, bool widen) : g_(g), data_(data), widen_(widen) {}

    Graph& graph() { return g_; }
    Ty data_type() const { return data_; }

    Handle add_r(Handle a, Handle b) {
        const bool da = g_.node(a.id).ty != g_.node(b.id).ty;
        if (da) {
            if (g_.node(a.id).ty == Ty::F32) a = g_.widen(a);
            else b = g_.widen(b);
        }
        return g_.add(a, b);
    }
    C add(C a, C b) { return {add_r(a.re, b.re), add_r(a.im, b.im)}; }
    C sub(C a, C b) { return {add_r(a.re, -b.re), add_r(a.im, -b.im)}; }
    C neg(C a) { return {-a.re, -a.im}; }
    C mul_i(C a, int s) { return s < 0 ? C{a.im, -a.re} : C{-a.im, a.re}; }
    Handle mul_r(Handle x, long double c) {
        if (widen_) {
            if (g_.node(x.id).ty == Ty::F32) x = g_.widen(x);
            return g_.mul(x, g_.splat(Ty::F64, static_cast<double>(c)));
        }
        return g_.mul(x, g_.splat(data_, static_cast<double>(c)));
    }
    C mul_real(C a, long double c) { return {mul_r(a.re, c), mul_r(a.im, c)}; }
    C rot_scale(C a, long double c, int s) { return mul_i(mul_real(a, c), s); }
    std::pair<C, C> rot_butterfly(C x, C y, int s) {
        const C r = mul_i(y, s);
        return {add(x, r), sub(x, r)};
    }
    C settle(C a) {
        if (!widen_) return a;
        return {g_.narrow(a.re), g_.narrow(a.im)};
    }
    C twiddle(C x, Root w, bool into_leaf = false);

private:
    Graph& g_;
    Ty data_;
    bool widen_;
};

// One complex double per register, [re, im]. A rotation by -i or +i is a
// lane swap and one sign flip, unless it can be folded into a constant.
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
        return g_.mul(g_.swap_pair(a), g_.constant(Ty::V2D, {s < 0 ? v : -v, s < 0 ? -v : v}));
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
    // (1 - i) x / sqrt2 without a flip: [x0 + x1, x1 - x0] from one addsub.
    C w8(C x) { return mul_real(g_.swap_pair(g_.addsub(g_.swap_pair(x), x)), std::sqrt(0.5L)); }
    // (1 + i) x / sqrt2: [x0 - x1, x1 + x0].
    C w8conj(C x) { return mul_real(g_.addsub(x, g_.swap_pair(x)), std::sqrt(0.5L)); }
    // General root: x*wr and swap(x)*wi joined by one addsub.
    C cmul(C x, Root w, bool flip_join = false) {
        const double wr = static_cast<double>(w.real()), wi = static_cast<double>(w.imag());
        const Handle cr = g_.constant(Ty::V2D, {wr, wr}, true), ci = g_.constant(Ty::V2D, {wi, wi}, true);
        if (flip_join) return g_.add(g_.mul(x, cr), g_.flip(g_.mul(g_.swap_pair(x), ci), 1u));
        return g_.addsub(g_.mul(x, cr), g_.mul(g_.swap_pair(x), ci));
    }
    C twiddle(C x, Root w, bool into_leaf = false);
    // In factor-tree kernels a general root in front of a single block is
    // joined by a sign flip and an addition, not by addsub: the block's
    // first additions then share the flipped products (and the chain is one
    // level longer, as in the tabled programs).
    bool flip_join_into_leaf = false;
    // Rotations folded into addsub: set while a factor tree's first stage
    // feeds a nested tree rather than a single block.
    bool fold_rotations = false;

private:
    Graph& g_;
};

}  // namespace tqfgen
