#include "tools/TracePlatform.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <initializer_list>
#include <optional>

#include "tools/HighDescriptor.h"

namespace Orska {

namespace {

struct ErrnoNumber {
    int m_errno;
    int m_number;
};

// The name table has the socket errors' numbers of Windows; 1 to 34 are the same on both systems.
constexpr ErrnoNumber SOCKET_ERRORS[] = {
    {EINPROGRESS, 36},     {EALREADY, 37},      {ENOTSOCK, 38},     {EDESTADDRREQ, 39},
    {EMSGSIZE, 40},        {EPROTOTYPE, 41},    {ENOPROTOOPT, 42},  {EPROTONOSUPPORT, 43},
    {ESOCKTNOSUPPORT, 44}, {EOPNOTSUPP, 45},    {EPFNOSUPPORT, 46}, {EAFNOSUPPORT, 47},
    {EADDRINUSE, 48},      {EADDRNOTAVAIL, 49}, {ENETDOWN, 50},     {ENETUNREACH, 51},
    {ENETRESET, 52},       {ECONNABORTED, 53},  {ECONNRESET, 54},   {ENOBUFS, 55},
    {EISCONN, 56},         {ENOTCONN, 57},      {ESHUTDOWN, 58},    {ETOOMANYREFS, 59},
    {ETIMEDOUT, 60},       {ECONNREFUSED, 61},  {ELOOP, 62},        {ENAMETOOLONG, 63},
    {EHOSTDOWN, 64},       {EHOSTUNREACH, 65},  {ENOTEMPTY, 66},    {EUSERS, 68},
    {EDQUOT, 69},          {ESTALE, 70},        {EREMOTE, 71},
};

/// Blocks the signals that the kernel sends to a thread whose write fails: SIGPIPE if a pipe has no
/// reader, SIGXFSZ at the size limit of a file. Both end a process that does not handle them.
class WriteSignals {
public:
    WriteSignals() noexcept {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGPIPE);
        sigaddset(&m_signals, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_before);
        // A signal that the host has blocked and that is already pending is not ours.
        sigset_t pending;
        for (const int signal : {SIGPIPE, SIGXFSZ}) {
            if (sigismember(&m_before, signal) == 1 && sigpending(&pending) == 0 &&
                sigismember(&pending, signal) == 1) {
                sigdelset(&m_signals, signal);
            }
        }
    }
    ~WriteSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    WriteSignals(const WriteSignals&) = delete;
    WriteSignals& operator=(const WriteSignals&) = delete;

    void TakeBack() noexcept {
        constexpr timespec AT_ONCE = {0, 0};
        while (sigtimedwait(&m_signals, nullptr, &AT_ONCE) > 0) {
        }
    }

private:
    sigset_t m_signals;
    sigset_t m_before;
};

// Process-wide: set by OpenTraceFile, read by each line that goes to the file.
constinit mode_t s_fileType = 0;

/// Blocking signals costs about as much as a short line, so it is skipped if none can come: for
/// devices, and for files without a size limit.
bool MayBeSignalled(const std::FILE* in_stream) noexcept {
    if (in_stream == stderr || !(S_ISREG(s_fileType) || S_ISCHR(s_fileType))) {
        return true;  // a pipe or socket, or a stream that the host can turn into one
    }
    rlimit limit;
    return S_ISREG(s_fileType) &&
           (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY);
}

constexpr int LAST_COMMON_ERRNO = ERANGE;
constexpr int NO_NAME = 108;

}  // namespace

const char* ReadTraceVariable() noexcept {
    // A program with more rights than its caller must not append to a file of the caller's choice.
    return secure_getenv("TR4CE");
}

std::FILE* OpenTraceFile(const char* in_fileName) noexcept {
    // O_NONBLOCK: a named pipe without a reader is refused and does not hang the host.
    const int descriptor = MoveAboveStandard(
        open(in_fileName, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666));
    if (descriptor < 0) {
        return nullptr;
    }
    fcntl(descriptor, F_SETFL, O_APPEND);
    struct stat status;
    s_fileType = fstat(descriptor, &status) == 0 ? status.st_mode : 0;
    std::FILE* stream = fdopen(descriptor, "a");
    if (stream == nullptr) {
        close(descriptor);
        return nullptr;
    }
    // Without a buffer one fwrite is one write(2), however long the line is, and a process that
    // dies has lost nothing. Any buffer would split lines that cross its end, so flag "f" sets
    // none: each line is in the file at once with and without the flag.
    std::setvbuf(stream, nullptr, _IONBF, 0);
    return stream;
}

void WriteTraceLine(std::FILE* in_stream, const char* in_line, std::size_t in_size,
                    bool in_isFlushed) noexcept {
    std::optional<WriteSignals> signals;
    if (MayBeSignalled(in_stream)) {
        signals.emplace();
    }
    const bool isWritten = std::fwrite(in_line, 1, in_size, in_stream) == in_size;
    const bool isFlushed = !in_isFlushed || std::fflush(in_stream) == 0;
    if (signals && !(isWritten && isFlushed)) {
        signals->TakeBack();
    }
}

std::uint32_t GetTraceThreadId() noexcept { return static_cast<std::uint32_t>(gettid()); }

std::uint32_t GetTraceProcessId() noexcept { return static_cast<std::uint32_t>(getpid()); }

int ToNameTableNumber(int in_errno) noexcept {
    if (in_errno >= 0 && in_errno <= LAST_COMMON_ERRNO) {
        return in_errno;
    }
    for (const ErrnoNumber& entry : SOCKET_ERRORS) {
        if (entry.m_errno == in_errno) {
            return entry.m_number;
        }
    }
    return NO_NAME;
}

}  // namespace Orska
