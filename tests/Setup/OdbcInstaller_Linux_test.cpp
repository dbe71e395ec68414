// The operations on real files, compared with the real installer library.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <odbcinst.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Setup/OdbcInstaller.h"
#include "Setup/SystemCalls.h"
#include "Setup/VeltraneDSNConfiguration.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "tests/support/IniScratch.h"
#include "tests/support/InstallerStage.h"
#include "tests/support/NewProcess.h"
#include "tests/support/TestSystem.h"
#include "tests/support/WithoutFileCapabilities.h"

namespace Veltrane::ODBC {
namespace {

using namespace OdbcInstaller;
using Test::IniScratch;
using Test::InNewProcess;
using Test::InstallerStage;

using Errors = std::vector<std::pair<unsigned long, std::string>>;

constexpr char OTHERS[] = "# kept\n[Other]\nk = v\n";

orska_wstring Text(const std::string& in_utf8) {
    orska_wstring text;
    text.SetFromUtf8(in_utf8);
    return text;
}

bool Write(const std::string& in_section, const std::string& in_key, const std::string& in_value) {
    return WritePrivateProfileString(Text(in_section), Text(in_key), Text(in_value),
                                     Text("odbc.ini"));
}

std::string Get(const std::string& in_section, const std::string& in_key, int in_size = 260) {
    orska_wstring value;
    GetPrivateProfileString(Text(in_section), Text(in_key), Text(""), value, in_size,
                            Text("odbc.ini"));
    return value.GetAsUtf8();
}

bool Save(const std::string& in_dsn, const std::string& in_server) {
    Update update;
    return WriteDSNToIni(Text(in_dsn), Text("Veltrane")) && Write(in_dsn, "Server", in_server) &&
           Write(in_dsn, "Database", "db") && update.Commit();
}

mode_t ModeOf(const std::filesystem::path& in_path) {
    struct stat now {};
    EXPECT_EQ(stat(in_path.c_str(), &now), 0);
    return now.st_mode & 07777;
}

class OdbcInstallerTest : public testing::Test {
protected:
    OdbcInstallerTest() { SQLSetConfigMode(ODBC_USER_DSN); }
    IniScratch m_scratch;
};

TEST_F(OdbcInstallerTest, ValuesThatWereReadAreWrittenAsStored) {
    const std::string server = "m\xFCll\t" + std::string(300, 's');
    IniScratch::Write(m_scratch.UserFile(), "[Sales]\nServer=" + server + "\nDatabase=a\tb\n");
    const std::string cut = Get("Sales", "Server");
    EXPECT_FALSE(Write("Sales", "Server", cut)) << "remembered without a request";
    const Request request;
    EXPECT_EQ(Get("Sales", "Server"), cut);
    EXPECT_EQ(Get("Sales", "Database"), "a\tb");
    EXPECT_FALSE(Write("Sales", "Server", "a\tb")) << "the value of another key";
    EXPECT_TRUE(Write("Renamed", "Server", cut));
    EXPECT_EQ(Get("Renamed", "Server", 2000), Get("Sales", "Server", 2000));
    EXPECT_TRUE(Write("Sales", "Server", "new"));
    EXPECT_EQ(IniScratch::Read(m_scratch.UserFile()),
              "[Sales]\nServer=new\nDatabase=a\tb\n\n[Renamed]\nServer=" + server + "\n");
}

TEST_F(OdbcInstallerTest, AValueThatCannotBeStoredIsRefusedBeforeAnyChange) {
    const std::string before = "[Sales]\nDriver=V\nServer=old\nExtra=1\n";
    IniScratch::Write(m_scratch.UserFile(), before);
    const struct {
        const char* m_driver;
        const char* m_database;
        unsigned long m_code;
    } cases[] = {{"V", "a\tb", 11}, {"V", "a\x7F", 11}, {"m\xFCll", "d", 7}, {"V\n", "d", 7}};
    for (const auto& [driver, database, code] : cases) {
        SCOPED_TRACE(driver);
        VeltraneDSNConfiguration record{Text(driver)};
        record.SetDsn(Text("Sales"));
        record.SetServer(Text("s"));
        record.SetDatabase(Text(database));
        try {
            record.Save();
            ADD_FAILURE() << "saved";
        } catch (const VeltraneDSNSetupException& exception) {
            EXPECT_EQ(exception.GetErrorCode(), code);
        }
        EXPECT_EQ(IniScratch::Read(m_scratch.UserFile()), before);
    }
}

TEST_F(OdbcInstallerTest, TheModeIsReadAtTheStartOfTheRequest) {
    IniScratch::Write(m_scratch.SystemFile(), OTHERS);
    SQLSetConfigMode(ODBC_SYSTEM_DSN);
    const Request request;
    SQLSetConfigMode(ODBC_USER_DSN);
    EXPECT_TRUE(Save("Sales", "system"));
    EXPECT_FALSE(std::filesystem::exists(m_scratch.UserFile()));
    EXPECT_TRUE(IniScratch::Read(m_scratch.SystemFile()).starts_with(OTHERS));
}

TEST_F(OdbcInstallerTest, AnAbsolutePathIsTheFileInAnyMode) {
    const std::filesystem::path path = m_scratch.Folder() / "other.ini";
    const orska_wstring file = Text(path.string());
    IniScratch::Write(path, OTHERS);
    SQLSetConfigMode(ODBC_SYSTEM_DSN);
    EXPECT_TRUE(WritePrivateProfileString(Text("Sales"), Text("k"), Text("ü"), file));
    orska_wstring value;
    EXPECT_EQ(GetPrivateProfileString(Text("sales"), Text("K"), Text(""), value, 9, file), 1);
    EXPECT_EQ(value, Text("ü"));
    EXPECT_TRUE(WritePrivateProfileString(Text("Other"), Text("k"), orska_wstring(), file));
    EXPECT_EQ(IniScratch::Read(path), "# kept\n[Other]\n\n[Sales]\nk=ü\n");
    EXPECT_FALSE(std::filesystem::exists(m_scratch.SystemFile()));
}

TEST_F(OdbcInstallerTest, AnUpdateIsWrittenAtOnce) {
    IniScratch::Write(m_scratch.UserFile(), OTHERS);
    {
        Update update;
        EXPECT_TRUE(WriteDSNToIni(Text("Sales"), Text("Veltrane")));
        EXPECT_TRUE(Write("Sales", "Server", "s"));
        EXPECT_EQ(Get("Sales", "Server"), "s");
        Update inner;
        EXPECT_TRUE(inner.Commit());
        EXPECT_EQ(IniScratch::Read(m_scratch.UserFile()), OTHERS);
        EXPECT_FALSE(Write("Sales", "UID", "a\nb"));
        EXPECT_FALSE(Write("a]b", "UID", "u"));
        // No Commit, as after a failure: values that were written stay.
    }
    EXPECT_EQ(IniScratch::Read(m_scratch.UserFile()),
              std::string(OTHERS) + "\n[Sales]\nDriver=Veltrane\nServer=s\n");
    EXPECT_TRUE(RemoveDSNFromIni(Text("sales")));
    EXPECT_TRUE(RemoveDSNFromIni(Text("sales"))) << "an absent section";
    EXPECT_EQ(IniScratch::Read(m_scratch.UserFile()), OTHERS);
    EXPECT_FALSE(WriteDSNToIni(Text("Sales"), Text("m\xFCll")));
    EXPECT_FALSE(WriteDSNToIni(Text("a;b"), Text("Veltrane")));
}

TEST_F(OdbcInstallerTest, NewFilesAreForTheirOwnerOnly) {
    const mode_t before = umask(0);
    EXPECT_TRUE(RemoveDSNFromIni(Text("Sales")));
    // Versions that show their mode only in a read create the file.
    const bool isReadFirst = dlsym(RTLD_DEFAULT, "__SQLGetPrivateProfileStringNL") != nullptr;
    EXPECT_EQ(std::filesystem::exists(m_scratch.UserFile()), isReadFirst) << "nothing to write";
    EXPECT_TRUE(Save("Sales", "s"));
    EXPECT_EQ(ModeOf(m_scratch.UserFile()), 0600u);
    SQLSetConfigMode(ODBC_SYSTEM_DSN);
    EXPECT_EQ(RemoveDSNFromIni(Text("Sales")), isReadFirst) << "no system file";
    EXPECT_TRUE(Save("Sales", "s"));
    EXPECT_EQ(ModeOf(m_scratch.SystemFile()), 0644u);
    umask(before);
}

TEST_F(OdbcInstallerTest, HardLinksKeepTheOldFile) {
    IniScratch::Write(m_scratch.UserFile(), OTHERS);
    const std::filesystem::path other = m_scratch.Folder() / "system" / "link.ini";
    std::filesystem::create_hard_link(m_scratch.UserFile(), other);
    chmod(other.c_str(), 06755);
    ASSERT_TRUE(Save("Sales", "s"));
    EXPECT_EQ(IniScratch::Read(other), OTHERS);
    EXPECT_EQ(ModeOf(m_scratch.UserFile()), 0755u) << "set-user-id rights are not kept";
}

TEST_F(OdbcInstallerTest, FollowsSymbolicLinks) {
    const std::filesystem::path target = m_scratch.Folder() / "target";
    std::filesystem::create_directory(target);
    const auto real = target / "real.ini";
    std::filesystem::create_symlink("target/link", m_scratch.UserFile());
    std::filesystem::create_symlink("real.ini", target / "link");
    ASSERT_TRUE(Save("A", "1")) << "a link to nowhere";
    IniScratch::Write(real, OTHERS);
    ASSERT_TRUE(Save("Sales", "s"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_scratch.UserFile()));
    EXPECT_TRUE(std::filesystem::is_symlink(target / "link"));
    EXPECT_TRUE(IniScratch::Read(real).starts_with(OTHERS));
    EXPECT_EQ(Get("Sales", "Server"), "s");
}

TEST_F(OdbcInstallerTest, WritesAFileInTheRoot) {
    const std::string written = InNewProcess([&]() -> std::string {
        setenv("ODBCINI", "/new.ini", 1);
        setenv("ODBCSEARCH", "ODBC_USER_DSN", 1);  // without /proc the mode is not known
        if (chroot(m_scratch.Folder().c_str()) != 0) return "not allowed";
        return Save("Sales", "1") && Save("Sales", "2") ? IniScratch::Read("/new.ini") : "refused";
    });
    if (written == "not allowed") GTEST_SKIP() << "chroot is not allowed here";
    EXPECT_EQ(written, "[Sales]\nDriver=Veltrane\nServer=2\nDatabase=db\n\n");
}

/// Something that prevents writing a data source.
struct Obstacle {
    const char* m_name;
    bool m_isForRoot;  ///< stops root too
    bool m_isForRemoval;
    std::function<void(const IniScratch&)> m_place;
};

/// Mounts a small file system over the folder, for this process. A process that may not mount ends
/// with success.
void MountMemory(const IniScratch& in_scratch, const char* in_options) {
    const bool isMounted = unshare(CLONE_NEWNS) == 0 &&
                           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                           mount("none", in_scratch.Folder().c_str(), "tmpfs", 0, in_options) == 0;
    if (isMounted) return;
    std::fputs("not tested: mounting a file system is not allowed here\n", stderr);
    _exit(0);
}

const Obstacle OBSTACLES[] = {
    {"no directory", true, true,
     [](const IniScratch& in_scratch) {
         setenv("ODBCINI", (in_scratch.Folder() / "none" / "user.ini").c_str(), 1);
     }},
    {"a directory in its place", true, true,
     [](const IniScratch& in_scratch) {
         setenv("ODBCINI", (in_scratch.Folder() / "system").c_str(), 1);
     }},
    {"text before the first section", true, true,
     [](const IniScratch& in_scratch) {
         IniScratch::Write(in_scratch.UserFile(), "junk\n[Other]\n");
     }},
    {"the file-size limit", true, false,
     [](const IniScratch&) {
         const rlimit limit{25, RLIM_INFINITY};
         setrlimit(RLIMIT_FSIZE, &limit);
     }},
    {"a full disk", true, false,
     [](const IniScratch& in_scratch) {
         MountMemory(in_scratch, "size=16k");
         IniScratch::Write(in_scratch.UserFile(), OTHERS);
         std::filesystem::create_directory(in_scratch.Folder() / "full");
         IniScratch::Write(in_scratch.Folder() / "full" / "up", std::string(1 << 20, 'x'));
     }},
    {"a read-only file system", true, true,
     [](const IniScratch& in_scratch) {
         MountMemory(in_scratch, "size=16k");
         IniScratch::Write(in_scratch.UserFile(), OTHERS);
         mount(nullptr, in_scratch.Folder().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
     }},
    {"no permission for the file", false, true,
     [](const IniScratch& in_scratch) { chmod(in_scratch.UserFile().c_str(), 0444); }},
    {"no permission for the directory", false, true,
     [](const IniScratch& in_scratch) { chmod(in_scratch.Folder().c_str(), 0555); }},
};

/// Returns the results that are not refusals.
std::string MeetObstacle(const Obstacle& in_obstacle) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OTHERS);
    std::optional<Orska::Support::WithoutFileCapabilities> asOthers;
    if (!in_obstacle.m_isForRoot) asOthers.emplace();
    in_obstacle.m_place(scratch);
    const std::string before = IniScratch::Read(scratch.UserFile());
    std::string differences;
    if (Save("Sales", "s")) differences += "saved; ";
    if (in_obstacle.m_isForRemoval && RemoveDSNFromIni(Text("Other"))) differences += "removed; ";
    if (IniScratch::Read(scratch.UserFile()) != before) differences += "changed; ";
    if (scratch.CountFiles() != 1) differences += "left a file; ";
    chmod(scratch.Folder().c_str(), 0755);
    return differences;
}

TEST_F(OdbcInstallerTest, RefusesWhenAnObstacleIsThere) {
    for (const Obstacle& obstacle : OBSTACLES) {
        SCOPED_TRACE(obstacle.m_name);
        EXPECT_EQ(InNewProcess([&] { return MeetObstacle(obstacle); }), "");
    }
}

TEST_F(OdbcInstallerTest, PostsOneError) {
    SQLPostInstallerError(ODBC_ERROR_GENERAL_ERR, "from before");
    const Request request;
    ASSERT_TRUE(Save("Sales", "s"));
    EXPECT_FALSE(Write("Sales", "k", "a\nb"));
    EXPECT_TRUE(PostInstallerError(11, Text("Grüße")));
    EXPECT_EQ(InstallerStage().Posted(), (Errors{{11, "Grüße"}}));
    EXPECT_FALSE(PostInstallerError(1000, Text("no such code")));
}

TEST_F(OdbcInstallerTest, ARemovalThatFailsReportsWhy) {
    IniScratch::Write(m_scratch.UserFile(), "junk\n");
    const Request request;
    EXPECT_FALSE(RemoveDSNFromIni(Text("Sales")));
    const std::string why =
        ": text before the first section makes the whole file unreadable for the driver manager";
    EXPECT_EQ(InstallerStage().Posted(), (Errors{{11, m_scratch.UserFile().string() + why}}));
}

/// A file of the user, reached by a symbolic link, or of the system.
struct File {
    unsigned short m_mode;
    std::filesystem::path m_path;
};

std::vector<File> MakeFiles(const IniScratch& in_scratch) {
    std::filesystem::create_symlink("system/user.ini", in_scratch.UserFile());
    const std::vector<File> files = {{ODBC_USER_DSN, in_scratch.UserFile()},
                                     {ODBC_SYSTEM_DSN, in_scratch.SystemFile()}};
    for (const File& file : files) IniScratch::Write(file.m_path, OTHERS);
    return files;
}

TEST_F(OdbcInstallerTest, ParallelWritersLoseNothing) {
    constexpr int PROCESSES = 16;
    constexpr int ADDS = 16;
    for (const File& file : MakeFiles(m_scratch)) {
        SQLSetConfigMode(file.m_mode);
        const auto addAll = [](int in_process) {
            std::atomic<int> saved = 0;
            const auto add = [&](int in_first) {
                for (int i = in_first; i < ADDS; i += 2) {
                    const std::string name = std::to_string(in_process) + "-" + std::to_string(i);
                    saved += Save(name, "server of " + name) ? 1 : 0;
                }
            };
            std::thread other(add, 1);
            add(0);
            other.join();
            if (saved != ADDS) _exit(1);
        };
        EXPECT_EQ(Orska::Test::RunInProcesses(PROCESSES, addAll), PROCESSES);
        for (int i = 0; i < PROCESSES * ADDS; ++i) {
            const std::string name = std::to_string(i / ADDS) + "-" + std::to_string(i % ADDS);
            EXPECT_EQ(Get(name, "Server"), "server of " + name);
            EXPECT_EQ(Get(name, "Database"), "db");
        }
        EXPECT_TRUE(IniScratch::Read(file.m_path).starts_with(OTHERS));
    }
    EXPECT_EQ(IniScratch::CountEntries(m_scratch.SystemFile().parent_path()), 2);
    EXPECT_TRUE(std::filesystem::is_symlink(m_scratch.UserFile()));
}

TEST_F(OdbcInstallerTest, AChildFindsTheInstallersLocksFree) {
    std::atomic<bool> isEnding{false};
    const auto use = [] { return PostInstallerError(1, Text("t")) && ValidDSN(Text("a")); };
    std::thread other([&] {
        while (!isEnding) use();
    });
    const auto useInChild = [&] {
        return InNewProcess([&] {
            alarm(10);
            return use() ? "1" : "0";
        });
    };
    std::string answer = "1";
    for (int i = 0; i < 100 && answer == "1"; ++i) answer = useInChild();
    isEnding = true;
    other.join();
    EXPECT_EQ(answer, "1");
    const SystemCalls::ForkLock lock;
    alarm(60);
    EXPECT_EQ(useInChild(), "1") << "forked under the lock";
    alarm(0);
}

// ORSKA_TEST_ROUNDS sets a higher number than in a quick run.
TEST_F(OdbcInstallerTest, KilledWritersLoseNothing) {
    const std::vector<File> files = MakeFiles(m_scratch);
    const char* const variable = std::getenv("ORSKA_TEST_ROUNDS");
    const int rounds = variable == nullptr ? 20 : std::atoi(variable);
    std::mt19937 random(static_cast<unsigned>(rounds));
    for (int round = 0; round < rounds; ++round) {
        const File& file = files[static_cast<std::size_t>(round) % files.size()];
        SQLSetConfigMode(file.m_mode);
        const pid_t child = fork();
        if (child == 0) {
            for (unsigned i = 0;; ++i) Save("Sales", std::string(100 + i % 7, 's'));
        }
        usleep(2000 + static_cast<useconds_t>(random() % 30000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string now = IniScratch::Read(file.m_path);
        ASSERT_TRUE(now.starts_with(OTHERS)) << now;
        ASSERT_TRUE(now == OTHERS || now.ends_with("\nDatabase=db\n")) << now;
    }
    for (const File& file : files) {
        SQLSetConfigMode(file.m_mode);
        EXPECT_TRUE(Save("Sales", "s"));
    }
    EXPECT_EQ(IniScratch::CountEntries(m_scratch.SystemFile().parent_path()), 2)
        << "left by killed writers";
}

}  // namespace
}  // namespace Veltrane::ODBC
