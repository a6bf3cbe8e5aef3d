#include "lane_stages.h"

#include <map>
#include <stdexcept>
#include <tuple>

#include "compose.h"

namespace tqfcdft {

using tqfgen::Cx;
using tqfgen::Handle;
using tqfgen::Root;
using tqfgen::Ty;

Cx lane_cmul(tqfgen::SplitAlg& a, Cx x, const std::vector<Root>& w) {
    std::vector<double> wr(4, 1.0), wi(4, 0.0);
    for (size_t l = 0; l < w.size() && l < 4; ++l) {
        wr[l] = static_cast<double>(w[l].real());
        wi[l] = static_cast<double>(w[l].imag());
    }
    const Handle im_wi = a.mul_lanes(x.im, wi);
    const Handle re_wr = a.mul_lanes(x.re, wr);
    const Handle re = a.sub_r(re_wr, im_wi);
    const Handle im_wr = a.mul_lanes(x.im, wr);
    const Handle re_wi = a.mul_lanes(x.re, wi);
    return {re, a.add_r(re_wi, im_wr)};
}

Cx gather_lanes(tqfgen::SplitAlg& a, const std::vector<LaneVal>& v) {
    tqfgen::Graph& g = a.graph();
    bool all_loads = true, any = false, twiddled = false;
    for (const LaneVal& x : v) {
        if (x.is_zero()) continue;
        any = true;
        all_loads &= x.elem >= 0 && x.tw == Root(1, 0);
        twiddled |= x.tw != Root(1, 0);
    }
    if (!any) return Cx{};
    if (all_loads) {
        int idx[4] = {-1, -1, -1, -1};
        for (size_t l = 0; l < v.size(); ++l) idx[l] = v[l].elem;
        return {g.load_planar(idx, 0), g.load_planar(idx, 1)};
    }
    std::vector<std::pair<Handle, int>> re(4, {Handle{}, 0}), im(4, {Handle{}, 0});
    bool any_re = false, any_im = false;
    for (size_t l = 0; l < v.size(); ++l) {
        Cx r = v[l].reg;
        int lane = v[l].lane;
        if (v[l].elem >= 0) {
            const int idx[4] = {v[l].elem, -1, -1, -1};
            r = {g.load_planar(idx, 0), g.load_planar(idx, 1)};
            lane = 0;
        }
        if (r.re.valid()) re[l] = {r.re, lane}, any_re = true;
        if (r.im.valid()) im[l] = {r.im, lane}, any_im = true;
    }
    Cx x{any_re ? g.shuffle(Ty::V4F, re) : Handle{}, any_im ? g.shuffle(Ty::V4F, im) : Handle{}};
    if (!twiddled) return x;
    std::vector<Root> w;
    for (const LaneVal& y : v) w.push_back(y.tw);
    return lane_cmul(a, x, w);
}

std::vector<std::vector<LaneVal>> run_stages(tqfgen::SplitAlg& a, const Tree& t,
                                             const std::vector<std::vector<LaneVal>>& inst, int dir, bool spread) {
    std::vector<std::vector<LaneVal>> out(inst.size());
    if (t.leaf() || !spread) {
        for (size_t g0 = 0; g0 < inst.size(); g0 += 4) {
            const size_t lanes = std::min<size_t>(4, inst.size() - g0);
            std::vector<Cx> regs;
            for (int i = 0; i < t.size; ++i) {
                std::vector<LaneVal> v;
                for (size_t l = 0; l < lanes; ++l) v.push_back(inst[g0 + l][i]);
                regs.push_back(gather_lanes(a, v));
            }
            const std::vector<Cx> y = eval_tree(a, t, regs, dir);
            for (size_t l = 0; l < lanes; ++l)
                for (int k = 0; k < t.size; ++k) {
                    LaneVal r;
                    r.reg = y[k];
                    r.lane = static_cast<int>(l);
                    out[g0 + l].push_back(r);
                }
        }
        return out;
    }
    const NodeWalk w(t);
    std::vector<std::vector<LaneVal>> left_in;
    for (const auto& x : inst)
        for (int b = 0; b < w.B; ++b) {
            std::vector<LaneVal> in;
            for (int i = 0; i < w.A; ++i) in.push_back(x[w.input(b, i)]);
            left_in.push_back(in);
        }
    if (!t.blocks.empty()) throw std::runtime_error("lane stages: a first stage must run one tree");
    std::vector<std::vector<LaneVal>> Y = run_stages(a, *t.left, left_in, dir, false);
    if (w.twiddled)
        for (size_t j = 0; j < Y.size(); ++j)
            for (int k1 = 0; k1 < w.A; ++k1) Y[j][k1].tw *= w.twiddle(static_cast<int>(j % w.B), k1, dir);
    std::vector<std::vector<LaneVal>> right_in;
    for (size_t i = 0; i < inst.size(); ++i)
        for (int k1 = 0; k1 < w.A; ++k1) {
            std::vector<LaneVal> in;
            for (int b = 0; b < w.B; ++b) in.push_back(Y[i * w.B + b][k1]);
            right_in.push_back(in);
        }
    const std::vector<std::vector<LaneVal>> Z = run_stages(a, *t.right, right_in, dir, false);
    for (size_t i = 0; i < inst.size(); ++i) {
        out[i].resize(w.N);
        for (int k1 = 0; k1 < w.A; ++k1)
            for (int k2 = 0; k2 < w.B; ++k2) out[i][w.output(k1, k2)] = Z[i * w.A + k1][k2];
    }
    return out;
}

std::vector<LaneVal> multiply_in_place(tqfgen::SplitAlg& a, const std::vector<LaneVal>& v, const std::vector<Root>& w) {
    // Registers by identity, and which value sits in which of their lanes.
    using Key = std::tuple<int, bool, int, bool>;
    std::map<Key, std::vector<int>> regs;
    std::vector<Key> order;
    for (size_t i = 0; i < v.size(); ++i) {
        if (v[i].is_zero()) continue;
        if (v[i].elem >= 0 || v[i].tw != Root(1, 0)) throw std::logic_error("multiply_in_place: unsettled value");
        const Key key{v[i].reg.re.id, v[i].reg.re.neg, v[i].reg.im.id, v[i].reg.im.neg};
        if (!regs.count(key)) order.push_back(key);
        regs[key].push_back(static_cast<int>(i));
    }
    std::vector<LaneVal> out = v;
    for (const Key& key : order) {
        const std::vector<int>& members = regs[key];
        std::vector<Root> lw(4, Root(1, 0));
        for (int i : members) lw[v[i].lane] = w[i];
        const Cx r = lane_cmul(a, v[members[0]].reg, lw);
        for (int i : members) out[i].reg = r;
    }
    return out;
}

}  // namespace tqfcdft
