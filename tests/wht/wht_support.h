// Walsh-Hadamard test support: the kernels by precision and order, the plain
// radix-2 network used as oracle, test data, and the counting allocator.
#pragma once

#include "counting_alloc.h"

#include <cstddef>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "tqfgen.h"

namespace whttest {

constexpr int kOrders = 13;
constexpr int kFlags[4] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};

template <class T> struct Wht;
template <> struct Wht<float> {
    using Fixed = tqfStatus (*)(const tqf32f*, tqf32f*, int, unsigned char*);
    static Fixed fixed(int order);
    static tqfStatus generic(const float* s, float* d, int order, int flag, unsigned char* b) {
        return tqfgWHT_32f(s, d, order, flag, b);
    }
    static tqfStatus size(int order, int* bytes) { return tqfgWHTGetBufferSize_32f(order, bytes); }
};
template <> struct Wht<double> {
    using Fixed = tqfStatus (*)(const tqf64f*, tqf64f*, int, unsigned char*);
    static Fixed fixed(int order);
    static tqfStatus generic(const double* s, double* d, int order, int flag, unsigned char* b) {
        return tqfgWHT_64f(s, d, order, flag, b);
    }
    static tqfStatus size(int order, int* bytes) { return tqfgWHTGetBufferSize_64f(order, bytes); }
};

// The scale a flag stands for, derived here from its meaning: 1/N is a power
// of two, and the square root of it is correctly rounded by sqrt itself.
template <class T> T expected_scale(int order, int flag) {
    const T inv_n = T(1) / T(size_t{1} << order);
    if (flag == tqfNoDivByAny) return T(1);
    if (flag == tqfDivBySqrtN) return std::sqrt(inv_n);
    return inv_n;
}

// The plain radix-2 network: adjacent pairs first, then distances 2, 4, ...,
// each sum and difference rounded to T, then one multiplication by s.
// `reversed` runs the stages from the top bit down (a different rounding).
template <class T>
std::vector<T> radix2(std::vector<T> y, T s, bool reversed = false) {
    const size_t n = y.size();
    std::vector<size_t> dists;
    for (size_t h = 1; h < n; h *= 2) dists.push_back(h);
    if (reversed) std::reverse(dists.begin(), dists.end());
    for (size_t h : dists)
        for (size_t i = 0; i < n; i += 2 * h)
            for (size_t j = i; j < i + h; ++j) {
                const T a = y[j], b = y[j + h];
                y[j] = a + b;
                y[j + h] = a - b;
            }
    for (T& v : y) v = v * s;
    return y;
}

// Values of mixed magnitude and sign, so that nearly every sum rounds.
template <class T> std::vector<T> mixed_data(size_t n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> mant(-1.0, 1.0);
    std::uniform_int_distribution<int> expo(-6, 6);
    std::vector<T> v(n);
    for (T& x : v) x = static_cast<T>(std::ldexp(mant(gen), expo(gen)));
    return v;
}

template <class T> bool same_bits(const T* a, const T* b, size_t n) {
    return std::memcmp(a, b, n * sizeof(T)) == 0;
}

// Memory whose end is followed by an inaccessible page, so that any access
// past `bytes` faults. The block starts 16-byte aligned when bytes is a
// multiple of 16.
class FencedBlock {
public:
    explicit FencedBlock(size_t bytes);
    ~FencedBlock();
    FencedBlock(const FencedBlock&) = delete;
    FencedBlock& operator=(const FencedBlock&) = delete;
    unsigned char* data() { return data_; }

private:
    unsigned char* map_;
    size_t map_bytes_;
    unsigned char* data_;
};

// A page that faults on any access: passed as a buffer that must not be used.
unsigned char* forbidden_page();

using tqftest::AllocLog;
using tqftest::alloc_log;
using tqftest::reset_alloc_log;

}  // namespace whttest
