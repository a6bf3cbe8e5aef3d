// The std::span forms (this file is C++20; the header's span forms exist
// where the standard library has std::span): the same bits as the pointer
// forms, sizes checked as for vectors.
#include "cxx_support.h"

#ifndef TQFGEN_HAS_SPAN
#error "tqfgen.hpp did not enable its std::span forms in a C++20 build"
#endif

using namespace cxxtest;

namespace {
template <class F> class CxxSpan : public ::testing::Test {};
TYPED_TEST_SUITE(CxxSpan, SizedFamilies, SizedFamilyNames);

template <class T> class CxxSpanObjects : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(CxxSpanObjects, Precisions);
}  // namespace

TYPED_TEST(CxxSpan, SpanFormsGiveTheKernelsBits) {
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
            F::cxx(std::span<const V>(xv), std::span<V>(y), s);
            EXPECT_TRUE(same_bits(y, ref)) << "span form";
            y = filled<V>(out);
            EXPECT_EQ(F::nothrow(xv, std::span<V>(y), s), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow span form, src from a vector";
        }
    }
}

TYPED_TEST(CxxSpan, SpanSizesAreChecked) {
    using F = TypeParam;
    using V = typename F::V;
    const std::vector<V> x(16);
    const size_t out = F::out_length(16);
    for (size_t m : {size_t(0), out - 1, out + 1}) {
        std::vector<V> y = filled<V>(m);
        const std::vector<V> before = y;
        EXPECT_TRUE(throws_status([&] { F::cxx(std::span<const V>(x), std::span<V>(y), tqfgen::scale::none); },
                                  tqfStsBadSize, F::cxx_name));
        EXPECT_EQ(F::nothrow(std::span<const V>(x), std::span<V>(y), tqfgen::scale::none), tqfStsBadSize);
        EXPECT_TRUE(same_bits(y, before));
    }
    std::vector<V> y(F::out_length(65));
    EXPECT_TRUE(throws_status([&] { F::cxx(std::vector<V>(65), std::span<V>(y), tqfgen::scale::none); },
                              tqfStsBadSize, F::cxx_name));
}

TYPED_TEST(CxxSpanObjects, WalshHadamardSpanForms) {
    using T = TypeParam;
    const std::vector<T> x = make_input<T>(1024, 10);
    std::vector<T> ref(1024);
    tqfgen::wht(x.data(), ref.data(), 10, tqfgen::scale::by_sqrt_n);

    std::vector<T> y = filled<T>(1024);
    tqfgen::wht(std::span<const T>(x), std::span<T>(y), tqfgen::scale::by_sqrt_n);
    EXPECT_TRUE(same_bits(y, ref)) << "free function";
    tqfgen::walsh_hadamard<T> w(10);
    y = filled<T>(1024);
    w(std::span<const T>(x), std::span<T>(y), tqfgen::scale::by_sqrt_n);
    EXPECT_TRUE(same_bits(y, ref)) << "object";
    y = filled<T>(1024);
    EXPECT_EQ(tqfgen::nothrow::transform(w, x, std::span<T>(y), tqfgen::scale::by_sqrt_n), tqfStsNoError);
    EXPECT_TRUE(same_bits(y, ref)) << "nothrow object";

    std::vector<T> short_y(1000);
    EXPECT_TRUE(throws_status([&] { tqfgen::wht(std::span<const T>(x), std::span<T>(short_y), tqfgen::scale::none); },
                              tqfStsBadSize, "tqfgen::wht"));
    EXPECT_TRUE(throws_status([&] { w(std::span<const T>(x), std::span<T>(short_y), tqfgen::scale::none); },
                              tqfStsBadSize, "tqfgen::walsh_hadamard"));
    EXPECT_EQ(tqfgen::nothrow::transform(w, x, std::span<T>(short_y), tqfgen::scale::none), tqfStsBadSize);
}

TYPED_TEST(CxxSpanObjects, Dct4SpanForms) {
    using T = TypeParam;
    const std::vector<T> x = make_input<T>(512, 9);
    tqfgen::dct4<T> plan(512);
    std::vector<T> ref(512);
    plan(x.data(), ref.data());

    std::vector<T> y = filled<T>(512);
    plan(std::span<const T>(x), std::span<T>(y));
    EXPECT_TRUE(same_bits(y, ref));
    y = filled<T>(512);
    EXPECT_EQ(tqfgen::nothrow::transform(plan, x, std::span<T>(y)), tqfStsNoError);
    EXPECT_TRUE(same_bits(y, ref));

    std::vector<T> long_y(513);
    EXPECT_TRUE(throws_status([&] { plan.transform(std::span<const T>(x), std::span<T>(long_y)); }, tqfStsBadSize,
                              "tqfgen::dct4"));
    EXPECT_EQ(tqfgen::nothrow::transform(plan, x, std::span<T>(long_y)), tqfStsBadSize);
}
