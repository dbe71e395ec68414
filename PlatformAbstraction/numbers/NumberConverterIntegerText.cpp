/// Text from integers.
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/numbers/DecimalDigits.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"

namespace Orska::Support {

namespace {

constexpr char MINIMUM_INT_TEXT[] = "-9223372036854775808";
constexpr std::size_t MINIMUM_INT_LENGTH = sizeof(MINIMUM_INT_TEXT) - 1;

/// Bytes of the longest text of T and its NUL: a buffer for every value.
template <class T>
constexpr std::size_t FULL_SIZE = std::numeric_limits<T>::digits10 + 2 +
                                  (std::is_signed_v<T> ? 1 : 0);

/// Writes text into a buffer of at least FULL_SIZE bytes. The '-' is always written, before the
/// text of a positive value too, because a branch on the sign would be hard to predict.
template <class T>
char* WriteFull(T in_value, std::size_t in_bufferLength, char* out_buffer) noexcept {
    using Magnitude = std::make_unsigned_t<T>;
    char* const end = out_buffer + in_bufferLength - 1;
    *end = '\0';
    if constexpr (std::is_unsigned_v<T>) {
        return DecimalDigits::WriteBackwards(end, in_value);
    } else {
        const auto value = static_cast<std::int64_t>(in_value);
        const std::int64_t minus = value >> 63;  // -1 or 0
        const auto magnitude = static_cast<Magnitude>((value ^ minus) - minus);
        char* const text = DecimalDigits::WriteBackwards(end, magnitude);
        text[-1] = '-';
        return text + minus;
    }
}

[[noreturn]] void ThrowNoRoom() {
    // Meant to leave no trace line, unlike every other throw here.
    throw NumberConversionInvalidDataException(L"NumToStrConvFailed");
}

/// Writes text into a buffer that may be too short for it.
template <class T>
char* WriteChecked(T in_value, std::size_t in_bufferLength, char* out_buffer) {
    if (in_bufferLength == 0) {
        ThrowNoRoom();
    }
    char* const end = out_buffer + in_bufferLength - 1;
    *end = '\0';
    char whole[FULL_SIZE<T>];
    const char* const text = WriteFull(in_value, sizeof(whole), whole);
    const auto length = static_cast<std::size_t>(whole + sizeof(whole) - 1 - text);
    if (length >= in_bufferLength) {
        ThrowNoRoom();
    }
    std::memcpy(end - length, text, length);
    return end - length;
}

/// Both kinds of the conversion. A buffer of full size needs no check; WriteFull would write before
/// the start of a shorter one.
template <class T>
char* Write(T in_value, std::uint16_t in_bufferLength, char* out_buffer) {
    if constexpr (std::is_same_v<T, std::int64_t>) {
        if (in_value == std::numeric_limits<T>::min()) [[unlikely]] {
            const auto room = static_cast<std::uint16_t>(in_bufferLength - (in_bufferLength > 0));
            if (in_bufferLength > 0) {
                out_buffer[room] = '\0';
            }
            return NumberConverter::CopyMinimumIntToBuffer(room, out_buffer);
        }
    }
    if (in_bufferLength >= FULL_SIZE<T>) [[likely]] {
        return WriteFull(in_value, in_bufferLength, out_buffer);
    }
    return WriteChecked(in_value, in_bufferLength, out_buffer);
}

}  // namespace

char* NumberConverter::CopyMinimumIntToBuffer(std::uint16_t in_bufferLength, char* out_buffer) {
    if (in_bufferLength < MINIMUM_INT_LENGTH) {
        // This is the key of the other direction, on purpose: callers look for it.
        const std::vector<orska_wstring> msgParams{orska_wstring(MINIMUM_INT_TEXT)};
        ORSKA_THROW((TraceSite{"Orska::Support::CopyMinimumIntToBuffer",
                               "PlatformAbstraction\\NumberConverter", 0}),
                    NumberConversionInvalidDataException((L"StrToNumConvFailed"), msgParams));
    }
    char* const text = out_buffer + in_bufferLength - MINIMUM_INT_LENGTH;
    std::memcpy(text, MINIMUM_INT_TEXT, MINIMUM_INT_LENGTH);
    return text;
}

template <ConvertibleInteger T>
char* NumberConverter::IntegerToBuffer(T in_value, std::uint16_t in_bufferLength,
                                       char* out_buffer) {
    return Write(in_value, in_bufferLength, out_buffer);
}

template <ConvertibleInteger T>
char* NumberConverter::IntegerToBufferChecked(T in_value, std::uint16_t in_bufferLength,
                                              char* out_buffer) {
    return Write(in_value, in_bufferLength, out_buffer);
}

template <ConvertibleInteger T>
std::string NumberConverter::IntegerToString(T in_value) {
    char buffer[FULL_SIZE<T>];
    char* const text = Write(in_value, sizeof(buffer), buffer);
    return std::string(text, buffer + sizeof(buffer) - 1);
}

template <ConvertibleInteger T>
orska_wstring NumberConverter::IntegerToWString(T in_value) {
    orska_wstring text;
    text.SetFromUtf8(IntegerToString(in_value));  // the ANSI encoding may lack ASCII
    return text;
}

#define ORSKA_INSTANTIATE(T)                                                            \
    template char* NumberConverter::IntegerToBuffer<T>(T, std::uint16_t, char*);        \
    template char* NumberConverter::IntegerToBufferChecked<T>(T, std::uint16_t, char*); \
    template std::string NumberConverter::IntegerToString<T>(T);                        \
    template orska_wstring NumberConverter::IntegerToWString<T>(T);

ORSKA_FOR_EACH_INTEGER(ORSKA_INSTANTIATE)

}  // namespace Orska::Support
