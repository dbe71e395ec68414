#include "VeltraneDialog/FieldRules.h"

#include <algorithm>
#include <string>

#include "PlatformAbstraction/base/Ascii.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

namespace {

/// The driver managers' list of data sources and their settings.
constexpr std::string_view RESERVED_NAMES[] = {"ODBC Data Sources", "ODBC"};

/// True for characters that reading or saving a value trims: Unicode white space except no-break
/// spaces. All are below U+10000.
bool IsBlank(char16_t in_unit) {
    return in_unit == u' ' || in_unit == u'\t' || in_unit == 0x1680 ||
           (in_unit >= 0x2000 && in_unit <= 0x200A && in_unit != 0x2007) || in_unit == 0x2028 ||
           in_unit == 0x2029 || in_unit == 0x205F || in_unit == 0x3000;
}

bool IsControl(char16_t in_unit) { return in_unit < 0x20 || (in_unit >= 0x7F && in_unit < 0xA0); }

/// Returns why no section header and no line can hold the text; null when they can.
const char* WhyUnstorable(std::u16string_view in_text) {
    if (std::any_of(in_text.begin(), in_text.end(), IsControl)) {
        return VELTRANE_TEXT("Line ends, tabs and other control characters cannot be stored.");
    }
    if (!in_text.empty() && (IsBlank(in_text.front()) || IsBlank(in_text.back()))) {
        return VELTRANE_TEXT("Blanks at the beginning or the end cannot be stored.");
    }
    return nullptr;
}

const char* WhyNoName(std::string_view in_name, std::u16string_view in_units) {
    if (in_name.find_first_of(CHARACTERS_NOT_IN_NAMES) != std::string_view::npos) {
        return VELTRANE_TEXT("A name cannot contain [ ] { } ( ) , ; ? * = ! @ \\");
    }
    if (const char* const reason = WhyNameTooLong(in_name, in_units)) {
        return reason;
    }
    return IsReservedName(in_name) ? VELTRANE_TEXT("This name is reserved.") : nullptr;
}

}  // namespace

bool IsReservedName(std::string_view in_name) {
    return std::any_of(std::begin(RESERVED_NAMES), std::end(RESERVED_NAMES),
                       [&](std::string_view in_reserved) {
                           return Orska::Support::EqualsIgnoringCase(in_name, in_reserved);
                       });
}

const char* WhyRefused(const DialogField& in_field, std::string_view in_text) {
    if (in_text.empty()) {
        return in_field.m_isRequired ? VELTRANE_TEXT("Has to be filled.") : nullptr;
    }
    std::u16string text;
    const WipeAtEnd wipe(text);
    if (!DecodeUtf8(in_text, text)) {
        return VELTRANE_TEXT("Not UTF-8 text.");
    }
    if (const char* const reason = WhyUnstorable(text)) {
        return reason;
    }
    if (in_field.m_value == &DialogValues::m_dsn) {
        return WhyNoName(in_text, text);
    }
    return text.size() > MAX_VALUE_LENGTH
               ? VELTRANE_TEXT("Too long: a value has at most 259 characters.")
               : nullptr;
}

const char* WhyRefused(const DialogField& in_field, std::string_view in_text,
                       const DialogValues& in_loaded) {
    // A name is always checked, as it is wherever it is written.
    const bool isValue = in_field.m_value != &DialogValues::m_dsn && !in_text.empty();
    std::u16string text;
    const WipeAtEnd wipe(text);
    const bool isUnchanged =
        isValue && DecodeUtf8(in_text, text) && text == in_loaded.*in_field.m_value;
    return isUnchanged ? nullptr : WhyRefused(in_field, in_text);
}

bool IsOnlyMissing(const DialogField& in_field, std::string_view in_text) {
    return in_field.m_isRequired && in_text.empty();
}

}  // namespace Veltrane::ODBC
