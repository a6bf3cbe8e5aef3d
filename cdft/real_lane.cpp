#include "real_lane.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <stdexcept>
#include <string>

#include "compose.h"
#include "rader_real.h"
#include "real_dft.h"

namespace tqfcdft {

using tqfgen::Cx;
using tqfgen::Handle;
using tqfgen::Root;

const std::map<int, std::string>& real_lane_forms() {
    // Inner transform of p - 1 (factors in the order in which they act; G
    // where coprime, so that only trivial rotations stand between the factors
    // of a power of two), cosine and sine ways back. At 13, 29 and 61, whose
    // m = (p-1)/2 is twice an odd h, the cosine is h T 2, twiddled, as in the
    // real family (rdft/forward.cpp); the single-precision complex kernels
    // that embed 13 or 29 keep the earlier forms (catalog.cpp, primes.cpp).
    // 37 returns its sine by halves, (3 T 3) T 2, its cosine through
    // (3 G 2) T 3: each lane then has 412 additions and 256 products at
    // depth 27, as the double complex 37 is counted (the CRT sine with a
    // cosine of 2 G 3 first saves 8 and 15 of them and two levels).
    static const std::map<int, std::string> forms = {
        {7, "2 G 3 / 3 / 3"},
        {11, "5d G 2 / 5d / 5d"},
        {13, "3 G 4 / 3 T 2 / 3"},
        {17, "(2 T 2) T (2 T 2) / (2 T 2) T 2 / 2 T 2"},
        {19, "(3 T 3) G 2 / 3 T 3 / 3 T 3"},
        {23, "2 G 11d / 11r / 11r"},
        {29, "7d G 4 / 7d T 2 / 7d"},
        {31, "(3 G 5d) G 2 / 5d G 3 / 5d G 3"},
        {37, "((2 T 2) G 3) T 3 / (3 G 2) T 3 / (3 T 3) T 2"},
        {41, "5 G ((2 T 2) T 2) / 5 G (2 T 2) / 5 G 2"},
        {43, "(2 G 7) G 3 / 7 G 3 / 7 G 3"},
        {47, "23 G 2 / 23 / 23"},
        {53, "13 G (2 T 2) / 13 G 2 / 13"},
        {59, "29 G 2 / 29 / 29"},
        {61, "(3 G (2 T 2)) G 5d / (5d G 3) T 2 / 3 G 5d"},
    };
    return forms;
}

RaderForm real_lane_form(int p) {
    const auto& forms = real_lane_forms();
    auto it = forms.find(p);
    if (it == forms.end()) throw std::runtime_error("no real-lane Rader form for " + std::to_string(p));
    return parse_rader_form(it->second);
}

Halves direct_halves(tqfgen::SplitAlg& a, int p, const std::vector<Handle>& x) { return direct_form(a, p, x, false); }

Halves direct_rows(tqfgen::SplitAlg& a, int p, const std::vector<Handle>& x) { return direct_form(a, p, x, true); }

namespace {

// The rows of the p-point direct form in the order they are formed (see
// SplitAlg::direct_row_order): 0 the sum of all inputs, k the rows of bin k.
std::vector<int> formation_order(const tqfgen::SplitAlg& a, int p) {
    const int m = (p - 1) / 2;
    std::vector<int> natural(m + 1);
    std::iota(natural.begin(), natural.end(), 0);
    const auto chosen = a.direct_row_order.find(p);
    if (chosen == a.direct_row_order.end()) return natural;
    std::vector<int> sorted = chosen->second;
    std::sort(sorted.begin(), sorted.end());
    if (sorted != natural) throw std::logic_error("direct form of " + std::to_string(p) + ": rows 0..m each once");
    return chosen->second;
}

}  // namespace

Halves direct_form(tqfgen::SplitAlg& a, int p, const std::vector<Handle>& x, bool forward_sines) {
    const int m = (p - 1) / 2;
    std::vector<Handle> s(m + 1), d(m + 1);
    for (int i = 1; i <= m; ++i) {
        s[i] = a.add_r(x[i], x[p - i]);
        d[i] = a.sub_r(x[i], x[p - i]);
    }
    Halves h;
    h.A.resize(m + 1);
    h.B.resize(m + 1);
    for (int k : formation_order(a, p)) {
        if (k == 0) {
            h.x0 = x[0];
            for (int i = 1; i <= m; ++i) h.x0 = a.add_r(h.x0, s[i]);
            continue;
        }
        Handle A = x[0], B;
        for (int i = 1; i <= m; ++i) {
            const Root w = tqfgen::unit_root(static_cast<long>(i) * k, p, +1);
            A = a.add_r(A, a.mul_r(s[i], w.real()));
            B = a.add_r(B, a.mul_r(d[i], forward_sines ? -w.imag() : w.imag()));
        }
        // Each row is one linear combination: rounded once when widened.
        h.A[k] = a.settle_r(A);
        h.B[k] = forward_sines ? -a.settle_r(B) : a.settle_r(B);
    }
    return h;
}

Halves prime_halves(tqfgen::SplitAlg& a, int p, const std::vector<Handle>& x) {
    if (p == 7 || p == 11) return direct_halves(a, p, x);
    return rader_halves(a, p, x, real_lane_form(p));
}

std::vector<Cx> real_lane_block(tqfgen::SplitAlg& a, int p, const std::vector<Cx>& x, int dir, HalvesOf halves) {
    std::vector<Handle> xr(p), xi(p);
    bool any_re = false, any_im = false;
    for (int n = 0; n < p; ++n) {
        xr[n] = x[n].re;
        xi[n] = x[n].im;
        any_re |= xr[n].valid();
        any_im |= xi[n].valid();
    }
    const int m = (p - 1) / 2;
    Halves hr, hi;
    hr.A.resize(m + 1);
    hr.B.resize(m + 1);
    hi.A.resize(m + 1);
    hi.B.resize(m + 1);
    if (any_re) hr = halves(a, p, xr);
    if (any_im) hi = halves(a, p, xi);
    std::vector<Cx> X(p);
    X[0] = Cx{hr.x0, hi.x0};
    for (int k = 1; k <= m; ++k) {
        const Cx A{hr.A[k], hi.A[k]}, B{hr.B[k], hi.B[k]};
        const Cx r = a.mul_i(B, dir);
        X[k] = a.add(A, r);
        X[p - k] = a.sub(A, r);
    }
    return X;
}

std::vector<Handle> cross_pairs(tqfgen::PairAlg& a, const Halves& h, int p, int dir) {
    const int m = (p - 1) / 2;
    std::vector<Handle> X(p);
    X[0] = h.x0;
    for (int k = 1; k <= m; ++k) {
        Handle A = h.A[k], B = h.B[k];
        int s = dir;
        if (B.neg) {
            B = -B;
            s = -s;
        }
        X[k] = a.rot_add(A, B, s);
        X[p - k] = a.rot_add(A, B, -s);
    }
    return X;
}

}  // namespace tqfcdft
