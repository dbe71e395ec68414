/// A read-modify-write of one odbc.ini: the edits of a request, made in memory under the file's
/// lock and written at once. Belongs to one thread.
#ifndef SETUP_ODBCINIUPDATE_H
#define SETUP_ODBCINIUPDATE_H

#include <optional>
#include <string>
#include <vector>

#include "Setup/OdbcIniFile.h"
#include "Setup/OdbcIniText.h"

namespace Veltrane::ODBC {

class OdbcIniUpdate {
public:
    /// Locks and reads the file. A failure is traced, and every operation then gives false.
    OdbcIniUpdate(const std::string& in_path, mode_t in_newFileMode,
                  OdbcIniText::Rules in_rules = OdbcIniText::Rules::FIRST_FILE);

    bool IsOpen() const noexcept { return m_isOpen; }
    bool IsNewFile() const noexcept { return m_file.IsNew(); }
    const OdbcIniText& GetText() const noexcept { return m_text; }

    /// The last failure; one is set when Commit has given false or the update is not open.
    const FileFailure& GetFailure() const noexcept { return m_file.GetFailure(); }
    /// Sets and traces a failure that is the caller's to see. Always false.
    bool Refuse(const char* in_reason);

    /// Removes sections of the name and begins a new one, at the old place if there was one.
    bool StartSection(const std::string& in_section);
    bool RemoveSection(const std::string& in_section);
    bool Set(const std::string& in_section, const std::string& in_key, const std::string& in_value);
    /// As Set, for a value that was read from a file: control characters in it stay.
    bool SetAsRead(const std::string& in_section, const std::string& in_key,
                   const std::string& in_value);
    bool RemoveKey(const std::string& in_section, const std::string& in_key);

    /// Writes the file if an edit changed it, and ends the lock. When the file was written to by a
    /// program that does not know the lock, the edits are made again on what it holds now.
    bool Commit();

private:
    enum class Kind { START_SECTION, REMOVE_SECTION, SET, REMOVE_KEY };
    struct Edit {
        Kind m_kind;
        std::string m_section;
        std::string m_key;
        std::string m_value;
    };

    bool Open();
    bool Replace();
    bool Do(Edit in_edit);
    void Apply(const Edit& in_edit);

    OdbcIniFile m_file;
    mode_t m_newFileMode;
    OdbcIniText::Rules m_rules;
    OdbcIniText m_text;
    std::vector<Edit> m_edits;
    bool m_isOpen = false;
};

/// Traces a failure with path and reason.
void TraceFileFailure(const FileFailure& in_failure);

}  // namespace Veltrane::ODBC

#endif
