#include "kernel.h"

namespace tqfgen {

void Kernel::settle_outputs() {
    for (Handle& h : scalar_out) h = g.materialize(h);
    for (Handle& h : pair_out) h = g.materialize(h);
    for (PlanarStore& s : planar_out) {
        s.re = g.materialize(s.re);
        s.im = g.materialize(s.im);
    }
}

std::vector<int> Kernel::output_nodes() const {
    std::vector<int> ids;
    for (const Handle& h : scalar_out) ids.push_back(h.id);
    for (const Handle& h : pair_out) ids.push_back(h.id);
    for (const PlanarStore& s : planar_out) {
        ids.push_back(s.re.id);
        ids.push_back(s.im.id);
    }
    return ids;
}

}  // namespace tqfgen
