// Scale factors of the Walsh-Hadamard kernels and the flag test.
//
// Each order has its own three factors, 1, 1/N and 1/sqrt(N) with N = 2^order,
// written as exact literals correctly rounded to the element precision: 1/N is
// a power of two, and 1/sqrt(N) is a power of two (even orders) or sqrt(2)
// times one (odd orders).
#pragma once

#include "tqfgen.h"
#include "vec.h"

namespace tqfwht {

template <class T, int O> struct Scales;

#define TQF_WHT_SCALES(O, INV_N, INV_SQRT_32, INV_SQRT_64)                         \
    template <> struct Scales<float, O> {                                          \
        static constexpr float kOne = 1.0f, kInvN = INV_N##f, kInvSqrtN = INV_SQRT_32; \
    };                                                                             \
    template <> struct Scales<double, O> {                                         \
        static constexpr double kOne = 1.0, kInvN = INV_N, kInvSqrtN = INV_SQRT_64; \
    };

TQF_WHT_SCALES(1, 0x1p-1, 0x1.6a09e6p-1f, 0x1.6a09e667f3bcdp-1)
TQF_WHT_SCALES(2, 0x1p-2, 0x1p-1f, 0x1p-1)
TQF_WHT_SCALES(3, 0x1p-3, 0x1.6a09e6p-2f, 0x1.6a09e667f3bcdp-2)
TQF_WHT_SCALES(4, 0x1p-4, 0x1p-2f, 0x1p-2)
TQF_WHT_SCALES(5, 0x1p-5, 0x1.6a09e6p-3f, 0x1.6a09e667f3bcdp-3)
TQF_WHT_SCALES(6, 0x1p-6, 0x1p-3f, 0x1p-3)
TQF_WHT_SCALES(7, 0x1p-7, 0x1.6a09e6p-4f, 0x1.6a09e667f3bcdp-4)
TQF_WHT_SCALES(8, 0x1p-8, 0x1p-4f, 0x1p-4)
TQF_WHT_SCALES(9, 0x1p-9, 0x1.6a09e6p-5f, 0x1.6a09e667f3bcdp-5)
TQF_WHT_SCALES(10, 0x1p-10, 0x1p-5f, 0x1p-5)
TQF_WHT_SCALES(11, 0x1p-11, 0x1.6a09e6p-6f, 0x1.6a09e667f3bcdp-6)
TQF_WHT_SCALES(12, 0x1p-12, 0x1p-6f, 0x1p-6)
TQF_WHT_SCALES(13, 0x1p-13, 0x1.6a09e6p-7f, 0x1.6a09e667f3bcdp-7)
#undef TQF_WHT_SCALES

// Picks the factor for `flag`, testing 8, 4, 1, 2 in that order (the common
// unscaled call first). False for any other value: the flags are not a mask.
template <class T, int O>
TQF_INLINE bool pick_scale(int flag, T& s) {
    using S = Scales<T, O>;
    if (flag == tqfNoDivByAny) { s = S::kOne; return true; }
    if (flag == tqfDivBySqrtN) { s = S::kInvSqrtN; return true; }
    if (flag == tqfDivFwdByN) { s = S::kInvN; return true; }
    if (flag == tqfDivInvByN) { s = S::kInvN; return true; }
    return false;
}

}  // namespace tqfwht
