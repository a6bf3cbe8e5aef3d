#include "prime_blocks.h"

#include <stdexcept>

#include "compose.h"
#include "real_lane.h"

namespace tqfcdft {

namespace {

void check(int p) {
    if (p != 7 && p != 11 && p != 13 && p != 17 && p != 19 && p != 23 && p != 29 && p != 31 && p != 37 &&
        p != 41 && p != 43 && p != 47 && p != 53 && p != 59 && p != 61)
        throw std::runtime_error("no prime block " + std::to_string(p));
}

}  // namespace

// Planar float lanes: the real program runs on the register of real parts
// and on the register of imaginary parts, several blocks side by side.
std::vector<tqfgen::Cx> prime_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir) {
    check(p);
    LaneAlg la(a.graph(), a.data_type());
    return real_lane_block(la, p, x, dir);
}

// Two-lane double: one run of the real program covers both components.
std::vector<tqfgen::Handle> prime_block(tqfgen::PairAlg& a, int p, const std::vector<tqfgen::Handle>& x, int dir) {
    check(p);
    LaneAlg la(a.graph(), tqfgen::Ty::V2D);
    return cross_pairs(a, prime_halves(la, p, x), p, dir);
}

std::vector<tqfgen::Cx> prime_block(LaneAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir) {
    check(p);
    return real_lane_block(a, p, x, dir);
}

std::vector<tqfgen::Handle> five_by_seven_mixed(tqfgen::PairAlg& a, const std::vector<tqfgen::Handle>& x, int dir) {
    using tqfgen::Handle;
    constexpr int A = 5, B = 7, N = 35;
    std::vector<std::vector<Handle>> Y(B);
    for (int b = 0; b < B; ++b) {
        std::vector<Handle> in;
        for (int i = 0; i < A; ++i) in.push_back(x[gt_input(i, b, A, B)]);
        Y[b] = dft5w(a, in, dir);
    }
    LaneAlg la(a.graph(), tqfgen::Ty::V2D);
    std::vector<Handle> X(N);
    for (int k1 = 0; k1 < A; ++k1) {
        std::vector<Handle> in;
        for (int b = 0; b < B; ++b) in.push_back(Y[b][k1]);
        const std::vector<Handle> Z =
            k1 == 0 ? cross_pairs(a, rader_halves(la, B, in, *real_lane_chain(B)), B, dir) : prime_block(a, B, in, dir);
        for (int k2 = 0; k2 < B; ++k2) X[gt_output(k1, k2, A, B)] = Z[k2];
    }
    return X;
}

}  // namespace tqfcdft
