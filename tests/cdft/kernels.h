// The complex kernels under test, by precision and length.
#pragma once

#include <vector>

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

#define TQF_CDFT_LENGTHS(X) \
    X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(10) X(11) X(12) X(13) X(14) X(15) X(16) X(17) X(18) X(19) \
    X(20) X(21) X(22) X(23) X(24) X(25) X(26) X(27) X(28) X(29) X(30) X(31) X(32) X(33) X(34) X(35) X(36) \
    X(37) X(38) X(39) X(40) X(41) X(42) X(43) X(44) X(45) X(46) X(47) X(48) X(49) X(50) X(51) X(52) X(53) \
    X(54) X(55) X(56) X(57) X(58) X(59) X(60) X(61) X(62) X(63) X(64)

// Forward (-1) and inverse (+1) kernels of every built length.
template <class T> std::vector<FixedKernel<T>> complex_kernels(int sign);
template <> inline std::vector<FixedKernel<float>> complex_kernels<float>(int sign) {
#define TQF_ROW(N) {N, sign < 0 ? tqfgDFTFwd_CToC_##N##_32fc : tqfgDFTInv_CToC_##N##_32fc},
    return {TQF_CDFT_LENGTHS(TQF_ROW)};
#undef TQF_ROW
}
template <> inline std::vector<FixedKernel<double>> complex_kernels<double>(int sign) {
#define TQF_ROW(N) {N, sign < 0 ? tqfgDFTFwd_CToC_##N##_64fc : tqfgDFTInv_CToC_##N##_64fc},
    return {TQF_CDFT_LENGTHS(TQF_ROW)};
#undef TQF_ROW
}

}  // namespace tqftest
