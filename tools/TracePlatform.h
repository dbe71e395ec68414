/// What the trace asks of the system: its environment variable, its file and its ids. One body a
/// system; no state.
#ifndef TOOLS_TRACEPLATFORM_H
#define TOOLS_TRACEPLATFORM_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace Orska {

/// The value of TR4CE, or null when it is not set or may not be trusted. One thread at a time
/// calls this and OpenTraceFile.
const char* ReadTraceVariable() noexcept;

/// Opens a file for appending, creating it where needed, so that other processes may append to it
/// at the same time and programs started later do not inherit it. The caller closes it.
/// @param in_fileName  in the encoding of TR4CE's value: on Windows UTF-8
/// @return null when the file cannot be opened
std::FILE* OpenTraceFile(const char* in_fileName) noexcept;

/// Appends a whole line in one write of the system. A write that fails loses the line and does
/// nothing else: the signals that Linux sends for it do not reach the host.
/// @param in_size  bytes
/// @param in_isFlushed  also writes what the stream holds back
void WriteTraceLine(std::FILE* in_stream, const char* in_line, std::size_t in_size,
                    bool in_isFlushed) noexcept;

/// The system's ids of the calling thread and of the process.
std::uint32_t GetTraceThreadId() noexcept;
std::uint32_t GetTraceProcessId() noexcept;

/// The number under which GetErrorName knows this system's `errno` value.
int ToNameTableNumber(int in_errno) noexcept;

}  // namespace Orska

#endif
