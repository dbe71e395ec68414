/// The built library through unixODBC's installer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <odbcinst.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/IniScratch.h"

namespace Veltrane::Test {
namespace {

using namespace std::string_literals;

/// Code and text of each installer error.
using InstallerErrors = std::vector<std::pair<unsigned long, std::string>>;

constexpr char VALUES[] =
    "DSN=sales\nServer=db1\nNamespace= cognos \nLoginMode=1\nUID=anna\nPWD=p w\nDatabase=d\n";
constexpr char SECTION[] =
    "[sales]\nDriver=Veltrane\nServer=db1\nNamespace=cognos\nLoginMode=1\nUID=anna\nPWD=p w\n"
    "Database=d\n\n";

class ConfigDataSource : public testing::Test {
protected:
    ConfigDataSource() {
        IniScratch::Write(m_scratch.SystemFile().parent_path() / "odbcinst.ini",
                          "[Veltrane]\nDescription=test\nSetup=" SETUP_LIBRARY "\n");
        IniScratch::Write(m_scratch.SystemFile(), "");
        ::setenv("ODBCINSTINI", "odbcinst.ini", 1);
        SetInitialValues(VALUES);
    }

    void SetInitialValues(const std::string& in_values) {
        IniScratch::Write(m_values, "[DSN]\n" + in_values);
        ::setenv("VELTRANE_DSN_INITIAL_VALUES", m_values.c_str(), 1);
    }

    /// Makes a request for the driver "Veltrane".
    /// @param in_list  entries with their NULs; the final NUL is added
    static bool Configure(int in_request, const std::string& in_list = {},
                          HWND in_window = nullptr) {
        // The installer reads two NULs at the end of an empty list, too.
        return SQLConfigDataSource(in_window, static_cast<WORD>(in_request), "Veltrane",
                                   (in_list + '\0').c_str()) != 0;
    }
    static bool ConfigureWide(int in_request, const std::u16string& in_list) {
        return SQLConfigDataSourceW(nullptr, static_cast<WORD>(in_request),
                                    reinterpret_cast<LPCWSTR>(u"Veltrane"),
                                    reinterpret_cast<LPCWSTR>(in_list.c_str())) != 0;
    }

    static InstallerErrors Errors() {
        InstallerErrors errors;
        DWORD code = 0;
        std::array<char, 512> text{};
        WORD length = 0;
        for (WORD i = 1; i <= 8 && SQL_SUCCEEDED(SQLInstallerError(i, &code, text.data(),
                                                                   text.size(), &length));
             ++i) {
            errors.emplace_back(code, text.data());
        }
        return errors;
    }

    static std::string Read(const char* in_key, WORD in_mode = ODBC_USER_DSN) {
        std::array<char, 4096> value{};
        SQLSetConfigMode(in_mode);
        SQLGetPrivateProfileString("sales", in_key, "(absent)", value.data(), value.size(),
                                   "odbc.ini");
        return value.data();
    }
    std::string UserFile() const { return IniScratch::Read(m_scratch.UserFile()); }
    std::string SystemFile() const { return IniScratch::Read(m_scratch.SystemFile()); }

