// The transform call: checks, then the root's straight-line kernel or the two
// stages of the tree. The tree only selects kernels and gives them loop
// counts and strides; each kernel is a body for one fixed shape.
#include "exec_combine.h"
#include "exec_fold.h"
#include "exec_output.h"
#include "exec_short.h"
#include "plan_classes.h"
#include "tqfgen.h"

namespace dct4x {
namespace {

// A 64-byte line holds four lane groups in both precisions.
constexpr int kLineGroups = 4;
template <class X> using Wide = LanesWide<X, kLineGroups>;

template <class X> void RunSplit(const SplitStage* split, const typename X::T* src, typename X::T* dst,
                                 int fwd, int bwd, int wr, int groups);

// One fold kernel of kind 1-6 (m = 2 to 64) for one group of L residues.
template <class X>
void FoldByKind(int kind, const typename X::T* src, int fwd, int bwd, int S, typename X::T* buf, int wr,
                int ws) {
    switch (kind) {
        case 1: FoldGroup<X, 2>(src, fwd, bwd, S, buf, wr, ws); break;
        case 2: FoldGroup<X, 4>(src, fwd, bwd, S, buf, wr, ws); break;
        case 3: FoldGroup<X, 8>(src, fwd, bwd, S, buf, wr, ws); break;
        case 4: FoldGroup<X, 16>(src, fwd, bwd, S, buf, wr, ws); break;
        case 5: FoldGroup<X, 32>(src, fwd, bwd, S, buf, wr, ws); break;
        case 6: FoldGroup<X, 64>(src, fwd, bwd, S, buf, wr, ws); break;
        default: break;
    }
}

template <class X, int G>
void CombineLoop(const SplitCombine* sc, const typename X::T* buf, typename X::T* dst, int wr, int groups) {
    const typename X::T* table = static_cast<const typename X::T*>(sc->table);
    const int ws = sc->writeStep, q = sc->frequencies, inner = sc->innerLength;
    for (int b = 0; b < q; ++b)
        for (int u = 0; u < groups; ++u) CombineOne<X, G>(buf, table, dst, wr + X::L * u, ws, b, q, inner);
}

template <class X>
void Combine(const SplitCombine* sc, const typename X::T* buf, typename X::T* dst, int wr, int groups) {
    switch (sc->klass) {
        case 1: CombineLoop<X, 2>(sc, buf, dst, wr, groups); break;
        case 2: CombineLoop<X, 4>(sc, buf, dst, wr, groups); break;
        case 3: CombineLoop<X, 8>(sc, buf, dst, wr, groups); break;
        case 4: CombineLoop<X, 16>(sc, buf, dst, wr, groups); break;
        case 5: CombineLoop<X, 32>(sc, buf, dst, wr, groups); break;
        default: break;
    }
}

// Inner fold of every subsequence into the split's buffer, then the combine
// from there into dst. `groups` neighbouring lane groups of residues run
// together (a cache line of each strided read and write instead of a quarter
// of one); each group's work is that of its own call.
template <class X>
void RunSplit(const SplitStage* split, const typename X::T* src, typename X::T* dst, int fwd, int bwd, int wr,
              int groups) {
    if (split->built != 1) return;
    typedef typename X::T T;
    constexpr int L = X::L;
    T* buf = static_cast<T*>(split->buffer);
    const SplitFold* fold = reinterpret_cast<const SplitFold*>(split->inner->item);
    for (int j = 0; j < fold->subsequences; ++j) {
        const int f = fwd + j * fold->step, b = bwd - j * fold->step, w = wr + j * fold->writeStep;
        if (fold->kind == 7)
            RunSplit<X>(reinterpret_cast<const SplitStage*>(fold->stage->item), src, buf, f, b, w, groups);
        else if (groups == kLineGroups)
            FoldByKind<Wide<X>>(fold->kind, src, f, b, fold->wideStep, buf, w, fold->wideWrite);
        else
            for (int u = 0; u < groups; ++u)
                FoldByKind<X>(fold->kind, src, f + L * u, b - L * u, fold->wideStep, buf, w + L * u,
                              fold->wideWrite);
    }
    const SplitCombine* sc = reinterpret_cast<const SplitCombine*>(split->combine->item);
    if (groups == kLineGroups)
        Combine<Wide<X>>(sc, buf, dst, wr, 1);
    else
        Combine<X>(sc, buf, dst, wr, groups);
}

// Lane groups that share a 64-byte line of the source run through a split
// together.
template <class X>
int GroupsPerLine(int laneGroups) {
    static_assert(64 / (X::L * sizeof(typename X::T)) == kLineGroups, "groups per line");
    return laneGroups % kLineGroups == 0 ? kLineGroups : 1;
}

template <class X>
void RunFold(const FoldStage* st, const typename X::T* src, typename X::T* buf) {
    constexpr int L = X::L;
    if (st->kind == 7) {
        const SplitStage* split = reinterpret_cast<const SplitStage*>(st->stage->item);
        const int groups = GroupsPerLine<X>(st->laneGroups);
        for (int r = 0; r < st->laneGroups; r += groups)
            RunSplit<X>(split, src, buf, L * r, st->top - L * r, L * r, groups);
        return;
    }
    for (int r = 0; r < st->laneGroups; ++r)
        FoldByKind<X>(st->kind, src, L * r, st->top - L * r, st->block, buf, L * r, st->factor2);
}

template <class X, int F>
void OutputLoop(const OutputStage* st, const typename X::T* buf, typename X::T* dst) {
    const typename X::T* table = static_cast<const typename X::T*>(st->table);
    // Once the groups of dst lie 256 elements or more apart, the 2f of them
    // that one block writes no longer stay in the first-level cache until the
    // next block writes their neighbours: then blocks store together.
    if (st->lengthM >= 256 && st->laneBlocks % kLineGroups == 0) {
        for (int A = 0; A < st->laneBlocks; A += kLineGroups)
            OutputBlocksWide<X, Wide<X>, F>(buf, table, dst, A, st->lengthM, st->top);
        return;
    }
    for (int A = 0; A < st->laneBlocks; ++A) OutputBlock<X, F>(buf, table, dst, A, st->lengthM, st->top);
}

template <class X>
void RunOutput(const OutputStage* st, const typename X::T* buf, typename X::T* dst) {
    switch (st->klass) {
        case 1: OutputLoop<X, 1>(st, buf, dst); break;
        case 2: OutputLoop<X, 2>(st, buf, dst); break;
        case 3: OutputLoop<X, 4>(st, buf, dst); break;
        case 4: OutputLoop<X, 8>(st, buf, dst); break;
        case 5: OutputLoop<X, 16>(st, buf, dst); break;
        case 6: OutputLoop<X, 32>(st, buf, dst); break;
        default: break;
    }
}

template <class X>
tqfStatus Transform(const typename X::T* src, typename X::T* dst, const PlanRoot* root) {
    typedef typename X::T T;
    if (!root || !src || !dst) return tqfStsNullPointer;
    if (root->kind >= 1 && root->kind <= 5) {
        ShortKernel<T>(root->kind, src, dst);
        return tqfStsNoError;
    }
    if (root->kind != 6) return tqfStsBadPlan;
    T* buf = static_cast<T*>(root->buffer);
    const FoldShell* fold = reinterpret_cast<const FoldShell*>(root->fold->item);
    if (fold->built == 1) RunFold<X>(reinterpret_cast<const FoldStage*>(fold->stage->item), src, buf);
    const OutputShell* out = reinterpret_cast<const OutputShell*>(root->output->item);
    if (out->built == 1) RunOutput<X>(reinterpret_cast<const OutputStage*>(out->stage->item), buf, dst);
    return tqfStsNoError;
}

}  // namespace
}  // namespace dct4x

extern "C" {

TQFAPI tqfStatus tqfgDCT4_32f(const tqf32f* src, tqf32f* dst, const tqfgDCT4Spec_32f* plan) {
    return dct4x::Transform<LanesF32>(src, dst, plan);
}
TQFAPI tqfStatus tqfgDCT4_64f(const tqf64f* src, tqf64f* dst, const tqfgDCT4Spec_64f* plan) {
    return dct4x::Transform<LanesF64>(src, dst, plan);
}

}  // extern "C"
