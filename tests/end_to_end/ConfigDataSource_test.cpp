/// The built library through the installers of unixODBC and iODBC. Both are loaded at run time,
/// because their headers cannot be installed together. iODBC is skipped if it is not installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/IniScratch.h"
#include "tests/support/Installer.h"

namespace Veltrane::Test {
namespace {

using namespace std::string_literals;

constexpr char SECTION[] =
    "[sales]\nDriver=Veltrane\nServer=db1\nNamespace=cognos\nLoginMode=1\nUID=anna\nPWD=p w\n"
    "Database=d\n\n";
constexpr char OTHERS[] = "# c\n[sales]\nDriver = Other\n";
const std::string SALES = "DSN=sales\0"s;

class ConfigDataSource : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (!m_installer.IsInstalled()) GTEST_SKIP() << "iODBC is not installed";
        // iODBC uses this name as it is, unixODBC in the system's folder.
        std::filesystem::current_path(m_scratch.SystemFile().parent_path());
        setenv("ODBCINSTINI", "odbcinst.ini", 1);
        setenv("SYSODBCINI", m_scratch.SystemFile().c_str(), 1);
        IniScratch::Write("odbcinst.ini", "[Veltrane]\nDescription=t\nSetup=" SETUP_LIBRARY "\n");
        IniScratch::Write(m_scratch.SystemFile(), "");
        SetValues("db1");
    }
    void TearDown() override { std::filesystem::current_path("/"); }

    /// Writes the initial values; `in_server` ends with the text after the server's line.
    void SetValues(const std::string& in_server) const {
        IniScratch::Write(m_values, "[DSN]\nDSN=sales\nServer=" + in_server +
                                        "\nNamespace= cognos \nLoginMode=1\nUID=anna\nPWD=p w\n"
                                        "Database=d\n");
        setenv("VELTRANE_DSN_INITIAL_VALUES", m_values.c_str(), 1);
    }
    std::string UserFile() const { return IniScratch::Read(m_scratch.UserFile()); }

    const bool m_isIodbc = GetParam();
    /// iODBC's list of data sources, with and without "sales".
    const std::string m_listed =
        m_isIodbc ? "[ODBC Data Sources]\nsales=Veltrane\n\n"s + SECTION : SECTION;
    const std::string m_unlisted = m_isIodbc ? "[ODBC Data Sources]\n\n" : "";
    IniScratch m_scratch;
    const std::filesystem::path m_values = m_scratch.Folder() / "values.ini";
    const Installer m_installer{m_isIodbc};
};

INSTANTIATE_TEST_SUITE_P(Of, ConfigDataSource, testing::Bool(),
                         [](const auto& in_info) { return in_info.param ? "Iodbc" : "UnixOdbc"; });

// The installer caches values; after a save the caller must not get the old ones.
TEST_P(ConfigDataSource, AddsConfiguresAndRemovesAndTheCallerReadsIt) {
    for (const bool isWide : {false, true}) {
        for (const bool isSystem : {false, true}) {
            SCOPED_TRACE(testing::Message() << "wide " << isWide << ", system " << isSystem);
            const auto file = isSystem ? m_scratch.SystemFile() : m_scratch.UserFile();
            const auto other = isSystem ? m_scratch.UserFile() : m_scratch.SystemFile();
            const auto request = [&](int in_request, const std::string& in_list) {
                EXPECT_TRUE(m_installer.Configure(in_request + isSystem * SYSTEM, in_list, isWide));
                EXPECT_EQ(m_installer.GetErrors(), Errors());
            };
            std::filesystem::remove(file);
            IniScratch::Write(other, OTHERS);
            SetValues("db1");
            request(ADD, "");
            EXPECT_EQ(IniScratch::Read(file), m_listed);
            if (!isSystem) {
                EXPECT_EQ(std::filesystem::status(file).permissions(),
                          std::filesystem::perms{0600});
            }
            EXPECT_EQ(m_installer.Read("sales", "Server", isSystem), "db1");
            SetValues("second");
            request(CONFIG, SALES);
            EXPECT_EQ(m_installer.Read("sales", "Server", isSystem), "second");
            request(REMOVE, SALES);
            EXPECT_EQ(IniScratch::Read(file), m_unlisted);
            EXPECT_EQ(m_installer.Read("sales", "Server", isSystem), "(absent)");
            EXPECT_EQ(IniScratch::Read(other), OTHERS);
        }
    }
}

