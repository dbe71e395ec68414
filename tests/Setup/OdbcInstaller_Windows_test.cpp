#include <gtest/gtest.h>

#include "Setup/OdbcInstaller.h"
#include "tests/installer/TestProfile.h"
#include "tests/support/InstallerStage.h"
#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <odbcinst.h>

namespace Veltrane::ODBC::OdbcInstaller {
namespace {

using namespace std::string_literals;
using Veltrane::Test::InstallerStage;
using Veltrane::Test::Profile;
namespace TestProfile = Veltrane::Test::TestProfile;
using TestProfile::Root;

const orska_wstring FILE(L"odbc.ini");
const Profile BEFORE = {{"x", {{"Driver", "drv"}, {"k", "v"}}}, {"y", {{"Driver", "drv"}}}};

class OdbcInstallerTest : public testing::Test {
protected:
    OdbcInstallerTest() { m_stage.Begin(false, BEFORE); }

    static std::string Read(const char* in_section, const char* in_key, int in_size,
                            int& out_count) {
        orska_wstring value;
        out_count = GetPrivateProfileString(orska_wstring(in_section), orska_wstring(in_key),
                                            orska_wstring(L"default"), value, in_size, FILE);
        return value.GetAsUtf8();
    }

    InstallerStage m_stage;
};

TEST_F(OdbcInstallerTest, NamesAreTheInstallersAndNeverAllOrAList) {
    const struct {
        std::u16string m_name;
        bool m_isValid;
    } cases[] = {
        {u"a", true},
        {u"ü€日本\U0001F600", true},
        {std::u16string(32, u'n'), true},
        {std::u16string(33, u'n'), false},
        {u"", false},
        {u"a[b", false},
        {u"a\\b", false},
        {u"a\0[b"s, false},
        {u"ODBC Data Sources", false},
        {u"odbc", false},
        {u"m\uFFFDll", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.m_name));
        EXPECT_EQ(ValidDSN(orska_wstring(c.m_name)), c.m_isValid);
    }
    EXPECT_FALSE(ValidDSN(orska_wstring()));
}

TEST_F(OdbcInstallerTest, TruncatesToTheBufferAtACharacter) {
    TestProfile::Write(Root::USER, L"x", L"text", L"ab\U0001F600c");
    const struct {
        const char* m_key;
        int m_size;
        const char* m_value;
        int m_count;
    } cases[] = {
        {"text", 260, "ab\U0001F600c", 5},
        {"text", 6, "ab\U0001F600c", 5},
        {"text", 5, "ab\U0001F600", 4},
        {"text", 4, "ab", 2},
        {"text", 2, "a", 1},
        {"text", 1, "", -1},
        {"absent", 260, "default", 7},
        {"absent", 4, "def", 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.m_key << " " << c.m_size);
        int count = 0;
        EXPECT_EQ(Read("x", c.m_key, c.m_size, count), c.m_value);
        EXPECT_EQ(count, c.m_count);
    }
}

TEST_F(OdbcInstallerTest, TheConfigModeSelectsTheUserOrTheSystem) {
    TestProfile::Write(Root::USER, L"x", L"k", L"user");
    TestProfile::Write(Root::SYSTEM, L"x", L"k", L"system");
    const struct {
        UWORD m_mode;
        const char* m_name;
        const char* m_read;
        Root m_written;
    } cases[] = {
        {ODBC_BOTH_DSN, "both", "user", Root::USER},
        {ODBC_USER_DSN, "user", "user", Root::USER},
        {ODBC_SYSTEM_DSN, "system", "system", Root::SYSTEM},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_name);
        SQLSetConfigMode(c.m_mode);
        int count = 0;
        EXPECT_STREQ(Request().GetModeName(), c.m_name);
        EXPECT_EQ(Read("x", "k", 260, count), c.m_read);
        EXPECT_TRUE(WriteDSNToIni(L"new", L"drv"));
        EXPECT_EQ(TestProfile::Read(c.m_written, L"new", L"Driver"), L"path of drv");
        EXPECT_EQ(TestProfile::Read(c.m_written, L"ODBC Data Sources", L"new"), L"drv");
        EXPECT_TRUE(RemoveDSNFromIni(L"new"));
        EXPECT_FALSE(TestProfile::Read(c.m_written, L"new", L"Driver"));
        EXPECT_FALSE(TestProfile::Read(c.m_written, L"ODBC Data Sources", L"new"));
    }
}

