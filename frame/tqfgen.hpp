// tqfgen.hpp: the C++ interface (header-only, C++17) over the C functions of tqfgen.h.
//
// Everything here is a thin layer over the exported C entries: the same kernels
// run, the same bits come out, nothing is cached or allocated beyond what a
// call or an object below says. What the layer adds is types, sizes and
// exceptions:
//
//   tqfgen::dft_fwd, dft_inv            complex DFTs, std::complex<float> / <double>
//   tqfgen::dft_fwd_ccs, _pack, _perm   forward real DFTs, float / double, into the
//                                       three packed layouts
//   tqfgen::wht                         Walsh-Hadamard, float / double
//   tqfgen::walsh_hadamard<T>           a Walsh-Hadamard of one order with its own work buffer
//   tqfgen::dct4<T>                     a DCT-IV plan (RAII over InitAlloc / Free)
//
// Each transform takes, after (src, dst):
//   - an int length (order for the Walsh-Hadamard): the library's generic entry,
//     which tests the length first;
//   - tqfgen::fixed<N>: the fixed-length kernel of N, called directly (N is
//     checked at compile time);
//   - nothing, for std::vector / std::span / std::array arguments: the length
//     is src's size, and dst's size is checked against the output length of
//     the family (N for complex data, Pack and Perm; N + 2 for CCS of even N,
//     N + 1 for odd N; std::array sizes are checked at compile time).
// and then a tqfgen::scale. `dft_fwd(src, scale)` on a vector returns the
// output vector.
//
// Errors. Every failing status becomes a tqfgen::error (a std::runtime_error)
// that carries the status value and its name ("tqfStsBadSize"). Every call
// that can fail has a twin that returns the status instead and never throws:
// the transforms under the same names in tqfgen::nothrow
// (tqfgen::nothrow::dft_fwd(x, X, 16, scale::none) returns a tqfStatus), the
// objects' construction as tqfgen::nothrow::make(object, size) and their
// calls as tqfgen::nothrow::transform(object, src, dst[, scale]). A size that
// the layer itself refuses (a dst of the wrong size, a plan length it does
// not build) is reported as tqfStsBadSize in both schemes. Failed memory
// allocation of the layer's own buffers throws std::bad_alloc, or gives
// tqfStsNullPointer in the nothrow scheme (as the library's own plan
// allocation does).
//
// Threads: the free functions are reentrant, as the kernels are. A dct4 plan
// of length 64 and above keeps its work buffers inside it, and a
// walsh_hadamard object owns one work buffer: each serves one call at a time,
// so their calls are non-const.
#ifndef TQFGEN_HPP
#define TQFGEN_HPP

#include "tqfgen.h"

#include <array>
#include <climits>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#if defined(__has_include)
#if __has_include(<version>)
#include <version>
#endif
#endif
// The library is C++17; std::span forms exist where the standard library has span.
#if defined(__cpp_lib_span)
#include <span>
#define TQFGEN_HAS_SPAN 1
#endif

