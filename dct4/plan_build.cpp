#include "plan_build.h"

#include "plan_destroy.h"
#include "plan_factor.h"
#include "plan_gens.h"
#include "plan_precision.h"
#include "plan_tables.h"
#include "tqfgen.h"

namespace {

int32_t Log2(int32_t v) {
    int32_t k = 0;
    while (v > 1) { v >>= 1; ++k; }
    return k;
}

void Append(PlanList* list, void* object) { PlanListAppend(list, static_cast<PlanNode*>(object)); }

// Where a split reads and writes, as seen from its parent: the fold at the
// top, or the inner fold of an enclosing split.
struct SplitSource {
    int32_t lengthM, readTop, length, step, writeStep;
};
SplitSource SourceOf(const FoldStage* p) { return {p->lengthM, p->length, p->length, p->block, p->factor2}; }
SplitSource SourceOf(const SplitFold* p) { return {p->lengthM, p->readTop, p->length, p->wideStep, p->wideWrite}; }

template <class P, class Parent> int32_t BuildSplit(Parent* parent);

// A fold of kind 7 is split; kinds 1 to 6 are single kernels and end here.
template <class P, class Fold>
int32_t BuildFoldKind(Fold* fold) { return fold->kind == 7 ? BuildSplit<P>(fold) : tqfStsNoError; }

// A fold too long for one kernel: g subsequences folded to m' = m / g, then
// combined with twiddles and a DFT of length g.
template <class P, class Parent>
int32_t BuildSplit(Parent* parent) {
    PlanArena* arena = parent->node.arena;
    const SplitSource src = SourceOf(parent);

    SplitStage* split = PlanNew<SplitStage>(arena, PlanDestroySplitStage<P>, PlanActOf(&BuildSplit<P, Parent>));
    split->buffer = nullptr;
    split->built = 0;
    split->lengthM = src.lengthM;
    split->factor = 0;
    split->readTop = src.readTop;
    split->length = src.length;
    split->step = src.step;
    split->length2 = src.length;
    split->writeStep = src.writeStep;
    split->combine = PlanListNew(arena);
    split->inner = PlanListNew(arena);
    split->owned = PlanListNew(arena);
    Append(parent->owned, split);
    Append(parent->stage, split);

    split->built = 1;
    const int32_t m = split->lengthM;
    const int32_t g = PlanChooseFactor(m / 2);
    if (g < 0) return tqfStsBadSize;
    split->factor = g;

    SplitCombine* sc = PlanNew<SplitCombine>(arena, PlanDestroySplitCombine, PlanActOf(&PlanBuildSplitTable<P>));
    HalfStepGen* half = PlanNew<HalfStepGen>(arena, PlanDestroyNothing, PlanActOf(&PlanHalfStepValue<P>));
    half->length = m;
    half->factor = g;
    Append(split->owned, half);

    sc->owned = PlanListNew(arena);
    sc->table = nullptr;
    sc->klass = Log2(g);
    sc->factor = g;
    sc->length = split->length;
    sc->writeStep = split->writeStep;
    sc->outputStep = PlanMul(PlanMul(2, split->writeStep), g);
    sc->frequencies = m / (2 * g);
    sc->length2 = split->length;
    sc->half = m / 2;
    sc->last = m - 1;
    sc->writeStep2 = split->writeStep;
    sc->innerLength = m / g;
    sc->generator = half;
    Append(split->owned, sc);
    Append(split->combine, sc);
    PlanBuildSplitTable<P>(sc);

    SplitFold* fold = PlanNew<SplitFold>(arena, PlanDestroyFold<SplitFold>, PlanActOf(&BuildSplit<P, SplitFold>));
    fold->buffer = nullptr;
    fold->kind = 0;
    fold->lengthM = m / g;
    fold->readTop = split->readTop;
    fold->readTop2 = split->length;
    fold->wideStep = PlanMul(g, split->step);
    fold->step = split->step;
    fold->subsequences = g;
    fold->length = split->length;
    fold->wideWrite = PlanMul(g, split->writeStep);
    fold->writeStep = split->writeStep;
    fold->stage = PlanListNew(arena);
    fold->owned = PlanListNew(arena);
    Append(split->owned, fold);
    Append(split->inner, fold);

    fold->kind = PlanFoldKind(fold->lengthM);
    const int32_t status = BuildFoldKind<P>(fold);
    if (status != tqfStsNoError) return status;

    // Each split buffers the full plan length, at every depth.
    split->buffer = PlanAlloc(arena, static_cast<uint32_t>(PlanElementBytes<P>(split->length)));
    return tqfStsNoError;
}

// The output stage under its shell: rotations by psi, then the fixed
// real-output transform of length 2f per frequency.
template <class P>
int32_t BuildOutputShell(OutputShell* shell) {
    PlanArena* arena = shell->node.arena;
    const int32_t L = P::lanes;
    if (shell->frequencies % L != 0) {
        shell->built = 0;
        return tqfStsBadSize;
    }
    shell->built = 1;
    OutputStage* stage = PlanNew<OutputStage>(arena, PlanDestroyOutputStage, PlanActOf(&PlanBuildOutputTable<P>));
    LaneTwiddleGen* lanes = PlanNew<LaneTwiddleGen>(arena, PlanDestroyNothing, PlanActOf(&PlanLaneTwiddleValue<P>));
    lanes->columns = shell->block;
    lanes->blocks = shell->frequencies / L;
    lanes->inner = shell->generator;
    Append(shell->owned, lanes);

    stage->owned = PlanListNew(arena);
    stage->table = nullptr;
    stage->klass = 1 + Log2(shell->factor);
    stage->factor = shell->factor;
    stage->length = shell->length;
    stage->block = shell->block;
    stage->laneBlock = L * shell->block;
    stage->laneBlocks = shell->frequencies / L;
    stage->length2 = shell->length;
    stage->top = shell->top;
    stage->lengthM = shell->lengthM;
    stage->generator = lanes;
    Append(shell->owned, stage);
    Append(shell->stage, stage);
    PlanBuildOutputTable<P>(stage);
    return tqfStsNoError;
}

// The fold stage under its shell: one kernel of length m per group of L
// residues, or a split.
template <class P>
int32_t BuildFoldShell(FoldShell* shell) {
    PlanArena* arena = shell->node.arena;
    if (shell->factor % P::lanes != 0) {
        shell->built = 0;
        return tqfStsBadSize;
    }
    shell->built = 1;
    FoldStage* fold = PlanNew<FoldStage>(arena, PlanDestroyFold<FoldStage>, PlanActOf(&BuildSplit<P, FoldStage>));
    fold->buffer = nullptr;
    fold->kind = 0;
    fold->lengthM = shell->lengthM;
    fold->length = shell->length;
    fold->top = shell->top;
    fold->block = shell->block;
    fold->laneGroups = shell->factor / P::lanes;
    fold->length2 = shell->length2;
    fold->factor2 = shell->factor2;
    fold->stage = PlanListNew(arena);
    fold->owned = PlanListNew(arena);
    Append(shell->owned, fold);
    Append(shell->stage, fold);

    fold->kind = PlanFoldKind(fold->lengthM);
    return BuildFoldKind<P>(fold);
}

}  // namespace

