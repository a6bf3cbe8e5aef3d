// The inverse real programs: one per length, the same graph in both
// precisions and all three layouts.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "algebra.h"

namespace tqfrdft {

// The order in which the rows of a program's direct prime stages ("direct",
// "5d", "7d") sum their terms, by prime p: 0 the term of the stage's input 0
// (R0 in a stage on the spectrum), k that of harmonic k of the stage; a sine
// row has no term 0 and keeps the order of the others. A prime not listed
// sums in the construction's own order, m, ..., 1, 0. The products and the
// sums are the same in every order; only their association changes.
using RowOrders = std::map<int, std::vector<int>>;

// x[n] = R0 + (-1)^n R(n/2) + sum_{k=1}^{m} 2 (Rk cos(2 pi nk/N) - Ik sin(2 pi nk/N)),
// n = 0..N-1, from the harmonics F[k] = (Rk, Ik), k = 0..N/2 (the imaginary
// parts of DC and Nyquist invalid: never loaded). The interior harmonics are
// doubled first, by a multiplication by 2.0 in the data's precision; the
// program is the transpose of a forward real program (gen/transpose.h).
std::vector<tqfgen::Handle> inverse_real(tqfgen::SplitAlg& a, int n, const std::vector<tqfgen::Cx>& F,
                                         const RowOrders& rows = {});

// The same program with the interior harmonics taken as they are (not
// doubled) when `doubled` is false: the second half of a Hartley kernel.
std::vector<tqfgen::Handle> inverse_real_weighted(tqfgen::SplitAlg& a, int n, const std::vector<tqfgen::Cx>& F,
                                                  bool doubled, const RowOrders& rows = {});

// The forward program ("direct", "rader" or a factor tree) that each
// length transposes; its stages act in the opposite order.
const std::map<int, std::string>& inverse_real_duals();

}  // namespace tqfrdft
