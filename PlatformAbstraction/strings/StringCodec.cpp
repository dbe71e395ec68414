#include "PlatformAbstraction/strings/StringCodec.h"

#include <string_view>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/IcuConverters.h"
#include "PlatformAbstraction/ICU/ShortText.h"
#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "PlatformAbstraction/ICU/UnicodeForms.h"
#include "PlatformAbstraction/strings/TextPool.h"

namespace Orska::Support {

namespace {

constexpr TraceSite DECODE = {"Orska::Support::DecodeText", "PlatformAbstraction\\StringCodec", 0};
constexpr TraceSite ENCODE = {"Orska::Support::EncodeText", "PlatformAbstraction\\StringCodec", 0};

void CheckStatus(UErrorCode in_status, const TraceSite& in_site) {
    if (U_FAILURE(in_status)) {
        ORSKA_THROW(in_site, ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErr"));
    }
}

std::u16string_view GetView(const icu::UnicodeString& in_text) {
    return {in_text.getBuffer(), static_cast<std::size_t>(in_text.length())};
}

/// @return whole units of the encoding; no text for an encoding that only ICU has
template <class Unit>
bool EncodeUnits(std::u16string_view in_text, EncodingType in_encoding,
                 std::basic_string<Unit>& out_units) {
    const std::int64_t counted = CountEncodedBytes(in_text, in_encoding);
    // No code point gives more bytes of a single-byte set than it has units.
    const std::size_t most = counted < 0 ? in_text.size() : static_cast<std::size_t>(counted);
    out_units.resize(most / sizeof(Unit));
    EncodedText encoded;
    const bool isDone = EncodeDirectly(in_text, reinterpret_cast<char*>(out_units.data()),
                                       static_cast<std::int64_t>(most), in_encoding, encoded, true);
    out_units.resize(static_cast<std::size_t>(encoded.m_bytes) / sizeof(Unit));
    return isDone;
}

}  // namespace

icu::UnicodeString* DecodeText(const char* in_bytes, std::int32_t in_lengthInBytes,
                               EncodingType in_encoding) {
    const std::string_view bytes(in_bytes, static_cast<std::size_t>(in_lengthInBytes));
    char16_t units[SHORT_UNITS_ROOM];
    if (bytes.size() <= MOST_SHORT_BYTES) {
        const std::int64_t count = GetShortDecoder(in_encoding)(bytes, units);
        if (count >= 0) {
            return AcquireText(units, static_cast<std::int32_t>(count));
        }
    }
    const auto most = static_cast<std::int32_t>(GetMostUtf16Units(in_encoding, bytes.size()));
    TextOwner text(AcquireText(most));
    if (GetUtf16Decoder(in_encoding) != nullptr) {
        text->truncate(DecodeDirectly(bytes, in_encoding, GetUnits(*text), most));
    } else {
        text->remove();
        const icu::LocalUConverterPointer converter = OpenConverter(in_encoding, DECODE);
        UErrorCode status = U_ZERO_ERROR;
        DecodeThroughIcu(*converter, bytes, *text, status);
        CheckStatus(status, DECODE);
    }
    return text.release();
}

std::string EncodeText(const icu::UnicodeString& in_text, EncodingType in_encoding) {
    const std::u16string_view text = GetView(in_text);
    char buffer[4 * MOST_SHORT_UNITS];
    const std::int64_t count =
        EncodeShortText(text, GetShortEncoder(in_encoding), buffer, sizeof(buffer));
    if (count >= 0) {
        return {buffer, static_cast<std::size_t>(count)};
    }
    std::string bytes;
    if (!EncodeUnits(text, in_encoding, bytes)) {
        const icu::LocalUConverterPointer converter = OpenConverter(in_encoding, ENCODE);
        UErrorCode status = U_ZERO_ERROR;
        const std::int64_t length = MeasureThroughIcu(*converter, text, status);
        bytes.resize(static_cast<std::size_t>(length));
        int attempts = 0;
        EncodeThroughIcu(*converter, text, bytes.data(), length, attempts, status);
        CheckStatus(status, ENCODE);
    }
    return bytes;
}

std::u16string EncodeUtf16(const icu::UnicodeString& in_text) {
    std::u16string units;
    EncodeUnits(GetView(in_text), EncodingType::ENC_UTF16LE, units);
    return units;
}

std::wstring EncodeWide(const icu::UnicodeString& in_text) {
    std::wstring units;
    EncodeUnits(GetView(in_text), WIDE_ENCODING, units);
    return units;
}

}  // namespace Orska::Support
