/// ODBC's declarations, and the system's functions for a program that loads its driver manager
/// itself. SQLTCHAR is the unit of text: UTF-16 on Windows; bytes on Linux, because unixODBC passes
/// on the bytes of odbc.ini, and iODBC's wide characters have another size.
#ifndef CLI_ODBCPLATFORM_H
#define CLI_ODBCPLATFORM_H

#ifdef _WIN32
#include "tools/WindowsApi.h"
#endif
// Must follow <windows.h>.
#include <odbcinst.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <string>
#include <vector>

namespace Veltrane::Cli::OdbcPlatform {

/// Possible driver managers, the usual one first.
extern const std::vector<std::string> LIBRARIES;
/// @return null with the reason
void* LoadDriverManager(const std::string& in_name, std::string& out_reason);
void* FindFunction(void* in_library, const char* in_name);

std::basic_string<SQLTCHAR> ToOdbc(const std::string& in_text);
std::string FromOdbc(std::basic_string<SQLTCHAR> in_text);

}  // namespace Veltrane::Cli::OdbcPlatform

#endif