namespace tqfgen {

// ---- Element types --------------------------------------------------------
// The C complex types are {re, im} structs, and std::complex<T> is, by the
// standard, accessible as an array of two T, real part first
// (reinterpret_cast<T*>(p) is allowed). The layouts are therefore the same,
// which these checks confirm for the compiler at hand, so the layer hands
// std::complex pointers to the kernels by reinterpret_cast: the kernels read
// and write the interleaved floats, nothing else.
static_assert(std::is_standard_layout_v<tqf32fc> && std::is_standard_layout_v<tqf64fc>);
static_assert(std::is_standard_layout_v<std::complex<float>> &&
              std::is_standard_layout_v<std::complex<double>>);
static_assert(offsetof(tqf32fc, re) == 0 && offsetof(tqf32fc, im) == sizeof(float));
static_assert(offsetof(tqf64fc, re) == 0 && offsetof(tqf64fc, im) == sizeof(double));
static_assert(sizeof(std::complex<float>) == sizeof(tqf32fc) &&
              sizeof(std::complex<double>) == sizeof(tqf64fc));
static_assert(alignof(std::complex<float>) == alignof(tqf32fc) &&
              alignof(std::complex<double>) == alignof(tqf64fc));

// ---- Scale flags ----------------------------------------------------------
// The four scale flags; the library compares them for equality. A value
// outside the four (static_cast<scale>(3)) is passed on and refused by the
// kernel with tqfStsBadFlag.
enum class scale : int {
    fwd_by_n = tqfDivFwdByN,    // forward transforms scale by 1/N
    inv_by_n = tqfDivInvByN,    // inverse transforms scale by 1/N
    by_sqrt_n = tqfDivBySqrtN,  // both directions scale by 1/sqrt(N)
    none = tqfNoDivByAny        // no scaling
};

// ---- Statuses and errors --------------------------------------------------
// The name of a status as the C header spells it.
constexpr const char* status_name(tqfStatus status) noexcept {
    switch (status) {
    case tqfStsNoError: return "tqfStsNoError";
    case tqfStsBadPlan: return "tqfStsBadPlan";
    case tqfStsBadSize: return "tqfStsBadSize";
    case tqfStsNullPointer: return "tqfStsNullPointer";
    case tqfStsBadFlag: return "tqfStsBadFlag";
    default: return "unknown tqfStatus";
    }
}

// A failed call: the status it gave, its name, and a message naming the call.
class error : public std::runtime_error {
public:
    error(tqfStatus status, const std::string& where, const std::string& detail = std::string())
        : std::runtime_error(where + ": " + status_name(status) + " (" + std::to_string(status) + ")" +
                             (detail.empty() ? std::string() : ", " + detail)),
          status_(status) {}
    tqfStatus status() const noexcept { return status_; }
    const char* name() const noexcept { return status_name(status_); }

private:
    tqfStatus status_;
};

// The library's constant version record.
inline const tqfLibVersion& version() noexcept { return *tqfgenGetLibVersion(); }

// ---- Compile-time sizes ---------------------------------------------------
// tqfgen::fixed<16> as the size argument selects the fixed kernel of 16.
template <int N> struct fixed_size {
    static constexpr int value = N;
};
template <int N> inline constexpr fixed_size<N> fixed{};

namespace detail {

template <class T> struct identity {
    using type = T;
};
template <class T> using identity_t = typename identity<T>::type;

constexpr int flag(scale s) noexcept { return static_cast<int>(s); }

// std::complex pointers as the C types (see the layout checks above).
inline const tqf32fc* c_ptr(const std::complex<float>* p) noexcept { return reinterpret_cast<const tqf32fc*>(p); }
inline tqf32fc* c_ptr(std::complex<float>* p) noexcept { return reinterpret_cast<tqf32fc*>(p); }
inline const tqf64fc* c_ptr(const std::complex<double>* p) noexcept { return reinterpret_cast<const tqf64fc*>(p); }
inline tqf64fc* c_ptr(std::complex<double>* p) noexcept { return reinterpret_cast<tqf64fc*>(p); }
inline const float* c_ptr(const float* p) noexcept { return p; }
inline float* c_ptr(float* p) noexcept { return p; }
inline const double* c_ptr(const double* p) noexcept { return p; }
inline double* c_ptr(double* p) noexcept { return p; }

// ---- Failure policies: the throwing forms and the nothrow twins share one body.
// `detail` is a callable giving extra text for the message; it runs only when
// an exception is made.
struct throw_on_failure {
    static constexpr bool throws = true;
    using result = void;
    template <class Detail> static void check(tqfStatus status, const char* where, Detail&& detail) {
        if (status != tqfStsNoError) throw error(status, where, detail());
    }
};
struct return_status {
    static constexpr bool throws = false;
    using result = tqfStatus;
    template <class Detail> static tqfStatus check(tqfStatus status, const char*, Detail&&) noexcept {
        return status;
    }
};

template <class N> std::string size_text(const char* what, N n) { return std::string(what) + " " + std::to_string(n); }

// ---- The families -----------------------------------------------------------
// A family tag names the family for messages and gives its output length for
// an input of n elements.
struct family_dft_fwd {
    static constexpr const char* name = "tqfgen::dft_fwd";
    static constexpr std::size_t out_length(std::size_t n) noexcept { return n; }
};
struct family_dft_inv {
    static constexpr const char* name = "tqfgen::dft_inv";
    static constexpr std::size_t out_length(std::size_t n) noexcept { return n; }
};
struct family_dft_fwd_ccs {
    static constexpr const char* name = "tqfgen::dft_fwd_ccs";
    // Re X[0], 0, ..., up to X[N/2]: N + 2 for even N, N + 1 for odd N.
    static constexpr std::size_t out_length(std::size_t n) noexcept { return n / 2 * 2 + 2; }
};
struct family_dft_fwd_pack {
    static constexpr const char* name = "tqfgen::dft_fwd_pack";
    static constexpr std::size_t out_length(std::size_t n) noexcept { return n; }
};
struct family_dft_fwd_perm {
    static constexpr const char* name = "tqfgen::dft_fwd_perm";
    static constexpr std::size_t out_length(std::size_t n) noexcept { return n; }
};
struct family_wht {
    static constexpr const char* name = "tqfgen::wht";
};

// kernels<Family, float or double>: the element types, the generic entry and
// the fixed kernels in a dense table indexed by size - first, made from the
// C names by the lists below. Empty for anything else, so that a wrong
// element type finds no overload.
template <class Family, class Real> struct kernels {};

#define TQFGEN_CXX_SIZES_2_64_(X, stem, prec)                                                          \
    X(stem, 2, prec) X(stem, 3, prec) X(stem, 4, prec) X(stem, 5, prec) X(stem, 6, prec) X(stem, 7, prec)  \
    X(stem, 8, prec) X(stem, 9, prec) X(stem, 10, prec) X(stem, 11, prec) X(stem, 12, prec)               \
    X(stem, 13, prec) X(stem, 14, prec) X(stem, 15, prec) X(stem, 16, prec) X(stem, 17, prec)             \
    X(stem, 18, prec) X(stem, 19, prec) X(stem, 20, prec) X(stem, 21, prec) X(stem, 22, prec)             \
    X(stem, 23, prec) X(stem, 24, prec) X(stem, 25, prec) X(stem, 26, prec) X(stem, 27, prec)             \
    X(stem, 28, prec) X(stem, 29, prec) X(stem, 30, prec) X(stem, 31, prec) X(stem, 32, prec)             \
    X(stem, 33, prec) X(stem, 34, prec) X(stem, 35, prec) X(stem, 36, prec) X(stem, 37, prec)             \
    X(stem, 38, prec) X(stem, 39, prec) X(stem, 40, prec) X(stem, 41, prec) X(stem, 42, prec)             \
    X(stem, 43, prec) X(stem, 44, prec) X(stem, 45, prec) X(stem, 46, prec) X(stem, 47, prec)             \
    X(stem, 48, prec) X(stem, 49, prec) X(stem, 50, prec) X(stem, 51, prec) X(stem, 52, prec)             \
    X(stem, 53, prec) X(stem, 54, prec) X(stem, 55, prec) X(stem, 56, prec) X(stem, 57, prec)             \
    X(stem, 58, prec) X(stem, 59, prec) X(stem, 60, prec) X(stem, 61, prec) X(stem, 62, prec)             \
    X(stem, 63, prec) X(stem, 64, prec)
#define TQFGEN_CXX_ORDERS_1_13_(X, stem, prec)                                                         \
    X(stem, 1, prec) X(stem, 2, prec) X(stem, 3, prec) X(stem, 4, prec) X(stem, 5, prec) X(stem, 6, prec)  \
    X(stem, 7, prec) X(stem, 8, prec) X(stem, 9, prec) X(stem, 10, prec) X(stem, 11, prec)                \
    X(stem, 12, prec) X(stem, 13, prec)
#define TQFGEN_CXX_KERNEL_(stem, n, prec) &stem##_##n##_##prec,

// One line per family and precision of the (src, dst, flag) shape; a new
// family of that shape (inverse real, Hartley) is a tag above, two lines here
// and two objects at the end of this file.
#define TQFGEN_CXX_DFT_FAMILY_(Family, Real, Value, CType, stem, prec)                              \
    template <> struct kernels<Family, Real> {                                                       \
        using value_type = Value;                                                                    \
        static constexpr int first = 2, last = 64;                                                   \
        static constexpr tqfStatus (*generic)(const CType*, CType*, int, int) = &stem##_##prec;     \
        static constexpr tqfStatus (*fixed[])(const CType*, CType*, int) = {                         \
            TQFGEN_CXX_SIZES_2_64_(TQFGEN_CXX_KERNEL_, stem, prec)};                                 \
    };

TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd, float, std::complex<float>, tqf32fc, tqfgDFTFwd_CToC, 32fc)
TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd, double, std::complex<double>, tqf64fc, tqfgDFTFwd_CToC, 64fc)
TQFGEN_CXX_DFT_FAMILY_(family_dft_inv, float, std::complex<float>, tqf32fc, tqfgDFTInv_CToC, 32fc)
TQFGEN_CXX_DFT_FAMILY_(family_dft_inv, double, std::complex<double>, tqf64fc, tqfgDFTInv_CToC, 64fc)
TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd_ccs, float, float, tqf32f, tqfgDFTFwd_RToCCS, 32f)
TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd_ccs, double, double, tqf64f, tqfgDFTFwd_RToCCS, 64f)
TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd_pack, float, float, tqf32f, tqfgDFTFwd_RToPack, 32f)
TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd_pack, double, double, tqf64f, tqfgDFTFwd_RToPack, 64f)
TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd_perm, float, float, tqf32f, tqfgDFTFwd_RToPerm, 32f)
TQFGEN_CXX_DFT_FAMILY_(family_dft_fwd_perm, double, double, tqf64f, tqfgDFTFwd_RToPerm, 64f)

