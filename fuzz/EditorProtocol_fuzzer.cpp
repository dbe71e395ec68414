// The editor's protocol. A message that was read is written again byte for byte. Both ends, on real
// sockets, read the bytes as the same message or report what is wrong with them.
//
// Input: which end, then the bytes that are sent to it.
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <utility>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/EditorProcess.h"
#include "VeltraneDialog/EditorProtocol.h"
#include "VeltraneDialog/editors/HostConnection.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace Veltrane::ODBC;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;

/// The message at the beginning of the bytes, or nothing when there is none. The error text must
/// not contain the bytes.
std::optional<EditorMessage> Decode(std::span<const char> in_bytes) {
    if (in_bytes.size() < EDITOR_HEADER_SIZE) return std::nullopt;
    const std::span<const char> header = in_bytes.first(EDITOR_HEADER_SIZE);
    try {
        const std::size_t size = EditorPayloadSize(header);
        Require(size <= MAX_EDITOR_PAYLOAD_SIZE, "a long payload");
        if (size > in_bytes.size() - EDITOR_HEADER_SIZE) return std::nullopt;
        return DecodeEditorMessage(header, in_bytes.subspan(EDITOR_HEADER_SIZE, size));
    } catch (const EditorProtocolError& error) {
        Require(std::string_view(error.what()).size() < 60, "a long error", error.what());
        return std::nullopt;
    }
}

std::string Encode(const EditorMessage& in_message) {
    const SecretBytes bytes = EncodeEditorMessage(in_message);
    return {bytes.Get().begin(), bytes.Get().end()};
}

/// Tests the editor's end, which has the socket as its standard input.
void Receive(const std::string& in_bytes, const std::optional<EditorMessage>& in_expected) {
    int sockets[2];
    Require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) == 0, "no sockets");
    Require(send(sockets[0], in_bytes.data(), in_bytes.size(), MSG_NOSIGNAL) ==
                    static_cast<ssize_t>(in_bytes.size()) &&
                dup2(sockets[1], STDIN_FILENO) == STDIN_FILENO,
            "the sockets fail");
    shutdown(sockets[0], SHUT_WR);
    close(sockets[1]);
    try {
        HostConnection connection;
        const EditorMessage message = connection.Receive();
        Require(in_expected && Encode(message) == Encode(*in_expected), "wrong message");
        connection.Send(message);
        std::string answer(Encode(message).size() + 1, '\0');
        const ssize_t size = recv(sockets[0], answer.data(), answer.size(), MSG_DONTWAIT);
        Require(size + 1 == static_cast<ssize_t>(answer.size()), "wrong answer");
    } catch (const std::runtime_error& error) {
        Require(!in_expected, "a refused message", error.what());
    }
    close(sockets[0]);
}

/// Tests the host's end, with an editor program that sends the bytes and ends.
void Answer(const std::string& in_bytes, const std::optional<EditorMessage>& in_expected) {
    static const Orska::Test::TemporaryDirectory s_directory;
    static const std::string s_program = s_directory.GetPath("answer.sh");
    if (static bool s_isWritten = false; !std::exchange(s_isWritten, true)) {
        std::ofstream(s_program) << "#!/bin/sh\nexec cat '" << s_directory.GetPath("answer")
                                 << "' >&0\n";
        Require(chmod(s_program.c_str(), 0700) == 0, "no editor program");
    }
    s_directory.Write("answer", in_bytes);
    constexpr EditorMessageKind ANSWERS[] = {EditorMessageKind::OK, EditorMessageKind::CANCEL,
                                             EditorMessageKind::UNAVAILABLE};
    const bool isAnswer = in_expected && std::find(std::begin(ANSWERS), std::end(ANSWERS),
                                                   in_expected->m_kind) != std::end(ANSWERS);
    try {
        const EditorMessage message = RunEditor(s_program, ShowRequest(DialogValues()));
        Require(isAnswer && Encode(message) == Encode(*in_expected), "wrong answer");
    } catch (const std::runtime_error& error) {
        Require(!isAnswer, "a refused answer", error.what());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    FuzzInput input(in_data, in_size);
    const std::uint8_t end = input.TakeByte();
    const std::string bytes = input.TakeRest();
    const std::optional<EditorMessage> message = Decode(bytes);
    if (message) {
        const std::string again = Encode(*message);
        Require(again == bytes.substr(0, again.size()), "wrong bytes");
    }
    if (bytes.size() > 4096) return 0;
    if (end % 2 != 0) Receive(bytes, message);
    if (end == 2) Answer(bytes, message);
    return 0;
}
