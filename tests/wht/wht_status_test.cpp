// Walsh-Hadamard statuses and their order, the buffer-size tables, and the
// kernels' own allocation for a null buffer.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "guarded.h"
#include "wht_support.h"

using namespace whttest;
using tqftest::GuardedBuffer;

namespace {

template <class T> class WhtStatus : public ::testing::Test {
protected:
    void SetUp() override { reset_alloc_log(); }
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(WhtStatus, Precisions);

size_t length(int order) { return size_t{1} << order; }

constexpr int kBadFlags[] = {0, 3, 5, 16, -1, -8, 9, INT_MIN};
constexpr int kBadOrders[] = {0, 14, -1, 15, 64, INT_MIN, INT_MAX};

}  // namespace

// Null src or dst: -8, also with a bad flag, also when the other pointer is
// misaligned (the unaligned twin repeats the test). dst is left alone and
// nothing is allocated.
TYPED_TEST(WhtStatus, NullPointerFirst) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order) {
        const size_t n = length(order);
        for (size_t offset : {size_t{0}, sizeof(T)}) {
            GuardedBuffer in(n * sizeof(T), offset), out(n * sizeof(T), offset);
            out.fill_pattern(5);
            std::vector<unsigned char> before(out.bytes(), out.bytes() + out.size());
            for (int flag : {int(tqfNoDivByAny), 3}) {
                EXPECT_EQ(Wht<T>::fixed(order)(nullptr, out.as<T>(), flag, nullptr), tqfStsNullPointer) << order;
                EXPECT_EQ(Wht<T>::fixed(order)(in.as<T>(), nullptr, flag, nullptr), tqfStsNullPointer) << order;
                EXPECT_EQ(Wht<T>::fixed(order)(nullptr, nullptr, flag, nullptr), tqfStsNullPointer) << order;
                EXPECT_EQ(Wht<T>::generic(nullptr, out.as<T>(), order, flag, nullptr), tqfStsNullPointer) << order;
            }
            EXPECT_TRUE(out.payload_equals(before.data()));
            EXPECT_TRUE(out.guards_intact());
        }
    }
    EXPECT_EQ(alloc_log().mallocs, 0);
}

// A flag that is none of 8, 4, 1, 2: -16, on both paths, dst untouched and
// no allocation even with a null buffer.
TYPED_TEST(WhtStatus, BadFlagAfterPointers) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order) {
        const size_t n = length(order);
        for (size_t offset : {size_t{0}, sizeof(T)}) {
            GuardedBuffer in(n * sizeof(T), offset), out(n * sizeof(T), offset);
            in.fill_pattern(1);
            out.fill_pattern(9);
            std::vector<unsigned char> before(out.bytes(), out.bytes() + out.size());
            for (int flag : kBadFlags) {
                EXPECT_EQ(Wht<T>::fixed(order)(in.as<T>(), out.as<T>(), flag, nullptr), tqfStsBadFlag)
                    << "order " << order << " flag " << flag;
                EXPECT_EQ(Wht<T>::generic(in.as<T>(), out.as<T>(), order, flag, nullptr), tqfStsBadFlag);
            }
            EXPECT_TRUE(out.payload_equals(before.data())) << "dst written at order " << order;
            EXPECT_TRUE(out.guards_intact());
        }
    }
    EXPECT_EQ(alloc_log().mallocs, 0);
    EXPECT_EQ(alloc_log().frees, 0);
}

// The generic entry tests the order before anything else.
TYPED_TEST(WhtStatus, GenericEntryTestsOrderFirst) {
    using T = TypeParam;
    T data[16] = {};
    for (int order : kBadOrders) {
        EXPECT_EQ(Wht<T>::generic(nullptr, nullptr, order, 3, nullptr), tqfStsBadSize) << order;
        EXPECT_EQ(Wht<T>::generic(data, data, order, tqfNoDivByAny, nullptr), tqfStsBadSize) << order;
    }
    EXPECT_EQ(Wht<T>::generic(data, data, 4, 3, nullptr), tqfStsBadFlag);
    EXPECT_EQ(Wht<T>::generic(data, data, 4, tqfNoDivByAny, nullptr), tqfStsNoError);
    EXPECT_EQ(alloc_log().mallocs, 0);
}

