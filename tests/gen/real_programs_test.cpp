// The real-data programs (real_dft.h, real_lane.h) as scalar graphs, in
// double (SplitAlg over F64) and in widened float (SplitAlg over F32 with
// widening), over every factor tree the kernels use and every prime's real
// halves. Each graph is checked against the widening rule's shape and run in
// long double against the direct sum: a wrong twiddle, a lost sign or a
// misplaced bin is an error of the order of the data, a right program is off
// by its constants' rounding only.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <ostream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "algebra.h"
#include "catalog.h"
#include "dft_oracle.h"
#include "forward.h"
#include "graph_eval.h"
#include "inverse.h"
#include "primes.h"
#include "real_dft.h"
#include "rader_real.h"
#include "real_lane.h"

namespace {

using tqfcdft::Tree;
using tqfgen::Cx;
using tqfgen::Graph;
using tqfgen::Handle;
using tqfgen::Node;
using tqfgen::Op;
using tqfgen::SplitAlg;
using tqfgen::Ty;
using tqftest::cld;

// Both modes hold every constant as a double (the widened float mode forms
// its products in double), and the evaluator carries out the rest in long
// double: a right program is off by about 1e-16 of the data per constant it
// passes. The bound leaves a margin of about ten over the worst seen; a
// fault is an error near 1e-1 or more.
constexpr long double kBound = 2e-15L;

// The primes of the real halves: every prime block and prime kernel, 7 to 61.
std::vector<int> real_lane_primes() {
    std::vector<int> v;
    for (int p = 7; p <= 61; p += 2) {
        bool prime = true;
        for (int d = 3; d * d <= p; d += 2) prime = prime && p % d != 0;
        if (prime) v.push_back(p);
    }
    return v;
}

// Whether every leaf of t is a block the split algebra builds (the 8- and
// 16-point leaves of the double trees are two-lane programs only).
bool split_leaves(const Tree& t) {
    if (t.leaf()) return t.block != "8" && t.block != "16";
    return split_leaves(*t.left) && split_leaves(*t.right);
}

// Every tree in use: the leaves, the complex kernels' trees of both
// precisions, the real-lane and complex Rader chains and the Bluestein
// transforms, each once.
std::vector<std::string> all_trees() {
    std::set<std::string> seen;
    std::vector<std::string> v;
    auto add = [&](const std::string& s) {
        if (seen.insert(s).second && split_leaves(*tqfcdft::parse_tree(s))) v.push_back(s);
    };
    for (const char* leaf : {"2", "3", "4", "5", "5w"}) add(leaf);
    for (int p : real_lane_primes()) add(std::to_string(p));
    for (const auto& [n, s] : tqfcdft::single_trees()) add(s);
    for (const auto& [n, s] : tqfcdft::double_trees()) add(s);
    // The three trees of each Rader form.
    for (const auto& [p, s] : tqfcdft::real_lane_forms()) {
        std::istringstream parts(s);
        for (std::string t; std::getline(parts, t, '/');) add(t);
    }
    for (const auto& [p, s] : tqfcdft::rader_chains()) add(s);
    for (const std::string& s : tqfcdft::bluestein_trees()) add(s);
    return v;
}

std::string mode_name(bool widen) { return widen ? "f32w" : "f64"; }

// Structure of one scalar graph; `outs` are the program's results. Each
// kind of fault is reported once, with its count and first node.
void check_shape(const Graph& g, bool widen, const std::vector<Handle>& outs) {
    const Ty data = widen ? Ty::F32 : Ty::F64;
    std::map<std::string, std::pair<int, int>> faults;  // kind -> (count, first node)
    auto fault = [&](bool bad, const char* kind, int id) {
        if (!bad) return;
        auto [it, fresh] = faults.try_emplace(kind, 0, id);
        ++it->second.first;
    };
    auto f64 = [&](int id) { return g.node(id).ty == Ty::F64; };
    for (int id = 0; id < g.size(); ++id) {
        const Node& n = g.node(id);
        fault(n.ty != Ty::F32 && n.ty != Ty::F64, "node of a vector type", id);
        fault(n.op == Op::LoadScalar && n.ty != data, "load of the other precision", id);
        if (!widen) {
            fault(n.ty != Ty::F64, "float node in a double program", id);
            fault(n.op == Op::Widen || n.op == Op::Narrow, "conversion in a double program", id);
            continue;
        }
        fault((n.op == Op::Mul || n.op == Op::Const) && n.ty != Ty::F64, "float product or constant", id);
        fault(n.op == Op::Widen && f64(n.a), "widening of a double", id);
        fault(n.op == Op::Narrow && (!f64(n.a) || g.node(n.a).op == Op::Widen), "narrowing of a float or a bare widening", id);
        // A double sum completes a combination: a product (or a double
        // formed from one) enters it, never two widened floats alone.
        auto formed = [&](int src) { return f64(src) && g.node(src).op != Op::Widen; };
        fault((n.op == Op::Add || n.op == Op::Sub) && n.ty == Ty::F64 && !formed(n.a) && !formed(n.b),
              "double sum of two widened floats", id);
    }
    if (widen)
        for (const Handle& h : outs) fault(h.valid() && g.node(h.id).ty != Ty::F32, "unsettled result", h.id);
    for (const auto& [kind, f] : faults)
        ADD_FAILURE() << kind << ": " << f.first << " nodes, first " << f.second;
}

// Largest error relative to the largest reference value.
long double rel_error(const std::vector<long double>& got, const std::vector<long double>& ref) {
    long double peak = 0, worst = 0;
    for (size_t i = 0; i < ref.size(); ++i) {
        peak = std::max(peak, std::fabs(ref[i]));
        worst = std::max(worst, std::fabs(got[i] - ref[i]));
    }
    return peak > 0 ? worst / peak : worst;
}

std::vector<long double> random_values(int n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> d(-1, 1);
    std::vector<long double> v(n);
    for (auto& x : v) x = d(rng);
    return v;
}

// Worst error by program and mode, printed once everything has run.
std::map<std::string, std::pair<long double, std::string>>& worst_seen() {
    static std::map<std::string, std::pair<long double, std::string>> w;
    return w;
}
void note(const std::string& kind, bool widen, long double err, const std::string& at) {
    auto& w = worst_seen()[kind + " " + mode_name(widen)];
    if (err >= w.first) w = {err, at};
}
class WorstReport : public ::testing::Environment {
public:
    void TearDown() override {
        for (const auto& [k, w] : worst_seen())
            std::printf("worst relative error %-20s %.3Lg at %s\n", k.c_str(), w.first, w.second.c_str());
    }
};
const auto* const kReport = ::testing::AddGlobalTestEnvironment(new WorstReport);

struct TreeCase {
    std::string tree;
    bool widen;
};
void PrintTo(const TreeCase& c, std::ostream* os) { *os << c.tree << " " << mode_name(c.widen); }
std::string case_name(const ::testing::TestParamInfo<TreeCase>& i) {
    std::string s = i.param.tree + "_" + mode_name(i.param.widen);
    for (char& c : s)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return s;
}
std::vector<TreeCase> tree_cases() {
    std::vector<TreeCase> v;
    for (bool w : {false, true})
        for (const auto& s : all_trees()) v.push_back({s, w});
    return v;
}

class RealTree : public ::testing::TestWithParam<TreeCase> {};

// Bins 0..N/2 of a real input; the upper bins are the conjugates. The
// mirrors choose which member of each conjugate pair the program forms and
// the Good-Thomas maps it reads by (a tree may state them).
void check_real_input(const TreeCase& c, tqfcdft::Mirrors mirrors, const char* kind) {
    const auto t = tqfcdft::parse_tree(c.tree);
    const bool widen = c.widen;
    const int N = t->size;
    Graph g;
    SplitAlg a(g, widen ? Ty::F32 : Ty::F64, widen);
    std::vector<Cx> x(N);
    for (int n = 0; n < N; ++n) x[n] = {g.load_scalar(a.data_type(), 2 * n), Handle{}};
    const std::vector<Cx> X = tqfcdft::real_input_dft(a, *t, x, -1, mirrors);
    ASSERT_EQ(static_cast<int>(X.size()), N);
    std::vector<Handle> outs;
    for (int k = 0; 2 * k <= N; ++k) outs.insert(outs.end(), {X[k].re, X[k].im});
    check_shape(g, widen, outs);

    const std::vector<long double> r = random_values(N, N);
    std::vector<cld> in(N);
    for (int n = 0; n < N; ++n) in[n] = r[n];
    const auto v = tqftest::evaluate_graph(g, in);
    const auto ref = tqftest::direct_dft(in, -1);
    std::vector<long double> got, want;
    for (int k = 0; 2 * k <= N; ++k) {
        got.insert(got.end(), {tqftest::scalar_value(v, X[k].re), tqftest::scalar_value(v, X[k].im)});
        want.insert(want.end(), {ref[k].real(), ref[k].imag()});
    }
    const long double err = rel_error(got, want);
    note(kind, widen, err, c.tree);
    EXPECT_LT(err, kBound);
}

TEST_P(RealTree, RealInput) { check_real_input(GetParam(), tqfcdft::Mirrors::Lower, "real_input"); }

// The forward real programs' trees with the real families' maps and
// conjugate columns, the maps some trees state included, and the inverse
// programs' trees that name their first stage block by block.
std::vector<TreeCase> real_family_cases() {
    std::vector<TreeCase> v;
    for (bool w : {false, true}) {
        for (const auto& [n, s] : tqfrdft::forward_real_trees())
            if (split_leaves(*tqfcdft::parse_tree(s))) v.push_back({s, w});
        for (const auto& [n, s] : tqfrdft::inverse_real_duals())
            if (s.find('{') != std::string::npos) v.push_back({s, w});
    }
    return v;
}

// A first stage named block by block: one tree per block, only as a node's
// first stage; a block runs only if it has the stage's length.
TEST(TreeParser, BlockLists) {
    const auto t = tqfcdft::parse_tree("{4 T 4 | 4 T 4 | (2 T 4) T 2 | 4 T 4} T 4");
    ASSERT_EQ(t->blocks.size(), 4u);
    EXPECT_EQ(t->size, 64);
    EXPECT_EQ(&tqfcdft::first_stage_block(*t, 0), t->left.get());
    EXPECT_EQ(tqfcdft::first_stage_block(*t, 2).right->size, 2);
    EXPECT_EQ(tqfcdft::first_stage_block(*t, 3).right->size, 4);
    const auto plain = tqfcdft::parse_tree("(4 T 4) T 4");
    EXPECT_TRUE(plain->blocks.empty());
    EXPECT_EQ(&tqfcdft::first_stage_block(*plain, 3), plain->left.get());
    for (const char* bad : {"{4 T 4 | 4 T 4} T 4", "{4 | 4}", "4 T {2 | 2}", "{4 | 4 T 4"})
        EXPECT_THROW(tqfcdft::parse_tree(bad), std::runtime_error) << bad;
    const auto uneven = tqfcdft::parse_tree("{4 T 4 | 4 T 4 | 2 T 4 | 4 T 4} T 4");
    EXPECT_EQ(&tqfcdft::first_stage_block(*uneven, 1), uneven->blocks[1].get());
    EXPECT_THROW(tqfcdft::first_stage_block(*uneven, 2), std::runtime_error);
}
class RealFamilyTree : public ::testing::TestWithParam<TreeCase> {};
TEST_P(RealFamilyTree, RealInput) { check_real_input(GetParam(), tqfcdft::Mirrors::RealFamilies, "real_family"); }
INSTANTIATE_TEST_SUITE_P(Forward, RealFamilyTree, ::testing::ValuesIn(real_family_cases()), case_name);

// Re sum_{k=0..N/2} F[k] exp(2 pi i kt/N) by the transposed real-input
// transform: the way back of the Rader forms.
TEST_P(RealTree, HalfSpectrumSum) {
    const auto t = tqfcdft::parse_tree(GetParam().tree);
    const bool widen = GetParam().widen;
    const int N = t->size;
    Graph g;
    SplitAlg a(g, widen ? Ty::F32 : Ty::F64, widen);
    std::vector<Cx> F(N / 2 + 1);
    for (int k = 0; 2 * k <= N; ++k) {
        F[k].re = g.load_scalar(a.data_type(), 2 * k);
        if (k != 0 && 2 * k != N) F[k].im = g.load_scalar(a.data_type(), 2 * k + 1);
    }
    const std::vector<Handle> x = tqfcdft::half_spectrum_sum(a, *t, F);
    ASSERT_EQ(static_cast<int>(x.size()), N);
    check_shape(g, widen, x);

    // Loads 2k and 2k + 1 read the real and imaginary part of element k.
    const std::vector<long double> r = random_values(N + 2, N + 1);
    std::vector<cld> spec(N / 2 + 1);
    for (int k = 0; 2 * k <= N; ++k) spec[k] = cld(r[2 * k], k != 0 && 2 * k != N ? r[2 * k + 1] : 0);
    const auto v = tqftest::evaluate_graph(g, spec);
    std::vector<long double> got, want;
    const long double pi = 3.141592653589793238462643383279502884L;
    for (int n = 0; n < N; ++n) {
        got.push_back(tqftest::scalar_value(v, x[n]));
        long double sum = 0;
        for (int k = 0; 2 * k <= N; ++k) sum += (spec[k] * std::polar(1.0L, 2 * pi * k * n / N)).real();
        want.push_back(sum);
    }
    const long double err = rel_error(got, want);
    note("half_spectrum_sum", widen, err, GetParam().tree);
    EXPECT_LT(err, kBound);
}

INSTANTIATE_TEST_SUITE_P(Trees, RealTree, ::testing::ValuesIn(tree_cases()), case_name);

// The halves of a real prime sequence: X[0], and for k = 1..m the cosine
// half A[k] and sine half B[k], X[k] = A[k] - i B[k] in the forward sense.
struct HalvesCase {
    int p;
    // "block" (the block's own choice), "direct", "rader" (the complex
    // family's Rader form), "real_rader" (the real forward form) or
    // "inverse_rader" (the form an inverse transposes, where it has its own).
    std::string form;
    bool widen;
};
void PrintTo(const HalvesCase& c, std::ostream* os) { *os << c.p << " " << c.form << " " << mode_name(c.widen); }
std::string halves_name(const ::testing::TestParamInfo<HalvesCase>& i) {
    return std::to_string(i.param.p) + "_" + i.param.form + "_" + mode_name(i.param.widen);
}
const std::string& real_family_form(int p, const std::string& which) {
    return which == "real_rader" ? tqfrdft::forward_rader_forms().at(p) : tqfrdft::inverse_real_duals().at(p);
}
std::vector<HalvesCase> halves_cases() {
    std::vector<HalvesCase> v;
    for (bool w : {false, true})
        for (int p : real_lane_primes()) {
            v.push_back({p, "block", w});
            v.push_back({p, "direct", w});
            if (tqfcdft::real_lane_forms().count(p)) v.push_back({p, "rader", w});
        }
    for (bool w : {false, true})
        for (const auto& [p, form] : tqfrdft::forward_rader_forms()) {
            v.push_back({p, "real_rader", w});
            if (tqfrdft::is_rader_form(tqfrdft::inverse_real_duals().at(p))) v.push_back({p, "inverse_rader", w});
        }
    return v;
}

class RealHalves : public ::testing::TestWithParam<HalvesCase> {};

TEST_P(RealHalves, AgainstDirectSum) {
    const auto [p, form, widen] = GetParam();
    Graph g;
    SplitAlg a(g, widen ? Ty::F32 : Ty::F64, widen);
    std::vector<Handle> x;
    for (int n = 0; n < p; ++n) x.push_back(g.load_scalar(a.data_type(), 2 * n));
    const tqfcdft::Halves h = form == "block"    ? tqfcdft::prime_halves(a, p, x)
                              : form == "direct" ? tqfcdft::direct_halves(a, p, x)
                              : form == "rader"
                                  ? tqfcdft::rader_halves(a, p, x, tqfcdft::real_lane_form(p))
                                  : tqfcdft::rader_halves(a, p, x, tqfcdft::parse_rader_form(real_family_form(p, form)));
    const int m = (p - 1) / 2;
    ASSERT_EQ(static_cast<int>(h.A.size()), m + 1);
    ASSERT_EQ(static_cast<int>(h.B.size()), m + 1);
    std::vector<Handle> outs{h.x0};
    for (int k = 1; k <= m; ++k) {
        ASSERT_TRUE(h.A[k].valid() && h.B[k].valid()) << "half " << k << " missing";
        outs.insert(outs.end(), {h.A[k], h.B[k]});
    }
    check_shape(g, widen, outs);

    const std::vector<long double> r = random_values(p, p);
    std::vector<cld> in(r.begin(), r.end());
    const auto v = tqftest::evaluate_graph(g, in);
    const auto ref = tqftest::direct_dft(in, -1);
    std::vector<long double> got{tqftest::scalar_value(v, h.x0), 0}, want{ref[0].real(), ref[0].imag()};
    for (int k = 1; k <= m; ++k) {
        got.insert(got.end(), {tqftest::scalar_value(v, h.A[k]), -tqftest::scalar_value(v, h.B[k])});
        want.insert(want.end(), {ref[k].real(), ref[k].imag()});
    }
    const long double err = rel_error(got, want);
    note("halves " + form, widen, err, std::to_string(p));
    EXPECT_LT(err, kBound);
}

INSTANTIATE_TEST_SUITE_P(Primes, RealHalves, ::testing::ValuesIn(halves_cases()), halves_name);

}  // namespace
