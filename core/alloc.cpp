// Default allocator: 32-byte aligned heap blocks (more than the 16 promised,
// so vector code may use any aligned load on them).
#include "tqfcore.h"

#include <cstdlib>

extern "C" __attribute__((visibility("default"))) void* tqfMalloc(int size) {
    if (size <= 0) return nullptr;
    void* p = nullptr;
    if (posix_memalign(&p, 32, static_cast<size_t>(size)) != 0) return nullptr;
    return p;
}

extern "C" __attribute__((visibility("default"))) void tqfFree(void* ptr) { std::free(ptr); }
