#include "PlatformAbstraction/ICU/ICUUtils.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <string>

#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support {
namespace {

using Test::SetLocale;
using Test::TemporaryDirectory;
using Test::ThrownMessage;
using Test::TURKISH;

int Find(const std::string& in_name) { return static_cast<int>(ICUUtils::FindEncoding(in_name)); }

int Get(const std::string& in_name) { return static_cast<int>(ICUUtils::GetEncodingEnum(in_name)); }

TEST(ICUUtilsTest, FindsEveryEncodingByItsName) {
    for (std::int32_t value = 0; value < ENCODING_COUNT; ++value) {
        EXPECT_EQ(Find(EncodingInfo::GetName(static_cast<EncodingType>(value))), value);
    }
}

TEST(ICUUtilsTest, FindsNamesInAnyCase) {
    const struct {
        const char* m_name;
        int m_found;
    } cases[] = {
        {"UTF-16LE", 1},
        {"utf-16le", 1},
        {"Utf-8", 0},
        {"LATIN1", 5},
        {"iso_2022,locale=ja,version=1", 17},
        {"ibm-1363_p11b-1998", 112},
        // The twelve further names.
        {"ISO-2022-JP-1", 17},
        {"shift-jis", 18},
        {"ISO-646-IRV", 20},
        {"ISO-2022-KR", 22},
        {"ISO-2022-JP", 24},
        {"ISO-2022-JP-2", 25},
        {"TIS-620", 90},
        {"WINDOWS-949", 111},
        {"IBM-1363", 112},
        {"windows-936", 113},
        {"WINDOWS-950", 115},
        {"JIS_Encoding", -1},
        {"JIS_ENCODING", -1},
        // Not names of the map.
        {"UTF-16", -1},
        {"utf8", -1},
        {"", -1},
        {" UTF-8", -1},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(Find(row.m_name), row.m_found) << row.m_name;
    }
    EXPECT_EQ(Find(std::string("UTF-8\0", 6)), -1);
}

TEST(ICUUtilsTest, NamesAreFoldedAlikeInEveryLocale) {
    // In Turkish the pair of "i" is not "I".
    const TemporaryDirectory directory;
    ASSERT_TRUE(SetLocale(TURKISH, directory.GetPath()));
    EXPECT_EQ(Get("big5"), 39);
    EXPECT_EQ(Get("ibm-1363"), 112);
    std::setlocale(LC_ALL, "C");
}

TEST(ICUUtilsTest, FindsIcuAliases) {
    const struct {
        const char* m_alias;
        int m_value;
    } cases[] = {
        {"UTF-8", 0},       {"utf8", 0},          {"ISO_8859-1:1987", 5}, {"ISO-8859-1", 5},
        {"cp1252", 6},      {"windows-1252", 96}, {"ASCII", 7},           {"ANSI_X3.4-1968", 7},
        {"csISOLatin2", 8}, {"JIS_Encoding", 17}, {"JIS_ENCODING", 17},   {"cp1047", 81},
    };
    for (const auto& row : cases) EXPECT_EQ(Get(row.m_alias), row.m_value) << row.m_alias;
    for (const std::string& name :
         {std::string("x86_UTF16LE"), std::string(), std::string("UTF-8\0", 6),
          std::string("utf8\0x", 6), std::string(100000, 'x'), std::string("\xFF\xFE")}) {
        EXPECT_EQ(ThrownMessage([&] { Get(name); }), "EncodingNotRecog");
    }
}

}  // namespace
}  // namespace Orska::Support