    IniScratch m_scratch;
    std::filesystem::path m_values = m_scratch.Folder() / "values.ini";
};

TEST_F(ConfigDataSource, AddsToANewPrivateFileOfTheUser) {
    EXPECT_TRUE(Configure(ODBC_ADD_DSN)) << testing::PrintToString(Errors());
    EXPECT_EQ(UserFile(), SECTION);
    struct stat status {};
    ASSERT_EQ(::stat(m_scratch.UserFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600);
    EXPECT_EQ(SystemFile(), "");
    EXPECT_TRUE(ConfigureWide(ODBC_REMOVE_DSN, u"DSN=sales\0"s));
    EXPECT_EQ(UserFile(), "");
    EXPECT_TRUE(ConfigureWide(ODBC_ADD_DSN, u"DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_EQ(UserFile(), SECTION);
}

TEST_F(ConfigDataSource, SystemRequestsWorkOnTheSystemFile) {
    IniScratch::Write(m_scratch.UserFile(), "[sales]\nDriver=Other\n");
    EXPECT_TRUE(Configure(ODBC_ADD_SYS_DSN)) << testing::PrintToString(Errors());
    EXPECT_EQ(SystemFile(), SECTION);
    EXPECT_TRUE(Configure(ODBC_CONFIG_SYS_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_TRUE(Configure(ODBC_REMOVE_SYS_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_EQ(SystemFile(), "");
    EXPECT_EQ(UserFile(), "[sales]\nDriver=Other\n");
}

TEST_F(ConfigDataSource, ConfigureDropsUnknownKeysAndKeepsEverybodyElsesBytes) {
    IniScratch::Write(m_scratch.UserFile(),
                      "# ours\r\n\r\n[a]\r\nX = 1 ; y\r\n[sales]\r\nDriver=Veltrane\r\n"
                      "Server=old\r\nExtra=1\r\n[z]\r\nlast");
    SetInitialValues("DSN=sales\nServer=new\nDatabase=d\n");
    EXPECT_TRUE(Configure(ODBC_CONFIG_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
    EXPECT_THAT(
        UserFile(),
        testing::AllOf(testing::StartsWith("# ours\r\n\r\n[a]\r\nX = 1 ; y\r\n"),
                       testing::HasSubstr("[z]\r\nlast"),
                       testing::HasSubstr("[sales]\r\nDriver=Veltrane\r\nServer=new\r\nDatabase=d"),
                       testing::Not(testing::HasSubstr("Extra"))));
}

TEST_F(ConfigDataSource, EveryTextThatALineCanCarrySurvivesTheRealReader) {
    for (const std::string& value : {"p=;#'\"{}[]\\%$ ü€日本😀"s, ";x"s, "#x"s, "[x]"s, "a;b"s,
                                     "a # b"s, "\"q\""s, "="s, std::string(250, 'x')}) {
        SCOPED_TRACE(value);
        SetInitialValues("DSN=sales\nServer=s\nDatabase=d\nPWD=" + value + "\n");
        EXPECT_TRUE(Configure(ODBC_ADD_DSN, "DSN=sales\0"s)) << testing::PrintToString(Errors());
        EXPECT_EQ(Read("PWD"), value);
    }
}

// The installer keeps what it has read; a caller must not be given that after a save.
TEST_F(ConfigDataSource, TheCallerReadsWhatWasSaved) {
    for (const bool isSystem : {false, true}) {
        const WORD mode = isSystem ? ODBC_SYSTEM_DSN : ODBC_USER_DSN;
        const int offset = isSystem ? ODBC_ADD_SYS_DSN - ODBC_ADD_DSN : 0;
        EXPECT_EQ(Read("Server", mode), "(absent)");
        for (const std::string server : {"first", "second"}) {
            SetInitialValues("DSN=sales\nDatabase=d\nServer=" + server + "\n");
            EXPECT_TRUE(Configure(ODBC_ADD_DSN + offset));
            EXPECT_EQ(Read("Server", mode), server);
        }
        EXPECT_TRUE(Configure(ODBC_REMOVE_DSN + offset, "DSN=sales\0"s));
        EXPECT_EQ(Read("Server", mode), "(absent)");
    }
}

TEST_F(ConfigDataSource, RefusalsPostExactlyOneErrorAndChangeNothing) {
    const std::string malformed =
        "Initial values of a DSN: " + m_values.string() +
        ", line 3: neither a section, a comment nor a key with its value.";
    const struct {
        const char* m_point;
        int m_request;
        std::string m_list;
        HWND m_window;
        std::string m_values;
        std::pair<unsigned long, std::string> m_error;
    } cases[] = {
        {"a request type that there is none of",
         7,
         "DSN=sales\0"s,
         nullptr,
         VALUES,
         {5, "Invalid type of request."}},
        // What the handle points to must not matter, so it points nowhere.
        {"an empty list and a window",
         ODBC_CONFIG_DSN,
         "",
         reinterpret_cast<HWND>(1),
         VALUES,
         {8, "Invalid keyword-value pairs."}},
        {"a line feed in the name",
         ODBC_REMOVE_DSN,
         "DSN=a\nb\0"s,
         nullptr,
         VALUES,
         {8, "Invalid keyword-value pairs."}},
        {"the list of sources is no name",
         ODBC_REMOVE_DSN,
         "DSN=ODBC Data Sources\0"s,
         nullptr,
         VALUES,
         {8, "Invalid keyword-value pairs."}},
        {"no initial values", ODBC_ADD_DSN, "", nullptr, "", {11, "Request failed."}},
        {"malformed initial values",
         ODBC_ADD_DSN,
         "",
         nullptr,
         "DSN=sales\nServer\n",
         {11, malformed}},
    };
    const std::string before = "# c\n[sales]\nDriver = Veltrane\n[other]\nx=1\n";
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        IniScratch::Write(m_scratch.UserFile(), before);
        SetInitialValues(c.m_values);
        EXPECT_FALSE(Configure(c.m_request, c.m_list, c.m_window));
        // Some versions of the installer put an error of their own beside it.
        const InstallerErrors errors = Errors();
        EXPECT_EQ(std::count(errors.begin(), errors.end(), c.m_error), 1)
            << testing::PrintToString(errors);
        EXPECT_EQ(UserFile(), before);
        EXPECT_EQ(SystemFile(), "");
    }
}

TEST_F(ConfigDataSource, AThousandRequestsLeaveNoOpenFile) {
    const auto countOpenFiles = [] {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    };
    ASSERT_TRUE(Configure(ODBC_ADD_DSN));
    const auto before = countOpenFiles();
    for (int i = 0; i < 500; ++i) {
        ASSERT_TRUE(Configure(ODBC_CONFIG_DSN, "DSN=sales\0"s));
        ASSERT_FALSE(Configure(ODBC_REMOVE_DSN, "DSN=a[b\0"s));
    }
    EXPECT_EQ(countOpenFiles(), before);
}

}  // namespace
}  // namespace Veltrane::Test
