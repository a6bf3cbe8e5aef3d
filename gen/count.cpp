#include "count.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <set>

namespace tqfgen {

std::vector<int> live_nodes(const Kernel& k) {
    std::vector<char> used(k.g.size(), 0);
    std::vector<int> stack = k.output_nodes();
    while (!stack.empty()) {
        const int id = stack.back();
        stack.pop_back();
        if (id < 0 || used[id]) continue;
        used[id] = 1;
        const Node& n = k.g.node(id);
        stack.push_back(n.a);
        stack.push_back(n.b);
        for (const LaneRef& r : n.gather) stack.push_back(r.node);
    }
    std::vector<int> ids;
    for (int i = 0; i < k.g.size(); ++i)
        if (used[i]) ids.push_back(i);
    return ids;
}

static bool is_arithmetic(Op op) {
    return op == Op::Add || op == Op::Sub || op == Op::AddSub || op == Op::Mul || op == Op::Flip;
}

Counts count_operations(const Kernel& k) {
    Counts c;
    std::vector<int> depth(k.g.size(), 0);
    std::set<double> values;
    for (int id : live_nodes(k)) {
        const Node& n = k.g.node(id);
        int d = 0;
        if (n.a >= 0) d = std::max(d, depth[n.a]);
        if (n.b >= 0) d = std::max(d, depth[n.b]);
        for (const LaneRef& r : n.gather)
            if (r.node >= 0) d = std::max(d, depth[r.node]);
        depth[id] = d + (is_arithmetic(n.op) ? 1 : 0);

        const int lanes = std::popcount(n.live);
        switch (n.op) {
        case Op::Add:
        case Op::Sub:
        case Op::AddSub:
            c.adds += lanes;
            if (!k.double_data && is_double(n.ty)) c.double_adds += lanes;
            break;
        case Op::Flip: c.sign_flips += std::popcount(n.flip_mask & n.live); break;
        case Op::Mul: {
            const Node& cn = k.g.node(n.b);
            for (int l = 0; l < lane_count(n.ty); ++l) {
                if (!(n.live & (1u << l))) continue;
                const double v = cn.cval[l];
                ++c.muls;
                if (std::fabs(v) == 2.0) ++c.doublings;
                if (v == 0.0 || std::fabs(v) == 1.0) ++c.trivial_muls;
                else values.insert(v);
            }
            break;
        }
        default: break;
        }
    }
    for (int id : k.output_nodes()) c.depth = std::max(c.depth, depth[id] + 1);
    for (const ScalarStore& st : k.scalar_out) {
        if (st.kind == StoreKind::Zero) continue;
        if (st.kind == StoreKind::ZeroSub) {
            ++c.zero_sub_stores;
            c.depth = std::max(c.depth, depth[st.value.id] + 2);  // scale, then 0.0 - t
        }
        if (!k.double_data && is_double(k.g.node(st.value.id).ty)) ++c.double_scales;
    }
    c.constants = static_cast<long>(values.size());
    return c;
}

}  // namespace tqfgen
