// Complex kernels, forward and inverse: results against the direct sum, the
// scale rule bit for bit, both memory paths, in-place calls, statuses and
// guards.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "dft_oracle.h"
#include "guarded.h"
#include "kernels.h"
#include "scale_constants.h"

namespace {

using namespace tqftest;

template <class T, int Sign>
struct Family {
    using type = T;
    static constexpr int sign = Sign;  // exponent sign: -1 forward, +1 inverse
};

template <class F>
class ComplexKernels : public ::testing::Test {
protected:
    using T = typename F::type;
    using C = typename Complex<T>::type;
    static constexpr int kSign = F::sign;
    static std::vector<FixedKernel<T>> kernels() { return complex_kernels<T>(kSign); }
    // Error bound relative to the largest output: about 2e-7 in single
    // precision (the scale's own rounding can add a quarter of that), 2e-14
    // in double; anything larger is a fault.
    static constexpr long double kTolerance = sizeof(T) == 4 ? 2.5e-7L : 2e-14L;
    static constexpr int kFlags[4] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};

    static std::vector<T> random_signal(int n, unsigned seed) {
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        std::vector<T> v(2 * n);
        for (T& x : v) x = static_cast<T>(u(rng));
        return v;
    }
    // The scale a kernel must apply, from the flag alone: each direction
    // divides by N for its own flag; the values are the nearest ones.
    static T expected_scale(int n, int flag) {
        const bool by_n = flag == (kSign < 0 ? tqfDivFwdByN : tqfDivInvByN);
        return scale_value<T>(n, flag, by_n);
    }
    // Runs a kernel from `in` into a guarded buffer at a byte offset.
    static std::vector<T> run(const FixedKernel<T>& k, const std::vector<T>& in, int flag, size_t src_off = 0,
                              size_t dst_off = 0) {
        const size_t bytes = in.size() * sizeof(T);
        GuardedBuffer src(bytes, src_off), dst(bytes, dst_off);
        std::memcpy(src.bytes(), in.data(), bytes);
        EXPECT_EQ(k.fn(src.as<C>(), dst.as<C>(), flag), tqfStsNoError);
        EXPECT_TRUE(dst.guards_intact()) << "wrote outside the output";
        EXPECT_TRUE(src.payload_equals(in.data())) << "changed the input";
        std::vector<T> out(in.size());
        std::memcpy(out.data(), dst.bytes(), bytes);
        return out;
    }
    static void expect_same_bits(const std::vector<T>& a, const std::vector<T>& b) {
        ASSERT_EQ(a.size(), b.size());
        for (size_t i = 0; i < a.size(); ++i) ASSERT_EQ(bits(a[i]), bits(b[i])) << "element " << i;
    }
};

using Families = ::testing::Types<Family<float, -1>, Family<double, -1>, Family<float, 1>, Family<double, 1>>;
TYPED_TEST_SUITE(ComplexKernels, Families);

TYPED_TEST(ComplexKernels, AgreesWithDirectSumForEveryFlag) {
    using T = typename TestFixture::T;
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(k.length);
        for (unsigned seed = 1; seed <= 4; ++seed) {
            const std::vector<T> x = this->random_signal(k.length, seed);
            std::vector<cld> xl(k.length);
            for (int n = 0; n < k.length; ++n) xl[n] = cld(x[2 * n], x[2 * n + 1]);
            const std::vector<cld> ref = direct_dft(xl, this->kSign);
            for (int flag : this->kFlags) {
                const bool by_n = flag == (this->kSign < 0 ? tqfDivFwdByN : tqfDivInvByN);
                const long double exact_scale =
                    by_n ? 1.0L / k.length : flag == tqfDivBySqrtN ? 1.0L / sqrtl(k.length) : 1.0L;
                const std::vector<T> out = this->run(k, x, flag);
                EXPECT_LE(relative_error(out.data(), ref, exact_scale), this->kTolerance) << "flag " << flag;
            }
        }
    }
}

TYPED_TEST(ComplexKernels, ScaledResultIsUnscaledTimesScaleRoundedOnce) {
    using T = typename TestFixture::T;
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(k.length);
        const std::vector<T> x = this->random_signal(k.length, 11);
        const std::vector<T> plain = this->run(k, x, tqfNoDivByAny);
        for (int flag : this->kFlags) {
            const T s = this->expected_scale(k.length, flag);
            std::vector<T> want(plain.size());
            for (size_t i = 0; i < plain.size(); ++i) want[i] = plain[i] * s;
            this->expect_same_bits(this->run(k, x, flag), want);
        }
    }
}

// The single-precision kernels of 47 and 59 run element 0 through a
// zero-padded convolution like every other element: their bins are within
// rounding of the scale, not exact. Every other kernel gives it exactly.
template <class T>
bool impulse_goes_through_convolution(int length) {
    return sizeof(T) == 4 && (length == 47 || length == 59);
}

