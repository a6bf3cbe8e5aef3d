// The DFT families of the C++ interface: failures come back as the C
// status, thrown as tqfgen::error or returned by the nothrow twins, and a
// destination of the wrong size is refused before anything runs.
#include "cxx_support.h"

using namespace cxxtest;

namespace {

template <class F> class CxxSizedStatus : public ::testing::Test {};
TYPED_TEST_SUITE(CxxSizedStatus, SizedFamilies, SizedFamilyNames);

}  // namespace

// A length outside 2..64 is tqfStsBadSize before anything else: also with
// null pointers and a bad flag, as the generic entry tests it first.
TYPED_TEST(CxxSizedStatus, BadLengthIsBadSize) {
    using F = TypeParam;
    using V = typename F::V;
    const std::vector<V> x(70);
    for (int length : {0, 1, 65, -1, 1000, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(length);
        std::vector<V> y = filled<V>(70);
        const std::vector<V> before = y;
        EXPECT_TRUE(throws_status([&] { F::cxx(x.data(), y.data(), length, tqfgen::scale::none); }, tqfStsBadSize,
                                  F::cxx_name));
        EXPECT_TRUE(throws_status([&] { F::cxx(static_cast<const V*>(nullptr), static_cast<V*>(nullptr), length,
                                               as_scale(3)); },
                                  tqfStsBadSize, F::cxx_name));
        EXPECT_EQ(F::nothrow(x.data(), y.data(), length, tqfgen::scale::none), tqfStsBadSize);
        EXPECT_EQ(F::nothrow(static_cast<const V*>(nullptr), static_cast<V*>(nullptr), length, as_scale(3)),
                  tqfStsBadSize);
        EXPECT_TRUE(same_bits(y, before));
    }
    // Containers of lengths without a kernel, dst sized for them.
    for (size_t n : {size_t(0), size_t(1), size_t(65)}) {
        SCOPED_TRACE(n);
        const std::vector<V> xs(n);
        std::vector<V> y(F::out_length(n));
        EXPECT_TRUE(throws_status([&] { F::cxx(xs, y, tqfgen::scale::none); }, tqfStsBadSize, F::cxx_name));
        EXPECT_TRUE(throws_status([&] { (void)F::cxx(xs, tqfgen::scale::none); }, tqfStsBadSize, F::cxx_name));
        EXPECT_EQ(F::nothrow(xs, y, tqfgen::scale::none), tqfStsBadSize);
    }
}

// A flag other than the four: tqfStsBadFlag from every form, dst untouched.
TYPED_TEST(CxxSizedStatus, BadFlagIsBadFlag) {
    using F = TypeParam;
    using V = typename F::V;
    const std::vector<V> x(16);
    for (int flag : kBadFlags) {
        SCOPED_TRACE(flag);
        const tqfgen::scale s = as_scale(flag);
        std::vector<V> y = filled<V>(F::out_length(16));
        const std::vector<V> before = y;
        EXPECT_TRUE(throws_status([&] { F::cxx(x.data(), y.data(), 16, s); }, tqfStsBadFlag, F::cxx_name));
        EXPECT_TRUE(throws_status([&] { F::cxx(x.data(), y.data(), tqfgen::fixed<16>, s); }, tqfStsBadFlag, F::cxx_name));
        EXPECT_TRUE(throws_status([&] { F::cxx(x, y, s); }, tqfStsBadFlag, F::cxx_name));
        EXPECT_TRUE(throws_status([&] { (void)F::cxx(x, s); }, tqfStsBadFlag, F::cxx_name));
        EXPECT_EQ(F::nothrow(x.data(), y.data(), 16, s), tqfStsBadFlag);
        EXPECT_EQ(F::nothrow(x.data(), y.data(), tqfgen::fixed<16>, s), tqfStsBadFlag);
        EXPECT_EQ(F::nothrow(x, y, s), tqfStsBadFlag);
        EXPECT_TRUE(same_bits(y, before));
    }
}

// A null src or dst: tqfStsNullPointer, ahead of a bad flag.
TYPED_TEST(CxxSizedStatus, NullPointerIsNullPointer) {
    using F = TypeParam;
    using V = typename F::V;
    const std::vector<V> x(64);
    std::vector<V> y = filled<V>(F::out_length(64));
    const V* no_src = nullptr;
    V* no_dst = nullptr;
    for (int flag : {int(tqfNoDivByAny), 3}) {
        const tqfgen::scale s = as_scale(flag);
        EXPECT_TRUE(throws_status([&] { F::cxx(no_src, y.data(), 64, s); }, tqfStsNullPointer, F::cxx_name));
        EXPECT_TRUE(throws_status([&] { F::cxx(x.data(), no_dst, 64, s); }, tqfStsNullPointer, F::cxx_name));
        EXPECT_TRUE(throws_status([&] { F::cxx(no_src, y.data(), tqfgen::fixed<64>, s); }, tqfStsNullPointer,
                                  F::cxx_name));
        EXPECT_TRUE(throws_status([&] { F::cxx(x.data(), no_dst, tqfgen::fixed<2>, s); }, tqfStsNullPointer,
                                  F::cxx_name));
        EXPECT_EQ(F::nothrow(no_src, y.data(), 64, s), tqfStsNullPointer);
        EXPECT_EQ(F::nothrow(x.data(), no_dst, tqfgen::fixed<64>, s), tqfStsNullPointer);
    }
}

// A dst of any other size than the family's output length is refused with
// tqfStsBadSize and left as it was; the transform does not run.
TYPED_TEST(CxxSizedStatus, VectorDestinationSizeIsChecked) {
    using F = TypeParam;
    using V = typename F::V;
    for (size_t n : {size_t(2), size_t(3), size_t(16), size_t(17), size_t(64)}) {
        const std::vector<V> x = same_bytes<V>(make_input<typename F::C>(n, 1));
        const size_t out = F::out_length(n);
        for (size_t m : {size_t(0), out - 1, out + 1, n == out ? n + 2 : n}) {
            SCOPED_TRACE("length " + std::to_string(n) + ", dst " + std::to_string(m));
            std::vector<V> y = filled<V>(m);
            const std::vector<V> before = y;
            EXPECT_TRUE(throws_status([&] { F::cxx(x, y, tqfgen::scale::none); }, tqfStsBadSize, F::cxx_name));
            EXPECT_EQ(F::nothrow(x, y, tqfgen::scale::none), tqfStsBadSize);
            EXPECT_TRUE(same_bits(y, before));
        }
    }
}
