#include "tools/trace.h"

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string_view>

#include "tools/NameTables.h"
#include "tools/TracePlatform.h"
#include "tools/TraceSettings.h"

namespace Orska {

// Process-wide: set by ResolveTraceWord and ResetTrace, read by every trace call.
constinit std::atomic<std::uint32_t> s_traceWord{TRACE_NOT_READ};

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t LINE_SIZE = 9999;  ///< bytes of the buffer on the stack
constexpr std::size_t SPARE = 666;       ///< bytes kept free for what follows the message
constexpr std::size_t NUMBER_SIZE = 24;  ///< bytes for any number in text

// Process-wide: the two are set under s_readMutex before the word is stored, and read after it was
// loaded. The file is never closed, since a thread may be writing while the process ends.
constinit std::mutex s_readMutex;
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
    const std::lock_guard<std::mutex> lock(s_readMutex);
    word = s_traceWord.load(std::memory_order_relaxed);
    if ((word & TRACE_LEVEL_MASK) > TRACE_MAX_LEVEL) {
        word = ReadEnvironment();
        s_traceWord.store(word, std::memory_order_release);
    }
    return word;
}

/// The text of one line. It starts on the stack and moves to the heap when it grows too long; when
/// there is no memory for that, it is cut.
class LineText {
public:
    LineText() noexcept = default;
    ~LineText() {
        if (m_text != m_stack) {
            std::free(m_text);
        }
    }
    LineText(const LineText&) = delete;
    LineText& operator=(const LineText&) = delete;

    void Append(std::string_view in_text) noexcept;
    void AppendUnsigned(std::uint64_t in_value) noexcept;
    void AppendHex4(std::uint32_t in_value) noexcept;
    /// Leaves SPARE bytes free behind the message.
    void AppendMessage(const char* in_format, std::va_list in_arguments) noexcept
        ORSKA_PRINTF_FORMAT(2, 0);

    const char* GetData() const noexcept { return m_text; }
    std::size_t GetSize() const noexcept { return m_size; }

private:
    bool Reserve(std::size_t in_capacity) noexcept;

    char* m_text = m_stack;
    std::size_t m_size = 0;
    std::size_t m_capacity = LINE_SIZE;
    char m_stack[LINE_SIZE];
};

bool LineText::Reserve(std::size_t in_capacity) noexcept {
    if (in_capacity <= m_capacity) {
        return true;
    }
    char* block = static_cast<char*>(std::malloc(in_capacity));
    if (block == nullptr) {
        return false;
    }
    std::memcpy(block, m_text, m_size);
    if (m_text != m_stack) {
        std::free(m_text);
    }
    m_text = block;
    m_capacity = in_capacity;
    return true;
}

void LineText::Append(std::string_view in_text) noexcept {
    std::size_t size = in_text.size();
    if (size > m_capacity - m_size && !Reserve(m_size + size + SPARE)) {
        size = m_capacity - m_size;
    }
    std::memcpy(m_text + m_size, in_text.data(), size);
    m_size += size;
}

void LineText::AppendUnsigned(std::uint64_t in_value) noexcept {
    char digits[NUMBER_SIZE];
    const char* end = std::to_chars(digits, digits + sizeof digits, in_value).ptr;
    Append({digits, static_cast<std::size_t>(end - digits)});
}

void LineText::AppendHex4(std::uint32_t in_value) noexcept {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    const char text[] = {DIGITS[in_value >> 12 & 15], DIGITS[in_value >> 8 & 15],
                         DIGITS[in_value >> 4 & 15], DIGITS[in_value & 15]};
    Append({text, sizeof text});
}

