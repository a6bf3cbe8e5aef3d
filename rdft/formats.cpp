#include "formats.h"

#include <stdexcept>

namespace tqfrdft {

Format format_named(const std::string& name) {
    if (name == "ccs") return Format::CCS;
    if (name == "pack") return Format::Pack;
    if (name == "perm") return Format::Perm;
    throw std::runtime_error("no spectrum format " + name);
}

const char* format_stem(Format f) {
    switch (f) {
    case Format::CCS: return "CCS";
    case Format::Pack: return "Pack";
    case Format::Perm: return "Perm";
    }
    return "?";
}

int spectrum_length(Format f, int n) {
    if (f != Format::CCS) return n;
    return n % 2 == 0 ? n + 2 : n + 1;
}

int real_slot(Format f, int n, int k) {
    if (k == 0) return 0;
    const bool nyquist = n % 2 == 0 && 2 * k == n;
    switch (f) {
    case Format::CCS: return 2 * k;
    case Format::Pack: return 2 * k - 1;
    case Format::Perm:
        if (nyquist) return 1;
        // Odd lengths have no Nyquist value to move forward: Pack's slots.
        return n % 2 == 0 ? 2 * k : 2 * k - 1;
    }
    return -1;
}

int imag_slot(Format f, int n, int k) {
    if (k == 0 || 2 * k == n) return -1;
    return real_slot(f, n, k) + 1;
}

std::vector<int> zero_slots(Format f, int n) {
    if (f != Format::CCS) return {};
    if (n % 2 == 0) return {1, n + 1};
    return {1};
}

}  // namespace tqfrdft
