// Kernels are reentrant: they touch only their arguments, read-only
// constants and their own stack. Every family runs here from several threads
// at once -- each thread on its own data, and many threads on one shared
// read-only input -- and every result must have the bits of the same call
// made on one thread beforehand. Walsh-Hadamard kernels run with a buffer of
// their own per thread and with a null buffer (then each call allocates its
// own through tqfMalloc, which must be safe for threads). A DCT-IV plan of
// length 64 and more holds its work buffers, so every thread builds its own;
// the straight-line plans of 2 to 32 use nothing of the plan but its kind,
// and one of each is shared by all threads. scripts/tsan.sh runs this test
// under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "surface.h"

namespace {

using namespace hardening;

constexpr int kFlag = tqfDivFwdByN;

// All threads start their work together.
class StartLine {
public:
    explicit StartLine(int threads) : waiting_(threads) {}
    void arrive_and_wait() {
        waiting_.fetch_sub(1);
        while (waiting_.load() > 0) std::this_thread::yield();
    }

private:
    std::atomic<int> waiting_;
};

// One fixed kernel with its input, its reference output (computed on the
// main thread) and the arrays its calls need.
struct KernelJob {
    const AnyKernel* k;
    Shape shape;
    std::vector<unsigned char> input, want;
};

std::vector<unsigned char> run_once(const KernelJob& job, const unsigned char* input, bool null_buffer) {
    const ElementType t = element_type(job.k->precision);
    std::vector<unsigned char> out(job.shape.out * t.element);
    std::vector<unsigned char> buffer(job.shape.buffer_bytes + 16);
    unsigned char* aligned = buffer.data() + (16 - reinterpret_cast<uintptr_t>(buffer.data()) % 16) % 16;
    const tqfStatus st = call_fixed(*job.k, input, out.data(), kFlag,
                                    job.shape.has_buffer && !null_buffer ? aligned : nullptr);
    if (st != tqfStsNoError) out.clear();
    return out;
}

std::vector<KernelJob> jobs_for(uint32_t seed) {
    std::vector<KernelJob> jobs;
    for (const AnyKernel& k : tqftest::all_kernels) {
        KernelJob job;
        job.k = &k;
        if (!shape_of(k, &job.shape)) {
            ADD_FAILURE() << k.name << ": " << unknown_family(k.family);
            continue;
        }
        const ElementType t = element_type(k.precision);
        job.input = random_scalars(job.shape.in * t.element / t.scalar, t.scalar, seed * 1000u + k.size);
        job.want = run_once(job, job.input.data(), false);
        EXPECT_FALSE(job.want.empty()) << k.name;
        jobs.push_back(std::move(job));
    }
    return jobs;
}

// Mismatches found by one thread, reported on the main thread.
struct Mismatches {
    std::vector<std::string> names;
    void add(const std::string& s) {
        if (names.size() < 20) names.push_back(s);
    }
};

constexpr int kThreads = 4;
constexpr int kSharedThreads = 8;

// Each thread its own inputs; all threads go through the kernels in the
// same order and call each one several times in a row, so that calls of the
// same kernel on different data overlap (where shared scratch would show);
// the second round gives Walsh-Hadamard kernels a null buffer.
constexpr int kRepeats = 8;

TEST(Threads, EveryKernelOnSeparateData) {
    std::vector<std::vector<KernelJob>> jobs;
    for (int t = 0; t < kThreads; ++t) jobs.push_back(jobs_for(t + 1));
    std::vector<Mismatches> found(kThreads);
    StartLine start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (int round = 0; round < 2; ++round)
                for (const KernelJob& job : jobs[t])
                    for (int r = 0; r < kRepeats; ++r)
                        if (run_once(job, job.input.data(), round == 1) != job.want)
                            found[t].add(std::string(job.k->name) + " round " + std::to_string(round));
        });
    for (std::thread& th : threads) th.join();
    for (int t = 0; t < kThreads; ++t)
        for (const std::string& s : found[t].names) ADD_FAILURE() << "thread " << t << ": " << s;
}

