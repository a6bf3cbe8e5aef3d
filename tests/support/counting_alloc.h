// The test executables' own tqfMalloc/tqfFree (counting_alloc.cpp). Defined
// in the executable, they take precedence over libtqfcore's at load time for
// the calls that the transform library makes: tests see every allocation and
// its size, and can make allocation fail.
#pragma once

#include <cstdint>

namespace tqftest {

struct AllocLog {
    int mallocs = 0;
    int frees = 0;
    int last_size = -1;
    void* last_block = nullptr;         // what tqfMalloc answered last
    void* last_freed = nullptr;
    uintptr_t first_word_at_free = 0;   // the freed block's first word, read before it goes
    bool fail = false;                  // make tqfMalloc answer null
};

AllocLog& alloc_log();
void reset_alloc_log();

}  // namespace tqftest
