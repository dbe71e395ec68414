// The INI file beside the library, and threads that are cancelled, as Linux has them.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "tests/PlatformAbstraction/settings/OwnIniProbe.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

/// AddressSanitizer reports its own stack for signals when a thread ends by being cancelled.
extern "C" const char* __asan_default_options() { return "use_sigaltstack=0"; }

namespace Orska::Support {
namespace {

using Test::RunInProcesses;
using Test::TemporaryDirectory;

/// Two directories with an INI file each, and what this test wants in the first of them.
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
    // An update puts another file in the library's place.
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

TEST(SettingReaderThreads, OneThatIsCancelledEndsAlone) {
    const TemporaryDirectory directory;
    OrskaSettingReader::Initialize(directory.Write("x.ini", "[S]\nDriverLocale=fr\n"), L"K", L"S");
    EXPECT_EQ(RunInProcesses(1,
                             [](int) {
                                 std::thread([] {
                                     pthread_cancel(pthread_self());
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
