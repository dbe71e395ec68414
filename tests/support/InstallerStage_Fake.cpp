#include "tests/support/InstallerStage.h"
#include "tests/support/OdbcInstaller_Fake.h"

namespace Veltrane::Test {

InstallerStage::InstallerStage() = default;
InstallerStage::~InstallerStage() = default;

void InstallerStage::Begin(bool in_isSystem, const Profile& in_profile) {
    m_isSystem = in_isSystem;  // the installer in memory has one profile for both
    s_installer = {};
    s_installer.m_invalidNames = {"a[b"};
    for (const auto& [name, keys] : in_profile) {
        s_installer.m_profile[name] = FakeInstaller::Section(keys.begin(), keys.end());
    }
}

Profile InstallerStage::Get() {
    Profile profile;
    for (const auto& [name, section] : s_installer.m_profile) {
        if (!section.empty()) profile[name] = Keys(section.begin(), section.end());
    }
    return profile;
}

Profile InstallerStage::GetOther() { return {}; }

void InstallerStage::FailAt(const std::string& in_operation) {
    const bool isKey = in_operation.rfind("Write ", 0) == 0;
    const std::string key = isKey ? " " + in_operation.substr(6) + "=" : "";
    s_installer.m_fails = [=](const std::string& in_call) {
        if (in_operation.empty()) return false;
        return isKey ? in_call.rfind("Write [", 0) == 0 && in_call.find(key) != std::string::npos
                     : in_call.rfind(in_operation + " ", 0) == 0;
    };
}

std::vector<std::pair<unsigned long, std::string>> InstallerStage::Posted() {
    return s_installer.m_posted;
}

}  // namespace Veltrane::Test
