/// The installer's operations as the setup logic calls them. Each writes a trace line with section,
/// key and result at level 3, and one at level 1 for a text that cannot be stored. Values of UID
/// and PWD are never traced.
#ifndef SETUP_TRACEDINSTALLER_H
#define SETUP_TRACEDINSTALLER_H

#include <string>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::ODBC::TracedInstaller {

using Orska::Support::orska_wstring;

/// The operations of OdbcInstaller, with the same arguments and results.
bool ValidDSN(const orska_wstring& in_name);
int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file);
bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file);
bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver);
bool IsWritableValue(const orska_wstring& in_key, const orska_wstring& in_value);
bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver);
bool RemoveDSNFromIni(const orska_wstring& in_dsn);
bool PostInstallerError(unsigned long in_code, const orska_wstring& in_text);

/// Returns a text for a trace line, in UTF-8, with "?" for control characters, so that no text
/// looks like a line of the trace.
std::string ForTrace(const orska_wstring& in_text);

}  // namespace Veltrane::ODBC::TracedInstaller

#endif