#define TQFGEN_CXX_WHT_FAMILY_(Real, prec)                                                            \
    template <> struct kernels<family_wht, Real> {                                                   \
        using value_type = Real;                                                                     \
        static constexpr int first = 1, last = 13;                                                   \
        static constexpr tqfStatus (*generic)(const Real*, Real*, int, int, unsigned char*) = &tqfgWHT_##prec; \
        static constexpr tqfStatus (*fixed[])(const Real*, Real*, int, unsigned char*) = {          \
            TQFGEN_CXX_ORDERS_1_13_(TQFGEN_CXX_KERNEL_, tqfgWHT, prec)};                             \
        static constexpr tqfStatus (*buffer_size)(int, int*) = &tqfgWHTGetBufferSize_##prec;        \
    };

TQFGEN_CXX_WHT_FAMILY_(float, 32f)
TQFGEN_CXX_WHT_FAMILY_(double, 64f)

#undef TQFGEN_CXX_DFT_FAMILY_
#undef TQFGEN_CXX_WHT_FAMILY_
#undef TQFGEN_CXX_KERNEL_
#undef TQFGEN_CXX_SIZES_2_64_
#undef TQFGEN_CXX_ORDERS_1_13_

// The kernels of a family for the element type V (std::complex<T> or T), if
// the family takes V; no `type` otherwise.
template <class V> struct real_of {
    using type = V;
};
template <class T> struct real_of<std::complex<T>> {
    using type = T;
};
template <class Family, class V, class = void> struct kernels_for {};
template <class Family, class V>
struct kernels_for<Family, V,
                   std::enable_if_t<std::is_same_v<
                       typename kernels<Family, typename real_of<V>::type>::value_type, V>>> {
    using type = kernels<Family, typename real_of<V>::type>;
};
template <class Family, class V> using kernels_t = typename kernels_for<Family, V>::type;

