// Walsh-Hadamard kernels of orders 8 to 13: passes through a work buffer.
// The splits are fixed per order and precision (they are not a formula):
//
//   order  float                 double
//     8    5 + 3                 5 + 3
//     9    6 + 3                 5 + 4
//    10    6 + 4                 7 + 3
//    11    6 + 5                 inner 8 (5 + 3), top 3
//    12    inner 9 (6 + 3), top 3   inner 8 (5 + 3), top 4
//    13    inner 9 (6 + 3), top 4   inner 10 (7 + 3), top 3
//
// Checks as in the one-pass kernels; after them a null buffer is replaced,
// for this call only, by tqfMalloc of the reported size (the result is not
// tested) and released through tqfFree before returning. A bad flag
// therefore allocates nothing.
#include "passes.h"
#include "scale.h"
#include "sizes.h"
#include "tqfcore.h"
#include "tqfgen.h"

namespace tqfwht {
namespace {

template <class T, int O> struct Split;
template <> struct Split<float, 8> : TwoLevel<float, 8, 5> {};
template <> struct Split<float, 9> : TwoLevel<float, 9, 6> {};
template <> struct Split<float, 10> : TwoLevel<float, 10, 6> {};
template <> struct Split<float, 11> : TwoLevel<float, 11, 6> {};
template <> struct Split<float, 12> : ThreeLevel<float, 12, 9, 6> {};
template <> struct Split<float, 13> : ThreeLevel<float, 13, 9, 6> {};
template <> struct Split<double, 8> : TwoLevel<double, 8, 5> {};
template <> struct Split<double, 9> : TwoLevel<double, 9, 5> {};
template <> struct Split<double, 10> : TwoLevel<double, 10, 7> {};
template <> struct Split<double, 11> : ThreeLevel<double, 11, 8, 5> {};
template <> struct Split<double, 12> : ThreeLevel<double, 12, 8, 5> {};
template <> struct Split<double, 13> : ThreeLevel<double, 13, 10, 7> {};

template <class T, int O, class Mem>
TQF_INLINE tqfStatus high_checked(const T* src, T* dst, int flag, unsigned char* buffer) {
    if (src == nullptr || dst == nullptr) return tqfStsNullPointer;
    T s;
    if (!pick_scale<T, O>(flag, s)) return tqfStsBadFlag;
    const bool own = buffer == nullptr;
    if (own) buffer = static_cast<unsigned char*>(tqfMalloc(buffer_bytes<T>(O)));
    Split<T, O>::template run<Mem>(src, dst, reinterpret_cast<T*>(buffer), s);
    if (own) tqfFree(buffer);
    return tqfStsNoError;
}

template <class T, int O>
__attribute__((noinline)) tqfStatus high_twin(const T* src, T* dst, int flag, unsigned char* buffer) {
    return high_checked<T, O, Unaligned>(src, dst, flag, buffer);
}

template <class T, int O>
TQF_INLINE tqfStatus high_kernel(const T* src, T* dst, int flag, unsigned char* buffer) {
    if (misaligned(src, dst)) return high_twin<T, O>(src, dst, flag, buffer);
    return high_checked<T, O, Aligned>(src, dst, flag, buffer);
}

}  // namespace
}  // namespace tqfwht

#define TQF_WHT_HIGH(O)                                                                                        \
    extern "C" TQFAPI tqfStatus tqfgWHT_##O##_32f(const tqf32f* src, tqf32f* dst, int flag, unsigned char* buffer) { \
        return tqfwht::high_kernel<float, O>(src, dst, flag, buffer);                                          \
    }                                                                                                          \
    extern "C" TQFAPI tqfStatus tqfgWHT_##O##_64f(const tqf64f* src, tqf64f* dst, int flag, unsigned char* buffer) { \
        return tqfwht::high_kernel<double, O>(src, dst, flag, buffer);                                         \
    }

TQF_WHT_HIGH(8)
TQF_WHT_HIGH(9)
TQF_WHT_HIGH(10)
TQF_WHT_HIGH(11)
TQF_WHT_HIGH(12)
TQF_WHT_HIGH(13)
