// Which lengths a plan accepts and the block size it asks for.
#include <gtest/gtest.h>

#include <climits>
#include <set>

#include "dct4_support.h"
#include "plan_factor.h"

namespace {

using dct4test::F32;
using dct4test::F64;
using dct4test::Is32Bit;
using dct4test::Precision;

TEST(PlanFactor, RowsFromTheTopWithFallThrough) {
    const struct { int32_t v, factor; } rows[] = {
        {512, 32}, {544, 32}, {1 << 30, 32},
        {528, 16},    // >= 512 but not a multiple of 32: next row
        {1032, 8},    // a multiple of 8 only
        {1028, 4}, {1026, 2},
        {511, tqfStsBadSize}, {256, 16}, {128, 16}, {96, 8}, {32, 8}, {24, 4}, {16, 4},
        {12, 2}, {6, 2}, {4, 2}, {3, tqfStsBadSize}, {2, tqfStsBadSize}, {1, tqfStsBadSize},
        {0, tqfStsBadSize}, {-4, tqfStsBadSize}, {-512, tqfStsBadSize}, {INT_MIN, tqfStsBadSize}};
    for (const auto& r : rows) EXPECT_EQ(PlanChooseFactor(r.v), r.factor) << r.v;
}

int SizeOf(const Precision& p, int n, tqfStatus* status) {
    int size = -12345;
    *status = p.getSize(n, &size);
    return size;
}

// The block sizes of the 32-bit target, which callers allocate by.
TEST(PlanSizeRule, SizeTableOnI386) {
    if (!Is32Bit()) GTEST_SKIP() << "exact sizes are those of the 32-bit target";
    const struct { int n, s32, s64; } rows[] = {
        {2, 224, 224}, {4, 224, 224}, {8, 224, 224}, {16, 224, 224}, {32, 224, 224},
        {64, 1632, 2144}, {128, 2144, 3168}, {256, 3168, 5216}, {512, 5216, 9312},
        {1024, 9312, 17504}, {2048, 17504, 33888}, {4096, 52768, 101920},
        {8192, 103968, 202272}, {65536, 820000, 1606432}, {1048576, 17303520, 34080736},
        {33, 1408, 1664}, {1 << 30, 536874336, 536874336}};
    for (const auto& r : rows) {
        tqfStatus st;
        EXPECT_EQ(SizeOf(F32(), r.n, &st), r.s32) << r.n;
        EXPECT_EQ(st, tqfStsNoError);
        EXPECT_EQ(SizeOf(F64(), r.n, &st), r.s64) << r.n;
        EXPECT_EQ(st, tqfStsNoError);
    }
}

TEST(PlanSizeRule, EdgesOfTheRangeOnI386) {
    if (!Is32Bit()) GTEST_SKIP() << "exact sizes are those of the 32-bit target";
    tqfStatus st;
    EXPECT_EQ(SizeOf(F32(), 1 << 26, &st), 1375733920);
    EXPECT_EQ(st, tqfStsNoError);
    EXPECT_EQ(SizeOf(F64(), 1 << 25, &st), 1358957216);
    EXPECT_EQ(st, tqfStsNoError);
    EXPECT_EQ(SizeOf(F64(), 1 << 29, &st), 268438880);
    EXPECT_EQ(st, tqfStsNoError);
    // 9 and 17 pass with two lanes only.
    EXPECT_EQ(SizeOf(F64(), 9, &st), 1280);
    EXPECT_EQ(st, tqfStsNoError);
    EXPECT_EQ(SizeOf(F64(), 17, &st), 1408);
    EXPECT_EQ(st, tqfStsNoError);
}

TEST(PlanSizeRule, RefusedLengthsLeaveTheSizeUnwritten) {
    struct Row { int n; bool f32, f64; };  // true: refused in that precision
    const Row rows[] = {
        {0, true, true}, {1, true, true}, {3, true, true}, {5, true, true}, {6, true, true},
        {12, true, true}, {40, true, true}, {48, true, true}, {96, true, true},
        {3 * 2048, true, true}, {9, true, false}, {17, true, false},
        {1 << 27, true, true}, {1 << 26, false, true}, {1 << 29, true, false},
        {-1, true, true}, {-2, true, true}, {-64, true, true}, {INT_MIN, true, true}};
    for (const Row& r : rows) {
        for (int k = 0; k < 2; ++k) {
            const Precision& p = k ? F64() : F32();
            const bool refused = k ? r.f64 : r.f32;
            tqfStatus st;
            const int size = SizeOf(p, r.n, &st);
            if (refused) {
                EXPECT_EQ(st, tqfStsBadSize) << p.name << " " << r.n;
                EXPECT_EQ(size, -12345) << p.name << " " << r.n;
            } else {
                EXPECT_EQ(st, tqfStsNoError) << p.name << " " << r.n;
                EXPECT_GT(size, 0) << p.name << " " << r.n;
            }
        }
    }
}

// The accepted lengths, as a set built from the rule's own description.
std::set<int64_t> AcceptedLengths(bool dbl) {
    std::set<int64_t> s;
    const int top = dbl ? 25 : 26;
    for (int k = 1; k <= top; ++k) s.insert(int64_t(1) << k);
    for (int k = dbl ? 3 : 5; k <= top; ++k) s.insert((int64_t(1) << k) + 1);
    const int wrapped[] = {29, 30};
    for (int k : wrapped) {
        if (k == 29 && !dbl) continue;
        s.insert(int64_t(1) << k);
        s.insert((int64_t(1) << k) + 1);
    }
    return s;
}

void CheckAcceptance(const Precision& p, int64_t n, const std::set<int64_t>& accepted) {
    if (n < INT_MIN || n > INT_MAX) return;
    int size = -12345;
    const tqfStatus st = p.getSize(static_cast<int>(n), &size);
    if (accepted.count(n)) {
        EXPECT_EQ(st, tqfStsNoError) << p.name << " " << n;
        EXPECT_GT(size, 0) << p.name << " " << n;
    } else {
        EXPECT_EQ(st, tqfStsBadSize) << p.name << " " << n;
    }
}

TEST(PlanSizeRule, AcceptedLengthsOverTheSigned32BitRange) {
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        const std::set<int64_t> accepted = AcceptedLengths(k == 1);
        // Every small length, including all negatives down to -4096.
        for (int64_t n = -4096; n <= 70000; ++n) CheckAcceptance(p, n, accepted);
        // Around every power of two, and a few multiples of them.
        for (int e = 0; e <= 31; ++e) {
            const int64_t v = int64_t(1) << e;
            const int64_t near[] = {v - 2, v - 1, v, v + 1, v + 2, v + 3, 3 * v, 3 * v + 1,
                                    5 * v, 7 * v + 1, -v, -v + 1, -v - 1};
            for (int64_t n : near) CheckAcceptance(p, n, accepted);
        }
        // A spread of lengths through the whole range.
        uint32_t x = 12345;
        for (int i = 0; i < 200000; ++i) {
            x = x * 1664525u + 1013904223u;
            CheckAcceptance(p, static_cast<int32_t>(x), accepted);
        }
        CheckAcceptance(p, INT_MAX, accepted);
        CheckAcceptance(p, INT_MIN, accepted);
    }
}

// GetSize is the lead-in of two 32-byte units plus a sum of 32-byte charges.
TEST(PlanSizeRule, SizesAreMultiplesOf32AndGrowWithLength) {
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        int previous = 0;
        for (int e = 1; e <= (k ? 25 : 26); ++e) {
            tqfStatus st;
            const int size = SizeOf(p, 1 << e, &st);
            ASSERT_EQ(st, tqfStsNoError) << e;
            EXPECT_EQ(size % 32, 0) << e;
            EXPECT_GE(size, previous) << e;
            // At least the work buffer and the output table, n elements each.
            if (e > 5) EXPECT_GE(int64_t(size), 2 * (int64_t(1) << e) * p.width) << e;
            previous = size;
        }
    }
}

}  // namespace
