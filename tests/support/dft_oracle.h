// Independent reference: the DFT as a direct sum in long double.
#pragma once

#include <cmath>
#include <complex>
#include <vector>

namespace tqftest {

using cld = std::complex<long double>;

// X[k] = sum_n x[n] exp(sign 2 pi i n k / N), unscaled.
inline std::vector<cld> direct_dft(const std::vector<cld>& x, int sign) {
    const size_t N = x.size();
    const long double pi = 3.141592653589793238462643383279502884L;
    std::vector<cld> X(N);
    for (size_t k = 0; k < N; ++k) {
        cld acc = 0;
        for (size_t n = 0; n < N; ++n) {
            const size_t e = (n * k) % N;  // exact reduction of the angle
            const long double a = sign * 2 * pi * static_cast<long double>(e) / static_cast<long double>(N);
            acc += x[n] * cld(cosl(a), sinl(a));
        }
        X[k] = acc;
    }
    return X;
}

// Largest error relative to the largest reference magnitude.
template <class T>
long double relative_error(const T* out, const std::vector<cld>& ref, long double scale) {
    long double worst = 0, peak = 0;
    for (size_t k = 0; k < ref.size(); ++k) {
        const cld r = ref[k] * scale;
        peak = std::max(peak, std::abs(r));
        worst = std::max(worst, std::abs(cld(out[2 * k], out[2 * k + 1]) - r));
    }
    return peak > 0 ? worst / peak : worst;
}

}  // namespace tqftest
