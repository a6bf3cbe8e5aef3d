// Every exported name against every class of bad argument: null pointers in
// every position and every combination, bad flags, bad lengths and orders,
// damaged plans. The expected status follows the order of the checks --
// a generic entry's size first, then a null src or dst, then the flag; the
// planner's null handle or block before the length; the transform's null
// plan, src, dst before a damaged plan -- and on every failure not one byte
// of any output, source, work buffer or plan block changes and nothing is
// allocated. The fixed kernels and generic entries come from the build's
// table; the buffer-size query, the DCT-IV calls and the version query are
// listed by hand, and a test checks that together they are every name the
// library exports. Each test prints how many cases it ran.
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "counting_alloc.h"
#include "guarded.h"
#include "plan_classes.h"
#include "surface.h"

namespace {

using namespace hardening;
using tqftest::GuardedBuffer;

constexpr int kGoodFlags[] = {tqfDivFwdByN, tqfDivInvByN, tqfDivBySqrtN, tqfNoDivByAny};
constexpr int kBadFlags[] = {0, 3, 5, 16, -1, INT_MIN, INT_MAX};
// Lengths and orders tried on every entry that takes one; whether each is
// bad depends on the entry's range.
constexpr int kSizes[] = {0, 1, 65, 14, -1, INT_MIN, INT_MAX};

bool bad_flag(int flag) {
    for (int f : kGoodFlags)
        if (f == flag) return false;
    return true;
}

std::vector<int> all_flags() {
    std::vector<int> f(std::begin(kGoodFlags), std::end(kGoodFlags));
    f.insert(f.end(), std::begin(kBadFlags), std::end(kBadFlags));
    return f;
}

// Cases run, by group of entries, printed at the end of the program.
std::map<std::string, long>& tally() {
    static std::map<std::string, long> t;
    return t;
}
class PrintTally : public ::testing::Environment {
public:
    void TearDown() override {
        long total = 0;
        for (const auto& [group, n] : tally()) {
            std::printf("bad-input cases, %s: %ld\n", group.c_str(), n);
            total += n;
        }
        std::printf("bad-input cases, total: %ld\n", total);
    }
};
::testing::Environment* const kTally = ::testing::AddGlobalTestEnvironment(new PrintTally);

int failures() { return ::testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count(); }
constexpr int kEnoughFailures = 40;

// A block with its bytes as they were before a call.
struct Watched {
    GuardedBuffer buffer;
    std::vector<unsigned char> before;
    Watched(size_t bytes, size_t offset, unsigned char seed) : buffer(bytes, offset) {
        buffer.fill_pattern(seed);
        before.assign(buffer.bytes(), buffer.bytes() + bytes);
    }
    bool unchanged() const { return buffer.payload_equals(before.data()) && buffer.guards_intact(); }
};

std::string args(const void* src, const void* dst, int size_or_flag, int flag, bool sized) {
    std::string s = std::string("(") + (src ? "src" : "null") + ", " + (dst ? (dst == src ? "src" : "dst") : "null");
    if (sized) s += ", " + std::to_string(size_or_flag);
    s += ", " + std::to_string(flag) + ")";
    return s;
}

// ---- Fixed kernels --------------------------------------------------------

// Every pointer combination at every flag, on both memory paths (each
// pointer aligned or moved by one scalar), and in place with bad flags;
// work buffers given and null.
TEST(BadInput, EveryFixedKernel) {
    tqftest::reset_alloc_log();
    long cases = 0;
    for (const AnyKernel& k : tqftest::all_kernels) {
        Shape shape;
        if (!shape_of(k, &shape)) {
            ADD_FAILURE() << k.name << ": " << unknown_family(k.family);
            continue;
        }
        const ElementType t = element_type(k.precision);
        const size_t in = shape.in * t.element, out = shape.out * t.element;
        for (size_t src_off : {size_t{0}, t.scalar})
            for (size_t dst_off : {size_t{0}, t.scalar}) {
                Watched src(in, src_off, 1), dst(out, dst_off, 2), buf(shape.buffer_bytes + 16, 0, 3);
                const void* srcs[] = {src.buffer.bytes(), nullptr};
                void* dsts[] = {dst.buffer.bytes(), nullptr};
                std::vector<unsigned char*> bufs = {nullptr};
                if (shape.has_buffer) bufs.push_back(buf.buffer.bytes());
                for (const void* s : srcs)
                    for (void* d : dsts)
                        for (int flag : all_flags())
                            for (unsigned char* b : bufs) {
                                const bool null = !s || !d;
                                if (!null && !bad_flag(flag)) continue;  // a good call
                                const tqfStatus want = null ? tqfStsNullPointer : tqfStsBadFlag;
                                EXPECT_EQ(call_fixed(k, s, d, flag, b), want)
                                    << k.name << args(s, d, flag, flag, false) << " offsets " << src_off << "/"
                                    << dst_off << (b ? " buffer" : " null buffer");
                                ++cases;
                            }
                EXPECT_TRUE(src.unchanged()) << k.name << ": src changed by a failing call";
                EXPECT_TRUE(dst.unchanged()) << k.name << ": dst written by a failing call";
                EXPECT_TRUE(buf.unchanged()) << k.name << ": work buffer written by a failing call";
            }
        for (size_t off : {size_t{0}, t.scalar}) {
            Watched io(shape.in_place() * t.element, off, 4), buf(shape.buffer_bytes + 16, 0, 3);
            std::vector<unsigned char*> bufs = {nullptr};
            if (shape.has_buffer) bufs.push_back(buf.buffer.bytes());
            for (int flag : kBadFlags)
                for (unsigned char* b : bufs) {
                    EXPECT_EQ(call_fixed(k, io.buffer.bytes(), io.buffer.bytes(), flag, b), tqfStsBadFlag)
                        << k.name << " in place, flag " << flag;
                    ++cases;
                }
            EXPECT_TRUE(io.unchanged()) << k.name << ": written in place by a failing call";
            EXPECT_TRUE(buf.unchanged()) << k.name << ": work buffer written by a failing call";
        }
        if (failures() >= kEnoughFailures) {
            ADD_FAILURE() << "stopped at " << k.name << ": enough failures to read";
            break;
        }
    }
    EXPECT_EQ(tqftest::alloc_log().mallocs, 0) << "a failing call allocated";
    tally()["fixed kernels"] += cases;
    std::printf("fixed kernels: %ld cases\n", cases);
}

// ---- Generic entries --------------------------------------------------------

// Every size class at every pointer combination and flag: a size outside
// the entry's range is -6 whatever else is wrong (or right); inside it the
// kernel's own order of checks holds.
TEST(BadInput, EveryGenericEntry) {
    tqftest::reset_alloc_log();
    long cases = 0;
    for (const AnyGeneric& g : tqftest::all_generics) {
        Shape largest;
        if (!shape_of(g.family, g.precision, g.last, &largest)) {
            ADD_FAILURE() << g.name << ": " << unknown_family(g.family);
            continue;
        }
        const ElementType t = element_type(g.precision);
        std::vector<int> sizes(std::begin(kSizes), std::end(kSizes));
        sizes.push_back(g.first);
        sizes.push_back(g.last);
        for (int size : sizes) {
            const bool in_range = size >= g.first && size <= g.last;
            Shape shape = largest;  // arrays large enough for any size
            if (in_range) shape_of(g.family, g.precision, size, &shape);
            for (size_t off : {size_t{0}, t.scalar}) {
                Watched src(shape.in * t.element, off, 5), dst(shape.out * t.element, off, 6),
                    buf(largest.buffer_bytes + 16, 0, 7);
                const void* srcs[] = {src.buffer.bytes(), nullptr};
                void* dsts[] = {dst.buffer.bytes(), nullptr};
                std::vector<unsigned char*> bufs = {nullptr};
                if (shape.has_buffer) bufs.push_back(buf.buffer.bytes());
                for (const void* s : srcs)
                    for (void* d : dsts)
                        for (int flag : all_flags())
                            for (unsigned char* b : bufs) {
                                const bool null = !s || !d;
                                tqfStatus want = tqfStsBadSize;
                                if (in_range) {
                                    if (!null && !bad_flag(flag)) continue;  // a good call
                                    want = null ? tqfStsNullPointer : tqfStsBadFlag;
                                }
                                EXPECT_EQ(call_generic(g, s, d, size, flag, b), want)
                                    << g.name << args(s, d, size, flag, true) << " offset " << off;
                                ++cases;
                            }
                EXPECT_TRUE(src.unchanged()) << g.name << " size " << size;
                EXPECT_TRUE(dst.unchanged()) << g.name << " size " << size << ": dst written by a failing call";
                EXPECT_TRUE(buf.unchanged()) << g.name << " size " << size;
            }
        }
    }
    EXPECT_EQ(tqftest::alloc_log().mallocs, 0) << "a failing call allocated";
    tally()["generic entries"] += cases;
    std::printf("generic entries: %ld cases\n", cases);
}

// ---- Walsh-Hadamard buffer size ---------------------------------------------

struct BufferQuery {
    const char* name;
    const char* precision;
    tqfStatus (*fn)(int, int*);
};
const BufferQuery kBufferQueries[] = {{"tqfgWHTGetBufferSize_32f", "32f", tqfgWHTGetBufferSize_32f},
                                      {"tqfgWHTGetBufferSize_64f", "64f", tqfgWHTGetBufferSize_64f}};

// The orders the query accepts are those of the transform's generic entry.
const AnyGeneric* wht_generic(const char* precision) {
    for (const AnyGeneric& g : tqftest::all_generics)
        if (std::string(g.family) == "wht" && std::string(g.precision) == precision) return &g;
    return nullptr;
}

// A bad order: -6, with the size pointer given (left unwritten) or null
// (not looked at).
TEST(BadInput, WhtBufferSize) {
    long cases = 0;
    for (const BufferQuery& q : kBufferQueries) {
        const AnyGeneric* g = wht_generic(q.precision);
        ASSERT_NE(g, nullptr) << q.name;
        for (int order : kSizes) {
            if (order >= g->first && order <= g->last) continue;  // a good call
            int size = 0x5A5A5A5A;
            EXPECT_EQ(q.fn(order, &size), tqfStsBadSize) << q.name << " order " << order;
            EXPECT_EQ(size, 0x5A5A5A5A) << q.name << " order " << order << ": size written";
            EXPECT_EQ(q.fn(order, nullptr), tqfStsBadSize) << q.name << " order " << order << ", null size";
            cases += 2;
        }
    }
    tally()["Walsh-Hadamard buffer size"] += cases;
    std::printf("buffer-size queries: %ld cases\n", cases);
}

// ---- DCT-IV -----------------------------------------------------------------

// The lengths a plan accepts, written out from the planner's documented rule:
// 2^k (k = 1..26 single, 1..25 double), 2^k + 1 (k = 5..26, 3..25), and
// those that the 32-bit size sum wraps into acceptance (2^30 and 2^30 + 1;
// in double also 2^29 and 2^29 + 1).
bool dct4_accepts(long long n, bool dbl) {
    const int top = dbl ? 25 : 26;
    for (int k = 1; k <= 30; ++k) {
        const long long p = 1ll << k;
        const bool power = k <= top || k == 30 || (dbl && k == 29);
        const bool plus_one = (k >= (dbl ? 3 : 5) && k <= top) || k == 30 || (dbl && k == 29);
        if ((n == p && power) || (n == p + 1 && plus_one)) return true;
    }
    return false;
}


template <class T>
long dct4_planner_cases() {
    using D = Dct4<T>;
    using Spec = typename D::Spec;
    const bool dbl = sizeof(T) == 8;
    const std::string sfx = D::name;
    Spec* const sentinel = reinterpret_cast<Spec*>(uintptr_t(0x5EED0));
    long cases = 0;
    std::vector<int> lengths(std::begin(kSizes), std::end(kSizes));
    lengths.push_back(64);  // a good length: only the null pointers are bad
    int block_bytes = 0;
    EXPECT_EQ(D::getSize(64, &block_bytes), tqfStsNoError);

    tqftest::reset_alloc_log();
    for (int n : lengths) {
        const bool good = dct4_accepts(n, dbl);
        // GetSize: a refused length leaves the size unwritten, and the
        // pointer is not looked at.
        if (!good) {
            int size = 0x5A5A5A5A;
            EXPECT_EQ(D::getSize(n, &size), tqfStsBadSize) << "tqfgDCT4GetSize_" << sfx << " " << n;
            EXPECT_EQ(size, 0x5A5A5A5A) << "tqfgDCT4GetSize_" << sfx << " " << n << ": size written";
            EXPECT_EQ(D::getSize(n, nullptr), tqfStsBadSize) << "tqfgDCT4GetSize_" << sfx << " " << n;
            cases += 2;
        }
        // Init: a null handle pointer or block first, whatever the length,
        // touching nothing; then a refused length, with the handle unwritten
        // and nothing written outside the block. Any block alignment.
        for (size_t off : {size_t{0}, size_t{1}}) {
            GuardedBuffer block(static_cast<size_t>(block_bytes), off);
            for (bool null_handle : {false, true})
                for (bool null_block : {false, true}) {
                    if (!null_handle && !null_block && good) continue;  // a good call
                    block.fill_pattern(9);
                    const std::vector<unsigned char> before(block.bytes(), block.bytes() + block.size());
                    Spec* h = sentinel;
                    const tqfStatus want = null_handle || null_block ? tqfStsNullPointer : tqfStsBadSize;
                    EXPECT_EQ(D::init(null_handle ? nullptr : &h, n, null_block ? nullptr : block.bytes()), want)
                        << "tqfgDCT4Init_" << sfx << " length " << n << (null_handle ? " null handle" : "")
                        << (null_block ? " null block" : "");
                    EXPECT_EQ(h, sentinel) << "tqfgDCT4Init_" << sfx << " " << n << ": handle written";
                    if (want == tqfStsNullPointer)
                        EXPECT_TRUE(block.payload_equals(before.data())) << "tqfgDCT4Init_" << sfx << " " << n;
                    EXPECT_TRUE(block.guards_intact()) << "tqfgDCT4Init_" << sfx << " " << n;
                    ++cases;
                }
        }
        // InitAlloc: a null handle pointer first, then the length; neither
        // allocates.
        for (bool null_handle : {false, true}) {
            if (!null_handle && good) continue;
            Spec* h = sentinel;
            EXPECT_EQ(D::initAlloc(null_handle ? nullptr : &h, n), null_handle ? tqfStsNullPointer : tqfStsBadSize)
                << "tqfgDCT4InitAlloc_" << sfx << " " << n;
            EXPECT_EQ(h, sentinel);
            ++cases;
        }
    }
    EXPECT_EQ(D::release(nullptr), tqfStsNullPointer) << "tqfgDCT4Free_" << sfx;
    ++cases;
    EXPECT_EQ(tqftest::alloc_log().mallocs, 0) << sfx << ": a failing planner call allocated";
    EXPECT_EQ(tqftest::alloc_log().frees, 0) << sfx << ": a failing planner call freed";
    return cases;
}

TEST(BadInput, Dct4Planner) {
    const long cases = dct4_planner_cases<float>() + dct4_planner_cases<double>();
    tally()["DCT-IV planner"] += cases;
    std::printf("DCT-IV planner: %ld cases\n", cases);
}

// The transform: any null among plan, src and dst is -8, also on a damaged
// plan; a damaged root kind with good pointers is -5 (in place too). dst,
// src and the plan's block stay as they were.
template <class T>
long dct4_transform_cases() {
    using D = Dct4<T>;
    using Spec = typename D::Spec;
    const std::string name = std::string("tqfgDCT4_") + D::name;
    const int32_t damaged[] = {0, 7, -1, INT_MIN, INT_MAX};
    long cases = 0;
    for (int n : {2, 4, 8, 16, 32, 64, 128, 4096}) {
        int size = 0;
        EXPECT_EQ(D::getSize(n, &size), tqfStsNoError);
        GuardedBuffer block(static_cast<size_t>(size), 0);
        Spec* plan = nullptr;
        EXPECT_EQ(D::init(&plan, n, block.bytes()), tqfStsNoError) << name << " " << n;
        PlanRoot* root = reinterpret_cast<PlanRoot*>(plan);
        const int32_t kind = root->kind;
        for (size_t off : {size_t{0}, sizeof(T)}) {
            GuardedBuffer src(n * sizeof(T), off), dst(n * sizeof(T), off), io(n * sizeof(T), off);
            src.fill_pattern(11);
            dst.fill_pattern(12);
            io.fill_pattern(13);
            const std::vector<unsigned char> src0(src.bytes(), src.bytes() + src.size()),
                dst0(dst.bytes(), dst.bytes() + dst.size()), io0(io.bytes(), io.bytes() + io.size());
            std::vector<int32_t> kinds = {kind};
            kinds.insert(kinds.end(), std::begin(damaged), std::end(damaged));
            for (int32_t k : kinds) {
                root->kind = k;
                const std::vector<unsigned char> block0(block.bytes(), block.bytes() + block.size());
                for (int mask = 0; mask < 8; ++mask) {
                    const T* s = mask & 1 ? nullptr : src.as<T>();
                    T* d = mask & 2 ? nullptr : dst.as<T>();
                    const Spec* p = mask & 4 ? nullptr : plan;
                    if (mask == 0 && k == kind) continue;  // a good call
                    const tqfStatus want = mask ? tqfStsNullPointer : tqfStsBadPlan;
                    EXPECT_EQ(D::run(s, d, p), want) << name << " n=" << n << " kind " << k << " nulls " << mask;
                    ++cases;
                }
                if (k != kind) {
                    EXPECT_EQ(D::run(io.as<T>(), io.as<T>(), plan), tqfStsBadPlan) << name << " in place, kind " << k;
                    ++cases;
                }
                EXPECT_TRUE(block.payload_equals(block0.data())) << name << " n=" << n << ": plan block changed";
            }
            root->kind = kind;
            EXPECT_TRUE(src.payload_equals(src0.data()) && src.guards_intact()) << name << " n=" << n;
            EXPECT_TRUE(dst.payload_equals(dst0.data()) && dst.guards_intact()) << name << " n=" << n;
            EXPECT_TRUE(io.payload_equals(io0.data()) && io.guards_intact()) << name << " n=" << n;
        }
        EXPECT_TRUE(block.guards_intact());
    }
    return cases;
}

TEST(BadInput, Dct4Transform) {
    const long cases = dct4_transform_cases<float>() + dct4_transform_cases<double>();
    tally()["DCT-IV transform"] += cases;
    std::printf("DCT-IV transform: %ld cases\n", cases);
}

// The version query has no argument to get wrong: the same record every time.
TEST(BadInput, VersionQuery) {
    const tqfLibVersion* v = tqfgenGetLibVersion();
    EXPECT_NE(v, nullptr);
    EXPECT_EQ(tqfgenGetLibVersion(), v);
    tally()["version query"] += 1;
}

// ---- Every exported name is covered ------------------------------------------

// The names checked above by hand, beside the build's table.
const std::set<std::string>& hand_checked() {
    static const std::set<std::string> names = {
        "tqfgWHTGetBufferSize_32f", "tqfgWHTGetBufferSize_64f", "tqfgDCT4GetSize_32f", "tqfgDCT4GetSize_64f",
        "tqfgDCT4Init_32f",         "tqfgDCT4Init_64f",         "tqfgDCT4InitAlloc_32f", "tqfgDCT4InitAlloc_64f",
        "tqfgDCT4Free_32f",         "tqfgDCT4Free_64f",         "tqfgDCT4_32f",        "tqfgDCT4_64f",
        "tqfgenGetLibVersion"};
    return names;
}

// The global names of the linker's version script that the build wrote.
std::set<std::string> exported_names() {
    std::ifstream in(TQF_EXPORTS_MAP);
    std::set<std::string> names;
    std::string line;
    bool global = false;
    while (std::getline(in, line)) {
        const size_t a = line.find_first_not_of(" \t");
        if (a == std::string::npos) continue;
        std::string word = line.substr(a);
        if (word.rfind("global:", 0) == 0) { global = true; continue; }
        if (word.rfind("local:", 0) == 0) { global = false; continue; }
        if (!global) continue;
        const size_t semi = word.find(';');
        if (semi != std::string::npos) names.insert(word.substr(0, semi));
    }
    return names;
}

TEST(BadInput, EveryExportedNameHasCases) {
    std::set<std::string> covered = hand_checked();
    for (const AnyKernel& k : tqftest::all_kernels) covered.insert(k.name);
    for (const AnyGeneric& g : tqftest::all_generics) covered.insert(g.name);
    const std::set<std::string> exported = exported_names();
    ASSERT_FALSE(exported.empty()) << "no names read from " << TQF_EXPORTS_MAP;
    for (const std::string& name : exported)
        EXPECT_TRUE(covered.count(name)) << name << " is exported but has no bad-input cases";
    for (const std::string& name : hand_checked())
        EXPECT_TRUE(exported.count(name)) << name << " is checked by hand but not exported";
    std::printf("exported names covered: %zu\n", exported.size());
}

}  // namespace
