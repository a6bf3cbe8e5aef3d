// The transform call's contract: statuses and their order, a damaged plan,
// what it reads and writes (in place, src untouched, any alignment, nothing
// outside dst, no allocation), and the plans of length 2^k + 1.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>

#include "dct4_support.h"
#include "exec_support.h"
#include "guarded.h"

namespace {

using namespace dct4exec;
using tqftest::GuardedBuffer;
using tqftest::bits;

template <class T> PlanRoot* Root(const Plan<T>& p) { return reinterpret_cast<PlanRoot*>(p.handle()); }

template <class T>
void CheckNullPointers() {
    for (int n : {2, 32, 64, 4096}) {
        Plan<T> plan(n);
        std::vector<T> x = RandomInput<T>(n, 1), y(n, T(5));
        EXPECT_EQ(Api<T>::run(x.data(), y.data(), nullptr), tqfStsNullPointer);
        EXPECT_EQ(Api<T>::run(nullptr, y.data(), plan.handle()), tqfStsNullPointer);
        EXPECT_EQ(Api<T>::run(x.data(), nullptr, plan.handle()), tqfStsNullPointer);
        EXPECT_EQ(Api<T>::run(nullptr, nullptr, nullptr), tqfStsNullPointer);
        for (T v : y) EXPECT_EQ(v, T(5));
    }
}

TEST(Dct4Status, NullPointers) {
    CheckNullPointers<float>();
    CheckNullPointers<double>();
}

// A root kind outside 1-6 is a bad plan, reported after the null tests and
// with dst untouched; the straight-line kinds are also looked at.
template <class T>
void CheckDamagedRoot() {
    for (int n : {2, 16, 64, 8192}) {
        Plan<T> plan(n);
        PlanRoot* root = Root(plan);
        const int32_t kind = root->kind;
        std::vector<T> x = RandomInput<T>(n, 2), y(n, T(5));
        for (int32_t bad : {0, 7, -1, 1 << 30}) {
            root->kind = bad;
            EXPECT_EQ(plan.run(x.data(), y.data()), tqfStsBadPlan) << n << " " << bad;
            EXPECT_EQ(plan.run(nullptr, y.data()), tqfStsNullPointer);
        }
        for (T v : y) EXPECT_EQ(v, T(5));
        root->kind = kind;
        EXPECT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
    }
}

TEST(Dct4Status, DamagedRootKindIsBadPlan) {
    CheckDamagedRoot<float>();
    CheckDamagedRoot<double>();
}

// Below the root a bad stage does nothing and the call still succeeds: with
// the fold stage's kind damaged the output stage runs on the old buffer.
template <class T>
void CheckDamagedStage() {
    const int n = 256;
    Plan<T> plan(n);
    const std::vector<T> x = RandomInput<T>(n, 4), x2 = RandomInput<T>(n, 5);
    std::vector<T> y1(n), y2(n);
    ASSERT_EQ(plan.run(x.data(), y1.data()), tqfStsNoError);
    FoldShell* shell = reinterpret_cast<FoldShell*>(Root(plan)->fold->item);
    FoldStage* stage = reinterpret_cast<FoldStage*>(shell->stage->item);
    const int32_t kind = stage->kind;
    stage->kind = 9;
    EXPECT_EQ(plan.run(x2.data(), y2.data()), tqfStsNoError);
    EXPECT_EQ(y1, y2);  // the fold of x2 never happened
    stage->kind = kind;
    EXPECT_EQ(plan.run(x2.data(), y2.data()), tqfStsNoError);
    EXPECT_NE(y1, y2);
}

TEST(Dct4Status, DamagedStageDoesNothing) {
    CheckDamagedStage<float>();
    CheckDamagedStage<double>();
}

// In place equals out of place bit for bit; src is left as it was; a
// repeated call gives the same bits (the plan's buffers hold no state).
template <class T>
void CheckInPlace(int n) {
    Plan<T> plan(n);
    const std::vector<T> x = RandomInput<T>(n, 9u + n);
    std::vector<T> src = x, y(n), again(n);
    ASSERT_EQ(plan.run(src.data(), y.data()), tqfStsNoError);
    EXPECT_EQ(std::memcmp(src.data(), x.data(), n * sizeof(T)), 0) << n;
    std::vector<T> other = RandomInput<T>(n, 1);
    ASSERT_EQ(plan.run(other.data(), again.data()), tqfStsNoError);
    ASSERT_EQ(plan.run(x.data(), again.data()), tqfStsNoError);
    EXPECT_EQ(std::memcmp(again.data(), y.data(), n * sizeof(T)), 0) << n;
    std::vector<T> inplace = x;
    ASSERT_EQ(plan.run(inplace.data(), inplace.data()), tqfStsNoError);
    EXPECT_EQ(std::memcmp(inplace.data(), y.data(), n * sizeof(T)), 0) << n;
}

TEST(Dct4Status, InPlaceSrcUntouchedRepeatable) {
    for (int n = 2; n <= (1 << 14); n *= 2) {
        CheckInPlace<float>(n);
        CheckInPlace<double>(n);
    }
}

// Any alignment of src and dst, and a plan in a caller's block at an odd
// address: the same bits, and nothing written outside dst or the block.
template <class T>
void CheckPlacement(int n) {
    Plan<T> plan(n);
    const std::vector<T> x = RandomInput<T>(n, 21u + n);
    std::vector<T> ref(n);
    ASSERT_EQ(plan.run(x.data(), ref.data()), tqfStsNoError);
    int size = 0;
    ASSERT_EQ(Api<T>::getSize(n, &size), tqfStsNoError);
    GuardedBuffer block(size, 1);
    typename Api<T>::Spec* handle = nullptr;
    ASSERT_EQ(Api<T>::init(&handle, n, block.bytes()), tqfStsNoError);
    for (size_t off : {sizeof(T), 2 * sizeof(T), 3 * sizeof(T)}) {
        GuardedBuffer src(n * sizeof(T), off), dst(n * sizeof(T), 16 - off % 16);
        std::memcpy(src.bytes(), x.data(), n * sizeof(T));
        ASSERT_EQ(Api<T>::run(src.as<T>(), dst.as<T>(), handle), tqfStsNoError);
        EXPECT_EQ(std::memcmp(dst.bytes(), ref.data(), n * sizeof(T)), 0) << n << " " << off;
        EXPECT_TRUE(dst.guards_intact()) << n;
        EXPECT_TRUE(src.guards_intact()) << n;
    }
    EXPECT_TRUE(block.guards_intact()) << n;
}

TEST(Dct4Status, AnyAlignmentAnyBlock) {
    for (int n = 2; n <= (1 << 13); n *= 2) {
        CheckPlacement<float>(n);
        CheckPlacement<double>(n);
    }
}

// The transform never allocates.
TEST(Dct4Status, NoAllocationPerCall) {
    Plan<float> pf(1 << 17);
    Plan<double> pd(1 << 17);
    std::vector<float> xf = RandomInput<float>(1 << 17, 1), yf(1 << 17);
    std::vector<double> xd = RandomInput<double>(1 << 17, 1), yd(1 << 17);
    dct4test::ResetAlloc();
    EXPECT_EQ(pf.run(xf.data(), yf.data()), tqfStsNoError);
    EXPECT_EQ(pd.run(xd.data(), yd.data()), tqfStsNoError);
    EXPECT_EQ(dct4test::Alloc().mallocs, 0);
    EXPECT_EQ(dct4test::Alloc().frees, 0);
}

// A plan of length 2^k + 1 runs with status 0 as if its quotients held: it
// reads one element past the n-th, leaves pairs of dst unwritten and writes
// dst[n]. `unwritten` lists the pairs; everything else up to n is written.
template <class T>
void CheckOddPlan(int n, const std::set<int>& unwritten) {
    Plan<T> plan(n);
    ASSERT_EQ(plan.status(), tqfStsNoError) << n;
    const std::vector<T> x = RandomInput<T>(n + 1, 3);
    const int slack = 8;
    std::vector<T> y(n + slack);
    const uint64_t marker = 0x7FF4A5A5A5A5A5A5ull;  // a NaN no kernel produces
    for (T& v : y) std::memcpy(&v, &marker, sizeof(T));
    ASSERT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
    for (int k = 0; k < n + slack; ++k) {
        const bool untouched = std::memcmp(&y[k], &marker, sizeof(T)) == 0;
        const bool expectUntouched = unwritten.count(k) || k > n;
        EXPECT_EQ(untouched, expectUntouched) << Api<T>::name << " n=" << n << " k=" << k;
    }
}

TEST(Dct4Status, LengthPowerOfTwoPlusOne) {
    const std::set<int> of33 = {4, 5, 12, 13, 20, 21, 28, 29};
    CheckOddPlan<float>(33, of33);
    CheckOddPlan<double>(33, of33);
    CheckOddPlan<double>(9, {2, 3, 6, 7});
}

// Larger 2^k + 1 plans (split ones among them, and those long enough for
// the cache-bypassing stores, which must then stay off) also run without a
// status.
TEST(Dct4Status, LongerPowerOfTwoPlusOneRun) {
    for (int k = 5; k <= 20; ++k) {
        const int n = (1 << k) + 1;
        Plan<float> pf(n);
        Plan<double> pd(n);
        ASSERT_EQ(pf.status(), tqfStsNoError) << n;
        ASSERT_EQ(pd.status(), tqfStsNoError) << n;
        std::vector<float> xf = RandomInput<float>(n + 1, 1);
        std::vector<double> xd = RandomInput<double>(n + 1, 1);
        // dst on a 64-byte line, where long transforms store past the caches.
        float* yf = static_cast<float*>(std::aligned_alloc(64, 4 * ((n + 16) / 16 * 16)));
        double* yd = static_cast<double*>(std::aligned_alloc(64, 8 * ((n + 8) / 8 * 8)));
        EXPECT_EQ(pf.run(xf.data(), yf), tqfStsNoError);
        EXPECT_EQ(pd.run(xd.data(), yd), tqfStsNoError);
        std::free(yf);
        std::free(yd);
    }
}

}  // namespace
