// Walsh-Hadamard results: bit-identical with the plain radix-2 network at
// every order, precision and flag, on every memory path and buffer kind.
#include <gtest/gtest.h>

#include <vector>

#include "guarded.h"
#include "wht_support.h"

using namespace whttest;
using tqftest::GuardedBuffer;

namespace {

template <class T> class WhtValues : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(WhtValues, Precisions);

size_t length(int order) { return size_t{1} << order; }

// A clean, aligned buffer of the reported size (or none below order 8).
template <class T> struct WorkBuffer {
    explicit WorkBuffer(int order) {
        int bytes = -1;
        EXPECT_EQ(Wht<T>::size(order, &bytes), tqfStsNoError);
        mem.assign(static_cast<size_t>(bytes) / 16 + 1, {});
    }
    unsigned char* get() { return reinterpret_cast<unsigned char*>(mem.data()); }
    struct alignas(16) Chunk { unsigned char b[16]; };
    std::vector<Chunk> mem;
};

// Runs the fixed kernel out of place on aligned memory.
template <class T> std::vector<T> run(int order, int flag, const std::vector<T>& x) {
    std::vector<T> y(x.size());
    WorkBuffer<T> buf(order);
    GuardedBuffer in(x.size() * sizeof(T), 0), out(x.size() * sizeof(T), 0);
    std::memcpy(in.bytes(), x.data(), in.size());
    EXPECT_EQ(Wht<T>::fixed(order)(in.as<T>(), out.as<T>(), flag, buf.get()), tqfStsNoError);
    EXPECT_TRUE(out.guards_intact());
    std::memcpy(y.data(), out.bytes(), out.size());
    return y;
}

}  // namespace

// The oracle itself against the definition, on integers (all sums exact).
TYPED_TEST(WhtValues, OracleFollowsTheDefinition) {
    using T = TypeParam;
    for (int order = 1; order <= 6; ++order) {
        const size_t n = length(order);
        std::vector<T> x(n);
        for (size_t j = 0; j < n; ++j) x[j] = T(int(j * 7 % 11) - 5);
        const std::vector<T> y = radix2(x, T(1));
        for (size_t i = 0; i < n; ++i) {
            long sum = 0;
            for (size_t j = 0; j < n; ++j) sum += (__builtin_popcountl(i & j) & 1 ? -1 : 1) * long(x[j]);
            ASSERT_EQ(y[i], T(sum)) << "order " << order << " i " << i;
        }
    }
}

TYPED_TEST(WhtValues, OrderTwoInNaturalHadamardOrder) {
    using T = TypeParam;
    const std::vector<T> y = run<T>(2, tqfNoDivByAny, {T(1), T(10), T(100), T(1000)});
    EXPECT_EQ(y, (std::vector<T>{T(1111), T(1 - 10 + 100 - 1000), T(1 + 10 - 100 - 1000), T(1 - 10 - 100 + 1000)}));
}

TYPED_TEST(WhtValues, BitIdenticalWithRadix2NetworkAtEveryOrderAndFlag) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order)
        for (int flag : kFlags) {
            SCOPED_TRACE(::testing::Message() << "order " << order << " flag " << flag);
            const std::vector<T> x = mixed_data<T>(length(order), 100u * order + flag);
            const std::vector<T> want = radix2(x, expected_scale<T>(order, flag));
            const std::vector<T> got = run<T>(order, flag, x);
            ASSERT_TRUE(same_bits(got.data(), want.data(), got.size()));
        }
}

// The comparison above can tell stage orders apart: the reversed network
// rounds differently on this data from order 3 on.
TYPED_TEST(WhtValues, ReversedStageOrderWouldBeCaught) {
    using T = TypeParam;
    for (int order = 3; order <= kOrders; ++order) {
        const std::vector<T> x = mixed_data<T>(length(order), 7u * order);
        const std::vector<T> got = run<T>(order, tqfNoDivByAny, x);
        const std::vector<T> other = radix2(x, T(1), true);
        EXPECT_FALSE(same_bits(got.data(), other.data(), got.size())) << "order " << order;
    }
}

TYPED_TEST(WhtValues, ImpulseGivesTheStoredScale) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order)
        for (int flag : kFlags) {
            std::vector<T> x(length(order), T(0));
            x[0] = T(1);
            const std::vector<T> y = run<T>(order, flag, x);
            const T s = expected_scale<T>(order, flag);
            for (T v : y) ASSERT_EQ(tqftest::bits(v), tqftest::bits(s)) << "order " << order << " flag " << flag;
        }
    EXPECT_EQ(tqftest::bits(expected_scale<T>(1, tqfDivBySqrtN)),
              tqftest::bits(sizeof(T) == 4 ? T(0.70710677f) : T(0.70710678118654752440)));
}

TYPED_TEST(WhtValues, BothDivideFlagsAgreeAndOneIsNoDivision) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order) {
        const std::vector<T> x = mixed_data<T>(length(order), 3u + order);
        EXPECT_EQ(run<T>(order, tqfDivFwdByN, x), run<T>(order, tqfDivInvByN, x)) << order;
        EXPECT_EQ(run<T>(order, tqfNoDivByAny, x), radix2(x, T(1))) << order;
    }
}

