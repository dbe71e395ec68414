/// The operations of the ODBC installer that the setup logic needs: the name check, the profile
/// "odbc.ini" and the list of installer errors.
///
/// On Linux the name check and the errors use the driver manager's installer library, bound by name
/// on first use. Profile operations change the driver manager's files directly, because the
/// library's functions neither lock a file nor replace it as a whole. On Windows everything uses
/// odbccp32.dll, also bound by name on first use; it keeps the profile in the registry. Objects
/// belong to one thread; threads and processes can use the same profile at the same time.
#ifndef SETUP_ODBCINSTALLER_H
#define SETUP_ODBCINSTALLER_H

#include <memory>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::ODBC::OdbcInstaller {

using Orska::Support::orska_wstring;

/// One setup request, made for each call of an entry point on the calling thread. Determines the
/// config mode (user, system or both) and its files once, at entry, and remembers the values that
/// it reads (see IsAsRead). Without a request, each operation determines mode and files itself.
class Request {
public:
    /// @param in_isSystem  true: the request type means the system's data sources; false: the
    ///                     installer's config mode decides
    explicit Request(bool in_isSystem = false);
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request();

    /// "user", "system" or "both", for the trace.
    const char* GetModeName() const noexcept;

    struct State;

private:
    std::unique_ptr<State> m_state;
};

/// One locked, atomic read-modify-write of the odbc.ini that the mode writes to (Linux; on Windows
/// each operation takes effect at once). While it lives, writes and removals of the same thread
/// change the text in memory, and reads see that text. If the file cannot be locked or read, every
/// write fails. A nested Update of the same thread joins the outer one.
class Update {
public:
    Update();
    Update(const Update&) = delete;
    Update& operator=(const Update&) = delete;
    /// Writes what has not been committed, and reports no failure: values written before a failed
    /// one stay written.
    ~Update();

    /// Writes the file if the text changed, and unlocks it.
    /// @return false when the file could not be written; it is then unchanged
    bool Commit() noexcept;

    struct State;

private:
    std::unique_ptr<State> m_state;
};

/// Truncates the text to a buffer, never inside a surrogate pair.
/// @param in_bufferSize  UTF-16 code units with the terminating NUL; at least 2
orska_wstring CutToBuffer(orska_wstring in_text, int in_bufferSize);

/// Whether a data source can have this name: the installer accepts it, it is not empty and not a
/// section of the driver manager, and it has no NUL and no U+FFFD. On Linux it also has no control
/// characters, no outer blanks and no unpaired surrogates.
bool ValidDSN(const orska_wstring& in_name);

/// Reads a value as the driver manager would.
/// @param in_bufferSize  UTF-16 code units with the terminating NUL; a longer text is truncated,
///                       never inside a surrogate pair
/// @param in_file  an absolute path; a relative name means the files of the config mode
/// @return code units in `out_value`; -1 when no file could be read (the text is then empty)
int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file);

/// Whether the running request got this text from GetPrivateProfileString as the value of the key,
/// of any data source. WritePrivateProfileString then writes the value as it was stored.
bool IsAsRead(const orska_wstring& in_key, const orska_wstring& in_value);

/// Whether WriteDSNToIni, or WritePrivateProfileString in "odbc.ini", would accept these texts.
/// Both check that themselves; a caller that writes several values checks all of them first.
bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver);
bool IsWritableValue(const orska_wstring& in_key, const orska_wstring& in_value);

/// Writes a value; a NULL value removes the key, a NULL key the section.
/// @return false when the profile cannot be written, or a new value would not be read back
///         unchanged: it has a NUL or (Linux) control characters, outer blanks or over 999 bytes
bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file);

/// Replaces the section of a data source with one that has only the key "Driver".
/// @param in_driver  not empty, and without U+FFFD, a sign of text in another encoding
bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver);

/// Removes the section of a data source. Removing an absent section succeeds. On Linux a removal
/// that fails outside an Update posts one error, with path and reason, as the installer's own
/// function does.
bool RemoveDSNFromIni(const orska_wstring& in_dsn);

/// Appends an error to the installer's list.
/// @return false when the installer refuses it or cannot be loaded
bool PostInstallerError(unsigned long in_code, const orska_wstring& in_text);

}  // namespace Veltrane::ODBC::OdbcInstaller

#endif
