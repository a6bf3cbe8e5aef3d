// The flag rule every generated kernel runs at entry: which flags divide by
// N for forward kernels, inverse kernels and kernels without a direction
// (where both of the first two flags divide, and must keep doing so).
#include <gtest/gtest.h>

#include "tqf_kernel.h"

namespace {

struct Row {
    tqfk::DividesBy by;
    int flag;
    double want;  // with one = 1, inv_n = 0.25, inv_sqrt_n = 0.5
};

TEST(ScaleRule, EachFlagPicksItsConstant) {
    using tqfk::kBothFlags;
    using tqfk::kFwdFlag;
    using tqfk::kInvFlag;
    const Row rows[] = {
        {kFwdFlag, tqfDivFwdByN, 0.25},  {kFwdFlag, tqfDivInvByN, 1.0},  {kFwdFlag, tqfDivBySqrtN, 0.5},
        {kFwdFlag, tqfNoDivByAny, 1.0},  {kInvFlag, tqfDivFwdByN, 1.0},  {kInvFlag, tqfDivInvByN, 0.25},
        {kInvFlag, tqfDivBySqrtN, 0.5},  {kInvFlag, tqfNoDivByAny, 1.0}, {kBothFlags, tqfDivFwdByN, 0.25},
        {kBothFlags, tqfDivInvByN, 0.25}, {kBothFlags, tqfDivBySqrtN, 0.5}, {kBothFlags, tqfNoDivByAny, 1.0},
    };
    for (const Row& r : rows) {
        double s = -1;
        ASSERT_TRUE(tqfk::pick_scale(r.flag, r.by, 1.0, 0.25, 0.5, &s)) << r.by << " flag " << r.flag;
        EXPECT_EQ(s, r.want) << r.by << " flag " << r.flag;
    }
    for (int bad : {0, 3, 5, 16, -1}) {
        double s = -1;
        EXPECT_FALSE(tqfk::pick_scale(bad, kBothFlags, 1.0, 0.25, 0.5, &s)) << bad;
        EXPECT_EQ(s, -1) << "a refused flag wrote the scale";
    }
}

}  // namespace
