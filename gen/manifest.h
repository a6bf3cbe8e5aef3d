// kernels.csv: one row of counts per generated kernel.
#pragma once

#include <ostream>

#include "count.h"
#include "kernel.h"

namespace tqfgen {

void write_manifest_header(std::ostream& out);
void write_manifest_row(std::ostream& out, const Kernel& k, const Counts& c);

}  // namespace tqfgen
