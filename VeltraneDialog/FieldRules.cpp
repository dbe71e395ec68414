#include "VeltraneDialog/FieldRules.h"

#include <algorithm>
#include <string>

#include "VeltraneDialog/FieldLimits.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

namespace {

/// The characters that reading or saving a value takes off its ends: the white space of Unicode but
/// the no-break spaces. All are below U+10000.
bool IsBlank(char16_t in_unit) {
    return in_unit == u' ' || in_unit == u'\t' || in_unit == 0x1680 ||
           (in_unit >= 0x2000 && in_unit <= 0x200A && in_unit != 0x2007) || in_unit == 0x2028 ||
           in_unit == 0x2029 || in_unit == 0x205F || in_unit == 0x3000;
}

bool IsControl(char16_t in_unit) { return in_unit < 0x20 || (in_unit >= 0x7F && in_unit < 0xA0); }

/// What neither the header of a section nor the line of a value can carry.
const char* WhyUnstorable(std::u16string_view in_text) {
    if (std::any_of(in_text.begin(), in_text.end(), IsControl)) {
        return VELTRANE_TEXT("Line ends, tabs and other control characters cannot be stored.");
    }
    if (!in_text.empty() && (IsBlank(in_text.front()) || IsBlank(in_text.back()))) {
        return VELTRANE_TEXT("Blanks at the beginning or the end cannot be stored.");
    }
    return nullptr;
}

bool EqualsIgnoringCase(std::string_view in_left, std::string_view in_right) {
    const auto lower = [](char in_char) {
        return in_char >= 'A' && in_char <= 'Z' ? static_cast<char>(in_char + ('a' - 'A'))
                                                : in_char;
    };
    return std::equal(in_left.begin(), in_left.end(), in_right.begin(), in_right.end(),
                      [&](char in_a, char in_b) { return lower(in_a) == lower(in_b); });
}

const char* WhyNoName(std::string_view in_name, std::u16string_view in_units) {
    if (in_name.find_first_of(CHARACTERS_NOT_IN_NAMES) != std::string_view::npos) {
        return VELTRANE_TEXT("A name has none of [ ] { } ( ) , ; ? * = ! @ \\");
    }
    if (const char* const reason = WhyNameTooLong(in_name, in_units)) {
        return reason;
    }
    // The driver managers keep their list of data sources under this name.
    if (EqualsIgnoringCase(in_name, "ODBC Data Sources")) {
        return VELTRANE_TEXT("This name is reserved.");
    }
    return nullptr;
}

}  // namespace

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
    return WhyValueTooLong(in_field.m_key, in_text, text);
}

bool IsOnlyMissing(const DialogField& in_field, std::string_view in_text) {
    return in_field.m_isRequired && in_text.empty();
}

}  // namespace Veltrane::ODBC
