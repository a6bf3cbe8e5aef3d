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

// How a scalar output reaches dst.
enum class StoreKind {
    Scaled,   // value * scale
    Zero,     // +0.0 (all bits clear): a stored constant, never scaled
    ZeroSub,  // 0.0 - (value * scale): the output is the negated value
};

// One scalar store at a flat element offset of dst (the index of a float or
// double, not of a complex element), so that any packed layout can be written.
struct ScalarStore {
    int offset = 0;
    StoreKind kind = StoreKind::Scaled;
    Handle value;  // unused for Zero
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
    // Which of the first two flags divide by N: the forward flag, the inverse
    // flag, or both (transforms without a direction).
    enum class DividesBy { FwdFlag, InvFlag, Both };
    DividesBy divides_by = DividesBy::FwdFlag;

    Graph g;
    std::vector<ScalarStore> scalar_out;  // Scalar form, in store order
    std::vector<Handle> pair_out;    // Pair form: N values
    std::vector<PlanarStore> planar_out;

    // Scalar stores. Each is emitted once its value is ready, but never
    // before the last load, so that src may equal dst.
    void store(int offset, Handle value);  // a pending negation becomes a sign flip
    void store_zero(int offset);
    // Stores the negation of `value` as 0.0 - (value * scale), in the
    // precision of `value`: no sign flip, and +0.0 where value * scale is 0.
    void store_negated(int offset, Handle value);
    // `value` held negated is stored as 0.0 - (its magnitude * scale).
    void store_keep_sign(int offset, Handle value);

    // Every output value must be a real value before it is stored: a pending
    // negation becomes a sign flip here (and is counted).
    void settle_outputs();
    std::vector<int> output_nodes() const;  // values stored, stored zeros excepted
};

}  // namespace tqfgen
