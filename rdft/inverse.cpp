#include "inverse.h"

#include <cctype>
#include <stdexcept>

#include "forward.h"
#include "transpose.h"

namespace tqfrdft {

using tqfgen::Cx;
using tqfgen::Handle;

namespace {

// The forward program whose transpose each inverse length is: its stages
// act in the opposite order (the inverse's first stage works on the
// spectrum). Powers of two and prime powers keep the forward tree: its last
// stage, the 4-point (or prime) one, is the one on the spectrum side.
// Rader lengths take the forward form ("rader") or one of their own, whose
// cosine and sine transforms are the inverse's first stage. A Rader block
// of a factor tree is the inverse's own program of that prime (see
// own_rader_blocks) unless the tree names its form. 39 and 52, whose first
// stage has a complex column of 13 points, run 13 with an inner 4 G 3 on
// every column: on the real ones with the cosine 2 T 3 and the sine by
// halves 3 T 2, on the complex one with the cosine 2 G 3, the sine 3 and
// its bins' single products folded. The inner's 3-point stage then comes
// last in the forward, its rows feeding the kernel's products, whose
// adjoints sum in double (gen/transpose_rounding.cpp): 81 and 92 double
// additions in single precision, as the two lengths are counted, at the
// same additions, products and depth as the inverse's own 13 (3 T 4) on
// the real columns and 3 G 4 on the complex one (76 and 86).
// 53's inner transform does the same with the family's 13 (its cosine as
// 2 G 3 on the complex column, folded), then the cosine 13 T 2 and the
// CRT sine: 840 additions, 450 products besides the 52 doublings,
// depth 33, as the inverse 53 is counted (the family's 13 on every column:
// 454 products).
// 48's 16-point stage on the spectrum is 2 T (2 T 4), its 8-point stage
// first: the stage order we keep for 48 (270 additions, 72 products, depth
// 13); 4 T 4 would save 4 of each on the stage's complex column. On a real
// column, as at 16 alone, the two forms cost the same.
// 61 returns its sine by halves (cdft/rader_real.h) as (3 G 5d) T 2, the
// 15-point stage whose transpose holds one product more than the forward
// form's 5d G 3, as the inverse 61 is counted; the transpose sums the
// adjoints of its inner's steps in double where the forward forms them so
// (Graph::steps_in_double): 269 double additions in single precision. 41
// takes the forward form, whose sine by halves transposes to the 40
// doublings it is counted with.
// 47's first stage, on the spectrum, is the cosine and sine 23-point
// programs side by side, each with its 11-point blocks in the Rader form in
// its inner transform (2 G 11r), direct on its ways back: the program we keep
// for 47 (1260 additions, 1058 products, depth 42). The forward form, whose
// 23-point ways back hold the Rader 11s on their own ways back, transposes
// to the same counts at depth 43; the order of the 2 and 11 factors and of
// the inner 23 G 2 does not change them.
// 58 runs its two 29-point blocks with the cosine way back 2 G 7d, the
// 7-point blocks on the kernel's bins and the 2-point steps on the
// spectrum, where 29 alone keeps 7d G 2: same additions, products and
// depth; on the odd harmonics the block of bin 0 then sums its doubled
// real parts in double, as the other blocks of that Rader block do
// (gen/transpose_rounding.cpp): 315 double additions in single precision,
// as the inverse 58 is counted (7d G 2: 312).
// 37 keeps the product of a 3-point sine ahead of a twiddle by 80 degrees
// ("sine-kept-at-80:", cdft/rader_real.h), as its forward form does, where
// its transposes fold the others: three of the eight folds (one in each
// 9-point block of the cosine, on the spectrum, and one in the inner's
// second twiddled 12-point block), 236 products besides the 36 doublings,
// at 402 additions and depth 25, as the inverse 37 is counted. Picked to
// fit: the trees fold two to a block (233, 235 or 237); the one rule that
// also gives the forward its two products more is this one.
// 64 names its first stage block by block: block 2 (the inputs 4m + 2,
// twiddles of order 32) runs (2 T 4) T 2, its 2-point stage last, the other
// three 4 T 4: the program we keep for 64 (400 additions, 134 products,
// depth 13; all four in 4 T 4 give 398, 132 and 11). Block 0, without
// twiddles, would cost the same but not lengthen the program; blocks 1 and
// 3 cost the same as 2, but raised the largest error we measured a little
// where 2 kept that of four 4 T 4 blocks.
const std::map<int, std::string> kDuals = {
    {2, "2"}, {3, "direct"}, {4, "4"}, {5, "direct"}, {6, "3 G 2"}, {7, "direct"}, {8, "2 T 4"}, {9, "3 T 3"},
    {10, "5d G 2"}, {11, "rader"}, {12, "4 G 3"}, {13, "3 T 4 / 2 G 3 / 3"}, {14, "7d G 2"}, {15, "5d G 3"},
    {16, "4 T 4"}, {17, "rader"}, {18, "(3 T 3) G 2"}, {19, "rader"}, {20, "4 G 5d"}, {21, "7d G 3"},
    {22, "2 G 11r"}, {23, "2 G 11d / 11d / 11d"}, {24, "3 G (2 T 4)"}, {25, "5d T 5d"}, {26, "13 G 2"},
    {27, "3 T (3 T 3)"}, {28, "7d G 4"}, {29, "rader"}, {30, "(2 G 5d) G 3"},
    {31, "3 G (2 G 5d) / 3 G 5d / 3 G 5d"}, {32, "4 T (2 T 4)"}, {33, "11r G 3"}, {34, "2 G 17"},
    {35, "7d G 5d"}, {36, "(3 T 3) G 4"}, {37, "sine-kept-at-80: ((2 T 2) G 3) T 3 / 2 G (3 T 3) / 3 T 3"}, {38, "19 G 2"},
    {39, "3 G 13[4 G 3 / 2 T 3 / 3 T 2 | 4 G 3 / 2 G 3 / 3]"}, {40, "(2 T 4) G 5d"},
    {41, "rader"}, {42, "(7d G 3) G 2"}, {43, "rader"}, {44, "11r G 4"},
    {45, "(3 T 3) G 5d"}, {46, "2 G 23"},
    {47, "23[2 G 11d / 11d / 11d] G 2 / 23[2 G 11r / 11d / 11d] / 23[2 G 11r / 11d / 11d]"},
    {48, "3 G (2 T (2 T 4))"}, {49, "7d T 7d"}, {50, "2 G (5d T 5d)"}, {51, "17 G 3"},
    {52, "4 G 13[4 G 3 / 2 T 3 / 3 T 2 | 4 G 3 / 2 G 3 / 3]"},
    {53, "(2 T 2) G 13[3 G 4 / 3 G 2 / 3 T 2 | 3 G 4 / 2 G 3 / 3 T 2] / 13 T 2 / 13"},
    {54, "2 G (3 T (3 T 3))"}, {55, "11r G 5d"}, {56, "7d G (2 T 4)"}, {57, "19 G 3"}, {58, "2 G 29[7d G 4 / 2 G 7d / 7d T 2]"},
    {59, "rader"}, {60, "(5d G 3) G 4"}, {61, "(3 G 5d) G 4 / (5d G 3) G 2 / (3 G 5d) T 2"}, {62, "2 G 31"},
    {63, "7d G (3 T 3)"}, {64, "{4 T 4 | 4 T 4 | (2 T 4) T 2 | 4 T 4} T 4"},
};

// A leaf that the family runs by Rader's algorithm, the primes from 13 (the
// 11-point block names its form, 11d or 11r).
bool is_rader_leaf(int p) { return p >= 13 && forward_rader_forms().count(p) != 0; }

// The inverse's own Rader form of prime p, "inner / cosine / sine".
std::string own_rader_form(int p) {
    const std::string& dual = kDuals.at(p);
    return dual == "rader" ? forward_rader_forms().at(p) : dual;
}

// A factor tree with each bare Rader leaf ("23") given the inverse's own
// form of that prime ("23[2 G 11d / 11d / 11d]"): the inverse of length 46
// runs two inverse programs of 23 and a 2-point stage, as 22, 33, 44 and 55
// run the inverse's own 11 ("11r"). Leaves with a suffix or a form of their
// own, and Rader forms, are left as they are.
std::string own_rader_blocks(const std::string& shape) {
    if (shape == "direct" || shape == "rader" || is_rader_form(shape)) return shape;
    std::string out;
    int open = 0;  // inside a leaf's own form
    for (size_t i = 0; i < shape.size();) {
        const char c = shape[i];
        if (open > 0 || !std::isdigit(static_cast<unsigned char>(c))) {
            open += c == '[' ? 1 : c == ']' ? -1 : 0;
            out += shape[i++];
            continue;
        }
        size_t j = i;
        while (j < shape.size() && std::isdigit(static_cast<unsigned char>(shape[j]))) ++j;
        const std::string leaf = shape.substr(i, j - i);
        out += leaf;
        const bool bare = j == shape.size() || shape[j] == ' ' || shape[j] == ')';
        if (bare && is_rader_leaf(std::stoi(leaf))) {
            out += '[';
            out += own_rader_form(std::stoi(leaf));
            out += ']';
        }
        i = j;
    }
    return out;
}

}  // namespace

const std::map<int, std::string>& inverse_real_duals() { return kDuals; }

std::vector<Handle> inverse_real(tqfgen::SplitAlg& a, int n, const std::vector<Cx>& F, const RowOrders& rows) {
    return inverse_real_weighted(a, n, F, true, rows);
}

std::vector<Handle> inverse_real_weighted(tqfgen::SplitAlg& a, int n, const std::vector<Cx>& F, bool doubled,
                                          const RowOrders& rows) {
    const auto d = kDuals.find(n);
    if (d == kDuals.end()) throw std::runtime_error("no inverse real program of length " + std::to_string(n));
    // The forward program, as a plain linear graph in double. The transpose
    // sums the contributions to a value latest-formed user first, so a row
    // of the inverse sums in the reverse of the order in which the forward
    // direct form forms its rows.
    tqfgen::Graph g;
    // As in the forward kernel, a difference b - a whose mirror a - b exists
    // is that node negated: two users of one node cost the transpose one
    // addition, two mirrored nodes two (17, and the 17-point block of 34 and
    // 51, would keep one addition and one level more).
    g.merge_mirrored_differences = true;
    tqfgen::SplitAlg f(g, tqfgen::Ty::F64);
    f.transposed_later = true;
    for (const auto& [p, order] : rows) f.direct_row_order[p].assign(order.rbegin(), order.rend());
    std::vector<Handle> x;
    for (int i = 0; i < n; ++i) x.push_back(g.load_scalar(tqfgen::Ty::F64, i));
    const std::vector<Cx> X = forward_real_shape(f, own_rader_blocks(d->second), x);
    // Its outputs weighted by the harmonics, the interior ones doubled first.
    return tqfgen::transpose_half_spectrum(g, X, a, F, n, doubled);
}

}  // namespace tqfrdft
