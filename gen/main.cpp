// tqfgen_gen: writes one C++ source per requested kernel and the manifest.
//
//   tqfgen_gen OUTDIR FAMILY:PRECISION:LENGTH ...
//
// e.g. cfwd:32fc:16. FAMILY is the name a family registered (gen/family.h).
// The manifest OUTDIR/kernels.csv holds the operation counts of exactly the
// programs written.
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "count.h"
#include "emit.h"
#include "family.h"
#include "manifest.h"

namespace {

bool write_if_changed(const std::string& path, const std::string& text) {
    std::ifstream in(path);
    if (in) {
        std::stringstream old;
        old << in.rdbuf();
        if (old.str() == text) return true;
    }
    std::ofstream out(path);
    out << text;
    return static_cast<bool>(out);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: tqfgen_gen OUTDIR FAMILY:PRECISION:LENGTH ...\n";
        return 2;
    }
    const std::string dir = argv[1];
    std::ostringstream manifest;
    tqfgen::write_manifest_header(manifest);
    try {
        for (int i = 2; i < argc; ++i) {
            std::string spec = argv[i];
            const size_t p1 = spec.find(':'), p2 = spec.rfind(':');
            if (p1 == std::string::npos || p1 == p2) throw std::runtime_error("bad kernel spec " + spec);
            const tqfgen::Family* family = tqfgen::find_family(spec.substr(0, p1));
            if (!family) throw std::runtime_error("no family registered for " + spec);
            tqfgen::Kernel k;
            family->build(k, spec.substr(p1 + 1, p2 - p1 - 1), std::stoi(spec.substr(p2 + 1)));
            const tqfgen::Counts c = tqfgen::count_operations(k);
            tqfgen::write_manifest_row(manifest, k, c);
            const std::string file = dir + "/" + k.family + "_" + k.precision + "_" + std::to_string(k.length) + ".cpp";
            if (!write_if_changed(file, tqfgen::emit_kernel_source(k))) throw std::runtime_error("cannot write " + file);
        }
    } catch (const std::exception& e) {
        std::cerr << "tqfgen_gen: " << e.what() << "\n";
        return 1;
    }
    if (!write_if_changed(dir + "/kernels.csv", manifest.str())) return 1;
    return 0;
}
