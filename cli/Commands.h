/// The commands of veltrane-dsn on DSNs. Each prints its result on standard output and throws on
/// failure.
#ifndef CLI_COMMANDS_H
#define CLI_COMMANDS_H

#include <string>
#include <vector>

#include "cli/Change.h"
#include "cli/CommandError.h"
#include "cli/DriverManager.h"
#include "cli/Output.h"
#include "cli/Password.h"

namespace Veltrane::Cli {

/// What the command line says.
struct Options {
    Scope m_scope = Scope::User;
    std::string m_driver;
    std::string m_dsn;
    std::vector<Values::Item> m_fields;      ///< --server and the like
    std::vector<std::string> m_assignments;  ///< -p
    std::vector<std::string> m_unset;
    std::string m_connectionString;
    PasswordSource m_password;
    std::string m_file;  ///< of a description; "-" for standard input
    std::string m_setupLibrary;
    std::string m_driverLibrary;
    bool m_isIfMissing = false;
    bool m_isReplace = false;
    OutputOptions m_output;
};

constexpr char DEFAULT_DRIVER[] = "Veltrane";

void AddDsn(const Options& in_options);
/// Changes the given values of a DSN and keeps the others.
void SetDsn(const Options& in_options);
void RemoveDsn(const Options& in_options);
/// Prints the DSN's values, secrets masked.
void ShowDsn(const Options& in_options);
/// Prints the names of the driver's DSNs.
void ListDsns(const Options& in_options);

}  // namespace Veltrane::Cli

#endif
