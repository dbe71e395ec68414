/// What the value of the environment variable TR4CE means. No state.
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
/// A value that does not start with a number, and a number below 1, mean off. A number above 254
/// counts as 254. Letters that mean nothing are passed over.
/// @param in_value  null when the variable is not set
TraceSettings ParseTraceSettings(const char* in_value) noexcept;

}  // namespace Orska

#endif
