#include "algebra.h"

namespace tqfgen {

static const long double kR = 0.707106781186547524400844362104849039L;
static const long double kEighths[8][2] = {{1, 0}, {kR, kR},   {0, 1},  {-kR, kR},
                                           {-1, 0}, {-kR, -kR}, {0, -1}, {kR, -kR}};

Root unit_root(long k, long n, int sign) {
    k %= n;
    if (k < 0) k += n;
    long double c, s;
    if ((8 * k) % n == 0) {
        c = kEighths[8 * k / n][0];
        s = kEighths[8 * k / n][1];
    } else {
        // The lower half mirrors the upper: the same argument gives both.
        const long q = 2 * k > n ? n - k : k;
        const long double a = 2 * 3.141592653589793238462643383279502884L * q / n;
        c = cosl(a);
        s = q == k ? sinl(a) : -sinl(a);
    }
    return Root(c, sign > 0 ? s : -s);
}

int eighth_turn(Root w) {
    for (int j = 0; j < 8; ++j)
        if (w.real() == kEighths[j][0] && w.imag() == kEighths[j][1]) return j;
    return -1;
}

SplitAlg::C SplitAlg::twiddle(C x, Root w, bool) {
    switch (eighth_turn(w)) {
    case 0: return x;
    case 2: return mul_i(x, +1);
    case 4: return neg(x);
    case 6: return mul_i(x, -1);
    case 7: return mul_real(add(x, mul_i(x, -1)), std::sqrt(0.5L));  // (1 - i)/sqrt2
    case 1: return mul_real(add(x, mul_i(x, +1)), std::sqrt(0.5L));  // (1 + i)/sqrt2
    case 3: return neg(mul_real(add(x, mul_i(x, -1)), std::sqrt(0.5L)));
    case 5: return neg(mul_real(add(x, mul_i(x, +1)), std::sqrt(0.5L)));
    default: break;
    }
    const long double wr = w.real(), wi = w.imag();
    return {add_r(mul_r(x.re, wr), -mul_r(x.im, wi)), add_r(mul_r(x.re, wi), mul_r(x.im, wr))};
}

PairAlg::C PairAlg::twiddle(C x, Root w, bool into_leaf) {
    switch (eighth_turn(w)) {
    case 0: return x;
    case 2: return mul_i(x, +1);
    case 4: return neg(x);
    case 6: return mul_i(x, -1);
    case 7: return w8(x);
    case 1: return w8conj(x);
    case 3: return neg(w8(x));
    case 5: return neg(w8conj(x));
    default: return cmul(x, w, into_leaf && flip_join_into_leaf);
    }
}

}  // namespace tqfgen
