/// The imported formats; see Import.h. Internal.
#ifndef CLI_IMPORTFORMATS_H
#define CLI_IMPORTFORMATS_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/dsn/Import.h"

namespace Veltrane::Cli {

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
