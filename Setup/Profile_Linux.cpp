#include <cstdlib>

#include "PlatformAbstraction/base/Ascii.h"
#include "Setup/InstallerPaths.h"
#include "Setup/Profile.h"
#include "Setup/ProfileReader.h"
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

[[noreturn]] void RefuseLine(const std::string& in_key) {
    throw ProfileError(in_key + ": No line of the file can hold this key and value unchanged.");
}

}  // namespace

struct ProfileView::State : OdbcIniSnapshot::Text {};

std::string FoldName(std::string_view in_name) { return Orska::Support::FoldCase(in_name); }

bool IsSameName(std::string_view in_left, std::string_view in_right) {
    return Orska::Support::EqualsIgnoringCase(in_left, in_right);
}

std::vector<std::string> ProfileView::GetOtherKeys(std::string_view) const { return {}; }

std::vector<std::string> ProfileView::GetSections() const { return (*m_state)->GetSections(); }

std::vector<std::string> ProfileView::GetDrivers() const { return GetSections(); }

bool ProfileView::HasSection(std::string_view in_section) const {
    return (*m_state)->HasSection(in_section);
}

std::vector<ProfileView::KeyValue> ProfileView::GetKeyValues(std::string_view in_section) const {
    return (*m_state)->GetKeyValues(in_section);
}

std::optional<std::string> ProfileView::Get(std::string_view in_section,
                                            std::string_view in_key) const {
    return (*m_state)->Get(in_section, in_key);
}

bool ProfileView::HasLongLine(std::string_view in_section) const {
    return (*m_state)->HasLongLine(in_section);
}

bool ProfileView::IsSame(const ProfileView& in_other) const {
    return (*m_state)->GetBytes() == (*in_other.m_state)->GetBytes();
}

struct ProfileChange::State {
    explicit State(std::shared_ptr<OdbcIniText> io_text)
        : m_text(*io_text),
          m_view(std::make_shared<ProfileView::State>(ProfileView::State{std::move(io_text)})) {}

    OdbcIniText& m_text;  ///< of the view
    ProfileView m_view;
};

const ProfileView& ProfileChange::GetView() const { return m_state.m_view; }

void ProfileChange::AddDataSource(const std::string& in_name, const std::string& in_driver) {
    if (!CanHold(m_state.m_text.GetRules(), in_name, in_driver)) RefuseLine("Driver");
    ProfileRules::AddDataSource(m_state.m_text, in_name, in_driver);
}

void ProfileChange::Set(const std::string& in_section, const std::string& in_key,
                        const std::string& in_value) {
    if (!OdbcIniLine::IsCarriableSection(in_section) ||
        !OdbcIniLine::IsCarriableLine(in_key, in_value, m_state.m_text.GetRules())) {
        RefuseLine(in_key);
    }
    m_state.m_text.Set(in_section, in_key, in_value);
}

void ProfileChange::RemoveKey(const std::string& in_section, const std::string& in_key) {
    m_state.m_text.RemoveKey(in_section, in_key);
}

void ProfileChange::RemoveSection(const std::string& in_section) {
    RemoveDataSource(m_state.m_text, in_section);
}

/// Nothing to do: unixODBC finds a driver by its section.
void ProfileChange::ListDriver(const std::string&) {}

Profile::Profile(Kind in_kind) : m_kind(in_kind), m_path(FindPath(in_kind)) {}

ProfileView Profile::Read() const {
    OdbcIniSnapshot file(m_path);
    ProfileView::State state{file.Read()};
    if (state == nullptr) throw ProfileError(file.GetFailure().Describe());
    return ProfileView(std::make_shared<ProfileView::State>(std::move(state)));
}

std::vector<Profile::Failure> Profile::Change(
    const std::function<void(ProfileChange&)>& in_plan) const {
    OdbcIniUpdate update(m_path, NewFileMode(m_kind), RulesOf(IsIodbc()));
    const bool isDone = update.Commit([&](OdbcIniText&) {
        ProfileChange::State state(update.GetText());
        ProfileChange change(state);
        in_plan(change);
    });
    if (!isDone) throw ProfileError(update.GetFailure().Describe());
    ORSKA_TRACE(2, "Veltrane::ODBC::Profile::Change", "Setup\\Profile", 0, "%s: %s", m_path.c_str(),
                update.GetText()->IsChanged() ? "written" : "nothing to write");
    return {};
}

std::string Profile::WhyNotWritable() const {
    const OdbcIniUpdate update(m_path, NewFileMode(m_kind), RulesOf(IsIodbc()));
    return update.IsOpen() ? std::string() : update.GetFailure().Describe();
}

}  // namespace Veltrane::ODBC
