#include "cli/system/Input.h"

#include "VeltraneDialog/Wipe.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

void Input::Fail(const std::string& in_reason) const {
    throw CommandError(
        EXIT_FAILED, (m_path.empty() ? "standard input" : m_path) + ": cannot read: " + in_reason);
}

/// Byte by byte, so that what follows the line stays where it is.
std::string ReadFirstLine(const std::string& in_path) {
    const Input input(in_path);
    std::string line;
    line.reserve(MAX_LINE);  // one place in memory, cleared when the string goes
    char byte = 0;
    while (input.Read(&byte, 1) == 1 && byte != '\n') {
        if (line.size() == MAX_LINE) input.Fail("the first line is too long");
        line += byte;
    }
    if (line.ends_with('\r')) line.pop_back();
    std::string result(line);
    ODBC::Wipe(line);
    return result;
}

std::string ReadAll(const std::string& in_path) {
    constexpr std::size_t MAX_FILE = 256 << 20;
    constexpr std::size_t STEP = 64 << 10;
    const Input input(in_path);
    std::string text;
    for (;;) {
        const std::size_t size = text.size();
        text.resize(size + STEP);
        const std::size_t count = input.Read(text.data() + size, STEP);
        text.resize(size + count);
        if (count == 0) return text;
        if (text.size() > MAX_FILE) input.Fail("larger than 256 MiB");
    }
}

}  // namespace Veltrane::Cli
