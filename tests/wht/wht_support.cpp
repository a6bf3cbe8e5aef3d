// Walsh-Hadamard test support: kernel tables, fenced memory.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "wht_support.h"

#include "kernel_table.h"

namespace whttest {

namespace {
// The kernel of `order` in the build's table of exported kernels.
template <class Rows> auto by_order(const Rows& rows, int order) {
    for (const auto& r : rows)
        if (r.size == order) return r.fn;
    return decltype(rows[0].fn){nullptr};
}
}  // namespace

Wht<float>::Fixed Wht<float>::fixed(int order) { return by_order(tqftest::table::wht_32f, order); }
Wht<double>::Fixed Wht<double>::fixed(int order) { return by_order(tqftest::table::wht_64f, order); }

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

