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

/* ---- Forward complex DFT, fixed lengths: (src, dst, flag) ---------------- */
#define TQF_DECLARE_CFWD(N) \
    TQFAPI tqfStatus tqfgDFTFwd_CToC_##N##_32fc(const tqf32fc* src, tqf32fc* dst, int flag); \
    TQFAPI tqfStatus tqfgDFTFwd_CToC_##N##_64fc(const tqf64fc* src, tqf64fc* dst, int flag);
TQF_DECLARE_CFWD(2)
TQF_DECLARE_CFWD(3)
TQF_DECLARE_CFWD(4)
TQF_DECLARE_CFWD(5)
TQF_DECLARE_CFWD(6)
TQF_DECLARE_CFWD(7)
TQF_DECLARE_CFWD(8)
TQF_DECLARE_CFWD(9)
TQF_DECLARE_CFWD(10)
TQF_DECLARE_CFWD(11)
TQF_DECLARE_CFWD(12)
TQF_DECLARE_CFWD(13)
TQF_DECLARE_CFWD(14)
TQF_DECLARE_CFWD(15)
TQF_DECLARE_CFWD(16)
TQF_DECLARE_CFWD(17)
TQF_DECLARE_CFWD(18)
TQF_DECLARE_CFWD(19)
TQF_DECLARE_CFWD(20)
TQF_DECLARE_CFWD(21)
TQF_DECLARE_CFWD(22)
TQF_DECLARE_CFWD(23)
TQF_DECLARE_CFWD(24)
TQF_DECLARE_CFWD(25)
TQF_DECLARE_CFWD(26)
TQF_DECLARE_CFWD(27)
TQF_DECLARE_CFWD(28)
TQF_DECLARE_CFWD(29)
TQF_DECLARE_CFWD(30)
TQF_DECLARE_CFWD(31)
TQF_DECLARE_CFWD(32)
TQF_DECLARE_CFWD(33)
TQF_DECLARE_CFWD(34)
TQF_DECLARE_CFWD(35)
TQF_DECLARE_CFWD(36)
TQF_DECLARE_CFWD(37)
TQF_DECLARE_CFWD(38)
TQF_DECLARE_CFWD(39)
TQF_DECLARE_CFWD(40)
TQF_DECLARE_CFWD(41)
TQF_DECLARE_CFWD(42)
TQF_DECLARE_CFWD(43)
TQF_DECLARE_CFWD(44)
TQF_DECLARE_CFWD(45)
TQF_DECLARE_CFWD(46)
TQF_DECLARE_CFWD(47)
TQF_DECLARE_CFWD(48)
TQF_DECLARE_CFWD(49)
TQF_DECLARE_CFWD(50)
TQF_DECLARE_CFWD(51)
TQF_DECLARE_CFWD(52)
TQF_DECLARE_CFWD(53)
TQF_DECLARE_CFWD(54)
TQF_DECLARE_CFWD(55)
TQF_DECLARE_CFWD(56)
TQF_DECLARE_CFWD(57)
TQF_DECLARE_CFWD(58)
TQF_DECLARE_CFWD(59)
TQF_DECLARE_CFWD(60)
TQF_DECLARE_CFWD(61)
TQF_DECLARE_CFWD(62)
TQF_DECLARE_CFWD(63)
TQF_DECLARE_CFWD(64)
#undef TQF_DECLARE_CFWD

#ifdef __cplusplus
}
#endif

#endif /* TQFGEN_H */
