// Arrays fenced by inaccessible pages: an array placed so that it ends exactly
// where a PROT_NONE page begins, or begins exactly where one ends, so that a
// kernel that reads or writes one byte too far faults at once. The bytes of
// the region that the array does not cover hold a canary, so that a write that
// stays inside the region's pages shows as well. A fault inside a call is
// caught and reported with its address, and the test goes on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tqftest {

// Bytes of one memory page of the running process.
size_t page_bytes();

// Accessible pages with an inaccessible page directly below and directly above.
class GuardedPages {
public:
    explicit GuardedPages(size_t bytes);  // at least `bytes` accessible, whole pages
    ~GuardedPages();
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    unsigned char* begin() const { return begin_; }  // first byte after the lower guard
    unsigned char* end() const { return end_; }      // first byte of the upper guard
    size_t size() const { return static_cast<size_t>(end_ - begin_); }
    // Makes the accessible pages read-only (true) or read-write again (false).
    void set_read_only(bool read_only);
    // True when `p` lies in one of the two guard pages.
    bool in_lower_guard(const void* p) const;
    bool in_upper_guard(const void* p) const;

private:
    unsigned char* map_ = nullptr;
    size_t map_bytes_ = 0;
    unsigned char* begin_ = nullptr;
    unsigned char* end_ = nullptr;
};

// Which guard the array touches.
enum class Edge { End, Start };

// An array of `bytes` in its own guarded pages, placed by place(): with
// Edge::End it ends as close to the upper guard as a start address with the
// given remainder modulo 16 allows -- exactly at the guard when (`residue` +
// bytes) is a multiple of 16, otherwise with a gap of fewer than 16 bytes
// (see gap()); with Edge::Start it begins `residue` bytes after the lower
// guard, exactly at it for 0. The pages hold bytes + `slack` (rounded up to
// whole pages): with a slack of 0 and a whole number of pages, an array at
// End with remainder 0 touches both guards.
class GuardedArray {
public:
    explicit GuardedArray(size_t bytes, size_t slack = 16);

    void place(Edge edge, size_t residue);
    unsigned char* data() const { return data_; }
    template <class T> T* as() const { return reinterpret_cast<T*>(data_); }
    size_t bytes() const { return bytes_; }
    Edge edge() const { return edge_; }
    // Bytes between the array and the guard page on its side (0: touching).
    size_t gap() const;
    // Canary everywhere in the region, then `fill` (if given) over the array.
    void reset(const void* fill);
    // True when no byte of the region outside the array has changed.
    bool outside_intact() const;
    bool array_equals(const void* other) const;
    void set_read_only(bool read_only) { pages_.set_read_only(read_only); }
    const GuardedPages& pages() const { return pages_; }
    // Where the array sits, for messages: "end-exact@0", "start-gap8@8", ...
    std::string where() const;
    // Describes an address near the array ("8 bytes past the end, in the upper guard page").
    std::string describe(const void* address) const;

private:
    static constexpr unsigned char kCanary = 0xC3;
    size_t bytes_;
    GuardedPages pages_;
    Edge edge_ = Edge::End;
    unsigned char* data_ = nullptr;
};

// The outcome of a call run under the fault catcher.
struct FaultReport {
    bool faulted = false;
    const void* address = nullptr;  // the address that the faulting access touched
    int signal = 0;
};

// Runs `call` with SIGSEGV and SIGBUS caught for the calling thread's
// duration of the call; a fault ends the call and is reported instead of
// ending the process. The previous handlers are back in place afterwards.
FaultReport run_catching_faults(const std::function<void()>& call);

}  // namespace tqftest
