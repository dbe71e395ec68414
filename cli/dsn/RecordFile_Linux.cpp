#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Setup/OdbcIniFile.h"
#include "Setup/SystemCalls.h"
#include "cli/dsn/RecordFile.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

namespace SystemCalls = ODBC::SystemCalls;

constexpr char ENDING[] = ".veltrane-dsn-change";
constexpr unsigned POLL_MICROSECONDS = 2000;

/// Beside the file itself when its path is a link.
std::string PathFor(const DsnStore& in_store) {
    const std::string real = SystemCalls::RealPath(in_store.GetPath().c_str());
    return (real.empty() ? in_store.GetPath() : real) + ENDING;
}

/// What others could have written must not get into a DSN, and a file that has another name as well
/// is not ours to empty.
bool IsOurs(const struct stat& in_status) {
    return S_ISREG(in_status.st_mode) && in_status.st_nlink <= 1 && in_status.st_uid == geteuid() &&
           (in_status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

[[noreturn]] void Fail(const std::string& in_path, const std::string& in_operation, int in_error) {
    throw CommandError(EXIT_FAILED, in_path + ": " + in_operation + ": " +
                                        std::generic_category().message(in_error));
}

/// On a network file system a file that was removed a moment ago can be seen for a while, and fails
/// so when it is used.
/// @return false when that is the reason
bool FailUnlessRemoved(const std::string& in_path, const std::string& in_operation) {
    const int error = errno;
    struct stat status {};
    const std::string folder = in_path.substr(0, in_path.rfind('/') + 1);
    const bool isRemoved =
        error == ESTALE ||
        (error == ENOENT && SystemCalls::Stat(folder.c_str(), status, true) == 0);
    if (!isRemoved) Fail(in_path, in_operation, error);
    return false;
}

}  // namespace

struct RecordFile::State {
    std::string m_path;
    SystemCalls::FileHandle m_file;
    bool m_isLeft = false;

    bool Open();
};

/// @return false when somebody else has the file or has just removed it
bool RecordFile::State::Open() {
    m_file = SystemCalls::FileHandle(SystemCalls::Open(
        m_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600));
    if (!m_file.IsOpen()) return FailUnlessRemoved(m_path, "cannot open");
    struct stat status {};
    if (SystemCalls::StatHandle(m_file.Get(), status) != 0) {
        return FailUnlessRemoved(m_path, "cannot read");
    }
    if (!IsOurs(status)) {
        m_file = SystemCalls::FileHandle();
        throw CommandError(EXIT_FAILED, m_path + ": is somebody else's; remove it");
    }
    if (SystemCalls::Lock(m_file.Get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK || errno == EINTR) return false;
        return FailUnlessRemoved(m_path, "cannot lock");
    }
    struct stat inPlace {};
    return SystemCalls::Stat(m_path.c_str(), inPlace, false) == 0 &&
           inPlace.st_ino == status.st_ino && inPlace.st_dev == status.st_dev;
}

RecordFile::RecordFile(const DsnStore& in_store) : m_state(std::make_unique<State>()) {
    m_state->m_path = PathFor(in_store);
    const long long deadline = SystemCalls::GetMonotonicTime() + ODBC::OdbcIniFile::LOCK_TIMEOUT;
    while (!m_state->Open()) {
        if (SystemCalls::GetMonotonicTime() > deadline) {
            Fail(m_state->m_path, "in use by another run", ETIMEDOUT);
        }
        SystemCalls::SleepMicroseconds(POLL_MICROSECONDS);
    }
}

RecordFile::~RecordFile() {
    // Still locked here, so that nobody's record but this one can be in the place.
    if (m_state->m_file.IsOpen() && !m_state->m_isLeft) unlink(m_state->m_path.c_str());
}

std::string RecordFile::Read() const {
    std::string bytes;
    char buffer[4096];
    for (;;) {
        const ssize_t count = SystemCalls::Read(m_state->m_file.Get(), buffer, sizeof buffer,
                                                static_cast<off_t>(bytes.size()));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Fail(m_state->m_path, "cannot read", errno);
        if (count == 0) return bytes;
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
}

void RecordFile::Clear() {
    if (ftruncate(m_state->m_file.Get(), 0) != 0) Fail(m_state->m_path, "cannot write", errno);
}

void RecordFile::Write(const std::string& in_text, bool in_isLasting) {
    std::size_t written = 0;
    while (written < in_text.size()) {
        const ssize_t count = SystemCalls::Write(m_state->m_file.Get(), in_text.data() + written,
                                                 in_text.size() - written);
        if (count < 0 && errno != EINTR) Fail(m_state->m_path, "cannot write", errno);
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    if (in_isLasting && SystemCalls::Sync(m_state->m_file.Get()) != 0) {
        Fail(m_state->m_path, "cannot write", errno);
    }
}

void RecordFile::Leave() { m_state->m_isLeft = true; }

bool RecordFile::Exists(const DsnStore& in_store) {
    struct stat status {};
    return SystemCalls::Stat(PathFor(in_store).c_str(), status, false) == 0;
}

std::string RecordFile::FindLeft(const DsnStore& in_store) {
    const std::string path = PathFor(in_store);
    const SystemCalls::FileHandle file(
        SystemCalls::Open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0));
    struct stat status {};
    if (!file.IsOpen() || SystemCalls::StatHandle(file.Get(), status) != 0) return {};
    // A lock is one of a run that is not killed.
    const bool isLeft = status.st_size > 0 && SystemCalls::Lock(file.Get(), LOCK_SH | LOCK_NB) == 0;
    return isLeft ? path : std::string();
}

}  // namespace Veltrane::Cli
