// Manual check of the real-data programs (real_dft.h, real_lane.h) over the
// split algebra in scalar double and in scalar float with widening, at every
// factor tree the complex kernels use: each graph is built, its node types
// and widenings are checked against the widening rule, and it is evaluated
// on random data against a long double DFT. Build and run with
// scripts/real_programs_check.sh.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <stdexcept>

#include "algebra.h"
#include "real_dft.h"
#include "real_lane.h"
#include "tree_ops.h"

using namespace tqfgen;
using namespace tqfcdft;

static int failures = 0;
#define CHECK(c, ...) do { if (!(c)) { ++failures; std::printf("FAIL %s: ", #c); std::printf(__VA_ARGS__); std::printf("\n"); } } while (0)

struct Eval {
    const Graph& g;
    std::vector<double> in;  // element n: real part at n, imaginary part at n + 1000
    std::vector<double> val;
    std::vector<bool> done;
    double node(int id) {
        if (done[id]) return val[id];
        const Node& n = g.node(id);
        double r = 0;
        const bool f = n.ty == Ty::F32;
        auto rd = [&](double x) { return f ? double(float(x)) : x; };
        switch (n.op) {
        case Op::LoadScalar: r = rd(in[n.index[0] + 1000 * n.comp]); break;
        case Op::Const: r = n.cval[0]; break;
        case Op::Add: r = f ? double(float(node(n.a)) + float(node(n.b))) : node(n.a) + node(n.b); break;
        case Op::Sub: r = f ? double(float(node(n.a)) - float(node(n.b))) : node(n.a) - node(n.b); break;
        case Op::Mul: r = f ? double(float(node(n.a)) * float(node(n.b))) : node(n.a) * node(n.b); break;
        case Op::Widen: r = node(n.a); break;
        case Op::Narrow: r = double(float(node(n.a))); break;
        default: throw std::logic_error("unexpected op in a scalar graph");
        }
        done[id] = true;
        val[id] = r;
        return r;
    }
    double operator()(Handle h) {
        if (!h.valid()) return 0;
        if (val.size() < size_t(g.size())) { val.resize(g.size()); done.resize(g.size()); }
        const double v = node(h.id);
        return h.neg ? -v : v;
    }
};

// Structure of one scalar graph under one mode; `outs` are the program's results.
static void check_graph(const Graph& g, bool widen, const std::vector<Handle>& outs, const char* what) {
    const Ty data = widen ? Ty::F32 : Ty::F64;
    for (int id = 0; id < g.size(); ++id) {
        const Node& n = g.node(id);
        CHECK(n.ty == Ty::F32 || n.ty == Ty::F64, "%s: node %d of a vector type", what, id);
        if (!widen) CHECK(n.ty == Ty::F64 && n.op != Op::Widen && n.op != Op::Narrow, "%s: node %d", what, id);
        if (widen) {
            if (n.op == Op::Mul || n.op == Op::Const) CHECK(n.ty == Ty::F64, "%s: float product/constant %d", what, id);
            if (n.op == Op::Widen) CHECK(g.node(n.a).ty == Ty::F32, "%s: widen of double %d", what, id);
            if (n.op == Op::Narrow) CHECK(g.node(n.a).ty == Ty::F64 && g.node(n.a).op != Op::Widen, "%s: narrow %d", what, id);
            if (n.op == Op::LoadScalar) CHECK(n.ty == data, "%s: load type", what);
        }
    }
    if (widen) {
        // Every double sum contains a product somewhere below it (it completes
        // a combination), and every kept result is float.
        for (int id = 0; id < g.size(); ++id) {
            const Node& n = g.node(id);
            if ((n.op == Op::Add || n.op == Op::Sub) && n.ty == Ty::F64) {
                const bool pa = g.node(n.a).op == Op::Mul || (g.node(n.a).ty == Ty::F64 && g.node(n.a).op != Op::Widen);
                const bool pb = g.node(n.b).op == Op::Mul || (g.node(n.b).ty == Ty::F64 && g.node(n.b).op != Op::Widen);
                CHECK(pa || pb, "%s: double sum %d of two widened values", what, id);
            }
        }
        for (const Handle& h : outs)
            if (h.valid()) CHECK(g.node(h.id).ty == Ty::F32, "%s: unsettled result %d", what, h.id);
    }
}

static double tol(bool widen, int n) { return (widen ? 3e-6 : 1e-13) * std::max(1, n); }

static int graphs = 0;

