// Tests of the host trace: the COREHOST_TRACE switch and the line format on standard output.
#include "host/core/host_trace.h"

#include <stdlib.h>

#include <string>

#include <gtest/gtest.h>

namespace {

// Each test starts and ends with the trace off and COREHOST_TRACE unset.
class HostTrace : public ::testing::Test {
protected:
    void SetUp() override { TearDown(); }
    void TearDown() override {
        host::g_trace_enabled = false;
        unsetenv("COREHOST_TRACE");
    }

    // Runs read_trace_switch with the variable as given (null: unset) and returns what went to stdout.
    static std::string read_switch(const char* value) {
        if (value != nullptr)
            setenv("COREHOST_TRACE", value, 1);
        else
            unsetenv("COREHOST_TRACE");
        ::testing::internal::CaptureStdout();
        host::read_trace_switch();
        return ::testing::internal::GetCapturedStdout();
    }
};

TEST_F(HostTrace, OnlyANumberAboveZeroSwitchesOnAndWritesTheFirstLine) {
    for (const char* value : {static_cast<const char*>(nullptr), "", "0", "-1", "abc", "0x10", " ", "-5abc"}) {
        const char* label = value != nullptr ? value : "(unset)";
        EXPECT_EQ(read_switch(value), "") << label;
        EXPECT_FALSE(host::g_trace_enabled) << label;
        ::testing::internal::CaptureStdout();
        HOST_TRACE("Initializing .NET Core host...");
        host::trace_line("%s", "direct");
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << label << ": a trace that is off writes nothing";
    }
    for (const char* value : {"1", "2", "  7", "3abc", "+1"}) {
        host::g_trace_enabled = false;
        EXPECT_EQ(read_switch(value), "CLR host tracing enabled\r\n") << value;
        EXPECT_TRUE(host::g_trace_enabled) << value;
    }
    EXPECT_EQ(read_switch("0"), "") << "a switch already on is not read again";
    EXPECT_TRUE(host::g_trace_enabled);
    EXPECT_EQ(read_switch("1"), "") << "the first line is written once";
}

TEST_F(HostTrace, LinesAreFormattedAndEndInCarriageReturnLineFeedOnStandardOutputOnly) {
    host::g_trace_enabled = true;
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    HOST_TRACE("NETCORE_DIR: '%s'", "/opt/netcore3.1");
    HOST_TRACE(".NET Core host is down: %d", -3);
    HOST_TRACE("wrap dll loaded");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "NETCORE_DIR: '/opt/netcore3.1'\r\n.NET Core host is down: -3\r\nwrap dll loaded\r\n");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
