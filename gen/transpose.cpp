#include "transpose.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <stdexcept>

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

// A component of a rotation: two products by the cosine and the sine of one
// angle, summed.
bool rotation_node(const Graph& g, const Node& n) {
    if (n.op != Op::Add && n.op != Op::Sub) return false;
    const Node& a = g.node(n.a);
    const Node& b = g.node(n.b);
    if (a.op != Op::Mul || b.op != Op::Mul) return false;
    const long double c = g.exact_value(a.b), s = g.exact_value(b.b);
    return std::fabs(c * c + s * s - 1) < 1e-15L;
}

// Whether the sum tree of a node (its additions and subtractions, a few
// levels down) holds a rotation's component.
bool holds_rotation(const Graph& g, int id, int levels = 6) {
    const Node& n = g.node(id);
    if (n.op != Op::Add && n.op != Op::Sub) return false;
    if (rotation_node(g, n)) return true;
    return levels > 0 && (holds_rotation(g, n.a, levels - 1) || holds_rotation(g, n.b, levels - 1));
}

// The constants of a sum of products, through its sums; false if a term is
// not a product by a constant.
bool row_constants(const Graph& g, int id, std::vector<long double>& c) {
    const Node& n = g.node(id);
    if (n.op == Op::Mul) {
        if (g.node(n.b).op != Op::Const) return false;
        c.push_back(std::fabs(g.exact_value(n.b)));
        return true;
    }
    if (n.op != Op::Add && n.op != Op::Sub) return false;
    return row_constants(g, n.a, c) && row_constants(g, n.b, c);
}

