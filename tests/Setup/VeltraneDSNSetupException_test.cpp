#include "Setup/VeltraneDSNSetupException.h"

#include <gtest/gtest.h>

#include <exception>
#include <type_traits>

#include "Setup/VeltraneDSNResourceHelper.h"

namespace Veltrane::ODBC {
namespace {

using Orska::Support::orska_wstring;

TEST(VeltraneDSNSetupException, EveryErrorHasItsInstallerCodeAndText) {
    const struct {
        VeltraneDSNSetupException::ErrorCode m_errorCode;
        unsigned long m_installerCode;
        const wchar_t* m_text;
    } cases[] = {
        {VeltraneDSNSetupException::INVALID_HWND, 3, L"Invalid window handle."},
        {VeltraneDSNSetupException::INVALID_KEYWORD_VALUE, 8, L"Invalid keyword-value pairs."},
        {VeltraneDSNSetupException::INVALID_NAME, 7, L"Invalid driver or translator name."},
        {VeltraneDSNSetupException::INVALID_REQUEST_TYPE, 5, L"Invalid type of request."},
        {VeltraneDSNSetupException::REQUEST_FAILED, 11, L"Request failed."},
        {VeltraneDSNSetupException::DRIVER_SPECIFIC_ERROR, 11,
         L"Driver- or translator-specific error."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_errorCode);
        const VeltraneDSNSetupException exception(c.m_errorCode);
        EXPECT_EQ(exception.GetErrorCode(), c.m_installerCode);
        EXPECT_EQ(exception.GetErrorMsg(), orska_wstring(c.m_text));
    }
    static_assert(!std::is_base_of_v<std::exception, VeltraneDSNSetupException>);
}

TEST(VeltraneDSNSetupException, AnUnknownErrorBecomesRequestFailed) {
    const VeltraneDSNSetupException exception(static_cast<VeltraneDSNSetupException::ErrorCode>(6));
    testing::internal::CaptureStderr();
    EXPECT_EQ(exception.GetErrorCode(), 11U);
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(report.find("false"), std::string::npos) << report;
    EXPECT_NE(report.find("Setup\\VeltraneDSNSetupException"), std::string::npos) << report;
    EXPECT_NE(report.find("59"), std::string::npos) << report;
}

TEST(VeltraneDSNResourceHelper, AnIdThatTheTableLacksHasItsOwnText) {
    for (const unsigned id : {0U, 100U, 107U, ~0U}) {
        EXPECT_EQ(VeltraneDSNResourceHelper::LoadStringResource(id),
                  orska_wstring(L"Error loading the string"));
    }
    EXPECT_NE(VeltraneDSNResourceHelper::GetModuleInstance(), nullptr);
}

}  // namespace
}  // namespace Veltrane::ODBC
