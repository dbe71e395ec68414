#include "VeltraneDialog/EditorProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/auxv.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>

#include "PlatformAbstraction/base/FileDescriptor.h"
#include "PlatformAbstraction/base/SpawnPlan.h"
#include "PlatformAbstraction/base/SystemError.h"

namespace Veltrane::ODBC {

using Orska::Support::AboveStandardStreams;
using Orska::Support::FileDescriptor;

namespace {

/// The exit status of the dynamic loader if a library is missing, and of a shell if a program is.
constexpr int STATUS_NOT_LOADED = 127;

/// How long an editor can take to end after its answer, in milliseconds.
constexpr int GRACE_AFTER_ANSWER = 2000;
constexpr int GRACE_AFTER_SIGNAL = 2000;

/// How often to check whether the program has ended, in milliseconds, on systems that cannot wait
/// for it and the socket together.
constexpr int INTERVAL_WITHOUT_PIDFD = 200;

[[noreturn]] void Fail(const std::string& in_program, const std::string& in_what) {
    throw std::runtime_error("The DSN editor " + in_program + " " + in_what + ".");
}

[[noreturn]] void FailToStart(const std::string& in_program, int in_error) {
    Fail(in_program, std::string("cannot be started: ") +
                         Orska::Support::DescribeSystemError(static_cast<std::uint32_t>(in_error)));
}

/// The two ends of the connection.
struct SocketPair {
    explicit SocketPair(const std::string& in_program) {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            FailToStart(in_program, errno);
        }
        m_host = AboveStandardStreams(ends[0]);
        m_editor = AboveStandardStreams(ends[1]);
        if (!m_host.IsOpen() || !m_editor.IsOpen()) {
            FailToStart(in_program, errno);
        }
    }
    FileDescriptor m_host;
    FileDescriptor m_editor;
};

/// Variables by which a host points the loader and Qt at its own libraries.
constexpr std::string_view OF_THE_HOST[] = {"LD_LIBRARY_PATH", "LD_PRELOAD", "LD_AUDIT",
                                            "QT_PLUGIN_PATH", "QT_QPA_PLATFORM_PLUGIN_PATH"};

constexpr std::string_view HARMLESS[] = {"TERM",        "LANG",     "LC_ALL", "LC_CTYPE",
                                         "LC_MESSAGES", "LANGUAGE", "TZ"};

template <std::size_t COUNT>
bool Contains(const std::string_view (&in_names)[COUNT], std::string_view in_name) {
    return std::find(std::begin(in_names), std::end(in_names), in_name) != std::end(in_names);
}

bool IsPassedOn(std::string_view in_entry, bool in_isPrivileged) {
    const std::string_view name = in_entry.substr(0, in_entry.find('='));
    if (in_isPrivileged) {
        // No paths: the caller would choose which file is loaded.
        return Contains(HARMLESS, name) && in_entry.find('/') == std::string_view::npos;
    }
    return !Contains(OF_THE_HOST, name) && name != DRIVER_VARIABLE;
}

/// Returns the host's environment without variables that would load the host's libraries and
/// plugins into the editor. With raised privileges, only variables for terminal and language.
/// @param in_driver  an entry to add, or empty; not added for a host with raised privileges
/// @return entries owned by the host's environment, with a null at the end
std::vector<char*> EditorEnvironment(std::string& in_driver) {
    const bool isPrivileged = getauxval(AT_SECURE) != 0;
    std::vector<char*> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        if (IsPassedOn(*entry, isPrivileged)) {
            entries.push_back(*entry);
        }
    }
    if (!isPrivileged && !in_driver.empty()) {
        entries.push_back(in_driver.data());
    }
    entries.push_back(nullptr);
    return entries;
}

