/// Whose DSNs a command works on.
#ifndef CLI_SCOPE_H
#define CLI_SCOPE_H

namespace Veltrane::Cli {

enum class Scope { User, System };

}  // namespace Veltrane::Cli

#endif
