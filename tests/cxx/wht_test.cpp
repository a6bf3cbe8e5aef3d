// tqfgen::wht, every precision, order and flag: each form gives the bits of
// the C kernel of its order, with the caller's buffer or none; failures come
// back as the C status.
#include <algorithm>
#include <array>
#include <memory>

#include "cxx_support.h"

using namespace cxxtest;

namespace {

template <class T> struct WhtC;
template <> struct WhtC<float> {
    static const auto& table() { return tqftest::table::wht_32f; }
    static tqfStatus buffer_size(int order, int* size) { return tqfgWHTGetBufferSize_32f(order, size); }
};
template <> struct WhtC<double> {
    static const auto& table() { return tqftest::table::wht_64f; }
    static tqfStatus buffer_size(int order, int* size) { return tqfgWHTGetBufferSize_64f(order, size); }
};

template <class T> class CxxWht : public ::testing::Test {
protected:
    void SetUp() override { tqftest::reset_alloc_log(); }
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(CxxWht, Precisions);

// A 16-byte aligned work buffer of the size the library asks for.
struct WorkBuffer {
    explicit WorkBuffer(int bytes) : storage(size_t(bytes) + 16) {}
    unsigned char* get() {
        void* p = storage.data();
        size_t space = storage.size();
        return static_cast<unsigned char*>(std::align(16, 1, p, space));
    }
    std::vector<unsigned char> storage;
};

template <class T, int Order> CompileTimeCalls<T> compile_time_calls() {
    constexpr size_t n = size_t(1) << Order;
    return {Order, [](const T* x, T* y, tqfgen::scale s) { tqfgen::wht(x, y, tqfgen::fixed<Order>, s); },
            [](const T* x, T* y, tqfgen::scale s) { return tqfgen::nothrow::wht(x, y, tqfgen::fixed<Order>, s); },
            [](const T* x, T* y, tqfgen::scale s) {
                auto a = std::make_unique<std::array<T, n>>();
                auto b = std::make_unique<std::array<T, n>>();
                std::copy(x, x + n, a->begin());
                std::copy(y, y + n, b->begin());
                tqfgen::wht(*a, *b, s);
                std::copy(b->begin(), b->end(), y);
            }};
}
template <class T, int... I> std::vector<CompileTimeCalls<T>> compile_time_calls(std::integer_sequence<int, I...>) {
    return {compile_time_calls<T, I + 1>()...};
}

}  // namespace

// The run-time order forms against the C kernel of every order and flag,
// with and without a work buffer.
TYPED_TEST(CxxWht, RunTimeOrderFormsGiveTheKernelsBits) {
    using T = TypeParam;
    for (const auto& kernel : WhtC<T>::table()) {
        const size_t n = size_t(1) << kernel.size;
        int bytes = -1;
        ASSERT_EQ(WhtC<T>::buffer_size(kernel.size, &bytes), tqfStsNoError);
        WorkBuffer work(bytes);
        const std::vector<T> x = make_input<T>(n, kernel.size);
        for (const auto [s, flag] : kScales) {
            SCOPED_TRACE(std::string(kernel.name) + ", flag " + std::to_string(flag));
            std::vector<T> ref = filled<T>(n);
            ASSERT_EQ(kernel.fn(x.data(), ref.data(), flag, work.get()), tqfStsNoError);

            std::vector<T> y = filled<T>(n);
            tqfgen::wht(x.data(), y.data(), kernel.size, s);
            EXPECT_TRUE(same_bits(y, ref)) << "pointer form";
            y = filled<T>(n);
            tqfgen::wht(x.data(), y.data(), kernel.size, s, work.get());
            EXPECT_TRUE(same_bits(y, ref)) << "pointer form with a buffer";
            y = filled<T>(n);
            tqfgen::wht(x, y, s);
            EXPECT_TRUE(same_bits(y, ref)) << "vector form";
            EXPECT_TRUE(same_bits(tqfgen::wht(x, s, work.get()), ref)) << "returned vector";
            y = filled<T>(n);
            EXPECT_EQ(tqfgen::nothrow::wht(x.data(), y.data(), kernel.size, s, work.get()), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow pointer form";
            y = filled<T>(n);
            EXPECT_EQ(tqfgen::nothrow::wht(x, y, s), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow vector form";
        }
    }
}

// A caller's buffer reaches the kernel: no call with one allocates, while the
// high orders without one allocate for the call.
TYPED_TEST(CxxWht, CallersBufferIsPassedOn) {
    using T = TypeParam;
    for (int order = 8; order <= 13; ++order) {
        int bytes = -1;
        ASSERT_EQ(WhtC<T>::buffer_size(order, &bytes), tqfStsNoError);
        WorkBuffer work(bytes);
        const std::vector<T> x = make_input<T>(size_t(1) << order, order);
        std::vector<T> y(x.size());
        tqftest::reset_alloc_log();
        tqfgen::wht(x.data(), y.data(), order, tqfgen::scale::none, work.get());
        tqfgen::wht(x, y, tqfgen::scale::none, work.get());
        EXPECT_EQ(tqftest::alloc_log().mallocs, 0) << order;
        tqfgen::wht(x, y, tqfgen::scale::none);
        EXPECT_EQ(tqftest::alloc_log().mallocs, 1) << order;
    }
}

// tqfgen::fixed<Order> and std::array of 2^Order call the kernel of Order.
TYPED_TEST(CxxWht, CompileTimeOrderFormsGiveTheKernelsBits) {
    using T = TypeParam;
    for (const auto& calls : compile_time_calls<T>(std::make_integer_sequence<int, 13>{})) {
        const size_t n = size_t(1) << calls.size;
        const auto& kernel = WhtC<T>::table()[calls.size - 1];
        ASSERT_EQ(kernel.size, calls.size);
        const std::vector<T> x = make_input<T>(n, calls.size + 50);
        for (const auto [s, flag] : kScales) {
            SCOPED_TRACE(std::string(kernel.name) + ", flag " + std::to_string(flag));
            std::vector<T> ref = filled<T>(n);
            ASSERT_EQ(kernel.fn(x.data(), ref.data(), flag, nullptr), tqfStsNoError);
            std::vector<T> y = filled<T>(n);
            calls.fixed(x.data(), y.data(), s);
            EXPECT_TRUE(same_bits(y, ref)) << "fixed<Order>";
            y = filled<T>(n);
            EXPECT_EQ(calls.nothrow_fixed(x.data(), y.data(), s), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow fixed<Order>";
            y = filled<T>(n);
            calls.array(x.data(), y.data(), s);
            EXPECT_TRUE(same_bits(y, ref)) << "std::array";
        }
    }
}

// Order outside 1..13, or a container whose size is not 2^order of one:
// tqfStsBadSize, first, dst untouched.
TYPED_TEST(CxxWht, BadOrderIsBadSize) {
    using T = TypeParam;
    const std::vector<T> x(1 << 14);
    std::vector<T> y = filled<T>(1 << 14);
    const std::vector<T> before = y;
    for (int order : {0, 14, -1, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(order);
        EXPECT_TRUE(throws_status([&] { tqfgen::wht(x.data(), y.data(), order, tqfgen::scale::none); }, tqfStsBadSize,
                                  "tqfgen::wht"));
        EXPECT_EQ(tqfgen::nothrow::wht(static_cast<const T*>(nullptr), static_cast<T*>(nullptr), order, as_scale(3)),
                  tqfStsBadSize);
    }
    for (size_t n : {size_t(0), size_t(1), size_t(3), size_t(12), size_t(1) << 14}) {
        SCOPED_TRACE(n);
        const std::vector<T> xs(n);
        std::vector<T> ys = filled<T>(n);
        const std::vector<T> ys_before = ys;
        EXPECT_TRUE(throws_status([&] { tqfgen::wht(xs, ys, tqfgen::scale::none); }, tqfStsBadSize, "tqfgen::wht"));
        EXPECT_TRUE(throws_status([&] { (void)tqfgen::wht(xs, tqfgen::scale::none); }, tqfStsBadSize, "tqfgen::wht"));
        EXPECT_EQ(tqfgen::nothrow::wht(xs, ys, tqfgen::scale::none), tqfStsBadSize);
        EXPECT_TRUE(same_bits(ys, ys_before));
    }
    EXPECT_TRUE(same_bits(y, before));
}

TYPED_TEST(CxxWht, VectorDestinationSizeIsChecked) {
    using T = TypeParam;
    const std::vector<T> x = make_input<T>(256, 3);
    for (size_t m : {size_t(0), size_t(128), size_t(255), size_t(257), size_t(512)}) {
        SCOPED_TRACE(m);
        std::vector<T> y = filled<T>(m);
        const std::vector<T> before = y;
        EXPECT_TRUE(throws_status([&] { tqfgen::wht(x, y, tqfgen::scale::none); }, tqfStsBadSize, "tqfgen::wht"));
        EXPECT_EQ(tqfgen::nothrow::wht(x, y, tqfgen::scale::none), tqfStsBadSize);
        EXPECT_TRUE(same_bits(y, before));
    }
}

TYPED_TEST(CxxWht, BadFlagAndNullPointer) {
    using T = TypeParam;
    const std::vector<T> x(1024);
    std::vector<T> y = filled<T>(1024);
    const std::vector<T> before = y;
    for (int flag : kBadFlags) {
        const tqfgen::scale s = as_scale(flag);
        EXPECT_TRUE(throws_status([&] { tqfgen::wht(x.data(), y.data(), 10, s); }, tqfStsBadFlag, "tqfgen::wht"));
        EXPECT_TRUE(throws_status([&] { tqfgen::wht(x, y, s); }, tqfStsBadFlag, "tqfgen::wht"));
        EXPECT_TRUE(throws_status([&] { tqfgen::wht(x.data(), y.data(), tqfgen::fixed<10>, s); }, tqfStsBadFlag,
                                  "tqfgen::wht"));
        EXPECT_EQ(tqfgen::nothrow::wht(x, y, s), tqfStsBadFlag);
    }
    EXPECT_TRUE(throws_status([&] { tqfgen::wht(static_cast<const T*>(nullptr), y.data(), 10, as_scale(3)); },
                              tqfStsNullPointer, "tqfgen::wht"));
    EXPECT_TRUE(throws_status([&] { tqfgen::wht(x.data(), static_cast<T*>(nullptr), tqfgen::fixed<3>, as_scale(3)); },
                              tqfStsNullPointer, "tqfgen::wht"));
    EXPECT_EQ(tqfgen::nothrow::wht(x.data(), static_cast<T*>(nullptr), 10, tqfgen::scale::none), tqfStsNullPointer);
    EXPECT_TRUE(same_bits(y, before));
}
