#include "manifest.h"

namespace tqfgen {

void write_manifest_header(std::ostream& out) {
    out << "family,precision,length,adds,muls,trivial_muls,sign_flips,depth,constants\n";
}

void write_manifest_row(std::ostream& out, const Kernel& k, const Counts& c) {
    out << k.family << ',' << k.precision << ',' << k.length << ',' << c.adds << ',' << c.muls << ','
        << c.trivial_muls << ',' << c.sign_flips << ',' << c.depth << ',' << c.constants << '\n';
}

}  // namespace tqfgen