/// A child process. Other code of the host can reap it first, and the kernel does so if SIGCHLD is
/// ignored; its exit status is then unknown.
class ChildProcess {
public:
    explicit ChildProcess(pid_t in_process)
        : m_process(in_process),
          m_handle(AboveStandardStreams(static_cast<int>(syscall(SYS_pidfd_open, in_process, 0)))) {
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() {
        if (!WaitForEnd(m_grace)) {
            Signal(SIGTERM);
            if (!WaitForEnd(GRACE_AFTER_SIGNAL)) {
                Signal(SIGKILL);
                WaitForEnd(GRACE_AFTER_SIGNAL);
            }
        }
    }

    /// Readable once the process has ended; negative if the kernel has no such descriptors.
    int Handle() const { return m_handle.Get(); }

    /// Lets the destructor wait for the process before it sends a signal.
    void LetEnd() { m_grace = GRACE_AFTER_ANSWER; }

    bool HasEnded() {
        if (m_hasEnded || (Handle() >= 0 && !IsReadable(0))) {
            return m_hasEnded;
        }
        constexpr idtype_t BY_HANDLE = static_cast<idtype_t>(3);  // P_PIDFD
        siginfo_t info{};
        const int result =
            Handle() >= 0 ? waitid(BY_HANDLE, static_cast<id_t>(Handle()), &info, WEXITED | WNOHANG)
                          : waitid(P_PID, static_cast<id_t>(m_process), &info, WEXITED | WNOHANG);
        if (result == 0 && info.si_pid != 0) {
            m_end = info;
        }
        m_hasEnded = m_end || Handle() >= 0 || (result != 0 && errno == ECHILD);
        return m_hasEnded;
    }

    bool WaitForEnd(int in_milliseconds) {
        int rest = in_milliseconds;
        while (!HasEnded() && rest > 0) {
            const int step = std::min(rest, 50);
            IsReadable(step);
            rest -= step;
        }
        return m_hasEnded;
    }

    bool WasNotLoaded() const {
        return m_end && m_end->si_code == CLD_EXITED && m_end->si_status == STATUS_NOT_LOADED;
    }

    std::string DescribeEnd() const {
        if (!m_hasEnded) {
            return "closed the connection";
        }
        if (!m_end) {
            return "ended";
        }
        if (m_end->si_code == CLD_EXITED) {
            return "ended with status " + std::to_string(m_end->si_status);
        }
        const char* const name = sigdescr_np(m_end->si_status);
        return "was ended by signal " + std::to_string(m_end->si_status) +
               (name != nullptr ? std::string(" (") + name + ")" : std::string());
    }

private:
    /// Only waits if there is no handle.
    bool IsReadable(int in_milliseconds) const {
        pollfd handle{Handle(), POLLIN, 0};
        return poll(&handle, 1, in_milliseconds) > 0;
    }

    void Signal(int in_signal) const {
        if (Handle() >= 0) {
            syscall(SYS_pidfd_send_signal, Handle(), in_signal, nullptr, 0);
        } else {
            kill(m_process, in_signal);
        }
    }

    pid_t m_process;
    FileDescriptor m_handle;
    bool m_hasEnded = false;
    std::optional<siginfo_t> m_end;
    int m_grace = 0;
};

/// The bytes of one conversation, sent and received without blocking.
class Conversation {
public:
    Conversation(int in_socket, SecretBytes& in_request)
        : m_socket(in_socket), m_toSend(in_request.Get()) {}

    short Events() const {
        return static_cast<short>(m_toSend.empty() ? POLLIN : POLLIN | POLLOUT);
    }

    void Send() {
        while (!m_toSend.empty()) {
            const ssize_t count =
                send(m_socket, m_toSend.data(), m_toSend.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count < 0 && errno == EAGAIN) {
                return;
            }
            // An editor that does not read the rest can still have sent an answer.
            m_toSend =
                m_toSend.subspan(count < 0 ? m_toSend.size() : static_cast<std::size_t>(count));
        }
    }

    /// @return false when the editor will send nothing more
    bool Receive() {
        while (!IsComplete()) {
            const std::span<char> room = Room();
            const ssize_t count = recv(m_socket, room.data(), room.size(), MSG_DONTWAIT);
            if (count > 0) {
                Advance(static_cast<std::size_t>(count));
            } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
                return false;
            } else if (errno == EAGAIN) {
                return true;
            }
        }
        return true;
    }

