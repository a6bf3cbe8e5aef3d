// Which program each complex kernel is, by length and precision.
#pragma once

#include <map>
#include <string>

#include "kernel.h"

namespace tqfcdft {

// Builds the graph of a forward ("cfwd") or inverse ("cinv") complex kernel of a given
// precision ("32fc"/"64fc") and length; throws if none is described.
void build_complex_kernel(tqfgen::Kernel& k, const std::string& family, const std::string& precision,
                          int length);

// The factor trees of the composite kernels, by length: the four-lane float
// kernels, and the two-lane double kernels other than the powers of two.
const std::map<int, std::string>& single_trees();
const std::map<int, std::string>& double_trees();

}  // namespace tqfcdft
