// Forward real kernels against FFTW's real-to-complex transform (patient
// plans, new-array execute on the same buffers), every length and both
// precisions, in one run. CCS holds exactly what FFTW's r2c writes, the
// N/2+1 complex values X[0..N/2], so the CCS kernel is "ours" in the ratio;
// the Pack and Perm kernels run on the same input as columns of their own.
// Our kernels get flag tqfNoDivByAny, FFTW does not scale either.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "kernel_table.h"
#include "ratio_reporter.h"

namespace {

template <class T> using RealFn = tqftest::SrcDstFlagFn<T>;

template <class T> struct Fftw;
template <> struct Fftw<float> {
    using plan = fftwf_plan;
    static float* alloc(size_t n) { return fftwf_alloc_real(n); }
    static plan make(int n, float* in, float* out) {
        return fftwf_plan_dft_r2c_1d(n, in, reinterpret_cast<fftwf_complex*>(out), FFTW_PATIENT);
    }
    static void run(plan p, float* in, float* out) {
        fftwf_execute_dft_r2c(p, in, reinterpret_cast<fftwf_complex*>(out));
    }
    static const char* tag() { return "32f"; }
    static double tolerance() { return 1e-5; }  // per unit of length, inputs in [-1, 1]
};
template <> struct Fftw<double> {
    using plan = fftw_plan;
    static double* alloc(size_t n) { return fftw_alloc_real(n); }
    static plan make(int n, double* in, double* out) {
        return fftw_plan_dft_r2c_1d(n, in, reinterpret_cast<fftw_complex*>(out), FFTW_PATIENT);
    }
    static void run(plan p, double* in, double* out) {
        fftw_execute_dft_r2c(p, in, reinterpret_cast<fftw_complex*>(out));
    }
    static const char* tag() { return "64f"; }
    static double tolerance() { return 1e-13; }
};

// The forward real kernels of one length, one per output layout.
template <class T>
struct Kernels {
    int n;
    RealFn<T> ccs, pack, perm;
};

template <class T, class Table>
std::vector<Kernels<T>> join(const Table& ccs, const Table& pack, const Table& perm) {
    std::vector<Kernels<T>> out;
    for (size_t i = 0; i < std::size(ccs); ++i) out.push_back({ccs[i].size, ccs[i].fn, pack[i].fn, perm[i].fn});
    return out;
}
template <class T> std::vector<Kernels<T>> real_kernels();
template <> std::vector<Kernels<float>> real_kernels<float>() {
    using namespace tqftest::table;
    return join<float>(rfwd_ccs_32f, rfwd_pack_32f, rfwd_perm_32f);
}
template <> std::vector<Kernels<double>> real_kernels<double>() {
    using namespace tqftest::table;
    return join<double>(rfwd_ccs_64f, rfwd_pack_64f, rfwd_perm_64f);
}

// Buffers and plans live for the whole run. out has room for N+2 values,
// CCS and FFTW's N/2+1 complex values alike; Pack and Perm write N of them.
template <class T>
void register_length(const Kernels<T>& k) {
    const int n = k.n;
    T* in = Fftw<T>::alloc(n);
    T* out = Fftw<T>::alloc(n + 2);
    auto plan = Fftw<T>::make(n, in, out);  // planning may overwrite both buffers
    std::mt19937 rng(n);
    std::uniform_real_distribution<double> u(-1, 1);
    for (int i = 0; i < n; ++i) in[i] = static_cast<T>(u(rng));

    // The two sides must compute the same transform before their times mean anything.
    const int count = 2 * (n / 2 + 1);
    std::vector<T> ref(count);
    Fftw<T>::run(plan, in, out);
    std::copy(out, out + count, ref.begin());
    k.ccs(in, out, tqfNoDivByAny);
    double err = 0;
    for (int i = 0; i < count; ++i) err = std::fmax(err, std::fabs(double(out[i]) - double(ref[i])));
    if (!(err <= Fftw<T>::tolerance() * n)) {
        std::fprintf(stderr, "rdft_bench: length %d %s: CCS differs from FFTW r2c by %g\n", n, Fftw<T>::tag(),
                     err);
        std::exit(1);
    }

    const std::string name = std::string("rfwd_") + Fftw<T>::tag() + "_" + std::to_string(n);
    auto ours = [in, out](RealFn<T> fn) {
        return [fn, in, out](benchmark::State& st) {
            for (auto _ : st) {
                fn(in, out, tqfNoDivByAny);
                benchmark::DoNotOptimize(out);
                benchmark::ClobberMemory();
            }
        };
    };
    benchmark::RegisterBenchmark((name + "/ours").c_str(), ours(k.ccs));
    benchmark::RegisterBenchmark((name + "/fftw").c_str(), [plan, in, out](benchmark::State& st) {
        for (auto _ : st) {
            Fftw<T>::run(plan, in, out);
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark((name + "/pack").c_str(), ours(k.pack));
    benchmark::RegisterBenchmark((name + "/perm").c_str(), ours(k.perm));
}

}  // namespace

int main(int argc, char** argv) {
    const auto start = std::chrono::steady_clock::now();
    for (const auto& k : real_kernels<float>()) register_length(k);
    for (const auto& k : real_kernels<double>()) register_length(k);
    const double planning = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::fprintf(stderr, "FFTW_PATIENT plans for every length, both precisions: %.1f s\n", planning);
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter("fftw", {"pack", "perm"});
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
