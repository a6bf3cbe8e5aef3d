// Singly linked lists of plan objects. A list is its head cell; the head is a
// cell like the others and carries the first item. Cells come from the arena
// named in the head, so a list can grow without being told where from.
#pragma once

#include "plan_node.h"

struct PlanList {
    PlanNode* item;    // null only in the head of an empty list
    PlanList* next;
    PlanArena* arena;  // where further cells come from
};

PlanList* PlanListInit(PlanList* cell, PlanArena* arena);
// Stores the item in the last cell if that is empty, else in a new cell.
PlanNode* PlanListAppend(PlanList* head, PlanNode* item);
// The item `index` cells from the head; null for a negative or too large index.
PlanNode* PlanListItem(PlanList* head, int32_t index);
// Releases every cell behind the head; no cell is changed.
void PlanListFreeTail(PlanList* head);
// Destroys and releases every item (by its stored size); releases no cell.
void PlanListDestroyItems(PlanList* head);

// A fresh, empty list whose head comes from the arena.
PlanList* PlanListNew(PlanArena* arena);
// Ends a reference list: its tail cells, then its head.
void PlanListClose(PlanList* head);
// Ends an owning list: its items, then its cells.
void PlanListCloseOwned(PlanList* head);
