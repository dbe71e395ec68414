/// Reads values from the files of the config mode, as the driver manager does (Linux). Objects
/// belong to one thread.
#ifndef SETUP_PROFILEREADER_H
#define SETUP_PROFILEREADER_H

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Setup/ConfigMode.h"
#include "Setup/InstallerPaths.h"
#include "Setup/OdbcIniUpdate.h"

namespace Veltrane::ODBC {

/// A file that was read. It is read again when it has changed, or after a second.
class OdbcIniSnapshot {
public:
    using Text = std::shared_ptr<const OdbcIniText>;

    explicit OdbcIniSnapshot(std::string in_path) : m_path(std::move(in_path)) {}

    const std::string& GetPath() const noexcept { return m_path; }
    /// Returns null when the file cannot be read or the driver manager would refuse it. A missing
    /// file reads as empty, because the driver manager creates it when it reads.
    Text Read();
    /// Why Read returned null.
    const FileFailure& GetFailure() const noexcept { return m_failure; }

private:
    bool IsCurrent(long long in_time) const;

    std::string m_path;
    FileFailure m_failure;
    Text m_text;
    struct stat m_stat {};
    long long m_readAt = 0;  ///< 0: not read, or there was no file
};

class ProfileReader {
public:
    /// Finds the files that the mode reads.
    explicit ProfileReader(ConfigMode in_mode)
        : m_mode(in_mode),
          m_user(in_mode == ConfigMode::SYSTEM ? std::string() : GetUserIniPath()),
          m_system(in_mode == ConfigMode::USER ? std::string() : GetSystemIniPath()) {}

    /// The file that the mode writes to.
    const std::string& GetWrittenPath() const noexcept;

    struct Found {
        bool m_isRead = false;  ///< false: no file could be read
        std::optional<std::string> m_value;
    };
    /// @param in_update  its text is read instead of its file if it is open; null for none
    Found Find(const OdbcIniUpdate* in_update, std::string_view in_section,
               std::string_view in_key);

private:
    ConfigMode m_mode;
    OdbcIniSnapshot m_user;
    OdbcIniSnapshot m_system;
};

/// The value of a key in one file.
ProfileReader::Found FindIn(const OdbcIniSnapshot::Text& in_text, std::string_view in_section,
                            std::string_view in_key);

}  // namespace Veltrane::ODBC

#endif
