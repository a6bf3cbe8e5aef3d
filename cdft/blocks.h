// The short complex blocks, written once over a value algebra (see
// gen/algebra.h). `dir` is the sign of the exponent: -1 forward, +1 inverse.
#pragma once

#include <cmath>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "pair_pow2.h"
#include "prime_blocks.h"

namespace tqfcdft {

template <class A>
using Vec = std::vector<typename A::C>;

// X0 = x0 + x1, X1 = x0 - x1
template <class A>
Vec<A> dft2(A& a, const Vec<A>& x, int) {
    return {a.add(x[0], x[1]), a.sub(x[0], x[1])};
}

// u = x1 + x2, v = x1 - x2; X0 = x0 + u; t = x0 - u/2, w = sin60 v; X1,2 = t -+ i w
template <class A>
Vec<A> dft3(A& a, const Vec<A>& x, int dir) {
    const auto u = a.add(x[1], x[2]), v = a.sub(x[1], x[2]);
    const auto t = a.settle(a.sub(x[0], a.mul_real(u, 0.5L)));
    const auto w = a.settle(a.rot_scale(v, std::sqrt(3.0L) / 2, dir));
    return {a.add(x[0], u), a.add(t, w), a.sub(t, w)};
}

// Radix-4 butterfly; the rotation of d by -+i is the block's only non-addition.
template <class A>
Vec<A> dft4(A& a, const Vec<A>& x, int dir) {
    const auto s0 = a.add(x[0], x[2]), d0 = a.sub(x[0], x[2]);
    const auto s1 = a.add(x[1], x[3]), d1 = a.sub(x[1], x[3]);
    const auto [x1, x3] = a.rot_butterfly(d0, d1, dir);
    return {a.add(s0, s1), x1, a.sub(s0, s1), x3};
}

// Constants of the five-point blocks.
struct Five {
    static constexpr long double pi = 3.141592653589793238462643383279502884L;
    static long double c1() { return cosl(2 * pi / 5); }
    static long double c2() { return -cosl(4 * pi / 5); }
    static long double s1() { return sinl(2 * pi / 5); }
    static long double s2() { return sinl(4 * pi / 5); }
};

// The sine half of a five-point block, rotated: -+i (s1 v1 + s2 v2) and
// -+i (s2 v1 - s1 v2).
template <class A>
std::pair<typename A::C, typename A::C> five_sines(A& a, typename A::C v1, typename A::C v2, int dir) {
    const auto p2 = a.rot_scale(v2, Five::s2(), dir);
    const auto p1 = a.rot_scale(v1, Five::s1(), dir);
    const auto b1 = a.settle(a.add(p1, p2));
    const auto q2 = a.rot_scale(v2, Five::s1(), dir);
    const auto q1 = a.rot_scale(v1, Five::s2(), dir);
    const auto b2 = a.settle(a.sub(q1, q2));
    return {b1, b2};
}

// Five points, direct form: both cosine terms formed from x0 and the pair sums.
template <class A>
Vec<A> dft5(A& a, const Vec<A>& x, int dir) {
    const auto u1 = a.add(x[1], x[4]), u2 = a.add(x[2], x[3]);
    const auto v1 = a.sub(x[1], x[4]), v2 = a.sub(x[2], x[3]);
    const auto X0 = a.add(a.add(x[0], u1), u2);
    const auto m12 = a.mul_real(u2, Five::c2());
    const auto m11 = a.mul_real(u1, Five::c1());
    const auto A1 = a.settle(a.sub(a.add(x[0], m11), m12));
    const auto m22 = a.mul_real(u2, Five::c1());
    const auto m21 = a.mul_real(u1, Five::c2());
    const auto A2 = a.settle(a.add(a.sub(x[0], m21), m22));
    const auto [B1, B2] = five_sines(a, v1, v2, dir);
    return {X0, a.add(A1, B1), a.add(A2, B2), a.sub(A2, B2), a.sub(A1, B1)};
}

// Five points, reduced form: the cosine terms share x0 - p/4 and sqrt(5)/4 q.
template <class A>
Vec<A> dft5w(A& a, const Vec<A>& x, int dir) {
    const auto u1 = a.add(x[1], x[4]), u2 = a.add(x[2], x[3]);
    const auto v1 = a.sub(x[1], x[4]), v2 = a.sub(x[2], x[3]);
    const auto p = a.add(u1, u2), q = a.sub(u1, u2);
    const auto y = a.settle(a.sub(x[0], a.mul_real(p, 0.25L)));
    const auto z = a.settle(a.mul_real(q, std::sqrt(5.0L) / 4));
    const auto A1 = a.add(y, z), A2 = a.sub(y, z);
    const auto [B1, B2] = five_sines(a, v1, v2, dir);
    return {a.add(x[0], p), a.add(A1, B1), a.add(A2, B2), a.sub(A2, B2), a.sub(A1, B1)};
}

template <class A>
Vec<A> block(A& a, const std::string& name, const Vec<A>& x, int dir) {
    if (name == "2") return dft2(a, x, dir);
    if (name == "3") return dft3(a, x, dir);
    if (name == "4") return dft4(a, x, dir);
    if (name == "5") return dft5(a, x, dir);
    if (name == "5w") return dft5w(a, x, dir);
    if constexpr (std::is_same_v<A, tqfgen::SplitAlg>) {
        if (name.back() == ']') return rader_form_block(a, std::stoi(name), name.substr(name.find('[')), x, dir);
        if (name.back() == 'd') return direct_block(a, std::stoi(name), x, dir);
        if (name.back() == 'r') return rader_lane_block(a, std::stoi(name), x, dir);
    }
    if constexpr (std::is_same_v<A, tqfgen::PairAlg>) {
        if (name == "8" || name == "16") return pair_pow2(a, x, dir);
        if (name.back() == 'r') return rader_block(a, std::stoi(name), x, dir);
    }
    const int p = std::stoi(name);
    if (p >= 7) return prime_block(a, p, x, dir);
    throw std::runtime_error("no block named " + name);
}

}  // namespace tqfcdft
