#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "Setup/OdbcIniFile.h"
#include "cli/ChangeRecord.h"
#include "cli/CommandError.h"

namespace Veltrane::Cli {

namespace {

using ODBC::OdbcIniText;
namespace SystemCalls = ODBC::SystemCalls;

constexpr char ENDING[] = ".veltrane-dsn-change";
constexpr unsigned POLL_MICROSECONDS = 2000;

/// The sections of the record. The last one tells that all of it has been written.
constexpr char CHANGE[] = "change";
constexpr char BEFORE[] = "before";
constexpr char KEPT[] = "kept";
constexpr char END[] = "end";

/// Beside the file itself when its path is a link.
std::string PathFor(const DsnStore& in_store) {
    const std::string real = SystemCalls::RealPath(in_store.GetPath().c_str());
    return (real.empty() ? in_store.GetPath() : real) + ENDING;
}

std::string Section(const std::string& in_name, const Entries& in_entries) {
    std::string text = "[" + in_name + "]\n";
    const auto add = [&text](const Entry& in_entry) {
        text.append(in_entry.first).append("=").append(in_entry.second).append("\n");
    };
    std::for_each(in_entries.begin(), in_entries.end(), add);
    std::for_each(in_entries.GetRepeated().begin(), in_entries.GetRepeated().end(), add);
    return text;
}

/// What others could have written must not get into a DSN, and a file that has another name as well
/// is not ours to empty.
bool IsOurs(const struct stat& in_status) {
    return S_ISREG(in_status.st_mode) && in_status.st_nlink <= 1 && in_status.st_uid == geteuid() &&
           (in_status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// The entries whose keys the section lacks.
Entries Missing(const Entries& in_kept, const Entries& in_section) {
    Entries missing = in_kept;
    for (const auto& [key, value] : in_section) missing.Remove(key);
    return missing;
}

std::string Describe(const std::string& in_dsn, const Entries& in_missing) {
    std::string text = in_dsn + ": put back what an interrupted change had left out:";
    for (const auto& [key, value] : in_missing) text += " " + key;
    return text;
}

}  // namespace

ChangeRecord::ChangeRecord(const DsnStore& in_store)
    : m_store(in_store), m_path(PathFor(in_store)) {
    const long long deadline = SystemCalls::GetMonotonicTime() + ODBC::OdbcIniFile::LOCK_TIMEOUT;
    while (!Open()) {
        if (SystemCalls::GetMonotonicTime() > deadline) Fail("in use by another run", ETIMEDOUT);
        SystemCalls::SleepMicroseconds(POLL_MICROSECONDS);
    }
    std::string bytes;
    struct stat status {};
    ODBC::OdbcIniFile file(m_path);
    if (!file.Read(bytes, status)) throw CommandError(EXIT_FAILED, file.GetFailure().Describe());
    if (bytes.empty()) return;
    Finish(std::move(bytes));
    if (ftruncate(m_file.Get(), 0) != 0) Fail("cannot write", errno);
}

ChangeRecord::~ChangeRecord() {
    // Still locked here, so that nobody's record but this one can be in the place.
    if (m_file.IsOpen() && !m_isLeft) unlink(m_path.c_str());
}

/// @return false when somebody else has the file or has just removed it
bool ChangeRecord::Open() {
    m_file = SystemCalls::FileHandle(SystemCalls::Open(
        m_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600));
    if (!m_file.IsOpen()) Fail("cannot open", errno);
    struct stat status {};
    if (SystemCalls::StatHandle(m_file.Get(), status) != 0) Fail("cannot read", errno);
    if (!IsOurs(status)) {
        m_file = SystemCalls::FileHandle();
        throw CommandError(EXIT_FAILED, m_path + ": is somebody else's; remove it");
    }
    if (SystemCalls::Lock(m_file.Get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) Fail("cannot lock", errno);
        return false;
    }
    struct stat inPlace {};
    return SystemCalls::Stat(m_path.c_str(), inPlace, false) == 0 &&
           inPlace.st_ino == status.st_ino && inPlace.st_dev == status.st_dev;
}

void ChangeRecord::Write(const DsnPlan& in_plan, const Entries& in_kept) {
    const std::string text =
        "# veltrane-dsn was changing a DSN when it wrote this. Its next change of a DSN puts back "
        "what is missing.\n" +
        Section(CHANGE, {{"DSN", in_plan.m_name}}) + Section(BEFORE, in_plan.m_before) +
        Section(KEPT, in_kept) + Section(END, {});
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count =
            SystemCalls::Write(m_file.Get(), text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) Fail("cannot write", errno);
        written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    // A loss of power matters for what was stored before, not for what nobody has been promised
    // yet.
    if (!in_plan.m_kept.empty() && SystemCalls::Sync(m_file.Get()) != 0)
        Fail("cannot write", errno);
}

/// Puts back what is missing, unless the change had not begun or the DSN is gone.
void ChangeRecord::Finish(std::string in_bytes) {
    const OdbcIniText text(std::move(in_bytes));
    if (!text.HasSection(END)) return;
    const std::string dsn = text.Get(CHANGE, "DSN").value_or("");
    const std::optional<Entries> section = m_store.Read(dsn);
    if (!section || IsSameSection(*section, Entries(text.GetKeyValues(BEFORE)))) return;
    const Entries missing = Missing(Entries(text.GetKeyValues(KEPT)), *section);
    if (missing.IsEmpty()) return;
    if (!m_store.PutBack(dsn, missing)) {
        throw CommandError(EXIT_FAILED, dsn +
                                            ": what an interrupted change had left out cannot be "
                                            "put back: " +
                                            m_store.WhyNotWritable());
    }
    m_finished = Describe(dsn, missing);
}

void ChangeRecord::Fail(const std::string& in_operation, int in_error) const {
    throw CommandError(EXIT_FAILED, m_path + ": " + in_operation + ": " +
                                        std::generic_category().message(in_error));
}

std::string FinishInterruptedChange(const DsnStore& in_store) {
    struct stat status {};
    if (SystemCalls::Stat(PathFor(in_store).c_str(), status, false) != 0) return {};
    return ChangeRecord(in_store).GetFinished();
}

std::string FindInterruptedChange(const DsnStore& in_store) {
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
