// Prime blocks used inside composite trees (7 and 11 in the symmetric direct
// form, 13 to 31 by Rader's algorithm in the real-lane form), for the
// split algebra (planar float lanes, real lanes, scalars) and the two-lane
// double algebra.
#pragma once

#include <string>
#include <vector>

#include "algebra.h"

namespace tqfcdft {

std::vector<tqfgen::Handle> prime_block(tqfgen::PairAlg& a, int p, const std::vector<tqfgen::Handle>& x, int dir);
std::vector<tqfgen::Cx> prime_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir);

// The symmetric direct form of an odd prime, without reduction ("5d": the
// five-point block of the real families, m * m products per real sequence).
std::vector<tqfgen::Cx> direct_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir);

// Rader's algorithm in the real-lane form for any prime with a chain, 7 and
// 11 included ("11r": the eleven-point block of the inverse real programs).
std::vector<tqfgen::Cx> rader_lane_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir);
// The same with a form of its own, "[inner / cosine / sine]" (rader_real.h),
// or two, "[a | b]": a on real data, b on complex data with its bins' single
// products folded at every m (RaderForm::fold_bins).
std::vector<tqfgen::Cx> rader_form_block(tqfgen::SplitAlg& a, int p, const std::string& form,
                                         const std::vector<tqfgen::Cx>& x, int dir);

// Rader's real-lane form for a prime that otherwise takes the direct form
// (the "7r" variant block of a factor tree).
std::vector<tqfgen::Handle> rader_block(tqfgen::PairAlg& a, int p, const std::vector<tqfgen::Handle>& x, int dir);

}  // namespace tqfcdft
