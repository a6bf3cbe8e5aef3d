// Work-buffer sizes of the Walsh-Hadamard kernels, in bytes, by order.
//
// The buffer holds a main region of N elements from its start and, in the
// three-level kernels, a scratch region for one inner block right after it.
// The sizes are the contract with the caller and the amount a kernel asks of
// tqfMalloc for a null buffer, so they are kept as a table of constants, one
// per precision (the three-level orders differ between the two).
#pragma once

namespace tqfwht {

// Index: order - 1.
constexpr int kBufferBytes32[13] = {0, 0, 0, 0, 0, 0, 0,
                                    0x400,    // order 8:  N floats
                                    0x800,    // order 9:  N floats
                                    0x1000,   // order 10: N floats
                                    0x2000,   // order 11: N floats
                                    0x4800,   // order 12: N floats + 512-float scratch
                                    0x8800};  // order 13: N floats + 512-float scratch
constexpr int kBufferBytes64[13] = {0, 0, 0, 0, 0, 0, 0,
                                    0x800,     // order 8:  N doubles
                                    0x1000,    // order 9:  N doubles
                                    0x2000,    // order 10: N doubles
                                    0x4800,    // order 11: N doubles + 256-double scratch
                                    0x8800,    // order 12: N doubles + 256-double scratch
                                    0x12000};  // order 13: N doubles + 1024-double scratch

template <class T> constexpr int buffer_bytes(int order);
template <> constexpr int buffer_bytes<float>(int order) { return kBufferBytes32[order - 1]; }
template <> constexpr int buffer_bytes<double>(int order) { return kBufferBytes64[order - 1]; }

}  // namespace tqfwht
