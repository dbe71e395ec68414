#include "tools/trace.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <thread>

#include "tools/LineText.h"
#include "tools/NameTables.h"
#include "tools/NoCancellation.h"
#include "tools/TracePlatform.h"
#include "tools/TraceSettings.h"

namespace Orska {

// Process-wide: set by ResolveTraceWord and ResetTrace, read by every trace call.
constinit std::atomic<std::uint32_t> s_traceWord{TRACE_NOT_READ};

namespace {

using Clock = std::chrono::steady_clock;

/// A lock that works before any code runs, as std::mutex does not in every run-time library: the
/// construction of a static object can write the first trace line. It is held once, briefly.
class EarlyLock {
public:
    void lock() noexcept {
        while (m_isHeld.test_and_set(std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }
    void unlock() noexcept { m_isHeld.clear(std::memory_order_release); }

private:
    std::atomic_flag m_isHeld;
};

// Process-wide: both are set under s_readLock before the word is stored, and read after it was
// loaded. The file is never closed, because a thread can be writing while the process ends.
constinit EarlyLock s_readLock;
constinit std::FILE* s_traceStream = nullptr;
constinit Clock::time_point s_startTime;

// Process-wide: set by SetTraceTag and SetDumpLimit, read by each line and each dump.
constinit std::atomic<const char*> s_tag{nullptr};
constinit std::atomic<std::size_t> s_dumpLimit{1024};

class ErrnoKeeper {
public:
    ErrnoKeeper() noexcept : m_errno(errno) {}
    ~ErrnoKeeper() { errno = m_errno; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

    const int m_errno;
};

std::uint32_t ReadEnvironment() noexcept {
    const TraceSettings settings = ParseTraceSettings(ReadTraceVariable());
    if (settings.m_word == 0) {
        return 0;
    }
    s_startTime = Clock::now();
    s_traceStream = settings.m_fileName == nullptr ? nullptr : OpenTraceFile(settings.m_fileName);
    if (s_traceStream == nullptr) {
        s_traceStream = stderr;
    }
    return settings.m_word;
}

std::uint32_t ResolveTraceWord() noexcept {
    std::uint32_t word = s_traceWord.load(std::memory_order_acquire);
    if ((word & TRACE_LEVEL_MASK) <= TRACE_MAX_LEVEL) {
        return word;
    }
    const ErrnoKeeper keeper;
    const NoCancellation noCancellation;
    const std::lock_guard<EarlyLock> lock(s_readLock);
    word = s_traceWord.load(std::memory_order_relaxed);
    if ((word & TRACE_LEVEL_MASK) > TRACE_MAX_LEVEL) {
        word = ReadEnvironment();
        s_traceWord.store(word, std::memory_order_release);
    }
    return word;
}

void AppendPrefix(LineText& io_line, const char* in_function, int in_line) noexcept {
    io_line.Append(in_function == nullptr ? "(?)" : in_function);
    io_line.Append(":");
    io_line.AppendSigned(in_line);
    io_line.Append("\t");
}

/// Appends the seconds since the start like " @%.5f", rounded, with a point in every locale.
void AppendTimeStamp(LineText& io_line) noexcept {
    constexpr std::uint64_t UNITS_PER_SECOND = 100000;
    using Nanoseconds = std::chrono::nanoseconds;
    const auto elapsed = std::chrono::duration_cast<Nanoseconds>(Clock::now() - s_startTime);
    const std::uint64_t units = (static_cast<std::uint64_t>(elapsed.count()) + 5000) / 10000;
    io_line.Append(" @");
    io_line.AppendUnsigned(units / UNITS_PER_SECOND);
    io_line.Append(".");
    for (std::uint64_t place = UNITS_PER_SECOND / 10; place > 0; place /= 10) {
        io_line.AppendUnsigned(units / place % 10);
    }
}

void AppendFields(LineText& io_line, std::uint32_t in_word, const char* in_file) noexcept {
    if ((in_word & ~TRACE_LEVEL_MASK) != 0) {
        io_line.Append("\t");
    }
    if ((in_word & TRACE_TIME_STAMP) != 0) {
        AppendTimeStamp(io_line);
    }
    if ((in_word & TRACE_THREAD_ID) != 0) {
        const std::uint32_t id = GetTraceThreadId();
        io_line.Append(" #");
        io_line.AppendHex4((id >> 16) ^ (id & 0xFFFF));
    }
    if ((in_word & TRACE_PROCESS_ID) != 0) {
        io_line.Append(" pid:");
        io_line.AppendUnsigned(GetTraceProcessId());
    }
    const char* tag = s_tag.load(std::memory_order_acquire);
    if (tag != nullptr && *tag != '\0') {
        io_line.Append(" ");
        io_line.Append(tag);
    }
    if ((in_word & TRACE_NO_SOURCE) == 0 && in_file != nullptr) {
        const char* backslash = std::strrchr(in_file, '\\');
        io_line.Append(" ");
        io_line.Append(backslash == nullptr ? in_file : backslash + 1);
    }
}

}  // namespace

bool TraceIsOnResolved(int in_level) noexcept {
    const int current = static_cast<int>(ResolveTraceWord() & TRACE_LEVEL_MASK);
    // Level 0 means off, even for lines of level 0 and below.
    return current > 0 && in_level <= current;
}

void trace(int in_level, const char* in_function, const char* in_file, int in_line,
           const char* in_format, ...) noexcept {
    if (!TraceIsOn(in_level)) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, in_format);
    vtrace(in_level, in_function, in_file, in_line, in_format, arguments);
    va_end(arguments);
}

void vtrace(int in_level, const char* in_function, const char* in_file, int in_line,
            const char* in_format, std::va_list in_arguments) noexcept {
    const ErrnoKeeper keeper;
    if (!TraceIsOn(in_level)) {
        return;
    }
    const NoCancellation noCancellation;
    const std::uint32_t word = s_traceWord.load(std::memory_order_relaxed);
    LineText line;
    AppendPrefix(line, in_function, in_line);
    line.AppendMessage(in_format, in_arguments);
    const std::size_t length = std::strlen(in_format);
    const char last = length == 0 ? '\0' : in_format[length - 1];
    if (last == ' ' || last == ':') {
        line.Append(GetErrorName(ToNameTableNumber(keeper.m_errno)));
    }
    AppendFields(line, word, in_file);
    line.End();
    WriteTraceLine(s_traceStream, line.GetData(), line.GetSize(), (word & TRACE_FLUSH) != 0);
}

std::FILE* GetTraceStream() noexcept {
    return (ResolveTraceWord() & TRACE_LEVEL_MASK) == 0 ? nullptr : s_traceStream;
}

void SetTraceTag(const char* in_tag) noexcept { s_tag.store(in_tag, std::memory_order_release); }

void SetDumpLimit(std::size_t in_bytes) noexcept {
    s_dumpLimit.store(in_bytes, std::memory_order_relaxed);
}

std::size_t GetDumpLimit() noexcept { return s_dumpLimit.load(std::memory_order_relaxed); }

void ResetTrace() noexcept {
    const std::lock_guard<EarlyLock> lock(s_readLock);
    if (s_traceStream != nullptr && s_traceStream != stderr) {
        std::fclose(s_traceStream);
    }
    s_traceStream = nullptr;
    s_traceWord.store(TRACE_NOT_READ, std::memory_order_release);
}

}  // namespace Orska
