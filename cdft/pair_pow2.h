// Power-of-two programs of the two-lane double-precision kernels (8 to 64):
// radix-2 levels with the twiddles folded into the butterflies around them.
#pragma once

#include <vector>

#include "algebra.h"

namespace tqfcdft {

std::vector<tqfgen::Handle> pair_pow2(tqfgen::PairAlg& a, const std::vector<tqfgen::Handle>& x, int dir);

}  // namespace tqfcdft