static void real_input(const std::string& text, bool widen) {
    const auto t = parse_tree(text);
    const int N = t->size;
    Graph g;
    SplitAlg a(g, widen ? Ty::F32 : Ty::F64, widen);
    std::vector<Cx> x(N);
    for (int n = 0; n < N; ++n) x[n] = {g.load_scalar(a.data_type(), n, 0), Handle{}};
    const std::vector<Cx> X = real_input_dft(a, *t, x, -1);
    ++graphs;
    std::string what = "real_input_dft " + text + (widen ? " f32w" : " f64");
    CHECK(int(X.size()) == N, "%s: %zu outputs", what.c_str(), X.size());
    std::vector<Handle> outs;
    for (int k = 0; k <= N / 2; ++k) outs.push_back(X[k].re), outs.push_back(X[k].im);
    check_graph(g, widen, outs, what.c_str());
    std::mt19937 rng(N);
    std::uniform_real_distribution<double> d(-1, 1);
    Eval e{g, std::vector<double>(2000, 0.0), {}, {}};
    for (int n = 0; n < N; ++n) e.in[n] = widen ? double(float(d(rng))) : d(rng);
    double err = 0;
    for (int k = 0; k < N; ++k) {
        long double re = 0, im = 0;
        for (int n = 0; n < N; ++n) {
            const Root w = unit_root(long(n) * k, N, -1);
            re += e.in[n] * w.real();
            im += e.in[n] * w.imag();
        }
        err = std::max(err, double(std::fabs(e(X[k].re) - re) + std::fabs(e(X[k].im) - im)));
    }
    CHECK(err < tol(widen, N), "%s: error %g", what.c_str(), err);
    if (getenv("VERBOSE")) {
        int nw = 0, nn = 0, nm = 0, na = 0, nad = 0;
        for (int id = 0; id < g.size(); ++id) {
            const Node& n = g.node(id);
            nw += n.op == Op::Widen; nn += n.op == Op::Narrow; nm += n.op == Op::Mul;
            na += n.op == Op::Add || n.op == Op::Sub; nad += (n.op == Op::Add || n.op == Op::Sub) && n.ty == Ty::F64;
        }
        std::printf("%-40s nodes %4d add %4d (double %4d) mul %4d widen %4d narrow %4d err %.2g\n", what.c_str(), g.size(), na, nad, nm, nw, nn, err);
    }
}

static void real_output(const std::string& text, bool widen) {
    const auto t = parse_tree(text);
    const int N = t->size;
    Graph g;
    SplitAlg a(g, widen ? Ty::F32 : Ty::F64, widen);
    std::vector<Cx> F(N);
    for (int k = 0; 2 * k <= N; ++k) {
        F[k].re = g.load_scalar(a.data_type(), k, 0);
        if (k != 0 && 2 * k != N) F[k].im = g.load_scalar(a.data_type(), k, 1);
    }
    for (int k = 1; 2 * k < N; ++k) F[N - k] = a.conj(F[k]);
    const std::vector<Cx> x = real_output_dft(a, *t, F, +1);
    ++graphs;
    std::string what = "real_output_dft " + text + (widen ? " f32w" : " f64");
    CHECK(int(x.size()) == N, "%s: %zu outputs", what.c_str(), x.size());
    std::vector<Handle> outs;
    for (const Cx& v : x) {
        outs.push_back(v.re);
        CHECK(!v.im.valid(), "%s: imaginary output", what.c_str());
    }
    check_graph(g, widen, outs, what.c_str());
    std::mt19937 rng(N + 1);
    std::uniform_real_distribution<double> d(-1, 1);
    Eval e{g, std::vector<double>(2000, 0.0), {}, {}};
    for (int k = 0; 2 * k <= N; ++k) {
        e.in[k] = widen ? double(float(d(rng))) : d(rng);
        if (k != 0 && 2 * k != N) e.in[k + 1000] = widen ? double(float(d(rng))) : d(rng);
    }
    double err = 0;
    for (int n = 0; n < N; ++n) {
        long double s = 0;
        for (int k = 0; k < N; ++k) {
            const int kk = 2 * k <= N ? k : N - k;
            const long double re = e.in[kk], im = (2 * k <= N ? 1 : -1) * e.in[kk + 1000];
            const Root w = unit_root(long(n) * k, N, +1);
            s += re * w.real() - im * w.imag();
        }
        err = std::max(err, double(std::fabs(e(x[n].re) - s)));
    }
    CHECK(err < tol(widen, N), "%s: error %g", what.c_str(), err);
}

