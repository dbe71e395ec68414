#include "Setup/ConfigDSNInternal.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <utility>

#include "Exceptions/ErrorException.h"
#include "Setup/StringMarshalling.h"
#include "Setup/VeltraneDSNResourceHelper.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "tests/support/InstallerStage.h"
#include "tests/support/VeltraneDSNDialog_Fake.h"

namespace Veltrane::ODBC {
namespace {

using namespace Orska::Support;
using Veltrane::Test::InstallerStage;
using Veltrane::Test::s_editor;

struct WithoutMessage : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

TEST(ConfigDSNInternal, EveryExceptionIsPostedOnceByItsFirstHandler) {
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
    InstallerStage stage;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_point);
        stage.Begin(false, {});
        s_editor.m_onConstruct = c.m_throw;
        EXPECT_EQ(ConfigDSNInternal(nullptr, ODBC_ADD_DSN, L"drv", L""), 0);
        EXPECT_EQ(stage.Posted(), (decltype(stage.Posted()){{c.m_code, c.m_text}}));
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
