#include "cli/dsn/ChangeRecord.h"

#include <algorithm>

#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using ODBC::OdbcIniText;

/// The sections of the record. The last one tells that all of it has been written.
constexpr char CHANGE[] = "change";
constexpr char BEFORE[] = "before";
constexpr char KEPT[] = "kept";
constexpr char END[] = "end";

std::string Section(const std::string& in_name, const Entries& in_entries) {
    std::string text = "[" + in_name + "]\n";
    const auto add = [&text](const Entry& in_entry) {
        text.append(in_entry.first).append("=").append(in_entry.second).append("\n");
    };
    std::for_each(in_entries.begin(), in_entries.end(), add);
    std::for_each(in_entries.GetRepeated().begin(), in_entries.GetRepeated().end(), add);
    return text;
}

/// The entries whose keys the section lacks.
Entries Missing(const Entries& in_kept, const Entries& in_section) {
    Entries missing = in_kept;
    for (const auto& [key, value] : in_section) missing.Remove(key);
    return missing;
}

std::string Describe(const std::string& in_dsn, const Entries& in_missing) {
    std::string text = in_dsn + ": put back what an interrupted change had left out:";
    for (const auto& [key, value] : in_missing) text += " " + key;
    return text;
}

}  // namespace

ChangeRecord::ChangeRecord(const DsnStore& in_store) : m_store(in_store), m_file(in_store) {
    std::string left = m_file.Read();
    if (left.empty()) return;
    Finish(std::move(left));
    m_file.Clear();
}

void ChangeRecord::Write(const DsnPlan& in_plan, const Entries& in_kept) {
    const std::string text =
        "# veltrane-dsn was changing a DSN when it wrote this. Its next change of a DSN puts back "
        "what is missing.\n" +
        Section(CHANGE, {{"DSN", in_plan.m_name}}) + Section(BEFORE, in_plan.m_before) +
        Section(KEPT, in_kept) + Section(END, {});
    // A loss of power matters for what was stored before, not for what nobody has been promised
    // yet.
    m_file.Write(text, !in_plan.m_kept.empty());
}

/// Puts back what is missing, unless the change had not begun or the DSN is gone.
void ChangeRecord::Finish(std::string in_bytes) {
    const OdbcIniText text(std::move(in_bytes));
    if (!text.HasSection(END)) return;
    const std::string dsn = text.Get(CHANGE, "DSN").value_or("");
    const std::optional<Entries> section = m_store.Read(dsn);
    if (!section || IsSameSection(*section, Entries(text.GetKeyValues(BEFORE)))) return;
    const Entries missing = Missing(Entries(text.GetKeyValues(KEPT)), *section);
    if (missing.IsEmpty()) return;
    if (!m_store.PutBack(dsn, missing)) {
        throw CommandError(EXIT_FAILED, dsn +
                                            ": what an interrupted change had left out cannot be "
                                            "put back: " +
                                            m_store.WhyNotWritable());
    }
    m_finished = Describe(dsn, missing);
}

std::string FinishInterruptedChange(const DsnStore& in_store) {
    return RecordFile::Exists(in_store) ? ChangeRecord(in_store).GetFinished() : std::string();
}

std::string FindInterruptedChange(const DsnStore& in_store) {
    return RecordFile::FindLeft(in_store);
}

}  // namespace Veltrane::Cli
