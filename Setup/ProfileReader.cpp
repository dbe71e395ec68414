#include "Setup/ProfileReader.h"

#include <cerrno>
#include <utility>

#include "Setup/FileState.h"
#include "Setup/ProfileRules.h"

namespace Veltrane::ODBC {

namespace {

/// For how long, in microseconds, a file that looks unchanged is not read again.
constexpr long long SNAPSHOT_AGE = 1'000'000;

}  // namespace

bool OdbcIniSnapshot::IsCurrent(long long in_time) const {
    struct stat now {};
    return m_readAt != 0 && in_time - m_readAt < SNAPSHOT_AGE &&
           SystemCalls::Stat(m_path.c_str(), now, true) == 0 &&
           FileState::IsSameVersion(now, m_stat) &&
           FileState::IsSameTime(now.st_ctim, m_stat.st_ctim);
}

OdbcIniSnapshot::Text OdbcIniSnapshot::Read() {
    const long long time = SystemCalls::GetMonotonicTime();
    if (!IsCurrent(time)) {
        m_readAt = 0;
        OdbcIniFile file(m_path);
        std::string bytes;
        if (file.Read(bytes, m_stat)) {
            m_readAt = time;
        } else if (file.GetFailure().m_error != ENOENT) {
            m_failure = file.GetFailure();
            TraceFileFailure(m_failure);
            return nullptr;
        } else {
            bytes.clear();
        }
        m_text = std::make_shared<OdbcIniText>(std::move(bytes),
                                               ProfileRules::RulesOf(ProfileRules::IsIodbc()));
    }
    if (m_text->IsReadable()) return m_text;
    m_failure = {m_path, ProfileRules::UNREADABLE, FileFailure::REFUSED};
    return nullptr;
}

const std::string& ProfileReader::GetWrittenPath() const noexcept {
    return (m_mode == ConfigMode::SYSTEM ? m_system : m_user).GetPath();
}

ProfileReader::Found FindIn(const OdbcIniSnapshot::Text& in_text, std::string_view in_section,
                            std::string_view in_key) {
    if (in_text == nullptr) return {};
    return {true, in_text->Get(in_section, in_key)};
}

ProfileReader::Found ProfileReader::Find(const OdbcIniUpdate* in_update,
                                         std::string_view in_section, std::string_view in_key) {
    const auto read = [&](OdbcIniSnapshot& io_file) {
        const bool isUpdated = in_update != nullptr && in_update->IsOpen() &&
                               in_update->GetPath() == io_file.GetPath();
        return isUpdated ? OdbcIniSnapshot::Text(in_update->GetText()) : io_file.Read();
    };
    const auto findIn = [&](OdbcIniSnapshot& io_file) {
        return FindIn(read(io_file), in_section, in_key);
    };
    if (m_mode == ConfigMode::USER) return findIn(m_user);
    if (m_mode == ConfigMode::SYSTEM) return findIn(m_system);
    if (ProfileRules::IsIodbc()) {
        // A value of the system's file counts where the user's file has none or an empty one.
        Found user = findIn(m_user);
        if (!user.m_value.value_or("").empty()) return user;
        Found system = findIn(m_system);
        return system.m_isRead ? system : user;
    }
    // The user's file hides whole sections of the system's. A user file that cannot be written is
    // ignored in this mode, because the driver manager opens it for writing first.
    const bool isWritable = SystemCalls::IsWritable(m_user.GetPath().c_str());
    const OdbcIniSnapshot::Text user = isWritable ? read(m_user) : nullptr;
    if (user == nullptr) return findIn(m_system);
    if (user->HasSection(in_section)) return FindIn(user, in_section, in_key);
    const OdbcIniSnapshot::Text system = read(m_system);
    if (system == nullptr) return {true, std::nullopt};
    return {true, system->Get(in_section, in_key, OdbcIniText::Rules::APPENDED_FILE)};
}

}  // namespace Veltrane::ODBC
