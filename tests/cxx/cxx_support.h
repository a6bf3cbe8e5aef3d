// The C++ interface's transform families beside the C kernels they wrap, for
// table-driven tests, and the helpers those tests share. The C side comes
// from the build's kernel table, so an entry of the interface that reached
// the wrong kernel shows as a difference in bits.
#pragma once

#include <gtest/gtest.h>

#include <climits>
#include <complex>
#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "counting_alloc.h"
#include "kernel_table.h"
#include "tqfgen.hpp"

namespace cxxtest {

// Output elements of a transform of n inputs: the packed layouts' own counts.
constexpr size_t same_out(size_t n) { return n; }
constexpr size_t ccs_out(size_t n) { return n % 2 == 0 ? n + 2 : n + 1; }

// One family and precision: the interface's throwing and nothrow objects, the
// element types on both sides, and the C table of fixed kernels.
#define CXXTEST_FAMILY(Name, fn, tbl, Value, CType, out)                  \
    struct Name {                                                        \
        using V = Value;                                                 \
        using C = CType;                                                 \
        static constexpr const char* cxx_name = "tqfgen::" #fn;           \
        static constexpr const auto& cxx = tqfgen::fn;                   \
        static constexpr const auto& nothrow = tqfgen::nothrow::fn;      \
        static const auto& table() { return tqftest::table::tbl; }       \
        static constexpr size_t out_length(size_t n) { return out(n); }  \
    };
CXXTEST_FAMILY(CFwd32, dft_fwd, cfwd_32fc, std::complex<float>, tqf32fc, same_out)
CXXTEST_FAMILY(CFwd64, dft_fwd, cfwd_64fc, std::complex<double>, tqf64fc, same_out)
CXXTEST_FAMILY(CInv32, dft_inv, cinv_32fc, std::complex<float>, tqf32fc, same_out)
CXXTEST_FAMILY(CInv64, dft_inv, cinv_64fc, std::complex<double>, tqf64fc, same_out)
CXXTEST_FAMILY(Ccs32, dft_fwd_ccs, rfwd_ccs_32f, float, tqf32f, ccs_out)
CXXTEST_FAMILY(Ccs64, dft_fwd_ccs, rfwd_ccs_64f, double, tqf64f, ccs_out)
CXXTEST_FAMILY(Pack32, dft_fwd_pack, rfwd_pack_32f, float, tqf32f, same_out)
CXXTEST_FAMILY(Pack64, dft_fwd_pack, rfwd_pack_64f, double, tqf64f, same_out)
CXXTEST_FAMILY(Perm32, dft_fwd_perm, rfwd_perm_32f, float, tqf32f, same_out)
CXXTEST_FAMILY(Perm64, dft_fwd_perm, rfwd_perm_64f, double, tqf64f, same_out)
#undef CXXTEST_FAMILY

using SizedFamilies = ::testing::Types<CFwd32, CFwd64, CInv32, CInv64, Ccs32, Ccs64, Pack32, Pack64, Perm32, Perm64>;
struct SizedFamilyNames {
    template <class F> static std::string GetName(int i) {
        static const char* const names[] = {"cfwd_32fc",    "cfwd_64fc",    "cinv_32fc",     "cinv_64fc",
                                            "rfwd_ccs_32f", "rfwd_ccs_64f", "rfwd_pack_32f", "rfwd_pack_64f",
                                            "rfwd_perm_32f", "rfwd_perm_64f"};
        return names[i];
    }
};

// Each scale by its name, beside the C flag it stands for.
struct NamedScale {
    tqfgen::scale scale;
    int flag;
};
constexpr NamedScale kScales[] = {{tqfgen::scale::fwd_by_n, tqfDivFwdByN},
                                  {tqfgen::scale::inv_by_n, tqfDivInvByN},
                                  {tqfgen::scale::by_sqrt_n, tqfDivBySqrtN},
                                  {tqfgen::scale::none, tqfNoDivByAny}};
constexpr int kBadFlags[] = {0, 3, 16, -1, INT_MIN};

// A flag value that may be none of the four.
inline tqfgen::scale as_scale(int flag) { return static_cast<tqfgen::scale>(flag); }

// Inputs made by integer arithmetic, exact in both precisions.
template <class R> R sample(size_t i, int seed) {
    const long v = static_cast<long>((i * 7919u + static_cast<size_t>(seed) * 104729u) % 2003u) - 1001;
    return static_cast<R>(v) / static_cast<R>(64);
}
inline void set_sample(float& x, size_t i, int seed) { x = sample<float>(i, seed); }
inline void set_sample(double& x, size_t i, int seed) { x = sample<double>(i, seed); }
inline void set_sample(tqf32fc& x, size_t i, int seed) {
    x.re = sample<float>(2 * i, seed);
    x.im = sample<float>(2 * i + 1, seed);
}
inline void set_sample(tqf64fc& x, size_t i, int seed) {
    x.re = sample<double>(2 * i, seed);
    x.im = sample<double>(2 * i + 1, seed);
}
template <class C> std::vector<C> make_input(size_t n, int seed) {
    std::vector<C> x(n);
    for (size_t i = 0; i < n; ++i) set_sample(x[i], i, seed);
    return x;
}

// The same bytes as another element type (C struct to std::complex and back).
template <class To, class From> std::vector<To> same_bytes(const std::vector<From>& from) {
    static_assert(sizeof(To) == sizeof(From));
    std::vector<To> to(from.size());
    if (!from.empty()) std::memcpy(static_cast<void*>(to.data()), from.data(), from.size() * sizeof(From));
    return to;
}

// A destination of n elements filled with a byte pattern that no transform writes.
template <class T> std::vector<T> filled(size_t n) {
    std::vector<T> v(n);
    if (n) std::memset(static_cast<void*>(v.data()), 0xA5, n * sizeof(T));
    return v;
}

// Equal bytes, or a message naming the first differing element.
template <class A, class B>
::testing::AssertionResult same_bits(const A* a, size_t na, const B* b, size_t nb) {
    if (na * sizeof(A) != nb * sizeof(B))
        return ::testing::AssertionFailure() << "sizes differ: " << na * sizeof(A) << " and " << nb * sizeof(B) << " bytes";
    const unsigned char* pa = reinterpret_cast<const unsigned char*>(a);
    const unsigned char* pb = reinterpret_cast<const unsigned char*>(b);
    for (size_t i = 0; i < na * sizeof(A); ++i)
        if (pa[i] != pb[i]) return ::testing::AssertionFailure() << "first difference in element " << i / sizeof(A);
    return ::testing::AssertionSuccess();
}
template <class A, class B> ::testing::AssertionResult same_bits(const std::vector<A>& a, const std::vector<B>& b) {
    return same_bits(a.data(), a.size(), b.data(), b.size());
}

// The names of the statuses, spelled out here rather than taken from the header.
inline const char* expected_name(tqfStatus status) {
    switch (status) {
    case -5: return "tqfStsBadPlan";
    case -6: return "tqfStsBadSize";
    case -8: return "tqfStsNullPointer";
    case -16: return "tqfStsBadFlag";
    default: return "?";
    }
}

// `call` throws a tqfgen::error with `status`, its name, and the name of the
// call in its message.
// (Not a template: the typed tests call it many times per family.)
inline ::testing::AssertionResult throws_status(const std::function<void()>& call, tqfStatus status,
                                                const std::string& where) {
    try {
        call();
    } catch (const tqfgen::error& e) {
        const std::string what = e.what();
        if (e.status() != status)
            return ::testing::AssertionFailure() << "status " << e.status() << ", expected " << status << ": " << what;
        if (std::string(e.name()) != expected_name(status))
            return ::testing::AssertionFailure() << "name " << e.name() << ", expected " << expected_name(status);
        if (what.find(expected_name(status)) == std::string::npos || what.find(where) == std::string::npos)
            return ::testing::AssertionFailure() << "message \"" << what << "\" lacks the status name or " << where;
        return ::testing::AssertionSuccess();
    } catch (const std::exception& e) {
        return ::testing::AssertionFailure() << "another exception: " << e.what();
    }
    return ::testing::AssertionFailure() << "no exception, expected " << expected_name(status);
}

// One size's compile-time forms (tqfgen::fixed<N>, its nothrow twin,
// std::array) as plain functions, so that a test body is compiled once per
// family and not once per size.
template <class V> struct CompileTimeCalls {
    int size;
    void (*fixed)(const V* src, V* dst, tqfgen::scale s);
    tqfStatus (*nothrow_fixed)(const V* src, V* dst, tqfgen::scale s);
    void (*array)(const V* src, V* dst, tqfgen::scale s);  // through std::array copies of src and dst
};

}  // namespace cxxtest
