// Every complex kernel's program, as the generator builds it, against the
// direct sum: the graph is run in long double on seeded random inputs, so a
// wrong twiddle, a misplaced output or a lost sign shows as an error of the
// order of the data, while a right program is off by its constants' rounding
// only. The scale is not part of the graph (the emitter applies it), so the
// reference is the unscaled transform.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalog.h"
#include "dft_oracle.h"
#include "graph_eval.h"

namespace {

using tqftest::cld;

struct Spec {
    std::string family;     // "cfwd" or "cinv"
    std::string precision;  // "32fc" or "64fc"
    int length;
};

void PrintTo(const Spec& s, std::ostream* os) { *os << s.family << ":" << s.precision << ":" << s.length; }

std::vector<Spec> all_kernels() {
    std::vector<Spec> v;
    for (const char* f : {"cfwd", "cinv"})
        for (const char* p : {"32fc", "64fc"})
            for (int n = 2; n <= 64; ++n) v.push_back({f, p, n});
    return v;
}

// Errors relative to the largest reference output. Single-precision packed
// kernels hold their constants as floats (relative rounding up to 6e-8, and
// a few of them meet in each output), the rest as doubles: a right program
// stays near 1e-7 and 1e-16 respectively. The bounds leave a margin of about
// ten over the worst seen. A fault (a wrong twiddle, a swapped output) is an
// error near 1e-1 or more; a double constant off by 1e-13 of itself already
// shows as about 5e-15.
constexpr long double kBound32 = 1e-6L;
constexpr long double kBound64 = 2e-15L;

struct Error {
    long double max = 0, rms = 0;
};

Error compare(const std::vector<cld>& got, const std::vector<cld>& ref) {
    long double peak = 0, worst = 0, sq = 0;
    for (size_t k = 0; k < ref.size(); ++k) {
        peak = std::max(peak, std::abs(ref[k]));
        const long double e = std::abs(got[k] - ref[k]);
        worst = std::max(worst, e);
        sq += e * e;
    }
    const long double rms = std::sqrt(sq / static_cast<long double>(ref.size()));
    return {worst / peak, rms / peak};
}

// The worst errors seen, by precision, printed once all kernels have run.
struct Worst {
    Error err;
    std::string max_at, rms_at;
};
std::map<std::string, Worst>& worst_seen() {
    static std::map<std::string, Worst> w;
    return w;
}

class WorstReport : public ::testing::Environment {
public:
    void TearDown() override {
        for (const auto& [prec, w] : worst_seen())
            std::printf("[ worst    ] %s: max relative error %.3Le (%s), rms %.3Le (%s)\n", prec.c_str(), w.err.max,
                        w.max_at.c_str(), w.err.rms, w.rms_at.c_str());
    }
};
::testing::Environment* const kWorstReport = ::testing::AddGlobalTestEnvironment(new WorstReport);

std::vector<cld> random_input(int n, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<cld> x(n);
    for (cld& v : x) {
        const long double re = u(rng), im = u(rng);
        v = cld(re, im);
    }
    return x;
}

class Construction : public ::testing::TestWithParam<Spec> {};

TEST_P(Construction, MatchesDirectSum) {
    const Spec& s = GetParam();
    tqfgen::Kernel k;
    try {
        tqfcdft::build_complex_kernel(k, s.family, s.precision, s.length);
    } catch (const std::exception& e) {
        FAIL() << "building: " << e.what();
    }
    ASSERT_EQ(k.length, s.length);
    const int sign = s.family == "cfwd" ? -1 : +1;
    const long double bound = s.precision == "32fc" ? kBound32 : kBound64;
    const std::string name = s.family + "_" + s.precision + "_" + std::to_string(s.length);
    Worst& w = worst_seen()[s.precision];
    for (unsigned seed : {1u, 2u, 3u}) {
        const std::vector<cld> x = random_input(s.length, 1000u * s.length + seed);
        std::vector<cld> got;
        try {
            got = tqftest::evaluate_kernel(k, x);
        } catch (const std::exception& e) {
            FAIL() << "evaluating: " << e.what();
        }
        const Error e = compare(got, tqftest::direct_dft(x, sign));
        EXPECT_LT(e.max, bound) << name << " seed " << seed << ": rms " << static_cast<double>(e.rms);
        if (e.max > w.err.max) w.err.max = e.max, w.max_at = name;
        if (e.rms > w.err.rms) w.err.rms = e.rms, w.rms_at = name;
    }
}

INSTANTIATE_TEST_SUITE_P(Complex, Construction, ::testing::ValuesIn(all_kernels()),
                         [](const ::testing::TestParamInfo<Spec>& i) {
                             return i.param.family + "_" + i.param.precision + "_" + std::to_string(i.param.length);
                         });

}  // namespace
