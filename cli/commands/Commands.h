/// The commands of veltrane-dsn. Each prints its result on standard output.
#ifndef CLI_COMMANDS_H
#define CLI_COMMANDS_H

#include "cli/dsn/Description.h"
#include "cli/line/CommandLine.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

/// Runs the command of the line.
/// @throws CommandError, and other exceptions, whose exit code is EXIT_FAILED
ExitCode RunCommand(const CommandLine& in_line);

ExitCode AddDsn(const CommandLine& in_line);
ExitCode SetDsn(const CommandLine& in_line);
ExitCode EditDsn(const CommandLine& in_line);
ExitCode RemoveDsns(const CommandLine& in_line);
ExitCode ApplyDescriptions(const CommandLine& in_line);
/// @param in_notes  printed on standard error
ExitCode ApplyThese(const CommandLine& in_line, const std::vector<DsnDescription>& in_descriptions,
                    const std::vector<std::string>& in_notes);
ExitCode ImportFile(const CommandLine& in_line);

ExitCode ShowDsn(const CommandLine& in_line);
ExitCode ListDsns(const CommandLine& in_line);
ExitCode ExportDsns(const CommandLine& in_line);
ExitCode CheckDsns(const CommandLine& in_line);

ExitCode RegisterDriver(const CommandLine& in_line);
ExitCode UnregisterDriver(const CommandLine& in_line);
ExitCode ListDrivers(const CommandLine& in_line);

ExitCode ShowPlaces(const CommandLine& in_line);
ExitCode RunDoctor(const CommandLine& in_line);
ExitCode TestDsn(const CommandLine& in_line);

/// Offers the shells what the last line of standard input can become. The lines are the words after
/// the program's name. Prints each word, a tab and its description; ":files" and ":variables" stand
/// for those of the shell.
ExitCode CompleteWords();

/// Makes the wish of add and set, with the password from the source that the options name.
/// @throws CommandError EXIT_USAGE for a password on the command line, for two sources and for keys
///         that cannot be set; EXIT_FAILED if the source cannot be read
DsnWish MakeWish(const CommandLine& in_line);
/// Sets PWD from the source that the options name, if they name one.
/// @throws CommandError as MakeWish
void TakePassword(const CommandLine& in_line, Entries& io_values);

/// Returns the driver that the options name.
std::string GetDriver(const CommandLine& in_line);
/// Returns the scope that the options name.
Scope GetScope(const CommandLine& in_line);
/// Returns the path of a FILE argument; empty for standard input.
std::string GetFile(const CommandLine& in_line);
/// Returns the format that the options name.
DescriptionFormat GetFormat(const CommandLine& in_line, DescriptionFormat in_default);
/// Returns the error that a DSN exists already.
CommandError DsnExists(const DsnStore& in_store, const std::string& in_dsn);
/// Returns the error that a DSN does not exist, and a hint if the other scope has it.
CommandError NoSuchDsn(const DsnStore& in_store, const std::string& in_dsn);

}  // namespace Veltrane::Cli

#endif
