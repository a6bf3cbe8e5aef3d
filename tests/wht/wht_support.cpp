// Walsh-Hadamard test support: kernel tables, fenced memory.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "wht_support.h"

namespace whttest {

#define TQF_ROW(S) tqfgWHT_1_##S, tqfgWHT_2_##S, tqfgWHT_3_##S, tqfgWHT_4_##S, tqfgWHT_5_##S, \
                   tqfgWHT_6_##S, tqfgWHT_7_##S, tqfgWHT_8_##S, tqfgWHT_9_##S, tqfgWHT_10_##S, \
                   tqfgWHT_11_##S, tqfgWHT_12_##S, tqfgWHT_13_##S
Wht<float>::Fixed Wht<float>::fixed(int order) {
    static const Fixed table[kOrders] = {TQF_ROW(32f)};
    return table[order - 1];
}
Wht<double>::Fixed Wht<double>::fixed(int order) {
    static const Fixed table[kOrders] = {TQF_ROW(64f)};
    return table[order - 1];
}
#undef TQF_ROW

namespace {
size_t page_size() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }
}  // namespace

FencedBlock::FencedBlock(size_t bytes) {
    const size_t page = page_size();
    const size_t body = (bytes + page - 1) / page * page;
    map_bytes_ = body + page;
    map_ = static_cast<unsigned char*>(
        mmap(nullptr, map_bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (map_ == MAP_FAILED) std::abort();
    if (mprotect(map_ + body, page, PROT_NONE) != 0) std::abort();
    data_ = map_ + body - bytes;
}

FencedBlock::~FencedBlock() { munmap(map_, map_bytes_); }

unsigned char* forbidden_page() {
    static unsigned char* page = [] {
        void* p = mmap(nullptr, page_size(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED) std::abort();
        return static_cast<unsigned char*>(p);
    }();
    return page;
}

}  // namespace whttest

