/// Texts of the system's error codes for the library's messages, made from those
/// of base/SystemError.h.
///
/// These functions never fail: if the system has no text, a fallback names the code. Any thread
/// may call.
#ifndef PLATFORMABSTRACTION_FILES_ORSKAUTILITY_H
#define PLATFORMABSTRACTION_FILES_ORSKAUTILITY_H

#include <cstdint>

#include "../base/SystemError.h"
#include "../strings/orska_wstring.h"

namespace Orska::Support {

/// The system's text for an error code, in the user's language, or the fallback.
orska_wstring GetLastErrorText(std::uint32_t in_code);

/// As GetLastErrorText.
/// @param in_allowRetry  when the system has no text: true adds the text of that second error;
///                       false only its number
orska_wstring GetLastErrorTextImpl(std::uint32_t in_code, bool in_allowRetry);

/// The system's text for an NTSTATUS code, or "Unknown NTSTATUS " and the code in decimal.
orska_wstring GetNtStatusText(std::uint32_t in_code);

}  // namespace Orska::Support

#endif
