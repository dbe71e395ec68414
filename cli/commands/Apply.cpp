#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/ChangeRecord.h"
#include "cli/dsn/Description.h"
#include "cli/dsn/DriverManager.h"
#include "cli/dsn/DsnChanger.h"
#include "cli/system/Input.h"
#include "cli/system/Terminal.h"

namespace Veltrane::Cli {

namespace {

std::vector<DsnDescription> ReadDescriptions(const CommandLine& in_line,
                                             std::vector<std::string>& out_notes) {
    const std::string& argument = in_line.m_arguments.front();
    const bool isInput = argument == "-";
    const std::string text = ReadText(isInput ? std::string() : argument);
    DescriptionFormat format = GuessFormat(text);
    if (in_line.Has(OptionId::Format)) {
        const std::string name = in_line.Get(OptionId::Format);
        format = name == "ini" ? DescriptionFormat::INI : DescriptionFormat::JSON;
        if (name != "ini" && name != "json") {
            throw CommandError(EXIT_USAGE, "--format is json or ini.");
        }
    }
    return ParseDescriptions(text, format, isInput ? "standard input" : argument, out_notes);
}

void TakePassword(const DsnDescription& in_description, DsnWish& io_wish) {
    if (!in_description.m_pwdFile.empty()) {
        io_wish.m_values.Set("PWD", ReadFirstLine(in_description.m_pwdFile));
    }
    const std::string& name = in_description.m_pwdVariable;
    if (name.empty()) return;
    std::string password;
    // Left in the environment: another DSN may name the same one.
    if (!ReadSecret(name, password)) {
        throw CommandError(EXIT_FAILED, "pwd_env: the variable " + name + " is not set.");
    }
    io_wish.m_values.Set("PWD", password);
}

DsnWish MakeWishFor(const DsnDescription& in_description, const CommandLine& in_line) {
    DsnWish wish;
    wish.m_name = in_description.m_name;
    wish.m_driver = in_description.m_driver.empty() ? in_line.Get(OptionId::Driver, DEFAULT_DRIVER)
                                                    : in_description.m_driver;
    wish.m_values = in_description.m_values;
    wish.m_unset = in_description.m_unset;
    wish.m_isAbsent = in_description.m_isAbsent;
    wish.m_isReplaced = in_line.Has(OptionId::Replace);
    if (!wish.m_isAbsent) TakePassword(in_description, wish);
    return wish;
}

/// @return the plan, which has been carried out unless this is a dry run
DsnPlan ApplyOne(const DsnDescription& in_description, const CommandLine& in_line,
                 const DsnStore& in_store, const DsnChanger& in_changer) {
    constexpr int MAX_REPEATS = 8;
    const DsnWish wish = MakeWishFor(in_description, in_line);
    for (int repeats = 0;; ++repeats) {
        DsnPlan plan = MakePlan(wish, in_store.ReadSettled(wish.m_name));
        if (in_line.Has(OptionId::DryRun)) return plan;
        try {
            in_changer.Execute(plan);
            return plan;
        } catch (const ChangedMeanwhile&) {
            // A description says what a DSN is to be, whatever it has become.
            if (repeats == MAX_REPEATS) throw;
        }
    }
}

}  // namespace

ExitCode ApplyDescriptions(const CommandLine& in_line) {
    std::vector<std::string> notes;
    const std::vector<DsnDescription> descriptions = ReadDescriptions(in_line, notes);
    const DriverManager manager;
    const DsnStore store(GetScope(in_line));
    const DsnChanger changer(manager, store);
    Report report(in_line, store.GetScope());
    for (const std::string& note : notes) report.AddNotice(note);
    if (!in_line.Has(OptionId::DryRun)) report.AddNotice(FinishInterruptedChange(store));
    std::size_t done = 0;
    for (const DsnDescription& description : descriptions) {
        // One that fails does not stop the others.
        try {
            report.AddDone(ApplyOne(description, in_line, store, changer));
        } catch (const std::exception& error) {
            report.AddFailed(description.m_name, error.what());
        }
        report.ShowProgress(++done, descriptions.size());
    }
    return report.Finish();
}

}  // namespace Veltrane::Cli
