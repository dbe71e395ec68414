#include "cli/examine/ApartProcess.h"

#include <cstdio>
#include <thread>
#include <vector>

#include "PlatformAbstraction/base/SystemError.h"
#include "PlatformAbstraction/base/Wipe.h"
#include "cli/system/CommandError.h"
#include "cli/system/OpenExisting.h"

namespace Veltrane::Cli {

namespace {

[[noreturn]] void FailToStart() {
    const std::string reason = Orska::Support::DescribeLastError();
    FailWith("The process for the test cannot be started: " + reason + ".");
}

/// A pipe with one end for the process.
struct Pipe {
    explicit Pipe(bool in_isReadByProcess) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        if (CreatePipe(&readEnd, &writeEnd, &inherited, 0) == FALSE) FailToStart();
        m_theirs = WindowsHandle(in_isReadByProcess ? readEnd : writeEnd);
        m_ours = WindowsHandle(in_isReadByProcess ? writeEnd : readEnd);
        SetHandleInformation(m_ours.Get(), HANDLE_FLAG_INHERIT, 0);
    }
    WindowsHandle m_ours;
    WindowsHandle m_theirs;
};

/// The process inherits three handles and no others of its parent.
WindowsHandle StartProcess(const Pipe& in_request, const Pipe& in_answer) {
    std::wstring program(32768, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    std::wstring line = L"\"" + program + L"\" test - --apart";
    const WindowsHandle nothing = OpenExisting(L"NUL", GENERIC_READ | GENERIC_WRITE);
    SetHandleInformation(nothing.Get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    HANDLE handles[] = {in_request.m_theirs.Get(), in_answer.m_theirs.Get(), nothing.Get()};
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::vector<char> list(size);
    STARTUPINFOEXW start{};
    start.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(list.data());
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = handles[0];
    start.StartupInfo.hStdOutput = handles[1];
    start.StartupInfo.hStdError = handles[2];
    PROCESS_INFORMATION process{};
    if (InitializeProcThreadAttributeList(start.lpAttributeList, 1, 0, &size) == FALSE ||
        UpdateProcThreadAttribute(start.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                  handles, sizeof handles, nullptr, nullptr) == FALSE ||
        CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT | CREATE_NO_WINDOW, nullptr, nullptr,
                       &start.StartupInfo, &process) == FALSE) {
        FailToStart();
    }
    DeleteProcThreadAttributeList(start.lpAttributeList);
    CloseHandle(process.hThread);
    return WindowsHandle(process.hProcess);
}

void WriteAll(HANDLE in_pipe, const std::string& in_bytes) {
    DWORD count = 0;
    WriteFile(in_pipe, in_bytes.data(), static_cast<DWORD>(in_bytes.size()), &count, nullptr);
}

/// Waits for input. @return false at the end
bool ReceiveMore(HANDLE in_pipe, std::string& io_received) {
    char block[1024];
    DWORD count = 0;
    const bool hasMore =
        ReadFile(in_pipe, block, sizeof block, &count, nullptr) != FALSE && count != 0;
    io_received.append(block, count);
    Orska::Support::WipeBytes(block, sizeof block);
    return hasMore;
}

}  // namespace

struct ApartProcess::State {
    Pipe m_request{true};
    Pipe m_answer{false};
    WindowsHandle m_process;
    std::string m_received;
};

ApartProcess::ApartProcess(const std::string& in_request) : m_state(std::make_unique<State>()) {
    m_state->m_process = StartProcess(m_state->m_request, m_state->m_answer);
    m_state->m_request.m_theirs.Close();
    m_state->m_answer.m_theirs.Close();
    // The write fails only if the process has ended; ReadLine reports that.
    WriteAll(m_state->m_request.m_ours.Get(), in_request + "\n");
}

ApartProcess::~ApartProcess() { TerminateProcess(m_state->m_process.Get(), 1); }

/// Polls, because nothing can wait for an anonymous pipe.
ApartProcess::Event ApartProcess::ReadLine(TimePoint in_until, std::string& out_line) {
    constexpr DWORD INTERVAL = 10;  // milliseconds
    while (!TakeLine(m_state->m_received, out_line)) {
        if (std::chrono::steady_clock::now() >= in_until) return Event::TimedOut;
        // Checked before the pipe is read, so that the last output is not missed.
        const bool hasEnded =
            WaitForSingleObject(m_state->m_process.Get(), INTERVAL) == WAIT_OBJECT_0;
        const HANDLE pipe = m_state->m_answer.m_ours.Get();
        DWORD count = 0;
        const bool isOpen = PeekNamedPipe(pipe, nullptr, 0, nullptr, &count, nullptr) != FALSE;
        if (isOpen && count != 0) {
            ReceiveMore(pipe, m_state->m_received);
        } else if (hasEnded || !isOpen) {
            return Event::Ended;
        }
    }
    return Event::Line;
}

std::string ApartProcess::DescribeEnd() {
    constexpr DWORD PATIENCE = 5000;  // milliseconds
    if (WaitForSingleObject(m_state->m_process.Get(), PATIENCE) != WAIT_OBJECT_0) {
        TerminateProcess(m_state->m_process.Get(), 1);
    }
    DWORD code = 0;
    GetExitCodeProcess(m_state->m_process.Get(), &code);
    char text[24];
    std::snprintf(text, sizeof text, code < 0x80000000 ? "%lu" : "0x%08lX", code);
    return std::string("exit code ") + text;
}

ApartRequest TakeRequest() {
    const HANDLE request = GetStdHandle(STD_INPUT_HANDLE);
    const HANDLE answer = GetStdHandle(STD_OUTPUT_HANDLE);
    for (const HANDLE handle : {request, answer}) {
        SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    }
    SetStdHandle(STD_INPUT_HANDLE, GetStdHandle(STD_ERROR_HANDLE));
    SetStdHandle(STD_OUTPUT_HANDLE, GetStdHandle(STD_ERROR_HANDLE));
    std::string line;
    for (std::string received; !TakeLine(received, line);) {
        if (!ReceiveMore(request, received)) Refuse("--apart is for the tool itself.");
    }
    std::thread([request] {
        for (std::string more; ReceiveMore(request, more);) more.clear();
        TerminateProcess(GetCurrentProcess(), EXIT_FAILED);
    }).detach();
    return {line, [answer](const std::string& in_line) { WriteAll(answer, in_line + "\n"); }};
}

}  // namespace Veltrane::Cli
