/// What the state of a file says about who has written it (Linux).
#ifndef SETUP_FILESTATE_H
#define SETUP_FILESTATE_H

#include <sys/stat.h>

#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC::FileState {

bool IsSameFile(const struct stat& in_left, const struct stat& in_right);
bool IsSameTime(const timespec& in_left, const timespec& in_right);
/// True when both are the same file and it was not written in between.
bool IsSameVersion(const struct stat& in_left, const struct stat& in_right);
bool HasSameRights(const struct stat& in_left, const struct stat& in_right);

/// True when the next write is certain to change the modification time, because the tick of the
/// last write is over. A file that was renamed in a later tick, as ours are, shows that.
bool IsTimeTelling(const struct stat& in_stat);

/// True when one of these programs can be in the middle of writing the file in place. A write sets
/// both times; a file that was renamed after it was written, as ours are, has a later change time.
/// (A child that was forked during the write can still have the file open.)
/// @param in_begin  the monotonic time at which the caller first saw the file
bool IsBeingWritten(SystemCalls::Writers in_writers, const struct stat& in_stat,
                    long long in_begin);

}  // namespace Veltrane::ODBC::FileState

#endif