static void halves(int p, int form, bool widen) {
    Graph g;
    SplitAlg a(g, widen ? Ty::F32 : Ty::F64, widen);
    std::vector<Handle> x;
    for (int n = 0; n < p; ++n) x.push_back(g.load_scalar(a.data_type(), n, 0));
    const Halves h = form == 0 ? prime_halves(a, p, x) : form == 1 ? direct_halves(a, p, x) : rader_halves(a, p, x, *real_lane_chain(p));
    ++graphs;
    std::string what = "halves " + std::to_string(p) + "/" + std::to_string(form) + (widen ? " f32w" : " f64");
    const int m = (p - 1) / 2;
    CHECK(int(h.A.size()) == m + 1 && int(h.B.size()) == m + 1, "%s: size", what.c_str());
    std::vector<Handle> outs{h.x0};
    for (int k = 1; k <= m; ++k) {
        CHECK(h.A[k].valid() && h.B[k].valid(), "%s: half %d missing", what.c_str(), k);
        outs.push_back(h.A[k]);
        outs.push_back(h.B[k]);
    }
    check_graph(g, widen, outs, what.c_str());
    std::mt19937 rng(p);
    std::uniform_real_distribution<double> d(-1, 1);
    Eval e{g, std::vector<double>(2000, 0.0), {}, {}};
    for (int n = 0; n < p; ++n) e.in[n] = widen ? double(float(d(rng))) : d(rng);
    // X[k] = A[k] + dir i B[k] with dir = -1 (forward).
    double err = 0;
    for (int k = 0; k <= m; ++k) {
        long double re = 0, im = 0;
        for (int n = 0; n < p; ++n) {
            const Root w = unit_root(long(n) * k, p, -1);
            re += e.in[n] * w.real();
            im += e.in[n] * w.imag();
        }
        const double gre = k == 0 ? e(h.x0) : e(h.A[k]), gim = k == 0 ? 0 : -e(h.B[k]);
        err = std::max(err, double(std::fabs(gre - re) + std::fabs(gim - im)));
    }
    CHECK(err < tol(widen, p), "%s: error %g", what.c_str(), err);
}

int main() {
    const std::vector<std::string> trees = {
        // leaves
        "2", "3", "4", "5", "5w", "7", "11", "13", "17", "19", "23", "29", "31", "37", "41", "43", "47", "53", "59", "61",
        // chains of the real-lane Rader form, and of the planar Rader form
        "2 G 3", "3 G (2 T 2)", "(2 T 2) T (2 T 2)", "(2 G 3) T 3", "2 G 11", "(2 T 2) G 7", "(3 G 5w) G 2",
        "((2 T 2) G 3) T 3", "5 G ((2 T 2) T 2)", "(2 G 7) G 3", "23 G 2", "13 G (2 T 2)", "29 G 2",
        "(3 G (2 T 2)) G 5w", "5 G 2", "(2 T 2) G 3", "3 T (2 G 3)", "5 G (2 G 3)", "(2 T 2) G (3 T 3)",
        "5 G (2 T (2 T 2))", "(7 G 2) G 3", "(2 T 2) G 13", "(2 T 2) G (5 G 3)",
        "(3 G (2 T 2)) T ((2 T 2) T 2)", "((2 T 2) T 2) T (((2 T 2) T 2) T 2)",
        // single-precision composite trees
        "4 T 2", "3 T 3", "4 G 3", "2 G 7", "5 G 3", "4 T 4", "(3 G 2) T 3", "4 G 5", "7 G 3", "2 G 11",
        "4 T (3 G 2)", "5 T 5", "13 G 2", "(3 T 3) T 3", "4 G 7", "(5 G 2) G 3", "4 T (4 T 2)", "11 G 3",
        "2 G 17", "5 G 7", "4 G (3 T 3)", "2 G 19", "13 G 3", "(5 G 2) T 4", "4 G 11", "(5 G 3) T 3",
        "23 T 2", "4 T (3 G 4)", "7 T 7", "(5 G 2) T 5", "17 G 3", "4 G 13", "((2 G 3) T 3) T 3", "5 G 11",
        "(7 G 2) T 4", "19 G 3", "2 G 29", "4 T (5 G 3)", "31 T 2", "(3 T 3) G 7", "(4 T 2) T (4 T 2)",
        // double-precision composite trees (those not above)
        "5w G 2", "3 G 4", "(3 T 3) G 2", "5 G 4", "11 G 2", "3 T (3 T 3)", "(2 G 5) G 3", "5w G 7v",
        "(2 G 7) G 3", "5 G (3 T 3)", "(5w T 5v) G 2", "13 G 4", "2 G (3 T (3 T 3))", "11 G 5",
        "(3 G 5v) G 4", "31 G 2", "7 G (3 T 3)",
    };
    for (bool widen : {false, true}) {
        for (const auto& s : trees) {
            try {
                real_input(s, widen);
                real_output(s, widen);
            } catch (const std::exception& e) {
                ++failures;
                std::printf("EXCEPTION %s (%s): %s\n", s.c_str(), widen ? "f32w" : "f64", e.what());
            }
        }
        for (int p : {7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 47, 53, 59, 61}) {
            try {
                halves(p, 0, widen);
                halves(p, 1, widen);
                if (p != 11) halves(p, 2, widen);
            } catch (const std::exception& e) {
                ++failures;
                std::printf("EXCEPTION halves %d: %s\n", p, e.what());
            }
        }
    }
    std::printf("%d graphs, %d failures\n", graphs, failures);
    return failures != 0;
}
