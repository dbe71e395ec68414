/// No part of the tool keeps a password that it has read. Runs commands as main does, on the
/// tool's heap.
#include <gtest/gtest.h>

#include <fstream>

#include "cli/commands/Commands.h"
#include "cli/line/CommandLine.h"
#include "cli/system/CommandError.h"
#include "tests/support/PasswordCopies.h"
#include "tests/support/TemporaryDirectory.h"

namespace Veltrane::Cli {
namespace {

constexpr std::size_t LENGTH = 40;

/// Writes one text without a buffer, with the password for the "@".
void WriteFile(const std::string& in_path, const std::string& in_text) {
    std::ofstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(in_path, std::ios::binary);
    const std::size_t at = in_text.find('@');
    file << in_text.substr(0, at);
    for (const char16_t unit : ODBC::MakePassword(LENGTH)) {
        if (unit == u'"' || unit == u'\\') file << '\\';
        file << static_cast<char>(unit);
    }
    file << in_text.substr(at + 1);
}

TEST(PasswordMemory, KeepsNothingThatACommandReads) {
    const Orska::Test::TemporaryDirectory directory;
    const std::string file = directory.GetPath("file");
    const struct {
        const char* m_point;
        const char* m_text;
        std::vector<std::string> m_arguments;
    } cases[] = {
        {"a file with the password",
         "@\n",
         {"add", "x", "--server", "s", "--database", "d", "--pwd-file", file, "-n"}},
        {"a description in JSON",
         R"([{"name": "x", "values": {"Server": "s", "Database": "d", "PWD": "@"}}])",
         {"apply", file, "-n", "--json"}},
        {"a description in INI", "[x]\nServer=s\nDatabase=d\nPWD=@\n", {"apply", file, "-n"}},
        {"an unreadable description", R"([{"name": "x", "values": {"PWD": "@"})", {"apply", file}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        WriteFile(file, c.m_text);
        try {
            RunCommand(ParseCommandLine(c.m_arguments));
        } catch (const CommandError& error) {
            EXPECT_NE(error.GetExitCode(), EXIT_USAGE) << error.what();
        }
        EXPECT_EQ(ODBC::CopiesOfThePassword(), 0U);
    }
}

}  // namespace
}  // namespace Veltrane::Cli
