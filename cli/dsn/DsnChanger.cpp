#include "cli/dsn/DsnChanger.h"

#include "cli/dsn/ChangeRecord.h"
#include "cli/dsn/HeldSignals.h"
#include "cli/examine/DriverFindings.h"

namespace Veltrane::Cli {

namespace {

/// What the setup library writes, and what it would drop.
struct Parts {
    explicit Parts(const DsnPlan& in_plan) {
        m_fields.Set("DSN", in_plan.m_name);
        for (const auto& [key, value] : in_plan.m_after) {
            if (EqualsIgnoringCase(key, "Driver")) continue;
            (IsFieldKey(key) ? m_fields : m_extras).Set(key, value);
        }
        m_extras.TakeRepeated(in_plan.m_after);
    }
    Entries m_fields;
    Entries m_extras;
};

Request RequestFor(Action in_action) {
    switch (in_action) {
        case Action::Add:
            return Request::Add;
        case Action::Remove:
            return Request::Remove;
        default:
            return Request::Configure;
    }
}

bool IsAsPlanned(const std::optional<Entries>& in_section, const DsnPlan& in_plan) {
    if (in_plan.m_action == Action::Remove) return !in_section.has_value();
    return in_section && IsSameSection(*in_section, in_plan.m_after);
}

bool IsAsBefore(const std::optional<Entries>& in_section, const DsnPlan& in_plan) {
    if (!in_section) return in_plan.m_before.IsEmpty();
    return IsSameSection(*in_section, in_plan.m_before);
}

}  // namespace

void DsnChanger::Execute(const DsnPlan& in_plan) const {
    if (in_plan.m_action == Action::None) return;
    // Asked first: the installer would only say that something failed, and for a file in a folder
    // that does not exist it may not even reach the setup library.
    const std::string reason = m_store.WhyNotWritable();
    if (!reason.empty()) throw CommandError(EXIT_FAILED, reason);
    const HeldSignals held;
    ChangeRecord record(m_store);
    if (!IsAsBefore(m_store.Read(in_plan.m_name), in_plan)) throw ChangedMeanwhile(in_plan.m_name);
    const std::string problem = Change(in_plan, record);
    if (problem.empty()) return;
    const std::string result = Undo(in_plan, record);
    throw CommandError(EXIT_FAILED, problem + result);
}

/// @return what went wrong; empty when the section is as planned
std::string DsnChanger::Change(const DsnPlan& in_plan, ChangeRecord& io_record) const {
    const Parts parts(in_plan);
    if (!parts.m_extras.IsEmpty()) io_record.Write(in_plan, parts.m_extras);
    const std::string errors =
        m_manager.Configure(RequestFor(in_plan.m_action), m_store.GetScope(), in_plan.m_driver,
                            in_plan.m_name, parts.m_fields);
    if (!errors.empty()) return Explain(errors, in_plan);
    if (!parts.m_extras.IsEmpty() && !m_store.PutBack(in_plan.m_name, parts.m_extras)) {
        return "The keys that the setup library does not know could not be written: " +
               m_store.WhyNotWritable();
    }
    if (!IsAsPlanned(m_store.Read(in_plan.m_name), in_plan)) {
        return "The installer reports success, but " + m_store.GetPath() +
               " does not hold what was written. Another program may have changed it at the same "
               "time, or the driver's Setup entry names another library.";
    }
    return {};
}

std::string DsnChanger::Explain(const std::string& in_errors, const DsnPlan& in_plan) const {
    std::string text = in_errors;
    const std::string reason = m_store.WhyNotWritable();
    if (!reason.empty()) return text + "\n" + reason;
    for (const Finding& finding : ExamineDriver(in_plan.m_driver)) {
        if (finding.m_severity == Severity::Error) {
            return text + "\n" + finding.m_text + " " + finding.m_repair;
        }
    }
    return text;
}

/// Puts the old section back if it is there in part. @return what to tell about it
std::string DsnChanger::Undo(const DsnPlan& in_plan, ChangeRecord& io_record) const {
    if (IsAsBefore(m_store.Read(in_plan.m_name), in_plan)) return {};
    if (m_store.Restore(in_plan.m_name, in_plan.m_before)) {
        return "\nThe DSN has been put back as it was.";
    }
    io_record.Leave();
    return "\nThe DSN could not be put back as it was.";
}

}  // namespace Veltrane::Cli
