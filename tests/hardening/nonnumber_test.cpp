// Infinities and NaNs in the data: no entry looks at the values, so every
// call with a non-number in any position of its input returns 0, and the
// outputs follow IEEE arithmetic. Each output is a linear combination of the
// inputs; where the exact transform gives an input a coefficient that is not
// zero, every path of the program from that input leads into the output
// (otherwise finite results would be wrong), so
//  - a NaN there makes the output NaN;
//  - an infinity there makes it infinite or NaN (NaN where paths of opposite
//    signs meet, or where the program multiplies it by a zero);
//  - an output that comes out infinite has the sign of the coefficient times
//    the input's, and never comes from a zero coefficient (only products by
//    zero or sums of opposite infinities lead there, and both give NaN).
// The stored zeros of CCS stay +0.0. Walsh-Hadamard runs the plain butterfly
// network, one path from each input to each output, so an infinity gives
// exactly +-infinity everywhere. Packed single-precision complex kernels with
// trivial twiddle lanes multiply those lanes by 0.0 like the others; for
// them a single infinity must give NaN somewhere.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "surface.h"

namespace {

using namespace hardening;

constexpr int kFlags[] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};
constexpr double kPi = 3.141592653589793238462643383279502884;

// The exact transform over scalars: out[o] = sum_i coef(o, i) in[i] (before
// the scale), and which outputs are stored zeros.
struct Linear {
    size_t in = 0, out = 0;
    std::function<double(size_t o, size_t i)> coef;
    std::vector<bool> stored_zero;
};

// What output slot s of a packed spectrum of length n holds: harmonic k and
// its real (false) or imaginary (true) part, or a stored zero.
struct SpectrumSlot {
    int k;
    bool imag;
    bool zero;
};
SpectrumSlot spectrum_slot(const std::string& format, int n, int s) {
    if (format == "ccs") {
        const int k = s / 2;
        const bool imag = s % 2 == 1;
        return {k, imag, imag && (k == 0 || (n % 2 == 0 && k == n / 2))};
    }
    if (format == "perm" && n % 2 == 0) {
        if (s == 0) return {0, false, false};
        if (s == 1) return {n / 2, false, false};
        return {s / 2, s % 2 == 1, false};
    }
    // Pack, and Perm of odd length.
    if (s == 0) return {0, false, false};
    return {(s + 1) / 2, s % 2 == 0, false};
}

// cos and sin of 2 pi m / n for m = 0 .. n-1. Double is enough: only the
// signs and the zeros of the coefficients matter here (and long double is
// slow under the i386 emulator).
struct Circle {
    std::vector<double> cos, sin;
    explicit Circle(long long n) {
        for (long long m = 0; m < n; ++m) {
            cos.push_back(std::cos(2 * kPi * double(m) / double(n)));
            sin.push_back(std::sin(2 * kPi * double(m) / double(n)));
        }
    }
};

