// The header that every plan object begins with, laid out alike in all
// classes so that any object can be destroyed and released through it.
#pragma once

#include <cstdint>

#include "plan_arena.h"

struct PlanNode;

// Releases what the object owns, never the object's own storage.
typedef void (*PlanDestroyFn)(PlanNode* node);
// The class's one operation. Its real signature depends on the class (a
// generator's evaluation, a stage's build); it is cast back before a call.
typedef void (*PlanActFn)(void);

struct PlanNode {
    PlanDestroyFn destroy;
    int32_t size;       // the byte count the object was allocated with
    PlanActFn act;
    PlanArena* arena;   // the block the object came from
};

// Allocates `size` bytes for an object and fills its header.
void* PlanNewNode(PlanArena* arena, int32_t size, PlanDestroyFn destroy, PlanActFn act);

// Allocates an object of class C (its size is sizeof(C)) and fills its header.
template <class C>
C* PlanNew(PlanArena* arena, PlanDestroyFn destroy, PlanActFn act) {
    return static_cast<C*>(PlanNewNode(arena, static_cast<int32_t>(sizeof(C)), destroy, act));
}

// Casts any function to the header's act slot type.
template <class F>
PlanActFn PlanActOf(F* fn) { return reinterpret_cast<PlanActFn>(fn); }
