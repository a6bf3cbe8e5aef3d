// Hartley kernels, both precisions, every length: values against a
// long-double cas sum, the scale rule bit for bit, impulses, the alternating
// sum at N/2, the transform as its own inverse, positive zeros, memory paths
// and in-place calls, guards and the generic entries giving the fixed
// kernels' bits (statuses of every name: tests/hardening).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <random>
#include <vector>

#include "guarded.h"
#include "hartley_support.h"
#include "scale_constants.h"

namespace {

using namespace tqftest;

constexpr int kFlags[] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};

template <class T>
class Hartley : public ::testing::Test {
protected:
    // Largest error of one transform relative to its largest output: about
    // 2.4e-7 in single precision (1/sqrt(N) rounded to float takes part of
    // that) and 4e-16 in double.
    static constexpr long double kTolerance = sizeof(T) == 4 ? 4e-7L : 2e-15L;
    // Two transforms in a row, relative to the largest input.
    static constexpr long double kRoundTripTolerance = sizeof(T) == 4 ? 6e-7L : 2e-15L;

    static std::vector<HartleyKernel<T>> kernels() { return hartley_kernels<T>(); }
    static std::string trace(const HartleyKernel<T>& k, int flag) {
        return k.name + " flag=" + std::to_string(flag);
    }
    // Flags 1 and 2 both divide by N: the transform has no direction.
    static T scale(int n, int flag) {
        return scale_value<T>(n, flag, flag == tqfDivFwdByN || flag == tqfDivInvByN);
    }
    static long double exact_scale(int n, int flag) {
        if (flag == tqfNoDivByAny) return 1.0L;
        return flag == tqfDivBySqrtN ? 1 / sqrtl(n) : 1.0L / n;
    }
    static std::vector<T> random_signal(int n, unsigned seed) {
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        std::vector<T> v(n);
        for (T& x : v) x = static_cast<T>(u(rng));
        return v;
    }
    static long double peak(const std::vector<T>& v) {
        long double m = 0;
        for (T x : v) m = std::max(m, fabsl(x));
        return m;
    }
    // Out of place, src and dst at byte offsets from 64-byte alignment; dst
    // starts as a pattern so that an element left unwritten shows.
    static std::vector<T> run(const HartleyKernel<T>& k, const std::vector<T>& x, int flag, size_t src_off = 0,
                              size_t dst_off = 0) {
        const size_t bytes = static_cast<size_t>(k.length) * sizeof(T);
        GuardedBuffer src(bytes, src_off), dst(bytes, dst_off);
        std::memcpy(src.bytes(), x.data(), bytes);
        dst.fill_pattern(0x3c);
        EXPECT_EQ(k.fn(src.as<T>(), dst.as<T>(), flag), tqfStsNoError);
        EXPECT_TRUE(dst.guards_intact()) << "wrote outside the " << k.length << " output elements";
        EXPECT_TRUE(src.payload_equals(x.data())) << "changed the input";
        EXPECT_TRUE(src.guards_intact());
        std::vector<T> out(k.length);
        std::memcpy(out.data(), dst.bytes(), bytes);
        return out;
    }
    // src == dst, one call or two in a row.
    static std::vector<T> run_in_place(const HartleyKernel<T>& k, const std::vector<T>& x,
                                       std::initializer_list<int> flags, size_t off) {
        const size_t bytes = static_cast<size_t>(k.length) * sizeof(T);
        GuardedBuffer buf(bytes, off);
        std::memcpy(buf.bytes(), x.data(), bytes);
        for (int flag : flags) EXPECT_EQ(k.fn(buf.as<T>(), buf.as<T>(), flag), tqfStsNoError);
        EXPECT_TRUE(buf.guards_intact()) << "wrote outside the buffer";
        std::vector<T> out(k.length);
        std::memcpy(out.data(), buf.bytes(), bytes);
        return out;
    }
    static void expect_same_bits(const std::vector<T>& got, const std::vector<T>& want) {
        ASSERT_EQ(got.size(), want.size());
        for (size_t i = 0; i < got.size(); ++i)
            ASSERT_EQ(bits(got[i]), bits(want[i])) << std::hexfloat << "element " << i << ": " << got[i] << " vs "
                                                   << want[i];
    }
};

using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Hartley, Precisions);

TYPED_TEST(Hartley, TableHoldsEveryLengthInOrder) {
    const auto ks = this->kernels();
    ASSERT_EQ(ks.size(), 63u);
    const std::string suffix = sizeof(TypeParam) == 4 ? "_32f" : "_64f";
    for (size_t i = 0; i < ks.size(); ++i) {
        EXPECT_EQ(ks[i].length, static_cast<int>(2 + i));
        EXPECT_EQ(ks[i].name, "tqfgHartley_" + std::to_string(2 + i) + suffix);
    }
}

