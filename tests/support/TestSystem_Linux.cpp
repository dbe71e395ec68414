#include <sys/wait.h>

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

std::string GetProgramDirectory() {
    return std::filesystem::canonical("/proc/self/exe").parent_path().string() + "/";
}

bool IsAborted(int in_status) { return WIFSIGNALED(in_status) && WTERMSIG(in_status) == SIGABRT; }

bool SetCommaLocale(const std::filesystem::path& in_scratch) {
    const std::string command =
        "localedef -i de_DE -f UTF-8 '" + (in_scratch / "de_DE.UTF-8").string() + "' 2>/dev/null";
    setenv("LOCPATH", in_scratch.c_str(), 1);
    return std::system(command.c_str()) >= 0 && std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
}

const SystemErrors SYSTEM_ERRORS = {ENOENT, ENOENT, ENOTDIR, EACCES, EIO, EINVAL};

void SetLastErrorCode(std::uint32_t in_code) { errno = static_cast<int>(in_code); }

}  // namespace Orska::Test
