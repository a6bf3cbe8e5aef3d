// Helpers of the DCT-IV planner tests: a replaceable allocator that counts and
// fails on demand, both precisions behind one interface, and a walk over a
// built plan that lists every piece of the arena in the order it was built.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "counting_alloc.h"
#include "plan_classes.h"
#include "tqfgen.h"

namespace dct4test {

// tqfMalloc/tqfFree as the library sees them while a test runs.
inline tqftest::AllocLog& Alloc() { return tqftest::alloc_log(); }
inline void ResetAlloc() { tqftest::reset_alloc_log(); }

// One precision of the planner, through its exported entries.
struct Precision {
    const char* name;
    int lanes;
    int width;
    tqfStatus (*getSize)(int, int*);
    tqfStatus (*init)(PlanRoot**, int, void*);
    tqfStatus (*initAlloc)(PlanRoot**, int);
    tqfStatus (*free)(PlanRoot*);
};
const Precision& F32();
const Precision& F64();
inline bool Is32Bit() { return sizeof(void*) == 4; }

// A piece of a plan: an object, a list cell, a table or a buffer.
struct Piece {
    const void* at;
    uint32_t bytes;  // the count it was allocated with, before rounding
    std::string what;
};

// The pieces in build order, read from the tree by its shape alone, and the
// number of splits met on the way. Lists are checked for their expected
// contents as the walk goes (gtest failures are recorded).
struct PlanShape {
    std::vector<Piece> pieces;
    int splits = 0;
};
PlanShape WalkPlan(const PlanRoot* root, const Precision& p);

// Round up to 32, as the arena does; written out here independently.
inline uint32_t Round32(uint32_t v) { return (v + 31u) / 32u * 32u; }

}  // namespace dct4test
