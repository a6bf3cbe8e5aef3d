// Every entry reads exactly its input and writes exactly its output: arrays
// that end exactly where an inaccessible page begins, or begin exactly where
// one ends, make a kernel that reads or writes one byte too far fault at
// once; the fault is caught and named. Sources are read-only during the call,
// so a write into a source faults too; a canary in the rest of each array's
// pages shows any write that stays inside them.
//
// Where an array can end exactly at the guard depends on its length: a start
// address with remainder r modulo 16 ends on the page boundary only when
// r + bytes is a multiple of 16. So every array is placed at the end of its
// pages once for each element-aligned remainder r (0, the aligned path, and
// 4, 8, 12 or 8, the unaligned one); exactly one r touches the guard, and it
// is the aligned path when the length in bytes is a multiple of 16 (a 64fc
// array always, a 32fc array of even length, ...) and the unaligned path
// otherwise. The other remainders leave a gap of under 16 bytes, watched by
// the canary. Arrays that begin after a guard are placed at every r.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "guard_page.h"
#include "surface.h"

namespace {

using namespace hardening;
using tqftest::Edge;
using tqftest::FaultReport;
using tqftest::GuardedArray;
using tqftest::run_catching_faults;

// Remainders modulo 16 of element-aligned addresses: 0 takes the aligned
// path, the others the unaligned one.
std::vector<size_t> residues(size_t scalar) {
    std::vector<size_t> r;
    for (size_t v = 0; v < 16; v += scalar) r.push_back(v);
    return r;
}

// The remainder at which an array of `bytes` ends exactly at its guard.
size_t exact_end_residue(size_t bytes) { return (16 - bytes % 16) % 16; }

struct Named {
    const char* name;
    const GuardedArray* array;
};

// Which array's guard page an address lies in, and where relative to it.
std::string fault_place(const FaultReport& f, std::initializer_list<Named> arrays) {
    for (const Named& a : arrays)
        if (a.array && (a.array->pages().in_lower_guard(f.address) || a.array->pages().in_upper_guard(f.address)))
            return std::string(a.name) + " " + a.array->describe(f.address);
    for (const Named& a : arrays)
        if (a.array && f.address >= a.array->pages().begin() && f.address < a.array->pages().end())
            return std::string(a.name) + " " + a.array->describe(f.address) + " (a write into a read-only source)";
    return "an address outside every array";
}

// The helper itself: one byte beyond the array, on either side, faults and
// is reported at its address; a read-only array faults on a write; a write
// into the gap shows in the canary.
TEST(GuardPage, TouchingTheGuardIsCaughtAtItsAddress) {
    GuardedArray a(100);
    a.place(Edge::End, exact_end_residue(100));
    ASSERT_EQ(a.gap(), 0u);
    volatile unsigned char* p = a.data();
    FaultReport f = run_catching_faults([&] { (void)p[99]; });
    EXPECT_FALSE(f.faulted);
    f = run_catching_faults([&] { (void)p[100]; });
    ASSERT_TRUE(f.faulted);
    EXPECT_EQ(f.address, a.data() + 100);
    EXPECT_TRUE(a.pages().in_upper_guard(f.address));

    a.place(Edge::Start, 0);
    p = a.data();
    f = run_catching_faults([&] { (void)p[-1]; });
    ASSERT_TRUE(f.faulted);
    EXPECT_TRUE(a.pages().in_lower_guard(f.address));

    a.reset(nullptr);
    a.set_read_only(true);
    f = run_catching_faults([&] { p[0] = 1; });
    a.set_read_only(false);
    EXPECT_TRUE(f.faulted);

    a.place(Edge::End, 0);  // 100 + 0 is no multiple of 16: a gap of 12
    EXPECT_EQ(a.gap(), 12u);
    a.reset(nullptr);
    EXPECT_TRUE(a.outside_intact());
    a.data()[100] = 0;
    EXPECT_FALSE(a.outside_intact());
}

constexpr int kFlag = tqfDivBySqrtN;

// Failures recorded so far in the running test; a family-wide fault would
// otherwise bury the first report under hundreds of like ones.
int failures() { return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count(); }
constexpr int kEnoughFailures = 40;

// The arrays of one fixed kernel and its output on ordinary memory.
class FixedKernelCase {
public:
    explicit FixedKernelCase(const AnyKernel& k, const Shape& shape)
        : k_(k), shape_(shape), type_(element_type(k.precision)),
          in_bytes_(shape.in * type_.element), out_bytes_(shape.out * type_.element),
          input_(random_scalars(in_bytes_ / type_.scalar, type_.scalar, static_cast<uint32_t>(k.size))),
          src_(in_bytes_), dst_(out_bytes_), io_(shape.in_place() * type_.element),
          buffer_(shape.buffer_bytes) {
        // The reference: aligned arrays with the canary around them.
        src_.place(Edge::Start, 0);
        dst_.place(Edge::Start, 0);
        src_.reset(input_.data());
        dst_.reset(nullptr);
        tqfStatus st = 1;
        const FaultReport f = run_catching_faults([&] { st = call(src_.data(), dst_.data()); });
        EXPECT_FALSE(f.faulted) << k.name << " src " << src_.where() << " dst " << dst_.where() << ": touched "
                                << fault_place(f, {{"src", &src_}, {"dst", &dst_}, {"buffer", &buffer_}});
        EXPECT_EQ(st, tqfStsNoError) << k.name;
        reference_.assign(dst_.data(), dst_.data() + out_bytes_);
    }

