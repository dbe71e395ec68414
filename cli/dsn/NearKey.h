/// Keys that are probably one of ours, mistyped.
#ifndef CLI_NEARKEY_H
#define CLI_NEARKEY_H

#include <string>
#include <string_view>

namespace Veltrane::Cli {

/// "The driver has no key Sever; did you mean Server?"; empty where no key of ours is near.
std::string DescribeNearKey(std::string_view in_key);

}  // namespace Veltrane::Cli

#endif
