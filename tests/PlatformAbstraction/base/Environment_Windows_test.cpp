// Variables that the host sets after its C library has copied the environment.
#include <gtest/gtest.h>

#include "PlatformAbstraction/base/Environment.h"
#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "tools/WindowsApi.h"

namespace Orska::Support {
namespace {

TEST(Environment, IsTheSystemsCurrentValue) {
    SetEnvironmentVariableW(L"ORSKA_APP_ANSI_ENCODING", L"cp1252");
    EXPECT_EQ(OrskaSettingReader::GetAppCharEncoding(), EncodingType::ENC_CP1252);
    const std::wstring longText(100, L'\x65E5');
    SetEnvironmentVariableW(L"ORSKA_APP_ANSI_ENCODING", longText.c_str());
    EXPECT_EQ(GetEnvironment("ORSKA_APP_ANSI_ENCODING")->size(), 300u);
    SetEnvironmentVariableW(L"ORSKA_APP_ANSI_ENCODING", nullptr);
    EXPECT_EQ(GetEnvironment("ORSKA_APP_ANSI_ENCODING"), std::nullopt);
    SetEnvironmentVariableW(L"ORSKA_\x65E5", L"x");
    EXPECT_EQ(GetEnvironment("ORSKA_\u65E5"), "x");
}

}  // namespace
}  // namespace Orska::Support
