// The plan workspace: one caller-visible block carved from low to high
// addresses. The block's first word is the cursor (the address of the next
// free byte) and is the arena's whole state; objects reach it through the
// block's start address.
#pragma once

#include <cstdint>

// Packed: the caller's block may have any alignment, and the cursor lives in
// its first bytes; the compiler then reads and writes it as the unaligned
// word it may be. The size is one pointer either way.
struct __attribute__((packed)) PlanArena {
    unsigned char* cursor;
};

// (count + 31) with the low five bits cleared, wrapping in 32 bits: counts
// within 31 of the top come back as 0, exactly as the size rule expects.
inline uint32_t PlanAlign32(uint32_t count) { return (count + 31u) & ~31u; }

// Writes the first cursor into the block and returns the arena. The cursor
// starts two units of 32 past the start, less the start's signed remainder,
// so the first object is 32-aligned whatever the caller's block alignment.
PlanArena* PlanArenaOpen(void* block);

// Hands out the rounded count at the cursor. Checks nothing: the block's
// size was fixed by the size rule and the arena trusts it.
void* PlanAlloc(PlanArena* arena, uint32_t count);

// Moves the cursor back by the rounded count and returns that count. The
// address is not used: release is counting, never recycling, and the
// planner allocates nothing once the first release has happened.
uint32_t PlanRelease(PlanArena* arena, void* object, uint32_t count);
