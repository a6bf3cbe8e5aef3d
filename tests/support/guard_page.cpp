#include "guard_page.h"

#include <setjmp.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace tqftest {

size_t page_bytes() {
    static const size_t bytes = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

GuardedPages::GuardedPages(size_t bytes) {
    const size_t page = page_bytes();
    const size_t body = (bytes + page - 1) / page * page;
    map_bytes_ = body + 2 * page;
    void* m = mmap(nullptr, map_bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) throw std::runtime_error("mmap of a guarded region failed");
    map_ = static_cast<unsigned char*>(m);
    begin_ = map_ + page;
    end_ = begin_ + body;
    if (mprotect(map_, page, PROT_NONE) != 0 || mprotect(end_, page, PROT_NONE) != 0)
        throw std::runtime_error("mprotect of a guard page failed");
}

GuardedPages::~GuardedPages() { munmap(map_, map_bytes_); }

void GuardedPages::set_read_only(bool read_only) {
    if (begin_ == end_) return;
    if (mprotect(begin_, size(), read_only ? PROT_READ : PROT_READ | PROT_WRITE) != 0)
        throw std::runtime_error("mprotect of a guarded region failed");
}

bool GuardedPages::in_lower_guard(const void* p) const {
    const unsigned char* c = static_cast<const unsigned char*>(p);
    return c >= map_ && c < begin_;
}

bool GuardedPages::in_upper_guard(const void* p) const {
    const unsigned char* c = static_cast<const unsigned char*>(p);
    return c >= end_ && c < end_ + page_bytes();
}

GuardedArray::GuardedArray(size_t bytes, size_t slack) : bytes_(bytes), pages_(bytes + slack) {
    place(Edge::End, 0);
    reset(nullptr);
}

void GuardedArray::place(Edge edge, size_t residue) {
    residue %= 16;
    edge_ = edge;
    if (edge == Edge::Start) {
        data_ = pages_.begin() + residue;
    } else {
        // The end of the pages is page-aligned: step back by the array and by
        // the least gap that gives the start the wanted remainder.
        const size_t gap = (16 - (bytes_ + residue) % 16) % 16;
        data_ = pages_.end() - bytes_ - gap;
    }
    if (data_ < pages_.begin() || data_ + bytes_ > pages_.end())
        throw std::logic_error("a guarded array placed outside its pages (slack too small)");
}

size_t GuardedArray::gap() const {
    return edge_ == Edge::Start ? static_cast<size_t>(data_ - pages_.begin())
                                : static_cast<size_t>(pages_.end() - (data_ + bytes_));
}

void GuardedArray::reset(const void* fill) {
    std::memset(pages_.begin(), kCanary, pages_.size());
    if (fill) std::memcpy(data_, fill, bytes_);
}

bool GuardedArray::outside_intact() const {
    for (const unsigned char* p = pages_.begin(); p < data_; ++p)
        if (*p != kCanary) return false;
    for (const unsigned char* p = data_ + bytes_; p < pages_.end(); ++p)
        if (*p != kCanary) return false;
    return true;
}

bool GuardedArray::array_equals(const void* other) const { return std::memcmp(data_, other, bytes_) == 0; }

std::string GuardedArray::where() const {
    std::string s = edge_ == Edge::End ? "end" : "start";
    s += gap() == 0 ? "-exact" : "-gap" + std::to_string(gap());
    s += "@" + std::to_string(reinterpret_cast<uintptr_t>(data_) % 16);
    return s;
}

std::string GuardedArray::describe(const void* address) const {
    const unsigned char* a = static_cast<const unsigned char*>(address);
    std::string s;
    if (a >= data_ + bytes_)
        s = std::to_string(a - (data_ + bytes_)) + " bytes past the end";
    else if (a < data_)
        s = std::to_string(data_ - a) + " bytes before the start";
    else
        s = "byte " + std::to_string(a - data_) + " of the array";
    if (pages_.in_upper_guard(a)) s += ", in the upper guard page";
    if (pages_.in_lower_guard(a)) s += ", in the lower guard page";
    return s;
}

namespace {

thread_local sigjmp_buf* t_landing = nullptr;
thread_local const void* t_address = nullptr;
thread_local int t_signal = 0;

void on_fault(int sig, siginfo_t* info, void*) {
    if (!t_landing) {
        // Not ours: let the default action take the process down.
        signal(sig, SIG_DFL);
        return;
    }
    t_address = info->si_addr;
    t_signal = sig;
    siglongjmp(*t_landing, 1);
}

}  // namespace

FaultReport run_catching_faults(const std::function<void()>& call) {
    struct sigaction catcher;
    std::memset(&catcher, 0, sizeof catcher);
    catcher.sa_sigaction = on_fault;
    catcher.sa_flags = SA_SIGINFO;
    sigemptyset(&catcher.sa_mask);
    struct sigaction old_segv, old_bus;
    sigaction(SIGSEGV, &catcher, &old_segv);
    sigaction(SIGBUS, &catcher, &old_bus);

    FaultReport report;
    sigjmp_buf landing;
    if (sigsetjmp(landing, 1) == 0) {
        t_landing = &landing;
        call();
    } else {
        report.faulted = true;
        report.address = t_address;
        report.signal = t_signal;
    }
    t_landing = nullptr;
    sigaction(SIGSEGV, &old_segv, nullptr);
    sigaction(SIGBUS, &old_bus, nullptr);
    return report;
}

}  // namespace tqftest
