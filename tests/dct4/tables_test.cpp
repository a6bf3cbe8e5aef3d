// The rotation tables, value by value and bit for bit, against the recipe
// worked out here from the angles themselves.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "dct4_support.h"
#include "guarded.h"
#include "plan_gens.h"

namespace {

using dct4test::F32;
using dct4test::F64;
using dct4test::Precision;
using tqftest::bits;
using tqftest::GuardedBuffer;

const double kPi = 3.14159265358979323846;

// sin/cos of pi x: single widens, multiplies by pi in double, narrows once.
float CosPi(float x) { return static_cast<float>(std::cos(static_cast<double>(x) * kPi)); }
float SinPi(float x) { return static_cast<float>(std::sin(static_cast<double>(x) * kPi)); }
double CosPi(double x) { return std::cos(x * kPi); }
double SinPi(double x) { return std::sin(x * kPi); }

// psi(a, i) / pi = (2a + 1)(2i + 1) / (4n), as the ratio of 2(2a + 1)(2i + 1)
// and 8n, each rounded to the element type and divided in it.
template <class T>
T Psi(int a, int i, int n) {
    return static_cast<T>(2 * (2 * a + 1) * (2 * i + 1)) / static_cast<T>(8 * n);
}

struct Plan {
    std::unique_ptr<GuardedBuffer> block;
    PlanRoot* root = nullptr;
};
Plan Build(const Precision& p, int n) {
    Plan plan;
    int size = 0;
    EXPECT_EQ(p.getSize(n, &size), tqfStsNoError);
    plan.block.reset(new GuardedBuffer(static_cast<size_t>(size), 0));
    EXPECT_EQ(p.init(&plan.root, n, plan.block->bytes()), tqfStsNoError);
    return plan;
}
template <class C>
C* First(PlanList* list) { return reinterpret_cast<C*>(PlanListItem(list, 0)); }

// The order of residues in the table: pairs (i, f - 1 - i).
std::vector<int> ResidueOrder(int f) {
    if (f == 32)
        return {0, 31, 16, 15, 4, 27, 20, 11, 8, 23, 24, 7, 12, 19, 28, 3,
                1, 30, 17, 14, 5, 26, 21, 10, 9, 22, 25, 6, 13, 18, 29, 2};
    if (f == 8) return {0, 7, 1, 6, 2, 5, 3, 4};
    std::vector<int> v;
    for (int i = 0; i < f / 2; ++i) {
        v.push_back(i);
        v.push_back(f - 1 - i);
    }
    return v;
}

template <class T>
void CheckOutputTable(const Precision& p, int n) {
    SCOPED_TRACE(std::string(p.name) + " n=" + std::to_string(n));
    Plan plan = Build(p, n);
    ASSERT_NE(plan.root, nullptr);
    const int f = plan.root->factor, q = n / (2 * f), L = p.lanes;
    const OutputStage* ost = First<OutputStage>(First<OutputShell>(plan.root->output)->stage);
    const T* t = static_cast<const T*>(ost->table);
    const std::vector<int> order = ResidueOrder(f);
    size_t k = 0, bad = 0;
    for (int A = 0; A < q / L; ++A)
        for (int res : order) {
            for (int l = 0; l < L; ++l, ++k)
                bad += bits(t[k]) != bits(CosPi(Psi<T>(L * A + l, res, n)));
            for (int l = 0; l < L; ++l, ++k)
                bad += bits(t[k]) != bits(SinPi(Psi<T>(L * A + l, res, n)));
        }
    EXPECT_EQ(k * sizeof(T), static_cast<size_t>(q / L) * 32 * f);  // n elements for n = 2^k
    EXPECT_EQ(bad, 0u);
}

TEST(PlanTables, OutputTableBitExact) {
    const int lengths[] = {64, 128, 256, 1024, 4096, 32768};
    for (int n : lengths) {
        CheckOutputTable<float>(F32(), n);
        CheckOutputTable<double>(F64(), n);
    }
    CheckOutputTable<float>(F32(), 33);   // f = 4: class 3
    CheckOutputTable<double>(F64(), 9);   // f = 2: class 2
}

TEST(PlanTables, OutputTableOfFactor8StartsWithResiduesZeroThenSeven) {
    Plan plan = Build(F32(), 64);
    const OutputStage* ost = First<OutputStage>(First<OutputShell>(plan.root->output)->stage);
    const float* t = static_cast<const float*>(ost->table);
    for (int a = 0; a < 4; ++a) {
        const double c0 = std::cos((2 * a + 1) * 1 * kPi / 256), s0 = std::sin((2 * a + 1) * 1 * kPi / 256);
        const double c7 = std::cos((2 * a + 1) * 15 * kPi / 256), s7 = std::sin((2 * a + 1) * 15 * kPi / 256);
        EXPECT_NEAR(t[a], c0, 1e-7);
        EXPECT_NEAR(t[4 + a], s0, 1e-7);
        EXPECT_NEAR(t[8 + a], c7, 1e-7);
        EXPECT_NEAR(t[12 + a], s7, 1e-7);
    }
}

// One split's twiddles, in the order the combining step reads them.
template <class T>
std::vector<T> ExpectedSplitAngles(int m, int g, bool innerFirst) {
    const int q2 = m / (2 * g);
    auto x = [&](int b) { return (static_cast<T>(b) + static_cast<T>(0.5)) / static_cast<T>(m / g); };
    std::vector<T> r;
    if (g <= 8) {
        for (int b = 0; b < q2; ++b)
            for (int j = 1; j < g; ++j) r.push_back(x(b) * (static_cast<T>(j) / static_cast<T>(g / 2)));
        return r;
    }
    std::vector<T> outer, inner;
    for (int b = 0; b < q2; ++b)
        for (int t = 0; t < g / 4; ++t)
            for (int j = 1; j <= 3; ++j)
                outer.push_back((x(b) + static_cast<T>(t)) * (static_cast<T>(j) / static_cast<T>(g / 2)));
    for (int b = 0; b < q2; ++b)
        for (int j = 1; j < g / 4; ++j)
            inner.push_back(x(b) * (static_cast<T>(4 * j) / static_cast<T>(g / 2)));
    const std::vector<T>& a = innerFirst ? inner : outer;
    const std::vector<T>& c = innerFirst ? outer : inner;
    r = a;
    r.insert(r.end(), c.begin(), c.end());
    return r;
}

template <class T>
void CheckSplitTable(const SplitStage* ss, const Precision& p) {
    const SplitCombine* sc = First<SplitCombine>(ss->combine);
    const int m = ss->lengthM, g = ss->factor, L = p.lanes;
    const bool innerFirst = g == 32 && sizeof(T) == 8;
    const std::vector<T> angles = ExpectedSplitAngles<T>(m, g, innerFirst);
    EXPECT_EQ(angles.size(), static_cast<size_t>(m / (2 * g) * (g - 1)));
    const T* t = static_cast<const T*>(sc->table);
    size_t bad = 0;
    for (size_t e = 0; e < angles.size(); ++e) {
        for (int l = 0; l < L; ++l) bad += bits(t[2 * L * e + l]) != bits(CosPi(angles[e]));
        for (int l = 0; l < L; ++l) bad += bits(t[2 * L * e + L + l]) != bits(SinPi(angles[e]));
    }
    EXPECT_EQ(bad, 0u) << "m=" << m << " g=" << g;
}

template <class T>
void CheckSplitTables(const Precision& p, int n, int splits) {
    SCOPED_TRACE(std::string(p.name) + " n=" + std::to_string(n));
    Plan plan = Build(p, n);
    ASSERT_NE(plan.root, nullptr);
    const FoldStage* fs = First<FoldStage>(First<FoldShell>(plan.root->fold)->stage);
    const SplitStage* ss = First<SplitStage>(fs->stage);
    for (int level = 0; level < splits; ++level) {
        ASSERT_NE(ss, nullptr);
        CheckSplitTable<T>(ss, p);
        ss = First<SplitStage>(First<SplitFold>(ss->inner)->stage);
    }
    EXPECT_EQ(ss, nullptr);
}

TEST(PlanTables, SplitTablesBitExact) {
    const struct { int n, splits; } rows[] = {{4096, 1}, {8192, 1}, {16384, 1}, {32768, 1}, {131072, 2}};
    for (const auto& r : rows) {
        CheckSplitTables<float>(F32(), r.n, r.splits);
        CheckSplitTables<double>(F64(), r.n, r.splits);
    }
}

// With g = 32 the double table opens with the second step's twiddles and the
// single one with the first step's.
TEST(PlanTables, ThirtyTwoPointSectionOrderByPrecision) {
    Plan p32 = Build(F32(), 32768), p64 = Build(F64(), 32768);
    auto table = [](Plan& p) {
        const FoldStage* fs = First<FoldStage>(First<FoldShell>(p.root->fold)->stage);
        return First<SplitCombine>(First<SplitStage>(fs->stage)->combine);
    };
    const SplitCombine* s32 = table(p32);
    const SplitCombine* s64 = table(p64);
    ASSERT_EQ(s32->factor, 32);
    ASSERT_EQ(s64->factor, 32);
    // m' = 32, so x(0) = 1/64: the first step's first angle is pi/1024, the
    // second step's pi/256.
    EXPECT_NEAR(static_cast<const float*>(s32->table)[4], std::sin(kPi / 1024), 1e-8);
    EXPECT_NEAR(static_cast<const double*>(s64->table)[2], std::sin(kPi / 256), 1e-16);
}

// The rounding of the angle itself only shows where numerator or denominator
// have more bits than a float holds: a long length 2^k + 1. The generator is
// exercised on its own here, without a plan of that size.
TEST(PlanTables, SingleAngleIsRoundedToSingleBeforeItIsWidened) {
    const int32_t n = (1 << 25) + 1, f = 32;
    TwiddleGen gen;
    gen.node = PlanNode{PlanDestroyNothing, static_cast<int32_t>(sizeof(TwiddleGen)),
                        PlanActOf(&PlanTwiddleValue<PlanF32>), nullptr};
    gen.columns = 2 * f;
    gen.denominator = 8 * n;
    gen.rows = n / (2 * f);
    gen.factor = f;
    gen.rowLength = 2 * f;
    TwiddleGen gen64 = gen;
    gen64.node.act = PlanActOf(&PlanTwiddleValue<PlanF64>);
    auto eval32 = reinterpret_cast<PlanTwiddleAct<PlanF32>>(gen.node.act);
    auto eval64 = reinterpret_cast<PlanTwiddleAct<PlanF64>>(gen64.node.act);
    int bad = 0, wouldDiffer = 0;
    for (int32_t row = gen.rows - 1; row >= 0; row -= 4099)
        for (int32_t col = 0; col < 2 * f; ++col) {
            const int64_t num = 2 * (2 * int64_t(row) + 1) * (2 * (col / 2) + 1);
            const float x = static_cast<float>(num) / static_cast<float>(8 * int64_t(n));
            const float want = (col & 1) ? SinPi(x) : CosPi(x);
            bad += bits(eval32(&gen, row, col)) != bits(want);
            const double xd = static_cast<double>(num) / static_cast<double>(8 * int64_t(n));
            bad += bits(eval64(&gen64, row, col)) != bits((col & 1) ? SinPi(xd) : CosPi(xd));
            // Dividing in double and rounding afterwards would give other bits.
            const float late = static_cast<float>(xd);
            wouldDiffer += bits((col & 1) ? SinPi(late) : CosPi(late)) != bits(want);
        }
    EXPECT_EQ(bad, 0);
    EXPECT_GT(wouldDiffer, 0);
}

}  // namespace
