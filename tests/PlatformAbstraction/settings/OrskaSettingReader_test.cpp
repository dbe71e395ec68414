// The setting table, on INI files. Each test runs in its own process.
#include "PlatformAbstraction/settings/OrskaSettingReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "PlatformAbstraction/Platform.h"
#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "PlatformAbstraction/settings/ISettingListener.h"
#include "PlatformAbstraction/settings/SettingKeys.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tests/support/ThrownMessage.h"

namespace Orska::Support {
namespace {

using namespace std::string_literals;
using Reader = OrskaSettingReader;
using Test::SetVariable;
using Test::TEMPORARY_DIRECTORY_VARIABLE;
using Test::TemporaryDirectory;
using Test::ThrownMessage;
using testing::ElementsAre;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

void InitializeWithoutSources() { Reader::Initialize(L"Veltrane", L"Driver"); }

class SettingReader : public testing::Test {
protected:
    void InitializeWith(const std::string& in_settings) {
        Reader::Initialize(m_directory.Write("driver.ini", "[Driver]\n" + in_settings), L"Veltrane",
                           L"Driver");
    }

    TemporaryDirectory m_directory;
};

/// Records each change and then runs the test's action.
class Listener : public ISettingListener {
public:
    explicit Listener(const char* in_name, std::vector<std::string>& out_notes,
                      std::function<void()> in_then = {})
        : m_name(in_name), m_notes(out_notes), m_then(std::move(in_then)) {}

