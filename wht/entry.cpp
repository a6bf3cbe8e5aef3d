// The buffer-size query. It tests `order` first and alone (order - 1,
// unsigned, against 12), as the generic transform entries do.
#include "sizes.h"
#include "tqfgen.h"

namespace {

// Unsigned before the subtraction: order - 1 would overflow at INT_MIN.
inline bool bad_order(int order) { return static_cast<unsigned>(order) - 1u > 12u; }

}  // namespace

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
