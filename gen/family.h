// Families of generated kernels register themselves here; the driver finds
// them by the name on its command line ("cfwd:32fc:16"). gen/ knows no
// family: a family's sources are linked into the generator and hold a
// static RegisterFamily object.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kernel.h"

namespace tqfgen {

// Fills `k` for one precision ("32fc", "64f", ...) and length: its name,
// form and scale rule, its graph, every load (by flat element offset) and
// every store. Throws if the family has no program for that kernel.
// The entry is always (const T* src, T* dst, int flag), T = tqf<precision>.
using BuildKernel = std::function<void(Kernel& k, const std::string& precision, int length)>;

struct Family {
    std::string name;
    BuildKernel build;
};

class RegisterFamily {
public:
    RegisterFamily(std::string name, BuildKernel build);
};

// nullptr if no family of that name is linked in.
const Family* find_family(const std::string& name);
std::vector<std::string> family_names();

}  // namespace tqfgen
