/// The parent's end of the connection test, with programs that give other answers instead of
/// the tool.
#include "cli/examine/ConnectionTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/system/CommandError.h"
#include "tests/support/TemporaryDirectory.h"

using namespace Veltrane::Cli;

TEST(ConnectionTest, EndsWhateverTheOtherProcessDoes) {
    static constexpr struct {
        const char* m_commands;  ///< standard input is the socket
        int m_timeout;           ///< milliseconds
        const char* m_outcome;
        const char* m_text;
    } CASES[] = {
        {"sleep 600 & wait", 50, "timed out", "No answer within 50 ms"},
        {"echo text >&0; exec sleep 600", 300'000, "not tested", "nonsense"},
        {"echo '{\"connected\": 1}' >&0", 300'000, "not tested", "nonsense"},
        {"echo '{\"reason\": \"why\"}' >&0", 300'000, "not tested", "why"},
        {"kill -9 $$", 300'000, "crashed", "signal 9 (Killed)"},
        {"exec 0</dev/null; sleep 0.1; exit 7", 300'000, "crashed", "code 7"},
    };
    const Orska::Test::TemporaryDirectory folder;
    for (const auto& [commands, timeout, outcome, text] : CASES) {
        SCOPED_TRACE(commands);
        ConnectionRequest request{{{"DSN", "sales"}}, std::chrono::milliseconds(timeout), {}, {}};
        request.m_program = folder.Write("program", std::string("#!/bin/sh\n") + commands);
        std::filesystem::permissions(request.m_program, std::filesystem::perms::owner_all);
        const nlohmann::ordered_json result = TestConnection(request);
        EXPECT_EQ(result["outcome"], outcome);
        EXPECT_NE(result["text"].get<std::string>().find(text), std::string::npos) << result;
    }
    ConnectionRequest request;
    request.m_program = folder.GetPath("none");
    EXPECT_THROW(TestConnection(request), CommandError);
}
