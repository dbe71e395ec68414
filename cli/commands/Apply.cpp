#include <unistd.h>

#include <csignal>
#include <unordered_set>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/system/Input.h"
#include "cli/system/PlatformWords.h"
#include "cli/system/Process.h"

namespace Veltrane::Cli {

namespace {

/// Process-wide: set by apply and by Ctrl-C, read by both.
volatile std::sig_atomic_t s_isWriting = 0;
volatile std::sig_atomic_t s_isInterrupted = 0;

/// Ctrl-C before the write ends the program at once, even while it waits for the lock. During the
/// write, the second Ctrl-C ends it.
void Interrupt(int in_signal) {
    constexpr std::string_view TEXT = "veltrane-dsn: Interrupted. Nothing has been written.\n";
    if (s_isWriting == 0) {
        [[maybe_unused]] const auto ignored = write(STDERR_FILENO, TEXT.data(), TEXT.size());
        _exit(EXIT_INTERRUPTED);
    }
    s_isInterrupted = 1;
    std::signal(in_signal, SIG_DFL);
}

void TakePassword(const DsnDescription& in_description, const CommandLine& in_line,
                  DsnWish& io_wish) {
    if (const std::string& file = in_description.m_pwdFile; !file.empty()) {
        // A relative path is relative to the folder of the description.
        const std::filesystem::path folder = ToPath(GetFile(in_line)).parent_path();
        io_wish.m_values.Set(
            "PWD", ReadFirstLine(IsAbsolutePath(file) ? file : FromPath(folder / ToPath(file))));
    }
    const std::string& name = in_description.m_pwdVariable;
    // The variable stays set: another DSN can name it too.
    if (!name.empty()) io_wish.m_values.Set("PWD", ReadSecret("pwd_env", name));
}

DsnWish MakeWishFor(const DsnDescription& in_description, const CommandLine& in_line) {
    DsnWish wish = in_description;
    if (wish.m_driver.empty()) wish.m_driver = GetDriver(in_line);
    wish.m_isAbsent = in_description.IsAbsent();
    wish.m_isReplaced = in_line.Has("--replace");
    try {
        if (!wish.m_isAbsent) TakePassword(in_description, in_line, wish);
    } catch (const CommandError& error) {
        wish.m_failure = error.what();
    }
    return wish;
}

/// Returns the removals of the driver's DSNs that are not described.
std::vector<DsnWish> FindPruned(const std::vector<DsnWish>& in_wishes, const std::string& in_driver,
                                const ODBC::ProfileView& in_view) {
    std::vector<DsnWish> pruned;
    std::unordered_set<std::string> described;
    for (const DsnWish& wish : in_wishes) described.insert(FoldName(wish.m_name));
    for (const std::string& dsn : GetDsnNames(in_view)) {
        const bool isOurs = IsSameName(in_view.Get(dsn, "Driver").value_or(""), in_driver);
        if (!isOurs || described.contains(FoldName(dsn))) continue;
        pruned.push_back({.m_name = dsn, .m_driver = in_driver, .m_isAbsent = true});
    }
    return pruned;
}

}  // namespace

ExitCode ApplyDescriptions(const CommandLine& in_line) {
    const std::string file = GetFile(in_line);
    const std::string text = ReadText(file);
    std::vector<std::string> notes;
    const std::vector<DsnDescription> descriptions =
        ParseDescriptions(text, GetFormat(in_line, GuessFormat(text)), DescribeInput(file), notes);
    return ApplyThese(in_line, descriptions, notes);
}

ExitCode ApplyThese(const CommandLine& in_line, const std::vector<DsnDescription>& in_descriptions,
                    const std::vector<std::string>& in_notes) {
    std::vector<DsnWish> wishes;
    wishes.reserve(in_descriptions.size());
    for (const DsnDescription& description : in_descriptions) {
        wishes.push_back(MakeWishFor(description, in_line));
    }
    const auto plan = [&](const PlanBasis& in_basis) {
        DsnPlans plans;
        const auto add = [&](const DsnWish& in_wish) {
            try {
                if (!in_wish.m_failure.empty()) FailWith(in_wish.m_failure);
                plans.push_back(PlanChange(in_wish, in_basis));
            } catch (const CommandError& error) {
                // Only a refusal is one of this DSN: an unreadable odbcinst.ini ends the run.
                plans.push_back({.m_name = in_wish.m_name, .m_failure = error.what()});
                if (!in_line.Has("--fail-fast")) return;
                FailWith(in_wish.m_name + ": " + error.what() + " Nothing has been written.");
            }
        };
        for (const DsnWish& wish : wishes) add(wish);
        if (!in_line.Has("--prune")) return plans;
        for (const DsnWish& wish : FindPruned(wishes, GetDriver(in_line), in_basis.m_view)) {
            add(wish);
        }
        return plans;
    };
    std::signal(SIGINT, Interrupt);
    const DsnStore store(GetScope(in_line));
    Report report(in_line, store);
    for (const std::string& note : in_notes) report.AddNotice(note);
    DsnPlans results;
    try {
        results = ChangeDsns(store, plan, in_line.Has("--dry-run"), [] { s_isWriting = 1; });
    } catch (const std::exception& error) {
        // Nothing is written. In JSON the reason is reported for each DSN.
        if (!in_line.Has("--json")) throw;
        for (const DsnWish& wish : wishes) {
            results.push_back({.m_name = wish.m_name, .m_failure = error.what()});
        }
    }
    // A DSN that fails does not stop the others.
    for (const DsnPlan& result : results) report.Add(result);
    report.AddSummary();
    const ExitCode code = report.Finish();
    if (s_isInterrupted == 0) return code;
    throw CommandError(EXIT_INTERRUPTED, "Interrupted. The changes reported as done are written.");
}

}  // namespace Veltrane::Cli
