#include "VeltraneDialog/editors/ToolPath.h"

#include "PlatformAbstraction/base/OwnDirectory.h"
#include "VeltraneDialog/EditorChoice.h"

#ifndef VELTRANE_PROGRAM_DIRECTORY
#error "The build defines where programs are installed, relative to the editors"
#endif

namespace Veltrane::ODBC {

std::string FindTool() {
    constexpr char NAME[] = "veltrane-dsn";
    const std::string own = Orska::Support::GetOwnDirectory();
    for (const std::string& directory : {own, own + VELTRANE_PROGRAM_DIRECTORY "/"}) {
        if (WhyNotRunnable(directory + NAME).empty()) return directory + NAME;
    }
    return own + NAME;
}

}  // namespace Veltrane::ODBC
