#include <gtest/gtest.h>

#include <cstring>

#include "tqfgen.h"

TEST(Version, RecordFieldsAndStablePointer) {
    const tqfLibVersion* v = tqfgenGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, tqfgenGetLibVersion());
    EXPECT_EQ(v->versionMajor, 7);
    EXPECT_EQ(v->versionMinor, 0);
    EXPECT_EQ(v->buildSeries, 205);
    EXPECT_EQ(v->buildNumber, 570);
    const char tag[4] = {'v', '8', 0, 0};
    EXPECT_EQ(std::memcmp(v->cpuTag, tag, 4), 0);
    EXPECT_STREQ(v->fileName, "tqfgenv8-7.0.dll");
    EXPECT_STREQ(v->versionText, "7.0 build 205.85");
    EXPECT_STREQ(v->buildDate, "Nov 26 2011");
}

TEST(Version, RecordLayoutIsTheCallersContract) {
    // Four 32-bit numbers, a 4-byte tag, then three text pointers.
    EXPECT_EQ(offsetof(tqfLibVersion, cpuTag), 16u);
    EXPECT_EQ(offsetof(tqfLibVersion, fileName), 20u + (sizeof(void*) == 8 ? 4u : 0u));
}
