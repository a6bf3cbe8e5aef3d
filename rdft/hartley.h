// The Hartley programs: H[k] = sum_n x[n] cas(2 pi nk/N), cas = cos + sin,
// from the real programs of the same length and one stage of sums and
// differences, in one of two forms per length.
#pragma once

#include <vector>

#include "algebra.h"

namespace tqfrdft {

// H[0..n-1] from x[0..n-1], unscaled.
std::vector<tqfgen::Handle> hartley(tqfgen::SplitAlg& a, int n, const std::vector<tqfgen::Handle>& x);

// Whether length n takes form A (the forward real program, then a stage of
// sums and differences) rather than form B (a stage on the input, then the
// inverse real program).
bool hartley_form_a(int n);

}  // namespace tqfrdft
