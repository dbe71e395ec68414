#include <algorithm>
#include <stdexcept>
#include <utility>

#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/base/SystemError.h"
#include "PlatformAbstraction/base/WindowsHandle.h"
#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/WideText.h"
#include "VeltraneDialog/Wipe.h"
#include "tools/RaisedRights.h"

namespace Veltrane::ODBC {

using Orska::Support::DescribeSystemError;

namespace {

/// Seven values need less. Keeps a large file from filling the memory.
constexpr std::size_t MAX_FILE_SIZE = std::size_t{1} << 20;
constexpr DWORD BLOCK_SIZE = 4096;

constexpr wchar_t VARIABLE[] = L"VELTRANE_DSN_INITIAL_VALUES";
constexpr wchar_t DEFAULT_FILE_NAME[] = L"dsn-defaults.ini";

[[noreturn]] void Fail(const std::wstring& in_fileName, const std::string& in_reason) {
    throw std::runtime_error("Initial values of a DSN: " + ToUtf8(in_fileName) + ": " + in_reason +
                             ".");
}

/// @return false when the file does not exist and is optional
bool ReadWholeFile(const std::wstring& in_fileName, bool in_mayBeAbsent,
                   std::string& out_contents) {
    const Orska::Support::WindowsHandle file(CreateFileW(
        in_fileName.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
    if (!file.IsOpen()) {
        const DWORD error = GetLastError();
        if (in_mayBeAbsent && (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)) {
            return false;
        }
        Fail(in_fileName, DescribeSystemError(error));
    }
    // A request must not wait for input from a pipe or a console.
    const bool isNullDevice = Orska::Support::EqualsIgnoringCase(ToUtf8(in_fileName), "NUL");
    if (!isNullDevice && GetFileType(file.Get()) != FILE_TYPE_DISK) {
        Fail(in_fileName, "not a regular file");
    }
    // Reserves all at once: a buffer that grows leaves copies in freed memory.
    LARGE_INTEGER size{};
    GetFileSizeEx(file.Get(), &size);
    const auto bytes = static_cast<std::size_t>(size.QuadPart);
    out_contents.reserve(std::min(bytes, MAX_FILE_SIZE) + BLOCK_SIZE);
    std::string block(BLOCK_SIZE, '\0');
    const WipeAtEnd wipe(block);
    for (;;) {
        DWORD count = 0;
        if (ReadFile(file.Get(), block.data(), BLOCK_SIZE, &count, nullptr) == FALSE) {
            Fail(in_fileName, DescribeSystemError(GetLastError()));
        }
        if (count == 0) return true;
        out_contents.append(block.data(), count);
        if (out_contents.size() > MAX_FILE_SIZE) Fail(in_fileName, "larger than 1 MiB");
    }
}

/// Empty when the variable is not set.
std::wstring NamedFile() {
    // A program with more rights than its user must not read a file of that user's choice.
    if (Orska::HasRaisedRights()) return {};
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetEnvironmentVariableW(VARIABLE, name.data(), static_cast<DWORD>(name.size()));
        const bool isWhole = length < name.size();
        name.resize(length);
        if (isWhole) return name;
    }
}

/// Returns the path beside the setup library, where only an administrator can put a file. In the
/// common data folder of all programs, any user can create a folder.
std::wstring DefaultFile() { return PathBesideModule(DEFAULT_FILE_NAME); }

}  // namespace

DialogValues LoadInitialValues() {
    const std::wstring named = NamedFile();
    const std::wstring fileName = named.empty() ? DefaultFile() : named;
    std::string contents;
    const WipeAtEnd wipe(contents);
    if (!ReadWholeFile(fileName, named.empty(), contents)) return {};
    return ParseInitialValues(contents, ToUtf8(fileName));
}

}  // namespace Veltrane::ODBC
