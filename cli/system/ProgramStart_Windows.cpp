#include <malloc.h>
#include <windows.h>
// Must follow <windows.h>.
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "VeltraneDialog/WideText.h"
#include "cli/system/ProgramStart.h"

namespace Veltrane::Cli {

namespace {

/// Process-wide: set by StartProgram, read by RestoreConsoleOutput: the previous code page of the
/// console's output; 0 without a console.
UINT s_codePageBefore = 0;

/// For Ctrl-C and a closed console. Other handlers decide whether the program ends.
BOOL WINAPI RestoreAtEvent(DWORD /*in_event*/) {
    RestoreConsoleOutput();
    return FALSE;
}

}  // namespace

void RestoreConsoleOutput() noexcept {
    if (s_codePageBefore != 0) SetConsoleOutputCP(s_codePageBefore);
}

/// The arguments of main are in the system's code page, which lacks most letters.
std::vector<std::string> StartProgram(int, char**) {
    s_codePageBefore = GetConsoleOutputCP();
    SetConsoleCtrlHandler(RestoreAtEvent, TRUE);
    std::atexit([] {
        std::fflush(stdout);  // while the console still expects UTF-8
        RestoreConsoleOutput();
    });
    SetConsoleOutputCP(CP_UTF8);
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wide == nullptr) throw std::bad_alloc();
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(ODBC::ToUtf8(wide[i]));
    LocalFree(wide);
    return arguments;
}

void ClearBlock(void* out_block) noexcept { SecureZeroMemory(out_block, _msize(out_block)); }

}  // namespace Veltrane::Cli
