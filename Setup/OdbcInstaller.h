/// The operations of the ODBC installer that the setup logic needs: the check of a name, the
/// profile "odbc.ini" and the list of installer errors.
///
/// On Linux the name check and the errors go to the driver manager's installer library, bound by
/// name on first use; the profile operations work on the driver manager's own files themselves,
/// because the library's functions neither lock nor replace a file whole. On Windows everything
/// goes to odbccp32.dll, bound by name on first use as well, which keeps the profile in the
/// registry. Every object here belongs to one thread; different threads and processes may work on
/// the same profile at the same time.
#ifndef SETUP_ODBCINSTALLER_H
#define SETUP_ODBCINSTALLER_H

#include <memory>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::ODBC::OdbcInstaller {

using Orska::Support::orska_wstring;

/// One setup request: captures the config mode (user, system or both) and the files that belong to
/// it once, at entry, and remembers the values that it reads (see IsAsRead). One for each call of
/// an entry point, used by the thread that made it. Without one, each operation finds mode and
/// files for itself.
class Request {
public:
    /// @param in_isSystem  the request itself says that it is about the system's data sources; else
    ///                     the installer's config mode does
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

/// One locked, atomic read-modify-write of the odbc.ini that the mode writes to (on Linux; on
/// Windows each operation takes effect by itself). Profile writes and
/// removals of the same thread act on the text in memory while it lives, and reads see that text.
/// When the file cannot be locked or read, the object exists but every write in it fails.
/// An Update inside another one of the same thread joins it.
class Update {
public:
    Update();
    Update(const Update&) = delete;
    Update& operator=(const Update&) = delete;
    /// Writes what has not been committed, without reporting: what was written before a failure
    /// stays written.
    ~Update();

    /// Writes the text to the file, if it changed, and ends the lock.
    /// @return false when the file could not be written; it is then as it was before
    bool Commit() noexcept;

    struct State;

private:
    std::unique_ptr<State> m_state;
};

/// Whether the text has the replacement of bytes that are not UTF-8. Two different names would
/// become one with it.
bool HasReplacementCharacter(const orska_wstring& in_text);

/// The text cut to what fits a buffer, without leaving half a character.
/// @param in_bufferSize  UTF-16 code units, the ending NUL counted; at least 2
orska_wstring CutToBuffer(orska_wstring in_text, int in_bufferSize);

/// Whether the name may be the name of a data source: the installer's own check, not empty, not
/// reserved for a section of the driver manager's own, no NUL, no U+FFFD, and, on Linux, no control
/// characters, no outer blanks and nothing that UTF-8 cannot express.
bool ValidDSN(const orska_wstring& in_name);

/// Reads a value as the driver manager would.
/// @param in_bufferSize  characters, the ending NUL counted: the text is cut to `in_bufferSize` - 1
///                       UTF-16 code units, never inside a surrogate pair
/// @param in_file  "odbc.ini" or any relative name: the files of the config mode; else an absolute
/// path
/// @return code units in `out_value`; -1 when no file could be read (the text is then empty)
int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file);

/// Whether the running request got this text from GetPrivateProfileString as the value of the key,
/// of whatever data source. Such a text means the value as it is stored, and
/// WritePrivateProfileString writes that.
bool IsAsRead(const orska_wstring& in_key, const orska_wstring& in_value);

/// Whether WriteDSNToIni, and WritePrivateProfileString in "odbc.ini", would take these texts. Both
/// ask by themselves; who writes several asks for all of them before the first.
bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring& in_driver);
bool IsWritableValue(const orska_wstring& in_key, const orska_wstring& in_value);

/// Writes a value; a NULL value removes the key, a NULL key the section.
/// @return false when the profile cannot be written, or when a new value could not be read back as
///         it is: a NUL in it, and, on Linux, control characters, outer blanks, more than 999 bytes
bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file);

/// Starts the section of a data source anew, with only the key "Driver" in it.
/// @param in_driver  not empty; no U+FFFD: the caller's text was in another encoding then
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
