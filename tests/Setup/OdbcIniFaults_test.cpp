// Every system call of a change to an odbc.ini fails, is interrupted, transfers only a part, or is
// the last one of the process. The file is then the old or the new one, whole, and no other file
// is left.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "Setup/OdbcIniUpdate.h"
#include "tests/support/IniScratch.h"
#include "tests/support/NewProcess.h"
#include "tests/support/SystemCalls_Fake.h"

namespace Veltrane::ODBC {
namespace {

using Test::IniScratch;
using Test::InNewProcess;
using Test::s_systemCalls;

constexpr char OLD[] = "# old\n[A]\nk=v\n";
constexpr char OTHER[] = "# new\n[B]\nk=v\n";
static_assert(sizeof OTHER == sizeof OLD, "as many bytes");
constexpr char NEW[] = "# old\n[A]\nk=v\n\n[S]\nDriver=V\n";

/// Makes each call of that name fail.
void FailAll(const std::string& in_name, int in_error) {
    s_systemCalls = {};
    s_systemCalls.m_before = [=](const std::string& in_call, std::size_t) {
        return in_call == in_name ? in_error : 0;
    };
}

class OdbcIniFaults : public testing::Test {
protected:
    OdbcIniFaults() { Restore(); }

    /// Restores the old file, and calls that work.
    void Restore() const {
        std::filesystem::remove(m_file);
        Write(OLD);
        s_systemCalls = {};
    }
    void Write(const std::string& in_bytes) const { IniScratch::Write(m_file, in_bytes); }
    std::string Read() const { return IniScratch::Read(m_file); }

    bool Change() const {
        OdbcIniUpdate update(m_file, 0600);
        return update.Set("S", "Driver", "V") && update.Commit();
    }
    std::size_t CountCalls(bool in_hasRenameFlags = true) const {
        s_systemCalls = {};
        s_systemCalls.m_hasRenameFlags = in_hasRenameFlags;
        EXPECT_TRUE(Change());
        return s_systemCalls.m_calls.size();
    }
    void ExpectTheFileAlone(const std::string& in_bytes) const {
        EXPECT_EQ(Read(), in_bytes);
        EXPECT_EQ(m_scratch.CountFiles(), 1u);
    }

