/// Texts for the system's error codes.
///
/// An error text never fails: where the system knows no text, a fallback names the code. The
/// system's codes are errno values on Linux and GetLastError values on Windows. Any thread may
/// call.
#ifndef PLATFORMABSTRACTION_ORSKAUTILITY_H
#define PLATFORMABSTRACTION_ORSKAUTILITY_H

#include <cstdint>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

/// The code of this thread's last failed system call. Ask before any other call is made.
std::uint32_t GetLastErrorCode() noexcept;

/// The system's text for an error code, in the user's language; the fallback where there is none.
orska_wstring GetLastErrorText(std::uint32_t in_code);

/// As GetLastErrorText.
/// @param in_allowRetry  when the system has no text: true also tries to say why, by the text of
/// that
///                       second error; false only gives its number
orska_wstring GetLastErrorTextImpl(std::uint32_t in_code, bool in_allowRetry);

/// The system's text for an NTSTATUS code, or "Unknown NTSTATUS " and the code in decimal.
orska_wstring GetNtStatusText(std::uint32_t in_code);

/// Asks the system alone, without fallbacks.
/// @return false when there is no text; GetLastErrorCode then says why
bool FormatSystemMessage(std::uint32_t in_code, orska_wstring& out_text);
bool FormatNtStatusMessage(std::uint32_t in_code, orska_wstring& out_text);

}  // namespace Orska::Support

#endif
