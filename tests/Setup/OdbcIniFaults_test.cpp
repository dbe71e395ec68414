// Every system call of a change to an odbc.ini fails, is interrupted, moves a part only, or is the
// last thing that the process does: the file is the old or the new one, whole, and nothing is left.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <tuple>
#include <utility>

#include "Setup/OdbcIniUpdate.h"
#include "tests/support/IniScratch.h"
#include "tests/support/SystemCalls_Fake.h"

namespace Veltrane::ODBC {
namespace {

using Test::IniScratch;
using Test::s_systemCalls;

constexpr char OLD[] = "# old\n[A]\nk=v\n";
constexpr char OTHER[] = "# new\n[B]\nk=v\n";
static_assert(sizeof OTHER == sizeof OLD, "as many bytes");
constexpr char NEW[] = "# old\n[A]\nk=v\n\n[S]\nDriver=V\n";

bool Change(const IniScratch& in_scratch) {
    OdbcIniUpdate update(in_scratch.UserFile(), 0600);
    return update.Set("S", "Driver", "V") && update.Commit();
}

/// A fault at one call, identified by its number; the others go as they would.
void FailAt(std::size_t in_number, int in_error) {
    s_systemCalls = {};
    s_systemCalls.m_before = [=](const std::string&, std::size_t in_call) {
        return in_call == in_number ? in_error : 0;
    };
}

void FailAll(const std::string& in_name, int in_error) {
    s_systemCalls = {};
    s_systemCalls.m_before = [=](const std::string& in_call, std::size_t) {
        return in_call == in_name ? in_error : 0;
    };
}

std::size_t CountCalls(const IniScratch& in_scratch, bool in_hasRenameFlags = true) {
    s_systemCalls = {};
    s_systemCalls.m_hasRenameFlags = in_hasRenameFlags;
    EXPECT_TRUE(Change(in_scratch));
    return s_systemCalls.m_calls.size();
}

/// The number of the first call of that name.
std::size_t PlaceOf(const char* in_name) {
    const auto& calls = s_systemCalls.m_calls;
    return static_cast<std::size_t>(std::find(calls.begin(), calls.end(), in_name) - calls.begin());
}

TEST(OdbcIniFaults, AFailingCallLeavesTheOldFile) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    const std::size_t calls = CountCalls(scratch);
    ASSERT_GT(calls, 15u);
    const std::size_t renamed = PlaceOf("rename");
    // Once, after the rename: what was reported as done survives a power cut.
    EXPECT_EQ(std::count(s_systemCalls.m_calls.begin() + static_cast<std::ptrdiff_t>(renamed),
                         s_systemCalls.m_calls.end(), "fsync"),
              1);
    for (std::size_t call = 0; call < calls; ++call) {
        IniScratch::Write(scratch.UserFile(), OLD);
        FailAt(call, EIO);
        const bool isDone = Change(scratch);
        SCOPED_TRACE(s_systemCalls.m_calls[call] + " " + std::to_string(call));
        // Too late to go back; but nobody may be told that it is done.
        const bool isSyncOfDirectory = s_systemCalls.m_calls[call] == "fsync" && call > renamed;
        EXPECT_EQ(isDone, !isSyncOfDirectory && IniScratch::Read(scratch.UserFile()) == NEW);
        if (!isDone && !isSyncOfDirectory) {
            EXPECT_EQ(IniScratch::Read(scratch.UserFile()), OLD);
        }
        EXPECT_LE(scratch.CountFiles(), s_systemCalls.m_calls[call] == "unlink" ? 2u : 1u);
        EXPECT_EQ(s_systemCalls.m_openHandles, 0);
        s_systemCalls.m_before = nullptr;
        EXPECT_TRUE(Change(scratch)) << "the lock is free again";
        EXPECT_EQ(scratch.CountFiles(), 1u);
    }
}

TEST(OdbcIniFaults, WhatMustNotFailIsNotIgnored) {
    for (const char* name :
         {"open", "flock", "read", "readlink", "openat", "write", "fsync", "rename", "fchmod",
          "fgetxattr", "getrandom", "close", "fstat", "fstatat"}) {
        SCOPED_TRACE(name);
        const IniScratch scratch;
        IniScratch::Write(scratch.UserFile(), OLD);
        FailAll(name, EACCES);
        EXPECT_FALSE(Change(scratch));
        EXPECT_EQ(IniScratch::Read(scratch.UserFile()), OLD);
        EXPECT_EQ(scratch.CountFiles(), 1u);
    }
}

/// user::rw-, user:7:r--, group::---, mask::r--, other::---
constexpr unsigned char LIST[] = {2, 0, 0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  4,
                                  0, 7, 0,   0,   0,   4,   0,  0, 0,   255, 255, 255, 255, 16, 0,
                                  4, 0, 255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};

/// What belongs to the file and cannot be given to the new one.
TEST(OdbcIniFaults, AttributesThatCannotBeKeptAreAReasonToRefuse) {
    for (const bool isOwner : {true, false}) {
        SCOPED_TRACE(isOwner ? "the owner" : "the access list");
        const IniScratch scratch;
        const std::string path = scratch.UserFile();
        IniScratch::Write(path, OLD);
        const int result =
            isOwner ? ::chown(path.c_str(), 1234, 4321)
                    : ::setxattr(path.c_str(), "system.posix_acl_access", LIST, sizeof LIST, 0);
        if (result != 0) continue;  // not root, or a file system without access lists
        FailAll(isOwner ? "fchown" : "fsetxattr", EPERM);
        OdbcIniUpdate update(path, 0600);
        EXPECT_TRUE(update.Set("S", "Driver", "V"));
        EXPECT_FALSE(update.Commit());
        EXPECT_EQ(IniScratch::Read(path), OLD);
        EXPECT_EQ(scratch.CountFiles(), 1u);
        s_systemCalls.m_before = nullptr;
        EXPECT_TRUE(Change(scratch));
    }
}

/// The access list that a directory has for new files.
TEST(OdbcIniFaults, AFileGetsNoWiderThanItWas) {
    const IniScratch scratch;
    const std::string path = scratch.UserFile();
    const char* const folder = scratch.Folder().c_str();
    if (::setxattr(folder, "system.posix_acl_default", LIST, sizeof LIST, 0) != 0) {
        GTEST_SKIP() << "a file system without access lists";
    }
    IniScratch::Write(path, OLD);
    ::removexattr(path.c_str(), "system.posix_acl_access");
    ::chmod(path.c_str(), 0640);
    ASSERT_EQ(::setxattr(path.c_str(), "user.note", "kept", 4, 0), 0);
    FailAt(static_cast<std::size_t>(-1), 0);
    EXPECT_TRUE(Change(scratch));
    char value[100];
    EXPECT_EQ(::getxattr(path.c_str(), "system.posix_acl_access", value, sizeof value), -1);
    EXPECT_EQ(::getxattr(path.c_str(), "user.note", value, sizeof value), 4);
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0640});
    FailAll("fremovexattr", EPERM);
    OdbcIniUpdate update(path, 0600);
    EXPECT_TRUE(update.Set("S", "PWD", "secret"));
    EXPECT_FALSE(update.Commit());
    EXPECT_EQ(IniScratch::Read(path), NEW);
    // As the driver manager makes it when it looks for something.
    IniScratch::Write(path, "");
    ::chmod(path.c_str(), 0644);
    s_systemCalls.m_before = nullptr;
    EXPECT_TRUE(Change(scratch));
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms{0600});
}

