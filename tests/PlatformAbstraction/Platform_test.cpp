// Counted start-up. Each test runs in its own process.
#include "PlatformAbstraction/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/ucnv.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/ICU/ODBCStringConverter.h"
#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Platform {
namespace {

using Support::EncodingType;
using Support::GetAnsiEncoding;
using Support::GetDriverManagerEncoding;
using Support::orska_wstring;
using Support::OrskaSettingReader;
using Test::SetVariable;
using Test::TemporaryDirectory;
using Test::ThrownMessage;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

template <typename Action>
std::string StderrOf(const Action& in_action) {
    CaptureStderr();
    in_action();
    return GetCapturedStderr();
}

TEST(PlatformStart, CountsStartsAndStops) {
    PlatformInstance* first = InitializePlatform(false);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first->IsStarted());
    EXPECT_EQ(first->GetDefaultLocale().GetAsUtf8(), icu::Locale::getDefault().getName());
    EXPECT_EQ(InitializePlatform(false), first);
    UninitializePlatform();
    EXPECT_EQ(InitializePlatform(false), first);
    UninitializePlatform();
    UninitializePlatform();
    ASSERT_NE(InitializePlatform(false), nullptr);
    UninitializePlatform();
}

TEST(PlatformStart, InstallsTheConverterWhileItIsStarted) {
    EXPECT_EQ(Support::GetPlatformStringConverter(), nullptr);
    orska_wstring kept;
    {
        const PlatformGuard platform;
        const auto* const converter = &platform.GetInstance().GetStringConverter();
        EXPECT_EQ(Support::GetPlatformStringConverter(), converter);
        { const PlatformGuard second; }
        EXPECT_EQ(Support::GetPlatformStringConverter(), converter);
        Support::ODBCStringConverter forManager(platform);
        EXPECT_EQ(forManager.GetLengthAsSQLWCHARString(orska_wstring("ab"), true), 4);
        kept = "a string outlives the platform";
    }
    EXPECT_EQ(Support::GetPlatformStringConverter(), nullptr);
    EXPECT_EQ(kept.GetAsAnsiString(), "a string outlives the platform");
}

constexpr char SETTING_LINES[] =
    "orska_wstring::InitializeAnsiEncoding()\n"
    "OrskaSettingReader::GetAppCharEncoding()\n"
    "OrskaSettingReader::GetDriverManagerEncoding()\n"
    "DriverManagerEncoding setting not loaded, using default: UTF-16_LE.\n"
    "orska_wstring::SetDriverManagerEncoding()\n";

TEST(PlatformStart, WritesTheVerboseTrace) {
    EXPECT_EQ(StderrOf([] { InitializePlatform(true); }),
              std::string("Entering Orska::Platform::InitializePlatform(true) with s_initCount "
                          "==0.\n") +
                  SETTING_LINES);
    EXPECT_EQ(StderrOf([] { InitializePlatform(true); }),
              "Entering Orska::Platform::InitializePlatform(true) with s_initCount ==1.\n");
    EXPECT_EQ(StderrOf([] { InitializePlatform(false); }), "");
    EXPECT_EQ(StderrOf([] { TraceVerbose("a line"); }), "a line\n");
    EXPECT_EQ(StderrOf([] { UninitializePlatform(); }),
              "Entering Orska::Platform::UninitializePlatform() with s_initCount ==3.\n");
}

TEST(PlatformStart, VerbosityOnceOnStaysOnAndSurvivesTheStop) {
    EXPECT_EQ(StderrOf([] {
                  InitializePlatform(false);
                  TraceVerbose("not written");
              }),
              "");
    StderrOf([] { InitializePlatform(true); });
    InitializePlatform(false);
    const auto stop = [] {
        UninitializePlatform();
        UninitializePlatform();
        UninitializePlatform();
    };
    StderrOf(stop);
    EXPECT_EQ(StderrOf([] { TraceVerbose("still"); }), "still\n");
    // The first start sets it to the argument.
    EXPECT_EQ(StderrOf([] { InitializePlatform(false); }), "");
    EXPECT_EQ(StderrOf([] { SetVerbose(true), TraceVerbose("on"); }), "on\n");
    EXPECT_EQ(StderrOf([] { SetVerbose(false), TraceVerbose("off"); }), "");
}

TEST(PlatformStart, AStopTooManyWrapsTheCount) {
    SetVerbose(true);
    EXPECT_EQ(StderrOf([] { UninitializePlatform(); }),
              "Entering Orska::Platform::UninitializePlatform() with s_initCount ==0.\n");
    EXPECT_EQ(StderrOf([] { EXPECT_EQ(InitializePlatform(true), nullptr); }),
              "Entering Orska::Platform::InitializePlatform(true) with s_initCount "
              "==4294967295.\n");
    SetVerbose(false);
    EXPECT_NE(InitializePlatform(false), nullptr);
}

