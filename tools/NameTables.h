/// Short names of error numbers, signals, address-lookup errors and socket options, for trace text.
/// All tables are constant, so the look-ups are thread-safe. No function returns null.
#ifndef TOOLS_NAMETABLES_H
#define TOOLS_NAMETABLES_H

#include "RequireCpp20.h"

namespace Orska {

/// Returns the name of an error number of either sign. A number above 9999 is a Windows socket
/// error (10054 reads "ECONNRESET"). From 35 on the numbers are those of Windows sockets minus
/// 10000, not those of the C library. The name of 0 is empty, that of an unknown number "Eunknown".
const char* GetErrorName(int in_error) noexcept;

/// Returns the name of a signal number of Linux, from 1 on, else "SIGunknown".
const char* GetSignalName(int in_signal) noexcept;

/// Returns the name of a result of getaddrinfo of either sign, in the order of Linux, from 1 on,
/// else "EAI_unknown".
const char* GetAddressErrorName(int in_error) noexcept;

/// Returns the name of an index from 0 on, in the order of the table, else "unknown".
const char* GetSocketOptionName(int in_option) noexcept;

}  // namespace Orska

#endif
