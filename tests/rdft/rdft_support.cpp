#include "rdft_support.h"

#include <cmath>

namespace tqftest {

const char* format_name(Format f) {
    return f == Format::CCS ? "CCS" : f == Format::Pack ? "Pack" : "Perm";
}

size_t spectrum_length(Format f, int n) {
    if (f == Format::CCS) return static_cast<size_t>(n % 2 == 0 ? n + 2 : n + 1);
    return static_cast<size_t>(n);
}

// Interior harmonics 0 < k < n/2 take two neighbouring elements, real part
// first; the formats differ in where they begin and in where the real-only
// ends (harmonic 0, and n/2 for even n) go.
std::vector<Slot> slot_map(Format f, int n) {
    std::vector<Slot> map(spectrum_length(f, n), Slot{-1, Part::Zero});
    const bool even = n % 2 == 0;
    const int interior_last = (n - 1) / 2;
    map[0] = {0, Part::Re};
    if (f == Format::CCS) {
        map[1] = {0, Part::Zero};
        for (int k = 1; k <= interior_last; ++k) map[2 * k] = {k, Part::Re}, map[2 * k + 1] = {k, Part::Im};
        if (even) map[n] = {n / 2, Part::Re}, map[n + 1] = {n / 2, Part::Zero};
    } else if (f == Format::Perm && even) {
        map[1] = {n / 2, Part::Re};
        for (int k = 1; k <= interior_last; ++k) map[2 * k] = {k, Part::Re}, map[2 * k + 1] = {k, Part::Im};
    } else {  // Pack, and Perm of odd n, which is the same
        for (int k = 1; k <= interior_last; ++k) map[2 * k - 1] = {k, Part::Re}, map[2 * k] = {k, Part::Im};
        if (even) map[n - 1] = {n / 2, Part::Re};
    }
    return map;
}

namespace {

template <class T, class Row>
void add_rows(std::vector<RealKernel<T>>& out, Format f, const Row& rows) {
    for (const auto& r : rows) out.push_back({f, r.size, r.name, r.fn});
}

}  // namespace

template <>
std::vector<RealKernel<float>> forward_real_kernels<float>() {
    std::vector<RealKernel<float>> out;
    add_rows(out, Format::CCS, table::rfwd_ccs_32f);
    add_rows(out, Format::Pack, table::rfwd_pack_32f);
    add_rows(out, Format::Perm, table::rfwd_perm_32f);
    return out;
}
template <>
std::vector<RealKernel<double>> forward_real_kernels<double>() {
    std::vector<RealKernel<double>> out;
    add_rows(out, Format::CCS, table::rfwd_ccs_64f);
    add_rows(out, Format::Pack, table::rfwd_pack_64f);
    add_rows(out, Format::Perm, table::rfwd_perm_64f);
    return out;
}
template <>
std::vector<RealGeneric<float>> forward_real_generics<float>() {
    return {{Format::CCS, table::rfwd_ccs_32f_generic.name, table::rfwd_ccs_32f_generic.fn},
            {Format::Pack, table::rfwd_pack_32f_generic.name, table::rfwd_pack_32f_generic.fn},
            {Format::Perm, table::rfwd_perm_32f_generic.name, table::rfwd_perm_32f_generic.fn}};
}
template <>
std::vector<RealGeneric<double>> forward_real_generics<double>() {
    return {{Format::CCS, table::rfwd_ccs_64f_generic.name, table::rfwd_ccs_64f_generic.fn},
            {Format::Pack, table::rfwd_pack_64f_generic.name, table::rfwd_pack_64f_generic.fn},
            {Format::Perm, table::rfwd_perm_64f_generic.name, table::rfwd_perm_64f_generic.fn}};
}
template <>
std::vector<RealKernel<float>> inverse_real_kernels<float>() {
    std::vector<RealKernel<float>> out;
    add_rows(out, Format::CCS, table::rinv_ccs_32f);
    add_rows(out, Format::Pack, table::rinv_pack_32f);
    add_rows(out, Format::Perm, table::rinv_perm_32f);
    return out;
}
template <>
std::vector<RealKernel<double>> inverse_real_kernels<double>() {
    std::vector<RealKernel<double>> out;
    add_rows(out, Format::CCS, table::rinv_ccs_64f);
    add_rows(out, Format::Pack, table::rinv_pack_64f);
    add_rows(out, Format::Perm, table::rinv_perm_64f);
    return out;
}
template <>
std::vector<RealGeneric<float>> inverse_real_generics<float>() {
    return {{Format::CCS, table::rinv_ccs_32f_generic.name, table::rinv_ccs_32f_generic.fn},
            {Format::Pack, table::rinv_pack_32f_generic.name, table::rinv_pack_32f_generic.fn},
            {Format::Perm, table::rinv_perm_32f_generic.name, table::rinv_perm_32f_generic.fn}};
}
template <>
std::vector<RealGeneric<double>> inverse_real_generics<double>() {
    return {{Format::CCS, table::rinv_ccs_64f_generic.name, table::rinv_ccs_64f_generic.fn},
            {Format::Pack, table::rinv_pack_64f_generic.name, table::rinv_pack_64f_generic.fn},
            {Format::Perm, table::rinv_perm_64f_generic.name, table::rinv_perm_64f_generic.fn}};
}

std::vector<cld> real_dft(const std::vector<long double>& x) {
    const size_t n = x.size();
    const long double pi = 3.141592653589793238462643383279502884L;
    // One table of the n roots: the angle index n*k is reduced exactly.
    std::vector<long double> c(n), s(n);
    for (size_t e = 0; e < n; ++e) {
        c[e] = cosl(2 * pi * static_cast<long double>(e) / static_cast<long double>(n));
        s[e] = sinl(2 * pi * static_cast<long double>(e) / static_cast<long double>(n));
    }
    std::vector<cld> X(n / 2 + 1);
    for (size_t k = 0; k <= n / 2; ++k) {
        long double re = 0, im = 0;
        for (size_t j = 0; j < n; ++j) {
            re += x[j] * c[j * k % n];
            im -= x[j] * s[j * k % n];
        }
        X[k] = cld(re, im);
    }
    return X;
}

std::vector<cld> read_spectrum(Format f, int n, const std::vector<long double>& elements) {
    const std::vector<Slot> map = slot_map(f, n);
    std::vector<cld> X(n / 2 + 1);
    for (size_t e = 0; e < map.size(); ++e) {
        if (map[e].part == Part::Re) X[map[e].k].real(elements[e]);
        if (map[e].part == Part::Im) X[map[e].k].imag(elements[e]);
    }
    return X;
}

std::vector<long double> real_idft(const std::vector<cld>& X, int n) {
    const long double pi = 3.141592653589793238462643383279502884L;
    std::vector<long double> c(n), s(n);
    for (int e = 0; e < n; ++e) {
        c[e] = cosl(2 * pi * e / n);
        s[e] = sinl(2 * pi * e / n);
    }
    std::vector<long double> x(n);
    for (int j = 0; j < n; ++j) {
        long double acc = X[0].real();
        if (n % 2 == 0) acc += (j % 2 == 0 ? 1 : -1) * X[n / 2].real();
        for (int k = 1; k <= (n - 1) / 2; ++k)
            acc += 2 * (X[k].real() * c[j * k % n] - X[k].imag() * s[j * k % n]);
        x[j] = acc;
    }
    return x;
}

}  // namespace tqftest
