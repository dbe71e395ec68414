/// Tests the values of the form: the tool connects with them without storing them.
#ifndef VELTRANEDIALOG_EDITORS_CONNECTIONTRY_H
#define VELTRANEDIALOG_EDITORS_CONNECTIONTRY_H

#include <string>

#include "VeltraneDialog/InitialValues.h"

namespace Veltrane::ODBC {

/// @return the path of the tool in this installation or build tree; without one, a path that cannot
///         be run
std::string FindTool();

/// Returns the driver that the host wants tested; empty if it has no library or there is no tool.
std::string GetTestedDriver();

/// The tool's arguments for a test; the connection string goes to its standard input.
inline constexpr const char* TEST_ARGUMENTS[] = {"test", "-"};

/// @return the values as a connection string in UTF-8, which can contain a password; without the
///         name and empty values
std::string MakeConnectionString(const DialogValues& in_values);

}  // namespace Veltrane::ODBC

#endif
