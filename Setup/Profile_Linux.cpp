#include <cerrno>
#include <cstdlib>

#include "PlatformAbstraction/base/Ascii.h"
#include "Setup/InstallerPaths.h"
#include "Setup/OdbcIniFile.h"
#include "Setup/Profile.h"
#include "Setup/ProfileRules.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {

namespace {

using namespace ProfileRules;
using Kind = Profile::Kind;

mode_t NewFileMode(Kind in_kind) {
    return in_kind == Kind::USER_DATA_SOURCES ? NEW_USER_FILE : NEW_SYSTEM_FILE;
}

std::string FindPath(Kind in_kind) {
    if (in_kind == Kind::USER_DATA_SOURCES) return GetUserIniPath();
    const std::string system = GetSystemIniPath();
    if (in_kind == Kind::SYSTEM_DATA_SOURCES) return system;
    const char* const name = std::getenv("ODBCINSTINI");
    return system.substr(0, system.rfind('/') + 1) + (name == nullptr ? "odbcinst.ini" : name);
}

constexpr char CHANGE[] = "Veltrane::ODBC::Profile::Change";
constexpr char SOURCE[] = "Setup\\Profile";

[[noreturn]] void Fail(const OdbcIniFile& in_file) {
    ORSKA_TRACE(1, CHANGE, SOURCE, 0, "%s", in_file.GetFailure().Describe().c_str());
    throw ProfileError(in_file.GetFailure().Describe());
}

}  // namespace

struct ProfileView::State {
    OdbcIniText m_text;

    /// The driver manager would read nothing of what is written to such a file.
    State(std::string in_bytes, const std::string& in_path)
        : m_text(std::move(in_bytes), RulesOf(IsIodbc())) {
        if (m_text.IsReadable()) return;
        throw ProfileError(in_path + ": " + UNREADABLE +
                           " makes the whole file unreadable for the driver manager");
    }
};

std::string FoldName(std::string_view in_name) { return Orska::Support::FoldCase(in_name); }

bool IsSameName(std::string_view in_left, std::string_view in_right) {
    return Orska::Support::EqualsIgnoringCase(in_left, in_right);
}

std::vector<std::string> ProfileView::GetOtherKeys(std::string_view) const { return {}; }

std::vector<std::string> ProfileView::GetSections() const { return m_state->m_text.GetSections(); }

std::vector<std::string> ProfileView::GetDrivers() const { return GetSections(); }

bool ProfileView::HasSection(std::string_view in_section) const {
    return m_state->m_text.HasSection(in_section);
}

std::vector<ProfileView::KeyValue> ProfileView::GetKeyValues(std::string_view in_section) const {
    return m_state->m_text.GetKeyValues(in_section);
}

std::optional<std::string> ProfileView::Get(std::string_view in_section,
                                            std::string_view in_key) const {
    return m_state->m_text.Get(in_section, in_key);
}

bool ProfileView::HasLongLine(std::string_view in_section) const {
    return m_state->m_text.HasLongLine(in_section);
}

bool ProfileView::IsSame(const ProfileView& in_other) const {
    return m_state->m_text.GetBytes() == in_other.m_state->m_text.GetBytes();
}

struct ProfileChange::State {
    explicit State(std::shared_ptr<ProfileView::State> in_read)
        : m_text(in_read->m_text), m_view(std::move(in_read)) {}

    OdbcIniText& m_text;  ///< of the view
    ProfileView m_view;
    bool m_isIodbc = IsIodbc();
};

const ProfileView& ProfileChange::GetView() const { return m_state.m_view; }

void ProfileChange::AddDataSource(const std::string& in_name, const std::string& in_driver) {
    if (IsListed(m_state.m_isIodbc, in_name)) Set(LIST_OF_DATA_SOURCES, in_name, in_driver);
    Set(in_name, "Driver", in_driver);
}

void ProfileChange::Set(const std::string& in_section, const std::string& in_key,
                        const std::string& in_value) {
    if (!OdbcIniLine::IsCarriableSection(in_section) ||
        !OdbcIniLine::IsCarriableLine(in_key, in_value, RulesOf(m_state.m_isIodbc))) {
        throw ProfileError(in_key + ": No line of the file can hold this key and value unchanged.");
    }
    m_state.m_text.Set(in_section, in_key, in_value);
}

void ProfileChange::RemoveKey(const std::string& in_section, const std::string& in_key) {
    m_state.m_text.RemoveKey(in_section, in_key);
}

void ProfileChange::RemoveSection(const std::string& in_section) {
    if (IsListed(m_state.m_isIodbc, in_section))
        m_state.m_text.RemoveKey(LIST_OF_DATA_SOURCES, in_section);
    m_state.m_text.RemoveSection(in_section);
}

/// Its section is what unixODBC reads.
void ProfileChange::ListDriver(const std::string&) {}

Profile::Profile(Kind in_kind) : m_kind(in_kind), m_path(FindPath(in_kind)) {}

ProfileView Profile::Read() const {
    OdbcIniFile file(m_path);
    std::string bytes;
    struct stat status {};
    if (!file.Read(bytes, status)) {
        if (file.GetFailure().m_error != ENOENT) Fail(file);
        bytes.clear();
    }
    return ProfileView(std::make_shared<ProfileView::State>(std::move(bytes), m_path));
}

std::vector<Profile::Failure> Profile::Change(
    const std::function<void(ProfileChange&)>& in_plan) const {
    OdbcIniFile file(m_path);
    for (;;) {
        std::string bytes;
        if (!file.Lock(bytes, NewFileMode(m_kind))) Fail(file);
        const auto read = std::make_shared<ProfileView::State>(std::move(bytes), m_path);
        ProfileChange::State state(read);
        ProfileChange change(state);
        in_plan(change);
        read->m_text.Finish();
        if (!read->m_text.IsChanged() || file.Replace(read->m_text.GetBytes())) {
            ORSKA_TRACE(2, CHANGE, SOURCE, 0, "%s: %s", m_path.c_str(),
                        read->m_text.IsChanged() ? "written" : "nothing to write");
            return {};
        }
        if (!file.IsDueAgain()) Fail(file);
    }
}

std::string Profile::WhyNotWritable() const {
    OdbcIniFile file(m_path);
    std::string bytes;
    if (!file.Lock(bytes, NewFileMode(m_kind))) return file.GetFailure().Describe();
    try {
        const ProfileView::State read(std::move(bytes), m_path);
        return {};
    } catch (const ProfileError& error) {
        return error.what();
    }
}

}  // namespace Veltrane::ODBC
