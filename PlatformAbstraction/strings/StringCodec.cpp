#include "PlatformAbstraction/strings/StringCodec.h"

#include <algorithm>
#include <cstring>
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

// Shortcuts for short, plain text: starting a general conversion takes longer than converting it.

constexpr bool IsSingleByte(EncodingType in_encoding) {
    return in_encoding == EncodingType::ENC_LATIN1 || in_encoding == EncodingType::ENC_CP1252 ||
           in_encoding == EncodingType::ENC_US_ASCII || in_encoding == EncodingType::ENC_IBM5348;
}

/// True for the direct encodings in which ASCII text has the same bytes.
constexpr bool HasAscii(EncodingType in_encoding) {
    return in_encoding == EncodingType::ENC_UTF8 || IsSingleByte(in_encoding);
}

bool IsAscii(std::string_view in_bytes) {
    std::uint64_t all = 0;
    std::uint64_t word = 0;
    if (in_bytes.size() < sizeof word) {
        for (const char byte : in_bytes) {
            all |= static_cast<unsigned char>(byte);
        }
        return all < 0x80;
    }
    ForBlocks<sizeof word>(in_bytes.size(), [&](std::size_t in_at) {
        std::memcpy(&word, in_bytes.data() + in_at, sizeof word);
        all |= word;
    });
    return (all & 0x8080808080808080) == 0;
}

/// Decodes a text of at most MOST_SHORT_BYTES; null when only the general conversion can do it.
icu::UnicodeString* DecodeShort(std::string_view in_bytes, EncodingType in_encoding) {
    const bool isCp1252 = in_encoding == EncodingType::ENC_CP1252;
    if (isCp1252 || in_encoding == EncodingType::ENC_LATIN1 ||
        (HasAscii(in_encoding) && IsAscii(in_bytes))) {
        const auto count = static_cast<std::int32_t>(in_bytes.size());
        icu::UnicodeString* const text = AcquireText(count);
        if (!WidenText(in_bytes, GetUnits(*text)) && isCp1252) {
            DecodeDirectly(in_bytes, in_encoding, GetUtf16Decoder(in_encoding), GetUnits(*text),
                           count);
        }
        return text;
    }
    char16_t units[SHORT_UNITS_ROOM];
    const auto count = static_cast<std::int32_t>(GetShortDecoder(in_encoding)(in_bytes, units));
    return count < 0 ? nullptr : AcquireText(units, count);
}

std::u16string_view GetView(const icu::UnicodeString& in_text) {
    return {in_text.getBuffer(), static_cast<std::size_t>(in_text.length())};
}

/// Encodes to whole units; false, with no units, for an encoding that only ICU has.
template <class Unit>
bool EncodeUnits(std::u16string_view in_text, EncodingType in_encoding,
                 std::basic_string<Unit>& out_units) {
    // A code point has at most as many bytes in a single-byte set as it has UTF-16 units.
    const std::int64_t most =
        IsSingleByte(in_encoding)
            ? static_cast<std::int64_t>(in_text.size())
            : std::max<std::int64_t>(CountEncodedBytes(in_text, in_encoding), 0);
    out_units.resize(static_cast<std::size_t>(most) / sizeof(Unit));
    EncodedText encoded;
    const bool isDone = EncodeDirectly(in_text, reinterpret_cast<char*>(out_units.data()), most,
                                       in_encoding, encoded, true);
    out_units.resize(static_cast<std::size_t>(encoded.m_bytes) / sizeof(Unit));
    return isDone;
}

}  // namespace

icu::UnicodeString* DecodeText(const char* in_bytes, std::int32_t in_lengthInBytes,
                               EncodingType in_encoding) {
    const std::string_view bytes(in_bytes, static_cast<std::size_t>(in_lengthInBytes));
    if (bytes.size() <= MOST_SHORT_BYTES) {
        if (icu::UnicodeString* const text = DecodeShort(bytes, in_encoding)) {
            return text;
        }
    }
    const auto most = static_cast<std::int32_t>(GetMostUtf16Units(in_encoding, bytes.size()));
    TextOwner text(AcquireText(most));
    if (const TranscoderFunction decoder = GetUtf16Decoder(in_encoding)) {
        text->truncate(DecodeDirectly(bytes, in_encoding, decoder, GetUnits(*text), most));
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
    constexpr std::size_t MOST_PLAIN = 256;  // units; longer text is read only once
    const std::u16string_view text = GetView(in_text);
    std::string bytes;
    const char16_t last = in_encoding == EncodingType::ENC_LATIN1 ? 0xFF : 0x7F;
    if (HasAscii(in_encoding) && text.size() <= MOST_PLAIN &&
        (text.empty() || text.front() <= last)) {
        bytes.resize(text.size());
        if (NarrowText(text, last, bytes.data())) {
            return bytes;
        }
    }
    char buffer[4 * MOST_SHORT_UNITS];
    const std::int64_t count =
        IsSingleByte(in_encoding)
            ? -1
            : EncodeShortText(text, GetShortEncoder(in_encoding), buffer, sizeof(buffer));
    if (count >= 0) {
        bytes.assign(buffer, static_cast<std::size_t>(count));
    } else if (!EncodeUnits(text, in_encoding, bytes)) {
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
