/// The connection test's own end, with programs in the tool's place that answer otherwise.
#include "cli/examine/ConnectionTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "cli/system/CommandError.h"
#include "tests/support/TemporaryDirectory.h"

using namespace Veltrane::Cli;

TEST(ConnectionTest, EndsWhateverTheOtherProcessDoes) {
    static constexpr struct {
        const char* m_commands;  ///< standard input is the socket
        int m_timeout;           ///< milliseconds
        bool m_isCancelled;
        ConnectionOutcome m_outcome;
        const char* m_text;
    } CASES[] = {
        {"exec sleep 600", 300'000, true, ConnectionOutcome::Cancelled, "Cancelled."},
        {"sleep 600 & wait", 50, false, ConnectionOutcome::TimedOut, "No answer within 50 ms"},
        {"echo text >&0; exec sleep 600", 300'000, false, ConnectionOutcome::NotTested, "nonsense"},
        {"echo '{\"connected\": 1}' >&0", 300'000, false, ConnectionOutcome::NotTested, "nonsense"},
        {"echo '{\"reason\": \"why\"}' >&0", 300'000, false, ConnectionOutcome::NotTested, "why"},
        {"kill -9 $$", 300'000, false, ConnectionOutcome::Crashed, "signal 9 (Killed)"},
        {"exec 0</dev/null; sleep 0.1; exit 7", 300'000, false, ConnectionOutcome::Crashed,
         "code 7"},
    };
    const Orska::Test::TemporaryDirectory folder;
    for (const auto& [commands, timeout, isCancelled, outcome, text] : CASES) {
        SCOPED_TRACE(commands);
        ConnectionRequest request{{{"DSN", "sales"}}, std::chrono::milliseconds(timeout), {}, {}};
        request.m_program = folder.Write("program", std::string("#!/bin/sh\n") + commands);
        std::filesystem::permissions(request.m_program, std::filesystem::perms::owner_all);
        ConnectionTest test(request);
        std::thread canceller([&test, isCancelled = isCancelled] {
            if (isCancelled) test.Cancel();
        });
        const ConnectionResult result = test.Wait();
        canceller.join();
        EXPECT_EQ(result.m_outcome, outcome);
        EXPECT_NE(result.m_text.find(text), std::string::npos) << result.m_text;
    }
    ConnectionRequest request;
    request.m_program = folder.GetPath("none");
    EXPECT_THROW(ConnectionTest{request}, CommandError);
}
