#include "Setup/OdbcIniUpdate.h"

#include "Setup/ProfileRules.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {

void TraceFileFailure(const FileFailure& in_failure) {
    ORSKA_TRACE(1, "Veltrane::ODBC::OdbcIniFile", "Setup\\OdbcIniFile", 0, "%s",
                in_failure.Describe().c_str());
}

OdbcIniUpdate::OdbcIniUpdate(const std::string& in_path, mode_t in_newFileMode,
                             OdbcIniText::Rules in_rules)
    : m_file(in_path), m_newFileMode(in_newFileMode), m_rules(in_rules), m_isOpen(Open()) {
    m_edits.reserve(16);
}

bool OdbcIniUpdate::Open() {
    if (m_file.GetPath().empty()) {
        return Refuse("cannot tell a user request from a system request");
    }
    std::string bytes;
    if (!m_file.Lock(bytes, m_newFileMode)) {
        TraceFileFailure(m_file.GetFailure());
        return false;
    }
    m_text = std::make_shared<OdbcIniText>(std::move(bytes), m_rules);
    if (!m_text->IsReadable()) {
        // The driver manager refuses the whole file, so it could not read what we write.
        m_file.Unlock();
        return Refuse(ProfileRules::UNREADABLE);
    }
    return true;
}

bool OdbcIniUpdate::Refuse(const char* in_reason) {
    m_file.Refuse(in_reason);
    TraceFileFailure(m_file.GetFailure());
    return false;
}

bool OdbcIniUpdate::Do(Edit in_edit) {
    if (!m_isOpen) return false;
    m_edits.push_back(std::move(in_edit));
    m_edits.back()(*m_text);
    return true;
}

bool OdbcIniUpdate::Set(const std::string& in_section, const std::string& in_key,
                        const std::string& in_value) {
    return OdbcIniLine::IsCarriableLine(in_key, in_value, m_rules) &&
           Write(in_section, in_key, in_value);
}

bool OdbcIniUpdate::SetAsRead(const std::string& in_section, const std::string& in_key,
                              const std::string& in_value) {
    if (!m_isOpen) return false;
    if (OdbcIniLine::IsReadBack(in_key, in_value, m_rules) ||
        m_text->IsAtEnd(in_section, in_key, in_value)) {
        return Write(in_section, in_key, in_value);
    }
    // Blanks at the end of iODBC's file. No other line can hold them: a renamed data source loses
    // them.
    const std::string value = in_value.substr(0, in_value.find_last_not_of(" \t\f") + 1);
    return OdbcIniLine::IsReadBack(in_key, value, m_rules) && Write(in_section, in_key, value);
}

bool OdbcIniUpdate::Write(const std::string& in_section, const std::string& in_key,
                          const std::string& in_value) {
    if (in_section.empty() || in_section != m_checkedSection) {
        if (!OdbcIniLine::IsCarriableSection(in_section)) return false;
        m_checkedSection = in_section;
    }
    return Do([=](OdbcIniText& io_text) { io_text.Set(in_section, in_key, in_value); });
}

bool OdbcIniUpdate::Commit() {
    if (!m_isOpen) return false;
    bool isDone = Replace();
    while (!isDone && m_file.IsDueAgain() && Open()) {
        for (const Edit& edit : m_edits) edit(*m_text);
        isDone = Replace();
    }
    m_isOpen = false;
    m_file.Unlock();
    return isDone;
}

bool OdbcIniUpdate::Replace() {
    m_text->Finish();
    if (!m_text->IsChanged() || m_file.Replace(m_text->GetBytes())) return true;
    TraceFileFailure(m_file.GetFailure());
    return false;
}

}  // namespace Veltrane::ODBC
