#include "prime_blocks.h"

#include <stdexcept>

#include "compose.h"
#include "rader_real.h"
#include "real_lane.h"

namespace tqfcdft {

namespace {

void check(int p) {
    if (p != 7 && p != 11 && p != 13 && p != 17 && p != 19 && p != 23 && p != 29 && p != 31 && p != 37 &&
        p != 41 && p != 43 && p != 47 && p != 53 && p != 59 && p != 61)
        throw std::runtime_error("no prime block " + std::to_string(p));
}

}  // namespace

// Two-lane double: one run of the real program covers both components.
std::vector<tqfgen::Handle> prime_block(tqfgen::PairAlg& a, int p, const std::vector<tqfgen::Handle>& x, int dir) {
    check(p);
    tqfgen::SplitAlg la(a.graph(), tqfgen::Ty::V2D);
    return cross_pairs(a, prime_halves(la, p, x), p, dir);
}

// Split registers (planar float lanes, or scalars): the real program runs on
// the real parts and on the imaginary parts, several blocks side by side.
std::vector<tqfgen::Cx> prime_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir) {
    check(p);
    return real_lane_block(a, p, x, dir);
}

std::vector<tqfgen::Cx> direct_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir) {
    return real_lane_block(a, p, x, dir, direct_rows);
}

std::vector<tqfgen::Cx> rader_lane_block(tqfgen::SplitAlg& a, int p, const std::vector<tqfgen::Cx>& x, int dir) {
    const auto rader = [](tqfgen::SplitAlg& s, int q, const std::vector<tqfgen::Handle>& v) {
        return rader_halves(s, q, v, real_lane_form(q));
    };
    return real_lane_block(a, p, x, dir, rader);
}

std::vector<tqfgen::Cx> rader_form_block(tqfgen::SplitAlg& a, int p, const std::string& form,
                                         const std::vector<tqfgen::Cx>& x, int dir) {
    const std::string text = form.substr(1, form.size() - 2);
    const size_t bar = text.find('|');
    bool re = false, im = false;
    for (const tqfgen::Cx& v : x) {
        re |= v.re.valid();
        im |= v.im.valid();
    }
    // "[a | b]": a on real data, b (its bins' single products folded at
    // every m) on complex data, whose two lanes run it each.
    const bool second = bar != std::string::npos && re && im;
    RaderForm f = parse_rader_form(bar == std::string::npos ? text : second ? text.substr(bar + 1) : text.substr(0, bar));
    f.fold_bins = second;
    return real_lane_block(a, p, x, dir,
                           [&f](tqfgen::SplitAlg& s, int q, const std::vector<tqfgen::Handle>& v) { return rader_halves(s, q, v, f); });
}

std::vector<tqfgen::Handle> rader_block(tqfgen::PairAlg& a, int p, const std::vector<tqfgen::Handle>& x, int dir) {
    check(p);
    tqfgen::SplitAlg la(a.graph(), tqfgen::Ty::V2D);
    return cross_pairs(a, rader_halves(la, p, x, real_lane_form(p)), p, dir);
}

}  // namespace tqfcdft
