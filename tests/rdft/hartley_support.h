// Hartley kernels under test: the fixed kernels and generic entry of each
// precision from the build's table, and a long-double direct cas sum.
#pragma once

#include <string>
#include <vector>

#include "kernel_table.h"
#include "tqfgen.h"

namespace tqftest {

template <class T>
struct HartleyKernel {
    int length;
    std::string name;
    SrcDstFlagFn<T> fn;
};
template <class T>
struct HartleyGeneric {
    std::string name;
    SrcDstFlagGenericFn<T> fn;
};

// Every fixed kernel of one precision, in the table's order, and the entry
// that takes the length as an argument.
template <class T> std::vector<HartleyKernel<T>> hartley_kernels();
template <class T> HartleyGeneric<T> hartley_generic();

// H[k] = sum_n x[n] (cos(2 pi n k / N) + sin(2 pi n k / N)), unscaled.
std::vector<long double> cas_sum(const std::vector<long double>& x);

}  // namespace tqftest
