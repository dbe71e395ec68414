// The string's own conversions against ICU's, for the same bytes and the same units.
#include "PlatformAbstraction/strings/StringCodec.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {
namespace {

constexpr EncodingType OWN_ENCODINGS[] = {
    EncodingType::ENC_UTF8,    EncodingType::ENC_UTF16LE,  EncodingType::ENC_UTF16BE,
    EncodingType::ENC_UTF32LE, EncodingType::ENC_UTF32BE,  EncodingType::ENC_LATIN1,
    EncodingType::ENC_CP1252,  EncodingType::ENC_US_ASCII,
};

template <typename Units>
std::string Hex(const Units& in_units) {
    std::string hex;
    for (const auto unit : in_units) {
        char text[16];
        std::snprintf(text, sizeof text, "%0*X ", static_cast<int>(2 * sizeof unit),
                      static_cast<unsigned>(
                          static_cast<std::make_unsigned_t<std::decay_t<decltype(unit)>>>(unit)));
        hex += text;
    }
    return hex;
}

std::u16string Units(const icu::UnicodeString& in_text) {
    return {in_text.getBuffer(), static_cast<std::size_t>(in_text.length())};
}

std::u16string IcuDecode(std::string_view in_bytes, EncodingType in_encoding) {
    return Units(icu::UnicodeString(in_bytes.data(), static_cast<std::int32_t>(in_bytes.size()),
                                    EncodingInfo::GetName(in_encoding)));
}

std::string IcuEncode(const icu::UnicodeString& in_text, EncodingType in_encoding) {
    const char* name = EncodingInfo::GetName(in_encoding);
    std::string bytes(static_cast<std::size_t>(in_text.length()) * 4 + 8, '\0');
    const std::int32_t length = in_text.extract(0, in_text.length(), bytes.data(),
                                                static_cast<std::uint32_t>(bytes.size()), name);
    bytes.resize(static_cast<std::size_t>(length));
    // ICU leaves HZ in its two-byte state.
    const std::size_t open = bytes.rfind("~{");
    if (in_encoding == EncodingType{67} && open != std::string::npos &&
        bytes.find("~}", open) == std::string::npos) {
        bytes += "~}";
    }
    return bytes;
}

void ExpectDecodesAsIcu(const std::string& in_bytes, EncodingType in_encoding) {
    // A block of exactly this size, so that the sanitizers see a read past it.
    const std::unique_ptr<char[]> exact(new char[in_bytes.size()]);
    std::memcpy(exact.get(), in_bytes.data(), in_bytes.size());
    const std::unique_ptr<icu::UnicodeString> ours(
        DecodeText(exact.get(), static_cast<std::int32_t>(in_bytes.size()), in_encoding));
    const std::u16string icus = IcuDecode(in_bytes, in_encoding);
    if (Units(*ours) != icus) {
        ADD_FAILURE() << EncodingInfo::GetName(in_encoding) << " bytes " << Hex(in_bytes)
                      << "\n ours " << Hex(Units(*ours)) << "\n ICU  " << Hex(icus);
    }
}

void ExpectEncodesAsIcu(const std::u16string& in_units, EncodingType in_encoding) {
    const icu::UnicodeString text(in_units.data(), static_cast<std::int32_t>(in_units.size()));
    const std::string ours = EncodeText(text, in_encoding);
    const std::string icus = IcuEncode(text, in_encoding);
    if (ours != icus) {
        ADD_FAILURE() << EncodingInfo::GetName(in_encoding) << " units " << Hex(in_units)
                      << "\n ours " << Hex(ours) << "\n ICU  " << Hex(icus);
    }
}

using Random = std::mt19937;

std::size_t Pick(Random& io_random, std::size_t in_count) {
    return std::uniform_int_distribution<std::size_t>(0, in_count - 1)(io_random);
}

/// Concatenates pieces until there are `in_length` units, then cuts there, wherever that is.
template <typename Unit>
std::basic_string<Unit> FromPieces(Random& io_random, std::size_t in_length,
                                   const std::vector<std::basic_string<Unit>>& in_pieces) {
    std::basic_string<Unit> text;
    while (text.size() < in_length) {
        text += in_pieces[Pick(io_random, in_pieces.size())];
    }
    text.resize(in_length);
    return text;
}

std::string RandomBytes(Random& io_random, std::size_t in_length, std::size_t in_values) {
    std::string bytes(in_length, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(Pick(io_random, in_values));
    }
    return bytes;
}

const std::vector<std::string>& BytePieces() {
    static const std::vector<std::string> s_pieces = {
        "a", "plain ASCII text of more than a block", std::string(1, '\0'),
        // UTF-8: whole sequences of each length, at the ends of their ranges
        "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF",
        "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "\xEF\xBB\xBF",
        // overlong, surrogates, too large, leads that never begin a sequence
        "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xF0\x80\x80\x80",
        "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xAF\xBF\xED\xB0\x80", "\xED\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF",
        // sequences cut short and stray continuation bytes
        "\xC2", "\xE2", "\xE2\x82", "\xF0", "\xF0\x9F", "\xF0\x9F\x98", "\x80", "\xBF\x80",
        // UTF-16 and UTF-32: surrogates alone, turned round and paired, a mark, too large
        std::string("\x00\xD8", 2), std::string("\x00\xDC", 2), std::string("\x3D\xD8\x00\xDE", 4),
        std::string("\xD8\x00", 2), std::string("\xDC\x00", 2), std::string("\xD8\x3D\xDE\x00", 4),
        std::string("\xFF\xFE", 2), std::string("\xFE\xFF", 2), std::string("A\0\0\0", 4),
        std::string("\0\0\0A", 4), std::string("\x00\xF6\x01\x00", 4),
        std::string("\x00\x01\xF6\x00", 4), std::string("\x00\x00\x11\x00", 4),
        std::string("\x00\x11\x00\x00", 4), std::string("\x00\xD8\x00\x00", 4),
        std::string("\xFF\xFF\x10\x00", 4), std::string("\x00\x10\xFF\xFF", 4), "\xFF\xFF\xFF\xFF",
        "\x80", "\x9F\x81\x8D"};
    return s_pieces;
}

const std::vector<std::u16string>& UnitPieces() {
    static const std::vector<std::u16string> s_pieces = {u"a",
                                                         u"plain ASCII text of more than a block",
                                                         std::u16string(1, u'\0'),
                                                         u"\u0080",
                                                         u"\u009F",
                                                         u"\u00A0",
                                                         u"\u00AD",
                                                         u"\u00FF",
                                                         u"\u0100",
                                                         u"\u0152",
                                                         u"\u07FF",
                                                         u"\u0800",
                                                         u"\u20AC",
                                                         u"\u2019",
                                                         u"\u2122",
                                                         u"\u200B",
                                                         u"\u200E",
                                                         u"\u3042",
                                                         u"\uE000",
                                                         u"\uF8FF",
                                                         u"\uFE0F",
                                                         u"\uFEFF",
                                                         u"\uFFFD",
                                                         u"\uFFFF",
                                                         u"\U00010000",
                                                         u"\U0001F600",
                                                         u"\U000E0001",
                                                         u"\U0010FFFF",
                                                         std::u16string(1, char16_t{0xD800}),
                                                         std::u16string(1, char16_t{0xDBFF}),
                                                         std::u16string(1, char16_t{0xDC00}),
                                                         std::u16string(1, char16_t{0xDFFF})};
    return s_pieces;
}

TEST(StringCodecTest, DecodesRandomBytesAsIcuDoes) {
    Random random(20240607);
    for (const EncodingType encoding : OWN_ENCODINGS) {
        for (std::size_t round = 0; round < 3000 && !testing::Test::HasFailure(); ++round) {
            const std::size_t length = round % 75;
            ExpectDecodesAsIcu(FromPieces(random, length, BytePieces()), encoding);
            ExpectDecodesAsIcu(RandomBytes(random, length, round % 2 == 0 ? 256 : 0x82), encoding);
        }
        ExpectDecodesAsIcu(FromPieces(random, 100001, BytePieces()), encoding);
        ExpectDecodesAsIcu(std::string(5000, 'x'), encoding);
    }
}

TEST(StringCodecTest, DecodesEveryPairOfBytesAsIcuDoes) {
    for (const EncodingType encoding : OWN_ENCODINGS) {
        for (int first = 0; first < 256; ++first) {
            // Four bytes apart, so that one pair does not change how the next is read.
            std::string bytes;
            for (int second = 0; second < 256; ++second) {
                bytes += {static_cast<char>(first), static_cast<char>(second), '\0', '\0'};
            }
            ExpectDecodesAsIcu(bytes, encoding);
            ExpectDecodesAsIcu(std::string(1, static_cast<char>(first)), encoding);
        }
    }
}

TEST(StringCodecTest, DecodesEveryLeadWithBoundaryContinuationsAsIcuDoes) {
    const std::string follow("\x00\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xFF", 11);
    for (int lead = 0xC0; lead < 0x100; ++lead) {
        std::string bytes;
        for (const char second : follow) {
            for (const char third : follow) {
                for (const char fourth : follow) {
                    bytes += {static_cast<char>(lead), second, third, fourth, 'x'};
                }
                ExpectDecodesAsIcu({static_cast<char>(lead), second, third},
                                   EncodingType::ENC_UTF8);
            }
        }
        ExpectDecodesAsIcu(bytes, EncodingType::ENC_UTF8);
    }
}

TEST(StringCodecTest, EncodesRandomUnitsAsIcuDoes) {
    Random random(19980401);
    for (const EncodingType encoding : OWN_ENCODINGS) {
        for (std::size_t round = 0; round < 3000 && !testing::Test::HasFailure(); ++round) {
            ExpectEncodesAsIcu(FromPieces(random, round % 75, UnitPieces()), encoding);
        }
        ExpectEncodesAsIcu(FromPieces(random, 100001, UnitPieces()), encoding);
        ExpectEncodesAsIcu(std::u16string(5000, u'x'), encoding);
    }
}

TEST(StringCodecTest, GivesUnitsAsItGivesBytes) {
    Random random(7);
    for (std::size_t round = 0; round < 300; ++round) {
        const std::u16string units = FromPieces(random, round % 75, UnitPieces());
        const icu::UnicodeString text(units.data(), static_cast<std::int32_t>(units.size()));
        const std::u16string utf16 = EncodeUtf16(text);
        EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(utf16.data()), utf16.size() * 2),
                  EncodeText(text, EncodingType::ENC_UTF16LE));
        const std::wstring wide = EncodeWide(text);
        const EncodingType wideEncoding =
            sizeof(wchar_t) == 2 ? EncodingType::ENC_UTF16LE : EncodingType::ENC_UTF32LE;
        EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(wide.data()),
                                   wide.size() * sizeof(wchar_t)),
                  EncodeText(text, wideEncoding));
    }
}

// What is not converted here goes to ICU and comes back whole.
TEST(StringCodecTest, EveryOtherEncodingIsIcus) {
    Random random(4711);
    for (std::int32_t value = 8; value < ENCODING_COUNT; ++value) {
        const auto encoding = static_cast<EncodingType>(value);
        for (std::size_t length = 0; length < 40; ++length) {
            ExpectDecodesAsIcu(RandomBytes(random, length, 256), encoding);
            ExpectEncodesAsIcu(FromPieces(random, length, UnitPieces()), encoding);
        }
    }
}

}  // namespace
}  // namespace Orska::Support
