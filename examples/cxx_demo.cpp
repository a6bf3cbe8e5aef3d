// Demo of the C++ interface: a few transforms, their round trips, the
// DCT-IV and Walsh-Hadamard objects, and errors as exceptions and as
// statuses. Exits with 1 if a round trip does not come back.
#include <cmath>
#include <complex>
#include <cstdio>
#include <vector>

#include "tqfgen.hpp"

namespace {

template <class Vec> double max_difference(const Vec& a, const Vec& b) {
    double d = 0;
    for (size_t i = 0; i < a.size(); ++i) d = std::fmax(d, std::abs(a[i] - b[i]));
    return d;
}

}  // namespace

int main() {
    using tqfgen::scale;
    const double pi = 3.14159265358979323846;
    const tqfLibVersion& v = tqfgen::version();
    std::printf("%s %s\n\n", v.fileName, v.versionText);
    bool good = true;

    // A cosine of frequency 1 plus a sine of frequency 3, 8 samples.
    std::vector<std::complex<float>> x(8);
    for (int n = 0; n < 8; ++n)
        x[n] = float(std::cos(2 * pi * n / 8) + 0.5 * std::sin(2 * pi * 3 * n / 8));
    const std::vector<std::complex<float>> X = tqfgen::dft_fwd(x, scale::fwd_by_n);
    std::printf("dft_fwd of 8 points, divided by 8 (bins 1, 7: 0.5; bins 3, 5: -+0.25i):\n");
    for (int k = 0; k < 8; ++k) std::printf("  [%d] % .6f % .6fi\n", k, X[k].real(), X[k].imag());
    // The same through the fixed kernel of 8, chosen at compile time, and back.
    std::vector<std::complex<float>> back(8);
    tqfgen::dft_inv(X.data(), back.data(), tqfgen::fixed<8>, scale::none);
    std::printf("dft_inv<8> back to the signal: largest difference %.2g\n", max_difference(x, back));
    good = good && max_difference(x, back) < 1e-6;

    // A real signal of 16 samples into CCS: 18 values, X[0] to X[8] as (re, im).
    std::vector<double> r(16);
    for (int n = 0; n < 16; ++n) r[n] = 1.0 + std::cos(2 * pi * 2 * n / 16);
    std::vector<double> ccs(18);
    tqfgen::dft_fwd_ccs(r, ccs, scale::none);
    std::printf("\ndft_fwd_ccs of 16 real points: X[0] = %g, X[2] = %g%+gi\n", ccs[0], ccs[4], ccs[5]);

    // DCT-IV plan: applied twice it gives n/2 times the input.
    tqfgen::dct4<float> dct(1024);
    std::vector<float> s(1024), t(1024), u(1024);
    for (int n = 0; n < 1024; ++n) s[n] = float(std::sin(0.01 * n * n));
    dct(s, t);
    dct(t, u);
    for (float& e : u) e /= 512.0f;
    std::printf("\ndct4<float>(1024) twice, divided by 512: largest difference %.2g\n", max_difference(s, u));
    good = good && max_difference(s, u) < 1e-4;

    // Walsh-Hadamard of order 12 with its own buffer: applied twice with
    // 1/sqrt(N) it is the identity.
    tqfgen::walsh_hadamard<double> wht(12);
    std::vector<double> w(4096), W(4096), w2(4096);
    for (int n = 0; n < 4096; ++n) w[n] = n % 7 - 3.0;
    wht(w, W, scale::by_sqrt_n);
    wht(W, w2, scale::by_sqrt_n);
    std::printf("walsh_hadamard<double>(12) twice: largest difference %.2g\n", max_difference(w, w2));
    good = good && max_difference(w, w2) < 1e-12;

    // Errors: an exception with the status and its name, or the status itself.
    try {
        tqfgen::dct4<double> bad(1025);
    } catch (const tqfgen::error& e) {
        std::printf("\ndct4<double>(1025): %s\n  status %d, %s\n", e.what(), e.status(), e.name());
    }
    const tqfStatus status = tqfgen::nothrow::dft_fwd(x.data(), back.data(), 65, scale::none);
    std::printf("nothrow::dft_fwd of length 65: status %d (%s)\n", status, tqfgen::status_name(status));
    good = good && status == tqfStsBadSize;

    return good ? 0 : 1;
}
