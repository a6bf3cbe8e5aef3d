// Forward real kernels against FFTW's real-to-complex transform (patient
// plans, new-array execute on the same buffers), every length and both
// precisions, in one run. CCS holds exactly what FFTW's r2c writes, the
// N/2+1 complex values X[0..N/2], so the CCS kernel is "ours" in the ratio;
// the Pack and Perm kernels run on the same input as columns of their own.
// Our kernels get flag tqfNoDivByAny, FFTW does not scale either.
#include <algorithm>
#include <string>
#include <vector>

#include "fftw_real.h"

namespace {

using namespace fftwbench;

template <class T> std::vector<LayoutKernels<T>> forward_kernels();
template <> std::vector<LayoutKernels<float>> forward_kernels<float>() {
    using namespace tqftest::table;
    return join_layouts<float>(rfwd_ccs_32f, rfwd_pack_32f, rfwd_perm_32f);
}
template <> std::vector<LayoutKernels<double>> forward_kernels<double>() {
    using namespace tqftest::table;
    return join_layouts<double>(rfwd_ccs_64f, rfwd_pack_64f, rfwd_perm_64f);
}

// Buffers and plans live for the whole run. out has room for N+2 values,
// CCS and FFTW's N/2+1 complex values alike; Pack and Perm write N of them.
template <class T>
void register_length(const LayoutKernels<T>& k) {
    const int n = k.n, count = ccs_length(n);
    T* in = Fftw<T>::alloc(n);
    T* out = Fftw<T>::alloc(count);
    auto plan = Fftw<T>::r2c(n, in, out);  // planning may overwrite both buffers
    fill_uniform(in, n, n);

    std::vector<T> ref(count);
    Fftw<T>::run_r2c(plan, in, out);
    std::copy(out, out + count, ref.begin());
    k.ccs(in, out, tqfNoDivByAny);
    require_agreement("rdft_bench", n, "CCS", out, ref.data(), count);

    const std::string name = std::string("rfwd_") + Fftw<T>::tag() + "_" + std::to_string(n);
    auto ours = [in, out](RealFn<T> fn) { return [fn, in, out] { fn(in, out, tqfNoDivByAny); }; };
    register_calls(name + "/ours", out, ours(k.ccs));
    register_calls(name + "/fftw", out, [plan, in, out] { Fftw<T>::run_r2c(plan, in, out); });
    register_calls(name + "/pack", out, ours(k.pack));
    register_calls(name + "/perm", out, ours(k.perm));
}

}  // namespace

int main(int argc, char** argv) {
    return run_against_fftw(
        argc, argv,
        [] {
            for (const auto& k : forward_kernels<float>()) register_length(k);
            for (const auto& k : forward_kernels<double>()) register_length(k);
        },
        {"pack", "perm"});
}