// False for a family whose transform this test does not know yet: a new
// family states its coefficients here.
bool linear_of(const AnyKernel& k, Shape shape, Linear* m) {
    const std::string family = k.family;
    const bool complex = element_type(k.precision).complex;
    const size_t scalars = complex ? 2 : 1;
    m->in = shape.in * scalars;
    m->out = shape.out * scalars;
    m->stored_zero.assign(m->out, false);
    const long long n = k.size;
    if (family == "cfwd" || family == "cinv") {
        // X[k] = sum_j x[j] (c + i s), c = cos(2 pi jk/N), s = +-sin(...):
        // Re X += c Re x - s Im x, Im X += s Re x + c Im x.
        const double sign = family == "cfwd" ? -1 : 1;
        auto circle = std::make_shared<Circle>(n);
        m->coef = [circle, sign, n](size_t o, size_t i) -> double {
            const long long kk = o / 2, j = i / 2, a = (kk * j) % n;
            const double c = circle->cos[a], s = sign * circle->sin[a];
            if (o % 2 == 0) return i % 2 == 0 ? c : -s;
            return i % 2 == 0 ? s : c;
        };
        return true;
    }
    if (family.rfind("rfwd_", 0) == 0) {
        auto slots = std::make_shared<std::vector<SpectrumSlot>>();
        for (size_t o = 0; o < m->out; ++o) {
            slots->push_back(spectrum_slot(family.substr(5), static_cast<int>(n), static_cast<int>(o)));
            m->stored_zero[o] = slots->back().zero;
        }
        auto circle = std::make_shared<Circle>(n);
        m->coef = [circle, slots, n](size_t o, size_t j) -> double {
            const SpectrumSlot& slot = (*slots)[o];
            if (slot.zero) return 0;
            const long long a = (static_cast<long long>(j) * slot.k) % n;
            return slot.imag ? -circle->sin[a] : circle->cos[a];
        };
        return true;
    }
    if (family.rfind("rinv_", 0) == 0) {
        // x[t] = R0 + (-1)^t R(n/2) + sum_k 2 (Rk cos - Ik sin)(2 pi kt/n); the
        // CCS slots of the imaginary parts of DC and Nyquist are never read.
        auto slots = std::make_shared<std::vector<SpectrumSlot>>();
        for (size_t i = 0; i < m->in; ++i)
            slots->push_back(spectrum_slot(family.substr(5), static_cast<int>(n), static_cast<int>(i)));
        auto circle = std::make_shared<Circle>(n);
        m->coef = [circle, slots, n](size_t o, size_t i) -> double {
            const SpectrumSlot& slot = (*slots)[i];
            if (slot.zero) return 0;
            if (slot.k == 0) return 1;
            if (2 * slot.k == n) return o % 2 ? -1 : 1;
            const long long a = (static_cast<long long>(o) * slot.k) % n;
            return slot.imag ? -2 * circle->sin[a] : 2 * circle->cos[a];
        };
        return true;
    }
    if (family == "hartley") {
        auto circle = std::make_shared<Circle>(n);
        m->coef = [circle, n](size_t o, size_t i) -> double {
            const long long a = (static_cast<long long>(o) * static_cast<long long>(i)) % n;
            return circle->cos[a] + circle->sin[a];
        };
        return true;
    }
    if (family == "wht") {
        m->coef = [](size_t o, size_t i) -> double { return __builtin_popcountll(o & i) % 2 ? -1 : 1; };
        return true;
    }
    return false;
}

// Coefficients this small are zeros of the exact transform (cos(pi/2) in
// double); true ones are at least sin(2 pi / 64).
bool nonzero(double c) { return std::fabs(c) > 1e-9; }

// The positions of one input tried: all of them up to 256 scalars (every
// DFT kernel, Walsh-Hadamard to order 8); beyond, the first and last 16 and
// about 32 between them at an odd stride, so that every lane position, the
// first and last blocks and blocks across the array see some.
std::vector<size_t> positions(size_t count) {
    std::vector<size_t> p;
    if (count <= 256) {
        for (size_t i = 0; i < count; ++i) p.push_back(i);
        return p;
    }
    const size_t stride = ((count - 32) / 32) | 1;
    for (size_t i = 0; i < 16; ++i) p.push_back(i);
    for (size_t i = 16; i < count - 16; i += stride) p.push_back(i);
    for (size_t i = count - 16; i < count; ++i) p.push_back(i);
    return p;
}

double scalar_at(const std::vector<unsigned char>& v, size_t i, size_t bytes) {
    if (bytes == 4) {
        float f;
        std::memcpy(&f, &v[i * 4], 4);
        return f;
    }
    double d;
    std::memcpy(&d, &v[i * 8], 8);
    return d;
}
void set_scalar(std::vector<unsigned char>& v, size_t i, size_t bytes, double x) {
    if (bytes == 4) {
        const float f = static_cast<float>(x);
        std::memcpy(&v[i * 4], &f, 4);
    } else {
        std::memcpy(&v[i * 8], &x, 8);
    }
}
bool positive_zero(const std::vector<unsigned char>& v, size_t i, size_t bytes) {
    for (size_t b = 0; b < bytes; ++b)
        if (v[i * bytes + b] != 0) return false;
    return true;
}

