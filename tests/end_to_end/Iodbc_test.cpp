// The built library through iODBC's installer library, which is loaded here by hand: its headers
// cannot be installed beside unixODBC's. Skipped where it is not installed.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/IniScratch.h"

namespace Veltrane::Test {
namespace {

using namespace std::string_literals;

constexpr unsigned short ADD = 1;
constexpr unsigned short CONFIG = 2;
constexpr unsigned short REMOVE = 3;
constexpr unsigned short SYSTEM = 3;  // what makes each of them a request for the system

using Errors = std::vector<std::pair<unsigned long, std::string>>;

/// The functions of one installer library.
struct Installer {
    explicit Installer(const char* in_name) : m_handle(::dlopen(in_name, RTLD_NOW | RTLD_LOCAL)) {
        if (m_handle == nullptr) return;
        Bind("SQLConfigDataSource", m_configure);
        Bind("SQLConfigDataSourceW", m_configureWide);
        Bind("SQLInstallerError", m_error);
        Bind("SQLSetConfigMode", m_setConfigMode);
        Bind("SQLGetPrivateProfileString", m_read);
    }

    template <typename Function>
    void Bind(const char* in_name, Function& out_function) {
        out_function = reinterpret_cast<Function>(::dlsym(m_handle, in_name));
        EXPECT_NE(out_function, nullptr) << in_name;
    }

    Errors GetErrors() const {
        Errors errors;
        for (unsigned short i = 1; i <= 8; ++i) {
            unsigned long code = 0;
            char text[512] = "";
            unsigned short length = 0;
            if (m_error(i, &code, text, sizeof text, &length) != 0) break;
            errors.emplace_back(code, text);
        }
        return errors;
    }

    std::string Read(bool in_isSystem, const char* in_section, const char* in_key) const {
        char value[2000] = "";
        m_setConfigMode(in_isSystem ? 2 : 1);
        m_read(in_section, in_key, "(absent)", value, sizeof value, "odbc.ini");
        return value;
    }

    void* m_handle;
    int (*m_configure)(void*, unsigned short, const char*, const char*) = nullptr;
    int (*m_configureWide)(void*, unsigned short, const wchar_t*, const wchar_t*) = nullptr;
    short (*m_error)(unsigned short, unsigned long*, char*, unsigned short,
                     unsigned short*) = nullptr;
    int (*m_setConfigMode)(unsigned short) = nullptr;
    int (*m_read)(const char*, const char*, const char*, char*, int, const char*) = nullptr;
};

class Iodbc : public testing::Test {
protected:
    void SetUp() override {
        if (m_iodbc.m_handle == nullptr) GTEST_SKIP() << "iODBC is not installed";
        // iODBC takes this name as it is, unixODBC in the system's folder.
        std::filesystem::current_path(m_scratch.SystemFile().parent_path());
        ::setenv("ODBCINSTINI", "odbcinst.ini", 1);
        ::setenv("SYSODBCINI", m_scratch.SystemFile().c_str(), 1);
        IniScratch::Write("odbcinst.ini", "[Veltrane]\nSetup=" SETUP_LIBRARY "\n");
        IniScratch::Write(m_scratch.SystemFile(), "");
        SetValues("DSN=sales\nServer=db1\nPWD=p w\nDatabase=d\n");
    }
    void TearDown() override { std::filesystem::current_path("/"); }

    void SetValues(const std::string& in_values) {
        const std::filesystem::path path = m_scratch.Folder() / "values.ini";
        IniScratch::Write(path, "[DSN]\n" + in_values);
        ::setenv("VELTRANE_DSN_INITIAL_VALUES", path.c_str(), 1);
    }

    bool Configure(int in_request, const std::string& in_list) const {
        return m_iodbc.m_configure(nullptr, static_cast<unsigned short>(in_request), "Veltrane",
                                   in_list.c_str()) != 0;
    }
    bool ConfigureWide(int in_request, const std::wstring& in_list) const {
        return m_iodbc.m_configureWide(nullptr, static_cast<unsigned short>(in_request),
                                       L"Veltrane", in_list.c_str()) != 0;
    }
    std::string ReadUserFile() const { return IniScratch::Read(m_scratch.UserFile()); }

