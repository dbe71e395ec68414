/// What the editors need in order to try the values of the form: the tool connects with them, they
/// are not stored.
#ifndef VELTRANEDIALOG_EDITORS_CONNECTIONTRY_H
#define VELTRANEDIALOG_EDITORS_CONNECTIONTRY_H

#include <string>

#include "VeltraneDialog/InitialValues.h"

namespace Veltrane::ODBC {

/// @return the path of the tool of this installation or build tree; where there is none, one that
///         cannot be run
std::string FindTool();

/// The driver that the host wants tested; empty when nothing can be tested, because the driver has
/// no library or there is no tool.
std::string GetTestedDriver();

/// The tool's arguments for a test; the connection string goes to its standard input.
inline constexpr const char* TEST_ARGUMENTS[] = {"test", "-"};

/// @return the values as a connection string in UTF-8, which may hold a password; the name and
///         empty values are left out
std::string MakeConnectionString(const DialogValues& in_values);

}  // namespace Veltrane::ODBC

#endif