    void OnSettingChanged(const std::string& in_key, const std::string& in_oldValue,
                          const std::string& in_newValue) override {
        m_notes.push_back(m_name + " " + in_key + ":" + in_oldValue + ">" + in_newValue);
        if (m_then) {
            m_then();
        }
    }

private:
    std::string m_name;
    std::vector<std::string>& m_notes;
    std::function<void()> m_then;
};

TEST_F(SettingReader, DefaultsWithoutAnySource) {
    InitializeWithoutSources();
    std::string scratch = std::filesystem::temp_directory_path().string();
    scratch.erase(scratch.find_last_not_of("/\\") + 1);
    SetVariable(TEMPORARY_DIRECTORY_VARIABLE, (scratch + "/").c_str());
    EXPECT_EQ(Reader::GetLogPath(), ".\\");
    EXPECT_EQ(Reader::GetDriverLocale(), "en-US");
    EXPECT_FALSE(Reader::GetTraceToStdErr());
    EXPECT_EQ(Reader::GetAppCharEncoding(), EncodingType::ENC_NONE);
    EXPECT_EQ(Reader::GetDriverManagerEncoding(), EncodingType::ENC_UTF16LE);
    EXPECT_EQ(Reader::GetErrorMessagesPath("C:\\drv"), "C:\\drv\\");
    EXPECT_EQ(Reader::GetErrorMessagesPath(""), "");
    EXPECT_EQ(Reader::GetConfigErrorMessagesPath(), "");
    EXPECT_EQ(Reader::GetSwapFilePath(), scratch + "\\");
    EXPECT_EQ(Reader::GetODBCInstLib(), std::nullopt);
    EXPECT_EQ(Reader::GetLogLevel(), "");
    EXPECT_EQ(Reader::GetSetting("anything"), "");
    SetVariable(TEMPORARY_DIRECTORY_VARIABLE, std::string(260, 'x').c_str());
    EXPECT_EQ(Reader::GetSwapFilePath(), ".\\");
}

const struct {
    const char* m_key;
    std::string (*m_get)();                       // null: tested with its rule
    void (*m_set)(const std::string&) = nullptr;  // null: there is none
    const char* m_ending = "";                    // of the result
} SETTINGS[] = {
    {"CONFIGERRORMESSAGESPATH", Reader::GetConfigErrorMessagesPath, nullptr, "\\"},
    {"DriverLocale", Reader::GetDriverLocale, Reader::SetDriverLocale},
    {"EncryptSwapFile", Reader::GetEncryptSwapFile},
    {"ERRORMESSAGESPATH", nullptr, Reader::SetErrorMessagesPath},
    {"LogFileCount", Reader::GetLogFileCount, Reader::SetLogFileCount},
    {"LogFileSize", Reader::GetLogFileSize, Reader::SetLogFileSize},
    {"LogLevel", Reader::GetLogLevel, Reader::SetLogLevel},
    {"LogNamespace", Reader::GetLogNamespace, Reader::SetLogNamespace},
    {"LogPath", Reader::GetLogPath, Reader::SetLogPath, "\\"},
    {"LogType", Reader::GetLogType, Reader::SetLogType},
    {"MemoryManagerMemoryLimit", Reader::GetMemoryManagerMemoryLimit},
    {"MemoryManagerStrategy", Reader::GetMemoryManagerStrategy},
    {"MemoryManagerSwapDiskLimit", Reader::GetMemoryManagerSwapDiskLimit},
    {"MemoryManagerThresholdPercent", Reader::GetMemoryManagerThresholdPercent},
    {"ODBCInstLib", [] { return Reader::GetODBCInstLib().value_or("none"); },
     Reader::SetODBCInstLib},
    {"ServiceName", Reader::GetServiceName, Reader::SetServiceName},
    {"SWAPFILEPATH", Reader::GetSwapFilePath, Reader::SetSwapFilePath, "\\"},
};

TEST_F(SettingReader, ReadsAndStoresEveryKnownKey) {
    std::string file = "DRIVER=kept\n";
    for (const auto& row : SETTINGS) {
        file += row.m_key + "=/file "s + row.m_key + "\n";
    }
    InitializeWith(file);
    for (const auto& row : SETTINGS) {
        SCOPED_TRACE(row.m_key);
        if (row.m_get != nullptr) {
            EXPECT_EQ(row.m_get(), "/file "s + row.m_key + row.m_ending);
        }
        if (row.m_set == nullptr) continue;
        row.m_set("/set "s + row.m_key);
        EXPECT_EQ(Reader::GetSetting(row.m_key), "/set "s + row.m_key);
    }
    EXPECT_EQ(Reader::GetSetting("Driver"), "kept");
}

TEST_F(SettingReader, Paths) {
    InitializeWithoutSources();
    struct Case {
        const char* m_value;
        const char* m_logPath;
        std::string m_messagesPath;  // with the default directory C:\drv
    };
    const std::string joinedToSlash = FileSystemUtils::IsRelative(L"/") ? "C:\\drv\\" : "";
    const Case cases[] = {
        {"", ".\\", "C:\\drv\\"},
        {"C:/logs/", "C:/logs\\", "C:/logs\\"},
        {"C:\\logs", "C:\\logs\\", "C:\\logs\\"},
        {"C:\\logs\\", "C:\\logs\\", "C:\\logs\\"},
        {"/var/log", "/var/log\\", joinedToSlash + "/var/log\\"},
        {".\\msgs", ".\\msgs\\", "C:\\drv\\.\\msgs\\"},
        {"msgs/", "msgs\\", "C:\\drv\\msgs\\"},
        {"../x", "../x\\", "C:\\drv\\../x\\"},
        {"/", "\\", joinedToSlash + "\\"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.m_value);
        Reader::SetLogPath(row.m_value);
        Reader::SetErrorMessagesPath(row.m_value);
        EXPECT_EQ(Reader::GetLogPath(), row.m_logPath);
        EXPECT_EQ(Reader::GetErrorMessagesPath("C:\\drv"), row.m_messagesPath);
    }
}

TEST_F(SettingReader, TraceToStandardErrorOnlyForOne) {
    InitializeWithoutSources();
    for (const char* value : {"0", "true", "11", "", " 1", "1"}) {
        Reader::SetSetting(SETTING_TRACE_TO_STD_ERR, value);
        EXPECT_EQ(Reader::GetTraceToStdErr(), value == "1"s) << value;
    }
}

TEST_F(SettingReader, KeysIgnoreTheCaseOfAsciiLetters) {
    InitializeWith("Mixed=1\n\xC3\xA4=2\n");
    EXPECT_EQ(Reader::GetSetting("mIXED"), "1");
    EXPECT_EQ(Reader::GetSetting("\xC3\xA4"), "2");
    EXPECT_EQ(Reader::GetSetting("\xC3\x84"), "");
    EXPECT_EQ(Reader::GetSetting("Mixe"), "");
    EXPECT_EQ(Reader::GetSetting("Mixed1"), "");
    Reader::SetSetting("MIXED", "3");
    EXPECT_EQ(Reader::GetSetting("mixed"), "3");
    Reader::SetSetting("a_b", "4");  // "_" is between the upper-case and the lower-case letters
    Reader::SetSetting("aAb", "5");
    EXPECT_EQ(Reader::GetSetting("A_B"), "4");
    EXPECT_EQ(Reader::GetSetting("AAB"), "5");
}

TEST_F(SettingReader, LoadsOnceAndNeverAgain) {
    InitializeWithoutSources();
    EXPECT_EQ(Reader::GetLogLevel(), "");
    Reader::SetRegistryKeyName(L"Other");
    Reader::SetIniFilePath(m_directory.Write("driver.ini", "[Driver]\nLogLevel=5\n"));
    InitializeWith("LogLevel=4\n");
    EXPECT_EQ(Reader::GetLogLevel(), "");
}

TEST_F(SettingReader, TheSourcesCanChangeBeforeTheFirstRead) {
    class Observer : public ISettingChangeObserver {
    public:
        void OnSettingSourceChanged() override {
            m_seen.push_back(Reader::GetIniFilePath().GetAsUtf8() + "|" +
                             Reader::GetRegistryKeyName().GetAsUtf8());
        }
        std::vector<std::string> m_seen;
    } observer;
    InitializeWithoutSources();
    Reader::Initialize(L"second.ini", L"Second", L"Second");
    EXPECT_EQ(Reader::GetIniFilePath(), L"");
    EXPECT_EQ(Reader::GetRegistryKeyName(), L"Veltrane");
    Reader::SetRegistryKeyName(L"unobserved");
    Reader::SetChangeObserver(&observer);
    Reader::SetRegistryKeyName(L"Key");
    Reader::SetIniFilePath(L"x.ini");
    EXPECT_THAT(observer.m_seen, ElementsAre("|Key", "x.ini|Key"));
    Reader::SetChangeObserver(nullptr);
    Reader::SetIniFilePath(m_directory.Write("driver.ini", "[Driver]\nLogLevel=5\n"));
    EXPECT_EQ(observer.m_seen.size(), 2u);
    EXPECT_EQ(Reader::GetLogLevel(), "5");
}

TEST_F(SettingReader, AFirstReadThatFailsIsTriedAgain) {
    const std::string path = m_directory.Write("driver.ini", "[Driver]\nDriverLocale=fr\nbad\n");
    const std::string error = "IniParseError(" + path + ", 3)";
    Reader::Initialize(path, L"Veltrane", L"Driver");
    EXPECT_EQ(Reader::GetDriverLocale(), "en-US");
    EXPECT_EQ(Reader::GetAppCharEncoding(), EncodingType::ENC_NONE);
    EXPECT_EQ(Reader::GetDriverManagerEncoding(), EncodingType::ENC_UTF16LE);
    EXPECT_EQ(ThrownMessage([] { Reader::GetSetting("x"); }), error);
    EXPECT_EQ(ThrownMessage([] { Reader::GetLogPath(); }), error);
    EXPECT_EQ(ThrownMessage([] { Reader::GetODBCInstLib(); }), error);
    EXPECT_EQ(ThrownMessage([] { Reader::GetTraceToStdErr(); }), error);
    m_directory.Write("driver.ini", "[Driver]\nDriverLocale=fr\n");
    EXPECT_EQ(Reader::GetDriverLocale(), "fr");
}

/// The encoding's number, or the error.
std::string NameEncoding(EncodingType (*in_get)()) {
    std::string text;
    const std::string thrown = ThrownMessage<StartupInitException>(
        [&] { text = std::to_string(static_cast<int>(in_get())); });
    return thrown == "nothing" ? text : thrown;
}

TEST_F(SettingReader, Encodings) {
    InitializeWithoutSources();
    const struct {
        bool m_isForManager;
        const char* m_environment;  // null: not set
        const char* m_setting;
        const char* m_encoding;
    } cases[] = {
        {false, nullptr, "", "-1"},
        {false, nullptr, "UTF-16", "1"},
        {false, nullptr, "UTF-32", "3"},
        {false, nullptr, "utf-16le", "1"},
        {false, nullptr, "ISO-8859-1", "5"},
        {false, nullptr, "nonsense", "refused"},
        {false, nullptr, "UTF-16 ", "refused"},
        {false, "UTF-32", "cp1252", "3"},
        {false, "", "cp1252", "-1"},
        {false, "UTF-8", "nonsense", "0"},
        {false, "nonsense", "UTF-16", "refused"},
        {true, "UTF-8", "", "1"},  // the variable has no effect here
        {true, nullptr, "UTF-8", "0"},
        {true, "UTF-8", "UTF-16", "1"},
        {true, nullptr, "UTF-32", "3"},
        {true, nullptr, "utf-16", "refused"},
        {true, nullptr, "cp1252", "refused"},
        {true, nullptr, "UTF-8 ", "refused"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_setting);
        SetVariable(ENVIRONMENT_ANSI_ENCODING, row.m_environment);
        if (row.m_environment != nullptr && std::getenv(ENVIRONMENT_ANSI_ENCODING) == nullptr) {
            continue;  // this system has no empty variables
        }
        const std::string name = row.m_isForManager ? "DriverManagerEncoding" : "ANSIEncoding";
        Reader::SetSetting(name, row.m_setting);
        const bool isRefused = row.m_encoding == "refused"s;
        EXPECT_EQ(NameEncoding(row.m_isForManager ? Reader::GetDriverManagerEncoding
                                                  : Reader::GetAppCharEncoding),
                  isRefused ? name + " setting is not a legal encoding." : row.m_encoding);
    }
}

TEST_F(SettingReader, WritesItsVerboseLines) {
    InitializeWithoutSources();
    Platform::SetVerbose(true);
    Reader::SetSetting("AnsiEncoding", "bad");
    Reader::SetSetting("DriverManagerEncoding", "bad");
    CaptureStderr();
    ThrownMessage([] { Reader::GetAppCharEncoding(); });
    ThrownMessage([] { Reader::GetDriverManagerEncoding(); });
    EXPECT_EQ(GetCapturedStderr(),
              "OrskaSettingReader::GetAppCharEncoding()\n"
              "ANSIEncoding setting is not a legal encoding.\n"
              "OrskaSettingReader::GetDriverManagerEncoding()\n"
              "DriverManagerEncoding setting is not a legal encoding.\n");
}

TEST_F(SettingReader, ListenersHearChangesBeforeTheyAreStored) {
    std::vector<std::string> notes;
    InitializeWith("LogLevel=3\nLogType=t\n");
    Listener first("first", notes, [&] { notes.push_back("was " + Reader::GetLogLevel()); });
    Listener second("second", notes);
    Reader::RegisterListener(&first, "LogLevel");
    Reader::RegisterListener(&second, "LOGLEVEL");
    Reader::RegisterListener(&second, "unset");
    EXPECT_EQ(Reader::GetSetting("unset"), "");
    EXPECT_THAT(notes, ElementsAre("first LOGLEVEL:>3", "was ", "second LOGLEVEL:>3"));
    notes.clear();
    Reader::SetLogLevel("3");
    EXPECT_TRUE(notes.empty());
    Reader::SetLogLevel("4");
    Reader::SetSetting("Unset", "x");
    EXPECT_THAT(notes, ElementsAre("first LogLevel:3>4", "was 3", "second LogLevel:3>4",
                                   "second Unset:>x"));
}

TEST_F(SettingReader, UnregisteringPutsTheLastInTheGap) {
    std::vector<std::string> notes;
    InitializeWithoutSources();
    Listener a("a", notes), b("b", notes), c("c", notes), d("d", notes);
    for (Listener* listener : {&a, &b, &c, &d}) {
        Reader::RegisterListener(listener, "K");
    }
    Reader::UnregisterListener(&a, "k");
    Reader::SetSetting("K", "1");
    EXPECT_THAT(notes, ElementsAre("d K:>1", "b K:>1", "c K:>1"));
    notes.clear();
    Reader::UnregisterListener(&c, "K");
    Reader::RegisterListener(&a, "K");
    Reader::SetSetting("K", "2");
    EXPECT_THAT(notes, ElementsAre("d K:1>2", "b K:1>2", "a K:1>2"));
}

TEST_F(SettingReader, ListenersMayChangeTheListAndOtherSettings) {
    std::vector<std::string> notes;
    InitializeWithoutSources();
    Listener late("late", notes);
    Listener removed("removed", notes);
    Listener self("self", notes, [&] {
        Reader::UnregisterListener(&self, "K");
        Reader::UnregisterListener(&removed, "K");
        Reader::RegisterListener(&late, "K");
        Reader::SetSetting("Other", "o");
    });
    Listener last("last", notes);
    Reader::RegisterListener(&self, "K");
    Reader::RegisterListener(&removed, "K");
    Reader::RegisterListener(&last, "K");
    Reader::RegisterListener(&last, "Other");
    Reader::SetSetting("K", "1");
    EXPECT_THAT(notes, ElementsAre("self K:>1", "last Other:>o", "last K:>1"));
    notes.clear();
    Reader::SetSetting("K", "2");
    EXPECT_THAT(notes, ElementsAre("last K:1>2", "late K:1>2"));
}

TEST_F(SettingReader, AListenerThatThrowsKeepsTheOldValue) {
    std::vector<std::string> notes;
    InitializeWith("A=1\nK=2\n");
    bool throws = true;
    Listener listener("l", notes, [&] {
        if (throws) {
            throw ProductException(L"refused");
        }
    });
    Reader::RegisterListener(&listener, "K");
    EXPECT_EQ(ThrownMessage([] { Reader::GetSetting("A"); }), "refused");
    throws = false;
    EXPECT_EQ(Reader::GetSetting("K"), "2");  // the first load failed, so it is loaded again
    throws = true;
    EXPECT_EQ(ThrownMessage([] { Reader::SetSetting("K", "3"); }), "refused");
    EXPECT_EQ(Reader::GetSetting("K"), "2");
}

TEST(SettingReaderDeathTest, StopsOnBrokenRules) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const std::string start =
        "^orska_abort\\(\\) called from PlatformAbstraction\\\\OrskaSettingReader_Windows:";
    std::vector<std::string> notes;
    Listener listener("l", notes);
    EXPECT_DEATH(Reader::GetLogLevel(), "OrskaSettingReader::Initialize has not been called\\.$");
    EXPECT_DEATH(Reader::GetDriverLocale(), "Initialize has not been called\\.$");
    InitializeWithoutSources();
    EXPECT_DEATH(Reader::UnregisterListener(&listener, "K"),
                 start +
                     "673 for reason: Attempted to unregister <Listener, Key> combination which "
                     "wasn't registered\\. \\(No listeners on that key\\)$");
    Reader::RegisterListener(&listener, "K");
    Reader::RegisterListener(&listener, "another key");
    EXPECT_DEATH(Reader::RegisterListener(&listener, "k"),
                 start +
                     "656 for reason: Attempted to register same <Listener, Key> combination "
                     "twice\\.$");
    Reader::UnregisterListener(&listener, "K");
    EXPECT_DEATH(Reader::UnregisterListener(&listener, "K"),
                 start +
                     "681 for reason: Attempted to unregister <Listener, Key> combination which "
                     "wasn't registered\\.$");
}

TEST_F(SettingReader, ThreadsReadSetAndListenTogether) {
    constexpr int ROUNDS = 300;
    InitializeWith("Shared=start\n");
    std::vector<std::string> notes;
    Listener counter("c", notes);  // called with the lock held, so it needs none
    Reader::RegisterListener(&counter, "Shared");
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([number] {
            std::vector<std::string> own;
            Listener listener("l", own);
            for (int round = 0; round < ROUNDS; ++round) {
                Reader::Initialize(L"", L"");
                Reader::RegisterListener(&listener, "Shared");
                EXPECT_NE(Reader::GetSetting("shared"), "");
                Reader::SetSetting("Shared", std::to_string(number * ROUNDS + round));
                Reader::GetDriverManagerEncoding();
                Reader::UnregisterListener(&listener, "Shared");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(notes.size(), 4u * ROUNDS + 1);  // and the load; all values differ
}

}  // namespace
}  // namespace Orska::Support
