/// The file through which a request without a window gets its values. It lives in memory, is seen
/// by this process only and is gone with the object, so a password in it never reaches the disk.
#ifndef CLI_INITIALVALUESFILE_H
#define CLI_INITIALVALUESFILE_H

#include <string>
#include <utility>
#include <vector>

namespace Veltrane::Cli {

/// Key and value of each field, in UTF-8.
using FieldValues = std::vector<std::pair<std::string, std::string>>;

class InitialValuesFile {
public:
    /// Writes the file and names it in VELTRANE_DSN_INITIAL_VALUES.
    /// @throws std::invalid_argument when a value holds what no line can carry: line ends, other
    ///         control characters, blanks at an end. The text names the key, never the value.
    explicit InitialValuesFile(const FieldValues& in_values);
    InitialValuesFile(const InitialValuesFile&) = delete;
    InitialValuesFile& operator=(const InitialValuesFile&) = delete;
    ~InitialValuesFile();

private:
    int m_descriptor = -1;
};

}  // namespace Veltrane::Cli

#endif