/// A host may have closed its standard handles, and prints to them nevertheless.
TEST(OdbcIniFaults, NoHandleIsAStandardHandle) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    const pid_t child = ::fork();
    if (child == 0) {
        for (int handle = 0; handle < 3; ++handle) ::close(handle);
        int used = 0;
        s_systemCalls.m_before = [&](const std::string&, std::size_t) {
            for (int handle = 0; handle < 3; ++handle) {
                used += ::fcntl(handle, F_GETFD) == -1 ? 0 : 1;
            }
            return 0;
        };
        ::_exit(Change(scratch) && used == 0 ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(IniScratch::Read(scratch.UserFile()), NEW);
}

/// A host forks in the middle of a request of another of its threads.
TEST(OdbcIniFaults, AChildHoldsNothing) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    const std::size_t calls = CountCalls(scratch);
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    for (const std::string what : {"idles", "idles, unknown to the library", "makes a request"}) {
        for (std::size_t call = 0; call < calls; ++call) {
            SCOPED_TRACE("a child that " + what + ", call " + std::to_string(call));
            IniScratch::Write(scratch.UserFile(), OLD);
            pid_t child = 0;
            int status = 0;
            s_systemCalls = {};
            s_systemCalls.m_before = [&](const std::string&, std::size_t in_call) {
                if (in_call != call) return 0;
                child = what == "idles, unknown to the library"
                            ? static_cast<pid_t>(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0))
                            : ::fork();
                if (child != 0) return ::read(pipe[0], &status, 1) == 1 ? 0 : EIO;
                status = static_cast<int>(::write(pipe[1], "", 1));  // its fork is over
                if (what != "makes a request") ::_exit(::pause());
                s_systemCalls.m_isSleeping = true;
                OdbcIniUpdate update(scratch.UserFile(), 0600);
                ::_exit(update.Set("Child", "k", "v") && update.Commit() ? 0 : 1);
            };
            // A file that is replaced has another lock afterwards; so every other request does not.
            OdbcIniUpdate first(scratch.UserFile(), 0600);
            EXPECT_TRUE((call % 2 == 0 || first.Set("S", "k", "v")) && first.Commit());
            EXPECT_EQ(s_systemCalls.m_openHandles, 0);
            if (child == 0) continue;
            if (what == "makes a request") {
                ::waitpid(child, &status, 0);
                EXPECT_EQ(status, 0);
            }
            s_systemCalls = {};
            OdbcIniUpdate update(scratch.UserFile(), 0600);
            EXPECT_TRUE(update.Set("Next", "k", "v") && update.Commit());
            // A copy that nothing can close may look like a program in the middle of writing.
            const bool isUnknown = what == "idles, unknown to the library";
            EXPECT_LT(s_systemCalls.m_clockOffset, isUnknown ? 4'500'000 : 100'000);
            if (what != "makes a request") {
                ::kill(child, SIGKILL);
                ::waitpid(child, &status, 0);
            }
        }
    }
}