    IniScratch m_scratch;
    const Installer m_iodbc{"libiodbcinst.so.2"};
};

constexpr char LISTED[] = "[ODBC Data Sources]\nsales=Veltrane\n";
constexpr char SECTION[] = "\n[sales]\nDriver=Veltrane\nServer=db1\nPWD=p w\nDatabase=d\n";
constexpr char UNLISTED[] = "[ODBC Data Sources]\n\n";

TEST_F(Iodbc, AddsConfiguresAndRemovesNarrowAndWide) {
    for (const bool isWide : {false, true}) {
        for (const bool isSystem : {false, true}) {
            SCOPED_TRACE(testing::Message() << "wide " << isWide << ", system " << isSystem);
            const auto file = isSystem ? m_scratch.SystemFile() : m_scratch.UserFile();
            const auto request = [&](int in_request, const std::string& in_list) {
                const int number = in_request + (isSystem ? SYSTEM : 0);
                return isWide ? ConfigureWide(number, {in_list.begin(), in_list.end()})
                              : Configure(number, in_list);
            };
            EXPECT_TRUE(request(ADD, ""s));
            EXPECT_EQ(IniScratch::Read(file), LISTED + (SECTION + "\n"s));
            EXPECT_EQ(m_iodbc.Read(isSystem, "sales", "Server"), "db1");
            EXPECT_EQ(m_iodbc.Read(isSystem, "sales", "PWD"), "p w");
            EXPECT_EQ(m_iodbc.Read(isSystem, "ODBC Data Sources", "sales"), "Veltrane");
            EXPECT_TRUE(request(CONFIG, "DSN=sales\0"s));
            EXPECT_EQ(IniScratch::Read(file), LISTED + (SECTION + "\n"s));
            EXPECT_TRUE(request(REMOVE, "DSN=sales\0"s));
            EXPECT_EQ(IniScratch::Read(file), UNLISTED);
            EXPECT_EQ(m_iodbc.Read(isSystem, "sales", "Server"), "(absent)");
            EXPECT_EQ(m_iodbc.GetErrors(), Errors());
            std::filesystem::remove(file);
        }
    }
}

TEST_F(Iodbc, CarriesAnyTextInFourByteCharacters) {
    SetValues("DSN=new\nServer=s\nDatabase=d\n");
    ASSERT_TRUE(Configure(ADD, ""));
    const std::string before = ReadUserFile();
    IniScratch::Write(m_scratch.UserFile(), before + "[ü€日😀]\nDriver=Veltrane\n\n");
    ASSERT_TRUE(ConfigureWide(REMOVE, L"DSN=ü€日😀\0"s));
    EXPECT_EQ(ReadUserFile(), before);
}

TEST_F(Iodbc, ValuesComeBackThroughItsReaderOrAreRefused) {
    const std::pair<const char*, bool> cases[] = {
        {"p=;#'\"{}[]\\%$ ü€日本😀", true},
        {"a;b#c", true},
        {"'a ;b'", true},
        {"[x]", true},
        {"=", true},
        {"it's", true},
        {";x", false},
        {"#x", false},
        {"a ;b", false},
        {"a # b", false},
        {"'a' #b", false},
    };
    std::string stored;
    for (const auto& [value, isCarried] : cases) {
        SCOPED_TRACE(value);
        SetValues("DSN=sales\nServer=s\nDatabase=d\nPWD="s + value + "\n");
        EXPECT_EQ(Configure(ADD, ""), isCarried);
        if (isCarried) stored = value;
        EXPECT_EQ(m_iodbc.Read(false, "sales", "PWD"), stored);
    }
}

TEST_F(Iodbc, NamesThatItsListCutsAreRefused) {
    for (const char* name : {"it's", "\"a\"", "#a", "1234567890123456789012345678901x"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(Configure(REMOVE, "DSN="s + name + '\0'));
        // Its own check of the length leaves an error of its own.
        EXPECT_THAT(m_iodbc.GetErrors(),
                    testing::Contains(std::pair(8UL, "Invalid keyword-value pairs."s)).Times(1));
    }
}

TEST_F(Iodbc, TheTextOfAnErrorOutlivesTheLibrary) {
    SetValues("DSN=sales\nServer\n");
    EXPECT_FALSE(Configure(ADD, ""));
    // Ours, and the one that iODBC adds to any failure.
    const Errors expected = {
        {11, "Initial values of a DSN: " + (m_scratch.Folder() / "values.ini").string() +
                 ", line 3: neither a section, a comment nor a key with its value."},
        {11, "Request failed"}};
    EXPECT_EQ(m_iodbc.GetErrors(), expected);
}

TEST_F(Iodbc, FindsTheFileAsItsReaderDoes) {
    const std::filesystem::path home = m_scratch.Folder() / "home";
    std::filesystem::create_directory(home);
    ::setenv("HOME", home.c_str(), 1);
    for (const char* variable : {"", "/none/odbc.ini"}) {
        SCOPED_TRACE(variable);
        ::setenv("ODBCINI", variable, 1);
        EXPECT_TRUE(Configure(ADD, ""));
        EXPECT_EQ(IniScratch::Read(home / ".odbc.ini"), LISTED + (SECTION + "\n"s));
        EXPECT_EQ(m_iodbc.Read(false, "sales", "Server"), "db1");
        EXPECT_TRUE(Configure(REMOVE, "DSN=sales\0"s));
    }
}

TEST_F(Iodbc, ReadsAndEditsAFileAsItsReaderDoes) {
    const std::string others =
        "stray text\n[Other]\nx=1 ; kept\n[sales\nk=no header\n  [ODBC Data Sources]\nold=Old\n";
    IniScratch::Write(m_scratch.UserFile(),
                      others + "'sales'=Veltrane\n\n[Sales]\n Server=goes on\n'server'=db2 ;c\n" +
                          "UID=" + std::string(1200, 'u') + "\nDriver=V\n");
    // An opened and cancelled editor saves what was loaded; without a window, the initial values.
    EXPECT_TRUE(Configure(CONFIG, "DSN=sales\0"s));
    // Keys that were there return to their places.
    EXPECT_EQ(ReadUserFile(), others + "sales=Veltrane\n\n[sales]\nServer=db1\nDriver=Veltrane\n" +
                                  "PWD=p w\nDatabase=d\n");
    EXPECT_TRUE(Configure(REMOVE, "DSN=sales\0"s));
    EXPECT_EQ(ReadUserFile(), others);
}

// One process with both driver managers: each request belongs to the one that it came from.
TEST_F(Iodbc, IsToldFromUnixOdbcInOneProcess) {
    const Installer unixOdbc("libodbcinst.so.2");
    ASSERT_NE(unixOdbc.m_handle, nullptr);
    const auto configure = [](const Installer& in_installer, const std::string& in_list) {
        return in_installer.m_configure(nullptr, REMOVE, "Veltrane", in_list.c_str()) != 0;
    };
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(configure(unixOdbc, "DSN=a[b\0"s));
        EXPECT_EQ(m_iodbc.GetErrors(), Errors());
        EXPECT_FALSE(unixOdbc.GetErrors().empty());
        EXPECT_TRUE(configure(unixOdbc, "DSN=a\0"s)) << "clears its errors";
        EXPECT_FALSE(configure(m_iodbc, "DSN=a[b\0"s));
        EXPECT_EQ(unixOdbc.GetErrors(), Errors());
        EXPECT_EQ(m_iodbc.GetErrors().size(), 2u);
        EXPECT_TRUE(configure(m_iodbc, "DSN=a\0"s));
        // A name of 32 bytes is one too long for iODBC.
        const std::string name = "DSN=12345678901234567890123456789012\0"s;
        EXPECT_TRUE(configure(unixOdbc, name));
        EXPECT_FALSE(configure(m_iodbc, name));
        EXPECT_TRUE(configure(m_iodbc, "DSN=a\0"s));
    }
}

}  // namespace
}  // namespace Veltrane::Test
