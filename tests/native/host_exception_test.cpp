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

TEST(PlatformErrorText, ErrnoCodesGiveTheSystemText) {
    for (int code : {1, 2, 13, 22}) {
        EXPECT_EQ(host::platform_error_text(static_cast<uint32_t>(code)), std::string(strerror(code))) << code;
    }
}

TEST(PlatformErrorText, ZeroHasASystemTextOfItsOwn) {
    std::string text = host::platform_error_text(0);
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text.find("Unknown error"), std::string::npos);
}

TEST(PlatformErrorText, UnknownCodesShowSignedDecimalAndHexadecimal) {
    EXPECT_EQ(host::platform_error_text(0x80004005u), "Unknown error: -2147467259 (0x80004005)");
    EXPECT_EQ(host::platform_error_text(0x80131506u), "Unknown error: -2146233082 (0x80131506)");
    EXPECT_EQ(host::platform_error_text(0xFFFFFFFFu), "Unknown error: -1 (0xFFFFFFFF)");
    EXPECT_EQ(host::platform_error_text(0x7FFFFFFFu), "Unknown error: 2147483647 (0x7FFFFFFF)");
    EXPECT_EQ(host::platform_error_text(100000u), "Unknown error: 100000 (0x186A0)");
}

TEST(PlatformErrorText, SmallCodeWithoutSystemTextIsUnknown) {
    // Within the errno range but not assigned: the system reports no text of its own.
    EXPECT_EQ(host::platform_error_text(4000u), "Unknown error: 4000 (0xFA0)");
}

TEST(PlatformErrorText, TextHasNoLineBreak) {
    for (uint32_t code : {0u, 1u, 2u, 5u, 12u, 28u, 0x80004005u}) {
        std::string text = host::platform_error_text(code);
        EXPECT_EQ(text.find('\r'), std::string::npos) << code;
        EXPECT_EQ(text.find('\n'), std::string::npos) << code;
    }
}

TEST(HostException, CodeZeroIsThePlatformTextWithoutSeparator) {
    HostException e(0);
    EXPECT_EQ(std::string(e.what()), host::platform_error_text(0));
    EXPECT_EQ(std::string(e.what()).find(": "), std::string::npos);
    EXPECT_EQ(e.code(), 0u);
}

TEST(HostException, UnknownCodeGivesTheUnknownErrorLine) {
    HostException e(0x80004005u);
    EXPECT_STREQ(e.what(), "Unknown error: -2147467259 (0x80004005)");
    EXPECT_EQ(e.code(), 0x80004005u);
}

TEST(HostException, ErrnoCodeGivesStrerrorText) {
    HostException e(2);
    EXPECT_STREQ(e.what(), strerror(2));
}

TEST(HostException, NegativeStatusKeepsItsLow32Bits) {
    HostException e(static_cast<uint32_t>(int32_t{-2147467259}));
    EXPECT_EQ(e.code(), 0x80004005u);
    EXPECT_STREQ(e.what(), "Unknown error: -2147467259 (0x80004005)");
}

TEST(HostException, MessageIsBuiltOnceAndCached) {
    HostException e(13);
    const char* first = e.what();
    const char* second = e.what();
    EXPECT_EQ(first, second);
    EXPECT_STREQ(second, strerror(13));
}

TEST(HostException, IsCaughtAsAStandardException) {
    try {
        throw HostException(0x80004005u);
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), "Unknown error: -2147467259 (0x80004005)");
    }
}

TEST(BaseException, PrefixIsFollowedBySeparatorOnlyForANonZeroCode) {
    BaseException with_code("While starting", 2);
    EXPECT_EQ(std::string(with_code.what()), std::string("While starting: ") + strerror(2));

    BaseException zero("While starting", 0);
    EXPECT_EQ(std::string(zero.what()), "While starting" + host::platform_error_text(0));
}

TEST(BaseException, EmptyPrefixGivesTheTextAlone) {
    BaseException e("", 0x80004005u);
    EXPECT_STREQ(e.what(), "Unknown error: -2147467259 (0x80004005)");
}

}  // namespace
