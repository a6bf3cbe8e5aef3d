// The exported life cycle of a DCT-IV plan: size, build in a caller's block,
// build in an allocated block, take down.
#include "plan_build.h"
#include "plan_destroy.h"
#include "plan_precision.h"
#include "plan_size.h"
#include "tqfcore.h"
#include "tqfgen.h"

namespace {

template <class P>
tqfStatus Init(typename P::Handle** handle, int length, void* block) {
    if (!handle || !block) return tqfStsNullPointer;
    PlanArena* arena = PlanArenaOpen(block);
    PlanRoot* root = static_cast<PlanRoot*>(PlanAlloc(arena, sizeof(typename P::Handle)));
    root->node.size = static_cast<int32_t>(sizeof(typename P::Handle));
    root->node.arena = arena;
    root->owned = root->output = root->fold = nullptr;
    root->buffer = nullptr;
    root->kind = 0;
    root->factor = 0;
    root->length = length;
    root->output = PlanListNew(arena);
    root->fold = PlanListNew(arena);
    root->owned = PlanListNew(arena);
    root->node.destroy = PlanDestroyRoot<P>;
    root->node.act = PlanActOf(&PlanBuildRoot<P>);

    const int32_t status = PlanBuildRoot<P>(root);
    if (status == tqfStsNoError) {
        *handle = static_cast<typename P::Handle*>(root);
        return tqfStsNoError;
    }
    // Unwind through the destroy protocol; the block stays the caller's and
    // the handle keeps what it held.
    root->node.destroy(&root->node);
    PlanRelease(arena, root, static_cast<uint32_t>(root->node.size));
    return status;
}

template <class P>
tqfStatus InitAlloc(typename P::Handle** handle, int length) {
    if (!handle) return tqfStsNullPointer;
    int32_t size = 0;
    const tqfStatus sized = PlanGetSize<P>(length, &size);
    if (sized != tqfStsNoError) return sized;
    // Not tested: a null block fails in Init as a null pointer.
    void* block = tqfMalloc(size);
    const tqfStatus status = Init<P>(handle, length, block);
    if (status != tqfStsNoError) tqfFree(block);
    return status;
}

template <class P>
tqfStatus Free(typename P::Handle* plan) {
    if (!plan) return tqfStsNullPointer;
    PlanNode* node = &plan->node;
    node->destroy(node);
    PlanRelease(node->arena, plan, static_cast<uint32_t>(node->size));
    // The arena's address is the block's first byte.
    tqfFree(node->arena);
    return tqfStsNoError;
}

}  // namespace

extern "C" {

TQFAPI tqfStatus tqfgDCT4GetSize_32f(int length, int* size) { return PlanGetSize<PlanF32>(length, size); }
TQFAPI tqfStatus tqfgDCT4GetSize_64f(int length, int* size) { return PlanGetSize<PlanF64>(length, size); }

TQFAPI tqfStatus tqfgDCT4Init_32f(tqfgDCT4Spec_32f** plan, int length, void* memory) {
    return Init<PlanF32>(plan, length, memory);
}
TQFAPI tqfStatus tqfgDCT4Init_64f(tqfgDCT4Spec_64f** plan, int length, void* memory) {
    return Init<PlanF64>(plan, length, memory);
}

TQFAPI tqfStatus tqfgDCT4InitAlloc_32f(tqfgDCT4Spec_32f** plan, int length) {
    return InitAlloc<PlanF32>(plan, length);
}
TQFAPI tqfStatus tqfgDCT4InitAlloc_64f(tqfgDCT4Spec_64f** plan, int length) {
    return InitAlloc<PlanF64>(plan, length);
}

TQFAPI tqfStatus tqfgDCT4Free_32f(tqfgDCT4Spec_32f* plan) { return Free<PlanF32>(plan); }
TQFAPI tqfStatus tqfgDCT4Free_64f(tqfgDCT4Spec_64f* plan) { return Free<PlanF64>(plan); }

}  // extern "C"