/// What a killed process has left holds passwords. Reading is enough to make it go.
TEST(OdbcIniFaults, LeftFilesGoWithTheNextRequest) {
    const IniScratch scratch;
    const std::string left = scratch.UserFile().string() + ".veltrane-0123456789abcdef";
    const std::string used = scratch.UserFile().string() + ".veltrane-00000000000000ff";
    const std::string other = scratch.UserFile().string() + ".veltrane-mine";
    for (const char* request : {"read", "lock", "lock a file that is not there"}) {
        SCOPED_TRACE(request);
        std::filesystem::remove(scratch.UserFile());
        if (request != std::string_view("lock a file that is not there")) {
            IniScratch::Write(scratch.UserFile(), OLD);
        }
        for (const std::string& path : {left, used, other}) IniScratch::Write(path, "PWD=p");
        const int owner = ::open(used.c_str(), O_RDONLY);
        ASSERT_EQ(::flock(owner, LOCK_EX), 0);
        s_systemCalls = {};
        EXPECT_EQ(OdbcIniFile::FindLeftFiles(scratch.UserFile()), std::vector<std::string>{left});
        std::string bytes;
        struct stat status {};
        OdbcIniFile file(scratch.UserFile());
        EXPECT_TRUE(std::string_view(request) == "read" ? file.Read(bytes, status)
                                                        : file.Lock(bytes, 0600));
        EXPECT_FALSE(std::filesystem::exists(left));
        EXPECT_TRUE(std::filesystem::exists(used) && std::filesystem::exists(other));
        ::close(owner);
        EXPECT_EQ(OdbcIniFile::FindLeftFiles(scratch.UserFile()), std::vector<std::string>{used});
    }
}

