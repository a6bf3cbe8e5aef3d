// One generated kernel: its identity, its graph and where its outputs go.
#pragma once

#include <string>
#include <vector>

#include "graph.h"

namespace tqfgen {

// How a kernel holds its data in registers.
enum class Form {
    Scalar,  // one component per scalar register
    Pair,    // one complex double per register, [re, im]
    Planar,  // four complex floats per pair of registers, real and imaginary parts apart
};

struct PlanarStore {
    Handle re, im;
    int index[4] = {-1, -1, -1, -1};  // output element of each lane, -1: lane not stored
};

struct Kernel {
    std::string family;     // manifest family, e.g. "cfwd"
    std::string precision;  // "32fc", "64fc", ...
    std::string name;       // exported name
    int length = 0;
    Form form = Form::Scalar;
    bool double_data = false;  // element components are doubles
    bool forward = true;       // which of the first two flags divides

    Graph g;
    std::vector<Handle> scalar_out;  // Scalar form: 2N values, re0, im0, re1, ...
    std::vector<Handle> pair_out;    // Pair form: N values
    std::vector<PlanarStore> planar_out;

    // Every output value must be a real value before it is stored: a pending
    // negation becomes a sign flip here (and is counted).
    void settle_outputs();
    std::vector<int> output_nodes() const;
};

}  // namespace tqfgen
