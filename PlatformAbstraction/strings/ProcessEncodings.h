/// The process-wide values beside the string type: its two encodings and the platform's converter.
///
/// All are written during start-up, before other threads use strings, and read without locks
/// afterwards.
#ifndef PLATFORMABSTRACTION_PROCESSENCODINGS_H
#define PLATFORMABSTRACTION_PROCESSENCODINGS_H

#include "PlatformAbstraction/strings/EncodingType.h"

namespace Orska::Support {

class IPlatformStringConverter;

/// The encoding of narrow text for which none is named; UTF-8 from the start.
EncodingType GetAnsiEncoding() noexcept;
void SetAnsiEncoding(EncodingType in_encoding) noexcept;

/// The encoding towards the driver manager; UTF-16LE from the start. Set by
/// orska_wstring::SetDriverManagerEncoding.
EncodingType GetDriverManagerEncoding() noexcept;

/// The converter of the started platform; null before the start and after the shut-down.
IPlatformStringConverter* GetPlatformStringConverter() noexcept;
/// @param in_converter  not owned; must live until it is replaced; null to convert without it again
void SetPlatformStringConverter(IPlatformStringConverter* in_converter) noexcept;

/// Where the string layer writes its verbose trace lines, one call a line without a line end; null,
/// as at the start, writes none. The platform stands above the strings, so it hands itself in here.
using VerboseTraceSink = void (*)(const char* in_text);
void SetVerboseTraceSink(VerboseTraceSink in_sink) noexcept;

}  // namespace Orska::Support

#endif
