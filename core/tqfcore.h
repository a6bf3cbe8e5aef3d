/* tqfcore: the allocator the transform library imports.
 *
 * A separate shared library (libtqfcore.so) so that the transform library's
 * export list stays the transforms alone, and so that a program may replace
 * the pair: a definition of tqfMalloc/tqfFree in the executable takes
 * precedence over this one at load time (the tests use that to count calls
 * and to make allocation fail). */
#ifndef TQFCORE_H
#define TQFCORE_H

#ifdef __cplusplus
extern "C" {
#endif

/* size bytes aligned to at least 16; null on failure or for size <= 0. */
void* tqfMalloc(int size);
/* Releases memory from tqfMalloc; null is accepted and ignored. */
void tqfFree(void* ptr);

#ifdef __cplusplus
}
#endif

#endif