    // Out of place: src at `src_edge`, dst at the other edge, each at the
    // remainders given; the work buffer at src's edge.
    void out_of_place(Edge src_edge, size_t src_residue, size_t dst_residue) {
        const Edge dst_edge = src_edge == Edge::End ? Edge::Start : Edge::End;
        src_.place(src_edge, src_residue);
        dst_.place(dst_edge, dst_residue);
        buffer_.place(src_edge, 0);  // 16-byte aligned, as the kernels need
        src_.reset(input_.data());
        dst_.reset(nullptr);
        buffer_.reset(nullptr);
        if (src_edge == Edge::End && src_.gap() == 0) exact_src_end_ = true;
        if (dst_edge == Edge::End && dst_.gap() == 0) exact_dst_end_ = true;
        const std::string label = std::string(k_.name) + " src " + src_.where() + " dst " + dst_.where();

        tqfStatus st = 1;
        src_.set_read_only(true);
        const FaultReport f = run_catching_faults([&] { st = call(src_.data(), dst_.data()); });
        src_.set_read_only(false);
        if (f.faulted) {
            ADD_FAILURE() << label << ": touched " << fault_place(f, {{"src", &src_}, {"dst", &dst_}, {"buffer", &buffer_}});
            return;
        }
        EXPECT_EQ(st, tqfStsNoError) << label;
        EXPECT_TRUE(dst_.array_equals(reference_.data())) << label << ": output differs from the reference call";
        EXPECT_TRUE(dst_.outside_intact()) << label << ": wrote outside dst";
        EXPECT_TRUE(buffer_.outside_intact()) << label << ": wrote outside the work buffer";
    }

    // src == dst, in an array as long as the longer of the two.
    void in_place(Edge edge, size_t residue) {
        io_.place(edge, residue);
        io_.reset(nullptr);
        std::memcpy(io_.data(), input_.data(), in_bytes_);
        buffer_.place(edge, 0);
        buffer_.reset(nullptr);
        const std::string label = std::string(k_.name) + " in place " + io_.where();
        tqfStatus st = 1;
        const FaultReport f = run_catching_faults([&] { st = call(io_.data(), io_.data()); });
        if (f.faulted) {
            ADD_FAILURE() << label << ": touched " << fault_place(f, {{"array", &io_}, {"buffer", &buffer_}});
            return;
        }
        EXPECT_EQ(st, tqfStsNoError) << label;
        EXPECT_EQ(std::memcmp(io_.data(), reference_.data(), out_bytes_), 0) << label << ": output differs";
        // A kernel that reads more than it writes leaves the rest as it was.
        if (in_bytes_ > out_bytes_)
            EXPECT_EQ(std::memcmp(io_.data() + out_bytes_, input_.data() + out_bytes_, in_bytes_ - out_bytes_), 0)
                << label << ": wrote past its output";
        EXPECT_TRUE(io_.outside_intact()) << label << ": wrote outside the array";
        EXPECT_TRUE(buffer_.outside_intact()) << label << ": wrote outside the work buffer";
    }

    bool exact_ends_met() const { return exact_src_end_ && exact_dst_end_; }

private:
    tqfStatus call(const void* src, void* dst) {
        unsigned char* buffer = nullptr;
        if (shape_.has_buffer)
            // A buffer the kernel does not use is an inaccessible address.
            buffer = shape_.buffer_bytes ? buffer_.data() : buffer_.pages().begin() - tqftest::page_bytes();
        return call_fixed(k_, src, dst, kFlag, buffer);
    }