int32_t PlanFoldKind(int32_t m) {
    switch (m) {
        case 2: return 1;
        case 4: return 2;
        case 8: return 3;
        case 16: return 4;
        case 32: return 5;
        case 64: return 6;
        default: return 7;
    }
}

template <class P>
int32_t PlanBuildRoot(PlanRoot* root) {
    PlanArena* arena = root->node.arena;
    const int32_t n = root->length;
    switch (n) {
        case 2: root->kind = 1; return tqfStsNoError;
        case 4: root->kind = 2; return tqfStsNoError;
        case 8: root->kind = 3; return tqfStsNoError;
        case 16: root->kind = 4; return tqfStsNoError;
        case 32: root->kind = 5; return tqfStsNoError;
        default: root->kind = 6;
    }
    const int32_t f = PlanChooseFactor(n / 2);
    if (f < 0) return tqfStsBadSize;
    root->factor = f;
    const int32_t q = n / (2 * f);
    const int32_t m = n / f;

    OutputShell* out = PlanNew<OutputShell>(arena, PlanDestroyShell<OutputShell>, PlanActOf(&BuildOutputShell<P>));
    TwiddleGen* twiddle = PlanNew<TwiddleGen>(arena, PlanDestroyNothing, PlanActOf(&PlanTwiddleValue<P>));
    twiddle->columns = 2 * f;
    twiddle->denominator = PlanMul(8, n);
    twiddle->rows = q;
    twiddle->factor = f;
    twiddle->rowLength = 2 * f;
    Append(root->owned, twiddle);

    out->buffer = nullptr;
    out->built = 0;
    out->factor = f;
    out->length = n;
    out->block = 2 * f;
    out->frequencies = q;
    out->length2 = n;
    out->top = PlanAdd(PlanMul(2, n), -1);
    out->lengthM = m;
    out->generator = twiddle;
    out->stage = PlanListNew(arena);
    out->owned = PlanListNew(arena);
    Append(root->owned, out);
    Append(root->output, out);
    int32_t status = BuildOutputShell<P>(out);
    if (status != tqfStsNoError) return status;

    FoldShell* fold = PlanNew<FoldShell>(arena, PlanDestroyShell<FoldShell>, PlanActOf(&BuildFoldShell<P>));
    fold->buffer = nullptr;
    fold->built = 0;
    fold->lengthM = m;
    fold->length = n;
    fold->top = out->top;
    fold->block = 2 * f;
    fold->factor = f;
    fold->length2 = n;
    fold->factor2 = f;
    fold->stage = PlanListNew(arena);
    fold->owned = PlanListNew(arena);
    Append(root->owned, fold);
    Append(root->fold, fold);
    status = BuildFoldShell<P>(fold);
    if (status != tqfStsNoError) return status;

    // Last, so that every child lies below the work buffer in the block.
    root->buffer = PlanAlloc(arena, static_cast<uint32_t>(PlanElementBytes<P>(n)));
    return tqfStsNoError;
}

template int32_t PlanBuildRoot<PlanF32>(PlanRoot*);
template int32_t PlanBuildRoot<PlanF64>(PlanRoot*);
