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
    : m_file(in_path), m_newFileMode(in_newFileMode), m_rules(in_rules), m_isOpen(Open()) {}

bool OdbcIniUpdate::Open() {
    if (m_file.GetPath().empty()) {
        return Refuse("cannot tell a user request from a system request");
    }
    std::string bytes;
    if (!m_file.Lock(bytes, m_newFileMode)) {
        TraceFileFailure(m_file.GetFailure());
        return false;
    }
    m_text = OdbcIniText(std::move(bytes), m_rules);
    if (!m_text.IsReadable()) {
        // The driver manager refuses such a file as a whole, so what we wrote could not be read.
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

bool OdbcIniUpdate::StartSection(const std::string& in_section) {
    return OdbcIniLine::IsCarriableSection(in_section) &&
           Do({Kind::START_SECTION, in_section, {}, {}});
}

bool OdbcIniUpdate::RemoveSection(const std::string& in_section) {
    return Do({Kind::REMOVE_SECTION, in_section, {}, {}});
}

bool OdbcIniUpdate::Set(const std::string& in_section, const std::string& in_key,
                        const std::string& in_value) {
    return OdbcIniLine::IsCarriableSection(in_section) &&
           OdbcIniLine::IsCarriableLine(in_key, in_value, m_rules) &&
           Do({Kind::SET, in_section, in_key, in_value});
}

bool OdbcIniUpdate::SetAsRead(const std::string& in_section, const std::string& in_key,
                              const std::string& in_value) {
    return OdbcIniLine::IsCarriableSection(in_section) &&
           OdbcIniLine::IsReadBack(in_key, in_value, m_rules) &&
           Do({Kind::SET, in_section, in_key, in_value});
}

bool OdbcIniUpdate::RemoveKey(const std::string& in_section, const std::string& in_key) {
    return Do({Kind::REMOVE_KEY, in_section, in_key, {}});
}

bool OdbcIniUpdate::Do(Edit in_edit) {
    if (!m_isOpen) return false;
    m_edits.push_back(std::move(in_edit));
    Apply(m_edits.back());
    return true;
}

void OdbcIniUpdate::Apply(const Edit& in_edit) {
    switch (in_edit.m_kind) {
        case Kind::START_SECTION:
            m_text.RemoveSection(in_edit.m_section);
            m_text.AddSection(in_edit.m_section);
            break;
        case Kind::REMOVE_SECTION:
            m_text.RemoveSection(in_edit.m_section);
            break;
        case Kind::SET:
            m_text.Set(in_edit.m_section, in_edit.m_key, in_edit.m_value);
            break;
        case Kind::REMOVE_KEY:
            m_text.RemoveKey(in_edit.m_section, in_edit.m_key);
            break;
    }
}

bool OdbcIniUpdate::Commit() {
    if (!m_isOpen) return false;
    m_text.Finish();
    bool isDone = !m_text.IsChanged() || Replace();
    while (!isDone && m_file.IsDueAgain()) {
        if (!Open()) break;
        for (const Edit& edit : m_edits) Apply(edit);
        m_text.Finish();
        isDone = !m_text.IsChanged() || Replace();
    }
    m_isOpen = false;
    m_file.Unlock();
    return isDone;
}

bool OdbcIniUpdate::Replace() {
    if (m_file.Replace(m_text.GetBytes())) return true;
    TraceFileFailure(m_file.GetFailure());
    return false;
}

}  // namespace Veltrane::ODBC
