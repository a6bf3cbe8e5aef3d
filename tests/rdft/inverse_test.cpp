// Inverse real kernels, from CCS, Pack and Perm, both precisions, every
// length: values against a long-double sum of the harmonics this test reads
// from each format's slots, the slots never read, round trips through the
// forward kernels, the identities between formats, flags, memory paths and
// in-place calls, statuses and the generic entries.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "guarded.h"
#include "rdft_support.h"
#include "scale_constants.h"

namespace {

using namespace tqftest;

constexpr int kFlags[] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};

template <class T>
class RealInverse : public ::testing::Test {
protected:
    // Largest error relative to the largest output: rounding of the sums and
    // of the constants gives up to about 2e-7 in single precision (1/sqrt(N)
    // rounded to float takes part of that) and 6e-16 in double.
    static constexpr long double kTolerance = sizeof(T) == 4 ? 4e-7L : 2e-15L;

    static std::vector<RealKernel<T>> kernels() { return inverse_real_kernels<T>(); }
    static std::string trace(const RealKernel<T>& k, int flag) {
        return k.name + " flag=" + std::to_string(flag);
    }
    // The inverse divides by N for its own flag, 2.
    static T scale(int n, int flag) { return scale_value<T>(n, flag, flag == tqfDivInvByN); }
    static std::vector<T> random_values(size_t count, unsigned seed) {
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        std::vector<T> v(count);
        for (T& x : v) x = static_cast<T>(u(rng));
        return v;
    }
    // Every element random, the never-read ones of CCS included.
    static std::vector<T> random_spectrum(const RealKernel<T>& k, unsigned seed) {
        return random_values(spectrum_length(k.format, k.length), seed);
    }
    // Out of place, src and dst at byte offsets from 64-byte alignment; dst
    // starts as a pattern so that an element left unwritten shows.
    static std::vector<T> run(const RealKernel<T>& k, const std::vector<T>& spectrum, int flag, size_t src_off = 0,
                              size_t dst_off = 0) {
        const size_t n = static_cast<size_t>(k.length);
        GuardedBuffer src(spectrum.size() * sizeof(T), src_off), dst(n * sizeof(T), dst_off);
        std::memcpy(src.bytes(), spectrum.data(), src.size());
        dst.fill_pattern(0x3c);
        EXPECT_EQ(k.fn(src.as<T>(), dst.as<T>(), flag), tqfStsNoError);
        EXPECT_TRUE(dst.guards_intact()) << "wrote outside the " << n << " output elements";
        EXPECT_TRUE(src.payload_equals(spectrum.data())) << "changed the input";
        std::vector<T> out(n);
        std::memcpy(out.data(), dst.bytes(), dst.size());
        return out;
    }
    // src == dst, a buffer of the spectrum's length: the N outputs replace
    // its first N elements, the rest (CCS) stays as it was.
    static std::vector<T> run_in_place(const RealKernel<T>& k, const std::vector<T>& spectrum, int flag,
                                       size_t off) {
        const size_t n = static_cast<size_t>(k.length);
        GuardedBuffer buf(spectrum.size() * sizeof(T), off);
        std::memcpy(buf.bytes(), spectrum.data(), buf.size());
        EXPECT_EQ(k.fn(buf.as<T>(), buf.as<T>(), flag), tqfStsNoError);
        EXPECT_TRUE(buf.guards_intact()) << "wrote outside the buffer";
        std::vector<T> all(spectrum.size());
        std::memcpy(all.data(), buf.bytes(), buf.size());
        for (size_t e = n; e < all.size(); ++e)
            EXPECT_EQ(bits(all[e]), bits(spectrum[e])) << "wrote element " << e << " past the N outputs";
        return std::vector<T>(all.begin(), all.begin() + static_cast<long>(n));
    }
    static void expect_same_bits(const std::vector<T>& got, const std::vector<T>& want) {
        ASSERT_EQ(got.size(), want.size());
        for (size_t i = 0; i < got.size(); ++i)
            ASSERT_EQ(bits(got[i]), bits(want[i])) << "element " << i << ": " << std::hexfloat << got[i] << " vs "
                                                   << want[i];
    }
};

