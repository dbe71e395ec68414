/// The store of data sources and drivers: the odbc.ini of a user or of the system, and
/// odbcinst.ini. Files on Linux, registry keys on Windows.
///
/// A profile is read once, into sections found by name, and changed by a transaction. On Linux a
/// transaction locks, reads, edits in memory, writes once and syncs; a kill leaves the old file or
/// the new one (OdbcIniFile). The registry has no transactions: the installer's functions write one
/// value after the other, and removals come last, so that a kill loses no key that was to stay.
/// Text is UTF-8. Objects belong to one thread.
#ifndef SETUP_PROFILE_H
#define SETUP_PROFILE_H

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Veltrane::ODBC {

/// Thrown when a profile cannot be read or written. The text has the path and the reason.
class ProfileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Returns the folded name of a section or key, the same for all names that the profile treats as
/// equal. They differ in the case of ASCII letters, in the registry of all letters.
std::string FoldName(std::string_view in_name);
bool IsSameName(std::string_view in_left, std::string_view in_right);

/// The contents of a profile when it was read. Names are compared by FoldName. The first of several
/// sections or keys of one name counts.
class ProfileView {
public:
    using KeyValue = std::pair<std::string, std::string>;
    struct State;

    explicit ProfileView(std::shared_ptr<const State> in_state) : m_state(std::move(in_state)) {}

    /// All sections in their order, repeated names included.
    std::vector<std::string> GetSections() const;
    bool HasSection(std::string_view in_section) const;
    /// The drivers in an odbcinst.ini, as the driver manager lists them.
    std::vector<std::string> GetDrivers() const;
    /// The lines of a section, repeated keys included; empty if there is no such section.
    std::vector<KeyValue> GetKeyValues(std::string_view in_section) const;
    std::optional<std::string> Get(std::string_view in_section, std::string_view in_key) const;
    /// The keys whose values are neither text nor numbers (only in the registry). The other
    /// functions ignore them.
    std::vector<std::string> GetOtherKeys(std::string_view in_section) const;
    /// Whether the driver manager reads only the first part of a line of the section.
    bool HasLongLine(std::string_view in_section) const;
    /// Whether both are known to have the same contents.
    bool IsSame(const ProfileView& in_other) const;

private:
    std::shared_ptr<const State> m_state;
};

/// The edits of one transaction.
class ProfileChange {
public:
    struct State;
    explicit ProfileChange(State& io_state) : m_state(io_state) {}

    /// Returns the contents of the profile, which no program that knows the lock changes meanwhile.
    /// They can already include the edits.
    const ProfileView& GetView() const;
    /// Adds a data source with only the key "Driver", also to the driver manager's list.
    void AddDataSource(const std::string& in_name, const std::string& in_driver);
    /// Writes a key; adds a missing section.
    void Set(const std::string& in_section, const std::string& in_key, const std::string& in_value);
    void RemoveKey(const std::string& in_section, const std::string& in_key);
    /// Also removes the name from the driver manager's list.
    void RemoveSection(const std::string& in_section);
    /// Adds a driver to the driver manager's list, if there is one. Its section is already written.
    void ListDriver(const std::string& in_driver);

private:
    State& m_state;
};

class Profile {
public:
    enum class Kind { USER_DATA_SOURCES, SYSTEM_DATA_SOURCES, DRIVERS };

    /// Finds the path by the rules of the driver manager and the environment.
    explicit Profile(Kind in_kind);

    /// The path of the file or of the registry key.
    const std::string& GetPath() const { return m_path; }

    /// @return an empty view when the profile does not exist
    /// @throws ProfileError also for a file that the driver manager refuses as a whole
    ProfileView Read() const;

    /// A section that could not be changed, and the reason. The other sections are changed.
    struct Failure {
        std::string m_section;
        std::string m_reason;
    };

    /// Runs one transaction. If a program without the lock has written meanwhile, runs the plan
    /// again on the new contents, so no write of other programs is lost.
    /// @param in_plan  makes the edits; when it throws, nothing is changed
    /// @return sections that the installer refused (Windows; Linux writes all or nothing)
    /// @throws ProfileError when nothing could be written
    std::vector<Failure> Change(const std::function<void(ProfileChange&)>& in_plan) const;

    /// Returns path and reason if the profile cannot be locked and written now; empty if it can.
    /// Changes nothing.
    std::string WhyNotWritable() const;

private:
    Kind m_kind;
    std::string m_path;
};

}  // namespace Veltrane::ODBC

#endif
