// tqfgen::error and the status names.
#include <stdexcept>

#include "cxx_support.h"

using namespace cxxtest;

TEST(CxxError, StatusNamesAreTheHeadersNames) {
    for (tqfStatus status : {tqfStsBadPlan, tqfStsBadSize, tqfStsNullPointer, tqfStsBadFlag})
        EXPECT_STREQ(tqfgen::status_name(status), expected_name(status)) << status;
    EXPECT_STREQ(tqfgen::status_name(tqfStsNoError), "tqfStsNoError");
    EXPECT_STREQ(tqfgen::status_name(-7), "unknown tqfStatus");
}

// An error is a std::runtime_error whose message names the call, the status
// and its value.
TEST(CxxError, ErrorCarriesStatusAndName) {
    std::vector<std::complex<float>> x(65), y(65);
    try {
        tqfgen::dft_fwd(x.data(), y.data(), 65, tqfgen::scale::none);
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        const auto* error = dynamic_cast<const tqfgen::error*>(&e);
        ASSERT_NE(error, nullptr);
        EXPECT_EQ(error->status(), tqfStsBadSize);
        EXPECT_STREQ(error->name(), "tqfStsBadSize");
        EXPECT_STREQ(e.what(), "tqfgen::dft_fwd: tqfStsBadSize (-6), length 65");
    }
    const tqfgen::error made(tqfStsBadFlag, "where", "what");
    EXPECT_EQ(made.status(), tqfStsBadFlag);
    EXPECT_STREQ(made.what(), "where: tqfStsBadFlag (-16), what");
}