// A container's size as the C entries' int length, or -1 when it does not fit.
constexpr int int_size(std::size_t n) noexcept { return n > std::size_t(INT_MAX) ? -1 : static_cast<int>(n); }

// ---- A transform family of the (src, dst, flag) shape, all forms -----------
template <class Family, class Policy> class sized_transform {
public:
    using result = typename Policy::result;

    // Run-time length through the generic entry (which tests it first).
    template <class V, class K = kernels_t<Family, V>>
    result operator()(const V* src, V* dst, int length, scale s) const noexcept(!Policy::throws) {
        return Policy::check(K::generic(c_ptr(src), c_ptr(dst), length, flag(s)), Family::name,
                             [&] { return size_text("length", length); });
    }

    // Compile-time length: the fixed kernel of N, called directly.
    template <class V, int N, class K = kernels_t<Family, V>>
    result operator()(const V* src, V* dst, fixed_size<N>, scale s) const noexcept(!Policy::throws) {
        static_assert(N >= K::first && N <= K::last, "no fixed kernel of this length");
        constexpr auto kernel = K::fixed[N - K::first];
        return Policy::check(kernel(c_ptr(src), c_ptr(dst), flag(s)), Family::name,
                             [] { return size_text("length", N); });
    }

    template <class V, class K = kernels_t<Family, V>>
    result operator()(const std::vector<V>& src, std::vector<V>& dst, scale s) const noexcept(!Policy::throws) {
        return run<K>(src.data(), src.size(), dst.data(), dst.size(), s);
    }

    // Both lengths are checked at compile time.
    template <class V, std::size_t N, class K = kernels_t<Family, V>>
    result operator()(const std::array<V, N>& src, std::array<V, Family::out_length(N)>& dst, scale s) const
        noexcept(!Policy::throws) {
        return (*this)(src.data(), dst.data(), fixed<static_cast<int>(N)>, s);
    }

#if defined(TQFGEN_HAS_SPAN)
    // V is deduced from dst; src converts from any contiguous range of V.
    template <class V, std::size_t E, class K = kernels_t<Family, V>>
    result operator()(std::span<const identity_t<V>> src, std::span<V, E> dst, scale s) const noexcept(!Policy::throws) {
        return run<K>(src.data(), src.size(), dst.data(), dst.size(), s);
    }
#endif

    // The output as a new vector (throwing form only).
    template <class V, class K = kernels_t<Family, V>, class P = Policy, std::enable_if_t<P::throws, int> = 0>
    std::vector<V> operator()(const std::vector<V>& src, scale s) const {
        if (int_size(src.size()) < 0) throw error(tqfStsBadSize, Family::name, size_text("length", src.size()));
        std::vector<V> dst(Family::out_length(src.size()));
        (*this)(src, dst, s);
        return dst;
    }

private:
    template <class K, class V>
    static result run(const V* src, std::size_t n, V* dst, std::size_t dst_n, scale s) noexcept(!Policy::throws) {
        const int length = int_size(n);
        if (length < 0) return Policy::check(tqfStsBadSize, Family::name, [&] { return size_text("length", n); });
        if (dst_n != Family::out_length(n))
            return Policy::check(tqfStsBadSize, Family::name, [&] {
                return "dst holds " + std::to_string(dst_n) + " elements, the output of length " + std::to_string(n) +
                       " has " + std::to_string(Family::out_length(n));
            });
        return (sized_transform{})(src, dst, length, s);
    }
};