TYPED_TEST(ComplexKernels, ImpulseGivesTheScaleExactly) {
    using T = typename TestFixture::T;
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(k.length);
        std::vector<T> x(2 * k.length, T(0));
        x[0] = T(1);
        for (int flag : this->kFlags) {
            const T s = this->expected_scale(k.length, flag);
            const std::vector<T> out = this->run(k, x, flag);
            if (impulse_goes_through_convolution<T>(k.length)) {
                for (int i = 0; i < k.length; ++i) {
                    ASSERT_NEAR(out[2 * i], s, 3e-7 * s) << "bin " << i << " flag " << flag;
                    ASSERT_NEAR(out[2 * i + 1], T(0), 3e-7 * s) << "bin " << i << " flag " << flag;
                }
                continue;
            }
            for (int i = 0; i < k.length; ++i) {
                if (bits(out[2 * i]) == bits(s) && out[2 * i + 1] == T(0)) continue;
                ADD_FAILURE() << "length " << k.length << " flag " << flag << ": bin " << i << " is "
                              << std::hexfloat << out[2 * i] << ", " << out[2 * i + 1] << ", the scale is " << s;
                break;
            }
        }
    }
}

// The scale constants whose bits the contract names.
TEST(ComplexForwardScale, NamedSingleScaleBits) {
    tqf32fc x[3] = {{1, 0}, {0, 0}, {0, 0}}, y[3];
    ASSERT_EQ(tqfgDFTFwd_CToC_3_32fc(x, y, tqfDivFwdByN), tqfStsNoError);
    EXPECT_EQ(bits(y[1].re), 0x3EAAAAABu);
    ASSERT_EQ(tqfgDFTFwd_CToC_3_32fc(x, y, tqfDivBySqrtN), tqfStsNoError);
    EXPECT_EQ(bits(y[2].re), 0x3F13CD3Au);
}

TYPED_TEST(ComplexKernels, ImpulseAtOneGivesTheRoots) {
    using T = typename TestFixture::T;
    const long double pi = 3.141592653589793238462643383279502884L;
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(k.length);
        std::vector<T> x(2 * k.length, T(0));
        x[2] = T(1);
        const std::vector<T> out = this->run(k, x, tqfNoDivByAny);
        for (int i = 0; i < k.length; ++i) {
            const long double a = this->kSign * 2 * pi * i / k.length;
            EXPECT_NEAR(out[2 * i], cosl(a), 4 * this->kTolerance);
            EXPECT_NEAR(out[2 * i + 1], sinl(a), 4 * this->kTolerance);
        }
    }
}

TYPED_TEST(ComplexKernels, MemoryPathsAndInPlaceGiveTheSameBits) {
    using T = typename TestFixture::T;
    using C = typename Complex<T>::type;
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(k.length);
        const std::vector<T> x = this->random_signal(k.length, 23);
        for (int flag : this->kFlags) {
            const std::vector<T> ref = this->run(k, x, flag);
            this->expect_same_bits(this->run(k, x, flag, 8, 0), ref);
            this->expect_same_bits(this->run(k, x, flag, 0, 8), ref);
            this->expect_same_bits(this->run(k, x, flag, 8, 8), ref);
            for (size_t off : {size_t(0), size_t(8)}) {
                GuardedBuffer buf(x.size() * sizeof(T), off);
                std::memcpy(buf.bytes(), x.data(), buf.size());
                ASSERT_EQ(k.fn(buf.as<C>(), buf.as<C>(), flag), tqfStsNoError);
                EXPECT_TRUE(buf.guards_intact());
                std::vector<T> out(x.size());
                std::memcpy(out.data(), buf.bytes(), buf.size());
                this->expect_same_bits(out, ref);
            }
        }
    }
}

TYPED_TEST(ComplexKernels, StatusesInOrderAndNothingWrittenOnFailure) {
    using T = typename TestFixture::T;
    using C = typename Complex<T>::type;
    const int bad_flags[] = {0, 3, 5, 16, -1, 9, 0x7fffffff};
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(k.length);
        for (size_t src_off : {size_t(0), size_t(8)}) {
            for (size_t dst_off : {size_t(0), size_t(8)}) {
                const size_t bytes = 2 * k.length * sizeof(T);
                GuardedBuffer src(bytes, src_off), dst(bytes, dst_off);
                src.fill_pattern(1);
                dst.fill_pattern(2);
                std::vector<unsigned char> before(dst.bytes(), dst.bytes() + bytes);
                auto untouched = [&] { return dst.payload_equals(before.data()) && dst.guards_intact(); };
                const C* s = src.as<C>();
                C* d = dst.as<C>();
                for (int flag : {int(tqfNoDivByAny), 3}) {
                    EXPECT_EQ(k.fn(nullptr, d, flag), tqfStsNullPointer);
                    EXPECT_EQ(k.fn(s, nullptr, flag), tqfStsNullPointer);
                    EXPECT_EQ(k.fn(nullptr, nullptr, flag), tqfStsNullPointer);
                }
                for (int flag : bad_flags) EXPECT_EQ(k.fn(s, d, flag), tqfStsBadFlag) << flag;
                EXPECT_TRUE(untouched());
            }
        }
    }
}

}  // namespace
