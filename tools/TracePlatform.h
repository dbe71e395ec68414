/// The functions of the system that the trace needs: its environment variable, its file and its
/// ids. One implementation per system; no state.
#ifndef TOOLS_TRACEPLATFORM_H
#define TOOLS_TRACEPLATFORM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace Orska {

/// Returns the value of TR4CE, or null if it is not set or not to be trusted. Only one thread at a
/// time calls this and OpenTraceFile.
const char* ReadTraceVariable() noexcept;

/// Opens a file for appending, or creates it, so that other processes can append to it at the same
/// time and child programs do not inherit it. The caller closes it.
/// @param in_fileName  in the encoding of TR4CE; UTF-8 on Windows
/// @return null when the file cannot be opened
std::FILE* OpenTraceFile(const char* in_fileName) noexcept;

/// Appends a whole line in one write. A failed write only loses the line: the signals that Linux
/// sends for it do not reach the host.
/// @param in_size  bytes
/// @param in_isFlushed  also flushes the stream
void WriteTraceLine(std::FILE* in_stream, const char* in_line, std::size_t in_size,
                    bool in_isFlushed) noexcept;

/// Return the system's ids of the calling thread and of the process.
std::uint32_t GetTraceThreadId() noexcept;
std::uint32_t GetTraceProcessId() noexcept;

/// Returns the number of an `errno` value in the table of GetErrorName.
int ToNameTableNumber(int in_errno) noexcept;

}  // namespace Orska

#endif
