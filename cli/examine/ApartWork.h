/// What the tool does in a process of its own, `veltrane-dsn test - --apart`, because a library of
/// somebody else runs there: it may hang, crash, print, or start what goes on.
#ifndef CLI_APARTWORK_H
#define CLI_APARTWORK_H

#include <nlohmann/json.hpp>
#include <string>

namespace Veltrane::Cli {

/// Has a request answered there: {"library": bytes of its path, "functions": names} by LoadHere,
/// {"driver": name} by AskSetupLibrary. Blocks for at most 20 s.
/// @return the answer; empty when the process ended before, or took longer
std::string AskApart(const nlohmann::ordered_json& in_request);

/// The work of that process: reads a request from standard input, a connection test's too, and
/// writes what became of it to standard output.
void DoApartWork();

/// One line of JSON. Bytes that are not UTF-8 become U+FFFD.
std::string ToLine(const nlohmann::ordered_json& in_document);

}  // namespace Veltrane::Cli

#endif
