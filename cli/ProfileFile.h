/// The odbc.ini behind a scope, and why it cannot be used.
#ifndef CLI_PROFILEFILE_H
#define CLI_PROFILEFILE_H

#include <string>

#include "cli/Scope.h"

namespace Veltrane::Cli {

/// The path that the driver manager uses, whether there is a file or not.
std::string ProfilePath(Scope in_scope);

/// Why the driver manager cannot read the scope's file: path and reason.
std::string DescribeUnreadable(Scope in_scope);

/// Why a file cannot be written: "path: reason". Empty when it can, or can be made.
std::string DescribeUnwritable(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
