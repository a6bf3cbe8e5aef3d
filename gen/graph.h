// Expression DAG of one kernel.
//
// A kernel is built as a graph of loads, constants and arithmetic; structural
// hashing merges identical nodes, and nothing else is rewritten behind the
// description's back. A value is referred to by a Handle, which carries a
// pending negation: a negated value costs nothing until it meets an addition
// (which turns into a subtraction) or has to be materialised.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tqfgen {

// Register types: scalar float/double, four floats, two doubles.
enum class Ty : uint8_t { F32, F64, V4F, V2D };

int lane_count(Ty t);
bool is_double(Ty t);

enum class Op : uint8_t {
    LoadScalar,  // one float or double at a flat element offset
    LoadPair,    // one complex double element as [re, im]
    LoadPlanar,  // re or im parts of up to four complex float elements
    Const,
    Add,
    Sub,
    AddSub,  // [a0 - b0, a1 + b1]
    Mul,     // data times constant
    Flip,    // sign-bit flip of selected lanes
    Shuffle, // lane gather, arithmetic free
    Widen,   // float -> double, exact
    Narrow,  // double -> float, rounded once
};

struct LaneRef {
    int node = -1;  // -1: a zero lane
    int lane = 0;
};

struct Node {
    Node(Op o, Ty t) : op(o), ty(t) {}
    Op op;
    Ty ty;
    int a = -1, b = -1;           // operands (Mul: b is the constant)
    std::vector<double> cval;     // Const: one value per lane
    long double exact = 0;        // Const made by splat: the value cval rounds (0: not known)
    std::vector<LaneRef> gather;  // Shuffle: one source per lane
    unsigned flip_mask = 0;       // Flip: lanes negated
    int index[4] = {-1, -1, -1, -1};  // loads: LoadScalar [0] flat offset, LoadPair [0] and
                                      // LoadPlanar complex element indices
    int comp = 0;                 // LoadPlanar: 0 real part, 1 imaginary part
    unsigned live = 0;            // lanes that carry data
};

struct Handle {
    int id = -1;
    bool neg = false;
    Handle operator-() const { return Handle{id, !neg}; }
    bool valid() const { return id >= 0; }
};

class Graph {
public:
    const Node& node(int id) const { return nodes_[id]; }
    int size() const { return static_cast<int>(nodes_.size()); }

    // src[offset]: a flat element offset, the index of a float or double.
    Handle load_scalar(Ty t, int offset);
    Handle load_pair(int element);
    Handle load_planar(const int (&elements)[4], int comp);
    // A constant of one value per lane. Unless `keep_sign`, the sign of its
    // first non-zero lane is moved into the handle so that c*x and -c*x share
    // one product; lane-signed constants (for addsub) keep theirs.
    Handle constant(Ty t, const std::vector<double>& lanes, bool keep_sign = false);
    // A constant equal in every lane that remembers the exact value it
    // rounds, so that a product of constants can be formed and rounded once.
    Handle splat(Ty t, long double value);
    // That exact value, or the stored one where none is known.
    long double exact_value(int const_id) const;

    Handle add(Handle a, Handle b);
    Handle sub(Handle a, Handle b) { return add(a, -b); }
    Handle mul(Handle x, Handle c);
    Handle addsub(Handle a, Handle b);
    Handle flip(Handle x, unsigned mask);
    Handle shuffle(Ty t, const std::vector<std::pair<Handle, int>>& lanes);  // {src, lane}; src.id<0 = zero
    Handle swap_pair(Handle x);  // [a1, a0] of a two-double vector
    Handle widen(Handle x);
    Handle narrow(Handle x);
    // Turns a pending negation into a real sign flip of the live lanes.
    Handle materialize(Handle x);

    // A difference whose mirror b - a exists already is that node negated
    // (exact: IEEE subtraction is antisymmetric), not a node of its own. Set
    // by the pass of mirror.h on the live program it rebuilds; the complex
    // kernels keep both, since a stored negation would turn a +0.0 into -0.0.
    bool merge_mirrored_differences = false;

    // Steps of a program that a single-precision one transposes whose
    // adjoints are summed in double and handed on unrounded (gen/transpose.h;
    // marked by cdft/rader_real.cpp, bin_in_double).
    std::set<int> steps_in_double;

    // Values of such a program whose adjoints the transpose sums in double
    // (marked by cdft/rader_real.cpp, rader_halves): the row and the
    // rotation's component of a Rader bin that the forward forms from both
    // in double take their contributions unrounded; a folded kernel's real
    // bin m that its way back steps with a complex bin sums its adjoint's
    // rounded contributions in double.
    std::set<int> adjoints_unrounded;
    std::set<int> adjoints_widened;

    // The outputs of a Rader kernel's products, still in double: the
    // components of its complex bins and, at even m, the lone product of its
    // real bin m (cdft/rader_real.h). A transpose into this graph sums a step
    // of bin m with a complex bin from them (gen/transpose_rounding.h).
    std::set<int> kernel_outputs;

    // A transpose from or into this graph does not fold a product into a
    // twiddle by 80 degrees (2/9 of a turn; the products by its cosine and
    // sine in either order, so 10 degrees alike): set by a Rader form's "sine-kept-at-80:"
    // (cdft/rader_real.h), gen/transpose.cpp.
    bool sines_kept_at_80 = false;

private:
    int intern(Node n);
    int split_gather(const Node& n);
    // A deque, not a vector: node() hands out references, and descriptions
    // hold them while they add nodes; growing a deque at its end moves nothing.
    std::deque<Node> nodes_;
    std::map<std::string, int> index_;
};

}  // namespace tqfgen
