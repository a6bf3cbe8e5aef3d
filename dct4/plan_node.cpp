#include "plan_node.h"

void* PlanNewNode(PlanArena* arena, int32_t size, PlanDestroyFn destroy, PlanActFn act) {
    PlanNode* node = static_cast<PlanNode*>(PlanAlloc(arena, static_cast<uint32_t>(size)));
    node->destroy = destroy;
    node->size = size;
    node->act = act;
    node->arena = arena;
    return node;
}
