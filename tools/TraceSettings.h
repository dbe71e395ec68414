/// Parses the value of the environment variable TR4CE. No state.
#ifndef TOOLS_TRACESETTINGS_H
#define TOOLS_TRACESETTINGS_H

#include <cstdint>

namespace Orska {

struct TraceSettings {
    std::uint32_t m_word = 0;          ///< level and flags, as in trace.h; 0: tracing is off
    const char* m_fileName = nullptr;  ///< points into the value; null: standard error
};

/// Reads "4st:trace.log": a number, letters, and the trace file after the first ":".
///
/// Tracing is off if the value does not start with a number, or with one below 1. A number above
/// 254 counts as 254. Other letters are ignored.
/// @param in_value  null if the variable is not set
TraceSettings ParseTraceSettings(const char* in_value) noexcept;

}  // namespace Orska

#endif
