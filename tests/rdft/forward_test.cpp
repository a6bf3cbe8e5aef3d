// Forward real kernels, CCS, Pack and Perm, both precisions, every length:
// values against a long-double direct sum placed by this test's own slot
// map, the explicit zeros, the identities between formats, flags, memory
// paths and in-place calls, and the generic entries giving the fixed
// kernels' bits (statuses of every name: tests/hardening).
#include <gtest/gtest.h>

#include <limits>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "guarded.h"
#include "rdft_support.h"
#include "scale_constants.h"

namespace {

using namespace tqftest;

constexpr int kFlags[] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};

template <class T>
class RealForward : public ::testing::Test {
protected:
    // Largest error relative to the largest harmonic's magnitude: rounding
    // gives up to about 2.4e-7 in single precision (1/sqrt(N) rounded to
    // float takes part of that) and 4e-16 in double.
    static constexpr long double kTolerance = sizeof(T) == 4 ? 4e-7L : 2e-15L;

    static std::vector<RealKernel<T>> kernels() { return forward_real_kernels<T>(); }
    static std::string trace(const RealKernel<T>& k, int flag) {
        return k.name + " flag=" + std::to_string(flag);
    }
    static std::vector<T> random_signal(int n, unsigned seed) {
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        std::vector<T> v(n);
        for (T& x : v) x = static_cast<T>(u(rng));
        return v;
    }
    // Out of place, src and dst at byte offsets from 64-byte alignment; dst
    // starts as a pattern so that an element left unwritten shows.
    static std::vector<T> run(const RealKernel<T>& k, const std::vector<T>& x, int flag, size_t src_off = 0,
                              size_t dst_off = 0) {
        const size_t len = spectrum_length(k.format, k.length);
        GuardedBuffer src(x.size() * sizeof(T), src_off), dst(len * sizeof(T), dst_off);
        std::memcpy(src.bytes(), x.data(), src.size());
        dst.fill_pattern(0x3c);
        EXPECT_EQ(k.fn(src.as<T>(), dst.as<T>(), flag), tqfStsNoError);
        EXPECT_TRUE(dst.guards_intact()) << "wrote outside the " << len << " output elements";
        EXPECT_TRUE(src.payload_equals(x.data())) << "changed the input";
        std::vector<T> out(len);
        std::memcpy(out.data(), dst.bytes(), dst.size());
        return out;
    }
    // src == dst, a buffer of the output's length holding the input first.
    static std::vector<T> run_in_place(const RealKernel<T>& k, const std::vector<T>& x, int flag, size_t off) {
        const size_t len = spectrum_length(k.format, k.length);
        GuardedBuffer buf(len * sizeof(T), off);
        buf.fill_pattern(0x5a);
        std::memcpy(buf.bytes(), x.data(), x.size() * sizeof(T));
        EXPECT_EQ(k.fn(buf.as<T>(), buf.as<T>(), flag), tqfStsNoError);
        EXPECT_TRUE(buf.guards_intact()) << "wrote outside the buffer";
        std::vector<T> out(len);
        std::memcpy(out.data(), buf.bytes(), buf.size());
        return out;
    }
    static void expect_same_bits(const std::vector<T>& got, const std::vector<T>& want) {
        ASSERT_EQ(got.size(), want.size());
        for (size_t i = 0; i < got.size(); ++i)
            ASSERT_EQ(bits(got[i]), bits(want[i])) << "element " << i << ": " << got[i] << " vs " << want[i];
    }
};

using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(RealForward, Precisions);

TYPED_TEST(RealForward, TableHoldsEveryLengthOfEachFormat) {
    const auto ks = this->kernels();
    ASSERT_EQ(ks.size(), 3u * 63u);
    for (size_t i = 0; i < ks.size(); ++i) {
        EXPECT_EQ(ks[i].format, kFormats[i / 63]) << ks[i].name;
        EXPECT_EQ(ks[i].length, static_cast<int>(2 + i % 63)) << ks[i].name;
    }
}

