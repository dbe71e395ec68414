/// A failure of the setup component, with its installer error code and its message.
#ifndef SETUP_VELTRANEDSNSETUPEXCEPTION_H
#define SETUP_VELTRANEDSNSETUPEXCEPTION_H

#include <cstdint>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::ODBC {

/// ODBC_ERROR_REQUEST_FAILED: the request failed for a reason that has no code.
constexpr unsigned long INSTALLER_REQUEST_FAILED = 11;

/// Not derived from another exception type, so that handlers for those do not catch it.
class VeltraneDSNSetupException {
public:
    enum ErrorCode : std::int32_t {
        INVALID_HWND = 0,           ///< never raised by this component
        INVALID_KEYWORD_VALUE = 1,  ///< the attribute list names no valid DSN
        INVALID_NAME = 2,           ///< the installer refused to create the DSN's section
        INVALID_REQUEST_TYPE = 3,   ///< a request type other than 1 to 6
        REQUEST_FAILED = 4,         ///< a value or a profile operation was refused
        DRIVER_SPECIFIC_ERROR = 5,  ///< never raised by this component
    };

    explicit VeltraneDSNSetupException(ErrorCode in_errorCode) noexcept;

    /// Returns the code for SQLPostInstallerError. A value outside the enumeration is an assertion
    /// failure and returns 11.
    unsigned long GetErrorCode() const;

    /// The message, from the string table.
    Orska::Support::orska_wstring GetErrorMsg() const;

private:
    ErrorCode m_errorCode;
};

}  // namespace Veltrane::ODBC

#endif
