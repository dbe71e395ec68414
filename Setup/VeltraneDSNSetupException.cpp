#include "Setup/VeltraneDSNSetupException.h"

#include "Setup/VeltraneDSNResourceHelper.h"
#include "tools/Assert.h"

namespace Veltrane::ODBC {

namespace {

/// The string resource of each ErrorCode.
constexpr unsigned RESOURCE_CODES[] = {101, 102, 103, 104, 105, 106};

}  // namespace

VeltraneDSNSetupException::VeltraneDSNSetupException(ErrorCode in_errorCode) noexcept
    : m_errorCode(in_errorCode) {}

unsigned long VeltraneDSNSetupException::GetErrorCode() const {
    switch (m_errorCode) {
        case INVALID_HWND:
            return 3;  // ODBC_ERROR_INVALID_HWND
        case INVALID_KEYWORD_VALUE:
            return 8;  // ODBC_ERROR_INVALID_KEYWORD_VALUE
        case INVALID_NAME:
            return 7;  // ODBC_ERROR_INVALID_NAME
        case INVALID_REQUEST_TYPE:
            return 5;  // ODBC_ERROR_INVALID_REQUEST_TYPE
        case REQUEST_FAILED:
        case DRIVER_SPECIFIC_ERROR:
            return INSTALLER_REQUEST_FAILED;
    }
    Orska::ReportAssertionFailure("false", "Setup\\VeltraneDSNSetupException", 59);
    return INSTALLER_REQUEST_FAILED;
}

Orska::Support::orska_wstring VeltraneDSNSetupException::GetErrorMsg() const {
    // Not range-checked: only the six values exist.
    return VeltraneDSNResourceHelper::LoadStringResource(RESOURCE_CODES[m_errorCode]);
}

}  // namespace Veltrane::ODBC
