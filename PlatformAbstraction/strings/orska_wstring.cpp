#include "PlatformAbstraction/strings/orska_wstring.h"

#include <unicode/regex.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/base/VerboseTrace.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/IPlatformStringConverter.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "PlatformAbstraction/strings/StringCodec.h"
#include "PlatformAbstraction/strings/TextPool.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\orska_wstring";
constexpr std::int32_t REGEX_FLAGS = 0x2E;  // case-insensitive, comments, multi-line, dot-all

[[noreturn]] void ThrowTooLong() {
    ORSKA_THROW((TraceSite{"Orska::Support::orska_wstring::CheckedLength", SOURCE, 0}),
                ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErr"));
}

/// ICU counts in 32 bits, signed. A longer text is refused whole.
std::int32_t CheckedLength(std::size_t in_count, std::size_t in_width) {
    if (in_count > static_cast<std::size_t>(INT32_MAX) / in_width) {
        ThrowTooLong();
    }
    return static_cast<std::int32_t>(in_count * in_width);
}

/// ICU marks a text as bogus when memory runs out.
void CheckWhole(const icu::UnicodeString& in_text) {
    if (in_text.isBogus()) {
        throw std::bad_alloc();
    }
}

/// Always copies the code units, never shares ICU's reference-counted buffer, so two threads can
/// use two strings.
icu::UnicodeString* CopyOf(const icu::UnicodeString* in_text) {
    if (in_text == nullptr) {
        return nullptr;
    }
    return AcquireText(in_text->getBuffer(), in_text->length());
}

/// Converts through the platform converter when there is one; empty text needs no conversion.
void SetFromBytes(orska_wstring& out_string, const char* in_bytes, std::int32_t in_length,
                  EncodingType in_encoding) {
    EncodingInfo::CheckEncodingType(in_encoding);
    IPlatformStringConverter* const converter = GetPlatformStringConverter();
    if (converter == nullptr || in_length == 0) {
        out_string.SetImpl(DecodeText(in_bytes, in_length, in_encoding));
    } else {
        converter->ConvertToWString(in_bytes, in_length, in_encoding, out_string);
    }
}

/// Null leaves the string as it is.
template <class Unit>
void SetFromUnits(orska_wstring& out_string, const Unit* in_text, std::size_t in_length,
                  EncodingType in_encoding) {
    if (in_text != nullptr) {
        SetFromBytes(out_string, reinterpret_cast<const char*>(in_text),
                     CheckedLength(in_length, sizeof(Unit)), in_encoding);
    }
}

std::string EncodeThrough(IPlatformStringConverter& in_converter, const orska_wstring& in_string,
                          EncodingType in_encoding) {
    const std::int64_t length = in_converter.GetLengthInBytes(in_string, in_encoding);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    const std::int64_t written =
        in_converter.ConvertFromWString(in_string, bytes.data(), length, in_encoding);
    bytes.resize(static_cast<std::size_t>(written));
    return bytes;
}

std::string Encode(const orska_wstring& in_string, EncodingType in_encoding) {
    if (in_string.IsEmpty()) {
        return {};
    }
    EncodingInfo::CheckEncodingType(in_encoding);
    IPlatformStringConverter* const converter = GetPlatformStringConverter();
    return converter == nullptr ? EncodeText(*in_string.GetImpl(), in_encoding)
                                : EncodeThrough(*converter, in_string, in_encoding);
}

/// `in_direct` makes the same units without a platform converter.
template <typename Unit>
std::basic_string<Unit> EncodeUnits(
    const orska_wstring& in_string, EncodingType in_encoding,
    std::basic_string<Unit> (*in_direct)(const icu::UnicodeString&)) {
    if (in_string.IsEmpty()) {
        return {};
    }
    IPlatformStringConverter* const converter = GetPlatformStringConverter();
    if (converter == nullptr) {
        return in_direct(*in_string.GetImpl());
    }
    const std::string bytes = EncodeThrough(*converter, in_string, in_encoding);
    std::basic_string<Unit> units(bytes.size() / sizeof(Unit), Unit{});
    std::memcpy(units.data(), bytes.data(), units.size() * sizeof(Unit));
    return units;
}

/// @param in_change  u_strToUpper or u_strToLower
void ChangeCase(orska_wstring& io_string, decltype(u_strToUpper)& in_change) {
    std::int32_t length = io_string.GetLength();
    UErrorCode status = U_BUFFER_OVERFLOW_ERROR;
    while (!io_string.IsNull() && status == U_BUFFER_OVERFLOW_ERROR) {
        TextOwner changed(AcquireText(length));
        status = U_ZERO_ERROR;
        // The root locale, which ICU does not have to load.
        length = in_change(GetUnits(*changed), changed->length(), io_string.GetView().data(),
                           io_string.GetLength(), "", &status);
        if (U_SUCCESS(status)) {
            changed->truncate(length);
            io_string.SetImpl(changed.release());
        } else if (status != U_BUFFER_OVERFLOW_ERROR) {
            ThrowTooLong();
        }
    }
}

void CheckForICUError(UErrorCode in_status, const orska_wstring& in_pattern) {
    if (U_SUCCESS(in_status)) {
        return;
    }
    constexpr TraceSite SITE = {"`anonymous-namespace'::CheckForICUError", SOURCE, 0};
    if (IsTraceOn(1)) {
        TraceLine(1, SITE, (std::string("ICURegexError = ") + u_errorName(in_status)).c_str());
    }
    const std::vector<orska_wstring> msgParams = {in_pattern};
    ORSKA_THROW(SITE,
                ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICURegexError", msgParams));
}

}  // namespace

EncodingType orska_wstring::InitializeAnsiEncoding() {
    Platform::TraceVerbose("orska_wstring::InitializeAnsiEncoding()");
    EncodingType encoding = ReadAnsiEncodingSetting();
    if (encoding == EncodingType::ENC_NONE) {
        encoding = ICUUtils::GetEncodingEnum(ucnv_getDefaultName());
    }
    SetAnsiEncoding(encoding);
    return encoding;
}

void orska_wstring::SetDriverManagerEncoding(EncodingType in_encoding) {
    Platform::TraceVerbose("orska_wstring::SetDriverManagerEncoding()");
    Support::SetDriverManagerEncoding(in_encoding);
}

orska_wstring::orska_wstring(const orska_wstring& in_other) : m_text(CopyOf(in_other.m_text)) {}

orska_wstring::orska_wstring(orska_wstring&& in_other) noexcept
    : m_text(std::exchange(in_other.m_text, nullptr)) {}

// The constructors below delegate, so that the destructor runs when a conversion throws.
orska_wstring::orska_wstring(const std::string& in_text)
    : orska_wstring(in_text.data(), in_text.size()) {}

orska_wstring::orska_wstring(const char* in_text)
    : orska_wstring(in_text, in_text == nullptr ? 0 : std::strlen(in_text)) {}

orska_wstring::orska_wstring(const char* in_text, std::size_t in_lengthInBytes)
    : orska_wstring(in_text, in_lengthInBytes, GetAnsiEncoding()) {}

orska_wstring::orska_wstring(const char* in_text, std::size_t in_lengthInBytes,
                             EncodingType in_encoding)
    : orska_wstring() {
    SetFromUnits(*this, in_text, in_lengthInBytes, in_encoding);
}

orska_wstring::orska_wstring(const std::wstring& in_text)
    : orska_wstring(in_text.data(), in_text.size()) {}

orska_wstring::orska_wstring(const wchar_t* in_text)
    : orska_wstring(in_text, in_text == nullptr ? 0 : std::char_traits<wchar_t>::length(in_text)) {}

orska_wstring::orska_wstring(const wchar_t* in_text, std::size_t in_length) : orska_wstring() {
    SetFromUnits(*this, in_text, in_length, WIDE_ENCODING);
}

orska_wstring::orska_wstring(const std::u16string& in_text)
    : orska_wstring(in_text.data(), in_text.size()) {}

orska_wstring::orska_wstring(const char16_t* in_text)
    : orska_wstring(in_text, in_text == nullptr ? 0 : std::char_traits<char16_t>::length(in_text)) {
}

orska_wstring::orska_wstring(const char16_t* in_text, std::size_t in_length) : orska_wstring() {
    SetFromUnits(*this, in_text, in_length, EncodingType::ENC_UTF16LE);
}

orska_wstring::orska_wstring(char16_t in_unit, std::size_t in_count)
    : m_text(AcquireText(CheckedLength(in_count, 1))) {
    std::fill_n(GetUnits(*m_text), in_count, in_unit);
}

orska_wstring::~orska_wstring() { ReleaseText(m_text); }

orska_wstring& orska_wstring::operator=(const orska_wstring& in_other) {
    if (m_text == nullptr || in_other.m_text == nullptr) {
        SetImpl(CopyOf(in_other.m_text));
    } else if (this != &in_other) {
        const TextOwner copy(CopyOf(in_other.m_text));
        m_text->swap(*copy);
    }
    return *this;
}

orska_wstring& orska_wstring::operator=(orska_wstring&& in_other) noexcept {
    if (this != &in_other) {
        SetImpl(std::exchange(in_other.m_text, nullptr));
    }
    return *this;
}

orska_wstring& orska_wstring::SetFromUtf8(const std::string& in_text) {
    SetImpl(DecodeText(in_text.data(), CheckedLength(in_text.size(), 1), EncodingType::ENC_UTF8));
    return *this;
}

orska_wstring& orska_wstring::SetFromUtf8(const char* in_text, std::int64_t in_lengthInBytes) {
    // Any other negative length is too large when unsigned, and is refused.
    auto length = static_cast<std::size_t>(in_lengthInBytes);
    if (in_lengthInBytes == NUL_TERMINATED && in_text != nullptr) {
        length = std::strlen(in_text);
    } else if (in_text == nullptr) {
        length = 0;
    }
    SetImpl(DecodeText(in_text, CheckedLength(length, 1), EncodingType::ENC_UTF8));
    return *this;
}

void orska_wstring::SetImpl(icu::UnicodeString* in_text) noexcept {
    if (in_text != m_text) {
        ReleaseText(std::exchange(m_text, in_text));
    }
}

orska_wstring& orska_wstring::operator+=(const orska_wstring& in_other) {
    if (in_other.m_text == nullptr) {
        return *this;
    }
    if (m_text == nullptr) {
        return *this = in_other;
    }
    const std::int32_t length = CheckedLength(GetView().size() + in_other.GetView().size(), 1);
    if (length <= m_text->getCapacity()) {
        CheckWhole(m_text->append(*in_other.m_text));
        return *this;
    }
    // ICU drops a text that it cannot lengthen, so this makes a new one. It has spare room because
    // many texts grow piece by piece.
    const TextOwner longer(
        new icu::UnicodeString(length + std::min(length / 4 + 128, INT32_MAX - length), 0, 0));
    if (longer == nullptr) {
        throw std::bad_alloc();
    }
    CheckWhole(*longer);
    longer->append(*m_text).append(*in_other.m_text);
    m_text->swap(*longer);
    return *this;
}

orska_wstring operator+(const orska_wstring& in_left, const orska_wstring& in_right) {
    orska_wstring sum = in_left;
    sum += in_right;
    return sum;
}

bool operator==(const orska_wstring& in_left, const orska_wstring& in_right) noexcept {
    return in_left.IsNull() == in_right.IsNull() && in_left.GetView() == in_right.GetView();
}

bool operator<(const orska_wstring& in_left, const orska_wstring& in_right) noexcept {
    if (in_left.IsNull() || in_right.IsNull()) {
        return in_left.IsNull() && !in_right.IsNull();
    }
    return in_left.GetView() < in_right.GetView();
}

int orska_wstring::Compare(const orska_wstring& in_other, bool in_isCaseSensitive) const {
    return CompareRange(0, GetLength(), in_other, in_isCaseSensitive);
}

int orska_wstring::ComparePrefix(const orska_wstring& in_other, std::int32_t in_length,
                                 bool in_isCaseSensitive) const {
    return CompareRange(0, in_length, in_other.Substring(0, in_length), in_isCaseSensitive);
}

int orska_wstring::CompareRange(std::int32_t in_start, std::int32_t in_length,
                                const orska_wstring& in_other, bool in_isCaseSensitive) const {
    if (IsNull() || in_other.IsNull()) {
        return static_cast<int>(in_other.IsNull()) - static_cast<int>(IsNull());
    }
    return in_isCaseSensitive
               ? m_text->compare(in_start, in_length, *in_other.m_text)
               : m_text->caseCompare(in_start, in_length, *in_other.m_text, U_FOLD_CASE_DEFAULT);
}

std::int32_t orska_wstring::IndexOf(const orska_wstring& in_other, std::int32_t in_start) const {
    return IsNull() || in_other.IsNull() ? -1 : m_text->indexOf(*in_other.m_text, in_start);
}

std::int32_t orska_wstring::IndexOfCodePoint(char32_t in_codePoint, std::int32_t in_start) const {
    return IsNull() ? -1 : m_text->indexOf(static_cast<UChar32>(in_codePoint), in_start);
}

std::int32_t orska_wstring::LastIndexOf(const orska_wstring& in_other) const {
    return IsNull() || in_other.IsNull() ? -1 : m_text->lastIndexOf(*in_other.m_text);
}

std::int32_t orska_wstring::IndexOfAny(const orska_wstring& in_set, std::int32_t in_start) const {
    const std::size_t start = static_cast<std::size_t>(std::clamp(in_start, 0, GetLength()));
    const std::size_t found = GetView().find_first_of(in_set.GetView(), start);
    return found == std::u16string_view::npos ? -1 : static_cast<std::int32_t>(found);
}

bool orska_wstring::StartsWith(const orska_wstring& in_other) const {
    return !IsNull() && !in_other.IsNull() && m_text->startsWith(*in_other.m_text);
}

orska_wstring& orska_wstring::FindAndReplace(const orska_wstring& in_old,
                                             const orska_wstring& in_new) {
    const std::size_t oldLength = in_old.GetView().size();
    std::vector<std::size_t> places;
    for (std::int32_t at = IndexOf(in_old); oldLength != 0 && at >= 0;
         at = IndexOf(in_old, at + in_old.GetLength())) {
        places.push_back(static_cast<std::size_t>(at));
    }
    if (places.empty()) {
        return *this;
    }
    const std::u16string_view text = GetView();
    const std::u16string_view replacement = in_new.GetView();
    const std::size_t kept = text.size() - places.size() * oldLength;
    icu::UnicodeString* const replaced =
        AcquireText(CheckedLength(kept + places.size() * replacement.size(), 1));
    char16_t* to = GetUnits(*replaced);
    std::size_t from = 0;
    for (const std::size_t place : places) {
        to = std::copy(text.begin() + from, text.begin() + place, to);
        to = std::copy(replacement.begin(), replacement.end(), to);
        from = place + oldLength;
    }
    std::copy(text.begin() + from, text.end(), to);
    SetImpl(replaced);
    return *this;
}

bool orska_wstring::PadTrailing(std::int32_t in_targetLength, char16_t in_pad) {
    if (IsNull() || in_targetLength <= GetLength()) {
        return false;
    }
    icu::UnicodeString* const padded = AcquireText(in_targetLength);
    char16_t* const end = std::copy_n(GetView().data(), GetLength(), GetUnits(*padded));
    std::fill(end, GetUnits(*padded) + in_targetLength, in_pad);
    SetImpl(padded);
    return true;
}

orska_wstring& orska_wstring::TruncateAt(char16_t in_unit) {
    const std::size_t found = GetView().find(in_unit);
    if (found != std::u16string_view::npos) {
        m_text->truncate(static_cast<std::int32_t>(found));
    }
    return *this;
}

orska_wstring orska_wstring::Substring(std::int32_t in_start, std::int32_t in_length) const {
    orska_wstring part;
    if (!IsNull()) {
        const std::int32_t start = std::clamp(in_start, 0, GetLength());
        const std::int32_t length = std::clamp(in_length, 0, GetLength() - start);
        part.SetImpl(AcquireText(m_text->getBuffer() + start, length));
    }
    return part;
}

orska_wstring& orska_wstring::Trim() {
    if (!IsNull()) {
        m_text->trim();
    }
    return *this;
}

orska_wstring& orska_wstring::ToUpper() {
    ChangeCase(*this, u_strToUpper);
    return *this;
}

orska_wstring& orska_wstring::ToLower() {
    ChangeCase(*this, u_strToLower);
    return *this;
}

char32_t orska_wstring::CharAt(std::int32_t in_index) const {
    return IsNull() ? 0xFFFF : static_cast<char32_t>(m_text->char32At(in_index));
}

std::string orska_wstring::GetAsAnsiString() const { return Encode(*this, GetAnsiEncoding()); }

std::string orska_wstring::GetAsAnsiString(EncodingType in_encoding) const {
    return Encode(*this, in_encoding);
}

std::string orska_wstring::GetAsUtf8() const {
    return IsEmpty() ? std::string() : EncodeText(*m_text, EncodingType::ENC_UTF8);
}

std::wstring orska_wstring::GetAsPlatformWString() const {
    return EncodeUnits(*this, WIDE_ENCODING, EncodeWide);
}

std::u16string orska_wstring::GetAsUtf16() const {
    return EncodeUnits(*this, EncodingType::ENC_UTF16LE, EncodeUtf16);
}

orska_wstring& orska_wstring::RegexReplace(const orska_wstring& in_pattern,
                                           const orska_wstring& in_replacement,
                                           std::int32_t in_flags) {
    const icu::UnicodeString none;
    const icu::UnicodeString& pattern = in_pattern.IsNull() ? none : *in_pattern.m_text;
    const icu::UnicodeString& replacement = in_replacement.IsNull() ? none : *in_replacement.m_text;
    UErrorCode status = U_ZERO_ERROR;
    icu::RegexMatcher matcher(pattern, static_cast<std::uint32_t>(in_flags & REGEX_FLAGS), status);
    CheckForICUError(status, in_pattern);
    if (IsNull()) {
        return *this;
    }
    matcher.reset(*m_text);
    CheckForICUError(status, in_pattern);
    // The top bit of the flags is not a pattern flag: it asks for the first match only.
    icu::UnicodeString replaced = in_flags < 0 ? matcher.replaceFirst(replacement, status)
                                               : matcher.replaceAll(replacement, status);
    CheckForICUError(status, in_pattern);
    CheckWhole(replaced);
    const TextOwner before(AcquireText(0));
    m_text->swap(*before);
    m_text->swap(replaced);
    return *this;
}

}  // namespace Orska::Support
