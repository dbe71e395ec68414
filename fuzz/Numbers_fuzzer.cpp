// Numbers read from text and written as text, against the slow models and the standard library.
//
// Input: what to do, then the text, or the bits of the value.
#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/NumberModel.h"

namespace {

using namespace Orska::Support;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;

/// A copy of exactly its size, so that the sanitizer sees every byte outside.
class ExactCopy {
public:
    explicit ExactCopy(const std::string& in_text)
        : m_bytes(new char[in_text.size()]), m_size(in_text.size()) {
        if (m_size != 0) std::memcpy(m_bytes.get(), in_text.data(), m_size);
    }
    const char* GetData() const { return m_bytes.get(); }
    std::size_t GetSize() const { return m_size; }

private:
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size;
};

template <class T, class Read>
void CompareInteger(const std::string& in_text, bool in_isStrict, bool in_isZeroTerminated,
                    Read in_read) {
    const Testing::ModelInteger expected =
        Testing::ModelStringToInteger(in_text, static_cast<int>(sizeof(T)) * 8, std::is_signed_v<T>,
                                      in_isStrict, in_isZeroTerminated);
    try {
        const T value = in_read();
        Require(expected.m_key.empty(), "a text that is to be refused", in_text);
        Require(value == static_cast<T>(expected.m_bits), "another integer", in_text);
    } catch (const ErrorException& error) {
        Require(error.GetMessageKeyOrText() == orska_wstring(expected.m_key), "another key",
                in_text);
        const bool isRange =
            dynamic_cast<const NumberConversionOutOfRangeException*>(&error) != nullptr;
        Require(isRange == expected.m_isOutOfRange, "another exception", in_text);
    }
}

template <class T>
void ReadInteger(const std::string& in_text) {
    const ExactCopy copy(in_text);
    for (const bool isStrict : {false, true}) {
        CompareInteger<T>(in_text, isStrict, false, [&] {
            return NumberConverter::StringToInteger<T>(copy.GetData(), copy.GetSize(), isStrict);
        });
        const std::string text = in_text.c_str();  // up to a NUL
        CompareInteger<T>(text, isStrict, true, [&] {
            return NumberConverter::StringToInteger<T>(text.c_str(), isStrict);
        });
    }
}

template <class T>
bool IsSame(T in_value, double in_expected) {
    return (std::isnan(in_value) && std::isnan(in_expected)) ||
           (static_cast<double>(in_value) == in_expected &&
            std::signbit(in_value) == std::signbit(in_expected));
}

/// What the rules leave of the standard's precision: a wrong last place of the 15 or 16 digits.
void CompareWithStandard(const std::string& in_text, double in_value) {
    double exact = 0;
    const char* const end = in_text.data() + in_text.size();
    const auto [rest, error] = std::from_chars(in_text.data(), end, exact);
    if (error != std::errc() || rest != end || !std::isfinite(exact)) return;
    if (in_text.size() > 300 || std::fabs(exact) < 1e-290 || std::fabs(exact) > 1e300) return;
    Require(std::fabs(in_value - exact) <= std::fabs(exact) * 1e-15, "far from the standard's",
            in_text);
}

void ReadFloat(const std::string& in_text) {
    const ExactCopy copy(in_text);
    for (const bool isStrict : {false, true}) {
        const Testing::ModelDouble expected = Testing::ModelStringToDouble(in_text, isStrict);
        try {
            const auto value = NumberConverter::ConvertStringToFloatingPoint<double>(
                copy.GetData(), copy.GetSize(), isStrict);
            Require(!expected.m_throws, "a number that is to be refused", in_text);
            Require(IsSame(value, expected.m_value), "another double", in_text);
            if (isStrict) CompareWithStandard(in_text, value);
            const auto single = NumberConverter::ConvertStringToFloatingPoint<float>(
                copy.GetData(), copy.GetSize(), isStrict);
            Require(IsSame(single, static_cast<double>(static_cast<float>(expected.m_value))),
                    "another float", in_text);
        } catch (const NumberConversionInvalidDataException&) {
            Require(expected.m_throws, "a number that is refused", in_text);
        }
    }
}

template <class T>
void WriteInteger(std::uint64_t in_bits, std::uint16_t in_size) {
    const T value = static_cast<T>(in_bits);
    const std::string expected = std::to_string(value);
    Require(NumberConverter::IntegerToString(value) == expected, "another text", expected);
    const std::unique_ptr<char[]> buffer(new char[in_size]);
    const bool isFitting = in_size > expected.size();
    try {
        const char* const text =
            NumberConverter::IntegerToBufferChecked(value, in_size, buffer.get());
        Require(isFitting && expected == text, "another text in a buffer", expected);
        Require(text + expected.size() + 1 == buffer.get() + in_size, "not at the end", expected);
    } catch (const NumberConversionInvalidDataException&) {
        Require(!isFitting, "a text that fits", expected);
    }
}

template <class T>
void WriteFloat(T in_value) {
    const std::string text = NumberConverter::ConvertFloatingPointToString(in_value);
    Require(text.size() < NumberConverter::FLOAT_TEXT_SIZE, "a long text", text);
    Require(text == Testing::ModelSignificant(in_value, sizeof(T) == 4 ? 7 : 15),
            "another text of a number", text);
}

void WriteDecimals(double in_value, int in_decimals) {
    const int decimals = std::clamp(in_decimals, 0, 15);
    char text[NumberConverter::DECIMALS_TEXT_SIZE];
    std::size_t size = NumberConverter::ConvertDoubleToBufferFixed(in_value, in_decimals, text);
    Require(std::string(text, size) == Testing::ModelDecimals(in_value, decimals, true),
            "other decimals", {text, size});
    size = NumberConverter::ConvertDoubleToBufferTrimmed(in_value, in_decimals, text);
    Require(std::string(text, size) == Testing::ModelDecimals(in_value, decimals, false),
            "other trimmed decimals", {text, size});
}

template <class T>
void Integer(bool in_isReading, FuzzInput& io_input) {
    if (in_isReading) {
        ReadInteger<T>(io_input.TakeRest());
    } else {
        const std::uint64_t bits = io_input.TakeNumber(8);
        WriteInteger<T>(bits, io_input.TakeByte() % 40);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    FuzzInput input(in_data, in_size);
    const std::uint8_t what = input.TakeByte();
    const bool isReading = what % 2 == 0;
    switch (what / 2 % 12) {
        case 0:
            Integer<std::int8_t>(isReading, input);
            break;
        case 1:
            Integer<std::uint8_t>(isReading, input);
            break;
        case 2:
            Integer<std::int16_t>(isReading, input);
            break;
        case 3:
            Integer<std::uint16_t>(isReading, input);
            break;
        case 4:
            Integer<std::int32_t>(isReading, input);
            break;
        case 5:
            Integer<std::uint32_t>(isReading, input);
            break;
        case 6:
            Integer<std::int64_t>(isReading, input);
            break;
        case 7:
            Integer<std::uint64_t>(isReading, input);
            break;
        case 8:
            WriteFloat(std::bit_cast<float>(static_cast<std::uint32_t>(input.TakeNumber(4))));
            break;
        case 9: {
            const double value = std::bit_cast<double>(input.TakeNumber(8));
            WriteFloat(value);
            WriteDecimals(value, static_cast<int>(input.TakeByte() % 24) - 4);
            break;
        }
        default:
            ReadFloat(input.TakeRest());
            break;
    }
    return 0;
}
