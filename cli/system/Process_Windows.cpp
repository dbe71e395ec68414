#include <malloc.h>
#include <windows.h>
// Must follow <windows.h>.
#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "VeltraneDialog/WideText.h"
#include "VeltraneDialog/Wipe.h"
#include "cli/system/CommandError.h"
#include "cli/system/OpenExisting.h"
#include "cli/system/Process.h"

namespace Veltrane::Cli {

namespace {

using ODBC::ToUtf8;
using ODBC::ToWide;

/// Process-wide: set by StartProgram, read by RestoreConsoleOutput: the previous code page of the
/// console's output; 0 without a console.
UINT s_codePageBefore = 0;

void RestoreConsoleOutput() {
    if (s_codePageBefore != 0) SetConsoleOutputCP(s_codePageBefore);
}

/// For Ctrl-C and a closed console. Other handlers decide whether the program ends.
BOOL WINAPI RestoreAtEvent(DWORD /*in_event*/) {
    RestoreConsoleOutput();
    return FALSE;
}

bool IsConsole(HANDLE in_handle) {
    DWORD mode = 0;
    return GetConsoleMode(in_handle, &mode) != FALSE;
}

/// Process-wide: set by SilentConsole, read by RestoreConsole: the console, and its previous mode.
HANDLE s_console = nullptr;
DWORD s_modeBefore = 0;

/// For events that end the program during the prompt.
BOOL WINAPI RestoreConsole(DWORD /*in_event*/) {
    SetConsoleMode(s_console, s_modeBefore);
    RestoreConsoleOutput();
    ExitProcess(EXIT_INTERRUPTED);
}

/// The console without echo. It is always restored. The console itself handles Backspace and the
/// end of a line.
class SilentConsole {
public:
    explicit SilentConsole(HANDLE in_handle) {
        s_console = in_handle;
        GetConsoleMode(in_handle, &s_modeBefore);
        SetConsoleCtrlHandler(RestoreConsole, TRUE);
        SetConsoleMode(in_handle, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT);
        FlushConsoleInputBuffer(in_handle);
    }
    SilentConsole(const SilentConsole&) = delete;
    SilentConsole& operator=(const SilentConsole&) = delete;
    ~SilentConsole() {
        SetConsoleMode(s_console, s_modeBefore);
        SetConsoleCtrlHandler(RestoreConsole, FALSE);
    }
};

void WriteText(HANDLE in_console, const std::string& in_text) {
    const std::wstring text = ToWide(in_text);
    WriteConsoleW(in_console, text.data(), static_cast<DWORD>(text.size()), nullptr, nullptr);
}

/// Returns the line without its end.
std::wstring ReadConsoleLine(HANDLE in_console) {
    std::wstring line(8192, L'\0');  // older consoles have no room for more
    DWORD count = 0;
    SetLastError(ERROR_SUCCESS);
    ReadConsoleW(in_console, line.data(), static_cast<DWORD>(line.size()), &count, nullptr);
    // Ctrl-C: the program ends here or in RestoreConsole, whichever comes first.
    if (GetLastError() == ERROR_OPERATION_ABORTED) {
        throw CommandError(EXIT_INTERRUPTED, INTERRUPTED);
    }
    line.resize(std::min(line.find_first_of(L"\r\n"), std::size_t{count}));
    return line;
}

}  // namespace

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

bool IsInputTerminal() { return IsConsole(GetStdHandle(STD_INPUT_HANDLE)); }

bool CanOutputShowColour() {
    // Consoles before Windows 10 do not know the sequences.
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != FALSE &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
}

std::vector<std::string> AskSecretly(const std::vector<std::string>& in_questions) {
    const WindowsHandle input = OpenExisting(L"CONIN$", GENERIC_READ | GENERIC_WRITE);
    const WindowsHandle output = OpenExisting(L"CONOUT$", GENERIC_READ | GENERIC_WRITE);
    if (!input.IsOpen() || !output.IsOpen() || !IsConsole(input.Get())) {
        Refuse(NO_TERMINAL);
    }
    const SilentConsole silent(input.Get());
    std::vector<std::string> answers;
    for (const std::string& question : in_questions) {
        WriteText(output.Get(), question);
        answers.push_back(ToUtf8(ReadConsoleLine(input.Get())));
        WriteText(output.Get(), "\n");
        if (answers.back().empty()) break;
    }
    return answers;
}

void RemoveSecret(const std::string& in_name) {
    const std::wstring name = ToWide(in_name);
    const DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0);  // with its NUL
    // Overwritten in place, in the process and in the copy of the C run-time library.
    SetEnvironmentVariableW(name.c_str(), std::wstring(size - 1, L' ').c_str());
    SetEnvironmentVariableW(name.c_str(), nullptr);
    if (char* const copy = std::getenv(in_name.c_str())) {
        ODBC::WipeBytes(copy, std::strlen(copy));
        _putenv_s(in_name.c_str(), "");
    }
}

}  // namespace Veltrane::Cli
