/// Imports DSNs of other machines as descriptions for apply, from an odbc.ini, a file DSN, an
/// export of the registry, or the JSON of PowerShell's Get-OdbcDsn.
#ifndef CLI_IMPORT_H
#define CLI_IMPORT_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/dsn/Description.h"

namespace Veltrane::Cli {

struct ImportWish {
    std::string m_source;        ///< the file's name for error texts
    std::string m_name;          ///< for a file DSN, which has none; empty: none
    std::string m_encoding;      ///< of a text that is not UTF-8; empty: windows-1252
    std::string m_driver;        ///< the driver's name on this machine
    std::string m_driverThere;   ///< name or path in the file; empty: the same
    bool m_areAllTaken = false;  ///< also the DSNs of other drivers
    bool m_areSecretsTaken = false;
    bool m_isNameGiven = false;  ///< m_name is from the options, not from the file
};

/// @param in_text  the file's bytes, but no UTF-16 and no byte order mark (Input.h)
/// @param out_notes  receives a sentence for each DSN and key that is left out
/// @return empty if all are left out
/// @throws CommandError EXIT_FAILED, with source and place, for a malformed text and one without
///         DSNs; EXIT_USAGE for an unknown encoding and a name that is missing or useless. No text
///         contains a value.
std::vector<DsnDescription> ImportDsns(std::string in_text, const ImportWish& in_wish,
                                       std::vector<std::string>& out_notes);

// The formats.

/// A DSN as it is in the file.
struct ImportedDsn {
    std::string m_name;
    std::string m_listed;  ///< its driver's name in the file's list of data sources; can be empty
    bool m_isSystem = false;
    bool m_is32Bit = false;
    std::vector<Entry> m_values;  ///< can contain the driver, by name or as a path
};

using ImportedDsns = std::vector<ImportedDsn>;

/// Converts bytes in the wish's encoding to UTF-8.
std::string DecodeAnsi(const std::string& in_bytes, const ImportWish& in_wish);

/// Returns "a}b" for "{a}}b}" of a connection string; other text unchanged.
std::string WithoutBraces(const std::string& in_text);

/// Removes [ODBC Data Sources], sets each DSN's driver from it, and notes names without a DSN.
void TakeList(ImportedDsns& io_dsns, std::vector<std::string>& out_notes);

bool IsRegistryExport(std::string_view in_text);
ImportedDsns ReadRegistryExport(std::string_view in_text, const ImportWish& in_wish,
                                std::vector<std::string>& out_notes);
ImportedDsns ReadPowerShellJson(std::string_view in_text, const ImportWish& in_wish,
                                std::vector<std::string>& out_notes);
ImportedDsns ReadForeignIni(const std::string& in_text, const ImportWish& in_wish,
                            std::vector<std::string>& out_notes);

}  // namespace Veltrane::Cli

#endif
