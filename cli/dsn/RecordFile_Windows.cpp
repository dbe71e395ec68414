#include <windows.h>

#include "VeltraneDialog/WideText_Windows.h"
#include "VeltraneDialog/Wipe.h"
#include "cli/dsn/ChangeLock_Windows.h"
#include "cli/dsn/RecordFile.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using ODBC::DescribeSystemError;
using ODBC::ToUtf8;
using ODBC::ToWide;

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
    HKEY m_root;
    std::string m_path;
    ChangeLock m_lock;
    bool m_isLeft = false;
};

RecordFile::RecordFile(const DsnStore& in_store)
    : m_state(new State{
          RootOf(in_store), PathFor(in_store), {in_store.GetScope(), PathFor(in_store)}}) {}

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
    if (ChangeLock::IsUsed(in_store.GetScope())) return {};
    const std::string path = PathFor(in_store);
    return ReadValue(RootOf(in_store), path).empty() ? std::string() : path;
}

}  // namespace Veltrane::Cli