    const IniScratch m_scratch;
    const std::string m_file = m_scratch.UserFile();
};

/// A change that was reported as done survives a power cut.
TEST_F(OdbcIniFaults, TheDirectoryIsSyncedOnceAfterTheRename) {
    CountCalls();
    const auto& calls = s_systemCalls.m_calls;
    EXPECT_EQ(std::count(std::find(calls.begin(), calls.end(), "rename"), calls.end(), "fsync"), 1);
}

TEST_F(OdbcIniFaults, CriticalFailuresAreNotIgnored) {
    for (const char* name :
         {"open", "flock", "read", "readlink", "openat", "write", "fsync", "rename", "fchmod",
          "fgetxattr", "getrandom", "close", "fstat", "fstatat"}) {
        SCOPED_TRACE(name);
        Restore();
        if (std::string_view(name) == "readlink") {
            std::filesystem::rename(m_file, m_scratch.SystemFile());
            std::filesystem::create_symlink(m_scratch.SystemFile(), m_file);
            std::error_code error;
            if (!std::filesystem::exists(m_file, error)) continue;  // sshfs follows no new links
        }
        FailAll(name, EACCES);
        EXPECT_FALSE(Change());
        ExpectTheFileAlone(OLD);
    }
}

/// user::rw-, user:7:r--, group::---, mask::r--, other::---
constexpr unsigned char LIST[] = {2, 0, 0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  4,
                                  0, 7, 0,   0,   0,   4,   0,  0, 0,   255, 255, 255, 255, 16, 0,
                                  4, 0, 255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};

/// Attributes of the old file that the new one cannot always get.
TEST_F(OdbcIniFaults, AttributesAreKeptOrTheChangeIsRefused) {
    for (const bool isOwner : {true, false}) {
        SCOPED_TRACE(isOwner ? "the owner" : "the access list");
        Restore();
        const int result =
            isOwner ? chown(m_file.c_str(), 1234, 4321)
                    : setxattr(m_file.c_str(), "system.posix_acl_access", LIST, sizeof LIST, 0);
        if (result != 0) continue;  // not root, or a file system without access lists
        FailAll(isOwner ? "fchown" : "fsetxattr", EPERM);
        OdbcIniUpdate update(m_file, 0600);
        EXPECT_TRUE(update.Set("S", "Driver", "V"));
        EXPECT_FALSE(update.Commit());
        ExpectTheFileAlone(OLD);
        s_systemCalls.m_before = nullptr;
        EXPECT_TRUE(Change());
        struct stat status {};
        ASSERT_EQ(stat(m_file.c_str(), &status), 0);
        char list[100];
        const ssize_t size = getxattr(m_file.c_str(), "system.posix_acl_access", list, sizeof list);
        EXPECT_TRUE(isOwner ? status.st_uid == 1234 && status.st_gid == 4321 : size == sizeof LIST);
    }
}

/// A directory's default access list for new files.
TEST_F(OdbcIniFaults, AFileGetsNoMoreAccessThanBefore) {
    const char* const folder = m_scratch.Folder().c_str();
    if (setxattr(folder, "system.posix_acl_default", LIST, sizeof LIST, 0) != 0) {
        GTEST_SKIP() << "a file system without access lists";
    }
    Write(OLD);
    removexattr(m_file.c_str(), "system.posix_acl_access");
    chmod(m_file.c_str(), 0640);
    std::vector<const char*> attributes;
    for (const char* name : {"user.note", "security.selinux", "security.SMACK64"}) {
        // Only root can set the labels, and none that the system's policy does not know.
        if (setxattr(m_file.c_str(), name, "kept", 4, 0) == 0) attributes.push_back(name);
    }
    ASSERT_FALSE(attributes.empty());
    EXPECT_TRUE(Change());
    char value[100];
    EXPECT_EQ(getxattr(m_file.c_str(), "system.posix_acl_access", value, sizeof value), -1);
    for (const char* name : attributes) {
        EXPECT_EQ(getxattr(m_file.c_str(), name, value, sizeof value), 4) << name;
    }
    EXPECT_EQ(std::filesystem::status(m_file).permissions(), std::filesystem::perms{0640});
    FailAll("fremovexattr", EPERM);
    OdbcIniUpdate update(m_file, 0600);
    EXPECT_TRUE(update.Set("S", "PWD", "secret"));
    EXPECT_FALSE(update.Commit());
    EXPECT_EQ(Read(), NEW);
    // As the driver manager creates it when it searches.
    Write("");
    chmod(m_file.c_str(), 0644);
    s_systemCalls.m_before = nullptr;
    EXPECT_TRUE(Change());
    EXPECT_EQ(std::filesystem::status(m_file).permissions(), std::filesystem::perms{0600});
    // Narrowed after the last check of the old file.
    chmod(m_file.c_str(), 0644);
    s_systemCalls.m_before = [&](const std::string& in_name, std::size_t) {
        return in_name == "rename" ? chmod(m_file.c_str(), 0600) : 0;
    };
    EXPECT_TRUE(Change());
    EXPECT_EQ(std::filesystem::status(m_file).permissions(), std::filesystem::perms{0600});
}

/// A host can close its standard handles and still print to them.
TEST_F(OdbcIniFaults, NoHandleIsAStandardHandle) {
    const auto change = [&] {
        for (int handle = 0; handle < 3; ++handle) close(handle);
        int used = 0;
        s_systemCalls.m_before = [&](const std::string&, std::size_t) {
            for (int handle = 0; handle < 3; ++handle) {
                used += fcntl(handle, F_GETFD) == -1 ? 0 : 1;
            }
            return 0;
        };
        return Change() ? std::to_string(used) : "not changed";
    };
    EXPECT_EQ(InNewProcess(change), "0");
    EXPECT_EQ(Read(), NEW);
}

/// Profiles of containers that are older than a system call answer EPERM to it.
TEST_F(OdbcIniFaults, OlderSystemCallsDoWhereNewOnesAreRefused) {
    const auto change = [&] {
        sock_filter filter[] = {{BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
                                {BPF_JMP | BPF_JEQ | BPF_K, 2, 0, SYS_faccessat2},
                                {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, SYS_renameat2},
                                {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
                                {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EPERM}};
        const sock_fprog program{std::size(filter), filter};
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
            prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
            return "no filter";
        }
        if (!Change()) return "not changed";
        return std::filesystem::remove(m_file) && Change() ? "" : "not created";
    };
    EXPECT_EQ(InNewProcess(change), "");
    ExpectTheFileAlone("[S]\nDriver=V\n\n");
}

/// A host forks while another of its threads makes a request.
TEST_F(OdbcIniFaults, AChildHoldsNoLock) {
    const std::size_t calls = CountCalls();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    for (const std::string what : {"idles", "idles, unknown to the library", "makes a request"}) {
        for (std::size_t call = 0; call < calls; ++call) {
            SCOPED_TRACE("a child that " + what + ", call " + std::to_string(call));
            Write(OLD);
            pid_t child = 0;
            int status = 0;
            s_systemCalls = {};
            s_systemCalls.m_before = [&](const std::string&, std::size_t in_call) {
                if (in_call != call) return 0;
                child = what == "idles, unknown to the library"
                            ? static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0))
                            : fork();
                if (child != 0) return read(ends[0], &status, 1) == 1 ? 0 : EIO;
                status = static_cast<int>(write(ends[1], "", 1));  // its fork has returned
                if (what != "makes a request") _exit(pause());
                s_systemCalls.m_isSleeping = true;
                OdbcIniUpdate update(m_file, 0600);
                _exit(update.Set("Child", "k", "v") && update.Commit() ? 0 : 1);
            };
            // A replaced file has another lock, so every second request replaces nothing.
            OdbcIniUpdate first(m_file, 0600);
            EXPECT_TRUE((call % 2 == 0 || first.Set("S", "k", "v")) && first.Commit());
            EXPECT_EQ(s_systemCalls.m_openHandles, 0);
            if (child == 0) continue;
            if (what == "makes a request") {
                waitpid(child, &status, 0);
                EXPECT_EQ(status, 0);
            }
            s_systemCalls = {};
            OdbcIniUpdate update(m_file, 0600);
            EXPECT_TRUE(update.Set("Next", "k", "v") && update.Commit());
            // A copy that nothing can close can look like a program that is writing.
            const bool isUnknown = what == "idles, unknown to the library";
            EXPECT_LT(s_systemCalls.m_clockOffset, isUnknown ? 4'500'000 : 100'000);
            if (what != "makes a request") {
                kill(child, SIGKILL);
                waitpid(child, &status, 0);
            }
        }
    }
}

/// Files that a killed process left have passwords. A read is enough to remove them.
TEST_F(OdbcIniFaults, LeftFilesGoWithTheNextRequest) {
    const std::string left = m_file + ".veltrane-0123456789abcdef";
    const std::string used = m_file + ".veltrane-00000000000000ff";
    const std::string other = m_file + ".veltrane-mine";
    for (const char* request : {"read", "lock", "lock a file that is not there"}) {
        SCOPED_TRACE(request);
        std::filesystem::remove(m_file);
        if (request != std::string_view("lock a file that is not there")) {
            Write(OLD);
        }
        for (const std::string& path : {left, used, other}) IniScratch::Write(path, "PWD=p");
        const int owner = open(used.c_str(), O_RDONLY);
        ASSERT_EQ(flock(owner, LOCK_EX), 0);
        s_systemCalls = {};
        EXPECT_EQ(OdbcIniFile::FindLeftFiles(m_file), std::vector<std::string>{left});
        std::string bytes;
        struct stat status {};
        OdbcIniFile file(m_file);
        EXPECT_TRUE(std::string_view(request) == "read" ? file.Read(bytes, status)
                                                        : file.Lock(bytes, 0600));
        EXPECT_FALSE(std::filesystem::exists(left));
        EXPECT_TRUE(std::filesystem::exists(used) && std::filesystem::exists(other));
        close(owner);
        EXPECT_EQ(OdbcIniFile::FindLeftFiles(m_file), std::vector<std::string>{used});
    }
}

TEST_F(OdbcIniFaults, ReportsWhatCannotBeReplaced) {
    for (const char* name : {"statx", "rename"}) {
        SCOPED_TRACE(name);
        FailAll(name, EBUSY);
        OdbcIniUpdate update(m_file, 0600);
        update.Set("S", "k", "v");
        EXPECT_FALSE(update.Commit());
        EXPECT_EQ(
            update.GetFailure().Describe(),
            m_file +
                ": cannot be replaced, because the file itself is mounted (mount its directory "
                "instead): Device or resource busy");
        EXPECT_EQ(Read(), OLD);
    }
    s_systemCalls = {};
    OdbcIniFile file(m_file);
    std::string bytes;
    ASSERT_TRUE(file.Lock(bytes, 0600));
    constexpr std::size_t SIZE = (256 << 20) + 1;
    void* const large = mmap(nullptr, SIZE, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_FALSE(file.Replace(std::string_view(static_cast<const char*>(large), SIZE)));
    EXPECT_EQ(file.GetFailure().m_error, EFBIG) << "no program could read it";
    munmap(large, SIZE);
}

/// A file system that reports more bytes than it wrote.
TEST_F(OdbcIniFaults, ANewFileOfAnotherSizeIsNotPutInPlace) {
    bool isWritten = false;
    s_systemCalls.m_before = [&](const std::string& in_name, std::size_t) {
        if (in_name == "write") isWritten = true;
        if (in_name != "fstat" || !std::exchange(isWritten, false)) return 0;
        for (const auto& entry : std::filesystem::directory_iterator(m_scratch.Folder())) {
            if (entry.path().filename().string().find(".veltrane-") != std::string::npos) {
                std::filesystem::resize_file(entry.path(), 3);
            }
        }
        return 0;
    };
    EXPECT_FALSE(Change());
    ExpectTheFileAlone(OLD);
}

/// Another program or another request creates the file, while this one finds none. Also on file
/// systems that can neither exchange names nor refuse to replace one.
TEST_F(OdbcIniFaults, AFileThatAppearsIsNotReplaced) {
    for (int bits = 0; bits < 12; ++bits) {
        const std::string how[] = {"an empty file", "a file", "another first change"};
        const std::string& kind = how[bits / 4];
        const bool hasFlags = bits % 2 == 0;
        // A request that changes nothing must not remove the file either.
        const bool isChange = bits / 2 % 2 == 0;
        for (std::size_t call = 0, calls = 1; call < calls; ++call) {
            SCOPED_TRACE(kind + (hasFlags ? "" : ", no flags") + (isChange ? "" : ", no change") +
                         " before call " + std::to_string(call));
            std::filesystem::remove(m_file);
            bool isDone = false;
            s_systemCalls = {};
            s_systemCalls.m_hasRenameFlags = hasFlags;
            s_systemCalls.m_before = [&](const std::string&, std::size_t in_call) {
                if (in_call != call || std::filesystem::exists(m_file)) return 0;
                isDone = true;
                if (kind == "another first change") {
                    OdbcIniUpdate other(m_file, 0600);
                    EXPECT_TRUE(other.Set("Other", "k", "v") && other.Commit());
                } else {
                    Write(kind == "a file" ? OTHER : "");
                }
                return 0;
            };
            OdbcIniUpdate update(m_file, 0600);
            const auto edit = [&](OdbcIniText& io_text) {
                isChange ? io_text.AddSection("S") : io_text.RemoveSection("none");
            };
            EXPECT_TRUE(update.Commit(edit));
            calls = s_systemCalls.m_calls.size();
            const std::string now = Read();
            if (!isDone) break;
            EXPECT_EQ(m_scratch.CountFiles(), 1u);
            if (kind == "a file") {
                EXPECT_TRUE(now.starts_with(OTHER)) << now;
            }
            if (kind == "another first change") {
                EXPECT_NE(now.find("[Other]\nk=v\n"), std::string::npos) << now;
            }
            EXPECT_EQ(now.find("[S]") != std::string::npos, isChange) << now;
        }
    }
}

TEST_F(OdbcIniFaults, InterruptedAndShortCallsGoOn) {
    s_systemCalls.m_maxTransfer = 3;
    s_systemCalls.m_before = [](const std::string& in_name, std::size_t in_call) {
        const bool canBeInterrupted =
            in_name == "read" || in_name == "write" || in_name == "flock" || in_name == "close";
        return canBeInterrupted && in_call % 2 == 0 ? EINTR : 0;
    };
    EXPECT_TRUE(Change());
    EXPECT_EQ(Read(), NEW);
}

TEST_F(OdbcIniFaults, DyingAtAnyCallLeavesTheOldFileOrTheNewOne) {
    const std::size_t calls = CountCalls();
    for (std::size_t call = 0; call < calls; ++call) {
        SCOPED_TRACE(call);
        Write(OLD);
        const pid_t child = fork();
        if (child == 0) {
            s_systemCalls.m_before = [=](const std::string&, std::size_t in_number) {
                return in_number == calls + call ? kill(getpid(), SIGKILL) : 0;
            };
            Change();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        // A file that was not written for longer is checked with fewer calls.
        ASSERT_TRUE(WIFSIGNALED(status) || call > 20);
        const std::string now = Read();
        EXPECT_TRUE(now == NEW || (WIFSIGNALED(status) && now == OLD)) << now;
        // The next one does not wait, and removes the files of the dead one.
        s_systemCalls.m_before = nullptr;
        EXPECT_TRUE(Change());
        ExpectTheFileAlone(NEW);
        s_systemCalls.m_calls.resize(calls);
    }
}

/// On a network file system handles go stale when another host replaces the file.
TEST_F(OdbcIniFaults, AStaleHandleIsOpenedAgain) {
    const std::pair<const char*, int> FAULTS[] = {
        {"open", ESTALE},    {"flock", ESTALE}, {"fstat", ESTALE}, {"fstat", ENOENT},
        {"fstatat", ESTALE}, {"read", ESTALE},  {"read", ENOENT},  {"openat", ESTALE}};
    for (const auto& [name, error] : FAULTS) {
        for (const bool isForEver : {false, true}) {
            SCOPED_TRACE(name + (" " + std::to_string(error)) + (isForEver ? ", for ever" : ""));
            Restore();
            bool isDone = false;
            s_systemCalls.m_sleepBonus = 1'000'000;
            s_systemCalls.m_before = [&, call = name, result = error](const std::string& in_name,
                                                                      std::size_t) {
                return in_name == call && (!std::exchange(isDone, true) || isForEver) ? result : 0;
            };
            EXPECT_EQ(Change(), !isForEver);
            ExpectTheFileAlone(isForEver ? OLD : NEW);
            std::string bytes;
            struct stat status {};
            isDone = false;
            const bool isRead = OdbcIniFile(m_file).Read(bytes, status);
            const bool isCalled = isDone;
            EXPECT_EQ(isRead, !isForEver || !isCalled);
        }
    }
}

TEST_F(OdbcIniFaults, ALockThatIsNeverFreedEndsInARefusal) {
    s_systemCalls.m_sleepBonus = 1'000'000;
    OdbcIniFile holder(m_file);
    std::string bytes;
    ASSERT_TRUE(holder.Lock(bytes, 0600));
    OdbcIniFile file(m_file);
    s_systemCalls.m_calls.clear();
    EXPECT_FALSE(file.Lock(bytes, 0600));
    EXPECT_EQ(file.GetFailure().Describe(),
              m_file + ": locked by another program: Connection timed out");
    const auto& calls = s_systemCalls.m_calls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "openat"), 1) << "others watch for that";
    // A link that leads to another file before the lock is free.
    std::filesystem::rename(m_file, m_scratch.SystemFile());
    s_systemCalls.m_before = [&](const std::string& in_name, std::size_t) {
        if (in_name == "getrandom") {
            std::filesystem::remove(m_file);
            Write(OTHER);
            holder.Unlock();
        }
        return 0;
    };
    std::filesystem::create_symlink(m_scratch.SystemFile(), m_file);
    std::error_code error;
    if (!std::filesystem::exists(m_file, error)) return;  // sshfs follows no new links
    EXPECT_TRUE(file.Lock(bytes, 0600));
    EXPECT_EQ(bytes, OTHER);
}

/// As the driver manager's own functions do: they empty the file and write it some time later.
TEST_F(OdbcIniFaults, WaitsForAProgramThatIsWriting) {
    // Without leases the time of the last write decides.
    for (int bits = 0; bits < 32; ++bits) {
        const bool hasLeases = bits % 2 == 0;
        const bool hasRenameFlags = bits / 2 % 2 == 0;
        const bool isTimeLate = bits / 4 % 2 != 0;
        const std::size_t duration = std::array{0, 1, 7, 60}[bits / 8];
        const bool isReplaced = duration == 0;
        Restore();
        const std::size_t calls = CountCalls(hasRenameFlags);
        // If names cannot be exchanged, a second rename follows the last check of the old file's
        // bytes, and of its time and size, which can be the same. A write in between is lost.
        const auto& names = s_systemCalls.m_calls;
        const auto second =
            std::find(std::find(names.begin(), names.end(), "rename") + 1, names.end(), "rename");
        const auto unseen = static_cast<std::size_t>(second - names.begin());
        // Nor is a file seen that replaces the old one then.
        if (isReplaced && unseen < calls) continue;
        const auto synced = static_cast<std::size_t>(
            std::find(names.begin(), names.end(), "fsync") - names.begin());
        for (std::size_t begin = 0; begin <= calls; ++begin) {
            const std::size_t window = duration == 1 ? 3 : 0;
            if (unseen < calls && begin + window >= unseen && begin <= unseen) continue;
            SCOPED_TRACE("call " + std::to_string(begin) + ", for " + std::to_string(duration) +
                         (hasLeases ? "" : ", without leases") +
                         (hasRenameFlags ? "" : ", without flags") +
                         (isTimeLate ? ", times last" : ""));
            Restore();
            const auto time = std::filesystem::last_write_time(m_file);
            int writer = -1;
            s_systemCalls.m_hasRenameFlags = hasRenameFlags;
            const auto interfere = [&, end = begin + duration](const std::string& in_name,
                                                               std::size_t in_call) {
                if (in_call == begin && isReplaced) std::filesystem::remove(m_file);
                if (in_call == begin) {
                    writer =
                        open(m_file.c_str(), O_WRONLY | (isReplaced ? O_CREAT : O_TRUNC), 0600);
                }
                if (in_call == begin && isTimeLate) std::filesystem::last_write_time(m_file, time);
                if (in_call == end && writer >= 0) {
                    EXPECT_GT(write(writer, OTHER, sizeof OTHER - 1), 0);
                    close(std::exchange(writer, -1));
                }
                return in_name == "lease" && !hasLeases ? EINVAL : 0;
            };
            s_systemCalls.m_before = interfere;
            EXPECT_TRUE(Change());
            const std::size_t last = s_systemCalls.m_calls.size();
            for (std::size_t call = last; call <= begin + duration; ++call) interfere("", call);
            const std::string now = Read();
            EXPECT_TRUE(now.starts_with(OTHER)) << now;
            if (duration <= 1 && begin < synced) {
                EXPECT_EQ(now, std::string(OTHER) + "\n[S]\nDriver=V\n") << "edited again";
            }
        }
    }
}

TEST_F(OdbcIniFaults, ReadsNoPartOfWhatAProgramIsWriting) {
    for (const std::size_t part : {std::size_t{0}, sizeof OTHER / 2}) {
        SCOPED_TRACE(part);
        Restore();
        const auto time = std::filesystem::last_write_time(m_file);
        int writer = open(m_file.c_str(), O_WRONLY | O_TRUNC);
        EXPECT_EQ(write(writer, OTHER, part), static_cast<ssize_t>(part));
        std::filesystem::last_write_time(m_file, time);  // the times change last
        s_systemCalls.m_before = [&](const std::string& in_name, std::size_t) {
            if (in_name == "getrandom" && writer >= 0) {  // in a pause
                EXPECT_GT(write(writer, OTHER + part, sizeof OTHER - 1 - part), 0);
                close(std::exchange(writer, -1));
            }
            return 0;
        };
        std::string bytes;
        struct stat status {};
        EXPECT_TRUE(OdbcIniFile(m_file).Read(bytes, status));
        EXPECT_EQ(bytes, OTHER);
    }
}

TEST_F(OdbcIniFaults, AnotherProgramThatNeverStopsWritingEndsInARefusal) {
    s_systemCalls.m_sleepBonus = 100'000;
    s_systemCalls.m_before = [&](const std::string& in_name, std::size_t in_call) {
        if (in_name == "fsync") {
            Write(OLD + std::to_string(in_call) + "=v\n");
        }
        return 0;
    };
    EXPECT_FALSE(Change());
    EXPECT_TRUE(Read().starts_with(OLD));
    EXPECT_EQ(m_scratch.CountFiles(), 1u);
}

}  // namespace
}  // namespace Veltrane::ODBC