using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(RealInverse, Precisions);

TYPED_TEST(RealInverse, TableHoldsEveryLengthOfEachFormat) {
    const auto ks = this->kernels();
    ASSERT_EQ(ks.size(), 3u * 63u);
    for (size_t i = 0; i < ks.size(); ++i) {
        EXPECT_EQ(ks[i].format, kFormats[i / 63]) << ks[i].name;
        EXPECT_EQ(ks[i].length, static_cast<int>(2 + i % 63)) << ks[i].name;
    }
}

TYPED_TEST(RealInverse, AgreesWithTheSumOfItsHarmonics) {
    using T = TypeParam;
    long double worst_seen = 0;
    std::string worst_where;
    for (const auto& k : this->kernels()) {
        const int n = k.length;
        for (unsigned seed = 1; seed <= 3; ++seed) {
            const std::vector<T> spectrum = this->random_spectrum(k, seed * 1000 + n);
            const std::vector<long double> ref =
                real_idft(read_spectrum(k.format, n, std::vector<long double>(spectrum.begin(), spectrum.end())), n);
            for (int flag : kFlags) {
                SCOPED_TRACE(this->trace(k, flag));
                const long double s = flag == tqfDivInvByN ? 1.0L / n : flag == tqfDivBySqrtN ? 1 / sqrtl(n) : 1.0L;
                const std::vector<T> out = this->run(k, spectrum, flag);
                long double peak = 0, worst = 0;
                for (int j = 0; j < n; ++j) {
                    peak = std::max(peak, fabsl(ref[j] * s));
                    worst = std::max(worst, fabsl(out[j] - ref[j] * s));
                }
                EXPECT_LE(worst / peak, this->kTolerance);
                if (worst / peak > worst_seen) worst_seen = worst / peak, worst_where = this->trace(k, flag);
            }
        }
    }
    std::printf("[ worst    ] %.3Le relative to the largest output, %s\n", worst_seen, worst_where.c_str());
}

// CCS holds Im X[0] in element 1 and, for even N, Im X[N/2] in element N+1:
// both are zero by definition, and the kernel must not read them.
TYPED_TEST(RealInverse, ImaginaryPartsOfRealHarmonicsAreNeverRead) {
    using T = TypeParam;
    const T nan = std::numeric_limits<T>::quiet_NaN(), inf = std::numeric_limits<T>::infinity();
    for (const auto& k : this->kernels()) {
        if (k.format != Format::CCS) continue;
        const int n = k.length;
        const std::vector<Slot> map = slot_map(k.format, n);
        const std::vector<T> spectrum = this->random_spectrum(k, 17 + n);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const std::vector<T> ref = this->run(k, spectrum, flag);
            for (T junk : {nan, -nan, inf, T(0), T(1e30)}) {
                std::vector<T> changed = spectrum;
                for (size_t e = 0; e < map.size(); ++e)
                    if (map[e].part == Part::Zero) changed[e] = junk;
                this->expect_same_bits(this->run(k, changed, flag), ref);
            }
        }
    }
}

