// Which program each complex kernel is, by length and precision.
#pragma once

#include <string>

#include "kernel.h"

namespace tqfcdft {

// Builds the graph of a forward ("cfwd") or inverse ("cinv") complex kernel of a given
// precision ("32fc"/"64fc") and length; throws if none is described.
void build_complex_kernel(tqfgen::Kernel& k, const std::string& family, const std::string& precision,
                          int length);

}  // namespace tqfcdft
