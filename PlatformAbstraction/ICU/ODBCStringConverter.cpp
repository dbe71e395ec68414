#include "PlatformAbstraction/ICU/ODBCStringConverter.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/IcuConverters.h"
#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "PlatformAbstraction/ICU/UnicodeForms.h"
#include "PlatformAbstraction/ICU/WideStringConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\ICU\\ODBCStringConverter";
constexpr char TO_SQLWCHAR[] =
    "Orska::Support::ODBCStringConverter::ConvertWStringToSQLWCHARString";
constexpr char TO_SQLCHAR[] = "Orska::Support::ODBCStringConverter::ConvertWStringToSQLCHARString";
constexpr char LENGTH_AS_SQLWCHAR[] =
    "Orska::Support::ODBCStringConverter::GetLengthAsSQLWCHARString";
constexpr char FROM_SQLWCHAR[] = "Orska::Support::ODBCStringConverter::ConvertSQLWCHARToWString";
constexpr char FROM_SQLCHAR[] = "Orska::Support::ODBCStringConverter::ConvertSQLCHARToWString";
constexpr char MAX_BUFFER_LENGTH[] =
    "Orska::Support::ODBCStringConverter::GetSQLCHARToSQLWCHARMaxBufferLength";

[[noreturn]] void ThrowNotRecognised(const char* in_function) {
    ORSKA_THROW((TraceSite{in_function, SOURCE, 0}),
                ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErrNotRecog"));
}

// Divides by a code unit's width, which is 1, 2 or 4. A division instruction costs as much as
// converting a short text.
std::int64_t CountUnits(std::int64_t in_bytes, std::uint8_t in_width) {
    return in_bytes >> (in_width / 2);
}

// Refuses negative lengths except NUL_TERMINATED, and lengths whose bytes cannot be counted.
void CheckLength(std::int64_t in_length, const char* in_function, std::uint8_t in_width = 1) {
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
    const bool isOrdinary = in_length >= 0 && in_length <= MOST / 4;
    if (!isOrdinary && in_length != orska_wstring::NUL_TERMINATED &&
        (in_length < 0 || in_length > MOST / in_width)) {
        ThrowNotRecognised(in_function);
    }
}

void WriteNul(char* out_buffer, std::uint8_t in_width) {
    switch (in_width) {
        case 2:
            std::memset(out_buffer, 0, 2);
            break;
        case 4:
            std::memset(out_buffer, 0, 4);
            break;
        default:
            *out_buffer = '\0';
    }
}

EncodingType GetCheckedDriverManagerEncoding() {
    const EncodingType encoding = GetDriverManagerEncoding();
    EncodingInfo::CheckEncodingType(encoding);
    return encoding;
}

}  // namespace

ODBCStringConverter::ODBCStringConverter(WideStringConverter& in_converter)
    : m_stringConverter(in_converter),
      m_encoding(GetCheckedDriverManagerEncoding()),
      m_codeUnitWidth(EncodingInfo::GetCodeUnitWidth(m_encoding)),
      m_mostCodeUnitsPerCodePoint(EncodingInfo::GetMaxCodeUnitsPerCodePoint(m_encoding)),
      m_mostBytesPerCodePoint(
          static_cast<std::uint8_t>(m_mostCodeUnitsPerCodePoint * m_codeUnitWidth)),
      m_shortEncoder(GetShortEncoder(m_encoding)),
      m_shortDecoder(GetShortDecoder(m_encoding)),
      m_converter(OpenConverter(
          m_encoding,
          TraceSite{"Orska::Support::ODBCStringConverter::ODBCStringConverter", SOURCE, 0})) {}

ODBCStringConverter::~ODBCStringConverter() = default;

std::int64_t ODBCStringConverter::ConvertWStringToSQLWCHARString(const orska_wstring& in_string,
                                                                 void* out_buffer,
                                                                 std::int64_t in_bufferLength,
                                                                 bool in_lengthInBytes,
                                                                 bool& out_truncated) {
    const std::uint8_t width = in_lengthInBytes ? 1 : m_codeUnitWidth;
    CheckLength(in_bufferLength, TO_SQLWCHAR, width);
    auto* const buffer = static_cast<char*>(out_buffer);
    out_truncated = true;
    if (in_bufferLength == 0 || buffer == nullptr) {
        return 0;
    }
    const std::int64_t capacity =
        in_bufferLength == orska_wstring::NUL_TERMINATED
            ? m_stringConverter.GetNulTerminatedStringLength(buffer, m_encoding)
            : in_bufferLength * width;
    if (capacity < m_codeUnitWidth) {
        return 0;
    }
    const std::u16string_view text = in_string.GetView();
    const std::int64_t room = GetUsableCapacity(text, capacity - m_codeUnitWidth);
    std::int64_t bytes = EncodeShortText(text, m_shortEncoder, buffer, room);
    if (bytes >= 0) {
        out_truncated = false;
    } else {
        bytes = Encode(text, buffer, room, out_truncated);
    }
    WriteNul(buffer + bytes, m_codeUnitWidth);
    return CountUnits(bytes, width);
}

