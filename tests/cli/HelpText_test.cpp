#include "cli/line/HelpText.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "cli/line/CommandLine.h"

namespace Veltrane::Cli {
namespace {

void ExpectNarrow(const std::string& in_text) {
    std::istringstream lines(in_text);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), MAX_COLUMNS) << line;
}

TEST(HelpText, FitsTheScreenAndNamesEveryOptionOfTheCommand) {
    ExpectNarrow(MakeOverview());
    for (const CommandInfo& command : GetCommands()) {
        SCOPED_TRACE(command.m_name);
        EXPECT_EQ(GetCommand(command.m_id).m_name, command.m_name);
        const std::string help = MakeHelp(command);
        ExpectNarrow(help);
        EXPECT_NE(help.find("Examples:\n  veltrane-dsn "), std::string::npos);
        for (const OptionInfo* option : GetOptionsOf(command.m_id)) {
            const std::string name(GetLongName(*option));
            EXPECT_EQ(help.find("\n  " + MakeOptionTitle(*option) + "\n") == std::string::npos,
                      option->m_isHidden)
                << name;
        }
        EXPECT_NE(MakeOverview().find(command.m_summary), std::string::npos);
    }
}

/// Splits an example as a shell would, quotes and continued lines only.
std::vector<std::string> SplitWords(std::string in_line) {
    std::vector<std::string> words;
    std::string word;
    bool isQuoted = false;
    for (const char c : in_line + " ") {
        if (c == '\'') {
            isQuoted = !isQuoted;
        } else if (c == ' ' && !isQuoted) {
            if (!word.empty()) words.push_back(word);
            word.clear();
        } else {
            word += c;
        }
    }
    return words;
}

TEST(HelpText, EveryExampleIsACommandLineThatIsTaken) {
    for (const CommandInfo& command : GetCommands()) {
        std::string examples(command.m_examples);
        for (std::size_t at; (at = examples.find("\\\n")) != std::string::npos;) {
            examples.erase(at, 2);
        }
        std::istringstream lines(examples);
        for (std::string line; std::getline(lines, line);) {
            SCOPED_TRACE(line);
            const std::size_t pipe = line.rfind("| ");
            std::vector<std::string> words =
                SplitWords(pipe == std::string::npos ? line : line.substr(pipe + 2));
            ASSERT_EQ(words.front(), "veltrane-dsn");
            words.erase(words.begin());
            words.resize(std::find(words.begin(), words.end(), ">") - words.begin());
            EXPECT_NO_THROW(EXPECT_EQ(ParseCommandLine(words).m_command, command.m_id));
        }
    }
}

TEST(HelpText, HelpIsShownForGroupsOfCommandsToo) {
    const auto help = [](std::vector<std::string> in_words) -> std::string {
        try {
            ParseCommandLine(std::move(in_words));
        } catch (const HelpRequest& request) {
            return request.m_text;
        }
        return "none";
    };
    EXPECT_EQ(help({"--help"}), MakeOverview());
    EXPECT_EQ(help({"driver", "--help"}), MakeOverview());
    EXPECT_EQ(help({"add", "--help"}), MakeHelp(GetCommand(CommandId::Add)));
    EXPECT_EQ(help({"driver", "list", "-h"}), MakeHelp(GetCommand(CommandId::DriverList)));
    EXPECT_EQ(help({"--version"}), MakeVersionText());
}

}  // namespace
}  // namespace Veltrane::Cli
