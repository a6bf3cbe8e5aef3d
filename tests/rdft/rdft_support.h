// Forward real kernels under test: the three output formats as this test
// reads them, slot by slot, the kernels of the build's table, and a
// long-double reference for a real sequence.
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

// What one output element holds: the real or imaginary part of harmonic k,
// or an explicit zero (CCS only).
enum class Part { Re, Im, Zero };
struct Slot {
    int k;
    Part part;
};

// Elements written by a kernel of length n in format f.
size_t output_length(Format f, int n);
// The element-by-element map of that output.
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

// Every fixed kernel of the three families in one precision, and the
// generic entries.
template <class T> std::vector<RealKernel<T>> forward_real_kernels();
template <class T> std::vector<RealGeneric<T>> forward_real_generics();

// X[k] = sum_n x[n] exp(-2 pi i n k / N) for k = 0 .. N/2, unscaled.
std::vector<cld> real_dft(const std::vector<long double>& x);

}  // namespace tqftest
