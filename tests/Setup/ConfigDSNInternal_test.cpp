#include "Setup/ConfigDSNInternal.h"

#include <gmock/gmock.h>

#include <climits>
#include <stdexcept>
#include <utility>

#include "Exceptions/ErrorException.h"
#include "Setup/StringMarshalling.h"
#include "Setup/VeltraneDSNResourceHelper.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "tests/support/OdbcInstaller_Fake.h"
#include "tests/support/VeltraneDSNDialog_Fake.h"

namespace Veltrane::ODBC {
namespace {

using namespace Orska::Support;
using testing::ElementsAre;
using Veltrane::Test::s_editor;
using Veltrane::Test::s_installer;
using namespace std::string_literals;

using Posted = std::vector<std::pair<unsigned long, std::string>>;

struct WithoutMessage : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

/// The calls to the editor and their order; Requests_test has the results.
class ConfigDSNInternalTest : public testing::Test {
protected:
    void SetUp() override {
        s_installer = {};
        s_installer.m_profile["x"] = {
            {"Driver", "drv"}, {"Server", "s"}, {"PWD", "p"}, {"Database", "d"}};
        s_editor = {};
    }

    static int Call(unsigned short in_type) {
        int window = 0;
        return ConfigDSNInternal(&window, in_type, L"drv", orska_wstring("DSN=x\0"s));
    }
};

TEST_F(ConfigDSNInternalTest, ConfigureWithAWindowFillsShowsAndReadsTheEditor) {
    EXPECT_EQ(Call(ODBC_CONFIG_DSN), 1);
    EXPECT_THAT(s_editor.m_calls,
                ElementsAre("construct", "Set DSN x", "Set Server s", "Set Namespace ",
                            "Set LoginMode ", "Set UID ", "Set PWD p", "Set Database d",
                            "ShowDialog", "Get DSN", "Get Server", "Get Namespace", "Get LoginMode",
                            "Get UID", "Get PWD", "Get Database"));
}

TEST_F(ConfigDSNInternalTest, EveryExceptionIsPostedOnceByItsFirstHandler) {
    const struct {
        const char* m_point;
        std::function<void()> m_throw;
        unsigned long m_code;
        const char* m_text;
    } cases[] = {
        {"support library", [] { throw ProductException(L"IOError"); }, 11, "IOError"},
        {"setup", [] { throw VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_HWND); },
         3, "Invalid window handle."},
        {"driver",
         [] { throw VeltraneDSNSetupException(VeltraneDSNSetupException::DRIVER_SPECIFIC_ERROR); },
         11, "Driver- or translator-specific error."},
        {"editor", [] { throw std::runtime_error("kein Fenster, ü"); }, 11, "kein Fenster, ü"},
        {"no message", [] { throw WithoutMessage(); }, 11,
         "NULLPTR is not supported for this conversion."},
        {"no memory", [] { throw std::bad_alloc(); }, 11, "std::bad_alloc"},
        {"anything else", [] { throw 42; }, 11, "Request failed."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        s_installer.m_posted.clear();
        s_editor.m_onConstruct = c.m_throw;
        EXPECT_EQ(Call(ODBC_ADD_DSN), 0);
        EXPECT_EQ(s_installer.m_posted, (Posted{{c.m_code, c.m_text}}));
    }
}

TEST(VeltraneDSNSetupException, AnUnknownValueIsAnAssertionFailure) {
    const VeltraneDSNSetupException unknown(static_cast<VeltraneDSNSetupException::ErrorCode>(6));
    testing::internal::CaptureStderr();
    EXPECT_EQ(unknown.GetErrorCode(), 11U);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Assertion failed: false, file Setup\\VeltraneDSNSetupException, line 59\n");
}

TEST(VeltraneDSNResourceHelper, AnIdThatTheTableLacksHasItsOwnText) {
    for (const unsigned id : {0U, 100U, 107U, ~0U}) {
        EXPECT_EQ(VeltraneDSNResourceHelper::LoadStringResource(id),
                  orska_wstring(L"Error loading the string"));
    }
    EXPECT_NE(VeltraneDSNResourceHelper::GetModuleInstance(), nullptr);
}

TEST(StringMarshalling, ATextThatIsTooLongIsRefused) {
    EXPECT_NO_THROW(CheckEditorStringLength(INT_MAX));
    EXPECT_THROW(CheckEditorStringLength(1U + INT_MAX), std::length_error);
}

}  // namespace
}  // namespace Veltrane::ODBC
