#include "transpose_rounding.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tqfgen {

namespace {

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

// Whether a node's sum tree holds no product: a sum of kept values.
bool product_free(const Graph& g, int id) {
    const Node& n = g.node(id);
    if (n.op == Op::Mul) return false;
    if (n.op == Op::Add || n.op == Op::Sub) return product_free(g, n.a) && product_free(g, n.b);
    return true;
}

// A difference of two loads, one of them load 0: on the odd harmonics
// (AdjointRounding's marks) the difference of the DC and the Nyquist.
bool difference_on_load_0(const Graph& g, int id) {
    const Node& d = g.node(id);
    if (d.op != Op::Sub) return false;
    const Node& l = g.node(d.a);
    const Node& r = g.node(d.b);
    return l.op == Op::LoadScalar && r.op == Op::LoadScalar && (l.index[0] == 0 || r.index[0] == 0);
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

// A product by a constant.
bool constant_product(const Graph& g, int id) {
    const Node& n = g.node(id);
    return n.op == Op::Mul && g.node(n.b).op == Op::Const;
}

// A product by a constant, or a row x + c y: a kept value of a block's stage.
bool product_or_row(const Graph& g, int id) { return constant_product(g, id) || kept_value_row(g, id); }

// A 2-point step on two kept values of one kind: two products (the sines of
// 3-point stages) or two rows x + c y.
bool step_on_kept_pair(const Graph& g, int id) {
    const Node& n = g.node(id);
    return (n.op == Op::Add || n.op == Op::Sub) && product_or_row(g, n.a) && product_or_row(g, n.b);
}

// A row x + c y whose x is a 2-point step on two kept values of one kind,
// two products or two rows x + c y, each with several users (`users`: how
// many operations take each node): a stage of rows over the outputs of a
// stage that formed rows and products (the Rader inner's 3-point stage in
// the complex column of 39, over the outputs of 39's 3-point stage). A sine
// row's two one-user products are not kept values.
bool row_on_kept_step(const Graph& g, const std::vector<int>& users, int id) {
    const Node& n = g.node(id);
    if (n.op != Op::Add && n.op != Op::Sub) return false;
    const auto kept = [&](int v) { return users[v] >= 2; };
    const auto step_of_one_kind = [&](int s) {
        const Node& m = g.node(s);
        return (m.op == Op::Add || m.op == Op::Sub) && kept(m.a) && kept(m.b) &&
               ((constant_product(g, m.a) && constant_product(g, m.b)) ||
                (kept_value_row(g, m.a) && kept_value_row(g, m.b)));
    };
    return (constant_product(g, n.a) && step_of_one_kind(n.b)) || (constant_product(g, n.b) && step_of_one_kind(n.a));
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

// Two outputs of a Rader kernel's products (Graph::kernel_outputs), one
// the lone product of its real bin m.
bool kernel_step_with_bin_m(SplitAlg& a, const std::vector<Handle>& terms) {
    int lone = 0;
    for (const Handle& t : terms) {
        const Handle u = t.valid() ? a.unrounded(t) : Handle{};
        if (!u.valid() || a.graph().kernel_outputs.count(u.id) == 0) return false;
        lone += a.graph().node(u.id).op == Op::Mul;
    }
    return lone == 1;
}

}  // namespace

AdjointRounding::AdjointRounding(const Graph& source, SplitAlg& target, bool doubled_harmonics)
    : source_(source), target_(target), doubled_harmonics_(doubled_harmonics), users_(source.size(), 0) {
    for (int i = 0; i < source_.size(); ++i) {
        const Node& n = source_.node(i);
        if (n.op == Op::Add || n.op == Op::Sub || n.op == Op::Mul) ++users_[n.a];
        if (n.op == Op::Add || n.op == Op::Sub) ++users_[n.b];
    }
    mark_odd_harmonics();
    if (doubled_harmonics_ && target_.widening())
        for (int i = 0; i < source_.size(); ++i)
            if (source_.node(i).op == Op::Add || source_.node(i).op == Op::Sub) {
                sum_users_[source_.node(i).a].push_back(i);
                sum_users_[source_.node(i).b].push_back(i);
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
bool AdjointRounding::untwiddled_sine_row(int id) {
    if (!direct_sine_row(source_, id)) return false;
    for (int u : sum_users_[id]) {
        const Node& m = source_.node(u);
        if (holds_rotation(source_, m.a == id ? m.b : m.a)) return true;
    }
    return false;
}

// The nodes of a block on the odd harmonics behind a first 2-point stage:
// formed from the differences of the loads j and j + n/2 alone.
void AdjointRounding::mark_odd_harmonics() {
    odd_harmonics_.assign(source_.size(), false);
    int loads = 0;
    for (int i = 0; i < source_.size(); ++i)
        if (source_.node(i).op == Op::LoadScalar) loads = std::max(loads, source_.node(i).index[0] + 1);
    for (int i = 0; i < source_.size(); ++i) {
        const Node& n = source_.node(i);
        if (n.op == Op::Mul) odd_harmonics_[i] = odd_harmonics_[n.a];
        if (n.op != Op::Add && n.op != Op::Sub) continue;
        const Node& a = source_.node(n.a);
        const Node& b = source_.node(n.b);
        if (a.op == Op::LoadScalar && b.op == Op::LoadScalar)
            odd_harmonics_[i] = n.op == Op::Sub && 2 * std::abs(a.index[0] - b.index[0]) == loads;
        else
            odd_harmonics_[i] = odd_harmonics_[n.a] && odd_harmonics_[n.b];
    }
}

// The first inputs of the direct blocks of the Rader block on the odd
// harmonics behind a 2-point stage that gives x (22 = 2 G 11r, 46 = 2 G 23,
// 58 = 2 G 29, 62 = 2 G 31): the blocks that the kernel's bins enter first
// in its ways back. Each one's adjoint sums the block's doubled parts (its
// DC output and its cosine rows). In an inverse program with widening, when
// it sums three or more kept values, that sum is in double and rounded
// once, for the block of bin 0 (its row x0 - Y0/(p - 1), whose x0 is the
// difference of the loads 0 and n/2) and for those of the complex bins (a
// component of the kernel's product, two products summed); the block of
// the real bin (p - 1)/2, a lone product, sums in single. Picked to fit:
// the inverse 22, 46, 58 and 62 are counted so (2, 5, 9 and 10 sums more
// than the rule for kept values gives; 58 runs its cosine way back with
// the 7-point blocks first, rdft/inverse.cpp). The even harmonics' block,
// whose DC is bin 0, sums them in single, as the prime alone does; so do
// Hartley's form B (undoubled) and a block of two kept values.
bool AdjointRounding::odd_harmonics_block_first_input(int id) const {
    if (!odd_harmonics_[id]) return false;
    const Node& n = source_.node(id);
    if (n.op != Op::Add && n.op != Op::Sub) return false;
    // A complex bin's component: two products of its own (a 3-point stage's
    // two sines on the loads' side share theirs with the other component).
    if (constant_product(source_, n.a) && constant_product(source_, n.b)) return users_[n.a] == 1 && users_[n.b] == 1;
    if (!kept_value_row(source_, id)) return false;
    const bool product_a = source_.node(n.a).op == Op::Mul;
    const Node& y = source_.node(product_a ? n.a : n.b);
    const long double k = 1 / std::fabs(source_.exact_value(y.b));  // p - 1
    if (std::fabs(k - std::round(k)) > 1e-9L || std::lround(k) % 2 != 0) return false;
    return difference_on_load_0(source_, product_a ? n.b : n.a);
}

// The difference x[0] - x[n/2] of a first 2-point stage, when it reaches
// the first input x of a folded 3-point block: a block whose sine
// sin(60) (u1 - u2) took a doubling's factor 2 (2 sin(60) I_k), reached at
// its row x - 0.5 (u1 + u2). In an inverse program with widening its
// adjoint (what the last 2-point step adds to and subtracts from the even
// harmonics' block) is summed in double and rounded once. Picked to fit:
// the inverse 30 (two sums: the odd 5-point block of column 0 feeds the
// folded block on the harmonics 5, 15, 25) and 54 (one, into the odd
// 27-point block) are counted so, one over Hartley's form B at 54 and two
// at 30; 12, 20 and 50 (no fold reached) sum it in single.
bool AdjointRounding::nyquist_difference_into_fold(int id) const {
    if (!odd_harmonics_[id] || !difference_on_load_0(source_, id)) return false;
    std::set<std::pair<int, int>> folded_blocks;  // the (u1, u2) of each folded sine
    for (int f : folds_) {
        const Node& s = source_.node(source_.node(f).a);
        if (s.op == Op::Sub && std::fabs(std::fabs(source_.exact_value(source_.node(f).b)) - std::sqrt(0.75L)) < 1e-15L)
            folded_blocks.insert({std::min(s.a, s.b), std::max(s.a, s.b)});
    }
    std::vector<char> reached(source_.size(), 0);
    reached[id] = 1;
    for (int i = id + 1; i < source_.size(); ++i) {
        const Node& m = source_.node(i);
        const bool sum = m.op == Op::Add || m.op == Op::Sub;
        if (!(sum || m.op == Op::Mul) || !(reached[m.a] || (sum && reached[m.b]))) continue;
        reached[i] = 1;
        // A row x + c (u1 + u2) of a folded block, x reached.
        for (const auto& [x, y] : {std::pair{m.a, m.b}, std::pair{m.b, m.a}}) {
            if (!sum || !reached[x] || source_.node(y).op != Op::Mul) continue;
            const Node& u = source_.node(source_.node(y).a);
            if (u.op == Op::Add && folded_blocks.count({std::min(u.a, u.b), std::max(u.a, u.b)}) != 0) return true;
        }
    }
    return false;
}

AdjointRounding::Plan AdjointRounding::prepare(int id, std::vector<Handle>& terms) {
    const auto kept_single = [&](const Handle& t) { return t.valid() && target_.graph().node(t.id).ty == Ty::F32; };
    // The inverse's sums of kept values picked to be in double (above).
    const bool in_double = doubled_harmonics_ && target_.widening() && terms.size() >= 2 &&
                           std::all_of(terms.begin(), terms.end(), kept_single) &&
                           ((terms.size() > 2 && (untwiddled_sine_row(id) || odd_harmonics_block_first_input(id))) ||
                            nyquist_difference_into_fold(id));
    // The transpose of a Rader bin formed in double (bin_in_double in
    // cdft/rader_real.cpp): the adjoint of a row x + c y whose
    // contributions are all combinations of products (the kernel's
    // outputs) sums them from the unrounded combinations, in double, and
    // is rounded once, as the forward forms the bin from the unrounded
    // rows. Inverse 19, its blocks in 38 and 57, and 37. The same where the
    // row's x is a step on two kept values of one kind (row_on_kept_step):
    // the forward keeps that step as it keeps a sum of loads, so the row is
    // one double combination as well. Inverse 39, whose complex column runs
    // a 4 G 3 inner over the 3-point stage's outputs (rdft/inverse.cpp; at
    // 52 the same rows sum loads).
    if (doubled_harmonics_ && target_.widening() && !in_double && terms.size() >= 2 &&
        (kept_value_row(source_, id) || row_on_kept_step(source_, users_, id)) &&
        std::all_of(terms.begin(), terms.end(), [&](const Handle& t) { return unrounded_products(target_, t).valid(); }))
        for (Handle& t : terms) t = unrounded_products(target_, t);
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
        target_.widening() && !in_double && (terms.size() == 3 || terms.size() == 4) && step_on_kept_pair(source_, id);
    if (block_first_input)
        for (Handle& t : terms)
            if (unrounded_products(target_, t).valid()) t = unrounded_products(target_, t);
    // A step that the forward program forms in double from rows
    // (Graph::steps_in_double; a Rader bin's, cdft/rader_real.cpp): its
    // adjoint sums the kernel's products unrounded and hands the sum on
    // unrounded, so that the adjoints of the rows sum in double too, as
    // the forward forms the step from the unrounded rows. Inverse 61.
    const bool step_in_double = target_.widening() && source_.steps_in_double.count(id) != 0;
    if (step_in_double)
        for (Handle& t : terms)
            if (unrounded_products(target_, t).valid()) t = unrounded_products(target_, t);
    for (Handle& t : terms)
        if (t.valid() && handed_unrounded_.count(t.id) != 0) t = target_.unrounded(t);  // always a rounded sum
    // A row x + c y stepped only with products, each step's adjoint such
    // a first input summed in double: the steps hand their sums on
    // unrounded and the row's adjoint joins them in double. Forward and
    // Hartley 59: the bin-0 row x0 - Y0/28 of the nested 29s in the ways
    // back, stepped with the kernel's products into the first inputs of
    // 7-point blocks. A row stepped with another row (the 3-point stages
    // of 31) sums them rounded.
    if (target_.widening() && !in_double && terms.size() >= 2 && kept_value_row(source_, id) &&
        std::all_of(terms.begin(), terms.end(), [&](const Handle& t) {
            return t.valid() && first_inputs_in_double_.count(t.id) != 0 && target_.unrounded(t).valid();
        }) &&
        stepped_with_products(source_, id))
        for (Handle& t : terms) t = target_.unrounded(t);
    // A value that sums a Rader kernel's real bin m (even m) and one
    // component of a complex bin, both straight from the kernel's
    // products, sums them unrounded, in double: a 2-point step of a way
    // back on bin m (the cosine 2 G 3 of 53's 13-point blocks on the
    // complex column, as the forward 53 is counted; 37's cosine
    // 2 G (3 T 3) takes one such step).
    if (target_.widening() && !in_double && terms.size() == 2 && kernel_step_with_bin_m(target_, terms))
        for (Handle& t : terms) t = target_.unrounded(t);
    // A value the source marked (Graph::adjoints_unrounded): the row and
    // the rotation's component of a Rader bin that the forward forms in
    // double from both. Its adjoint sums the kernel's products unrounded.
    if (target_.widening() && !in_double && terms.size() >= 2 && source_.adjoints_unrounded.count(id) != 0)
        for (Handle& t : terms)
            if (t.valid() && target_.unrounded(t).valid()) t = target_.unrounded(t);
    // A folded Rader kernel's bin m stepped with a complex bin in its way
    // back (Graph::adjoints_widened): its adjoint is summed in double.
    const bool widened = target_.widening() && terms.size() >= 2 && source_.adjoints_widened.count(id) != 0;
    Plan plan;
    plan.widen_first = in_double || widened;
    plan.hand_on_unrounded = step_in_double;
    plan.block_first_input = block_first_input;
    return plan;
}

void AdjointRounding::formed(const Plan& plan, Handle z) {
    if (plan.hand_on_unrounded && target_.unrounded(z).valid()) handed_unrounded_.insert(z.id);
    if (plan.block_first_input) first_inputs_in_double_.insert(z.id);
}

}  // namespace tqfgen
