// tqfgen::dct4 and tqfgen::walsh_hadamard: the lengths and orders they take
// and refuse, the bits of the C entries, ownership through moves, and the
// nothrow scheme's make and transform.
#include <utility>

#include "cxx_support.h"

using namespace cxxtest;
using tqftest::alloc_log;
using tqftest::reset_alloc_log;

namespace {

// The C DCT-IV life cycle, for reference results.
template <class T> struct DctC;
template <> struct DctC<float> {
    using Spec = tqfgDCT4Spec_32f;
    static constexpr int max_log2 = 26;
    static tqfStatus init_alloc(Spec** p, int n) { return tqfgDCT4InitAlloc_32f(p, n); }
    static tqfStatus free(Spec* p) { return tqfgDCT4Free_32f(p); }
    static tqfStatus run(const float* s, float* d, const Spec* p) { return tqfgDCT4_32f(s, d, p); }
    static tqfStatus wht_buffer_size(int order, int* size) { return tqfgWHTGetBufferSize_32f(order, size); }
    static const auto& wht_table() { return tqftest::table::wht_32f; }
};
template <> struct DctC<double> {
    using Spec = tqfgDCT4Spec_64f;
    static constexpr int max_log2 = 25;
    static tqfStatus init_alloc(Spec** p, int n) { return tqfgDCT4InitAlloc_64f(p, n); }
    static tqfStatus free(Spec* p) { return tqfgDCT4Free_64f(p); }
    static tqfStatus run(const double* s, double* d, const Spec* p) { return tqfgDCT4_64f(s, d, p); }
    static tqfStatus wht_buffer_size(int order, int* size) { return tqfgWHTGetBufferSize_64f(order, size); }
    static const auto& wht_table() { return tqftest::table::wht_64f; }
};

// The DCT-IV of x by a plan of the C entries.
template <class T> std::vector<T> c_dct4(const std::vector<T>& x) {
    typename DctC<T>::Spec* plan = nullptr;
    EXPECT_EQ(DctC<T>::init_alloc(&plan, int(x.size())), tqfStsNoError);
    std::vector<T> y = filled<T>(x.size());
    EXPECT_EQ(DctC<T>::run(x.data(), y.data(), plan), tqfStsNoError);
    DctC<T>::free(plan);
    return y;
}

template <class T> const char* dct4_name();
template <> const char* dct4_name<float>() { return "tqfgen::dct4<float>"; }
template <> const char* dct4_name<double>() { return "tqfgen::dct4<double>"; }

template <class T> class CxxObjects : public ::testing::Test {
protected:
    void SetUp() override { reset_alloc_log(); }
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(CxxObjects, Precisions);

}  // namespace

// Powers of two 2..2^16: every form of a plan gives the bits of the C plan.
TYPED_TEST(CxxObjects, Dct4GivesTheCBits) {
    using T = TypeParam;
    for (int k = 1; k <= 16; ++k) {
        const int n = 1 << k;
        SCOPED_TRACE(n);
        const std::vector<T> x = make_input<T>(size_t(n), k);
        const std::vector<T> ref = c_dct4(x);

        tqfgen::dct4<T> plan(n);
        EXPECT_EQ(plan.length(), n);
        std::vector<T> y = filled<T>(size_t(n));
        plan(x.data(), y.data());
        EXPECT_TRUE(same_bits(y, ref)) << "pointer form";
        y = filled<T>(size_t(n));
        plan.transform(x, y);
        EXPECT_TRUE(same_bits(y, ref)) << "vector form";
        EXPECT_TRUE(same_bits(plan(x), ref)) << "returned vector";
        y = filled<T>(size_t(n));
        EXPECT_EQ(tqfgen::nothrow::transform(plan, x.data(), y.data()), tqfStsNoError);
        EXPECT_TRUE(same_bits(y, ref)) << "nothrow pointer form";
        y = filled<T>(size_t(n));
        EXPECT_EQ(tqfgen::nothrow::transform(plan, x, y), tqfStsNoError);
        EXPECT_TRUE(same_bits(y, ref)) << "nothrow vector form";

        tqfgen::dct4<T> made;
        ASSERT_EQ(tqfgen::nothrow::make(made, n), tqfStsNoError);
        y = filled<T>(size_t(n));
        made(x.data(), y.data());
        EXPECT_TRUE(same_bits(y, ref)) << "plan from nothrow::make";
    }
}

// Everything but the powers of two of the accepted range is refused with
// tqfStsBadSize before the planner runs (nothing is allocated): among them the
// lengths 2^k + 1, which the planner builds into a plan that writes past dst,
// and those whose block size wraps in 32-bit arithmetic.
TYPED_TEST(CxxObjects, Dct4RefusesAllButPowersOfTwo) {
    using T = TypeParam;
    const int max_log2 = DctC<T>::max_log2;
    std::vector<int> refused = {0, 1, 3, 6, 12, 33, 65, 1025, 4097, (1 << 16) + 1, (1 << 20) + 1, -1, -2, -64,
                                INT_MIN, INT_MAX, 1 << 29, (1 << 29) + 1, 1 << 30, (1 << 30) + 1, 3 * 2048,
                                1 << (max_log2 + 1)};
    for (int k = 2; k <= 30; ++k) refused.push_back((1 << k) + 1);
    for (int n : refused) {
        SCOPED_TRACE(n);
        reset_alloc_log();
        EXPECT_TRUE(throws_status([&] { tqfgen::dct4<T> plan(n); }, tqfStsBadSize, dct4_name<T>()));
        tqfgen::dct4<T> plan(64);
        EXPECT_EQ(tqfgen::nothrow::make(plan, n), tqfStsBadSize);
        EXPECT_EQ(plan.length(), 64) << "a refused make leaves the plan as it was";
        EXPECT_EQ(alloc_log().mallocs, 1) << "only the plan of 64 was allocated";
    }
}

// A plan owns its block: moves hand it on, the moved-from plan is empty, a
// move onto a live plan frees that plan's block, and every block is freed
// exactly once (the sanitizer build would report a double free).
TYPED_TEST(CxxObjects, Dct4MovesHandOverTheBlock) {
    using T = TypeParam;
    const std::vector<T> x = make_input<T>(1024, 7);
    const std::vector<T> ref = c_dct4(x);
    reset_alloc_log();
    {
        tqfgen::dct4<T> a(1024);
        const auto handle = a.native_handle();
        tqfgen::dct4<T> b(std::move(a));
        EXPECT_TRUE(a.empty());
        EXPECT_EQ(a.length(), 0);
        EXPECT_EQ(b.native_handle(), handle);
        EXPECT_EQ(alloc_log().frees, 0);

        tqfgen::dct4<T> c(64);
        void* const block_of_c = alloc_log().last_block;
        c = std::move(b);
        EXPECT_EQ(alloc_log().frees, 1);
        EXPECT_EQ(alloc_log().last_freed, block_of_c);
        EXPECT_EQ(c.length(), 1024);
        EXPECT_TRUE(b.empty());

        auto& same = c;
        c = std::move(same);
        EXPECT_EQ(c.length(), 1024);
        EXPECT_EQ(alloc_log().frees, 1);
        EXPECT_TRUE(same_bits(c(x), ref));

        // A moved-from plan is empty: the library reports the null plan.
        std::vector<T> y(1024);
        EXPECT_TRUE(throws_status([&] { b(x.data(), y.data()); }, tqfStsNullPointer, dct4_name<T>()));
        EXPECT_EQ(tqfgen::nothrow::transform(a, x.data(), y.data()), tqfStsNullPointer);

        // Plans moved around by a growing vector stay whole.
        std::vector<tqfgen::dct4<T>> plans;
        for (int k = 1; k <= 10; ++k) plans.emplace_back(1 << k);
        plans.emplace_back(std::move(c));
        EXPECT_TRUE(same_bits(plans.back()(x), ref));

        tqfgen::dct4<T> d(256);
        d.reset();
        EXPECT_TRUE(d.empty());
    }
    EXPECT_EQ(alloc_log().mallocs, 13);
    EXPECT_EQ(alloc_log().frees, 13);
}

TYPED_TEST(CxxObjects, Dct4ChecksContainerSizes) {
    using T = TypeParam;
    tqfgen::dct4<T> plan(64);
    const std::vector<T> x64(64), x63(63);
    for (auto sizes : {std::pair<size_t, size_t>{63, 64}, {64, 63}, {64, 65}, {128, 128}, {0, 0}}) {
        const std::vector<T> x(sizes.first);
        std::vector<T> y = filled<T>(sizes.second);
        const std::vector<T> before = y;
        EXPECT_TRUE(throws_status([&] { plan.transform(x, y); }, tqfStsBadSize, dct4_name<T>()));
        EXPECT_EQ(tqfgen::nothrow::transform(plan, x, y), tqfStsBadSize);
        EXPECT_TRUE(same_bits(y, before));
    }
    std::vector<T> y(64);
    EXPECT_TRUE(throws_status([&] { plan(static_cast<const T*>(nullptr), y.data()); }, tqfStsNullPointer,
                              dct4_name<T>()));
}

// Every order with its own buffer: the C kernel's bits, no allocation by any
// call, and a buffer of the library's size on a 16-byte boundary.
TYPED_TEST(CxxObjects, WalshHadamardGivesTheCBitsWithoutAllocating) {
    using T = TypeParam;
    for (const auto& kernel : DctC<T>::wht_table()) {
        const int order = kernel.size;
        const size_t n = size_t(1) << order;
        SCOPED_TRACE(kernel.name);
        int bytes = -1;
        ASSERT_EQ(DctC<T>::wht_buffer_size(order, &bytes), tqfStsNoError);
        tqfgen::walsh_hadamard<T> w(order);
        EXPECT_EQ(w.order(), order);
        EXPECT_EQ(w.size(), n);
        EXPECT_EQ(w.buffer_bytes(), size_t(bytes));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(w.buffer()) % 16, 0u);
        EXPECT_EQ(w.buffer() != nullptr, bytes > 0);

        const std::vector<T> x = make_input<T>(n, order);
        for (const auto [s, flag] : kScales) {
            std::vector<T> ref = filled<T>(n);
            ASSERT_EQ(kernel.fn(x.data(), ref.data(), flag, nullptr), tqfStsNoError);
            reset_alloc_log();
            std::vector<T> y = filled<T>(n);
            w(x.data(), y.data(), s);
            EXPECT_TRUE(same_bits(y, ref)) << "pointer form, flag " << flag;
            y = filled<T>(n);
            w.transform(x, y, s);
            EXPECT_TRUE(same_bits(y, ref)) << "vector form, flag " << flag;
            y = filled<T>(n);
            EXPECT_EQ(tqfgen::nothrow::transform(w, x, y, s), tqfStsNoError);
            EXPECT_TRUE(same_bits(y, ref)) << "nothrow vector form, flag " << flag;
            EXPECT_EQ(alloc_log().mallocs, 0) << "the object's buffer serves every call";
        }
    }
}

