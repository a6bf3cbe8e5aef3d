#include "plan_tables.h"

#include "plan_gens.h"

int32_t PlanOutputResidue(int32_t factor, int32_t pair) {
    if (factor != 32) return pair;
    return 16 * (pair % 2) + 4 * ((pair / 2) % 4) + pair / 8;
}

template <class P>
void PlanBuildOutputTable(OutputStage* stage) {
    typedef typename P::T T;
    const int32_t L = P::lanes;
    const int32_t f = stage->factor;
    T* out = static_cast<T*>(PlanAlloc(stage->node.arena,
        static_cast<uint32_t>(PlanOutputTableBytes(stage->laneBlocks, f))));
    stage->table = out;
    // Lanes run over frequencies; residues i and f - 1 - i sit side by side
    // because the output kernel takes them together.
    for (int32_t A = 0; A < stage->laneBlocks; ++A)
        for (int32_t p = 0; p < f / 2; ++p) {
            const int32_t i = PlanOutputResidue(f, p);
            const int32_t residues[2] = {i, f - 1 - i};
            for (int32_t res : residues) {
                for (int32_t l = 0; l < L; ++l) *out++ = PlanEvalLane<P>(stage->generator, A, l, 2 * res);
                for (int32_t l = 0; l < L; ++l) *out++ = PlanEvalLane<P>(stage->generator, A, l, 2 * res + 1);
            }
        }
}

namespace {

// One 32-byte entry: L copies of cos(pi r), then L of sin(pi r). Lanes run
// over residues, which all see the same twiddle; each copy is evaluated anew.
template <class P>
typename P::T* PutTwiddle(typename P::T* out, typename P::T r) {
    for (int32_t l = 0; l < P::lanes; ++l) *out++ = P::CosPi(r);
    for (int32_t l = 0; l < P::lanes; ++l) *out++ = P::SinPi(r);
    return out;
}

// First radix-4 step of g = 4 * (g / 4): angles pi (x + t) j / (g / 2).
template <class P>
typename P::T* PutOuterSection(typename P::T* out, const SplitCombine* sc) {
    typedef typename P::T T;
    for (int32_t b = 0; b < sc->frequencies; ++b) {
        const T x = PlanEvalHalfStep<P>(sc->generator, b);
        for (int32_t t = 0; t < sc->factor / 4; ++t)
            for (int32_t j = 1; j <= 3; ++j)
                out = PutTwiddle<P>(out, (x + static_cast<T>(t)) *
                                             (static_cast<T>(j) / static_cast<T>(sc->factor / 2)));
    }
    return out;
}

// Second step: angles pi x 4j / (g / 2), j = 1 to g / 4 - 1.
template <class P>
typename P::T* PutInnerSection(typename P::T* out, const SplitCombine* sc) {
    typedef typename P::T T;
    for (int32_t b = 0; b < sc->frequencies; ++b) {
        const T x = PlanEvalHalfStep<P>(sc->generator, b);
        for (int32_t j = 1; j < sc->factor / 4; ++j)
            out = PutTwiddle<P>(out, x * (static_cast<T>(4 * j) / static_cast<T>(sc->factor / 2)));
    }
    return out;
}

}  // namespace

template <class P>
void PlanBuildSplitTable(SplitCombine* sc) {
    typedef typename P::T T;
    T* out = static_cast<T*>(PlanAlloc(sc->node.arena,
        static_cast<uint32_t>(PlanSplitTableBytes(sc->frequencies, sc->factor))));
    sc->table = out;
    if (sc->klass <= 3) {
        // g = 2, 4, 8: one DFT step, angles pi x j / (g / 2), j = 1 to g - 1.
        for (int32_t b = 0; b < sc->frequencies; ++b) {
            const T x = PlanEvalHalfStep<P>(sc->generator, b);
            for (int32_t j = 1; j < sc->factor; ++j)
                out = PutTwiddle<P>(out, x * (static_cast<T>(j) / static_cast<T>(sc->factor / 2)));
        }
    } else if (sc->klass == 5 && P::width == 8) {
        // The double 32-point combine consumes the second step's twiddles first.
        out = PutInnerSection<P>(out, sc);
        PutOuterSection<P>(out, sc);
    } else {
        out = PutOuterSection<P>(out, sc);
        PutInnerSection<P>(out, sc);
    }
}

template void PlanBuildOutputTable<PlanF32>(OutputStage*);
template void PlanBuildOutputTable<PlanF64>(OutputStage*);
template void PlanBuildSplitTable<PlanF32>(SplitCombine*);
template void PlanBuildSplitTable<PlanF64>(SplitCombine*);
