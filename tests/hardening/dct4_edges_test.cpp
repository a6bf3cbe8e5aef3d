// The DCT-IV planner's documented edge behaviours that the planner's own
// tests leave open, checked as the library states them. Covered elsewhere
// and not repeated here: the unwritten pairs and the write at index n of the
// plans of 33 (both precisions) and 9 (double), and that longer 2^k + 1
// plans run (tests/dct4/exec_status_test.cpp, LengthPowerOfTwoPlusOne*); the
// exact wrapped sizes of the 32-bit target and the accepted lengths over the
// whole 32-bit range (tests/dct4/size_rule_test.cpp); how far a failed build
// gets and that the handle keeps its value (tests/dct4/lifecycle_test.cpp);
// an exhausted allocator in InitAlloc (lifecycle_test.cpp,
// InitAllocFailures); the transform on a damaged root kind
// (exec_status_test.cpp, DamagedRootKindIsBadPlan).
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "counting_alloc.h"
#include "guard_page.h"
#include "plan_classes.h"
#include "surface.h"

namespace {

using hardening::Dct4;
using tqftest::Edge;
using tqftest::FaultReport;
using tqftest::GuardedArray;
using tqftest::run_catching_faults;


template <class T> std::vector<T> input(int n, uint32_t seed) {
    std::vector<T> x(n);
    const std::vector<unsigned char> raw = hardening::random_scalars(n, sizeof(T), seed);
    std::memcpy(x.data(), raw.data(), raw.size());
    return x;
}

// A plan of length 2^k + 1 writes one element at index n, beyond the n
// elements of its destination, and nothing further: with dst ending exactly
// at a guard page the first write beyond it is that element, and with one
// element more there is none. Every such length to 2^16 + 1 that the
// planner accepts (from 2^5 + 1 in single, 2^3 + 1 in double precision).
// src holds n + 1 elements, as for any plan that computes as if its length
// were the power of two below.
template <class T>
void check_write_at_n(int first_k) {
    for (int k = first_k; k <= 16; ++k) {
        const int n = (1 << k) + 1;
        const std::string label = std::string(Dct4<T>::name) + " n=" + std::to_string(n);
        typename Dct4<T>::Spec* plan = nullptr;
        ASSERT_EQ(Dct4<T>::initAlloc(&plan, n), tqfStsNoError) << label;
        const std::vector<T> x = input<T>(n + 1, n);
        for (int extra : {0, 1}) {
            const size_t bytes = (n + extra) * sizeof(T);
            GuardedArray dst(bytes);
            dst.place(Edge::End, (16 - bytes % 16) % 16);
            ASSERT_EQ(dst.gap(), 0u);
            tqfStatus st = 1;
            const FaultReport f = run_catching_faults([&] { st = Dct4<T>::run(x.data(), dst.as<T>(), plan); });
            if (extra == 0) {
                ASSERT_TRUE(f.faulted) << label << ": no write beyond n elements";
                EXPECT_EQ(f.address, dst.as<T>() + n) << label << ": the first write beyond dst is "
                                                      << dst.describe(f.address);
            } else {
                EXPECT_FALSE(f.faulted) << label << ": wrote " << dst.describe(f.address);
                EXPECT_EQ(st, tqfStsNoError) << label;
                EXPECT_TRUE(dst.outside_intact()) << label;
            }
        }
        Dct4<T>::release(plan);
    }
}

TEST(Dct4Edges, PowerOfTwoPlusOneWritesElementN) {
    check_write_at_n<float>(5);
    check_write_at_n<double>(3);
}

// The lengths that the 32-bit size sum wraps into acceptance get status 0
// and a size far too small: less than the n elements of the plan's work
// buffer alone, on either target.
template <class T>
void check_wrapped(std::initializer_list<int> lengths) {
    for (int n : lengths) {
        int size = -1;
        EXPECT_EQ(Dct4<T>::getSize(n, &size), tqfStsNoError) << Dct4<T>::name << " " << n;
        EXPECT_GT(size, 0) << Dct4<T>::name << " " << n;
        EXPECT_LT(static_cast<long long>(size), static_cast<long long>(n) * sizeof(T))
            << Dct4<T>::name << " " << n << ": a size that could hold the plan";
    }
}

TEST(Dct4Edges, WrappedSizesAreTooSmall) {
    check_wrapped<float>({1 << 30, (1 << 30) + 1});
    check_wrapped<double>({1 << 29, (1 << 29) + 1, 1 << 30, (1 << 30) + 1});
}

// A length that the factor chooser rejects at once (half of it below 4, or
// odd) costs the root and three list heads: exactly the block of the
// smallest plan, GetSize(2) bytes, which here ends at a guard page. The
// build fails with -6 inside it, and the block then serves a plan of 2.
template <class T>
void check_rejected_at_once() {
    int size = 0;
    ASSERT_EQ(Dct4<T>::getSize(2, &size), tqfStsNoError);
    GuardedArray block(static_cast<size_t>(size));
    block.place(Edge::End, 0);
    ASSERT_EQ(block.gap(), 0u);
    const std::vector<T> x = input<T>(2, 1);
    std::vector<T> want(2), got(2);
    {
        typename Dct4<T>::Spec* fresh = nullptr;
        ASSERT_EQ(Dct4<T>::initAlloc(&fresh, 2), tqfStsNoError);
        ASSERT_EQ(Dct4<T>::run(x.data(), want.data(), fresh), tqfStsNoError);
        Dct4<T>::release(fresh);
    }
    for (int n : {0, 1, 3, 5, 6, 7, 10, 14, 22, 4094, -1, -2, -64, INT_MIN, INT_MAX}) {
        const std::string label = std::string(Dct4<T>::name) + " n=" + std::to_string(n);
        block.reset(nullptr);
        typename Dct4<T>::Spec* h = nullptr;
        tqfStatus st = 1;
        FaultReport f = run_catching_faults([&] { st = Dct4<T>::init(&h, n, block.data()); });
        ASSERT_FALSE(f.faulted) << label << ": the refused build went " << block.describe(f.address);
        EXPECT_EQ(st, tqfStsBadSize) << label;
        EXPECT_EQ(h, nullptr) << label;
        EXPECT_TRUE(block.outside_intact()) << label;
        f = run_catching_faults([&] { st = Dct4<T>::init(&h, 2, block.data()); });
        ASSERT_FALSE(f.faulted) << label;
        ASSERT_EQ(st, tqfStsNoError) << label;
        ASSERT_EQ(Dct4<T>::run(x.data(), got.data(), h), tqfStsNoError);
        EXPECT_EQ(std::memcmp(got.data(), want.data(), sizeof(T) * 2), 0) << label;
    }
}

TEST(Dct4Edges, RejectedAtOnceFitsTheSmallestBlock) {
    check_rejected_at_once<float>();
    check_rejected_at_once<double>();
}

// After a build that fails part way (the output stage built, the fold not,
// or the whole output stage and several splits), the block's contents are
// the caller's garbage; Init of a good length in the same block needs
// nothing in between and gives a plan with the bits of a fresh one.
template <class T>
void check_block_after_partial_build(std::initializer_list<int> bad, int good) {
    const std::vector<T> x = input<T>(good, 3);
    std::vector<T> want(good), got(good);
    {
        typename Dct4<T>::Spec* fresh = nullptr;
        ASSERT_EQ(Dct4<T>::initAlloc(&fresh, good), tqfStsNoError);
        ASSERT_EQ(Dct4<T>::run(x.data(), want.data(), fresh), tqfStsNoError);
        Dct4<T>::release(fresh);
    }
    GuardedArray block(1 << 20);
    for (int n : bad) {
        const std::string label = std::string(Dct4<T>::name) + " " + std::to_string(n) + " then " +
                                  std::to_string(good);
        block.reset(nullptr);
        typename Dct4<T>::Spec* h = nullptr;
        ASSERT_EQ(Dct4<T>::init(&h, n, block.data()), tqfStsBadSize) << label;
        ASSERT_EQ(Dct4<T>::init(&h, good, block.data()), tqfStsNoError) << label;
        ASSERT_EQ(Dct4<T>::run(x.data(), got.data(), h), tqfStsNoError) << label;
        EXPECT_EQ(std::memcmp(got.data(), want.data(), sizeof(T) * good), 0) << label;
        EXPECT_TRUE(block.outside_intact()) << label;
    }
}

TEST(Dct4Edges, BlockServesAgainAfterAPartialBuild) {
    check_block_after_partial_build<float>({9, 17, 12, 40, 48, 96, 3 * 2048}, 4096);
    check_block_after_partial_build<double>({12, 40, 48, 96, 3 * 2048}, 4096);
}

// Free of a plan whose root kind is damaged skips the release of the root's
// buffer and goes on with the lists: it still returns 0 and hands the block
// to tqfFree once, and the cursor it leaves stands above the root by the
// buffer's charge (n elements, rounded up to 32 bytes) for a tree plan, and
// at the root for a short plan, which has no buffer.
template <class T>
void check_free_of_damaged(int n) {
    const std::string label = std::string(Dct4<T>::name) + " n=" + std::to_string(n);
    tqftest::reset_alloc_log();
    typename Dct4<T>::Spec* plan = nullptr;
    ASSERT_EQ(Dct4<T>::initAlloc(&plan, n), tqfStsNoError) << label;
    void* block = tqftest::alloc_log().last_block;
    reinterpret_cast<PlanRoot*>(plan)->kind = 0;
    EXPECT_EQ(Dct4<T>::release(plan), tqfStsNoError) << label;
    EXPECT_EQ(tqftest::alloc_log().frees, 1) << label;
    EXPECT_EQ(tqftest::alloc_log().last_freed, block) << label;
    const uintptr_t root = reinterpret_cast<uintptr_t>(plan);
    const uintptr_t buffer = n > 32 ? (uintptr_t(n) * sizeof(T) + 31) / 32 * 32 : 0;
    EXPECT_EQ(tqftest::alloc_log().first_word_at_free, root + buffer) << label;
}

TEST(Dct4Edges, FreeOfADamagedPlanSkipsItsBuffer) {
    for (int n : {2, 32, 64, 4096, 1 << 17}) {
        check_free_of_damaged<float>(n);
        check_free_of_damaged<double>(n);
    }
}

}  // namespace
