#include <windows.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/WideText.h"
#include "cli/examine/LibraryProbe.h"
#include "cli/system/CommandError.h"
#include "cli/system/Input.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using ODBC::ToUtf8;
using ODBC::ToWide;
using Orska::Support::DescribeSystemError;

/// This build is for x86-64 only.
constexpr WORD OWN_MACHINE = IMAGE_FILE_MACHINE_AMD64;

/// A DLL read from its file, without loading it.
class Image {
public:
    explicit Image(std::string in_bytes) : m_bytes(std::move(in_bytes)) {
        IMAGE_DOS_HEADER dos{};
        if (!ReadAt(0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0) return;
        const auto at = static_cast<std::size_t>(dos.e_lfanew);
        DWORD signature = 0;
        m_isImage = ReadAt(at, signature) && signature == IMAGE_NT_SIGNATURE &&
                    ReadAt(at + sizeof signature, m_header);
        m_optional = at + sizeof signature + sizeof m_header;
        m_sections = m_optional + m_header.SizeOfOptionalHeader;
    }

    bool IsLibrary() const { return m_isImage && (m_header.Characteristics & IMAGE_FILE_DLL) != 0; }
    WORD GetMachine() const { return m_header.Machine; }

    std::vector<std::string> GetImports() const {
        std::vector<std::string> names;
        IMAGE_IMPORT_DESCRIPTOR entry{};
        for (DWORD at = DirectoryAt(IMAGE_DIRECTORY_ENTRY_IMPORT);
             at != 0 && ReadAtAddress(at, entry) && entry.Name != 0; at += sizeof entry) {
            names.push_back(TextAtAddress(entry.Name));
        }
        return names;
    }

    bool Exports(const std::string& in_function) const {
        IMAGE_EXPORT_DIRECTORY directory{};
        const DWORD at = DirectoryAt(IMAGE_DIRECTORY_ENTRY_EXPORT);
        if (at == 0 || !ReadAtAddress(at, directory)) return false;
        for (DWORD i = 0; i < directory.NumberOfNames; ++i) {
            DWORD name = 0;
            if (!ReadAtAddress(directory.AddressOfNames + 4 * i, name)) return false;
            if (TextAtAddress(name) == in_function) return true;
        }
        return false;
    }

private:
    template <typename T>
    bool ReadAt(std::size_t in_offset, T& out_value) const {
        if (in_offset > m_bytes.size() || m_bytes.size() - in_offset < sizeof out_value) {
            return false;
        }
        std::memcpy(&out_value, m_bytes.data() + in_offset, sizeof out_value);
        return true;
    }

    /// Returns the file offset of an address; the end of the file if it has none.
    std::size_t OffsetOf(DWORD in_address) const {
        IMAGE_SECTION_HEADER section{};
        for (WORD i = 0; i < m_header.NumberOfSections; ++i) {
            if (!ReadAt(m_sections + i * sizeof section, section)) break;
            if (in_address >= section.VirtualAddress &&
                in_address - section.VirtualAddress < section.SizeOfRawData) {
                return std::size_t{section.PointerToRawData} +
                       (in_address - section.VirtualAddress);
            }
        }
        return m_bytes.size();
    }

    template <typename T>
    bool ReadAtAddress(DWORD in_address, T& out_value) const {
        return ReadAt(OffsetOf(in_address), out_value);
    }

    std::string TextAtAddress(DWORD in_address) const {
        const std::size_t at = std::min(OffsetOf(in_address), m_bytes.size());
        return m_bytes.substr(at, m_bytes.find('\0', at) - at);
    }

    /// Returns the address of a directory of this machine's kind of image; 0 if there is none.
    DWORD DirectoryAt(DWORD in_index) const {
        IMAGE_OPTIONAL_HEADER64 optional{};
        if (!ReadAt(m_optional, optional) || in_index >= optional.NumberOfRvaAndSizes) return 0;
        return optional.DataDirectory[in_index].VirtualAddress;
    }

    std::string m_bytes;
    IMAGE_FILE_HEADER m_header{};
    std::size_t m_optional = 0;
    std::size_t m_sections = 0;
    bool m_isImage = false;
};

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
std::wstring Find(const std::wstring& in_name, const std::wstring& in_folder) {
    const std::wstring beside = in_folder + L"\\" + in_name;
    if (!in_folder.empty() && GetFileAttributesW(beside.c_str()) != INVALID_FILE_ATTRIBUTES) {
        return beside;
    }
    std::wstring path(32768, L'\0');
    path.resize(SearchPathW(nullptr, in_name.c_str(), L".dll", static_cast<DWORD>(path.size()),
                            path.data(), nullptr));
    return path;
}

std::wstring FolderOf(const std::wstring& in_path) {
    const std::size_t end = in_path.find_last_of(L"\\/");
    return end == std::wstring::npos ? std::wstring() : in_path.substr(0, end);
}

bool IsOfTheSystem(const std::wstring& in_path) {
    std::wstring system(MAX_PATH, L'\0');
    system.resize(GetSystemDirectoryW(system.data(), MAX_PATH));
    return CompareStringOrdinal(FolderOf(in_path).c_str(), -1, system.c_str(), -1, TRUE) ==
           CSTR_EQUAL;
}

/// True for a name that the system maps to its own libraries, without a file.
bool IsOfAnApiSet(const std::string& in_name) {
    const std::string name = Orska::Support::FoldCase(in_name);
    return name.starts_with("api-ms-") || name.starts_with("ext-ms-");
}

/// Returns the first library that is not found, of all direct and indirect dependencies.
std::string FindMissing(const Image& in_image, const std::wstring& in_folder,
                        std::set<std::string>& io_known) {
    for (const std::string& name : in_image.GetImports()) {
        if (IsOfAnApiSet(name) || !io_known.insert(name).second) continue;
        const std::wstring path = Find(ToWide(name), in_folder);
        if (path.empty()) return name;
        if (IsOfTheSystem(path)) continue;
        const std::string missing = FindMissing(Image(ReadAll(ToUtf8(path))), in_folder, io_known);
        if (!missing.empty()) return missing;
    }
    return {};
}

LibraryProbe ProbeImage(const Image& in_image, const std::wstring& in_path,
                        const std::vector<std::string>& in_functions) {
    if (!in_image.IsLibrary()) return {LibraryFault::NotALibrary, "it is not a DLL"};
    if (in_image.GetMachine() != OWN_MACHINE) {
        return {LibraryFault::WrongArchitecture, DescribeMachine(in_image.GetMachine()) +
                                                     " instead of " + DescribeMachine(OWN_MACHINE)};
    }
    std::set<std::string> known;
    const std::string missing = FindMissing(in_image, FolderOf(in_path), known);
    if (!missing.empty()) return {LibraryFault::MissingDependency, missing};
    const bool isExported =
        in_functions.empty() ||
        std::any_of(in_functions.begin(), in_functions.end(),
                    [&](const std::string& in_name) { return in_image.Exports(in_name); });
    if (!isExported) return {LibraryFault::NoEntryPoint, Join(in_functions)};
    return {};
}

}  // namespace

std::string LoadHere(const std::string&, const std::vector<std::string>&) { return {}; }

LibraryProbe ProbeLibrary(const std::string& in_path,
                          const std::vector<std::string>& in_functions) {
    const std::wstring path =
        HasFolder(in_path) ? ToWide(in_path) : Find(ToWide(in_path), std::wstring());
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return {LibraryFault::NotFound, DescribeSystemError(GetLastError())};
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return {LibraryFault::NotALibrary, "it is a folder"};
    }
    try {
        return ProbeImage(Image(ReadAll(ToUtf8(path))), path, in_functions);
    } catch (const CommandError& error) {
        return {LibraryFault::CannotLoad, error.what()};
    }
}

}  // namespace Veltrane::Cli
