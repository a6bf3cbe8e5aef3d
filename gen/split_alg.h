// Complex values as two registers of one type, real part and imaginary part:
// scalar float or double, four float lanes (planar form), or two doubles
// whose lanes each run the same real-coefficient program (real-lane form).
//
// An invalid handle is an exact zero: real-input transforms and zero-padded
// inputs cost only the operations on non-zero parts, and a value that never
// reaches an output is dropped by the counter and the emitter alike. For the
// same reason x - x of one value is an exact zero and x + x is formed with
// doubled constants: in a real-data program the two members of a conjugate
// pair meet this way (other programs never add a value to itself).
//
// Products: mul_r by a constant that is the same in every lane, where 0 and
// +-1 are no product; mul_lanes by per-lane constants, where every lane is
// multiplied, 1.0 and 0.0 included (the packed twiddle stages need exactly
// that).
//
// With widening (scalar float data), every product with a constant is formed
// in double from the exactly widened value and a double constant, the sums
// that complete it are done in double, and settle() rounds the finished
// combination once; sums of float values stay float.
#pragma once

#include <map>
#include <set>
#include <vector>

#include "roots.h"

namespace tqfgen {

class SplitAlg {
public:
    using C = Cx;
    using H = Handle;
    SplitAlg(Graph& g, Ty data, bool widen = false) : g_(g), data_(data), widen_(widen) {}

    Graph& graph() { return g_; }
    // 2.0 * x in x's own precision (exact; no widening): the doubling of a
    // harmonic in the inverse real programs.
    H doubled(H x) {
        if (!x.valid()) return x;
        const H two = g_.splat(g_.node(x.id).ty, 2.0);
        return g_.mul(x, two);
    }
    Ty data_type() const { return data_; }
    bool widening() const { return widen_; }
    // Register type of products with constants.
    Ty product_type() const { return widen_ ? Ty::F64 : data_; }

    static H zero() { return H{}; }

    H add_r(H a, H b) {
        if (!a.valid()) return b;
        if (!b.valid()) return a;
        if (a.id == b.id) return a.neg != b.neg ? zero() : twice(a, 2);
        // A float value meeting a widened product joins its combination.
        if (g_.node(a.id).ty != g_.node(b.id).ty) {
            if (g_.node(a.id).ty == Ty::F32) a = g_.widen(a);
            else b = g_.widen(b);
        }
        return g_.add(a, b);
    }
    H neg_r(H a) { return a.valid() ? -a : a; }
    H sub_r(H a, H b) { return add_r(a, neg_r(b)); }
    // Product with a real constant, the same in every lane.
    H mul_r(H x, long double c) {
        if (!x.valid() || c == 0) return zero();
        if (c == 1) return x;
        if (c == -1) return -x;
        // Sequenced: the widening is created before the constant.
        const H w = widened(x);
        return g_.mul(w, g_.splat(product_type(), c));
    }
    // Product with a constant that differs across lanes, stored per lane with
    // its signs; zero and one lanes are multiplied like the others.
    H mul_lanes(H x, const std::vector<double>& c) {
        if (!x.valid()) return zero();
        const H w = widened(x);
        return g_.mul(w, g_.constant(product_type(), c, true));
    }
    // End of a linear combination: a widened value is rounded once.
    H settle_r(H a) { return widen_ && a.valid() ? g_.narrow(a) : a; }
    // A lone product that is a value of its own, not a row: an eighth-turn
    // twiddle's (x -+ i x) sqrt(1/2). It is rounded here like any finished
    // combination, and stays rounded when it is stored: only a row (a sum,
    // or a product of the direct form) is scaled while still in double.
    H keep_r(H a) {
        a = settle_r(a);
        if (a.valid()) kept_.insert(a.id);
        return a;
    }
    bool kept(H a) const { return a.valid() && kept_.count(a.id) != 0; }
    // The combination a settled value was rounded from, still in double;
    // invalid for any other value (a kept one included).
    H unrounded(H a) const {
        if (!a.valid() || kept(a) || g_.node(a.id).op != Op::Narrow) return zero();
        return H{g_.node(a.id).a, a.neg};
    }

    C add(C a, C b) { return {add_r(a.re, b.re), add_r(a.im, b.im)}; }
    C sub(C a, C b) { return {sub_r(a.re, b.re), sub_r(a.im, b.im)}; }
    C neg(C a) { return {neg_r(a.re), neg_r(a.im)}; }
    C conj(C a) { return {a.re, neg_r(a.im)}; }
    C mul_i(C a, int s) { return s < 0 ? C{a.im, neg_r(a.re)} : C{neg_r(a.im), a.re}; }
    C mul_real(C a, long double c) { return {mul_r(a.re, c), mul_r(a.im, c)}; }
    std::pair<C, C> rot_butterfly(C x, C y, int s) {
        const C r = mul_i(y, s);
        return {add(x, r), sub(x, r)};
    }
    C rot_scale(C a, long double c, int s) { return mul_i(mul_real(a, c), s); }
    C settle(C a) { return {settle_r(a.re), settle_r(a.im)}; }
    C keep(C a) { return {keep_r(a.re), keep_r(a.im)}; }
    // Full complex product with a lane-uniform constant, four products.
    C cmul(C x, Root w, bool = false) {
        const long double wr = w.real(), wi = w.imag();
        const H im_wi = mul_r(x.im, wi);
        const H re_wr = mul_r(x.re, wr);
        const H re = sub_r(re_wr, im_wi);
        const H im_wr = mul_r(x.im, wr);
        const H re_wi = mul_r(x.re, wi);
        return {re, add_r(re_wi, im_wr)};
    }

    // By prime p, the order in which a p-point block in the direct form
    // (cdft/real_lane.h) forms its rows: 0 the sum of all inputs, k the
    // cosine and sine rows of bin k; a prime not listed forms 0, 1, ..., m.
    // No value depends on it: it is there for the transpose, which sums each
    // row of an inverse program in the reverse of this order (rdft/inverse.h).
    std::map<int, std::vector<int>> direct_row_order;

    // Set on the forward program that an inverse real program transposes
    // (rdft/inverse.h): the Rader ways back of odd length that hold
    // twiddles are then built without folds (cdft/rader_real.h).
    bool transposed_later = false;

    // Set while a Rader form that asks for it returns its sine
    // (cdft/rader_real.h, "shallow-sine:"): a transpose into this algebra
    // sums the contributions to each value shallowest first, which only
    // reassociates those sums.
    bool shallow_sums = false;

private:
    H widened(H x) { return widen_ && g_.node(x.id).ty == Ty::F32 ? g_.widen(x) : x; }
    H twice(H h, int levels);

    Graph& g_;
    Ty data_;
    bool widen_;
    std::set<int> kept_;  // ids of the rounded values keep_r made
};

}  // namespace tqfgen
