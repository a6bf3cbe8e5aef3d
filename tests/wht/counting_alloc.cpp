// The test executable's own tqfMalloc/tqfFree. Defined in the executable,
// they take precedence over libtqfcore's at load time for the calls that the
// transform library makes, so the tests see every allocation and its size.
#include <cstdlib>

#include "wht_support.h"

namespace whttest {

AllocLog& alloc_log() {
    static AllocLog log;
    return log;
}
void reset_alloc_log() { alloc_log() = AllocLog(); }

}  // namespace whttest

extern "C" __attribute__((visibility("default"))) void* tqfMalloc(int size) {
    whttest::AllocLog& log = whttest::alloc_log();
    ++log.mallocs;
    log.last_size = size;
    void* p = nullptr;
    if (size <= 0 || posix_memalign(&p, 16, static_cast<size_t>(size)) != 0) p = nullptr;
    log.last_block = p;
    return p;
}

extern "C" __attribute__((visibility("default"))) void tqfFree(void* ptr) {
    whttest::AllocLog& log = whttest::alloc_log();
    ++log.frees;
    log.last_freed = ptr;
    std::free(ptr);
}