TYPED_TEST(CxxObjects, WalshHadamardRefusesBadOrdersAndSizes) {
    using T = TypeParam;
    for (int order : {0, 14, -1, INT_MIN, INT_MAX}) {
        EXPECT_TRUE(throws_status([&] { tqfgen::walsh_hadamard<T> w(order); }, tqfStsBadSize,
                                  "tqfgen::walsh_hadamard"));
        tqfgen::walsh_hadamard<T> w(9);
        EXPECT_EQ(tqfgen::nothrow::make(w, order), tqfStsBadSize);
        EXPECT_EQ(w.order(), 9) << "a refused make leaves the object as it was";
    }
    tqfgen::walsh_hadamard<T> w(9);
    for (auto sizes : {std::pair<size_t, size_t>{256, 512}, {512, 256}, {512, 513}, {1024, 1024}}) {
        const std::vector<T> x(sizes.first);
        std::vector<T> y = filled<T>(sizes.second);
        const std::vector<T> before = y;
        EXPECT_TRUE(throws_status([&] { w.transform(x, y, tqfgen::scale::none); }, tqfStsBadSize,
                                  "tqfgen::walsh_hadamard"));
        EXPECT_EQ(tqfgen::nothrow::transform(w, x, y, tqfgen::scale::none), tqfStsBadSize);
        EXPECT_TRUE(same_bits(y, before));
    }
    const std::vector<T> x(512);
    std::vector<T> y(512);
    EXPECT_TRUE(throws_status([&] { w(x.data(), y.data(), as_scale(3)); }, tqfStsBadFlag, "tqfgen::walsh_hadamard"));
    EXPECT_EQ(tqfgen::nothrow::transform(w, x.data(), static_cast<T*>(nullptr), tqfgen::scale::none),
              tqfStsNullPointer);
}

