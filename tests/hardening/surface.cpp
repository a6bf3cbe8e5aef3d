#include "surface.h"

#include <cstring>
#include <stdexcept>

namespace hardening {

ElementType element_type(const std::string& precision) {
    if (precision == "32f") return {4, 4, false};
    if (precision == "64f") return {8, 8, false};
    if (precision == "32fc") return {8, 4, true};
    if (precision == "64fc") return {16, 8, true};
    throw std::logic_error("no element type for precision " + precision);
}

bool shape_of(const std::string& family, const std::string& precision, int size, Shape* shape) {
    const size_t n = static_cast<size_t>(size);
    Shape s;
    if (family == "cfwd" || family == "cinv") {
        s.in = s.out = n;  // complex elements
    } else if (family == "rfwd_ccs") {
        s.in = n;  // a real sequence in, the CCS array out: zero slots included
        s.out = n % 2 ? n + 1 : n + 2;
    } else if (family == "rfwd_pack" || family == "rfwd_perm") {
        s.in = s.out = n;
    } else if (family == "rinv_ccs") {
        s.in = n % 2 ? n + 1 : n + 2;  // the CCS array in (two slots never read), the sequence out
        s.out = n;
    } else if (family == "rinv_pack" || family == "rinv_perm" || family == "hartley") {
        s.in = s.out = n;
    } else if (family == "wht") {
        s.in = s.out = size_t{1} << size;
        s.has_buffer = true;
        int bytes = 0;
        const tqfStatus st = precision == "32f" ? tqfgWHTGetBufferSize_32f(size, &bytes)
                                                : tqfgWHTGetBufferSize_64f(size, &bytes);
        if (st != tqfStsNoError) throw std::logic_error("no buffer size for a built order");
        s.buffer_bytes = static_cast<size_t>(bytes);
    }
    // A family added later states its counts here.
    else {
        return false;
    }
    *shape = s;
    return true;
}

std::string unknown_family(const std::string& family) {
    return "family " + family + " has no stated element counts: add them to shape_of() in "
           "tests/hardening/surface.cpp";
}

namespace {

template <class T>
tqfStatus fixed_as(const AnyKernel& k, const void* src, void* dst, int flag, unsigned char* buffer) {
    const T* s = static_cast<const T*>(src);
    T* d = static_cast<T*>(dst);
    switch (k.entry) {
        case Entry::SrcDstFlag:
            return reinterpret_cast<tqftest::SrcDstFlagFn<T>>(k.fn)(s, d, flag);
        case Entry::SrcDstFlagBuffer:
            return reinterpret_cast<tqftest::SrcDstFlagBufferFn<T>>(k.fn)(s, d, flag, buffer);
    }
    throw std::logic_error(std::string("unknown entry kind of ") + k.name);
}

template <class T>
tqfStatus generic_as(const AnyGeneric& g, const void* src, void* dst, int size, int flag,
                     unsigned char* buffer) {
    const T* s = static_cast<const T*>(src);
    T* d = static_cast<T*>(dst);
    switch (g.entry) {
        case Entry::SrcDstFlag:
            return reinterpret_cast<tqftest::SrcDstFlagGenericFn<T>>(g.fn)(s, d, size, flag);
        case Entry::SrcDstFlagBuffer:
            return reinterpret_cast<tqftest::SrcDstFlagBufferGenericFn<T>>(g.fn)(s, d, size, flag, buffer);
    }
    throw std::logic_error(std::string("unknown entry kind of ") + g.name);
}

}  // namespace

tqfStatus call_fixed(const AnyKernel& k, const void* src, void* dst, int flag, unsigned char* buffer) {
    const std::string p = k.precision;
    if (p == "32f") return fixed_as<tqf32f>(k, src, dst, flag, buffer);
    if (p == "64f") return fixed_as<tqf64f>(k, src, dst, flag, buffer);
    if (p == "32fc") return fixed_as<tqf32fc>(k, src, dst, flag, buffer);
    if (p == "64fc") return fixed_as<tqf64fc>(k, src, dst, flag, buffer);
    throw std::logic_error("no call for precision " + p + " of " + k.name);
}

tqfStatus call_generic(const AnyGeneric& g, const void* src, void* dst, int size, int flag,
                       unsigned char* buffer) {
    const std::string p = g.precision;
    if (p == "32f") return generic_as<tqf32f>(g, src, dst, size, flag, buffer);
    if (p == "64f") return generic_as<tqf64f>(g, src, dst, size, flag, buffer);
    if (p == "32fc") return generic_as<tqf32fc>(g, src, dst, size, flag, buffer);
    if (p == "64fc") return generic_as<tqf64fc>(g, src, dst, size, flag, buffer);
    throw std::logic_error("no call for precision " + p + " of " + g.name);
}

const AnyKernel* fixed_of(const AnyGeneric& g, int size) {
    for (const AnyKernel& k : tqftest::all_kernels)
        if (k.size == size && std::string(k.family) == g.family && std::string(k.precision) == g.precision)
            return &k;
    return nullptr;
}

std::vector<unsigned char> random_scalars(size_t count, size_t scalar_bytes, uint32_t seed) {
    std::vector<unsigned char> out(count * scalar_bytes);
    uint32_t x = seed * 2654435761u + 12345u;
    for (size_t i = 0; i < count; ++i) {
        x = x * 1664525u + 1013904223u;
        const double v = static_cast<double>(x >> 8) / double(1u << 23) - 1.0;
        if (scalar_bytes == 4) {
            const float f = static_cast<float>(v);
            std::memcpy(&out[i * 4], &f, 4);
        } else {
            std::memcpy(&out[i * 8], &v, 8);
        }
    }
    return out;
}

}  // namespace hardening
