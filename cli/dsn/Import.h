/// DSNs of other machines, from the files that people have of them: an odbc.ini, a file DSN, an
/// export of the registry, or the JSON of PowerShell's Get-OdbcDsn. They become descriptions for
/// apply.
#ifndef CLI_IMPORT_H
#define CLI_IMPORT_H

#include <string>
#include <vector>

#include "cli/dsn/Description.h"

namespace Veltrane::Cli {

struct ImportWish {
    std::string m_source;        ///< the file's name for error texts
    std::string m_name;          ///< for a file DSN, which holds none; empty: there is none
    std::string m_encoding;      ///< of a text that is not UTF-8; empty: windows-1252
    std::string m_driver;        ///< the driver's name on this machine
    std::string m_driverThere;   ///< name or path in the file; empty: the same
    bool m_areAllTaken = false;  ///< the DSNs of other drivers, too
    bool m_areSecretsTaken = false;
    bool m_isNameGiven = false;  ///< m_name was asked for and is not the file's
};

/// @param in_text  as the file has it, except UTF-16 and a byte order mark (Input.h)
/// @param out_notes  gets a sentence for each DSN and each key that is left out
/// @return none where all are left out
/// @throws CommandError EXIT_FAILED, with source and place, for a malformed text and one without
///         DSNs; EXIT_USAGE for an encoding that nobody knows and a name that is missing or of no
///         use. No text holds a value.
std::vector<DsnDescription> ImportDsns(std::string in_text, const ImportWish& in_wish,
                                       std::vector<std::string>& out_notes);

}  // namespace Veltrane::Cli

#endif
