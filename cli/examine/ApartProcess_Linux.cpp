#include "cli/examine/ApartProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include "PlatformAbstraction/base/FileDescriptor.h"
#include "PlatformAbstraction/base/SpawnPlan.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "PlatformAbstraction/base/Wipe.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::AboveStandardStreams;
using Orska::Support::FileDescriptor;

[[noreturn]] void FailToStart(int in_error) {
    FailWith("The process for the test cannot be started: " +
             Orska::Support::DescribeSystemError(static_cast<std::uint32_t>(in_error)) + ".");
}

/// Stops where the other end is closed.
void SendAll(int in_socket, std::string_view in_bytes) {
    while (!in_bytes.empty()) {
        const ssize_t count = send(in_socket, in_bytes.data(), in_bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) return;
        if (count > 0) in_bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

/// @return false at the end
bool ReceiveMore(int in_socket, std::string& io_received) {
    char block[1024];
    ssize_t count = 0;
    do {
        count = read(in_socket, block, sizeof block);
    } while (count < 0 && errno == EINTR);
    if (count > 0) io_received.append(block, static_cast<std::size_t>(count));
    Orska::Support::WipeBytes(block, sizeof block);
    return count > 0;
}

}  // namespace

struct ApartProcess::State {
    FileDescriptor m_socket;
    pid_t m_process = -1;
    std::string m_received;
    int m_status = 0;

    /// Kills the process and its children, unless it has ended.
    void End() {
        if (m_process < 0) return;
        // Not reaped yet, so the number still belongs to it.
        kill(-m_process, SIGKILL);
        while (waitpid(m_process, &m_status, 0) < 0 && errno == EINTR) {
        }
        m_process = -1;
    }
};

ApartProcess::ApartProcess(const std::string& in_request) : m_state(std::make_unique<State>()) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) FailToStart(errno);
    m_state->m_socket = AboveStandardStreams(ends[0]);
    FileDescriptor other = AboveStandardStreams(ends[1]);
    if (!m_state->m_socket.IsOpen() || !other.IsOpen()) FailToStart(errno);
    // A new session keeps the driver off the terminal, and makes one group of all its processes.
    const int error = Orska::Support::SpawnPlan(other.Get(), POSIX_SPAWN_SETSID)
                          .Spawn("/proc/self/exe", {"veltrane-dsn", "test", "-", "--apart"},
                                 environ, m_state->m_process);
    if (error != 0) {
        m_state->m_process = -1;
        FailToStart(error);
    }
    other.Close();
    // The write fails only if the process has ended; ReadLine reports that.
    SendAll(m_state->m_socket.Get(), in_request + "\n");
}

ApartProcess::~ApartProcess() { m_state->End(); }

ApartProcess::Event ApartProcess::ReadLine(TimePoint in_until, std::string& out_line) {
    using namespace std::chrono;
    while (!TakeLine(m_state->m_received, out_line)) {
        const auto rest = ceil<milliseconds>(in_until - steady_clock::now()).count();
        if (rest <= 0) return Event::TimedOut;
        pollfd watched{m_state->m_socket.Get(), POLLIN, 0};
        const bool hasMore =
            poll(&watched, 1, static_cast<int>(std::min<long long>(rest, 1 << 30))) > 0;
        if (hasMore && !ReceiveMore(m_state->m_socket.Get(), m_state->m_received)) {
            return Event::Ended;
        }
    }
    return Event::Line;
}

std::string ApartProcess::DescribeEnd() {
    // Its end is closed, so it will end soon, unless the driver has closed a descriptor of ours.
    siginfo_t info{};
    for (int i = 0; i < 500 && info.si_pid == 0; ++i) {
        const auto process = static_cast<id_t>(m_state->m_process);
        if (waitid(P_PID, process, &info, WEXITED | WNOHANG | WNOWAIT) != 0) break;
        if (info.si_pid == 0) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    m_state->End();
    if (!WIFSIGNALED(m_state->m_status)) {
        return "exit code " + std::to_string(WEXITSTATUS(m_state->m_status));
    }
    const int signal = WTERMSIG(m_state->m_status);
    const char* const name = sigdescr_np(signal);
    return "signal " + std::to_string(signal) +
           (name != nullptr ? std::string(" (") + name + ")" : std::string());
}

ApartRequest TakeRequest() {
    // Shared with a thread that never ends.
    const auto socket = std::make_shared<FileDescriptor>(
        AboveStandardStreams(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)));
    const FileDescriptor nothing = AboveStandardStreams(open("/dev/null", O_RDWR | O_CLOEXEC));
    if (nothing.IsOpen()) dup2(nothing.Get(), STDIN_FILENO);
    std::string line;
    for (std::string received; !TakeLine(received, line);) {
        if (!ReceiveMore(socket->Get(), received)) Refuse("--apart is for the tool itself.");
    }
    std::thread([socket] {
        for (std::string more; ReceiveMore(socket->Get(), more);) more.clear();
        // Processes that the driver has started end too, if SpawnPlan has made a group of them.
        if (getpgrp() == getpid()) kill(0, SIGKILL);
        _exit(EXIT_FAILED);
    }).detach();
    return {line, [socket](const std::string& in_line) { SendAll(socket->Get(), in_line + "\n"); }};
}

}  // namespace Veltrane::Cli
