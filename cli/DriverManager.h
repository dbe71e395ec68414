/// The installed driver manager as this tool uses it: SQLConfigDataSource without a window. Text is
/// UTF-8. Used by one thread.
#ifndef CLI_DRIVERMANAGER_H
#define CLI_DRIVERMANAGER_H

#include <stdexcept>
#include <string>

#include "cli/Scope.h"

namespace Veltrane::Cli {

enum class Request : unsigned short { Add = 1, Configure = 2, Remove = 3 };

/// A refused request, with the installer's code and text in its message.
class InstallerError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws what the installer holds of its last call.
/// @param in_path  the file that was to be written; a fault of it is added
[[noreturn]] void ThrowInstallerErrors(const std::string& in_path);

class DriverManager {
public:
    explicit DriverManager(Scope in_scope) : m_scope(in_scope) {}

    /// Whether the driver manager takes a text as the name of a DSN.
    static bool IsValidName(const std::string& in_name);

    Scope GetScope() const { return m_scope; }

    /// Sends a request to the setup library of a driver, without a window.
    /// @throws InstallerError with every error that the installer holds
    void Configure(Request in_request, const std::string& in_driver,
                   const std::string& in_dsn) const;

private:
    Scope m_scope;
};

}  // namespace Veltrane::Cli

#endif