// The order of a Walsh-Hadamard of n = 2^order elements, or -1 when n is no
// power of two (1 gives 0, which the library refuses).
constexpr int order_of(std::size_t n) noexcept {
    if (n == 0 || (n & (n - 1)) != 0) return -1;
    int order = 0;
    while (n > 1) {
        n >>= 1;
        ++order;
    }
    return order;
}

// ---- The Walsh-Hadamard family, all forms ------------------------------------
// `buffer`: a 16-byte aligned work buffer of tqfgWHTGetBufferSize_* bytes, or
// null, in which case the kernels of orders 8..13 allocate one for the call.
template <class Policy> class wht_transform {
public:
    using result = typename Policy::result;

    template <class V, class K = kernels_t<family_wht, V>>
    result operator()(const V* src, V* dst, int order, scale s, void* buffer = nullptr) const noexcept(!Policy::throws) {
        return Policy::check(K::generic(src, dst, order, flag(s), static_cast<unsigned char*>(buffer)),
                             family_wht::name, [&] { return size_text("order", order); });
    }

    template <class V, int Order, class K = kernels_t<family_wht, V>>
    result operator()(const V* src, V* dst, fixed_size<Order>, scale s, void* buffer = nullptr) const
        noexcept(!Policy::throws) {
        static_assert(Order >= K::first && Order <= K::last, "no Walsh-Hadamard kernel of this order");
        constexpr auto kernel = K::fixed[Order - K::first];
        return Policy::check(kernel(src, dst, flag(s), static_cast<unsigned char*>(buffer)), family_wht::name,
                             [] { return size_text("order", Order); });
    }

    // The order is that of src's size, which must be a power of two.
    template <class V, class K = kernels_t<family_wht, V>>
    result operator()(const std::vector<V>& src, std::vector<V>& dst, scale s, void* buffer = nullptr) const
        noexcept(!Policy::throws) {
        return run(src.data(), src.size(), dst.data(), dst.size(), s, buffer);
    }

    template <class V, std::size_t N, class K = kernels_t<family_wht, V>>
    result operator()(const std::array<V, N>& src, std::array<V, N>& dst, scale s, void* buffer = nullptr) const
        noexcept(!Policy::throws) {
        static_assert(order_of(N) > 0, "a Walsh-Hadamard takes 2^order elements");
        return (*this)(src.data(), dst.data(), fixed<order_of(N)>, s, buffer);
    }

#if defined(TQFGEN_HAS_SPAN)
    template <class V, std::size_t E, class K = kernels_t<family_wht, V>>
    result operator()(std::span<const identity_t<V>> src, std::span<V, E> dst, scale s, void* buffer = nullptr) const
        noexcept(!Policy::throws) {
        return run(src.data(), src.size(), dst.data(), dst.size(), s, buffer);
    }
#endif

    template <class V, class K = kernels_t<family_wht, V>, class P = Policy, std::enable_if_t<P::throws, int> = 0>
    std::vector<V> operator()(const std::vector<V>& src, scale s, void* buffer = nullptr) const {
        if (order_of(src.size()) < 0) throw error(tqfStsBadSize, family_wht::name, size_text("length", src.size()));
        std::vector<V> dst(src.size());
        (*this)(src, dst, s, buffer);
        return dst;
    }

private:
    template <class V>
    static result run(const V* src, std::size_t n, V* dst, std::size_t dst_n, scale s, void* buffer) noexcept(!Policy::throws) {
        const int order = order_of(n);
        if (order < 0)
            return Policy::check(tqfStsBadSize, family_wht::name,
                                 [&] { return size_text("length", n) + " is not a power of two"; });
        if (dst_n != n)
            return Policy::check(tqfStsBadSize, family_wht::name, [&] {
                return "dst holds " + std::to_string(dst_n) + " elements, src " + std::to_string(n);
            });
        return (wht_transform{})(src, dst, order, s, buffer);
    }
};

// ---- DCT-IV entries by precision ---------------------------------------------
template <class T> struct dct4_api {};
template <> struct dct4_api<float> {
    using spec = tqfgDCT4Spec_32f;
    static constexpr int max_log2 = 26;
    static constexpr const char* name = "tqfgen::dct4<float>";
    static tqfStatus init_alloc(spec** plan, int length) noexcept { return tqfgDCT4InitAlloc_32f(plan, length); }
    static tqfStatus release(spec* plan) noexcept { return tqfgDCT4Free_32f(plan); }
    static tqfStatus run(const float* src, float* dst, const spec* plan) noexcept { return tqfgDCT4_32f(src, dst, plan); }
};
template <> struct dct4_api<double> {
    using spec = tqfgDCT4Spec_64f;
    static constexpr int max_log2 = 25;
    static constexpr const char* name = "tqfgen::dct4<double>";
    static tqfStatus init_alloc(spec** plan, int length) noexcept { return tqfgDCT4InitAlloc_64f(plan, length); }
    static tqfStatus release(spec* plan) noexcept { return tqfgDCT4Free_64f(plan); }
    static tqfStatus run(const double* src, double* dst, const spec* plan) noexcept { return tqfgDCT4_64f(src, dst, plan); }
};

