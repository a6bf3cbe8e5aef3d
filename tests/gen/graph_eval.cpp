#include "graph_eval.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace tqftest {

using tqfgen::Graph;
using tqfgen::Kernel;
using tqfgen::LaneRef;
using tqfgen::Node;
using tqfgen::Op;
using cld = std::complex<long double>;

namespace {

[[noreturn]] void fail(int id, const std::string& what) {
    throw std::logic_error("node " + std::to_string(id) + ": " + what);
}

long double component(const std::vector<cld>& x, int id, int element, int comp) {
    if (element < 0 || element >= static_cast<int>(x.size())) fail(id, "load of element out of range");
    return comp == 0 ? x[element].real() : x[element].imag();
}

}  // namespace

std::vector<Lanes> evaluate_graph(const Graph& g, const std::vector<cld>& x) {
    std::vector<Lanes> v(g.size());
    for (int id = 0; id < g.size(); ++id) {
        const Node& n = g.node(id);
        const int lanes = tqfgen::lane_count(n.ty);
        // A node only reads nodes made before it, so one pass in creation
        // order sees every operand already computed.
        auto operand = [&](int src) -> const Lanes& {
            if (src < 0 || src >= id) fail(id, "operand " + std::to_string(src) + " not defined before use");
            if (static_cast<int>(v[src].size()) != lanes) fail(id, "operand of another width");
            return v[src];
        };
        Lanes& r = v[id];
        r.assign(lanes, 0.0L);
        switch (n.op) {
        case Op::LoadScalar: r[0] = component(x, id, n.index[0] / 2, n.index[0] % 2); break;  // flat offset
        case Op::LoadPair:
            r[0] = component(x, id, n.index[0], 0);
            r[1] = component(x, id, n.index[0], 1);
            break;
        case Op::LoadPlanar:
            for (int l = 0; l < lanes; ++l)
                if (n.index[l] >= 0) r[l] = component(x, id, n.index[l], n.comp);
            break;
        case Op::Const:
            if (static_cast<int>(n.cval.size()) != lanes) fail(id, "constant of another width");
            for (int l = 0; l < lanes; ++l) r[l] = n.cval[l];
            break;
        case Op::Add:
        case Op::Sub:
        case Op::Mul: {
            const Lanes& a = operand(n.a);
            const Lanes& b = operand(n.b);
            for (int l = 0; l < lanes; ++l)
                r[l] = n.op == Op::Add ? a[l] + b[l] : n.op == Op::Sub ? a[l] - b[l] : a[l] * b[l];
            break;
        }
        case Op::AddSub: {
            // Only the packed registers have an add-subtract instruction.
            if (lanes < 2) fail(id, "addsub of a scalar");
            const Lanes& a = operand(n.a);
            const Lanes& b = operand(n.b);
            for (int l = 0; l < lanes; ++l) r[l] = l % 2 == 0 ? a[l] - b[l] : a[l] + b[l];
            break;
        }
        case Op::Flip: {
            // A scalar flip is written as a plain negation, whatever its
            // mask says: a mask other than "lane 0" would be misread.
            if (lanes == 1 && n.flip_mask != 1u) fail(id, "scalar flip with a mask other than lane 0");
            const Lanes& a = operand(n.a);
            for (int l = 0; l < lanes; ++l) r[l] = (n.flip_mask >> l) & 1u ? -a[l] : a[l];
            break;
        }
        case Op::Shuffle:
            if (static_cast<int>(n.gather.size()) != lanes) fail(id, "gather of another width");
            for (int l = 0; l < lanes; ++l) {
                const LaneRef& ref = n.gather[l];
                if (ref.node < 0) continue;  // a zero lane
                if (ref.node >= id) fail(id, "gather from a later node");
                const Lanes& src = v[ref.node];
                if (ref.lane < 0 || ref.lane >= static_cast<int>(src.size())) fail(id, "gather of a missing lane");
                r[l] = src[ref.lane];
            }
            break;
        case Op::Widen:
        case Op::Narrow: {
            // Precision changes are identities here; a widening of packed
            // floats keeps the low lanes, as the conversion instruction does.
            if (n.a < 0 || n.a >= id) fail(id, "operand not defined before use");
            const Lanes& a = v[n.a];
            if (static_cast<int>(a.size()) < lanes) fail(id, "conversion from a narrower register");
            for (int l = 0; l < lanes; ++l) r[l] = a[l];
            break;
        }
        }
    }
    return v;
}

