#include "counting_alloc.h"

#include <cstdlib>

namespace tqftest {

AllocLog& alloc_log() {
    static AllocLog log;
    return log;
}
void reset_alloc_log() { alloc_log() = AllocLog(); }

}  // namespace tqftest

extern "C" __attribute__((visibility("default"))) void* tqfMalloc(int size) {
    tqftest::AllocLog& log = tqftest::alloc_log();
    ++log.mallocs;
    log.last_size = size;
    void* p = nullptr;
    if (log.fail || size <= 0 || posix_memalign(&p, 32, static_cast<size_t>(size)) != 0) p = nullptr;
    log.last_block = p;
    return p;
}

extern "C" __attribute__((visibility("default"))) void tqfFree(void* ptr) {
    tqftest::AllocLog& log = tqftest::alloc_log();
    ++log.frees;
    log.last_freed = ptr;
    if (ptr) log.first_word_at_free = *static_cast<uintptr_t*>(ptr);
    std::free(ptr);
}
