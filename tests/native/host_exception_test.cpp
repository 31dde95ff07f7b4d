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
    for (uint32_t code : {1u, 2u, 13u}) EXPECT_EQ(platform_error_text(code), strerror(code)) << code;
    EXPECT_EQ(platform_error_text(0), "Success");
    // Status codes beyond the errno range, and a small code the system has no text for.
    const std::pair<uint32_t, const char*> unknown[] = {
        {0x80004005u, "Unknown error: -2147467259 (0x80004005)"}, {0xFFFFFFFFu, "Unknown error: -1 (0xFFFFFFFF)"},
        {0x7FFFFFFFu, "Unknown error: 2147483647 (0x7FFFFFFF)"},  {4000u, "Unknown error: 4000 (0xFA0)"}};
    for (const auto& c : unknown) EXPECT_EQ(platform_error_text(c.first), c.second);
}

TEST(HostException, CarriesTheCodeAndItsTextBuiltOnceAndAPrefixBeforeANonZeroCode) {
    for (int32_t status : {0, 13, -2147467259}) {  // a negative status keeps its bits
        const HostException e(static_cast<uint32_t>(status));
        EXPECT_EQ(e.code(), static_cast<uint32_t>(status));
        EXPECT_EQ(std::string(e.what()), platform_error_text(static_cast<uint32_t>(status))) << status;
        EXPECT_EQ(e.what(), e.what()) << "the text is built once and kept";
    }
    EXPECT_EQ(std::string(BaseException("While starting", 2).what()), std::string("While starting: ") + strerror(2));
    EXPECT_STREQ(BaseException("While starting", 0).what(), "While startingSuccess");
    EXPECT_STREQ(BaseException("", 0x80004005u).what(), "Unknown error: -2147467259 (0x80004005)");
}

}  // namespace
