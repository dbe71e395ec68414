/// Dispatches a setup request. Only this file turns failures into installer errors.
#ifndef SETUP_CONFIGDSNINTERNAL_H
#define SETUP_CONFIGDSNINTERNAL_H

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::ODBC {

/// The installer's request types. Most installers pass a system request as the plain type and set
/// the config mode. A request of type 4 to 6 is a system request in any mode.
enum RequestType : unsigned short {
    ODBC_ADD_DSN = 1,
    ODBC_CONFIG_DSN = 2,
    ODBC_REMOVE_DSN = 3,
    ODBC_ADD_SYS_DSN = 4,
    ODBC_CONFIG_SYS_DSN = 5,
    ODBC_REMOVE_SYS_DSN = 6,
};

/// Carries out one request.
/// @param in_parentWindow  only whether it is null matters; the handle is never used
/// @param in_attributes    key=value entries, each followed by exactly one NUL; may be empty
/// @return 1 on success. 0 on failure, with one installer error posted, unless the installer itself
///         refused to remove the DSN.
int ConfigDSNInternal(void* in_parentWindow, unsigned short in_requestType,
                      const Orska::Support::orska_wstring& in_driverDescription,
                      const Orska::Support::orska_wstring& in_attributes) noexcept;

/// Posts the exception that is being handled as exactly one installer error.
/// @return 0, the result of the failed request
int PostCurrentException() noexcept;

}  // namespace Veltrane::ODBC

#endif
