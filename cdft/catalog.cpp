#include "catalog.h"

#include <map>
#include <stdexcept>

#include "blocks.h"
#include "family.h"
#include "compose.h"
#include "pair_pow2.h"
#include "planar.h"
#include "primes.h"

namespace tqfcdft {

using tqfgen::Form;
using tqfgen::Handle;
using tqfgen::Ty;

namespace {

// Factor trees of the single-precision four-lane kernels. Their 13- and
// 29-point blocks return the cosine through 2 T 3 and 7d G 2, not through the
// h T 2 of the double-precision blocks (real_lane.cpp): their own programs.
const std::map<int, std::string> kSingleTrees = {
    {6, "2 G 3"},          {8, "4 T 2"},          {9, "3 T 3"},
    {10, "5 G 2"},         {12, "4 G 3"},         {14, "2 G 7"},
    {15, "5 G 3"},         {16, "4 T 4"},         {18, "(3 G 2) T 3"},
    {20, "4 G 5"},         {21, "7 G 3"},         {22, "2 G 11"},
    {24, "4 T (3 G 2)"},   {25, "5 T 5"},         {26, "13[3 G 4 / 2 T 3 / 3] G 2"},
    {27, "(3 T 3) T 3"},   {28, "4 G 7"},         {30, "(5 G 2) G 3"},
    {32, "4 T (4 T 2)"},   {33, "11 G 3"},        {34, "2 G 17"},
    {35, "5 G 7"},         {36, "4 G (3 T 3)"},   {38, "2 G 19"},
    {39, "13[3 G 4 / 2 T 3 / 3] G 3"},        {40, "(5 G 2) T 4"},   {42, "(7 G 2) G 3"},
    {44, "4 G 11"},        {45, "(5 G 3) T 3"},   {46, "23 T 2"},
    {48, "4 T (3 G 4)"},   {49, "7 T 7"},         {50, "(5 G 2) T 5"},
    {51, "17 G 3"},        {52, "4 G 13[3 G 4 / 2 T 3 / 3]"},        {54, "((2 G 3) T 3) T 3"},
    {55, "5 G 11"},        {56, "(7 G 2) T 4"},   {57, "19 G 3"},
    {58, "2 G 29[7d G 4 / 7d G 2 / 7d]"}, {60, "4 T (5 G 3)"},   {62, "31 T 2"},
    {63, "(3 T 3) G 7"},   {64, "(4 T 2) T (4 T 2)"},
};

// Factor trees of the double-precision composite kernels (powers of two
// have programs of their own).
const std::map<int, std::string> kDoubleTrees = {
    {6, "2 G 3"},          {9, "3 T 3"},          {10, "5w G 2"},
    {12, "3 G 4"},         {14, "2 G 7"},         {15, "5 G 3"},
    {18, "(3 T 3) G 2"},   {20, "5 G 4"},         {21, "7 G 3"},
    {22, "11 G 2"},        {24, "8 G 3"},         {25, "5 T 5"},
    {26, "13 G 2"},        {27, "3 T (3 T 3)"},   {28, "4 G 7"},
    {30, "(2 G 5) G 3"},   {33, "11 G 3"},        {34, "2 G 17"},
    {35, "5w G 7v"},        {36, "4 G (3 T 3)"},   {38, "2 G 19"},
    {39, "13 G 3"},        {40, "8 G 5"},         {42, "(2 G 7) G 3"},
    {44, "4 G 11"},        {45, "5 G (3 T 3)"},   {46, "23 G 2"},
    {48, "16 G 3"},        {49, "7 T 7"},         {50, "(5w T 5v) G 2"},
    {51, "17 G 3"},        {52, "13 G 4"},        {54, "2 G (3 T (3 T 3))"},
    {55, "11 G 5"},        {56, "7 G 8"},         {57, "19 G 3"},
    {58, "29 G 2"},        {60, "(3 G 5v) G 4"},   {62, "31 G 2"},
    {63, "7 G (3 T 3)"},
};

bool is_prime(int n) {
    if (n < 2) return false;
    for (int d = 2; d * d <= n; ++d)
        if (n % d == 0) return false;
    return true;
}

// Single-precision lengths computed in scalar code; 3 and 5 widen products.
void build_scalar(tqfgen::Kernel& k, int dir) {
    const bool widen = k.length == 3 || k.length == 5;
    tqfgen::SplitAlg a(k.g, Ty::F32, widen);
    std::vector<tqfgen::Cx> x;
    for (int n = 0; n < k.length; ++n)
        x.push_back({k.g.load_scalar(Ty::F32, 2 * n), k.g.load_scalar(Ty::F32, 2 * n + 1)});
    int offset = 0;  // interleaved: re0, im0, re1, ...
    for (const tqfgen::Cx& v : block(a, std::to_string(k.length), x, dir)) {
        k.store(offset++, v.re);
        k.store(offset++, v.im);
    }
}

void build_pair(tqfgen::Kernel& k, int dir) {
    tqfgen::PairAlg a(k.g);
    std::vector<Handle> x;
    for (int n = 0; n < k.length; ++n) x.push_back(k.g.load_pair(n));
    if (k.length <= 5) {
        k.pair_out = block(a, std::to_string(k.length), x, dir);
        return;
    }
    if ((k.length & (k.length - 1)) == 0) {
        k.pair_out = pair_pow2(a, x, dir);
        return;
    }
    auto t = kDoubleTrees.find(k.length);
    if (t == kDoubleTrees.end()) throw std::runtime_error("no tree for length " + std::to_string(k.length));
    a.flip_join_into_leaf = true;
    k.pair_out = eval_tree(a, *parse_tree(t->second), x, dir);
}

}  // namespace

const std::map<int, std::string>& single_trees() { return kSingleTrees; }
const std::map<int, std::string>& double_trees() { return kDoubleTrees; }

void build_complex_kernel(tqfgen::Kernel& k, const std::string& family, const std::string& precision,
                          int length) {
    // The inverse family is the forward description with the roots conjugated.
    if (family != "cfwd" && family != "cinv") throw std::runtime_error("unknown complex family " + family);
    const bool forward = family == "cfwd";
    k.divides_by = forward ? tqfgen::Kernel::DividesBy::FwdFlag : tqfgen::Kernel::DividesBy::InvFlag;
    const int dir = forward ? -1 : +1;
    k.family = family;
    k.precision = precision;
    k.length = length;
    k.name = std::string(forward ? "tqfgDFTFwd" : "tqfgDFTInv") + "_CToC_" + std::to_string(length) + "_" + precision;
    if (precision != "32fc" && precision != "64fc") throw std::runtime_error("unknown precision " + precision);
    k.double_data = precision == "64fc";
    if (length >= 7 && is_prime(length)) {
        build_prime_kernel(k, dir);
    } else if (precision == "32fc" && length <= 5) {
        k.form = Form::Scalar;
        build_scalar(k, dir);
    } else if (precision == "32fc") {
        k.form = Form::Planar;
        auto t = kSingleTrees.find(length);
        if (t == kSingleTrees.end()) throw std::runtime_error("no tree for length " + std::to_string(length));
        build_planar(k, t->second, dir);
    } else {
        k.form = Form::Pair;
        build_pair(k, dir);
    }
    k.settle_outputs();
}

namespace {

// The two complex families of the generator's command line.
const tqfgen::RegisterFamily kForward("cfwd", [](tqfgen::Kernel& k, const std::string& precision, int length) {
    build_complex_kernel(k, "cfwd", precision, length);
});
const tqfgen::RegisterFamily kInverse("cinv", [](tqfgen::Kernel& k, const std::string& precision, int length) {
    build_complex_kernel(k, "cinv", precision, length);
});

}  // namespace

}  // namespace tqfcdft
