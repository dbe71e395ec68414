/// The editor's side of the socket to its host.
#ifndef VELTRANEDIALOG_EDITORS_HOSTCONNECTION_H
#define VELTRANEDIALOG_EDITORS_HOSTCONNECTION_H

#include "PlatformAbstraction/base/FileDescriptor.h"
#include "VeltraneDialog/EditorProtocol.h"

namespace Veltrane::ODBC {

class HostConnection {
public:
    /// Moves the socket away from standard input, which then reads as empty.
    /// @throws std::system_error
    HostConnection();

    /// Waits for the next message.
    /// @throws std::runtime_error when the host has gone; EditorProtocolError
    EditorMessage Receive();

    /// @throws std::runtime_error when the host has gone
    void Send(const EditorMessage& in_message);

    /// Becomes readable when the host has gone. The host sends nothing after its first message.
    int Descriptor() const { return m_socket.Get(); }

private:
    void ReceiveAll(std::span<char> out_bytes);

    Orska::Support::FileDescriptor m_socket;
};

}  // namespace Veltrane::ODBC

#endif
