#include "graph.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace tqfgen {

int lane_count(Ty t) {
    switch (t) {
    case Ty::F32:
    case Ty::F64: return 1;
    case Ty::V4F: return 4;
    case Ty::V2D: return 2;
    }
    return 1;
}

bool is_double(Ty t) { return t == Ty::F64 || t == Ty::V2D; }

static unsigned all_lanes(Ty t) { return (1u << lane_count(t)) - 1u; }

static std::string key_of(const Node& n) {
    std::ostringstream k;
    k << int(n.op) << ':' << int(n.ty) << ':' << n.a << ':' << n.b << ':' << n.flip_mask << ':'
      << n.comp;
    for (int i : n.index) k << ',' << i;
    for (double v : n.cval) {
        uint64_t u;
        std::memcpy(&u, &v, 8);
        k << ';' << u;
    }
    for (const LaneRef& r : n.gather) k << '|' << r.node << '.' << r.lane;
    return k.str();
}

int Graph::intern(Node n) {
    const std::string k = key_of(n);
    auto it = index_.find(k);
    if (it != index_.end()) return it->second;
    nodes_.push_back(std::move(n));
    const int id = static_cast<int>(nodes_.size()) - 1;
    index_.emplace(k, id);
    return id;
}

Handle Graph::load_scalar(Ty t, int offset) {
    Node n{Op::LoadScalar, t};
    n.index[0] = offset;
    n.live = 1;
    return Handle{intern(n), false};
}

Handle Graph::load_pair(int element) {
    Node n{Op::LoadPair, Ty::V2D};
    n.index[0] = element;
    n.live = 3;
    return Handle{intern(n), false};
}

Handle Graph::load_planar(const int (&elements)[4], int comp) {
    Node n{Op::LoadPlanar, Ty::V4F};
    n.comp = comp;
    for (int l = 0; l < 4; ++l) {
        n.index[l] = elements[l];
        if (elements[l] >= 0) n.live |= 1u << l;
    }
    return Handle{intern(n), false};
}

Handle Graph::constant(Ty t, const std::vector<double>& lanes, bool keep_sign) {
    if (static_cast<int>(lanes.size()) != lane_count(t)) throw std::logic_error("constant width");
    Node n{Op::Const, t};
    n.cval = lanes;
    bool neg = false;
    for (double v : lanes) {
        if (keep_sign) break;
        if (v != 0.0) {
            neg = v < 0.0;
            break;
        }
    }
    if (neg)
        for (double& v : n.cval) v = -v;
    for (double& v : n.cval)
        if (v == 0.0) v = 0.0;  // one spelling of zero
    if (t == Ty::F32 || t == Ty::V4F)
        for (double& v : n.cval) v = static_cast<float>(v);
    n.live = all_lanes(t);
    return Handle{intern(n), neg};
}

Handle Graph::splat(Ty t, long double value) {
    const Handle h = constant(t, std::vector<double>(lane_count(t), static_cast<double>(value)));
    Node& n = nodes_[h.id];
    if (n.exact == 0) n.exact = h.neg ? -value : value;
    return h;
}

long double Graph::exact_value(int const_id) const {
    const Node& n = nodes_.at(const_id);
    return n.exact != 0 ? n.exact : n.cval.at(0);
}

Handle Graph::add(Handle a, Handle b) {
    const Node& na = nodes_[a.id];
    const Node& nb = nodes_[b.id];
    if (na.ty != nb.ty) throw std::logic_error("add: mixed register types");
    Node n{Op::Add, na.ty};
    n.live = na.live | nb.live;
    bool neg = false;
    if (a.neg == b.neg) {
        n.a = a.id < b.id ? a.id : b.id;
        n.b = a.id < b.id ? b.id : a.id;
        neg = a.neg;
    } else {
        n.op = Op::Sub;
        n.a = a.neg ? b.id : a.id;
        n.b = a.neg ? a.id : b.id;
        if (merge_mirrored_differences) {
            Node mirror = n;
            std::swap(mirror.a, mirror.b);
            auto it = index_.find(key_of(mirror));
            if (it != index_.end()) return Handle{it->second, true};  // a - b = -(b - a)
        }
    }
    return Handle{intern(n), neg};
}

Handle Graph::mul(Handle x, Handle c) {
    const Node& nx = nodes_[x.id];
    if (nodes_[c.id].op != Op::Const) throw std::logic_error("mul: second operand must be a constant");
    if (nodes_[c.id].ty != nx.ty) throw std::logic_error("mul: mixed register types");
    Node n{Op::Mul, nx.ty};
    n.a = x.id;
    n.b = c.id;
    n.live = nx.live;
    return Handle{intern(n), x.neg != c.neg};
}