// The nothrow scheme's way into the objects' status-returning insides.
struct object_access;

}  // namespace detail

// ---- DCT-IV plan ---------------------------------------------------------------
// The unscaled DCT-IV y[k] = sum_j x[j] cos(pi (j + 1/2)(k + 1/2) / n) of one
// power-of-two length n, through a plan that the library builds in a block
// of its own allocation (InitAlloc) and that the destructor takes down
// (Free). Move-only; a default-constructed or moved-from plan is empty, and
// calling it gives tqfStsNullPointer.
//
// Lengths: exactly the powers of two from 2 to 2^26 (float) or 2^25 (double),
// tested here before the library is asked. The library's planner also
// accepts some other lengths, and builds plans for them that are no DCT-IV
// of that length: 2^k + 1 (such a plan writes one element past dst) and, in
// double 2^29 and 2^30, in single 2^30, lengths whose block size wraps in
// 32-bit arithmetic to a block far smaller than the plan. Those are refused
// with tqfStsBadSize and the planner is never called.
//
// A plan of length 64 and above keeps its work buffers inside it, so one plan
// serves one call at a time: calls are non-const, and two threads that
// transform at the same time need two plans. src and dst hold n elements
// each, any alignment, and may be the same array.
template <class T> class dct4 {
    using api = detail::dct4_api<T>;

public:
    using value_type = T;
    using native_handle_type = typename api::spec*;
    static constexpr int min_length = 2;
    static constexpr int max_length = 1 << api::max_log2;

    // Whether the constructor takes `length`.
    static constexpr bool accepts(int length) noexcept {
        return length >= min_length && length <= max_length && (length & (length - 1)) == 0;
    }

    dct4() noexcept = default;
    explicit dct4(int length) {
        if (!accepts(length))
            throw error(tqfStsBadSize, api::name,
                        "length " + std::to_string(length) + " is not a power of two from 2 to 2^" +
                            std::to_string(api::max_log2));
        const tqfStatus status = init(length);
        if (status != tqfStsNoError) throw error(status, api::name, "length " + std::to_string(length));
    }
    dct4(dct4&& other) noexcept
        : plan_(std::exchange(other.plan_, nullptr)), length_(std::exchange(other.length_, 0)) {}
    dct4& operator=(dct4&& other) noexcept {
        if (this != &other) {
            reset();
            plan_ = std::exchange(other.plan_, nullptr);
            length_ = std::exchange(other.length_, 0);
        }
        return *this;
    }
    dct4(const dct4&) = delete;
    dct4& operator=(const dct4&) = delete;
    ~dct4() { reset(); }

    // Frees the plan; the object is empty afterwards.
    void reset() noexcept {
        if (plan_) api::release(plan_);
        plan_ = nullptr;
        length_ = 0;
    }

    int length() const noexcept { return length_; }
    bool empty() const noexcept { return plan_ == nullptr; }
    native_handle_type native_handle() const noexcept { return plan_; }

    void operator()(const T* src, T* dst) { check(run(src, dst)); }
    void transform(const T* src, T* dst) { (*this)(src, dst); }
    // src and dst must hold length() elements each.
    void operator()(const std::vector<T>& src, std::vector<T>& dst) { sized(src.data(), src.size(), dst.data(), dst.size()); }
    void transform(const std::vector<T>& src, std::vector<T>& dst) { (*this)(src, dst); }
    std::vector<T> operator()(const std::vector<T>& src) {
        std::vector<T> dst(src.size());
        (*this)(src, dst);
        return dst;
    }
#if defined(TQFGEN_HAS_SPAN)
    void operator()(std::span<const T> src, std::span<T> dst) { sized(src.data(), src.size(), dst.data(), dst.size()); }
    void transform(std::span<const T> src, std::span<T> dst) { (*this)(src, dst); }
#endif

private:
    friend struct detail::object_access;

    // A plan of an accepted length from the library; *this is unchanged on failure.
    tqfStatus init(int length) noexcept {
        if (!accepts(length)) return tqfStsBadSize;
        typename api::spec* plan = nullptr;
        const tqfStatus status = api::init_alloc(&plan, length);
        if (status != tqfStsNoError) return status;
        reset();
        plan_ = plan;
        length_ = length;
        return status;
    }
    void check(tqfStatus status) const {
        if (status != tqfStsNoError) throw error(status, api::name, "length " + std::to_string(length_));
    }
    tqfStatus run(const T* src, T* dst) noexcept { return api::run(src, dst, plan_); }
    tqfStatus sized_status(std::size_t n, std::size_t dst_n) const noexcept {
        return n == std::size_t(length_) && dst_n == std::size_t(length_) ? tqfStsNoError : tqfStsBadSize;
    }
    void sized(const T* src, std::size_t n, T* dst, std::size_t dst_n) {
        if (sized_status(n, dst_n) != tqfStsNoError)
            throw error(tqfStsBadSize, api::name,
                        "src and dst hold " + std::to_string(n) + " and " + std::to_string(dst_n) +
                            " elements, the plan's length is " + std::to_string(length_));
        (*this)(src, dst);
    }

    native_handle_type plan_ = nullptr;
    int length_ = 0;
};

