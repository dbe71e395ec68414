/// An editor without a form. The variable FAKE_EDITOR selects one of many ways in which an editor
/// can answer, fail or misbehave.
#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "VeltraneDialog/editors/HostConnection.h"

namespace {

using Veltrane::ODBC::EditorMessage;
using Veltrane::ODBC::EditorMessageKind;
using Veltrane::ODBC::HostConnection;

std::string ReadFile(const char* in_name) {
    std::ifstream file(in_name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void AnswerOk(HostConnection& io_host) {
    EditorMessage message = io_host.Receive();
    message.m_kind = EditorMessageKind::OK;
    message.m_values.m_server = *message.m_values.m_server + u"-changed";
    io_host.Send(message);
}

void Answer(HostConnection& io_host, EditorMessageKind in_kind, const std::string& in_reason) {
    EditorMessage message = io_host.Receive();
    message.m_kind = in_kind;
    message.m_reason = in_reason;
    io_host.Send(message);
}

void SendRaw(const HostConnection& in_host, std::string_view in_bytes) {
    send(in_host.Descriptor(), in_bytes.data(), in_bytes.size(), MSG_NOSIGNAL);
}

/// The parts of the host that a child can see: arguments, environment, descriptors, signals.
std::string Surroundings(HostConnection& io_host) {
    std::string report = "arguments=" + ReadFile("/proc/self/cmdline");
    report += "\nenvironment=" + ReadFile("/proc/self/environ");
    report += "\ndescriptors=";
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        if (descriptor != io_host.Descriptor() && fcntl(descriptor, F_GETFD) >= 0) {
            report += std::to_string(descriptor) + " ";
        }
    }
    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    struct sigaction action {};
    sigaction(SIGPIPE, nullptr, &action);
    report +=
        "\nsignals=" + std::string(sigismember(&blocked, SIGTERM) != 0 ? "blocked " : "free ");
    report += action.sa_handler == SIG_DFL ? "default" : "changed";
    for (char& c : report) {
        c = c == '\0' ? ' ' : c;
    }
    return report;
}

/// The descriptors 0 to 2 that are open in its host, a process of the same user.
std::string LowDescriptorsOfHost() {
    std::string report;
    for (const char* const number : {"0", "1", "2"}) {
        const std::string path = "/proc/" + std::to_string(getppid()) + "/fd/" + number;
        struct stat status {};
        if (lstat(path.c_str(), &status) == 0) report += number;
    }
    return report;
}

/// Ends, but leaves the socket to a child that lives a while longer.
void LeaveSocketToChild() {
    if (fork() == 0) {
        sleep(30);
        _exit(0);
    }
    _exit(3);
}

[[noreturn]] void StayForever() {
    signal(SIGTERM, SIG_IGN);
    for (;;) {
        pause();
    }
}

}  // namespace

int main() {
    const std::string mode = std::getenv("FAKE_EDITOR");
    HostConnection host;
    if (mode == "ok") {
        AnswerOk(host);
    } else if (mode == "cancel") {
        Answer(host, EditorMessageKind::CANCEL, "");
    } else if (mode == "unavailable") {
        Answer(host, EditorMessageKind::UNAVAILABLE, "no form today");
    } else if (mode == "surroundings") {
        Answer(host, EditorMessageKind::UNAVAILABLE, Surroundings(host));
    } else if (mode == "low descriptors of host") {
        Answer(host, EditorMessageKind::UNAVAILABLE, LowDescriptorsOfHost());
    } else if (mode == "show back") {
        Answer(host, EditorMessageKind::SHOW, "");
    } else if (mode == "byte by byte") {
        for (const char c : {'V', 'D', 'E', '1', '\3', '\0', '\0', '\0', '\0', '\0', '\0', '\0'}) {
            SendRaw(host, std::string_view(&c, 1));
            usleep(2000);
        }
    } else if (mode == "answer and stay") {
        AnswerOk(host);
        StayForever();
    } else if (mode == "answer and leave socket") {
        AnswerOk(host);
        LeaveSocketToChild();
    } else if (mode == "leave socket") {
        LeaveSocketToChild();
    } else if (mode == "close and stay") {
        shutdown(host.Descriptor(), SHUT_RDWR);
        StayForever();
    } else if (mode == "garbage") {
        SendRaw(host, "Hello, I am no editor at all.");
        StayForever();
    } else if (mode == "crash") {
        raise(SIGKILL);
    } else if (mode == "not loaded") {
        return 127;
    }
    return 3;
}
