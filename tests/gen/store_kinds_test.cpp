// The generator's scalar stores: flat offsets, stored zeros, 0.0 - t stores
// and the counts that the manifest takes from them.
#include <gtest/gtest.h>

#include <string>

#include "count.h"
#include "emit.h"
#include "kernel.h"

namespace {

using namespace tqfgen;

// A float kernel that writes a packed layout: two loads from odd offsets,
// a sum, a stored zero, a value held negated, and a widened combination.
Kernel sample() {
    Kernel k;
    k.family = "sample";
    k.precision = "32f";
    k.name = "sample_4_32f";
    k.length = 4;
    k.form = Form::Scalar;
    Graph& g = k.g;
    const Handle a = g.load_scalar(Ty::F32, 3), b = g.load_scalar(Ty::F32, 1);
    k.store(0, g.add(a, b));
    k.store_zero(1);
    k.store_keep_sign(5, -g.sub(a, b));
    const Handle wide = g.add(g.mul(g.widen(a), g.splat(Ty::F64, 2.0)), g.widen(b));
    k.store(2, wide);
    k.settle_outputs();
    return k;
}

TEST(StoreKinds, EmittedAtTheirOffsetsAfterTheLastLoad) {
    const std::string src = emit_kernel_source(sample());
    EXPECT_NE(src.find("= s[3];"), std::string::npos) << src;
    EXPECT_NE(src.find("= s[1];"), std::string::npos) << src;
    EXPECT_NE(src.find("d[1] = 0.0f;"), std::string::npos) << src;
    EXPECT_NE(src.find("d[5] = 0.0f - (v"), std::string::npos) << src;
    EXPECT_NE(src.find("d[2] = static_cast<float>(v"), std::string::npos) << src;
    EXPECT_NE(src.find("* static_cast<double>(scale))"), std::string::npos) << src;
    EXPECT_LT(src.rfind("s[", src.find("d[")), src.find("d["));
    EXPECT_NE(src.find("const tqf32f* src, tqf32f* dst, int flag"), std::string::npos) << src;
}

TEST(StoreKinds, Counted) {
    const Counts c = count_operations(sample());
    EXPECT_EQ(c.zero_sub_stores, 1);
    EXPECT_EQ(c.sign_flips, 0);  // the negation is the store's own step
    EXPECT_EQ(c.doublings, 1);
    EXPECT_EQ(c.double_adds, 1);
    EXPECT_EQ(c.double_scales, 1);
    EXPECT_EQ(c.adds, 3);
}

}  // namespace
