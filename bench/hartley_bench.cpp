// Hartley kernels against FFTW's discrete Hartley transform (r2r of kind
// FFTW_DHT, patient plans, new-array execute on the same buffers), every
// length and both precisions, in one run. Both compute
// H[k] = sum_n x[n] (cos(2 pi nk/N) + sin(2 pi nk/N)) unscaled: ours with
// flag tqfNoDivByAny. FFTW's r2r plans keep their input, so nothing is
// copied between calls.
#include <algorithm>
#include <string>
#include <vector>

#include "fftw_real.h"

namespace {

using namespace fftwbench;
template <class T> using Table = tqftest::Fixed<RealFn<T>>;

template <class T>
void register_length(const Table<T>& k) {
    const int n = k.size;
    T* in = Fftw<T>::alloc(n);
    T* out = Fftw<T>::alloc(n);
    auto plan = Fftw<T>::dht(n, in, out);  // planning may overwrite both buffers
    fill_uniform(in, n, n);

    std::vector<T> ref(n);
    Fftw<T>::run_r2r(plan, in, out);
    std::copy(out, out + n, ref.begin());
    k.fn(in, out, tqfNoDivByAny);
    require_agreement("hartley_bench", n, "Hartley", out, ref.data(), n);

    const std::string name = std::string("hartley_") + Fftw<T>::tag() + "_" + std::to_string(n);
    register_calls(name + "/ours", out, [fn = k.fn, in, out] { fn(in, out, tqfNoDivByAny); });
    register_calls(name + "/fftw", out, [plan, in, out] { Fftw<T>::run_r2r(plan, in, out); });
}

}  // namespace

int main(int argc, char** argv) {
    return run_against_fftw(argc, argv, [] {
        for (const auto& k : tqftest::table::hartley_32f) register_length<float>(k);
        for (const auto& k : tqftest::table::hartley_64f) register_length<double>(k);
    });
}
