/// The question for a password at a fake console: its functions replace those of the
/// import library.
#include <gmock/gmock.h>

#include <deque>
#include <string>

#include "cli/system/CommandError.h"
#include "cli/system/Terminal.h"
#include "tools/WindowsApi.h"

namespace {

using testing::ElementsAre;

// Process-wide: set by a test and by the functions below, read by both.
std::deque<std::wstring> s_typed;  ///< the text of each read; empty: Ctrl-C ends it
DWORD s_mode = 0;
bool s_isImpersonated = true;

template <typename Function>
Function* Real(const char* in_name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), in_name)));
}

HANDLE WINAPI OpenFile(LPCWSTR in_path, DWORD in_access, DWORD in_share,
                       LPSECURITY_ATTRIBUTES in_rights, DWORD in_how, DWORD in_flags,
                       HANDLE in_template) {
    if (std::wstring_view(in_path).starts_with(L"CON")) {
        s_isImpersonated =
            (in_flags & SECURITY_SQOS_PRESENT) == 0 || (in_flags & SECURITY_IMPERSONATION) != 0;
        return CreateEventW(nullptr, FALSE, FALSE, nullptr);
    }
    return Real<decltype(CreateFileW)>("CreateFileW")(in_path, in_access, in_share, in_rights,
                                                      in_how, in_flags, in_template);
}

BOOL WINAPI Read(HANDLE, LPVOID out_text, DWORD in_size, LPDWORD out_count, LPVOID) {
    if (s_typed.empty()) ADD_FAILURE() << "a user would have to type more";
    const std::wstring text = s_typed.empty() ? L"" : s_typed.front();
    if (!s_typed.empty()) s_typed.pop_front();
    *out_count = static_cast<DWORD>(text.copy(static_cast<wchar_t*>(out_text), in_size));
    SetLastError(text.empty() ? ERROR_OPERATION_ABORTED : ERROR_SUCCESS);
    return TRUE;
}

BOOL WINAPI GetMode(HANDLE, LPDWORD out_mode) {
    *out_mode = s_mode;
    return TRUE;
}

BOOL WINAPI SetMode(HANDLE, DWORD in_mode) {
    s_mode = in_mode;
    return TRUE;
}

BOOL WINAPI Flush(HANDLE) { return TRUE; }

BOOL WINAPI Write(HANDLE, const void*, DWORD, LPDWORD, LPVOID) {
    // During the question the console does not show the input, but edits the line.
    EXPECT_EQ(s_mode, DWORD{ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT});
    return TRUE;
}

}  // namespace

extern "C" {
decltype(&CreateFileW) __imp_CreateFileW = &OpenFile;
decltype(&ReadConsoleW) __imp_ReadConsoleW = &Read;
decltype(&GetConsoleMode) __imp_GetConsoleMode = &GetMode;
decltype(&SetConsoleMode) __imp_SetConsoleMode = &SetMode;
decltype(&FlushConsoleInputBuffer) __imp_FlushConsoleInputBuffer = &Flush;
decltype(&WriteConsoleW) __imp_WriteConsoleW = &Write;
}

namespace Veltrane::Cli {
namespace {

TEST(TerminalOfWindows, AnAnswerEndsWithItsLineForEveryLineEnd) {
    constexpr DWORD BEFORE = 0x1F7;
    for (const std::wstring end : {L"\r", L"\r\n", L"\n"}) {
        SCOPED_TRACE(testing::PrintToString(end));
        s_mode = BEFORE;
        s_typed = {L"h\x00FC", L"nter" + end, L"2" + end};
        EXPECT_THAT(AskSecretly({"Password: ", "Again: "}), ElementsAre("h\xC3\xBCnter", "2"));
        EXPECT_EQ(s_mode, BEFORE);
        EXPECT_FALSE(s_isImpersonated);
    }
    s_typed = {L"half", L""};
    try {
        AskSecretly({"Password: "});
        ADD_FAILURE() << "not interrupted";
    } catch (const CommandError& error) {
        EXPECT_EQ(error.GetExitCode(), EXIT_INTERRUPTED);
    }
    EXPECT_EQ(s_mode, BEFORE);
}

}  // namespace
}  // namespace Veltrane::Cli
