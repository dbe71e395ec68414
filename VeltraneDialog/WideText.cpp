#include "VeltraneDialog/WideText.h"

#include <stdexcept>

#include "PlatformAbstraction/base/OwnDirectory.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

std::wstring ToWide(std::string_view in_bytes) {
    std::u16string text;
    const WipeAtEnd wipe(text);
    if (!DecodeUtf8(in_bytes, text)) return {};
    return std::wstring(AsWide(text.data()), text.size());
}

std::string ToUtf8(std::wstring_view in_text) {
    return EncodeUtf8(
        std::u16string_view(reinterpret_cast<const char16_t*>(in_text.data()), in_text.size()));
}

std::wstring PathBesideModule(const wchar_t* in_name) {
    const std::wstring directory = Orska::Support::GetOwnDirectory();
    if (directory.empty()) {
        // A name without a path would be searched in places that the host or its user chooses.
        throw std::runtime_error("The path of this module is unknown.");
    }
    return directory + in_name;
}

}  // namespace Veltrane::ODBC
