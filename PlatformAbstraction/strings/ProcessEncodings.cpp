#include "PlatformAbstraction/strings/ProcessEncodings.h"

#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

namespace {

// Process-wide: set by SetAnsiEncoding (platform start-up), read by every narrow conversion.
constinit EncodingType s_ansiEncoding = EncodingType::ENC_UTF8;

// Process-wide: set by SetDriverManagerEncoding (platform start-up), read by the driver
// manager's converters.
constinit EncodingType s_driverManagerEncoding = EncodingType::ENC_UTF16LE;

// Process-wide: set by SetPlatformStringConverter (platform start-up and shut-down), read by every
// conversion between bytes and strings.
constinit IPlatformStringConverter* s_platformStringConverter = nullptr;

// Process-wide: set by SetAnsiEncodingSetting (platform start-up), read by ReadAnsiEncodingSetting.
constinit EncodingSetting s_ansiEncodingSetting = nullptr;

}  // namespace

EncodingType GetAnsiEncoding() noexcept { return s_ansiEncoding; }

void SetAnsiEncoding(EncodingType in_encoding) noexcept { s_ansiEncoding = in_encoding; }

EncodingType GetByteTextEncoding() {
    // The table of ASCII supersets is stricter: it leaves out Shift-JIS, GBK and KOI8-R.
    constexpr char PROBE[] = "[Az09]=";
    const bool isAsciiKept = EncodingInfo::IsAsciiSuperset(s_ansiEncoding) ||
                             orska_wstring(u"[Az09]=").GetAsAnsiString(s_ansiEncoding) == PROBE;
    return isAsciiKept ? s_ansiEncoding : EncodingType::ENC_UTF8;
}

EncodingType GetDriverManagerEncoding() noexcept { return s_driverManagerEncoding; }

void SetDriverManagerEncoding(EncodingType in_encoding) noexcept {
    s_driverManagerEncoding = in_encoding;
}

IPlatformStringConverter* GetPlatformStringConverter() noexcept {
    return s_platformStringConverter;
}

void SetPlatformStringConverter(IPlatformStringConverter* in_converter) noexcept {
    s_platformStringConverter = in_converter;
}

void SetAnsiEncodingSetting(EncodingSetting in_setting) noexcept {
    s_ansiEncodingSetting = in_setting;
}

EncodingType ReadAnsiEncodingSetting() {
    return s_ansiEncodingSetting == nullptr ? EncodingType::ENC_NONE : s_ansiEncodingSetting();
}

}  // namespace Orska::Support
