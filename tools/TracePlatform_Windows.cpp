#include "tools/TracePlatform.h"

#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <string_view>

#include "tools/LineText.h"
#include "tools/RaisedRights.h"
#include "tools/WindowsApi.h"

namespace Orska {

namespace {

struct ErrnoNumber {
    int m_errno;
    int m_number;
};

// The name table has the order of the socket errors, from 10035 on. The C library's errno values
// differ from them, except 1 to 34.
constexpr ErrnoNumber SOCKET_ERRORS[] = {
    {EWOULDBLOCK, 35},  {EINPROGRESS, 36},     {EALREADY, 37},     {ENOTSOCK, 38},
    {EDESTADDRREQ, 39}, {EMSGSIZE, 40},        {EPROTOTYPE, 41},   {ENOPROTOOPT, 42},
    {EOPNOTSUPP, 45},   {EPROTONOSUPPORT, 43}, {EAFNOSUPPORT, 47}, {EADDRINUSE, 48},
    {ENETDOWN, 50},     {EADDRNOTAVAIL, 49},   {ENETUNREACH, 51},  {ENETRESET, 52},
    {ECONNRESET, 54},   {ECONNABORTED, 53},    {ENOBUFS, 55},      {EISCONN, 56},
    {ENOTCONN, 57},     {ETIMEDOUT, 60},       {ECONNREFUSED, 61}, {ELOOP, 62},
    {EHOSTUNREACH, 65}, {ENAMETOOLONG, 63},    {ENOTEMPTY, 66},
};

/// The longest environment variable, including its NUL, in code units.
constexpr int LONGEST_VALUE = 32'767;

// Process-wide: set and read by ReadTraceVariable and OpenTraceFile, under the caller's lock.
constinit wchar_t s_wide[LONGEST_VALUE] = {};
constinit char s_value[3 * LONGEST_VALUE] = {};

constexpr int LAST_COMMON_ERRNO = ERANGE;
constexpr int NO_NAME = 108;

}  // namespace

const char* ReadTraceVariable() noexcept {
    // A program with more rights than its user must not append to a file of that user's choice.
    if (HasRaisedRights()) {
        return nullptr;
    }
    // Read from the system, in UTF-8. The C library's copy lacks letters that are not in the code
    // page, and is from its start, while the host can have set the variable later.
    const DWORD length = GetEnvironmentVariableW(L"TR4CE", s_wide, LONGEST_VALUE);
    const bool isThere = length != 0 && length < LONGEST_VALUE;
    return isThere && WideCharToMultiByte(CP_UTF8, 0, s_wide, -1, s_value, sizeof s_value, nullptr,
                                          nullptr) != 0
               ? s_value
               : nullptr;
}

std::FILE* OpenTraceFile(const char* in_fileName) noexcept {
    if (MultiByteToWideChar(CP_UTF8, 0, in_fileName, -1, s_wide, LONGEST_VALUE) == 0) {
        return nullptr;
    }
    // With only the right to append, the system puts each write at the end of the file, whatever
    // other processes write meanwhile.
    const HANDLE handle =
        CreateFileW(s_wide, FILE_APPEND_DATA | SYNCHRONIZE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                    SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
    if (descriptor < 0) {
        CloseHandle(handle);
        return nullptr;
    }
    std::FILE* stream = _fdopen(descriptor, "ab");
    if (stream == nullptr) {
        _close(descriptor);
    }
    return stream;
}

void WriteTraceLine(std::FILE* in_stream, const char* in_line, std::size_t in_size,
                    bool in_isFlushed) noexcept {
    if (in_isFlushed) {
        std::fflush(in_stream);  // text of the host in standard error comes first
    }
    // This C library writes unbuffered streams byte by byte, and text in pieces. So the line
    // bypasses the stream and goes to the system in one piece.
    if (in_stream == stderr) {
        _write(_fileno(in_stream), in_line, static_cast<unsigned>(in_size));
        return;
    }
    LineText text;  // with the line ends of a text stream
    std::string_view rest(in_line, in_size);
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        text.Append(rest.substr(0, end));
        text.Append("\r\n");
        rest.remove_prefix(end + 1);
    }
    text.Append(rest);
    _write(_fileno(in_stream), text.GetData(), static_cast<unsigned>(text.GetSize()));
}

std::uint32_t GetTraceThreadId() noexcept { return GetCurrentThreadId(); }

std::uint32_t GetTraceProcessId() noexcept { return GetCurrentProcessId(); }

int ToNameTableNumber(int in_errno) noexcept {
    if (in_errno >= 0 && in_errno <= LAST_COMMON_ERRNO) {
        return in_errno;
    }
    for (const ErrnoNumber& entry : SOCKET_ERRORS) {
        if (entry.m_errno == in_errno) {
            return entry.m_number;
        }
    }
    return NO_NAME;
}

}  // namespace Orska
