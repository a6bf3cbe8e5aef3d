// Passes of the Walsh-Hadamard kernels of orders 8 to 13: loops around the
// unrolled bodies of body.h, through the caller's (or an allocated) buffer.
//
// Low index bits go first and in contiguous blocks, high bits after them in
// columns, so the stage order of the one-pass kernels holds across passes and
// the results stay bit-identical with the plain network whatever the split.
// Only the last pass scales and only it writes dst; only the first pass reads
// src, so src == dst is safe.
#pragma once

#include "body.h"

namespace tqfwht {

// Block pass: the order-A transform, unscaled, of each block of 2^A
// contiguous elements of the 2^O elements at `in`, to the same place in `out`
// (a buffer region, so aligned stores).
template <class T, int A, int O, class In>
void block_pass(const T* in, T* out) {
    constexpr size_t kBlock = size_t{1} << A;
    constexpr size_t kTotal = size_t{1} << O;
    for (size_t k = 0; k < kTotal; k += kBlock) packed_block<T, A, In, Aligned, false>(in + k, out + k, T(0));
}

// Column pass: the 2^A columns of a 2^B-row array with row stride 2^A are
// transformed strip by strip (one register of adjacent columns), optionally
// scaled, and stored through the Out path.
template <class T, int A, int B, class Out, bool kScaled>
void column_pass(const T* in, T* out, T s) {
    using L = Lanes<T>;
    constexpr size_t kStride = size_t{1} << A;
    const typename L::V sv = L::splat(s);
    for (size_t c = 0; c < kStride; c += L::kCount) column_strip<T, B, Out, kScaled>(in + c, out + c, kStride, sv);
}

// Order O as a block pass of order A and a column pass of order O - A; the
// buffer holds the N intermediate elements.
template <class T, int O, int A>
struct TwoLevel {
    template <class Mem>
    static void run(const T* src, T* dst, T* buf, T s) {
        block_pass<T, A, O, Mem>(src, buf);
        column_pass<T, A, O - A, Mem, true>(buf, dst, s);
    }
};

// Order O as 2^(O-C) inner blocks of order C, each done as the two-level
// split A + (C - A) through the scratch region behind the main one, then a
// top column pass of order O - C from the main region to dst.
template <class T, int O, int C, int A>
struct ThreeLevel {
    template <class Mem>
    static void run(const T* src, T* dst, T* buf, T s) {
        constexpr size_t kInner = size_t{1} << C;
        constexpr size_t kTotal = size_t{1} << O;
        T* const scratch = buf + kTotal;
        for (size_t off = 0; off < kTotal; off += kInner) {
            block_pass<T, A, C, Mem>(src + off, scratch);
            column_pass<T, A, C - A, Aligned, false>(scratch, buf + off, T(1));
        }
        column_pass<T, C, O - C, Mem, true>(buf, dst, s);
    }
};

}  // namespace tqfwht
