// Generic entries: the length decides first and alone; a valid length gives
// the fixed kernel's status and bits.
#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

#include "guarded.h"
#include "kernels.h"

namespace {

using namespace tqftest;

template <class T>
using GenericFn = tqfStatus (*)(const typename Complex<T>::type*, typename Complex<T>::type*, int, int);

template <class T>
struct Generic {
    int sign;
    GenericFn<T> fn;
};

template <class T> std::vector<Generic<T>> generic_entries();
template <> std::vector<Generic<float>> generic_entries<float>() {
    return {{-1, table::cfwd_32fc_generic.fn}, {+1, table::cinv_32fc_generic.fn}};
}
template <> std::vector<Generic<double>> generic_entries<double>() {
    return {{-1, table::cfwd_64fc_generic.fn}, {+1, table::cinv_64fc_generic.fn}};
}

template <class T>
class ComplexGeneric : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ComplexGeneric, Precisions);

TYPED_TEST(ComplexGeneric, EveryLengthIsTheFixedKernel) {
    using T = TypeParam;
    using C = typename Complex<T>::type;
    for (const auto& g : generic_entries<T>()) {
        const auto fixed = complex_kernels<T>(g.sign);
        ASSERT_EQ(fixed.size(), 63u);
        for (const auto& k : fixed) {
            SCOPED_TRACE(k.length);
            std::mt19937 rng(k.length);
            std::uniform_real_distribution<double> u(-1, 1);
            std::vector<T> x(2 * k.length), a(x.size()), b(x.size());
            for (T& v : x) v = static_cast<T>(u(rng));
            for (int flag : {1, 2, 4, 8, 3}) {
                const C* s = reinterpret_cast<const C*>(x.data());
                EXPECT_EQ(g.fn(s, reinterpret_cast<C*>(a.data()), k.length, flag),
                          k.fn(s, reinterpret_cast<C*>(b.data()), flag));
                for (size_t i = 0; i < x.size(); ++i) ASSERT_EQ(bits(a[i]), bits(b[i]));
            }
            EXPECT_EQ(g.fn(nullptr, reinterpret_cast<C*>(a.data()), k.length, 8), tqfStsNullPointer);
        }
    }
}

TYPED_TEST(ComplexGeneric, BadLengthWinsOverPointersAndFlag) {
    using T = TypeParam;
    using C = typename Complex<T>::type;
    GuardedBuffer src(2 * 64 * sizeof(T), 0), dst(2 * 64 * sizeof(T), 0);
    dst.fill_pattern(9);
    std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size());
    for (const auto& g : generic_entries<T>()) {
        for (int len : {INT_MIN, -1, 0, 1, 65, 66, 1000, INT_MAX}) {
            SCOPED_TRACE(len);
            EXPECT_EQ(g.fn(nullptr, nullptr, len, 8), tqfStsBadSize);
            EXPECT_EQ(g.fn(src.as<C>(), dst.as<C>(), len, 3), tqfStsBadSize);
            EXPECT_EQ(g.fn(src.as<C>(), dst.as<C>(), len, 8), tqfStsBadSize);
        }
        EXPECT_EQ(g.fn(src.as<C>(), nullptr, 2, 8), tqfStsNullPointer);
        EXPECT_EQ(g.fn(src.as<C>(), dst.as<C>(), 64, 3), tqfStsBadFlag);
    }
    EXPECT_TRUE(dst.payload_equals(before.data()));
    EXPECT_TRUE(dst.guards_intact());
}

}  // namespace
