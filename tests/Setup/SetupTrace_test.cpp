#include <gmock/gmock.h>

#include <stdexcept>

#include "Setup/ConfigDSNInternal.h"
#include "Setup/StringMarshalling.h"
#include "tests/support/InstallerStage.h"
#include "tests/support/TestSystem.h"
#include "tests/support/VeltraneDSNDialog_Fake.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {
namespace {

using Orska::Support::orska_wstring;
using testing::HasSubstr;
using testing::Not;
using Veltrane::Test::InstallerStage;
using Veltrane::Test::MakeDialogValues;
using Veltrane::Test::s_editor;
using namespace std::string_literals;

/// Returns the trace that requests write to standard error at a level.
template <typename Function>
std::string TraceOf(const char* in_level, Function in_requests) {
    Orska::Test::SetVariable("TR4CE", in_level);
    Orska::ResetTrace();
    testing::internal::CaptureStderr();
    in_requests();
    return testing::internal::GetCapturedStderr();
}

class SetupTrace : public testing::Test {
protected:
    SetupTrace() {
        s_editor = {};
        m_stage.Begin(
            false,
            {{"x",
              {{"Driver", "drv"}, {"Server", "srv"}, {"UID", "geheim-u"}, {"PWD", "geheim-p"}}}});
        s_editor.m_initialValues = MakeDialogValues(u"x", u"srv", u"d", u"geheim-u", u"geheim-p");
    }
    static void Call(unsigned short in_type, const std::string& in_attributes) {
        ConfigDSNInternal(nullptr, in_type, L"drv", orska_wstring(in_attributes));
    }

    InstallerStage m_stage;
};

TEST_F(SetupTrace, LevelOneShowsExceptionsAndPostedErrors) {
    const std::string trace = TraceOf("1", [] { Call(7, ""); });
    EXPECT_THAT(trace, HasSubstr("Throwing: VeltraneDSNSetupException("
                                 "VeltraneDSNSetupException::INVALID_REQUEST_TYPE)"));
    EXPECT_THAT(trace, HasSubstr("installer error 5 \"Invalid type of request.\""));
    EXPECT_EQ(TraceOf("1", [] { Call(ODBC_ADD_DSN, ""); }), "");
    EXPECT_THAT(TraceOf("1", [] { EXPECT_ANY_THROW(ToInstallerText(nullptr)); }),
                HasSubstr("Throwing: std::invalid_argument("));
}

TEST_F(SetupTrace, LevelTwoShowsTheRequestAndItsResult) {
    const std::string trace = TraceOf("2", [] { Call(ODBC_CONFIG_DSN, "DSN=x\0"s); });
    EXPECT_THAT(trace, HasSubstr("Request 2 for driver \"drv\", mode user, without window"));
    EXPECT_THAT(trace, HasSubstr("DSN \"x\""));
    EXPECT_THAT(trace, HasSubstr("Request 2: result 1"));
    EXPECT_THAT(trace, Not(HasSubstr("WritePrivateProfileString")));
}

TEST_F(SetupTrace, LevelThreeShowsEveryOperationWithItsResult) {
    const std::string trace = TraceOf("3", [] { Call(ODBC_CONFIG_DSN, "DSN=x\0"s); });
    EXPECT_THAT(trace, HasSubstr("WritePrivateProfileString:0\t[x] Server: \"srv\" = 1"));
    EXPECT_THAT(trace, HasSubstr("RemoveDSNFromIni:0\t[x] = 1"));
    EXPECT_THAT(trace, HasSubstr("GetPrivateProfileString:0\t[x] PWD: (not shown) = 1"));
    EXPECT_THAT(trace, HasSubstr("WritePrivateProfileString:0\t[x] PWD: (not shown) = 1"));
}

TEST_F(SetupTrace, NoLevelShowsUserOrPassword) {
    const std::string trace = TraceOf("254", [this] {
        Call(ODBC_ADD_DSN, "DSN=x\0PWD=geheim-p\0UID=geheim-u\0"s);
        Call(ODBC_CONFIG_DSN, "DSN=x\0PWD=geheim-p\0"s);
        Call(ODBC_REMOVE_DSN, "PWD=geheim-p\0"s);
        m_stage.FailAt("Write PWD");
        Call(ODBC_ADD_DSN, "DSN=x\0"s);
    });
    EXPECT_THAT(trace, HasSubstr("PWD"));
    EXPECT_THAT(trace, Not(HasSubstr("geheim")));
}

TEST_F(SetupTrace, ATextCannotForgeALine) {
    const std::string trace =
        TraceOf("3", [] { Call(ODBC_REMOVE_DSN, "DSN=x\nforged:1\tline\0"s); });
    EXPECT_THAT(trace, HasSubstr("[x?forged:1?line] = "));
}

}  // namespace
}  // namespace Veltrane::ODBC
