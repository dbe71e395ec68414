#include <map>

#include "VeltraneDialog/FieldRules.h"
#include "cli/examine/Findings.h"
#include "cli/line/CommandTable.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

/// Returns the command that changes the DSN, with the options it needs.
std::string HowToSet(const Entries& in_entries, const std::string& in_dsn, Scope in_scope) {
    const std::string driver = in_entries.Get("Driver");
    const bool isOurs = driver.empty() || IsSameName(driver, DEFAULT_DRIVER);
    return "veltrane-dsn set " + Quote(in_dsn) + (in_scope == Scope::System ? " --system" : "") +
           (isOurs ? "" : " --driver " + Quote(driver));
}

void ExamineFields(const Entries& in_entries, const std::string& in_dsn,
                   const std::string& in_howToSet, Findings& io_findings) {
    for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
        const std::string key(field.m_key);
        const bool isName = key == "DSN";
        const std::string value = isName ? in_dsn : in_entries.Get(key);
        const char* const reason = ODBC::WhyRefused(field, value);
        if (reason == nullptr) continue;
        const bool isKept = !isName && !ODBC::IsOnlyMissing(field, value);
        io_findings.push_back(
            {isKept ? Severity::Warning : Severity::Error,
             isName   ? "value-does-not-survive"
             : isKept ? "value-refused-as-new"
                      : "value-missing",
             key + " of the DSN " + Quote(in_dsn) +
                 (isKept ? " is kept until it is changed. As a new value it is refused: " : ": ") +
                 reason,
             isName ? "Add the DSN again under another name and remove this one."
                    : (isKept ? "If it is not intended: " : "Give it another value: ") +
                          in_howToSet + " -p " + key + "=VALUE."});
    }
    for (const auto& [key, value] : in_entries) {
        const std::string note = DescribeNearKey(key);
        if (note.empty()) continue;
        io_findings.push_back(
            {Severity::Note, "key-unknown", "The DSN " + Quote(in_dsn) + ": " + note,
             "If so: " + in_howToSet + " --unset " + Quote(key) + ", and the right key with -p."});
    }
}

void ExamineLines(const std::vector<Entry>& in_lines, const std::string& in_dsn,
                  const std::string& in_howToSet, Findings& io_findings) {
    std::map<std::string, std::size_t> counts;
    for (const auto& [key, value] : in_lines) {
        if (++counts[FoldName(key)] == 2) {
            io_findings.push_back({Severity::Warning, "key-twice",
                                   "The DSN " + Quote(in_dsn) + " has the key " + key +
                                       " more than once; the driver manager takes the first one.",
                                   "Remove the other lines, or write the DSN anew: " + in_howToSet +
                                       " -p " + key + "=VALUE."});
        }
        if (!PLATFORM_WORDS.m_hasCommentsInValues) continue;
        const bool isCutByIodbc = value.starts_with(';') || value.starts_with('#') ||
                                  value.find(" ;") != std::string::npos ||
                                  value.find(" #") != std::string::npos;
        if (isCutByIodbc) {
            io_findings.push_back(
                {Severity::Note, "value-cut-by-iodbc",
                 "The value of " + key + " of the DSN " + Quote(in_dsn) +
                     " is whole for unixODBC, but iODBC takes \";\" and \"#\" at its beginning or "
                     "after a blank for a comment.",
                 "If programs on this machine use iODBC, choose a value without them."});
        }
    }
}

void ExamineRights(const DsnStore& in_store, const ODBC::ProfileView& in_text,
                   Findings& io_findings) {
    const FileRights rights = in_store.GetRights();
    std::vector<std::string> holders;
    for (const std::string& dsn : GetDsnNames(in_text)) {
        for (const auto& [key, value] : in_text.GetKeyValues(dsn)) {
            if (!IsSecretKey(key) || value.empty()) continue;
            holders.push_back(dsn);
            break;
        }
    }
    const std::string subject =
        in_store.GetPath() + (rights.m_mode.empty() ? "" : " (mode " + rights.m_mode + ")");
    if (!holders.empty() && (rights.m_isReadByOthers || rights.m_isReadByGroup)) {
        io_findings.push_back(
            {rights.m_isReadByOthers ? Severity::Warning : Severity::Note,
             "password-readable-by-others",
             subject + " can be read by " + (rights.m_isReadByOthers ? "everybody" : "its group") +
                 " and holds the passwords of: " + JoinFirst(holders) + ".",
             in_store.GetScope() == Scope::User
                 ? "Make it private: chmod 600 " + in_store.GetPath() + "."
                 : "Remove the passwords (veltrane-dsn set NAME --system --unset PWD) and let "
                   "programs ask for them."});
    }
    if (rights.m_isWrittenByOthers) {
        io_findings.push_back({Severity::Warning, "file-writable-by-others",
                               subject + " can be changed by others than its owner, who could send "
                                         "passwords to a server of theirs.",
                               "Take the right away: chmod go-w " + in_store.GetPath() + "."});
    }
}

}  // namespace

