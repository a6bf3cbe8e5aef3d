/* tqfgen: small fixed-length signal transforms (SSE3/SSSE3 build, "v8").
 *
 * C-compatible public header. Every exported function is declared here; nothing
 * else is visible from the shared library. Kernels take (src, dst, flag), never
 * keep state between calls and never write dst when they return a failure. */
#ifndef TQFGEN_H
#define TQFGEN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(TQFGEN_BUILDING)
#define TQFAPI __attribute__((visibility("default")))
#else
#define TQFAPI
#endif

typedef float tqf32f;
typedef double tqf64f;
typedef struct { tqf32f re, im; } tqf32fc;
typedef struct { tqf64f re, im; } tqf64fc;

/* Every exported function but the version query returns one of these. */
typedef int32_t tqfStatus;
enum {
    tqfStsNoError     = 0,
    tqfStsBadPlan     = -5,   /* DCT-IV plan root of an unknown kind */
    tqfStsBadSize     = -6,   /* length or order outside the accepted range */
    tqfStsNullPointer = -8,   /* src or dst is null */
    tqfStsBadFlag     = -16   /* flag is none of the four scale flags */
};

/* Scale flags: compared for equality, not a bit mask. */
enum {
    tqfDivFwdByN  = 1,  /* forward transforms scale by 1/N */
    tqfDivInvByN  = 2,  /* inverse transforms scale by 1/N */
    tqfDivBySqrtN = 4,  /* both directions scale by 1/sqrt(N) */
    tqfNoDivByAny = 8   /* no scaling (a multiplication by 1.0 still happens) */
};

/* The library's constant version record. */
typedef struct {
    int32_t versionMajor;
    int32_t versionMinor;
    int32_t buildSeries;
    int32_t buildNumber;
    char cpuTag[4];
    const char* fileName;
    const char* versionText;
    const char* buildDate;
} tqfLibVersion;

/* Always the same pointer to the same constant record; never fails. */
TQFAPI const tqfLibVersion* tqfgenGetLibVersion(void);

/* ---- The transforms of fixed sizes and their generic entries ------------
 * Declared family by family from the build's description of the families
 * (frame/families.txt), in a header that the build writes. A fixed kernel
 * takes (src, dst, flag), a Walsh-Hadamard one also `buffer`; its generic
 * entry takes the length or order after dst and tests it before anything
 * else (tqfStsBadSize), then makes exactly the call of the fixed kernel. */
#include "tqfgen_kernels.h"

/* ---- Walsh-Hadamard ---- */
/* N = 2^order real elements, natural Hadamard order. Orders 1..7 never touch
 * `buffer`; orders 8..13 work through a 16-byte aligned buffer of
 * tqfgWHTGetBufferSize_* bytes, or allocate one through tqfMalloc for the
 * call when `buffer` is null. */

/* Work-buffer bytes for `order` (0 below order 8). `size` is not tested for
 * null; nothing is stored for a bad order. */
TQFAPI tqfStatus tqfgWHTGetBufferSize_32f(int order, int* size);
TQFAPI tqfStatus tqfgWHTGetBufferSize_64f(int order, int* size);

/* ---- DCT-IV planner ---- */
/* A plan is built once for one power-of-two length and lives entirely inside
 * one block of bytes: ask GetSize for the block's size, then Init the plan in
 * it; or let InitAlloc obtain the block through tqfMalloc and end the plan
 * with Free. The handle is opaque and points into the block. */
typedef struct tqfgDCT4Spec_32f tqfgDCT4Spec_32f;
typedef struct tqfgDCT4Spec_64f tqfgDCT4Spec_64f;

/* Bytes of a block for a plan of `length`; tqfStsBadSize, with *size left
 * unwritten, for a length the planner refuses. */
TQFAPI tqfStatus tqfgDCT4GetSize_32f(int length, int* size);
TQFAPI tqfStatus tqfgDCT4GetSize_64f(int length, int* size);
/* Builds the plan in `memory` (GetSize bytes, any alignment) and stores its
 * handle in *plan. tqfStsNullPointer for a null plan or memory; for a refused
 * length tqfStsBadSize, with *plan unwritten and the block's contents spent. */
TQFAPI tqfStatus tqfgDCT4Init_32f(tqfgDCT4Spec_32f** plan, int length, void* memory);
TQFAPI tqfStatus tqfgDCT4Init_64f(tqfgDCT4Spec_64f** plan, int length, void* memory);
/* As Init, in a block from tqfMalloc; a failed allocation gives tqfStsNullPointer. */
TQFAPI tqfStatus tqfgDCT4InitAlloc_32f(tqfgDCT4Spec_32f** plan, int length);
TQFAPI tqfStatus tqfgDCT4InitAlloc_64f(tqfgDCT4Spec_64f** plan, int length);
/* Takes the plan down and returns its block to tqfFree: for plans from InitAlloc. */
TQFAPI tqfStatus tqfgDCT4Free_32f(tqfgDCT4Spec_32f* plan);
TQFAPI tqfStatus tqfgDCT4Free_64f(tqfgDCT4Spec_64f* plan);
/* The unscaled DCT-IV of the plan's length n,
 * y[k] = sum_j x[j] cos(pi (j + 1/2)(k + 1/2) / n), from src to dst (n
 * elements each, any alignment, src == dst allowed). tqfStsNullPointer for a
 * null plan, src or dst (tested in that order), tqfStsBadPlan for a plan whose
 * root is damaged; dst is untouched on failure. A plan of length 64 or more
 * serves one call at a time: its work buffers are inside it. */
TQFAPI tqfStatus tqfgDCT4_32f(const tqf32f* src, tqf32f* dst, const tqfgDCT4Spec_32f* plan);
TQFAPI tqfStatus tqfgDCT4_64f(const tqf64f* src, tqf64f* dst, const tqfgDCT4Spec_64f* plan);

#ifdef __cplusplus
}
#endif

#endif /* TQFGEN_H */
