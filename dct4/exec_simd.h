// The lane types of the stage kernels. One kernel body is written over these,
// and the compiler instantiates it for four float lanes, two double lanes, or
// one plain scalar (the straight-line root kernels). Plan buffers and tables
// are 32-byte aligned, so `load`/`store` are aligned; src and dst have no
// alignment, so `loadu`/`storeu` and the reversing forms are used on them.
#pragma once

#include <pmmintrin.h>

#define TQF_INLINE inline __attribute__((always_inline))

// A hint to bring the line holding p into the caches; it never faults.
template <class T>
TQF_INLINE void Prefetch(const T* p) {
    _mm_prefetch(reinterpret_cast<const char*>(p), _MM_HINT_T0);
}

struct LanesF32 {
    typedef float T;
    typedef __m128 V;
    static constexpr int L = 4;
    static TQF_INLINE V add(V a, V b) { return _mm_add_ps(a, b); }
    static TQF_INLINE V sub(V a, V b) { return _mm_sub_ps(a, b); }
    static TQF_INLINE V mul(V a, V b) { return _mm_mul_ps(a, b); }
    static TQF_INLINE V set1(T c) { return _mm_set1_ps(c); }
    static TQF_INLINE V zero() { return _mm_setzero_ps(); }
    static TQF_INLINE V neg(V a) { return _mm_xor_ps(a, _mm_set1_ps(-0.0f)); }
    static TQF_INLINE V load(const T* p) { return _mm_load_ps(p); }
    static TQF_INLINE void store(T* p, V v) { _mm_store_ps(p, v); }
    static TQF_INLINE V loadu(const T* p) { return _mm_loadu_ps(p); }
    static TQF_INLINE void storeu(T* p, V v) { _mm_storeu_ps(p, v); }
    // Lane l gets p[-l]: a group read in descending memory order.
    static TQF_INLINE V loadDown(const T* p) {
        return _mm_shuffle_ps(_mm_loadu_ps(p - 3), _mm_loadu_ps(p - 3), _MM_SHUFFLE(0, 1, 2, 3));
    }
    // p[-l] = lane l.
    static TQF_INLINE void storeDown(T* p, V v) {
        _mm_storeu_ps(p - 3, _mm_shuffle_ps(v, v, _MM_SHUFFLE(0, 1, 2, 3)));
    }
    // Cache-bypassing stores, 16-byte aligned p (storeDown: p - 3).
    static TQF_INLINE void stream(T* p, V v) { _mm_stream_ps(p, v); }
    static TQF_INLINE void streamDown(T* p, V v) { _mm_stream_ps(p - 3, _mm_shuffle_ps(v, v, _MM_SHUFFLE(0, 1, 2, 3))); }
    // Rows r[0..3] become columns.
    static TQF_INLINE void transpose(V* r) { _MM_TRANSPOSE4_PS(r[0], r[1], r[2], r[3]); }
    // A split table entry holds E cosines then E sines, one per lane.
    static constexpr int E = 4;
    static TQF_INLINE V loadEntry(const T* p) { return _mm_load_ps(p); }
};

struct LanesF64 {
    typedef double T;
    typedef __m128d V;
    static constexpr int L = 2;
    static TQF_INLINE V add(V a, V b) { return _mm_add_pd(a, b); }
    static TQF_INLINE V sub(V a, V b) { return _mm_sub_pd(a, b); }
    static TQF_INLINE V mul(V a, V b) { return _mm_mul_pd(a, b); }
    static TQF_INLINE V set1(T c) { return _mm_set1_pd(c); }
    static TQF_INLINE V zero() { return _mm_setzero_pd(); }
    static TQF_INLINE V neg(V a) { return _mm_xor_pd(a, _mm_set1_pd(-0.0)); }
    static TQF_INLINE V load(const T* p) { return _mm_load_pd(p); }
    static TQF_INLINE void store(T* p, V v) { _mm_store_pd(p, v); }
    static TQF_INLINE V loadu(const T* p) { return _mm_loadu_pd(p); }
    static TQF_INLINE void storeu(T* p, V v) { _mm_storeu_pd(p, v); }
    static TQF_INLINE V loadDown(const T* p) {
        const V v = _mm_loadu_pd(p - 1);
        return _mm_shuffle_pd(v, v, 1);
    }
    static TQF_INLINE void storeDown(T* p, V v) { _mm_storeu_pd(p - 1, _mm_shuffle_pd(v, v, 1)); }
    static TQF_INLINE void stream(T* p, V v) { _mm_stream_pd(p, v); }
    static TQF_INLINE void streamDown(T* p, V v) { _mm_stream_pd(p - 1, _mm_shuffle_pd(v, v, 1)); }
    static TQF_INLINE void transpose(V* r) {
        const V a = _mm_unpacklo_pd(r[0], r[1]);
        r[1] = _mm_unpackhi_pd(r[0], r[1]);
        r[0] = a;
    }
    static constexpr int E = 2;
    static TQF_INLINE V loadEntry(const T* p) { return _mm_load_pd(p); }
};

