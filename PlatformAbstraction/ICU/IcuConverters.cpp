#include "PlatformAbstraction/ICU/IcuConverters.h"

#include <cstring>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {

namespace {

void SetSubstitution(UConverter& io_converter, const void* in_context) noexcept;

// The context of SubstituteAsIcu in a converter that has chosen a substitute.
constexpr char HAS_CHOSEN = 0;

// Substitutes as ICU does. A code point that displays ignore can choose the short substitute
// without writing it, and ICU keeps the choice until it writes the next one.
void U_CALLCONV SubstituteAsIcu(const void*, UConverterFromUnicodeArgs* io_arguments,
                                const UChar* in_units, int32_t in_length, UChar32 in_codePoint,
                                UConverterCallbackReason in_reason, UErrorCode* io_status) {
    const char* const before = io_arguments->target;
    UCNV_FROM_U_CALLBACK_SUBSTITUTE(nullptr, io_arguments, in_units, in_length, in_codePoint,
                                    in_reason, io_status);
    if (in_reason == UCNV_UNASSIGNED && U_SUCCESS(*io_status) && io_arguments->target == before) {
        SetSubstitution(*io_arguments->converter, &HAS_CHOSEN);
    }
}

void SetSubstitution(UConverter& io_converter, const void* in_context) noexcept {
    UConverterFromUCallback before = nullptr;
    const void* beforeContext = nullptr;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setFromUCallBack(&io_converter, SubstituteAsIcu, in_context, &before, &beforeContext,
                          &status);
}

}  // namespace

icu::LocalUConverterPointer OpenConverter(EncodingType in_encoding, const TraceSite& in_site) {
    const char* const name = EncodingInfo::GetName(in_encoding);
    UErrorCode status = U_ZERO_ERROR;
    icu::LocalUConverterPointer converter(ucnv_open(name, &status));
    // Some names are aliases of several converters; ICU then opens the first.
    const bool isOpen = status == U_ZERO_ERROR || status == U_AMBIGUOUS_ALIAS_WARNING;
    if (!isOpen || converter.isNull()) {
        // The trace line of this failure names the key only.
        TraceThrow(in_site,
                   "Throwing: ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, "
                   "L\"ICUCreateUConverterErr\")");
        throw ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUCreateUConverterErr",
                             {orska_wstring().SetFromUtf8(name)});
    }
    SetSubstitution(*converter, nullptr);
    return converter;
}

void ForgetSubstitute(UConverter& io_converter) noexcept {
    UConverterFromUCallback callback = nullptr;
    const void* context = nullptr;
    ucnv_getFromUCallBack(&io_converter, &callback, &context);
    if (context != &HAS_CHOSEN) {
        return;
    }
    // A code point that gets a substitute uses the choice up.
    constexpr UChar LONE_SURROGATE[] = {0xD800};
    const UChar* source = LONE_SURROGATE;
    char scratch[ICU_MOST_END_BYTES];
    char* position = scratch;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(&io_converter, &position, scratch + sizeof(scratch), &source,
                     LONE_SURROGATE + 1, nullptr, true, &status);
    SetSubstitution(io_converter, nullptr);
}

void ResetConverter(UConverter& io_converter) noexcept {
    ForgetSubstitute(io_converter);
    ucnv_reset(&io_converter);
}

bool IsStateful(const UConverter& in_converter) noexcept {
    const UConverterType type = ucnv_getType(&in_converter);
    return type == UCNV_ISO_2022 || type == UCNV_HZ;
}

namespace {

// ICU flushes HZ without the sequence that returns to ASCII. One more two-byte character shows
// whether the text is in the two-byte state; it is then dropped.
std::uint8_t EndHzText(UConverter& io_converter, char* out_bytes, UErrorCode& io_status) {
    constexpr UChar CHINESE[] = {u'\u4E2D'};
    constexpr std::ptrdiff_t SIZE_WITH_SHIFT = 4;  // bytes; what ICU kept comes before them
    const UChar* source = CHINESE;
    char* position = out_bytes;
    ucnv_fromUnicode(&io_converter, &position, out_bytes + ICU_MOST_END_BYTES, &source, CHINESE + 1,
                     nullptr, true, &io_status);
    if (position - out_bytes >= SIZE_WITH_SHIFT) {
        return static_cast<std::uint8_t>(position - out_bytes - SIZE_WITH_SHIFT);
    }
    std::memcpy(out_bytes, "~}", 2);
    return 2;
}

}  // namespace

std::uint8_t EndText(UConverter& io_converter, char* out_bytes, UErrorCode& io_status) {
    if (ucnv_getType(&io_converter) == UCNV_HZ) {
        return EndHzText(io_converter, out_bytes, io_status);
    }
    const UChar* source = u"";
    char* position = out_bytes;
    ucnv_fromUnicode(&io_converter, &position, out_bytes + ICU_MOST_END_BYTES, &source, source,
                     nullptr, true, &io_status);
    return static_cast<std::uint8_t>(position - out_bytes);
}

}  // namespace Orska::Support
