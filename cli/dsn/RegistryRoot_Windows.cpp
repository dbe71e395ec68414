#include "cli/dsn/RegistryRoot_Windows.h"

#include <windows.h>

#include <cstring>

#include "VeltraneDialog/WideText_Windows.h"
#include "VeltraneDialog/Wipe.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using ODBC::DescribeSystemError;
using ODBC::ToUtf8;
using ODBC::ToWide;

/// The longest name of a key or a value, with its NUL.
constexpr DWORD MAX_NAME = 16384;

class Key {
public:
    Key(HKEY in_root, const std::string& in_path, REGSAM in_rights)
        : m_error(RegOpenKeyExW(in_root, ToWide(in_path).c_str(), 0, in_rights, &m_key)) {}
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (m_error == ERROR_SUCCESS) RegCloseKey(m_key);
    }
    LONG GetError() const { return m_error; }
    bool IsThere() const { return m_error != ERROR_FILE_NOT_FOUND; }
    HKEY Get() const { return m_key; }

private:
    HKEY m_key = nullptr;
    LONG m_error;
};

[[noreturn]] void FailToRead(const std::string& in_name, LONG in_error) {
    throw CommandError(EXIT_FAILED, in_name + ": cannot read: " +
                                        DescribeSystemError(static_cast<unsigned long>(in_error)));
}

/// @return ERROR_NO_MORE_ITEMS behind the last one
LONG ReadValue(HKEY in_key, DWORD in_index, RegistryRoot::Section& io_section) {
    std::wstring name(MAX_NAME, L'\0');
    DWORD nameLength = MAX_NAME;
    DWORD type = REG_NONE;
    DWORD size = 0;
    LONG error =
        RegEnumValueW(in_key, in_index, name.data(), &nameLength, nullptr, &type, nullptr, &size);
    if (error != ERROR_SUCCESS) return error;
    name.resize(nameLength);
    std::wstring value(size / sizeof(wchar_t) + 1, L'\0');
    error = RegQueryValueExW(in_key, name.c_str(), nullptr, &type,
                             reinterpret_cast<BYTE*>(value.data()), &size);
    if (error != ERROR_SUCCESS) return error;
    const std::string key = ToUtf8(name);
    if (type == REG_DWORD && size == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, value.data(), sizeof number);
        io_section.m_entries.emplace_back(key, std::to_string(number));
        io_section.m_foreignValue = key;
    } else if (type == REG_SZ || type == REG_EXPAND_SZ) {
        value.resize(size / sizeof(wchar_t));
        // Ended by one NUL, by none, or by more than one: all have been seen.
        io_section.m_entries.emplace_back(key, ToUtf8(value.substr(0, value.find(L'\0'))));
    } else {
        io_section.m_foreignValue = key;
    }
    ODBC::Wipe(value);
    return ERROR_SUCCESS;
}

}  // namespace

RegistryRoot RegistryRoot::OfUserDsns() {
    return {HKEY_CURRENT_USER, "HKEY_CURRENT_USER", "Software\\ODBC\\ODBC.INI"};
}

RegistryRoot RegistryRoot::OfSystemDsns() {
    return {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", "SOFTWARE\\ODBC\\ODBC.INI"};
}

RegistryRoot RegistryRoot::OfDrivers() {
    return {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", "SOFTWARE\\ODBC\\ODBCINST.INI"};
}

std::string RegistryRoot::GetName() const { return std::string(m_rootName) + "\\" + m_path; }

std::vector<std::string> RegistryRoot::GetSectionNames() const {
    std::vector<std::string> names;
    const Key key(static_cast<HKEY>(m_root), m_path, KEY_READ);
    if (!key.IsThere()) return names;
    if (key.GetError() != ERROR_SUCCESS) FailToRead(GetName(), key.GetError());
    std::wstring name(MAX_NAME, L'\0');
    for (DWORD i = 0;; ++i) {
        DWORD length = MAX_NAME;
        const LONG error =
            RegEnumKeyExW(key.Get(), i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_NO_MORE_ITEMS) return names;
        if (error != ERROR_SUCCESS) FailToRead(GetName(), error);
        names.push_back(ToUtf8({name.data(), length}));
    }
}

bool RegistryRoot::Read(const std::string& in_section, Section& out_section) const {
    const std::string path = std::string(m_path) + "\\" + in_section;
    for (;;) {
        const Key key(static_cast<HKEY>(m_root), path, KEY_READ);
        if (!key.IsThere()) return false;
        LONG error = key.GetError();
        out_section = {in_section, {}, {}};
        for (DWORD i = 0; error == ERROR_SUCCESS; ++i) {
            error = ReadValue(key.Get(), i, out_section);
        }
        if (error == ERROR_NO_MORE_ITEMS) return true;
        // Removed while it was read; it may be there again.
        if (error != ERROR_KEY_DELETED) FailToRead(GetName() + "\\" + in_section, error);
    }
}

unsigned long RegistryRoot::Write(const std::string& in_section, const std::string& in_key,
                                  const std::string& in_value) const {
    const std::wstring path = ToWide(std::string(m_path) + "\\" + in_section);
    std::wstring value = ToWide(in_value);
    const ODBC::WipeAtEnd wipe(value);
    return static_cast<unsigned long>(
        RegSetKeyValueW(static_cast<HKEY>(m_root), path.c_str(), ToWide(in_key).c_str(), REG_SZ,
                        value.c_str(), static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))));
}

unsigned long RegistryRoot::RemoveValue(const std::string& in_section,
                                        const std::string& in_key) const {
    const std::wstring path = ToWide(std::string(m_path) + "\\" + in_section);
    const LONG error =
        RegDeleteKeyValueW(static_cast<HKEY>(m_root), path.c_str(), ToWide(in_key).c_str());
    return error == ERROR_FILE_NOT_FOUND ? 0 : static_cast<unsigned long>(error);
}

unsigned long RegistryRoot::RemoveSection(const std::string& in_section) const {
    // An empty name would be ODBC's key itself, with everybody's sections.
    if (in_section.empty()) return ERROR_INVALID_PARAMETER;
    const std::wstring path = ToWide(std::string(m_path) + "\\" + in_section);
    const LONG error = RegDeleteTreeW(static_cast<HKEY>(m_root), path.c_str());
    return error == ERROR_FILE_NOT_FOUND ? 0 : static_cast<unsigned long>(error);
}

std::string RegistryRoot::WhyNotWritable() const {
    // The deepest key that is there decides whether others may be made in it.
    for (std::string path = m_path; !path.empty();
         path.resize(path.find('\\') == std::string::npos ? 0 : path.rfind('\\'))) {
        const Key key(static_cast<HKEY>(m_root), path, KEY_SET_VALUE | KEY_CREATE_SUB_KEY);
        if (!key.IsThere()) continue;
        if (key.GetError() == ERROR_SUCCESS) return {};
        return GetName() +
               ": cannot write: " + DescribeSystemError(static_cast<unsigned long>(key.GetError()));
    }
    return {};
}

}  // namespace Veltrane::Cli
