#include "rader_real.h"

#include <cctype>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include "compose.h"
#include "prime_math.h"
#include "real_dft.h"
#include "transpose.h"
#include "twiddle.h"

namespace tqfcdft {

using tqfgen::Cx;
using tqfgen::Handle;
using tqfgen::Root;

RaderForm parse_rader_form(const std::string& text) {
    std::vector<std::string> parts(1);
    // Optional "g<root>:" (the primitive root), "tan:", "shallow-sine:" and
    // "sine-kept-at-80:" ahead of the trees.
    int root = 0;
    bool tangent_150 = false, shallow_sine = false, sine_kept_at_80 = false;
    size_t from = text.find_first_not_of(' ');
    while (from != std::string::npos && std::isalpha(static_cast<unsigned char>(text[from]))) {
        const size_t colon = text.find(':', from);
        if (colon == std::string::npos) throw std::runtime_error("Rader form: an option and ':' expected: " + text);
        const std::string word = text.substr(from, colon - from);
        if (word == "tan") tangent_150 = true;
        else if (word == "shallow-sine") shallow_sine = true;
        else if (word == "sine-kept-at-80") sine_kept_at_80 = true;
        else if (word[0] == 'g') root = std::stoi(word.substr(1));
        else throw std::runtime_error("Rader form: unknown option " + word + ": " + text);
        from = text.find_first_not_of(' ', colon + 1);
    }
    int nested = 0;  // inside a nested block's own form
    for (char c : text.substr(from == std::string::npos ? text.size() : from)) {
        nested += c == '[' ? 1 : c == ']' ? -1 : 0;
        if (c == '/' && nested == 0) parts.emplace_back();
        else parts.back() += c;
    }
    if (parts.size() != 3) throw std::runtime_error("Rader form needs inner / cosine / sine: " + text);
    const size_t minus = parts[2].find_first_not_of(' ');
    const bool negated = minus != std::string::npos && parts[2][minus] == '-';
    if (negated) parts[2].erase(0, minus + 1);
    RaderForm form{parse_tree(parts[0]), parse_tree(parts[1]), parse_tree(parts[2]), negated};
    form.root = root;
    form.tangent_150 = tangent_150;
    form.shallow_sine = shallow_sine;
    form.sine_kept_at_80 = sine_kept_at_80;
    return form;
}

std::vector<Handle> half_spectrum_sum(tqfgen::SplitAlg& a, const Tree& t, const std::vector<Cx>& F, bool fold,
                                      bool fold_rotations) {
    const int n = t.size;
    tqfgen::Graph g;
    tqfgen::SplitAlg f(g, tqfgen::Ty::F64);
    std::vector<Cx> x;
    for (int i = 0; i < n; ++i) x.push_back(Cx{g.load_scalar(tqfgen::Ty::F64, i), Handle{}});
    const std::vector<Cx> X = real_input_dft(f, t, x, -1);
    return tqfgen::transpose_half_spectrum(g, X, a, F, n, false, fold, fold_rotations);
}

namespace {

// Splits a sine tree of length m/2 into its power-of-two and odd parts:
// "P G O", or one of them alone (the other then has length 1).
struct SineParts {
    const Tree* pow2 = nullptr;
    const Tree* odd = nullptr;
};
bool power_of_two(int n) { return (n & (n - 1)) == 0; }
bool has_twiddles(const Tree& t) { return !t.leaf() && (t.op == 'T' || has_twiddles(*t.left) || has_twiddles(*t.right)); }
SineParts sine_parts(const Tree& t) {
    if (power_of_two(t.size)) return {&t, nullptr};
    if (t.size % 2 == 1) return {nullptr, &t};
    if (t.op == 'G' && power_of_two(t.left->size) && t.right->size % 2 == 1) return {t.left.get(), t.right.get()};
    if (t.op == 'G' && power_of_two(t.right->size) && t.left->size % 2 == 1) return {t.right.get(), t.left.get()};
    throw std::logic_error("Rader sine tree must be a power of two G an odd length");
}

long inverse_mod(long a, long n) {
    for (long b = 1; b < n; ++b)
        if (a * b % n == 1) return b;
    return n == 1 ? 0 : throw std::logic_error("no inverse");
}

// An odd-frequency sum of length n: S[t] = Re sum over odd q < n of B(q)
// exp(pi i q t/n), t = 0..n-1, where B(2n - q) is the conjugate of B(q) (so
// the sum over all odd q below 2n is 2 S). At odd n, B(n) is real and the
// call gives half of it.
using OddBins = std::function<Cx(int)>;

// The sine branch of even m: S[t], t = 0..m-1, from the folded odd bins
// Z[q] (q < m; the bins above are their conjugates). With N = 2^a h' (h'
// odd) and exp(2 pi i/N) = exp(2 pi i al/2^a) exp(2 pi i be/h'), the odd
// bins split by q mod 2^a: for each class q1 = 1 mod 4 a complex transform
// of length h' over q mod h', then per output class t mod h' an
// odd-frequency real-output transform of length 2^a of those results (the
// classes q1 = 3 mod 4 are their conjugates): a complex transform of
// length 2^(a-2) and a rotation of each result by s/2^a of a turn, whose
// real and negated imaginary parts are the outputs s and s + 2^(a-2).
// When a = 2 nothing is rotated: the outputs are the real and imaginary
// parts of the length-h' results as they stand.
std::vector<Handle> sine_by_quarters(tqfgen::SplitAlg& a, const Tree& tree, int N, const OddBins& bin) {
    const int m = N / 2;
    if (tree.size != m / 2) throw std::logic_error("Rader sine tree of the wrong length");
    const SineParts parts = sine_parts(tree);
    const int hodd = parts.odd ? parts.odd->size : 1, pow2 = N / hodd, quarter = pow2 / 4;
    const long al = inverse_mod(hodd % pow2, pow2), be = inverse_mod(pow2 % hodd, hodd);
    // A[r][u]: class q1 = 1 + 4r, output class u (t = u mod h').
    std::vector<std::vector<Cx>> A(quarter);
    for (int r = 0; r < quarter; ++r) {
        std::vector<Cx> P(hodd);
        for (int q = 0; q < N; ++q)
            if (q % pow2 == 1 + 4 * r) P[be * q % hodd] = bin(q);
        A[r] = parts.odd ? eval_tree(a, *parts.odd, P, +1) : P;
    }
    std::vector<Handle> S(m);
    for (int u = 0; u < hodd; ++u) {
        std::vector<Cx> Q(quarter);
        for (int r = 0; r < quarter; ++r) Q[r] = A[r][u];
        const std::vector<Cx> B = parts.pow2 ? eval_tree(a, *parts.pow2, Q, +1) : Q;
        // T[s] = Re(exp(2 pi i s/2^a) B[s mod quarter]) for s in 0..2^a - 1.
        std::vector<Handle> T(pow2);
        for (int s = 0; s < quarter; ++s) {
            const Cx R = tqfgen::twiddle(a, B[s], tqfgen::unit_root(s, pow2, +1));
            T[s] = R.re;
            T[s + quarter] = a.neg_r(R.im);
            T[s + 2 * quarter] = a.neg_r(R.re);
            T[s + 3 * quarter] = R.im;
        }
        for (int t = u; t < m; t += hodd) S[t] = T[al * t % pow2];
    }
    return S;
}

// Whether a double combination holds a single value besides its products:
// a row x + c y of a real block, or the x - 0.5 y of a 3-point stage.
bool holds_single_value(const tqfgen::Graph& g, int id) {
    const tqfgen::Node& n = g.node(id);
    if (n.op == tqfgen::Op::Widen) return true;
    if (n.op != tqfgen::Op::Add && n.op != tqfgen::Op::Sub) return false;
    return holds_single_value(g, n.a) || holds_single_value(g, n.b);
}

// A row x + products of a block in the plain double program that an inverse
// transposes: a sum whose last term is a product and that holds a
// product-free term (a sine row holds products alone; a bin that adds a sine
// row to a row ends in a sum).
bool plain_row(const tqfgen::Graph& g, int id) {
    const tqfgen::Node& n = g.node(id);
    if (n.op != tqfgen::Op::Add && n.op != tqfgen::Op::Sub) return false;
    const std::function<bool(int)> product_free_term = [&](int i) {
        const tqfgen::Node& t = g.node(i);
        if (t.op == tqfgen::Op::Mul) return false;
        return (t.op != tqfgen::Op::Add && t.op != tqfgen::Op::Sub) || product_free_term(t.a) || product_free_term(t.b);
    };
    return (g.node(n.a).op == tqfgen::Op::Mul && product_free_term(n.b)) ||
           (g.node(n.b).op == tqfgen::Op::Mul && product_free_term(n.a));
}

// A value that `levels` steps of sums and differences form from rows x +
// products, re-formed in double from the unrounded rows; invalid if it is
// not one. In the plain double program an inverse transposes, v itself is
// returned, and the steps below the top are collected in `steps`.
Handle rows_in_double(tqfgen::SplitAlg& a, Handle v, int levels, bool top, std::vector<int>& steps) {
    tqfgen::Graph& g = a.graph();
    if (!v.valid()) return Handle{};
    if (a.widening()) {
        const Handle u = a.unrounded(v);
        if (u.valid()) return !top && holds_single_value(g, u.id) ? u : Handle{};
    } else if (!top && plain_row(g, v.id)) {
        return v;
    }
    const tqfgen::Node n = g.node(v.id);
    const bool step = (n.op == tqfgen::Op::Add || n.op == tqfgen::Op::Sub) && (n.ty == tqfgen::Ty::F32 || !a.widening());
    if (levels == 0 || !step) return Handle{};
    const Handle x = rows_in_double(a, Handle{n.a, false}, levels - 1, false, steps);
    const Handle y = rows_in_double(a, Handle{n.b, false}, levels - 1, false, steps);
    if (!x.valid() || !y.valid()) return Handle{};
    if (!a.widening()) {
        if (!top) steps.push_back(v.id);
        return v;
    }
    const Handle r = n.op == tqfgen::Op::Add ? a.add_r(x, y) : a.sub_r(x, y);
    return v.neg ? -r : r;
}

// A component of a rotation or of a kernel's product: two products summed.
bool two_products(const tqfgen::Graph& g, int id) {
    const tqfgen::Node& n = g.node(id);
    return (n.op == tqfgen::Op::Add || n.op == tqfgen::Op::Sub) && g.node(n.a).op == tqfgen::Op::Mul &&
           g.node(n.b).op == tqfgen::Op::Mul;
}

// A bin of a row x + c y and a rotation's component, both still in double,
// re-formed in double; invalid for any other value.
Handle row_and_component_in_double(tqfgen::SplitAlg& a, Handle v) {
    if (!a.widening() || !v.valid()) return Handle{};
    const tqfgen::Graph& g = a.graph();
    const tqfgen::Node n = g.node(v.id);
    if ((n.op != tqfgen::Op::Add && n.op != tqfgen::Op::Sub) || n.ty != tqfgen::Ty::F32) return Handle{};
    const Handle x = a.unrounded(Handle{n.a, false}), y = a.unrounded(Handle{n.b, false});
    if (!x.valid() || !y.valid()) return Handle{};
    const bool row_x = holds_single_value(g, x.id), row_y = holds_single_value(g, y.id);
    if (!(row_x && two_products(g, y.id)) && !(row_y && two_products(g, x.id))) return Handle{};
    const Handle r = n.op == tqfgen::Op::Add ? a.add_r(x, y) : a.sub_r(x, y);
    return v.neg ? -r : r;
}

// In the plain double program an inverse transposes, a bin of a row
// (two products plus a product) and a rotation's component, what
// row_and_component_in_double forms in double in the forward (53's 13-point
// blocks): the transpose sums the adjoints of the row and of the component
// from the kernel's unrounded products. Rows of rows (31's 3-point stages)
// are not such rows: their adjoints sum rounded.
void mark_row_and_component(tqfgen::SplitAlg& a, Handle v) {
    if (a.widening() || !a.transposed_later || !v.valid()) return;
    tqfgen::Graph& g = a.graph();
    const tqfgen::Node n = g.node(v.id);
    if (n.op != tqfgen::Op::Add && n.op != tqfgen::Op::Sub) return;
    const auto row = [&](int i) {
        const tqfgen::Node& r = g.node(i);
        return (r.op == tqfgen::Op::Add || r.op == tqfgen::Op::Sub) &&
               ((g.node(r.a).op == tqfgen::Op::Mul && two_products(g, r.b)) ||
                (g.node(r.b).op == tqfgen::Op::Mul && two_products(g, r.a)));
    };
    if ((row(n.a) && two_products(g, n.b)) || (row(n.b) && two_products(g, n.a)))
        g.adjoints_unrounded.insert({n.a, n.b});
}

// The inner transform's bins go only into the kernel's products, which take
// their operands in double: a part of a bin that a stage forms as the sum or
// difference of two rows x + products is formed from the rows still in
// double and stays in double into the products, so those rows are not
// rounded for it; so is a row met by a rotation's component (a nested
// block's sine by halves, its twiddle holding the 3-point sine: the
// 13-point blocks of 53). Rows of products alone (sine rows, lone products)
// were finished and rounded by their blocks and are summed in single. With
// `levels` 2 the same holds one step further back: the sums and differences
// of rows that the stage's bin adds are formed in double too. In a program
// an inverse transposes, those steps are marked for the transpose, whose
// adjoints of them then sum the kernel's products unrounded.
Handle bin_in_double(tqfgen::SplitAlg& a, Handle v, int levels) {
    if (!a.widening() && !a.transposed_later) return v;
    std::vector<int> steps;
    Handle r = rows_in_double(a, v, levels, true, steps);
    if (!r.valid()) r = row_and_component_in_double(a, v);
    if (!r.valid()) mark_row_and_component(a, v);
    if (!r.valid()) return v;
    a.graph().steps_in_double.insert(steps.begin(), steps.end());
    return r;
}

// Odd n: q = n + 2k (mod 2n) gives exp(pi i q t/n) = (-1)^t exp(2 pi i kt/n),
// so S is the transpose of a real-input transform of length n over
// F[k] = B(n + 2k), every other output negated. It folds as the ways back
// of odd m do (see rader_halves).
std::vector<Handle> odd_frequency_odd(tqfgen::SplitAlg& a, const Tree& tree, int n, const OddBins& B) {
    const bool fold = !(a.transposed_later && has_twiddles(tree));
    std::vector<Cx> F((n + 1) / 2);
    F[0] = Cx{B(n).re, Handle{}};
    for (int k = 1; 2 * k < n; ++k) F[k] = B(n + 2 * k);
    const std::vector<Handle> out = half_spectrum_sum(a, tree, F, fold, fold);
    std::vector<Handle> S(n);
    for (int t = 0; t < n; ++t) S[t] = t % 2 == 0 ? out[t] : a.neg_r(out[t]);
    return S;
}

// The odd branch's twiddle of bin q by q/2n of a turn. With `tangent_150`
// the rotation by 150 degrees forms its imaginary part from its real part
// (RaderForm::tangent_150): Im = tan Re + Im Y / cos.
Cx odd_branch_twiddle(tqfgen::SplitAlg& a, const Cx& Y, int q, int n, bool tangent_150) {
    const Root w = tqfgen::unit_root(q, 2 * n, +1);
    const Cx R = tqfgen::twiddle(a, Y, w);
    if (!tangent_150 || 6 * q != 5 * n) return R;
    const long double c = w.real(), s = w.imag();
    return Cx{R.re, a.settle_r(a.add_r(a.mul_r(R.re, s / c), a.mul_r(Y.im, 1 / c)))};
}

// Even n as "X T 2" ("by halves"): t = 2 tau + e. The bins q and q + n meet
// in a 2-point step, Y_e(q) = B(q) + (-1)^e B(q + n); the branch e = 1 turns
// by q/2n of a turn (twiddles of order 2n, one rotation for each conjugate
// pair); each branch V_e is again conjugate-symmetric, V_e(n - q) = conj
// V_e(q), and so the odd-frequency sum of length n/2 over the tree X. Its
// outputs are as deep as those of a cosine of X T 2, at the cost of the
// rotations; with a cosine of X G 2 the adds and products are those of the
// CRT form (sine_by_quarters) and a cosine of X T 2. "{X0 | X1} T 2" names
// each branch's own sine tree, e.g. one by halves again and one CRT form.
std::vector<Handle> odd_frequency(tqfgen::SplitAlg& a, const Tree& tree, int n, const OddBins& B,
                                  bool tangent_150 = false) {
    const bool by_halves = tree.op == 'T' && tree.right->size == 2 && !power_of_two(tree.size);
    if (!by_halves) {
        if (2 * tree.size == n) return sine_by_quarters(a, tree, 2 * n, B);
        if (tree.size == n && n % 2 == 1) return odd_frequency_odd(a, tree, n, B);
        throw std::logic_error("Rader sine tree of the wrong length");
    }
    const int half = n / 2;
    std::vector<Handle> S(n);
    for (int e = 0; e < 2; ++e) {
        // V_e(q) for odd q in (n/2, n), formed; those below are conjugates.
        std::map<int, Cx> V;
        for (int q = half + 1; q < n; ++q) {
            if (q % 2 == 0) continue;
            const Cx Y = e == 0 ? a.add(B(q), B(q + n)) : a.sub(B(q), B(q + n));
            V[q] = e == 0 ? Y : odd_branch_twiddle(a, Y, q, n, tangent_150);
        }
        // At odd n/2, half of V_e(n/2), which is real: Re B(n/2), or
        // (i Im B(n/2)) times i.
        if (half % 2 == 1) V[half] = Cx{e == 0 ? B(half).re : a.neg_r(B(half).im), Handle{}};
        const OddBins Ve = [&](int q) { return q >= half ? V.at(q) : a.conj(V.at(n - q)); };
        const Tree& branch = tree.blocks.empty() ? *tree.left : *tree.blocks.at(e);
        const std::vector<Handle> part = odd_frequency(a, branch, half, Ve, tangent_150);
        for (int tau = 0; tau < half; ++tau) S[2 * tau + e] = part[tau];
    }
    return S;
}

}  // namespace

Halves rader_halves(tqfgen::SplitAlg& a, int p, const std::vector<Handle>& x, const RaderForm& form) {
    // Every lane holds a real sequence, whose inverse transform is the
    // conjugate of its forward one: the cosine and sine halves are the same
    // in both directions and only the crossing stage looks at dir. So the
    // inverse kernels have the forward kernels' operations exactly.
    const int fwd = -1;
    const int N = p - 1, m = N / 2;
    if (form.inner->size != N || form.cosine->size != m) throw std::logic_error("Rader form of the wrong length");
    const RaderKernel K(p, fwd, form.root);
    // Read by the transposes into this graph (the ways back below) and from
    // it (an inverse's transpose of this program).
    if (form.sine_kept_at_80) a.graph().sines_kept_at_80 = true;
    // Elements in the order of the powers of g: a real sequence per lane.
    std::vector<Cx> y(N);
    for (int n = 0; n < N; ++n) y[n] = Cx{x[K.pow_g[n]], Handle{}};
    std::vector<Cx> Y = real_input_dft(a, *form.inner, y, fwd);
    // An inner whose first stage is a composite block (61's 3 G 5d) forms its
    // bins in double back to that block's rows; one whose first stage is a
    // single block (13's 3 G 4, 29's 7d G 4) from its last stage's operands
    // only, as these kernels are counted.
    const int levels = !form.inner->leaf() && !form.inner->left->leaf() ? 2 : 1;
    for (int k = 1; k < m; ++k) Y[k] = Cx{bin_in_double(a, Y[k].re, levels), bin_in_double(a, Y[k].im, levels)};

    Halves h;
    h.x0 = a.add_r(x[0], Y[0].re);
    // Z[k], k = 0..m: bin 0 is x0 - Y0/N, which reaches every output through
    // the cosine branch. The odd bins' kernel is dir i times a Hermitian one;
    // -i folded into it makes that spectrum Hermitian too. Bin m is real and
    // takes its kernel's magnitude alone.
    std::vector<Cx> Z(m + 1);
    Z[0] = Cx{a.settle_r(a.sub_r(x[0], a.mul_r(Y[0].re, 1.0L / N))), Handle{}};
    for (int k = 1; k < m; ++k) {
        const Root odd(0, form.negated_sine ? 1 : -1);
        const Root kk = (k % 2 == 0 ? K.bin[k] : K.bin[k] * odd) * 2.0L;
        const Handle im_i = a.mul_r(Y[k].im, kk.imag());
        const Handle re_r = a.mul_r(Y[k].re, kk.real());
        const Handle re = a.sub_r(re_r, im_i);
        const Handle im_r = a.mul_r(Y[k].im, kk.real());
        const Handle re_i = a.mul_r(Y[k].re, kk.imag());
        Z[k] = a.settle({re, a.add_r(re_i, im_r)});
        for (const Handle& part : {Z[k].re, Z[k].im})
            if (a.unrounded(part).valid()) a.graph().kernel_outputs.insert(a.unrounded(part).id);
    }
    const long double zm = m % 2 == 0 ? K.bin[m].real() : form.negated_sine ? -K.bin[m].imag() : K.bin[m].imag();
    Z[m] = Cx{a.settle_r(a.mul_r(Y[m].re, zm)), Handle{}};
    // Bin m of even m goes into the cosine way back, where a 2-point step may
    // meet it with a complex bin (gen/transpose.h); the sine of odd m sums it
    // rounded.
    if (m % 2 == 0 && a.unrounded(Z[m].re).valid()) a.graph().kernel_outputs.insert(a.unrounded(Z[m].re).id);

    std::vector<Cx> even;
    for (int q = 0; q <= m; q += 2) even.push_back(Z[q]);
    // The folds of a way back (gen/transpose.h): a bin's single product at
    // odd m, or wherever the form asks for it. In a program that an inverse
    // transposes, a way back of odd m with twiddles takes none: the inverse's
    // first stage is then that real-input transform with its products as they
    // stand (the inverse 19 has two more products than the forward one; so do
    // its blocks in 38 and 57). The sine of odd m folds alike
    // (odd_frequency_odd).
    const auto way_back = [&](const Tree& t, const std::vector<Cx>& F) {
        const bool plain = a.transposed_later && m % 2 == 1 && has_twiddles(t);
        return half_spectrum_sum(a, t, F, (m % 2 == 1 || form.fold_bins) && !plain, !plain);
    };
    const std::vector<Handle> C = way_back(*form.cosine, even);
    // In a program an inverse transposes, a folded form's bin m (even m)
    // that a 2-point step of the cosine way back meets with a complex bin's
    // component (53's 13-point blocks on the complex column; the forward
    // sums that step from the unrounded products): the transpose sums the
    // adjoint of bin m in double before its product.
    if (a.transposed_later && !a.widening() && m % 2 == 0 && form.fold_bins) {
        tqfgen::Graph& g = a.graph();
        const int bin_m = Z[m].re.id;
        std::set<int> components;
        for (int k = 1; k < m; ++k) components.insert({Z[k].re.id, Z[k].im.id});
        for (int i = bin_m + 1; i < g.size(); ++i) {
            const tqfgen::Node& s = g.node(i);
            if ((s.op == tqfgen::Op::Add || s.op == tqfgen::Op::Sub) &&
                ((s.a == bin_m && components.count(s.b) != 0) || (s.b == bin_m && components.count(s.a) != 0)))
                g.adjoints_widened.insert(bin_m);
        }
    }
    // The odd bins, q = 1, 3, ..., 2m - 1, those above m as conjugates.
    const OddBins bins = [&](int q) { return q <= m ? Z[q] : a.conj(Z[N - q]); };
    const bool shallow_before = std::exchange(a.shallow_sums, form.shallow_sine);
    std::vector<Handle> S = odd_frequency(a, *form.sine, m, bins, form.tangent_150);
    a.shallow_sums = shallow_before;

    if (form.negated_sine)
        for (Handle& s : S) s = a.neg_r(s);
    h.A.resize(m + 1);
    h.B.resize(m + 1);
    for (int t = 0; t < m; ++t) {
        const int k = K.pow_ginv[t];
        if (k <= m) {
            h.A[k] = C[t];
            h.B[k] = a.neg_r(S[t]);
        } else {
            h.A[p - k] = C[t];
            h.B[p - k] = S[t];
        }
    }
    return h;
}

}  // namespace tqfcdft
