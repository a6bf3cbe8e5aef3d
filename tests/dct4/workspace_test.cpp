// The arena and the list cells, on their own.
#include <gtest/gtest.h>

#include <cstring>

#include "dct4_support.h"
#include "plan_arena.h"
#include "plan_list.h"

namespace {

using dct4test::Round32;

TEST(PlanWorkspace, Align32RoundsUpAndWrapsAtTheTop) {
    const struct { uint32_t in, out; } rows[] = {
        {0, 0}, {1, 32}, {12, 32}, {31, 32}, {32, 32}, {33, 64}, {44, 64}, {72, 96},
        {0xFFFFFFE0u, 0xFFFFFFE0u}, {0xFFFFFFE1u, 0}, {0xFFFFFFFFu, 0}};
    for (const auto& r : rows) EXPECT_EQ(PlanAlign32(r.in), r.out) << r.in;
}

// A 32-aligned scratch area with room for a lead-in of any offset.
struct Scratch {
    alignas(64) unsigned char bytes[4096];
    unsigned char* at(size_t offset) { return bytes + offset; }
};

TEST(PlanWorkspace, FirstCursorLeadInByBlockOffset) {
    static Scratch s;
    const struct { size_t offset; size_t leadIn; } rows[] = {
        {0, 64}, {1, 63}, {2, 62}, {16, 48}, {31, 33}, {32, 64}, {33, 63}, {63, 33}};
    for (const auto& r : rows) {
        PlanArena* a = PlanArenaOpen(s.at(r.offset));
        EXPECT_EQ(static_cast<void*>(a), s.at(r.offset));
        EXPECT_EQ(a->cursor - s.at(r.offset), static_cast<ptrdiff_t>(r.leadIn)) << r.offset;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(a->cursor) % 32, 0u);
    }
}

TEST(PlanWorkspace, AllocAdvancesByRoundedCountAndReleaseCountsBack) {
    static Scratch s;
    PlanArena* a = PlanArenaOpen(s.at(5));
    unsigned char* start = a->cursor;
    EXPECT_EQ(PlanAlloc(a, 44), start);
    EXPECT_EQ(a->cursor, start + 64);
    // A count of 0 hands out the cursor and leaves it; the next gets the same.
    void* zero = PlanAlloc(a, 0);
    EXPECT_EQ(zero, start + 64);
    EXPECT_EQ(PlanAlloc(a, 12), zero);
    EXPECT_EQ(a->cursor, start + 96);
    // Release returns the rounded count and lowers the cursor even for null.
    EXPECT_EQ(PlanRelease(a, nullptr, 72), 96u);
    EXPECT_EQ(a->cursor, start);
    EXPECT_EQ(PlanRelease(a, nullptr, 0), 0u);
    EXPECT_EQ(a->cursor, start);
}

TEST(PlanWorkspace, ListCellIsThreeWordsAndTakes32Bytes) {
    EXPECT_EQ(sizeof(PlanList), 3 * sizeof(void*));
    EXPECT_EQ(offsetof(PlanList, item), 0u);
    EXPECT_EQ(offsetof(PlanList, next), sizeof(void*));
    EXPECT_EQ(offsetof(PlanList, arena), 2 * sizeof(void*));
    EXPECT_EQ(Round32(sizeof(PlanList)), 32u);
    if (dct4test::Is32Bit()) EXPECT_EQ(sizeof(PlanList), 12u);
}

TEST(PlanWorkspace, ListAppendFillsTheHeadFirstThenTakesCells) {
    static Scratch s;
    PlanArena* a = PlanArenaOpen(s.at(0));
    PlanList* head = PlanListInit(static_cast<PlanList*>(PlanAlloc(a, sizeof(PlanList))), a);
    EXPECT_EQ(head->item, nullptr);
    EXPECT_EQ(head->next, nullptr);
    EXPECT_EQ(head->arena, a);
    PlanNode items[3];
    unsigned char* before = a->cursor;
    EXPECT_EQ(PlanListAppend(head, &items[0]), &items[0]);
    EXPECT_EQ(a->cursor, before);  // the head took it
    EXPECT_EQ(PlanListAppend(head, &items[1]), &items[1]);
    EXPECT_EQ(a->cursor, before + 32);
    EXPECT_EQ(static_cast<void*>(head->next), before);
    PlanListAppend(head, &items[2]);
    EXPECT_EQ(a->cursor, before + 64);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(PlanListItem(head, i), &items[i]);
    EXPECT_EQ(PlanListItem(head, -1), nullptr);
    EXPECT_EQ(PlanListItem(head, 3), nullptr);
    EXPECT_EQ(PlanListItem(head, 1000), nullptr);
}

TEST(PlanWorkspace, ListFreeTailReleasesCellsBehindTheHeadOnly) {
    static Scratch s;
    PlanArena* a = PlanArenaOpen(s.at(0));
    PlanList* head = PlanListNew(a);
    PlanNode items[3];
    PlanListAppend(head, &items[0]);
    unsigned char* one = a->cursor;
    PlanListFreeTail(head);  // one cell: nothing to release
    EXPECT_EQ(a->cursor, one);
    PlanListAppend(head, &items[1]);
    PlanListAppend(head, &items[2]);
    PlanList* second = head->next;
    PlanListFreeTail(head);
    EXPECT_EQ(a->cursor, one);
    // No cell was changed.
    EXPECT_EQ(head->next, second);
    EXPECT_EQ(second->item, &items[1]);
    EXPECT_NE(second->next, nullptr);
}

int destroyed[4];
int destroyOrder;
void Record(PlanNode* node) {
    destroyed[node->size / 100] = ++destroyOrder;
    node->size += 1;  // the release must read the size after destroy returns
}

TEST(PlanWorkspace, ListDestroyItemsDestroysThenReleasesBySize) {
    static Scratch s;
    PlanArena* a = PlanArenaOpen(s.at(0));
    PlanList* head = PlanListNew(a);
    PlanNode items[3];
    for (int i = 0; i < 3; ++i) {
        items[i] = PlanNode{Record, 100 * (i + 1) - 1, nullptr, a};  // 99, 199, 299 bytes
        PlanListAppend(head, &items[i]);
    }
    // An empty list, made now: no allocation may follow the releases below,
    // which take back more than the arena gave (the items are not from it).
    PlanList* empty = PlanListNew(a);
    unsigned char* top = a->cursor;
    destroyOrder = 0;
    std::memset(destroyed, 0, sizeof destroyed);
    PlanListDestroyItems(head);
    EXPECT_EQ(destroyed[0], 1);
    EXPECT_EQ(destroyed[1], 2);
    EXPECT_EQ(destroyed[2], 3);
    // Sizes 100, 200, 300 after destroy: 128 + 224 + 320 bytes; cells untouched.
    EXPECT_EQ(top - a->cursor, 128 + 224 + 320);
    EXPECT_NE(head->next, nullptr);
    PlanListDestroyItems(nullptr);  // accepted
    // An empty head is skipped.
    unsigned char* c = a->cursor;
    PlanListDestroyItems(empty);
    EXPECT_EQ(a->cursor, c);
}

}  // namespace
