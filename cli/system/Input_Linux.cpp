#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/SystemCalls.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

struct Input::State {
    ODBC::SystemCalls::Descriptor m_file;
};

Input::Input(const std::string& in_path) : m_path(in_path), m_state(std::make_unique<State>()) {
    if (in_path.empty()) return;
    m_state->m_file =
        ODBC::SystemCalls::Descriptor(open(in_path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!m_state->m_file.IsOpen()) Fail(Orska::Support::DescribeLastError());
}

Input::~Input() = default;

std::size_t Input::Read(char* out_bytes, std::size_t in_size) const {
    for (;;) {
        const ssize_t count =
            read(m_path.empty() ? STDIN_FILENO : m_state->m_file.Get(), out_bytes, in_size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) Fail(Orska::Support::DescribeLastError());
    }
}

}  // namespace Veltrane::Cli