    const AnyKernel& k_;
    Shape shape_;
    ElementType type_;
    size_t in_bytes_, out_bytes_;
    std::vector<unsigned char> input_, reference_;
    GuardedArray src_, dst_, io_, buffer_;
    bool exact_src_end_ = false, exact_dst_end_ = false;
};

// Every fixed kernel of every family in the build's table, at every pair of
// remainders, both ways round, and in place.
TEST(GuardPage, EveryFixedKernelTouchesExactlyItsArrays) {
    int kernels = 0, calls = 0;
    for (const AnyKernel& k : tqftest::all_kernels) {
        Shape shape;
        if (!shape_of(k, &shape)) {
            ADD_FAILURE() << k.name << ": " << unknown_family(k.family);
            continue;
        }
        FixedKernelCase c(k, shape);
        const std::vector<size_t> rs = residues(element_type(k.precision).scalar);
        for (Edge src_edge : {Edge::End, Edge::Start})
            for (size_t rs_src : rs)
                for (size_t rs_dst : rs) {
                    c.out_of_place(src_edge, rs_src, rs_dst);
                    ++calls;
                }
        for (Edge edge : {Edge::End, Edge::Start})
            for (size_t r : rs) {
                c.in_place(edge, r);
                ++calls;
            }
        // One remainder always puts the end exactly on the guard.
        EXPECT_TRUE(c.exact_ends_met()) << k.name;
        ++kernels;
        if (failures() >= kEnoughFailures) {
            ADD_FAILURE() << "stopped after " << kernels << " kernels: enough failures to read";
            break;
        }
    }
    std::printf("guard-page calls: %d over %d fixed kernels\n", calls, kernels);
}

// Every generic entry at every size it accepts, with src and dst ending
// exactly at guards and then beginning right after them: it hands the
// kernel the caller's arrays and nothing else.
TEST(GuardPage, EveryGenericEntryAtEverySize) {
    for (const AnyGeneric& g : tqftest::all_generics) {
        for (int size = g.first; size <= g.last; ++size) {
            Shape shape;
            if (!shape_of(g.family, g.precision, size, &shape)) {
                ADD_FAILURE() << g.name << ": " << unknown_family(g.family);
                break;
            }
            const ElementType t = element_type(g.precision);
            const size_t in = shape.in * t.element, out = shape.out * t.element;
            const std::vector<unsigned char> x = random_scalars(in / t.scalar, t.scalar, 7u + size);
            const AnyKernel* fixed = fixed_of(g, size);
            ASSERT_NE(fixed, nullptr) << g.name << " " << size;
            GuardedArray src(in), dst(out), buffer(shape.buffer_bytes);
            std::vector<unsigned char> want(out);
            src.reset(x.data());
            ASSERT_EQ(call_fixed(*fixed, src.data(), want.data(), kFlag, shape.buffer_bytes ? buffer.data() : nullptr),
                      tqfStsNoError);
            for (Edge edge : {Edge::End, Edge::Start}) {
                const Edge other = edge == Edge::End ? Edge::Start : Edge::End;
                src.place(edge, edge == Edge::End ? exact_end_residue(in) : 0);
                dst.place(other, other == Edge::End ? exact_end_residue(out) : 0);
                buffer.place(edge, 0);
                src.reset(x.data());
                dst.reset(nullptr);
                buffer.reset(nullptr);
                unsigned char* b = shape.buffer_bytes ? buffer.data() : nullptr;
                tqfStatus st = 1;
                src.set_read_only(true);
                const FaultReport f =
                    run_catching_faults([&] { st = call_generic(g, src.data(), dst.data(), size, kFlag, b); });
                src.set_read_only(false);
                const std::string label = std::string(g.name) + " size " + std::to_string(size) + " src " +
                                          src.where() + " dst " + dst.where();
                ASSERT_FALSE(f.faulted) << label << ": touched "
                                        << fault_place(f, {{"src", &src}, {"dst", &dst}, {"buffer", &buffer}});
                EXPECT_EQ(st, tqfStsNoError) << label;
                EXPECT_TRUE(dst.array_equals(want.data())) << label;
                EXPECT_TRUE(dst.outside_intact()) << label;
                EXPECT_TRUE(buffer.outside_intact()) << label;
            }
        }
    }
}

// ---- DCT-IV plans --------------------------------------------------------


// The longest plan checked: 2^20 on x86-64. The i386 build runs under an
// emulator, where the long plans cost the most: to 2^20 both precisions took
// about 14 s of CPU time under qemu-i386, to 2^18 under 4 s; so the 32-bit
// build stops at 2^18, as the other DCT-IV tests do there.
// TQF_HARDEN_DCT4_MAX_LOG2 overrides both.
int dct4_max_log2() {
    if (const char* v = std::getenv("TQF_HARDEN_DCT4_MAX_LOG2")) return std::atoi(v);
    return sizeof(void*) == 4 ? 18 : 20;
}

// Runs one transform with its arrays where they are; src read-only when it
// is not also dst.
template <class T>
void run_guarded(const std::string& label, const typename Dct4<T>::Spec* plan, GuardedArray& src,
                 GuardedArray& dst, const GuardedArray& block, const std::vector<T>& want) {
    const bool in_place = &src == &dst;
    tqfStatus st = 1;
    if (!in_place) src.set_read_only(true);
    const FaultReport f =
        run_catching_faults([&] { st = Dct4<T>::run(src.template as<T>(), dst.template as<T>(), plan); });
    if (!in_place) src.set_read_only(false);
    ASSERT_FALSE(f.faulted) << label << ": touched "
                            << fault_place(f, {{"src", &src}, {"dst", &dst}, {"plan block", &block}});
    EXPECT_EQ(st, tqfStsNoError) << label;
    EXPECT_TRUE(dst.array_equals(want.data())) << label << ": differs from the plan on ordinary memory";
    EXPECT_TRUE(dst.outside_intact()) << label << ": wrote outside dst";
    EXPECT_TRUE(block.outside_intact()) << label << ": wrote outside the plan's block";
}

// Builds the plan with the block where it is: nothing outside the block is
// touched, and the handle points into it.
template <class T>
typename Dct4<T>::Spec* init_guarded(const std::string& label, int n, GuardedArray& block) {
    block.reset(nullptr);
    typename Dct4<T>::Spec* plan = nullptr;
    tqfStatus st = 1;
    const FaultReport f = run_catching_faults([&] { st = Dct4<T>::init(&plan, n, block.data()); });
    EXPECT_FALSE(f.faulted) << label << ": Init touched " << fault_place(f, {{"plan block", &block}});
    if (f.faulted) return nullptr;
    EXPECT_EQ(st, tqfStsNoError) << label;
    EXPECT_TRUE(block.outside_intact()) << label << ": Init wrote outside its block";
    const unsigned char* h = reinterpret_cast<const unsigned char*>(plan);
    EXPECT_TRUE(h >= block.data() && h < block.data() + block.bytes()) << label;
    return st == tqfStsNoError ? plan : nullptr;
}

// Every power of two to the longest checked: the plan in a block of exactly
// GetSize bytes that ends at a guard page (its start is then 32-aligned,
// since sizes are multiples of 32), src and dst of exactly n elements
// against guards on either side, and in place. Then the same plan rebuilt in
// the block at an odd address right after a guard page (a plan needs no
// alignment of its block: its arena aligns the objects itself).
template <class T>
void check_dct4_plans() {
    const size_t w = sizeof(T);
    for (int log2 = 1; log2 <= dct4_max_log2(); ++log2) {
        const int n = 1 << log2;
        const std::string label = std::string(Dct4<T>::name) + " n=" + std::to_string(n);
        int size = 0;
        ASSERT_EQ(Dct4<T>::getSize(n, &size), tqfStsNoError) << label;

        std::vector<T> x(n), want(n);
        const std::vector<unsigned char> raw = random_scalars(n, w, static_cast<uint32_t>(n));
        std::memcpy(x.data(), raw.data(), n * w);
        {
            typename Dct4<T>::Spec* ref = nullptr;
            ASSERT_EQ(Dct4<T>::initAlloc(&ref, n), tqfStsNoError) << label;
            ASSERT_EQ(Dct4<T>::run(x.data(), want.data(), ref), tqfStsNoError) << label;
            Dct4<T>::release(ref);
        }

        GuardedArray block(static_cast<size_t>(size));
        block.place(Edge::End, 0);
        ASSERT_EQ(block.gap(), 0u) << label << ": a block size that is no multiple of 16";
        typename Dct4<T>::Spec* plan = init_guarded<T>(label + " block " + block.where(), n, block);
        ASSERT_NE(plan, nullptr) << label;

        const size_t bytes = n * w;
        GuardedArray src(bytes), dst(bytes);
        src.place(Edge::End, exact_end_residue(bytes));
        dst.place(Edge::Start, 0);
        src.reset(x.data());
        dst.reset(nullptr);
        run_guarded<T>(label + " src " + src.where() + " dst " + dst.where(), plan, src, dst, block, want);

        src.place(Edge::Start, w);
        dst.place(Edge::End, exact_end_residue(bytes));
        src.reset(x.data());
        dst.reset(nullptr);
        run_guarded<T>(label + " src " + src.where() + " dst " + dst.where(), plan, src, dst, block, want);

        src.place(Edge::End, exact_end_residue(bytes));
        src.reset(x.data());
        run_guarded<T>(label + " in place " + src.where(), plan, src, src, block, want);

        block.place(Edge::Start, 1);
        plan = init_guarded<T>(label + " block " + block.where(), n, block);
        ASSERT_NE(plan, nullptr) << label;
        src.place(Edge::Start, w);
        src.reset(x.data());
        run_guarded<T>(label + " in place " + src.where() + ", block " + block.where(), plan, src, src, block,
                       want);
    }
}

TEST(GuardPage, Dct4PlansOfEveryPowerOfTwo32f) { check_dct4_plans<float>(); }
TEST(GuardPage, Dct4PlansOfEveryPowerOfTwo64f) { check_dct4_plans<double>(); }

}  // namespace
