#include "tools/TracePlatform.h"

#include <fcntl.h>
#include <io.h>

#include <cstdlib>

#include "tools/WindowsApi.h"

namespace Orska {

const char* ReadTraceVariable() noexcept { return std::getenv("TR4CE"); }

std::FILE* OpenTraceFile(const char* in_fileName) noexcept {
    // With the right to append and no right to write elsewhere, the system places each write at the
    // end of the file, whatever other processes do meanwhile.
    const HANDLE handle = CreateFileA(in_fileName, FILE_APPEND_DATA | SYNCHRONIZE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
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

void WriteTraceLine(std::FILE* in_stream, const char* in_line, std::size_t in_size) noexcept {
    // This C library writes unbuffered streams byte by byte, and text in pieces. The line is handed
    // to the system below the stream, which therefore never holds anything back.
    _write(_fileno(in_stream), in_line, static_cast<unsigned>(in_size));
}

std::uint32_t GetTraceThreadId() noexcept { return GetCurrentThreadId(); }

std::uint32_t GetTraceProcessId() noexcept { return GetCurrentProcessId(); }

int ToNameTableNumber(int in_errno) noexcept { return in_errno; }

}  // namespace Orska