TEST(OdbcIniFaults, SaysWhatCannotBeReplaced) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    for (const char* name : {"statx", "rename"}) {
        SCOPED_TRACE(name);
        FailAll(name, EBUSY);
        OdbcIniUpdate update(scratch.UserFile(), 0600);
        update.Set("S", "k", "v");
        EXPECT_FALSE(update.Commit());
        EXPECT_EQ(update.GetFailure().Describe(),
                  scratch.UserFile().string() +
                      ": cannot be replaced, because it is mounted by itself (mount its directory "
                      "instead): Device or resource busy");
        EXPECT_EQ(IniScratch::Read(scratch.UserFile()), OLD);
    }
    s_systemCalls = {};
    OdbcIniFile file(scratch.UserFile());
    std::string bytes;
    ASSERT_TRUE(file.Lock(bytes, 0600));
    constexpr std::size_t SIZE = (256 << 20) + 1;
    void* const large = ::mmap(nullptr, SIZE, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_FALSE(file.Replace(std::string_view(static_cast<const char*>(large), SIZE)));
    EXPECT_EQ(file.GetFailure().m_error, EFBIG) << "nobody could read it";
    ::munmap(large, SIZE);
}

/// A file system that says it wrote more than it did.
TEST(OdbcIniFaults, ANewFileOfAnotherSizeIsNotPutInPlace) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    bool isWritten = false;
    s_systemCalls = {};
    s_systemCalls.m_before = [&](const std::string& in_name, std::size_t) {
        if (in_name == "write") isWritten = true;
        if (in_name != "fstat" || !std::exchange(isWritten, false)) return 0;
        for (const auto& entry : std::filesystem::directory_iterator(scratch.Folder())) {
            if (entry.path().filename().string().find(".veltrane-") != std::string::npos) {
                std::filesystem::resize_file(entry.path(), 3);
            }
        }
        return 0;
    };
    EXPECT_FALSE(Change(scratch));
    EXPECT_EQ(IniScratch::Read(scratch.UserFile()), OLD);
    EXPECT_EQ(scratch.CountFiles(), 1u);
}