// Forward then inverse through the same layout: flags (1,1), (2,2) and (4,4)
// scale by 1/N in all, (8,8) not at all.
TYPED_TEST(RealInverse, RoundTripThroughTheForwardKernel) {
    using T = TypeParam;
    const auto fwd = forward_real_kernels<T>();
    const auto inv = this->kernels();
    ASSERT_EQ(fwd.size(), inv.size());
    const long double tolerance = sizeof(T) == 4 ? 1e-6L : 4e-15L;
    long double worst_seen = 0;
    std::string worst_where;
    for (size_t i = 0; i < inv.size(); ++i) {
        ASSERT_EQ(fwd[i].format, inv[i].format);
        ASSERT_EQ(fwd[i].length, inv[i].length);
        const int n = inv[i].length;
        const std::vector<T> x = this->random_values(n, 300 + n);
        long double peak = 0;
        for (T v : x) peak = std::max<long double>(peak, std::fabs(v));
        for (int flag : kFlags) {
            SCOPED_TRACE(fwd[i].name + " then " + this->trace(inv[i], flag));
            GuardedBuffer src(n * sizeof(T), 0), spectrum(spectrum_length(fwd[i].format, n) * sizeof(T), 0);
            std::memcpy(src.bytes(), x.data(), src.size());
            ASSERT_EQ(fwd[i].fn(src.as<T>(), spectrum.as<T>(), flag), tqfStsNoError);
            std::vector<T> X(spectrum_length(fwd[i].format, n));
            std::memcpy(X.data(), spectrum.bytes(), spectrum.size());
            const std::vector<T> back = this->run(inv[i], X, flag);
            const long double gain = flag == tqfNoDivByAny ? n : 1;
            long double worst = 0;
            for (int j = 0; j < n; ++j) worst = std::max(worst, fabsl(back[j] - gain * x[j]));
            const long double relative = worst / (gain * peak);
            EXPECT_LE(relative, tolerance);
            if (relative > worst_seen) worst_seen = relative, worst_where = this->trace(inv[i], flag);
        }
    }
    std::printf("[ worst    ] %.3Le relative to the largest input, %s\n", worst_seen, worst_where.c_str());
}

// For odd N, Pack and Perm are the same layout.
TYPED_TEST(RealInverse, OddLengthPackAndPermAreInterchangeable) {
    using T = TypeParam;
    const auto ks = this->kernels();
    for (int i = 0; i < 63; ++i) {
        const auto &pack = ks[63 + i], &perm = ks[126 + i];
        if (pack.length % 2 == 0) continue;
        const std::vector<T> spectrum = this->random_spectrum(pack, 55 + pack.length);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(pack, flag) + " and " + perm.name);
            this->expect_same_bits(this->run(perm, spectrum, flag), this->run(pack, spectrum, flag));
        }
    }
}

// One program per length: the same harmonics give the same bits from
// whichever layout they are read.
TYPED_TEST(RealInverse, FormatsGiveTheSameBitsForTheSameHarmonics) {
    using T = TypeParam;
    const auto ks = this->kernels();
    for (int i = 0; i < 63; ++i) {
        const int n = ks[i].length;
        const std::vector<Slot> ccs_map = slot_map(Format::CCS, n);
        const std::vector<T> ccs = this->random_spectrum(ks[i], 91 + n);
        for (int f = 1; f < 3; ++f) {
            const std::vector<Slot> map = slot_map(kFormats[f], n);
            std::vector<T> placed(map.size());
            for (size_t e = 0; e < map.size(); ++e) {
                size_t c = 0;
                while (ccs_map[c].k != map[e].k || ccs_map[c].part != map[e].part) ++c;
                placed[e] = ccs[c];
            }
            for (int flag : kFlags) {
                SCOPED_TRACE(this->trace(ks[i + 63 * f], flag) + " and " + ks[i].name);
                this->expect_same_bits(this->run(ks[i + 63 * f], placed, flag), this->run(ks[i], ccs, flag));
            }
        }
    }
}

// The scale is the last operation of every output and a multiplication in
// the data's precision: out(flag) is out(8) times the flag's constant,
// rounded once, bit for bit; flag 1 (the forward one) does not scale.
TYPED_TEST(RealInverse, ScaledResultsAreTheUnscaledOnesTimesTheScale) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        const std::vector<T> spectrum = this->random_spectrum(k, 5 + k.length);
        const std::vector<T> plain = this->run(k, spectrum, tqfNoDivByAny);
        for (int flag : {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN}) {
            SCOPED_TRACE(this->trace(k, flag));
            const T s = this->scale(k.length, flag);
            std::vector<T> want(plain.size());
            for (size_t i = 0; i < plain.size(); ++i) want[i] = plain[i] * s;
            this->expect_same_bits(this->run(k, spectrum, flag), want);
        }
    }
}

