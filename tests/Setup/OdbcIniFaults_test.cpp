// Every system call of a change to an odbc.ini fails, is interrupted, moves a part only, or is the
// last thing that the process does: the file is the old or the new one, whole, and nothing is left.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
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
    return update.StartSection("S") && update.Set("S", "Driver", "V") && update.Commit();
}

/// A fault at one call, identified by its number; the others go as they would.
void FailAt(std::size_t in_number, int in_error) {
    s_systemCalls = {};
    s_systemCalls.m_before = [=](const std::string&, std::size_t in_call) {
        return in_call == in_number ? in_error : 0;
    };
}

std::size_t CountCalls(const IniScratch& in_scratch) {
    s_systemCalls = {};
    EXPECT_TRUE(Change(in_scratch));
    return s_systemCalls.m_calls.size();
}

TEST(OdbcIniFaults, AFailingCallLeavesTheOldFile) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    const std::size_t calls = CountCalls(scratch);
    ASSERT_GT(calls, 15u);
    for (std::size_t call = 0; call < calls; ++call) {
        IniScratch::Write(scratch.UserFile(), OLD);
        FailAt(call, EIO);
        const bool isDone = Change(scratch);
        SCOPED_TRACE(s_systemCalls.m_calls[call] + " " + std::to_string(call));
        EXPECT_EQ(IniScratch::Read(scratch.UserFile()), isDone ? NEW : OLD);
        EXPECT_EQ(scratch.CountFiles(), 1u);
        EXPECT_EQ(s_systemCalls.m_openHandles, 0);
        s_systemCalls.m_before = nullptr;
        EXPECT_TRUE(Change(scratch)) << "the lock is free again";
    }
}

TEST(OdbcIniFaults, WhatMustNotFailIsNotIgnored) {
    for (const char* name :
         {"open", "flock", "read", "realpath", "openat", "write", "fsync", "rename", "fchmod",
          "fgetxattr", "getrandom", "close", "fstat", "fstatat"}) {
        SCOPED_TRACE(name);
        const IniScratch scratch;
        IniScratch::Write(scratch.UserFile(), OLD);
        s_systemCalls = {};
        s_systemCalls.m_before = [=](const std::string& in_name, std::size_t) {
            return in_name == name ? EACCES : 0;
        };
        EXPECT_FALSE(Change(scratch));
        EXPECT_EQ(IniScratch::Read(scratch.UserFile()), OLD);
        EXPECT_EQ(scratch.CountFiles(), 1u);
    }
}

/// What belongs to the file and cannot be given to the new one.
TEST(OdbcIniFaults, AttributesThatCannotBeKeptAreAReasonToRefuse) {
    // user::rw-, user:7:r--, group::---, mask::r--, other::---
    constexpr unsigned char LIST[] = {2,   0,   0,   0,   1,   0,   6,  0,   255, 255, 255,
                                      255, 2,   0,   4,   0,   7,   0,  0,   0,   4,   0,
                                      0,   0,   255, 255, 255, 255, 16, 0,   4,   0,   255,
                                      255, 255, 255, 32,  0,   0,   0,  255, 255, 255, 255};
    for (const bool isOwner : {true, false}) {
        SCOPED_TRACE(isOwner ? "the owner" : "the access list");
        const IniScratch scratch;
        const std::string path = scratch.UserFile();
        IniScratch::Write(path, OLD);
        const int result =
            isOwner ? ::chown(path.c_str(), 1234, 4321)
                    : ::setxattr(path.c_str(), "system.posix_acl_access", LIST, sizeof LIST, 0);
        if (result != 0) continue;  // not root, or a file system without access lists
        s_systemCalls = {};
        s_systemCalls.m_before = [=](const std::string& in_name, std::size_t) {
            return in_name == (isOwner ? "fchown" : "fsetxattr") ? EPERM : 0;
        };
        OdbcIniUpdate update(path, 0600);
        EXPECT_TRUE(update.Set("S", "Driver", "V"));
        EXPECT_FALSE(update.Commit());
        EXPECT_EQ(IniScratch::Read(path), OLD);
        EXPECT_EQ(scratch.CountFiles(), 1u);
        s_systemCalls.m_before = nullptr;
        EXPECT_TRUE(Change(scratch));
    }
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

TEST(OdbcIniFaults, ANewFileGoesAgainWhenTheChangeFails) {
    const IniScratch scratch;
    const std::size_t calls = CountCalls(scratch);
    std::size_t failures = 0;
    for (std::size_t call = 0; call < calls; ++call) {
        std::filesystem::remove(scratch.UserFile());
        FailAt(call, ENOSPC);
        const bool isDone = Change(scratch);
        SCOPED_TRACE(s_systemCalls.m_calls[call] + " " + std::to_string(call));
        EXPECT_EQ(s_systemCalls.m_openHandles, 0);
        if (isDone) continue;
        ++failures;
        // The empty file stays when the failed call was the one to see that it is ours.
        EXPECT_EQ(IniScratch::Read(scratch.UserFile()), "");
        EXPECT_LE(scratch.CountFiles(), 1u);
    }
    EXPECT_GT(failures, 10u);
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
        ASSERT_TRUE(WIFSIGNALED(status));
        const std::string now = IniScratch::Read(scratch.UserFile());
        EXPECT_TRUE(now == OLD || now == NEW) << now;
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
        {"fstatat", ESTALE}, {"read", ESTALE},  {"read", ENOENT},  {"realpath", ESTALE}};
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
            EXPECT_EQ(isRead, !isForEver || !isCalled);
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

TEST(OdbcIniFaults, AnotherProgramThatNeverStopsWritingEndsInARefusal) {
    const IniScratch scratch;
    IniScratch::Write(scratch.UserFile(), OLD);
    s_systemCalls = {};
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