// Many threads, one read-only input per kernel, all starting on the same kernel.
TEST(Threads, EveryKernelOnOneSharedInput) {
    const std::vector<KernelJob> jobs = jobs_for(99);
    std::vector<Mismatches> found(kSharedThreads);
    StartLine start(kSharedThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kSharedThreads; ++t)
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (const KernelJob& job : jobs)
                if (run_once(job, job.input.data(), t % 2 == 1) != job.want) found[t].add(job.k->name);
        });
    for (std::thread& th : threads) th.join();
    for (int t = 0; t < kSharedThreads; ++t)
        for (const std::string& s : found[t].names) ADD_FAILURE() << "thread " << t << ": " << s;
}

// ---- DCT-IV -------------------------------------------------------------------

template <class T> struct Dct4;
template <> struct Dct4<float> {
    using Spec = tqfgDCT4Spec_32f;
    static tqfStatus initAlloc(Spec** p, int n) { return tqfgDCT4InitAlloc_32f(p, n); }
    static tqfStatus release(Spec* p) { return tqfgDCT4Free_32f(p); }
    static tqfStatus run(const float* x, float* y, const Spec* p) { return tqfgDCT4_32f(x, y, p); }
};
template <> struct Dct4<double> {
    using Spec = tqfgDCT4Spec_64f;
    static tqfStatus initAlloc(Spec** p, int n) { return tqfgDCT4InitAlloc_64f(p, n); }
    static tqfStatus release(Spec* p) { return tqfgDCT4Free_64f(p); }
    static tqfStatus run(const double* x, double* y, const Spec* p) { return tqfgDCT4_64f(x, y, p); }
};

constexpr int kDct4MaxLog2 = 13;  // 4096 and 8192 run through a split

// Plans of 2 to 32 shared by every thread; longer plans built by each
// thread for itself, also while the others run. All threads read one shared
// input per length.
template <class T>
void check_dct4_threads() {
    using D = Dct4<T>;
    std::vector<std::vector<T>> inputs, wants;
    std::vector<typename D::Spec*> shared(kDct4MaxLog2 + 1, nullptr);
    for (int log2 = 1; log2 <= kDct4MaxLog2; ++log2) {
        const int n = 1 << log2;
        std::vector<T> x(n), y(n);
        const std::vector<unsigned char> raw = random_scalars(n, sizeof(T), n + 5u);
        std::memcpy(x.data(), raw.data(), raw.size());
        typename D::Spec* plan = nullptr;
        ASSERT_EQ(D::initAlloc(&plan, n), tqfStsNoError) << n;
        ASSERT_EQ(D::run(x.data(), y.data(), plan), tqfStsNoError) << n;
        if (n < 64)
            shared[log2] = plan;
        else
            D::release(plan);
        inputs.push_back(x);
        wants.push_back(y);
    }
    std::vector<Mismatches> found(kSharedThreads);
    StartLine start(kSharedThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kSharedThreads; ++t)
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (int round = 0; round < 2; ++round)
                for (int log2 = 1; log2 <= kDct4MaxLog2; ++log2) {
                    const int n = 1 << log2;
                    typename D::Spec* plan = shared[log2];
                    if (!plan && D::initAlloc(&plan, n) != tqfStsNoError) {
                        found[t].add("no plan of " + std::to_string(n));
                        continue;
                    }
                    std::vector<T> y(n);
                    if (D::run(inputs[log2 - 1].data(), y.data(), plan) != tqfStsNoError ||
                        std::memcmp(y.data(), wants[log2 - 1].data(), n * sizeof(T)) != 0)
                        found[t].add("n=" + std::to_string(n) + (shared[log2] ? " (shared plan)" : ""));
                    if (!shared[log2]) D::release(plan);
                }
        });
    for (std::thread& th : threads) th.join();
    for (typename D::Spec* plan : shared)
        if (plan) D::release(plan);
    for (int t = 0; t < kSharedThreads; ++t)
        for (const std::string& s : found[t].names) ADD_FAILURE() << (sizeof(T) == 4 ? "32f" : "64f") << " thread " << t << ": " << s;
}

TEST(Threads, Dct4PlansPerThreadAndSharedShortPlans) {
    check_dct4_threads<float>();
    check_dct4_threads<double>();
}

}  // namespace
