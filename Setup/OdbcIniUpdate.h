/// A transaction on an odbc.ini or odbcinst.ini: lock, read, any number of edits in memory, one
/// write. Used by setup requests and by Profile. Belongs to one thread.
#ifndef SETUP_ODBCINIUPDATE_H
#define SETUP_ODBCINIUPDATE_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Setup/OdbcIniFile.h"
#include "Setup/OdbcIniText.h"
#include "Setup/TextStore.h"

namespace Veltrane::ODBC {

class OdbcIniUpdate {
public:
    /// Locks and reads the file. A failure is traced, and every operation then returns false.
    OdbcIniUpdate(const std::string& in_path, mode_t in_newFileMode,
                  OdbcIniText::Rules in_rules = OdbcIniText::Rules::FIRST_FILE);

    bool IsOpen() const noexcept { return m_isOpen; }
    bool IsNewFile() const noexcept { return m_file.IsNew(); }
    const std::string& GetPath() const noexcept { return m_file.GetPath(); }
    /// Returns the text with the edits so far. A Commit that repeats the edits replaces the text.
    const std::shared_ptr<OdbcIniText>& GetText() const noexcept { return m_text; }

    /// Returns the last failure; set when Commit returned false or the update is not open.
    const FileFailure& GetFailure() const noexcept { return m_file.GetFailure(); }
    /// Sets and traces a failure. Always returns false.
    bool Refuse(const char* in_reason);

    /// An edit of the text, made from up to three texts.
    using Edit = void (*)(OdbcIniText& io_text, std::string_view in_section,
                          std::string_view in_key, std::string_view in_value);
    /// Makes an edit, and remembers it for Commit.
    bool Do(Edit in_edit, std::string_view in_section, std::string_view in_key = {},
            std::string_view in_value = {});
    /// Writes a key if the file can hold it; adds a missing section.
    bool Set(std::string_view in_section, std::string_view in_key, std::string_view in_value);
    /// As Set, for a value that was read from a file: control characters in it stay.
    bool SetAsRead(std::string_view in_section, std::string_view in_key, std::string_view in_value);

    /// Writes the file if an edit changed it, and unlocks it. If a program without the lock has
    /// written it meanwhile, repeats the edits on the new text.
    bool Commit();
    using Plan = std::function<void(OdbcIniText&)>;
    /// The same for the edits of a plan, instead of single ones: runs it, and again to repeat them.
    bool Commit(const Plan& in_plan);

private:
    /// An edit that was made.
    struct Step {
        Edit m_edit;
        std::string_view m_section;
        std::string_view m_key;
        std::string_view m_value;
    };

    bool Write(std::string_view in_section, std::string_view in_key, std::string_view in_value);
    bool Open();
    bool Replace();
    bool ReplaceOrRepeat(const Plan& in_repeat);

    OdbcIniFile m_file;
    mode_t m_newFileMode;
    OdbcIniText::Rules m_rules;
    std::shared_ptr<OdbcIniText> m_text;
    std::vector<Step> m_steps;
    TextStore m_texts;                  ///< of the steps
    std::string_view m_checkedSection;  ///< the last one that was written
    bool m_isOpen = false;
};

/// Traces a failure with path and reason.
void TraceFileFailure(const FileFailure& in_failure);

}  // namespace Veltrane::ODBC

#endif
