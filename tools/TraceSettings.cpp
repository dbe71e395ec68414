#include "tools/TraceSettings.h"

#include <cstdlib>

#include "tools/trace.h"

namespace Orska {

namespace {

std::uint32_t FlagOfLetter(char in_letter) noexcept {
    switch (in_letter) {
        case 'f':
            return TRACE_FLUSH;
        case 's':
            return TRACE_TIME_STAMP;
        case 't':
            return TRACE_THREAD_ID;
        case 'n':
            return TRACE_NO_SOURCE;
        case 'p':
            return TRACE_PROCESS_ID;
        default:
            return 0;
    }
}

}  // namespace

TraceSettings ParseTraceSettings(const char* in_value) noexcept {
    TraceSettings settings;
    // strtol parses like atoi, and saturates where atoi is undefined.
    const long level = in_value == nullptr ? 0 : std::strtol(in_value, nullptr, 10);
    if (level < 1) {
        return settings;
    }
    // 255 and above would mean "environment not read yet" on every call.
    const long maxLevel = TRACE_MAX_LEVEL;
    settings.m_word = static_cast<std::uint32_t>(level < maxLevel ? level : maxLevel);
    const char* position = in_value;
    for (; *position != '\0' && *position != ':'; ++position) {
        settings.m_word |= FlagOfLetter(*position);
    }
    if (*position == ':') {
        settings.m_fileName = position + 1;
    }
    return settings;
}

}  // namespace Orska