/// Another program makes the file, or another request, while this one finds none. Also where names
/// can neither be exchanged nor be kept from replacing another.
TEST(OdbcIniFaults, AFileThatAppearsIsNotTakenForOurs) {
    const IniScratch scratch;
    for (int bits = 0; bits < 12; ++bits) {
        const std::string how[] = {"an empty file", "a file", "another first change"};
        const std::string& kind = how[bits / 4];
        const bool hasFlags = bits % 2 == 0;
        // One that finds nothing to change must not remove the file either.
        const bool isChange = bits / 2 % 2 == 0;
        for (std::size_t call = 0, calls = 1; call < calls; ++call) {
            SCOPED_TRACE(kind + (hasFlags ? "" : ", no flags") + (isChange ? "" : ", no change") +
                         " before call " + std::to_string(call));
            std::filesystem::remove(scratch.UserFile());
            bool isDone = false;
            s_systemCalls = {};
            s_systemCalls.m_hasRenameFlags = hasFlags;
            s_systemCalls.m_before = [&](const std::string&, std::size_t in_call) {
                if (in_call != call || std::filesystem::exists(scratch.UserFile())) return 0;
                isDone = true;
                if (kind == "another first change") {
                    OdbcIniUpdate other(scratch.UserFile(), 0600);
                    EXPECT_TRUE(other.Set("Other", "k", "v") && other.Commit());
                } else {
                    IniScratch::Write(scratch.UserFile(), kind == "a file" ? OTHER : "");
                }
                return 0;
            };
            OdbcIniUpdate update(scratch.UserFile(), 0600);
            const auto edit = [&](OdbcIniText& io_text) {
                isChange ? io_text.AddSection("S") : io_text.RemoveSection("none");
            };
            EXPECT_TRUE(update.Do(edit) && update.Commit());
            calls = s_systemCalls.m_calls.size();
            const std::string now = IniScratch::Read(scratch.UserFile());
            if (!isDone) break;
            EXPECT_EQ(scratch.CountFiles(), 1u);
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

TEST(OdbcIniFaults, InterruptedAndShortCallsGoOn) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    s_systemCalls = {};
    s_systemCalls.m_maxTransfer = 3;
    s_systemCalls.m_before = [](const std::string& in_name, std::size_t in_call) {
        const bool canBeInterrupted =
            in_name == "read" || in_name == "write" || in_name == "flock" || in_name == "close";
        return canBeInterrupted && in_call % 2 == 0 ? EINTR : 0;
    };
    EXPECT_TRUE(Change(scratch));
    EXPECT_EQ(IniScratch::Read(scratch.UserFile()), NEW);
}

TEST(OdbcIniFaults, DyingAtAnyCallLeavesTheOldFileOrTheNewOne) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    const std::size_t calls = CountCalls(scratch);
    for (std::size_t call = 0; call < calls; ++call) {
        SCOPED_TRACE(call);
        IniScratch::Write(scratch.UserFile(), OLD);
        const pid_t child = ::fork();
        if (child == 0) {
            s_systemCalls.m_before = [=](const std::string&, std::size_t in_number) {
                return in_number == calls + call ? ::kill(::getpid(), SIGKILL) : 0;
            };
            Change(scratch);
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        // A file that has rested for longer is looked at with fewer calls.
        ASSERT_TRUE(WIFSIGNALED(status) || call > 20);
        const std::string now = IniScratch::Read(scratch.UserFile());
        EXPECT_TRUE(now == NEW || (WIFSIGNALED(status) && now == OLD)) << now;
        // The next one is not held up, and clears away what the dead one left.
        s_systemCalls.m_before = nullptr;
        EXPECT_TRUE(Change(scratch));
        EXPECT_EQ(IniScratch::Read(scratch.UserFile()), NEW);
        EXPECT_EQ(scratch.CountFiles(), 1u);
        s_systemCalls.m_calls.resize(calls);
    }
}

/// Handles go stale on a network file system when another host replaces the file.
TEST(OdbcIniFaults, AStaleHandleIsOpenedAgain) {
    const std::pair<const char*, int> FAULTS[] = {
        {"open", ESTALE},    {"flock", ESTALE}, {"fstat", ESTALE}, {"fstat", ENOENT},
        {"fstatat", ESTALE}, {"read", ESTALE},  {"read", ENOENT},  {"readlink", ESTALE}};
    for (const auto& [name, error] : FAULTS) {
        for (const bool isForEver : {false, true}) {
            SCOPED_TRACE(name + (" " + std::to_string(error)) + (isForEver ? ", for ever" : ""));
            const IniScratch scratch;
            IniScratch::Write(scratch.UserFile(), OLD);
            bool isDone = false;
            s_systemCalls = {};
            s_systemCalls.m_sleepBonus = 1'000'000;
            s_systemCalls.m_before = [&, call = name, result = error](const std::string& in_name,
                                                                      std::size_t) {
                return in_name == call && (!std::exchange(isDone, true) || isForEver) ? result : 0;
            };
            EXPECT_EQ(Change(scratch), !isForEver);
            EXPECT_EQ(IniScratch::Read(scratch.UserFile()), isForEver ? OLD : NEW);
            EXPECT_EQ(scratch.CountFiles(), 1u);
            std::string bytes;
            struct stat status {};
            isDone = false;
            const bool isRead = OdbcIniFile(scratch.UserFile()).Read(bytes, status);
            const bool isCalled = isDone;
            // Where the real file is matters to what is cleared away, not to what is read.
            EXPECT_EQ(isRead, !isForEver || !isCalled || std::string_view(name) == "readlink");
        }
    }
}

TEST(OdbcIniFaults, ALockThatIsNeverFreedEndsInARefusal) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    s_systemCalls = {};
    s_systemCalls.m_sleepBonus = 1'000'000;
    OdbcIniFile holder(scratch.UserFile());
    std::string bytes;
    ASSERT_TRUE(holder.Lock(bytes, 0600));
    OdbcIniFile file(scratch.UserFile());
    EXPECT_FALSE(file.Lock(bytes, 0600));
    EXPECT_EQ(file.GetFailure().Describe(),
              scratch.UserFile().string() + ": locked by another program: Connection timed out");
    holder.Unlock();
    EXPECT_TRUE(file.Lock(bytes, 0600));
}

TEST(OdbcIniFaults, EditsAreMadeAgainOnWhatAnotherProgramWrote) {
    for (const std::string call : {"flock", "read", "openat", "write", "fchmod", "fsync"}) {
        for (const std::string how : {"written", "replaced", "written in the same tick"}) {
            SCOPED_TRACE(call + ", " + how);
            const IniScratch scratch;
            IniScratch::Write(scratch.UserFile(), OLD);
            const auto tick = std::filesystem::last_write_time(scratch.UserFile());
            bool isDone = false;
            s_systemCalls = {};
            s_systemCalls.m_before = [&](const std::string& in_name, std::size_t) {
                if (in_name != call || std::exchange(isDone, true)) return 0;
                if (how == "replaced") std::filesystem::remove(scratch.UserFile());
                IniScratch::Write(scratch.UserFile(), OTHER);
                if (how == "written in the same tick") {
                    std::filesystem::last_write_time(scratch.UserFile(), tick);
                }
                return 0;
            };
            EXPECT_TRUE(Change(scratch));
            EXPECT_TRUE(isDone);
            EXPECT_EQ(IniScratch::Read(scratch.UserFile()),
                      std::string(OTHER) + "\n[S]\nDriver=V\n");
            EXPECT_EQ(scratch.CountFiles(), 1u);
        }
    }
}

/// As the driver manager's own functions do: the file is emptied, and written some time later.
TEST(OdbcIniFaults, AProgramInTheMiddleOfWritingIsWaitedFor) {
    const IniScratch scratch;
    // Without leases it is the time of the last write that tells.
    for (const auto& [duration, hasLeases, hasRenameFlags] :
         std::initializer_list<std::tuple<std::size_t, bool, bool>>{{1, true, true},
                                                                    {7, true, true},
                                                                    {60, true, true},
                                                                    {1, false, true},
                                                                    {7, false, true},
                                                                    {60, false, true},
                                                                    {7, true, false},
                                                                    {7, false, false}}) {
        IniScratch::Write(scratch.UserFile(), OLD);
        const std::size_t calls = CountCalls(scratch, hasRenameFlags);
        // Where names cannot be exchanged, a second rename follows the last look at the old file:
        // at its bytes, and at its time and size, which may be the same. What is written in between
        // is lost.
        const auto& names = s_systemCalls.m_calls;
        const auto second =
            std::find(names.begin() + static_cast<std::ptrdiff_t>(PlaceOf("rename")) + 1,
                      names.end(), "rename");
        const auto unseen = static_cast<std::size_t>(second - names.begin());
        for (std::size_t begin = 0; begin <= calls; ++begin) {
            const std::size_t window = duration == 1 ? 3 : 0;
            if (unseen < calls && begin + window >= unseen && begin <= unseen) continue;
            SCOPED_TRACE("call " + std::to_string(begin) + ", for " + std::to_string(duration) +
                         (hasLeases ? "" : ", without leases") +
                         (hasRenameFlags ? "" : ", without flags"));
            IniScratch::Write(scratch.UserFile(), OLD);
            int writer = -1;
            s_systemCalls = {};
            s_systemCalls.m_hasRenameFlags = hasRenameFlags;
            const auto write = [&, end = begin + duration, error = hasLeases ? 0 : EINVAL](
                                   const std::string& in_name, std::size_t in_call) {
                if (in_call == begin)
                    writer = ::open(scratch.UserFile().c_str(), O_WRONLY | O_TRUNC);
                if (in_call == end && writer >= 0) {
                    EXPECT_GT(::write(writer, OTHER, sizeof OTHER - 1), 0);
                    ::close(std::exchange(writer, -1));
                }
                return in_name == "lease" ? error : 0;
            };
            s_systemCalls.m_before = write;
            EXPECT_TRUE(Change(scratch));
            const std::size_t last = s_systemCalls.m_calls.size();
            for (std::size_t call = last; call <= begin + duration; ++call) write("", call);
            const std::string now = IniScratch::Read(scratch.UserFile());
            EXPECT_TRUE(now.starts_with(OTHER)) << now;
        }
    }
}

TEST(OdbcIniFaults, AnotherProgramThatNeverStopsWritingEndsInARefusal) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    s_systemCalls = {};
    s_systemCalls.m_sleepBonus = 100'000;
    s_systemCalls.m_before = [&](const std::string& in_name, std::size_t in_call) {
        if (in_name == "fsync") {
            IniScratch::Write(scratch.UserFile(), OLD + std::to_string(in_call) + "=v\n");
        }
        return 0;
    };
    EXPECT_FALSE(Change(scratch));
    EXPECT_TRUE(IniScratch::Read(scratch.UserFile()).starts_with(OLD));
    EXPECT_EQ(scratch.CountFiles(), 1u);
}

}  // namespace
}  // namespace Veltrane::ODBC
