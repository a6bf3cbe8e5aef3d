// Prime blocks used inside composite trees (7 and 11 in the symmetric direct
// form, 13 to 31 by Rader's algorithm in the real-lane form), for the
// four-lane float, the two-lane double and the lane-register algebra.
#pragma once

#include <string>
#include <vector>

#include "algebra.h"
#include "lane_alg.h"

namespace tqfcdft {

std::vector<tqfgen::Cx> prime_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir);
std::vector<tqfgen::Handle> prime_block(tqfgen::PairAlg& a, int p, const std::vector<tqfgen::Handle>& x, int dir);
std::vector<tqfgen::Cx> prime_block(LaneAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir);

// Rader's real-lane form for a prime that otherwise takes the direct form
// (the "7r" variant block of a factor tree).
std::vector<tqfgen::Handle> rader_block(tqfgen::PairAlg& a, int p, const std::vector<tqfgen::Handle>& x, int dir);

}  // namespace tqfcdft