TEST_P(ConfigDataSource, ValuesComeBackThroughItsReaderOrAreRefused) {
    const std::pair<std::string, bool> cases[] = {
        // The flag: iODBC's reader returns it; unixODBC's reader always does.
        {"p=;#'\"{}[]\\%$ ü€日本😀", true},
        {"a;b#c", true},
        {"'a ;b'", true},
        {"[x]", true},
        {"=", true},
        {"it's", true},
        {std::string(250, 'x'), true},
        {";x", false},
        {"#x", false},
        {"a ;b", false},
        {"a # b", false},
        {"'a' #b", false},
    };
    std::string stored = "(absent)";
    for (const auto& [value, isCarriedByIodbc] : cases) {
        SCOPED_TRACE(value);
        SetValues(value);
        const bool isCarried = isCarriedByIodbc || !m_isIodbc;
        EXPECT_EQ(m_installer.Configure(ADD, ""), isCarried);
        if (isCarried) stored = value;
        EXPECT_EQ(m_installer.Read("sales", "Server"), stored);
    }
}

TEST_P(ConfigDataSource, EditsAFileAsItsReaderReadsIt) {
    const std::string others = m_isIodbc ? "stray text\n[Other]\nx=1 ; kept\n[sales\nk=no header\n"
                                           "  [ODBC Data Sources]\nold=Old\n"
                                         : "# ours\r\n\r\n[a]\r\nX = 1 ; y\r\n";
    const std::string before =
        m_isIodbc ? "'sales'=Veltrane\n\n[Sales]\n Server=goes on\n'server'=db2 ;c\nUID=" +
                        std::string(1200, 'u') + "\nDriver=V\n"
                  : "[sales]\r\nDriver=Veltrane\r\nServer=old\r\nExtra=1\r\n[z]\r\nlast";
    // Existing keys return to their places.
    const std::string after =
        m_isIodbc ? "sales=Veltrane\n\n[sales]\nServer=db1\nUID=anna\nDriver=Veltrane\n"
                    "Namespace=cognos\nLoginMode=1\nPWD=p w\nDatabase=d\n"
                  : "[sales]\r\nDriver=Veltrane\r\nServer=db1\r\nNamespace=cognos\r\n"
                    "LoginMode=1\r\nUID=anna\r\nPWD=p w\r\nDatabase=d\r\n[z]\r\nlast";
    IniScratch::Write(m_scratch.UserFile(), others + before);
    EXPECT_TRUE(m_installer.Configure(CONFIG, SALES));
    EXPECT_EQ(UserFile(), others + after);
    EXPECT_TRUE(m_installer.Configure(REMOVE, SALES));
    EXPECT_EQ(UserFile(), others + (m_isIodbc ? "" : "[z]\r\nlast"));
}

TEST_P(ConfigDataSource, ARefusalPostsItsErrorOnceAndChangesNothing) {
    const std::pair<unsigned long, std::string> keyword(8, "Invalid keyword-value pairs.");
    const std::string malformed =
        "Initial values of a DSN: " + m_values.string() +
        ", line 4: neither a section, a comment nor a key with its value.";
    const struct {
        const char* m_point;
        int m_request;
        std::string m_list;
        std::pair<unsigned long, std::string> m_error;
        bool m_isByUnixOdbc = true;
    } cases[] = {
        {"the text outlives the library", ADD, "", {11, malformed}},
        {"a name that its list cuts", REMOVE, "DSN=it's\0"s, keyword, false},
        {"one in quotes", REMOVE, "DSN=\"a\"\0"s, keyword, false},
        {"a comment", REMOVE, "DSN=#a\0"s, keyword, false},
        {"32 bytes", REMOVE, "DSN=1234567890123456789012345678901x\0"s, keyword, false},
    };
    SetValues("s\nnonsense");
    IniScratch::Write(m_scratch.UserFile(), OTHERS);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        const bool isRefused = m_isIodbc || c.m_isByUnixOdbc;
        EXPECT_EQ(m_installer.Configure(c.m_request, c.m_list), !isRefused);
        // Some versions of the installer add their own error.
        const Errors errors = m_installer.GetErrors();
        EXPECT_EQ(std::count(errors.begin(), errors.end(), c.m_error), isRefused ? 1 : 0)
            << testing::PrintToString(errors);
        EXPECT_EQ(UserFile(), OTHERS);
    }
}

