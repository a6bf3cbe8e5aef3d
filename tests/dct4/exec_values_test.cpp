// Values of the transform: against a long-double direct sum up to 2048,
// against FFTW's REDFT11 above (where the build has FFTW), the transform
// applied twice, the impulse and length 2.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "exec_support.h"

namespace {

using namespace dct4exec;

// Largest length checked against FFTW and with the twice-applied identity;
// lower under an emulator (the 32-bit build), where every call is slow.
#ifndef TQF_TEST_LARGE_LOG2
#define TQF_TEST_LARGE_LOG2 20
#endif

// TQF_DCT4_TEST_MAX_LOG2 raises it by hand, up to the longest plan of the
// precision (2^26 single, 2^25 double): those runs take gigabytes and
// minutes, too much for every test run.
template <class T> constexpr int kLongestLog2 = sizeof(T) == 4 ? 26 : 25;
template <class T>
int LargestLog2() {
    const char* env = std::getenv("TQF_DCT4_TEST_MAX_LOG2");
    const int want = env && *env ? std::atoi(env) : TQF_TEST_LARGE_LOG2;
    return want < kLongestLog2<T> ? want : kLongestLog2<T>;
}

template <class T> double RmsBound(int n);
// Near 1.2e-7 and 2.5e-16 up to 1024 in the measurements; the bounds leave
// room and widen slowly with the number of stages.
template <> double RmsBound<float>(int n) { return 2.5e-7 * (1 + std::log2(n) / 16); }
template <> double RmsBound<double>(int n) { return 6e-16 * (1 + std::log2(n) / 16); }

template <class T>
void CheckDirect(int n) {
    Plan<T> plan(n);
    ASSERT_EQ(plan.status(), tqfStsNoError) << n;
    const std::vector<T> x = RandomInput<T>(n, 7u + n);
    std::vector<T> y(n);
    ASSERT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
    const Error e = Compare(y, DirectDct4(x));
    std::printf("direct %s n=%d rms %.3g max %.3g\n", Api<T>::name, n, e.rms, e.max);
    EXPECT_LT(e.rms, RmsBound<T>(n)) << Api<T>::name << " " << n;
    EXPECT_LT(e.max, 4 * RmsBound<T>(n)) << Api<T>::name << " " << n;
}

TEST(Dct4Values, DirectSumToLength2048) {
    for (int n = 2; n <= 2048; n *= 2) {
        CheckDirect<float>(n);
        CheckDirect<double>(n);
    }
}

template <class T>
void CheckFftw(int n) {
    Plan<T> plan(n);
    ASSERT_EQ(plan.status(), tqfStsNoError) << n;
    const std::vector<T> x = RandomInput<T>(n, 11u + n);
    std::vector<T> y(n);
    ASSERT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
    // A dst on a 64-byte line takes the cache-bypassing stores of long
    // transforms: the same bits.
    T* aligned = static_cast<T*>(std::aligned_alloc(64, sizeof(T) * n));
    ASSERT_EQ(plan.run(x.data(), aligned), tqfStsNoError);
    EXPECT_EQ(std::memcmp(aligned, y.data(), sizeof(T) * n), 0) << Api<T>::name << " " << n;
    std::free(aligned);
    const Error e = Compare(y, FftwDct4(x));
    std::printf("fftw %s n=%d rms %.3g max %.3g\n", Api<T>::name, n, e.rms, e.max);
    EXPECT_LT(e.rms, RmsBound<T>(n)) << Api<T>::name << " " << n;
    EXPECT_LT(e.max, 6 * RmsBound<T>(n)) << Api<T>::name << " " << n;
}

TEST(Dct4Values, FftwAbove2048) {
    if (!HaveFftw()) GTEST_SKIP() << "no FFTW in this build";
    for (int n = 4096; n <= (1 << LargestLog2<float>()); n *= 2) CheckFftw<float>(n);
    for (int n = 4096; n <= (1 << LargestLog2<double>()); n *= 2) CheckFftw<double>(n);
}

// Applied twice the transform gives n / 2 times the input: an oracle that
// needs nothing else, for every length of the plan tree.
template <class T>
void CheckTwice(int n) {
    Plan<T> plan(n);
    ASSERT_EQ(plan.status(), tqfStsNoError) << n;
    const std::vector<T> x = RandomInput<T>(n, 3u + n);
    std::vector<T> y(n), z(n);
    ASSERT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
    ASSERT_EQ(plan.run(y.data(), z.data()), tqfStsNoError);
    std::vector<long double> ref(x.begin(), x.end());
    for (long double& v : ref) v *= n / 2;
    const Error e = Compare(z, ref);
    EXPECT_LT(e.rms, 2 * RmsBound<T>(n)) << Api<T>::name << " " << n;
}

TEST(Dct4Values, TwiceIsHalfLengthTimesInput) {
    for (int n = 2; n <= (1 << LargestLog2<float>()); n *= 2) CheckTwice<float>(n);
    for (int n = 2; n <= (1 << LargestLog2<double>()); n *= 2) CheckTwice<double>(n);
}

template <class T>
void CheckImpulse(int n) {
    Plan<T> plan(n);
    std::vector<T> x(n, T(0)), y(n);
    x[0] = 1;
    ASSERT_EQ(plan.run(x.data(), y.data()), tqfStsNoError);
    const long double pi = 3.141592653589793238462643383279502884L;
    std::vector<long double> ref(n);
    for (int k = 0; k < n; ++k) ref[k] = std::cos(pi * (k + 0.5L) / (2 * n));
    EXPECT_LT(Compare(y, ref).max, 4 * RmsBound<T>(n)) << Api<T>::name << " " << n;
}

TEST(Dct4Values, Impulse) {
    for (int n = 2; n <= 8192; n *= 2) {
        CheckImpulse<float>(n);
        CheckImpulse<double>(n);
    }
}

// (1, 0) gives the kernel's two constants exactly: 1 * c + 0 * s = c.
template <class T>
void CheckLength2() {
    Plan<T> plan(2);
    const T x[2] = {1, 0};
    T y[2];
    ASSERT_EQ(plan.run(x, y), tqfStsNoError);
    const long double pi = 3.141592653589793238462643383279502884L;
    EXPECT_EQ(y[0], static_cast<T>(std::cos(pi / 8)));
    EXPECT_EQ(y[1], static_cast<T>(std::sin(pi / 8)));
}

TEST(Dct4Values, LengthTwoOfOneZero) {
    CheckLength2<float>();
    CheckLength2<double>();
}

}  // namespace
