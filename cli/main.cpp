/// veltrane-dsn: adds, changes, removes and shows DSNs.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/system/Process.h"

namespace {

using namespace Veltrane::Cli;

int Run(const std::vector<std::string>& in_arguments) {
    ExitCode code = EXIT_DONE;
    try {
        const bool isForShells = in_arguments == std::vector<std::string>{"--complete"};
        code = isForShells ? CompleteWords() : RunCommand(ParseCommandLine(in_arguments));
    } catch (const HelpRequest& help) {
        std::cout << help.m_text;
    }
    std::cout.flush();
    if (!std::cout) FailWith("Standard output cannot be written.");
    return code;
}

}  // namespace

int main(int in_count, char** in_arguments) {
    try {
        return Run(StartProgram(in_count, in_arguments));
    } catch (const CommandError& error) {
        PrintError(error.what());
        return error.m_exitCode;
    } catch (const std::exception& error) {
        PrintError(error.what());
        return EXIT_FAILED;
    }
}
