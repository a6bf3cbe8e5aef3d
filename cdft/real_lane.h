// Real prime programs: a real-coefficient program that every lane runs on
// its own real sequence (the real parts, or the imaginary parts, of the
// data; or one scalar real sequence), and the crossing stage where the two
// sequences of a complex input finally meet. Over the split algebra, so the
// same code builds the scalar double and the widened scalar float programs.
//
// Both the symmetric direct form (7, 11) and Rader's algorithm in its
// real-lane form give, per real sequence, the bin-0 sum and for k = 1..m
// (m = (p-1)/2) a cosine half A[k] and a sine half B[k] with
//   X[k] = A[k] + dir i B[k],   X[p-k] = A[k] - dir i B[k].
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "algebra.h"
#include "tree.h"

namespace tqfcdft {

struct Halves {
    tqfgen::Handle x0;               // X[0]
    std::vector<tqfgen::Handle> A, B;  // index 1..m (0 unused)
};


struct RaderForm;
// Rader's real-lane form of each prime from 13 (see rader_real.h), and
// those forms as text, by p.
RaderForm real_lane_form(int p);
const std::map<int, std::string>& real_lane_forms();

Halves direct_halves(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Handle>& x);
// The direct form as the real families write it: the sine row of bin k sums
// the terms of the forward transform's imaginary part, -sin(2 pi jk/p) d[j],
// so that its sign, and with it which outputs are stored negated, is that
// sum's (B[k] is its negation, free).
Halves direct_rows(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Handle>& x);
// Its rows are formed in the order the algebra names for p
// (SplitAlg::direct_row_order), by default the bin-0 sum and then bins 1..m.
Halves direct_form(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Handle>& x, bool forward_sines);
// The method of the block: direct form for 7 and 11, Rader otherwise.
Halves prime_halves(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Handle>& x);

// A complex prime block over lane registers: the real program on the real
// parts and on the imaginary parts, then the crossing.
using HalvesOf = std::function<Halves(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Handle>& x)>;
std::vector<tqfgen::Cx> real_lane_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir,
                                        HalvesOf halves = prime_halves);

// Crossing stage of the two-lane double form, where one register holds
// [re, im] and the halves came from one run on both lanes: one addsub per
// output, no sign flip.
std::vector<tqfgen::Handle> cross_pairs(tqfgen::PairAlg& a, const Halves& h, int p, int dir);

}  // namespace tqfcdft
