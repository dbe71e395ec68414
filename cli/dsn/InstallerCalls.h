/// Calls of the installed ODBC installer. Text is UTF-8.
#ifndef CLI_INSTALLERCALLS_H
#define CLI_INSTALLERCALLS_H

#include <string>

namespace Veltrane::Cli::InstallerCalls {

/// Sends a request without a window.
/// @param in_attribute  the only entry of the list: "DSN=name"
/// @return false on failure; GetError returns the reason
bool Configure(unsigned short in_request, const std::string& in_driver,
               const std::string& in_attribute);

/// @param in_number  1 to 8, in the order in which the errors of the last call were posted
/// @return false if there is none
bool GetError(unsigned short in_number, unsigned long& out_code, std::string& out_text);

}  // namespace Veltrane::Cli::InstallerCalls

#endif
