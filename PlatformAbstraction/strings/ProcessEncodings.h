/// The process-wide values of the string type: its two encodings and the platform's converter.
///
/// All are written during start-up, before other threads use strings, and then read without locks.
#ifndef PLATFORMABSTRACTION_PROCESSENCODINGS_H
#define PLATFORMABSTRACTION_PROCESSENCODINGS_H

#include "EncodingType.h"

namespace Orska::Support {

class IPlatformStringConverter;

/// The encoding of narrow text for which none is named; UTF-8 by default.
EncodingType GetAnsiEncoding() noexcept;
void SetAnsiEncoding(EncodingType in_encoding) noexcept;

/// The encoding for text that goes through NUL-terminated bytes, file formats and paths: the ANSI
/// encoding, or UTF-8 where that does not keep ASCII as it is (UTF-16, UTF-32, EBCDIC).
EncodingType GetByteTextEncoding();

/// The encoding that the driver manager uses; UTF-16LE by default.
EncodingType GetDriverManagerEncoding() noexcept;
void SetDriverManagerEncoding(EncodingType in_encoding) noexcept;

/// The converter of the started platform; null before the start and after the shut-down.
IPlatformStringConverter* GetPlatformStringConverter() noexcept;
/// @param in_converter  not owned; must live until it is replaced; null: convert without one
void SetPlatformStringConverter(IPlatformStringConverter* in_converter) noexcept;

/// Returns the ANSI encoding that the settings name, or ENC_NONE. The settings are a layer above
/// the strings, so the platform registers their reader here. Null, the default, means no setting.
using EncodingSetting = EncodingType (*)();
void SetAnsiEncodingSetting(EncodingSetting in_setting) noexcept;
/// Throws what the reader throws.
EncodingType ReadAnsiEncodingSetting();

}  // namespace Orska::Support

#endif
