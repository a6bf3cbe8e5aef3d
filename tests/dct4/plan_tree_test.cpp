// The tree that Init builds: its shape, its fields, where it lies in the block
// and how it comes down.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "dct4_support.h"
#include "guarded.h"

namespace {

using dct4test::F32;
using dct4test::F64;
using dct4test::Is32Bit;
using dct4test::PlanShape;
using dct4test::Precision;
using dct4test::Round32;
using tqftest::GuardedBuffer;

struct Built {
    std::unique_ptr<GuardedBuffer> block;
    PlanRoot* root = nullptr;
    int size = 0;
    unsigned char* start() { return block->bytes(); }
    unsigned char* cursor() { return reinterpret_cast<PlanArena*>(start())->cursor; }
};

// A plan in a block of exactly GetSize bytes, `offset` bytes past a 64-aligned address.
Built Build(const Precision& p, int n, size_t offset) {
    Built b;
    EXPECT_EQ(p.getSize(n, &b.size), tqfStsNoError) << n;
    b.block.reset(new GuardedBuffer(static_cast<size_t>(b.size), offset));
    EXPECT_EQ(p.init(&b.root, n, b.start()), tqfStsNoError) << n;
    return b;
}

template <class C>
C* First(PlanList* list) { return reinterpret_cast<C*>(PlanListItem(list, 0)); }

TEST(PlanTree, ClassLayoutsOnI386) {
    if (!Is32Bit()) GTEST_SKIP() << "the fixed sizes are those of the 32-bit target";
    const struct { size_t size, charge; const char* name; } rows[] = {
        {sizeof(tqfgDCT4Spec_32f), 64, "root 32f"}, {sizeof(tqfgDCT4Spec_64f), 64, "root 64f"},
        {sizeof(TwiddleGen), 64, "TwiddleGen"}, {sizeof(LaneTwiddleGen), 32, "LaneTwiddleGen"},
        {sizeof(HalfStepGen), 32, "HalfStepGen"}, {sizeof(OutputShell), 64, "OutputShell"},
        {sizeof(OutputStage), 64, "OutputStage"}, {sizeof(FoldShell), 64, "FoldShell"},
        {sizeof(FoldStage), 64, "FoldStage"}, {sizeof(SplitStage), 64, "SplitStage"},
        {sizeof(SplitCombine), 96, "SplitCombine"}, {sizeof(SplitFold), 96, "SplitFold"},
        {sizeof(PlanList), 32, "PlanList"}};
    const size_t sizes[] = {44, 44, 36, 28, 24, 64, 64, 60, 60, 64, 72, 68, 12};
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        EXPECT_EQ(rows[i].size, sizes[i]) << rows[i].name;
        EXPECT_EQ(Round32(rows[i].size), rows[i].charge) << rows[i].name;
    }
    // The header, then the fields in their order.
    EXPECT_EQ(offsetof(PlanNode, size), 4u);
    EXPECT_EQ(offsetof(PlanNode, act), 8u);
    EXPECT_EQ(offsetof(PlanNode, arena), 12u);
    EXPECT_EQ(offsetof(PlanRoot, owned), 16u);
    EXPECT_EQ(offsetof(PlanRoot, length), 40u);
    EXPECT_EQ(offsetof(OutputShell, generator), 60u);
    EXPECT_EQ(offsetof(OutputStage, generator), 60u);
    EXPECT_EQ(offsetof(FoldShell, factor2), 56u);
    EXPECT_EQ(offsetof(FoldStage, laneGroups), 48u);
    EXPECT_EQ(offsetof(SplitStage, writeStep), 60u);
    EXPECT_EQ(offsetof(SplitCombine, generator), 68u);
    EXPECT_EQ(offsetof(SplitFold, writeStep), 64u);
}

