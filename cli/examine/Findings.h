/// The findings of an examination of the machine's ODBC set-up.
#ifndef CLI_FINDINGS_H
#define CLI_FINDINGS_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/dsn/DsnStore.h"

namespace Veltrane::Cli {

/// Error: DSNs of the driver do not work. Warning: they may fail or be unsafe.
enum class Severity { Error, Warning, Note };

struct Finding {
    Severity m_severity;
    std::string m_id;    ///< for programs: "driver-not-registered"
    std::string m_text;  ///< a sentence that says what is wrong and where
    std::string m_repair = "No action is needed.";  ///< a sentence on how to repair it
};

using Findings = std::vector<Finding>;

bool HasError(const Findings& in_findings);
nlohmann::ordered_json ToJson(const Findings& in_findings);
/// Prints each with its repair, at most 80 columns wide.
void PrintFindings(const Findings& in_findings);

/// Loads the driver's libraries, and sends a request that changes nothing through the installer,
/// each in a separate process.
/// @throws ODBC::ProfileError if odbcinst.ini exists but cannot be read
void ExamineDriver(const std::string& in_driver, Findings& out_findings);

/// Loads the library that programs connect with, in a separate process.
/// @param in_driver  a name, or the library's path, as a DSN can have it
/// @throws ODBC::ProfileError as ExamineDriver
Findings ExamineDriverLibrary(const std::string& in_driver);

/// Examines one DSN: missing values, and values that programs read differently.
/// @param in_driver  a DSN of another driver need not have its keys
void ExamineDsn(const ODBC::ProfileView& in_text, Scope in_scope, const std::string& in_dsn,
                const std::string& in_driver, Findings& io_findings);

/// Examines the file of a scope: readable, writable, private if it holds a password.
/// @return its contents; nothing if it cannot be read
std::optional<ODBC::ProfileView> ExamineFile(const DsnStore& in_store, Findings& io_findings);

/// Names the DSNs of the user's file that hide one of the system's.
void ExamineShadows(const DsnStore& in_user, const ODBC::ProfileView& in_userText,
                    const DsnStore& in_system, const ODBC::ProfileView& in_systemText,
                    Findings& io_findings);

/// Returns the path of the installer library of this process.
std::string FindInstallerLibrary();

/// Notes the version of the installed driver manager, and its known defects.
void ExamineDriverManager(Findings& io_findings);

/// Reports environment variables that send the driver manager to other files.
void ExamineEnvironment(Findings& io_findings);

}  // namespace Veltrane::Cli

#endif
