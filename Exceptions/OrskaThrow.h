/// The support library throws only in this way: it traces the throw site, then throws by value.
///
/// The trace line has the constructor call as it is written at the site, so that people can search
/// for it. Function, source and line are also written at the site and are the same on every system;
/// they are not derived from the file that contains the code.
#ifndef EXCEPTIONS_ORSKATHROW_H
#define EXCEPTIONS_ORSKATHROW_H

#include "../tools/RequireCpp20.h"

namespace Orska::Support {

/// A throw site, as the trace shows it.
struct TraceSite {
    const char* m_function;  ///< fully qualified name
    const char* m_source;    ///< source name, with backslashes and without extension
    int m_line;              ///< 0 if there is none
};

/// Writes the line "Throwing: ..." if trace level 1 is on.
/// @param in_text  the whole message, with "Throwing: "; not a format
void TraceThrow(const TraceSite& in_site, const char* in_text);

/// True if lines of this level are written. For texts that are expensive to make.
bool IsTraceOn(int in_level);

/// Writes one line if this trace level is on.
/// @param in_text  not a format
void TraceLine(int in_level, const TraceSite& in_site, const char* in_text);

}  // namespace Orska::Support

/// ORSKA_THROW((TraceSite{"A::F", "Folder\\Source", 12}), ErrorException(...));
#define ORSKA_THROW(in_site, ...)                                         \
    do {                                                                  \
        ::Orska::Support::TraceThrow(in_site, "Throwing: " #__VA_ARGS__); \
        throw __VA_ARGS__;                                                \
    } while (false)

#endif
