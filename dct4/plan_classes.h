// The plan object classes. Each is a plain struct that begins with the
// PlanNode header, then its own fields in a fixed order. All integers are
// signed 32-bit; `klass` holds a stage's class number (`class` is taken by
// the language). On i386 the sizes below are the values stored in `size`
// and summed by the size rule; on a 64-bit target sizeof gives larger ones,
// and the rule follows them (plan_size.cpp).
#pragma once

#include <cstdint>

#include "plan_list.h"

// Root of a plan; the public handle types are this struct under their names.
struct PlanRoot {
    PlanNode node;
    PlanList* owned;   // owns every child
    PlanList* output;  // the one OutputShell
    PlanList* fold;    // the one FoldShell
    void* buffer;      // n elements between the two stages; null for kinds 1-5
    int32_t kind;      // 1-5 for n = 2..32, 6 for a tree
    int32_t factor;    // f
    int32_t length;    // n
};

// Rotation values of the output stage: cos/sin of psi(row, column / 2).
struct TwiddleGen {
    PlanNode node;
    int32_t columns;      // 2f
    int32_t denominator;  // 8n
    int32_t rows;         // q
    int32_t factor;       // f
    int32_t rowLength;    // 2f
};

// A TwiddleGen seen by lane block: row = lane + block * L.
struct LaneTwiddleGen {
    PlanNode node;
    int32_t columns;  // 2f
    int32_t blocks;   // q / L
    TwiddleGen* inner;
};

// Half-step ratio (k + 0.5) / (m / g) of a split.
struct HalfStepGen {
    PlanNode node;
    int32_t length;  // m
    int32_t factor;  // g
};

struct OutputShell {
    PlanNode node;
    PlanList* owned;  // owns the LaneTwiddleGen and the OutputStage
    PlanList* stage;  // the OutputStage
    void* buffer;     // always null
    int32_t built;    // 1 once the stage exists
    int32_t factor;   // f
    int32_t length;   // n
    int32_t block;    // 2f
    int32_t frequencies;  // q
    int32_t length2;  // n
    int32_t top;      // 2n - 1
    int32_t lengthM;  // m
    TwiddleGen* generator;
};

struct OutputStage {
    PlanNode node;
    PlanList* owned;  // empty
    void* table;      // rotation table, n elements
    int32_t klass;    // 1 + log2 f
    int32_t factor;   // f
    int32_t length;   // n
    int32_t block;    // 2f
    int32_t laneBlock;   // L * 2f: buffer elements of one lane block
    int32_t laneBlocks;  // q / L: the kernel's loop count
    int32_t length2;  // n
    int32_t top;      // 2n - 1
    int32_t lengthM;  // m
    LaneTwiddleGen* generator;
};

struct FoldShell {
    PlanNode node;
    PlanList* owned;  // owns the FoldStage
    PlanList* stage;  // the FoldStage
    void* buffer;     // always null
    int32_t built;    // 1 once the stage exists
    int32_t lengthM;  // m
    int32_t length;   // n
    int32_t top;      // 2n - 1, the backward reads count down from here
    int32_t block;    // 2f, the read step
    int32_t factor;   // f
    int32_t length2;  // n
    int32_t factor2;  // f
};

struct FoldStage {
    PlanNode node;
    PlanList* owned;  // owns a SplitStage, if any
    PlanList* stage;  // that SplitStage
    void* buffer;     // always null
    int32_t kind;     // 1-6 for m = 2..64, 7 for a split
    int32_t lengthM;  // m
    int32_t length;   // n
    int32_t top;      // 2n - 1
    int32_t block;    // 2f
    int32_t laneGroups;  // f / L: the kernel's loop count over residues
    int32_t length2;  // n
    int32_t factor2;  // f
};

// A fold too long for one kernel: an inner fold, then a combining step.
struct SplitStage {
    PlanNode node;
    PlanList* owned;    // owns the HalfStepGen, SplitCombine, SplitFold
    PlanList* combine;  // the SplitCombine
    PlanList* inner;    // the SplitFold
    void* buffer;       // n elements between the two steps
    int32_t built;      // 1 from the start of the build
    int32_t lengthM;    // m of this split
    int32_t factor;     // g
    int32_t readTop;    // n
    int32_t length;     // n
    int32_t step;       // read step of this level
    int32_t length2;    // n
    int32_t writeStep;  // write stride of this level
};

struct SplitCombine {
    PlanNode node;
    PlanList* owned;  // empty
    void* table;      // twiddle table
    int32_t klass;    // log2 g
    int32_t factor;   // g
    int32_t length;   // n
    int32_t writeStep;
    int32_t outputStep;   // 2 * writeStep * g
    int32_t frequencies;  // q': the kernel's loop count
    int32_t length2;  // n
    int32_t half;     // m / 2
    int32_t last;     // m - 1
    int32_t writeStep2;
    int32_t innerLength;  // m'
    HalfStepGen* generator;
};

struct SplitFold {
    PlanNode node;
    PlanList* owned;  // owns a nested SplitStage, if any
    PlanList* stage;  // that SplitStage
    void* buffer;     // always null
    int32_t kind;     // 1-6 for m' = 2..64, 7 for a nested split
    int32_t lengthM;  // m'
    int32_t readTop;
    int32_t readTop2;
    int32_t wideStep;      // g * the split's step: the step within a subsequence
    int32_t step;          // the split's step: between subsequences
    int32_t subsequences;  // g: the kernel's loop count
    int32_t length;        // n
    int32_t wideWrite;     // g * the split's writeStep
    int32_t writeStep;
};

// The public handles: opaque to callers, the root inside the library.
struct tqfgDCT4Spec_32f : PlanRoot {};
struct tqfgDCT4Spec_64f : PlanRoot {};

// What an object of class C takes from the arena.
template <class C>
constexpr int32_t PlanCharge() {
    return static_cast<int32_t>((sizeof(C) + 31u) & ~static_cast<decltype(sizeof(C))>(31u));
}

#if UINTPTR_MAX == 0xFFFFFFFFu
// On i386 the stored sizes are fixed: the size rule and callers depend on them.
static_assert(sizeof(PlanList) == 12, "list cell");
static_assert(sizeof(PlanNode) == 16, "header");
static_assert(sizeof(PlanRoot) == 44 && sizeof(tqfgDCT4Spec_32f) == 44 &&
              sizeof(tqfgDCT4Spec_64f) == 44, "root");
static_assert(sizeof(TwiddleGen) == 36, "TwiddleGen");
static_assert(sizeof(LaneTwiddleGen) == 28, "LaneTwiddleGen");
static_assert(sizeof(HalfStepGen) == 24, "HalfStepGen");
static_assert(sizeof(OutputShell) == 64, "OutputShell");
static_assert(sizeof(OutputStage) == 64, "OutputStage");
static_assert(sizeof(FoldShell) == 60, "FoldShell");
static_assert(sizeof(FoldStage) == 60, "FoldStage");
static_assert(sizeof(SplitStage) == 64, "SplitStage");
static_assert(sizeof(SplitCombine) == 72, "SplitCombine");
static_assert(sizeof(SplitFold) == 68, "SplitFold");
#endif
