// Tests of the host trace: the COREHOST_TRACE switch and the line format on standard output.
#include "host/core/host_trace.h"

#include <stdlib.h>

#include <string>

#include <gtest/gtest.h>

namespace {

// Runs read_trace_switch with the variable as given (null: unset) and returns what went to stdout.
std::string read_switch(const char* value) {
    value != nullptr ? setenv("COREHOST_TRACE", value, 1) : unsetenv("COREHOST_TRACE");
    ::testing::internal::CaptureStdout();
    host::read_trace_switch();
    return ::testing::internal::GetCapturedStdout();
}

TEST(HostTrace, OnlyANumberAboveZeroSwitchesOnAndLinesEndInCarriageReturnLineFeedOnStandardOutput) {
    for (const char* value : {static_cast<const char*>(nullptr), "", "0", "-1", "abc", "0x10"}) {
        const char* label = value != nullptr ? value : "(unset)";
        EXPECT_EQ(read_switch(value), "") << label;
        EXPECT_FALSE(host::g_trace_enabled) << label;
    }
    ::testing::internal::CaptureStdout();
    HOST_TRACE("Initializing .NET Core host...");
    host::trace_line("%s", "direct");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << "a trace that is off writes nothing";

    for (const char* value : {"1", "  7", "3abc", "+1"}) {
        host::g_trace_enabled = false;
        EXPECT_EQ(read_switch(value), "CLR host tracing enabled\r\n") << value;
        EXPECT_TRUE(host::g_trace_enabled) << value;
    }
    EXPECT_EQ(read_switch("1"), "") << "a switch already on is not read again: the first line is written once";

    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    HOST_TRACE("NETCORE_DIR: '%s'", "/opt/netcore3.1");
    HOST_TRACE(".NET Core host is down: %d", -3);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "NETCORE_DIR: '/opt/netcore3.1'\r\n.NET Core host is down: -3\r\n");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    host::g_trace_enabled = false;
    unsetenv("COREHOST_TRACE");
}

}  // namespace
