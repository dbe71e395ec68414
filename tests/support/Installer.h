/// The installers of both driver managers, loaded at run time: their headers cannot be
/// installed together.
#ifndef TESTS_SUPPORT_INSTALLER_H
#define TESTS_SUPPORT_INSTALLER_H

#include <dlfcn.h>

#include <string>
#include <utility>
#include <vector>

#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Veltrane::Test {

inline constexpr int ADD = 1;
inline constexpr int CONFIG = 2;
inline constexpr int REMOVE = 3;
inline constexpr int SYSTEM = 3;  // added to each for a request for the system

/// Code and text of each installer error.
using Errors = std::vector<std::pair<unsigned long, std::string>>;

class Installer {
public:
    explicit Installer(bool in_isIodbc)
        : m_isIodbc(in_isIodbc),
          m_handle(dlopen(in_isIodbc ? "libiodbcinst.so.2" : "libodbcinst.so.2",
                          RTLD_NOW | RTLD_LOCAL)) {}

    bool IsInstalled() const { return m_handle != nullptr; }

    /// Makes a request for the driver "Veltrane".
    /// @param in_list  entries with their NULs, in UTF-8; the final NUL is added
    bool Configure(int in_request, const std::string& in_list, bool in_isWide = false) const {
        using namespace std::string_literals;
        // The installer reads two NULs even at the end of an empty list.
        const auto call = [&](const char* in_name, const auto& in_driver, const auto& in_entries) {
            return Find<int(void*, unsigned short, const void*, const void*)>(in_name)(
                       nullptr, static_cast<unsigned short>(in_request), in_driver.c_str(),
                       in_entries.c_str()) != 0;
        };
        if (!in_isWide) return call("SQLConfigDataSource", "Veltrane"s, in_list + '\0');
        const Orska::Support::orska_wstring list(in_list + '\0');
        return m_isIodbc ? call("SQLConfigDataSourceW", L"Veltrane"s, list.GetAsPlatformWString())
                         : call("SQLConfigDataSourceW", u"Veltrane"s, list.GetAsUtf16());
    }

    Errors GetErrors() const {
        const auto get =
            Find<short(unsigned short, unsigned long*, char*, unsigned short, unsigned short*)>(
                "SQLInstallerError");
        Errors errors;
        for (unsigned short i = 1; i <= 8; ++i) {
            unsigned long code = 0;
            char text[512] = "";
            unsigned short length = 0;
            if (get(i, &code, text, sizeof text, &length) != 0) break;
            errors.emplace_back(code, text);
        }
        return errors;
    }

    /// Reads a data source with the installer's own reader.
    std::string Read(const std::string& in_section, const std::string& in_key,
                     bool in_isSystem = false) const {
        char value[4096] = "";
        Find<int(unsigned short)>("SQLSetConfigMode")(in_isSystem ? 2 : 1);
        Find<int(const char*, const char*, const char*, char*, int, const char*)>(
            "SQLGetPrivateProfileString")(in_section.c_str(), in_key.c_str(), "(absent)", value,
                                          sizeof value, "odbc.ini");
        return value;
    }

private:
    template <typename Function>
    Function* Find(const char* in_name) const {
        return reinterpret_cast<Function*>(dlsym(m_handle, in_name));
    }

    bool m_isIodbc;
    void* m_handle;
};

}  // namespace Veltrane::Test

#endif
