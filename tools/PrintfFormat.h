/// Lets the compiler check the arguments of a function against its printf format.
#ifndef TOOLS_PRINTFFORMAT_H
#define TOOLS_PRINTFFORMAT_H

#include "RequireCpp20.h"

/// @param in_format  the number of the format among the parameters, from 1 on and counting `this`
/// @param in_first   the number of its first argument, or 0 for a list of arguments
#if defined(__MINGW32__)
#include <cstdio>
#define ORSKA_PRINTF_FORMAT(in_format, in_first) \
    __attribute__((format(__MINGW_PRINTF_FORMAT, in_format, in_first)))
#else
#define ORSKA_PRINTF_FORMAT(in_format, in_first) \
    __attribute__((format(printf, in_format, in_first)))
#endif

#endif
