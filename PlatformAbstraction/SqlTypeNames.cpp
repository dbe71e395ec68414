#include "PlatformAbstraction/SqlTypeNames.h"

namespace Orska::Support::SqlTypeNames {

#define ORSKA_SQL_TYPE(in_name, in_code) const orska_wstring NAME_##in_name(u"" #in_name);
#define ORSKA_SQL_SHORT_NAME(in_name, in_code) const orska_wstring NAME_##in_name(u"" #in_name);
#define ORSKA_C_TYPE(in_name, in_code) const orska_wstring NAME_##in_name(u"" #in_name);
#define ORSKA_SPECIAL_VALUE(in_name, in_text) const orska_wstring VALUE_##in_name(u"" in_text);
#include "PlatformAbstraction/SqlTypeNames.inc"
#undef ORSKA_SQL_TYPE
#undef ORSKA_SQL_SHORT_NAME
#undef ORSKA_C_TYPE
#undef ORSKA_SPECIAL_VALUE

namespace {

struct TypeName {
    const orska_wstring* m_name;
    std::int16_t m_code;
};

#define ORSKA_SPECIAL_VALUE(in_name, in_text)

#define ORSKA_SQL_TYPE(in_name, in_code) {&NAME_##in_name, in_code},
#define ORSKA_SQL_SHORT_NAME(in_name, in_code) {&NAME_##in_name, in_code},
#define ORSKA_C_TYPE(in_name, in_code)
constexpr TypeName SQL_TYPES[] = {
#include "PlatformAbstraction/SqlTypeNames.inc"
};
#undef ORSKA_SQL_TYPE
#undef ORSKA_SQL_SHORT_NAME
#undef ORSKA_C_TYPE

#define ORSKA_SQL_TYPE(in_name, in_code)
#define ORSKA_SQL_SHORT_NAME(in_name, in_code)
#define ORSKA_C_TYPE(in_name, in_code) {&NAME_##in_name, in_code},
constexpr TypeName C_TYPES[] = {
#include "PlatformAbstraction/SqlTypeNames.inc"
};
#undef ORSKA_SQL_TYPE
#undef ORSKA_SQL_SHORT_NAME
#undef ORSKA_C_TYPE

#undef ORSKA_SPECIAL_VALUE

const orska_wstring NO_NAME;

/// The first row of the code.
template <std::size_t SIZE>
const orska_wstring& NameOf(const TypeName (&in_types)[SIZE], std::int16_t in_code) noexcept {
    for (const TypeName& type : in_types) {
        if (type.m_code == in_code) {
            return *type.m_name;
        }
    }
    return NO_NAME;
}

template <std::size_t SIZE>
std::optional<std::int16_t> CodeOf(const TypeName (&in_types)[SIZE],
                                   const orska_wstring& in_name) noexcept {
    for (const TypeName& type : in_types) {
        if (*type.m_name == in_name) {
            return type.m_code;
        }
    }
    return std::nullopt;
}

}  // namespace

const orska_wstring& GetSqlTypeName(std::int16_t in_code) noexcept {
    return NameOf(SQL_TYPES, in_code);
}

const orska_wstring& GetCTypeName(std::int16_t in_code) noexcept {
    return NameOf(C_TYPES, in_code);
}

std::optional<std::int16_t> GetSqlTypeCode(const orska_wstring& in_name) noexcept {
    return CodeOf(SQL_TYPES, in_name);
}

std::optional<std::int16_t> GetCTypeCode(const orska_wstring& in_name) noexcept {
    return CodeOf(C_TYPES, in_name);
}

}  // namespace Orska::Support::SqlTypeNames
