/// The driver manager's installer library: its functions, bound by name on first use, and its error
/// list (Linux).
#ifndef SETUP_INSTALLERLIBRARY_H
#define SETUP_INSTALLERLIBRARY_H

#include <string>

namespace Veltrane::ODBC {

/// Their installer libraries have the same function names but different rules.
enum class DriverManager { UNIXODBC, IODBC };

/// The functions of an installer library, null where it lacks one. Never unloaded. Those that take
/// a lock of the library are called under SystemCalls::ForkLock: a child that is forked meanwhile
/// would find the library's lock taken for ever.
struct InstallerLibrary {
    DriverManager m_driverManager = DriverManager::UNIXODBC;
    int (*m_validDSN)(const char* in_name) = nullptr;
    short (*m_postInstallerError)(unsigned in_code, const char* in_text) = nullptr;
    int (*m_getConfigMode)(unsigned short* out_mode) = nullptr;
    /// Return the path of the user's or the system's odbc.ini in a buffer of PATH_BUFFER bytes.
    int (*m_userIni)(char* out_path, int in_isVerified) = nullptr;
    int (*m_systemIni)(char* out_path, int in_isVerified) = nullptr;
    int (*m_writeProfileString)(const char* in_section, const char* in_key, const char* in_value,
                                const char* in_file) = nullptr;
    void (*m_clearCache)() = nullptr;
    /// Reads a profile without a lock. Its presence (from unixODBC 2.3.13 on) means that the
    /// library holds a lock while it calls ConfigDSN, and m_getConfigMode would wait for that lock
    /// for ever.
    int (*m_readWithoutLock)(const char* in_section, const char* in_key, const char* in_default,
                             char* out_value, int in_size, const char* in_file) = nullptr;

    static constexpr int PATH_BUFFER = 3 * 4096;

    bool IsLoaded() const noexcept { return m_validDSN != nullptr; }
};

/// Finds the installer library that contains the code at an address, or else the one that this code
/// is linked with.
/// @return null when there is none
const InstallerLibrary* FindInstallerLibrary(const void* in_code) noexcept;
/// Sets the library of the calling thread.
/// @param in_library  null for the library of the process
/// @return the one set before
const InstallerLibrary* UseInstallerLibrary(const InstallerLibrary* in_library) noexcept;
/// Returns the library of the calling thread, or else the library of the process: one that is
/// already loaded, or one that the first call loads. If loading fails, prints an error once.
const InstallerLibrary& GetInstallerLibrary() noexcept;

/// Posts an error. The text need not outlive the call.
bool PostError(unsigned in_code, const std::string& in_text);
/// Empties the library's cache of values, which it uses for 20 s even if the file changes.
void ForgetReadValues();
/// Empties the installer's error list.
void ClearInstallerErrors();

}  // namespace Veltrane::ODBC

#endif