// Every object stores the size it was allocated with, and all share the arena.
void CheckHeaders(const Built& b) {
    PlanRoot* r = b.root;
    EXPECT_EQ(r->node.size, static_cast<int32_t>(sizeof(PlanRoot)));
    EXPECT_EQ(static_cast<void*>(r->node.arena), b.block->bytes());
}

TEST(PlanTree, ShortLengthsHoldTheRootAndThreeEmptyLists) {
    const int lengths[] = {2, 4, 8, 16, 32};
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        for (int i = 0; i < 5; ++i) {
            Built b = Build(p, lengths[i], 0);
            ASSERT_NE(b.root, nullptr);
            EXPECT_EQ(b.root->kind, i + 1);
            EXPECT_EQ(b.root->buffer, nullptr);
            EXPECT_EQ(b.root->length, lengths[i]);
            CheckHeaders(b);
            EXPECT_EQ(PlanListItem(b.root->owned, 0), nullptr);
            EXPECT_EQ(PlanListItem(b.root->output, 0), nullptr);
            EXPECT_EQ(PlanListItem(b.root->fold, 0), nullptr);
            // Root and three heads after the 64-byte lead-in, nothing more.
            EXPECT_EQ(b.cursor() - b.start(), 64 + static_cast<ptrdiff_t>(Round32(sizeof(PlanRoot)) + 3 * 32));
        }
    }
}

struct Example {
    int n, f, m, outClass, foldKind;
    int g, q2, combineClass, innerM, innerKind;  // g = 0: no split
    int g2, q22, combineClass2, innerM2, innerKind2;  // nested split, if any
};

