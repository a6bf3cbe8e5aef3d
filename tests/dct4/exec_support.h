// Helpers of the DCT-IV transform tests: both precisions behind one template,
// plans that end themselves, random inputs and the oracles (a long-double
// direct sum, FFTW's REDFT11 where the build has it) with their error measure.
#pragma once

#include <cstdint>
#include <vector>

#include "tqfgen.h"

namespace dct4exec {

template <class T> struct Api;
template <> struct Api<float> {
    typedef tqfgDCT4Spec_32f Spec;
    static constexpr const char* name = "32f";
    static tqfStatus initAlloc(Spec** p, int n) { return tqfgDCT4InitAlloc_32f(p, n); }
    static tqfStatus init(Spec** p, int n, void* m) { return tqfgDCT4Init_32f(p, n, m); }
    static tqfStatus getSize(int n, int* s) { return tqfgDCT4GetSize_32f(n, s); }
    static tqfStatus run(const float* x, float* y, const Spec* p) { return tqfgDCT4_32f(x, y, p); }
    static void free(Spec* p) { tqfgDCT4Free_32f(p); }
};
template <> struct Api<double> {
    typedef tqfgDCT4Spec_64f Spec;
    static constexpr const char* name = "64f";
    static tqfStatus initAlloc(Spec** p, int n) { return tqfgDCT4InitAlloc_64f(p, n); }
    static tqfStatus init(Spec** p, int n, void* m) { return tqfgDCT4Init_64f(p, n, m); }
    static tqfStatus getSize(int n, int* s) { return tqfgDCT4GetSize_64f(n, s); }
    static tqfStatus run(const double* x, double* y, const Spec* p) { return tqfgDCT4_64f(x, y, p); }
    static void free(Spec* p) { tqfgDCT4Free_64f(p); }
};

// A plan from InitAlloc, freed at the end of the scope.
template <class T>
class Plan {
public:
    explicit Plan(int n) { status_ = Api<T>::initAlloc(&handle_, n); }
    ~Plan() { if (status_ == tqfStsNoError) Api<T>::free(handle_); }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;
    tqfStatus status() const { return status_; }
    typename Api<T>::Spec* handle() const { return handle_; }
    tqfStatus run(const T* x, T* y) const { return Api<T>::run(x, y, handle_); }

private:
    typename Api<T>::Spec* handle_ = nullptr;
    tqfStatus status_;
};

// Uniform values in [-1, 1), reproducible by seed.
template <class T> std::vector<T> RandomInput(int n, uint32_t seed);

// y[k] = sum_j x[j] cos(pi (2j+1)(2k+1) / (4n)) in long double.
template <class T> std::vector<long double> DirectDct4(const std::vector<T>& x);
// The same through FFTW's REDFT11 (which computes twice this), in double;
// false when the build has no FFTW.
bool HaveFftw();
template <class T> std::vector<long double> FftwDct4(const std::vector<T>& x);

// Error measures against a reference: the root-mean-square error relative to
// the reference's root mean square, and the largest error relative to the
// largest reference value.
struct Error {
    double rms;
    double max;
};
template <class T> Error Compare(const std::vector<T>& y, const std::vector<long double>& ref);

}  // namespace dct4exec
