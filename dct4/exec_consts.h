// Kernel constants, computed by the compiler: cos and sin of pi * num / den in
// long double, rounded once to the element type. They end up as literals in
// the kernels; nothing is evaluated at run time.
#pragma once

namespace dct4x {

struct SinCos {
    long double s, c;
};

// Taylor series on |x| <= pi / 4, where 30 terms are far past long double.
constexpr SinCos SinCosSmall(long double x) {
    long double s = 0, c = 0, term = 1;  // term = x^k / k!
    for (int k = 0; k < 40; ++k) {
        if (k % 4 == 0) c += term;
        if (k % 4 == 1) s += term;
        if (k % 4 == 2) c -= term;
        if (k % 4 == 3) s -= term;
        term = term * x / (k + 1);
    }
    return {s, c};
}

// sin and cos of pi * num / den: the ratio is reduced exactly in integers to
// the nearest multiple of 1/2 plus a rest within 1/4, so that exact angles
// (0, pi/2, ...) give exact 0 and 1.
constexpr SinCos SinCosPi(long long num, long long den) {
    long long r = num % (2 * den);
    if (r < 0) r += 2 * den;
    const long long k = (4 * r + den) / (2 * den);  // round(2r / den), 0..4
    const long double pi = 3.141592653589793238462643383279502884L;
    const SinCos v = SinCosSmall(pi * static_cast<long double>(2 * r - k * den) /
                                 static_cast<long double>(2 * den));
    switch (k % 4) {
        case 0: return {v.s, v.c};
        case 1: return {v.c, -v.s};
        case 2: return {-v.s, -v.c};
        default: return {-v.c, v.s};
    }
}

template <class T, int N>
struct Rotations {
    T c[N > 0 ? N : 1];
    T s[N > 0 ? N : 1];
};

// e^{i pi (mul k + add) / den} for k = 0..N-1.
template <class T, int N>
constexpr Rotations<T, N> MakeRotations(long long mul, long long add, long long den) {
    Rotations<T, N> r{};
    for (int k = 0; k < N; ++k) {
        const SinCos v = SinCosPi(mul * k + add, den);
        r.c[k] = static_cast<T>(v.c);
        r.s[k] = static_cast<T>(v.s);
    }
    return r;
}

// Twiddles of a positive-exponent DFT of length K: e^{2 pi i k / K}, k < K / 2.
template <class T, int K>
struct DftTwiddles {
    static constexpr Rotations<T, K / 2> w = MakeRotations<T, K / 2>(2, 0, K);
};
// Fold step of length M: e^{i pi (2a + 1) / M}, a < M / 4.
template <class T, int M>
struct FoldTwiddles {
    static constexpr Rotations<T, M / 4> w = MakeRotations<T, M / 4>(2, 1, M);
};
// Output step of length 2f: e^{i pi k / (2f)}, k < f.
template <class T, int F>
struct OutputTwiddles {
    static constexpr Rotations<T, F> w = MakeRotations<T, F>(1, 0, 2 * F);
};

}  // namespace dct4x