TYPED_TEST(Hartley, AgreesWithCasSum) {
    using T = TypeParam;
    long double worst_all = 0;
    std::string worst_where;
    for (const auto& k : this->kernels()) {
        const int n = k.length;
        for (unsigned seed = 1; seed <= 3; ++seed) {
            const std::vector<T> x = this->random_signal(n, seed * 1000 + n);
            const std::vector<long double> ref = cas_sum(std::vector<long double>(x.begin(), x.end()));
            for (int flag : kFlags) {
                SCOPED_TRACE(this->trace(k, flag));
                const long double s = this->exact_scale(n, flag);
                long double top = 0, worst = 0;
                for (long double h : ref) top = std::max(top, fabsl(h * s));
                const std::vector<T> out = this->run(k, x, flag);
                for (int i = 0; i < n; ++i) worst = std::max(worst, fabsl(out[i] - ref[i] * s));
                EXPECT_LE(worst / top, this->kTolerance);
                if (worst / top > worst_all) worst_all = worst / top, worst_where = this->trace(k, flag);
            }
        }
    }
    std::printf("[ worst    ] %.3Lg relative to the largest output, at %s\n", worst_all, worst_where.c_str());
    this->RecordProperty("worst_relative_error", std::to_string(static_cast<double>(worst_all)));
}

// Every scale step multiplies a kept value by the scale constant, in the
// kernel's own precision: out(flag) is out(8) times the constant, rounded
// once, bit for bit; flags 1 and 2 are the same.
TYPED_TEST(Hartley, ScaledResultsAreTheUnscaledOneTimesTheConstant) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        for (unsigned seed : {5u, 6u}) {
            const std::vector<T> x = this->random_signal(k.length, seed * 100 + k.length);
            const std::vector<T> plain = this->run(k, x, tqfNoDivByAny);
            for (int flag : {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN}) {
                SCOPED_TRACE(this->trace(k, flag));
                const T s = this->scale(k.length, flag);
                std::vector<T> want(plain.size());
                for (size_t i = 0; i < plain.size(); ++i) want[i] = plain[i] * s;
                this->expect_same_bits(this->run(k, x, flag), want);
            }
        }
    }
}

// cas(0) = 1: an impulse at 0 puts the kernel's scale constant itself in
// every slot.
TYPED_TEST(Hartley, ImpulseShowsTheScaleConstantEverywhere) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        std::vector<T> x(k.length, T(0));
        x[0] = T(1);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const T s = this->scale(k.length, flag);
            this->expect_same_bits(this->run(k, x, flag), std::vector<T>(k.length, s));
        }
    }
}

// cas(0) = 1 and cas(pi n) = (-1)^n: H[0] is the sum and, at even N, H[N/2]
// the alternating sum, both needing no product. Small integers keep every
// partial sum exact, so the scaled result is the exact sum rounded once by
// the scale; on random data they are within rounding.
TYPED_TEST(Hartley, SumAndAlternatingSumAtZeroAndHalf) {
    using T = TypeParam;
    std::mt19937 rng(99);
    std::uniform_int_distribution<int> small(-8, 8);
    for (const auto& k : this->kernels()) {
        const int n = k.length;
        std::vector<std::vector<T>> integer_inputs(3, std::vector<T>(n));
        for (int j = 0; j < n; ++j) {
            integer_inputs[0][j] = static_cast<T>(small(rng));
            integer_inputs[1][j] = static_cast<T>(j % 2 ? -8 : 8);  // all of the magnitude at N/2
            integer_inputs[2][j] = static_cast<T>(j % 3 - 1);
        }
        const std::vector<T> x = this->random_signal(n, 300 + n);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const T s = this->scale(n, flag);
            for (size_t which = 0; which < integer_inputs.size(); ++which) {
                const std::vector<T>& v = integer_inputs[which];
                long sum = 0, alternating = 0;
                for (int j = 0; j < n; ++j) {
                    sum += static_cast<long>(v[j]);
                    alternating += (j % 2 ? -1 : 1) * static_cast<long>(v[j]);
                }
                const std::vector<T> out = this->run(k, v, flag);
                EXPECT_EQ(bits(out[0]), bits(static_cast<T>(sum) * s)) << "input " << which << ": H[0] = " << out[0];
                if (n % 2 == 0) {
                    EXPECT_EQ(bits(out[n / 2]), bits(static_cast<T>(alternating) * s))
                        << "input " << which << ": H[N/2] = " << out[n / 2] << ", want " << alternating << " * " << s;
                }
            }
            if (n % 2 != 0) continue;
            long double alternating = 0, magnitude = 0;
            for (int j = 0; j < n; ++j) alternating += (j % 2 ? -x[j] : x[j]), magnitude += fabsl(x[j]);
            const long double want = alternating * this->exact_scale(n, flag);
            EXPECT_LE(fabsl(this->run(k, x, flag)[n / 2] - want),
                      this->kTolerance * magnitude * this->exact_scale(n, flag))
                << "random input";
        }
    }
}

