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

// The message gives the length as the caller passed it.
TEST(CxxError, MessageNamesTheLength) {
    std::vector<float> x(16), y(16);
    for (int length : {-1, 0, 65, INT_MIN}) {
        try {
            tqfgen::dft_fwd_pack(x.data(), y.data(), length, tqfgen::scale::none);
            ADD_FAILURE() << "no exception for " << length;
        } catch (const tqfgen::error& e) {
            EXPECT_EQ(std::string(e.what()),
                      "tqfgen::dft_fwd_pack: tqfStsBadSize (-6), length " + std::to_string(length));
        }
    }
}

// The nothrow forms are declared so: callers may rely on it.
namespace {
using CF = std::complex<float>;
static_assert(noexcept(tqfgen::nothrow::dft_fwd(std::declval<const CF*>(), std::declval<CF*>(), 16,
                                                tqfgen::scale::none)));
static_assert(noexcept(tqfgen::nothrow::dft_inv(std::declval<const std::vector<CF>&>(),
                                                std::declval<std::vector<CF>&>(), tqfgen::scale::none)));
static_assert(noexcept(tqfgen::nothrow::wht(std::declval<const double*>(), std::declval<double*>(),
                                            tqfgen::fixed<5>, tqfgen::scale::none)));
static_assert(noexcept(tqfgen::nothrow::transform(std::declval<tqfgen::dct4<float>&>(), std::declval<const float*>(),
                                                  std::declval<float*>())));
static_assert(!noexcept(tqfgen::dft_fwd(std::declval<const CF*>(), std::declval<CF*>(), 16, tqfgen::scale::none)));
}  // namespace
