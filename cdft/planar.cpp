#include "planar.h"

#include <stdexcept>

#include "compose.h"

namespace tqfcdft {

using tqfgen::Cx;
using tqfgen::Graph;
using tqfgen::Handle;
using tqfgen::Root;
using tqfgen::Ty;

namespace {

// One complex value per lane slot of a four-lane pair of registers.
struct LaneSlot {
    Cx v;
    int lane;
};

Cx gather(Graph& g, const std::vector<LaneSlot>& slots) {
    std::vector<std::pair<Handle, int>> re, im;
    for (int l = 0; l < 4; ++l) {
        if (l < static_cast<int>(slots.size())) {
            re.push_back({slots[l].v.re, slots[l].lane});
            im.push_back({slots[l].v.im, slots[l].lane});
        } else {
            re.push_back({Handle{}, 0});
            im.push_back({Handle{}, 0});
        }
    }
    return {g.shuffle(Ty::V4F, re), g.shuffle(Ty::V4F, im)};
}

// Full complex multiplication on all lanes, trivial lanes included; lanes
// beyond the last block are multiplied by zero, which clears them.
Cx lane_twiddle(Graph& g, Cx x, const std::vector<Root>& w) {
    std::vector<double> wr(4, 0.0), wi(4, 0.0);
    for (size_t l = 0; l < w.size(); ++l) {
        wr[l] = static_cast<double>(w[l].real());
        wi[l] = static_cast<double>(w[l].imag());
    }
    const Handle cr = g.constant(Ty::V4F, wr), ci = g.constant(Ty::V4F, wi);
    const Handle im_ci = g.mul(x.im, ci);
    const Handle re_cr = g.mul(x.re, cr);
    const Handle re = g.sub(re_cr, im_ci);
    const Handle im_cr = g.mul(x.im, cr);
    const Handle re_ci = g.mul(x.re, ci);
    return {re, g.add(re_ci, im_cr)};
}

}  // namespace

void build_planar(tqfgen::Kernel& k, const std::string& tree_text, int dir) {
    const auto tree = parse_tree(tree_text);
    if (tree->leaf()) throw std::runtime_error("planar kernels need a composite tree");
    if (!tree->blocks.empty()) throw std::runtime_error("planar kernels run one tree per stage");
    if (tree->size != k.length) throw std::runtime_error("tree size differs from length");
    Graph& g = k.g;
    tqfgen::SplitAlg alg(g, Ty::V4F, false);
    const NodeWalk wk(*tree);
    const int NA = wk.A, NB = wk.B;

    // Stage 1: the B instances of the left transform, four to a register.
    std::vector<std::vector<Cx>> Y;  // per group of four instances, NA outputs
    for (int b0 = 0; b0 < NB; b0 += 4) {
        std::vector<Cx> in;
        for (int a = 0; a < NA; ++a) {
            int idx[4];
            for (int l = 0; l < 4; ++l) {
                const int b = b0 + l;
                idx[l] = b < NB ? wk.input(b, a) : -1;
            }
            in.push_back({g.load_planar(idx, 0), g.load_planar(idx, 1)});
        }
        Y.push_back(eval_tree(alg, *tree->left, in, dir));
    }

    // Stage 2: the A instances of the right transform, four to a register.
    for (int h0 = 0; h0 < NA; h0 += 4) {
        const int lanes = std::min(4, NA - h0);
        std::vector<Cx> in;
        for (int b = 0; b < NB; ++b) {
            std::vector<LaneSlot> slots;
            std::vector<Root> w;
            bool all_one = true;
            for (int l = 0; l < lanes; ++l) {
                slots.push_back({Y[b / 4][h0 + l], b % 4});
                w.push_back(wk.twiddle(b, h0 + l, dir));
                all_one &= w.back() == Root(1, 0);
            }
            Cx v = gather(g, slots);
            if (wk.twiddled && !all_one) {
                v = lane_twiddle(g, v, w);
            } else if (wk.twiddled && lanes < 4) {
                // The untwiddled row of a partial register is cleared beyond
                // its last block by a multiplication with 1.0 and 0.0.
                std::vector<double> mask(4, 0.0);
                for (int l = 0; l < lanes; ++l) mask[l] = 1.0;
                const Handle m = g.constant(Ty::V4F, mask);
                v = {g.mul(v.re, m), g.mul(v.im, m)};
            }
            in.push_back(v);
        }
        const std::vector<Cx> Z = eval_tree(alg, *tree->right, in, dir);
        for (int k2 = 0; k2 < NB; ++k2) {
            tqfgen::PlanarStore st;
            st.re = Z[k2].re;
            st.im = Z[k2].im;
            for (int l = 0; l < lanes; ++l)
                st.index[l] = wk.output(h0 + l, k2);
            k.planar_out.push_back(st);
        }
    }
}

}  // namespace tqfcdft
