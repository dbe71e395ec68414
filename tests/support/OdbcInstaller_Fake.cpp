#include "tests/support/OdbcInstaller_Fake.h"

#include <algorithm>

#include "Setup/HandedOutValues.h"
#include "Setup/OdbcInstaller.h"

namespace Veltrane::Test {

FakeInstaller s_installer;

}  // namespace Veltrane::Test

namespace Veltrane::ODBC::OdbcInstaller {

using Veltrane::Test::FakeInstaller;
using Veltrane::Test::s_installer;

struct Request::State {
    HandedOutValues<std::string> m_values;
};
struct Update::State {
    bool m_isDone = false;
};

namespace {

/// The request that is running; null outside of one.
Request::State* s_request = nullptr;

/// Records an operation; true when it has to fail.
bool Fails(const std::string& in_call) {
    s_installer.m_calls.push_back(in_call);
    return s_installer.m_fails && s_installer.m_fails(in_call);
}

std::string Bracketed(const orska_wstring& in_section) {
    return "[" + in_section.GetAsUtf8() + "]";
}

}  // namespace

Request::Request(bool /*in_isSystem*/) : m_state(std::make_unique<State>()) {
    s_request = m_state.get();
}
Request::~Request() { s_request = nullptr; }
const char* Request::GetModeName() const noexcept { return "fake"; }

Update::Update() : m_state(std::make_unique<State>()) { s_installer.m_calls.emplace_back("Begin"); }

Update::~Update() {
    if (!m_state->m_isDone) {
        s_installer.m_calls.emplace_back("Commit silently");
    }
}

bool Update::Commit() noexcept {
    m_state->m_isDone = true;
    return !Fails("Commit");
}

bool ValidDSN(const orska_wstring& in_name) {
    const std::string name = in_name.GetAsUtf8();
    const std::vector<std::string>& invalid = s_installer.m_invalidNames;
    return !Fails("Valid " + name) && !name.empty() &&
           std::find(invalid.begin(), invalid.end(), name) == invalid.end();
}

int GetPrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                            const orska_wstring& in_default, orska_wstring& out_value,
                            int in_bufferSize, const orska_wstring& in_file) {
    const std::string key = in_key.GetAsUtf8();
    out_value = in_default;
    if (Fails("Read " + Bracketed(in_section) + " " + key + " " + std::to_string(in_bufferSize) +
              " " + in_file.GetAsUtf8())) {
        return -1;
    }
    for (const auto& [name, value] : s_installer.m_profile[in_section.GetAsUtf8()]) {
        if (name == key) {
            out_value.SetFromUtf8(value);
            out_value = CutToBuffer(out_value, in_bufferSize);
            if (s_request != nullptr) s_request->m_values.Remember(in_key, out_value, value);
        }
    }
    return out_value.GetLength();
}

bool IsAsRead(const orska_wstring& in_key, const orska_wstring& in_value) {
    return s_request != nullptr && s_request->m_values.Find(in_key, in_value) != nullptr;
}

bool IsWritableDSN(const orska_wstring& in_dsn, const orska_wstring&) { return !in_dsn.IsEmpty(); }

bool IsWritableValue(const orska_wstring&, const orska_wstring&) { return true; }

bool WritePrivateProfileString(const orska_wstring& in_section, const orska_wstring& in_key,
                               const orska_wstring& in_value, const orska_wstring& in_file) {
    const std::string key = in_key.GetAsUtf8();
    const std::string value = in_value.IsNull() ? "(removed)"
                              : IsAsRead(in_key, in_value)
                                  ? *s_request->m_values.Find(in_key, in_value)
                                  : in_value.GetAsUtf8();
    if (Fails("Write " + Bracketed(in_section) + " " + key + "=" + value + " " +
              in_file.GetAsUtf8())) {
        return false;
    }
    FakeInstaller::Section& section = s_installer.m_profile[in_section.GetAsUtf8()];
    const auto known = std::find_if(section.begin(), section.end(),
                                    [&](const auto& in_entry) { return in_entry.first == key; });
    if (known == section.end()) {
        section.emplace_back(key, value);
    } else {
        known->second = value;
    }
    return true;
}

bool WriteDSNToIni(const orska_wstring& in_dsn, const orska_wstring& in_driver) {
    if (Fails("WriteDSN " + Bracketed(in_dsn) + " " + in_driver.GetAsUtf8()) || in_dsn.IsEmpty()) {
        return false;
    }
    s_installer.m_profile[in_dsn.GetAsUtf8()] = {{"Driver", "path of " + in_driver.GetAsUtf8()}};
    return true;
}

bool RemoveDSNFromIni(const orska_wstring& in_dsn) {
    if (Fails("RemoveDSN " + Bracketed(in_dsn))) {
        return false;
    }
    s_installer.m_profile.erase(in_dsn.GetAsUtf8());
    return true;
}

bool PostInstallerError(unsigned long in_code, const orska_wstring& in_text) {
    s_installer.m_posted.emplace_back(in_code, in_text.GetAsUtf8());
    return true;
}

}  // namespace Veltrane::ODBC::OdbcInstaller
