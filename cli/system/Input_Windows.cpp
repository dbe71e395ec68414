#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/WideText.h"
#include "cli/system/Input.h"
#include "cli/system/OpenExisting.h"

namespace Veltrane::Cli {

using ODBC::ToWide;
using Orska::Support::DescribeSystemError;

struct Input::State {
    WindowsHandle m_file;
};

Input::Input(const std::string& in_path)
    : m_path(in_path), m_state(new State{OpenExisting(ToWide(in_path))}) {
    if (!in_path.empty() && !m_state->m_file.IsOpen()) Fail(DescribeSystemError(GetLastError()));
}

Input::~Input() = default;

std::size_t Input::Read(char* out_bytes, std::size_t in_size) const {
    const HANDLE handle = m_path.empty() ? GetStdHandle(STD_INPUT_HANDLE) : m_state->m_file.Get();
    DWORD count = 0;
    const BOOL isRead = ReadFile(handle, out_bytes, static_cast<DWORD>(in_size), &count, nullptr);
    // A pipe whose writer has gone is at its end.
    if (isRead == FALSE && GetLastError() != ERROR_BROKEN_PIPE) {
        Fail(DescribeSystemError(GetLastError()));
    }
    return count;
}

}  // namespace Veltrane::Cli
