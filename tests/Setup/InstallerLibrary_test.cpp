#include "Setup/InstallerLibrary.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <utility>

#include "Setup/ConfigMode.h"
#include "Setup/InstallerPaths.h"
#include "Setup/OdbcInstaller.h"
#include "tests/support/IniScratch.h"

namespace Veltrane::ODBC {
namespace {

using Test::IniScratch;

/// The mode in which files are opened as the driver manager's reader does. Set by a test.
ConfigMode s_mode = ConfigMode::BOTH;

void Touch(const std::string& in_path, int in_flags) {
    const int file = open(in_path.c_str(), in_flags, 0666);
    if (file >= 0) close(file);
}

int ReadAsTheDriverManager(const char*, const char*, const char*, char*, int, const char*) {
    if (s_mode != ConfigMode::SYSTEM) {
        Touch(GetUserIniPath(), O_WRONLY | O_APPEND | O_CREAT);
        Touch(GetUserIniPath(), O_RDONLY);
    }
    if (s_mode != ConfigMode::USER) Touch(GetSystemIniPath(), O_RDONLY);
    return 0;
}

class ConfigModeProbe : public testing::Test {
protected:
    static ConfigMode ProbeIn(ConfigMode in_mode) {
        InstallerLibrary library;
        library.m_readWithoutLock = &ReadAsTheDriverManager;
        s_mode = in_mode;
        return ProbeConfigMode(library);
    }

    const IniScratch m_scratch;
};

TEST_F(ConfigModeProbe, SeesWhichFilesAreRead) {
    const mode_t before = umask(022);
    IniScratch::Write(m_scratch.SystemFile(), "");
    for (const bool hasFiles : {false, true}) {
        for (const ConfigMode mode : {ConfigMode::USER, ConfigMode::SYSTEM, ConfigMode::BOTH}) {
            std::filesystem::remove(m_scratch.UserFile());
            if (hasFiles) IniScratch::Write(m_scratch.UserFile(), "[A]\n");
            EXPECT_EQ(ProbeIn(mode), mode) << static_cast<int>(mode) << hasFiles;
            struct stat now {};
            if (!hasFiles && stat(m_scratch.UserFile().c_str(), &now) == 0) {
                EXPECT_EQ(now.st_mode & 0777, 0600u) << "created by the reader";
            }
        }
    }
    umask(before);
}

TEST_F(ConfigModeProbe, FollowsLinksToTheFile) {
    std::filesystem::create_directory(m_scratch.Folder() / "target");
    IniScratch::Write(m_scratch.Folder() / "target" / "real.ini", "");
    std::filesystem::create_symlink("target/real.ini", m_scratch.UserFile());
    EXPECT_EQ(ProbeIn(ConfigMode::USER), ConfigMode::USER);
}

TEST_F(ConfigModeProbe, ReportsWhenItDoesNotKnow) {
    InstallerLibrary library;
    library.m_readWithoutLock = [](const char*, const char*, const char*, char*, int, const char*) {
        return 0;
    };
    EXPECT_EQ(ProbeConfigMode(library), ConfigMode::UNKNOWN);
}

TEST_F(ConfigModeProbe, AFileThatCannotBeOpenedCountsAsTried) {
    // Even root cannot open a file in a folder that does not exist.
    setenv("ODBCINI", (m_scratch.Folder() / "none" / "odbc.ini").c_str(), 1);
    EXPECT_EQ(ProbeIn(ConfigMode::USER), ConfigMode::USER);
    setenv("ODBCINI", m_scratch.UserFile().c_str(), 1);
    std::filesystem::remove_all(m_scratch.SystemFile().parent_path());
    EXPECT_EQ(ProbeIn(ConfigMode::SYSTEM), ConfigMode::SYSTEM);
}

/// In its initial mode. Its reader uses the user's file if that has the value.
TEST(InstallerLibrary, ReadsBothFilesOfIodbcAsItsReaderDoes) {
    using namespace OdbcInstaller;
    const IniScratch scratch;
    setenv("SYSODBCINI", scratch.SystemFile().c_str(), 1);
    const std::string before = "[a]\nboth=user\nempty=\nuser=1 ";
    IniScratch::Write(scratch.UserFile(), before);
    IniScratch::Write(scratch.SystemFile(),
                      "[a]\nboth=system\nempty=full\nsystem=2\n[b]\nk=v\t;c\n");
    void* const iodbc = dlopen("libiodbcinst.so.2", RTLD_NOW | RTLD_LOCAL);
    if (iodbc == nullptr) GTEST_SKIP() << "iODBC is not installed";
    const auto read = reinterpret_cast<decltype(&ReadAsTheDriverManager)>(
        dlsym(iodbc, "SQLGetPrivateProfileString"));
    for (const auto& [section, key] : {std::pair{"a", "both"},
                                       {"a", "empty"},
                                       {"a", "user"},
                                       {"a", "system"},
                                       {"b", "k"},
                                       {"b", "none"}}) {
        char theirs[20] = "";
        read(section, key, "", theirs, sizeof theirs, "odbc.ini");
        orska_wstring ours;
        EXPECT_GE(GetPrivateProfileString(orska_wstring(section), orska_wstring(key),
                                          orska_wstring(""), ours, 20, orska_wstring("odbc.ini")),
                  0);
        EXPECT_EQ(ours.GetAsUtf8(), theirs) << section << " " << key;
    }
    const Request request;
    orska_wstring value;
    GetPrivateProfileString(L"a", L"user", L"", value, 20, L"odbc.ini");
    for (const wchar_t* name : {L"a", L"renamed"}) {
        Update update;
        EXPECT_TRUE(WriteDSNToIni(name, L"V"));
        EXPECT_TRUE(WritePrivateProfileString(name, L"user", value, L"odbc.ini"));
        EXPECT_TRUE(update.Commit());
    }
    EXPECT_EQ(IniScratch::Read(scratch.UserFile()),
              "[ODBC Data Sources]\na=V\nrenamed=V\n\n[renamed]\nDriver=V\nuser=1\n"
              "[a]\nDriver=V\nuser=1 ");
    std::filesystem::remove(scratch.UserFile());
    std::filesystem::create_directory(scratch.UserFile());
    EXPECT_FALSE(WritePrivateProfileString(L"a", L"user", value, L"odbc.ini"));
}

TEST(InstallerLibrary, ReportsOnceThatItCannotBeLoaded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a new process, which loads another library
    const IniScratch scratch;
    for (const char* name : {"libodbcinst.so.2", "libiodbcinst.so.2"}) {
        IniScratch::Write(scratch.Folder() / name, "not a library");
    }
    setenv("LD_LIBRARY_PATH", scratch.Folder().c_str(), 1);
    EXPECT_EXIT(
        {
            using OdbcInstaller::orska_wstring;
            const bool isValid = OdbcInstaller::ValidDSN(orska_wstring("a"));
            const bool isPosted = OdbcInstaller::PostInstallerError(11, orska_wstring("text"));
            _exit(isValid || isPosted ? 1 : 0);
        },
        testing::ExitedWithCode(0),
        "^ODBC Installer Error: The ODBC installer DLL \\(ODBCCP32\\.DLL\\) is not installed on "
        "this "
        "system\\.\n$");
    unsetenv("LD_LIBRARY_PATH");
}

}  // namespace
}  // namespace Veltrane::ODBC