// The transform is its own inverse up to N: flag 4 twice, or flag 8 then a
// flag that divides by N, gives the input back, out of place and in place.
TYPED_TEST(Hartley, TwoCallsReturnTheInput) {
    using T = TypeParam;
    const int pairs[][2] = {{tqfDivBySqrtN, tqfDivBySqrtN},
                            {tqfNoDivByAny, tqfDivFwdByN},
                            {tqfNoDivByAny, tqfDivInvByN},
                            {tqfDivInvByN, tqfNoDivByAny}};
    for (const auto& k : this->kernels()) {
        const std::vector<T> x = this->random_signal(k.length, 500 + k.length);
        const long double top = this->peak(x);
        for (const auto& p : pairs) {
            const std::string how = this->trace(k, p[0]) + " then flag=" + std::to_string(p[1]);
            const std::vector<T> out_of_place = this->run(k, this->run(k, x, p[0]), p[1]);
            const std::vector<T> in_place = this->run_in_place(k, x, {p[0], p[1]}, sizeof(T));
            for (const auto* back : {&out_of_place, &in_place}) {
                SCOPED_TRACE(how + (back == &in_place ? ", in place" : ""));
                long double worst = 0;
                for (int i = 0; i < k.length; ++i) worst = std::max(worst, fabsl((*back)[i] - x[i]));
                EXPECT_LE(worst / top, this->kRoundTripTolerance);
            }
        }
    }
}

// No output is formed as 0 - t: an all-zero input gives +0.0 in every slot.
TYPED_TEST(Hartley, ZeroInputGivesPositiveZeros) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const std::vector<T> zeros(k.length, T(0));
            this->expect_same_bits(this->run(k, zeros, flag), zeros);
            this->expect_same_bits(this->run_in_place(k, zeros, {flag}, 0), zeros);
        }
    }
}

// Element-aligned (4 bytes for float, 8 for double) src and dst and src ==
// dst give the bits of the 16-byte aligned out-of-place call.
TYPED_TEST(Hartley, MemoryPathsAndInPlaceGiveTheSameBits) {
    using T = TypeParam;
    const size_t odd = sizeof(T);  // aligned to the element only
    for (const auto& k : this->kernels()) {
        const std::vector<T> x = this->random_signal(k.length, 31 + k.length);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const std::vector<T> ref = this->run(k, x, flag);
            this->expect_same_bits(this->run(k, x, flag, odd, 0), ref);
            this->expect_same_bits(this->run(k, x, flag, 0, odd), ref);
            this->expect_same_bits(this->run(k, x, flag, odd, 3 * odd), ref);
            for (size_t off : {size_t(0), odd}) this->expect_same_bits(this->run_in_place(k, x, {flag}, off), ref);
        }
    }
}

// N elements in: NaN just before and just after src changes nothing.
TYPED_TEST(Hartley, ReadsOnlyItsInput) {
    using T = TypeParam;
    constexpr int kPad = 4;
    for (const auto& k : this->kernels()) {
        const std::vector<T> x = this->random_signal(k.length, 61 + k.length);
        std::vector<T> padded(k.length + 2 * kPad, std::numeric_limits<T>::quiet_NaN());
        std::copy(x.begin(), x.end(), padded.begin() + kPad);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            std::vector<T> out(k.length);
            ASSERT_EQ(k.fn(padded.data() + kPad, out.data(), flag), tqfStsNoError);
            this->expect_same_bits(out, this->run(k, x, flag));
        }
    }
}

// Null src, then null dst, before the flag; any flag but 1, 2, 4 and 8
// fails; a failing call writes nothing.
// The generic entry tests the length first and alone (2..64), then makes
// the fixed kernel's call.
// A valid length gives the fixed kernel's status and bits.
TYPED_TEST(Hartley, GenericIsTheFixedKernel) {
    using T = TypeParam;
    const HartleyGeneric<T> g = hartley_generic<T>();
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(g.name + " length " + std::to_string(k.length));
        const size_t bytes = static_cast<size_t>(k.length) * sizeof(T);
        GuardedBuffer src(bytes, 0), dst(bytes, 0);
        dst.fill_pattern(6);
        const std::vector<T> x = this->random_signal(k.length, 41 + k.length);
        std::memcpy(src.bytes(), x.data(), bytes);
        for (int flag : kFlags) {
            SCOPED_TRACE("flag " + std::to_string(flag));
            ASSERT_EQ(g.fn(src.as<T>(), dst.as<T>(), k.length, flag), tqfStsNoError);
            EXPECT_TRUE(dst.guards_intact());
            std::vector<T> out(k.length);
            std::memcpy(out.data(), dst.bytes(), bytes);
            this->expect_same_bits(out, this->run(k, x, flag));
        }
    }
}

}  // namespace
