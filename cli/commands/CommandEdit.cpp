#include "Setup/DriverLibrary.h"
#include "Setup/StringMarshalling.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/DsnPlan.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using ODBC::VeltraneDSNDialog;

constexpr char OTHER_WAY[] = "use veltrane-dsn add and veltrane-dsn set.";

/// Writes the values of the form as add and set do.
class Editing {
public:
    explicit Editing(const CommandLine& in_line)
        : m_line(in_line), m_store(GetScope(in_line)), m_report(in_line, m_store) {
        m_driver = GetDriver(in_line);
    }

    ExitCode Run() {
        Load();
        if (ODBC::HasDriverLibrary(m_driver)) m_dialog.SetTestedDriver(m_driver);
        for (;;) {
            if (m_dialog.ShowDialog(OTHER_WAY) != VeltraneDSNDialog::RESULT_OK) return Cancel();
            try {
                return Save();
            } catch (const std::exception& error) {
                if (!IsAsking()) throw;
                if (VeltraneDSNDialog::Ask(ODBC::TEXT_DISCARD, error.what())) return Cancel();
            }
        }
    }

private:
    bool IsAsking() const { return !m_line.Has("--yes"); }

    /// Checked first, so that the user does not fill in a form that cannot be saved.
    void CheckAccess() const {
        const std::string reason = m_store.WhyNotWritable();
        if (!reason.empty() && !m_line.Has("--dry-run")) {
            FailWith(reason);
        }
    }

    void Load() {
        const bool isCopy = m_line.Has("--copy");
        if (m_line.m_arguments.empty()) {
            if (isCopy) Refuse("--copy needs the name of a DSN.");
            CheckAccess();
            return;
        }
        const std::string& name = m_line.m_arguments.front();
        const std::optional<Entries> stored = ReadDsn(m_store.Read(), name);
        if (!stored) throw NoSuchDsn(m_store, name);
        MakePlan(MakeRemoval(name), stored);  // refuses a DSN of another driver
        CheckAccess();
        m_stored = *stored;
        if (!isCopy) m_name = name;
        for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
            m_dialog.Set(field, ToText(field.m_key == "DSN" ? m_name : stored->Get(field.m_key)));
        }
    }

    ExitCode Cancel() {
        m_report.AddNotice("Cancelled; nothing is changed.");
        return m_report.Finish();
    }

    ExitCode Save() {
        const std::string name = ToUtf8(m_dialog.GetDSN());
        const bool isRenamed = !m_name.empty() && name != m_name;
        if (isRenamed && IsSameName(name, m_name)) {
            FailWith("For the driver manager " + Quote(name) + " and " + Quote(m_name) +
                     " are the same name.");
        }
        const DsnWish wish = MakeWish(name);
        // Do not ask about a change that would be refused.
        m_isOldRemoved = false;
        Change(wish, true);
        m_isOldRemoved =
            isRenamed && (!IsAsking() || VeltraneDSNDialog::Ask(ODBC::TEXT_REMOVE_OLD, m_name));
        for (const DsnPlan& result : Change(wish, m_line.Has("--dry-run"))) m_report.Add(result);
        return m_report.Finish();
    }

    DsnPlans Change(const DsnWish& in_wish, bool in_isDryRun) const {
        DsnPlans results = ChangeDsns(
            m_store, [&](const PlanBasis& in_basis) { return Plan(in_wish, in_basis); },
            in_isDryRun);
        for (const DsnPlan& result : results) {
            if (!result.m_failure.empty()) FailWith(result.m_failure);
        }
        return results;
    }

    /// Returns the fields that the user has changed, so that changes of other programs stay. For a
    /// new name, returns all fields and the keys that the form does not show.
    DsnWish MakeWish(const std::string& in_name) const {
        DsnWish wish;
        wish.m_name = in_name;
        wish.m_driver = m_driver;
        if (!IsSameName(in_name, m_name)) {
            for (const auto& [key, value] : m_stored) {
                if (!EqualsIgnoringCase(key, "Driver")) wish.m_values.Set(key, value);
            }
        }
        for (const ODBC::DialogField& field : ODBC::DIALOG_FIELDS) {
            const ODBC::DialogString text = m_dialog.Get(field);
            if (field.m_key == "DSN" || text == ToText(m_stored.Get(field.m_key))) continue;
            wish.m_values.Set(field.m_key, ToUtf8(text));
        }
        return wish;
    }

    DsnPlans Plan(const DsnWish& in_wish, const PlanBasis& in_basis) const {
        const std::optional<Entries> current = ReadDsn(in_basis.m_view, in_wish.m_name);
        const bool isNew = !IsSameName(in_wish.m_name, m_name);
        if (isNew && current) throw DsnExists(m_store, in_wish.m_name);
        if (!isNew && !current) throw NoSuchDsn(m_store, m_name);
        DsnPlans plans{PlanChange(in_wish, in_basis)};
        if (m_isOldRemoved) {
            plans.push_back(PlanChange(MakeRemoval(m_name), in_basis));
        }
        return plans;
    }

    DsnWish MakeRemoval(const std::string& in_name) const {
        return {.m_name = in_name, .m_driver = m_driver, .m_isAbsent = true};
    }

    /// Converts a value as the setup library does: bytes that are not UTF-8 become U+FFFD.
    static ODBC::DialogString ToText(const std::string& in_value) {
        return ODBC::ToEditorString(Orska::Support::orska_wstring().SetFromUtf8(in_value));
    }
    static std::string ToUtf8(const ODBC::DialogString& in_text) {
        return ODBC::FromEditorString(in_text).GetAsUtf8();
    }

    const CommandLine& m_line;
    DsnStore m_store;
    Report m_report;
    std::string m_driver;
    std::string m_name;  ///< the name of the edited DSN; empty for a new one
    Entries m_stored;    ///< the values that the form began with
    VeltraneDSNDialog m_dialog;
    bool m_isOldRemoved = false;
};

}  // namespace

ExitCode EditDsn(const CommandLine& in_line) { return Editing(in_line).Run(); }

}  // namespace Veltrane::Cli
