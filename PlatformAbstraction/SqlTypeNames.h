/// The names of ODBC data types and of special values, as strings that are built once when the
/// library is loaded, and the way from a type code to its name and back.
///
/// For each name there is a constant `NAME_` + name, such as `NAME_SQL_BIGINT`, `NAME_SQL_C_ULONG`
/// or `NAME_INTERVAL_DAY`. The prefix keeps them apart from the macros of the ODBC headers, which
/// this header neither needs nor minds. `VALUE_INFINITY`, `VALUE_NEGATIVE_INFINITY` and `VALUE_NAN`
/// hold "INFINITY", "-INFINITY" and "NaN".
///
/// Constants: any thread may read them, from the end of the library's load on.
#ifndef PLATFORMABSTRACTION_SQLTYPENAMES_H
#define PLATFORMABSTRACTION_SQLTYPENAMES_H

#include <cstdint>
#include <optional>

#include "strings/orska_wstring.h"

namespace Orska::Support::SqlTypeNames {

#define ORSKA_SQL_TYPE(in_name, in_code) extern const orska_wstring NAME_##in_name;
#define ORSKA_SQL_SHORT_NAME(in_name, in_code) extern const orska_wstring NAME_##in_name;
#define ORSKA_C_TYPE(in_name, in_code) extern const orska_wstring NAME_##in_name;
#define ORSKA_SPECIAL_VALUE(in_name, in_text) extern const orska_wstring VALUE_##in_name;
#include "SqlTypeNames.inc"
#undef ORSKA_SQL_TYPE
#undef ORSKA_SQL_SHORT_NAME
#undef ORSKA_C_TYPE
#undef ORSKA_SPECIAL_VALUE

/// The name of an SQL type code, or NULL when there is none. Where names share a code it is the one
/// of ODBC 3: 0 is "SQL_UNKNOWN_TYPE", 9 "SQL_DATETIME", 10 "SQL_INTERVAL", -8 to -10 the
/// "SQL_W..." forms, and 101 to 113 the "SQL_INTERVAL_..." forms.
const orska_wstring& GetSqlTypeName(std::int16_t in_code) noexcept;

/// The name of a C type code, or NULL when there is none. -27 is "SQL_C_UBIGINT" and -2
/// "SQL_C_BINARY", though bookmarks have these codes too.
const orska_wstring& GetCTypeName(std::int16_t in_code) noexcept;

/// The code of a name, exactly as the headers spell it; the interval types also without "SQL_".
/// "SQL_C_TCHAR" has none: which type it means depends on how an application is compiled.
std::optional<std::int16_t> GetSqlTypeCode(const orska_wstring& in_name) noexcept;
std::optional<std::int16_t> GetCTypeCode(const orska_wstring& in_name) noexcept;

}  // namespace Orska::Support::SqlTypeNames

#endif
