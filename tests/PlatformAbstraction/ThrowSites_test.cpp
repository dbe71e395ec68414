// The trace lines of throw sites, which people search for: function, line, text and source name.
// The tests of each class cover sites that need a file or a setting.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Orska::Support;
using Orska::Test::TraceCapture;

template <class T>
void ReadInteger(const char* in_text) {
    NumberConverter::StringToInteger<T>(in_text, true);
}

TEST(ThrowSites, TheLastLineBeforeTheThrow) {
    const struct {
        void (*m_throw)();
        const char* m_line;
    } rows[] = {
        {[] { EncodingInfo::CheckEncodingType(EncodingType::ENC_NONE); },
         "Orska::Support::EncodingInfo::CheckEncodingType:0\tThrowing: "
         "ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L\"EncodingNotRecog\") EncodingInfo"},
        {[] { ICUUtils::GetEncodingEnum("no such encoding"); },
         "Orska::Support::ICUUtils::GetEncodingEnum:0\tThrowing: "
         "ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L\"EncodingNotRecog\") ICUUtils"},
        {[] { ReadInteger<std::int32_t>("12x"); },
         "Orska::Support::StringToInteger:0\tThrowing: "
         "NumberConversionInvalidDataException((L\"StrToNumConvFailed\"), msgParams) "
         "NumberConverter"},
        {[] { ReadInteger<std::int8_t>("128"); },
         "Orska::Support::StringToInteger:0\tThrowing: "
         "NumberConversionOutOfRangeException((L\"StrToNumConvFailedOverflow\"), msgParams) "
         "NumberConverter"},
        {[] { ReadInteger<std::int8_t>("-129"); },
         "Orska::Support::StringToInteger:0\tThrowing: "
         "NumberConversionOutOfRangeException((L\"StrToNumConvFailedUnderflow\"), msgParams) "
         "NumberConverter"},
        {[] { ReadInteger<std::uint8_t>("-1"); },
         "Orska::Support::StringToInteger:0\tThrowing: "
         "NumberConversionOutOfRangeException((L\"StrToNumConvFailedUnsigned\"), msgParams) "
         "NumberConverter"},
        {[] { NumberConverter::ConvertStringToFloatingPoint<double>("x", 1, true); },
         "Orska::Support::NumberConverter::ConvertStringToFloatingPoint:0\tThrowing: "
         "NumberConversionInvalidDataException((L\"StrToNumConvFailed\"), msgParams) "
         "NumberConverter"},
        {[] {
             char buffer[19];
             NumberConverter::CopyMinimumIntToBuffer(sizeof buffer, buffer);
         },
         "Orska::Support::CopyMinimumIntToBuffer:0\tThrowing: "
         "NumberConversionInvalidDataException((L\"StrToNumConvFailed\"), msgParams) "
         "NumberConverter"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_line);
        const TraceCapture trace;
        EXPECT_THROW(row.m_throw(), ErrorException);
        const std::vector<std::string> lines = trace.GetLines();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), row.m_line);
    }
}

TEST(ThrowSites, IntegerToTextFailsWithoutALine) {
    const TraceCapture trace;
    char buffer[2];
    EXPECT_THROW(NumberConverter::IntegerToBufferChecked<std::int32_t>(-12, sizeof buffer, buffer),
                 NumberConversionInvalidDataException);
    EXPECT_EQ(trace.GetText(), "");
}

}  // namespace
