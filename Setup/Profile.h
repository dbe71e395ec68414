/// The store of data sources and drivers: odbc.ini of a user or of the system, and odbcinst.ini. On
/// Linux files, on Windows keys of the registry.
///
/// A profile is read once, into sections that are found by name, and changed by a transaction. On
/// Linux that is: lock, read, any number of edits in memory, one write, one sync; a kill leaves the
/// old file or the new one (OdbcIniFile). The registry has no transactions: there the installer's
/// own functions write one value after the other, new values first and removals last, so that a
/// kill loses no key that was to stay. Text is UTF-8. Objects belong to one thread.
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

/// A profile that cannot be read or written. Its text has the place and the reason.
class ProfileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A name of a section or key in the one form that all names have which the profile takes for the
/// same: they differ in the case of ASCII letters, in the registry of all letters.
std::string FoldName(std::string_view in_name);
bool IsSameName(std::string_view in_left, std::string_view in_right);

/// What a profile held when it was read. Names compare as FoldName has it. A section that stands
/// twice counts where it is first, as does a key.
class ProfileView {
public:
    using KeyValue = std::pair<std::string, std::string>;
    struct State;

    explicit ProfileView(std::shared_ptr<const State> in_state) : m_state(std::move(in_state)) {}

    /// All sections in their order; one that occurs twice is named twice.
    std::vector<std::string> GetSections() const;
    bool HasSection(std::string_view in_section) const;
    /// The drivers of such a profile, as its driver manager lists them.
    std::vector<std::string> GetDrivers() const;
    /// The lines of a section, keys that occur twice included; empty without one.
    std::vector<KeyValue> GetKeyValues(std::string_view in_section) const;
    std::optional<std::string> Get(std::string_view in_section, std::string_view in_key) const;
    /// The keys of a section whose values are no text, which only the registry has. None of the
    /// other functions knows them.
    std::vector<std::string> GetOtherKeys(std::string_view in_section) const;
    /// Whether the section has a line of which the driver manager reads the first part only.
    bool HasLongLine(std::string_view in_section) const;
    /// Whether both certainly hold the same.
    bool IsSame(const ProfileView& in_other) const;

private:
    std::shared_ptr<const State> m_state;
};

/// The edits of one transaction.
class ProfileChange {
public:
    struct State;
    explicit ProfileChange(State& io_state) : m_state(io_state) {}

    /// What the profile holds; nobody who knows the lock changes it meanwhile. It may show the
    /// edits already.
    const ProfileView& GetView() const;
    /// Adds a data source, as its driver manager lists it, with the key "Driver" alone.
    void AddDataSource(const std::string& in_name, const std::string& in_driver);
    /// Writes a key; a section that is not there is added.
    void Set(const std::string& in_section, const std::string& in_key, const std::string& in_value);
    void RemoveKey(const std::string& in_section, const std::string& in_key);
    /// Takes the name out of its driver manager's list, too.
    void RemoveSection(const std::string& in_section);
    /// Lists a driver whose section has been written, where the driver manager has a list.
    void ListDriver(const std::string& in_driver);

private:
    State& m_state;
};

class Profile {
public:
    enum class Kind { USER_DATA_SOURCES, SYSTEM_DATA_SOURCES, DRIVERS };

    /// Finds the place by the rules of the driver manager and the environment.
    explicit Profile(Kind in_kind);

    /// The file, or the registry key.
    const std::string& GetPath() const { return m_path; }

    /// @return an empty view when the profile does not exist
    /// @throws ProfileError also for a file that the driver manager refuses as a whole
    ProfileView Read() const;

    /// A section that could not be changed, and why. The others are.
    struct Failure {
        std::string m_section;
        std::string m_reason;
    };

    /// Runs one transaction. When a program that does not know the lock has written meanwhile, the
    /// plan is asked again, with a view of what is there then, so nothing that others write is
    /// lost.
    /// @param in_plan  makes the edits; when it throws, nothing is changed
    /// @return on Windows the sections that the installer has refused; on Linux all or nothing is
    ///         written
    /// @throws ProfileError when nothing could be written
    std::vector<Failure> Change(const std::function<void(ProfileChange&)>& in_plan) const;

    /// Place and reason when it cannot be locked and written now; empty when it can. Leaves nothing
    /// behind.
    std::string WhyNotWritable() const;

private:
    Kind m_kind;
    std::string m_path;
};

}  // namespace Veltrane::ODBC

#endif