// Moves hand the buffer on; the moved-from object has order 0, which the
// library refuses.
TYPED_TEST(CxxObjects, WalshHadamardMovesHandOverTheBuffer) {
    using T = TypeParam;
    const std::vector<T> x = make_input<T>(4096, 12);
    std::vector<T> ref(4096);
    ASSERT_EQ(DctC<T>::wht_table()[11].fn(x.data(), ref.data(), tqfNoDivByAny, nullptr), tqfStsNoError);

    tqfgen::walsh_hadamard<T> a(12);
    const unsigned char* const buffer = a.buffer();
    tqfgen::walsh_hadamard<T> b(std::move(a));
    EXPECT_EQ(b.buffer(), buffer);
    EXPECT_EQ(a.order(), 0);
    EXPECT_EQ(a.buffer(), nullptr);
    tqfgen::walsh_hadamard<T> c(3);
    c = std::move(b);
    EXPECT_EQ(c.order(), 12);
    EXPECT_EQ(b.order(), 0);

    reset_alloc_log();
    std::vector<T> y(4096);
    c(x.data(), y.data(), tqfgen::scale::none);
    EXPECT_TRUE(same_bits(y, ref));
    EXPECT_EQ(alloc_log().mallocs, 0);
    EXPECT_TRUE(throws_status([&] { b(x.data(), y.data(), tqfgen::scale::none); }, tqfStsBadSize,
                              "tqfgen::walsh_hadamard"));
    EXPECT_EQ(tqfgen::nothrow::transform(a, x.data(), y.data(), tqfgen::scale::none), tqfStsBadSize);
}
