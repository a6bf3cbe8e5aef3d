#include "plan_arena.h"

PlanArena* PlanArenaOpen(void* block) {
    PlanArena* arena = static_cast<PlanArena*>(block);
    // The unit is derived, not written out, so that it follows PlanAlign32.
    const intptr_t unit = static_cast<intptr_t>(PlanAlign32(1));
    // A signed remainder of the pointer-sized address: on i386 a block above
    // 2^31 gives a remainder <= 0 and so a lead-in of up to 95 bytes.
    const intptr_t rem = reinterpret_cast<intptr_t>(block) % unit;
    const uintptr_t first = reinterpret_cast<uintptr_t>(block) + 2 * unit - rem;
    arena->cursor = reinterpret_cast<unsigned char*>(first);
    return arena;
}

void* PlanAlloc(PlanArena* arena, uint32_t count) {
    unsigned char* at = arena->cursor;
    arena->cursor = reinterpret_cast<unsigned char*>(reinterpret_cast<uintptr_t>(at) +
                                                     PlanAlign32(count));
    return at;
}

uint32_t PlanRelease(PlanArena* arena, void* /*object*/, uint32_t count) {
    const uint32_t rounded = PlanAlign32(count);
    arena->cursor = reinterpret_cast<unsigned char*>(
        reinterpret_cast<uintptr_t>(arena->cursor) - rounded);
    return rounded;
}
