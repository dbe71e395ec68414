#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>

#include "tests/support/TestSystem.h"

namespace Orska::Test {

void SetVariable(const char* in_name, const char* in_value) {
    if (in_value == nullptr) {
        unsetenv(in_name);
    } else {
        setenv(in_name, in_value, 1);
    }
}

const char* const TEMPORARY_DIRECTORY_VARIABLE = "TMPDIR";

std::vector<std::pair<const char*, std::string>> GetTemporaryDirectories() {
    return {{"/var/tmp", "/var/tmp"}, {"", "/tmp"}, {nullptr, "/tmp"}};
}
const std::string LONGEST_TEMPORARY_DIRECTORY(259, 'x');
const bool IS_SLASH_ABSOLUTE = true;

std::string GetProgramDirectory() {
    return std::filesystem::canonical("/proc/self/exe").parent_path().string() + "/";
}

unsigned GetThreadId() { return static_cast<unsigned>(gettid()); }

bool IsAborted(int in_status) { return WIFSIGNALED(in_status) && WTERMSIG(in_status) == SIGABRT; }

int RunInProcesses(int in_count, const std::function<void(int)>& in_function) {
    std::vector<pid_t> children;
    for (int i = 0; i < in_count; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            in_function(i);
            _exit(0);
        }
        if (child > 0) children.push_back(child);
    }
    return static_cast<int>(std::count_if(children.begin(), children.end(), [](pid_t in_child) {
        int status = -1;
        return waitpid(in_child, &status, 0) == in_child && status == 0;
    }));
}

bool SetLocale(const TestLocale& in_locale, const std::filesystem::path& in_scratch) {
    const std::string name = in_locale.m_linux;
    const std::size_t point = name.find('.');
    const std::string command = "localedef -i " + name.substr(0, point) + " -f " +
                                name.substr(point + 1) + " '" + (in_scratch / name).string() +
                                "' 2>/dev/null";
    setenv("LOCPATH", in_scratch.c_str(), 1);
    return std::system(command.c_str()) >= 0 && std::setlocale(LC_ALL, name.c_str()) != nullptr;
}

const SystemErrors SYSTEM_ERRORS = {ENOENT, ENOENT, ENOTDIR, EACCES, EINVAL};

bool IsByteFree(const std::string& in_path, std::uint32_t in_offset, bool in_isShared) {
    const int descriptor = open(in_path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock range = {};
    range.l_type = in_isShared ? F_RDLCK : F_WRLCK;
    range.l_start = in_offset;
    range.l_len = 1;
    const bool isTold = fcntl(descriptor, F_OFD_GETLK, &range) == 0;
    close(descriptor);
    return isTold && range.l_type == F_UNLCK;
}

}  // namespace Orska::Test