void ExamineDsn(const ODBC::ProfileView& in_text, Scope in_scope, const std::string& in_dsn,
                const std::string& in_driver, Findings& io_findings) {
    const std::vector<Entry> lines = in_text.GetKeyValues(in_dsn);
    const Entries entries(lines);
    const std::string driver = entries.Get("Driver");
    const std::string howToSet = HowToSet(entries, in_dsn, in_scope);
    if (driver.empty() || IsSameName(driver, in_driver)) {
        ExamineFields(entries, in_dsn, howToSet, io_findings);
    }
    ExamineLines(lines, in_dsn, howToSet, io_findings);
    if (in_text.HasLongLine(in_dsn)) {
        io_findings.push_back(
            {Severity::Error, "value-does-not-survive",
             "The DSN " + Quote(in_dsn) +
                 " has a line of more than 999 bytes; programs read the rest of it "
                 "as another line.",
             "Shorten the value: " + howToSet + " -p KEY=VALUE."});
    }
}

std::optional<ODBC::ProfileView> ExamineFile(const DsnStore& in_store, Findings& io_findings) {
    std::optional<ODBC::ProfileView> text;
    // Read removes these files, so they are listed first.
    const std::vector<std::string> leftFiles = in_store.FindLeftFiles();
    try {
        text = in_store.Read();
    } catch (const std::exception& error) {
        io_findings.push_back({Severity::Error, "file-unreadable", std::string(error.what()) + ".",
                               "Give yourself the right to read it, or move text that is before "
                               "the first section into one."});
        return text;
    }
    for (const std::string& path : leftFiles) {
        io_findings.push_back(
            {Severity::Warning, "temporary-file-left",
             path + " was left by a change that was killed. It holds what " + in_store.GetPath() +
                 " held, passwords too.",
             "doctor removes it if it has the right to. If it is still there: rm " + path + "."});
    }
    const std::string record = in_store.FindLeftRecord();
    if (!record.empty()) {
        io_findings.push_back(
            {Severity::Warning, "change-interrupted",
             "An older version of this tool was cut off while it changed a DSN in " +
                 in_store.GetPath() + ". Keys that the DSN may lack are in " + record + ".",
             "Look at its section [kept], set what is missing (veltrane-dsn set NAME "
             "-p KEY=VALUE) and remove the record."});
    }
    const std::string reason = in_store.WhyNotWritable();
    const bool isOurs = in_store.GetScope() == Scope::User || IsAdministrator();
    if (!reason.empty() && isOurs) {
        io_findings.push_back({Severity::Error, "file-not-writable", reason + ".",
                               PLATFORM_WORDS.m_notWritableRepair});
    }
    ExamineRights(in_store, *text, io_findings);
    std::map<std::string, std::size_t> counts;
    for (const std::string& section : text->GetSections()) {
        if (++counts[FoldName(section)] != 2) continue;
        io_findings.push_back({Severity::Warning, "section-twice",
                               in_store.GetPath() + " has the section " + Quote(section) +
                                   " more than once; the driver manager takes the first one.",
                               "Move what is needed into the first one and remove the others."});
    }
    return text;
}

void ExamineShadows(const DsnStore& in_user, const ODBC::ProfileView& in_userText,
                    const DsnStore& in_system, const ODBC::ProfileView& in_systemText,
                    Findings& io_findings) {
    for (const std::string& dsn : GetDsnNames(in_userText)) {
        if (!in_systemText.HasSection(dsn) || in_user.GetPath() == in_system.GetPath()) continue;
        io_findings.push_back(
            {Severity::Warning, "user-dsn-shadows-system-dsn",
             "The DSN " + Quote(dsn) + " of " + in_user.GetPath() + " hides the one of " +
                 in_system.GetPath() + ".",
             "Remove the unwanted one: veltrane-dsn remove " + Quote(dsn) + ", or with --system."});
    }
}

}  // namespace Veltrane::Cli