long double scalar_value(const std::vector<Lanes>& v, const tqfgen::Handle& h) {
    if (!h.valid()) return 0;
    if (h.id >= static_cast<int>(v.size())) throw std::logic_error("value of an undefined node");
    if (v[h.id].size() != 1) throw std::logic_error("node " + std::to_string(h.id) + " is not a scalar");
    return h.neg ? -v[h.id][0] : v[h.id][0];
}

std::vector<cld> evaluate_kernel(const Kernel& k, const std::vector<cld>& x) {
    const int N = k.length;
    if (static_cast<int>(x.size()) != N) throw std::logic_error("input of another length");
    const std::vector<Lanes> v = evaluate_graph(k.g, x);
    auto value = [&](const tqfgen::Handle& h) -> const Lanes& {
        if (h.id < 0 || h.id >= k.g.size()) throw std::logic_error("output of an undefined node");
        return v[h.id];
    };
    std::vector<cld> out(N);
    std::vector<int> stored(N, 0);
    switch (k.form) {
    case tqfgen::Form::Scalar: {
        // Stores at flat offsets: 2e is the real part of element e, 2e + 1 its imaginary part.
        std::vector<int> slot(2 * N, 0);
        std::vector<long double> flat(2 * N, 0.0L);
        for (const tqfgen::ScalarStore& st : k.scalar_out) {
            if (st.offset < 0 || st.offset >= 2 * N) throw std::logic_error("scalar store beyond the output");
            ++slot[st.offset];
            if (st.kind == tqfgen::StoreKind::Zero) continue;
            const long double x = value(st.value)[0];
            flat[st.offset] = st.kind == tqfgen::StoreKind::ZeroSub ? -x : x;
        }
        for (int i = 0; i < N; ++i) {
            out[i] = cld(flat[2 * i], flat[2 * i + 1]);
            // An element counts as stored once when both of its parts are.
            const int lo = std::min(slot[2 * i], slot[2 * i + 1]), hi = std::max(slot[2 * i], slot[2 * i + 1]);
            stored[i] = lo == 0 ? 0 : hi;
        }
        break;
    }
    case tqfgen::Form::Pair:
        if (static_cast<int>(k.pair_out.size()) != N) throw std::logic_error("pair outputs: not N");
        for (int i = 0; i < N; ++i) {
            const Lanes& p = value(k.pair_out[i]);
            if (p.size() != 2) throw std::logic_error("pair output not a two-lane register");
            out[i] = cld(p[0], p[1]);
            stored[i] = 1;
        }
        break;
    case tqfgen::Form::Planar:
        for (const tqfgen::PlanarStore& st : k.planar_out) {
            const Lanes& re = value(st.re);
            const Lanes& im = value(st.im);
            if (re.size() != 4 || im.size() != 4) throw std::logic_error("planar output not a four-lane register");
            for (int l = 0; l < 4; ++l) {
                const int e = st.index[l];
                if (e < 0) continue;
                if (e >= N) throw std::logic_error("planar store beyond the last element");
                out[e] = cld(re[l], im[l]);
                ++stored[e];
            }
        }
        break;
    }
    for (int i = 0; i < N; ++i)
        if (stored[i] != 1)
            throw std::logic_error("output element " + std::to_string(i) + " stored " + std::to_string(stored[i]) +
                                   " times");
    return out;
}

}  // namespace tqftest
