#include "tests/installer/TestProfile.h"

#include "tools/WindowsApi.h"

#include <cwchar>
#include <memory>
#include <utility>
#include <vector>

namespace Veltrane::Test::TestProfile {

namespace {

/// Passes the name of the scratch key to the installer's library in the same process.
constexpr wchar_t VARIABLE[] = L"VELTRANE_TEST_INSTALLER_KEY";
/// The value that means ODBC's own keys.
constexpr wchar_t KEYS_OF_ODBC[] = L"ODBC";
/// Characters of a name or a text, with the NUL.
constexpr DWORD LONGEST = 8192;

/// A key below a root of the registry.
struct Place {
    HKEY m_root;
    std::wstring m_path;

    const wchar_t* GetPath() const noexcept { return m_path.c_str(); }
    Place operator/(const std::wstring& in_name) const {
        return {m_root, m_path + L"\\" + in_name};
    }
};

std::wstring ReadVariable(const wchar_t* in_name) {
    std::wstring text(MAX_PATH, L'\0');
    text.resize(GetEnvironmentVariableW(in_name, text.data(), MAX_PATH));
    return text;
}

std::wstring ScratchKey() { return ReadVariable(VARIABLE); }

/// Called before each change of the registry. Ends the process, as if it were killed, at the change
/// whose number is in the variable.
void EndAtLast() {
    // Process-wide: set and read here.
    static int s_left = static_cast<int>(
        std::wcstol(ReadVariable(L"VELTRANE_TEST_INSTALLER_ENDS").c_str(), nullptr, 10));
    if (s_left != 0 && --s_left == 0) TerminateProcess(GetCurrentProcess(), 99);
}

Place PlaceOf(Root in_root) {
    const std::wstring key = ScratchKey();
    const std::wstring name = in_root == Root::DRIVERS ? L"ODBCINST.INI" : L"ODBC.INI";
    if (key == KEYS_OF_ODBC) {
        return {in_root == Root::USER ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE,
                L"Software\\ODBC\\" + name};
    }
    return Place{HKEY_CURRENT_USER, key} / (in_root == Root::USER ? L"User" : L"System") / name;
}

/// Opens a key that closes itself; null when it cannot be opened.
std::shared_ptr<HKEY__> Open(const Place& in_place) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(in_place.m_root, in_place.GetPath(), 0, KEY_READ, &key) != 0) return {};
    return {key, &RegCloseKey};
}

/// The sections of an open key.
std::vector<std::wstring> SectionsOf(HKEY in_root) {
    std::vector<std::wstring> names;
    wchar_t name[MAX_PATH];
    DWORD size = MAX_PATH;
    while (RegEnumKeyExW(in_root, static_cast<DWORD>(names.size()), name, &size, nullptr, nullptr,
                         nullptr, nullptr) == ERROR_SUCCESS) {
        names.emplace_back(name, size);
        size = MAX_PATH;
    }
    return names;
}

/// The texts of an open section.
Section ValuesOf(HKEY in_section) {
    Section values;
    std::vector<wchar_t> name(LONGEST);
    std::vector<wchar_t> text(LONGEST);
    for (DWORD i = 0;; ++i) {
        DWORD size = LONGEST;
        DWORD bytes = LONGEST * sizeof(wchar_t);
        if (RegEnumValueW(in_section, i, name.data(), &size, nullptr, nullptr,
                          reinterpret_cast<BYTE*>(text.data()), &bytes) != ERROR_SUCCESS) {
            return values;
        }
        values[{name.data(), size}] = text.data();
    }
}

}  // namespace

void UseScratchKey() {
    const std::wstring key = L"Software\\Veltrane Tests\\" + std::to_wstring(GetCurrentProcessId());
    SetEnvironmentVariableW(VARIABLE, key.c_str());
    RemoveScratchKey();
}

void RemoveScratchKey() { RegDeleteTreeW(HKEY_CURRENT_USER, ScratchKey().c_str()); }

std::optional<std::wstring> Read(Root in_root, const std::wstring& in_section,
                                 const std::wstring& in_key) {
    const Place place = PlaceOf(in_root) / in_section;
    DWORD bytes = 0;
    const auto get = [&](wchar_t* out_value) {
        return RegGetValueW(place.m_root, place.GetPath(), in_key.c_str(), RRF_RT_REG_SZ, nullptr,
                            out_value, &bytes);
    };
    if (get(nullptr) != 0) return std::nullopt;
    std::wstring value(bytes / sizeof(wchar_t), L'\0');
    if (get(value.data()) != 0) return std::nullopt;
    value.resize(bytes / sizeof(wchar_t) - 1);
    return value;
}

bool Write(Root in_root, const std::wstring& in_section, const std::wstring& in_key,
           const wchar_t* in_value) {
    EndAtLast();
    const Place place = PlaceOf(in_root) / in_section;
    if (in_value == nullptr) {
        const LONG result = RegDeleteKeyValueW(place.m_root, place.GetPath(), in_key.c_str());
        return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
    }
    const std::size_t bytes = (std::char_traits<wchar_t>::length(in_value) + 1) * sizeof(wchar_t);
    return RegSetKeyValueW(place.m_root, place.GetPath(), in_key.c_str(), REG_SZ, in_value,
                           static_cast<DWORD>(bytes)) == ERROR_SUCCESS;
}

void Clear(Root in_root) {
    const Place place = PlaceOf(in_root);
    RegDeleteTreeW(place.m_root, place.GetPath());
}

bool RemoveSection(Root in_root, const std::wstring& in_section) {
    EndAtLast();
    const Place place = PlaceOf(in_root) / in_section;
    const LONG result = RegDeleteTreeW(place.m_root, place.GetPath());
    return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
}

Sections List(Root in_root) {
    Sections sections;
    const Place place = PlaceOf(in_root);
    for (const std::wstring& name : SectionsOf(Open(place).get())) {
        sections[name] = ValuesOf(Open(place / name).get());
    }
    return sections;
}

}  // namespace Veltrane::Test::TestProfile
