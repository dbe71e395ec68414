/// Whether there is room for one more file.
#ifndef CLI_FREESPACE_H
#define CLI_FREESPACE_H

#include <string>

namespace Veltrane::Cli {

/// Path and reason when the file system of a file has no room left for a new version of it, or may
/// not be written to; empty when it has.
std::string WhyNoRoomBeside(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
