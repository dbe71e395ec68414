/// veltrane-dsn: adds, changes, removes and shows DSNs through the installed driver manager.
#include <exception>
#include <iostream>

#include "cli/CommandError.h"
#include "cli/CommandLine.h"

int main(int in_count, char** in_arguments) {
    using namespace Veltrane::Cli;
    try {
        return RunCommandLine(in_count, in_arguments);
    } catch (const CommandError& error) {
        std::cerr << "veltrane-dsn: " << error.what() << "\n";
        return error.GetExitCode();
    } catch (const std::exception& error) {
        std::cerr << "veltrane-dsn: " << error.what() << "\n";
        return EXIT_FAILED;
    }
}
