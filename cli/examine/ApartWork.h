/// The work that the tool does in a separate process, `veltrane-dsn test - --apart`: it runs
/// libraries of others, which can hang, crash, print or start processes.
#ifndef CLI_APARTWORK_H
#define CLI_APARTWORK_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Veltrane::Cli {

/// Asks a new process. Blocks for at most 20 s.
/// @param in_kind  "library": the fault of the library `in_text` as a digit, and its detail;
///                 "driver": whether the setup library of that driver answers the installer
/// @return the answer; empty if the process ended without one or took longer
std::string AskApart(const char* in_kind, const std::string& in_text,
                     const std::vector<std::string>& in_functions = {});

/// Runs in that process: reads a request from standard input, also that of a connection test, and
/// writes the result to standard output.
void DoApartWork();

/// One line of JSON. Bytes that are not UTF-8 become U+FFFD.
std::string ToLine(const nlohmann::ordered_json& in_document);

}  // namespace Veltrane::Cli

#endif
