// The real calls under another name, for use by the fake ones.
#define SystemCalls RealSystemCalls
#include "Setup/SystemCalls_Linux.cpp"
#undef SystemCalls
#undef SETUP_SYSTEMCALLS_H
#include "Setup/SystemCalls.h"
#include "tests/support/SystemCalls_Fake.h"

#include <algorithm>
#include <cerrno>

namespace Veltrane::Test {

FakeSystemCalls s_systemCalls;

}  // namespace Veltrane::Test

namespace Veltrane::ODBC::SystemCalls {

namespace Real = RealSystemCalls;
using Test::s_systemCalls;

namespace {

/// Counts a call; false when it has to fail.
bool Enter(const char* in_name) {
    const std::size_t number = s_systemCalls.m_calls.size();
    s_systemCalls.m_calls.emplace_back(in_name);
    const int error = s_systemCalls.m_before ? s_systemCalls.m_before(in_name, number) : 0;
    if (error != 0) errno = error;
    return error == 0;
}

int Opened(int in_handle) {
    if (in_handle >= 0) ++s_systemCalls.m_openHandles;
    return in_handle;
}

}  // namespace

int Open(const char* in_path, int in_flags, mode_t in_mode) {
    return Enter("open") ? Opened(Real::Open(in_path, in_flags, in_mode)) : -1;
}

int OpenAt(int in_directory, const char* in_name, int in_flags, mode_t in_mode) {
    return Enter("openat") ? Opened(Real::OpenAt(in_directory, in_name, in_flags, in_mode)) : -1;
}

/// Closes the handle even if it fails, as the system does.
int Close(int in_handle) {
    --s_systemCalls.m_openHandles;
    const int result = Real::Close(in_handle);
    return Enter("close") ? result : -1;
}

ssize_t Read(int in_handle, void* out_bytes, std::size_t in_size, off_t in_offset) {
    const std::size_t size = std::min(in_size, s_systemCalls.m_maxTransfer);
    return Enter("read") ? Real::Read(in_handle, out_bytes, size, in_offset) : -1;
}

ssize_t Write(int in_handle, const void* in_bytes, std::size_t in_size) {
    const std::size_t size = std::min(in_size, s_systemCalls.m_maxTransfer);
    return Enter("write") ? Real::Write(in_handle, in_bytes, size) : -1;
}

/// Does nothing: no test can see what is on a disk, and a sync takes longer than all the
/// other calls.
int Sync(int /*in_handle*/) { return Enter("fsync") ? 0 : -1; }

int Lock(int in_handle, int in_operation) {
    return Enter("flock") ? Real::Lock(in_handle, in_operation) : -1;
}

int Stat(const char* in_path, struct stat& out_stat, bool in_followLink) {
    return Enter("stat") ? Real::Stat(in_path, out_stat, in_followLink) : -1;
}

int StatHandle(int in_handle, struct stat& out_stat) {
    return Enter("fstat") ? Real::StatHandle(in_handle, out_stat) : -1;
}

int StatAt(int in_directory, const char* in_name, struct stat& out_stat, bool* out_isMounted) {
    if (!Enter("fstatat")) return -1;
    const int result = Real::StatAt(in_directory, in_name, out_stat, out_isMounted);
    if (out_isMounted != nullptr && !Enter("statx")) *out_isMounted = true;
    return result;
}

int ChangeMode(int in_handle, mode_t in_mode) {
    return Enter("fchmod") ? Real::ChangeMode(in_handle, in_mode) : -1;
}

int ChangeOwner(int in_handle, uid_t in_user, gid_t in_group) {
    return Enter("fchown") ? Real::ChangeOwner(in_handle, in_user, in_group) : -1;
}

ssize_t GetAttribute(int in_handle, const char* in_name, void* out_bytes, std::size_t in_size) {
    return Enter("fgetxattr") ? Real::GetAttribute(in_handle, in_name, out_bytes, in_size) : -1;
}

int SetAttribute(int in_handle, const char* in_name, const void* in_bytes, std::size_t in_size) {
    return Enter("fsetxattr") ? Real::SetAttribute(in_handle, in_name, in_bytes, in_size) : -1;
}

int RemoveAttribute(int in_handle, const char* in_name) {
    return Enter("fremovexattr") ? Real::RemoveAttribute(in_handle, in_name) : -1;
}

ssize_t ListAttributes(int in_handle, char* out_names, std::size_t in_size) {
    return Enter("flistxattr") ? Real::ListAttributes(in_handle, out_names, in_size) : -1;
}

int RenameAt(int in_directory, const char* in_from, const char* in_to, unsigned in_flags) {
    if (!Enter("rename")) return -1;
    if (in_flags != 0 && !s_systemCalls.m_hasRenameFlags) {
        errno = EINVAL;
        return -1;
    }
    return Real::RenameAt(in_directory, in_from, in_to, in_flags);
}

int Touch(int in_handle) { return Enter("futimens") ? Real::Touch(in_handle) : -1; }

int LinkAt(int in_directory, const char* in_from, const char* in_to) {
    return Enter("link") ? Real::LinkAt(in_directory, in_from, in_to) : -1;
}

int UnlinkAt(int in_directory, const char* in_name) {
    return Enter("unlink") ? Real::UnlinkAt(in_directory, in_name) : -1;
}

bool IsWritable(const char* in_path, int in_directory) {
    return Enter("access") && Real::IsWritable(in_path, in_directory);
}

std::string RealPath(const char* in_path) {
    return Enter("realpath") ? Real::RealPath(in_path) : "";
}

std::string ReadLink(const char* in_path) {
    return Enter("readlink") ? Real::ReadLink(in_path) : "";
}

Writers FindWriters(int in_handle) {
    return Enter("lease") ? static_cast<Writers>(Real::FindWriters(in_handle)) : Writers::UNKNOWN;
}

Writers FindWritersAgain(int in_handle) { return FindWriters(in_handle); }

std::vector<std::string> ListDirectory(int in_directory, std::string_view in_prefix) {
    return Enter("readdir") ? Real::ListDirectory(in_directory, in_prefix)
                            : std::vector<std::string>();
}

bool GetRandom(void* out_bytes, std::size_t in_size) {
    return Enter("getrandom") && Real::GetRandom(out_bytes, in_size);
}

void SleepMicroseconds(unsigned in_microseconds) {
    if (s_systemCalls.m_isSleeping) {
        Real::SleepMicroseconds(in_microseconds);
    } else {
        s_systemCalls.m_clockOffset += in_microseconds + s_systemCalls.m_sleepBonus;
    }
}

long long GetMonotonicTime() { return Real::GetMonotonicTime() + s_systemCalls.m_clockOffset; }

long long GetRealTime() { return Real::GetRealTime() + s_systemCalls.m_clockOffset; }

bool UseFileRightsOfUser() { return true; }

void UseFileRightsOfProcess() {}

}  // namespace Veltrane::ODBC::SystemCalls
