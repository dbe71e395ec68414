/// The operations, on the installer of each system.
#include "Setup/OdbcInstaller.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/InstallerStage.h"

extern "C" int SQLSetConfigMode(unsigned short);

namespace Veltrane::ODBC::OdbcInstaller {
namespace {

using namespace std::string_literals;
using Veltrane::Test::InstallerStage;
using Veltrane::Test::Profile;

const orska_wstring FILE(L"odbc.ini");
const Profile BEFORE = {{"x", {{"Driver", "drv"}, {"k", "v"}}},
                        {"y", {{"Driver", "drv"}, {"text", "ab\U0001F600c"}}}};

class InstallerOperations : public testing::Test {
protected:
    InstallerOperations() { m_stage.Begin(false, BEFORE); }

    static std::pair<std::string, int> Read(const char* in_section, const char* in_key,
                                            int in_size = 260) {
        orska_wstring value;
        const int count = GetPrivateProfileString(orska_wstring(in_section), orska_wstring(in_key),
                                                  orska_wstring(L"default"), value, in_size, FILE);
        return {value.GetAsUtf8(), count};
    }

    InstallerStage m_stage;
};

TEST_F(InstallerOperations, NamesAreTheInstallersAndNeverAllOrAList) {
    constexpr bool ALWAYS = true;
    constexpr bool NEVER = false;
    const bool inRegistry = InstallerStage::IS_REGISTRY;
    const std::pair<std::u16string, bool> cases[] = {
        {u"a", ALWAYS},
        {u"ü€日本\U0001F600", ALWAYS},
        {std::u16string(32, u'n'), ALWAYS},
        {std::u16string(33, u'n'), NEVER},
        {std::u16string(31, u'n') + u"ü", inRegistry},
        {u"", NEVER},
        {u"a[b", NEVER},
        {u"a\\b", NEVER},
        {u"a;b", NEVER},
        {u"a\0b"s, NEVER},
        {u"odbc DATA sources", NEVER},
        {u"Odbc", NEVER},
        {u"m\uFFFDll", NEVER},
        {u" a", inRegistry},
        {u"a ", inRegistry},
        {u"a\nb", inRegistry},
        {u"a\x7F", inRegistry},
        {u"a\x85", inRegistry},
        {std::u16string(1, u'\xD800'), NEVER},
    };
    const Request request;  // remembers an accepted name
    for (const auto& [name, isValid] : cases) {
        SCOPED_TRACE(testing::PrintToString(name));
        for (int i = 0; i < 2; ++i) EXPECT_EQ(ValidDSN(orska_wstring(name)), isValid) << i;
    }
    EXPECT_FALSE(ValidDSN(orska_wstring()));
}

TEST_F(InstallerOperations, TruncatesToTheBufferAtACharacter) {
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
        EXPECT_EQ(Read("y", c.m_key, c.m_size), std::pair(std::string(c.m_value), c.m_count));
    }
}

TEST_F(InstallerOperations, TheConfigModeSelectsTheUserOrTheSystem) {
    enum Mode : unsigned short { BOTH, USER, SYSTEM };
    SQLSetConfigMode(SYSTEM);
    EXPECT_TRUE(WritePrivateProfileString(L"x", L"k", L"system", FILE));
    EXPECT_TRUE(WritePrivateProfileString(L"x", L"only", L"system", FILE));
    EXPECT_TRUE(WritePrivateProfileString(L"all", L"k", L"system", FILE));
    for (const Mode mode : {BOTH, USER, SYSTEM}) {
        SCOPED_TRACE(mode);
        SQLSetConfigMode(mode);
        {
            const Request request(true);
            EXPECT_EQ(Read("x", "k").first, "system");
        }
        EXPECT_STREQ(Request().GetModeName(), (std::array{"both", "user", "system"}[mode]));
        EXPECT_EQ(Read("x", "k").first, mode == SYSTEM ? "system" : "v");
        EXPECT_EQ(Read("all", "k").first, mode == USER ? "default" : "system");
        // unixODBC reads the system's file only for sections that the user's lacks.
        const bool isOnlyRead = mode == SYSTEM || (mode == BOTH && InstallerStage::IS_REGISTRY);
        EXPECT_EQ(Read("x", "only").first, isOnlyRead ? "system" : "default");
        EXPECT_TRUE(WriteDSNToIni(L"new", L"drv"));
        EXPECT_EQ(m_stage.Get().contains("new"), mode != SYSTEM);
        EXPECT_EQ(m_stage.GetOther().contains("new"), mode == SYSTEM);
        EXPECT_TRUE(RemoveDSNFromIni(L"new"));
        EXPECT_FALSE(m_stage.Get().contains("new") || m_stage.GetOther().contains("new"));
    }
}

TEST_F(InstallerOperations, ANullValueRemovesTheKeyAndANullKeyTheSection) {
    Profile after = BEFORE;
    EXPECT_TRUE(WritePrivateProfileString(L"x", L"k", orska_wstring(), FILE));
    after["x"].erase("k");
    EXPECT_EQ(m_stage.Get(), after);
    EXPECT_TRUE(WritePrivateProfileString(L"x", orska_wstring(), L"v", FILE));
    after.erase("x");
    EXPECT_EQ(m_stage.Get(), after);
}

TEST_F(InstallerOperations, AnEmptyNameDoesNothing) {
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
