#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/SystemCalls.h"
#include "cli/examine/Apart.h"

namespace Veltrane::Cli {

namespace {

using ODBC::SystemCalls::Descriptor;

constexpr int TIMEOUT = 20'000;  // milliseconds

std::string ReadAnswer(int in_handle) {
    std::string answer;
    for (pollfd waited{in_handle, POLLIN, 0}; poll(&waited, 1, TIMEOUT) > 0;) {
        char block[1024];
        const ssize_t count = read(in_handle, block, sizeof block);
        if (count <= 0) break;
        answer.append(block, static_cast<std::size_t>(count));
    }
    return answer;
}

}  // namespace

std::string RunApart(const std::function<std::string()>& in_work) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return Orska::Support::DescribeLastError();
    const Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);
    const pid_t child = fork();
    if (child < 0) return Orska::Support::DescribeLastError();
    if (child == 0) {
        try {
            const std::string answer = in_work();
            _exit(write(writeEnd.Get(), answer.data(), answer.size()) < 0 ? 1 : 0);
        } catch (...) {
            _exit(1);
        }
    }
    writeEnd = Descriptor();
    std::string answer = ReadAnswer(readEnd.Get());
    kill(child, SIGKILL);
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    return answer;
}

}  // namespace Veltrane::Cli
