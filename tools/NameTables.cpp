#include "tools/NameTables.h"

#include <cstddef>
#include <iterator>

namespace Orska {

namespace {

// 101 to 107 stand for 10101 to 10104, 10110, 10111 and 10112. The last three are deliberately at
// lower places than their numbers: 10107 reads EREFUSED and 10112 has no name.
constexpr const char* ERROR_NAMES[] = {
    // 0
    "", "EPERM", "ENOENT", "ESRCH", "EINTR", "EIO", "ENXIO", "E2BIG", "ENOEXEC", "EBADF",
    // 10
    "ECHILD", "EAGAIN", "ENOMEM", "EACCES", "EFAULT", "ENOTBLK", "EBUSY", "EEXIST", "EXDEV",
    "ENODEV",
    // 20
    "ENOTDIR", "EISDIR", "EINVAL", "ENFILE", "EMFILE", "ENOTTY", "ETXTBSY", "EFBIG", "ENOSPC",
    "ESPIPE",
    // 30
    "EROFS", "EMLINK", "EPIPE", "EDOM", "ERANGE", "EWOULDBLOCK", "EINPROGRESS", "EALREADY",
    "ENOTSOCK", "EDESTADDRREQ",
    // 40
    "EMSGSIZE", "EPROTOTYPE", "ENOPROTOOPT", "EPROTONOSUPPORT", "ESOCKTNOSUPPORT", "EOPNOTSUPP",
    "EPFNOSUPPORT", "EAFNOSUPPORT", "EADDRINUSE", "EADDRNOTAVAIL",
    // 50
    "ENETDOWN", "ENETUNREACH", "ENETRESET", "ECONNABORTED", "ECONNRESET", "ENOBUFS", "EISCONN",
    "ENOTCONN", "ESHUTDOWN", "ETOOMANYREFS",
    // 60
    "ETIMEDOUT", "ECONNREFUSED", "ELOOP", "ENAMETOOLONG", "EHOSTDOWN", "EHOSTUNREACH", "ENOTEMPTY",
    "EPROCLIM", "EUSERS", "EDQUOT",
    // 70
    "ESTALE", "EREMOTE", "10072", "10073", "10074", "10075", "10076", "10077", "10078", "10079",
    // 80
    "10080", "10081", "10082", "10083", "10084", "10085", "10086", "10087", "10088", "10089",
    // 90
    "10090", "10091", "10092", "10093", "10094", "10095", "10096", "10097", "10098", "10099",
    // 100
    "10100", "EDISCON", "ENOMORE", "ECANCELLED", "EINVALIDPROCTABLE", "10110", "10111", "EREFUSED"};
static_assert(std::size(ERROR_NAMES) == 108);

constexpr const char* SIGNAL_NAMES[] = {
    "SIGHUP",  "SIGINT",    "SIGQUIT", "SIGILL",   "SIGTRAP", "SIGABRT", "SIGBUS",  "SIGFPE",
    "SIGKILL", "SIGUSR1",   "SIGSEGV", "SIGUSR2",  "SIGPIPE", "SIGALRM", "SIGTERM", "SIGSTKFLT",
    "SIGCHLD", "SIGCONT",   "SIGSTOP", "SIGTSTP",  "SIGTTIN", "SIGTTOU", "SIGURG",  "SIGXCPU",
    "SIGXFSZ", "SIGVTALRM", "SIGPROF", "SIGWINCH", "SIGIO",   "SIGPWR",  "SIGSYS",  "SIGUNUSED"};
static_assert(std::size(SIGNAL_NAMES) == 32);

constexpr const char* ADDRESS_ERROR_NAMES[] = {
    "EAI_BADFLAGS", "EAI_NONAME",  "EAI_AGAIN",      "EAI_FAIL",   "EAI_NODATA", "EAI_FAMILY",
    "EAI_SOCKTYPE", "EAI_SERVICE", "EAI_ADDRFAMILY", "EAI_MEMORY", "EAI_SYSTEM"};

constexpr const char* SOCKET_OPTION_NAMES[] = {"KEEPALIVE", "NODELAY", "CORK",     "NOWAIT",
                                               "EXCLOSE",   "RCVSIZE", "SNDSIZE",  "ERRNO",
                                               "LINGER",    "QUACK",   "REUSEADDR"};

/// Returns the absolute value, even of the smallest number.
unsigned Magnitude(int in_value) noexcept {
    return in_value < 0 ? 0u - static_cast<unsigned>(in_value) : static_cast<unsigned>(in_value);
}

/// Returns the name at an index. An index that wrapped below 0 is past the end.
template <std::size_t SIZE>
const char* NameAt(const char* const (&in_names)[SIZE], unsigned in_index,
                   const char* in_default) noexcept {
    return in_index < SIZE ? in_names[in_index] : in_default;
}

}  // namespace

const char* GetErrorName(int in_error) noexcept {
    const unsigned magnitude = Magnitude(in_error);
    return NameAt(ERROR_NAMES, magnitude > 9999 ? magnitude - 10000 : magnitude, "Eunknown");
}

const char* GetSignalName(int in_signal) noexcept {
    return NameAt(SIGNAL_NAMES, static_cast<unsigned>(in_signal) - 1, "SIGunknown");
}

const char* GetAddressErrorName(int in_error) noexcept {
    return NameAt(ADDRESS_ERROR_NAMES, Magnitude(in_error) - 1, "EAI_unknown");
}

const char* GetSocketOptionName(int in_option) noexcept {
    return NameAt(SOCKET_OPTION_NAMES, static_cast<unsigned>(in_option), "unknown");
}

}  // namespace Orska
