// Standalone prime-length complex kernels (7 to 61): symmetric direct form,
// Rader (complex form in single, real-lane form in double) and Bluestein.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "kernel.h"

namespace tqfcdft {

// Fills the graph and outputs of k (family, precision, length, form and
// double_data already set) for a prime length of 7 or more.
void build_prime_kernel(tqfgen::Kernel& k, int dir);

// The factor chains of the inner transforms of length p - 1 of the single
// precision Rader kernels, first factor first, by p.
const std::map<int, std::string>& rader_chains();
// The factor tree of the Bluestein convolution's transforms of the prime p.
std::string bluestein_tree(int p);
// All of those trees.
std::vector<std::string> bluestein_trees();

}  // namespace tqfcdft
