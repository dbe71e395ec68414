#include "Setup/OdbcIniFile.h"
#include "cli/examine/LeftFiles.h"

namespace Veltrane::Cli {

std::vector<std::string> FindLeftFiles(const std::string& in_path) {
    return ODBC::OdbcIniFile::FindLeftFiles(in_path);
}

}  // namespace Veltrane::Cli
