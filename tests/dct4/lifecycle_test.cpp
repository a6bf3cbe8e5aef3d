// Init, InitAlloc and Free: statuses, what they write and what survives.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "dct4_support.h"
#include "guarded.h"

namespace {

using dct4test::Alloc;
using dct4test::F32;
using dct4test::F64;
using dct4test::Precision;
using dct4test::ResetAlloc;
using tqftest::GuardedBuffer;

PlanRoot* const kSentinel = reinterpret_cast<PlanRoot*>(uintptr_t(0x5EED0));

const Precision* Both[] = {&F32(), &F64()};

TEST(PlanLifecycle, InitTestsNullPointersFirst) {
    for (const Precision* p : Both) {
        GuardedBuffer block(4096, 0);
        block.fill_pattern(3);
        std::vector<unsigned char> before(block.bytes(), block.bytes() + 4096);
        PlanRoot* h = kSentinel;
        EXPECT_EQ(p->init(nullptr, 64, block.bytes()), tqfStsNullPointer);
        EXPECT_EQ(p->init(&h, 64, nullptr), tqfStsNullPointer);
        EXPECT_EQ(p->init(&h, 3, nullptr), tqfStsNullPointer);  // before the length
        EXPECT_EQ(p->init(nullptr, -1, nullptr), tqfStsNullPointer);
        EXPECT_EQ(h, kSentinel);
        EXPECT_TRUE(block.payload_equals(before.data()));
        EXPECT_TRUE(block.guards_intact());
    }
}

// A length that the builder refuses: -6, and the handle keeps its value.
TEST(PlanLifecycle, InitRefusedLengthLeavesTheHandle) {
    const int lengths[] = {0, 1, 3, 5, 6, 12, 40, 48, 96, -1, INT_MIN, 3 * 2048};
    for (const Precision* p : Both)
        for (int n : lengths) {
            GuardedBuffer block(1 << 20, 5);
            PlanRoot* h = kSentinel;
            EXPECT_EQ(p->init(&h, n, block.bytes()), tqfStsBadSize) << p->name << " " << n;
            EXPECT_EQ(h, kSentinel);
            EXPECT_TRUE(block.guards_intact()) << p->name << " " << n;
        }
}

PlanRoot* RootIn(GuardedBuffer& block) {
    const uintptr_t a = reinterpret_cast<uintptr_t>(block.bytes());
    return reinterpret_cast<PlanRoot*>(a + 64 - a % 32);
}
template <class C>
C* First(PlanList* list) { return reinterpret_cast<C*>(PlanListItem(list, 0)); }

// What a failed build leaves in the block tells how far it went.
TEST(PlanLifecycle, FailedBuildsStopAtTheTestThatFails) {
    {   // 9 in single precision: q = 2 is no multiple of 4 lanes.
        GuardedBuffer block(1 << 16, 0);
        PlanRoot* h = kSentinel;
        ASSERT_EQ(F32().init(&h, 9, block.bytes()), tqfStsBadSize);
        PlanRoot* r = RootIn(block);
        EXPECT_EQ(r->kind, 6);
        EXPECT_EQ(First<OutputShell>(r->output)->built, 0);
        EXPECT_EQ(First<FoldShell>(r->fold), nullptr);
    }
    {   // 17 in single precision: the output stage builds, f = 2 stops the fold.
        GuardedBuffer block(1 << 16, 0);
        PlanRoot* h = kSentinel;
        ASSERT_EQ(F32().init(&h, 17, block.bytes()), tqfStsBadSize);
        PlanRoot* r = RootIn(block);
        EXPECT_EQ(First<OutputShell>(r->output)->built, 1);
        EXPECT_EQ(First<FoldShell>(r->fold)->built, 0);
    }
    {   // 3 * 2048: the whole output stage, then splits until a quotient of 3.
        GuardedBuffer block(1 << 20, 0);
        PlanRoot* h = kSentinel;
        ASSERT_EQ(F32().init(&h, 3 * 2048, block.bytes()), tqfStsBadSize);
        PlanRoot* r = RootIn(block);
        EXPECT_EQ(First<OutputShell>(r->output)->built, 1);
        EXPECT_NE(First<OutputStage>(First<OutputShell>(r->output)->stage)->table, nullptr);
        FoldStage* fs = First<FoldStage>(First<FoldShell>(r->fold)->stage);
        EXPECT_EQ(fs->kind, 7);
        SplitStage* ss = First<SplitStage>(fs->stage);
        int depth = 0;
        while (ss && ss->factor != 0) {
            ss = First<SplitStage>(First<SplitFold>(ss->inner)->stage);
            ++depth;
        }
        ASSERT_NE(ss, nullptr);
        EXPECT_EQ(ss->built, 1);   // set before the factor is chosen
        EXPECT_EQ(ss->lengthM, 6);  // 6144 / 32 = 192, / 8 = 24, / 2 = 12, / 2 = 6: 6 / 2 = 3 fails
        EXPECT_EQ(depth, 3);
        EXPECT_TRUE(block.guards_intact());
    }
}

TEST(PlanLifecycle, InitAllocGoesThroughTheReplaceableAllocator) {
    for (const Precision* p : Both) {
        ResetAlloc();
        int size = 0;
        ASSERT_EQ(p->getSize(4096, &size), tqfStsNoError);
        PlanRoot* h = kSentinel;
        ASSERT_EQ(p->initAlloc(&h, 4096), tqfStsNoError);
        EXPECT_EQ(Alloc().mallocs, 1);
        EXPECT_EQ(Alloc().last_size, size);
        EXPECT_EQ(Alloc().frees, 0);
        void* block = Alloc().last_block;
        ASSERT_NE(block, nullptr);
        // The allocator's blocks are 32-aligned: the root is 64 bytes in.
        EXPECT_EQ(reinterpret_cast<unsigned char*>(h), static_cast<unsigned char*>(block) + 64);
        EXPECT_EQ(static_cast<void*>(h->node.arena), block);

        // Free takes the plan down to the first cursor and hands back the block.
        EXPECT_EQ(p->free(h), tqfStsNoError);
        EXPECT_EQ(Alloc().frees, 1);
        EXPECT_EQ(Alloc().last_freed, block);
        EXPECT_EQ(Alloc().first_word_at_free, reinterpret_cast<uintptr_t>(h));
    }
}

TEST(PlanLifecycle, InitAllocFailures) {
    for (const Precision* p : Both) {
        PlanRoot* h = kSentinel;
        ResetAlloc();
        EXPECT_EQ(p->initAlloc(nullptr, 64), tqfStsNullPointer);
        EXPECT_EQ(Alloc().mallocs, 0);
        EXPECT_EQ(p->initAlloc(&h, 48), tqfStsBadSize);
        EXPECT_EQ(p->initAlloc(&h, 1 << 27), tqfStsBadSize);
        EXPECT_EQ(Alloc().mallocs, 0);
        EXPECT_EQ(Alloc().frees, 0);
        // An exhausted allocator shows as a null block: freed, and -8.
        Alloc().fail = true;
        EXPECT_EQ(p->initAlloc(&h, 1024), tqfStsNullPointer);
        EXPECT_EQ(Alloc().mallocs, 1);
        EXPECT_EQ(Alloc().frees, 1);
        EXPECT_EQ(Alloc().last_freed, nullptr);
        EXPECT_EQ(h, kSentinel);
        ResetAlloc();
    }
}

TEST(PlanLifecycle, FreeOfNullCallsNothing) {
    for (const Precision* p : Both) {
        ResetAlloc();
        EXPECT_EQ(p->free(nullptr), tqfStsNullPointer);
        EXPECT_EQ(Alloc().frees, 0);
    }
}

// Every accepted short and tree length, from InitAlloc to Free, gives back
// every byte it took.
TEST(PlanLifecycle, InitAllocThenFreeBalancesTheArena) {
    for (const Precision* p : Both)
        for (int e = 1; e <= 16; ++e) {
            ResetAlloc();
            PlanRoot* h = nullptr;
            ASSERT_EQ(p->initAlloc(&h, 1 << e), tqfStsNoError);
            const uintptr_t first = reinterpret_cast<uintptr_t>(h);
            ASSERT_EQ(p->free(h), tqfStsNoError);
            EXPECT_EQ(Alloc().first_word_at_free, first) << p->name << " " << (1 << e);
        }
}

}  // namespace
