// The DFT families of the C++ interface, every precision, length and scale:
// each form gives the bits of the C kernel of its length.
#include <algorithm>
#include <array>
#include <iterator>

#include "cxx_support.h"

using namespace cxxtest;

namespace {

template <class F> class CxxSized : public ::testing::Test {};
TYPED_TEST_SUITE(CxxSized, SizedFamilies, SizedFamilyNames);

template <class F, int N> CompileTimeCalls<typename F::V> compile_time_calls() {
    using V = typename F::V;
    constexpr size_t out = F::out_length(N);
    return {N, [](const V* x, V* y, tqfgen::scale s) { F::cxx(x, y, tqfgen::fixed<N>, s); },
            [](const V* x, V* y, tqfgen::scale s) { return F::nothrow(x, y, tqfgen::fixed<N>, s); },
            [](const V* x, V* y, tqfgen::scale s) {
                std::array<V, N> a;
                std::array<V, out> b;
                std::copy(x, x + N, a.begin());
                std::copy(y, y + out, b.begin());
                F::cxx(a, b, s);
                std::copy(b.begin(), b.end(), y);
            }};
}
template <class F, int... I>
std::vector<CompileTimeCalls<typename F::V>> compile_time_calls(std::integer_sequence<int, I...>) {
    return {compile_time_calls<F, I + 2>()...};
}

}  // namespace

// The run-time length forms (pointer, vector, returned vector, and their
// nothrow twins) against the C kernel of every length, for every flag.
TYPED_TEST(CxxSized, RunTimeLengthFormsGiveTheKernelsBits) {
    using F = TypeParam;
    using V = typename F::V;
    using C = typename F::C;
    for (const auto& kernel : F::table()) {
        const size_t n = size_t(kernel.size), out = F::out_length(n);
        const std::vector<C> x = make_input<C>(n, kernel.size);
        const std::vector<V> xv = same_bytes<V>(x);
        for (const auto [s, flag] : kScales) {
            SCOPED_TRACE(std::string(kernel.name) + ", flag " + std::to_string(flag));
            std::vector<C> ref = filled<C>(out);
            ASSERT_EQ(kernel.fn(x.data(), ref.data(), flag), tqfStsNoError);

            std::vector<V> y = filled<V>(out);
            F::cxx(xv.data(), y.data(), kernel.size, s);
            EXPECT_TRUE(same_bits(y, ref)) << "pointer form";

            y = filled<V>(out);
            F::cxx(xv, y, s);
            EXPECT_TRUE(same_bits(y, ref)) << "vector form";

            EXPECT_TRUE(same_bits(F::cxx(xv, s), ref)) << "returned vector";

            y = filled<V>(out);
            EXPECT_EQ(F::nothrow(xv.data(), y.data(), kernel.size, s), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow pointer form";

            y = filled<V>(out);
            EXPECT_EQ(F::nothrow(xv, y, s), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow vector form";
        }
    }
}

// tqfgen::fixed<N> and std::array of N call the fixed kernel of N.
TYPED_TEST(CxxSized, CompileTimeLengthFormsGiveTheKernelsBits) {
    using F = TypeParam;
    using V = typename F::V;
    using C = typename F::C;
    ASSERT_EQ(std::size(F::table()), 63u);
    for (const auto& calls : compile_time_calls<F>(std::make_integer_sequence<int, 63>{})) {
        const size_t n = size_t(calls.size), out = F::out_length(n);
        const auto& kernel = F::table()[n - 2];
        ASSERT_EQ(kernel.size, calls.size);
        const std::vector<C> x = make_input<C>(n, calls.size + 100);
        const std::vector<V> xv = same_bytes<V>(x);
        for (const auto [s, flag] : kScales) {
            SCOPED_TRACE(std::string(kernel.name) + ", flag " + std::to_string(flag));
            std::vector<C> ref = filled<C>(out);
            ASSERT_EQ(kernel.fn(x.data(), ref.data(), flag), tqfStsNoError);

            std::vector<V> y = filled<V>(out);
            calls.fixed(xv.data(), y.data(), s);
            EXPECT_TRUE(same_bits(y, ref)) << "fixed<N>";

            y = filled<V>(out);
            EXPECT_EQ(calls.nothrow_fixed(xv.data(), y.data(), s), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow fixed<N>";

            y = filled<V>(out);
            calls.array(xv.data(), y.data(), s);
            EXPECT_TRUE(same_bits(y, ref)) << "std::array";
        }
    }
}
