// The INI file beside the library, and cancelled threads, on Linux.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "PlatformAbstraction/files/TextFile.h"
#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "tests/PlatformAbstraction/settings/OwnIniProbe.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

/// AddressSanitizer reports its own signal stack when a thread is cancelled.
extern "C" const char* __asan_default_options() { return "use_sigaltstack=0"; }

namespace Orska::Support {
namespace {

using Test::RunInProcesses;
using Test::TemporaryDirectory;

/// Two directories with an INI file each. The tests copy their module or program into the first.
class OwnIniFile : public testing::Test {
protected:
    OwnIniFile() {
        m_own.Write("own.ini", "[Driver]\nfrom=own\n");
        m_stranger.Write("own.ini", "[Driver]\nfrom=stranger\n");
    }

    const TemporaryDirectory m_own;
    const TemporaryDirectory m_stranger;
};

TEST_F(OwnIniFile, IsTheOneBesideALibraryLoadedByARelativeName) {
    std::filesystem::copy_file(OWN_INI_MODULE, m_own.GetPath("module.so"));
    ASSERT_EQ(chdir(m_own.GetPath().c_str()), 0);
    void* const module = dlopen("./module.so", RTLD_NOW);
    ASSERT_NE(module, nullptr) << dlerror();
    const auto read = reinterpret_cast<decltype(&ReadOwnIni)>(dlsym(module, "ReadOwnIni"));
    ASSERT_NE(read, nullptr);
    ASSERT_EQ(chdir(m_stranger.GetPath().c_str()), 0);
    EXPECT_STREQ(read(), "own");
    // An update replaces the library's file.
    std::filesystem::remove(m_own.GetPath("module.so"));
    EXPECT_STREQ(read(), "own");
}

TEST_F(OwnIniFile, IsTheOneBesideAProgramThatIsReplacedWhileItRuns) {
    if (const char* const self = std::getenv("OWN_INI_PROGRAM")) {
        std::filesystem::remove(self);
        std::exit(std::string(ReadOwnIni()) == "own" ? 0 : 1);
    }
    const std::string program = m_own.GetPath("program");
    std::filesystem::copy_file("/proc/self/exe", program);
    ASSERT_EQ(chdir(m_stranger.GetPath().c_str()), 0);
    setenv("OWN_INI_PROGRAM", program.c_str(), 1);
    EXPECT_EQ(std::system((program + " --gtest_filter=OwnIniFile.*Replaced*").c_str()), 0);
}

TEST_F(OwnIniFile, IsMissingIfTheTextNamesAnotherDirectory) {
    ASSERT_EQ(chdir(m_stranger.GetPath().c_str()), 0);
    const std::pair<const char*, const char*> names[] = {{"a\\b", "a/b"}, {"\xFF", "\xEF\xBF\xBD"}};
    for (const auto& [name, strangers] : names) {
        const std::filesystem::path own = m_own.GetPath(name);
        std::filesystem::create_directories(own);
        std::filesystem::create_directories(m_own.GetPath(strangers));
        std::filesystem::copy_file(OWN_INI_MODULE, own / "module.so");
        m_own.Write(std::string(strangers) + "/own.ini", "[Driver]\nfrom=stranger\n");
        void* const module = dlopen((own / "module.so").c_str(), RTLD_NOW);
        ASSERT_NE(module, nullptr) << dlerror();
        EXPECT_STREQ(reinterpret_cast<decltype(&ReadOwnIni)>(dlsym(module, "ReadOwnIni"))(), "none")
            << strangers;
    }
}

TEST(SettingReaderThreads, OneThatIsCancelledEndsAlone) {
    const TemporaryDirectory directory;
    const std::string path = directory.Write("x.ini", "[S]\nDriverLocale=fr\n");
    OrskaSettingReader::Initialize(path, L"K", L"S");
    EXPECT_EQ(RunInProcesses(1,
                             [&](int) {
                                 std::thread([&] {
                                     auto file = std::make_optional<TextFile>(path, 1);
                                     pthread_cancel(pthread_self());
                                     file.reset();
                                     OrskaSettingReader::GetDriverLocale();
                                     pthread_testcancel();
                                     _exit(1);
                                 }).join();
                                 if (OrskaSettingReader::GetDriverLocale() != "fr") _exit(2);
                             }),
              1);
}

}  // namespace
}  // namespace Orska::Support
