#include "Setup/VeltraneDSNConfiguration.h"

#include <gmock/gmock.h>

#include "Setup/OdbcInstaller.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "tests/support/OdbcInstaller_Fake.h"

namespace Veltrane::ODBC {
namespace {

using Orska::Support::orska_wstring;
using testing::ElementsAre;
using Veltrane::Test::s_installer;
using namespace std::string_literals;

/// Returns the error code that a call throws; -1 for none.
template <typename Function>
long CodeOf(Function in_function) {
    try {
        in_function();
    } catch (const VeltraneDSNSetupException& exception) {
        return static_cast<long>(exception.GetErrorCode());
    }
    return -1;
}

/// All fields of a record after Load, "dsn|server|namespace|mode|uid|pwd|database".
std::string Fields(const VeltraneDSNConfiguration& in_record) {
    std::string text;
    for (const orska_wstring* field :
         {&in_record.GetDsn(), &in_record.GetServer(), &in_record.GetCognosNamespace(),
          &in_record.GetMicroStrategyLoginMode(), &in_record.GetUid(), &in_record.GetPwd(),
          &in_record.GetDatabase()}) {
        text += (text.empty() ? "" : "|") + field->GetAsUtf8();
    }
    return text;
}

class VeltraneDSNConfigurationTest : public testing::Test {
protected:
    void SetUp() override { s_installer = {}; }
};

TEST_F(VeltraneDSNConfigurationTest, LoadFindsTheNameInTheAttributeList) {
    // Takes minutes if each entry is searched together with those after it.
    std::string many;
    while (many.size() < (std::size_t{4} << 20)) many += "a\0"s;
    const struct {
        const char* m_point;
        std::string m_attributes;
        const char* m_dsn;
    } cases[] = {
        {"one entry", "DSN=x\0"s, "x"},
        {"after others", "Server=s\0DSN=x\0"s, "x"},
        {"before others", "DSN=x\0Server=s\0UID=u\0"s, "x"},
        {"many short entries: the cuts overlap", "A=1\0B=2\0C=3\0DSN=x\0D=4\0E=5\0"s, "x"},
        {"only the first = splits", "DSN==x=\0"s, "=x="},
        {"blanks in the value stay", "DSN= x \0"s, " x "},
        {"entries without =", "DSN\0junk\0DSN=x\0junk\0"s, "x"},
        {"an entry without = must not hide the next one", "junk\0DSN=x\0"s, "x"},
        {"empty entries", "\0\0DSN=x\0\0"s, "x"},
        {"an unterminated last entry", "UID=u\0DSN=x"s, "x"},
        {"text beyond the BMP", "DSN=ü\xF0\x9F\x98\x80\0"s, "ü\xF0\x9F\x98\x80"},
        {"blanks around the key", " DSN=x\0DSN =x\0"s, ""},
        {"a key that is only a prefix", "DSN1=x\0DS=x\0"s, ""},
        {"after millions of entries without =", many + "DSN=x\0"s, "x"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        VeltraneDSNConfiguration record(L"drv");
        const bool isValid = *c.m_dsn != '\0';
        EXPECT_EQ(CodeOf([&] { record.Load(orska_wstring(c.m_attributes)); }), isValid ? -1 : 8);
        EXPECT_EQ(record.GetDsn().GetAsUtf8(), c.m_dsn);
    }
}

TEST_F(VeltraneDSNConfigurationTest, LoadReplacesGivenValuesByStoredOnes) {
    s_installer.m_profile["x"] = {
        {"Driver", "d"}, {"Server", "stored"}, {"PWD", std::string(300, 'p')}};
    VeltraneDSNConfiguration record(L"drv");
    record.Load("DSN=x\0Server=given\0UID=given\0Database=given\0"s);
    EXPECT_EQ(Fields(record), "x|stored||||" + std::string(259, 'p') + "|");
    EXPECT_THAT(
        s_installer.m_calls,
        ElementsAre("Valid x", "Read [x] Server 260 odbc.ini", "Read [x] Namespace 260 odbc.ini",
                    "Read [x] LoginMode 260 odbc.ini", "Read [x] UID 260 odbc.ini",
                    "Read [x] PWD 260 odbc.ini", "Read [x] Database 260 odbc.ini"));
}

/// A record with all fields, set through the setters.
VeltraneDSNConfiguration FullRecord() {
    VeltraneDSNConfiguration record(L"drv");
    record.SetDsn(L"x");
    record.SetServer(L" s ");
    record.SetCognosNamespace(L" n ");
    record.SetMicroStrategyLoginMode(L"m");
    record.SetUid(L"u");
    record.SetPwd(L" p w ");
    record.SetDatabase(L"d");
    s_installer.m_calls.clear();
    return record;
}

TEST_F(VeltraneDSNConfigurationTest, SaveWritesANewSectionInOneUpdate) {
    VeltraneDSNConfiguration record = FullRecord();
    record.Save();
    EXPECT_THAT(s_installer.m_calls,
                ElementsAre("Begin", "Read [x] Driver 32 odbc.ini", "WriteDSN [x] drv",
                            "Write [x] Driver=drv odbc.ini", "Write [x] Server= s  odbc.ini",
                            "Write [x] Namespace=n odbc.ini", "Write [x] LoginMode=m odbc.ini",
                            "Write [x] UID=u odbc.ini", "Write [x] PWD=p w odbc.ini",
                            "Write [x] Database=d odbc.ini", "Commit"));
    EXPECT_EQ(Fields(record), "x| s |n|m|u|p w|d");
}

}  // namespace
}  // namespace Veltrane::ODBC
