#include "catalog.h"

#include <map>
#include <stdexcept>

#include "blocks.h"
#include "pair_pow2.h"
#include "planar.h"

namespace tqfcdft {

using tqfgen::Form;
using tqfgen::Handle;
using tqfgen::Ty;

namespace {

// Single-precision lengths with four-lane planar trees.
const std::map<int, std::string> kPlanarTrees = {
    {8, "4 T 2"}, {16, "4 T 4"}, {32, "4 T (4 T 2)"}, {64, "(4 T 2) T (4 T 2)"},
};

// Single-precision lengths computed in scalar code; 3 and 5 widen products.
void build_scalar(tqfgen::Kernel& k, int dir) {
    const bool widen = k.length == 3 || k.length == 5;
    tqfgen::SplitAlg a(k.g, Ty::F32, widen);
    std::vector<tqfgen::Cx> x;
    for (int n = 0; n < k.length; ++n) x.push_back({k.g.load_scalar(Ty::F32, n, 0), k.g.load_scalar(Ty::F32, n, 1)});
    for (const tqfgen::Cx& v : block(a, std::to_string(k.length), x, dir)) {
        k.scalar_out.push_back(v.re);
        k.scalar_out.push_back(v.im);
    }
}

void build_pair(tqfgen::Kernel& k, int dir) {
    tqfgen::PairAlg a(k.g);
    std::vector<Handle> x;
    for (int n = 0; n < k.length; ++n) x.push_back(k.g.load_pair(n));
    k.pair_out = k.length <= 5 ? block(a, std::to_string(k.length), x, dir) : pair_pow2(a, x, dir);
}

}  // namespace

void build_complex_kernel(tqfgen::Kernel& k, const std::string& family, const std::string& precision,
                          int length) {
    if (family != "cfwd") throw std::runtime_error("unknown complex family " + family);
    const int dir = -1;
    k.family = family;
    k.precision = precision;
    k.length = length;
    k.forward = true;
    k.name = "tqfgDFTFwd_CToC_" + std::to_string(length) + "_" + precision;
    if (precision == "32fc") {
        k.double_data = false;
        if (length <= 5) {
            k.form = Form::Scalar;
            build_scalar(k, dir);
        } else {
            k.form = Form::Planar;
            auto t = kPlanarTrees.find(length);
            if (t == kPlanarTrees.end()) throw std::runtime_error("no tree for length " + std::to_string(length));
            build_planar(k, t->second, dir);
        }
    } else if (precision == "64fc") {
        k.double_data = true;
        k.form = Form::Pair;
        build_pair(k, dir);
    } else {
        throw std::runtime_error("unknown precision " + precision);
    }
    k.settle_outputs();
}

}  // namespace tqfcdft
