// What the real-data benchmarks (forward real, inverse real, Hartley) share:
// FFTW's one-dimensional real transforms by element type (float: fftwf_,
// double: fftw_; patient plans, new-array execute), random inputs, the one
// check that ours and FFTW compute the same transform before anything is
// timed, the timed loop, and the run with a ratio table against FFTW.
#pragma once

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "kernel_table.h"
#include "ratio_reporter.h"

namespace fftwbench {

template <class T> using RealFn = tqftest::SrcDstFlagFn<T>;

// The complex side of r2c and c2r is N/2+1 complex values, 2 * (N/2 + 1)
// reals: exactly CCS (N+2 elements for even N, N+1 for odd N).
inline int ccs_length(int n) { return 2 * (n / 2 + 1); }

template <class T> struct Fftw;
template <> struct Fftw<float> {
    using plan = fftwf_plan;
    static float* alloc(size_t n) { return fftwf_alloc_real(n); }
    static plan r2c(int n, float* in, float* out) { return fftwf_plan_dft_r2c_1d(n, in, cx(out), FFTW_PATIENT); }
    static plan c2r(int n, float* in, float* out) { return fftwf_plan_dft_c2r_1d(n, cx(in), out, FFTW_PATIENT); }
    static plan dht(int n, float* in, float* out) { return fftwf_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_PATIENT); }
    static void run_r2c(plan p, float* in, float* out) { fftwf_execute_dft_r2c(p, in, cx(out)); }
    static void run_c2r(plan p, float* in, float* out) { fftwf_execute_dft_c2r(p, cx(in), out); }
    static void run_r2r(plan p, float* in, float* out) { fftwf_execute_r2r(p, in, out); }
    static const char* tag() { return "32f"; }
    static double tolerance() { return 1e-5; }  // per unit of length, inputs in [-1, 1]

private:
    static fftwf_complex* cx(float* p) { return reinterpret_cast<fftwf_complex*>(p); }
};
template <> struct Fftw<double> {
    using plan = fftw_plan;
    static double* alloc(size_t n) { return fftw_alloc_real(n); }
    static plan r2c(int n, double* in, double* out) { return fftw_plan_dft_r2c_1d(n, in, cx(out), FFTW_PATIENT); }
    static plan c2r(int n, double* in, double* out) { return fftw_plan_dft_c2r_1d(n, cx(in), out, FFTW_PATIENT); }
    static plan dht(int n, double* in, double* out) { return fftw_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_PATIENT); }
    static void run_r2c(plan p, double* in, double* out) { fftw_execute_dft_r2c(p, in, cx(out)); }
    static void run_c2r(plan p, double* in, double* out) { fftw_execute_dft_c2r(p, cx(in), out); }
    static void run_r2r(plan p, double* in, double* out) { fftw_execute_r2r(p, in, out); }
    static const char* tag() { return "64f"; }
    static double tolerance() { return 1e-13; }

private:
    static fftw_complex* cx(double* p) { return reinterpret_cast<fftw_complex*>(p); }
};

// The kernels of one length, one per packed layout (forward or inverse).
template <class T>
struct LayoutKernels {
    int n;
    RealFn<T> ccs, pack, perm;
};

// The build's per-layout tables of one family and precision, joined by length.
template <class T, class Table>
std::vector<LayoutKernels<T>> join_layouts(const Table& ccs, const Table& pack, const Table& perm) {
    std::vector<LayoutKernels<T>> out;
    for (size_t i = 0; i < std::size(ccs); ++i) out.push_back({ccs[i].size, ccs[i].fn, pack[i].fn, perm[i].fn});
    return out;
}

// count values uniform in [-1, 1], the same for a given seed.
template <class T>
void fill_uniform(T* p, int count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    for (int i = 0; i < count; ++i) p[i] = static_cast<T>(u(rng));
}

// The two sides must compute the same transform before their times mean
// anything: stops the program when they differ by more than the precision's
// tolerance times the length (inputs in [-1, 1]).
template <class T>
void require_agreement(const char* program, int n, const char* what, const T* ours, const T* fftw, int count) {
    double err = 0;
    for (int i = 0; i < count; ++i) err = std::fmax(err, std::fabs(double(ours[i]) - double(fftw[i])));
    if (!(err <= Fftw<T>::tolerance() * n)) {
        std::fprintf(stderr, "%s: length %d %s: %s differs from FFTW by %g\n", program, n, Fftw<T>::tag(), what, err);
        std::exit(1);
    }
}

// Registers a benchmark that runs call() once per iteration; what it writes
// to out is kept.
template <class T, class Call>
void register_calls(const std::string& name, T* out, Call call) {
    benchmark::RegisterBenchmark(name.c_str(), [out, call](benchmark::State& st) {
        for (auto _ : st) {
            call();
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
        }
    });
}

// Makes every plan and registers every benchmark through register_all
// (printing how long the patient planning took), then runs them and ends
// with the ratio table: "<case>/ours" against "<case>/fftw", the extra
// sides as columns of their own.
template <class RegisterAll>
int run_against_fftw(int argc, char** argv, RegisterAll register_all, std::vector<std::string> extra_sides = {}) {
    const auto start = std::chrono::steady_clock::now();
    register_all();
    const double planning = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::fprintf(stderr, "FFTW_PATIENT plans for every length, both precisions: %.1f s\n", planning);
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter("fftw", std::move(extra_sides));
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

}  // namespace fftwbench
