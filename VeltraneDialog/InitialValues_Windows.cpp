#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/WideText_Windows.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

namespace {

/// More than any seven values need; keeps a device or an endless pipe from filling the memory.
constexpr std::size_t MAX_FILE_SIZE = std::size_t{1} << 20;
constexpr DWORD BLOCK_SIZE = 4096;

constexpr wchar_t VARIABLE[] = L"VELTRANE_DSN_INITIAL_VALUES";
constexpr wchar_t DEFAULT_FILE_NAME[] = L"dsn-defaults.ini";

[[noreturn]] void Fail(const std::wstring& in_fileName, const std::string& in_reason) {
    throw std::runtime_error("Initial values of a DSN: " + ToUtf8(in_fileName) + ": " + in_reason +
                             ".");
}

class OpenFile {
public:
    explicit OpenFile(const std::wstring& in_fileName)
        : m_file(CreateFileW(in_fileName.c_str(), GENERIC_READ,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (IsOpen()) CloseHandle(m_file);
    }
    bool IsOpen() const { return m_file != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_file; }

private:
    HANDLE m_file;
};

/// @return false when the file does not exist and may be absent
bool ReadWholeFile(const std::wstring& in_fileName, bool in_mayBeAbsent,
                   std::string& out_contents) {
    const OpenFile file(in_fileName);
    if (!file.IsOpen()) {
        const DWORD error = GetLastError();
        if (in_mayBeAbsent && (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)) {
            return false;
        }
        Fail(in_fileName, DescribeSystemError(error));
    }
    // Room for all at once: a buffer that grows leaves what it held behind.
    LARGE_INTEGER size{};
    GetFileSizeEx(file.Get(), &size);
    const auto bytes = static_cast<std::size_t>(size.QuadPart);
    out_contents.reserve(std::min(bytes, MAX_FILE_SIZE) + BLOCK_SIZE);
    std::string block(BLOCK_SIZE, '\0');
    const WipeAtEnd wipe(block);
    for (;;) {
        DWORD count = 0;
        if (ReadFile(file.Get(), block.data(), BLOCK_SIZE, &count, nullptr) == FALSE) {
            // A pipe whose other end has gone is at its end.
            const DWORD error = GetLastError();
            const bool isEnd = error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED;
            if (!isEnd) Fail(in_fileName, DescribeSystemError(error));
        }
        if (count == 0) return true;
        out_contents.append(block.data(), count);
        if (out_contents.size() > MAX_FILE_SIZE) Fail(in_fileName, "larger than 1 MiB");
    }
}

/// Empty when the variable is not set.
std::wstring NamedFile() {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetEnvironmentVariableW(VARIABLE, name.data(), static_cast<DWORD>(name.size()));
        const bool isWhole = length < name.size();
        name.resize(length);
        if (isWhole) return name;
    }
}

/// Beside the setup library, where only an administrator can put a file. The folder for data of all
/// programs would not do: every user may make a folder there.
std::wstring DefaultFile() {
    const std::wstring own = OwnModulePath();
    return own.substr(0, own.rfind(L'\\') + 1) + DEFAULT_FILE_NAME;
}

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
