#include "PlatformAbstraction/StringCodec.h"

#include <new>

#include "PlatformAbstraction/EncodingInfo.h"

namespace Orska::Support {

icu::UnicodeString* DecodeText(const char* in_bytes, std::int32_t in_lengthInBytes,
                               EncodingType in_encoding) {
    auto* text =
        new icu::UnicodeString(in_bytes, in_lengthInBytes, EncodingInfo::GetName(in_encoding));
    if (text == nullptr) {
        throw std::bad_alloc();
    }
    return text;
}

std::string EncodeText(const icu::UnicodeString& in_text, EncodingType in_encoding) {
    const char* name = EncodingInfo::GetName(in_encoding);
    const std::int32_t length = in_text.extract(0, in_text.length(), nullptr, 0, name);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    in_text.extract(0, in_text.length(), bytes.data(), static_cast<std::uint32_t>(length), name);
    return bytes;
}

}  // namespace Orska::Support
