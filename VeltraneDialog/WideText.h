/// Converts text for Windows functions. wchar_t has 16 bits there, like the editor's texts.
#ifndef VELTRANEDIALOG_WIDETEXT_H
#define VELTRANEDIALOG_WIDETEXT_H

#include <string>
#include <string_view>

namespace Veltrane::ODBC {

inline const wchar_t* AsWide(const char16_t* in_text) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t));
    return reinterpret_cast<const wchar_t*>(in_text);
}

inline wchar_t* AsWide(char16_t* in_text) { return reinterpret_cast<wchar_t*>(in_text); }

/// @param in_bytes  UTF-8; for other bytes the result is empty
std::wstring ToWide(std::string_view in_bytes);
std::string ToUtf8(std::wstring_view in_text);

/// Returns the full path of a file beside this library or program.
/// @throws std::runtime_error when the path of this module is unknown
std::wstring PathBesideModule(const wchar_t* in_name);

}  // namespace Veltrane::ODBC

#endif
