/// Runs work with somebody else's library apart from this process.
#ifndef CLI_APART_H
#define CLI_APART_H

#include <functional>
#include <string>

namespace Veltrane::Cli {

/// Runs work in a process of its own, so that nothing that it does reaches this one. On Windows it
/// runs in this one.
/// @return what the work returned; empty when its process ended before, or took more than 20 s
std::string RunApart(const std::function<std::string()>& in_work);

}  // namespace Veltrane::Cli

#endif
