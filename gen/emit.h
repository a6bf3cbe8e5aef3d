// C++ source of one kernel: a body template instantiated for the aligned and
// the unaligned memory path, and the exported entry with its checks.
#pragma once

#include <string>

#include "kernel.h"

namespace tqfgen {

// Packed kernels test alignment at entry and have an unaligned twin.
bool is_packed(const Kernel& k);
std::string emit_kernel_source(const Kernel& k);

}  // namespace tqfgen
