#include "cli/commands/Commands.h"
#include "cli/commands/GivenValues.h"
#include "cli/commands/Report.h"
#include "cli/dsn/ChangeRecord.h"
#include "cli/dsn/DriverManager.h"
#include "cli/dsn/DsnChanger.h"

namespace Veltrane::Cli {

namespace {

/// The DSNs of one command: where they are, and where the results go.
class Run {
public:
    explicit Run(const CommandLine& in_line)
        : m_line(in_line),
          m_store(GetScope(in_line)),
          m_changer(m_manager, m_store),
          m_report(in_line, m_store.GetScope()) {
        if (!in_line.Has(OptionId::DryRun)) m_report.AddNotice(FinishInterruptedChange(m_store));
    }

    const DsnStore& GetStore() const { return m_store; }

    void Change(const DsnWish& in_wish, const std::optional<Entries>& in_current) {
        const DsnPlan plan = MakePlan(in_wish, in_current);
        if (!m_line.Has(OptionId::DryRun)) m_changer.Execute(plan);
        m_report.AddDone(plan);
    }

    void Leave(const std::string& in_dsn) {
        DsnPlan plan;
        plan.m_name = in_dsn;
        m_report.AddDone(plan);
    }

    ExitCode Finish() { return m_report.Finish(); }

private:
    const CommandLine& m_line;
    DriverManager m_manager;
    DsnStore m_store;
    DsnChanger m_changer;
    Report m_report;
};

void AddUnlessThere(const CommandLine& in_line, DsnWish& io_wish, Run& io_run) {
    const std::optional<Entries> current = io_run.GetStore().ReadSettled(io_wish.m_name);
    io_wish.m_isReplaced = in_line.Has(OptionId::Replace);
    if (current && in_line.Has(OptionId::IfMissing)) {
        io_run.Leave(io_wish.m_name);
    } else if (current && !io_wish.m_isReplaced) {
        throw CommandError(EXIT_EXISTS, "There is a DSN \"" + io_wish.m_name + "\" already in " +
                                            io_run.GetStore().GetPath() + ".");
    } else {
        io_run.Change(io_wish, current);
    }
}

}  // namespace

ExitCode AddDsn(const CommandLine& in_line) {
    if (in_line.Has(OptionId::IfMissing) && in_line.Has(OptionId::Replace)) {
        throw CommandError(EXIT_USAGE, "--if-missing and --replace exclude each other.");
    }
    Run run(in_line);
    DsnWish wish = MakeWish(in_line);
    AddUnlessThere(in_line, wish, run);
    return run.Finish();
}

ExitCode SetDsn(const CommandLine& in_line) {
    Run run(in_line);
    const std::string& dsn = in_line.m_arguments.front();
    const std::optional<Entries> current = run.GetStore().ReadSettled(dsn);
    if (!current) throw NoSuchDsn(run.GetStore(), dsn);
    run.Change(MakeWish(in_line), current);
    return run.Finish();
}

ExitCode RemoveDsns(const CommandLine& in_line) {
    Run run(in_line);
    // Looked for first, so that a misspelt name removes nothing.
    for (const std::string& dsn : in_line.m_arguments) {
        const bool isThere = run.GetStore().ReadSettled(dsn).has_value();
        if (!isThere && !in_line.Has(OptionId::IfExists)) throw NoSuchDsn(run.GetStore(), dsn);
    }
    for (const std::string& dsn : in_line.m_arguments) {
        DsnWish wish;
        wish.m_name = dsn;
        wish.m_driver = in_line.Get(OptionId::Driver, DEFAULT_DRIVER);
        wish.m_isAbsent = true;
        run.Change(wish, run.GetStore().ReadSettled(dsn));
    }
    return run.Finish();
}

}  // namespace Veltrane::Cli
