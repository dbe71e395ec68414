#include <dlfcn.h>
#include <elf.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "cli/LibraryCheck.h"

namespace Veltrane::Cli {

namespace {

/// Class and machine, which stand at the same places for 32 and 64 bits.
struct Architecture {
    bool m_isElf = false;
    unsigned char m_class = 0;
    unsigned char m_machine[2] = {};
};

Architecture ReadArchitecture(const std::string& in_path) {
    unsigned char header[20] = {};
    std::ifstream file(in_path, std::ios::binary);
    for (unsigned char& byte : header) {
        byte = static_cast<unsigned char>(file.get());
    }
    return {file && std::memcmp(header, ELFMAG, SELFMAG) == 0,
            header[EI_CLASS],
            {header[18], header[19]}};
}

/// What the loader says, from a process that may crash; empty when it loads.
std::string LoaderError(const std::string& in_path, const char* in_symbol) {
    int ends[2];
    if (pipe(ends) != 0) {
        return std::strerror(errno);
    }
    const pid_t child = fork();
    if (child == 0) {
        void* const library = dlopen(in_path.c_str(), RTLD_NOW | RTLD_LOCAL);
        const bool isGood =
            library != nullptr && (in_symbol == nullptr || dlsym(library, in_symbol) != nullptr);
        const char* const error = isGood ? "" : dlerror();
        const bool isWritten = write(ends[1], error, std::strlen(error)) >= 0;
        _exit(isWritten ? 0 : 1);
    }
    close(ends[1]);
    std::string text(4096, '\0');
    const ssize_t count = child > 0 ? read(ends[0], text.data(), text.size()) : 0;
    close(ends[0]);
    text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    int status = 0;
    const bool isDone = child > 0 && waitpid(child, &status, 0) == child && status == 0;
    return isDone ? text : "the process that loaded it ended with a fault";
}

}  // namespace

std::string FindLibraryFault(const std::string& in_path, const char* in_symbol) {
    // A name without a folder is looked for by the loader.
    const bool isPath = in_path.find('/') != std::string::npos;
    if (isPath && access(in_path.c_str(), R_OK) != 0) {
        return in_path + ": " + std::strerror(errno) +
               ". Correct the path: veltrane-dsn driver register --replace --setup PATH.";
    }
    const Architecture own = ReadArchitecture("/proc/self/exe");
    const Architecture other = isPath ? ReadArchitecture(in_path) : own;
    if (!other.m_isElf) {
        return in_path + ": it is no shared library. Install the package again.";
    }
    if (other.m_class != own.m_class ||
        std::memcmp(other.m_machine, own.m_machine, sizeof own.m_machine) != 0) {
        return in_path + ": it is built for another architecture. Install the package for this " +
               "machine's architecture.";
    }
    const std::string error = LoaderError(in_path, in_symbol);
    if (error.empty()) {
        return {};
    }
    if (error.find("cannot open shared object file") != std::string::npos) {
        return "A library that it needs is missing: " + error +
               ". Install the package that holds it.";
    }
    if (error.find("undefined symbol") != std::string::npos) {
        return "A symbol is missing: " + error + ". Install versions that fit each other.";
    }
    return in_path + ": " + error + ". Install the package again.";
}

}  // namespace Veltrane::Cli
