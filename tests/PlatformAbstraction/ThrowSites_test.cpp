// The trace lines of throw sites, which people search for: function, line, text and source name.
// Sites that need a file or a setting are tested with their classes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/ILogger.h"
#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Orska::Support;
using Orska::Test::TraceCapture;
using testing::ElementsAre;

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
        {[] { orska_wstring(u"text").RegexReplace(u"(", u""); },
         "`anonymous-namespace'::CheckForICUError:0\tThrowing: "
         "ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L\"ICURegexError\", msgParams) "
         "orska_wstring"},
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

class SilentLogger : public ILogger {
public:
    explicit SilentLogger(std::int32_t in_level) : m_level(in_level) {}
    std::int32_t GetLogLevel() override { return m_level; }
    void LogError(const char*, const char*, const char*, const char*, ...) override {}
    void LogErrorException(const char*, const char*, const char*, const ErrorException&) override {}

private:
    std::int32_t m_level;
};

template <class Exception>
std::vector<std::string> LinesOfLogging(const Exception& in_exception, std::int32_t in_level = 2) {
    const TraceCapture trace;
    SilentLogger logger(in_level);
    try {
        throw in_exception;
    } catch (...) {
        ErrorException::LogCurrentException(&logger, "n", "c", "f");
    }
    return trace.GetLines();
}

TEST(LogCurrentException, WritesOneTraceLine) {
    const std::string start = "Orska::Support::ErrorException::LogCurrentException:0\t";
    const ErrorException error(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"InvalidNullParam");
    EXPECT_THAT(LinesOfLogging(error),
                ElementsAre(start + "Exception: Unformatted ErrorException: {MessageKey="
                                    "\"InvalidNullParam\" ComponentID=3' RowNumber=UNKNOWN "
                                    "ColumnNumber=UNKNOWN DiagState=63} ErrorException"));
    EXPECT_THAT(LinesOfLogging(std::string("100 %s")),
                ElementsAre(start + "100 %s ErrorException"));
    EXPECT_THAT(LinesOfLogging(3), ElementsAre(start + "Unknown exception. ErrorException"));
    EXPECT_THAT(LinesOfLogging(error, 1), ElementsAre());
}

}  // namespace
