// Buffers for kernel tests: data placed at a chosen byte offset inside a
// larger block filled with a canary, so that writes outside the data show.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tqftest {

class GuardedBuffer {
public:
    // bytes of payload, placed `offset` bytes past a 64-byte aligned start.
    GuardedBuffer(size_t bytes, size_t offset);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    template <class T> T* as() { return reinterpret_cast<T*>(data_); }
    unsigned char* bytes() { return data_; }
    size_t size() const { return bytes_; }
    // True when nothing outside the payload has changed.
    bool guards_intact() const;
    // Fills the payload with a byte pattern (used to see that nothing was written).
    void fill_pattern(unsigned char seed);
    bool payload_equals(const void* other) const { return std::memcmp(data_, other, bytes_) == 0; }

private:
    static constexpr size_t kGuard = 128;
    static constexpr unsigned char kCanary = 0xA5;
    unsigned char* block_;
    unsigned char* data_;
    size_t bytes_;
    size_t offset_;
};

// Bit pattern of a float or double, for exact comparisons.
inline uint32_t bits(float f) { uint32_t u; std::memcpy(&u, &f, 4); return u; }
inline uint64_t bits(double d) { uint64_t u; std::memcpy(&u, &d, 8); return u; }

}  // namespace tqftest
