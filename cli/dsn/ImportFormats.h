/// The formats that are imported; see Import.h. Internal.
#ifndef CLI_IMPORTFORMATS_H
#define CLI_IMPORTFORMATS_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/dsn/Import.h"

namespace Veltrane::Cli {

/// A DSN as its file has it.
struct ImportedDsn {
    std::string m_name;
    std::string m_listed;  ///< its driver's name in the file's list of data sources; may be empty
    bool m_isSystem = false;
    bool m_is32Bit = false;
    std::vector<Entry> m_values;  ///< the driver may be among them, by name or as a path
};

using ImportedDsns = std::vector<ImportedDsn>;

/// Bytes of the wish's encoding as UTF-8.
std::string DecodeAnsi(const std::string& in_bytes, const ImportWish& in_wish);

/// "{a}}b}" of a connection string as "a}b"; anything else as it is.
std::string WithoutBraces(const std::string& in_text);

/// Removes [ODBC Data Sources], gives each DSN its driver from it, and notes names found only
/// there.
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
