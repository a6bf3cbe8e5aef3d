// Inverse real kernels against FFTW's complex-to-real transform (patient
// plans, new-array execute on the same buffers), every length and both
// precisions, in one run. FFTW's c2r reads N/2+1 complex values, exactly
// what CCS holds, so the CCS kernel is "ours" in the ratio; the Pack and
// Perm kernels, given the same spectrum in their layouts, are columns of
// their own. Our kernels get flag tqfNoDivByAny, FFTW does not scale either.
//
// FFTW's c2r plans may overwrite their input (FFTW_DESTROY_INPUT is its
// default for c2r), and the patient plans do at many lengths (in one run,
// the double plans of 22 lengths: the even ones from 18 up but 20 and 32).
// So every timed call, ours and FFTW's alike and at every length, first
// copies the untouched spectrum into the buffer it reads (N+2 or N+1 values
// for CCS, N for Pack and Perm): both times include the same copy. The
// column "copy" times that copy alone, to read the transforms' own cost off
// the table.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "fftw_real.h"

namespace {

using namespace fftwbench;

template <class T> std::vector<LayoutKernels<T>> inverse_kernels();
template <> std::vector<LayoutKernels<float>> inverse_kernels<float>() {
    using namespace tqftest::table;
    return join_layouts<float>(rinv_ccs_32f, rinv_pack_32f, rinv_perm_32f);
}
template <> std::vector<LayoutKernels<double>> inverse_kernels<double>() {
    using namespace tqftest::table;
    return join_layouts<double>(rinv_ccs_64f, rinv_pack_64f, rinv_perm_64f);
}

// The same spectrum in the three layouts, from a CCS array whose imaginary
// parts of X[0] and X[N/2] are zero (c2r and our kernels ignore them).
// Pack: R0, then CCS from slot 2 on. Perm: at even N, CCS with R(N/2) moved
// into slot 1; at odd N, as Pack.
template <class T>
void to_pack(const T* ccs, T* pack, int n) {
    pack[0] = ccs[0];
    std::copy(ccs + 2, ccs + n + 1, pack + 1);
}
template <class T>
void to_perm(const T* ccs, T* perm, int n) {
    if (n % 2) return to_pack(ccs, perm, n);
    std::copy(ccs, ccs + n, perm);
    perm[1] = ccs[n];
}

// Buffers and plans live for the whole run: the spectra untouched, work the
// buffer that every timed call reads (the one the plan was made on).
template <class T>
void register_length(const LayoutKernels<T>& k) {
    const int n = k.n, count = ccs_length(n);
    T* work = Fftw<T>::alloc(count);
    T* out = Fftw<T>::alloc(n);
    auto plan = Fftw<T>::c2r(n, work, out);  // planning may overwrite both buffers
    T* ccs = Fftw<T>::alloc(count);
    T* pack = Fftw<T>::alloc(n);
    T* perm = Fftw<T>::alloc(n);
    fill_uniform(ccs, count, n);
    ccs[1] = 0;                  // Im X[0]
    if (n % 2 == 0) ccs[n + 1] = 0;  // Im X[N/2]
    to_pack(ccs, pack, n);
    to_perm(ccs, perm, n);

    std::vector<T> ref(n);
    std::copy(ccs, ccs + count, work);
    Fftw<T>::run_c2r(plan, work, out);
    std::copy(out, out + n, ref.begin());
    const struct {
        const char* layout;
        RealFn<T> fn;
        const T* spectrum;
    } layouts[] = {{"CCS", k.ccs, ccs}, {"Pack", k.pack, pack}, {"Perm", k.perm, perm}};
    for (const auto& l : layouts) {
        std::fill(out, out + n, T(0));
        l.fn(l.spectrum, out, tqfNoDivByAny);
        require_agreement("rdft_inverse_bench", n, l.layout, out, ref.data(), n);
    }

    const std::string name = std::string("rinv_") + Fftw<T>::tag() + "_" + std::to_string(n);
    auto ours = [work, out](RealFn<T> fn, const T* spectrum, int size) {
        return [fn, spectrum, size, work, out] {
            std::memcpy(work, spectrum, size * sizeof(T));
            fn(work, out, tqfNoDivByAny);
        };
    };
    register_calls(name + "/ours", out, ours(k.ccs, ccs, count));
    register_calls(name + "/fftw", out, [plan, ccs, count, work, out] {
        std::memcpy(work, ccs, count * sizeof(T));
        Fftw<T>::run_c2r(plan, work, out);
    });
    register_calls(name + "/pack", out, ours(k.pack, pack, n));
    register_calls(name + "/perm", out, ours(k.perm, perm, n));
    register_calls(name + "/copy", work, [ccs, count, work] { std::memcpy(work, ccs, count * sizeof(T)); });
}

}  // namespace

int main(int argc, char** argv) {
    return run_against_fftw(
        argc, argv,
        [] {
            for (const auto& k : inverse_kernels<float>()) register_length(k);
            for (const auto& k : inverse_kernels<double>()) register_length(k);
        },
        {"pack", "perm", "copy"});
}
