// Number theory and stored values of the prime constructions: primitive
// roots, the index permutations of Rader's algorithm and its kernel.
#pragma once

#include <complex>
#include <stdexcept>
#include <string>
#include <vector>

#include "algebra.h"

namespace tqfcdft {

inline long pow_mod(long b, long e, long p) {
    long r = 1;
    b %= p;
    for (; e > 0; e >>= 1, b = b * b % p)
        if (e & 1) r = r * b % p;
    return r;
}

// The smallest primitive root of a prime.
inline int primitive_root(int p) {
    for (int g = 2; g < p; ++g) {
        bool ok = true;
        for (int q = 2; q < p - 1 && ok; ++q)
            if ((p - 1) % q == 0 && pow_mod(g, (p - 1) / q, p) == 1) ok = false;
        if (ok) return g;
    }
    throw std::runtime_error("no primitive root of " + std::to_string(p));
}

// Rader's kernel K[k] = (1/N) sum_n W^(g^-n) w^(nk), with W = exp(dir 2 pi i/p)
// and w = exp(dir 2 pi i/N), N = p - 1, in long double; and the two index
// orders g^n and g^-n (mod p). g is the smallest primitive root unless the
// caller names another (root != 0).
struct RaderKernel {
    int p, N, g;
    std::vector<int> pow_g, pow_ginv;
    std::vector<tqfgen::Root> bin;

    RaderKernel(int prime, int dir, int root = 0) : p(prime), N(prime - 1), g(root ? root : primitive_root(prime)) {
        for (int q = 2; q < N; ++q)
            if (N % q == 0 && pow_mod(g, N / q, p) == 1)
                throw std::runtime_error(std::to_string(g) + " is not a primitive root of " + std::to_string(p));
        const int ginv = static_cast<int>(pow_mod(g, p - 2, p));
        for (int n = 0; n < N; ++n) {
            pow_g.push_back(static_cast<int>(pow_mod(g, n, p)));
            pow_ginv.push_back(static_cast<int>(pow_mod(ginv, n, p)));
        }
        for (int k = 0; k < N; ++k) {
            tqfgen::Root s(0, 0);
            for (int n = 0; n < N; ++n)
                s += tqfgen::unit_root(pow_ginv[n], p, dir) * tqfgen::unit_root(static_cast<long>(n) * k, N, dir);
            bin.push_back(s / static_cast<long double>(N));
        }
        bin[0] = tqfgen::Root(-1.0L / N, 0);  // exactly: the roots other than 1 sum to -1
    }
};

}  // namespace tqfcdft