// Misaligned src, dst or both take the unaligned twin: same bits, nothing
// written outside dst.
TYPED_TEST(WhtValues, UnalignedPathsGiveTheAlignedBits) {
    using T = TypeParam;
    const size_t offsets[] = {0, sizeof(T), 8, 12};
    for (int order = 1; order <= kOrders; ++order) {
        const size_t n = length(order);
        const std::vector<T> x = mixed_data<T>(n, 11u * order);
        const std::vector<T> want = run<T>(order, tqfDivBySqrtN, x);
        WorkBuffer<T> buf(order);
        for (size_t so : offsets)
            for (size_t dof : offsets) {
                if (so % sizeof(T) || dof % sizeof(T)) continue;
                GuardedBuffer in(n * sizeof(T), so), out(n * sizeof(T), dof);
                std::memcpy(in.bytes(), x.data(), in.size());
                ASSERT_EQ(Wht<T>::fixed(order)(in.as<T>(), out.as<T>(), tqfDivBySqrtN, buf.get()), tqfStsNoError);
                EXPECT_TRUE(out.guards_intact());
                EXPECT_TRUE(out.payload_equals(want.data())) << "order " << order << " src+" << so << " dst+" << dof;
                EXPECT_TRUE(in.payload_equals(x.data())) << "src written, order " << order;
            }
    }
}

TYPED_TEST(WhtValues, InPlaceMatchesOutOfPlace) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order)
        for (size_t offset : {size_t{0}, sizeof(T)}) {
            const size_t n = length(order);
            const std::vector<T> x = mixed_data<T>(n, 13u * order);
            const std::vector<T> want = run<T>(order, tqfDivFwdByN, x);
            WorkBuffer<T> buf(order);
            GuardedBuffer io(n * sizeof(T), offset);
            std::memcpy(io.bytes(), x.data(), io.size());
            ASSERT_EQ(Wht<T>::fixed(order)(io.as<T>(), io.as<T>(), tqfDivFwdByN, buf.get()), tqfStsNoError);
            EXPECT_TRUE(io.guards_intact());
            EXPECT_TRUE(io.payload_equals(want.data())) << "order " << order << " offset " << offset;
        }
}

TYPED_TEST(WhtValues, GenericEntryIsTheFixedKernel) {
    using T = TypeParam;
    for (int order = 1; order <= kOrders; ++order) {
        const size_t n = length(order);
        const std::vector<T> x = mixed_data<T>(n, 17u * order);
        const std::vector<T> want = radix2(x, expected_scale<T>(order, tqfDivBySqrtN));
        std::vector<T> y(n);
        WorkBuffer<T> buf(order);
        ASSERT_EQ(Wht<T>::generic(x.data(), y.data(), order, tqfDivBySqrtN, buf.get()), tqfStsNoError);
        EXPECT_TRUE(same_bits(y.data(), want.data(), n)) << "order " << order;
    }
}

// Orders 1 to 7 never touch the buffer: a pointer to a page that faults on
// any access does, and so does null.
TYPED_TEST(WhtValues, LowOrdersIgnoreTheBuffer) {
    using T = TypeParam;
    for (int order = 1; order <= 7; ++order) {
        const std::vector<T> x = mixed_data<T>(length(order), 19u * order);
        const std::vector<T> want = run<T>(order, tqfNoDivByAny, x);
        for (unsigned char* b : {forbidden_page(), static_cast<unsigned char*>(nullptr)}) {
            std::vector<T> y(x.size());
            ASSERT_EQ(Wht<T>::fixed(order)(x.data(), y.data(), tqfNoDivByAny, b), tqfStsNoError);
            EXPECT_EQ(y, want) << "order " << order;
        }
    }
}

// A buffer of exactly the reported size that ends where an inaccessible page
// begins, filled with garbage: enough, not read before written, and its last
// bytes are used (the size is not over-reported).
TYPED_TEST(WhtValues, ExactGarbageBufferBeforeAFencePage) {
    using T = TypeParam;
    for (int order = 8; order <= kOrders; ++order)
        for (unsigned char fill : {0x00, 0xFF, 0x7F}) {
            const size_t n = length(order);
            int bytes = 0;
            ASSERT_EQ(Wht<T>::size(order, &bytes), tqfStsNoError);
            FencedBlock fenced(static_cast<size_t>(bytes));
            std::memset(fenced.data(), fill, static_cast<size_t>(bytes));
            if (fill == 0x7F) {  // random bytes, NaNs and infinities among them
                std::mt19937 gen(order);
                for (int i = 0; i < bytes; ++i) fenced.data()[i] = static_cast<unsigned char>(gen());
            }
            const std::vector<T> x = mixed_data<T>(n, 23u * order);
            const std::vector<T> want = radix2(x, expected_scale<T>(order, tqfDivBySqrtN));
            for (size_t offset : {size_t{0}, sizeof(T)}) {
                GuardedBuffer in(n * sizeof(T), offset), out(n * sizeof(T), offset);
                std::memcpy(in.bytes(), x.data(), in.size());
                ASSERT_EQ(Wht<T>::fixed(order)(in.as<T>(), out.as<T>(), tqfDivBySqrtN, fenced.data()), tqfStsNoError);
                EXPECT_TRUE(out.payload_equals(want.data())) << "order " << order << " fill " << int(fill);
            }
            if (fill == 0xFF) {  // all-ones is a NaN pattern no finite result has
                const unsigned char* last = fenced.data() + bytes - 16;
                EXPECT_NE(std::memcmp(last, std::vector<unsigned char>(16, 0xFF).data(), 16), 0)
                    << "last 16 bytes unused at order " << order;
            }
        }
}