TYPED_TEST(RealForward, AgreesWithDirectSumInItsSlots) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        const int n = k.length;
        const std::vector<Slot> map = slot_map(k.format, n);
        for (unsigned seed = 1; seed <= 3; ++seed) {
            const std::vector<T> x = this->random_signal(n, seed * 1000 + n);
            const std::vector<cld> ref = real_dft(std::vector<long double>(x.begin(), x.end()));
            for (int flag : kFlags) {
                SCOPED_TRACE(this->trace(k, flag));
                const long double s = flag == tqfDivFwdByN ? 1.0L / n : flag == tqfDivBySqrtN ? 1 / sqrtl(n) : 1.0L;
                long double peak = 0, worst = 0;
                for (const cld& X : ref) peak = std::max(peak, std::abs(X) * s);
                const std::vector<T> out = this->run(k, x, flag);
                for (size_t i = 0; i < map.size(); ++i) {
                    if (map[i].part == Part::Zero) {
                        EXPECT_EQ(bits(out[i]), bits(T(0))) << "element " << i << " is " << out[i];
                        continue;
                    }
                    const cld X = ref[map[i].k] * s;
                    worst = std::max(worst, fabsl(out[i] - (map[i].part == Part::Re ? X.real() : X.imag())));
                }
                EXPECT_LE(worst / peak, this->kTolerance);
            }
        }
    }
}

// x[n] = cos(2 pi k n / N) + sin(2 pi k n / N) / 2 puts N/2 - i N/4 at an
// interior harmonic k (N at k = 0 and k = N/2) and nothing elsewhere.
TYPED_TEST(RealForward, ToneLandsInItsHarmonicsSlots) {
    using T = TypeParam;
    const long double pi = 3.141592653589793238462643383279502884L;
    for (const auto& k : this->kernels()) {
        const int n = k.length;
        const std::vector<Slot> map = slot_map(k.format, n);
        for (int h = 0; h <= n / 2; ++h) {
            std::vector<T> x(n);
            for (int j = 0; j < n; ++j) {
                const long double a = 2 * pi * (j * h % n) / n;
                x[j] = static_cast<T>(cosl(a) + sinl(a) / 2);
            }
            const bool real_only = h == 0 || 2 * h == n;
            for (int flag : {tqfNoDivByAny, tqfDivInvByN}) {
                SCOPED_TRACE(this->trace(k, flag) + " harmonic " + std::to_string(h));
                const std::vector<T> out = this->run(k, x, flag);
                for (size_t i = 0; i < map.size(); ++i) {
                    long double want = 0;
                    if (map[i].k == h && map[i].part == Part::Re) want = real_only ? n : n / 2.0L;
                    if (map[i].k == h && map[i].part == Part::Im && !real_only) want = -n / 4.0L;
                    EXPECT_NEAR(out[i], want, 4 * this->kTolerance * n) << "element " << i;
                }
            }
        }
    }
}

// One program per length: the formats differ in where a harmonic is
// stored, never in its bits; odd-length Pack and Perm are the same array.
TYPED_TEST(RealForward, FormatsHoldTheSameBitsPerHarmonic) {
    using T = TypeParam;
    const auto ks = this->kernels();
    for (int i = 0; i < 63; ++i) {
        const int n = ks[i].length;
        const std::vector<T> x = this->random_signal(n, 77 + n);
        for (int flag : kFlags) {
            std::vector<T> outs[3];
            for (int f = 0; f < 3; ++f) outs[f] = this->run(ks[i + 63 * f], x, flag);
            std::vector<Slot> ccs = slot_map(Format::CCS, n);
            for (int f = 1; f < 3; ++f) {
                SCOPED_TRACE(this->trace(ks[i + 63 * f], flag));
                const std::vector<Slot> map = slot_map(kFormats[f], n);
                for (size_t e = 0; e < map.size(); ++e) {
                    size_t c = 0;
                    while (ccs[c].k != map[e].k || ccs[c].part != map[e].part) ++c;
                    EXPECT_EQ(bits(outs[f][e]), bits(outs[0][c])) << "element " << e << " vs CCS element " << c;
                }
            }
            if (n % 2 == 1) this->expect_same_bits(outs[2], outs[1]);
        }
    }
}

