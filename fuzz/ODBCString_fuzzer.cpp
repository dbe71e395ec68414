// Strings to and from the driver manager's buffers, against texts encoded by ICU and cut slowly.
//
// Input: the encoding, lengths and how they are given, then the text: code units, or the bytes of a
// buffer.
#include <algorithm>
#include <cstring>
#include <map>
#include <memory>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/ODBCStringConverter.h"
#include "PlatformAbstraction/ICU/WideStringConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/EncodedFit.h"

namespace {

using namespace Orska::Support;
using namespace Orska::Support::Testing;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;

constexpr char FILL = '\x5A';
constexpr std::size_t LONGEST = 200;

ODBCStringConverter& GetConverter(int in_encoding) {
    static WideStringConverter s_platform;
    static std::map<int, std::unique_ptr<ODBCStringConverter>> s_converters;
    std::unique_ptr<ODBCStringConverter>& converter = s_converters[in_encoding];
    if (converter == nullptr) {
        orska_wstring::SetDriverManagerEncoding(EncodingType{in_encoding});
        converter = std::make_unique<ODBCStringConverter>(s_platform);
    }
    return *converter;
}

orska_wstring MakeString(std::u16string_view in_text) {
    orska_wstring string;
    string.SetImpl(
        new icu::UnicodeString(in_text.data(), static_cast<std::int32_t>(in_text.size())));
    return string;
}

struct Rule {
    std::size_t m_width;  ///< bytes of a code unit
    std::size_t m_unit;   ///< bytes of a unit in which lengths are given
};

/// What stands in the buffer and what is said about it, for every text and every room.
void CheckOutput(const std::string& in_buffer, const Rule& in_rule, std::int64_t in_result,
                 bool in_isTruncated, std::u16string_view in_text, EncodingType in_encoding) {
    const std::vector<std::string> beginnings = EncodeBeginnings(in_text, in_encoding);
    const std::size_t width = in_rule.m_width;
    if (in_buffer.size() < width) {
        Require(in_result == 0 && in_isTruncated, "no room for the NUL");
        Require(in_buffer == std::string(in_buffer.size(), FILL), "a changed buffer");
        return;
    }
    const std::string& fit = GetFit(beginnings, (in_buffer.size() - width) / width * width);
    Require(in_isTruncated == (fit.size() != beginnings.back().size() ||
                               (fit.empty() && !beginnings.back().empty())),
            "truncated or not", fit);
    Require(static_cast<std::size_t>(in_result) == fit.size() / in_rule.m_unit, "another length");
    Require(in_buffer.compare(0, fit.size(), fit) == 0, "other bytes", in_buffer);
    Require(in_buffer.compare(fit.size(), width, std::string(width, '\0')) == 0, "no NUL");
    // Zeros may stand in place of a code point that did not fit; all else is as it was.
    const std::size_t mostChanged = in_isTruncated ? fit.size() + width + 16 : fit.size() + width;
    for (std::size_t i = fit.size() + width; i < in_buffer.size(); ++i) {
        const bool isZero = in_isTruncated && i < mostChanged && in_buffer[i] == '\0';
        Require(in_buffer[i] == FILL || isZero, "a byte behind the NUL");
    }
}

void TryToWrite(int in_encoding, std::size_t in_room, bool in_isInBytes,
                std::u16string_view in_text) {
    ODBCStringConverter& converter = GetConverter(in_encoding);
    const orska_wstring string = MakeString(in_text);
    const EncodingType encoding{in_encoding};
    const std::size_t width = EncodingInfo::GetCodeUnitWidth(encoding);
    const Rule rule{width, in_isInBytes ? 1 : width};
    // Exactly as long as the length says, so that the sanitizer sees every byte outside.
    const std::size_t bytes = in_room * rule.m_unit;
    const std::unique_ptr<char[]> buffer(new char[bytes]);
    std::memset(buffer.get(), FILL, bytes);
    bool isTruncated = false;
    std::int64_t result = converter.ConvertWStringToSQLWCHARString(
        string, buffer.get(), static_cast<std::int64_t>(in_room), in_isInBytes, isTruncated);
    CheckOutput({buffer.get(), bytes}, rule, result, isTruncated, in_text, encoding);
    Require(static_cast<std::size_t>(converter.GetLengthAsSQLWCHARString(string, true)) ==
                EncodeWithIcu(in_text, encoding).size(),
            "another length as SQLWCHAR");

    std::memset(buffer.get(), FILL, bytes);
    result = converter.ConvertWStringToSQLCHARString(string, buffer.get(),
                                                     static_cast<std::int64_t>(bytes), isTruncated);
    CheckOutput({buffer.get(), bytes}, {1, 1}, result, isTruncated, in_text, GetAnsiEncoding());
}

/// A buffer with bytes of any kind, with its length and, with a NUL behind them, without one.
void ReadBuffer(int in_encoding, bool in_isInBytes, const std::string& in_bytes) {
    ODBCStringConverter& converter = GetConverter(in_encoding);
    const EncodingType encoding{in_encoding};
    const std::size_t width = EncodingInfo::GetCodeUnitWidth(encoding);
    const std::size_t unit = in_isInBytes ? 1 : width;
    const std::size_t bytes = in_bytes.size() / unit * unit;
    const std::unique_ptr<char[]> buffer(new char[bytes]);
    std::copy_n(in_bytes.data(), bytes, buffer.get());
    const auto decode = [&](std::size_t in_size) {
        return icu::UnicodeString(buffer.get(), static_cast<std::int32_t>(in_size),
                                  EncodingInfo::GetName(encoding));
    };
    orska_wstring string;
    converter.ConvertSQLWCHARToWString(buffer.get(), static_cast<std::int64_t>(bytes / unit),
                                       in_isInBytes, string);
    Require(!string.IsNull() && *string.GetImpl() == decode(bytes), "another string");

    std::size_t end = 0;
    const std::string nul(width, '\0');
    while (end + width <= bytes && in_bytes.compare(end, width, nul) != 0) end += width;
    if (end + width > bytes) return;
    converter.ConvertSQLWCHARToWString(buffer.get(), orska_wstring::NUL_TERMINATED, in_isInBytes,
                                       string);
    Require(!string.IsNull() && *string.GetImpl() == decode(end), "another string up to a NUL");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    if (in_size > LONGEST) return 0;
    FuzzInput input(in_data, in_size);
    const std::uint8_t picked = input.TakeByte();
    const int encoding = CUT_ENCODINGS[picked % CUT_ENCODINGS.size()];
    const std::uint8_t how = input.TakeByte();
    const std::uint8_t room = input.TakeByte();
    const std::string bytes = input.TakeRest();
    if ((how & 1) != 0) {
        ReadBuffer(encoding, (how & 2) != 0, bytes);
        return 0;
    }
    std::u16string text(bytes.size() / 2, u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * 2);
    if ((how & 4) != 0) text = orska_wstring(bytes).GetAsUtf16();  // mostly well-formed
    TryToWrite(encoding, room, (how & 2) != 0, text);
    return 0;
}
