// The trace lines of throw sites, which people search for: function, line, text and source name.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "PlatformAbstraction/files/TextFile.h"
#include "PlatformAbstraction/numbers/NumberConverter.h"
#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace Orska::Support;
using Orska::Test::TraceCapture;

template <class T>
void ReadInteger(const char* in_text) {
    NumberConverter::StringToInteger<T>(in_text, true);
}

void ReadEncoding(const char* in_key, EncodingType (*in_get)()) {
    OrskaSettingReader::Initialize(L"Veltrane", L"Driver");
    OrskaSettingReader::SetSetting(in_key, "bad");
    in_get();
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
        {[] { FileSystemUtils::CreateFileDirectory(L"missing/a/b"); },
         "Orska::Support::FileSystemUtils::CreateFileDirectory:0\tThrowing: "
         "ProductException((L\"CannotOpenFile\"), msgParams) FileSystemUtils_Windows"},
        {[] { TextFile file(L"missing/x", 1); },
         "Orska::Support::TextFile::TextFile:144\tThrowing: "
         "ProductException((L\"CannotOpenFile\"), msgParams) TextFile_Windows"},
        {[] { TextFile file(L"x", 7); },
         "GetModeDword:86\tThrowing: ProductException(L\"UnrecognizedOpenMode\") "
         "TextFile_Windows"},
        {[] { ReadEncoding("ANSIEncoding", OrskaSettingReader::GetAppCharEncoding); },
         "Orska::Support::OrskaSettingReader::GetAppCharEncoding:236\tThrowing: "
         "StartupInitException(\"ANSIEncoding setting is not a legal encoding.\") "
         "OrskaSettingReader_Windows"},
        {[] {
             ReadEncoding("DriverManagerEncoding", OrskaSettingReader::GetDriverManagerEncoding);
         },
         "Orska::Support::OrskaSettingReader::GetDriverManagerEncoding:186\tThrowing: "
         "StartupInitException(\"DriverManagerEncoding setting is not a legal encoding.\") "
         "OrskaSettingReader_Windows"},
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
