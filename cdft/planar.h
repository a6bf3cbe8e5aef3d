// Four-lane single-precision kernels: the top node of a factor tree spreads
// its stages across lanes, four like blocks at a time, with an in-register
// transposition and a lane-varying twiddle multiplication between the stages;
// nested nodes run inside the lanes.
#pragma once

#include <string>

#include "kernel.h"

namespace tqfcdft {

void build_planar(tqfgen::Kernel& k, const std::string& tree, int dir);

}  // namespace tqfcdft
