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
    m_steps.reserve(16);
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

bool OdbcIniUpdate::Do(Edit in_edit, std::string_view in_section, std::string_view in_key,
                       std::string_view in_value) {
    if (!m_isOpen) return false;
    const std::string_view texts = m_texts.Keep({in_section, in_key, in_value});
    m_steps.push_back({in_edit, texts.substr(0, in_section.size()),
                       texts.substr(in_section.size(), in_key.size()),
                       texts.substr(in_section.size() + in_key.size())});
    in_edit(*m_text, in_section, in_key, in_value);
    return true;
}

bool OdbcIniUpdate::Set(std::string_view in_section, std::string_view in_key,
                        std::string_view in_value) {
    return OdbcIniLine::IsCarriableLine(in_key, in_value, m_rules) &&
           Write(in_section, in_key, in_value);
}

bool OdbcIniUpdate::SetAsRead(std::string_view in_section, std::string_view in_key,
                              std::string_view in_value) {
    if (!m_isOpen) return false;
    if (!OdbcIniLine::IsReadBack(in_key, in_value, m_rules) &&
        !m_text->IsAtEnd(in_section, in_key, in_value)) {
        // Blanks at the end of iODBC's file. No other line can hold them: a renamed data source
        // loses them.
        in_value = in_value.substr(0, in_value.find_last_not_of(" \t\f") + 1);
        if (!OdbcIniLine::IsReadBack(in_key, in_value, m_rules)) return false;
    }
    return Write(in_section, in_key, in_value);
}

bool OdbcIniUpdate::Write(std::string_view in_section, std::string_view in_key,
                          std::string_view in_value) {
    const bool isChecked = !in_section.empty() && in_section == m_checkedSection;
    const bool isDone = (isChecked || OdbcIniLine::IsCarriableSection(in_section)) &&
                        Do([](OdbcIniText& io_text, auto... in_texts) { io_text.Set(in_texts...); },
                           in_section, in_key, in_value);
    if (isDone) m_checkedSection = m_steps.back().m_section;
    return isDone;
}

bool OdbcIniUpdate::Commit() {
    return ReplaceOrRepeat([this](OdbcIniText& io_text) {
        for (const auto& [edit, section, key, value] : m_steps) edit(io_text, section, key, value);
    });
}

bool OdbcIniUpdate::Commit(const Plan& in_plan) {
    if (m_isOpen) in_plan(*m_text);
    return ReplaceOrRepeat(in_plan);
}

bool OdbcIniUpdate::ReplaceOrRepeat(const Plan& in_repeat) {
    if (!m_isOpen) return false;
    bool isDone = Replace();
    while (!isDone && m_file.IsDueAgain() && Open()) {
        in_repeat(*m_text);
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
