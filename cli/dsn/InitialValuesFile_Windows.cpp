#include <windows.h>

#include <atomic>
#include <thread>

#include "VeltraneDialog/WideText_Windows.h"
#include "VeltraneDialog/Wipe.h"
#include "cli/dsn/InitialValuesFile.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

constexpr wchar_t VARIABLE[] = L"VELTRANE_DSN_INITIAL_VALUES";

std::wstring MakePipeName() {
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    return L"\\\\.\\pipe\\veltrane-dsn-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(now.QuadPart);
}

/// Only the first instance counts: nobody else may have made a pipe of this name before.
HANDLE MakePipe(const std::wstring& in_name) {
    constexpr DWORD ROOM = 64 << 10;
    return CreateNamedPipeW(in_name.c_str(), PIPE_ACCESS_OUTBOUND | FILE_FLAG_FIRST_PIPE_INSTANCE,
                            PIPE_TYPE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, ROOM, 0, 0,
                            nullptr);
}

bool IsClientThisProcess(HANDLE in_pipe) {
    ULONG process = 0;
    return GetNamedPipeClientProcessId(in_pipe, &process) != FALSE &&
           process == GetCurrentProcessId();
}

}  // namespace

struct InitialValuesFile::State {
    std::wstring m_name = MakePipeName();
    std::string m_text = "[DSN]\n";
    HANDLE m_pipe = INVALID_HANDLE_VALUE;
    std::atomic<bool> m_isOver = false;
    std::thread m_server;

    ~State() {
        ODBC::Wipe(m_text);
        if (m_pipe != INVALID_HANDLE_VALUE) CloseHandle(m_pipe);
    }

    /// Until the end: to each reader of this process all of the text.
    void Serve() const {
        while (!m_isOver) {
            const bool isConnected = ConnectNamedPipe(m_pipe, nullptr) != FALSE ||
                                     GetLastError() == ERROR_PIPE_CONNECTED;
            if (m_isOver || (!isConnected && GetLastError() != ERROR_NO_DATA)) return;
            if (isConnected && IsClientThisProcess(m_pipe)) {
                DWORD written = 0;
                WriteFile(m_pipe, m_text.data(), static_cast<DWORD>(m_text.size()), &written,
                          nullptr);
                FlushFileBuffers(m_pipe);  // until it is read
            }
            DisconnectNamedPipe(m_pipe);
        }
    }
};

InitialValuesFile::InitialValuesFile(const Entries& in_values)
    : m_state(std::make_unique<State>()) {
    std::size_t size = m_state->m_text.size();
    for (const auto& [key, value] : in_values) size += key.size() + value.size() + 2;
    m_state->m_text.reserve(size);  // one place in memory, cleared at the end
    for (const auto& [key, value] : in_values) {
        m_state->m_text.append(key).append("=").append(value).append("\n");
    }
    m_state->m_pipe = MakePipe(m_state->m_name);
    if (m_state->m_pipe == INVALID_HANDLE_VALUE) {
        throw CommandError(EXIT_FAILED, "Making room for the values: " +
                                            ODBC::DescribeSystemError(GetLastError()));
    }
    m_state->m_server = std::thread([state = m_state.get()] { state->Serve(); });
    SetEnvironmentVariableW(VARIABLE, m_state->m_name.c_str());
}

InitialValuesFile::~InitialValuesFile() {
    SetEnvironmentVariableW(VARIABLE, nullptr);
    m_state->m_isOver = true;
    // A last reader, so that the thread stops waiting for one.
    const HANDLE reader =
        CreateFileW(m_state->m_name.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    m_state->m_server.join();
    if (reader != INVALID_HANDLE_VALUE) CloseHandle(reader);
}

}  // namespace Veltrane::Cli
