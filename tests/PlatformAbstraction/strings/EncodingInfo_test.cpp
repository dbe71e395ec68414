#include "PlatformAbstraction/strings/EncodingInfo.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "tests/support/ThrownMessage.h"

namespace Orska::Support {
namespace {

using Test::ThrownMessage;

// Settings and drivers store the numbers, so no entry may move or change.
TEST(EncodingInfoTest, TheTableDoesNotChange) {
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
    for (std::int32_t value = 0; value < ENCODING_COUNT; ++value) {
        const auto encoding = static_cast<EncodingType>(value);
        const std::string entry =
            std::string(EncodingInfo::GetName(encoding)) +
            std::to_string(EncodingInfo::GetCodeUnitWidth(encoding)) +
            std::to_string(EncodingInfo::IsAsciiSuperset(encoding)) +
            std::to_string(EncodingInfo::GetMaxCodeUnitsPerCodePoint(encoding)) + '\n';
        for (const char byte : entry) {
            hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
        }
    }
    EXPECT_EQ(hash, 0xC2A087D83B60FB63U);
    EXPECT_STREQ(EncodingInfo::GetName(EncodingType::ENC_US_ASCII), "US-ASCII");
    EXPECT_STREQ(EncodingInfo::GetName(EncodingType::ENC_IBM5348), "ibm-5348");
}

TEST(EncodingInfoTest, ChecksTheLowSixteenBits) {
    for (const std::int32_t value : {0, 1, 118, 0x10000, 0x10000 + 118}) {
        EXPECT_NO_THROW(EncodingInfo::CheckEncodingType(static_cast<EncodingType>(value)));
    }
    for (const std::int32_t value : {-1, 119, 0xFFFF, 0x10000 + 119}) {
        const auto check = [&] {
            EncodingInfo::CheckEncodingType(static_cast<EncodingType>(value));
        };
        EXPECT_EQ(ThrownMessage(check), "EncodingNotRecog");
    }
    EXPECT_STREQ(EncodingInfo::GetName(static_cast<EncodingType>(0x10000 + 5)), "latin1");
}

TEST(EncodingInfoTest, WorstCases) {
    constexpr std::uint64_t MOST = ~std::uint64_t{0};
    const struct {
        std::uint64_t m_length;
        std::int32_t m_source;
        std::int32_t m_target;
        std::uint64_t m_result;
    } cases[] = {
        {10, 1, 0, 20},              // 4 by 1, divided by 2
        {10, 5, 1, 40},              // latin1 to UTF-16LE: 2 by 2, which is generous
        {10, 5, 3, 40},              // UTF-32: 1 by 4
        {10, 3, 0, 10},              // from UTF-32: 4 divided by 4
        {10, 1, 5, 0},               // latin1: 1 divided by 2
        {MOST / 4, 0, 0, MOST - 3},  //
        {MOST / 4 + 1, 0, 0, EncodingInfo::TOO_LARGE},
        {MOST, 3, 0, MOST},
        {MOST, 1, 5, 0},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::to_string(row.m_length) + " from " + std::to_string(row.m_source) +
                     " to " + std::to_string(row.m_target));
        EXPECT_EQ(EncodingInfo::GetWorstCaseByteCount(row.m_length,
                                                      static_cast<EncodingType>(row.m_source),
                                                      static_cast<EncodingType>(row.m_target)),
                  row.m_result);
    }
    EXPECT_EQ(EncodingInfo::GetWorstCaseCodeUnitCount(7, EncodingType::ENC_UTF8), 28u);
    EXPECT_EQ(EncodingInfo::GetWorstCaseCodeUnitCount(MOST, EncodingType::ENC_LATIN1), MOST);
    EXPECT_EQ(EncodingInfo::GetWorstCaseCodeUnitCount(MOST / 4, EncodingType::ENC_UTF8), MOST - 3);
    EXPECT_EQ(EncodingInfo::GetWorstCaseCodeUnitCount(MOST / 4 + 1, EncodingType::ENC_UTF8),
              EncodingInfo::TOO_LARGE);
}

}  // namespace
}  // namespace Orska::Support