// The worked examples of the plan tree.
const Example kExamples[] = {
    {64, 8, 8, 4, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {128, 8, 16, 4, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {256, 16, 16, 5, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {512, 16, 32, 5, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {1024, 32, 32, 6, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {2048, 32, 64, 6, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
    {4096, 32, 128, 6, 7, 8, 8, 3, 16, 4, 0, 0, 0, 0, 0},
    {8192, 32, 256, 6, 7, 16, 8, 4, 16, 4, 0, 0, 0, 0, 0},
    {32768, 32, 1024, 6, 7, 32, 16, 5, 32, 5, 0, 0, 0, 0, 0},
    {131072, 32, 4096, 6, 7, 32, 64, 5, 128, 7, 8, 8, 3, 16, 4},
};

void CheckSplit(const PlanRoot* r, SplitStage* ss, int g, int q2, int cls, int innerM, int innerKind,
                int parentStep, int parentWrite, int m) {
    ASSERT_NE(ss, nullptr);
    const int n = r->length;
    EXPECT_EQ(ss->built, 1);
    EXPECT_EQ(ss->lengthM, m);
    EXPECT_EQ(ss->factor, g);
    EXPECT_EQ(ss->readTop, n);
    EXPECT_EQ(ss->length, n);
    EXPECT_EQ(ss->length2, n);
    EXPECT_EQ(ss->step, parentStep);
    EXPECT_EQ(ss->writeStep, parentWrite);
    EXPECT_NE(ss->buffer, nullptr);
    SplitCombine* sc = First<SplitCombine>(ss->combine);
    HalfStepGen* hs = First<HalfStepGen>(ss->owned);
    SplitFold* sf = First<SplitFold>(ss->inner);
    EXPECT_EQ(hs->length, m);
    EXPECT_EQ(hs->factor, g);
    EXPECT_EQ(sc->klass, cls);
    EXPECT_EQ(sc->factor, g);
    EXPECT_EQ(sc->length, n);
    EXPECT_EQ(sc->writeStep, parentWrite);
    EXPECT_EQ(sc->outputStep, 2 * parentWrite * g);
    EXPECT_EQ(sc->frequencies, q2);
    EXPECT_EQ(sc->length2, n);
    EXPECT_EQ(sc->half, m / 2);
    EXPECT_EQ(sc->last, m - 1);
    EXPECT_EQ(sc->writeStep2, parentWrite);
    EXPECT_EQ(sc->innerLength, innerM);
    EXPECT_EQ(sc->generator, hs);
    EXPECT_EQ(sf->kind, innerKind);
    EXPECT_EQ(sf->lengthM, innerM);
    EXPECT_EQ(sf->readTop, n);
    EXPECT_EQ(sf->readTop2, n);
    EXPECT_EQ(sf->wideStep, g * parentStep);
    EXPECT_EQ(sf->step, parentStep);
    EXPECT_EQ(sf->subsequences, g);
    EXPECT_EQ(sf->length, n);
    EXPECT_EQ(sf->wideWrite, g * parentWrite);
    EXPECT_EQ(sf->writeStep, parentWrite);
    EXPECT_EQ(sf->buffer, nullptr);
}

TEST(PlanTree, WorkedExamples) {
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        const int L = p.lanes;
        for (const Example& e : kExamples) {
            SCOPED_TRACE(std::string(p.name) + " n=" + std::to_string(e.n));
            Built b = Build(p, e.n, 0);
            PlanRoot* r = b.root;
            ASSERT_NE(r, nullptr);
            const int n = e.n, f = e.f, q = n / (2 * f);
            EXPECT_EQ(r->kind, 6);
            EXPECT_EQ(r->factor, f);
            EXPECT_EQ(r->length, n);
            EXPECT_NE(r->buffer, nullptr);
            CheckHeaders(b);

            TwiddleGen* tg = First<TwiddleGen>(r->owned);
            EXPECT_EQ(tg->columns, 2 * f);
            EXPECT_EQ(tg->denominator, 8 * n);
            EXPECT_EQ(tg->rows, q);
            EXPECT_EQ(tg->factor, f);
            EXPECT_EQ(tg->rowLength, 2 * f);

            OutputShell* osh = First<OutputShell>(r->output);
            EXPECT_EQ(osh->built, 1);
            EXPECT_EQ(osh->buffer, nullptr);
            EXPECT_EQ(osh->factor, f);
            EXPECT_EQ(osh->length, n);
            EXPECT_EQ(osh->block, 2 * f);
            EXPECT_EQ(osh->frequencies, q);
            EXPECT_EQ(osh->length2, n);
            EXPECT_EQ(osh->top, 2 * n - 1);
            EXPECT_EQ(osh->lengthM, e.m);
            EXPECT_EQ(osh->generator, tg);

            OutputStage* ost = First<OutputStage>(osh->stage);
            LaneTwiddleGen* ltg = First<LaneTwiddleGen>(osh->owned);
            EXPECT_EQ(ltg->columns, 2 * f);
            EXPECT_EQ(ltg->blocks, q / L);
            EXPECT_EQ(ltg->inner, tg);
            EXPECT_EQ(ost->klass, e.outClass);
            EXPECT_EQ(ost->factor, f);
            EXPECT_EQ(ost->length, n);
            EXPECT_EQ(ost->block, 2 * f);
            EXPECT_EQ(ost->laneBlock, L * 2 * f);
            EXPECT_EQ(ost->laneBlocks, q / L);
            EXPECT_EQ(ost->length2, n);
            EXPECT_EQ(ost->top, 2 * n - 1);
            EXPECT_EQ(ost->lengthM, e.m);
            EXPECT_EQ(ost->generator, ltg);
            EXPECT_NE(ost->table, nullptr);

            FoldShell* fsh = First<FoldShell>(r->fold);
            EXPECT_EQ(fsh->built, 1);
            EXPECT_EQ(fsh->buffer, nullptr);
            EXPECT_EQ(fsh->lengthM, e.m);
            EXPECT_EQ(fsh->length, n);
            EXPECT_EQ(fsh->top, 2 * n - 1);
            EXPECT_EQ(fsh->block, 2 * f);
            EXPECT_EQ(fsh->factor, f);
            EXPECT_EQ(fsh->length2, n);
            EXPECT_EQ(fsh->factor2, f);

            FoldStage* fs = First<FoldStage>(fsh->stage);
            EXPECT_EQ(fs->kind, e.foldKind);
            EXPECT_EQ(fs->lengthM, e.m);
            EXPECT_EQ(fs->length, n);
            EXPECT_EQ(fs->top, 2 * n - 1);
            EXPECT_EQ(fs->block, 2 * f);
            EXPECT_EQ(fs->laneGroups, f / L);
            EXPECT_EQ(fs->length2, n);
            EXPECT_EQ(fs->factor2, f);
            EXPECT_EQ(fs->buffer, nullptr);

            SplitStage* ss = First<SplitStage>(fs->stage);
            if (e.g == 0) {
                EXPECT_EQ(ss, nullptr);
                continue;
            }
            CheckSplit(r, ss, e.g, e.q2, e.combineClass, e.innerM, e.innerKind, 2 * f, f, e.m);
            SplitFold* sf = First<SplitFold>(ss->inner);
            SplitStage* nested = First<SplitStage>(sf->stage);
            if (e.g2 == 0) {
                EXPECT_EQ(nested, nullptr);
                continue;
            }
            CheckSplit(r, nested, e.g2, e.q22, e.combineClass2, e.innerM2, e.innerKind2,
                       e.g * 2 * f, e.g * f, e.innerM);
            EXPECT_EQ(First<SplitStage>(First<SplitFold>(nested->inner)->stage), nullptr);
        }
    }
}

// Lengths 2^k + 1 build with the quotients of 2^k.
TEST(PlanTree, LengthsOneAboveAPowerOfTwoUseTheSmallerQuotients) {
    const struct { const Precision* p; int n, f, outClass, foldKind; } rows[] = {
        {&F32(), 33, 4, 3, 3}, {&F64(), 9, 2, 2, 2}, {&F64(), 17, 2, 2, 3},
        {&F32(), 65, 8, 4, 3}, {&F64(), 4097, 32, 6, 7}};
    for (const auto& r : rows) {
        Built b = Build(*r.p, r.n, 0);
        ASSERT_NE(b.root, nullptr);
        EXPECT_EQ(b.root->length, r.n);
        EXPECT_EQ(b.root->factor, r.f);
        EXPECT_EQ(First<OutputStage>(First<OutputShell>(b.root->output)->stage)->klass, r.outClass);
        EXPECT_EQ(First<FoldStage>(First<FoldShell>(b.root->fold)->stage)->kind, r.foldKind);
        EXPECT_TRUE(b.block->guards_intact());
    }
}

// The plan of length 128 in single precision, field by field.
TEST(PlanTree, Length128SinglePrecisionShape) {
    Built b = Build(F32(), 128, 0);
    PlanRoot* r = b.root;
    EXPECT_EQ(r->kind, 6);
    EXPECT_EQ(r->factor, 8);
    EXPECT_EQ(r->length, 128);
    EXPECT_EQ(static_cast<unsigned char*>(r->buffer) + 128 * 4, b.cursor());
    TwiddleGen* tg = First<TwiddleGen>(r->owned);
    EXPECT_EQ(tg->rowLength, 16);
    EXPECT_EQ(tg->denominator, 1024);
    EXPECT_EQ(tg->factor, 8);
    EXPECT_EQ(PlanListItem(r->owned, 1), PlanListItem(r->output, 0));
    EXPECT_EQ(PlanListItem(r->owned, 2), PlanListItem(r->fold, 0));
    EXPECT_EQ(PlanListItem(r->owned, 3), nullptr);
    OutputShell* osh = First<OutputShell>(r->output);
    EXPECT_EQ(First<LaneTwiddleGen>(osh->owned)->blocks, 2);
    OutputStage* ost = reinterpret_cast<OutputStage*>(PlanListItem(osh->owned, 1));
    EXPECT_EQ(ost->klass, 4);
    EXPECT_EQ(ost->laneBlocks * 32 * ost->factor, 128 * 4);  // n elements
    FoldStage* fs = First<FoldStage>(First<FoldShell>(r->fold)->owned);
    EXPECT_EQ(fs->kind, 4);
    EXPECT_EQ(fs->lengthM, 16);
    EXPECT_EQ(fs->laneGroups, 2);
}

// The lengths whose plans are walked piece by piece.
std::vector<int> WalkLengths(const Precision& p) {
    std::vector<int> v;
    for (int e = 1; e <= 17; ++e) v.push_back(1 << e);
    v.push_back(33);
    v.push_back(65);
    v.push_back(1025);
    if (p.lanes == 2) {
        v.push_back(9);
        v.push_back(17);
    }
    return v;
}

// Pieces lie one after the other from the first cursor, in build order, each
// on a multiple of 32, and the last ends at the final cursor.
void CheckContiguous(Built& b, const PlanShape& shape, unsigned char* first) {
    ASSERT_FALSE(shape.pieces.empty());
    const unsigned char* at = first;
    for (const auto& piece : shape.pieces) {
        EXPECT_EQ(piece.at, static_cast<const void*>(at)) << piece.what;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(piece.at) % 32, 0u) << piece.what;
        at = static_cast<const unsigned char*>(piece.at) + Round32(piece.bytes);
    }
    EXPECT_EQ(static_cast<const void*>(at), b.cursor());
}

// What makes a plan the same plan in another block: where each piece lies
// relative to the first object, and every table byte.
std::vector<unsigned char> Signature(const PlanShape& shape, const unsigned char* first) {
    std::vector<unsigned char> sig;
    for (const auto& piece : shape.pieces) {
        const auto* at = static_cast<const unsigned char*>(piece.at);
        const uint32_t rel = static_cast<uint32_t>(at - first);
        sig.insert(sig.end(), reinterpret_cast<const unsigned char*>(&rel),
                   reinterpret_cast<const unsigned char*>(&rel) + 4);
        if (piece.what.find("table") != std::string::npos) sig.insert(sig.end(), at, at + piece.bytes);
    }
    return sig;
}

TEST(PlanTree, PlansLieInsideTheirBlocksAtEveryOffset) {
    // 32n, 32n + 1 and 32n + 31 put the first object 64, 63 and 33 bytes in.
    const struct { size_t offset; ptrdiff_t leadIn; } offsets[] = {{0, 64}, {1, 63}, {31, 33}, {32, 64}};
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        for (int n : WalkLengths(p)) {
            std::vector<unsigned char> reference;
            for (const auto& o : offsets) {
                SCOPED_TRACE(std::string(p.name) + " n=" + std::to_string(n) + " offset=" + std::to_string(o.offset));
                Built b = Build(p, n, o.offset);
                ASSERT_NE(b.root, nullptr);
                EXPECT_EQ(reinterpret_cast<unsigned char*>(b.root) - b.start(), o.leadIn);
                const PlanShape shape = dct4test::WalkPlan(b.root, p);
                CheckContiguous(b, shape, b.start() + o.leadIn);
                // Inside the block, by the rule's own margin.
                const ptrdiff_t used = b.cursor() - b.start();
                EXPECT_LE(used, b.size);
                EXPECT_TRUE(b.block->guards_intact());
                // The same plan whatever the block's address.
                const std::vector<unsigned char> sig = Signature(shape, b.start() + o.leadIn);
                if (reference.empty()) reference = sig;
                else EXPECT_TRUE(sig == reference);
            }
        }
    }
}

// The rule counts more than the builder takes: by how much, on i386.
TEST(PlanTree, FinalCursorFallsShortOfTheBlockByTheRulesExcess) {
    if (!Is32Bit()) GTEST_SKIP() << "exact excess is that of the 32-bit target";
    const struct { int n, excess; } rows[] = {
        {2, 0}, {4, 0}, {8, 0}, {16, 0}, {32, 0}, {64, 224}, {4096, 384}};
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        for (const auto& r : rows) {
            Built b = Build(p, r.n, 0);
            EXPECT_EQ(b.size - (b.cursor() - b.start()), r.excess) << p.name << " " << r.n;
        }
    }
}

// Where the excess comes from: the rule counts both shells a second time and
// three cells more than the build uses, and for each split its combining step
// again and two more cells. On i386 that is the 224 + 160 per split above; on
// a 64-bit target the same count in that target's object sizes.
TEST(PlanTree, ExcessFollowsTheObjectSizesOfTheTarget) {
    const int64_t cell = Round32(sizeof(PlanList));
    const int64_t base = 3 * cell + Round32(sizeof(OutputShell)) + Round32(sizeof(FoldShell));
    const int64_t perSplit = 2 * cell + Round32(sizeof(SplitCombine));
    if (Is32Bit()) {
        EXPECT_EQ(base, 224);
        EXPECT_EQ(perSplit, 160);
    }
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        for (int e = 6; e <= 17; ++e) {
            Built b = Build(p, 1 << e, 0);
            const int splits = dct4test::WalkPlan(b.root, p).splits;
            EXPECT_EQ(b.size - (b.cursor() - b.start()), base + splits * perSplit) << p.name << " " << (1 << e);
        }
    }
}

TEST(PlanTree, SplitsByLength) {
    const struct { int n, splits; } rows[] = {{32, 0}, {2048, 0}, {4096, 1}, {65536, 1}, {131072, 2}};
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        for (const auto& r : rows) {
            Built b = Build(p, r.n, 0);
            EXPECT_EQ(dct4test::WalkPlan(b.root, p).splits, r.splits) << p.name << " " << r.n;
        }
    }
}

