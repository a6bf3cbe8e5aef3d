// Generic complex DFT entries: (src, dst, length, flag). The length is the
// only thing looked at here -- one unsigned range test, before the pointers
// and the flag -- and then a dense table of the 63 fixed kernels forwards the
// call, so that dispatch costs the same at every length.
#include <stdint.h>

#include "tqfgen.h"

namespace {

template <class C>
using Fixed = tqfStatus (*)(const C*, C*, int);

#define TQF_LENGTHS_2_64(X, F, P)                                                                            \
    X(2, F, P) X(3, F, P) X(4, F, P) X(5, F, P) X(6, F, P) X(7, F, P) X(8, F, P) X(9, F, P) X(10, F, P)      \
    X(11, F, P) X(12, F, P) X(13, F, P) X(14, F, P) X(15, F, P) X(16, F, P) X(17, F, P) X(18, F, P)          \
    X(19, F, P) X(20, F, P) X(21, F, P) X(22, F, P) X(23, F, P) X(24, F, P) X(25, F, P) X(26, F, P)          \
    X(27, F, P) X(28, F, P) X(29, F, P) X(30, F, P) X(31, F, P) X(32, F, P) X(33, F, P) X(34, F, P)          \
    X(35, F, P) X(36, F, P) X(37, F, P) X(38, F, P) X(39, F, P) X(40, F, P) X(41, F, P) X(42, F, P)          \
    X(43, F, P) X(44, F, P) X(45, F, P) X(46, F, P) X(47, F, P) X(48, F, P) X(49, F, P) X(50, F, P)          \
    X(51, F, P) X(52, F, P) X(53, F, P) X(54, F, P) X(55, F, P) X(56, F, P) X(57, F, P) X(58, F, P)          \
    X(59, F, P) X(60, F, P) X(61, F, P) X(62, F, P) X(63, F, P) X(64, F, P)
#define TQF_ENTRY(N, F, P) tqfgDFT##F##_CToC_##N##_##P,

const Fixed<tqf32fc> kFwd32[63] = {TQF_LENGTHS_2_64(TQF_ENTRY, Fwd, 32fc)};
const Fixed<tqf64fc> kFwd64[63] = {TQF_LENGTHS_2_64(TQF_ENTRY, Fwd, 64fc)};
const Fixed<tqf32fc> kInv32[63] = {TQF_LENGTHS_2_64(TQF_ENTRY, Inv, 32fc)};
const Fixed<tqf64fc> kInv64[63] = {TQF_LENGTHS_2_64(TQF_ENTRY, Inv, 64fc)};

template <class C>
inline tqfStatus dispatch(const Fixed<C> (&table)[63], const C* src, C* dst, int length, int flag) {
    const uint32_t slot = static_cast<uint32_t>(length) - 2u;  // lengths below 2 wrap to large values
    if (slot > 62u) return tqfStsBadSize;
    return table[slot](src, dst, flag);
}

}  // namespace

extern "C" {

TQFAPI tqfStatus tqfgDFTFwd_CToC_32fc(const tqf32fc* src, tqf32fc* dst, int length, int flag) {
    return dispatch(kFwd32, src, dst, length, flag);
}
TQFAPI tqfStatus tqfgDFTFwd_CToC_64fc(const tqf64fc* src, tqf64fc* dst, int length, int flag) {
    return dispatch(kFwd64, src, dst, length, flag);
}
TQFAPI tqfStatus tqfgDFTInv_CToC_32fc(const tqf32fc* src, tqf32fc* dst, int length, int flag) {
    return dispatch(kInv32, src, dst, length, flag);
}
TQFAPI tqfStatus tqfgDFTInv_CToC_64fc(const tqf64fc* src, tqf64fc* dst, int length, int flag) {
    return dispatch(kInv64, src, dst, length, flag);
}

}  // extern "C"
