/// Prints the results of commands that change DSNs, as text at once or as one JSON document at the
/// end. Failures always go to standard error. Used by one thread.
#ifndef CLI_REPORT_H
#define CLI_REPORT_H

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/dsn/DsnPlan.h"
#include "cli/line/CommandLine.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

using Json = nlohmann::ordered_json;

/// Prints a document; bytes that are not UTF-8 become U+FFFD.
void PrintJson(const Json& in_document);
/// Prints the result of a command: the text, or the document with --json.
void PrintResult(const CommandLine& in_line, const std::string& in_text, const Json& in_document);
/// Prints "veltrane-dsn: text" on standard error.
void PrintError(const std::string& in_text);

/// Prints a result and, in a dry run, the difference.
void PrintPlan(const DsnPlan& in_plan, bool in_isDryRun, const std::string& in_place,
               bool in_areSecretsShown);

class Report {
public:
    /// Both have to stay.
    Report(const CommandLine& in_line, const DsnStore& in_store);

    /// @param in_plan  carried out, in a dry run only made, or failed
    void Add(const DsnPlan& in_plan);
    /// Prints a notice on standard error, unless --quiet is given or the text is empty.
    void AddNotice(const std::string& in_text);
    /// Prints "3 added, 1 changed, 996 unchanged, 1 failed"; nothing in JSON.
    void AddSummary();

    /// @return EXIT_FAILED when something failed
    ExitCode Finish();

private:
    /// Returns a warning if others can read a password that was written; otherwise empty.
    std::string WarnOfReaders() const;

    const CommandLine& m_line;
    const DsnStore& m_store;
    std::string m_place;  ///< " in PATH" if it is not the user's own file
    std::map<Action, std::size_t> m_counts;
    std::size_t m_failures = 0;
    bool m_hasNewSecret = false;
    Json m_results = Json::array();
};

}  // namespace Veltrane::Cli

#endif
