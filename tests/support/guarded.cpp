#include "guarded.h"

#include <cstdlib>

namespace tqftest {

GuardedBuffer::GuardedBuffer(size_t bytes, size_t offset) : bytes_(bytes), offset_(offset) {
    const size_t total = kGuard + offset + bytes + kGuard;
    block_ = static_cast<unsigned char*>(std::aligned_alloc(64, (total + 63) / 64 * 64));
    std::memset(block_, kCanary, total);
    data_ = block_ + kGuard + offset;
}

GuardedBuffer::~GuardedBuffer() { std::free(block_); }

bool GuardedBuffer::guards_intact() const {
    const size_t total = kGuard + offset_ + bytes_ + kGuard;
    for (size_t i = 0; i < total; ++i) {
        const bool inside = i >= kGuard + offset_ && i < kGuard + offset_ + bytes_;
        if (!inside && block_[i] != kCanary) return false;
    }
    return true;
}

void GuardedBuffer::fill_pattern(unsigned char seed) {
    for (size_t i = 0; i < bytes_; ++i) data_[i] = static_cast<unsigned char>(seed + 37 * i);
}

}  // namespace tqftest
