// The arguments and the pools of the platform's string converter.
#include "PlatformAbstraction/ICU/WideStringConverter.h"

#include <gtest/gtest.h>

#include <string>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "tests/support/IcuText.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support::Testing {
namespace {

using Test::ThrownMessage;

orska_wstring Decode(WideStringConverter& io_converter, const std::string& in_bytes,
                     EncodingType in_encoding) {
    orska_wstring result;
    io_converter.ConvertToWString(in_bytes.data(), static_cast<std::int64_t>(in_bytes.size()),
                                  in_encoding, result);
    return result;
}

TEST(WideStringConverter, AcceptsNullsEmptyTextAndNulTerminatedText) {
    WideStringConverter converter;
    orska_wstring result = MakeString(u"old");
    converter.ConvertToWString(nullptr, 3, EncodingType::ENC_UTF8, result);
    EXPECT_TRUE(result.IsNull());
    for (const int encoding : {0, 1, 18}) {
        result = MakeString(u"old");
        converter.ConvertToWString("x", 0, EncodingType{encoding}, result);
        EXPECT_FALSE(result.IsNull());
        EXPECT_TRUE(result.IsEmpty());
    }
    converter.ConvertToWString("a\0b\0\0\0c", -3, EncodingType::ENC_UTF16LE, result);
    EXPECT_TRUE(result == MakeString(u"ab"));
    // Bytes of the string that is replaced, in which there is room.
    for (const EncodingType encoding : {EncodingType::ENC_LATIN1, EncodingType::ENC_UTF16LE}) {
        for (const std::size_t count : {4U, 20U, 400U}) {
            result = MakeString(std::u16string(count, u'x'));
            const char* const own = reinterpret_cast<const char*>(result.GetView().data());
            const orska_wstring expected(std::string(own, count).data(), count, encoding);
            converter.ConvertToWString(own, static_cast<std::int64_t>(count), encoding, result);
            EXPECT_TRUE(result == expected);
        }
    }
}

TEST(WideStringConverter, AcceptsNullBuffersOfLengthZero) {
    WideStringConverter converter;
    for (std::int32_t i = 0; i < ENCODING_COUNT; ++i) {
        for (const std::u16string_view text : {u"", u"a", u"\u6F22\u00AD", u"\xD800"}) {
            bool isTruncated = false;
            EXPECT_EQ(0, converter.ConvertFromWString(MakeString(text), nullptr, 0, EncodingType{i},
                                                      isTruncated));
            EXPECT_EQ(!text.empty(), isTruncated) << i;
        }
        EXPECT_EQ(0, orska_wstring().SetFromUtf8(nullptr, 0).GetLength());
    }
}

TEST(WideStringConverter, RefusesBadArguments) {
    WideStringConverter converter;
    orska_wstring text = MakeString(u"text");
    char buffer[8];
    EXPECT_EQ("ICUConvErr", ThrownMessage([&] {
                  converter.ConvertToWString("a", -2, EncodingType::ENC_UTF8, text);
              }));
    EXPECT_EQ("ICUConvErr", ThrownMessage([&] {
                  converter.ConvertFromWString(text, buffer, -1, EncodingType::ENC_UTF8);
              }));
    EXPECT_TRUE(text == MakeString(u"text"));
    for (const int value : {-1, 119}) {
        const EncodingType encoding{value};
        EXPECT_EQ("EncodingNotRecog",
                  ThrownMessage([&] { converter.ConvertToWString("a", 1, encoding, text); }));
        EXPECT_EQ("EncodingNotRecog",
                  ThrownMessage([&] { converter.ConvertFromWString(text, buffer, 8, encoding); }));
        EXPECT_EQ("EncodingNotRecog",
                  ThrownMessage([&] { converter.GetLengthInBytes(text, encoding); }));
        EXPECT_EQ("EncodingNotRecog",
                  ThrownMessage([&] { converter.GetNulTerminatedStringLength("a", encoding); }));
    }
}

TEST(WideStringConverter, MeasuresNulTerminatedBuffers) {
    WideStringConverter converter;
    // Zero bytes within a unit, and across two units, are no NUL.
    for (const int encoding : {0, 1, 2, 3, 4, 18}) {
        for (const std::u16string_view text : {u"", u"b\u6100b"}) {
            for (const std::size_t offset : {0U, 1U}) {  // at an odd address too
                SCOPED_TRACE(encoding);
                const std::string bytes = EncodeWithIcu(text, EncodingType{encoding});
                const std::string buffer = std::string(offset, 'x') + bytes + std::string(4, '\0');
                EXPECT_EQ(bytes.size(), converter.GetNulTerminatedStringLength(
                                            buffer.data() + offset, EncodingType{encoding}));
            }
        }
    }
    EXPECT_EQ(0, converter.GetNulTerminatedStringLength(nullptr, EncodingType::ENC_UTF16LE));
}

TEST(WideStringConverter, StringsUseItWhileItIsInstalled) {
    WideStringConverter converter;
    SetPlatformStringConverter(&converter);
    const orska_wstring string("\x8A\xBF!", 3, EncodingType{18});
    const std::string back = string.GetAsAnsiString(EncodingType{24});
    const std::wstring wide = orska_wstring(L"w\u6F22").GetAsPlatformWString();
    const std::u16string units = string.GetAsUtf16();
    SetPlatformStringConverter(nullptr);
    EXPECT_TRUE(string == MakeString(u"\u6F22!"));
    EXPECT_EQ("\x1B$B4A\x1B(B!", back);
    EXPECT_EQ(L"w\u6F22", wide);
    EXPECT_EQ(u"\u6F22!", units);
    EXPECT_EQ(1U, converter.CountPooledConverters(EncodingType{18}));
    EXPECT_EQ(1U, converter.CountPooledConverters(EncodingType{24}));
}

TEST(WideStringConverter, KeepsOneConverterForOneThread) {
    WideStringConverter converter;
    for (int i = 0; i < 20; ++i) {
        Decode(converter, "\x8A\xBF", EncodingType{18});
        EXPECT_EQ(2, converter.GetLengthInBytes(MakeString(u"\u6F22"), EncodingType{18}));
    }
    EXPECT_EQ(1U, converter.CountPooledConverters(EncodingType{18}));
    // Text in the direct encodings needs no converter, well-formed or not.
    Decode(converter, "\xC3\xA9\xC3", EncodingType::ENC_UTF8);
    converter.GetLengthInBytes(MakeString(u"\u6F22\xD800"), EncodingType::ENC_UTF8);
    EXPECT_EQ(0U, converter.CountPooledConverters(EncodingType::ENC_UTF8));
}

}  // namespace
}  // namespace Orska::Support::Testing
