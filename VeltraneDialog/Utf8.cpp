#include "VeltraneDialog/Utf8.h"

#include <cstddef>

#include "PlatformAbstraction/ICU/Siconv/scalar/Readers.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Writers.h"

namespace Veltrane::ODBC {

using namespace Orska::Support::Siconv;

bool DecodeUtf8(std::string_view in_bytes, std::u16string& out_text) {
    // Reserves all at once: a buffer that grows leaves copies of a password in freed memory.
    out_text.reserve(out_text.size() + in_bytes.size());
    const auto* const bytes = reinterpret_cast<const unsigned char*>(in_bytes.data());
    for (std::size_t position = 0; position < in_bytes.size();) {
        char32_t codePoint = 0;
        const int used = Utf8Reader::Read(bytes + position, in_bytes.size() - position, codePoint);
        if (used < 0) {
            return false;
        }
        char16_t units[2];
        const std::size_t size = Utf16Writer<false>::Write(
            codePoint, reinterpret_cast<unsigned char*>(units), sizeof(units));
        out_text.append(units, size / sizeof(char16_t));
        position += static_cast<std::size_t>(used);
    }
    return true;
}

std::string EncodeUtf8(std::u16string_view in_text) {
    std::string text;
    text.reserve(3 * in_text.size());
    const auto* const units = reinterpret_cast<const unsigned char*>(in_text.data());
    const std::size_t length = in_text.size() * sizeof(char16_t);
    for (std::size_t position = 0; position < length;) {
        char32_t codePoint = 0;
        const int used = Utf16Reader<false>::Read(units + position, length - position, codePoint);
        unsigned char bytes[4];
        const std::size_t size =
            Utf8Writer::Write(used < 0 ? U'\uFFFD' : codePoint, bytes, sizeof(bytes));
        text.append(reinterpret_cast<const char*>(bytes), size);
        position += used < 0 ? sizeof(char16_t) : static_cast<std::size_t>(used);
    }
    return text;
}

}  // namespace Veltrane::ODBC
