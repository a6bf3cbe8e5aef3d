// Transform bodies of the Walsh-Hadamard kernels, all force-inlined and
// unrolled at compile time: the kernels of orders 1 to 7 are one of these
// each, and the passes of the higher orders loop around them.
//
// Every body runs the butterfly stages lowest index bit first, each sum and
// difference rounded in T, and the scale (if any) as one multiplication per
// element after the last stage; that is what makes all orders and all splits
// give the bits of the plain radix-2 network.
#pragma once

#include "vec.h"

namespace tqfwht {

// Scalar network on N = 2^O elements, for the orders too small to fill
// registers usefully (1 and 2, and 3 in single precision).
template <class T, int O>
TQF_INLINE void scalar_block(const T* in, T* out, T s) {
    constexpr size_t N = size_t{1} << O;
    T x[N];
    unroll<N>([&](auto i) TQF_LAMBDA { x[decltype(i)::value] = in[decltype(i)::value]; });
    unroll<O>([&](auto k) TQF_LAMBDA {
        constexpr size_t H = size_t{1} << decltype(k)::value;
        unroll<N / 2>([&](auto p) TQF_LAMBDA {
            constexpr size_t P = decltype(p)::value;
            constexpr size_t i = (P / H) * 2 * H + P % H;
            const T a = x[i];
            const T b = x[i + H];
            x[i] = a + b;
            x[i + H] = a - b;
        });
    });
    unroll<N>([&](auto i) TQF_LAMBDA { out[decltype(i)::value] = x[decltype(i)::value] * s; });
}

// Register-index stages in tiles. The stages on bits 0 .. RB-1 of the
// register index are cut into tiles of at most kTileBits bits; a tile's
// stages run on one group of 2^(Hi-Lo) registers (those that differ only in
// bits Lo..Hi-1) before the next group is touched, so that few values are
// live at once and the rest stay in the stack frame. Every butterfly still
// takes the outputs of the stage before, so the bits are those of the
// stage-by-stage network. `first(Base, Count)` fills the Count contiguous
// registers of a group of the first tile; `last(Base, Lo, Count)` consumes
// the registers Base + m * 2^Lo of a group of the last tile.
constexpr int kTileBits = 3;

// Lowest bit of tile I when RB bits are cut into tiles as even as possible,
// the larger ones first.
constexpr int tile_lo(int rb, int i) {
    const int tiles = (rb + kTileBits - 1) / kTileBits;
    return i * (rb / tiles) + (i < rb % tiles ? i : rb % tiles);
}

template <class T, int RB, int Lo, int Hi, size_t Base>
TQF_INLINE void tile_group(typename Lanes<T>::V* r) {
    using L = Lanes<T>;
    unroll<Hi - Lo>([&](auto k) TQF_LAMBDA {
        constexpr size_t H = size_t{1} << (Lo + decltype(k)::value);
        constexpr size_t kPairs = size_t{1} << (Hi - Lo - 1);
        unroll<kPairs>([&](auto p) TQF_LAMBDA {
            // The p-th register of the group whose bit Lo+k is clear.
            constexpr size_t m = decltype(p)::value;
            constexpr size_t local = (m / (H >> Lo)) * 2 * (H >> Lo) + m % (H >> Lo);
            constexpr size_t i = Base + (local << Lo);
            const typename L::V x = r[i];
            const typename L::V y = r[i + H];
            r[i] = L::add(x, y);
            r[i + H] = L::sub(x, y);
        });
    });
}

template <class T, int RB, class First, class Last>
TQF_INLINE void tiled_stages(typename Lanes<T>::V* r, First&& first, Last&& last) {
    constexpr int kTiles = (RB + kTileBits - 1) / kTileBits;
    constexpr size_t R = size_t{1} << RB;
    unroll<kTiles>([&](auto t) TQF_LAMBDA {
        constexpr int I = decltype(t)::value;
        constexpr int Lo = tile_lo(RB, I);
        constexpr int Hi = tile_lo(RB, I + 1);
        constexpr size_t kCount = size_t{1} << (Hi - Lo);
        unroll<R / kCount>([&](auto q) TQF_LAMBDA {
            constexpr size_t Q = decltype(q)::value;
            constexpr size_t Base = Q % (size_t{1} << Lo) + (Q >> Lo << Hi);
            if constexpr (I == 0) first(std::integral_constant<size_t, Base>{}, std::integral_constant<size_t, kCount>{});
            tile_group<T, RB, Lo, Hi, Base>(r);
            if constexpr (I == kTiles - 1)
                last(std::integral_constant<size_t, Base>{}, std::integral_constant<int, Lo>{},
                     std::integral_constant<size_t, kCount>{});
        });
    });
}

// Packed transform of order O on 2^O contiguous elements, In/Out being the
// memory paths of the source and the destination. The lanes hold the low
// index bits, so a transposition moves them into the register index for
// their stages and a second one moves them back, after which the remaining
// bits are all register-index bits and the output lies in natural order.
template <class T, int O, class In, class Out, bool kScaled>
TQF_INLINE void packed_block(const T* in, T* out, T s) {
    using L = Lanes<T>;
    using V = typename L::V;
    constexpr int kRegBits = O - L::kLaneBits;
    constexpr size_t R = size_t{1} << kRegBits;
    constexpr size_t W = L::kCount;
    static_assert(kRegBits >= L::kLaneBits, "at least one whole transposition group per tile");
    V r[R];
    const V sv = L::splat(s);
    auto first = [&](auto base, auto count) TQF_LAMBDA {
        constexpr size_t B = decltype(base)::value;
        unroll<decltype(count)::value / W>([&](auto g) TQF_LAMBDA {
            constexpr size_t G = B + decltype(g)::value * W;
            unroll<W>([&](auto i) TQF_LAMBDA { r[G + decltype(i)::value] = In::load(in + (G + decltype(i)::value) * W); });
            transpose<G>(r);
            stages<T, W, 0, L::kLaneBits>(r + G);
            transpose<G>(r);
        });
    };
    auto last = [&](auto base, auto lo, auto count) TQF_LAMBDA {
        unroll<decltype(count)::value>([&](auto m) TQF_LAMBDA {
            constexpr size_t i = decltype(base)::value + (decltype(m)::value << decltype(lo)::value);
            if constexpr (kScaled) r[i] = L::mul(r[i], sv);
            Out::store(out + i * W, r[i]);
        });
    };
    tiled_stages<T, kRegBits>(r, first, last);
}

// One strip of a column pass: 2^B rows of one register each, `stride`
// elements apart, transformed lane by lane (each lane is its own column, so
// no transposition). The rows come from the work buffer, always aligned.
template <class T, int B, class Out, bool kScaled>
TQF_INLINE void column_strip(const T* in, T* out, size_t stride, typename Lanes<T>::V sv) {
    using L = Lanes<T>;
    using V = typename L::V;
    V r[size_t{1} << B];
    auto first = [&](auto base, auto count) TQF_LAMBDA {
        unroll<decltype(count)::value>([&](auto m) TQF_LAMBDA {
            constexpr size_t i = decltype(base)::value + decltype(m)::value;
            r[i] = Aligned::load(in + i * stride);
        });
    };
    auto last = [&](auto base, auto lo, auto count) TQF_LAMBDA {
        unroll<decltype(count)::value>([&](auto m) TQF_LAMBDA {
            constexpr size_t i = decltype(base)::value + (decltype(m)::value << decltype(lo)::value);
            if constexpr (kScaled) r[i] = L::mul(r[i], sv);
            Out::store(out + i * stride, r[i]);
        });
    };
    tiled_stages<T, B>(r, first, last);
}

}  // namespace tqfwht
