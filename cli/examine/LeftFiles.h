/// What a change of an odbc.ini that was killed has left beside it.
#ifndef CLI_LEFTFILES_H
#define CLI_LEFTFILES_H

#include <string>
#include <vector>

namespace Veltrane::Cli {

/// The paths of the temporary files of a file that no living process owns. None on Windows.
std::vector<std::string> FindLeftFiles(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
