#include "primes.h"

#include <map>
#include <stdexcept>
#include <string>

#include "lane_stages.h"
#include "prime_math.h"
#include "real_lane.h"
#include "tree_ops.h"

namespace tqfcdft {

using tqfgen::Cx;
using tqfgen::Form;
using tqfgen::Handle;
using tqfgen::Root;
using tqfgen::Ty;

// 53's 13-point block returns its cosine through 2 T 3, as in the
// single-precision composites (catalog.cpp).
const std::map<int, std::string>& rader_chains() {
    static const std::map<int, std::string> chains = {
        {7, "2 G 3"},            {11, "5 G 2"},                {13, "(2 T 2) G 3"},
        {17, "(2 T 2) T (2 T 2)"}, {19, "3 T (2 G 3)"},        {23, "2 G 11"},
        {29, "(2 T 2) G 7"},     {31, "5 G (2 G 3)"},          {37, "(2 T 2) G (3 T 3)"},
        {41, "5 G (2 T (2 T 2))"}, {43, "(7 G 2) G 3"},        {53, "(2 T 2) G 13[3 G 4 / 2 T 3 / 3]"},
        {61, "(2 T 2) G (5 G 3)"},
    };
    return chains;
}

std::string bluestein_tree(int p) {
    // 96: 12-point blocks (radix 3 at stride 32, then 16, 8), twiddles,
    // 8-point blocks; 128: 8-point blocks at strides 64, 32, 16, twiddles,
    // 16-point blocks.
    return p == 47 ? "(3 G (2 T 2)) T ((2 T 2) T 2)" : "((2 T 2) T 2) T (((2 T 2) T 2) T 2)";
}

std::vector<std::string> bluestein_trees() { return {bluestein_tree(47), bluestein_tree(59)}; }

namespace {

std::shared_ptr<const Tree> complex_chain(int p) {
    const auto& chains = rader_chains();
    auto it = chains.find(p);
    if (it == chains.end()) throw std::runtime_error("no Rader chain for " + std::to_string(p));
    return parse_tree(it->second);
}

// Stores values in whatever registers they sit in: one store per register.
void store_lanes(tqfgen::Kernel& k, const std::vector<LaneVal>& v, const std::vector<int>& index) {
    std::map<std::tuple<int, bool, int, bool>, size_t> seen;
    for (size_t i = 0; i < v.size(); ++i) {
        const auto key = std::make_tuple(v[i].reg.re.id, v[i].reg.re.neg, v[i].reg.im.id, v[i].reg.im.neg);
        auto it = seen.find(key);
        if (it == seen.end()) {
            tqfgen::PlanarStore st;
            st.re = v[i].reg.re;
            st.im = v[i].reg.im;
            k.planar_out.push_back(st);
            it = seen.emplace(key, k.planar_out.size() - 1).first;
        }
        k.planar_out[it->second].index[v[i].lane] = index[i];
    }
}

// Rader, complex form, in four planar float lanes: the convolution with the
// roots in the order of the powers of g, by the chain forward, the kernel in
// every bin (bin 0 included), the chain backwards.
void build_rader_planar(tqfgen::Kernel& k, int dir) {
    const int p = k.length, N = p - 1;
    const RaderKernel K(p, dir);
    const auto chain = complex_chain(p);
    tqfgen::SplitAlg a(k.g, Ty::V4F);
    std::vector<LaneVal> y(N);
    for (int n = 0; n < N; ++n) y[n].elem = K.pow_g[n];
    const std::vector<LaneVal> Y = run_stages(a, *chain, {y}, dir)[0];
    std::vector<LaneVal> Z = multiply_in_place(a, Y, K.bin);

    // x0 enters bin 0 of the convolution and is the base of X[0].
    const int idx0[4] = {0, -1, -1, -1};
    const Cx x0{k.g.load_planar(idx0, 0), k.g.load_planar(idx0, 1)};
    const Cx X0 = a.add(x0, gather_lanes(a, {Y[0]}));
    // Z[0] = x0 - Y[0]/N, formed on the whole register that holds bin 0
    // (x0 loaded into that bin's lane): the product by K of that lane is left
    // aside, the other lanes of the copy are not used.
    LaneVal z0 = Y[0];
    {
        int idx[4] = {-1, -1, -1, -1};
        idx[Y[0].lane] = 0;
        const Cx x0_in_lane{k.g.load_planar(idx, 0), k.g.load_planar(idx, 1)};
        z0.reg = a.sub(x0_in_lane, a.mul_real(Y[0].reg, 1.0L / N));
    }
    Z[0] = z0;

    const std::vector<LaneVal> z = run_stages(a, *mirror_tree(*chain), {Z}, -dir)[0];
    LaneVal X0v;
    X0v.reg = X0;  // lane 0
    std::vector<LaneVal> outs{X0v};
    std::vector<int> index{0};
    for (int t = 0; t < N; ++t) {
        outs.push_back(z[t]);
        index.push_back(K.pow_ginv[t]);
    }
    store_lanes(k, outs, index);
}

// The chirp c[n] = W^(((p+1)/2) n^2 mod p): integer exponents, period p, so
// that W^(nk) = c[n] c[k] conj(c[k-n]). Any chirp with that identity for
// |k - n| < p serves the construction below.
std::vector<Root> integer_chirp(int p, int dir) {
    std::vector<Root> c(p);
    for (int n = 0; n < p; ++n) c[n] = tqfgen::unit_root(static_cast<long>((p + 1) / 2) * n * n % p, p, dir);
    return c;
}

// The inverse kernels' chirp e[n] = exp(+i pi n^2 / p), n^2 not reduced:
// half angles, period 2p. It meets the same identity with the conjugate
// roots (the forward chirp is (-1)^n times its conjugate), so the inverse is
// the forward construction with this chirp and conjugated transforms.
std::vector<Root> half_angle_chirp(int p) {
    std::vector<Root> e(p);
    for (int n = 0; n < p; ++n) e[n] = tqfgen::unit_root(static_cast<long>(n) * n % (2 * p), 2 * p, +1);
    return e;
}

// Bluestein in four planar float lanes: the chirped input, zero-padded to M,
// convolved with the conjugate chirp through two length-M transforms (the
// operations on padding left out, only outputs 0..p-1 of the second formed),
// and the chirp again.
void build_bluestein_planar(tqfgen::Kernel& k, int dir, const std::vector<Root>& c) {
    const int p = k.length, M = p == 47 ? 96 : 128;
    const auto tree = parse_tree(bluestein_tree(p));
    tqfgen::SplitAlg a(k.g, Ty::V4F);

    std::vector<LaneVal> x(M);
    for (int n0 = 0; n0 < p; n0 += 4) {
        std::vector<LaneVal> in;
        std::vector<Root> w;
        for (int n = n0; n < n0 + 4 && n < p; ++n) {
            LaneVal v;
            v.elem = n;
            in.push_back(v);
            w.push_back(c[n]);
        }
        const Cx r = lane_cmul(a, gather_lanes(a, in), w);
        for (size_t l = 0; l < in.size(); ++l) {
            x[n0 + l].reg = r;
            x[n0 + l].lane = static_cast<int>(l);
        }
    }
    const std::vector<LaneVal> A = run_stages(a, *tree, {x}, dir)[0];
    std::vector<Root> H(M);
    for (int kk = 0; kk < M; ++kk) {
        Root s(0, 0);
        for (int n = -(p - 1); n <= p - 1; ++n)
            s += std::conj(c[std::abs(n)]) * tqfgen::unit_root(static_cast<long>((n + M) % M) * kk, M, dir);
        H[kk] = s / static_cast<long double>(M);
    }
    const std::vector<LaneVal> Z = multiply_in_place(a, A, H);
    const std::vector<LaneVal> z = run_stages(a, *mirror_tree(*tree), {Z}, -dir)[0];
    for (int t0 = 0; t0 < p; t0 += 4) {
        std::vector<LaneVal> in;
        std::vector<Root> w;
        for (int t = t0; t < t0 + 4 && t < p; ++t) {
            in.push_back(z[t]);
            w.push_back(c[t]);
        }
        tqfgen::PlanarStore st;
        const Cx r = lane_cmul(a, gather_lanes(a, in), w);
        st.re = r.re;
        st.im = r.im;
        for (size_t l = 0; l < in.size(); ++l) st.index[l] = t0 + static_cast<int>(l);
        k.planar_out.push_back(st);
    }
}

// Two-lane double: one real program on [re, im], crossing at the end.
void build_real_lane_pairs(tqfgen::Kernel& k, int dir) {
    const int p = k.length;
    tqfgen::PairAlg pa(k.g);
    tqfgen::SplitAlg a(k.g, Ty::V2D);
    std::vector<Handle> x;
    for (int n = 0; n < p; ++n) x.push_back(k.g.load_pair(n));
    k.pair_out = cross_pairs(pa, prime_halves(a, p, x), p, dir);
}

}  // namespace

void build_prime_kernel(tqfgen::Kernel& k, int dir) {
    if (k.double_data) {
        k.form = Form::Pair;
        build_real_lane_pairs(k, dir);
    } else {
        k.form = Form::Planar;
        if (k.length == 47 || k.length == 59)
            build_bluestein_planar(k, dir, dir < 0 ? integer_chirp(k.length, dir) : half_angle_chirp(k.length));
        else build_rader_planar(k, dir);
    }
}

}  // namespace tqfcdft
