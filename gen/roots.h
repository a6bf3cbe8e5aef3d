// Roots of unity as the descriptions use them: exact where they are eighth
// turns, long double otherwise.
#pragma once

#include <complex>

#include "graph.h"

namespace tqfgen {

using Root = std::complex<long double>;

// A complex value held as two registers (or scalars): real and imaginary part.
struct Cx {
    Handle re, im;
};

// exp(sign * 2 pi i k / n), computed in long double after an exact reduction
// of k, so that quarter and eighth turns come out exact.
Root unit_root(long k, long n, int sign);

// j when w = exp(2 pi i j / 8) exactly, or -1 for any other root.
int eighth_turn(Root w);

}  // namespace tqfgen