Handle Graph::addsub(Handle a, Handle b) {
    if (a.neg != b.neg) {
        if (a.neg) a = materialize(a);
        if (b.neg) b = materialize(b);
    }
    Node n{Op::AddSub, nodes_[a.id].ty};
    n.a = a.id;
    n.b = b.id;
    n.live = nodes_[a.id].live | nodes_[b.id].live;
    return Handle{intern(n), a.neg};
}

Handle Graph::flip(Handle x, unsigned mask) {
    Node n{Op::Flip, nodes_[x.id].ty};
    n.a = x.id;
    n.flip_mask = mask;
    n.live = nodes_[x.id].live;
    return Handle{intern(n), x.neg};
}

Handle Graph::materialize(Handle x) {
    if (!x.neg) return x;
    return flip(Handle{x.id, false}, all_lanes(nodes_[x.id].ty));
}

Handle Graph::shuffle(Ty t, const std::vector<std::pair<Handle, int>>& lanes) {
    if (static_cast<int>(lanes.size()) != lane_count(t)) throw std::logic_error("shuffle width");
    // One sign for the whole register: mixed signs are made real first.
    int neg_count = 0, src_count = 0;
    for (const auto& l : lanes)
        if (l.first.valid()) {
            ++src_count;
            neg_count += l.first.neg;
        }
    const bool all_neg = src_count > 0 && neg_count == src_count;
    Node n{Op::Shuffle, t};
    bool identity = true;
    int first = -1;
    for (int i = 0; i < static_cast<int>(lanes.size()); ++i) {
        Handle h = lanes[i].first;
        LaneRef r;
        if (h.valid()) {
            if (h.neg && !all_neg) h = materialize(h);
            r.node = h.id;
            r.lane = lanes[i].second;
            if (nodes_[h.id].live & (1u << r.lane)) n.live |= 1u << i;
        }
        if (first < 0) first = r.node;
        if (r.node < 0 || r.node != first || r.lane != i) identity = false;
        n.gather.push_back(r);
    }
    if (identity && first >= 0 && nodes_[first].ty == t) return Handle{first, all_neg};
    if (t == Ty::V4F) {
        // More than two sources: two-source pairs first, as shared nodes, so
        // that a 4x4 transposition costs eight shuffles, not twelve.
        std::vector<int> srcs;
        for (const LaneRef& r : n.gather)
            if (std::find(srcs.begin(), srcs.end(), r.node) == srcs.end()) srcs.push_back(r.node);
        if (srcs.size() > 2) return Handle{split_gather(n), all_neg};
    }
    return Handle{intern(n), all_neg};
}

// [a, b, c, d] from lanes of up to four registers: lanes 0-1 and lanes 2-3
// each come from one two-register node, then one shufps joins them. When
// both halves read the same lane pair of their sources (a transposition),
// the two-register nodes are the unpack of that pair and are shared.
int Graph::split_gather(const Node& n) {
    auto pair_node = [&](LaneRef x, LaneRef y, int& lx, int& ly) {
        Node p(Op::Shuffle, Ty::V4F);
        if (x.lane / 2 == y.lane / 2 && x.node != y.node) {
            const int h = 2 * (x.lane / 2);  // unpack lo/hi: [X h, Y h, X h+1, Y h+1]
            p.gather = {{x.node, h}, {y.node, h}, {x.node, h + 1}, {y.node, h + 1}};
            lx = x.lane % 2 == 0 ? 0 : 2;
            ly = y.lane % 2 == 0 ? 1 : 3;
        } else {
            p.gather = {x, x, y, y};
            lx = 0;
            ly = 2;
        }
        for (int i = 0; i < 4; ++i)
            if (p.gather[i].node >= 0 && (nodes_[p.gather[i].node].live >> p.gather[i].lane & 1u)) p.live |= 1u << i;
        return intern(p);
    };
    int l0, l1, l2, l3;
    const int lo = pair_node(n.gather[0], n.gather[1], l0, l1);
    const int hi = pair_node(n.gather[2], n.gather[3], l2, l3);
    Node j(Op::Shuffle, Ty::V4F);
    j.gather = {{lo, l0}, {lo, l1}, {hi, l2}, {hi, l3}};
    j.live = n.live;
    return intern(j);
}

Handle Graph::swap_pair(Handle x) {
    return shuffle(Ty::V2D, {{x, 1}, {x, 0}});
}

Handle Graph::widen(Handle x) {
    Node n{Op::Widen, nodes_[x.id].ty == Ty::F32 ? Ty::F64 : Ty::V2D};
    n.a = x.id;
    n.live = nodes_[x.id].live;
    return Handle{intern(n), x.neg};
}

Handle Graph::narrow(Handle x) {
    if (nodes_[x.id].ty == Ty::F32) return x;
    Node n{Op::Narrow, Ty::F32};
    n.a = x.id;
    n.live = nodes_[x.id].live;
    return Handle{intern(n), x.neg};
}

}  // namespace tqfgen