void LineText::AppendMessage(const char* in_format, std::va_list in_arguments) noexcept {
    std::va_list secondPass;
    va_copy(secondPass, in_arguments);
    const int result =
        std::vsnprintf(m_text + m_size, m_capacity - m_size, in_format, in_arguments);
    if (result < 0) {
        // The C library refused the format or an argument; the format still tells the reader most.
        Append(in_format);
    } else {
        std::size_t size = static_cast<std::size_t>(result);
        if (m_capacity - m_size < size + SPARE) {
            if (Reserve(m_size + size + SPARE + 1)) {
                std::vsnprintf(m_text + m_size, size + 1, in_format, secondPass);
            } else {
                const std::size_t space = m_capacity - m_size;
                size = space > SPARE && size > space - SPARE ? space - SPARE : 0;
            }
        }
        m_size += size;
    }
    va_end(secondPass);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
/// Formats with one more "%" at the end of the format, so that the lone one there stands for
/// itself; as it is, it would be undefined.
void AppendMessageWithLonePercent(LineText& io_line, const char* in_format,
                                  std::va_list in_arguments) noexcept {
    const std::size_t length = std::strlen(in_format);
    char* format = static_cast<char*>(std::malloc(length + 2));
    if (format == nullptr) {
        io_line.Append(in_format);
        return;
    }
    std::memcpy(format, in_format, length);
    std::memcpy(format + length, "%", 2);
    io_line.AppendMessage(format, in_arguments);
    std::free(format);
}
#pragma GCC diagnostic pop

bool EndsInLonePercent(std::string_view in_format) noexcept {
    const std::size_t other = in_format.find_last_not_of('%');
    const std::size_t length = in_format.size() - (other == in_format.npos ? 0 : other + 1);
    return length % 2 != 0;
}

void AppendPrefix(LineText& io_line, const char* in_function, int in_line) noexcept {
    io_line.Append(in_function == nullptr ? "(?)" : in_function);
    io_line.Append(in_line < 0 ? ":-" : ":");
    const std::int64_t line = in_line;
    io_line.AppendUnsigned(static_cast<std::uint64_t>(line < 0 ? -line : line));
    io_line.Append("\t");
}

/// " @%.5f" of the seconds since the start, rounded, with a point in every locale.
void AppendTimeStamp(LineText& io_line) noexcept {
    constexpr std::uint64_t UNITS_PER_SECOND = 100000;
    using Nanoseconds = std::chrono::nanoseconds;
    const auto elapsed = std::chrono::duration_cast<Nanoseconds>(Clock::now() - s_startTime);
    const std::uint64_t units = (static_cast<std::uint64_t>(elapsed.count()) + 5000) / 10000;
    io_line.Append(" @");
    io_line.AppendUnsigned(units / UNITS_PER_SECOND);
    char digits[NUMBER_SIZE];  // "1" and the five places, so that leading zeros stay
    std::to_chars(digits, digits + sizeof digits, UNITS_PER_SECOND + units % UNITS_PER_SECOND);
    digits[0] = '.';
    io_line.Append({digits, 6});
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
    // Level 0 means off, also for lines of level 0 and below.
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
    const std::uint32_t word = s_traceWord.load(std::memory_order_relaxed);
    LineText line;
    AppendPrefix(line, in_function, in_line);
    const std::size_t length = std::strlen(in_format);
    const char last = length == 0 ? '\0' : in_format[length - 1];
    if (last == '%' && EndsInLonePercent({in_format, length})) {
        AppendMessageWithLonePercent(line, in_format, in_arguments);
    } else {
        line.AppendMessage(in_format, in_arguments);
    }
    if (last == ' ' || last == ':') {
        line.Append(GetErrorName(ToNameTableNumber(keeper.m_errno)));
    }
    AppendFields(line, word, in_file);
    line.Append("\n");
    WriteTraceLine(s_traceStream, line.GetData(), line.GetSize());
    if ((word & TRACE_FLUSH) != 0) {
        std::fflush(s_traceStream);
    }
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
    const std::lock_guard<std::mutex> lock(s_readMutex);
    if (s_traceStream != nullptr && s_traceStream != stderr) {
        std::fclose(s_traceStream);
    }
    s_traceStream = nullptr;
    s_traceWord.store(TRACE_NOT_READ, std::memory_order_release);
}

}  // namespace Orska
