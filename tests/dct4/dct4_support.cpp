#include "dct4_support.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace dct4test {

namespace {

int ListLength(const PlanList* head) {
    int k = 0;
    for (const PlanList* c = head; c; c = c->next)
        if (c->item) ++k;
    return k;
}

template <class C>
const C* ItemAt(const PlanList* head, int index) {
    const PlanList* c = head;
    for (int i = 0; i < index && c; ++i) c = c->next;
    return c ? reinterpret_cast<const C*>(c->item) : nullptr;
}

struct Walker {
    const Precision& p;
    PlanShape shape;
    int32_t n;

    void Add(const void* at, uint32_t bytes, const std::string& what) { shape.pieces.push_back({at, bytes, what}); }
    void Head(const PlanList* l, const std::string& what) { Add(l, sizeof(PlanList), what + " head"); }
    // The second and third cells of a list, that appends beyond the head made.
    void Cell(const PlanList* l, int index, const std::string& what) {
        const PlanList* c = l;
        for (int i = 0; i < index && c; ++i) c = c->next;
        ASSERT_NE(c, nullptr) << what;
        Add(c, sizeof(PlanList), what + " cell " + std::to_string(index));
    }

    void Split(const SplitStage* ss, int depth) {
        ++shape.splits;
        const std::string tag = "split" + std::to_string(depth);
        Add(ss, sizeof(SplitStage), tag);
        Head(ss->combine, tag + ".combine");
        Head(ss->inner, tag + ".inner");
        Head(ss->owned, tag + ".owned");
        EXPECT_EQ(ListLength(ss->owned), 3);
        EXPECT_EQ(ListLength(ss->combine), 1);
        EXPECT_EQ(ListLength(ss->inner), 1);
        const HalfStepGen* hs = ItemAt<HalfStepGen>(ss->owned, 0);
        const SplitCombine* sc = ItemAt<SplitCombine>(ss->combine, 0);
        const SplitFold* sf = ItemAt<SplitFold>(ss->inner, 0);
        EXPECT_EQ(ItemAt<SplitCombine>(ss->owned, 1), sc);
        EXPECT_EQ(ItemAt<SplitFold>(ss->owned, 2), sf);
        EXPECT_EQ(ListLength(sc->owned), 0);
        Add(sc, sizeof(SplitCombine), tag + ".combine");
        Add(hs, sizeof(HalfStepGen), tag + ".halfstep");
        Head(sc->owned, tag + ".combine.owned");
        Cell(ss->owned, 1, tag + ".owned");
        const int32_t m = ss->lengthM, g = ss->factor;
        Add(sc->table, static_cast<uint32_t>(m / (2 * g)) * 32u * static_cast<uint32_t>(g - 1), tag + ".table");
        Add(sf, sizeof(SplitFold), tag + ".fold");
        Head(sf->stage, tag + ".fold.stage");
        Head(sf->owned, tag + ".fold.owned");
        Cell(ss->owned, 2, tag + ".owned");
        if (sf->kind == 7) {
            EXPECT_EQ(ListLength(sf->owned), 1);
            Split(ItemAt<SplitStage>(sf->stage, 0), depth + 1);
        } else {
            EXPECT_EQ(ListLength(sf->owned), 0);
        }
        Add(ss->buffer, static_cast<uint32_t>(n) * p.width, tag + ".buffer");
    }

    void Root(const PlanRoot* r) {
        n = r->length;
        Add(r, sizeof(PlanRoot), "root");
        Head(r->output, "root.output");
        Head(r->fold, "root.fold");
        Head(r->owned, "root.owned");
        if (r->kind >= 1 && r->kind <= 5) {
            EXPECT_EQ(ListLength(r->owned) + ListLength(r->output) + ListLength(r->fold), 0);
            return;
        }
        EXPECT_EQ(ListLength(r->owned), 3);
        const TwiddleGen* tg = ItemAt<TwiddleGen>(r->owned, 0);
        const OutputShell* osh = ItemAt<OutputShell>(r->output, 0);
        const FoldShell* fsh = ItemAt<FoldShell>(r->fold, 0);
        EXPECT_EQ(ItemAt<OutputShell>(r->owned, 1), osh);
        EXPECT_EQ(ItemAt<FoldShell>(r->owned, 2), fsh);
        Add(osh, sizeof(OutputShell), "outshell");
        Add(tg, sizeof(TwiddleGen), "twiddle");
        Head(osh->stage, "outshell.stage");
        Head(osh->owned, "outshell.owned");
        Cell(r->owned, 1, "root.owned");
        ASSERT_EQ(osh->built, 1);
        const OutputStage* ost = ItemAt<OutputStage>(osh->stage, 0);
        const LaneTwiddleGen* ltg = ItemAt<LaneTwiddleGen>(osh->owned, 0);
        EXPECT_EQ(ItemAt<OutputStage>(osh->owned, 1), ost);
        EXPECT_EQ(ListLength(ost->owned), 0);
        Add(ost, sizeof(OutputStage), "outstage");
        Add(ltg, sizeof(LaneTwiddleGen), "lanetwiddle");
        Head(ost->owned, "outstage.owned");
        Cell(osh->owned, 1, "outshell.owned");
        const int32_t f = r->factor, q = n / (2 * f);
        Add(ost->table, static_cast<uint32_t>(q / p.lanes) * 32u * static_cast<uint32_t>(f), "outstage.table");
        Add(fsh, sizeof(FoldShell), "foldshell");
        Head(fsh->stage, "foldshell.stage");
        Head(fsh->owned, "foldshell.owned");
        Cell(r->owned, 2, "root.owned");
        ASSERT_EQ(fsh->built, 1);
        EXPECT_EQ(ListLength(fsh->owned), 1);
        const FoldStage* fs = ItemAt<FoldStage>(fsh->stage, 0);
        Add(fs, sizeof(FoldStage), "foldstage");
        Head(fs->stage, "foldstage.stage");
        Head(fs->owned, "foldstage.owned");
        if (fs->kind == 7) Split(ItemAt<SplitStage>(fs->stage, 0), 1);
        Add(r->buffer, static_cast<uint32_t>(n) * p.width, "root.buffer");
    }
};

}  // namespace

PlanShape WalkPlan(const PlanRoot* root, const Precision& p) {
    Walker w{p, {}, 0};
    w.Root(root);
    return w.shape;
}

// The handle types are the root under public names; the wrappers convert.
#define DCT4_PRECISION(FN, SUFFIX, LANES, WIDTH)                                                  \
    const Precision& FN() {                                                                      \
        typedef tqfgDCT4Spec_##SUFFIX Handle;                                                      \
        static const Precision p{                                                                \
            #SUFFIX, LANES, WIDTH, tqfgDCT4GetSize_##SUFFIX,                                     \
            [](PlanRoot** h, int n, void* b) {                                                   \
                return tqfgDCT4Init_##SUFFIX(reinterpret_cast<Handle**>(h), n, b);                 \
            },                                                                                   \
            [](PlanRoot** h, int n) { return tqfgDCT4InitAlloc_##SUFFIX(reinterpret_cast<Handle**>(h), n); }, \
            [](PlanRoot* r) { return tqfgDCT4Free_##SUFFIX(static_cast<Handle*>(r)); }};          \
        return p;                                                                                \
    }
DCT4_PRECISION(F32, 32f, 4, 4)
DCT4_PRECISION(F64, 64f, 2, 8)

}  // namespace dct4test
