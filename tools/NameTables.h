/// Short names of error numbers, signals, address-lookup errors and socket options, for trace text.
/// All tables are constant; any thread may look up. No function returns null.
#ifndef TOOLS_NAMETABLES_H
#define TOOLS_NAMETABLES_H

#include "RequireCpp20.h"

namespace Orska {

/// Takes an error number of either sign; one above 9999 is a Windows socket error (10054 reads
/// "ECONNRESET"). From 35 on the numbers are those of Windows sockets less 10000, not those of the
/// C library. 0 has the empty name, a number without a name reads "Eunknown".
const char* GetErrorName(int in_error) noexcept;

/// Takes a signal number: the names are in the order of Linux, from 1 on. "SIGunknown" otherwise.
const char* GetSignalName(int in_signal) noexcept;

/// Takes a result of getaddrinfo of either sign: the names are in the order of Linux, from 1 on.
/// "EAI_unknown" otherwise.
const char* GetAddressErrorName(int in_error) noexcept;

/// Takes an index from 0 on, in the order of the table. "unknown" otherwise.
const char* GetSocketOptionName(int in_option) noexcept;

}  // namespace Orska

#endif