// A sine row of a direct p-point block: (p - 1) / 2 products by sines of
// multiples of 2 pi / p, summed.
bool direct_sine_row(const Graph& g, int id) {
    const Node& n = g.node(id);
    std::vector<long double> c;
    if ((n.op != Op::Add && n.op != Op::Sub) || !row_constants(g, id, c)) return false;
    const int p = 2 * static_cast<int>(c.size()) + 1;
    const long double pi = 3.14159265358979323846264338327950288L;
    for (long double v : c) {
        bool sine = false;
        for (int k = 1; k < p && !sine; ++k) sine = std::fabs(v - std::fabs(std::sin(2 * pi * k / p))) < 1e-15L;
        if (!sine) return false;
    }
    return true;
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

// Whether a node's sum tree holds no product: a sum of kept values.
bool product_free(const Graph& g, int id) {
    const Node& n = g.node(id);
    if (n.op == Op::Mul) return false;
    if (n.op == Op::Add || n.op == Op::Sub) return product_free(g, n.a) && product_free(g, n.b);
    return true;
}

// A row x + c y of a block: a sum of kept values and one product by a
// constant, one double combination in the forward program (the x - 0.5 y of
// a 3-point stage). The eighth-turn's product by sqrt(1/2) is a kept value
// of its own, not part of a row.
bool kept_value_row(const Graph& g, int id) {
    const Node& n = g.node(id);
    if (n.op != Op::Add && n.op != Op::Sub) return false;
    const auto row_product = [&](int p) {
        const Node& m = g.node(p);
        return m.op == Op::Mul && g.node(m.b).op == Op::Const &&
               std::fabs(std::fabs(g.exact_value(m.b)) - std::sqrt(0.5L)) > 1e-15L;
    };
    return (row_product(n.a) && product_free(g, n.b)) || (row_product(n.b) && product_free(g, n.a));
}

// A product by a constant, or a row x + c y: a kept value of a block's stage.
bool product_or_row(const Graph& g, int id) {
    const Node& n = g.node(id);
    return (n.op == Op::Mul && g.node(n.b).op == Op::Const) || kept_value_row(g, id);
}

// A 2-point step on two kept values of one kind: two products (the sines of
// 3-point stages) or two rows x + c y.
bool step_on_kept_pair(const Graph& g, int id) {
    const Node& n = g.node(id);
    return (n.op == Op::Add || n.op == Op::Sub) && product_or_row(g, n.a) && product_or_row(g, n.b);
}

// Whether every user of a node is a 2-point step of it with a product by a
// constant (and it has one).
bool stepped_with_products(const Graph& g, int id) {
    bool stepped = false;
    for (int i = id + 1; i < g.size(); ++i) {
        const Node& m = g.node(i);
        if (m.a != id && (m.op == Op::Mul || m.b != id)) continue;
        if (m.op != Op::Add && m.op != Op::Sub) return false;
        if (g.node(m.a == id ? m.b : m.a).op != Op::Mul) return false;
        stepped = true;
    }
    return stepped;
}

// A value rounded from the sum or difference of two products by constants
// (a component of a rotation or of a Rader kernel's product), still in
// double; invalid for any other value.
Handle unrounded_products(SplitAlg& a, const Handle& t) {
    const Handle u = a.unrounded(t);
    if (!u.valid()) return u;
    const Graph& g = a.graph();
    const Node& s = g.node(u.id);
    const bool products = (s.op == Op::Add || s.op == Op::Sub) && g.node(s.a).op == Op::Mul && g.node(s.b).op == Op::Mul;
    return products ? u : Handle{};
}

// Two outputs of a Rader kernel's products (SplitAlg::kernel_outputs), one
// the lone product of its real bin m.
bool kernel_step_with_bin_m(SplitAlg& a, const std::vector<Handle>& terms) {
    int lone = 0;
    for (const Handle& t : terms) {
        const Handle u = t.valid() ? a.unrounded(t) : Handle{};
        if (!u.valid() || a.kernel_outputs.count(u.id) == 0) return false;
        lone += a.graph().node(u.id).op == Op::Mul;
    }
    return lone == 1;
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
    // The sine rows of the untwiddled block of a Cooley-Tukey stage: a
    // direct block's sine row that some sum adds to rotation outputs (the
    // next stage's block takes it as its untwiddled input, the others as
    // twiddled ones). In an inverse program (doubled harmonics) with
    // widening, the adjoint of such a row, when it sums three or more kept
    // values, is summed in double and rounded once: the inverse 25, 49 and
    // 50 are counted so (the imaginary part of bin 0 of each complex block
    // on the spectrum side). Hartley's form B, this graph on undoubled
    // harmonics, and the Good-Thomas stages (35) sum it in single.
    const bool doubled_harmonics =
        std::any_of(weights.begin(), weights.end(), [](const Weight& w) { return w.doubled; });
    std::map<int, std::vector<int>> sum_users;
    if (doubled_harmonics && target.widening())
        for (int i = 0; i < source.size(); ++i)
            if (source.node(i).op == Op::Add || source.node(i).op == Op::Sub) {
                sum_users[source.node(i).a].push_back(i);
                sum_users[source.node(i).b].push_back(i);
            }
    const auto untwiddled_sine_row = [&](int id) {
        if (!direct_sine_row(source, id)) return false;
        for (int u : sum_users[id]) {
            const Node& m = source.node(u);
            if (holds_rotation(source, m.a == id ? m.b : m.a)) return true;
        }
        return false;
    };
    std::vector<int> depth_memo;
    std::set<int> handed_unrounded;  // target ids of the adjoints of steps in double
    // The adjoints of the first inputs of 5- and 7-point blocks (see below):
    // where products joined them unrounded, still in double before rounding.
    std::set<int> first_inputs_in_double;
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
            add_part(n.a, target.mul_r(twice[0].value, 2.0L * source.exact_value(n.b)));
            continue;
        }
        // A product whose whole adjoint is one rotation's component: its
        // constant goes into the rotation's two, one product less (the
        // 3-point stage's sine before a twiddle, seen from the spectrum).
        if (n.op == Op::Mul && twice.empty() && fold_rotations && rotation_terms(target.graph(), terms)) {
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
        const auto kept_single = [&](const Handle& t) { return t.valid() && target.graph().node(t.id).ty == Ty::F32; };
        const bool in_double = doubled_harmonics && target.widening() && terms.size() > 2 &&
                               std::all_of(terms.begin(), terms.end(), kept_single) && untwiddled_sine_row(id);
        // The transpose of a Rader bin formed in double (bin_in_double in
        // cdft/rader_real.cpp): the adjoint of a row x + c y whose
        // contributions are all combinations of products (the kernel's
        // outputs) sums them from the unrounded combinations, in double, and
        // is rounded once, as the forward forms the bin from the unrounded
        // rows. Inverse 19, its blocks in 38 and 57, and 37.
        if (doubled_harmonics && target.widening() && !in_double && terms.size() >= 2 && kept_value_row(source, id) &&
            std::all_of(terms.begin(), terms.end(), [&](const Handle& t) { return unrounded_products(target, t).valid(); }))
            for (Handle& t : terms) t = unrounded_products(target, t);
        // A value that a 2-point step formed from two kept values of one kind
        // and that three or four users take (here always the first input of
        // a 5- or 7-point direct block: its DC sum and cosine rows): a
        // contribution to its adjoint still formed by products (a folded
        // bin, a kernel's output) joins the sum unrounded, in double. Inverse
        // and Hartley 31, inverse 59, most of the gap at 47 and 62 in every
        // real family, and with the rule after this one all of it at 59. An
        // 11-point block's first input (six users) sums them rounded: in
        // double they overshoot 47 by 17.
        const bool block_first_input =
            target.widening() && !in_double && (terms.size() == 3 || terms.size() == 4) && step_on_kept_pair(source, id);
        if (block_first_input)
            for (Handle& t : terms)
                if (unrounded_products(target, t).valid()) t = unrounded_products(target, t);
        // A step that the forward program forms in double from rows
        // (Graph::steps_in_double; a Rader bin's, cdft/rader_real.cpp): its
        // adjoint sums the kernel's products unrounded and hands the sum on
        // unrounded, so that the adjoints of the rows sum in double too, as
        // the forward forms the step from the unrounded rows. Inverse 61.
        const bool step_in_double = target.widening() && source.steps_in_double.count(id) != 0;
        if (step_in_double)
            for (Handle& t : terms)
                if (unrounded_products(target, t).valid()) t = unrounded_products(target, t);
        for (Handle& t : terms)
            if (t.valid() && handed_unrounded.count(t.id) != 0) t = target.unrounded(t);  // always a rounded sum
        // A row x + c y stepped only with products, each step's adjoint such
        // a first input summed in double: the steps hand their sums on
        // unrounded and the row's adjoint joins them in double. Forward and
        // Hartley 59: the bin-0 row x0 - Y0/28 of the nested 29s in the ways
        // back, stepped with the kernel's products into the first inputs of
        // 7-point blocks. A row stepped with another row (the 3-point stages
        // of 31) sums them rounded.
        if (target.widening() && !in_double && terms.size() >= 2 && kept_value_row(source, id) &&
            std::all_of(terms.begin(), terms.end(), [&](const Handle& t) {
                return t.valid() && first_inputs_in_double.count(t.id) != 0 && target.unrounded(t).valid();
            }) &&
            stepped_with_products(source, id))
            for (Handle& t : terms) t = target.unrounded(t);
        // A value that sums a Rader kernel's real bin m (even m) and one
        // component of a complex bin, both straight from the kernel's
        // products, sums them unrounded, in double: a 2-point step of a way
        // back on bin m (the cosine 2 G 3 of 53's 13-point blocks on the
        // complex column, as the forward 53 is counted; 37's cosine
        // 2 G (3 T 3) takes one such step).
        if (target.widening() && !in_double && terms.size() == 2 && kernel_step_with_bin_m(target, terms))
            for (Handle& t : terms) t = target.unrounded(t);
        // A value the source marked (Graph::adjoints_unrounded): the row and
        // the rotation's component of a Rader bin that the forward forms in
        // double from both. Its adjoint sums the kernel's products unrounded.
        if (target.widening() && !in_double && terms.size() >= 2 && source.adjoints_unrounded.count(id) != 0)
            for (Handle& t : terms)
                if (t.valid() && target.unrounded(t).valid()) t = target.unrounded(t);
        if (target.shallow_sums)
            std::stable_sort(terms.begin(), terms.end(), [&](const Handle& p, const Handle& q) {
                return arithmetic_depth(target.graph(), p.id, depth_memo) <
                       arithmetic_depth(target.graph(), q.id, depth_memo);
            });
        Handle z;
        // A folded Rader kernel's bin m stepped with a complex bin in its way
        // back (Graph::adjoints_widened): its adjoint is summed in double.
        const bool widened = target.widening() && terms.size() >= 2 && source.adjoints_widened.count(id) != 0;
        const auto first_term = [&](const Handle& t) {
            return (in_double || (widened && target.graph().node(t.id).ty == Ty::F32)) ? target.graph().widen(t) : t;
        };
        for (const Handle& t : terms) z = target.add_r(z, !z.valid() ? first_term(t) : t);
        z = target.settle_r(z);
        if (!z.valid()) continue;
        if (step_in_double && target.unrounded(z).valid()) handed_unrounded.insert(z.id);
        if (block_first_input) first_inputs_in_double.insert(z.id);
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