    bool IsComplete() const {
        return m_payload && m_received == EDITOR_HEADER_SIZE + m_payload->Get().size();
    }

    EditorMessage Answer(EditorMessageKind in_request) {
        EditorMessage message = DecodeEditorMessage(m_header, m_payload->Get());
        const EditorMessageKind other =
            in_request == EditorMessageKind::SHOW ? EditorMessageKind::YES : EditorMessageKind::OK;
        if (message.m_kind == EditorMessageKind::SHOW || message.m_kind == EditorMessageKind::ASK) {
            throw EditorProtocolError("a message that only the host sends");
        }
        if (message.m_kind == other) {
            throw EditorProtocolError("the answer to something else");
        }
        return message;
    }

private:
    std::span<char> Room() {
        if (m_payload) {
            return m_payload->Get().subspan(m_received - EDITOR_HEADER_SIZE);
        }
        return std::span<char>(m_header).subspan(m_received);
    }

    void Advance(std::size_t in_count) {
        m_received += in_count;
        if (!m_payload && m_received == EDITOR_HEADER_SIZE) {
            m_payload.emplace(EditorPayloadSize(m_header));
        }
    }

    int m_socket;
    std::span<char> m_toSend;
    std::array<char, EDITOR_HEADER_SIZE> m_header{};
    std::optional<SecretBytes> m_payload;
    std::size_t m_received = 0;
};

/// @return false when the editor has ended, or closed its side, without a complete answer
bool Converse(Conversation& io_conversation, int in_socket, ChildProcess& io_child) {
    for (;;) {
        pollfd watched[2] = {{in_socket, io_conversation.Events(), 0},
                             {io_child.Handle(), POLLIN, 0}};
        poll(watched, 2, io_child.Handle() < 0 ? INTERVAL_WITHOUT_PIDFD : -1);
        io_conversation.Send();
        // Checked before the last read, so that the read gets everything written before the end.
        // The socket alone may never end: a program started by the editor can hold it open.
        const bool hasEnded = io_child.HasEnded();
        const bool mayContinue = io_conversation.Receive();
        if (io_conversation.IsComplete()) {
            return true;
        }
        if (hasEnded || !mayContinue) {
            return false;
        }
    }
}

EditorMessage ExplainEnd(const std::string& in_program, ChildProcess& io_child) {
    io_child.WaitForEnd(GRACE_AFTER_SIGNAL);
    if (io_child.WasNotLoaded()) {
        EditorMessage message;
        message.m_kind = EditorMessageKind::UNAVAILABLE;
        message.m_reason = in_program + " cannot be loaded; run it with --version to see why";
        return message;
    }
    Fail(in_program, io_child.DescribeEnd() + " before it answered");
}

}  // namespace

EditorMessage RunEditor(const std::string& in_program, const EditorMessage& in_request) {
    try {
        SecretBytes request = EncodeEditorMessage(in_request);
        SocketPair sockets(in_program);
        pid_t process = -1;
        std::string driver;
        if (!in_request.m_testedDriver.empty()) {
            driver.append(DRIVER_VARIABLE).append("=").append(in_request.m_testedDriver);
        }
        const int error =
            Orska::Support::SpawnPlan(sockets.m_editor.Get())
                .Spawn(in_program, {in_program}, EditorEnvironment(driver).data(), process);
        if (error != 0) {
            FailToStart(in_program, error);
        }
        sockets.m_editor.Close();
        ChildProcess child(process);
        Conversation conversation(sockets.m_host.Get(), request);
        if (!Converse(conversation, sockets.m_host.Get(), child)) {
            return ExplainEnd(in_program, child);
        }
        child.LetEnd();
        sockets.m_host.Close();
        return conversation.Answer(in_request.m_kind);
    } catch (const EditorProtocolError& protocolError) {
        Fail(in_program,
             std::string("and its host do not understand each other: ") + protocolError.what());
    }
}

}  // namespace Veltrane::ODBC