// One lane, plain arithmetic: the straight-line kernels of the root.
template <class F>
struct LanesScalar {
    typedef F T;
    typedef F V;
    static constexpr int L = 1;
    static TQF_INLINE V add(V a, V b) { return a + b; }
    static TQF_INLINE V sub(V a, V b) { return a - b; }
    static TQF_INLINE V mul(V a, V b) { return a * b; }
    static TQF_INLINE V set1(T c) { return c; }
    static TQF_INLINE V zero() { return F(0); }
    static TQF_INLINE V neg(V a) { return -a; }
    static TQF_INLINE V load(const T* p) { return *p; }
    static TQF_INLINE void store(T* p, V v) { *p = v; }
    static TQF_INLINE V loadu(const T* p) { return *p; }
    static TQF_INLINE void storeu(T* p, V v) { *p = v; }
    static TQF_INLINE V loadDown(const T* p) { return *p; }
    static TQF_INLINE void storeDown(T* p, V v) { *p = v; }
    static TQF_INLINE void transpose(V*) {}
    static constexpr int E = 1;
    static TQF_INLINE V loadEntry(const T* p) { return *p; }
};

// The same lanes with every store bypassing the caches: for whole lines that
// will not be read again soon. All addresses must be 16-byte aligned.
template <class X>
struct LanesStream : X {
    typedef typename X::T T;
    typedef typename X::V V;
    static TQF_INLINE void store(T* p, V v) { X::stream(p, v); }
    static TQF_INLINE void storeu(T* p, V v) { X::stream(p, v); }
    static TQF_INLINE void storeDown(T* p, V v) { X::streamDown(p, v); }
};

// U neighbouring lane groups as one wide value, so that the output stage's
// strided writes take whole 64-byte lines at each address instead of a
// quarter of one. Every operation is the base type's, once per group.
template <class X, int U>
struct LanesWide {
    typedef typename X::T T;
    struct V {
        typename X::V g[U];
    };
    static constexpr int L = X::L * U;
    static constexpr int E = X::E;
// The group loops must unroll, or every value would live in memory.
#define TQF_WIDE(expr)                         \
    V r;                                       \
    _Pragma("GCC unroll 8")                    \
    for (int u = 0; u < U; ++u) r.g[u] = expr; \
    return r
    static TQF_INLINE V add(const V& a, const V& b) { TQF_WIDE(X::add(a.g[u], b.g[u])); }
    static TQF_INLINE V sub(const V& a, const V& b) { TQF_WIDE(X::sub(a.g[u], b.g[u])); }
    static TQF_INLINE V mul(const V& a, const V& b) { TQF_WIDE(X::mul(a.g[u], b.g[u])); }
    static TQF_INLINE V set1(T c) { TQF_WIDE(X::set1(c)); }
    static TQF_INLINE V zero() { TQF_WIDE(X::zero()); }
    static TQF_INLINE V neg(const V& a) { TQF_WIDE(X::neg(a.g[u])); }
    static TQF_INLINE V load(const T* p) { TQF_WIDE(X::load(p + X::L * u)); }
    static TQF_INLINE V loadu(const T* p) { TQF_WIDE(X::loadu(p + X::L * u)); }
    static TQF_INLINE V loadDown(const T* p) { TQF_WIDE(X::loadDown(p - X::L * u)); }
    // The same twiddle for every group.
    static TQF_INLINE V loadEntry(const T* p) { TQF_WIDE(X::loadEntry(p)); }
#undef TQF_WIDE
    static TQF_INLINE void store(T* p, const V& v) {
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u) X::store(p + X::L * u, v.g[u]);
    }
    static TQF_INLINE void storeu(T* p, const V& v) {
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u) X::storeu(p + X::L * u, v.g[u]);
    }
    static TQF_INLINE void storeDown(T* p, const V& v) {
#pragma GCC unroll 8
        for (int u = 0; u < U; ++u) X::storeDown(p - X::L * u, v.g[u]);
    }
};
