#include "PlatformAbstraction/strings/ProcessEncodings.h"

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

namespace {

// Process-wide: set by SetAnsiEncoding (platform start-up), read by every narrow conversion.
constinit EncodingType s_ansiEncoding = EncodingType::ENC_UTF8;

// Process-wide: set by orska_wstring::SetDriverManagerEncoding (platform start-up), read by the
// converters towards the driver manager.
constinit EncodingType s_driverManagerEncoding = EncodingType::ENC_UTF16LE;

// Process-wide: set by SetPlatformStringConverter (platform start-up and shut-down), read by every
// conversion between bytes and strings.
constinit IPlatformStringConverter* s_platformStringConverter = nullptr;

// Process-wide: set by SetVerboseTraceSink (platform), read by SetDriverManagerEncoding.
constinit VerboseTraceSink s_verboseTraceSink = nullptr;

}  // namespace

EncodingType GetAnsiEncoding() noexcept { return s_ansiEncoding; }

void SetAnsiEncoding(EncodingType in_encoding) noexcept { s_ansiEncoding = in_encoding; }

EncodingType GetDriverManagerEncoding() noexcept { return s_driverManagerEncoding; }

IPlatformStringConverter* GetPlatformStringConverter() noexcept {
    return s_platformStringConverter;
}

void SetPlatformStringConverter(IPlatformStringConverter* in_converter) noexcept {
    s_platformStringConverter = in_converter;
}

void SetVerboseTraceSink(VerboseTraceSink in_sink) noexcept { s_verboseTraceSink = in_sink; }

void orska_wstring::SetDriverManagerEncoding(EncodingType in_encoding) {
    if (s_verboseTraceSink != nullptr) {
        s_verboseTraceSink("orska_wstring::SetDriverManagerEncoding()");
    }
    s_driverManagerEncoding = in_encoding;
}

}  // namespace Orska::Support