// Flag 2 is flag 8. The double kernels multiply their unscaled result by
// the nearest double to 1/N or 1/sqrt(N); the float kernels may scale a
// double intermediate, so a float result is within its rounding of
// out(8) times the scale. A quarter is exact in either.
TYPED_TEST(RealForward, ScaledResultsFollowTheUnscaledOne) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        const std::vector<T> x = this->random_signal(k.length, 5 + k.length);
        const std::vector<T> plain = this->run(k, x, tqfNoDivByAny);
        {
            SCOPED_TRACE(this->trace(k, tqfDivInvByN));
            this->expect_same_bits(this->run(k, x, tqfDivInvByN), plain);
        }
        for (int flag : {tqfDivFwdByN, tqfDivBySqrtN}) {
            SCOPED_TRACE(this->trace(k, flag));
            const T s = scale_value<T>(k.length, flag, flag == tqfDivFwdByN);
            const std::vector<T> out = this->run(k, x, flag);
            std::vector<T> want(plain.size());
            for (size_t i = 0; i < plain.size(); ++i) want[i] = plain[i] * s;
            if (sizeof(T) == 8 || (k.length == 16 && flag == tqfDivBySqrtN)) {
                this->expect_same_bits(out, want);
                continue;
            }
            for (size_t i = 0; i < out.size(); ++i) {
                const double exact = static_cast<double>(plain[i]) * s;
                EXPECT_LE(std::fabs(out[i] - exact), std::ldexp(std::fabs(exact), -23)) << "element " << i;
            }
        }
    }
}

// An impulse at 0 makes X[0] = 1 by additions alone: element 0 is the
// kernel's scale constant itself.
TYPED_TEST(RealForward, ImpulseShowsTheScaleConstant) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        std::vector<T> x(k.length, T(0));
        x[0] = T(1);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const T s = scale_value<T>(k.length, flag, flag == tqfDivFwdByN);
            EXPECT_EQ(bits(this->run(k, x, flag)[0]), bits(s)) << std::hexfloat << "want " << s;
        }
    }
}

// A zero input gives +0.0 everywhere; the explicit zeros of CCS are +0.0
// whatever the input, NaN and infinities included.
TYPED_TEST(RealForward, ZerosArePositive) {
    using T = TypeParam;
    const T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
    for (const auto& k : this->kernels()) {
        const int n = k.length;
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            for (T v : this->run(k, std::vector<T>(n, T(0)), flag)) ASSERT_EQ(bits(v), bits(T(0))) << v;
            if (k.format != Format::CCS) continue;
            std::vector<T> one_nan = this->random_signal(n, 9), infinities(n, T(-1));
            one_nan[n / 2] = nan;
            infinities[0] = inf, infinities[n - 1] = -inf;
            const std::vector<std::vector<T>> inputs = {std::vector<T>(n, T(-1)), std::vector<T>(n, T(-0.0)),
                                                        std::vector<T>(n, nan), this->random_signal(n, 9), one_nan,
                                                        infinities};
            for (size_t which = 0; which < inputs.size(); ++which) {
                const std::vector<T> out = this->run(k, inputs[which], flag);
                EXPECT_EQ(bits(out[1]), bits(T(0))) << "input " << which << ": element 1 is " << out[1];
                if (n % 2 == 0) {
                    EXPECT_EQ(bits(out[n + 1]), bits(T(0))) << "input " << which << ": element N+1 is " << out[n + 1];
                }
            }
        }
    }
}

// Element-aligned (4 bytes for float, 8 for double) src and dst and src ==
// dst give the bits of the 16-byte aligned out-of-place call.
TYPED_TEST(RealForward, MemoryPathsAndInPlaceGiveTheSameBits) {
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
            for (size_t off : {size_t(0), odd}) this->expect_same_bits(this->run_in_place(k, x, flag, off), ref);
        }
    }
}

TYPED_TEST(RealForward, GenericIsTheFixedKernel) {
    using T = TypeParam;
    const auto generics = forward_real_generics<T>();
    for (const auto& k : this->kernels()) {
        const auto& g = generics[static_cast<int>(k.format)];
        const std::vector<T> x = this->random_signal(k.length, 41 + k.length);
        const size_t len = spectrum_length(k.format, k.length);
        for (int flag : {1, 2, 4, 8}) {
            SCOPED_TRACE(g.name + " length " + std::to_string(k.length) + " flag " + std::to_string(flag));
            GuardedBuffer dst(len * sizeof(T), 0);
            dst.fill_pattern(6);
            ASSERT_EQ(g.fn(x.data(), dst.as<T>(), k.length, flag), tqfStsNoError);
            EXPECT_TRUE(dst.guards_intact());
            std::vector<T> out(len);
            std::memcpy(out.data(), dst.bytes(), dst.size());
            this->expect_same_bits(out, this->run(k, x, flag));
        }
    }
}

}  // namespace
