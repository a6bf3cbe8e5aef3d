// DCT-IV plans against FFTW's REDFT11 (the same transform times two), every
// power of two from 2 to 2^20, both precisions, on the same buffers.
// FFTW plans are FFTW_MEASURE; set TQF_BENCH_PATIENT=1 for FFTW_PATIENT,
// which takes minutes at the long lengths.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cstdlib>
#include <random>
#include <string>

#include "ratio_reporter.h"
#include "tqfgen.h"

namespace {

unsigned PlanFlags() {
    const char* p = std::getenv("TQF_BENCH_PATIENT");
    return p && *p == '1' ? FFTW_PATIENT : FFTW_MEASURE;
}

template <class T> struct Side;
template <> struct Side<float> {
    typedef fftwf_plan Plan;
    typedef tqfgDCT4Spec_32f Spec;
    static const char* tag() { return "32f"; }
    static float* alloc(int n) { return fftwf_alloc_real(n); }
    static Plan fftw(int n, float* in, float* out) {
        return fftwf_plan_r2r_1d(n, in, out, FFTW_REDFT11, PlanFlags());
    }
    static void fftwRun(Plan p, float* in, float* out) { fftwf_execute_r2r(p, in, out); }
    static Spec* ours(int n) {
        Spec* s = nullptr;
        tqfgDCT4InitAlloc_32f(&s, n);
        return s;
    }
    static void oursRun(const Spec* s, const float* in, float* out) { tqfgDCT4_32f(in, out, s); }
};
template <> struct Side<double> {
    typedef fftw_plan Plan;
    typedef tqfgDCT4Spec_64f Spec;
    static const char* tag() { return "64f"; }
    static double* alloc(int n) { return fftw_alloc_real(n); }
    static Plan fftw(int n, double* in, double* out) {
        return fftw_plan_r2r_1d(n, in, out, FFTW_REDFT11, PlanFlags());
    }
    static void fftwRun(Plan p, double* in, double* out) { fftw_execute_r2r(p, in, out); }
    static Spec* ours(int n) {
        Spec* s = nullptr;
        tqfgDCT4InitAlloc_64f(&s, n);
        return s;
    }
    static void oursRun(const Spec* s, const double* in, double* out) { tqfgDCT4_64f(in, out, s); }
};

// Plans and buffers live for the whole run.
template <class T>
void RegisterLength(int n) {
    T* in = Side<T>::alloc(n);
    T* out = Side<T>::alloc(n);
    auto fftwPlan = Side<T>::fftw(n, in, out);  // planning may overwrite the buffers
    std::mt19937 rng(n);
    std::uniform_real_distribution<double> u(-1, 1);
    for (int i = 0; i < n; ++i) in[i] = static_cast<T>(u(rng));
    auto* handle = Side<T>::ours(n);
    const std::string name = std::string("dct4_") + Side<T>::tag() + "_" + std::to_string(n);
    benchmark::RegisterBenchmark((name + "/ours").c_str(), [handle, in, out](benchmark::State& st) {
        for (auto _ : st) {
            Side<T>::oursRun(handle, in, out);
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark((name + "/fftw").c_str(), [fftwPlan, in, out](benchmark::State& st) {
        for (auto _ : st) {
            Side<T>::fftwRun(fftwPlan, in, out);
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
        }
    });
}

}  // namespace

int main(int argc, char** argv) {
    for (int n = 2; n <= (1 << 20); n *= 2) RegisterLength<float>(n);
    for (int n = 2; n <= (1 << 20); n *= 2) RegisterLength<double>(n);
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter("fftw");
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
