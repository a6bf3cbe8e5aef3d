#include "plan_list.h"

PlanList* PlanListInit(PlanList* cell, PlanArena* arena) {
    cell->item = nullptr;
    cell->next = nullptr;
    cell->arena = arena;
    return cell;
}

PlanNode* PlanListAppend(PlanList* head, PlanNode* item) {
    PlanList* last = head;
    while (last->next) last = last->next;
    if (last->item) {
        PlanList* cell = static_cast<PlanList*>(
            PlanAlloc(head->arena, static_cast<uint32_t>(sizeof(PlanList))));
        PlanListInit(cell, head->arena);
        last->next = cell;
        last = cell;
    }
    last->item = item;
    return item;
}

PlanNode* PlanListItem(PlanList* head, int32_t index) {
    if (index < 0) return nullptr;
    PlanList* cell = head;
    for (int32_t i = 0; cell && i < index; ++i) cell = cell->next;
    return cell ? cell->item : nullptr;
}

void PlanListFreeTail(PlanList* head) {
    // Release only moves the cursor, so the cells can still be walked.
    for (PlanList* cell = head->next; cell; cell = cell->next)
        PlanRelease(head->arena, cell, static_cast<uint32_t>(sizeof(PlanList)));
}

void PlanListDestroyItems(PlanList* head) {
    for (PlanList* cell = head; cell; cell = cell->next) {
        PlanNode* item = cell->item;
        if (!item) continue;
        item->destroy(item);
        // The size is read after destroy has returned.
        PlanRelease(cell->arena, item, static_cast<uint32_t>(item->size));
    }
}

PlanList* PlanListNew(PlanArena* arena) {
    PlanList* head = static_cast<PlanList*>(PlanAlloc(arena, static_cast<uint32_t>(sizeof(PlanList))));
    return PlanListInit(head, arena);
}

void PlanListClose(PlanList* head) {
    PlanListFreeTail(head);
    PlanRelease(head->arena, head, static_cast<uint32_t>(sizeof(PlanList)));
}

void PlanListCloseOwned(PlanList* head) {
    PlanListDestroyItems(head);
    PlanListClose(head);
}
