#include <windows.h>

#include "VeltraneDialog/WideText_Windows.h"
#include "VeltraneDialog/Wipe.h"
#include "cli/CommandError.h"
#include "cli/RecordFile.h"

namespace Veltrane::Cli {

namespace {

using ODBC::DescribeSystemError;
using ODBC::ToUtf8;
using ODBC::ToWide;

constexpr DWORD LOCK_TIMEOUT = 10'000;  // milliseconds
constexpr wchar_t KEY[] = L"Software\\Veltrane\\veltrane-dsn";
constexpr wchar_t VALUE[] = L"Change";

HKEY RootOf(const DsnStore& in_store) {
    return in_store.GetScope() == Scope::System ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

std::string PathFor(const DsnStore& in_store) {
    const char* const root =
        in_store.GetScope() == Scope::System ? "HKEY_LOCAL_MACHINE" : "HKEY_CURRENT_USER";
    return std::string(root) + "\\" + ToUtf8(KEY) + "\\" + ToUtf8(VALUE);
}

/// The lock is one of all sessions for the system's DSNs.
const wchar_t* MutexNameFor(const DsnStore& in_store) {
    return in_store.GetScope() == Scope::System ? L"Global\\veltrane-dsn-change"
                                                : L"Local\\veltrane-dsn-change";
}

[[noreturn]] void Fail(const std::string& in_path, const std::string& in_operation,
                       unsigned long in_error) {
    throw CommandError(EXIT_FAILED,
                       in_path + ": " + in_operation + ": " + DescribeSystemError(in_error));
}

std::string ReadValue(HKEY in_root, const std::string& in_path) {
    DWORD size = 0;
    LONG error = RegGetValueW(in_root, KEY, VALUE, RRF_RT_REG_SZ, nullptr, nullptr, &size);
    if (error == ERROR_FILE_NOT_FOUND) return {};
    std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
    const ODBC::WipeAtEnd wipe(text);
    size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (error == ERROR_SUCCESS) {
        error = RegGetValueW(in_root, KEY, VALUE, RRF_RT_REG_SZ, nullptr, text.data(), &size);
    }
    if (error != ERROR_SUCCESS) Fail(in_path, "cannot read", static_cast<unsigned long>(error));
    return ToUtf8(text.c_str());
}

}  // namespace

struct RecordFile::State {
    HKEY m_root = nullptr;
    std::string m_path;
    HANDLE m_mutex = nullptr;
    bool m_isMine = false;
    bool m_isLeft = false;

    ~State() {
        if (m_isMine) ReleaseMutex(m_mutex);
        if (m_mutex != nullptr) CloseHandle(m_mutex);
    }
};

RecordFile::RecordFile(const DsnStore& in_store) : m_state(std::make_unique<State>()) {
    m_state->m_root = RootOf(in_store);
    m_state->m_path = PathFor(in_store);
    m_state->m_mutex = CreateMutexW(nullptr, FALSE, MutexNameFor(in_store));
    if (m_state->m_mutex == nullptr) Fail(m_state->m_path, "cannot lock", GetLastError());
    const DWORD result = WaitForSingleObject(m_state->m_mutex, LOCK_TIMEOUT);
    // One that was abandoned is of a run that was killed: its record is what is looked for next.
    m_state->m_isMine = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    if (!m_state->m_isMine) Fail(m_state->m_path, "in use by another run", WAIT_TIMEOUT);
}

RecordFile::~RecordFile() {
    if (!m_state->m_isLeft) RegDeleteKeyValueW(m_state->m_root, KEY, VALUE);
}

std::string RecordFile::Read() const { return ReadValue(m_state->m_root, m_state->m_path); }

void RecordFile::Clear() { RegDeleteKeyValueW(m_state->m_root, KEY, VALUE); }

void RecordFile::Write(const std::string& in_text, bool in_isLasting) {
    std::wstring text = ToWide(in_text);
    const ODBC::WipeAtEnd wipe(text);
    const LONG error = RegSetKeyValueW(m_state->m_root, KEY, VALUE, REG_SZ, text.c_str(),
                                       static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    if (error != ERROR_SUCCESS) {
        Fail(m_state->m_path, "cannot write", static_cast<unsigned long>(error));
    }
    if (in_isLasting) RegFlushKey(m_state->m_root);
}

void RecordFile::Leave() { m_state->m_isLeft = true; }

bool RecordFile::Exists(const DsnStore& in_store) { return !FindLeft(in_store).empty(); }

std::string RecordFile::FindLeft(const DsnStore& in_store) {
    const HANDLE mutex = OpenMutexW(SYNCHRONIZE, FALSE, MutexNameFor(in_store));
    // The mutex is there as long as a run is that has it.
    if (mutex != nullptr) {
        CloseHandle(mutex);
        return {};
    }
    const std::string path = PathFor(in_store);
    return ReadValue(RootOf(in_store), path).empty() ? std::string() : path;
}

}  // namespace Veltrane::Cli
