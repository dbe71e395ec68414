#include "Setup/FileState.h"

namespace Veltrane::ODBC::FileState {

using SystemCalls::Writers;

namespace {

/// A program that has the file open counts as done after this long without a write, in
/// microseconds. An empty file gets longer, because writers begin by emptying it.
constexpr long long WRITER_PAUSE = 4'000'000;
constexpr long long EMPTY_WRITER_PAUSE = 30'000'000;
/// The same when it is unknown whether a program has the file open.
constexpr long long REST = 50'000;
/// The same for file systems that store whole seconds.
constexpr long long WHOLE_SECONDS_REST = 1'050'000;

/// Longer than one tick of a local file system's clock, in microseconds.
constexpr long long TICK = 20'000;

/// Returns the time since the last write, in microseconds.
long long GetAge(const struct stat& in_stat) {
    return SystemCalls::GetRealTime() - in_stat.st_mtim.tv_sec * 1'000'000LL -
           in_stat.st_mtim.tv_nsec / 1000;
}

}  // namespace

bool IsSameFile(const struct stat& in_left, const struct stat& in_right) {
    return in_left.st_dev == in_right.st_dev && in_left.st_ino == in_right.st_ino;
}

bool IsSameTime(const timespec& in_left, const timespec& in_right) {
    return in_left.tv_sec == in_right.tv_sec && in_left.tv_nsec == in_right.tv_nsec;
}

bool IsSameVersion(const struct stat& in_left, const struct stat& in_right) {
    return IsSameFile(in_left, in_right) && in_left.st_size == in_right.st_size &&
           IsSameTime(in_left.st_mtim, in_right.st_mtim);
}

bool HasSameRights(const struct stat& in_left, const struct stat& in_right) {
    return in_left.st_mode == in_right.st_mode && in_left.st_uid == in_right.st_uid &&
           in_left.st_gid == in_right.st_gid;
}

bool IsTimeTelling(const struct stat& in_stat) {
    return !IsSameTime(in_stat.st_mtim, in_stat.st_ctim) ||
           (in_stat.st_mtim.tv_nsec != 0 && GetAge(in_stat) > TICK);
}

bool IsBeingWritten(Writers in_writers, const struct stat& in_stat, long long in_begin) {
    if (in_writers == Writers::NONE) return false;
    // A program that empties the file can stall before and after it is empty, for as long as the
    // disk is busy, and the times change last.
    const long long emptied = in_writers == Writers::SOME ? WRITER_PAUSE : REST;
    const long long opened = in_writers == Writers::SOME ? REST : 0;
    const long long watched = SystemCalls::GetMonotonicTime() - in_begin;
    if (watched < (in_stat.st_size == 0 ? emptied : opened)) return true;
    if (!IsSameTime(in_stat.st_mtim, in_stat.st_ctim)) return false;
    const long long age = GetAge(in_stat);
    if (in_writers == Writers::SOME) {
        return age < (in_stat.st_size == 0 ? EMPTY_WRITER_PAUSE : WRITER_PAUSE);
    }
    // A time in the future is from a file server with another clock and says nothing.
    const long long rest = in_stat.st_mtim.tv_nsec == 0 ? WHOLE_SECONDS_REST : REST;
    return age > -rest && age < rest;
}

}  // namespace Veltrane::ODBC::FileState
