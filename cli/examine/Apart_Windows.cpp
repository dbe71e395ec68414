#include "cli/examine/Apart.h"

namespace Veltrane::Cli {

std::string RunApart(const std::function<std::string()>& in_work) { return in_work(); }

}  // namespace Veltrane::Cli
