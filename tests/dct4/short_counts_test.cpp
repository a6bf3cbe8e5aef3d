// The straight-line kernels of lengths 2 to 32, run over a value type that
// counts what it does: the additions, subtractions and multiplications must
// be the tabled ones, with no negation anywhere. The counted run must give
// the library's bits, so the counted program is the one the library runs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "exec_short.h"
#include "exec_support.h"

namespace {

using namespace dct4exec;

struct OpCounts {
    long add = 0, sub = 0, mul = 0;
};
OpCounts counts;

template <class T>
struct Counted {
    T v;
    Counted() : v(0) {}
    Counted(T x) : v(x) {}  // NOLINT: loads and stores of plain elements
};
template <class T> Counted<T> operator+(Counted<T> a, Counted<T> b) { ++counts.add; return a.v + b.v; }
template <class T> Counted<T> operator-(Counted<T> a, Counted<T> b) { ++counts.sub; return a.v - b.v; }
template <class T> Counted<T> operator*(Counted<T> a, Counted<T> b) { ++counts.mul; return a.v * b.v; }
template <class T> Counted<T> operator*(Counted<T> a, T b) { ++counts.mul; return a.v * b; }
template <class T> Counted<T> operator*(T a, Counted<T> b) { ++counts.mul; return a * b.v; }
// No unary minus: a kernel that negates does not compile against this type.

struct Expected {
    int n, kind;
    long add, sub, mul;
};
const Expected kTable[] = {
    {2, 1, 1, 1, 4}, {4, 2, 5, 7, 8}, {8, 3, 16, 16, 24}, {16, 4, 44, 44, 64}, {32, 5, 108, 108, 144},
};

template <class T>
void CheckCounts(const Expected& e) {
    const std::vector<T> x = RandomInput<T>(e.n, 17u + e.n);
    std::vector<Counted<T>> cx(x.begin(), x.end()), cy(e.n);
    counts = OpCounts();
    dct4x::ShortKernel<T>(e.kind, cx.data(), cy.data());
    EXPECT_EQ(counts.add, e.add) << Api<T>::name << " n=" << e.n;
    EXPECT_EQ(counts.sub, e.sub) << Api<T>::name << " n=" << e.n;
    EXPECT_EQ(counts.mul, e.mul) << Api<T>::name << " n=" << e.n;

    Plan<T> plan(e.n);
    ASSERT_EQ(plan.status(), tqfStsNoError);
    std::vector<T> y(e.n);
    ASSERT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
    for (int k = 0; k < e.n; ++k)
        EXPECT_EQ(std::memcmp(&y[k], &cy[k].v, sizeof(T)), 0) << Api<T>::name << " n=" << e.n << " k=" << k;
}

TEST(Dct4Short, OperationCountsAndBits) {
    for (const Expected& e : kTable) {
        CheckCounts<float>(e);
        CheckCounts<double>(e);
    }
}

// Length 4 takes its rotations in lifting steps in a given order, which sets
// the rounding: the library's bits are those of the steps written out here.
template <class T>
void CheckLiftingOrder() {
    const long double pi = 3.141592653589793238462643383279502884L;
    const T A = static_cast<T>(std::tan(7 * pi / 32)), B = static_cast<T>(std::sin(7 * pi / 16));
    const T C = static_cast<T>(std::tan(5 * pi / 32)), D = static_cast<T>(std::sin(5 * pi / 16));
    const T r = static_cast<T>(std::sqrt(0.5L));
    Plan<T> plan(4);
    for (uint32_t seed = 0; seed < 50; ++seed) {
        const std::vector<T> x = RandomInput<T>(4, seed);
        const T p = x[0] - A * x[3], t = x[1] - C * x[2];
        const T u = x[3] + B * p, v = x[2] + D * t;
        const T p2 = p - A * u, t2 = t - C * v;
        const T e = r * (u - v), g = r * (p2 + t2);
        const T want[4] = {u + v, e + g, e - g, p2 - t2};
        std::vector<T> y(4);
        ASSERT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
        for (int k = 0; k < 4; ++k) EXPECT_EQ(std::memcmp(&y[k], &want[k], sizeof(T)), 0) << k;
    }
}

TEST(Dct4Short, Length4LiftingOrder) {
    CheckLiftingOrder<float>();
    CheckLiftingOrder<double>();
}

}  // namespace
