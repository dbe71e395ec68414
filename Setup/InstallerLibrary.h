/// The driver manager's installer library: its functions, bound by name on first use, and its error
/// list (Linux).
#ifndef SETUP_INSTALLERLIBRARY_H
#define SETUP_INSTALLERLIBRARY_H

#include <string>

namespace Veltrane::ODBC {

/// unixODBC and iODBC have installer libraries with the same names and rules of their own.
enum class DriverManager { UNIXODBC, IODBC };

/// Null where the library lacks a function. Never unloaded.
struct InstallerLibrary {
    DriverManager m_driverManager = DriverManager::UNIXODBC;
    int (*m_validDSN)(const char* in_name) = nullptr;
    short (*m_postInstallerError)(unsigned in_code, const char* in_text) = nullptr;
    int (*m_getConfigMode)(unsigned short* out_mode) = nullptr;
    /// The paths of the user's and of the system's odbc.ini; a buffer of PATH_BUFFER bytes.
    int (*m_userIni)(char* out_path, int in_isVerified) = nullptr;
    int (*m_systemIni)(char* out_path, int in_isVerified) = nullptr;
    int (*m_writeProfileString)(const char* in_section, const char* in_key, const char* in_value,
                                const char* in_file) = nullptr;
    void (*m_clearCache)() = nullptr;
    /// A profile read that takes no lock. Its presence (from unixODBC 2.3.13 on) means that a lock
    /// is held around ConfigDSN, under which m_getConfigMode would wait for ever.
    int (*m_readWithoutLock)(const char* in_section, const char* in_key, const char* in_default,
                             char* out_value, int in_size, const char* in_file) = nullptr;

    static constexpr int PATH_BUFFER = 3 * 4096;

    bool IsLoaded() const noexcept { return m_validDSN != nullptr; }
};

/// The library to which the code at an address belongs, or else the one that it calls.
/// @return null when it has to do with none
const InstallerLibrary* FindInstallerLibrary(const void* in_code) noexcept;
/// Sets the library of the calling thread.
/// @param in_library  null: the one of the process
/// @return the one set before
const InstallerLibrary* UseInstallerLibrary(const InstallerLibrary* in_library) noexcept;
/// The library of the calling thread; else the one of the process: a library that it holds, or
/// loaded at the first call. When that fails the user is told, once.
const InstallerLibrary& GetInstallerLibrary() noexcept;

/// Posts an error. The text need not outlive the call.
bool PostError(unsigned in_code, const std::string& in_text);
/// Makes the library forget the values that it has read: it keeps them for 20 s, old ones too.
void ForgetReadValues();
/// Empties the installer's error list.
void ClearInstallerErrors();

}  // namespace Veltrane::ODBC

#endif