// Kernels whose generator counted trivial twiddle multiplications, from the
// build's manifest: family,precision,length,name,form,adds,muls,trivial_muls,...
std::map<std::string, int> trivial_multiplications() {
    std::map<std::string, int> t;
    std::ifstream in(TQF_MANIFEST_PATH);
    std::string line;
    std::getline(in, line);
    std::vector<std::string> head;
    {
        std::stringstream ss(line);
        for (std::string cell; std::getline(ss, cell, ',');) head.push_back(cell);
    }
    size_t name_col = 0, trivial_col = 0;
    for (size_t i = 0; i < head.size(); ++i) {
        if (head[i] == "name") name_col = i;
        if (head[i] == "trivial_muls") trivial_col = i;
    }
    while (std::getline(in, line)) {
        std::vector<std::string> cells;
        std::stringstream ss(line);
        for (std::string cell; std::getline(ss, cell, ',');) cells.push_back(cell);
        if (cells.size() > std::max(name_col, trivial_col)) t[cells[name_col]] = std::stoi(cells[trivial_col]);
    }
    return t;
}

// What is wrong with an output of coefficient c on an input of value v, or
// null when it is what IEEE arithmetic gives (see the top of the file).
const char* violation(double v, double c, double out, bool one_path) {
    if (std::isnan(v)) return nonzero(c) && !std::isnan(out) ? "is not NaN" : nullptr;
    if (nonzero(c) && std::isfinite(out)) return "is finite";
    if (std::isinf(out)) {
        if (!nonzero(c)) return "is infinite from a zero coefficient";
        if ((out > 0) != ((c > 0) == (v > 0))) return "has the wrong sign";
    }
    if (one_path && !std::isinf(out)) return "is not exactly +-infinity";
    return nullptr;
}

int failures() { return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count(); }
constexpr int kEnoughFailures = 40;

// One kernel, every tried position, +inf, -inf and NaN in turn.
void check_kernel(const AnyKernel& k, const Shape& shape, const Linear& m, bool expect_nan_from_inf, long* calls) {
    const ElementType t = element_type(k.precision);
    const size_t w = t.scalar;
    const std::vector<unsigned char> base = random_scalars(m.in, w, 77u + k.size);
    std::vector<unsigned char> x, y(m.out * w);
    std::vector<unsigned char> buffer(shape.buffer_bytes + 16);
    unsigned char* buf = shape.has_buffer && shape.buffer_bytes
                             ? buffer.data() + (16 - reinterpret_cast<uintptr_t>(buffer.data()) % 16) % 16
                             : nullptr;
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    bool nan_from_inf = false;
    int flag_index = 0;
    // The butterfly network has one path from each input to each output: an
    // infinity comes out as exactly +-infinity everywhere.
    const bool one_path = std::string(k.family) == "wht";
    for (size_t p : positions(m.in)) {
        for (double v : {inf, -inf, nan}) {
            x = base;
            set_scalar(x, p, w, v);
            const int flag = kFlags[flag_index++ % 4];
            // Made only when a check fails: these loops run under the i386 emulator too.
            const auto label = [&] {
                return std::string(k.name) + " input[" + std::to_string(p) + "] = " + std::to_string(v) +
                       " flag " + std::to_string(flag);
            };
            ASSERT_EQ(call_fixed(k, x.data(), y.data(), flag, buf), tqfStsNoError) << label();
            ++*calls;
            for (size_t o = 0; o < m.out; ++o) {
                const double out = scalar_at(y, o, w);
                if (m.stored_zero[o]) {
                    if (!positive_zero(y, o, w)) ADD_FAILURE() << label() << ": stored zero " << o << " is " << out;
                    continue;
                }
                const double c = m.coef(o, p);
                if (std::isnan(out) && !std::isnan(v)) nan_from_inf = true;
                if (const char* why = violation(v, c, out, one_path))
                    ADD_FAILURE() << label() << ": output " << o << " = " << out << " " << why << " (coefficient "
                                  << c << ")";
            }
            if (failures() >= kEnoughFailures) return;
        }
    }
    if (expect_nan_from_inf)
        EXPECT_TRUE(nan_from_inf) << k.name << ": no NaN from any single infinity, though it has trivial twiddle lanes";
}

