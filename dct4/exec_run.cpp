// The transform call: checks, then the root's straight-line kernel or the two
// stages of the tree. The tree only selects kernels and gives them loop
// counts and strides; each kernel is a body for one fixed shape.
#include "exec_combine.h"
#include "exec_fold.h"
#include "exec_output.h"
#include "exec_short.h"
#include "plan_classes.h"
#include "tqfgen.h"

#include <cstdint>

namespace dct4x {
namespace {

// A 64-byte line holds four lane groups in both precisions.
constexpr int kLineGroups = 4;
template <class X> using Wide = LanesWide<X, kLineGroups>;

// Writes of at least this many bytes bypass the caches (streaming stores):
// a pass over a buffer that large has pushed its first lines out of the
// second-level cache by the time the next pass reads them, and a cached
// store would first read each line in.
constexpr int64_t kStreamBytes = int64_t(4) << 20;
// The same for dst, which nothing reads again during the call.
constexpr int64_t kStreamDstBytes = int64_t(1) << 20;

// Lane groups that one call of a split kernel takes side by side: up to 16
// (256 bytes of every row it touches, which the memory system serves far
// better than single lines across dozens of rows), and at least a line's.
inline int RowGroups(int groups) {
    for (int u = 16; u >= kLineGroups; u /= 2)
        if (groups % u == 0) return u;
    return 1;
}

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

// A split stage runs level by level rather than subtree by subtree: first
// every subsequence of the innermost level is folded, then each level's
// combine runs once over its whole buffer, innermost first. The kernel calls
// and their data are those of the depth-first order, so are the results.
//
// Residue r and the subsequence indices j1 (outermost split), j2, ... make
// one offset: a call reads from L r + 2f J and writes from L r + f J, with
// J = j1 + g1 (j2 + g2 (...)). With r running fastest, then J, each pass
// walks the source and the buffers as a few dozen sequential streams, where
// the tree's own order jumps by power-of-two strides that keep little cached.

// The innermost folds: for each J < count, every residue, U lane groups per
// call.
template <class X, int M, int U>
void LeafLoop(const FoldStage* st, const SplitFold* fold, const typename X::T* src, typename X::T* buf,
              int count) {
    constexpr int L = X::L;
    for (int J = 0; J < count; ++J) {
        const int f = J * st->block, b = st->top - J * st->block, wr = J * st->factor2;
        for (int r = 0; r < st->laneGroups; r += U)
            FoldLines<X, M, U>(src, f + L * r, b - L * r, fold->wideStep, buf, wr + L * r, fold->wideWrite);
    }
}

template <class X, int U>
void LeafPass(const FoldStage* st, const SplitFold* fold, const typename X::T* src, typename X::T* buf,
              int count) {
    switch (fold->kind) {
        case 1: LeafLoop<X, 2, U>(st, fold, src, buf, count); break;
        case 2: LeafLoop<X, 4, U>(st, fold, src, buf, count); break;
        case 3: LeafLoop<X, 8, U>(st, fold, src, buf, count); break;
        case 4: LeafLoop<X, 16, U>(st, fold, src, buf, count); break;
        case 5: LeafLoop<X, 32, U>(st, fold, src, buf, count); break;
        case 6: LeafLoop<X, 64, U>(st, fold, src, buf, count); break;
        default: break;
    }
}

template <class X>
void LeafPass(const FoldStage* st, const SplitFold* fold, const typename X::T* src, typename X::T* buf,
              int count) {
    switch (RowGroups(st->laneGroups)) {
        case 16: LeafPass<X, 16>(st, fold, src, buf, count); break;
        case 8: LeafPass<X, 8>(st, fold, src, buf, count); break;
        case 4: LeafPass<X, 4>(st, fold, src, buf, count); break;
        default: LeafPass<X, 1>(st, fold, src, buf, count); break;
    }
}

// The combine over `width` neighbouring residues of every subsequence above:
// for each frequency b, the whole width, U lane groups per call.
template <class X, int G, int U>
void CombineLoop(const SplitCombine* sc, const typename X::T* buf, typename X::T* dst, int width) {
    const typename X::T* table = static_cast<const typename X::T*>(sc->table);
    const int ws = sc->writeStep, q = sc->frequencies, inner = sc->innerLength;
    constexpr int step = U * X::L;
    for (int b = 0; b < q; ++b)
        for (int w = 0; w < width; w += step) {
            // The next call reads from the next lanes, or from the start of
            // the next frequency's rows.
            const int next = w + step < width ? step : b + 1 < q ? 2 * G * ws - width + step : 0;
            CombineLines<X, G, U>(buf, table, dst, w, ws, b, q, inner, next);
        }
}

template <class X, int U>
void Combine(const SplitCombine* sc, const typename X::T* buf, typename X::T* dst, int width) {
    switch (sc->klass) {
        case 1: CombineLoop<X, 2, U>(sc, buf, dst, width); break;
        case 2: CombineLoop<X, 4, U>(sc, buf, dst, width); break;
        case 3: CombineLoop<X, 8, U>(sc, buf, dst, width); break;
        case 4: CombineLoop<X, 16, U>(sc, buf, dst, width); break;
        case 5: CombineLoop<X, 32, U>(sc, buf, dst, width); break;
        default: break;
    }
}

template <class X>
void Combine(const SplitCombine* sc, const typename X::T* buf, typename X::T* dst, int width) {
    switch (RowGroups(width / X::L)) {
        case 16: Combine<X, 16>(sc, buf, dst, width); break;
        case 8: Combine<X, 8>(sc, buf, dst, width); break;
        case 4: Combine<X, 4>(sc, buf, dst, width); break;
        default: Combine<X, 1>(sc, buf, dst, width); break;
    }
}

// One split level: everything below it, then its combine into dst. `width`
// is the number of residues times the subsequences of the levels above;
// `stream` selects cache-bypassing writes of the buffers.
template <class X>
void RunSplit(const FoldStage* st, const SplitStage* split, const typename X::T* src, typename X::T* dst,
              int width, bool stream) {
    if (split->built != 1) return;
    typedef typename X::T T;
    T* buf = static_cast<T*>(split->buffer);
    // Streaming stores only ever write whole lines.
    stream = stream && reinterpret_cast<uintptr_t>(buf) % 64 == 0 && reinterpret_cast<uintptr_t>(dst) % 64 == 0;
    const SplitFold* fold = reinterpret_cast<const SplitFold*>(split->inner->item);
    const int below = width * fold->subsequences;
    if (fold->kind == 7) {
        RunSplit<X>(st, reinterpret_cast<const SplitStage*>(fold->stage->item), src, buf, below, stream);
    } else {
        const int count = below / (X::L * st->laneGroups);
        if (stream)
            LeafPass<LanesStream<X>>(st, fold, src, buf, count);
        else
            LeafPass<X>(st, fold, src, buf, count);
    }
    const SplitCombine* sc = reinterpret_cast<const SplitCombine*>(split->combine->item);
    if (stream)
        Combine<LanesStream<X>>(sc, buf, dst, width);
    else
        Combine<X>(sc, buf, dst, width);
    if (stream) _mm_sfence();
}

template <class X>
void RunFold(const FoldStage* st, const typename X::T* src, typename X::T* buf) {
    constexpr int L = X::L;
    if (st->kind == 7) {
        const bool stream = static_cast<int64_t>(st->length) * static_cast<int64_t>(sizeof(typename X::T)) >= kStreamBytes;
        RunSplit<X>(st, reinterpret_cast<const SplitStage*>(st->stage->item), src, buf, L * st->laneGroups, stream);
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
        // Whole, aligned lines of a large dst go past the caches; the
        // descending groups end below top + 1 - n, which must sit on a line
        // as well (it does not in plans of length 2^k + 1).
        if (static_cast<int64_t>(st->length) * static_cast<int64_t>(sizeof(typename X::T)) >= kStreamDstBytes &&
            reinterpret_cast<uintptr_t>(dst) % 64 == 0 &&
            (static_cast<int64_t>(st->top) + 1) * static_cast<int64_t>(sizeof(typename X::T)) % 64 == 0) {
            for (int A = 0; A < st->laneBlocks; A += kLineGroups)
                OutputBlocksWide<X, LanesWide<LanesStream<X>, kLineGroups>, F>(buf, table, dst, A, st->lengthM,
                                                                              st->top);
            _mm_sfence();
            return;
        }
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
