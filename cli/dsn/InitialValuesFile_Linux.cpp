#include "cli/dsn/InitialValuesFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "Setup/SystemCalls.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::Cli {

namespace {

constexpr char VARIABLE[] = "VELTRANE_DSN_INITIAL_VALUES";

void WriteAll(int in_descriptor, const std::string& in_text) {
    std::size_t written = 0;
    while (written < in_text.size()) {
        const ssize_t count =
            write(in_descriptor, in_text.data() + written, in_text.size() - written);
        if (count < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "Writing the values");
        }
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
}

}  // namespace

struct InitialValuesFile::State {
    ODBC::SystemCalls::FileHandle m_file;
};

InitialValuesFile::InitialValuesFile(const Entries& in_values) {
    std::string text = "[DSN]\n";
    const ODBC::WipeAtEnd wipe(text);
    for (const auto& [key, value] : in_values) {
        text += key + "=" + value + "\n";
    }
    const int descriptor = memfd_create("veltrane-dsn", MFD_CLOEXEC);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "Making room for the values");
    }
    m_state = std::make_unique<State>();
    m_state->m_file = ODBC::SystemCalls::FileHandle(descriptor);
    WriteAll(descriptor, text);
    setenv(VARIABLE, ("/proc/self/fd/" + std::to_string(descriptor)).c_str(), 1);
}

InitialValuesFile::~InitialValuesFile() { unsetenv(VARIABLE); }

}  // namespace Veltrane::Cli
