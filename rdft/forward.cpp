#include "forward.h"

#include <stdexcept>

#include "rader_real.h"
#include "real_dft.h"
#include "real_lane.h"
#include "tree.h"

namespace tqfrdft {

using tqfgen::Cx;
using tqfgen::Handle;

namespace {

// Composite lengths. Powers of two and prime powers are Cooley-Tukey (T)
// with twiddles, the sub-transforms of n/4 (or of the prime) acting first;
// coprime factors are Good-Thomas (G) in the order of action given.
// A G node may state its index map (cdft/real_dft.h): <rur> Ruritanian,
// <res> and <neg> the residue maps, <res2> a residue read at stride 2, and
// ",lower" to form the lower column of each conjugate pair. The values do
// not depend on it, only which imaginary parts are held negated and stored
// as 0.0 - t. At 36, 42, 45, 56, 60 and 62 the family's rule holds another
// number of them negated than these kernels are counted with
// (tests/rdft/expected_counts_forward.csv); the stated map holds that
// number. No rule by factor value or by position in the tree that we tried
// gives all six and keeps the other lengths; at 45 every map reading its
// blocks at stride 1 or -1 holds an even number negated, whatever columns
// it forms, hence the stride 2.
// 26, 39 and 58 name the real family's own form of their 13- and 29-point
// blocks (kRaderForms: the sine by halves), which holds them one level deeper
// than the complex family's block, as these kernels are counted.
// Their 13-point blocks order the elements by the powers of 7 = 1/2 (mod 13),
// as 19 does by 1/2 (mod 19), which picks the imaginary parts held negated:
// 26: 7, read Ruritanian with the lower columns formed (root 2 and the rule: 8);
// 39: 11, with the family's own map (root 2: 10).
// 38 and 57 name the form of their 19-point block: the complex family's
// with its sine formed negated (the root does not matter there), so that
// 12 and 16 imaginary parts are held negated; 57 reads it Ruritanian.
const std::map<int, std::string> kTrees = {
    {2, "2"}, {4, "4"}, {6, "3 G 2"}, {8, "2 T 4"}, {9, "3 T 3"}, {10, "5d G 2"}, {12, "4 G 3"},
    {14, "2 G 7d"}, {15, "3 G 5d"}, {16, "4 T 4"}, {18, "2 G (3 T 3)"}, {20, "5d G 4"}, {21, "7d G 3"},
    {22, "2 G 11d"}, {24, "3 G (2 T 4)"}, {25, "5d T 5d"},
    {26, "13[g7: 3 G 4 / 3 G 2 / 3 T 2] G<rur,lower> 2"}, {27, "(3 T 3) T 3"}, {28, "4 G 7d"},
    {30, "(5d G 3) G 2"}, {32, "(2 T 4) T 4"}, {33, "11d G 3"}, {34, "2 G 17"}, {35, "7d G 5d"},
    {36, "(3 T 3) G<rur> 4"}, {38, "19[(3 T 3) G 2 / 3 T 3 / -3 T 3] G 2"},
    {39, "13[g7: 3 G 4 / 3 G 2 / 3 T 2] G 3"}, {40, "(2 T 4) G 5d"}, {42, "(7d G<neg> 3) G<rur,lower> 2"},
    {44, "11d G 4"}, {45, "5d G<res2,lower> (3 T 3)"}, {46, "2 G 23"}, {48, "(4 T 4) G 3"}, {49, "7d T 7d"},
    {50, "(5d T 5d) G 2"}, {51, "17 G 3"}, {52, "13 G 4"}, {54, "2 G ((3 T 3) T 3)"}, {55, "11d G 5d"},
    {56, "7d G<neg,lower> (2 T 4)"}, {57, "19[(3 T 3) G 2 / 3 T 3 / -3 T 3] G<rur> 3"},
    {58, "2 G 29[7d G 4 / 7d G 2 / 7d T 2]"}, {60, "(3 G<res> 5d) G<rur> 4"}, {62, "31 G<res> 2"},
    {63, "7d G (3 T 3)"}, {64, "(4 T 4) T 4"},
};

// Rader lengths: the inner transform of p - 1 (factors in order of action),
// and the cosine and sine ways back (cdft/rader_real.h).
// Where m = (p-1)/2 is twice an odd h (13, 29, 61), the cosine returns
// through h G 2 and the sine by halves, "h T 2" (cdft/rader_real.h), with
// twiddles of order 2m: the same additions and products as the CRT sine with
// a cosine of h T 2 (the complex family's blocks), but the sine outputs end
// as late as such a cosine's, which is the depth these kernels are counted
// with (29: 306 additions, 210 products, depth 19).
// 59 reads its inner transform's 29-point blocks by the residue map: bin k1
// of a block is then the inner's harmonic 2 k1 (mod 29), and the even bin
// 2j, harmonic j of the cosine way back (the odd bins alike), comes from a
// block's bin j. The nested 29's latest outputs then feed the ways back's
// longest paths, 39 levels, as the kernels are counted; the Ruritanian map
// pairs bins j and 2j, whose positions among the powers of the root differ
// in parity (2 is no square mod 29), and the program is two levels shorter.
// The additions and products are the same.
// 41 returns its sine by halves, the half of the even outputs by halves
// again (twiddles of order 20, then 5-point blocks) and that of the odd
// outputs, turned by the twiddles of order 40, by the CRT form of length
// 10: two rotations more than both halves in the CRT form and as deep
// (444 additions, 242 products, depth 21, as the kernels are counted; both
// halves by halves again are two levels deeper). The root 35 holds nine
// imaginary parts negated (the smallest, 6, holds seven).
// 13 reads its inner 3 G 4 by the negated residue map (the real families'
// own for an odd first factor) and orders its elements by the powers of
// 11 = 1/6 (mod 13): the graph then holds two imaginary parts negated,
// Im X[2] and X[4], as the kernel is counted, where the Ruritanian map holds
// four with the roots 2 and 6 and three, one level shallower, with 7 and 11
// (the values do not change). 26, 39 and 53 name their own 13-point forms
// and 52 runs the complex family's block: they keep theirs.
// 61 forms its odd branch's rotation by 150 degrees from its real part
// ("tan:", cdft/rader_real.h): the 15-point's 3-point stage takes that bin
// (harmonic 5) as its conjugate harmonic, and its sine product becomes the
// half product of the real part it already forms, minus Im Y: 415 products,
// the additions and depth unchanged, as the kernels are counted. 13, whose
// 3-point stage takes the same rotation as its harmonic 1, is counted
// without it (41 products; with it, 39). 61's inner starts with the
// composite 3 G 5d: in single precision its 4-point stage forms the bins
// that add sums of the 15-point blocks' rows in double back to those rows
// (bin_in_double, two steps deep), 265 double additions as counted, where
// the inners starting with one block (13's 3 G 4, 29's 7d G 4) go one step.
// 37's cosine way back 2 G (3 T 3) keeps the product of each 9-point
// block's 3-point sine ahead of its twiddle by 80 degrees, folding the one
// ahead of 40 degrees ("sine-kept-at-80:", cdft/rader_real.h): 228
// products, as the kernels are counted (folding both gives 226). The
// inverse 37 keeps the same sines, and that of its inner's twiddle by 80
// degrees (rdft/inverse.cpp).
// 47's sine way back sums shallowest first ("shallow-sine:"): the rows of
// its 11-point blocks then add their shallow terms before the deep products,
// and the imaginary parts, nine of them held negated, end a level earlier:
// depth 42, as the kernels are counted, where the order of the transpose
// gives 43 (the real parts, and so Hartley's 43, keep theirs).
// 19 orders its elements by the powers of 10 = 1/2 (mod 19) rather than of
// the smallest root 2: the graph then holds four imaginary parts negated,
// as the kernel is counted, where 2 holds two (the values do not change).
// 53's inner transform is (2 T 2) G 13: on its real columns the family's
// 13, on its complex one the 13 with its cosine as 2 G 3, whose bins'
// single products the two lanes fold (as the inverse 39 and 52 fold theirs;
// four products fewer). The cosine way back is 13 T 2 (twiddles of order
// 26), its 13-point blocks returning their own cosine through 3 T 2 as the
// complex family's 13 does, the sine the CRT form (844 additions, 456
// products, depth 33, as the kernels are counted; the sine by halves, the
// inner (2 G 13) T 2 and the other nested forms we tried move the additions
// and products in steps that do not meet that pair). Its elements follow the
// powers of 27 = 1/2 (mod 53), as 19 does, and its sine is formed negated,
// as 38's and 57's 19-point blocks are: 14 imaginary parts held negated
// (the root 2 holds 15, or 12 with the sine negated).
const std::map<int, std::string> kRaderForms = {
    {11, "5d G 2 / 5d / 5d"},
    {13, "g11: 3 G<neg> 4 / 3 G 2 / 3 T 2"},
    {17, "(2 T 2) T 4 / 4 T 2 / -4"},
    {19, "g10: (3 T 3) G 2 / 3 T 3 / 3 T 3"},
    {23, "2 G 11d / 11r / 11r"},
    {29, "7d G 4 / 7d G 2 / 7d T 2"},
    {31, "(3 G 5d) G 2 / 5d G 3 / 5d G 3"},
    {37, "sine-kept-at-80: (2 T 2) G (3 T 3) / 2 G (3 T 3) / 3 T 3"},
    {41, "g35: 5d G (2 T 4) / 5d G 4 / {5d T 2 | 5d} T 2"},
    {43, "(3 G 7d) G 2 / 7d G 3 / 7d G 3"},
    {47, "shallow-sine: 23[2 G 11d / 11d / 11d] G 2 / 23[2 G 11d / 11r / 11r] / 23[2 G 11d / 11r / 11r]"},
    {53, "g27: (2 T 2) G 13[3 G 4 / 3 G 2 / 3 T 2 | 3 G 4 / 2 G 3 / 3 T 2] / 13[3 G 4 / 3 T 2 / 3 T 2] T 2 / -13"},
    {59, "29 G<res> 2 / 29 / 29"},
    {61, "tan: (3 G 5d) G 4 / (5d G 3) G 2 / (5d G 3) T 2"},
};

tqfcdft::RaderForm rader_form(int p) {
    const auto it = kRaderForms.find(p);
    if (it == kRaderForms.end()) throw std::runtime_error("no Rader form for " + std::to_string(p));
    return tqfcdft::parse_rader_form(it->second);
}

bool is_odd_prime(int n) {
    if (n < 3 || n % 2 == 0) return false;
    for (int d = 3; d * d <= n; d += 2)
        if (n % d == 0) return false;
    return true;
}

// A prime's program from its halves: X[k] = A[k] - i B[k].
std::vector<Cx> from_halves(const tqfcdft::Halves& h, int p) {
    std::vector<Cx> X(p / 2 + 1);
    X[0] = Cx{h.x0, Handle{}};
    for (int k = 1; k <= p / 2; ++k) X[k] = Cx{h.A[k], -h.B[k]};
    return X;
}

}  // namespace

const std::map<int, std::string>& forward_real_trees() { return kTrees; }

bool is_rader_form(const std::string& shape) {
    int open = 0;  // inside a nested block's own form
    for (const char c : shape) {
        open += c == '[' ? 1 : c == ']' ? -1 : 0;
        if (c == '/' && open == 0) return true;
    }
    return false;
}

const std::map<int, std::string>& forward_rader_forms() { return kRaderForms; }

std::vector<Cx> forward_real_shape(tqfgen::SplitAlg& a, const std::string& shape, const std::vector<Handle>& x) {
    const int n = static_cast<int>(x.size());
    if (shape == "direct") return from_halves(tqfcdft::direct_rows(a, n, x), n);
    if (shape == "rader") return from_halves(tqfcdft::rader_halves(a, n, x, rader_form(n)), n);
    if (is_rader_form(shape))
        return from_halves(tqfcdft::rader_halves(a, n, x, tqfcdft::parse_rader_form(shape)), n);
    const auto t = tqfcdft::parse_tree(shape);
    if (t->size != n) throw std::logic_error("forward real program: tree " + shape + " for length " + std::to_string(n));
    std::vector<Cx> in;
    for (const Handle& v : x) in.push_back(Cx{v, Handle{}});
    std::vector<Cx> X = tqfcdft::real_input_dft(a, *t, in, -1, tqfcdft::Mirrors::RealFamilies);
    X.resize(n / 2 + 1);
    return X;
}

std::vector<Cx> forward_real(tqfgen::SplitAlg& a, int n, const std::vector<Handle>& x) {
    if (is_odd_prime(n)) return forward_real_shape(a, n <= 11 ? "direct" : "rader", x);
    const auto t = kTrees.find(n);
    if (t == kTrees.end()) throw std::runtime_error("no forward real program of length " + std::to_string(n));
    return forward_real_shape(a, t->second, x);
}

}  // namespace tqfrdft
