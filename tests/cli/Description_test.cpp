#include "cli/dsn/Description.h"

#include <gtest/gtest.h>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {
namespace {

constexpr auto JSON = DescriptionFormat::JSON;
constexpr auto INI = DescriptionFormat::INI;

std::string Spell(const std::vector<DsnDescription>& in_descriptions) {
    std::string text;
    for (const DsnDescription& d : in_descriptions) {
        text += d.m_name + "|" + d.m_driver + (d.m_isAbsent ? "|absent" : "");
        for (const auto& [key, value] : d.m_values) text += "|" + key + "=" + value;
        for (const std::string& key : d.m_unset) text += "|-" + key;
        if (!d.m_pwdVariable.empty()) text += "|env " + d.m_pwdVariable;
        if (!d.m_pwdFile.empty()) text += "|file " + d.m_pwdFile;
        text += "\n";
    }
    return text;
}

/// The DSNs, then the notes, one a line.
std::string Parse(const std::string& in_text, DescriptionFormat in_format) {
    std::vector<std::string> notes;
    std::string text = Spell(ParseDescriptions(in_text, in_format, "f", notes));
    for (const std::string& note : notes) text += note + "\n";
    return text;
}

TEST(Description, GuessesTheFormat) {
    for (const char* text : {"{\"data_sources\":[]}", " \n[ {\"name\": 1}]", "[]"}) {
        EXPECT_EQ(GuessFormat(text), JSON) << text;
    }
    for (const char* text : {"", "[sales]\n", "# c\n[a]", "; {", "k=v"}) {
        EXPECT_EQ(GuessFormat(text), INI) << text;
    }
}

TEST(Description, BothFormatsSayTheSame) {
    const std::string spelled =
        "sales|V2|Server=s|Database=日本|UID=|Trace=1\nold||absent\nenv||Server=s|env PASS\n"
        "file||Server=s|file /run/p\n";
    EXPECT_EQ(
        Parse(
            "{\"data_sources\": [{\"name\": \"sales\", \"driver\": \"V2\", \"state\": "
            "\"present\","
            "\"values\": {\"server\": \"s\", \"Database\": \"日本\", \"UID\": \"\", \"Trace\": 1}},"
            "{\"name\": \"old\", \"state\": \"absent\"},"
            "{\"name\": \"env\", \"pwd_env\": \"PASS\", \"values\": {\"Server\": \"s\"}},"
            "{\"name\": \"file\", \"pwd_file\": \"/run/p\", \"values\": {\"Server\": \"s\"}}]}",
            JSON),
        spelled);
    EXPECT_EQ(Parse("# c\r\n[ sales ]\r\ndriver = V2\r\nserver= s\r\nDatabase=日本\n"
                    "UID=\nTrace=1\n; c\n[old]\nState=absent\n[env]\nPWD_ENV=PASS\n"
                    "Server=s\n[file]\npwd_file=/run/p\nServer=s",
                    INI),
              spelled);
    EXPECT_EQ(Parse("[{\"name\":\"a\",\"values\":{\"UID\":null}}]", JSON), "a||-UID\n");
}

TEST(Description, WritesWhatItReads) {
    const std::string text =
        "[a]\nDriver=V\nServer=s\nPWD=;#\"{}[]\\=\xE2\x82\xAC\n\n[b]\nDriver=V\nX=\n";
    std::vector<std::string> notes;
    const std::vector<DsnDescription> parsed = ParseDescriptions(text, INI, "f", notes);
    EXPECT_EQ(FormatDescriptions(parsed, INI), text);
    EXPECT_EQ(Parse(FormatDescriptions(parsed, JSON), JSON), Spell(parsed));
}

TEST(Description, PassesOverWhatIsNoDsnAndSaysSo) {
    EXPECT_EQ(Parse("[ODBC Data Sources]\na=V\na\n[odbc]\nTrace=1\n[a]\nSever=s\nPWD=\n", INI),
              "a||Sever=s\n"
              "f: [ODBC Data Sources] is the driver manager's own section and is passed over.\n"
              "f: [odbc] is the driver manager's own section and is passed over.\n"
              "f: \"a\": The driver has no key Sever; did you mean Server?\n");
    EXPECT_EQ(Parse("[]", JSON), "f describes no DSN.\n");
    EXPECT_EQ(Parse("# nothing", INI), "f describes no DSN.\n");
}

TEST(Description, RefusesWithThePlaceAndWithoutValues) {
    const struct {
        DescriptionFormat m_format;
        const char* m_text;
        const char* m_part;
    } cases[] = {
        {JSON, "{\"data_sources\": [\n{\"name\": \"hunter2\" \"x\"}]}", "f, line 2, column "},
        {JSON, "{\"PWD\": \"hunter2\xFF\"}", "not JSON in UTF-8"},
        {JSON, "[{\"name\": \"a\", \"values\": {\"PWD\": 1e999}}]", "f: a number that is out"},
        {JSON, " \n", "f is empty"},
        {JSON, "[{\"name\": \"a\", \"values\": {\"PWD\": \"\"}}]", "null removes"},
        {JSON, "{\"dsn\": \"hunter2\"}", "no list"},
        {JSON, "[{\"values\": {}}]", "entry 1 has no \"name\""},
        {JSON, "[{\"name\": 1}]", "not a text"},
        {JSON, "[{\"name\": \"a\", \"state\": \"hunter2\"}]", "state"},
        {JSON, "[{\"name\": \"a\", \"valeus\": {}}]", "unknown member \"valeus\""},
        {JSON, "[{\"name\": \"a\", \"values\": {\"PWD\": [\"hunter2\"]}}]", "\"PWD\""},
        {JSON, "[{\"name\": \"a\", \"values\": {\"PWD\": \"hunter2\", \"pwd\": \"x\"}}]", "twice"},
        {JSON, "[{\"name\": \"a\", \"values\": {\"Driver\": \"hunter2\"}}]", "Driver"},
        {JSON, "[{\"name\": \"a\"}, {\"name\": \"A\"}]", "described twice"},
        {JSON, "[{\"name\": \"a\", \"pwd_env\": \"E\", \"values\": {\"PWD\": \"hunter2\"}}]",
         "password is given twice"},
        {INI, "[a]\nhunter2\n", "f, line 2: "},
        {INI, "\nPWD=hunter2\n", "f, line 2: "},
        {INI, "[hunter2\n", "f, line 1: "},
        {INI, "[a]\nPWD=x\npwd=hunter2\n", "f, line 3: "},
        {INI, "[a]\n[A]\n", "described twice"},
        {INI, "[a]\nState=hunter2\n", "f, line 2: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_text);
        try {
            Parse(c.m_text, c.m_format);
            ADD_FAILURE() << "accepted";
        } catch (const CommandError& error) {
            const std::string text = error.what();
            EXPECT_NE(text.find(c.m_part), std::string::npos) << text;
            EXPECT_EQ(text.find("hunter2"), std::string::npos) << text;
        }
    }
}

}  // namespace
}  // namespace Veltrane::Cli
