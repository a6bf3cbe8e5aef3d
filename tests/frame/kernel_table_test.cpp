// Every exported fixed-size kernel, of every family, through the build's
// table: names unique, sizes dense per family and precision, and the first
// check of the kernel contract (a null pointer wins over a bad flag).
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "kernel_table.h"

namespace {

using namespace tqftest;

template <class T>
tqfStatus call_with_null_src(const AnyKernel& k) {
    alignas(16) static T dst[64 * 2 + 2];
    if (k.entry == Entry::SrcDstFlagBuffer)
        return reinterpret_cast<SrcDstFlagBufferFn<T>>(k.fn)(nullptr, dst, 3, nullptr);
    return reinterpret_cast<SrcDstFlagFn<T>>(k.fn)(nullptr, dst, 3);
}

tqfStatus null_src_status(const AnyKernel& k) {
    const std::string p = k.precision;
    if (p == "32f") return call_with_null_src<tqf32f>(k);
    if (p == "64f") return call_with_null_src<tqf64f>(k);
    if (p == "32fc") return call_with_null_src<tqf32fc>(k);
    if (p == "64fc") return call_with_null_src<tqf64fc>(k);
    ADD_FAILURE() << k.name << ": unknown precision " << p;
    return 0;
}

TEST(KernelTable, NamesAreUniqueAndSizesDense) {
    std::set<std::string> names;
    std::map<std::string, std::set<int>> sizes;  // family_precision -> sizes
    for (const AnyKernel& k : all_kernels) {
        EXPECT_TRUE(names.insert(k.name).second) << k.name;
        EXPECT_NE(k.fn, nullptr) << k.name;
        sizes[std::string(k.family) + "_" + k.precision].insert(k.size);
    }
    for (const auto& [group, s] : sizes) EXPECT_EQ(*s.rbegin() - *s.begin() + 1, int(s.size())) << group;
}

TEST(KernelTable, EveryKernelReportsANullSourceBeforeABadFlag) {
    for (const AnyKernel& k : all_kernels) EXPECT_EQ(null_src_status(k), tqfStsNullPointer) << k.name;
}

}  // namespace
