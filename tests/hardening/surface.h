// The exported surface as the hardening tests drive it: what every fixed
// kernel reads and writes, found by family, and type-erased calls of the
// fixed kernels and generic entries of the build's kernel table. A family
// that this file does not know makes the tests fail with its name, so a new
// family cannot slip through unchecked: state its counts in shape_of().
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kernel_table.h"
#include "tqfgen.h"

namespace hardening {

using tqftest::AnyGeneric;
using tqftest::AnyKernel;
using tqftest::Entry;

// Bytes of one element and of one scalar of a precision suffix ("32fc": 8
// and 4). Throws for a suffix it does not know.
struct ElementType {
    size_t element;
    size_t scalar;
    bool complex;
};
ElementType element_type(const std::string& precision);

// What a fixed kernel touches, in elements of its type.
struct Shape {
    size_t in = 0;           // read from src
    size_t out = 0;          // written to dst
    bool has_buffer = false;
    size_t buffer_bytes = 0; // of the work buffer, 16-byte aligned; 0: never touched
    size_t in_place() const { return in > out ? in : out; }  // a shared src/dst array
};
// False for a family whose counts are not stated yet.
bool shape_of(const std::string& family, const std::string& precision, int size, Shape* shape);
inline bool shape_of(const AnyKernel& k, Shape* shape) { return shape_of(k.family, k.precision, k.size, shape); }
std::string unknown_family(const std::string& family);

// Calls through the type that the entry kind and precision give; the buffer
// argument is dropped for kernels without one.
tqfStatus call_fixed(const AnyKernel& k, const void* src, void* dst, int flag, unsigned char* buffer);
tqfStatus call_generic(const AnyGeneric& g, const void* src, void* dst, int size, int flag,
                       unsigned char* buffer);

// The fixed kernel of the same family and precision as `g`, of this size.
const AnyKernel* fixed_of(const AnyGeneric& g, int size);

// `count` scalars of `scalar_bytes` (4: float, 8: double), uniform in
// [-1, 1) and reproducible by seed, as raw bytes.
std::vector<unsigned char> random_scalars(size_t count, size_t scalar_bytes, uint32_t seed);

// The DCT-IV calls of one precision, by element type.
template <class T> struct Dct4;
template <> struct Dct4<float> {
    using Spec = tqfgDCT4Spec_32f;
    static constexpr const char* name = "32f";
    static tqfStatus getSize(int n, int* s) { return tqfgDCT4GetSize_32f(n, s); }
    static tqfStatus init(Spec** p, int n, void* m) { return tqfgDCT4Init_32f(p, n, m); }
    static tqfStatus initAlloc(Spec** p, int n) { return tqfgDCT4InitAlloc_32f(p, n); }
    static tqfStatus release(Spec* p) { return tqfgDCT4Free_32f(p); }
    static tqfStatus run(const float* x, float* y, const Spec* p) { return tqfgDCT4_32f(x, y, p); }
};
template <> struct Dct4<double> {
    using Spec = tqfgDCT4Spec_64f;
    static constexpr const char* name = "64f";
    static tqfStatus getSize(int n, int* s) { return tqfgDCT4GetSize_64f(n, s); }
    static tqfStatus init(Spec** p, int n, void* m) { return tqfgDCT4Init_64f(p, n, m); }
    static tqfStatus initAlloc(Spec** p, int n) { return tqfgDCT4InitAlloc_64f(p, n); }
    static tqfStatus release(Spec* p) { return tqfgDCT4Free_64f(p); }
    static tqfStatus run(const double* x, double* y, const Spec* p) { return tqfgDCT4_64f(x, y, p); }
};

}  // namespace hardening
