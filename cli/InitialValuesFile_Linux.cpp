#include "cli/InitialValuesFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace Veltrane::Cli {

namespace {

constexpr char VARIABLE[] = "VELTRANE_DSN_INITIAL_VALUES";

void CheckValue(const std::string& in_key, const std::string& in_value) {
    for (const char c : in_value) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            throw std::invalid_argument("The value of " + in_key +
                                        " holds a control character, which cannot be stored.");
        }
    }
    if (!in_value.empty() && (in_value.front() == ' ' || in_value.back() == ' ')) {
        throw std::invalid_argument("The value of " + in_key +
                                    " begins or ends with a blank, which cannot be stored.");
    }
}

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

InitialValuesFile::InitialValuesFile(const FieldValues& in_values) {
    std::string text;
    text.reserve(1 << 14);  // more than all values, so that no copy of a password stays behind
    text = "[DSN]\n";
    for (const auto& [key, value] : in_values) {
        CheckValue(key, value);
        text += key + "=" + value + "\n";
    }
    m_descriptor = memfd_create("veltrane-dsn", MFD_CLOEXEC);
    if (m_descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "Making room for the values");
    }
    WriteAll(m_descriptor, text);
    explicit_bzero(text.data(), text.size());
    setenv(VARIABLE, ("/proc/self/fd/" + std::to_string(m_descriptor)).c_str(), 1);
}

InitialValuesFile::~InitialValuesFile() {
    unsetenv(VARIABLE);
    close(m_descriptor);
}

}  // namespace Veltrane::Cli
