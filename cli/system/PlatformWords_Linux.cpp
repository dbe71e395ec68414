#include <filesystem>

#include "cli/system/PlatformWords.h"

namespace Veltrane::Cli {

const PlatformWords PLATFORM_WORDS = {
    "/path/to/libVeltraneSetup.so",
    "/path/to/driver.so",
    "has to begin with a slash",
    " (apt-file search finds it), or run ldconfig if it is installed.",
    "A library that it needs is too old or a different one: bring both packages to matching "
    "versions; ldd -r lists what is missing.",
    "Repair what the loader reports; ldd shows the libraries that it looks for.",
    "Create the folder, free room, or give yourself the right to write the file and its folder; "
    "ODBCINI and ODBCSYSINI choose other ones.",
    "Install the package of one: libodbc2 of unixODBC, or libiodbc2.",
    true,
    false,
};

bool IsAbsolutePath(const std::string& in_path) { return in_path.starts_with('/'); }

bool IsThere(const std::string& in_path) {
    std::error_code error;
    return std::filesystem::exists(in_path, error);
}

}  // namespace Veltrane::Cli
