#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <optional>
#include <regex>

#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/SystemCalls.h"
#include "cli/examine/ApartWork.h"
#include "cli/examine/Findings.h"

namespace Veltrane::Cli {

namespace {

using ODBC::SystemCalls::Descriptor;

/// Reads the beginning of an ELF file, up to the architecture; it is the same in 32 and 64 bits.
std::optional<Elf64_Ehdr> ReadElfStart(int in_handle) {
    Elf64_Ehdr start{};
    constexpr std::size_t SIZE = offsetof(Elf64_Ehdr, e_version);
    const bool isRead = pread(in_handle, &start, SIZE, 0) == static_cast<ssize_t>(SIZE);
    if (!isRead || std::memcmp(start.e_ident, ELFMAG, SELFMAG) != 0) return std::nullopt;
    return start;
}

std::string DescribeArchitecture(const Elf64_Ehdr& in_start) {
    static constexpr struct {
        int m_machine;
        const char* m_name;
    } NAMES[] = {{EM_386, "x86"},         {EM_X86_64, "x86-64"}, {EM_ARM, "ARM"},
                 {EM_AARCH64, "AArch64"}, {EM_PPC64, "POWER"},   {EM_S390, "S/390"},
                 {EM_RISCV, "RISC-V"}};
    std::string text = in_start.e_ident[EI_CLASS] == ELFCLASS32 ? "32-bit " : "64-bit ";
    for (const auto& [machine, name] : NAMES) {
        if (machine == in_start.e_machine) return text + name;
    }
    return text + "machine " + std::to_string(in_start.e_machine);
}

LibraryProbe ProbeFile(const std::string& in_path) {
    const Descriptor file(open(in_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen()) return {LibraryFault::NotFound, Orska::Support::DescribeLastError()};
    const std::optional<Elf64_Ehdr> start = ReadElfStart(file.Get());
    if (!start) return {LibraryFault::NotALibrary, "it is not an ELF file"};
    const Descriptor own(open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    const std::optional<Elf64_Ehdr> ours = own.IsOpen() ? ReadElfStart(own.Get()) : std::nullopt;
    const bool isOurs = !ours || (ours->e_machine == start->e_machine &&
                                  ours->e_ident[EI_CLASS] == start->e_ident[EI_CLASS] &&
                                  ours->e_ident[EI_DATA] == start->e_ident[EI_DATA]);
    if (!isOurs) {
        return {LibraryFault::WrongArchitecture,
                DescribeArchitecture(*start) + " instead of " + DescribeArchitecture(*ours)};
    }
    if (start->e_type != ET_DYN) return {LibraryFault::NotALibrary, "it is not a shared object"};
    return {};
}

/// Returns the path of a library in unixODBC's folder of drivers, where unixODBC looks for a bare
/// name; empty if there is none.
std::string FindAmongDrivers(const std::string& in_name) {
    const std::filesystem::path installer = FindInstallerLibrary();
    const std::string path = installer.parent_path() / "odbc" / in_name;
    return access(path.c_str(), F_OK) == 0 ? path : std::string();
}

LibraryProbe ClassifyLoaderError(const std::string& in_path, const std::string& in_error) {
    std::smatch parts;
    const auto has = [&](const char* in_pattern) {
        return std::regex_search(in_error, parts, std::regex(in_pattern));
    };
    if (has("^(.*): cannot open shared object file: (.*)$")) {
        return parts[1] == in_path ? LibraryProbe{LibraryFault::NotFound, parts[2]}
                                   : LibraryProbe{LibraryFault::MissingDependency, parts[1]};
    }
    if (has("undefined symbol: ([^,]+)")) return {LibraryFault::MissingSymbol, parts[1]};
    if (has("version `(.*)' not found")) {
        return {LibraryFault::MissingSymbol, "version " + parts[1].str()};
    }
    return {LibraryFault::CannotLoad, in_error};
}

}  // namespace

LibraryProbe LoadHere(const std::string& in_path, void*& out_library) {
    const bool isPath = in_path.find('/') != std::string::npos;
    const std::string driver = isPath ? std::string() : FindAmongDrivers(in_path);
    if (!driver.empty()) return LoadHere(driver, out_library);
    if (isPath) {
        LibraryProbe file = ProbeFile(in_path);
        if (file.m_fault != LibraryFault::None) return file;
    }
    out_library = dlopen(in_path.c_str(), RTLD_NOW | RTLD_LOCAL);
    return out_library == nullptr ? ClassifyLoaderError(in_path, dlerror()) : LibraryProbe();
}

}  // namespace Veltrane::Cli
