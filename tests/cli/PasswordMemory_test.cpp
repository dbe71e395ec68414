/// No part of the tool keeps a password that it has read. Runs commands as main does, on the
/// tool's heap.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/commands/Commands.h"
#include "cli/line/CommandLine.h"
#include "cli/system/CommandError.h"
#include "tests/support/PasswordCopies.h"

namespace Veltrane::Cli {
namespace {

class PasswordMemory : public testing::Test {
protected:
    PasswordMemory() : m_before(std::cout.rdbuf(m_output.rdbuf())) {}
    ~PasswordMemory() override {
        std::cout.rdbuf(m_before);
        std::error_code ignored;
        std::filesystem::remove(m_file, ignored);
    }

    /// Writes one text without a buffer, with the password for the "@".
    void WriteFile(const std::string& in_text) const {
        std::ofstream file;
        file.rdbuf()->pubsetbuf(nullptr, 0);
        file.open(m_file, std::ios::binary);
        const std::size_t at = in_text.find('@');
        file << in_text.substr(0, at);
        for (const char16_t unit : ODBC::MakePassword(LENGTH)) {
            if (unit == u'"' || unit == u'\\') file << '\\';
            file << static_cast<char>(unit);
        }
        file << in_text.substr(at + 1);
    }

    static constexpr std::size_t LENGTH = 40;
    std::ostringstream m_output;
    std::streambuf* m_before;
    std::filesystem::path m_file =
        std::filesystem::temp_directory_path() / "veltrane-dsn-password-memory";
};

TEST_F(PasswordMemory, KeepsNothingThatACommandReads) {
    const std::string file = m_file.string();
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
        WriteFile(c.m_text);
        m_output.str("");
        bool isRefused = false;
        try {
            RunCommand(ParseCommandLine(c.m_arguments));
        } catch (const CommandError&) {
            isRefused = true;
        }
        EXPECT_TRUE(isRefused || !m_output.str().empty());
        EXPECT_EQ(ODBC::CopiesOfThePassword(), 0U);
    }
}

}  // namespace
}  // namespace Veltrane::Cli
