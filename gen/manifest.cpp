#include "manifest.h"

namespace tqfgen {

namespace {

const char* form_name(Form f) {
    switch (f) {
    case Form::Scalar: return "scalar";
    case Form::Pair: return "pair";
    case Form::Planar: return "planar";
    }
    return "?";
}

}  // namespace

void write_manifest_header(std::ostream& out) {
    out << "family,precision,length,name,form,adds,muls,trivial_muls,sign_flips,depth,constants,"
           "zero_sub_stores,doublings,double_adds,double_scales\n";
}

void write_manifest_row(std::ostream& out, const Kernel& k, const Counts& c) {
    out << k.family << ',' << k.precision << ',' << k.length << ',' << k.name << ',' << form_name(k.form) << ','
        << c.adds << ',' << c.muls << ','
        << c.trivial_muls << ',' << c.sign_flips << ',' << c.depth << ',' << c.constants << ','
        << c.zero_sub_stores << ',' << c.doublings << ',' << c.double_adds << ',' << c.double_scales << '\n';
}

}  // namespace tqfgen
