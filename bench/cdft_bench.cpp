// Complex kernels against FFTW (patient plans, new-array execute on the same
// buffers), both directions, every length and precision, in one run.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <random>
#include <string>

#include "kernels.h"
#include "ratio_reporter.h"

namespace {

template <class T> struct Fftw;
template <> struct Fftw<float> {
    using plan = fftwf_plan;
    static void* alloc(size_t n) { return fftwf_malloc(n); }
    static void release(void* p) { fftwf_free(p); }
    static plan make(int n, void* in, void* out, int sign) {
        return fftwf_plan_dft_1d(n, static_cast<fftwf_complex*>(in), static_cast<fftwf_complex*>(out), sign,
                                 FFTW_PATIENT);
    }
    static void run(plan p, void* in, void* out) {
        fftwf_execute_dft(p, static_cast<fftwf_complex*>(in), static_cast<fftwf_complex*>(out));
    }
    static void destroy(plan p) { fftwf_destroy_plan(p); }
    static const char* tag() { return "32fc"; }
};
template <> struct Fftw<double> {
    using plan = fftw_plan;
    static void* alloc(size_t n) { return fftw_malloc(n); }
    static void release(void* p) { fftw_free(p); }
    static plan make(int n, void* in, void* out, int sign) {
        return fftw_plan_dft_1d(n, static_cast<fftw_complex*>(in), static_cast<fftw_complex*>(out), sign,
                                FFTW_PATIENT);
    }
    static void run(plan p, void* in, void* out) {
        fftw_execute_dft(p, static_cast<fftw_complex*>(in), static_cast<fftw_complex*>(out));
    }
    static void destroy(plan p) { fftw_destroy_plan(p); }
    static const char* tag() { return "64fc"; }
};

// Input and output buffers shared by both sides of one comparison.
template <class T>
struct Buffers {
    explicit Buffers(int n) : n(n) {
        in = static_cast<T*>(Fftw<T>::alloc(2 * n * sizeof(T)));
        out = static_cast<T*>(Fftw<T>::alloc(2 * n * sizeof(T)));
        std::mt19937 rng(n);
        std::uniform_real_distribution<double> u(-1, 1);
        for (int i = 0; i < 2 * n; ++i) in[i] = static_cast<T>(u(rng));
    }
    ~Buffers() {
        Fftw<T>::release(in);
        Fftw<T>::release(out);
    }
    int n;
    T* in;
    T* out;
};

template <class T>
void register_length(const tqftest::FixedKernel<T>& k, int sign) {
    using C = typename tqftest::Complex<T>::type;
    auto* buf = new Buffers<T>(k.length);  // lives for the whole run
    auto plan = Fftw<T>::make(k.length, buf->in, buf->out, sign < 0 ? FFTW_FORWARD : FFTW_BACKWARD);
    const std::string name =
        std::string(sign < 0 ? "cfwd_" : "cinv_") + Fftw<T>::tag() + "_" + std::to_string(k.length);
    benchmark::RegisterBenchmark((name + "/ours").c_str(), [k, buf](benchmark::State& st) {
        for (auto _ : st) {
            k.fn(reinterpret_cast<const C*>(buf->in), reinterpret_cast<C*>(buf->out), tqfNoDivByAny);
            benchmark::DoNotOptimize(buf->out);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark((name + "/fftw").c_str(), [plan, buf](benchmark::State& st) {
        for (auto _ : st) {
            Fftw<T>::run(plan, buf->in, buf->out);
            benchmark::DoNotOptimize(buf->out);
            benchmark::ClobberMemory();
        }
    });
}

}  // namespace

int main(int argc, char** argv) {
    for (int sign : {-1, +1}) {
        for (const auto& k : tqftest::complex_kernels<float>(sign)) register_length(k, sign);
        for (const auto& k : tqftest::complex_kernels<double>(sign)) register_length(k, sign);
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter("fftw");
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
