/// Runs code of other people's libraries outside this process.
#ifndef CLI_APART_H
#define CLI_APART_H

#include <functional>
#include <string>

namespace Veltrane::Cli {

/// Runs work in a separate process, so that it cannot affect this one; on Windows in this process.
/// @return the result of the work; empty if its process ended early or took more than 20 s
std::string RunApart(const std::function<std::string()>& in_work);

}  // namespace Veltrane::Cli

#endif
