// The kernels under the lock and the settings each is called with.
#include <stdexcept>
#include <string>

#include "bit_lock.h"
#include "kernel_table.h"
#include "tqfgen.h"

namespace tqftest {
namespace {

const int kFlags[] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};

// Scalars read and written by a fixed kernel of a family; false for a family
// this lock does not know yet (a new family states its counts here).
bool scalar_counts(const AnyKernel& k, size_t* in, size_t* out) {
    const std::string family = k.family, precision = k.precision;
    const bool complex = precision.back() == 'c';
    if (family == "cfwd" || family == "cinv") {
        *in = *out = (complex ? 2u : 1u) * static_cast<size_t>(k.size);
        return true;
    }
    if (family.rfind("rfwd_", 0) == 0 || family.rfind("rinv_", 0) == 0) {  // a sequence and a packed spectrum
        const size_t n = static_cast<size_t>(k.size);
        const size_t spectrum = family.compare(5, 3, "ccs") == 0 ? n + 2 - n % 2 : n;
        const bool forward = family[1] == 'f';
        *in = forward ? n : spectrum;
        *out = forward ? spectrum : n;
        return true;
    }
    if (family == "hartley") {
        *in = *out = static_cast<size_t>(k.size);
        return true;
    }
    if (family == "wht") {
        *in = *out = size_t{1} << k.size;
        return true;
    }
    return false;
}

template <class T>
LockCase flag_case(const AnyKernel& k, int flag, size_t in, size_t out) {
    const std::string key = std::string(k.name) + " flag=" + std::to_string(flag);
    if (k.entry == Entry::SrcDstFlag) {
        const auto fn = reinterpret_cast<SrcDstFlagFn<T>>(k.fn);
        return {key, sizeof(T), in, out, [fn, flag](const void* s, void* d) {
                    return static_cast<int>(fn(static_cast<const T*>(s), static_cast<T*>(d), flag));
                }};
    }
    // Kernels with a work buffer get one of the queried size, 16-byte aligned.
    const auto fn = reinterpret_cast<SrcDstFlagBufferFn<T>>(k.fn);
    int bytes = 0;
    (sizeof(T) == 4 ? tqfgWHTGetBufferSize_32f : tqfgWHTGetBufferSize_64f)(k.size, &bytes);
    return {key, sizeof(T), in, out, [fn, flag, bytes](const void* s, void* d) {
                std::vector<unsigned char> raw(static_cast<size_t>(bytes) + 16);
                unsigned char* buf = raw.data() + (16 - reinterpret_cast<uintptr_t>(raw.data()) % 16) % 16;
                return static_cast<int>(fn(static_cast<const T*>(s), static_cast<T*>(d), flag, bytes ? buf : nullptr));
            }};
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
    for (const AnyKernel& k : all_kernels) {
        size_t in = 0, n_out = 0;
        if (!scalar_counts(k, &in, &n_out))
            throw std::logic_error(std::string("no element counts for family ") + k.family);
        const bool single = std::string(k.precision).compare(0, 2, "32") == 0;
        for (int flag : kFlags)
            out.push_back(single ? flag_case<float>(k, flag, in, n_out) : flag_case<double>(k, flag, in, n_out));
    }
    add_dct4<float, tqfgDCT4Spec_32f>(out, "32f", tqfgDCT4InitAlloc_32f, tqfgDCT4_32f, tqfgDCT4Free_32f);
    add_dct4<double, tqfgDCT4Spec_64f>(out, "64f", tqfgDCT4InitAlloc_64f, tqfgDCT4_64f, tqfgDCT4Free_64f);
    return out;
}

}  // namespace tqftest
