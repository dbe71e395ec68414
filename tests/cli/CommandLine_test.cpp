#include "cli/line/CommandLine.h"

#include <gtest/gtest.h>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {
namespace {

using Words = std::vector<std::string>;

TEST(CommandLine, TakesOptionsAnywhereAndEmptyValues) {
    const CommandLine line =
        ParseCommandLine({"add", "--uid=", "sales", "-p", "A=", "--property=B=c d", "-pC=[x,y]",
                          "--namespace", "", "--server=-x", "-n"});
    EXPECT_EQ(line.m_command, CommandId::Add);
    EXPECT_EQ(line.m_arguments, Words{"sales"});
    EXPECT_TRUE(line.Has(OptionId::Uid));
    EXPECT_EQ(line.Get(OptionId::Uid, "default"), "");
    EXPECT_TRUE(line.Has(OptionId::Namespace));
    EXPECT_EQ(line.Get(OptionId::Server), "-x");
    EXPECT_EQ(line.GetAll(OptionId::Property), (Words{"A=", "B=c d", "C=[x,y]"}));
    EXPECT_TRUE(line.Has(OptionId::DryRun));
    EXPECT_FALSE(line.Has(OptionId::System));
}

TEST(CommandLine, TakesGroupsNamesLikeCommandsAndLists) {
    EXPECT_EQ(ParseCommandLine({"driver", "list", "--json"}).m_command, CommandId::DriverList);
    EXPECT_EQ(ParseCommandLine({"show", "list"}).m_arguments, Words{"list"});
    EXPECT_EQ(ParseCommandLine({"show", "--", "--json"}).m_arguments, Words{"--json"});
    EXPECT_EQ(ParseCommandLine({"remove", "a", "--system", "b"}).m_arguments, (Words{"a", "b"}));
    EXPECT_EQ(ParseCommandLine({"apply", "-"}).m_arguments, Words{"-"});
}

TEST(CommandLine, SaysWhatIsWrongWithoutWhatMayBeAPassword) {
    const struct {
        Words m_words;
        const char* m_text;
    } cases[] = {
        {{}, "A command is missing. Try"},
        {{"--pwd", "hunter2"}, "A command is missing. Try"},
        {{"add", "a", "hunter2"}, "There is an argument too many."},
        {{"add", "a", "--pwd-stdin=hunter2"}, "--pwd-stdin takes no value."},
        {{"add", "a", "--passwd=hunter2"}, "There is no option --passwd."},
        {{"add", "a", "--server", "x", "--server", "y"}, "--server is given twice."},
        {{"list", "--", "a"}, "There is an argument too many."},
        {{"show", "a", "--user", "--system"}, "--user and --system exclude each other."},
        {{"lst", "--json"}, "There is no command lst. Did you mean list?"},
        {{"frobnicate"}, "There is no command frobnicate. Try"},
        {{"driver"}, "A command is missing after driver: register, unregister, list. Try"},
        {{"driver", "remove"}, "There is no command driver remove. Try"},
        {{"set"}, "The name of the DSN is missing. Usage: veltrane-dsn set NAME [OPTION...]."},
        {{"apply"}, "The file is missing. Usage: veltrane-dsn apply FILE [OPTION...]."},
        {{"add", "a", "--uid"}, "--uid needs a value: --uid NAME."},
        {{"add", "a", "--uid", "--json"}, "--uid needs a value"},
        {{"list", "--json=1"}, "--json takes no value."},
        {{"add", "a", "-xq"}, "There is no option -x. Try"},
        {{"add", "a", "-p"}, "--property needs a value: -p, --property KEY=VALUE."},
        {{"add", "a", "--sever=x"}, "There is no option --sever. Did you mean --server?"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.m_words));
        try {
            ParseCommandLine(c.m_words);
            ADD_FAILURE() << "accepted";
        } catch (const CommandError& error) {
            EXPECT_EQ(error.GetExitCode(), EXIT_USAGE);
            EXPECT_EQ(std::string(error.what()).find(c.m_text), 0U) << error.what();
            EXPECT_EQ(std::string(error.what()).find("hunter2"), std::string::npos);
        }
    }
}

}  // namespace
}  // namespace Veltrane::Cli