// ---- Walsh-Hadamard of one order with its own work buffer --------------------
// The transform of 2^order elements (order 1..13) with a 16-byte aligned
// work buffer of tqfgWHTGetBufferSize_* bytes held by the object (none below
// order 8), so that no call allocates. The buffer belongs to one running
// call: calls are non-const, and concurrent transforms need one object each.
// Move-only; an empty (default-constructed or moved-from) object has order 0,
// and calling it gives tqfStsBadSize.
template <class T> class walsh_hadamard {
    using K = detail::kernels<detail::family_wht, T>;
    static_assert(std::is_same_v<typename K::value_type, T>, "walsh_hadamard<float> or walsh_hadamard<double>");

public:
    using value_type = T;
    static constexpr std::size_t buffer_alignment = 16;

    walsh_hadamard() noexcept = default;
    explicit walsh_hadamard(int order) {
        const tqfStatus status = init(order);
        if (status == tqfStsNullPointer) throw std::bad_alloc();
        if (status != tqfStsNoError) throw error(status, name, "order " + std::to_string(order));
    }
    walsh_hadamard(walsh_hadamard&& other) noexcept
        : buffer_(std::move(other.buffer_)), bytes_(std::exchange(other.bytes_, 0)),
          order_(std::exchange(other.order_, 0)) {}
    walsh_hadamard& operator=(walsh_hadamard&& other) noexcept {
        if (this != &other) {
            buffer_ = std::move(other.buffer_);
            bytes_ = std::exchange(other.bytes_, 0);
            order_ = std::exchange(other.order_, 0);
        }
        return *this;
    }

    int order() const noexcept { return order_; }
    std::size_t size() const noexcept { return order_ ? std::size_t(1) << order_ : 0; }
    std::size_t buffer_bytes() const noexcept { return bytes_; }
    const unsigned char* buffer() const noexcept { return buffer_.get(); }

    // src and dst hold size() elements each, any alignment, and may be the same array.
    void operator()(const T* src, T* dst, scale s) { check(run(src, dst, s)); }
    void transform(const T* src, T* dst, scale s) { (*this)(src, dst, s); }
    void operator()(const std::vector<T>& src, std::vector<T>& dst, scale s) {
        check(sized(src.data(), src.size(), dst.data(), dst.size(), s));
    }
    void transform(const std::vector<T>& src, std::vector<T>& dst, scale s) { (*this)(src, dst, s); }
#if defined(TQFGEN_HAS_SPAN)
    void operator()(std::span<const T> src, std::span<T> dst, scale s) {
        check(sized(src.data(), src.size(), dst.data(), dst.size(), s));
    }
    void transform(std::span<const T> src, std::span<T> dst, scale s) { (*this)(src, dst, s); }
#endif

private:
    friend struct detail::object_access;

    static constexpr const char* name = "tqfgen::walsh_hadamard";
    struct aligned_delete {
        void operator()(unsigned char* p) const noexcept { ::operator delete(p, std::align_val_t{buffer_alignment}); }
    };

    // The buffer of the size the library asks for `order`; *this is unchanged
    // on failure (tqfStsNullPointer: the allocation failed).
    tqfStatus init(int order) noexcept {
        int bytes = 0;
        const tqfStatus status = K::buffer_size(order, &bytes);
        if (status != tqfStsNoError) return status;
        std::unique_ptr<unsigned char, aligned_delete> buffer;
        if (bytes > 0) {
            buffer.reset(static_cast<unsigned char*>(
                ::operator new(std::size_t(bytes), std::align_val_t{buffer_alignment}, std::nothrow)));
            if (!buffer) return tqfStsNullPointer;
        }
        buffer_ = std::move(buffer);
        bytes_ = std::size_t(bytes);
        order_ = order;
        return tqfStsNoError;
    }

    tqfStatus run(const T* src, T* dst, scale s) noexcept {
        return K::generic(src, dst, order_, detail::flag(s), buffer_.get());
    }
    tqfStatus sized(const T* src, std::size_t n, T* dst, std::size_t dst_n, scale s) noexcept {
        if (n != size() || dst_n != size()) return tqfStsBadSize;
        return run(src, dst, s);
    }
    void check(tqfStatus status) const {
        if (status != tqfStsNoError) throw error(status, name, "order " + std::to_string(order_));
    }

    std::unique_ptr<unsigned char, aligned_delete> buffer_;
    std::size_t bytes_ = 0;
    int order_ = 0;
};

