// The forward real families of the generator's command line: rfwd_ccs,
// rfwd_pack and rfwd_perm, precisions 32f and 64f, lengths 2..64. One
// program per length; the three layouts differ only in their store offsets.
#include <stdexcept>
#include <string>

#include "family.h"
#include "formats.h"
#include "mirror.h"
#include "forward.h"
#include "hartley.h"
#include "inverse.h"

namespace tqfrdft {

namespace {

using tqfgen::Handle;
using tqfgen::Ty;

// A row that a widening kernel finished in double (its value narrowed for
// further single work) is scaled in double and rounded once by the store.
Handle unsettled(const tqfgen::Graph& g, Handle h) {
    const tqfgen::Node& n = g.node(h.id);
    if (n.op != tqfgen::Op::Narrow) return h;
    return Handle{n.a, h.neg};
}

void build_forward(tqfgen::Kernel& k, Format f, const std::string& precision, int n) {
    if (precision != "32f" && precision != "64f") throw std::runtime_error("unknown precision " + precision);
    k.family = std::string("rfwd_") + (f == Format::CCS ? "ccs" : f == Format::Pack ? "pack" : "perm");
    k.precision = precision;
    k.length = n;
    k.name = std::string("tqfgDFTFwd_RTo") + format_stem(f) + "_" + std::to_string(n) + "_" + precision;
    k.form = tqfgen::Form::Scalar;
    k.double_data = precision == "64f";
    k.divides_by = tqfgen::Kernel::DividesBy::FwdFlag;
    const Ty ty = k.double_data ? Ty::F64 : Ty::F32;
    // Single precision widens every product with a constant; 2 and 4 have none.
    tqfgen::SplitAlg a(k.g, ty, !k.double_data && n != 2 && n != 4);
    std::vector<Handle> x;
    for (int i = 0; i < n; ++i) x.push_back(k.g.load_scalar(ty, i));
    const std::vector<tqfgen::Cx> X = forward_real(a, n, x);
    for (int s : zero_slots(f, n)) k.store_zero(s);
    for (int q = 0; q <= n / 2; ++q) {
        k.store_keep_sign(real_slot(f, n, q), unsettled(k.g, X[q].re));
        const int im = imag_slot(f, n, q);
        if (im >= 0) k.store_keep_sign(im, unsettled(k.g, X[q].im));
        else if (X[q].im.valid()) throw std::logic_error(k.name + ": DC or Nyquist with an imaginary part");
    }
    k.settle_outputs();
    tqfgen::merge_mirrored_differences(k);
}

void build_inverse(tqfgen::Kernel& k, Format f, const std::string& precision, int n) {
    if (precision != "32f" && precision != "64f") throw std::runtime_error("unknown precision " + precision);
    k.family = std::string("rinv_") + (f == Format::CCS ? "ccs" : f == Format::Pack ? "pack" : "perm");
    k.precision = precision;
    k.length = n;
    k.name = std::string("tqfgDFTInv_") + format_stem(f) + "ToR_" + std::to_string(n) + "_" + precision;
    k.form = tqfgen::Form::Scalar;
    k.double_data = precision == "64f";
    k.divides_by = tqfgen::Kernel::DividesBy::InvFlag;
    const Ty ty = k.double_data ? Ty::F64 : Ty::F32;
    tqfgen::SplitAlg a(k.g, ty, !k.double_data && n != 2 && n != 4);
    // Harmonics in slot order of the layout; CCS's stored zeros are never read.
    std::vector<tqfgen::Cx> F(n / 2 + 1);
    for (int q = 0; q <= n / 2; ++q) {
        F[q].re = k.g.load_scalar(ty, real_slot(f, n, q));
        const int im = imag_slot(f, n, q);
        if (im >= 0) F[q].im = k.g.load_scalar(ty, im);
    }
    const std::vector<Handle> x = inverse_real(a, n, F);
    for (int i = 0; i < n; ++i) k.store_keep_sign(i, x[i]);
    k.settle_outputs();
    tqfgen::merge_mirrored_differences(k);
}

void build_hartley(tqfgen::Kernel& k, const std::string& precision, int n) {
    if (precision != "32f" && precision != "64f") throw std::runtime_error("unknown precision " + precision);
    k.family = "hartley";
    k.precision = precision;
    k.length = n;
    k.name = "tqfgHartley_" + std::to_string(n) + "_" + precision;
    k.form = tqfgen::Form::Scalar;
    k.double_data = precision == "64f";
    k.divides_by = tqfgen::Kernel::DividesBy::Both;
    const Ty ty = k.double_data ? Ty::F64 : Ty::F32;
    tqfgen::SplitAlg a(k.g, ty, !k.double_data && n != 2 && n != 4);
    std::vector<Handle> x;
    for (int i = 0; i < n; ++i) x.push_back(k.g.load_scalar(ty, i));
    const std::vector<Handle> H = hartley(a, n, x);
    for (int i = 0; i < n; ++i) k.store_keep_sign(i, H[i]);
    k.settle_outputs();
    tqfgen::merge_mirrored_differences(k);
}

const tqfgen::RegisterFamily kCcs("rfwd_ccs", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_forward(k, Format::CCS, p, n);
});
const tqfgen::RegisterFamily kPack("rfwd_pack", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_forward(k, Format::Pack, p, n);
});
const tqfgen::RegisterFamily kPerm("rfwd_perm", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_forward(k, Format::Perm, p, n);
});

}  // namespace

}  // namespace tqfrdft

namespace tqfrdft {
namespace {

const tqfgen::RegisterFamily kInvCcs("rinv_ccs", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_inverse(k, Format::CCS, p, n);
});
const tqfgen::RegisterFamily kInvPack("rinv_pack", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_inverse(k, Format::Pack, p, n);
});
const tqfgen::RegisterFamily kInvPerm("rinv_perm", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_inverse(k, Format::Perm, p, n);
});

}  // namespace
}  // namespace tqfrdft

namespace tqfrdft {
namespace {

const tqfgen::RegisterFamily kHartley("hartley", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_hartley(k, p, n);
});

}  // namespace
}  // namespace tqfrdft
