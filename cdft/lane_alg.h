// Complex values over registers whose lanes each run the same real program.
//
// A value is a pair of registers (real part, imaginary part) of one type: two
// doubles (the lanes are the real and the imaginary part of the data, as in
// the real-lane programs of the double kernels) or four floats (lanes run
// across blocks). An invalid handle is an exact zero: real-input transforms
// and zero-padded inputs cost only the operations on non-zero parts, and
// anything that never reaches an output is dropped by the counter and the
// emitter alike.
#pragma once

#include <cmath>
#include <vector>

#include "algebra.h"

namespace tqfcdft {

class LaneAlg {
public:
    using C = tqfgen::Cx;
    using H = tqfgen::Handle;
    LaneAlg(tqfgen::Graph& g, tqfgen::Ty t) : g_(g), t_(t) {}

    tqfgen::Graph& graph() { return g_; }
    tqfgen::Ty type() const { return t_; }

    static H zero() { return H{}; }
    // x + x and x - x of one value: in a real-output transform of a
    // Hermitian spectrum the two members of a conjugate pair meet this way.
    // The difference is an exact zero; the sum is the value formed with
    // doubled constants where it is a product (or a sum of products), so
    // that the factor 2 rides on the constants instead of an addition.
    H add_r(H a, H b) {
        if (!a.valid()) return b;
        if (!b.valid()) return a;
        if (a.id == b.id) return a.neg != b.neg ? zero() : twice(a, 2);
        return g_.add(a, b);
    }
    H neg_r(H a) { return a.valid() ? -a : a; }
    H sub_r(H a, H b) { return add_r(a, neg_r(b)); }
    // Product with a real constant, the same in every lane.
    H mul_r(H x, long double c) {
        if (!x.valid() || c == 0) return zero();
        if (c == 1) return x;
        if (c == -1) return -x;
        return g_.mul(x, g_.splat(t_, static_cast<double>(c)));
    }
    // Product with a constant that differs across lanes (stored per lane,
    // zero and one lanes multiplied like the others).
    H mul_lanes(H x, const std::vector<double>& c) {
        if (!x.valid()) return zero();
        return g_.mul(x, g_.constant(t_, c, true));
    }

    C add(C a, C b) { return {add_r(a.re, b.re), add_r(a.im, b.im)}; }
    C sub(C a, C b) { return {sub_r(a.re, b.re), sub_r(a.im, b.im)}; }
    C neg(C a) { return {neg_r(a.re), neg_r(a.im)}; }
    C conj(C a) { return {a.re, neg_r(a.im)}; }
    C mul_i(C a, int s) { return s < 0 ? C{a.im, neg_r(a.re)} : C{neg_r(a.im), a.re}; }
    C mul_real(C a, long double c) { return {mul_r(a.re, c), mul_r(a.im, c)}; }
    std::pair<C, C> rot_butterfly(C x, C y, int s) { const C r = mul_i(y, s); return {add(x, r), sub(x, r)}; }
    C rot_scale(C a, long double c, int s) { return mul_i(mul_real(a, c), s); }
    C settle(C a) { return a; }
    // Full complex product with a lane-uniform constant, four products.
    C cmul(C x, tqfgen::Root w) {
        const long double wr = w.real(), wi = w.imag();
        return {sub_r(mul_r(x.re, wr), mul_r(x.im, wi)), add_r(mul_r(x.re, wi), mul_r(x.im, wr))};
    }
    C twiddle(C x, tqfgen::Root w, bool = false) {
        const long double r = std::sqrt(0.5L);
        switch (tqfgen::eighth_turn(w)) {
        case 0: return x;
        case 2: return mul_i(x, +1);
        case 4: return neg(x);
        case 6: return mul_i(x, -1);
        case 7: return mul_real(add(x, mul_i(x, -1)), r);
        case 1: return mul_real(add(x, mul_i(x, +1)), r);
        case 3: return neg(mul_real(add(x, mul_i(x, -1)), r));
        case 5: return neg(mul_real(add(x, mul_i(x, +1)), r));
        default: return cmul(x, w);
        }
    }

private:
    H twice(H h, int levels) {
        // Copies, not references: the calls below add nodes.
        const tqfgen::Node n = g_.node(h.id);
        if (n.op == tqfgen::Op::Mul && levels > 0) {
            std::vector<double> v;
            for (double x : g_.node(n.b).cval) v.push_back(2 * x);
            const H c = g_.constant(t_, v);
            const H r = g_.mul(H{n.a, false}, c);
            return h.neg ? -r : r;
        }
        if ((n.op == tqfgen::Op::Add || n.op == tqfgen::Op::Sub) && levels > 1) {
            const bool products = g_.node(n.a).op == tqfgen::Op::Mul && g_.node(n.b).op == tqfgen::Op::Mul;
            if (products) {
                const H x = twice(H{n.a, false}, levels - 1);
                const H y = twice(H{n.b, false}, levels - 1);
                const H r = n.op == tqfgen::Op::Add ? g_.add(x, y) : g_.sub(x, y);
                return h.neg ? -r : r;
            }
        }
        return g_.add(h, h);
    }

    tqfgen::Graph& g_;
    tqfgen::Ty t_;
};

}  // namespace tqfcdft
