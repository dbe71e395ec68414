/// The Unicode string of the whole system: UTF-16 code units held in one ICU UnicodeString, with a
/// NULL state (no text) that is distinct from the empty string.
///
/// A copy always copies the text. A string is used by one thread at a time unless the caller locks.
/// Narrow text for which no encoding is named is in the process ANSI encoding, which is UTF-8 until
/// platform start-up sets it. Wide text (`wchar_t`) is UTF-16LE on Windows and UTF-32LE on Linux.
/// Bytes that an encoding does not allow become U+FFFD, as in ICU's converters. Text of more than
/// INT32_MAX bytes is refused with ErrorException "ICUConvErr", and an encoding that is not one of
/// the 119 with "EncodingNotRecog". A result of more code units than that is refused with
/// "ICUConvErr" or std::bad_alloc. A string stays as it was if there is no memory to change it.
#ifndef PLATFORMABSTRACTION_ORSKA_WSTRING_H
#define PLATFORMABSTRACTION_ORSKA_WSTRING_H

#include <unicode/unistr.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "EncodingType.h"

namespace Orska::Support {

class IPlatformStringConverter;

class orska_wstring {
public:
    /// As a length: the text is NUL-terminated.
    static constexpr std::int64_t NUL_TERMINATED = -3;

    /// Sets the process ANSI encoding from the driver settings; called once, by platform start-up.
    /// @return the encoding chosen
    /// @throws StartupInitException when the setting names no legal encoding; ErrorException
    ///         "EncodingNotRecog" when there is no setting and ICU's default encoding is not known
    static EncodingType InitializeAnsiEncoding();

    /// Sets the encoding that the driver manager uses, unchecked; GetDriverManagerEncoding
    /// reads it.
    static void SetDriverManagerEncoding(EncodingType in_encoding);

    /// NULL.
    orska_wstring() noexcept = default;
    orska_wstring(std::nullptr_t) noexcept {}
    orska_wstring(const orska_wstring& in_other);
    orska_wstring(orska_wstring&& in_other) noexcept;
    /// Bytes in the ANSI encoding; an empty string becomes an empty, non-NULL one.
    orska_wstring(const std::string& in_text);
    /// As above, up to the first NUL byte; a null pointer becomes NULL, as in the
    /// next constructors.
    orska_wstring(const char* in_text);
    orska_wstring(const char* in_text, std::size_t in_lengthInBytes);
    /// Bytes in a named encoding, through the platform converter when there is one.
    orska_wstring(const char* in_text, std::size_t in_lengthInBytes, EncodingType in_encoding);
    orska_wstring(const std::wstring& in_text);
    orska_wstring(const wchar_t* in_text);
    /// @param in_length  code units (`wchar_t`)
    orska_wstring(const wchar_t* in_text, std::size_t in_length);
    /// UTF-16 text, read by the same rules as bytes in UTF-16LE.
    orska_wstring(const std::u16string& in_text);
    orska_wstring(const char16_t* in_text);
    /// @param in_length  code units
    orska_wstring(const char16_t* in_text, std::size_t in_length);
    /// `in_count` copies of one UTF-16 code unit.
    orska_wstring(char16_t in_unit, std::size_t in_count);
    ~orska_wstring();

    orska_wstring& operator=(const orska_wstring& in_other);
    orska_wstring& operator=(orska_wstring&& in_other) noexcept;
    /// As the constructor with the same argument.
    orska_wstring& operator=(const std::string& in_text) { return *this = orska_wstring(in_text); }
    orska_wstring& operator=(const std::wstring& in_text) { return *this = orska_wstring(in_text); }
    orska_wstring& operator=(const char* in_text) { return *this = orska_wstring(in_text); }
    orska_wstring& operator=(const wchar_t* in_text) { return *this = orska_wstring(in_text); }
    orska_wstring& operator=(std::nullptr_t) { return *this = orska_wstring(); }

    /// Sets the text from UTF-8 bytes. Never uses the platform converter.
    orska_wstring& SetFromUtf8(const std::string& in_text);
    /// @param in_lengthInBytes  bytes, or NUL_TERMINATED (a null pointer then counts as length 0)
    orska_wstring& SetFromUtf8(const char* in_text, std::int64_t in_lengthInBytes);

    /// Takes ownership of a text object made with ICU's allocator (`new icu::UnicodeString`), or of
    /// null, and releases the one held before.
    void SetImpl(icu::UnicodeString* in_text) noexcept;
    /// The text object, null when the string is NULL. Owned by the string.
    const icu::UnicodeString* GetImpl() const noexcept { return m_text; }
    icu::UnicodeString* GetImpl() noexcept { return m_text; }

