/// The process-wide values beside the string type: its two encodings and the platform's converter.
///
/// All are written during start-up, before other threads use strings, and read without locks
/// afterwards.
#ifndef PLATFORMABSTRACTION_PROCESSENCODINGS_H
#define PLATFORMABSTRACTION_PROCESSENCODINGS_H

#include "EncodingType.h"

namespace Orska::Support {

class IPlatformStringConverter;

/// The encoding of narrow text for which none is named; UTF-8 from the start.
EncodingType GetAnsiEncoding() noexcept;
void SetAnsiEncoding(EncodingType in_encoding) noexcept;

/// The encoding for text that goes through NUL-terminated bytes, file formats and paths: the ANSI
/// encoding, or UTF-8 where that does not keep ASCII as it is (UTF-16, UTF-32, EBCDIC).
EncodingType GetByteTextEncoding();

/// The encoding towards the driver manager; UTF-16LE from the start.
EncodingType GetDriverManagerEncoding() noexcept;
void SetDriverManagerEncoding(EncodingType in_encoding) noexcept;

/// The converter of the started platform; null before the start and after the shut-down.
IPlatformStringConverter* GetPlatformStringConverter() noexcept;
/// @param in_converter  not owned; must live until it is replaced; null to convert without it again
void SetPlatformStringConverter(IPlatformStringConverter* in_converter) noexcept;

/// What the settings say about the ANSI encoding, ENC_NONE when nothing. The settings are above
/// the strings, so the platform hands their reader in here; null, as at the start: nothing is said.
using EncodingSetting = EncodingType (*)();
void SetAnsiEncodingSetting(EncodingSetting in_setting) noexcept;
/// Throws what the reader throws.
EncodingType ReadAnsiEncodingSetting();

}  // namespace Orska::Support

#endif
