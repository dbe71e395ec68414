// Every system converts every encoding to the same bytes: each one's results, as one number.
#include <gtest/gtest.h>
#include <unicode/uvernum.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "tests/support/StreamDriver.h"

namespace Orska::Support {
namespace {

constexpr std::uint64_t EXPECTED[] = {
#include "tests/PlatformAbstraction/ICU/EncodingHashes.inc"
};
static_assert(std::size(EXPECTED) == ENCODING_COUNT);

/// Every code point of the first plane but the surrogates, emoji and rarer ideographs.
std::u16string MakeText() {
    std::u16string text;
    for (char32_t point = 0; point < 0x22000; ++point) {
        if (point == 0x10000) point = 0x1F000;
        if (point >= 0x10000) {
            text += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
        } else if (point < 0xD800 || point > 0xDFFF) {
            text += static_cast<char16_t>(point);
        }
    }
    return text;
}

/// Every pair of bytes, most of them malformed in most encodings.
std::string MakeBytes() {
    std::string bytes;
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            bytes += {static_cast<char>(first), static_cast<char>(second)};
        }
    }
    return bytes;
}

/// FNV-1a over words of eight bytes, which is the same on both systems and fast.
void Add(std::uint64_t& io_hash, std::string_view in_bytes) {
    for (; !in_bytes.empty(); in_bytes.remove_prefix(std::min<std::size_t>(8, in_bytes.size()))) {
        std::uint64_t word = in_bytes.size();
        in_bytes.copy(reinterpret_cast<char*>(&word), 8);
        io_hash = (io_hash ^ word) * 0x100000001B3;
    }
}

void AddUnits(std::uint64_t& io_hash, const orska_wstring& in_text) {
    const std::u16string_view view = in_text.GetView();
    Add(io_hash, {reinterpret_cast<const char*>(view.data()), view.size() * sizeof(char16_t)});
}

std::uint64_t HashOf(EncodingType in_encoding, const std::u16string& in_text,
                     const std::string& in_bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    const std::string encoded = orska_wstring(in_text).GetAsAnsiString(in_encoding);
    Add(hash, encoded);
    AddUnits(hash, orska_wstring(encoded.data(), encoded.size(), in_encoding));
    AddUnits(hash, orska_wstring(in_bytes.data(), in_bytes.size(), in_encoding));
    const auto converter =
        StreamConverterFactory::CreateConverter(in_encoding, EncodingType::ENC_UTF8);
    Add(hash, Testing::ConvertAtOnce(*converter, encoded));
    return hash;
}

TEST(EncodingHashes, AreTheSameOnEverySystem) {
    if (U_ICU_VERSION_MAJOR_NUM != 72) GTEST_SKIP() << "the numbers are those of ICU 72";
    const std::u16string text = MakeText();
    const std::string bytes = MakeBytes();
    std::string lines;
    for (std::int32_t index = 0; index < ENCODING_COUNT; ++index) {
        char line[32];
        const std::uint64_t hash = HashOf(static_cast<EncodingType>(index), text, bytes);
        std::snprintf(line, sizeof line, "0x%016llX,  // %d\n",
                      static_cast<unsigned long long>(hash), index);
        lines += line;
        EXPECT_EQ(hash, EXPECTED[index]) << "encoding " << index;
    }
    if (HasFailure()) std::printf("All of EncodingHashes.inc would be:\n%s", lines.c_str());
}

}  // namespace
}  // namespace Orska::Support
