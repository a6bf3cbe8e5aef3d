#include "family.h"

#include <map>
#include <stdexcept>

namespace tqfgen {

namespace {

// A function-local table: registrations run during static initialisation,
// in no fixed order across files.
std::map<std::string, Family>& registry() {
    static std::map<std::string, Family> families;
    return families;
}

}  // namespace

RegisterFamily::RegisterFamily(std::string name, BuildKernel build) {
    if (!registry().emplace(name, Family{name, std::move(build)}).second)
        throw std::logic_error("family registered twice: " + name);
}

const Family* find_family(const std::string& name) {
    auto it = registry().find(name);
    return it == registry().end() ? nullptr : &it->second;
}

std::vector<std::string> family_names() {
    std::vector<std::string> names;
    for (const auto& f : registry()) names.push_back(f.first);
    return names;
}

}  // namespace tqfgen
