#include "exec_support.h"

#include <cmath>
#include <random>

#ifdef TQF_TEST_FFTW
#include <fftw3.h>
#endif

namespace dct4exec {

template <class T>
std::vector<T> RandomInput(int n, uint32_t seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> dist(-1.0, 1.0);
    std::vector<T> x(static_cast<size_t>(n));
    for (T& v : x) v = static_cast<T>(dist(gen));
    return x;
}

// The angle (2j+1)(2k+1) pi / (4n) is periodic in its odd numerator modulo
// 8n, so one table of 8n cosines serves the whole sum.
template <class T>
std::vector<long double> DirectDct4(const std::vector<T>& x) {
    const int64_t n = static_cast<int64_t>(x.size());
    const long double pi = 3.141592653589793238462643383279502884L;
    std::vector<long double> cosTable(static_cast<size_t>(8 * n));
    for (int64_t t = 0; t < 8 * n; ++t) cosTable[t] = std::cos(pi * t / (4 * n));
    std::vector<long double> y(static_cast<size_t>(n));
    for (int64_t k = 0; k < n; ++k) {
        long double s = 0;
        for (int64_t j = 0; j < n; ++j) s += x[j] * cosTable[((2 * j + 1) * (2 * k + 1)) % (8 * n)];
        y[k] = s;
    }
    return y;
}

#ifdef TQF_TEST_FFTW
bool HaveFftw() { return true; }
template <class T>
std::vector<long double> FftwDct4(const std::vector<T>& x) {
    const int n = static_cast<int>(x.size());
    double* in = fftw_alloc_real(n);
    double* out = fftw_alloc_real(n);
    fftw_plan p = fftw_plan_r2r_1d(n, in, out, FFTW_REDFT11, FFTW_ESTIMATE);
    for (int j = 0; j < n; ++j) in[j] = x[j];
    fftw_execute(p);
    std::vector<long double> y(x.size());
    for (int k = 0; k < n; ++k) y[k] = out[k] / 2.0L;
    fftw_destroy_plan(p);
    fftw_free(in);
    fftw_free(out);
    return y;
}
#else
bool HaveFftw() { return false; }
template <class T>
std::vector<long double> FftwDct4(const std::vector<T>& x) { return std::vector<long double>(x.size()); }
#endif

template <class T>
Error Compare(const std::vector<T>& y, const std::vector<long double>& ref) {
    long double e2 = 0, r2 = 0, emax = 0, rmax = 0;
    for (size_t k = 0; k < ref.size(); ++k) {
        const long double e = std::fabs(static_cast<long double>(y[k]) - ref[k]);
        e2 += e * e;
        r2 += ref[k] * ref[k];
        emax = std::fmax(emax, e);
        rmax = std::fmax(rmax, std::fabs(ref[k]));
    }
    return {static_cast<double>(std::sqrt(e2 / r2)), static_cast<double>(emax / rmax)};
}

template std::vector<float> RandomInput<float>(int, uint32_t);
template std::vector<double> RandomInput<double>(int, uint32_t);
template std::vector<long double> DirectDct4<float>(const std::vector<float>&);
template std::vector<long double> DirectDct4<double>(const std::vector<double>&);
template std::vector<long double> FftwDct4<float>(const std::vector<float>&);
template std::vector<long double> FftwDct4<double>(const std::vector<double>&);
template Error Compare<float>(const std::vector<float>&, const std::vector<long double>&);
template Error Compare<double>(const std::vector<double>&, const std::vector<long double>&);

}  // namespace dct4exec
