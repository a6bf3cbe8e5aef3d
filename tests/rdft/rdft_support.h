// Real kernels under test, forward and inverse: the three spectrum formats
// as this test reads them, slot by slot, the kernels of the build's table,
// and long-double references in both directions.
#pragma once

#include <string>
#include <vector>

#include "dft_oracle.h"
#include "kernel_table.h"
#include "tqfgen.h"

namespace tqftest {

enum class Format { CCS, Pack, Perm };
const char* format_name(Format f);
constexpr Format kFormats[] = {Format::CCS, Format::Pack, Format::Perm};

// What one spectrum element holds: the real or imaginary part of harmonic k,
// or, in CCS only, the imaginary part of a real-only harmonic (an explicit
// zero in a forward output, never read by an inverse kernel).
enum class Part { Re, Im, Zero };
struct Slot {
    int k;
    Part part;
};

// Elements of a spectrum of length n in format f: written by a forward
// kernel, read by an inverse one.
size_t spectrum_length(Format f, int n);
// The element-by-element map of that spectrum.
std::vector<Slot> slot_map(Format f, int n);

template <class T>
struct RealKernel {
    Format format;
    int length;
    std::string name;
    SrcDstFlagFn<T> fn;
};
template <class T>
struct RealGeneric {
    Format format;
    std::string name;
    SrcDstFlagGenericFn<T> fn;
};

// Every fixed kernel of the three families of a direction in one
// precision, CCS, Pack, Perm and each by length, and the generic entries.
template <class T> std::vector<RealKernel<T>> forward_real_kernels();
template <class T> std::vector<RealGeneric<T>> forward_real_generics();
template <class T> std::vector<RealKernel<T>> inverse_real_kernels();
template <class T> std::vector<RealGeneric<T>> inverse_real_generics();

// X[k] = sum_n x[n] exp(-2 pi i n k / N) for k = 0 .. N/2, unscaled.
std::vector<cld> real_dft(const std::vector<long double>& x);

// The harmonics X[0] .. X[n/2] that a spectrum in format f holds, read
// through slot_map; the imaginary parts of X[0] and of X[n/2] (even n) are
// zero whatever the elements mapped to Part::Zero hold.
std::vector<cld> read_spectrum(Format f, int n, const std::vector<long double>& elements);

// x[j] = R0 + (-1)^j R(n/2) + sum_{k=1}^{(n-1)/2} 2 (Rk cos(2 pi j k / n) - Ik sin(2 pi j k / n))
// for j = 0 .. n-1, unscaled, from X = read_spectrum(...); R(n/2) for even n only.
std::vector<long double> real_idft(const std::vector<cld>& X, int n);

}  // namespace tqftest
