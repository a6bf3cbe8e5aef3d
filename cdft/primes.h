// Standalone prime-length complex kernels (7 to 61): symmetric direct form,
// Rader (complex form in single, real-lane form in double) and Bluestein.
#pragma once

#include "kernel.h"

namespace tqfcdft {

// Fills the graph and outputs of k (family, precision, length, form and
// double_data already set) for a prime length of 7 or more.
void build_prime_kernel(tqfgen::Kernel& k, int dir);

}  // namespace tqfcdft
