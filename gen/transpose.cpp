#include "transpose.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

#include "transpose_rounding.h"

namespace tqfgen {

namespace {

// Two products by the cosine and the sine of one angle: the adjoint of a
// value that a rotation took as one of its components.
bool rotation_terms(const Graph& g, const std::vector<Handle>& terms) {
    if (terms.size() != 2) return false;
    long double c[2];
    for (int i = 0; i < 2; ++i) {
        if (!terms[i].valid()) return false;
        const Node& p = g.node(terms[i].id);
        if (p.op != Op::Mul || g.node(p.b).op != Op::Const) return false;
        c[i] = g.exact_value(p.b);
    }
    return std::fabs(c[0] * c[0] + c[1] * c[1] - 1) < 1e-15L;
}

// Whether the two products of rotation_terms are by the cosine and the sine
// of 80 degrees (2/9 of a turn), in either order and sign.
bool rotation_by_80(const Graph& g, const std::vector<Handle>& terms) {
    const long double pi = 3.14159265358979323846264338327950288L;
    const long double c = std::cos(4 * pi / 9), s = std::sin(4 * pi / 9);
    const long double u = std::fabs(g.exact_value(g.node(terms[0].id).b));
    const long double v = std::fabs(g.exact_value(g.node(terms[1].id).b));
    return (std::fabs(u - c) < 1e-15L && std::fabs(v - s) < 1e-15L) ||
           (std::fabs(u - s) < 1e-15L && std::fabs(v - c) < 1e-15L);
}

// The operand of a product as the data value, before any widening.
Handle product_operand(const Graph& g, const Handle& t) {
    const Node& p = g.node(t.id);
    const Node& w = g.node(p.a);
    return Handle{w.op == Op::Widen ? w.a : p.a, t.neg};
}

// A weight that is one component of a complex product by a constant (the
// sum or difference of two products by constants, rounded or not), as those
// two products with k folded into their constants; invalid if it is not one.
Handle rotation_times(SplitAlg& a, const Handle& v, long double k) {
    const Graph& g = a.graph();
    int id = v.id;
    if (g.node(id).op == Op::Narrow) id = g.node(id).a;
    const Node& s = g.node(id);
    if (s.op != Op::Add && s.op != Op::Sub) return Handle{};
    const Handle p[2] = {Handle{s.a, false}, Handle{s.b, false}};
    for (const Handle& h : p)
        if (g.node(h.id).op != Op::Mul || g.node(g.node(h.id).b).op != Op::Const) return Handle{};
    const Handle q0 = a.mul_r(product_operand(g, p[0]), k * g.exact_value(g.node(p[0].id).b));
    const Handle q1 = a.mul_r(product_operand(g, p[1]), k * g.exact_value(g.node(p[1].id).b));
    const Handle r = s.op == Op::Add ? a.add_r(q0, q1) : a.sub_r(q0, q1);
    return v.neg ? -r : r;
}

// The longest chain of arithmetic from a load to node id (memo: by id, -1
// not known yet; nodes never change once made).
int arithmetic_depth(const Graph& g, int id, std::vector<int>& memo) {
    if (id < 0) return 0;
    if (static_cast<int>(memo.size()) < g.size()) memo.resize(g.size(), -1);
    if (memo[id] >= 0) return memo[id];
    const Node& n = g.node(id);
    const bool arithmetic = n.op == Op::Add || n.op == Op::Sub || n.op == Op::Mul;
    const int operands = std::max(arithmetic_depth(g, n.a, memo), n.op == Op::Mul ? 0 : arithmetic_depth(g, n.b, memo));
    return memo[id] = operands + (arithmetic ? 1 : 0);
}

}  // namespace

std::vector<Handle> transpose(const Graph& source, const std::vector<Handle>& y, SplitAlg& target,
                              const std::vector<Weight>& weights, int inputs, bool fold_single_use,
                              bool fold_rotations) {
    if (y.size() != weights.size()) throw std::logic_error("transpose: one weight per output");
    // Contributions to the adjoint of each source node, in order of arrival,
    // and the doubled weights not yet multiplied out.
    std::map<int, std::vector<Handle>, std::greater<int>> parts;
    std::map<int, std::vector<Weight>> doubled;
    // How often each target value was handed on: a product by a constant
    // that is all of a value's use can go into that value's own products.
    std::map<int, int> uses;
    const auto add_part = [&](int id, Handle h) {
        if (h.valid()) ++uses[h.id];
        parts[id].push_back(h);
    };
    for (size_t j = 0; j < y.size(); ++j) {
        if (!y[j].valid() || !weights[j].value.valid()) continue;
        Weight w = weights[j];
        if (y[j].neg) w.value = -w.value;
        if (w.doubled) {
            doubled[y[j].id].push_back(w);
            parts[y[j].id];  // a node to visit, its terms still to come
        } else {
            add_part(y[j].id, w.value);
        }
    }
    const bool doubled_harmonics =
        std::any_of(weights.begin(), weights.end(), [](const Weight& w) { return w.doubled; });
    AdjointRounding rounding(source, target, doubled_harmonics);
    std::vector<int> depth_memo;
    std::vector<Handle> x(inputs);
    // Operands have lower ids than their users: descending ids visit every
    // node after all of its users.
    while (!parts.empty()) {
        const auto it = parts.begin();
        const int id = it->first;
        std::vector<Handle> terms = it->second;
        parts.erase(it);
        const Node& n = source.node(id);
        std::vector<Weight> twice;
        if (auto d = doubled.find(id); d != doubled.end()) {
            twice = d->second;
            doubled.erase(d);
        }
        // A doubled weight that is all of a product's adjoint: the product
        // takes the factor 2.
        if (n.op == Op::Mul && terms.empty() && twice.size() == 1) {
            rounding.folded(id);
            add_part(n.a, target.mul_r(twice[0].value, 2.0L * source.exact_value(n.b)));
            continue;
        }
        // A product whose whole adjoint is one rotation's component: its
        // constant goes into the rotation's two, one product less (the
        // 3-point stage's sine before a twiddle, seen from the spectrum);
        // not into a twiddle by 80 degrees where the program keeps those
        // (Graph::sines_kept_at_80).
        const bool kept_at_80 = (source.sines_kept_at_80 || target.graph().sines_kept_at_80) &&
                                rotation_terms(target.graph(), terms) && rotation_by_80(target.graph(), terms);
        if (n.op == Op::Mul && twice.empty() && fold_rotations && rotation_terms(target.graph(), terms) && !kept_at_80) {
            const long double k = source.exact_value(n.b);
            for (const Handle& t : terms)
                add_part(n.a, target.mul_r(product_operand(target.graph(), t),
                                                  k * target.graph().exact_value(target.graph().node(t.id).b)));
            continue;
        }
        // A product whose whole adjoint is a weight formed by a complex
        // product and used nowhere else (a folded Rader bin that one output
        // of a 3-point stage takes alone): that product's two take its constant.
        if (n.op == Op::Mul && twice.empty() && terms.size() == 1 && terms[0].valid() && uses[terms[0].id] == 1 && fold_single_use) {
            const Handle r = rotation_times(target, terms[0], source.exact_value(n.b));
            if (r.valid()) {
                add_part(n.a, r);
                continue;
            }
        }
        for (const Weight& w : twice) terms.push_back(target.doubled(w.value));
        const AdjointRounding::Plan plan = rounding.prepare(id, terms);
        if (target.shallow_sums)
            std::stable_sort(terms.begin(), terms.end(), [&](const Handle& p, const Handle& q) {
                return arithmetic_depth(target.graph(), p.id, depth_memo) <
                       arithmetic_depth(target.graph(), q.id, depth_memo);
            });
        Handle z;
        const auto single = [&](const Handle& t) { return t.valid() && target.graph().node(t.id).ty == Ty::F32; };
        for (const Handle& t : terms) z = target.add_r(z, !z.valid() && plan.widen_first && single(t) ? target.graph().widen(t) : t);
        z = target.settle_r(z);
        if (!z.valid()) continue;
        rounding.formed(plan, z);
        switch (n.op) {
        case Op::LoadScalar:
            if (n.index[0] < 0 || n.index[0] >= inputs) throw std::logic_error("transpose: load outside the input");
            x[n.index[0]] = z;
            break;
        case Op::Add:
            add_part(n.a, z);
            add_part(n.b, z);
            break;
        case Op::Sub:
            add_part(n.a, z);
            add_part(n.b, -z);
            break;
        case Op::Mul: add_part(n.a, target.mul_r(z, source.exact_value(n.b))); break;
        default: throw std::logic_error("transpose: not a linear scalar program");
        }
    }
    return x;
}

std::vector<Handle> transpose_half_spectrum(const Graph& source, const std::vector<Cx>& X, SplitAlg& target,
                                            const std::vector<Cx>& F, int n, bool doubled, bool fold_single_use,
                                            bool fold_rotations) {
    std::vector<Handle> y;
    std::vector<Weight> w;
    for (int k = 0; 2 * k <= n; ++k) {
        const bool interior = k != 0 && 2 * k != n;
        y.push_back(X[k].re);
        w.push_back({F[k].re, interior && doubled});
        if (interior) {
            y.push_back(X[k].im);
            w.push_back({F[k].im, doubled});
        }
    }
    return transpose(source, y, target, w, n, fold_single_use, fold_rotations);
}

}  // namespace tqfgen