// 1/16 is a power of two: flag 2 at N = 16 scales the unscaled result
// exactly, whatever the precision the scale step is done in.
TYPED_TEST(RealInverse, DivisionBySixteenIsExact) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        if (k.length != 16) continue;
        for (unsigned seed = 0; seed < 8; ++seed) {
            SCOPED_TRACE(k.name + " seed " + std::to_string(seed));
            const std::vector<T> spectrum = this->random_spectrum(k, 1600 + seed);
            std::vector<T> want = this->run(k, spectrum, tqfNoDivByAny);
            for (T& v : want) v /= 16;
            this->expect_same_bits(this->run(k, spectrum, tqfDivInvByN), want);
        }
    }
}

// Only X[0] = 1: every output is 1 through additions of exact zeros, and
// then the scale constant itself.
TYPED_TEST(RealInverse, ConstantSpectrumShowsTheScaleConstant) {
    using T = TypeParam;
    for (const auto& k : this->kernels()) {
        std::vector<T> spectrum(spectrum_length(k.format, k.length), T(0));
        spectrum[0] = T(1);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const T s = this->scale(k.length, flag);
            for (T v : this->run(k, spectrum, flag)) ASSERT_EQ(bits(v), bits(s)) << std::hexfloat << v << " want " << s;
        }
    }
}

// An all-zero spectrum gives +0.0 in every output, whatever the elements
// never read hold.
TYPED_TEST(RealInverse, ZeroSpectrumGivesPositiveZeros) {
    using T = TypeParam;
    const T nan = std::numeric_limits<T>::quiet_NaN();
    for (const auto& k : this->kernels()) {
        const std::vector<Slot> map = slot_map(k.format, k.length);
        std::vector<T> zeros(map.size(), T(0)), zeros_and_junk(map.size(), T(0));
        for (size_t e = 0; e < map.size(); ++e)
            if (map[e].part == Part::Zero) zeros_and_junk[e] = e == 1 ? T(-0.0) : nan;
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            for (const auto& spectrum : {zeros, zeros_and_junk})
                for (T v : this->run(k, spectrum, flag)) ASSERT_EQ(bits(v), bits(T(0))) << v;
        }
    }
}

// Element-aligned (4 bytes for float, 8 for double) src and dst and src ==
// dst give the bits of the 64-byte aligned out-of-place call.
TYPED_TEST(RealInverse, MemoryPathsAndInPlaceGiveTheSameBits) {
    using T = TypeParam;
    const size_t odd = sizeof(T);  // aligned to the element only
    for (const auto& k : this->kernels()) {
        const std::vector<T> spectrum = this->random_spectrum(k, 31 + k.length);
        for (int flag : kFlags) {
            SCOPED_TRACE(this->trace(k, flag));
            const std::vector<T> ref = this->run(k, spectrum, flag);
            this->expect_same_bits(this->run(k, spectrum, flag, odd, 0), ref);
            this->expect_same_bits(this->run(k, spectrum, flag, 0, odd), ref);
            this->expect_same_bits(this->run(k, spectrum, flag, odd, 3 * odd), ref);
            for (size_t off : {size_t(0), odd}) this->expect_same_bits(this->run_in_place(k, spectrum, flag, off), ref);
        }
    }
}

