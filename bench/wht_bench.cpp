// Walsh-Hadamard kernels against the plain radix-2 loop, every order and
// both precisions, in one run: ns per call of each, the ratio, and how close
// the kernel comes to the adders' peak (its order*N/lanes packed additions
// and subtractions at the packed-add rate measured in the same run, over its
// measured time).
//
//   bench_wht [--benchmark_min_time=...]
#include <benchmark/benchmark.h>
#include <pmmintrin.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "kernel_table.h"
#include "tqfgen.h"

namespace {

// The textbook transform: stage on bit 0 first, then one multiplication by
// the scale. Kept out of line so that each call is a real call, like the
// kernels'.
template <class T>
__attribute__((noinline)) void plain_wht(const T* src, T* dst, int order, T scale) {
    const size_t n = size_t{1} << order;
    for (size_t i = 0; i < n; ++i) dst[i] = src[i];
    for (size_t h = 1; h < n; h *= 2)
        for (size_t i = 0; i < n; i += 2 * h)
            for (size_t j = i; j < i + h; ++j) {
                const T a = dst[j], b = dst[j + h];
                dst[j] = a + b;
                dst[j + h] = a - b;
            }
    for (size_t i = 0; i < n; ++i) dst[i] *= scale;
}

using Fixed32 = tqfStatus (*)(const tqf32f*, tqf32f*, int, unsigned char*);
using Fixed64 = tqfStatus (*)(const tqf64f*, tqf64f*, int, unsigned char*);
// The kernel of `order` in the build's table of exported kernels.
template <class Rows> auto by_order(const Rows& rows, int order) {
    for (const auto& r : rows)
        if (r.size == order) return r.fn;
    return decltype(rows[0].fn){nullptr};
}
Fixed32 fixed(float*, int order) { return by_order(tqftest::table::wht_32f, order); }
Fixed64 fixed(double*, int order) { return by_order(tqftest::table::wht_64f, order); }
int buffer_bytes(float*, int order) { int b = 0; tqfgWHTGetBufferSize_32f(order, &b); return b; }
int buffer_bytes(double*, int order) { int b = 0; tqfgWHTGetBufferSize_64f(order, &b); return b; }

template <class T> struct Arrays {
    explicit Arrays(int order) : n(size_t{1} << order) {
        src = static_cast<T*>(std::aligned_alloc(64, n * sizeof(T) + 64));
        dst = static_cast<T*>(std::aligned_alloc(64, n * sizeof(T) + 64));
        const int bytes = buffer_bytes(static_cast<T*>(nullptr), order);
        buf = static_cast<unsigned char*>(std::aligned_alloc(64, static_cast<size_t>(bytes) + 64));
        for (size_t i = 0; i < n; ++i) src[i] = T(int(i * 37 % 101) - 50) / T(64);
    }
    ~Arrays() { std::free(src); std::free(dst); std::free(buf); }
    size_t n;
    T* src;
    T* dst;
    unsigned char* buf;
};

template <class T> void bm_kernel(benchmark::State& state, int order) {
    Arrays<T> a(order);
    const auto kernel = fixed(static_cast<T*>(nullptr), order);
    for (auto _ : state) {
        kernel(a.src, a.dst, tqfDivBySqrtN, a.buf);
        benchmark::ClobberMemory();
    }
}

template <class T> void bm_plain(benchmark::State& state, int order) {
    Arrays<T> a(order);
    for (auto _ : state) {
        plain_wht<T>(a.src, a.dst, order, T(0.5));
        benchmark::ClobberMemory();
    }
}

// Packed adds per ns when the adders are kept busy by eight independent
// chains: the ceiling for a transform made of packed additions.
constexpr int kRepetitions = 5;
constexpr int kPeakSteps = 4096;
constexpr int kPeakChains = 8;
void bm_peak_addps(benchmark::State& state) {
    __m128 a0 = _mm_set1_ps(0.f), a1 = _mm_set1_ps(1.f), a2 = _mm_set1_ps(2.f), a3 = _mm_set1_ps(3.f);
    __m128 a4 = _mm_set1_ps(4.f), a5 = _mm_set1_ps(5.f), a6 = _mm_set1_ps(6.f), a7 = _mm_set1_ps(7.f);
    __m128 inc = _mm_set1_ps(1e-9f);
    for (auto _ : state) {
        for (int s = 0; s < kPeakSteps; ++s) {
            // The empty asm keeps the compiler from folding the chains.
            asm volatile("addps %8, %0\n\taddps %8, %1\n\taddps %8, %2\n\taddps %8, %3\n\t"
                         "addps %8, %4\n\taddps %8, %5\n\taddps %8, %6\n\taddps %8, %7"
                         : "+x"(a0), "+x"(a1), "+x"(a2), "+x"(a3), "+x"(a4), "+x"(a5), "+x"(a6), "+x"(a7)
                         : "m"(inc));
        }
    }
    benchmark::DoNotOptimize(a0);
}

// Keeps every run, prints the side-by-side table after the last.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration) {
                // The machine may be shared: the fastest repetition is the
                // one least disturbed.
                const std::string name = r.run_name.function_name + (r.run_name.args.empty() ? "" : "/" + r.run_name.args);
                const double t = r.GetAdjustedRealTime();
                if (!ns_.count(name) || t < ns_[name]) ns_[name] = t;
            }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        if (!ns_.count("peak_addps")) return;
        const double peak_ns_per_op = ns_["peak_addps"] / (kPeakSteps * kPeakChains);
        std::printf("\n(fastest of %d repetitions each)\n", kRepetitions);
        std::printf("packed add: %.3f ns per instruction (measured peak rate)\n\n", peak_ns_per_op);
        std::printf("%-5s %5s %12s %12s %8s %10s\n", "type", "order", "kernel ns", "plain ns", "ratio", "add-port %");
        for (const char* type : {"32f", "64f"}) {
            const int lanes = type[0] == '3' ? 4 : 2;
            for (int order = 1; order <= 13; ++order) {
                const std::string tag = std::string(type) + "/" + std::to_string(order);
                if (!ns_.count("wht_" + tag) || !ns_.count("plain_" + tag)) continue;
                const double k = ns_["wht_" + tag], p = ns_["plain_" + tag];
                // order*N additions and subtractions, `lanes` at a time, at
                // the measured packed-add rate; the N multiplications go to
                // the multiplier and are not counted against the adders.
                const double n = double(1u << order);
                const double floor_ns = order * n / lanes * peak_ns_per_op;
                std::printf("%-5s %5d %12.1f %12.1f %7.2fx %9.0f%%\n", type, order, k, p, p / k,
                            100.0 * floor_ns / k);
            }
        }
    }

private:
    std::map<std::string, double> ns_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("peak_addps", bm_peak_addps)->Repetitions(kRepetitions);
    for (int order = 1; order <= 13; ++order) {
        const std::string o = std::to_string(order);
        benchmark::RegisterBenchmark(("wht_32f/" + o).c_str(), bm_kernel<float>, order)->Repetitions(kRepetitions);
        benchmark::RegisterBenchmark(("plain_32f/" + o).c_str(), bm_plain<float>, order)->Repetitions(kRepetitions);
        benchmark::RegisterBenchmark(("wht_64f/" + o).c_str(), bm_kernel<double>, order)->Repetitions(kRepetitions);
        benchmark::RegisterBenchmark(("plain_64f/" + o).c_str(), bm_plain<double>, order)->Repetitions(kRepetitions);
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
