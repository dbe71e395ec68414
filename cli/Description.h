/// A description of many DSNs, in JSON or in the form of an odbc.ini.
///
/// JSON: {"data_sources": [{"name": "a", "driver": "Veltrane", "state": "present",
/// "values": {"Server": "s", "UID": null}}]}, or the array alone. The driver may be absent; the
/// state may be "absent" and is "present" otherwise; null removes a key.
#ifndef CLI_DESCRIPTION_H
#define CLI_DESCRIPTION_H

#include <string>
#include <vector>

#include "cli/Change.h"

namespace Veltrane::Cli {

struct Described {
    Wish m_wish;
    bool m_isAbsent = false;  ///< the DSN is not to exist
};

/// @throws CommandError (usage), which names the entry and never holds a value
std::vector<Described> ParseDescription(const std::string& in_text);

/// @param in_path  "-" for standard input
/// @throws CommandError when it cannot be read
std::string ReadDescription(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
