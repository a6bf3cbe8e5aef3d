// Inverse real kernels, from CCS, Pack and Perm, both precisions, every
// length: values against a long-double sum of the harmonics this test reads
// from each format's slots, the slots never read, round trips through the
// forward kernels, the identities between formats and the orders of
// accumulation where they part, flags, memory paths and in-place calls,
// and the generic entries giving the fixed kernels' bits (statuses of
// every name: tests/hardening).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
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

// The lengths at which the layouts keep orders of accumulation of their
// own (the same products and sums, associated differently), and the layout
// that sums apart from the other two there. Everywhere else all three run
// one program.
struct OwnOrder {
    int n;
    Format apart;
};
constexpr OwnOrder kOwnOrders[] = {
    {7, Format::CCS}, {49, Format::CCS}, {20, Format::Pack}, {40, Format::Pack}, {50, Format::Pack},
};

bool same_order(Format a, Format b, int n) {
    for (const OwnOrder& o : kOwnOrders)
        if (o.n == n) return (a == o.apart) == (b == o.apart);
    return true;
}

// The elements of layout f that hold the harmonics of a CCS spectrum.
template <class T>
std::vector<T> placed_in(Format f, int n, const std::vector<T>& ccs) {
    const std::vector<Slot> ccs_map = slot_map(Format::CCS, n), map = slot_map(f, n);
    std::vector<T> placed(map.size());
    for (size_t e = 0; e < map.size(); ++e) {
        size_t c = 0;
        while (ccs_map[c].k != map[e].k || ccs_map[c].part != map[e].part) ++c;
        placed[e] = ccs[c];
    }
    return placed;
}

constexpr std::pair<Format, Format> kFormatPairs[] = {
    {Format::CCS, Format::Pack}, {Format::CCS, Format::Perm}, {Format::Pack, Format::Perm}};

// Layouts of one order give the same bits for the same harmonics; layouts of
// different orders give results that differ, on some of a few random
// spectra, in the last bits only.
TYPED_TEST(RealInverse, LayoutsDifferOnlyInTheirOrderOfAccumulation) {
    using T = TypeParam;
    const auto ks = this->kernels();
    for (int i = 0; i < 63; ++i) {
        const int n = ks[i].length;
        for (const auto& [f, g] : kFormatPairs) {
            const auto &kf = ks[i + 63 * static_cast<int>(f)], &kg = ks[i + 63 * static_cast<int>(g)];
            bool differ = false;
            for (unsigned seed = 0; seed < (same_order(f, g, n) ? 1u : 8u); ++seed) {
                const std::vector<T> ccs = this->random_spectrum(ks[i], 91 + 100 * seed + n);
                for (int flag : kFlags) {
                    SCOPED_TRACE(this->trace(kf, flag) + " and " + kg.name + " seed " + std::to_string(seed));
                    const std::vector<T> a = this->run(kf, placed_in(f, n, ccs), flag);
                    const std::vector<T> b = this->run(kg, placed_in(g, n, ccs), flag);
                    if (same_order(f, g, n)) {
                        this->expect_same_bits(a, b);
                        continue;
                    }
                    long double peak = 0, worst = 0;
                    for (int j = 0; j < n; ++j) {
                        peak = std::max<long double>(peak, std::fabs(a[j]));
                        worst = std::max<long double>(worst, fabsl(static_cast<long double>(a[j]) - b[j]));
                        differ |= bits(a[j]) != bits(b[j]);
                    }
                    EXPECT_LE(worst / peak, 2 * this->kTolerance);
                }
            }
            if (!same_order(f, g, n)) EXPECT_TRUE(differ) << kf.name << " and " << kg.name << " sum in one order";
        }
    }
}

// The 7-point program evaluated by hand in a given order of accumulation of
// its rows (0: R0, k: harmonic k; the sine rows skip 0): products of the
// doubled harmonics with the constants in double, each cosine and sine row
// summed in double and rounded once to T, x[j] and x[7-j] their difference
// and sum in T, x[0] summed in T. Unscaled.
template <class T>
std::vector<T> seven_point_in_order(const std::vector<cld>& X, const std::vector<int>& order) {
    const long double pi = acosl(-1.0L);
    // cos and sin of 2 pi r / 7, from the turn reduced to 0..3 sevenths.
    const auto cos7 = [&](int r) { r %= 7; return static_cast<double>(cosl(2 * pi * std::min(r, 7 - r) / 7)); };
    const auto sin7 = [&](int r) {
        r %= 7;
        const double s = static_cast<double>(sinl(2 * pi * std::min(r, 7 - r) / 7));
        return r <= 3 ? s : -s;
    };
    std::vector<T> r(4), twice_re(4), twice_im(4);
    for (int k = 0; k < 4; ++k) {
        r[k] = static_cast<T>(X[k].real());
        twice_re[k] = 2 * r[k];
        twice_im[k] = 2 * static_cast<T>(X[k].imag());
    }
    // Row j: R0 (k = 0) and the products, summed in order in the type of acc.
    const auto row = [&](auto acc, int j, bool cosines) {
        bool first = true;
        for (int k : order) {
            if (k == 0 && !cosines) continue;
            const decltype(acc) term = k == 0 ? r[0]
                                       : cosines ? twice_re[k] * (j == 0 ? 1.0 : cos7(j * k))
                                                 : twice_im[k] * sin7(j * k);
            acc = first ? term : acc + term;
            first = false;
        }
        return acc;
    };
    std::vector<T> x(7);
    x[0] = row(T(0), 0, true);  // no products: summed in T
    for (int j = 1; j <= 3; ++j) {
        const double a = row(0.0, j, true), b = row(0.0, j, false);
        x[j] = static_cast<T>(a) - static_cast<T>(b);
        x[7 - j] = static_cast<T>(a) + static_cast<T>(b);
    }
    return x;
}

// At N = 7 each layout's rows take the harmonics in its own order: CCS 1, 3,
// 2 and Pack and Perm 1, 2, 3, R0 first. The kernel gives the bits of the
// evaluation in its order, and on some of the spectra not those of the other.
TYPED_TEST(RealInverse, SevenPointRowsFollowTheirLayoutsOrder) {
    using T = TypeParam;
    const std::vector<int> ccs_order = {0, 1, 3, 2}, pack_order = {0, 1, 2, 3};
    const auto ks = this->kernels();
    for (Format f : kFormats) {
        const auto& k = ks[5 + 63 * static_cast<int>(f)];
        ASSERT_EQ(k.length, 7);
        const std::vector<int>& own = f == Format::CCS ? ccs_order : pack_order;
        const std::vector<int>& other = f == Format::CCS ? pack_order : ccs_order;
        bool other_differs = false;
        for (unsigned seed = 0; seed < 16; ++seed) {
            SCOPED_TRACE(k.name + " seed " + std::to_string(seed));
            const std::vector<T> spectrum = placed_in(f, 7, this->random_spectrum(ks[5], 700 + seed));
            const std::vector<cld> X =
                read_spectrum(f, 7, std::vector<long double>(spectrum.begin(), spectrum.end()));
            const std::vector<T> out = this->run(k, spectrum, tqfNoDivByAny);
            this->expect_same_bits(out, seven_point_in_order<T>(X, own));
            const std::vector<T> theirs = seven_point_in_order<T>(X, other);
            for (int j = 0; j < 7; ++j) other_differs |= bits(out[j]) != bits(theirs[j]);
        }
        EXPECT_TRUE(other_differs) << k.name << ": the spectra do not tell the two orders apart";
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
