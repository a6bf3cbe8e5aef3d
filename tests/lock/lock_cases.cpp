// The kernels under the lock and the settings each is called with.
#include <string>

#include "bit_lock.h"
#include "kernels.h"
#include "tqfgen.h"

namespace tqftest {
namespace {

const int kFlags[] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};

template <class T>
void add_complex(std::vector<LockCase>& out, const char* dir, int sign, const char* suffix) {
    using C = typename Complex<T>::type;
    for (const FixedKernel<T>& k : complex_kernels<T>(sign)) {
        const std::string name = std::string("tqfgDFT") + dir + "_CToC_" + std::to_string(k.length) + "_" + suffix;
        for (int flag : kFlags) {
            const auto fn = k.fn;
            out.push_back({name + " flag=" + std::to_string(flag), sizeof(T), 2u * k.length, 2u * k.length,
                           [fn, flag](const void* s, void* d) {
                               return static_cast<int>(fn(static_cast<const C*>(s), static_cast<C*>(d), flag));
                           }});
        }
    }
}

// Walsh-Hadamard orders through the order-taking entry, which is the fixed
// kernel of the order bit for bit; each call gets a work buffer of the
// queried size.
template <class T>
void add_wht(std::vector<LockCase>& out, const char* suffix,
             tqfStatus (*run)(const T*, T*, int, int, unsigned char*), tqfStatus (*size)(int, int*)) {
    for (int order = 1; order <= 13; ++order) {
        int bytes = 0;
        size(order, &bytes);
        const size_t n = size_t{1} << order;
        for (int flag : kFlags) {
            out.push_back({"tqfgWHT_" + std::to_string(order) + "_" + suffix + " flag=" + std::to_string(flag),
                           sizeof(T), n, n, [=](const void* s, void* d) {
                               std::vector<unsigned char> raw(static_cast<size_t>(bytes) + 16);
                               unsigned char* buf = raw.data() + (16 - reinterpret_cast<uintptr_t>(raw.data()) % 16) % 16;
                               return static_cast<int>(run(static_cast<const T*>(s), static_cast<T*>(d), order, flag,
                                                           bytes ? buf : nullptr));
                           }});
        }
    }
}

// DCT-IV plans of every power of two to 2^16: the short kernels, the folds
// and the split paths of long lengths. Plans compute their rotations at Init
// with the C library's sin and cos; in double precision from 4096 points on
// these differ in last bits between the x86-64 and the i386 C library, so
// those rows are locked per platform.
template <class T, class Spec>
void add_dct4(std::vector<LockCase>& out, const char* suffix, tqfStatus (*init)(Spec**, int),
              tqfStatus (*run)(const T*, T*, const Spec*), tqfStatus (*release)(Spec*)) {
    for (int log2 = 1; log2 <= 16; ++log2) {
        const int n = 1 << log2;
        const bool per_platform = sizeof(T) == 8 && n >= 4096;
        const std::string key = std::string("tqfgDCT4_") + suffix + " n=" + std::to_string(n) +
                                (per_platform ? std::string(" @") + lock_platform() : std::string());
        out.push_back({key, sizeof(T), size_t(n), size_t(n),
                       [=](const void* s, void* d) {
                           Spec* plan = nullptr;
                           const tqfStatus st = init(&plan, n);
                           if (st != tqfStsNoError) return static_cast<int>(st);
                           const tqfStatus r = run(static_cast<const T*>(s), static_cast<T*>(d), plan);
                           release(plan);
                           return static_cast<int>(r);
                       }});
    }
}

}  // namespace

const char* lock_platform() { return sizeof(void*) == 8 ? "x86-64" : "i386"; }

std::vector<LockCase> lock_cases() {
    std::vector<LockCase> out;
    add_complex<float>(out, "Fwd", -1, "32fc");
    add_complex<double>(out, "Fwd", -1, "64fc");
    add_complex<float>(out, "Inv", +1, "32fc");
    add_complex<double>(out, "Inv", +1, "64fc");
    add_wht<float>(out, "32f", tqfgWHT_32f, tqfgWHTGetBufferSize_32f);
    add_wht<double>(out, "64f", tqfgWHT_64f, tqfgWHTGetBufferSize_64f);
    add_dct4<float, tqfgDCT4Spec_32f>(out, "32f", tqfgDCT4InitAlloc_32f, tqfgDCT4_32f, tqfgDCT4Free_32f);
    add_dct4<double, tqfgDCT4Spec_64f>(out, "64f", tqfgDCT4InitAlloc_64f, tqfgDCT4_64f, tqfgDCT4Free_64f);
    return out;
}

}  // namespace tqftest
