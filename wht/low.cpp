// Walsh-Hadamard kernels of orders 1 to 7: one straight-line pass each, no
// buffer. Forms by order:
//   float:  1-3 scalar; 4-7 four lanes, aligned kernel + unaligned twin
//   double: 1-2 scalar; 3 two lanes, both paths in one routine;
//           4-7 two lanes, aligned kernel + unaligned twin
// Checks, in order: alignment picks the path (a null pointer counts as
// aligned), then null src/dst (-8), then the flag (-16); dst is untouched on
// a failure.
#include "body.h"
#include "scale.h"
#include "tqfgen.h"

namespace tqfwht {
namespace {

template <class T, int O>
TQF_INLINE tqfStatus scalar_kernel(const T* src, T* dst, int flag) {
    if (src == nullptr || dst == nullptr) return tqfStsNullPointer;
    T s;
    if (!pick_scale<T, O>(flag, s)) return tqfStsBadFlag;
    scalar_block<T, O>(src, dst, s);
    return tqfStsNoError;
}

template <class T, int O, class Mem>
TQF_INLINE tqfStatus packed_checked(const T* src, T* dst, int flag) {
    if (src == nullptr || dst == nullptr) return tqfStsNullPointer;
    T s;
    if (!pick_scale<T, O>(flag, s)) return tqfStsBadFlag;
    packed_block<T, O, Mem, Mem, true>(src, dst, s);
    return tqfStsNoError;
}

// The unaligned twin: its own routine, repeating the checks, so that an
// unaligned pointer with a null partner still reports -8.
template <class T, int O>
__attribute__((noinline)) tqfStatus packed_twin(const T* src, T* dst, int flag) {
    return packed_checked<T, O, Unaligned>(src, dst, flag);
}

template <class T, int O>
TQF_INLINE tqfStatus packed_kernel(const T* src, T* dst, int flag) {
    if (misaligned(src, dst)) return packed_twin<T, O>(src, dst, flag);
    return packed_checked<T, O, Aligned>(src, dst, flag);
}

// Double order 3: both paths in one routine, the choice made after the checks.
TQF_INLINE tqfStatus wht3_64(const double* src, double* dst, int flag) {
    if (src == nullptr || dst == nullptr) return tqfStsNullPointer;
    double s;
    if (!pick_scale<double, 3>(flag, s)) return tqfStsBadFlag;
    if (misaligned(src, dst))
        packed_block<double, 3, Unaligned, Unaligned, true>(src, dst, s);
    else
        packed_block<double, 3, Aligned, Aligned, true>(src, dst, s);
    return tqfStsNoError;
}

}  // namespace
}  // namespace tqfwht

using namespace tqfwht;

#define TQF_WHT_LOW(O, F32, F64)                                                                        \
    extern "C" TQFAPI tqfStatus tqfgWHT_##O##_32f(const tqf32f* src, tqf32f* dst, int flag, unsigned char*) { \
        return F32;                                                                                     \
    }                                                                                                   \
    extern "C" TQFAPI tqfStatus tqfgWHT_##O##_64f(const tqf64f* src, tqf64f* dst, int flag, unsigned char*) { \
        return F64;                                                                                     \
    }

TQF_WHT_LOW(1, (scalar_kernel<float, 1>(src, dst, flag)), (scalar_kernel<double, 1>(src, dst, flag)))
TQF_WHT_LOW(2, (scalar_kernel<float, 2>(src, dst, flag)), (scalar_kernel<double, 2>(src, dst, flag)))
TQF_WHT_LOW(3, (scalar_kernel<float, 3>(src, dst, flag)), (wht3_64(src, dst, flag)))
TQF_WHT_LOW(4, (packed_kernel<float, 4>(src, dst, flag)), (packed_kernel<double, 4>(src, dst, flag)))
TQF_WHT_LOW(5, (packed_kernel<float, 5>(src, dst, flag)), (packed_kernel<double, 5>(src, dst, flag)))
TQF_WHT_LOW(6, (packed_kernel<float, 6>(src, dst, flag)), (packed_kernel<double, 6>(src, dst, flag)))
TQF_WHT_LOW(7, (packed_kernel<float, 7>(src, dst, flag)), (packed_kernel<double, 7>(src, dst, flag)))
