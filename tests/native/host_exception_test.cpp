// Tests of the host's native exceptions and of the platform's error texts behind them.
#include "host/core/host_exception.h"

#include <string.h>

#include <exception>
#include <string>

#include <gtest/gtest.h>

#include "host/core/host_trace.h"

namespace {

using host::BaseException;
using host::HostException;
using host::platform_error_text;

TEST(PlatformErrorText, SystemTextsAndTheUnknownErrorLine) {
    for (uint32_t code : {1u, 2u, 13u, 22u}) EXPECT_EQ(platform_error_text(code), strerror(code)) << code;
    EXPECT_EQ(platform_error_text(0), "Success");
    // Status codes beyond the errno range, and a small code the system has no text for.
    const std::pair<uint32_t, const char*> unknown[] = {
        {0x80004005u, "Unknown error: -2147467259 (0x80004005)"}, {0xFFFFFFFFu, "Unknown error: -1 (0xFFFFFFFF)"},
        {0x7FFFFFFFu, "Unknown error: 2147483647 (0x7FFFFFFF)"},  {100000u, "Unknown error: 100000 (0x186A0)"},
        {4000u, "Unknown error: 4000 (0xFA0)"}};
    for (const auto& c : unknown) EXPECT_EQ(platform_error_text(c.first), c.second);
    for (uint32_t code : {0u, 1u, 2u, 5u, 12u, 28u, 0x80004005u})
        EXPECT_EQ(platform_error_text(code).find_first_of("\r\n"), std::string::npos) << code;
}

TEST(HostException, CarriesTheCodeAndItsPlatformTextBuiltOnce) {
    for (uint32_t code : {0u, 2u, 13u, 0x80004005u}) {
        HostException e(code);
        EXPECT_EQ(e.code(), code);
        EXPECT_EQ(std::string(e.what()), platform_error_text(code)) << code;
        EXPECT_EQ(e.what(), e.what()) << "the text is built once and kept";
    }
    HostException negative(static_cast<uint32_t>(int32_t{-2147467259}));  // a negative status keeps its bits
    EXPECT_EQ(negative.code(), 0x80004005u);
    try {
        throw HostException(0x80004005u);
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "Unknown error: -2147467259 (0x80004005)");
    }
}

TEST(BaseException, PrefixIsFollowedBySeparatorOnlyForANonZeroCode) {
    EXPECT_EQ(std::string(BaseException("While starting", 2).what()), std::string("While starting: ") + strerror(2));
    EXPECT_STREQ(BaseException("While starting", 0).what(), "While startingSuccess");
    EXPECT_STREQ(BaseException("", 0x80004005u).what(), "Unknown error: -2147467259 (0x80004005)");
}

}  // namespace