TEST_F(OdbcInstallerTest, ASystemRequestNeedsNoConfigMode) {
    TestProfile::Write(Root::USER, L"x", L"k", L"user");
    TestProfile::Write(Root::SYSTEM, L"x", L"k", L"system");
    SQLSetConfigMode(ODBC_USER_DSN);
    int count = 0;
    {
        const Request request(true);
        EXPECT_EQ(Read("x", "k", 260, count), "system");
    }
    EXPECT_EQ(Read("x", "k", 260, count), "user") << "the earlier mode";
}

TEST_F(OdbcInstallerTest, ValuesThatWereReadAreWrittenWhole) {
    const std::wstring stored(40000, L's');
    TestProfile::Write(Root::USER, L"x", L"k", stored.c_str());
    const Request request;
    int count = 0;
    const orska_wstring cut(Read("x", "k", 260, count));
    EXPECT_EQ(count, 259);
    EXPECT_TRUE(WritePrivateProfileString(L"y", L"k", cut, FILE));
    EXPECT_EQ(TestProfile::Read(Root::USER, L"y", L"k"), stored);
}

TEST_F(OdbcInstallerTest, EveryTextWithoutANulSurvives) {
    for (const std::u16string& text :
         {u""s, u" outer blanks\t"s, u"two\r\nlines"s, u"p=;#'\"[]{}\\%$"s, u"ü€日本\U0001F600"s,
          std::u16string(5000, u'x')}) {
        SCOPED_TRACE(testing::PrintToString(text));
        orska_wstring value;
        EXPECT_TRUE(WritePrivateProfileString(L"x", L"k", orska_wstring(text), FILE));
        GetPrivateProfileString(L"x", L"k", L"", value, 6000, FILE);
        EXPECT_EQ(value.GetAsUtf16(), text);
    }
    const Profile before = m_stage.Get();
    const orska_wstring nul(u"a\0b"s);
    EXPECT_FALSE(WritePrivateProfileString(L"x", L"k", nul, FILE));
    EXPECT_FALSE(WritePrivateProfileString(L"x", nul, L"v", FILE));
    EXPECT_FALSE(WritePrivateProfileString(nul, L"k", L"v", FILE));
    EXPECT_FALSE(WriteDSNToIni(nul, L"drv"));
    EXPECT_FALSE(WriteDSNToIni(L"a", orska_wstring(u"drv\0b"s)));
    EXPECT_FALSE(RemoveDSNFromIni(orska_wstring(u"x\0b"s)));
    EXPECT_EQ(m_stage.Get(), before);
}

TEST_F(OdbcInstallerTest, ANullValueRemovesTheKeyAndANullKeyTheSection) {
    EXPECT_TRUE(WritePrivateProfileString(L"x", L"k", orska_wstring(), FILE));
    EXPECT_EQ(m_stage.Get(), (Profile{{"x", {{"Driver", "drv"}}}, {"y", {{"Driver", "drv"}}}}));
    EXPECT_TRUE(WritePrivateProfileString(L"x", orska_wstring(), L"v", FILE));
    EXPECT_EQ(m_stage.Get(), (Profile{{"y", {{"Driver", "drv"}}}}));
}

TEST_F(OdbcInstallerTest, AnEmptyNameDoesNothing) {
    for (const orska_wstring& name : {orska_wstring(), orska_wstring(L"")}) {
        EXPECT_FALSE(RemoveDSNFromIni(name));
        EXPECT_FALSE(WriteDSNToIni(name, L"drv"));
        EXPECT_FALSE(WriteDSNToIni(L"a", name));
        EXPECT_FALSE(WritePrivateProfileString(name, L"k", L"v", FILE));
        EXPECT_FALSE(WritePrivateProfileString(name, orska_wstring(), orska_wstring(), FILE));
    }
    EXPECT_EQ(m_stage.Get(), BEFORE);
}

}  // namespace
}  // namespace Veltrane::ODBC::OdbcInstaller
