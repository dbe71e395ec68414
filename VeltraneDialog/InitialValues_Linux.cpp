#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "PlatformAbstraction/base/FileDescriptor.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

namespace {

/// Seven values need less. Keeps a large file from filling the memory.
constexpr std::size_t MAX_FILE_SIZE = std::size_t{1} << 20;
constexpr std::size_t BLOCK_SIZE = 4096;

[[noreturn]] void Fail(const std::string& in_fileName, const std::string& in_reason) {
    throw std::runtime_error("Initial values of a DSN: " + in_fileName + ": " + in_reason + ".");
}

/// @return false when the file does not exist and is optional
bool ReadWholeFile(const std::string& in_fileName, bool in_mayBeAbsent, std::string& out_contents) {
    // Without O_NONBLOCK, opening a pipe without a writer would wait.
    const Orska::Support::FileDescriptor file = Orska::Support::AboveStandardStreams(
        open(in_fileName.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen()) {
        if (in_mayBeAbsent && (errno == ENOENT || errno == ENOTDIR)) {
            return false;
        }
        Fail(in_fileName, Orska::Support::DescribeLastError());
    }
    struct stat status {};
    if (fstat(file.Get(), &status) != 0) {
        Fail(in_fileName, Orska::Support::DescribeLastError());
    }
    // A request must not wait for input from a pipe or a terminal.
    const bool isNullDevice = S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
    if (!S_ISREG(status.st_mode) && !isNullDevice) {
        Fail(in_fileName, "not a regular file");
    }
    // Reserves all at once: a buffer that grows leaves copies in freed memory.
    const auto bytes = static_cast<std::size_t>(status.st_size);
    out_contents.reserve(std::min(bytes, MAX_FILE_SIZE) + BLOCK_SIZE);
    std::string block(BLOCK_SIZE, '\0');
    const WipeAtEnd wipe(block);
    for (;;) {
        const ssize_t count = read(file.Get(), block.data(), BLOCK_SIZE);
        if (count == 0) {
            return true;
        }
        if (count < 0 && errno != EINTR) {
            Fail(in_fileName, Orska::Support::DescribeLastError());
        }
        if (count > 0) {
            out_contents.append(block, 0, static_cast<std::size_t>(count));
        }
        if (out_contents.size() > MAX_FILE_SIZE) {
            Fail(in_fileName, "larger than 1 MiB");
        }
    }
}

}  // namespace

DialogValues LoadInitialValues() {
    const char* named = secure_getenv("VELTRANE_DSN_INITIAL_VALUES");
    const bool isNamed = named != nullptr && *named != '\0';
    const std::string fileName = isNamed ? named : DEFAULT_INITIAL_VALUES_FILE;
    std::string contents;
    const WipeAtEnd wipe(contents);
    if (!ReadWholeFile(fileName, !isNamed, contents)) {
        return {};
    }
    return ParseInitialValues(contents, fileName);
}

}  // namespace Veltrane::ODBC
