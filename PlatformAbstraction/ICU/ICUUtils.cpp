#include "PlatformAbstraction/ICU/ICUUtils.h"

#include <unicode/ucnv.h>

#include <cstdint>
#include <initializer_list>
#include <map>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {

namespace {

using EncodingMap = std::map<std::string, EncodingType>;

struct FurtherName {
    const char* m_name;
    std::int32_t m_value;
};

// "JIS_Encoding" is never found, because names are upper-cased before they are looked up. It stays
// as it is: if it were found, it would hide ICU's alias of that name.
constexpr FurtherName FURTHER_NAMES[] = {
    {"ISO-2022-JP-1", 17}, {"JIS_Encoding", 17}, {"SHIFT-JIS", 18},     {"ISO-646-IRV", 20},
    {"ISO-2022-KR", 22},   {"ISO-2022-JP", 24},  {"ISO-2022-JP-2", 25}, {"TIS-620", 90},
    {"WINDOWS-949", 111},  {"IBM-1363", 112},    {"WINDOWS-936", 113},  {"WINDOWS-950", 115},
};

EncodingMap BuildEncodingMap() {
    EncodingMap map;
    const auto insert = [&map](std::int32_t in_value) {
        const auto encoding = static_cast<EncodingType>(in_value);
        map.emplace(UpperCaseAscii(EncodingInfo::GetName(encoding)), encoding);
    };
    for (const std::int32_t first : {1, 0, 3, 2, 4}) {
        insert(first);
    }
    for (std::int32_t value = 5; value < ENCODING_COUNT; ++value) {
        insert(value);
    }
    for (const FurtherName& further : FURTHER_NAMES) {
        map.emplace(further.m_name, static_cast<EncodingType>(further.m_value));
    }
    return map;
}

EncodingType FindByAlias(const char* in_name) {
    UErrorCode status = U_ZERO_ERROR;
    const std::uint16_t count = ucnv_countAliases(in_name, &status);
    for (std::uint16_t index = 0; index < count; ++index) {
        status = U_ZERO_ERROR;
        const char* alias = ucnv_getAlias(in_name, index, &status);
        const EncodingType found =
            alias == nullptr ? EncodingType::ENC_NONE : ICUUtils::FindEncoding(alias);
        if (found != EncodingType::ENC_NONE) {
            return found;
        }
    }
    return EncodingType::ENC_NONE;
}

}  // namespace

EncodingType ICUUtils::FindEncoding(const std::string& in_name) {
    // Process-wide: set by the first look-up, during start-up; read by every look-up.
    static const EncodingMap s_encodings = BuildEncodingMap();
    const auto found = s_encodings.find(UpperCaseAscii(in_name));
    return found == s_encodings.end() ? EncodingType::ENC_NONE : found->second;
}

EncodingType ICUUtils::GetEncodingEnum(const std::string& in_name) {
    EncodingType found = FindEncoding(in_name);
    // ICU reads up to the first NUL, so it is not asked for a name with one in it.
    if (found == EncodingType::ENC_NONE && in_name.find('\0') == std::string::npos) {
        found = FindByAlias(in_name.c_str());
    }
    if (found == EncodingType::ENC_NONE) {
        ORSKA_THROW((TraceSite{"Orska::Support::ICUUtils::GetEncodingEnum",
                               "PlatformAbstraction\\ICU\\ICUUtils", 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"EncodingNotRecog"));
    }
    return found;
}

}  // namespace Orska::Support