// If the text does not fit, code points are dropped from its end until the rest fits, together
// with the sequence that returns to the initial state. Going on unit by unit from where ICU
// stopped would not find the last whole code point: the table's most bytes of a code point count
// no shift sequences.
std::int64_t ODBCStringConverter::Encode(std::u16string_view in_text, char* out_buffer,
                                         std::int64_t in_capacity, bool& out_truncated) {
    EncodedText encoded;
    int attempts = 0;
    UErrorCode status = U_ZERO_ERROR;
    if (!EncodeDirectly(in_text, out_buffer, in_capacity, m_encoding, encoded)) {
        const std::lock_guard<std::mutex> lock(m_lock);
        encoded =
            EncodeThroughIcu(*m_converter, in_text, out_buffer, in_capacity, attempts, status);
    }
    if (U_SUCCESS(status)) {
        out_truncated = encoded.m_isTruncated;
        return encoded.m_bytes;
    }
    // A failure of the first conversion after the one of the whole text has another key.
    if (attempts == 2) {
        ORSKA_THROW((TraceSite{TO_SQLWCHAR, SOURCE, 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErr"));
    }
    ThrowNotRecognised(TO_SQLWCHAR);
}

std::int64_t ODBCStringConverter::ConvertWStringToSQLCHARString(const orska_wstring& in_string,
                                                                char* out_buffer,
                                                                std::int64_t in_bufferLength,
                                                                bool& out_truncated) {
    CheckLength(in_bufferLength, TO_SQLCHAR);
    out_truncated = true;
    if (in_bufferLength == 0 || out_buffer == nullptr) {
        return 0;
    }
    const std::int64_t capacity =
        in_bufferLength == orska_wstring::NUL_TERMINATED
            ? m_stringConverter.GetNulTerminatedStringLength(out_buffer, GetAnsiEncoding())
            : in_bufferLength;
    if (capacity < 1) {
        return 0;
    }
    const std::int64_t bytes = m_stringConverter.ConvertFromWString(
        in_string, out_buffer, capacity - 1, GetAnsiEncoding(), out_truncated);
    out_buffer[bytes] = '\0';
    return bytes;
}

std::int64_t ODBCStringConverter::GetLengthAsSQLWCHARString(const orska_wstring& in_string,
                                                            bool in_inBytes) {
    const std::u16string_view text = in_string.GetView();
    std::int64_t bytes = MeasureDirectly(text, m_encoding);
    if (bytes < 0) {
        const std::lock_guard<std::mutex> lock(m_lock);
        UErrorCode status = U_ZERO_ERROR;
        bytes = MeasureThroughIcu(*m_converter, text, status);
        if (U_FAILURE(status)) {
            ThrowNotRecognised(LENGTH_AS_SQLWCHAR);
        }
    }
    if (bytes % m_codeUnitWidth != 0) {
        ORSKA_THROW((TraceSite{LENGTH_AS_SQLWCHAR, SOURCE, 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"StrByteAlignErr"));
    }
    return in_inBytes ? bytes : bytes / m_codeUnitWidth;
}

std::int64_t ODBCStringConverter::GetLengthAsSQLCHARString(const orska_wstring& in_string) {
    return m_stringConverter.GetLengthInBytes(in_string, GetAnsiEncoding());
}

void ODBCStringConverter::ConvertSQLWCHARToWString(const void* in_buffer, std::int64_t in_length,
                                                   bool in_lengthInBytes,
                                                   orska_wstring& out_result) {
    CheckLength(in_length, FROM_SQLWCHAR, in_lengthInBytes ? 1 : m_codeUnitWidth);
    const bool isCounted = in_length != orska_wstring::NUL_TERMINATED;
    const std::int64_t bytes =
        isCounted && !in_lengthInBytes ? in_length * m_codeUnitWidth : in_length;
    if (isCounted && in_buffer != nullptr &&
        DecodeShortText({static_cast<const char*>(in_buffer), static_cast<std::size_t>(bytes)},
                        m_shortDecoder, out_result)) {
        return;
    }
    m_stringConverter.ConvertToWString(static_cast<const char*>(in_buffer), bytes, m_encoding,
                                       out_result);
}

void ODBCStringConverter::ConvertSQLCHARToWString(const char* in_buffer, std::int64_t in_length,
                                                  orska_wstring& out_result) {
    CheckLength(in_length, FROM_SQLCHAR);
    m_stringConverter.ConvertToWString(in_buffer, in_length, GetAnsiEncoding(), out_result);
}

std::uint32_t ODBCStringConverter::GetSQLCHARToSQLWCHARMaxBufferLength(
    const ODBCStringConverter& in_converter, const char* in_text, std::int64_t in_length,
    bool in_inBytes, bool in_withNul) {
    if (in_text == nullptr) {
        ORSKA_THROW((TraceSite{MAX_BUFFER_LENGTH, SOURCE, 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"InvalidNullParam"));
    }
    const std::uint8_t most = in_inBytes ? in_converter.m_mostBytesPerCodePoint
                                         : in_converter.m_mostCodeUnitsPerCodePoint;
    CheckLength(in_length, MAX_BUFFER_LENGTH);
    const std::int64_t length = in_length == orska_wstring::NUL_TERMINATED
                                    ? static_cast<std::int64_t>(std::strlen(in_text))
                                    : in_length;
    constexpr std::int64_t MOST_RESULT = std::numeric_limits<std::uint32_t>::max();
    const std::int64_t counted = length < MOST_RESULT && in_withNul ? length + 1 : length;
    if (counted > MOST_RESULT / most) {
        ThrowNotRecognised(MAX_BUFFER_LENGTH);
    }
    return static_cast<std::uint32_t>(most * counted);
}

}  // namespace Orska::Support
