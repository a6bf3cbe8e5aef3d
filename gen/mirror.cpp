#include "mirror.h"

#include <stdexcept>

#include "count.h"

namespace tqfgen {

void merge_mirrored_differences(Kernel& k) {
    if (k.form != Form::Scalar) throw std::logic_error("merge_mirrored_differences: scalar kernels only");
    Graph g;
    g.merge_mirrored_differences = true;
    std::vector<Handle> image(k.g.size());
    for (int id : live_nodes(k)) {
        const Node& n = k.g.node(id);
        switch (n.op) {
        case Op::LoadScalar: image[id] = g.load_scalar(n.ty, n.index[0]); break;
        case Op::Const: image[id] = g.constant(n.ty, n.cval, true); break;
        case Op::Add: image[id] = g.add(image[n.a], image[n.b]); break;
        case Op::Sub: image[id] = g.sub(image[n.a], image[n.b]); break;
        case Op::Mul: image[id] = g.mul(image[n.a], image[n.b]); break;
        case Op::Widen: image[id] = g.widen(image[n.a]); break;
        case Op::Narrow: image[id] = g.narrow(image[n.a]); break;
        default: throw std::logic_error("merge_mirrored_differences: no sign operations in this program");
        }
    }
    for (ScalarStore& st : k.scalar_out) {
        if (st.kind == StoreKind::Zero) continue;
        if (st.value.neg) throw std::logic_error("merge_mirrored_differences: outputs must be settled");
        const Handle h = image[st.value.id];
        st.value = h.neg ? -h : h;
        if (h.neg) st.kind = st.kind == StoreKind::Scaled ? StoreKind::ZeroSub : StoreKind::Scaled;
    }
    k.g = std::move(g);
}

}  // namespace tqfgen
