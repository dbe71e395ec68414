#include "PlatformAbstraction/ICU/IcuConverters.h"

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/EncodingInfo.h"

namespace Orska::Support {

icu::LocalUConverterPointer OpenConverter(EncodingType in_encoding, const TraceSite& in_site) {
    const char* const name = EncodingInfo::GetName(in_encoding);
    UErrorCode status = U_ZERO_ERROR;
    icu::LocalUConverterPointer converter(ucnv_open(name, &status));
    // Some of the names are aliases of more than one converter; ICU then takes the first.
    const bool isOpen = status == U_ZERO_ERROR || status == U_AMBIGUOUS_ALIAS_WARNING;
    if (!isOpen || converter.isNull()) {
        // The trace line of this failure names the key only.
        TraceThrow(in_site,
                   "Throwing: ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, "
                   "L\"ICUCreateUConverterErr\")");
        throw ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUCreateUConverterErr",
                             {orska_wstring().SetFromUtf8(name)});
    }
    return converter;
}

bool IsStateful(const UConverter& in_converter) noexcept {
    const UConverterType type = ucnv_getType(&in_converter);
    return type == UCNV_ISO_2022 || type == UCNV_HZ;
}

std::uint8_t EndText(UConverter& io_converter, char* out_bytes, UErrorCode& io_status) {
    // ICU flushes HZ without the sequence that leads back to ASCII, but writes it in front of an
    // ASCII character, whose byte is then dropped.
    const std::ptrdiff_t extra = ucnv_getType(&io_converter) == UCNV_HZ ? 1 : 0;
    constexpr UChar ASCII[] = {u'a'};
    const UChar* source = ASCII;
    char* position = out_bytes;
    ucnv_fromUnicode(&io_converter, &position, out_bytes + ICU_MOST_END_BYTES, &source,
                     ASCII + extra, nullptr, true, &io_status);
    return static_cast<std::uint8_t>(position - out_bytes - extra);
}

}  // namespace Orska::Support
