/// Texts for the system's error codes: errno values on Linux, GetLastError values on Windows.
/// UTF-8, whatever the locale is. Any thread may call.
#ifndef PLATFORMABSTRACTION_BASE_SYSTEMERROR_H
#define PLATFORMABSTRACTION_BASE_SYSTEMERROR_H

#include <cstdint>
#include <string>

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

/// The code of this thread's last failed system call. Read it before any other call.
std::uint32_t GetLastErrorCode() noexcept;

/// The system's own text, in the user's language and with the line end that Windows adds.
/// @return false when there is none; GetLastErrorCode then says why
bool FormatSystemMessage(std::uint32_t in_code, std::string& out_text);
/// The same for an NTSTATUS code.
bool FormatNtStatusMessage(std::uint32_t in_code, std::string& out_text);

/// The text without full stop and line end, for use in a sentence; "error 5" if there is none.
std::string DescribeSystemError(std::uint32_t in_code);
/// The same for the last failed system call.
std::string DescribeLastError();

}  // namespace Orska::Support

#endif
