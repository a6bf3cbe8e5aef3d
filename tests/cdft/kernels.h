// The complex kernels under test, by precision and length, taken from the
// build's table of exported kernels.
#pragma once

#include <vector>

#include "kernel_table.h"
#include "tqfgen.h"

namespace tqftest {

template <class T> struct Complex;
template <> struct Complex<float> { using type = tqf32fc; };
template <> struct Complex<double> { using type = tqf64fc; };

template <class T>
using KernelFn = tqfStatus (*)(const typename Complex<T>::type*, typename Complex<T>::type*, int);

template <class T>
struct FixedKernel {
    int length;
    KernelFn<T> fn;
};

template <class T, class Table>
std::vector<FixedKernel<T>> complex_rows(const Table& rows) {
    std::vector<FixedKernel<T>> out;
    for (const auto& r : rows) out.push_back({r.size, r.fn});
    return out;
}

// Forward (-1) and inverse (+1) kernels of every built length.
template <class T> std::vector<FixedKernel<T>> complex_kernels(int sign);
template <> inline std::vector<FixedKernel<float>> complex_kernels<float>(int sign) {
    return sign < 0 ? complex_rows<float>(table::cfwd_32fc) : complex_rows<float>(table::cinv_32fc);
}
template <> inline std::vector<FixedKernel<double>> complex_kernels<double>(int sign) {
    return sign < 0 ? complex_rows<double>(table::cfwd_64fc) : complex_rows<double>(table::cinv_64fc);
}

}  // namespace tqftest
