/// The process-wide trace: one line per call, to standard error or to the file named in the
/// environment variable TR4CE. docs/tracing.md describes its use and its format.
///
/// A disabled line costs one load and one comparison:
///
///     constexpr char SOURCE[] = "Setup\\ConfigDSNInternal";
///     ORSKA_TRACE(2, "Veltrane::ODBC::ConfigDSNInternal", SOURCE, 70, "request %u for DSN \"%s\"",
///                 request, name.GetAsUtf8().c_str());
///
/// Level 1 is for failures, 2 for requests, 3 for each step, 4 and above for internals. Text is
/// written as it is: never pass a password to a trace call, at any level.
///
/// Thread-safe. Each line reaches the file in one write, so lines of several threads and processes
/// stay whole, one after the other. Tracing never fails its caller: it throws nothing, keeps
/// `errno`, and a file that cannot be written only loses the line.
#ifndef TOOLS_TRACE_H
#define TOOLS_TRACE_H

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "PrintfFormat.h"

namespace Orska {

/// Parts of the trace word.
constexpr std::uint32_t TRACE_LEVEL_MASK = 0xFF;
constexpr std::uint32_t TRACE_MAX_LEVEL = 254;
constexpr std::uint32_t TRACE_NOT_READ = 255;
constexpr std::uint32_t TRACE_FLUSH = 0x100;        ///< "f": flush after every line
constexpr std::uint32_t TRACE_TIME_STAMP = 0x200;   ///< "s"
constexpr std::uint32_t TRACE_THREAD_ID = 0x400;    ///< "t"
constexpr std::uint32_t TRACE_NO_SOURCE = 0x800;    ///< "n": no source file name
constexpr std::uint32_t TRACE_PROCESS_ID = 0x1000;  ///< "p"

/// The level (low byte) and the flags in force. Process-wide: set from TR4CE by the first trace
/// call and by ResetTrace, read by every trace call. Relaxed loads avoid locks.
extern std::atomic<std::uint32_t> s_traceWord;

/// The part of TraceIsOn that is not inline. Reads the environment at the first call.
bool TraceIsOnResolved(int in_level) noexcept;

/// True when a line of this level would be written.
inline bool TraceIsOn(int in_level) noexcept {
    const std::uint32_t word = s_traceWord.load(std::memory_order_relaxed);
    return in_level <= static_cast<int>(word & TRACE_LEVEL_MASK) && TraceIsOnResolved(in_level);
}

// The name of the trace function is in the style of printf.
// NOLINTBEGIN(readability-identifier-naming)

/// Writes one line if `in_level` is at or below the trace level.
/// @param in_function  qualified name, as people search for it; null is shown as "(?)"
/// @param in_file      source name, shown from its last backslash on; null shows nothing
/// @param in_line      0 if there is none
/// @param in_format    printf format. If it ends in a blank or ":", the name of the caller's
///                     `errno` is appended
void trace(int in_level, const char* in_function, const char* in_file, int in_line,
           const char* in_format, ...) noexcept ORSKA_PRINTF_FORMAT(5, 6);

/// As `trace`, with the arguments in a list.
void vtrace(int in_level, const char* in_function, const char* in_file, int in_line,
            const char* in_format, std::va_list in_arguments) noexcept ORSKA_PRINTF_FORMAT(5, 0);

// NOLINTEND(readability-identifier-naming)

/// Returns standard error or the trace file; null if tracing is off. Do not close it.
std::FILE* GetTraceStream() noexcept;

/// Sets a text that later lines show before the source name; null or empty, the default, for none.
/// It is not copied and has to live until another one is set.
void SetTraceTag(const char* in_tag) noexcept;

/// The most bytes that a buffer dump shows: 1024 by default; 0 means none.
void SetDumpLimit(std::size_t in_bytes) noexcept;
std::size_t GetDumpLimit() noexcept;

/// Closes the trace file; the next trace call reads TR4CE again. For tests: no other thread may
/// trace meanwhile.
void ResetTrace() noexcept;

}  // namespace Orska

/// `Orska::trace`. Evaluates its arguments only if the line is written.
#define ORSKA_TRACE(in_level, in_function, in_file, in_line, ...)                 \
    do {                                                                          \
        if (::Orska::TraceIsOn(in_level)) {                                       \
            ::Orska::trace(in_level, in_function, in_file, in_line, __VA_ARGS__); \
        }                                                                         \
    } while (false)

#endif
