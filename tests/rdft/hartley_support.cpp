#include "hartley_support.h"

#include <cmath>

namespace tqftest {

namespace {

template <class T, class Row>
std::vector<HartleyKernel<T>> rows_of(const Row& rows) {
    std::vector<HartleyKernel<T>> out;
    for (const auto& r : rows) out.push_back({r.size, r.name, r.fn});
    return out;
}

}  // namespace

template <>
std::vector<HartleyKernel<float>> hartley_kernels<float>() {
    return rows_of<float>(table::hartley_32f);
}
template <>
std::vector<HartleyKernel<double>> hartley_kernels<double>() {
    return rows_of<double>(table::hartley_64f);
}
template <>
HartleyGeneric<float> hartley_generic<float>() {
    return {table::hartley_32f_generic.name, table::hartley_32f_generic.fn};
}
template <>
HartleyGeneric<double> hartley_generic<double>() {
    return {table::hartley_64f_generic.name, table::hartley_64f_generic.fn};
}

std::vector<long double> cas_sum(const std::vector<long double>& x) {
    const size_t n = x.size();
    const long double pi = 3.141592653589793238462643383279502884L;
    // One table of cas over the n angles: the index n*k is reduced exactly.
    std::vector<long double> cas(n);
    for (size_t e = 0; e < n; ++e) {
        const long double a = 2 * pi * static_cast<long double>(e) / static_cast<long double>(n);
        cas[e] = cosl(a) + sinl(a);
    }
    std::vector<long double> H(n);
    for (size_t k = 0; k < n; ++k) {
        long double acc = 0;
        for (size_t j = 0; j < n; ++j) acc += x[j] * cas[j * k % n];
        H[k] = acc;
    }
    return H;
}

}  // namespace tqftest
