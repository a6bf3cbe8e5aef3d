// Vector layer of the Walsh-Hadamard kernels: lane types, the two memory
// paths, in-register transpositions and compile-time unrolling.
//
// Everything here is force-inlined so that a kernel body built from it is one
// straight sequence of SSE instructions: the unroll helper expands a fold over
// an index pack, so no loop survives into the compiled body.
#pragma once

#include <pmmintrin.h>
#include <tmmintrin.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#define TQF_INLINE inline __attribute__((always_inline))
#define TQF_LAMBDA __attribute__((always_inline))

namespace tqfwht {

// f(integral_constant<size_t, I>) for I = 0 .. N-1, in that order.
template <class F, size_t... I>
TQF_INLINE void unroll_seq(F&& f, std::index_sequence<I...>) {
    (f(std::integral_constant<size_t, I>{}), ...);
}
template <size_t N, class F>
TQF_INLINE void unroll(F&& f) {
    unroll_seq(f, std::make_index_sequence<N>{});
}

// Lane traits: a register holds 2^kLaneBits elements of T.
template <class T> struct Lanes;

template <> struct Lanes<float> {
    using V = __m128;
    static constexpr int kLaneBits = 2;
    static constexpr int kCount = 4;
    static TQF_INLINE V add(V a, V b) { return _mm_add_ps(a, b); }
    static TQF_INLINE V sub(V a, V b) { return _mm_sub_ps(a, b); }
    static TQF_INLINE V mul(V a, V b) { return _mm_mul_ps(a, b); }
    static TQF_INLINE V splat(float s) { return _mm_set1_ps(s); }
};

template <> struct Lanes<double> {
    using V = __m128d;
    static constexpr int kLaneBits = 1;
    static constexpr int kCount = 2;
    static TQF_INLINE V add(V a, V b) { return _mm_add_pd(a, b); }
    static TQF_INLINE V sub(V a, V b) { return _mm_sub_pd(a, b); }
    static TQF_INLINE V mul(V a, V b) { return _mm_mul_pd(a, b); }
    static TQF_INLINE V splat(double s) { return _mm_set1_pd(s); }
};

// The aligned path: whole 16-byte moves.
struct Aligned {
    static TQF_INLINE __m128 load(const float* p) { return _mm_load_ps(p); }
    static TQF_INLINE void store(float* p, __m128 v) { _mm_store_ps(p, v); }
    static TQF_INLINE __m128d load(const double* p) { return _mm_load_pd(p); }
    static TQF_INLINE void store(double* p, __m128d v) { _mm_store_pd(p, v); }
};

// The unaligned twin: unaligned 16-byte moves for floats, two 8-byte halves
// for doubles. Same values, same registers, so the same bits as Aligned.
struct Unaligned {
    static TQF_INLINE __m128 load(const float* p) { return _mm_loadu_ps(p); }
    static TQF_INLINE void store(float* p, __m128 v) { _mm_storeu_ps(p, v); }
    static TQF_INLINE __m128d load(const double* p) { return _mm_loadh_pd(_mm_load_sd(p), p + 1); }
    static TQF_INLINE void store(double* p, __m128d v) {
        _mm_storel_pd(p, v);
        _mm_storeh_pd(p + 1, v);
    }
};

TQF_INLINE bool misaligned(const void* a, const void* b) {
    return ((reinterpret_cast<uintptr_t>(a) | reinterpret_cast<uintptr_t>(b)) & 15u) != 0;
}

// Transposes the group of 4 float registers r[B..B+3] (or 2 double registers
// r[B..B+1]): the index bits held by the lanes swap places with the low bits
// of the register index. Applying it twice restores the original layout.
template <size_t B>
TQF_INLINE void transpose(__m128* r) {
    const __m128 t0 = _mm_unpacklo_ps(r[B + 0], r[B + 1]);
    const __m128 t1 = _mm_unpacklo_ps(r[B + 2], r[B + 3]);
    const __m128 t2 = _mm_unpackhi_ps(r[B + 0], r[B + 1]);
    const __m128 t3 = _mm_unpackhi_ps(r[B + 2], r[B + 3]);
    r[B + 0] = _mm_movelh_ps(t0, t1);
    r[B + 1] = _mm_movehl_ps(t1, t0);
    r[B + 2] = _mm_movelh_ps(t2, t3);
    r[B + 3] = _mm_movehl_ps(t3, t2);
}

template <size_t B>
TQF_INLINE void transpose(__m128d* r) {
    const __m128d t0 = _mm_unpacklo_pd(r[B + 0], r[B + 1]);
    const __m128d t1 = _mm_unpackhi_pd(r[B + 0], r[B + 1]);
    r[B + 0] = t0;
    r[B + 1] = t1;
}

// Transposes every group of registers in r[0..R).
template <class T, size_t R>
TQF_INLINE void transpose_all(typename Lanes<T>::V* r) {
    constexpr size_t G = Lanes<T>::kCount;
    static_assert(R % G == 0, "whole transposition groups only");
    unroll<R / G>([&](auto g) TQF_LAMBDA { transpose<decltype(g)::value * G>(r); });
}

// One butterfly stage between whole registers, on bit K of the register
// index: (x, y) -> (x + y, x - y), pairs in ascending order.
template <class T, size_t R, size_t K>
TQF_INLINE void stage(typename Lanes<T>::V* r) {
    using L = Lanes<T>;
    constexpr size_t H = size_t{1} << K;
    unroll<R / 2>([&](auto p) TQF_LAMBDA {
        constexpr size_t P = decltype(p)::value;
        constexpr size_t i = (P / H) * 2 * H + P % H;  // P with a zero inserted at bit K
        const typename L::V x = r[i];
        const typename L::V y = r[i + H];
        r[i] = L::add(x, y);
        r[i + H] = L::sub(x, y);
    });
}

// Stages on register-index bits Lo .. Hi-1, lowest bit first.
template <class T, size_t R, size_t Lo, size_t Hi>
TQF_INLINE void stages(typename Lanes<T>::V* r) {
    unroll<Hi - Lo>([&](auto k) TQF_LAMBDA { stage<T, R, Lo + decltype(k)::value>(r); });
}

}  // namespace tqfwht