    bool IsNull() const noexcept { return m_text == nullptr; }
    /// True also for NULL.
    bool IsEmpty() const noexcept { return GetLength() == 0; }
    /// UTF-16 code units; 0 for NULL.
    std::int32_t GetLength() const noexcept { return m_text == nullptr ? 0 : m_text->length(); }
    /// Bytes of the UTF-16 form: twice the code units.
    std::int64_t GetLengthInBytes() const noexcept { return std::int64_t{GetLength()} * 2; }
    /// The code units, not NUL-terminated; empty for NULL. Valid until the string changes.
    std::u16string_view GetView() const noexcept {
        return m_text == nullptr ? std::u16string_view()
                                 : std::u16string_view(m_text->getBuffer(),
                                                       static_cast<std::size_t>(m_text->length()));
    }

    /// Appending NULL changes nothing; appending to NULL copies.
    orska_wstring& operator+=(const orska_wstring& in_other);

    /// Binary code-unit comparison; NULL equals NULL only and sorts before every other string.
    friend bool operator==(const orska_wstring& in_left, const orska_wstring& in_right) noexcept;
    friend bool operator<(const orska_wstring& in_left, const orska_wstring& in_right) noexcept;

    /// Below, equal to or above 0. Without case sensitivity: ICU's default case folding. NULL
    /// compares as -1 against text.
    int Compare(const orska_wstring& in_other, bool in_isCaseSensitive = true) const;
    /// Compares at most the first `in_length` code units of each.
    int ComparePrefix(const orska_wstring& in_other, std::int32_t in_length,
                      bool in_isCaseSensitive = true) const;
    /// Compares the range [in_start, in_start + in_length) of this string, clipped to it, with all
    /// of the other.
    int CompareRange(std::int32_t in_start, std::int32_t in_length, const orska_wstring& in_other,
                     bool in_isCaseSensitive = true) const;

    /// Finders return a code-unit index, or -1 when there is none or an operand is NULL.
    std::int32_t IndexOf(const orska_wstring& in_other, std::int32_t in_start = 0) const;
    std::int32_t IndexOfCodePoint(char32_t in_codePoint, std::int32_t in_start = 0) const;
    std::int32_t LastIndexOf(const orska_wstring& in_other) const;
    /// The first index at or after `in_start` (clamped) whose code unit is one of `in_set`.
    std::int32_t IndexOfAny(const orska_wstring& in_set, std::int32_t in_start = 0) const;
    bool StartsWith(const orska_wstring& in_other) const;

    /// Replaces every occurrence, in place. A NULL or empty `in_old` changes nothing; a NULL
    /// `in_new` counts as empty.
    orska_wstring& FindAndReplace(const orska_wstring& in_old, const orska_wstring& in_new);
    /// Pads at the end with a code unit; true when the string was changed.
    bool PadTrailing(std::int32_t in_targetLength, char16_t in_pad = u' ');
    /// Cuts the string at the first occurrence of the code unit, if there is one.
    orska_wstring& TruncateAt(char16_t in_unit);
    /// The code units from `in_start` (clamped) on, at most `in_length`; NULL for NULL.
    orska_wstring Substring(std::int32_t in_start, std::int32_t in_length = INT32_MAX) const;
    /// Removes leading and trailing white space, in place.
    orska_wstring& Trim();
    /// Case conversion is in place and the same in every locale, so that keys compare everywhere.
    orska_wstring& ToUpper();
    orska_wstring& ToLower();
    /// The code point at a code-unit index (U+FFFF outside the string or when NULL).
    char32_t CharAt(std::int32_t in_index) const;

    /// The bytes in the process ANSI encoding, or in a named one. Empty for NULL.
    std::string GetAsAnsiString() const;
    std::string GetAsAnsiString(EncodingType in_encoding) const;
    /// UTF-8, never through the platform converter.
    std::string GetAsUtf8() const;
    /// The text as `wchar_t` (UTF-16LE on Windows, UTF-32LE on Linux). Empty for NULL.
    std::wstring GetAsPlatformWString() const;
    /// The text as UTF-16, which the installer and the editor use.
    std::u16string GetAsUtf16() const;

    /// Replaces matches of an ICU regular expression in place. NULL stays NULL; a NULL pattern or
    /// replacement counts as empty.
    /// @param in_flags  ICU pattern flags 2, 4, 8 and 32; negative: replace only the first match
    /// @throws ErrorException "ICURegexError" with the pattern as its parameter; the string is
    ///         then unchanged
    orska_wstring& RegexReplace(const orska_wstring& in_pattern,
                                const orska_wstring& in_replacement, std::int32_t in_flags = 0);

private:
    icu::UnicodeString* m_text = nullptr;
};

inline bool operator!=(const orska_wstring& in_left, const orska_wstring& in_right) noexcept {
    return !(in_left == in_right);
}

orska_wstring operator+(const orska_wstring& in_left, const orska_wstring& in_right);

}  // namespace Orska::Support

#endif
