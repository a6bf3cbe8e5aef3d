#include "scale_constants.h"

#include <cmath>
#include <cstdint>

#include "tqfgen.h"

namespace tqftest {
namespace {

// Unsigned integers of four 32-bit limbs, least significant first: enough
// for the square of a 54-bit mantissa times a length.
struct U128 {
    uint32_t limb[4] = {0, 0, 0, 0};
};

U128 times_small(const U128& a, uint32_t m) {
    U128 r;
    uint64_t carry = 0;
    for (int i = 0; i < 4; ++i) {
        const uint64_t p = static_cast<uint64_t>(a.limb[i]) * m + carry;
        r.limb[i] = static_cast<uint32_t>(p);
        carry = p >> 32;
    }
    return r;
}

U128 square(uint64_t x) {
    const uint32_t part[2] = {static_cast<uint32_t>(x), static_cast<uint32_t>(x >> 32)};
    U128 r;
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 2; ++j) {
            uint64_t carry = static_cast<uint64_t>(part[i]) * part[j];
            for (int k = i + j; k < 4 && carry; ++k) {
                const uint64_t s = static_cast<uint64_t>(r.limb[k]) + (carry & 0xffffffffu);
                r.limb[k] = static_cast<uint32_t>(s);
                carry = (carry >> 32) + (s >> 32);
            }
        }
    return r;
}

int compare(const U128& a, const U128& b) {
    for (int i = 3; i >= 0; --i)
        if (a.limb[i] != b.limb[i]) return a.limb[i] < b.limb[i] ? -1 : 1;
    return 0;
}

// Sign of m*m*n - 1, exactly, for a positive m with at most 54 significant
// bits (a double or the midpoint of two neighbouring doubles) in [1/8, 1].
int sign_of_square_times_n_minus_one(long double m, int n) {
    int e = 0;
    const long double f = std::frexp(m, &e);           // m = f 2^e, f in [1/2, 1)
    const uint64_t M = static_cast<uint64_t>(std::ldexp(f, 54));  // m = M 2^(e - 54), exact
    U128 lhs = times_small(square(M), static_cast<uint32_t>(n));  // m^2 n = lhs 2^(2e - 108)
    U128 one;                                                     // 1 = 2^(108 - 2e) 2^(2e - 108)
    const int k = 108 - 2 * e;
    one.limb[k / 32] = 1u << (k % 32);
    return compare(lhs, one);
}

}  // namespace

double nearest_inv_sqrt(int n) {
    double c = 1.0 / std::sqrt(static_cast<double>(n));  // at most one unit off
    for (int step = 0; step < 4; ++step) {
        const double up = std::nextafter(c, 2.0), down = std::nextafter(c, 0.0);
        // The exact value lies above the upper midpoint when (mid)^2 n < 1.
        if (sign_of_square_times_n_minus_one((static_cast<long double>(c) + up) / 2, n) < 0) c = up;
        else if (sign_of_square_times_n_minus_one((static_cast<long double>(c) + down) / 2, n) > 0) c = down;
        else return c;
    }
    return c;
}

template <>
float scale_value<float>(int n, int flag, bool by_n) {
    if (flag == tqfDivBySqrtN) return static_cast<float>(1.0 / std::sqrt(static_cast<double>(n)));
    return by_n ? static_cast<float>(1.0 / n) : 1.0f;
}

template <>
double scale_value<double>(int n, int flag, bool by_n) {
    if (flag == tqfDivBySqrtN) return nearest_inv_sqrt(n);
    return by_n ? 1.0 / n : 1.0;
}

}  // namespace tqftest
