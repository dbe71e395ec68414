#include "VeltraneDialog/editors/HostConnection.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <stdexcept>

#include "PlatformAbstraction/base/SystemError.h"

namespace Veltrane::ODBC {

namespace {

[[noreturn]] void FailWithoutHost() { throw std::runtime_error("The host has gone."); }

}  // namespace

HostConnection::HostConnection()
    : m_socket(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    const Orska::Support::FileDescriptor empty(open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (m_socket.Get() < 0 || dup2(empty.Get(), STDIN_FILENO) < 0) {
        throw std::runtime_error("Taking the socket: " + Orska::Support::DescribeLastError());
    }
}

void HostConnection::ReceiveAll(std::span<char> out_bytes) {
    while (!out_bytes.empty()) {
        const ssize_t count = recv(m_socket.Get(), out_bytes.data(), out_bytes.size(), 0);
        if (count == 0 || (count < 0 && errno != EINTR)) {
            FailWithoutHost();
        }
        out_bytes = out_bytes.subspan(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

EditorMessage HostConnection::Receive() {
    std::array<char, EDITOR_HEADER_SIZE> header{};
    ReceiveAll(header);
    SecretBytes payload(EditorPayloadSize(header));
    ReceiveAll(payload.Get());
    return DecodeEditorMessage(header, payload.Get());
}

void HostConnection::Send(const EditorMessage& in_message) {
    SecretBytes bytes = EncodeEditorMessage(in_message);
    std::span<const char> rest = bytes.Get();
    while (!rest.empty()) {
        const ssize_t count = send(m_socket.Get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            FailWithoutHost();
        }
        rest = rest.subspan(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

}  // namespace Veltrane::ODBC
