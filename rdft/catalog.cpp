// The real families of the generator's command line, precisions 32f and
// 64f, lengths 2..64: forward (rfwd_ccs, rfwd_pack, rfwd_perm), inverse
// (rinv_ccs, rinv_pack, rinv_perm) and Hartley. One program per length and
// direction; the three layouts differ only in their store or load offsets,
// and at five inverse lengths in the order of accumulation of direct rows.
#include <stdexcept>
#include <string>

#include "family.h"
#include "formats.h"
#include "forward.h"
#include "hartley.h"
#include "inverse.h"
#include "mirror.h"

namespace tqfrdft {

namespace {

using tqfgen::Handle;
using tqfgen::Ty;

// A row that a widening kernel finished in double (its value narrowed for
// further single work) is scaled in double and rounded once by the store; a
// value the algebra keeps as its own (an eighth-turn product) stays rounded.
Handle unsettled(const tqfgen::SplitAlg& a, Handle h) {
    const Handle row = a.unrounded(h);
    return row.valid() ? row : h;
}

const char* layout_id(Format f) { return f == Format::CCS ? "ccs" : f == Format::Pack ? "pack" : "perm"; }

Ty data_type(const tqfgen::Kernel& k) { return k.double_data ? Ty::F64 : Ty::F32; }

// The frame every kernel of these families shares: identity, scalar form,
// precision and scale rule, and the algebra of its program (single
// precision widens every product with a constant; 2 and 4 have none).
tqfgen::SplitAlg start_kernel(tqfgen::Kernel& k, std::string family, std::string name, const std::string& precision,
                              int n, tqfgen::Kernel::DividesBy divides_by) {
    if (precision != "32f" && precision != "64f") throw std::runtime_error("unknown precision " + precision);
    k.family = std::move(family);
    k.precision = precision;
    k.length = n;
    k.name = std::move(name) + "_" + std::to_string(n) + "_" + precision;
    k.form = tqfgen::Form::Scalar;
    k.double_data = precision == "64f";
    k.divides_by = divides_by;
    return tqfgen::SplitAlg(k.g, data_type(k), !k.double_data && n != 2 && n != 4);
}

std::vector<Handle> load_sequence(tqfgen::Kernel& k, int n) {
    std::vector<Handle> x;
    for (int i = 0; i < n; ++i) x.push_back(k.g.load_scalar(data_type(k), i));
    return x;
}

// Every program of these families ends the same way: stores settled, and
// mirrored differences merged over the live program.
void finish_kernel(tqfgen::Kernel& k) {
    k.settle_outputs();
    tqfgen::merge_mirrored_differences(k);
}

void build_forward(tqfgen::Kernel& k, Format f, const std::string& precision, int n) {
    tqfgen::SplitAlg a = start_kernel(k, std::string("rfwd_") + layout_id(f),
                                      std::string("tqfgDFTFwd_RTo") + format_stem(f), precision, n,
                                      tqfgen::Kernel::DividesBy::FwdFlag);
    const std::vector<tqfgen::Cx> X = forward_real(a, n, load_sequence(k, n));
    for (int s : zero_slots(f, n)) k.store_zero(s);
    for (int q = 0; q <= n / 2; ++q) {
        k.store_keep_sign(real_slot(f, n, q), unsettled(a, X[q].re));
        const int im = imag_slot(f, n, q);
        if (im >= 0) k.store_keep_sign(im, unsettled(a, X[q].im));
        else if (X[q].im.valid()) throw std::logic_error(k.name + ": DC or Nyquist with an imaginary part");
    }
    finish_kernel(k);
}

// The order of accumulation of the direct rows of an inverse kernel. Every
// layout shares one program, and with it one order, except at five lengths,
// where the layouts keep orders of their own (docs/real-dft.md): at 7 and 49
// the rows of the 7-point stages take the harmonics 1, 3, 2 in CCS and 1, 2, 3
// in Pack and Perm; at 20, 40 and 50 Pack's 5-point rows sum 0, 1, 2, the
// reverse of the order of CCS and Perm (and of every other length).
RowOrders inverse_row_orders(Format f, int n) {
    if (n == 7 || n == 49) return {{7, f == Format::CCS ? std::vector<int>{0, 1, 3, 2} : std::vector<int>{0, 1, 2, 3}}};
    if (f == Format::Pack && (n == 20 || n == 40 || n == 50)) return {{5, {0, 1, 2}}};
    return {};
}

void build_inverse(tqfgen::Kernel& k, Format f, const std::string& precision, int n) {
    tqfgen::SplitAlg a = start_kernel(k, std::string("rinv_") + layout_id(f),
                                      std::string("tqfgDFTInv_") + format_stem(f) + "ToR", precision, n,
                                      tqfgen::Kernel::DividesBy::InvFlag);
    // Harmonics in slot order of the layout; CCS's stored zeros are never read.
    std::vector<tqfgen::Cx> F(n / 2 + 1);
    for (int q = 0; q <= n / 2; ++q) {
        F[q].re = k.g.load_scalar(data_type(k), real_slot(f, n, q));
        const int im = imag_slot(f, n, q);
        if (im >= 0) F[q].im = k.g.load_scalar(data_type(k), im);
    }
    const std::vector<Handle> x = inverse_real(a, n, F, inverse_row_orders(f, n));
    for (int i = 0; i < n; ++i) k.store_keep_sign(i, x[i]);
    finish_kernel(k);
}

void build_hartley(tqfgen::Kernel& k, const std::string& precision, int n) {
    tqfgen::SplitAlg a = start_kernel(k, "hartley", "tqfgHartley", precision, n, tqfgen::Kernel::DividesBy::Both);
    const std::vector<Handle> H = hartley(a, n, load_sequence(k, n));
    for (int i = 0; i < n; ++i) k.store_keep_sign(i, H[i]);
    finish_kernel(k);
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
const tqfgen::RegisterFamily kInvCcs("rinv_ccs", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_inverse(k, Format::CCS, p, n);
});
const tqfgen::RegisterFamily kInvPack("rinv_pack", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_inverse(k, Format::Pack, p, n);
});
const tqfgen::RegisterFamily kInvPerm("rinv_perm", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_inverse(k, Format::Perm, p, n);
});
const tqfgen::RegisterFamily kHartley("hartley", [](tqfgen::Kernel& k, const std::string& p, int n) {
    build_hartley(k, p, n);
});

}  // namespace

}  // namespace tqfrdft
