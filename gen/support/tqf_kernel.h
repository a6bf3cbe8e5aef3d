// Support layer included by every generated kernel: the two memory paths,
// lane gathers of complex elements and the flag-to-scale rule.
#pragma once

#include <pmmintrin.h>
#include <stdint.h>

#include "tqfgen.h"

#define TQF_KERNEL_BODY static inline __attribute__((always_inline))

namespace tqfk {

// 8-byte moves of one complex float (or one double); no alignment needed.
static inline __m128 ld_lo(const float* p) {
    return _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p));
}
static inline __m128 ld_lohi(const float* p, const float* q) {
    return _mm_loadh_pi(ld_lo(p), reinterpret_cast<const __m64*>(q));
}
static inline void st_lo(float* p, __m128 v) { _mm_storel_pi(reinterpret_cast<__m64*>(p), v); }
static inline void st_hi(float* p, __m128 v) { _mm_storeh_pi(reinterpret_cast<__m64*>(p), v); }

// Aligned path: 16-byte aligned moves wherever the address allows them.
struct Aligned {
    static inline __m128 ld(const float* p) { return _mm_load_ps(p); }
    static inline __m128 ld_odd(const float* p) { return ld_lohi(p, p + 2); }
    static inline void st(float* p, __m128 v) { _mm_store_ps(p, v); }
    static inline void st_odd(float* p, __m128 v) { st_lo(p, v); st_hi(p + 2, v); }
    static inline __m128d ldd(const double* p) { return _mm_load_pd(p); }
    static inline void std_(double* p, __m128d v) { _mm_store_pd(p, v); }
};

// Unaligned path: the same dataflow; 16-byte unaligned moves for floats,
// two 8-byte halves for each complex double.
struct Unaligned {
    static inline __m128 ld(const float* p) { return _mm_loadu_ps(p); }
    static inline __m128 ld_odd(const float* p) { return _mm_loadu_ps(p); }
    static inline void st(float* p, __m128 v) { _mm_storeu_ps(p, v); }
    static inline void st_odd(float* p, __m128 v) { _mm_storeu_ps(p, v); }
    static inline __m128d ldd(const double* p) {
        return _mm_loadh_pd(_mm_load_sd(p), p + 1);
    }
    static inline void std_(double* p, __m128d v) {
        _mm_storel_pd(p, v);
        _mm_storeh_pd(p + 1, v);
    }
};

static inline bool misaligned(const void* a, const void* b) {
    return ((reinterpret_cast<uintptr_t>(a) | reinterpret_cast<uintptr_t>(b)) & 15u) != 0;
}

// Which flags divide by N: forward kernels divide for tqfDivFwdByN, inverse
// kernels for tqfDivInvByN, and transforms without a direction for both.
enum DividesBy { kFwdFlag, kInvFlag, kBothFlags };

// The flag picks one of the kernel's three scale constants; anything but the
// four flags is refused.
template <class T>
static inline bool pick_scale(int flag, DividesBy by, T one, T inv_n, T inv_sqrt_n, T* scale) {
    switch (flag) {
    case tqfDivFwdByN: *scale = by != kInvFlag ? inv_n : one; return true;
    case tqfDivInvByN: *scale = by != kFwdFlag ? inv_n : one; return true;
    case tqfDivBySqrtN: *scale = inv_sqrt_n; return true;
    case tqfNoDivByAny: *scale = one; return true;
    default: return false;
    }
}

}  // namespace tqfk
