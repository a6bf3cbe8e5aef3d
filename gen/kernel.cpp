#include "kernel.h"

namespace tqfgen {

void Kernel::store(int offset, Handle value) { scalar_out.push_back({offset, StoreKind::Scaled, value}); }

void Kernel::store_zero(int offset) { scalar_out.push_back({offset, StoreKind::Zero, Handle{}}); }

void Kernel::store_negated(int offset, Handle value) {
    scalar_out.push_back({offset, StoreKind::ZeroSub, value});
}

void Kernel::store_keep_sign(int offset, Handle value) {
    if (value.neg) store_negated(offset, -value);
    else store(offset, value);
}

void Kernel::settle_outputs() {
    for (ScalarStore& s : scalar_out)
        if (s.kind != StoreKind::Zero) s.value = g.materialize(s.value);
    for (Handle& h : pair_out) h = g.materialize(h);
    for (PlanarStore& s : planar_out) {
        s.re = g.materialize(s.re);
        s.im = g.materialize(s.im);
    }
}

std::vector<int> Kernel::output_nodes() const {
    std::vector<int> ids;
    for (const ScalarStore& s : scalar_out)
        if (s.kind != StoreKind::Zero) ids.push_back(s.value.id);
    for (const Handle& h : pair_out) ids.push_back(h.id);
    for (const PlanarStore& s : planar_out) {
        ids.push_back(s.re.id);
        ids.push_back(s.im.id);
    }
    return ids;
}

}  // namespace tqfgen
