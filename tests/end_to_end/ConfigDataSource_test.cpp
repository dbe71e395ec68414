#include <odbcinst.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "tests/end_to_end/InstallerClient.h"

namespace Veltrane::Test {
namespace {

using namespace std::string_literals;

constexpr char FULL_VALUES[] =
    "DSN=sales\nServer=db1\nNamespace= cognos \nLoginMode=1\nUID=anna\nPWD=p w\nDatabase=d\n";
constexpr char FULL_SECTION[] =
    "[sales]\nDriver=Veltrane\nServer=db1\nNamespace=cognos\nLoginMode=1\nUID=anna\nPWD=p w\n"
    "Database=d\n\n";

class ConfigDataSource : public InstallerClientTest {};

TEST_F(ConfigDataSource, AddsADsnToANewPrivateUserFile) {
    SetInitialValues(FULL_VALUES);
    EXPECT_TRUE(Configure(ODBC_ADD_DSN, "")) << testing::PrintToString(Errors());
    EXPECT_EQ(ReadFile(m_userIni), FULL_SECTION);
    struct stat status {};
    ASSERT_EQ(stat(m_userIni.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600);
    EXPECT_EQ(ReadFile(m_systemIni), "");
}

TEST_F(ConfigDataSource, SystemRequestsWorkOnTheSystemFile) {
    SetInitialValues(FULL_VALUES);
    WriteFile(m_userIni, "[sales]\nDriver=Other\n");
    EXPECT_TRUE(Configure(ODBC_ADD_SYS_DSN, "")) << testing::PrintToString(Errors());
    EXPECT_EQ(ReadFile(m_systemIni), FULL_SECTION);
    EXPECT_EQ(ReadFile(m_userIni), "[sales]\nDriver=Other\n");
    EXPECT_TRUE(Configure(ODBC_CONFIG_SYS_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_TRUE(Configure(ODBC_REMOVE_SYS_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_EQ(ReadFile(m_systemIni), "");
    EXPECT_EQ(ReadFile(m_userIni), "[sales]\nDriver=Other\n");
}

TEST_F(ConfigDataSource, ConfigureDropsUnknownKeysAndKeepsEverybodyElsesBytes) {
    WriteFile(m_userIni,
              "# ours\r\n\r\n[a]\r\nX = 1 ; y\r\n[sales]\r\nDriver=Veltrane\r\nServer=old\r\n"
              "Extra=1\r\n[z]\r\nlast");
    SetInitialValues("DSN=sales\nServer=new\nDatabase=d\n");
    EXPECT_TRUE(Configure(ODBC_CONFIG_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
    const std::string contents = ReadFile(m_userIni);
    EXPECT_EQ(contents.find("# ours\r\n\r\n[a]\r\nX = 1 ; y\r\n"), 0U) << contents;
    EXPECT_NE(contents.find("[z]\r\nlast"), std::string::npos) << contents;
    EXPECT_NE(contents.find("[sales]\r\nDriver=Veltrane\r\nServer=new\r\nDatabase=d"),
              std::string::npos)
        << contents;
    EXPECT_EQ(contents.find("Extra"), std::string::npos) << contents;
}

TEST_F(ConfigDataSource, EveryTextThatALineCanCarrySurvivesTheRealReader) {
    const std::string values[] = {
        "p=;#'\"{}[]\\%$ ü€日本😀", ";x", "#x", "[x]", "a;b", "a # b", "\"q\"", "=",
        std::string(250, 'x'),
    };
    for (const std::string& value : values) {
        SCOPED_TRACE(value);
        SetInitialValues("DSN=sales\nServer=s\nDatabase=d\nPWD=" + value + "\n");
        EXPECT_TRUE(Configure(ODBC_ADD_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
        EXPECT_EQ(ReadThroughInstaller("sales", "PWD"), value);
    }
}

TEST_F(ConfigDataSource, WideAndNarrowListsReachTheSameCode) {
    SetInitialValues(FULL_VALUES);
    EXPECT_TRUE(ConfigureWide(ODBC_ADD_DSN, u"DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_EQ(ReadFile(m_userIni), FULL_SECTION);
    EXPECT_TRUE(ConfigureWide(ODBC_REMOVE_DSN, u"DSN=sales\0"s));
    EXPECT_EQ(ReadFile(m_userIni), "");
}

// The installer keeps what it has read; a caller must not be given that after a save.
TEST_F(ConfigDataSource, TheCallerReadsWhatWasSaved) {
    const auto read = [](unsigned short in_mode) {
        char value[100] = "";
        SQLSetConfigMode(in_mode);
        SQLGetPrivateProfileString("sales", "Server", "(absent)", value, sizeof value, "odbc.ini");
        return std::string(value);
    };
    for (const bool isSystem : {false, true}) {
        const unsigned short mode = isSystem ? ODBC_SYSTEM_DSN : ODBC_USER_DSN;
        const unsigned short offset = isSystem ? ODBC_ADD_SYS_DSN - ODBC_ADD_DSN : 0;
        EXPECT_EQ(read(mode), "(absent)");
        for (const std::string server : {"first", "second"}) {
            SetInitialValues("DSN=sales\nDatabase=d\nServer=" + server + "\n");
            EXPECT_TRUE(Configure(static_cast<unsigned short>(ODBC_ADD_DSN + offset), ""));
            EXPECT_EQ(read(mode), server);
        }
        EXPECT_TRUE(
            Configure(static_cast<unsigned short>(ODBC_REMOVE_DSN + offset), "DSN=sales\0"s));
        EXPECT_EQ(read(mode), "(absent)");
    }
}

struct Refusal {
    const char* m_point;
    unsigned short m_request;
    std::string m_attributes;
    std::string m_values;
    Window m_window;
    unsigned long m_code;
    std::string m_text;
};

/// How many of the errors are this one, whatever the installer itself put beside it.
long Count(const InstallerErrors& in_errors, unsigned long in_code, const std::string& in_text) {
    return std::count(in_errors.begin(), in_errors.end(), std::pair(in_code, in_text));
}

TEST_F(ConfigDataSource, RefusalsPostExactlyOneErrorAndChangeNothing) {
    const std::string line_feed_in_name = "DSN=a\nb\0"s;
    const Refusal cases[] = {
        {"request type 7", 7, "DSN=sales\0"s, FULL_VALUES, Window::None, 5,
         "Invalid type of request."},
        {"remove without a name", ODBC_REMOVE_DSN, "Server=x\0"s, FULL_VALUES, Window::None, 8,
         "Invalid keyword-value pairs."},
        {"remove with an invalid name", ODBC_REMOVE_DSN, "DSN=a[b\0"s, FULL_VALUES, Window::None, 8,
         "Invalid keyword-value pairs."},
        {"configure with an empty list", ODBC_CONFIG_DSN, "", FULL_VALUES, Window::None, 8,
         "Invalid keyword-value pairs."},
        {"configure with an empty list and a window", ODBC_CONFIG_DSN, "", FULL_VALUES,
         Window::Opaque, 8, "Invalid keyword-value pairs."},
        {"keys are case-sensitive", ODBC_ADD_DSN, "dsn=sales\0"s, FULL_VALUES, Window::None, 8,
         "Invalid keyword-value pairs."},
        {"a line feed in the name", ODBC_REMOVE_DSN, line_feed_in_name, FULL_VALUES, Window::None,
         8, "Invalid keyword-value pairs."},
        {"the list of sources is no name", ODBC_REMOVE_DSN, "DSN=ODBC Data Sources\0"s, FULL_VALUES,
         Window::None, 8, "Invalid keyword-value pairs."},
        {"an invalid name from the editor", ODBC_ADD_DSN, "", "DSN=a[b\nServer=s\nDatabase=d\n",
         Window::None, 11, "Request failed."},
        {"no initial values", ODBC_ADD_DSN, "", "", Window::None, 11, "Request failed."},
        {"no server", ODBC_ADD_DSN, "", "DSN=sales\nDatabase=d\n", Window::None, 11,
         "Request failed."},
        {"no database", ODBC_ADD_DSN, "", "DSN=sales\nServer=s\n", Window::None, 11,
         "Request failed."},
    };
    const std::string before = "# c\n[sales]\nDriver = Veltrane\n[other]\nx=1\n";
    for (const Refusal& c : cases) {
        SCOPED_TRACE(c.m_point);
        WriteFile(m_userIni, before);
        SetInitialValues(c.m_values);
        EXPECT_FALSE(Configure(c.m_request, c.m_attributes, c.m_window));
        EXPECT_EQ(Count(Errors(), c.m_code, c.m_text), 1) << testing::PrintToString(Errors());
        EXPECT_EQ(ReadFile(m_userIni), before);
        EXPECT_EQ(ReadFile(m_systemIni), "");
    }
}

TEST_F(ConfigDataSource, AMalformedFileOfInitialValuesIsPostedWithItsLine) {
    SetInitialValues("DSN=sales\nServer\n");
    EXPECT_FALSE(Configure(ODBC_ADD_DSN, ""));
    EXPECT_EQ(Count(Errors(), 11,
                    "Initial values of a DSN: " + m_directory +
                        "/values.ini, line 3: neither a section, a comment nor a key with its "
                        "value."),
              1)
        << testing::PrintToString(Errors());
}

TEST_F(ConfigDataSource, RemovingADsnThatIsNotThereSucceeds) {
    WriteFile(m_userIni, "[other]\nx=1\n");
    EXPECT_TRUE(Configure(ODBC_REMOVE_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_EQ(ReadFile(m_userIni), "[other]\nx=1\n");
}

TEST_F(ConfigDataSource, AThousandRequestsLeaveNoOpenFile) {
    SetInitialValues(FULL_VALUES);
    const auto countOpenFiles = [] {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    ASSERT_TRUE(Configure(ODBC_ADD_DSN, ""));
    const auto before = countOpenFiles();
    for (int i = 0; i < 500; ++i) {
        ASSERT_TRUE(Configure(ODBC_CONFIG_DSN, "DSN=sales\0"s));
        ASSERT_FALSE(Configure(ODBC_REMOVE_DSN, "DSN=a[b\0"s));
    }
    EXPECT_EQ(countOpenFiles(), before);
}

}  // namespace
}  // namespace Veltrane::Test