namespace detail {
struct object_access {
    template <class Object> static tqfStatus make(Object& object, int size) noexcept {
        Object made;
        const tqfStatus status = made.init(size);
        if (status == tqfStsNoError) object = std::move(made);
        return status;
    }
    template <class T> static tqfStatus run(dct4<T>& plan, const T* src, std::size_t n, T* dst, std::size_t dst_n) noexcept {
        const tqfStatus status = plan.sized_status(n, dst_n);
        return status != tqfStsNoError ? status : plan.run(src, dst);
    }
    template <class T> static tqfStatus run(dct4<T>& plan, const T* src, T* dst) noexcept { return plan.run(src, dst); }
    template <class T>
    static tqfStatus run(walsh_hadamard<T>& wht, const T* src, std::size_t n, T* dst, std::size_t dst_n, scale s) noexcept {
        return wht.sized(src, n, dst, dst_n, s);
    }
    template <class T> static tqfStatus run(walsh_hadamard<T>& wht, const T* src, T* dst, scale s) noexcept {
        return wht.run(src, dst, s);
    }
};
}  // namespace detail

// ---- The transforms -------------------------------------------------------------
inline constexpr detail::sized_transform<detail::family_dft_fwd, detail::throw_on_failure> dft_fwd{};
inline constexpr detail::sized_transform<detail::family_dft_inv, detail::throw_on_failure> dft_inv{};
inline constexpr detail::sized_transform<detail::family_dft_fwd_ccs, detail::throw_on_failure> dft_fwd_ccs{};
inline constexpr detail::sized_transform<detail::family_dft_fwd_pack, detail::throw_on_failure> dft_fwd_pack{};
inline constexpr detail::sized_transform<detail::family_dft_fwd_perm, detail::throw_on_failure> dft_fwd_perm{};
inline constexpr detail::wht_transform<detail::throw_on_failure> wht{};

// The same calls giving the status instead of throwing.
namespace nothrow {

inline constexpr detail::sized_transform<detail::family_dft_fwd, detail::return_status> dft_fwd{};
inline constexpr detail::sized_transform<detail::family_dft_inv, detail::return_status> dft_inv{};
inline constexpr detail::sized_transform<detail::family_dft_fwd_ccs, detail::return_status> dft_fwd_ccs{};
inline constexpr detail::sized_transform<detail::family_dft_fwd_pack, detail::return_status> dft_fwd_pack{};
inline constexpr detail::sized_transform<detail::family_dft_fwd_perm, detail::return_status> dft_fwd_perm{};
inline constexpr detail::wht_transform<detail::return_status> wht{};

// The objects: construction as make(object, size), which leaves the object as
// it was on failure, and calls as transform(object, src, dst[, scale]).
template <class T> tqfStatus make(dct4<T>& plan, int length) noexcept { return detail::object_access::make(plan, length); }
template <class T> tqfStatus make(walsh_hadamard<T>& wht, int order) noexcept {
    return detail::object_access::make(wht, order);
}
template <class T> tqfStatus transform(dct4<T>& plan, const T* src, T* dst) noexcept {
    return detail::object_access::run(plan, src, dst);
}
template <class T> tqfStatus transform(dct4<T>& plan, const std::vector<T>& src, std::vector<T>& dst) noexcept {
    return detail::object_access::run(plan, src.data(), src.size(), dst.data(), dst.size());
}
template <class T> tqfStatus transform(walsh_hadamard<T>& wht, const T* src, T* dst, scale s) noexcept {
    return detail::object_access::run(wht, src, dst, s);
}
template <class T>
tqfStatus transform(walsh_hadamard<T>& wht, const std::vector<T>& src, std::vector<T>& dst, scale s) noexcept {
    return detail::object_access::run(wht, src.data(), src.size(), dst.data(), dst.size(), s);
}
#if defined(TQFGEN_HAS_SPAN)
template <class T> tqfStatus transform(dct4<T>& plan, std::span<const detail::identity_t<T>> src, std::span<detail::identity_t<T>> dst) noexcept {
    return detail::object_access::run(plan, src.data(), src.size(), dst.data(), dst.size());
}
template <class T>
tqfStatus transform(walsh_hadamard<T>& wht, std::span<const detail::identity_t<T>> src, std::span<detail::identity_t<T>> dst, scale s) noexcept {
    return detail::object_access::run(wht, src.data(), src.size(), dst.data(), dst.size(), s);
}
#endif
}  // namespace nothrow
}  // namespace tqfgen

#endif  // TQFGEN_HPP
