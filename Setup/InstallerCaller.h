/// Which installer has called an entry point. A process may hold more than one driver manager, each
/// with an installer library of its own, and the names of their functions are the same.
#ifndef SETUP_INSTALLERCALLER_H
#define SETUP_INSTALLERCALLER_H

namespace Veltrane::ODBC {

struct InstallerLibrary;

/// Binds the operations of the calling thread, while it lives, to the caller's installer library,
/// and puts off a cancellation of that thread (Linux) until the call is back: it would unwind
/// through code that may not be left like that and end the host. On Windows it keeps this library
/// in the process, although the installer frees it after every request; on Linux the library is
/// linked so that nothing unloads it.
class InstallerCaller {
public:
    /// @param in_returnAddress  where the entry point goes back to
    explicit InstallerCaller(const void* in_returnAddress) noexcept;
    InstallerCaller(const InstallerCaller&) = delete;
    InstallerCaller& operator=(const InstallerCaller&) = delete;
    ~InstallerCaller();

    /// Whether the caller's wide characters are wchar_t; they are UTF-16 otherwise.
    bool HasPlatformWideChars() const noexcept;

private:
    const InstallerLibrary* m_outer = nullptr;
    int m_cancelState = 0;
};

}  // namespace Veltrane::ODBC

#endif