TEST(PlatformStart, WithoutSettingsTheEncodingsAreTheDefaults) {
    InitializePlatform(false);
    EXPECT_EQ(GetAnsiEncoding(), Support::ICUUtils::GetEncodingEnum(ucnv_getDefaultName()));
    EXPECT_EQ(GetDriverManagerEncoding(), EncodingType::ENC_UTF16LE);
    UninitializePlatform();
    SetVariable("ORSKA_APP_ANSI_ENCODING", "latin1");
    InitializePlatform(false);
    EXPECT_EQ(GetAnsiEncoding(), EncodingType::ENC_LATIN1);
}

TEST(PlatformStart, ReadsTheEncodingsFromTheSettings) {
    const TemporaryDirectory directory;
    OrskaSettingReader::Initialize(
        directory.Write("x.ini", "[S]\nANSIEncoding=cp1252\nDriverManagerEncoding=UTF-32\n"), L"K",
        L"S");
    EXPECT_EQ(GetAnsiEncoding(), EncodingType::ENC_UTF8);
    InitializePlatform(false);
    EXPECT_EQ(GetAnsiEncoding(), EncodingType::ENC_CP1252);
    EXPECT_EQ(GetDriverManagerEncoding(), EncodingType::ENC_UTF32LE);
    EXPECT_EQ(orska_wstring("\x80"), L"\u20AC");
}

/// Reads settings in a process that was started with an encoding.
class StartedIn : public testing::TestWithParam<const char*> {};

TEST_P(StartedIn, KeepsEverySetting) {
    const TemporaryDirectory directory;
    OrskaSettingReader::Initialize(
        directory.Write("x.ini", "[S]\nLogLevel=5\nLogPath=/gr\u00FCn\nErrorMessagesPath=m\n"),
        L"K", L"S");
    SetVariable("ORSKA_APP_ANSI_ENCODING", GetParam());
    InitializePlatform(false);
    EXPECT_NE(GetAnsiEncoding(), EncodingType::ENC_UTF8);
    EXPECT_EQ(OrskaSettingReader::GetLogLevel(), "5");
    EXPECT_EQ(OrskaSettingReader::GetLogPath(), "/gr\u00FCn\\");
    EXPECT_EQ(OrskaSettingReader::GetErrorMessagesPath("C:\\drv"), "C:\\drv\\m\\");
    OrskaSettingReader::SetErrorMessagesPath("C:\\m");
    EXPECT_EQ(OrskaSettingReader::GetErrorMessagesPath("C:\\drv"), "C:\\m\\");
    EXPECT_THAT(OrskaSettingReader::GetSwapFilePath(), testing::HasSubstr("m"));
}

TEST_P(StartedIn, ReadsSourcesThatAreNamedLater) {
    SetVariable("ORSKA_APP_ANSI_ENCODING", GetParam());
    InitializePlatform(false);
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x.ini", "[S]\nLogLevel=5\n");
    OrskaSettingReader::Initialize(orska_wstring().SetFromUtf8(path), L"K", L"S");
    EXPECT_EQ(OrskaSettingReader::GetLogLevel(), "5");
}

INSTANTIATE_TEST_SUITE_P(Encodings, StartedIn,
                         testing::Values("UTF-16", "UTF-32", "IBM037", "US-ASCII"),
                         [](const auto& in_info) { return std::to_string(in_info.index); });

TEST(PlatformStart, TwoThreadsMaySetVerbosity) {
    const auto toggle = [] {
        for (int i = 0; i < 1000; ++i) SetVerbose(i % 2 == 0);
    };
    std::thread other(toggle);
    toggle();
    other.join();
    EXPECT_EQ(StderrOf([] { TraceVerbose("off"); }), "");
}

TEST(PlatformStart, AnInvalidSettingLeavesItStopped) {
    const TemporaryDirectory directory;
    OrskaSettingReader::Initialize(
        directory.Write("x.ini", "[S]\nANSIEncoding=cp1252\nDriverManagerEncoding=utf-8\n"), L"K",
        L"S");
    EXPECT_EQ(ThrownMessage<Support::StartupInitException>([] { InitializePlatform(false); }),
              "DriverManagerEncoding setting is not a legal encoding.");
    EXPECT_EQ(Support::GetPlatformStringConverter(), nullptr);
    EXPECT_EQ(GetAnsiEncoding(), EncodingType::ENC_UTF8);
    EXPECT_EQ(GetDriverManagerEncoding(), EncodingType::ENC_UTF16LE);
    OrskaSettingReader::SetSetting("DriverManagerEncoding", "UTF-8");
    EXPECT_THAT(StderrOf([] { EXPECT_NE(InitializePlatform(true), nullptr); }),
                testing::HasSubstr("InitializePlatform(true) with s_initCount ==0.\n"));
    EXPECT_EQ(GetDriverManagerEncoding(), EncodingType::ENC_UTF8);
}

}  // namespace
}  // namespace Orska::Platform