// Taking a plan down releases every byte that building it took.
TEST(PlanTree, TeardownReleasesExactlyWhatWasAllocated) {
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        for (int n : WalkLengths(p)) {
            Built b = Build(p, n, 7);
            unsigned char* first = reinterpret_cast<unsigned char*>(b.root);
            ASSERT_GT(b.cursor(), first);
            PlanNode* node = &b.root->node;
            node->destroy(node);
            PlanRelease(node->arena, b.root, static_cast<uint32_t>(node->size));
            EXPECT_EQ(b.cursor(), first) << p.name << " " << n;
        }
    }
}

// Init rewrites the cursor: a block serves again for a new plan.
TEST(PlanTree, ABlockCanBeUsedAgain) {
    for (int k = 0; k < 2; ++k) {
        const Precision& p = k ? F64() : F32();
        int size = 0;
        ASSERT_EQ(p.getSize(8192, &size), tqfStsNoError);
        GuardedBuffer block(static_cast<size_t>(size), 3);
        PlanRoot* a = nullptr;
        PlanRoot* c = nullptr;
        ASSERT_EQ(p.init(&a, 8192, block.bytes()), tqfStsNoError);
        unsigned char* end = reinterpret_cast<PlanArena*>(block.bytes())->cursor;
        const auto once = Signature(dct4test::WalkPlan(a, p), reinterpret_cast<unsigned char*>(a));
        ASSERT_EQ(p.init(&c, 256, block.bytes()), tqfStsNoError);
        ASSERT_EQ(p.init(&c, 8192, block.bytes()), tqfStsNoError);
        EXPECT_EQ(a, c);
        EXPECT_EQ(reinterpret_cast<PlanArena*>(block.bytes())->cursor, end);
        EXPECT_TRUE(Signature(dct4test::WalkPlan(c, p), reinterpret_cast<unsigned char*>(c)) == once);
        EXPECT_TRUE(block.guards_intact());
    }
}

}  // namespace
