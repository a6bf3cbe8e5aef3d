#include "plan_destroy.h"

#include "plan_precision.h"
#include "plan_tables.h"

template <class Shell>
void PlanDestroyShell(PlanNode* node) {
    Shell* shell = reinterpret_cast<Shell*>(node);
    // A shell has no buffer, but goes through the same release (of 0 bytes).
    if (shell->built == 1) PlanRelease(node->arena, nullptr, 0);
    PlanListClose(shell->stage);
    PlanListCloseOwned(shell->owned);
}

void PlanDestroyOutputStage(PlanNode* node) {
    OutputStage* stage = reinterpret_cast<OutputStage*>(node);
    if (stage->klass >= 1 && stage->klass <= 6)
        PlanRelease(node->arena, stage->table,
                    static_cast<uint32_t>(PlanOutputTableBytes(stage->laneBlocks, stage->factor)));
    PlanListCloseOwned(stage->owned);
}

template <class Fold>
void PlanDestroyFold(PlanNode* node) {
    Fold* fold = reinterpret_cast<Fold*>(node);
    if (fold->kind >= 1 && fold->kind <= 7) PlanRelease(node->arena, nullptr, 0);
    PlanListClose(fold->stage);
    PlanListCloseOwned(fold->owned);
}

template <class P>
void PlanDestroySplitStage(PlanNode* node) {
    SplitStage* split = reinterpret_cast<SplitStage*>(node);
    if (split->built == 1)
        PlanRelease(node->arena, split->buffer, static_cast<uint32_t>(PlanElementBytes<P>(split->length)));
    PlanListClose(split->combine);
    PlanListClose(split->inner);
    PlanListCloseOwned(split->owned);
}

void PlanDestroySplitCombine(PlanNode* node) {
    SplitCombine* sc = reinterpret_cast<SplitCombine*>(node);
    if (sc->klass >= 1 && sc->klass <= 5)
        PlanRelease(node->arena, sc->table,
                    static_cast<uint32_t>(PlanSplitTableBytes(sc->frequencies, sc->factor)));
    PlanListCloseOwned(sc->owned);
}

template <class P>
void PlanDestroyRoot(PlanNode* node) {
    PlanRoot* root = reinterpret_cast<PlanRoot*>(node);
    if (root->kind >= 1 && root->kind <= 5)
        PlanRelease(node->arena, root->buffer, 0);
    else if (root->kind == 6)
        PlanRelease(node->arena, root->buffer, static_cast<uint32_t>(PlanElementBytes<P>(root->length)));
    PlanListClose(root->output);
    PlanListClose(root->fold);
    PlanListCloseOwned(root->owned);
}

template void PlanDestroyShell<OutputShell>(PlanNode*);
template void PlanDestroyShell<FoldShell>(PlanNode*);
template void PlanDestroyFold<FoldStage>(PlanNode*);
template void PlanDestroyFold<SplitFold>(PlanNode*);
template void PlanDestroySplitStage<PlanF32>(PlanNode*);
template void PlanDestroySplitStage<PlanF64>(PlanNode*);
template void PlanDestroyRoot<PlanF32>(PlanNode*);
template void PlanDestroyRoot<PlanF64>(PlanNode*);