TEST_P(ConfigDataSource, AThousandRequestsLeaveNoOpenFile) {
    ASSERT_TRUE(m_installer.Configure(ADD, ""));
    const auto before = IniScratch::CountOpenFiles();
    for (int i = 0; i < 500; ++i) {
        ASSERT_TRUE(m_installer.Configure(CONFIG, SALES));
        ASSERT_FALSE(m_installer.Configure(REMOVE, "DSN=a[b\0"s));
    }
    EXPECT_EQ(IniScratch::CountOpenFiles(), before);
}

class Iodbc : public ConfigDataSource {};

INSTANTIATE_TEST_SUITE_P(Of, Iodbc, testing::Values(true), [](const auto&) { return "Iodbc"; });

TEST_P(Iodbc, StoresAnyTextInFourByteCharacters) {
    ASSERT_TRUE(m_installer.Configure(ADD, ""));
    const std::string before = UserFile();
    IniScratch::Write(m_scratch.UserFile(), before + "[ü€日😀]\nDriver=Veltrane\n\n");
    ASSERT_TRUE(m_installer.Configure(REMOVE, "DSN=ü€日😀\0"s, true));
    EXPECT_EQ(UserFile(), before);
}

TEST_P(Iodbc, FindsTheFileAsItsReaderDoes) {
    const std::filesystem::path home = m_scratch.Folder() / "home";
    std::filesystem::create_directory(home);
    setenv("HOME", home.c_str(), 1);
    for (const char* variable : {"", "/none/odbc.ini"}) {
        SCOPED_TRACE(variable);
        setenv("ODBCINI", variable, 1);
        EXPECT_TRUE(m_installer.Configure(ADD, ""));
        EXPECT_EQ(IniScratch::Read(home / ".odbc.ini"), m_listed);
        EXPECT_EQ(m_installer.Read("sales", "Server"), "db1");
        EXPECT_TRUE(m_installer.Configure(REMOVE, SALES));
    }
}

// One process with both driver managers: each request uses the one that made it.
TEST_P(Iodbc, IsDistinctFromUnixOdbcInOneProcess) {
    const Installer unixOdbc(false);
    ASSERT_TRUE(unixOdbc.IsInstalled());
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(unixOdbc.Configure(REMOVE, "DSN=a[b\0"s));
        EXPECT_EQ(m_installer.GetErrors(), Errors());
        EXPECT_FALSE(unixOdbc.GetErrors().empty());
        EXPECT_TRUE(unixOdbc.Configure(REMOVE, "DSN=a\0"s)) << "clears its errors";
        EXPECT_FALSE(m_installer.Configure(REMOVE, "DSN=a[b\0"s));
        EXPECT_EQ(unixOdbc.GetErrors(), Errors());
        EXPECT_EQ(m_installer.GetErrors().size(), 2u);
        // A name of 32 bytes is one too long for iODBC.
        const std::string name = "DSN=12345678901234567890123456789012\0"s;
        EXPECT_TRUE(unixOdbc.Configure(REMOVE, name));
        EXPECT_FALSE(m_installer.Configure(REMOVE, name));
        EXPECT_TRUE(m_installer.Configure(REMOVE, "DSN=a\0"s));
    }
}

}  // namespace
}  // namespace Veltrane::Test
