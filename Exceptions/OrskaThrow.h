/// The one way in which the support library throws: trace the throw site, then throw by value.
///
/// The text of the trace line is the constructor call as it is typed at the site, so that people
/// can search for it. Function, source and line are written out at the site and are the same on
/// every system; they are not derived from the file that happens to hold the code.
#ifndef EXCEPTIONS_ORSKATHROW_H
#define EXCEPTIONS_ORSKATHROW_H

#include "../tools/RequireCpp20.h"

namespace Orska::Support {

/// Where a throw stands, as the trace shows it.
struct TraceSite {
    const char* m_function;  ///< fully qualified name
    const char* m_source;    ///< source name, with backslashes and without an ending
    int m_line;              ///< 0 where no line is fixed
};

/// Writes the line "Throwing: ..." at trace level 1 when tracing is on.
/// @param in_text  the whole message, "Throwing: " included; written as it is, not as a format
void TraceThrow(const TraceSite& in_site, const char* in_text);

/// True when lines of this level are written, for texts that cost something to make.
bool IsTraceOn(int in_level);

/// Writes one line when tracing is on at this level or a higher one.
/// @param in_text  written as it is, not as a format
void TraceLine(int in_level, const TraceSite& in_site, const char* in_text);

}  // namespace Orska::Support

/// ORSKA_THROW((TraceSite{"A::F", "Folder\\Source", 12}), ErrorException(...));
#define ORSKA_THROW(in_site, ...)                                         \
    do {                                                                  \
        ::Orska::Support::TraceThrow(in_site, "Throwing: " #__VA_ARGS__); \
        throw __VA_ARGS__;                                                \
    } while (false)

#endif