TEST(NonNumbers, EveryFixedKernelEveryPosition) {
    const std::map<std::string, int> trivial = trivial_multiplications();
    ASSERT_FALSE(trivial.empty()) << "no manifest at " << TQF_MANIFEST_PATH;
    long calls = 0;
    for (const AnyKernel& k : tqftest::all_kernels) {
        Shape shape;
        Linear m;
        if (!shape_of(k, &shape) || !linear_of(k, shape, &m)) {
            ADD_FAILURE() << k.name << ": no element counts or no transform matrix for family " << k.family
                          << " (tests/hardening/surface.cpp, linear_of() here)";
            continue;
        }
        const auto row = trivial.find(k.name);
        const bool packed_complex_float = std::string(k.precision) == "32fc" && k.size >= 6;
        const bool with_trivial_lanes = packed_complex_float && row != trivial.end() && row->second > 0;
        check_kernel(k, shape, m, with_trivial_lanes, &calls);
        if (failures() >= kEnoughFailures) {
            ADD_FAILURE() << "stopped at " << k.name << ": enough failures to read";
            break;
        }
    }
    std::printf("non-number calls: %ld\n", calls);
}

// ---- DCT-IV -------------------------------------------------------------------

// cos(pi (2j+1)(2k+1) / (4n)) is never zero ((2j+1)(2k+1) is odd, 2n(2m+1)
// even), so every output depends on every input. Its sign: with
// a = (2j+1)(2k+1) mod 8n, positive below 2n and above 6n.
bool dct4_positive(long long j, long long k, long long n) {
    const long long a = ((2 * j + 1) * (2 * k + 1)) % (8 * n);
    return a < 2 * n || a > 6 * n;
}

template <class T, class Spec>
void check_dct4(tqfStatus (*init_alloc)(Spec**, int), tqfStatus (*run)(const T*, T*, const Spec*),
                tqfStatus (*release)(Spec*), const char* name) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    const int top = sizeof(void*) == 4 ? 12 : 14;  // 2^12 and up run through splits
    for (int log2 = 1; log2 <= top; ++log2) {
        const int n = 1 << log2;
        Spec* plan = nullptr;
        ASSERT_EQ(init_alloc(&plan, n), tqfStsNoError) << name << " " << n;
        std::vector<T> base(n), x, y(n);
        const std::vector<unsigned char> raw = random_scalars(n, sizeof(T), n);
        std::memcpy(base.data(), raw.data(), raw.size());
        std::vector<size_t> where = positions(n);
        if (n > 4096) where = {0, 1, size_t(n / 2 - 1), size_t(n / 2), size_t(n - 2), size_t(n - 1)};
        for (size_t p : where)
            for (double v : {inf, -inf, nan}) {
                x = base;
                x[p] = static_cast<T>(v);
                const auto label = [&] {
                    return std::string(name) + " n=" + std::to_string(n) + " x[" + std::to_string(p) +
                           "] = " + std::to_string(v);
                };
                ASSERT_EQ(run(x.data(), y.data(), plan), tqfStsNoError) << label();
                for (int k = 0; k < n; ++k) {
                    if (std::isnan(v)) {
                        EXPECT_TRUE(std::isnan(y[k])) << label() << ": y[" << k << "] = " << y[k];
                        continue;
                    }
                    EXPECT_FALSE(std::isfinite(y[k])) << label() << ": y[" << k << "] = " << y[k];
                    if (std::isinf(y[k]))
                        EXPECT_EQ(y[k] > 0, dct4_positive(p, k, n) == (v > 0)) << label() << ": y[" << k << "] = " << y[k];
                }
                if (failures() >= kEnoughFailures) {
                    release(plan);
                    return;
                }
            }
        release(plan);
    }
}

TEST(NonNumbers, Dct4EveryPowerOfTwo) {
    check_dct4<float, tqfgDCT4Spec_32f>(tqfgDCT4InitAlloc_32f, tqfgDCT4_32f, tqfgDCT4Free_32f, "tqfgDCT4_32f");
    check_dct4<double, tqfgDCT4Spec_64f>(tqfgDCT4InitAlloc_64f, tqfgDCT4_64f, tqfgDCT4Free_64f, "tqfgDCT4_64f");
}

}  // namespace
