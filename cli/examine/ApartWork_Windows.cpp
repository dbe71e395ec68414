#include <windows.h>

#include <set>

#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "cli/examine/ApartWork.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::DescribeLastError;
using std::filesystem::path;

/// This build is for x86-64 only.
constexpr WORD OWN_MACHINE = IMAGE_FILE_MACHINE_AMD64;

/// Returns the headers of a DLL from its file's bytes; null for other files.
const IMAGE_NT_HEADERS* FindHeaders(const std::string& in_bytes) {
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(in_bytes.data());
    if (in_bytes.size() < sizeof *dos || dos->e_magic != IMAGE_DOS_SIGNATURE) return nullptr;
    const auto at = static_cast<DWORD>(dos->e_lfanew);
    if (std::size_t{at} + sizeof(IMAGE_NT_HEADERS) > in_bytes.size()) return nullptr;
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(in_bytes.data() + at);
    const bool isLibrary = headers->Signature == IMAGE_NT_SIGNATURE &&
                           (headers->FileHeader.Characteristics & IMAGE_FILE_DLL) != 0;
    return isLibrary ? headers : nullptr;
}

std::string DescribeMachine(WORD in_machine) {
    constexpr std::pair<WORD, const char*> NAMES[] = {{IMAGE_FILE_MACHINE_I386, "32-bit x86"},
                                                      {IMAGE_FILE_MACHINE_AMD64, "64-bit x86-64"},
                                                      {IMAGE_FILE_MACHINE_ARMNT, "32-bit ARM"},
                                                      {IMAGE_FILE_MACHINE_ARM64, "64-bit AArch64"}};
    for (const auto& [machine, name] : NAMES) {
        if (machine == in_machine) return name;
    }
    return "machine " + std::to_string(in_machine);
}

/// Returns the full path of a library as the loader finds it from a folder; empty if it does not.
path Find(const std::string& in_name, const path& in_folder) {
    const path name = ToPath(in_name);
    std::error_code error;
    if (!in_folder.empty() && exists(in_folder / name, error)) return in_folder / name;
    std::wstring found(32768, L'\0');
    found.resize(SearchPathW(nullptr, name.c_str(), L".dll", static_cast<DWORD>(found.size()),
                             found.data(), nullptr));
    return found;
}

bool IsOfTheSystem(const path& in_path) {
    std::wstring system(MAX_PATH, L'\0');
    system.resize(GetSystemDirectoryW(system.data(), MAX_PATH));
    std::error_code error;
    return equivalent(in_path.parent_path(), system, error);
}

/// True for a name that the system maps to its own libraries, without a file.
bool IsOfAnApiSet(const std::string& in_name) {
    const std::string name = Orska::Support::FoldCase(in_name);
    return name.starts_with("api-ms-") || name.starts_with("ext-ms-");
}

/// Loads a library without those that it needs. No code of it runs.
HMODULE LoadAlone(const path& in_path) {
    return LoadLibraryExW(in_path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
}

/// Returns the first library that is not found, of all direct and indirect dependencies.
std::string FindMissing(HMODULE in_library, const path& in_folder,
                        std::set<std::string>& io_known) {
    const auto* const image = reinterpret_cast<const char*>(in_library);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + dos->e_lfanew);
    const DWORD begin =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    const auto* needed = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + begin);
    for (; begin != 0 && needed->Name != 0; ++needed) {
        const std::string name = image + needed->Name;
        if (IsOfAnApiSet(name) || !io_known.insert(name).second) continue;
        const path found = Find(name, in_folder);
        if (found.empty()) return name;
        const HMODULE library = IsOfTheSystem(found) ? nullptr : LoadAlone(found);
        const std::string missing =
            library != nullptr ? FindMissing(library, in_folder, io_known) : "";
        if (!missing.empty()) return missing;
    }
    return {};
}

}  // namespace

LibraryProbe LoadHere(const std::string& in_path, void*& out_library) {
    const path file = HasFolder(in_path) ? ToPath(in_path) : Find(in_path, {});
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return {LibraryFault::NotFound, DescribeLastError()};
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return {LibraryFault::NotALibrary, "it is a folder"};
    }
    const std::string bytes = ReadAll(FromPath(file));
    const IMAGE_NT_HEADERS* const headers = FindHeaders(bytes);
    if (headers == nullptr) return {LibraryFault::NotALibrary, "it is not a DLL"};
    const WORD machine = headers->FileHeader.Machine;
    if (machine != OWN_MACHINE) {
        return {LibraryFault::WrongArchitecture,
                DescribeMachine(machine) + " instead of " + DescribeMachine(OWN_MACHINE)};
    }
    const HMODULE library = LoadAlone(file);
    if (library == nullptr) return {LibraryFault::CannotLoad, DescribeLastError()};
    std::set<std::string> known;
    const std::string missing = FindMissing(library, file.parent_path(), known);
    if (!missing.empty()) return {LibraryFault::MissingDependency, missing};
    out_library = library;
    return {};
}

}  // namespace Veltrane::Cli
