// The destroy functions of the plan classes. Each releases what its object
// owns (tables, buffers, lists and the objects on its owned list), never the
// object's own storage, in a fixed order. Lists are walked forward, so a plan
// comes down in creation order; release only counts bytes, so that is safe.
#pragma once

#include "plan_classes.h"

// OutputShell, FoldShell.
template <class Shell> void PlanDestroyShell(PlanNode* node);
void PlanDestroyOutputStage(PlanNode* node);
// FoldStage, SplitFold.
template <class Fold> void PlanDestroyFold(PlanNode* node);
template <class P> void PlanDestroySplitStage(PlanNode* node);
void PlanDestroySplitCombine(PlanNode* node);
// The root's teardown: buffer by kind, output list, fold list, owned list.
template <class P> void PlanDestroyRoot(PlanNode* node);
