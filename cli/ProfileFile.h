/// The odbc.ini behind a scope, and why it cannot be used.
#ifndef CLI_PROFILEFILE_H
#define CLI_PROFILEFILE_H

#include <string>

#include "cli/Scope.h"

namespace Veltrane::Cli {

/// The path that the driver manager uses, whether there is a file or not.
std::string ProfilePath(Scope in_scope);

/// The file's text; empty when there is no file.
/// @throws InstallerError with path and reason when it, or the folder for it, cannot be read
std::string ReadProfileFile(Scope in_scope);

/// Whether users other than the owner may read a file.
bool IsReadableByOthers(const std::string& in_path);

/// Why a file cannot be written: "path: reason". Empty when it can, or can be made.
std::string DescribeUnwritable(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