TYPED_TEST(RealInverse, StatusesInOrderAndNothingWrittenOnFailure) {
    using T = TypeParam;
    const int bad_flags[] = {0, 3, 5, 6, 7, 9, 12, 16, -1, -2, -8, INT_MIN, INT_MAX};
    for (const auto& k : this->kernels()) {
        SCOPED_TRACE(k.name);
        GuardedBuffer src(spectrum_length(k.format, k.length) * sizeof(T), sizeof(T));
        GuardedBuffer dst(k.length * sizeof(T), 0);
        src.fill_pattern(1);
        dst.fill_pattern(2);
        const std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size());
        for (int flag : {int(tqfNoDivByAny), int(tqfDivInvByN), 3, INT_MIN}) {
            EXPECT_EQ(k.fn(nullptr, dst.as<T>(), flag), tqfStsNullPointer) << flag;
            EXPECT_EQ(k.fn(src.as<T>(), nullptr, flag), tqfStsNullPointer) << flag;
            EXPECT_EQ(k.fn(nullptr, nullptr, flag), tqfStsNullPointer) << flag;
        }
        for (int flag : bad_flags) EXPECT_EQ(k.fn(src.as<T>(), dst.as<T>(), flag), tqfStsBadFlag) << flag;
        EXPECT_TRUE(dst.payload_equals(before.data())) << "wrote on failure";
        EXPECT_TRUE(dst.guards_intact());
    }
}

// The generic entries test the length first and alone (2..64), then make
// the fixed kernel's call.
TYPED_TEST(RealInverse, GenericRefusesBadLengthFirst) {
    using T = TypeParam;
    GuardedBuffer src(66 * sizeof(T), 0), dst(66 * sizeof(T), 0);
    src.fill_pattern(3);
    dst.fill_pattern(4);
    const std::vector<unsigned char> before(dst.bytes(), dst.bytes() + dst.size());
    for (const auto& g : inverse_real_generics<T>()) {
        SCOPED_TRACE(g.name);
        for (int len : {INT_MIN, INT_MIN + 1, -2, -1, 0, 1, 65, 66, 1000, INT_MAX}) {
            EXPECT_EQ(g.fn(nullptr, nullptr, len, tqfNoDivByAny), tqfStsBadSize) << len;
            EXPECT_EQ(g.fn(nullptr, dst.as<T>(), len, 3), tqfStsBadSize) << len;
            EXPECT_EQ(g.fn(src.as<T>(), dst.as<T>(), len, 3), tqfStsBadSize) << len;
            EXPECT_EQ(g.fn(src.as<T>(), dst.as<T>(), len, tqfDivInvByN), tqfStsBadSize) << len;
        }
        for (int len : {2, 3, 64}) {
            EXPECT_EQ(g.fn(nullptr, dst.as<T>(), len, 3), tqfStsNullPointer) << len;
            EXPECT_EQ(g.fn(src.as<T>(), nullptr, len, 8), tqfStsNullPointer) << len;
            EXPECT_EQ(g.fn(src.as<T>(), dst.as<T>(), len, 3), tqfStsBadFlag) << len;
        }
    }
    EXPECT_TRUE(dst.payload_equals(before.data()));
    EXPECT_TRUE(dst.guards_intact());
}

TYPED_TEST(RealInverse, GenericIsTheFixedKernel) {
    using T = TypeParam;
    const auto generics = inverse_real_generics<T>();
    for (const auto& k : this->kernels()) {
        const auto& g = generics[static_cast<int>(k.format)];
        const std::vector<T> spectrum = this->random_spectrum(k, 41 + k.length);
        for (int flag : kFlags) {
            SCOPED_TRACE(g.name + " length " + std::to_string(k.length) + " flag " + std::to_string(flag));
            GuardedBuffer dst(k.length * sizeof(T), 0);
            dst.fill_pattern(6);
            ASSERT_EQ(g.fn(spectrum.data(), dst.as<T>(), k.length, flag), tqfStsNoError);
            EXPECT_TRUE(dst.guards_intact());
            std::vector<T> out(k.length);
            std::memcpy(out.data(), dst.bytes(), dst.size());
            this->expect_same_bits(out, this->run(k, spectrum, flag));
        }
    }
}

}  // namespace
