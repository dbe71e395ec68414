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

    InstallerStage m_stage;
};

TEST_F(OdbcInstallerTest, ValuesThatWereReadAreWrittenWhole) {
    const std::wstring stored(40000, L's');
    TestProfile::Write(Root::USER, L"x", L"k", stored.c_str());
    const Request request;
    orska_wstring cut;
    EXPECT_EQ(GetPrivateProfileString(L"x", L"k", L"", cut, 260, FILE), 259);
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

}  // namespace
}  // namespace Veltrane::ODBC::OdbcInstaller