TYPED_TEST(WhtStatus, BufferSizeTable) {
    using T = TypeParam;
    const int want32[kOrders] = {0, 0, 0, 0, 0, 0, 0, 1024, 2048, 4096, 8192, 18432, 34816};
    const int want64[kOrders] = {0, 0, 0, 0, 0, 0, 0, 2048, 4096, 8192, 18432, 34816, 73728};
    const int* want = sizeof(T) == 4 ? want32 : want64;
    for (int order = 1; order <= kOrders; ++order) {
        int size = -7;
        EXPECT_EQ(Wht<T>::size(order, &size), tqfStsNoError);
        EXPECT_EQ(size, want[order - 1]) << "order " << order;
    }
    for (int order : kBadOrders) {
        int size = -7;
        EXPECT_EQ(Wht<T>::size(order, &size), tqfStsBadSize) << order;
        EXPECT_EQ(size, -7) << "size written for bad order " << order;
        EXPECT_EQ(Wht<T>::size(order, nullptr), tqfStsBadSize) << order;
    }
}

// A null buffer at orders 8 to 13: one tqfMalloc of exactly the reported size,
// one tqfFree of that block before the return, and the same bits as with a
// caller's buffer. Orders 1 to 7 allocate nothing.
TYPED_TEST(WhtStatus, NullBufferAllocatesOnceAndReleases) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order) {
        const size_t n = length(order);
        int bytes = 0;
        ASSERT_EQ(Wht<T>::size(order, &bytes), tqfStsNoError);
        const std::vector<T> x = mixed_data<T>(n, 29u * order);
        const std::vector<T> want = radix2(x, expected_scale<T>(order, tqfDivFwdByN));
        for (size_t offset : {size_t{0}, sizeof(T)}) {
            GuardedBuffer in(n * sizeof(T), offset), out(n * sizeof(T), offset);
            std::memcpy(in.bytes(), x.data(), in.size());
            reset_alloc_log();
            ASSERT_EQ(Wht<T>::fixed(order)(in.as<T>(), out.as<T>(), tqfDivFwdByN, nullptr), tqfStsNoError);
            const AllocLog log = alloc_log();
            EXPECT_TRUE(out.payload_equals(want.data())) << "order " << order;
            if (order <= 7) {
                EXPECT_EQ(log.mallocs, 0) << order;
                EXPECT_EQ(log.frees, 0) << order;
            } else {
                EXPECT_EQ(log.mallocs, 1) << order;
                EXPECT_EQ(log.last_size, bytes) << order;
                EXPECT_EQ(log.frees, 1) << order;
                EXPECT_NE(log.last_block, nullptr);
                EXPECT_EQ(log.last_freed, log.last_block) << order;
            }
        }
    }
}

// The generic entry reaches the same allocation through the kernel.
TYPED_TEST(WhtStatus, GenericEntryWithNullBuffer) {
    using T = TypeParam;
    std::vector<T> x = mixed_data<T>(512, 31), y(512);
    EXPECT_EQ(Wht<T>::generic(x.data(), y.data(), 9, tqfNoDivByAny, nullptr), tqfStsNoError);
    EXPECT_EQ(alloc_log().mallocs, 1);
    EXPECT_EQ(alloc_log().frees, 1);
    EXPECT_EQ(y, radix2(x, T(1)));
    reset_alloc_log();
    EXPECT_EQ(Wht<T>::generic(x.data(), y.data(), 5, tqfNoDivByAny, nullptr), tqfStsNoError);
    EXPECT_EQ(alloc_log().mallocs, 0);
}

// A caller's buffer is used as given: no allocation.
TYPED_TEST(WhtStatus, CallersBufferMeansNoAllocation) {
    using T = TypeParam;
    std::vector<T> x = mixed_data<T>(8192, 37), y(8192);
    int bytes = 0;
    ASSERT_EQ(Wht<T>::size(13, &bytes), tqfStsNoError);
    FencedBlock buf(static_cast<size_t>(bytes));
    EXPECT_EQ(Wht<T>::fixed(13)(x.data(), y.data(), tqfNoDivByAny, buf.data()), tqfStsNoError);
    EXPECT_EQ(alloc_log().mallocs, 0);
    EXPECT_EQ(alloc_log().frees, 0);
}
