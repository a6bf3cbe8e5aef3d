// Entries that take the order as an argument, and the buffer-size query.
// Both test `order` first and alone (order - 1, unsigned, against 12); the
// transform entry then forwards through a table of the 13 fixed kernels, which
// do every other check themselves.
#include "sizes.h"
#include "tqfgen.h"

namespace {

using Wht32 = tqfStatus (*)(const tqf32f*, tqf32f*, int, unsigned char*);
using Wht64 = tqfStatus (*)(const tqf64f*, tqf64f*, int, unsigned char*);

#define TQF_ROW(S) tqfgWHT_1_##S, tqfgWHT_2_##S, tqfgWHT_3_##S, tqfgWHT_4_##S, tqfgWHT_5_##S,           \
                   tqfgWHT_6_##S, tqfgWHT_7_##S, tqfgWHT_8_##S, tqfgWHT_9_##S, tqfgWHT_10_##S,         \
                   tqfgWHT_11_##S, tqfgWHT_12_##S, tqfgWHT_13_##S
const Wht32 kKernels32[13] = {TQF_ROW(32f)};
const Wht64 kKernels64[13] = {TQF_ROW(64f)};
#undef TQF_ROW

// Unsigned before the subtraction: order - 1 would overflow at INT_MIN.
inline bool bad_order(int order) { return static_cast<unsigned>(order) - 1u > 12u; }

}  // namespace

extern "C" TQFAPI tqfStatus tqfgWHT_32f(const tqf32f* src, tqf32f* dst, int order, int flag, unsigned char* buffer) {
    if (bad_order(order)) return tqfStsBadSize;
    return kKernels32[order - 1](src, dst, flag, buffer);
}

extern "C" TQFAPI tqfStatus tqfgWHT_64f(const tqf64f* src, tqf64f* dst, int order, int flag, unsigned char* buffer) {
    if (bad_order(order)) return tqfStsBadSize;
    return kKernels64[order - 1](src, dst, flag, buffer);
}

extern "C" TQFAPI tqfStatus tqfgWHTGetBufferSize_32f(int order, int* size) {
    if (bad_order(order)) return tqfStsBadSize;
    *size = tqfwht::kBufferBytes32[order - 1];
    return tqfStsNoError;
}

extern "C" TQFAPI tqfStatus tqfgWHTGetBufferSize_64f(int order, int* size) {
    if (bad_order(order)) return tqfStsBadSize;
    *size = tqfwht::kBufferBytes64[order - 1];
    return tqfStsNoError;
}
