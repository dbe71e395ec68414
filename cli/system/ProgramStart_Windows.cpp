#include <windows.h>
// Behind the Windows API, which it needs.
#include <shellapi.h>

#include <new>

#include "VeltraneDialog/WideText_Windows.h"
#include "cli/system/ProgramStart.h"

namespace Veltrane::Cli {

/// The arguments of main are in the code page of the system, which has not every letter.
std::vector<std::string> StartProgram(int, char**) {
    SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wide == nullptr) throw std::bad_alloc();
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(ODBC::ToUtf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

}  // namespace Veltrane::Cli
